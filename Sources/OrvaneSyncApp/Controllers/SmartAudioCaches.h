#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/SmartAudioState.h"

#include "OrvaneSyncCore/Services/RenderedAudio/VoiceIsolationChain.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"

#include <cstdint>
#include <map>
#include <unordered_map>
#include <vector>

namespace orvane {

/// What a preview of Voice Isolation is made from.
struct VoiceIsolationInput {
    TakeSound sound;
    VoiceIsolationSettings settings;

    bool operator==(const VoiceIsolationInput&) const = default;
};

/// What Smart Audio knows of the clips, and when it is thrown away. Each removal notifies.
class SmartAudioCaches {
  public:
    explicit SmartAudioCaches(OpenWork& work) : work_(work) {}

    SmartAudioState state;
    /// The blocks of the results, in take time, without the ranges that were chosen by hand.
    std::map<UUID, std::vector<BlockDecision>> routedBlocks;
    /// Of the latest preview of each clip, also of one that could not be made.
    std::unordered_map<UUID, VoiceIsolationInput> lastVIInput;

    /// All that is known of the clip, and all that was rendered from it.
    void removeSmartAudioCaches(const UUID& groupID);
    void removeRenderedAudio(const UUID& groupID);
    /// The files are no more.
    void removeAllRenderedAudio();
    /// Previews of Voice Isolation and slates stay: they depend on nothing that undoing brings back.
    void invalidateCachesAfterUndo();
    /// The clips that they belong to are no more.
    void removeAll();

    /// How often the results of the clip were thrown away: tells a result that comes after that.
    std::uint64_t removals(const UUID& groupID) const;

  private:
    OpenWork& work_;
    std::uint64_t removalsOfAll_ = 0;
    std::unordered_map<UUID, std::uint64_t> removals_;
};

} // namespace orvane
