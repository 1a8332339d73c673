#pragma once

#include "FCPXMLKit/model/adjust/Adjustments.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <optional>
#include <set>
#include <vector>

namespace orvane::FCPXMLExporter {

/// A point of a volume curve; the curve is linear between points.
struct VolumeKeyframe {
    double time = 0;  ///< seconds from the start of the take
    double value = 0; ///< linear; 0 is silence

    bool operator==(const VolumeKeyframe&) const = default;
};

/// The curve of one track (from 1): open during its own blocks, closed during the others. `rampSeconds` is
/// the length of the change between two blocks, half of it on either side of their boundary. Between short
/// blocks it is shorter, so that each block reaches its value. A block lasts until the next one starts.
std::vector<VolumeKeyframe> keyframesFromBlocks(const std::vector<BlockDecision>& blocks, int trackIndex,
                                                double rampSeconds);
/// The same if only the best track of each section is known.
std::vector<VolumeKeyframe> keyframesFromLegacySegments(const std::vector<WindowedBestSegment>& segments,
                                                        int trackIndex, double rampSeconds);
/// The blocks in the form that a curve needs: in order, none without a length, each cut at the start of the
/// next one. If `tracks` is not empty, blocks of other tracks are left out; blocks without a track stay.
std::vector<BlockDecision> blocksInOrder(std::vector<BlockDecision> blocks, const std::set<int>& tracks);

/// The decisions of Smart Audio over time, as volumes of the channels of one clip.
class VolumeCurves {
  public:
    /// The section of a curve that one channel's element needs.
    struct Piece {
        double takeSeconds = 0; ///< the start of its file, in seconds from the start of the take
        fcpxml::Time start;     ///< the same moment on the element's time axis
        fcpxml::Time duration;
    };

    /// Without curves.
    VolumeCurves() = default;
    VolumeCurves(const SyncGroup& group, const SmartAudioResult& result);

    /// The section of the track's curve (tracks from 1), in decibels. Absent if the track has no curve.
    std::optional<fcpxml::AdjustVolume> of(int track, const Piece& piece) const;

  private:
    bool isHeardByHandAlone(int track) const;
    std::vector<VolumeKeyframe> keyframes(int track) const;

    std::vector<BlockDecision> blocks_;
    std::vector<WindowedBestSegment> segments_; ///< only if there are no blocks
    std::set<int> switchedOn_;
};

} // namespace orvane::FCPXMLExporter
