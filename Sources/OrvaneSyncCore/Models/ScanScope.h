#pragma once

#include "OrvaneSyncCore/Models/JSONCoding.h"

#include <string>
#include <vector>

namespace orvane {

/// What a scan reads beside the video and the audio folder, and what it passes over.
struct ScanScope {
    std::vector<FileURL> moreFolders{};    ///< for both picture and sound, in the order of choice
    std::vector<std::string> exclusions{}; ///< PathGlobs against the path below a folder

    bool isEmpty() const { return moreFolders.empty() && exclusions.empty(); }
    bool operator==(const ScanScope&) const = default;
};

/// The keys of a record that hold the scope, `moreFolders` and `exclude`. One that is empty has no key.
void setScanScope(JSON& record, const ScanScope& scope);
/// Throws DecodingError.
ScanScope scanScopeFrom(const JSON& record);

} // namespace orvane
