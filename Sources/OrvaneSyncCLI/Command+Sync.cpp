#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCLI/SettingValues.h"
#include "OrvaneSyncCLI/Table.h"
#include "Platform/Files.h"
#include "Platform/Text.h"

#include <unistd.h>

namespace orvane::cli {

namespace {

constexpr std::string_view standardOutput = "-";

struct SyncOptions {
    std::string output;
    ImportController::ExportOptions document;
    std::optional<fcpxml::FCPXMLVersion> version;
    SmartAudioMode smartAudio = SmartAudioMode::standard;
};

SmartAudioMode smartAudioMode(const Context& context, const Arguments& arguments) {
    if (arguments.has("--no-smart-audio")) return SmartAudioMode::off;
    if (const auto named = arguments.value("--smart-audio")) {
        if (const auto mode = smartAudioModeFromUITag(*named)) return *mode;
        throw UsageError("--smart-audio takes off, standard, studio, cinematic or custom, not '" + *named +
                         "'");
    }
    const std::string stored = context.settings->text("smartAudioMode");
    return smartAudioModeFromUITag(stored).value_or(SmartAudioMode::standard);
}

std::optional<fcpxml::FCPXMLVersion> documentVersion(const Arguments& arguments) {
    const auto named = arguments.value("--fcpxml-version");
    if (!named) return std::nullopt;
    if (const auto version = fcpxml::fcpxmlVersionFrom(*named)) return version;
    throw UsageError("--fcpxml-version takes 1.6 to 1.14, not '" + *named + "'");
}

/// Found out before the work begins: a long scan must not end at a folder that is not there.
void checkOutput(const std::string& output) {
    if (output == standardOutput) return;
    if (assetKindFrom({output}))
        throw UsageError("-o " + output + " names a media file; it would be overwritten");
    if (const auto there = platform::files::attributes(output); there && there->isDirectory)
        throw CommandError("can't write " + output + ": it is a folder");
    const std::size_t slash = output.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : slash == 0 ? "/" : output.substr(0, slash);
    if (const std::string why = whyUnreadable(folder, true); !why.empty())
        throw CommandError("can't write " + output + ": " + folder + ": " + why);
}

SyncOptions read(const Context& context, const Arguments& arguments) {
    SyncOptions options;
    const auto output = arguments.value("--output");
    if (!output || output->empty()) throw UsageError("where to? -o OUT.fcpxml is missing");
    if (*output == standardOutput && arguments.has("--json"))
        throw UsageError("-o - and --json both want standard output");
    options.output = *output;
    options.document.eventName = arguments.value("--event");
    if (options.document.eventName && options.document.eventName->empty())
        throw UsageError("--event needs a name");
    if (arguments.has("--no-multicam")) options.document.generateMulticam = false;
    options.version = documentVersion(arguments);
    options.smartAudio = smartAudioMode(context, arguments);
    checkOutput(options.output);
    return options;
}

/// The output may be a link, or another name, of a file that was just read as media.
void refuseToOverwriteMedia(const ImportController& controller, const std::string& output) {
    const auto there = platform::files::attributes(output);
    if (!there || !controller.scanResult()) return;
    for (const auto* assets : {&controller.scanResult()->videoAssets, &controller.scanResult()->audioAssets})
        for (const MediaAsset& asset : *assets)
            if (const auto media = platform::files::attributes(asset.url.path);
                media && media->identity == there->identity)
                throw CommandError("can't write '" + output + "': it leads to the media file " +
                                   asset.filename);
}

void write(Context& context, const std::string& output, const std::string& document) {
    if (output != standardOutput) return platform::files::writeAtomically(output, document);
    context.out.write(document.data(), static_cast<std::streamsize>(document.size()));
}

std::string writtenText(const ImportController& controller, const ExportResult& result,
                        const std::string& output) {
    std::string text = "Wrote " + platform::text::printable(output) + ": " +
                       counted(result.syncClipCount, "synchronized clip", "synchronized clips");
    // Settings may keep single clips, or those without sound, out of the document.
    const int withSound = controller.syncClipCount(), mos = controller.mosCount();
    if (result.syncClipCount == withSound + mos)
        text += " (" + std::to_string(withSound) + " with sound, " + std::to_string(mos) + " MOS)";
    if (result.multicamCount > 0)
        text += ", " + counted(result.multicamCount, "multicam clip", "multicam clips");
    text += ".";
    if (controller.unmatchedCount() > 0)
        text += " Not in it: " + counted(controller.unmatchedCount(), "clip", "clips") + " without a match.";
    return text + "\n";
}

/// Says what was scanned, also where nothing of it can be exported.
[[noreturn]] void failWithoutClips(Context& context, const ImportController& controller, bool asJSON) {
    std::string folders;
    for (const auto& folder : {controller.videoFolderURL(), controller.audioFolderURL()})
        if (folder && folders.find("'" + folder->path + "'") == std::string::npos)
            folders += (folders.empty() ? "'" : " and '") + folder->path + "'";
    if (controller.scanResult()->totalFiles() == 0)
        throw CommandError("no video or audio files in " + folders);
    if (controller.syncGroups().empty()) throw CommandError("no video files in " + folders);
    if (!asJSON) context.err << stateText(controller, false) << "\n";
    throw CommandError("nothing to export from " + folders + ": " +
                       counted(static_cast<long long>(controller.syncGroups().size()), "clip", "clips") +
                       ", none of them matched");
}

void sync(Context& context, const Arguments& arguments) {
    const SyncOptions options = read(context, arguments);
    const bool asJSON = arguments.has("--json");
    ScanRun run(context, arguments);
    ImportController& controller = run.controller();
    controller.setAnalysesAfterScan(false); // once is enough, in the mode of this command
    run.scan();
    if (controller.matchedCount() == 0) failWithoutClips(context, controller, asJSON);
    if (options.smartAudio != SmartAudioMode::off)
        run.wait(controller.runSmartAudioAnalysis(options.smartAudio, false));

    run.show("Writing the document...");
    ExportSettings settings = controller.exportSettings(options.document);
    if (options.version) settings.fcpxmlVersion = *options.version;
    ExportResult result = controller.exportFCPXML(settings);
    refuseToOverwriteMedia(controller, options.output);
    write(context, options.output, result.fcpxmlString);
    run.clearProgress();

    for (const std::string& warning : leftOutWarnings(controller)) result.warnings.push_back(warning);
    for (const std::string& warning : unheardWarnings(controller)) result.warnings.push_back(warning);
    if (result.syncClipCount + result.multicamCount == 0)
        result.warnings.emplace_back("the document holds no clip; look at the settings generateSyncClips and "
                                     "export.wrapMOSInSyncClip");
    if (asJSON) {
        context.out << exportJSON(controller, result, options.output).dump(JSON::Layout::pretty) << "\n";
        return;
    }
    if (options.output != standardOutput)
        context.out << stateText(controller, context.mayColour) << smartAudioText(controller) << "\n"
                    << writtenText(controller, result, options.output);
    for (const std::string& warning : result.warnings) context.warn(warning);
}

std::vector<Option> syncOptions() {
    std::vector<Option> options{
        {"--output", "OUT.fcpxml", "where the document goes; - is standard output", "-o"},
        {"--event", "NAME", "the name of the event in Final Cut Pro"},
        {"--no-multicam", "", "build no multicam clips"},
        {"--fcpxml-version", "V", "write an older version of the format, such as 1.10"},
        {"--smart-audio", "MODE", "choose microphones by off, standard, studio, cinematic or custom"},
        {"--no-smart-audio", "", "leave every channel heard"},
    };
    options.insert(options.end(), scanOptions().begin(), scanOptions().end());
    return options;
}

} // namespace

const Command& syncCommand() {
    static const std::string settings = exportSettingsHelp();
    static const Command command{
        "sync",
        "FOLDER [AUDIO_FOLDER] -o OUT.fcpxml [options]",
        "The main job: scan, match, choose audio, write a document for Final Cut Pro.",
        "orvanesync sync demo/shoot/camera demo/shoot/sound -o demo/Synced.fcpxml",
        syncOptions(),
        sync,
        {},
        settings};
    return command;
}

} // namespace orvane::cli
