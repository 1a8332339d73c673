#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/OpenSession.h"
#include "OrvaneSyncCLI/PlayRange.h"
#include "OrvaneSyncCLI/PlayRendering.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ProgressLine.h"
#include "OrvaneSyncCLI/SoundFile.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Services/Takes/ClipSound.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <cmath>
#include <cstdint>

namespace orvane::cli {

namespace {

using platform::MediaTime;

constexpr double fastestRate = 32;

void takeFiles(PlayRange& asked, const Arguments& arguments) {
    const auto& files = arguments.positionals();
    if (files.empty() || files.size() > 2) throw UsageError("a video, and perhaps a recording, please");
    asked.video = files.front();
    if (files.size() > 1) {
        openSound(files[1]); // or an error that names it
        asked.sound = TakeSound(FileURL{files[1]});
    }
    asked.offset = arguments.number("--offset").value_or(0);
}

void takeClip(PlayRange& asked, const Context& context, const Arguments& arguments) {
    const auto session = arguments.value("--session"), clip = arguments.value("--clip");
    if (!session || !clip) throw UsageError("--session and --clip go together");
    if (!arguments.positionals().empty() || arguments.has("--offset"))
        throw UsageError("either files, or --session and --clip");
    const SessionStore store(AppStorageHelper::sessionsDirectory());
    const OpenSession open(context, store, sessionNamed(store, *session));
    const SyncGroup& group = open.clipNamed(*clip);
    ClipSound sound(group);
    asked.video = group.video.url.path;
    asked.offset = sound.offsetSeconds;
    if (!sound.take) return;
    if (openTake(*sound.take))
        asked.sound = std::move(sound.take);
    else
        context.warn("the recording of '" + *clip + "' can't be read: the video's own sound is played");
}

PlayRange askedFor(const Context& context, const Arguments& arguments) {
    PlayRange asked;
    if (arguments.has("--session") || arguments.has("--clip"))
        takeClip(asked, context, arguments);
    else
        takeFiles(asked, arguments);
    asked.from = arguments.number("--from").value_or(0);
    asked.to = arguments.number("--to");
    asked.rate = arguments.number("--rate").value_or(1);
    if (asked.rate == 0 || std::abs(asked.rate) > fastestRate)
        throw UsageError("--rate must be -32 to 32 and not 0");
    if (asked.from < 0) throw UsageError("--from is a second of the clip, 0 or later");
    if (asked.to && !(*asked.to > asked.from)) throw UsageError("--to must be after --from");
    return asked;
}

/// Plays on the machine's own output, to the end of the range.
void playAloud(Context& context, const Arguments& arguments, const PlayRange& asked) {
    const auto loop = platform::RunLoop::create();
    const auto players = platform::PlayerSystem::create(loop, context.clock);
    RangePlayer open(loop, *players, asked);
    ProgressLine line(context, arguments.has("--quiet"));
    const auto ended = open.player().observeEnd([&] { loop->quit(); });
    const auto running = open.player().observeTime([&](MediaTime time) {
        const double fraction = open.done(time);
        open.showProgress(line, fraction, "Playing");
        if (fraction >= 1) loop->quit();
    });
    open.start();
    loop->run();
    line.clear();
    open.throwIfReadFailed();
    const std::int64_t dropped = open.player().droppedPictures();
    if (arguments.has("--json")) {
        platform::JSON json;
        json.set("seconds", open.clipSeconds());
        json.set("droppedFrames", dropped);
        context.out << json.dump(platform::JSON::Layout::pretty) << "\n";
    } else if (dropped > 0) {
        context.out << counted(dropped, "picture was", "pictures were") << " too late to be shown\n";
    }
}

void play(Context& context, const Arguments& arguments) {
    const PlayRange asked = askedFor(context, arguments);
    const auto output = arguments.value("--render");
    if (!output) return playAloud(context, arguments, asked);
    const std::string extension = FileURL{*output}.lowercasedExtension();
    if (extension != "wav" && extension != "mov")
        throw UsageError("--render writes a movie or its sound; give it a name that ends in .mov or .wav");
    renderRange(context, arguments, asked, *output);
}

} // namespace

const Command& playCommand() {
    static const Command command{
        "play",
        "VIDEO [AUDIO] [--offset SECONDS] [--from S] [--to S] [--rate R] [--render OUT.mov] [options]",
        "Play a video with a recording under it, or write what would be seen and heard.",
        "orvanesync play demo/shoot/video/A001C001.mov demo/shoot/sound/DAY1_T01.WAV --render "
        "/tmp/A001C001.mov",
        {{"--offset", "SECONDS", "when the recording begins in the video; below 0: its head is not heard"},
         {"--from", "S", "second of the video to begin at (default: 0); backwards, to end at"},
         {"--to", "S", "second to end at (default: the end); backwards, to begin at"},
         {"--rate", "R", "speed, from -32 to 32, backwards below 0 (default: 1); heard up to 2"},
         {"--render", "OUT.mov",
          "write it instead of playing it: each picture without loss, and the sound in two channels; OUT.wav "
          "has the sound alone"},
         {"--session", "ID", "play a clip of that session, as it is synced there"},
         {"--clip", "NAME", "its name, or that of its camera file"},
         {"--force", "",
          "replace a file that is no rendering of OrvaneSync; never media, never what is read"}},
        play};
    return command;
}

} // namespace orvane::cli
