#include "OrvaneSyncCore/Services/Shortcuts/ShortcutAction.h"

#include <cstddef>

namespace orvane {

namespace {

constexpr std::size_t actionCount = RawValues<ShortcutAction>::texts.size();

struct ActionDescription {
    ShortcutCategory category;
    std::string_view label;
    std::string_view helpText;
    std::string_view key; ///< empty: unbound
    ModifierSet modifiers;
    bool repeatsWhenHeld = false;
};

using enum ShortcutCategory;
constexpr ModifierSet command = ModifierSet::command, shift = ModifierSet::shift;

/// In the order of the actions.
constexpr std::array<ActionDescription, actionCount> descriptions{{
    {playback, "Play / Pause", "Toggle play / pause.", "space", {}},
    {playback, "Shuttle Forward", "Increase forward shuttle speed (J/L convention).", "l", {}},
    {playback, "Shuttle Reverse", "Increase reverse shuttle speed.", "j", {}},
    {playback, "Shuttle Stop", "Toggle play / pause via the K key (FCP convention).", "k", {}},
    {playback,
     "Step Forward 1 Frame",
     "Right arrow — advance one frame (plays a short audio blip of that frame when scrubbing is on).",
     "arrowRight",
     {},
     true},
    {playback,
     "Step Backward 1 Frame",
     "Left arrow — retreat one frame (plays a short audio blip of that frame when scrubbing is on).",
     "arrowLeft",
     {},
     true},
    {playback, "Step Forward 5 Frames", "Shift + Right arrow — advance five frames.", "arrowRight", shift,
     true},
    {playback, "Step Backward 5 Frames", "Shift + Left arrow — retreat five frames.", "arrowLeft", shift,
     true},
    {playback,
     "Slow-Motion Scrub Forward",
     "Hold K and press L — play forward in slow motion with pitched/chopped audio.",
     "kHeldL",
     {}},
    {playback,
     "Slow-Motion Scrub Reverse",
     "Hold K and press J — play backward in slow motion with pitched/chopped audio.",
     "kHeldJ",
     {}},
    {playback,
     "Jump to Previous Edit Point",
     "Up arrow — jump the playhead to the previous edit point (detected onset).",
     "arrowUp",
     {}},
    {playback,
     "Jump to Next Edit Point",
     "Down arrow — jump the playhead to the next edit point (detected onset).",
     "arrowDown",
     {}},
    {audioOffset,
     "Nudge Audio +1 Frame",
     "Manual audio nudge — slip the audio container 1 frame forward in time.",
     "",
     {},
     true},
    {audioOffset,
     "Nudge Audio −1 Frame",
     "Manual audio nudge — slip the audio container 1 frame backward.",
     "",
     {},
     true},
    {audioOffset,
     "Nudge Audio +5 Frames",
     "Bigger nudge — slip the audio container 5 frames forward.",
     "",
     {},
     true},
    {audioOffset,
     "Nudge Audio −5 Frames",
     "Bigger nudge — slip the audio container 5 frames backward.",
     "",
     {},
     true},
    {audioOffset,
     "Nudge Clip −1 Frame",
     "Precise clip nudge — slip the audio container 1 frame backward (FCP-style , / . nudging).",
     ",",
     {},
     true},
    {audioOffset,
     "Nudge Clip +1 Frame",
     "Precise clip nudge — slip the audio container 1 frame forward (FCP-style , / . nudging).",
     ".",
     {},
     true},
    {audioOffset, "Nudge Clip −10 Frames",
     "Bigger precise nudge — slip the audio container 10 frames backward.", ",", shift, true},
    {audioOffset, "Nudge Clip +10 Frames",
     "Bigger precise nudge — slip the audio container 10 frames forward.", ".", shift, true},
    {navigation, "Next Clip", "] — jump to the next clip in the sidebar list.", "]", {}},
    {navigation, "Previous Clip", "[ — jump to the previous clip in the sidebar list.", "[", {}},
    {navigation,
     "Mark Synced",
     "Mark / unmark this clip as Synced (visible in the FCP Notes export).",
     "return",
     {}},
    {navigation, "Clear Loop", "Cancel an active clap-check loop.", "escape", {}},
    {navigation, "Toggle Audio Tracks", "Expand / collapse the per-channel audio rows.", "a", {}},
    {navigation, "Fullscreen Player", "Send the video preview to a second display in fullscreen.", "f", {}},
    {zoom, "Zoom In", "Zoom the timeline in.", "plus", {}},
    {zoom, "Zoom Out", "Zoom the timeline out.", "minus", {}},
    {zoom, "Zoom Fit", "Reset the timeline zoom to fit the clip duration.", "0", {}},
    {sync, "Clap Check Loop", "Loop ±12 frames around the clap anchor for fine sync verification.", "c", {}},
    {sync, "Update Clap Point",
     "Set the audio sync anchor (clap point) at the current playhead position — the keyboard equivalent of "
     "⌘⌥-clicking the waveform there.",
     "c", shift},
    {sync, "Lock Current Clip",
     "Verify and lock the current clip's sync — locked clips no longer auto-recompute.", "l", command},
    {sync, "Lock All Cams in Cluster", "Lock every cam that shares this clip's scene/take.", "l",
     command | shift},
    {editFile, "Undo", "Undo the last edit.", "z", command},
    {editFile, "Redo", "Redo the previously undone edit.", "z", command | shift},
    {editFile, "Open Project…", "Open a saved project file.", "o", command},
    {editFile, "Save Project…", "Save the current project to disk.", "s", command},
}};

static_assert(!descriptions.back().label.empty(), "a description for each action");

constexpr std::array<ShortcutAction, actionCount> actions = [] {
    std::array<ShortcutAction, actionCount> all{};
    for (std::size_t i = 0; i < actionCount; ++i) all.at(i) = static_cast<ShortcutAction>(i);
    return all;
}();

const ActionDescription& description(ShortcutAction action) { return rowOf(descriptions, action); }

} // namespace

std::string_view label(ShortcutCategory category) {
    constexpr std::array<std::string_view, 6> labels{"Playback", "Audio Offset", "Navigation",
                                                     "Zoom",     "Sync & Lock",  "Edit & File"};
    return rowOf(labels, category);
}

std::span<const ShortcutAction> allShortcutActions() { return actions; }

ShortcutCategory category(ShortcutAction action) { return description(action).category; }
std::string_view label(ShortcutAction action) { return description(action).label; }
std::string_view helpText(ShortcutAction action) { return description(action).helpText; }

Shortcut defaultShortcut(ShortcutAction action) {
    return {std::string(description(action).key), description(action).modifiers};
}

bool repeatsWhenHeld(ShortcutAction action) { return description(action).repeatsWhenHeld; }

std::optional<KeyAction> keyAction(ShortcutAction action) {
    if (action >= ShortcutAction::undo) return std::nullopt;
    return action;
}

} // namespace orvane
