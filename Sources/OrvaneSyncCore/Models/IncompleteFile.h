#pragma once

#include <string>

namespace orvane {

/// A file of a recording that is missing, or that ends earlier than its header says.
struct IncompleteFile {
    std::string filename;
    double heardSeconds = 0; ///< the part that exists, seconds; 0 for a missing file
    double promisedSeconds = 0;

    bool operator==(const IncompleteFile&) const = default;
};

} // namespace orvane
