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

/// A question that is asked before all clips are changed at once.
struct Question {
    std::string title;
    std::string text;
    std::string no;  ///< text of the button that keeps the editor's work
    std::string yes; ///< text of the other button

    bool operator==(const Question&) const = default;
};

/// Before all clips are analysed, which happens with either answer: "yes" also overwrites manual tracks.
/// Absent if the editor has chosen no channels, because then nothing would be lost.
inline std::optional<Question> questionBeforeAnalysis(const SyncGroupList& clips) {
    const auto byHand = std::ranges::count_if(clips, &SyncGroup::hasManualTrackEdits);
    if (byHand == 0) return std::nullopt;
    return Question{"Overwrite manual channel selections?",
                    counted(byHand, "clip", "clips") +
                        " have channels you set by hand. Re-analysing can replace those with the "
                        "algorithm's choice.",
                    "Keep my selections", "Overwrite"};
}

/// The mode in which all clips are analysed on request.
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

/// Before all clips are reset, which cannot be undone.
inline Question questionBeforeReset() {
    return {
        "Reset all clips?",
        "Revert every clip in the project: routing override, manual offset, sync anchors, lock, approval. "
        "Auto TC offsets stay. This can't be taken back.",
        "Cancel", "Reset All"};
}

/// Without the characters that any desktop's file system refuses in a name.
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

/// The proposed name, without extension, of a document of the open work: that of the session, so that each
/// day of a shoot gets its own file; without a session that of the event.
inline std::string proposedDocumentName(const SessionManager& sessions, std::string_view eventName) {
    const auto& open = sessions.currentSessionId();
    const SessionInfo* session = open ? sessions.session(*open) : nullptr;
    const std::string name = asFileName(session != nullptr ? session->name : "");
    return name.empty() ? asFileName(eventName) : name;
}

/// The same for a project, which keeps the name of its file.
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
