#pragma once

/// Keys of the review's window, which nobody binds, as the keyboard has them.
namespace orvane::reviewKeys {

inline constexpr const char *lens = "S", *rename = "F2", *attach = "Ctrl+T", *choose = "Ctrl+%1",
                            *applySuggestion = "Ctrl+Shift+A", *multicam = "Ctrl+M", *leave = "Esc",
                            *overview = "?";
/// In menus, while the key that the user has for it acts in the review alone.
inline constexpr const char* approve = "Ctrl+Return";
inline constexpr int mostChosen = 9; ///< recordings that `choose` reaches, from 1

} // namespace orvane::reviewKeys
