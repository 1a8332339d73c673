#include "OrvaneSyncCore/Services/ModelStorage/ModelCatalogue.h"

#include "OrvaneSyncCore/Services/ModelStorage/ModelStorage.h"

#include <array>

namespace orvane {

namespace {

struct Row {
    const char* id;
    const char* name;
    const char* description;
    const char* size;
    const char* path; ///< relative to the host
};
constexpr std::array<Row, 2> rows{{
    {"cinemaCLIP", "CinemaCLIP Slate Detector",
     "Experimental — not active yet. Would find slates in the picture; no feature loads it.", "~170 MB",
     "/apple/coreml-clip-base/resolve/main/clip-base.mlpackage.zip"},
    {"demucs", "Demucs v4 Source Separation",
     "Experimental — not active yet. Would take voices out of room tone; no feature loads it.", "~80 MB",
     "/facebook/demucs/resolve/main/demucs.mlpackage.zip"},
}};

} // namespace

platform::JSON toJSON(const ModelInfo& model) {
    platform::JSON status;
    switch (model.status.kind) {
    case ModelStatus::Kind::notDownloaded:
        status.set("state", "notDownloaded");
        break;
    case ModelStatus::Kind::downloading:
        status.set("state", "downloading");
        status.set("progress", model.status.progress);
        break;
    case ModelStatus::Kind::ready:
        status.set("state", "ready");
        break;
    case ModelStatus::Kind::error:
        status.set("state", "error");
        status.set("message", model.status.message);
        break;
    }
    platform::JSON json;
    json.set("id", model.id);
    json.set("name", model.name);
    json.set("description", model.description);
    json.set("size", model.size);
    json.set("downloadURL", model.downloadURL);
    json.setIfPresent("expectedSHA256", model.expectedSHA256);
    json.set("status", std::move(status));
    json.set("isRequired", model.isRequired);
    json.set("isWired", model.isWired);
    return json;
}

const std::vector<BuiltInFeature>& builtInFeatures() {
    static const std::vector<BuiltInFeature> features{
        {"Audio Clap Detection", "Peak-based clap/sync-point detection"},
        {"Smart Audio Analysis", "VAD + SNR analysis"},
        {"FCP Audio Enhancers", "Voice Isolation, Loudness via FCPXML"}};
    return features;
}

std::vector<ModelInfo> modelCatalogue(const ServiceConfiguration& service) {
    std::vector<ModelInfo> models;
    for (const Row& row : rows) {
        ModelInfo model{row.id, row.name, row.description, row.size, "", std::nullopt, {}, false, false};
        if (service.modelHost) model.downloadURL = *service.modelHost + row.path;
        if (const auto hash = service.modelSHA256.find(row.id); hash != service.modelSHA256.end())
            model.expectedSHA256 = hash->second;
        if (ModelStorage::isInstalled(row.id))
            model.status.kind = ModelStatus::Kind::ready;
        else if (!service.modelHost)
            model.status = {
                ModelStatus::Kind::error, 0,
                "No model host is configured: " +
                    service.problem.value_or(ServiceConfiguration::path() + " has to name \"modelHost\"")};
        models.push_back(std::move(model));
    }
    return models;
}

} // namespace orvane
