#pragma once

/// Fixed keys of the review window, which the user cannot change, as text for the system's keyboards.
namespace orvane::reviewKeys {

inline constexpr const char *lens = "S", *putOnFrame = "P", *firstFrame = "Home", *lastFrame = "End",
                            *rename = "F2", *attach = "Ctrl+T", *choose = "Ctrl+%1",
                            *applySuggestion = "Ctrl+Shift+A", *multicam = "Ctrl+M", *leave = "Esc",
                            *overview = "?";
/// Shown in menus; the user's own key for this action works in the review only.
inline constexpr const char* approve = "Ctrl+Return";
inline constexpr int mostChosen = 9; ///< recordings that `choose` can select, from 1

} // namespace orvane::reviewKeys
