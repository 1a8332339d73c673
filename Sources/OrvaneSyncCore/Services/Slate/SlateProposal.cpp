#include "OrvaneSyncCore/Services/Slate/SlateProposal.h"

#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"
#include "OrvaneSyncCore/Services/Slate/SlateText.h"
#include "Platform/Text.h"

#include <string_view>
#include <utility>

namespace orvane {

namespace {

const char* const sceneColumn = "Scene";
const char* const takeColumn = "Take";

/// The value in a report, otherwise the recorder's; empty if there is neither.
std::string known(const SyncGroup& group, const char* column, std::optional<std::string> IXMLData::*field) {
    if (group.aleMetadata)
        if (const auto cell = group.aleMetadata->find(column); cell != group.aleMetadata->end())
            if (const auto text = platform::text::trimmed(cell->second); !text.empty())
                return std::string(text);
    const MediaAsset* audio = group.primaryAudio();
    if (audio == nullptr || !audio->ixmlData) return {};
    return std::string(platform::text::trimmed(((*audio->ixmlData).*field).value_or("")));
}

/// "012a" and "12A" are the same scene.
bool isSameScene(std::string_view a, std::string_view b) {
    const auto bare = [](std::string_view text) {
        std::string lowercased = platform::text::lowercased(text);
        std::erase_if(lowercased, [](char c) { return c == ' ' || c == '-' || c == '_' || c == '.'; });
        return lowercased.substr(std::min(lowercased.find_first_not_of('0'), lowercased.size()));
    };
    return bare(a) == bare(b);
}

/// The name by the settings, as if the recorder had stated scene and take.
std::string nameWith(const SyncGroup& group, const SlateProposal& proposal,
                     const BatchRenamer::Settings& naming) {
    MediaAsset audio = group.primaryAudio() != nullptr ? *group.primaryAudio() : group.video;
    if (!audio.ixmlData) audio.ixmlData.emplace();
    if (proposal.scene) audio.ixmlData->scene = proposal.scene;
    if (proposal.take) audio.ixmlData->take = proposal.take;
    SyncGroup said = group;
    said.audioMatches = {AudioMatch(std::move(audio), 0, 0)};
    return GroupNaming::baseName(said, naming.source, naming.customPattern, naming.separator);
}

} // namespace

std::optional<SlateProposal> slateProposal(const SyncGroup& group, const SlateResult& slate,
                                           const BatchRenamer::Settings& naming) {
    const std::string scene = known(group, sceneColumn, &IXMLData::scene);
    const std::string take = known(group, takeColumn, &IXMLData::take);
    // If the value behind a label could not be read, the text there is the next label.
    const auto value = [](const std::optional<std::string>& read) {
        return read && !SlateText::isLabel(*read) ? read : std::nullopt;
    };
    const auto slateScene = value(slate.ocrScene), slateTake = value(slate.ocrTake);
    if (!scene.empty() && slateScene && !isSameScene(scene, *slateScene)) return std::nullopt;
    SlateProposal proposal;
    if (scene.empty()) proposal.scene = slateScene;
    if (take.empty()) proposal.take = slateTake;
    if (!proposal.scene && !proposal.take) return std::nullopt;
    if (!GroupNaming::manualName(group)) {
        std::string name = nameWith(group, proposal, naming);
        if (name != GroupNaming::baseName(group, naming.source, naming.customPattern, naming.separator))
            proposal.clipName = std::move(name);
    }
    return proposal;
}

void accept(const SlateProposal& proposal, SyncGroup& group) {
    if (!group.aleMetadata) group.aleMetadata.emplace();
    if (proposal.scene) (*group.aleMetadata)[sceneColumn] = *proposal.scene;
    if (proposal.take) (*group.aleMetadata)[takeColumn] = *proposal.take;
    if (proposal.clipName) group.manualClipName = proposal.clipName;
}

} // namespace orvane
