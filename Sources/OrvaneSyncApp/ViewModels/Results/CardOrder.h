#pragma once

#include <string>
#include <vector>

namespace orvane {

/// The folders of cards as the fields of a scan take them: the first one with pictures, then the first one
/// with sound alone, then the others in their order. Lists what lies in them: not on the interface thread.
std::vector<std::string> cardsByContents(std::vector<std::string> folders);

} // namespace orvane
