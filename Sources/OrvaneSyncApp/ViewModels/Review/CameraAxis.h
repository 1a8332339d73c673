#pragma once

#include "OrvaneSyncApp/Controllers/ClusterEngineBag.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// The positions of the cameras of a take on a common axis. The axis is shared time, in seconds of the sound
/// that they have in common; it reaches from the earliest start to the latest end. A plain value.
struct CameraAxis {
    struct Camera {
        UUID id;
        std::string label;
        double startSeconds = 0;
        double endSeconds = 0; ///< from the player; until it is loaded, from the file
    };
    static CameraAxis of(const ClusterEngineBag& bag, const SyncGroupList& clips);

    std::vector<Camera> cameras; ///< in their order
    double startSeconds = 0;
    double endSeconds = 0;

    /// Position from 0 to `width`, in points.
    double x(double seconds, double width) const;
    double seconds(double x, double width) const;
};

/// Shared time of the camera that is heard, otherwise of the first that can be played; absent without one. A
/// camera that waits at its start or its end does not say the time if another one is within its clip; if all
/// wait, the time is that of the latest end, or of the earliest start.
std::optional<double> sharedPlayhead(const ClusterEngineBag& bag);

/// Whether a camera was recording at a moment. Outside of its clip its player shows the first or last frame.
enum class CameraRun : std::uint8_t { notYet, running, ended };
/// `sharedSeconds`: shared time. A camera that is not there or not loaded counts as running.
CameraRun cameraRun(const ClusterEngineBag& bag, const UUID& camera, double sharedSeconds);

} // namespace orvane
