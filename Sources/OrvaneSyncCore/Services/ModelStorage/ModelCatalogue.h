#pragma once

#include "OrvaneSyncCore/Services/Persistence/ServiceConfiguration.h"
#include "Platform/JSON.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

struct ModelStatus {
    enum class Kind { notDownloaded, downloading, ready, error };
    Kind kind = Kind::notDownloaded;
    double progress = 0; ///< 0 to 1, during the download
    std::string message; ///< for an error

    bool operator==(const ModelStatus&) const = default;
};

/// What is shown of one model.
struct ModelInfo {
    std::string id;
    std::string name;
    std::string description;
    std::string size;        ///< text for display
    std::string downloadURL; ///< empty while no host is configured
    std::optional<std::string> expectedSHA256;
    ModelStatus status;
    bool isRequired = false;
    bool isWired = false; ///< whether a feature uses it
};
platform::JSON toJSON(const ModelInfo& model);

/// A feature that works without a model.
struct BuiltInFeature {
    std::string_view name;
    std::string_view description;
};
const std::vector<BuiltInFeature>& builtInFeatures();

/// All models, with their state on the disk. They are downloaded from the `modelHost` of the configuration.
/// Not on the interface thread.
std::vector<ModelInfo> modelCatalogue(const ServiceConfiguration& service);

} // namespace orvane
