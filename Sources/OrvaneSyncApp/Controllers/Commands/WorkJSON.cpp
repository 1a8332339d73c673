#include "OrvaneSyncApp/Controllers/Commands/WorkJSON.h"

#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"

#include "OrvaneSyncCore/Models/SettingValues.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"

#include <utility>

namespace orvane {

namespace {

JSON textsJSON(const std::vector<std::string>& texts) {
    JSON::Array array;
    for (const std::string& text : texts) array.emplace_back(text);
    return array;
}

/// The files of each clip's take, in order.
JSON takesJSON(const SyncGroupList& groups) {
    JSON::Object takes;
    for (const SyncGroup& group : groups) {
        if (group.isMOS()) continue;
        JSON::Array files;
        for (const TakeFile& file : takeOf(group, assumedChannels).files) {
            JSON one;
            one.set("url", toJSON(group.audioMatches[file.matchIndex].audio->url));
            one.set("role", name(file.role));
            if (file.role != TakeRole::mirror) one.set("firstChannel", file.firstChannel);
            one.set("channelCount", file.channelCount);
            one.set("startSeconds", file.startSeconds);
            files.push_back(std::move(one));
        }
        takes.emplace_back(group.id.text(), std::move(files));
    }
    return takes;
}

JSON groupsJSON(const WorkSnapshot& work) {
    const SyncDoubts& doubts = work.doubts();
    JSON::Array groups;
    for (const SyncGroup& group : work.groups()) groups.push_back(groupJSON(group, doubts));
    return groups;
}

std::vector<std::string> stateWarnings(const WorkSnapshot& work) {
    std::vector<std::string> warnings = uselessStoredValues(work.settings());
    for (std::string& warning : scanWarnings(work)) warnings.push_back(std::move(warning));
    for (std::string& warning : smartAudioWarnings(work)) warnings.push_back(std::move(warning));
    return warnings;
}

} // namespace

JSON groupJSON(const SyncGroup& group, const SyncDoubts& doubts) {
    JSON json = toJSON(group);
    if (const auto own = doubts.byGroup.find(group.id); own != doubts.byGroup.end())
        json.set("doubts", toJSONArray(own->second));
    return json;
}

JSON countsJSON(const WorkSnapshot& work) {
    JSON counts;
    const WorkState::Counts& settled = work.counts();
    const int matched = settled.withSound + settled.withoutSound;
    counts.set("matched", matched);
    counts.set("unmatched", static_cast<int>(work.groups().size()) - matched);
    counts.set("syncClips", settled.withSound);
    counts.set("mos", settled.withoutSound);
    counts.set("projectedMulticam",
               ExportController::projectedMulticamCount(work.groups(), work.matchRules()));
    return counts;
}

JSON stateJSON(const WorkSnapshot& work, std::optional<SmartAudioMode> mode,
               const std::optional<std::vector<std::string>>& warnings) {
    JSON::Object names;
    for (const auto& [id, name] : work.displayNames()) names.emplace_back(id.text(), name);
    JSON state;
    state.set("scanState", name(work.scanState));
    if (work.discoveryResult) state.set("discoveryResult", toJSON(*work.discoveryResult));
    if (work.scanResult()) state.set("scanResult", toJSON(*work.scanResult()));
    state.set("syncGroups", groupsJSON(work));
    if (!work.sourceCorrections.isEmpty()) state.set("sourceCorrections", toJSON(work.sourceCorrections));
    state.set("wildTracks", toJSONArray(work.wildTracks()));
    state.set("displayNames", std::move(names));
    state.set("takes", takesJSON(work.groups()));
    state.set("counts", countsJSON(work));
    state.setIfPresent("aleMatchStatus", work.aleMatchStatus);
    state.setIfPresent("aleImportError", work.aleImportError);
    state.set("smartAudio", smartAudioJSON(work, mode));
    state.set("warnings", textsJSON(warnings ? *warnings : stateWarnings(work)));
    return state;
}

JSON exportJSON(const WorkSnapshot& work, const ExportResult& result, const std::string& output,
                std::optional<SmartAudioMode> mode) {
    JSON json;
    json.set("output", output);
    json.set("syncClipCount", result.syncClipCount);
    json.set("multicamCount", result.multicamCount);
    json.set("nativeRateCount", result.nativeRateCount);
    json.set("projectRateCount", result.projectRateCount);
    json.set("sourceMediaCount", result.sourceMediaCount);
    json.set("eventCount", result.eventCount);
    json.set("sceneEventCount", result.sceneEventCount);
    json.set("warnings", textsJSON(result.warnings));
    json.set("smartAudio", smartAudioJSON(work, mode));
    json.set("counts", countsJSON(work));
    json.setIfPresent("aleMatchStatus", work.aleMatchStatus);
    return json;
}

JSON lockitStatusJSON(const LockitOAuthService& account, const LockitController& lockit) {
    JSON json;
    json.set("isSignedIn", account.state().isSignedIn);
    json.setIfPresent("accountEmail", account.state().accountEmail);
    if (account.state().isKeyStoreLocked) json.set("isKeyStoreLocked", true);
    json.set("isSyncingLockit", lockit.isSyncingLockit());
    json.setIfPresent("lockitSyncStatus", lockit.lockitSyncStatus());
    try {
        account.configuration().requireLockit();
    } catch (const ServiceNotConfigured& error) {
        json.set("configurationProblem", error.what());
    }
    return json;
}

JSON modelsJSON(const ModelManager& models) {
    JSON rows = JSON::array(), features = JSON::array();
    for (const ModelInfo& model : models.models()) rows.append(toJSON(model));
    for (const BuiltInFeature& feature : builtInFeatures())
        features.append(JSON::Object{{"name", feature.name}, {"description", feature.description}});
    JSON bandit;
    bandit.set("isInstalled", models.bandit().hasModel);
    bandit.set("path", models.bandit().modelPath);
    bandit.set("runtime", models.bandit().runtime);
    if (!models.bandit().problem.empty()) bandit.set("problem", models.bandit().problem);
    JSON json;
    json.set("models", std::move(rows));
    json.set("builtInFeatures", std::move(features));
    json.set("totalSizeMB", models.totalSizeMB());
    json.set("bandit", std::move(bandit));
    return json;
}

JSON candidatesJSON(const AtmoController::Candidates& candidates) {
    JSON json = JSON::Object{};
    for (const auto& [scene, found] : candidates) {
        JSON::Array list;
        for (const AtmoCandidate& candidate : found) list.push_back(toJSON(candidate));
        json.set(scene, std::move(list));
    }
    return json;
}

} // namespace orvane
