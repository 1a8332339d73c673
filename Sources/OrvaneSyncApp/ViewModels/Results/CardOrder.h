#pragma once

#include <string>
#include <vector>

namespace orvane {

/// Sorts the folders of cards for the fields of a scan: the first with pictures, then the first with only
/// sound, then the others in their order. Lists the folders' files: not on the interface thread.
std::vector<std::string> cardsByContents(std::vector<std::string> folders);

} // namespace orvane
