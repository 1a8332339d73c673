#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/OpenSession.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ProgressLine.h"
#include "OrvaneSyncCLI/RunUntilDone.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"
#include "OrvaneSyncCore/Services/Playback/ShuttleAudioEngine.h"
#include "OrvaneSyncCore/Services/Takes/ClipSound.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/AudioFileWriter.h"
#include "Platform/Completion.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace orvane::cli {

namespace {

using platform::MediaTime;

constexpr double fastestRate = 32;

/// What is played, and how.
struct Asked {
    std::string video;
    std::optional<TakeSound> sound; ///< absent: the video's own
    double offset = 0;              ///< seconds of the clip at which the sound begins
    double from = 0;                ///< seconds of the clip
    std::optional<double> to;       ///< absent: to the end
    double rate = 1;
};

void takeFiles(Asked& asked, const Arguments& arguments) {
    const auto& files = arguments.positionals();
    if (files.empty() || files.size() > 2) throw UsageError("a video, and perhaps a recording, please");
    asked.video = files.front();
    if (files.size() > 1) asked.sound = TakeSound(FileURL{files[1]});
    asked.offset = arguments.number("--offset").value_or(0);
}

void takeClip(Asked& asked, const Context& context, const Arguments& arguments) {
    const auto session = arguments.value("--session"), clip = arguments.value("--clip");
    if (!session || !clip) throw UsageError("--session and --clip go together");
    if (!arguments.positionals().empty() || arguments.has("--offset"))
        throw UsageError("either files, or --session and --clip");
    const SessionStore store(AppStorageHelper::sessionsDirectory());
    const OpenSession open(context, store, sessionNamed(store, *session));
    const SyncGroup& group = open.clipNamed(*clip);
    ClipSound sound(group);
    asked.video = group.video.url.path;
    asked.sound = std::move(sound.take);
    asked.offset = sound.offsetSeconds;
}

Asked askedFor(const Context& context, const Arguments& arguments) {
    Asked asked;
    if (arguments.has("--session") || arguments.has("--clip"))
        takeClip(asked, context, arguments);
    else
        takeFiles(asked, arguments);
    asked.from = arguments.number("--from").value_or(0);
    asked.to = arguments.number("--to");
    asked.rate = arguments.number("--rate").value_or(1);
    if (asked.rate == 0 || std::abs(asked.rate) > fastestRate)
        throw UsageError("--rate goes from -32 to 32 and is not 0");
    if (asked.from < 0) throw UsageError("--from is a second of the clip, 0 or later");
    if (asked.to && !(*asked.to > asked.from)) throw UsageError("--to lies behind --from");
    return asked;
}

/// A player that stands at the beginning of what is asked for.
class OpenPlayer {
  public:
    OpenPlayer(const std::shared_ptr<platform::RunLoop>& loop, platform::PlayerSystem& players, Asked asked)
        : asked_(std::move(asked)), player_(players.makePlayer()) {
        const auto loaded = std::make_shared<platform::Completion>(loop);
        platform::PlayerItem item{.videoPath = asked_.video,
                                  .openSound = nullptr,
                                  .soundOffset = MediaTime::fromSeconds(asked_.offset)};
        if (asked_.sound) item.openSound = [sound = *asked_.sound] { return openTake(sound).audio; };
        player_->load(std::move(item), [loaded](const platform::PlayerFacts&) { loaded->end(); });
        runUntilDone(*loop, loaded->task());
        const platform::PlayerFacts& facts = player_->facts();
        if (!player_->isLoaded() || (!facts.hasPicture && !facts.hasSound))
            throw CommandError("nothing in '" + asked_.video + "' can be played");
        to_ = std::min(asked_.to.value_or(facts.duration.seconds()), facts.duration.seconds());
        if (!(to_ > asked_.from))
            throw CommandError("'" + asked_.video + "' ends at " +
                               formatted("%.3f s, before --from", facts.duration.seconds()));
        const auto shown = std::make_shared<platform::Completion>(loop);
        player_->seek(MediaTime::fromSeconds(asked_.rate > 0 ? asked_.from : to_),
                      [shown](bool) { shown->end(); });
        runUntilDone(*loop, shown->task());
    }

    platform::Player& player() { return *player_; }
    double rate() const { return asked_.rate; }
    double clipSeconds() const { return to_ - asked_.from; }
    double outputSeconds() const { return clipSeconds() / std::abs(asked_.rate); }
    /// How far it has come, 0 to 1.
    double done(MediaTime at) const {
        const double passed = asked_.rate > 0 ? at.seconds() - asked_.from : to_ - at.seconds();
        return std::clamp(passed / clipSeconds(), 0.0, 1.0);
    }
    void start() {
        constexpr double almostNormal = 0.999;
        const AudioRenderPlan plan = std::abs(asked_.rate) < almostNormal
                                         ? AudioRenderPlan::slowMotion
                                         : ShuttleAudioEngine::planForShuttleRate(asked_.rate);
        player_->setPitchAlgorithm(plan.algorithm);
        player_->setVolume(plan.isAudible ? 1 : 0);
        player_->setRate(asked_.rate);
    }

  private:
    const Asked asked_;
    const std::unique_ptr<platform::Player> player_;
    double to_ = 0;
};

void showProgress(ProgressLine& line, const OpenPlayer& open, double fraction, std::string_view phase) {
    line.show({.phase = std::string(phase),
               .current = static_cast<int>(fraction * open.clipSeconds()),
               .total = static_cast<int>(std::ceil(open.clipSeconds()))},
              fraction);
}

/// Plays on the machine's own output, to the end.
void playAloud(Context& context, const Arguments& arguments, const Asked& asked) {
    const auto loop = platform::RunLoop::create();
    const auto players = platform::PlayerSystem::create(loop, context.clock);
    OpenPlayer open(loop, *players, asked);
    ProgressLine line(context, arguments.has("--quiet"));
    const auto ended = open.player().observeEnd([&] { loop->quit(); });
    const auto running = open.player().observeTime([&](MediaTime time) {
        const double fraction = open.done(time);
        showProgress(line, open, fraction, "Playing");
        if (fraction >= 1) loop->quit();
    });
    open.start();
    loop->run();
    line.clear();
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

/// The sound that a device would have been given, as a file of two channels.
void renderSound(Context& context, const Arguments& arguments, const Asked& asked,
                 const std::string& output) {
    constexpr double pieceSeconds = 1;
    RunInputs inputs;
    inputs.addFile(asked.video, "the video");
    if (asked.sound)
        for (const TakeSound::File& file : asked.sound->files) inputs.addFile(file.url.path, "the recording");
    const OutputGuard guard(OutputKind::rendering, inputs, {.replacesOthers = arguments.has("--force")});
    guard.check(output);

    const auto loop = platform::RunLoop::create();
    const auto players = platform::PulledPlayerSystem::create(loop);
    OpenPlayer open(loop, *players, asked);
    platform::AudioFileWriter writer(output, {.sampleRate = players->sampleRate(), .channels = 2},
                                     {renderingMark, {}});
    std::vector<float> left, right;
    players->hearSound([&](const float* l, const float* r, std::size_t frames) {
        left.insert(left.end(), l, l + frames);
        right.insert(right.end(), r, r + frames);
    });
    const auto total = static_cast<std::int64_t>(std::llround(open.outputSeconds() * players->sampleRate()));
    ProgressLine line(context, arguments.has("--quiet"));
    open.start();
    while (writer.frames() < total) {
        const auto moved = std::make_shared<platform::Completion>(loop);
        players->advance(pieceSeconds, [moved] { moved->end(); });
        runUntilDone(*loop, moved->task());
        left.resize(std::max<std::size_t>(left.size(), 1)); // silence, where nothing sounds at all
        right.resize(left.size());
        const auto frames = std::min(static_cast<std::int64_t>(left.size()), total - writer.frames());
        const std::array<const float*, 2> channels{left.data(), right.data()};
        writer.write(channels, static_cast<std::size_t>(frames));
        left.clear();
        right.clear();
        showProgress(line, open, static_cast<double>(writer.frames()) / static_cast<double>(total),
                     "Rendering");
    }
    players->hearSound(nullptr);
    writer.finish();
    line.clear();
    const double seconds = static_cast<double>(total) / players->sampleRate();
    if (arguments.has("--json")) {
        platform::JSON json;
        json.set("output", output);
        json.set("durationSeconds", seconds);
        json.set("sampleRate", players->sampleRate());
        context.out << json.dump(platform::JSON::Layout::pretty) << "\n";
        return;
    }
    context.out << "Wrote " << platform::text::printable(output) << ": " << formatted("%.3f s", seconds)
                << formatted(", %.0f Hz\n", players->sampleRate());
}

void play(Context& context, const Arguments& arguments) {
    const Asked asked = askedFor(context, arguments);
    const auto output = arguments.value("--render");
    if (!output) return playAloud(context, arguments, asked);
    if (FileURL{*output}.lowercasedExtension() != "wav")
        throw UsageError("--render writes a WAVE file; give it a name that ends in .wav");
    renderSound(context, arguments, asked, *output);
}

} // namespace

const Command& playCommand() {
    static const Command command{
        "play",
        "VIDEO [AUDIO] [--offset SECONDS] [--from S] [--to S] [--rate R] [--render OUT.wav] [options]",
        "Play a video with a recording under it, or write what would be heard.",
        "orvanesync play demo/shoot/video/A001C001.mov demo/shoot/sound/DAY1_T01.WAV --render "
        "/tmp/A001C001.wav",
        {{"--offset", "SECONDS", "when the recording begins in the video; below 0: its head is not heard"},
         {"--from", "S", "second of the video to begin at (default: 0); backwards, to end at"},
         {"--to", "S", "second to end at (default: the end); backwards, to begin at"},
         {"--rate", "R", "speed, from -32 to 32, backwards below 0 (default: 1); heard up to 2"},
         {"--render", "OUT.wav",
          "write the sound instead of playing it: two channels, as long as it would play"},
         {"--session", "ID", "play a clip of that session, as it is synced there"},
         {"--clip", "NAME", "its name, or that of its camera file"},
         {"--force", "",
          "replace a file that is no rendering of OrvaneSync; never media, never what is read"}},
        play};
    return command;
}

} // namespace orvane::cli
