#pragma once

#include "OrvaneSyncCore/Models/SmartAudioConfig.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "SpokenTakes/SpokenTake.h"

#include <string>

namespace orvane::test {

/// How often the speakers of a take are heard on their own lavs.
struct MicrophoneScore {
    int windows = 0;  ///< quarters of a second with one speaker, whose lav works
    int right = 0;    ///< those in which the block plays that lav
    int speakers = 0; ///< those who speak and whose lav works
    int heard = 0;    ///< those whose lav is opened at least once

    double share() const { return windows > 0 ? static_cast<double>(right) / windows : 0; }
    MicrophoneScore& operator+=(const MicrophoneScore& other);
};

MicrophoneScore scoreOf(const SpokenTake& take, const std::vector<BlockDecision>& blocks);

/// Blocks of 2 s, each with the lav of the highest RMS: the result without a router.
std::vector<BlockDecision> loudestOfTwoSeconds(const SpokenTake& take);

/// Writes the take to `folder` and analyses it with the mode's standard settings. `inMonoFiles`: one file for
/// each track.
SmartAudioResult analysed(const SpokenTake& take, const SmartAudioBlockSettings& settings,
                          const std::string& folder, bool inMonoFiles = false);

} // namespace orvane::test
