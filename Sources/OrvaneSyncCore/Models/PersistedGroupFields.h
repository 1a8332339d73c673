#pragma once

#include "OrvaneSyncCore/Models/OrvaneSyncProject.h"
#include "OrvaneSyncCore/Models/StoredForms.h"

#include <string_view>
#include <tuple>

/// What a project file holds of a clip: its JSON form, and what of it is laid over a clip of a new scan.
namespace orvane {

/// A decision of the editor: saved as the clip has it, and given to the clip again.
template <class Value, class InGroup>
struct DecisionField {
    using Form = JSONForm<Value>;
    std::string_view key;
    Value PersistedGroup::*member;
    InGroup SyncGroup::*inGroup;
};
template <class Value, class InGroup>
DecisionField(const char*, Value PersistedGroup::*, InGroup SyncGroup::*) -> DecisionField<Value, InGroup>;

template <>
struct JSONFields<PersistedGroup> {
    static constexpr std::tuple list{
        JSONField{"id", &PersistedGroup::id},
        fieldAs<PathForm>("videoPath", &PersistedGroup::videoPath),
        fieldAs<PathForm>("audioPaths", &PersistedGroup::audioPaths),
        DecisionField{"clipName", &PersistedGroup::clipName, &SyncGroup::clipName},
        DecisionField{"manualAudioOffsetSeconds", &PersistedGroup::manualAudioOffsetSeconds,
                      &SyncGroup::manualAudioOffsetSeconds},
        DecisionField{"audioAnchorOffsetInAudioSeconds", &PersistedGroup::audioAnchorOffsetInAudioSeconds,
                      &SyncGroup::audioAnchorOffsetInAudioSeconds},
        DecisionField{"manualActiveTracks", &PersistedGroup::manualActiveTracks,
                      &SyncGroup::manualActiveTracks},
        DecisionField{"manualBlockOverrides", &PersistedGroup::manualBlockOverrides,
                      &SyncGroup::manualBlockOverrides},
        DecisionField{"algorithmExcludedTracks", &PersistedGroup::algorithmExcludedTracks,
                      &SyncGroup::algorithmExcludedTracks},
        DecisionField{"isApproved", &PersistedGroup::isApproved, &SyncGroup::isApproved},
        DecisionField{"manualClipName", &PersistedGroup::manualClipName, &SyncGroup::manualClipName},
        DecisionField{"isPickup", &PersistedGroup::isPickup, &SyncGroup::isPickup},
        DecisionField{"isExcludedFromExport", &PersistedGroup::isExcludedFromExport,
                      &SyncGroup::isExcludedFromExport},
        DecisionField{"isExcludedFromMulticam", &PersistedGroup::isExcludedFromMulticam,
                      &SyncGroup::isExcludedFromMulticamFlag},
        JSONField{"matchStatusRaw", &PersistedGroup::matchStatusRaw},
        JSONField{"syncOffsetSeconds", &PersistedGroup::syncOffsetSeconds}};
};

} // namespace orvane
