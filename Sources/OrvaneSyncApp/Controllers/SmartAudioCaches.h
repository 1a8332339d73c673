#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/SmartAudioState.h"

#include "OrvaneSyncCore/Models/SmartAudioKinds.h"
#include "OrvaneSyncCore/Services/RenderedAudio/VoiceIsolationChain.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioRouter.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioTerms.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "OrvaneSyncCore/Services/Waveform/ClapDetector.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace orvane {

/// The input of a preview of Voice Isolation.
struct VoiceIsolationInput {
    TakeSound sound;
    VoiceIsolationSettings settings;

    bool operator==(const VoiceIsolationInput&) const = default;
};

/// What the analysis of a clip depends on, except the settings, which no undo step changes.
struct AnalysisInput {
    TakeSound sound;
    int channelCount = 0;          ///< tracks of the take
    std::set<int> candidateTracks; ///< those that the editor allows in the analysis; empty: all

    bool operator==(const AnalysisInput&) const = default;
};

/// The input and the options with which a clip was routed, and the result.
struct RoutedClip {
    AnalysisInput input;
    SmartAudioTerms terms;
    std::vector<BlockDecision> blocks; ///< in take time, without the ranges that the editor chose
};

/// The files of a clip when its slate was searched for.
struct SlateInput {
    FileURL video;
    std::optional<ClapDetector::Search> audio; ///< absent: the clip had no sound

    static SlateInput of(const SyncGroup& group) {
        return {group.video.url, ClapDetector::Search::of(group)};
    }
    bool isOf(const SyncGroup& group) const;
};

/// The results of searches for slates that `leaveClips` has kept.
struct SlatesSetAside {
    std::unordered_map<UUID, SlateResult> results;
    std::unordered_map<UUID, FileURL> unread;
    std::unordered_map<UUID, SlateInput> inputs;
};

/// What was removed from the state because a step was undone, or because a scan or another session replaced
/// the clips.
struct SmartAudioSetAside {
    SmartAudioResults results;
    std::unordered_map<UUID, RoutedClip> routed;
    std::unordered_set<UUID> passedOver;
    std::unordered_set<UUID> rendered; ///< clips whose blocks were rendered
    SyncGroupList clips; ///< the clips when the removed data was valid; empty: it comes from several states

    bool isEmpty() const { return results.empty() && passedOver.empty(); }
};

/// What Smart Audio knows about the clips, and the operations that discard it. Each removal notifies.
class SmartAudioCaches {
  public:
    explicit SmartAudioCaches(OpenWork& work) : work_(work) {}

    SmartAudioState state;
    std::unordered_map<UUID, RoutedClip> routed;      ///< of the clips with a result
    std::unordered_map<UUID, SlateInput> slateInputs; ///< of the clips that were searched for a slate
    /// The input of the latest preview of each clip, also of one that could not be made.
    std::unordered_map<UUID, VoiceIsolationInput> lastVIInput;

    /// Removes all that is known about the clip, and all that was rendered from it.
    void removeSmartAudioCaches(const UUID& groupID);
    void removeRenderedAudio(const UUID& groupID);
    /// Called when the files are gone.
    void removeAllRenderedAudio();
    /// Keeps previews of Voice Isolation and slates: they depend on nothing that undo restores.
    void invalidateCachesAfterUndo();
    /// The same, but keeps the removed data until it is taken: that of several calls in a row together, once
    /// for each clip. `clipsBefore`: the clips for which it was valid.
    void setAsideAfterUndo(const SyncGroupList& clipsBefore);
    SmartAudioSetAside takeSetAside() { return std::exchange(setAside_, {}); }
    /// Called when the clips are gone.
    void removeAll();
    /// To be called when other clips replace these. Empties everything, but keeps the results by clip,
    /// because the clips may come back. If the results of very many clips are kept already, these are
    /// discarded.
    void leaveClips();
    /// Adds results that were stored earlier to those that `takeSetAside` returns.
    void offer(SmartAudioSetAside stored);
    /// Moves the kept results of these clips to those that `takeSetAside` returns, and restores those of
    /// slates where the clip has the files that were searched.
    void recall(const SyncGroupList& clips);

    /// How often the results of the clip were discarded for good: a result from before such a removal is out
    /// of date.
    std::uint64_t removals(const UUID& groupID) const;

  private:
    void recallSlates(const SyncGroupList& clips);

    OpenWork& work_;
    SmartAudioSetAside setAside_;
    SmartAudioSetAside left_; ///< kept by `leaveClips`
    SlatesSetAside leftSlates_;
    std::uint64_t removalsOfAll_ = 0;
    std::unordered_map<UUID, std::uint64_t> removals_;
};

} // namespace orvane
