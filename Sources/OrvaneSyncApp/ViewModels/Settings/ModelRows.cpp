#include "OrvaneSyncApp/ViewModels/Settings/ModelRows.h"

#include "Platform/Text.h"

namespace orvane {

namespace {

using platform::JSON;
using State = ModelRow::State;

std::string textOf(const JSON& record, std::string_view key) {
    const JSON* value = record.find(key);
    return value == nullptr || value->string() == nullptr ? std::string() : *value->string();
}

bool isSet(const JSON& record, std::string_view key) {
    const JSON* value = record.find(key);
    return value != nullptr && value->boolean() == true;
}

const JSON::Array& listOf(const JSON& record, std::string_view key) {
    static const JSON::Array none;
    const JSON* value = record.find(key);
    return value == nullptr || value->elements() == nullptr ? none : *value->elements();
}

State stateOf(std::string_view text) {
    if (text == "downloading") return State::downloading;
    if (text == "ready") return State::ready;
    return text == "error" ? State::error : State::notDownloaded;
}

ModelRow rowOf(const JSON& model) {
    ModelRow row;
    row.id = textOf(model, "id");
    row.name = textOf(model, "name");
    row.description = textOf(model, "description");
    row.facts = textOf(model, "size");
    if (!isSet(model, "isWired")) row.facts += " · Not active yet";
    const JSON* status = model.find("status");
    if (status == nullptr) return row;
    row.state = stateOf(textOf(*status, "state"));
    if (row.state == State::error && textOf(model, "downloadURL").empty()) row.state = State::notSetUp;
    switch (row.state) {
    case State::notSetUp:
        row.status = textOf(*status, "message");
        break;
    case State::notDownloaded:
        row.status = "Not downloaded";
        row.download = "Download";
        break;
    case State::downloading: {
        constexpr double hundred = 100;
        if (const JSON* share = status->find("progress")) row.progress = share->number().value_or(0);
        row.status = platform::text::formatted("%.0f %%", row.progress * hundred);
        break;
    }
    case State::ready:
        row.status = "Ready";
        break;
    case State::error:
        row.status = textOf(*status, "message");
        row.download = "Retry";
        break;
    }
    return row;
}

} // namespace

ModelList modelList(const JSON& answer) {
    ModelList list;
    for (const JSON& model : listOf(answer, "models")) {
        list.rows.push_back(rowOf(model));
        list.isDownloading = list.isDownloading || list.rows.back().state == State::downloading;
    }
    for (const JSON& feature : listOf(answer, "builtInFeatures"))
        list.features.emplace_back(textOf(feature, "name"), textOf(feature, "description"));
    const JSON* size = answer.find("totalSizeMB");
    list.diskUsage =
        "Disk usage: " + std::to_string(size == nullptr ? 0 : size->integer().value_or(0)) + " MiB";
    if (const JSON* stems = answer.find("bandit")) {
        const std::string path = textOf(*stems, "path");
        list.areStemsReady = isSet(*stems, "isInstalled");
        list.stems =
            path.substr(path.rfind('/') + 1) + (list.areStemsReady ? " installed" : " not installed");
        list.stemsProblem = textOf(*stems, "problem");
    }
    return list;
}

} // namespace orvane
