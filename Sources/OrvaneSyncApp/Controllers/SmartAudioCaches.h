#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/SmartAudioState.h"

#include "OrvaneSyncCore/Services/RenderedAudio/VoiceIsolationChain.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"

#include <cstdint>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace orvane {

/// What a preview of Voice Isolation is made from.
struct VoiceIsolationInput {
    TakeSound sound;
    VoiceIsolationSettings settings;

    bool operator==(const VoiceIsolationInput&) const = default;
};

/// What of a clip its analysis depends on. The settings are beside it: no step changes them.
struct AnalysisInput {
    TakeSound sound;
    int channelCount = 0;          ///< tracks of the take
    std::set<int> candidateTracks; ///< that the editor leaves to the analysis; empty: all

    bool operator==(const AnalysisInput&) const = default;
};

/// What the result of a clip was made from.
struct RoutedClip {
    AnalysisInput input;
    std::vector<BlockDecision> blocks; ///< in take time, without the ranges that were chosen by hand
};

/// What was emptied of the state because a step was taken back.
struct SmartAudioSetAside {
    SmartAudioResults results;
    std::unordered_map<UUID, RoutedClip> routed;
    std::unordered_set<UUID> passedOver;
    std::unordered_set<UUID> rendered; ///< clips whose blocks were rendered
    SyncGroupList clips;               ///< of which all of it was known; empty: of several states of them

    bool isEmpty() const { return results.empty() && passedOver.empty(); }
};

/// What Smart Audio knows of the clips, and when it is thrown away. Each removal notifies.
class SmartAudioCaches {
  public:
    explicit SmartAudioCaches(OpenWork& work) : work_(work) {}

    SmartAudioState state;
    std::unordered_map<UUID, RoutedClip> routed; ///< of the clips with a result
    /// Of the latest preview of each clip, also of one that could not be made.
    std::unordered_map<UUID, VoiceIsolationInput> lastVIInput;

    /// All that is known of the clip, and all that was rendered from it.
    void removeSmartAudioCaches(const UUID& groupID);
    void removeRenderedAudio(const UUID& groupID);
    /// The files are no more.
    void removeAllRenderedAudio();
    /// Previews of Voice Isolation and slates stay: they depend on nothing that undoing brings back.
    void invalidateCachesAfterUndo();
    /// The same, keeping what is emptied until it is taken: of several calls in a row all of it, once for
    /// each clip. `clipsBefore`: those of which it was known.
    void setAsideAfterUndo(const SyncGroupList& clipsBefore);
    SmartAudioSetAside takeSetAside() { return std::exchange(setAside_, {}); }
    /// The clips that they belong to are no more.
    void removeAll();

    /// How often the results of the clip were thrown away for good: tells a result that comes after that.
    std::uint64_t removals(const UUID& groupID) const;

  private:
    OpenWork& work_;
    SmartAudioSetAside setAside_;
    std::uint64_t removalsOfAll_ = 0;
    std::unordered_map<UUID, std::uint64_t> removals_;
};

} // namespace orvane
