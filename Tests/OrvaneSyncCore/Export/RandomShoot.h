#pragma once

#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"

#include <vector>

namespace orvane::test {

/// What an export takes, made of a seed.
struct Shoot {
    SyncGroupList groups;
    std::vector<WildTrack> wildTracks;
    ExportSettings settings;
};

enum class Numbers {
    sane, ///< as a shoot has them; every clip has a file name, a rate and a duration of its own
    any   ///< also 0, negative, huge and not a number, and texts that are no timecodes
};

/// File names are unique, also without the folder.
Shoot randomShoot(unsigned seed, Numbers numbers);

} // namespace orvane::test
