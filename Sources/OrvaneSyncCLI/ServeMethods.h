#pragma once

#include <string>
#include <string_view>

namespace orvane::cli {

/// For the help of a command: the methods of `serve` that do the same, as the table of commands describes
/// them; for `serve` itself all of them. Empty if there are none.
std::string serveMethodsText(std::string_view command);

} // namespace orvane::cli
