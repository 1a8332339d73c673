#pragma once

#include "OrvaneSyncCore/Models/RawValues.h"
#include "OrvaneSyncCore/Services/Shortcuts/Shortcut.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace orvane {

/// The actions that keys can have. If two actions have the same key, the first in this order gets it. The
/// last four belong to the menus.
enum class ShortcutAction : std::uint8_t {
    playPause,
    shuttleForward,
    shuttleReverse,
    shuttleStop,
    stepForward,
    stepBackward,
    stepForward5,
    stepBackward5,
    slowMoForward,
    slowMoReverse,
    jumpPrevEdit,
    jumpNextEdit,
    audioOffsetPlus,
    audioOffsetMinus,
    audioOffsetPlus5,
    audioOffsetMinus5,
    nudgeCommaMinus,
    nudgePeriodPlus,
    nudgeCommaMinus10,
    nudgePeriodPlus10,
    nextGroup,
    prevGroup,
    toggleApproved,
    clearLoop,
    toggleAudioExpand,
    toggleFullscreen,
    zoomIn,
    zoomOut,
    zoomFit,
    clapCheck,
    updateClapPoint,
    lockCurrent,
    lockAllInCluster,
    undo,
    redo,
    openProject,
    saveProject
};
template <>
struct RawValues<ShortcutAction> {
    static constexpr std::array<std::string_view, 37> texts{"playPause",
                                                            "shuttleForward",
                                                            "shuttleReverse",
                                                            "shuttleStop",
                                                            "stepForward",
                                                            "stepBackward",
                                                            "stepForward5",
                                                            "stepBackward5",
                                                            "slowMoForward",
                                                            "slowMoReverse",
                                                            "jumpPrevEdit",
                                                            "jumpNextEdit",
                                                            "audioOffsetPlus",
                                                            "audioOffsetMinus",
                                                            "audioOffsetPlus5",
                                                            "audioOffsetMinus5",
                                                            "nudgeCommaMinus",
                                                            "nudgePeriodPlus",
                                                            "nudgeCommaMinus10",
                                                            "nudgePeriodPlus10",
                                                            "nextGroup",
                                                            "prevGroup",
                                                            "toggleApproved",
                                                            "clearLoop",
                                                            "toggleAudioExpand",
                                                            "toggleFullscreen",
                                                            "zoomIn",
                                                            "zoomOut",
                                                            "zoomFit",
                                                            "clapCheck",
                                                            "updateClapPoint",
                                                            "lockCurrent",
                                                            "lockAllInCluster",
                                                            "undo",
                                                            "redo",
                                                            "openProject",
                                                            "saveProject"};
};

/// The headings of the actions, in the order in which lists show them.
enum class ShortcutCategory : std::uint8_t { playback, audioOffset, navigation, zoom, sync, editFile };
template <>
struct RawValues<ShortcutCategory> {
    static constexpr std::array<std::string_view, 6> texts{"playback", "audioOffset", "navigation",
                                                           "zoom",     "sync",        "editFile"};
};
std::string_view label(ShortcutCategory category);

std::span<const ShortcutAction> allShortcutActions();
ShortcutCategory category(ShortcutAction action);
std::string_view label(ShortcutAction action);
std::string_view helpText(ShortcutAction action);
Shortcut defaultShortcut(ShortcutAction action);
/// Whether the action is repeated while its key is held down.
bool repeatsWhenHeld(ShortcutAction action);

/// The actions that the keyboard monitor calls: all but those of the menus.
using KeyAction = ShortcutAction;
/// Absent for an action of the menus.
std::optional<KeyAction> keyAction(ShortcutAction action);

} // namespace orvane
