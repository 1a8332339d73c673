#pragma once

#include "OrvaneSyncCore/Models/RawValues.h"
#include "OrvaneSyncCore/Services/Shortcuts/Shortcut.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace orvane {

/// What a key can do. The order decides which of two actions with the same key gets it. The last four belong
/// to the menus.
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

/// The heading of an action, in the order in which lists show them.
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
/// Whether a key that is held down does it again and again.
bool repeatsWhenHeld(ShortcutAction action);

/// What the keyboard monitor delivers: every action but those of the menus.
using KeyAction = ShortcutAction;
/// Nothing for an action of the menus.
std::optional<KeyAction> keyAction(ShortcutAction action);

} // namespace orvane
