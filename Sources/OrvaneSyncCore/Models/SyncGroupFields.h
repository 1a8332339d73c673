#pragma once

#include "OrvaneSyncCore/Models/ClipField.h"
#include "OrvaneSyncCore/Models/ImportedTexts.h"
#include "OrvaneSyncCore/Models/JSONFields.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <optional>
#include <tuple>
#include <type_traits>

/// The fields of a clip and of its matches: their JSON form, which of them the editor decides, which files
/// store them, and what depends on them.
namespace orvane {

template <>
struct JSONFields<AudioMatch> {
    static constexpr std::tuple list{
        JSONField{"id", &AudioMatch::id}, JSONField{"audio", &AudioMatch::audio},
        JSONField{"syncOffsetSeconds", &AudioMatch::syncOffsetSeconds},
        JSONField{"overlapDurationSeconds", &AudioMatch::overlapDurationSeconds}};
};

template <>
struct JSONFields<BlockOverride> {
    static constexpr std::tuple list{JSONField{"id", &BlockOverride::id},
                                     JSONField{"startSeconds", &BlockOverride::startSeconds},
                                     JSONField{"endSeconds", &BlockOverride::endSeconds},
                                     JSONField{"trackIndex", &BlockOverride::trackIndex}};
};

template <>
struct JSONFields<SyncGroup> {
  private:
    static constexpr auto found = FieldSource::found, clap = FieldSource::clap,
                          decision = FieldSource::decision, detail = FieldSource::detail;
    static constexpr auto sessions = KeptIn::sessions, projects = KeptIn::projects;
    static constexpr auto neither = Concerns::neither, doubts = Concerns::doubts, names = Concerns::names;

  public:
    static constexpr std::tuple list{
        clipField<found, sessions>("id", &SyncGroup::id),
        clipField<found, sessions>("video", &SyncGroup::video),
        clipField<found, sessions>("audioMatches", &SyncGroup::audioMatches),
        clipField<decision, sessions>("matchStatus", &SyncGroup::matchStatus),
        clipField<found, projects>("clipName", &SyncGroup::clipName),
        clipField<found, sessions>("aleMetadata", &SyncGroup::aleMetadata),
        clipField<found, sessions>("lockitMetadata", &SyncGroup::lockitMetadata),
        clipField<decision, projects, doubts>("algorithmExcludedTracks", &SyncGroup::algorithmExcludedTracks),
        clipField<found, projects, doubts>("manualActiveTracks", &SyncGroup::manualActiveTracks),
        clipField<decision, sessions, doubts>("tracksManuallyEdited", &SyncGroup::tracksManuallyEdited),
        clipField<decision, projects, neither>("manualBlockOverrides", &SyncGroup::manualBlockOverrides),
        clipField<decision, projects, doubts>("manualAudioOffsetSeconds",
                                              &SyncGroup::manualAudioOffsetSeconds),
        clipField<clap, projects, neither>("audioAnchorOffsetInAudioSeconds",
                                           &SyncGroup::audioAnchorOffsetInAudioSeconds),
        clipField<decision, projects, neither>("isApproved", &SyncGroup::isApproved),
        clipField<decision, sessions, neither>("pictureClapAnchorSeconds",
                                               &SyncGroup::pictureClapAnchorSeconds),
        clipField<decision, sessions, doubts>("isLocked", &SyncGroup::isLocked),
        clipField<detail, sessions, doubts>("lockedAtAudioAnchor", &SyncGroup::lockedAtAudioAnchor),
        clipField<detail, sessions, doubts>("lockedAtPictureAnchor", &SyncGroup::lockedAtPictureAnchor),
        clipField<detail, sessions, doubts>("lockedAtManualOffset", &SyncGroup::lockedAtManualOffset),
        clipField<decision, sessions, neither>("syncMethod", &SyncGroup::syncMethod),
        clipField<decision, sessions>("generateNativeMOSClip", &SyncGroup::generateNativeMOSClip),
        clipField<detail, sessions>("nativeMOSNameSuffix", &SyncGroup::nativeMOSNameSuffix),
        clipField<decision, sessions>("generateProjectRateClipFlag", &SyncGroup::generateProjectRateClipFlag),
        clipField<detail, sessions>("projectRateNameSuffix", &SyncGroup::projectRateNameSuffix),
        clipField<decision, projects, names>("manualClipName", &SyncGroup::manualClipName),
        clipField<decision, projects, names>("isPickup", &SyncGroup::isPickup),
        clipField<decision, projects>("isExcludedFromExport", &SyncGroup::isExcludedFromExport),
        clipField<decision, projects>("isExcludedFromMulticamFlag", &SyncGroup::isExcludedFromMulticamFlag,
                                      "isExcludedFromMulticam"),
        clipField<found, sessions, neither>("masterGainDB", &SyncGroup::masterGainDB),
        clipField<found, sessions, neither>("measuredLUFS", &SyncGroup::measuredLUFS),
        clipField<decision, sessions, neither>("masterGainAuto", &SyncGroup::masterGainAuto)};
};

/// A clip without results and decisions.
const SyncGroup& undecidedClip();

/// Whether a field has another value than in `undecidedClip`. A decision that was undone counts as none.
template <class Value>
bool isSet(const SyncGroup& group, Value SyncGroup::*member) {
    if constexpr (std::is_same_v<Value, std::optional<bool>>)
        return (group.*member).value_or(false);
    else
        return group.*member != undecidedClip().*member;
}

/// Calls `use` with each field that project files store.
template <class Use>
void forEachFieldOfProjects(const Use& use) {
    const auto useIfKept = [&]<class Field>(const Field& field) {
        if constexpr (Field::keptIn == KeptIn::projects) use(field);
    };
    std::apply([&](const auto&... field) { (useIfKept(field), ...); }, recordFields<SyncGroup>());
}

} // namespace orvane
