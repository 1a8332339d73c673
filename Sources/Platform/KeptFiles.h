#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orvane::platform::files {

/// As `keepBeside`, with numbers that ascend; of more than `most` files with the suffix those with the lowest
/// numbers are removed, as far as the system lets them be. Throws FileError.
std::string keepSomeBeside(const std::string& path, std::string_view suffix, std::size_t most);

} // namespace orvane::platform::files
