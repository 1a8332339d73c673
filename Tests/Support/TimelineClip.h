#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "Support/Assets.h"

namespace orvane::test {

/// A clip of 30 s at 25 frames a second under a recording of 20 s that begins 4 s into it, with named
/// channels, an anchor, a manual range and the file of another recorder. The files do not exist.
inline SyncGroup timelineClip(int channels = 3) {
    MediaAsset recording = audio("T01.WAV", "10:00:04:00", 20);
    recording.channelCount = channels;
    recording.ixmlData = IXMLData{};
    recording.ixmlData->tracks = {{1, "Boom"}, {2, "Anna"}};
    SyncGroup group = clip(video("A001.mov", "10:00:00:00", 30), recording);
    group.audioMatches.front().syncOffsetSeconds = 4;
    MediaAsset other = audio("ZOOM0001.WAV", "10:00:10:00", 12);
    other.channelCount = 2;
    group.audioMatches.emplace_back(other, 10, 12);
    group.audioAnchorOffsetInAudioSeconds = 6;
    group.manualBlockOverrides = {{UUID::random(), 12, 15, 2}};
    return group;
}

/// The result of an analysis of it, with the manual range applied.
inline SmartAudioResult timelineResult() {
    SmartAudioResult result;
    const auto block = [](double start, double end, int track, BlockKind kind, const char* reason) {
        BlockDecision made;
        made.startSeconds = start;
        made.endSeconds = end;
        made.activeTrack = track;
        made.kind = kind;
        made.peakDB = -12.34;
        made.gainMultiplier = 1.5;
        made.reason = reason;
        return made;
    };
    result.blocks = {block(0, 8, 1, BlockKind::mix, "default · take-curated source (mean -20.0 dB)"),
                     block(8, 11, 2, BlockKind::lav, "manual override → T2"),
                     block(11, 16, 1, BlockKind::silence, "default · block silent (mean -60.0 dB)"),
                     block(16, 20, 2, BlockKind::multiActiveWarn, "multi-speaker, no Mix — phase risk")};
    result.blocks.back().secondaryTrack = 3;
    result.channelClassifications = {{1, ChannelKind::boom, 0.9F, "iXML: Boom", {}, false},
                                     {2, ChannelKind::lav, 0.8F, "iXML: Anna", "anna", false}};
    result.bestTrackIndex = 1;
    return result;
}

} // namespace orvane::test
