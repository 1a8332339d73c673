#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"
#include "OrvaneSyncApp/Controllers/WorkInputs.h"
#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/FileAnalysis.h"
#include "OrvaneSyncCLI/OpenSession.h"
#include "OrvaneSyncCLI/OperationProgress.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ProgressLine.h"
#include "OrvaneSyncCLI/RenderedOutput.h"
#include "OrvaneSyncCLI/SoundFile.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Services/RenderedAudio/SmartAudioMixdownRenderer.h"
#include "OrvaneSyncCore/Services/RenderedAudio/VoiceIsolationProcessor.h"
#include "OrvaneSyncCore/Services/SmartAudio/MasterGain.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

namespace orvane::cli {

namespace {

using platform::AudioFileWriter;

const std::string& onlyFile(const Arguments& arguments) {
    if (arguments.positionals().size() != 1) throw UsageError("one file, please");
    return arguments.positionals().front();
}

RunInputs inputOf(const std::string& path) {
    RunInputs inputs;
    inputs.addFile(path, "the recording");
    return inputs;
}

/// Shows on the progress line how many of so many seconds were rendered.
RenderProgress rendering(ProgressLine& line, double seconds) {
    const int total = static_cast<int>(seconds);
    return [&line, total](double share) {
        line.show({"Rendering seconds", static_cast<int>(share * total), total});
    };
}

/// The clip to mix down.
struct Routed {
    TakeSound sound;
    std::vector<BlockDecision> blocks;
};

[[noreturn]] void failWithoutBlocks(const std::string& what) {
    throw CommandError("nothing to mix down of '" + what +
                       "': less than 0.25 s that can be decoded, or a sample rate below 4 Hz");
}

Routed routedFile(Context& context, const std::string& path, ProgressLine& progress) {
    const auto file = openSound(path);
    const auto stored = context.settings->find(settings::smartAudioMode).value_or(SmartAudioMode::standard);
    FileAnalysis analysis =
        fileAnalysis(context, path, *file, stored == SmartAudioMode::off ? SmartAudioMode::standard : stored);
    analysis.request.progress = hearing(progress, std::min(secondsOf(*file), SmartAudioRouter::mostSeconds));
    Routed routed{analysis.request.sound, SmartAudioRouter().analyze(analysis.request).blocks};
    if (routed.blocks.empty()) failWithoutBlocks(path);
    return routed;
}

/// The editor's tracks and ranges apply; the session on the disk is not changed.
Routed routedClip(const Context& context, const std::string& sessionWords, const std::string& clip,
                  RenderedOutput& output, ProgressLine& progress) {
    const SessionStore store(AppStorageHelper::sessionsDirectory());
    OpenSession session(context, store, sessionNamed(store, sessionWords));
    output.addInputs(inputsOf(session.controller())());
    const SyncGroup& group = session.clipNamed(clip);
    if (group.isMOS()) throw CommandError("the clip '" + clip + "' has no sound");
    SmartAudioController& smartAudio = session.controller().smartAudio();
    const auto subscription = session.controller().onChange(
        [&](ImportField field) { showProgress(progress, session.controller(), field); });
    Routed routed{{group, takeOf(group, assumedChannels)}, {}};
    const UUID id = group.id;
    session.wait(smartAudio.runSmartAudioForGroup(id, false));
    const auto& results = smartAudio.state().results;
    if (const auto found = results.find(id); found != results.end()) {
        if (const auto failure = readFailureOf(*found->second)) throw *failure;
        routed.blocks = found->second->blocks;
    }
    if (routed.blocks.empty()) failWithoutBlocks(clip);
    return routed;
}

void mixdown(Context& context, const Arguments& arguments) {
    const auto session = arguments.value("--session"), clip = arguments.value("--clip");
    if (session.has_value() != clip.has_value()) throw UsageError("--session and --clip go together");
    if (session && !arguments.positionals().empty())
        throw UsageError("either a file, or --session and --clip");
    RenderedOutput output(context, arguments, session ? RunInputs() : inputOf(onlyFile(arguments)));
    ProgressLine progress(context, arguments.has("--quiet"));
    const Routed routed = session ? routedClip(context, *session, *clip, output, progress)
                                  : routedFile(context, onlyFile(arguments), progress);
    const OpenTake take = openTake(routed.sound);
    if (!take || !canBeRendered(*take.audio)) failWithoutBlocks(session ? *clip : onlyFile(arguments));
    output.render(SmartAudioMixdownRenderer::stereo(*take.audio), [&](AudioFileWriter& out) {
        SmartAudioMixdownRenderer::mixDown(*take.audio, routed.blocks,
                                           SmartAudioMixdownRenderer::usualRampSeconds, out,
                                           rendering(progress, secondsOf(*take.audio)));
        progress.clear();
        take.throwIfReadFailed();
        if (!session) checkHeard(context, onlyFile(arguments), *take.audio, out.frames());
        for (const IncompleteFile& file : take.incompleteFiles())
            context.warn(earlyEndWarning(file.filename, file.heardSeconds, file.promisedSeconds));
    });
}

void solo(Context& context, const Arguments& arguments) {
    const std::string& path = onlyFile(arguments);
    const auto channel = arguments.integer("--channel");
    if (!channel) throw UsageError("--channel N, please; 1 is the first");
    const RenderedOutput output(context, arguments, inputOf(path));
    const auto file = openSound(path);
    if (*channel < 1 || *channel > file->channelCount())
        throw UsageError("--channel: '" + path + "' has channels 1 to " +
                         std::to_string(file->channelCount()));
    ProgressLine progress(context, arguments.has("--quiet"));
    output.render(SmartAudioMixdownRenderer::stereo(*file), [&](AudioFileWriter& out) {
        SmartAudioMixdownRenderer::solo(*file, static_cast<int>(*channel - 1), out,
                                        rendering(progress, secondsOf(*file)));
        progress.clear();
        checkHeard(context, path, *file, out.frames());
    });
}

double amount(const Arguments& arguments, std::string_view option) {
    const double value = arguments.number(option).value_or(0);
    if (value < 0 || value > 1) throw UsageError(std::string(option) + " must be 0 to 1");
    return value;
}

VoiceIsolationSettings previewSettings(const Context& context, const Arguments& arguments) {
    constexpr std::array<std::string_view, 4> options{"--voice-isolation", "--loudness", "--uniformity",
                                                      "--gain"};
    if (std::ranges::none_of(options, [&](std::string_view one) { return arguments.has(one); })) {
        constexpr double percent = 100;
        const SmartAudioPreset preset = MasterGain::Target::fromUserDefaults(*context.settings).preset;
        return {preset.voiceIsolation / percent, preset.loudness / percent, preset.uniformity / percent, 0};
    }
    constexpr double mostGainDB = 96;
    const double gain = arguments.number("--gain").value_or(0);
    if (gain < -mostGainDB || gain > mostGainDB) throw UsageError("--gain must be -96 to 96 dB");
    return {amount(arguments, "--voice-isolation"), amount(arguments, "--loudness"),
            amount(arguments, "--uniformity"), gain};
}

void preview(Context& context, const Arguments& arguments) {
    const std::string& path = onlyFile(arguments);
    const VoiceIsolationSettings settings = previewSettings(context, arguments);
    const RenderedOutput output(context, arguments, inputOf(path));
    const auto file = openSound(path);
    if (settings.isBypass()) return output.copy(path, secondsOf(*file), file->sampleRate());
    ProgressLine progress(context, arguments.has("--quiet"));
    output.render({.sampleRate = file->sampleRate(), .channels = 1}, [&](AudioFileWriter& out) {
        VoiceIsolationProcessor::render(*file, settings, out, rendering(progress, secondsOf(*file)));
        progress.clear();
        checkHeard(context, path, *file, out.frames());
    });
}

std::vector<Option> with(std::vector<Option> own) {
    own.insert(own.end(), renderedOutputOptions().begin(), renderedOutputOptions().end());
    return own;
}

} // namespace

const Command& mixdownCommand() {
    static const Command command{
        "mixdown",
        "FILE -o OUT.wav [options] | --session ID --clip NAME -o OUT.wav",
        "Render the mix that Smart Audio chose for a recording.",
        "orvanesync mixdown demo/shoot/sound/DAY1_T01.WAV -o /tmp/mixdown.wav",
        with({{"--session", "ID",
               "of kept work, by its id or name: one of its clips, with the choices made there"},
              {"--clip", "NAME", "that clip, by its name or its camera file"}}),
        mixdown};
    return command;
}

const Command& soloCommand() {
    static const Command command{"solo",
                                 "FILE --channel N -o OUT.wav [options]",
                                 "Render one channel of a recording alone.",
                                 "orvanesync solo demo/shoot/sound/DAY1_T01.WAV --channel 2 -o /tmp/solo.wav",
                                 with({{"--channel", "N", "the channel; 1 is the first"}}),
                                 solo};
    return command;
}

const Command& previewCommand() {
    static const Command command{
        "preview",
        "FILE -o OUT.wav [options]",
        "Render a recording as Final Cut Pro's effects will change it, about.",
        "orvanesync preview demo/shoot/sound/DAY1_T01.WAV -o /tmp/preview.wav --voice-isolation 0.4",
        with({{"--voice-isolation", "A", "amount of Voice Isolation, 0 to 1"},
              {"--loudness", "A", "amount of Loudness, 0 to 1"},
              {"--uniformity", "A", "uniformity of Loudness, 0 to 1"},
              {"--gain", "DB", "master gain behind the effects"}}),
        preview,
        "\nWhat is not given counts 0; without any of the four, the amounts are those of the preset in the "
        "settings.\n"
        "Where nothing would change, the output is a copy.\n"};
    return command;
}

} // namespace orvane::cli
