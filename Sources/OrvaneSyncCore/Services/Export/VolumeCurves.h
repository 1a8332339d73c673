#pragma once

#include "FCPXMLKit/model/adjust/Adjustments.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <optional>
#include <set>
#include <vector>

namespace orvane::FCPXMLExporter {

/// A point of a volume curve, which goes straight to the next point.
struct VolumeKeyframe {
    double time = 0;  ///< seconds from the start of the take
    double value = 0; ///< linear; 0 is silence

    bool operator==(const VolumeKeyframe&) const = default;
};

/// The curve of one track (from 1): open on its own blocks, closed on the others. `rampSeconds` is the length
/// of the change between two blocks, half of it on either side of their boundary; between short blocks it is
/// shorter, so that each block is reached. A block lasts until the next one starts.
std::vector<VolumeKeyframe> keyframesFromBlocks(const std::vector<BlockDecision>& blocks, int trackIndex,
                                                double rampSeconds);
/// The same where only the best track of each stretch is known.
std::vector<VolumeKeyframe> keyframesFromLegacySegments(const std::vector<WindowedBestSegment>& segments,
                                                        int trackIndex, double rampSeconds);
/// The blocks that a curve can follow: in order, none without a length, each cut where the next one starts.
/// With a choice of tracks, blocks of other tracks are left out; those of no track stay.
std::vector<BlockDecision> blocksInOrder(std::vector<BlockDecision> blocks, const std::set<int>& tracks);

/// What Smart Audio decided over time, as volumes of the channels of one clip.
class VolumeCurves {
  public:
    /// Where a channel's element takes its piece of a curve from.
    struct Piece {
        double takeSeconds = 0; ///< the start of its file, in seconds from the start of the take
        fcpxml::Time start;     ///< the same moment on the time axis of the element
        fcpxml::Time duration;
    };

    /// No curves at all.
    VolumeCurves() = default;
    VolumeCurves(const SyncGroup& group, const SmartAudioResult& result);

    /// The piece of the track's curve (tracks from 1), in decibels. Nothing for a track without a curve.
    std::optional<fcpxml::AdjustVolume> of(int track, const Piece& piece) const;

  private:
    bool isHeardByHandAlone(int track) const;
    std::vector<VolumeKeyframe> keyframes(int track) const;

    std::vector<BlockDecision> blocks_;
    std::vector<WindowedBestSegment> segments_; ///< only where there are no blocks
    std::set<int> switchedOn_;
};

} // namespace orvane::FCPXMLExporter
