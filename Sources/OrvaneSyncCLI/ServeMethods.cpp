#include "OrvaneSyncCLI/ServeMethods.h"

#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace orvane::cli {

namespace {

/// Methods of the table by their identifiers; one that ends with a star stands for all that begin so.
struct Counterpart {
    std::string_view command;
    std::vector<std::string_view> methods;
};

const std::vector<Counterpart>& counterparts() {
    static const std::vector<Counterpart> all{
        {"sync",
         {"setFolders", "setCorrections", "startScan", "applyReview", "chooseFirst", "runSmartAudioAnalysis",
          "measureLoudness", "syncLockitNetwork", "exportFCPXML"}},
        {"scan", {"setFolders", "setCorrections", "startScan", "state", "writeReview"}},
        {"diagnose", {"diagnose"}},
        {"analyze", {"runSmartAudioForGroup", "smartAudioResult"}},
        {"loudness", {"measureLoudness"}},
        {"clap", {"autoDetectAudioAnchor"}},
        {"slate", {"detectSlate*", "slateResult", "acceptSlate*"}},
        {"onsets", {"waveform"}},
        {"waveform", {"waveform"}},
        {"frame", {"playerFrame"}},
        {"play", {"player*", "advanceClock"}},
        {"mixdown", {"renderMixdown", "playbackAudioURL"}},
        {"solo", {"toggleSoloMonitor", "playbackAudioURL"}},
        {"preview", {"runVoiceIsolationForGroup", "playbackAudioURL"}},
        {"atmo", {"scanAtmoCandidates", "buildAtmo"}},
        {"calibrate", {"calibration*"}},
        {"models", {"models", "downloadModel", "cancelModelDownload", "deleteModel"}},
        {"caches", {"caches", "clearCaches"}},
        {"report", {"loadALE"}},
        {"session", {"sessions", "loadSession", "state", "exportFCPXML", "deleteSession"}},
        {"project", {"loadProject", "exportFCPXML"}},
        {"settings", {"setting", "setSetting"}},
        {"shortcuts",
         {"shortcut*", "setShortcut", "resetShortcuts", "importShortcuts", "exportShortcuts",
          "saveShortcutProfile", "loadShortcutProfile", "deleteShortcutProfile", "decodeShortcut"}},
        {"lockit",
         {"signIn", "completeSignIn", "signOut", "lockit*", "syncLockitNetwork", "fieldMapping",
          "setFieldMapping", "resetFieldMapping"}},
        {"serve", {"*"}},
    };
    return all;
}

bool isNamed(const commands::Command& command, std::string_view pattern) {
    if (!pattern.ends_with('*')) return command.id == pattern;
    return command.id.starts_with(pattern.substr(0, pattern.size() - 1));
}

void append(std::string& text, std::string_view pattern) {
    const std::vector<commands::Command>& table = commands::allCommands();
    bool isThere = false;
    for (const commands::Command& command : table) {
        if (!isNamed(command, pattern)) continue;
        isThere = true;
        text.append("  ").append(command.signature()).append("\n      ").append(command.help).append("\n");
    }
    if (!isThere) throw std::logic_error("no command is named '" + std::string(pattern) + "'");
}

} // namespace

std::string serveMethodsText(std::string_view command) {
    const auto found = std::ranges::find(counterparts(), command, &Counterpart::command);
    std::string text;
    if (found == counterparts().end()) return text;
    for (const std::string_view pattern : found->methods) append(text, pattern);
    return text;
}

} // namespace orvane::cli
