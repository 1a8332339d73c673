#pragma once

#include <cstdint>
#include <string_view>

namespace orvane::commands {

enum class Menu : std::uint8_t { file, edit, clip, audio, view };

/// The entry of a command in the menus of the window.
struct MenuPlace {
    Menu menu = Menu::file;
    /// Entries stand by rising numbers, with a separator wherever the hundreds change.
    int order = 0;
    /// Such as "Ctrl+Return"; "New" and "Close" are the keys that the desktop has for these. Of a command
    /// that names a `ShortcutAction` only the key that stands in where the user's acts in the review alone.
    /// Empty: none.
    std::string_view key = {};
};

} // namespace orvane::commands
