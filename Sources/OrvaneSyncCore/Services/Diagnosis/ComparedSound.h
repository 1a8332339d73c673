#pragma once

#include "OrvaneSyncCore/Models/HeardLag.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "Platform/JSON.h"

#include <cstddef>
#include <vector>

namespace orvane {

/// Where the sound of clips is, compared with what their cameras' microphones recorded.
struct ComparedSound {
    /// A clip whose sound is about a frame or more away from there.
    struct Off {
        UUID groupID;
        double seconds = 0; ///< by which its sound has to be moved; positive is later
        long frames = 0;    ///< the same in frames of the clip
        double byHand = 0;  ///< the clip's manual offset when it was compared, in seconds
    };
    std::size_t right = 0; ///< clips
    std::vector<Off> off = {};
    // Clips that could not be compared.
    std::size_t withoutRecording = 0;
    std::size_t withoutCameraSound = 0;
    /// In the order of the clips; also those that are too short, or not played at the speed of recording.
    std::vector<UUID> unlike = {};

    std::size_t compared() const { return right + off.size(); }
    std::size_t notCompared() const { return withoutRecording + withoutCameraSound + unlike.size(); }

    /// `heard`: the result for `SoundLag::pairsOf(clips)`. Pure; any thread.
    static ComparedSound of(const SyncGroupList& clips, const HeardSound& heard);
};

JSON toJSON(const ComparedSound& compared);

} // namespace orvane
