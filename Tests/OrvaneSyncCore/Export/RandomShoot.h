#pragma once

#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"

#include <vector>

namespace orvane::test {

/// The input of an export, made from a seed.
struct Shoot {
    SyncGroupList groups;
    std::vector<WildTrack> wildTracks;
    ExportSettings settings;
};

enum class Numbers {
    sane, ///< as on a real shoot; every clip has its own file name, a rate and a duration
    any   ///< also 0, negative and huge numbers, NaN, and texts that are not timecodes
};

/// File names are unique even without their folders.
Shoot randomShoot(unsigned seed, Numbers numbers);

} // namespace orvane::test
