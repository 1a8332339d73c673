#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"

#include <cstddef>
#include <string>

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

/// The locked clips that a scan gave other names, because clips with equal names came or went.
struct RenamedClips {
    std::size_t count = 0;
    std::string before, now; ///< of the first

    static RenamedClips of(const WorkFiles& before, const WorkFiles& now, const NamingRules& rules);
    /// Empty if there are none.
    std::string text() const;
};

} // namespace orvane
