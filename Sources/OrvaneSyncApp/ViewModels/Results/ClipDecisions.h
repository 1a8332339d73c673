#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"

namespace orvane {

/// The decisions in the clips of the open work that a scan of their folders would not restore.
struct ClipDecisions {
    int locked = 0;
    int approved = 0;
    int otherwise = 0; ///< clips with decisions that are neither locked nor approved
    int claps = 0;     ///< clips with a clap point in the sound and none of the above
    int removed = 0;   ///< clips that the editor has removed
    int described = 0; ///< clips with metadata of a report that is not loaded, or of the metadata service

    static ClipDecisions of(const ImportController& controller);
    /// The decisions that are not in `later`.
    ClipDecisions without(const ClipDecisions& later) const;
    bool any() const { return *this != ClipDecisions(); }
    bool operator==(const ClipDecisions&) const = default;
};

} // namespace orvane
