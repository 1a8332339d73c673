#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orvane {

/// A word of a cure as a shell reads it.
struct ShellWord {
    std::string text;       ///< without its quotes
    std::size_t length = 0; ///< as it is written
    bool isQuoted = false;
};

/// From `at` up to a blank, a comma, a semicolon or a closing bracket outside of quotes. Pure; any thread.
ShellWord shellWordAt(std::string_view text, std::size_t at);

} // namespace orvane
