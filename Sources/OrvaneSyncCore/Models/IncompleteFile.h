#pragma once

#include <string>

namespace orvane {

/// A file of a recording that is missing, or ended before its header says.
struct IncompleteFile {
    std::string filename;
    double heardSeconds = 0; ///< that are there; 0 for a missing file
    double promisedSeconds = 0;

    bool operator==(const IncompleteFile&) const = default;
};

} // namespace orvane
