#pragma once

#include <cstdint>
#include <string_view>

namespace orvane::commands {

enum class Menu : std::uint8_t { file, edit, clip, audio, view };

/// The entry of a command in the menus of the window.
struct MenuPlace {
    Menu menu = Menu::file;
    /// Entries are sorted by this number; a separator is between entries with different hundreds.
    int order = 0;
    /// Such as "Ctrl+Return"; "New" and "Close" are the desktop's keys for these. A command that names a
    /// `ShortcutAction` has here the key that is used if the user's key works only in the review. Empty:
    /// none.
    std::string_view key = {};
};

} // namespace orvane::commands
