#include "OrvaneSyncCLI/PlayRendering.h"

#include "OrvaneSyncApp/Controllers/VideoEngineState.h"
#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/RunUntilDone.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"
#include "Platform/AudioFileWriter.h"
#include "Platform/Completion.h"
#include "Platform/Playback/MovieWriter.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <vector>

namespace orvane::cli {

namespace {

using platform::MediaTime;

/// A player on a clock that moves as fast as its pictures and sound are ready.
class Rendering {
  public:
    explicit Rendering(const PlayRange& range)
        : loop_(platform::RunLoop::create()), players_(platform::PulledPlayerSystem::create(loop_)),
          open_(loop_, *players_, range) {
        players_->hearSound([this](const float* left, const float* right, std::size_t frames) {
            left_.insert(left_.end(), left, left + frames);
            right_.insert(right_.end(), right, right + frames);
        });
        open_.start();
    }
    ~Rendering() { players_->hearSound(nullptr); }
    Rendering(const Rendering&) = delete;
    Rendering& operator=(const Rendering&) = delete;

    const RangePlayer& range() const { return open_; }
    platform::Player& player() { return open_.player(); }
    double sampleRate() const { return players_->sampleRate(); }
    std::int64_t totalFrames() const { return std::llround(open_.outputSeconds() * sampleRate()); }
    std::int64_t frame() const { return frame_; }

    /// Moves to that frame of the output, and passes on the sound until there.
    using Hear = std::function<void(const std::array<const float*, 2>& channels, std::size_t frames)>;
    void moveTo(std::int64_t frame, const Hear& hear) {
        const auto moved = std::make_shared<platform::Completion>(loop_);
        const auto count = static_cast<std::size_t>(std::max(frame - frame_, std::int64_t{0}));
        players_->advance(static_cast<double>(count) / sampleRate(), [moved] { moved->end(); });
        runUntilDone(*loop_, moved->task());
        frame_ += static_cast<std::int64_t>(count);
        left_.resize(count); // silence, if there is no sound at all
        right_.resize(count);
        if (count > 0) hear({left_.data(), right_.data()}, count);
        left_.clear();
        right_.clear();
    }

  private:
    const std::shared_ptr<platform::RunLoop> loop_;
    const std::unique_ptr<platform::PulledPlayerSystem> players_;
    RangePlayer open_;
    std::int64_t frame_ = 0; ///< of the output
    std::vector<float> left_, right_;
};

using Progress = std::function<void(std::int64_t frame)>;

void renderSound(Rendering& rendering, const std::string& output, const OutputGuard& guard,
                 const Progress& progress) {
    platform::AudioFileWriter writer(output, {.sampleRate = rendering.sampleRate(), .channels = 2},
                                     {renderingMark, {}});
    const auto second = static_cast<std::int64_t>(rendering.sampleRate());
    while (rendering.frame() < rendering.totalFrames()) {
        rendering.moveTo(std::min(rendering.frame() + second, rendering.totalFrames()),
                         [&](const auto& channels, std::size_t frames) { writer.write(channels, frames); });
        rendering.range().throwIfReadFailed();
        progress(rendering.frame());
    }
    writer.finish([&] { return guard.decide(output); });
}

/// The first frame of the output at or after the time.
std::int64_t frameFrom(MediaTime moment, double sampleRate) {
    const MediaTime frameLength{1, std::llround(sampleRate)};
    const std::int64_t whole = moment.wholeUnits(frameLength);
    return frameLength * whole == moment ? whole : whole + 1;
}

/// Returns the number of pictures.
std::int64_t renderMovie(Rendering& rendering, const std::string& output, const OutputGuard& guard,
                         const Progress& progress) {
    const platform::PlayerFacts& facts = rendering.player().facts();
    PlayheadState playhead;
    if (facts.nominalFrameRate > 0) playhead.frameRate = facts.nominalFrameRate;
    const MediaTime length = playhead.frameLength();
    platform::MovieWriter writer(output, {.pictureLength = length, .sampleRate = rendering.sampleRate()},
                                 std::string(renderingMark));
    const auto hear = [&](const auto& channels, std::size_t frames) { writer.addSound(channels, frames); };
    std::int64_t missing = 0; // pictures before the first one that could be decoded
    for (std::int64_t number = 0; facts.hasPicture; ++number) {
        const std::int64_t due = frameFrom(length * number, rendering.sampleRate());
        if (due >= rendering.totalFrames()) break;
        rendering.moveTo(due, hear);
        rendering.range().throwIfReadFailed();
        const auto picture = rendering.player().picture();
        if (!picture) {
            ++missing;
            continue;
        }
        for (; missing > 0; --missing) writer.addPicture(*picture);
        writer.addPicture(*picture);
        progress(due);
    }
    rendering.moveTo(rendering.totalFrames(), hear);
    if (writer.pictures() == 0 && facts.hasPicture)
        throw CommandError(
            "no picture of the video can be decoded; a name that ends in .wav renders the sound");
    rendering.range().throwIfReadFailed();
    writer.finish([&] { return guard.decide(output); });
    return writer.pictures();
}

} // namespace

void renderRange(Context& context, const Arguments& arguments, const PlayRange& range,
                 const std::string& output) {
    RunInputs inputs;
    inputs.addFile(range.video, "the video");
    if (range.sound)
        for (const TakeSound::File& file : range.sound->files) inputs.addFile(file.url.path, "the recording");
    const OutputGuard guard(OutputKind::rendering, inputs, {.replacesOthers = arguments.has("--force")});
    guard.check(output);

    Rendering rendering(range);
    ProgressLine line(context, arguments.has("--quiet"));
    const Progress progress = [&](std::int64_t frame) {
        rendering.range().showProgress(
            line, static_cast<double>(frame) / static_cast<double>(rendering.totalFrames()), "Rendering");
    };
    std::optional<std::int64_t> pictures;
    if (FileURL{output}.lowercasedExtension() == "mov")
        pictures = renderMovie(rendering, output, guard, progress);
    else
        renderSound(rendering, output, guard, progress);
    line.clear();
    const double seconds = static_cast<double>(rendering.totalFrames()) / rendering.sampleRate();
    if (arguments.has("--json")) {
        platform::JSON json;
        json.set("output", output);
        json.set("durationSeconds", seconds);
        json.set("sampleRate", rendering.sampleRate());
        if (pictures) json.set("pictures", *pictures);
        context.out << json.dump(platform::JSON::Layout::pretty) << "\n";
        return;
    }
    context.out << "Wrote " << platform::text::printable(output) << ": " << formatted("%.3f s", seconds)
                << (pictures ? ", " + counted(*pictures, "picture", "pictures") : "")
                << formatted(", %.0f Hz\n", rendering.sampleRate());
}

} // namespace orvane::cli
