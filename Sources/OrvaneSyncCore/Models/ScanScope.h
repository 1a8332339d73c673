#pragma once

#include "OrvaneSyncCore/Models/JSONCoding.h"

#include <string>
#include <vector>

namespace orvane {

/// What a scan reads besides the video and the audio folder, and what it leaves out.
struct ScanScope {
    std::vector<FileURL> moreFolders{};    ///< searched for both picture and sound, in the order of choice
    std::vector<std::string> exclusions{}; ///< PathGlob patterns, relative to a scanned folder

    bool isEmpty() const { return moreFolders.empty() && exclusions.empty(); }
    bool operator==(const ScanScope&) const = default;
};

/// Writes the scope into a record, under the keys `moreFolders` and `exclude`. An empty list is not written.
void setScanScope(JSON& record, const ScanScope& scope);
/// Throws DecodingError.
ScanScope scanScopeFrom(const JSON& record);

} // namespace orvane
