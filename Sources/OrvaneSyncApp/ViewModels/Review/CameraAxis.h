#pragma once

#include "OrvaneSyncApp/Controllers/ClusterEngineBag.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// Where the cameras of a take lie beside each other. The axis is shared time, seconds of the sound that they
/// have in common; it reaches from the first camera's start to the last one's end. A plain value.
struct CameraAxis {
    struct Camera {
        UUID id;
        std::string label;
        double startSeconds = 0;
        double endSeconds = 0; ///< by the player, or by the file as long as it is not loaded
    };
    static CameraAxis of(const ClusterEngineBag& bag, const SyncGroupList& clips);

    std::vector<Camera> cameras; ///< in their order
    double startSeconds = 0;
    double endSeconds = 0;

    /// From 0 to `width`, in points.
    double x(double seconds, double width) const;
    double seconds(double x, double width) const;
};

/// Shared time of the camera that is heard, or of the first that can be played; absent without one.
std::optional<double> sharedPlayhead(const ClusterEngineBag& bag);

} // namespace orvane
