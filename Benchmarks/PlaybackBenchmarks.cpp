#include "PlaybackBenchmarks.h"

#include "Table.h"

#include "Platform/MainThread.h"
#include "Platform/Playback/Player.h"
#include "Platform/Playback/SoundTrack.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <ctime>
#include <functional>
#include <semaphore>
#include <vector>

namespace orvane::bench {

namespace {

using namespace platform;
using namespace std::chrono_literals;

constexpr double ms = 1000;

double coreSeconds(const std::function<void()>& work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    const double before = now();
    work();
    return now() - before;
}

void readAMinute(const std::string& recording) {
    const auto file = AudioFile::open(recording);
    std::vector<std::vector<float>> samples(static_cast<std::size_t>(file->channelCount()),
                                            std::vector<float>(4096));
    std::vector<float*> arrays;
    for (auto& channel : samples) arrays.push_back(channel.data());
    for (auto left = static_cast<std::size_t>(60 * file->sampleRate()); left > 0;) {
        const std::size_t got = file->read(arrays, std::min<std::size_t>(left, 4096));
        if (got == 0) break;
        left -= got;
    }
}

/// A minute of the output, in blocks of the size of a device's.
void playAMinute(const std::string& recording, double rate, PitchAlgorithm pitch) {
    auto owned = std::make_unique<ManualAudioOutput>();
    ManualAudioOutput& output = *owned;
    const auto mixer = Mixer::create(std::move(owned));
    const auto track = SoundTrack::create(AudioFile::open(recording), *mixer);
    mixer->add(track);
    track->setTransport({rate, rate < 0 ? 120.0 : 0, 0, pitch});
    std::array<float, 512> left{}, right{};
    for (std::int64_t frame = 0; frame < 60 * 48000; frame += 512) {
        track->waitUntilReady(frame + 512);
        output.pull(left.data(), right.data(), left.size());
    }
    mixer->remove(*track);
}

/// Quiet for the first half of its minute, loud for the second.
class TwoHalves final : public AudioFile {
  public:
    double sampleRate() const override { return 48000; }
    int channelCount() const override { return 1; }
    std::int64_t frameCount() const override { return 60 * 48000; }
    bool seek(std::int64_t frame) override {
        at_ = frame;
        return true;
    }
    std::size_t read(std::span<float* const> channels, std::size_t frames) override {
        for (std::size_t i = 0; i < frames; ++i)
            channels[0][i] = at_ + static_cast<std::int64_t>(i) < frameCount() / 2 ? 0.1F : 0.5F;
        at_ += static_cast<std::int64_t>(frames);
        return frames;
    }

  private:
    std::int64_t at_ = 0;
};

/// Reads the sum of the sources before it, and records the frame at which it becomes loud or quiet.
class Ear final : public MixerSource {
  public:
    std::binary_semaphore heard{0};
    std::atomic<bool> isLoudWanted = false;
    std::atomic<std::int64_t> frame = -1;

    void addTo(const AudioBlock& block) noexcept override {
        if (frame >= 0) return;
        for (std::size_t i = 0; i < block.frames; ++i) {
            if ((block.left[i] > 0.3F) != isLoudWanted) continue;
            frame = block.firstFrame + static_cast<std::int64_t>(i);
            heard.release();
            return;
        }
    }
};

/// The longest of several nudges of a player that plays the video, in milliseconds until it is heard, less
/// the output's latency.
double worstNudge(const std::string& video) {
    const auto loop = RunLoop::create();
    const auto system = PlayerSystem::create(loop);
    const auto player = system->makePlayer();
    const auto ear = std::make_shared<Ear>();
    double worst = 0;
    loop->post([&] {
        player->load({video, [] { return std::make_unique<TwoHalves>(); }, {}}, [&](const PlayerFacts&) {
            system->mixer()->add(ear);
            player->seek({10, 1}, [&](bool) {
                player->setRate(1);
                loop->quit();
            });
        });
    });
    loop->run();
    ear->heard.acquire();
    for (int i = 0; i < 20; ++i) {
        loop->after(137ms, [&] { loop->quit(); });
        loop->run();
        ear->isLoudWanted = i % 2 == 0;
        ear->frame = -1;
        const double before = system->mixer()->heardFrame();
        player->setSoundOffset(i % 2 == 0 ? MediaTime{-25, 1} : MediaTime{});
        ear->heard.acquire();
        worst = std::max(worst, (static_cast<double>(ear->frame) - before) / system->mixer()->sampleRate());
    }
    system->mixer()->remove(*ear);
    return worst * ms -
           std::chrono::duration<double, std::milli>(system->mixer()->output().latency()).count();
}

} // namespace

void printPlayedSoundRows(const std::string& recording) {
    readAMinute(recording); // so that no run waits for the disk
    const double floor = coreSeconds([&] { readAMinute(recording); });
    const auto row = [&](const char* name, double rate, PitchAlgorithm pitch, double most) {
        printRatio(name, coreSeconds([&] { playAMinute(recording, rate, pitch); }) * ms, floor * ms,
                   "reading it", most);
    };
    // The figure is a share of the 60 seconds of playback; reading a wave takes almost no time.
    row("playing 60 s of 8 channels, time of a core", 1, PitchAlgorithm::timeDomain, 10);
    row("the same at twice the speed, pitch kept", 2, PitchAlgorithm::spectral, 60);
    row("the same backwards in slow motion", -0.25, PitchAlgorithm::varispeed, 60);
}

void printNudgeRow(const std::string& video) {
    constexpr double mostNudge = 50;
    const double nudge = worstNudge(video);
    printRow("a nudge while playing, beside the latency", text("%.1f ms", nudge), "", "",
             text("< %.0f ms", mostNudge), nudge < mostNudge);
}

} // namespace orvane::bench
