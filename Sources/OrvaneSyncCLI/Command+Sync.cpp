#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/DocumentOutput.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/RoomTone.h"
#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCLI/SignInHint.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCLI/TypedSettings.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"
#include "Platform/Text.h"
#include "Timecode/Timecode.h"

#include <algorithm>

namespace orvane::cli {

namespace {

SmartAudioMode smartAudioMode(const Context& context, const Arguments& arguments) {
    if (arguments.has("--no-smart-audio")) {
        if (arguments.has("--smart-audio"))
            throw UsageError("--smart-audio and --no-smart-audio contradict each other");
        return SmartAudioMode::off;
    }
    if (const auto named = arguments.value("--smart-audio")) {
        if (const auto mode = smartAudioModeFromUITag(*named)) return *mode;
        throw UsageError("--smart-audio must be off, standard, studio, cinematic or custom, not '" + *named +
                         "'");
    }
    return context.settings->find(settings::smartAudioMode).value_or(SmartAudioMode::standard);
}

/// Reports what was scanned, also if nothing of it can be exported.
[[noreturn]] void failWithoutClips(Context& context, const ImportController& controller, bool asJSON) {
    std::string folders;
    for (const FileURL& folder : controller.work().folders())
        folders += (folders.empty() ? "'" : " and '") + folder.path + "'";
    if (controller.scan().scanResult()->totalFiles() == 0)
        throw CommandError("no video or audio files in " + folders);
    if (controller.work().syncGroups().empty()) throw CommandError("no video files in " + folders);
    if (!asJSON)
        context.err << stateText(controller, false) << doubtsText(WorkSnapshot(controller), context.call())
                    << "\n";
    throw CommandError("nothing to export from " + folders + ": " +
                       counted(controller.work().syncGroups().size(), "clip", "clips") +
                       ", none of them matched");
}

std::vector<ReviewLine> readReview(const std::string& path) {
    if (const std::string why = whyUnreadable(path, false); !why.empty())
        throw UsageError("can't read the review '" + path + "': " + why);
    return readReviewFile(path);
}

/// If requested metadata can't be had, that is an error: a document without it would look like one with it.
void applyLockitMetadata(Context& context, ScanRun& run, const std::string& project,
                         const Arguments& arguments) {
    const OpenWork::Environment& environment = run.controller().work().environment;
    const auto account =
        LockitOAuthService::create({.mainThread = environment.mainThread, .clock = context.clock});
    LockitController& lockit = run.controller().lockit();
    run.wait(lockit.syncLockitNetwork(account, project));
    std::string status = lockit.lockitSyncStatus().value_or("");
    std::ranges::replace(status, '\n', ' ');
    if (lockit.lastSyncEnd() == LockitController::SyncEnd::failed)
        throw CommandError(status + signInHint(*account));
    if (lockit.lastSyncEnd() == LockitController::SyncEnd::noMatches)
        run.warn(std::move(status));
    else if (!arguments.has("--quiet"))
        context.err << platform::text::printable(status) << "\n";
}

/// The start in a global offset that was typed for this run is checked against the rate of the clips.
void checkStartOfOffset(const Context& context, ScanRun& run) {
    const auto& setting = settings::globalAudioOffsetStartFromTC;
    const auto text = context.settings->find(setting);
    if (!text || context.settings->get(settings::globalAudioOffsetStartMode) != GlobalOffsetStart::fromTC)
        return;
    const TimecodeFrameRate rate = rateOfMostClips(run.controller().work().syncGroups());
    const auto start = Timecode::fromString(*text, rate);
    const int frames = timecodeRate::maxFrames(rate);
    if (!start || start->components().frames < frames) return;
    const std::string problem = std::string(setting.key) + "=" + *text + ": of most clips, frames go to " +
                                std::to_string(frames - 1);
    if (context.settings->storedValue(setting) != context.settings->value(setting))
        throw UsageError("--set: " + problem);
    run.warn("stored settings: " + problem);
}

void sync(Context& context, const Arguments& arguments) {
    RunInputs inputs = inputsOf(arguments);
    const auto reviewFile = arguments.value("--apply");
    if (reviewFile) inputs.addFile(*reviewFile, "the review");
    DocumentOutput output(context, arguments, std::move(inputs));
    const auto review = reviewFile ? std::optional(readReview(*reviewFile)) : std::nullopt;
    const SmartAudioMode smartAudio = smartAudioMode(context, arguments);
    ScanRun run(context, arguments);
    ImportController& controller = run.controller();
    // Analyses only once, in the mode of this command.
    run.scan(ScanRun::Analysis::none, review ? &*review : nullptr);
    checkStartOfOffset(context, run);
    if (controller.work().matchedCount() == 0) failWithoutClips(context, controller, arguments.has("--json"));
    if (const auto project = arguments.value("--lockit"))
        applyLockitMetadata(context, run, *project, arguments);
    if (smartAudio != SmartAudioMode::off)
        run.wait(controller.smartAudio().runSmartAudioAnalysis(smartAudio, false));
    if (arguments.has("--loudness")) run.wait(controller.smartAudio().measureLoudness());
    if (arguments.has("--atmo")) {
        for (const std::string& problem : buildRoomTone(run, {}).problems) run.warn(problem);
    }
    run.show("Writing the document...");
    output.smartAudioMode = smartAudio;
    output.warnedAlready = run.warnings();
    if (!review) output.lastLine = notComparedText(controller.work().syncGroups());
    output.write(controller, [&] { run.clearProgress(); });
}

std::vector<Option> syncOptions() {
    std::vector<Option> options{
        {"--smart-audio", "MODE", "choose microphones by off, standard, studio, cinematic or custom"},
        {"--no-smart-audio", "", "leave every channel heard"},
        {"--apply", "IN.tsv",
         "do what a table says that scan --review has written and people have filled in"},
        {"--lockit", "PROJECT",
         "copy the metadata of LockitNetwork to the clips; orvanesync lockit projects lists the projects"},
        {"--atmo", "", "build room tone of the quiet stretches of each scene, and put it into the document"},
        {"--loudness", "", "measure every clip and write the gain that brings it to the target loudness"},
    };
    options.insert(options.begin(), documentOptions().begin(), documentOptions().end());
    options.insert(options.end(), scanOptions().begin(), scanOptions().end());
    return options;
}

} // namespace

const Command& syncCommand() {
    static const std::string settings = exportSettingsHelp();
    static const Command command{
        "sync",
        "FOLDER... -o OUT.fcpxml [options]",
        "The main job: scan, match, choose audio, write a document for Final Cut Pro.",
        "orvanesync sync demo/shoot/camera demo/shoot/sound -o demo/Synced.fcpxml",
        syncOptions(),
        sync,
        {},
        settings};
    return command;
}

} // namespace orvane::cli
