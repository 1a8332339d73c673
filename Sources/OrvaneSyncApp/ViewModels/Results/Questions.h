#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncApp/Controllers/SessionManager.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Text.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// What is asked before all clips are changed at once.
struct Question {
    std::string title;
    std::string text;
    std::string no;  ///< what the button says that leaves the editor's work as it is
    std::string yes; ///< what the other one says

    bool operator==(const Question&) const = default;
};

/// Before all clips are analysed, whatever the answer is: "yes" forces manual tracks to be overwritten.
/// Absent where nobody has chosen channels; then nothing is lost by force.
inline std::optional<Question> questionBeforeAnalysis(const SyncGroupList& clips) {
    const auto byHand = std::ranges::count_if(clips, &SyncGroup::hasManualTrackEdits);
    if (byHand == 0) return std::nullopt;
    return Question{"Overwrite manual channel selections?",
                    counted(byHand, "clip", "clips") +
                        " have channels you set by hand. Re-analysing can replace those with the "
                        "algorithm's choice.",
                    "Keep my selections", "Overwrite"};
}

/// By which all clips are analysed on request.
inline SmartAudioMode modeOfAnalysis(const platform::SettingsStore& settings) {
    return settings.find(settings::smartAudioMode).value_or(SmartAudioMode::standard);
}

/// Before all clips are matched again.
inline Question questionBeforeResync() {
    return {
        "Re-sync all clips?",
        "This will recompute every clip's audio matches from the engine. Your manual offsets, sync "
        "anchors, locks, manual clip names, pickup and exclude flags are preserved — only the audio match "
        "tables change.\n\nUse Cmd+Z to undo.",
        "Cancel", "Re-sync All"};
}

/// Before all clips are reset, which cannot be taken back.
inline Question questionBeforeReset() {
    return {
        "Reset all clips?",
        "Revert every clip in the project: routing override, manual offset, sync anchors, lock, approval. "
        "Auto TC offsets stay.",
        "Cancel", "Reset All"};
}

/// Without what a file system of any desktop refuses in a name.
inline std::string asFileName(std::string_view name) {
    std::string safe(name);
    std::ranges::replace_if(
        safe,
        [](unsigned char c) {
            return c < ' ' ||
                   std::string_view("/\\:*?\"<>|").find(static_cast<char>(c)) != std::string_view::npos;
        },
        '-');
    return std::string(platform::text::trimmed(safe));
}

/// The name, without its ending, under which a document of the open work is offered to be written: that of
/// the session, so that no day of a shoot replaces another one's; without a session the event's.
inline std::string proposedDocumentName(const SessionManager& sessions, std::string_view eventName) {
    const auto& open = sessions.currentSessionId();
    const SessionInfo* session = open ? sessions.session(*open) : nullptr;
    const std::string name = asFileName(session != nullptr ? session->name : "");
    return name.empty() ? asFileName(eventName) : name;
}

/// The same of a project, which keeps the name of its file.
inline std::string proposedProjectName(const ImportController& controller, const SessionManager& sessions) {
    std::string name;
    if (const auto& open = controller.project().currentURL())
        name = std::filesystem::path(open->path).stem().string();
    else
        name =
            proposedDocumentName(sessions, controller.work().environment.settings->get(settings::eventName));
    return (name.empty() ? "Project" : name) + ".orvanesync";
}

} // namespace orvane
