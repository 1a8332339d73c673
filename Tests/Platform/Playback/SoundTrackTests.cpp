#include "Platform/Playback/SoundTrack.h"
#include "Platform/SincResampler.h"
#include "Support/MemoryAudio.h"
#include "Support/RandomSeed.h"
#include "Support/RealtimeWatch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <thread>

namespace orvane::platform {
namespace {

constexpr double outputRate = 48000;

/// Silence with a sample of 1 at the start and at each quarter of a second, in every channel.
std::unique_ptr<AudioFile> ticks(double rate, double seconds, std::size_t channels = 2) {
    std::vector<float> samples(static_cast<std::size_t>(rate * seconds));
    for (std::size_t i = 0; i < samples.size(); i += static_cast<std::size_t>(rate / 4)) samples[i] = 1;
    return std::make_unique<test::MemoryAudio>(std::vector(channels, samples), rate);
}

std::unique_ptr<AudioFile> tone(double hertz, double rate, double seconds) {
    std::vector<float> samples(static_cast<std::size_t>(rate * seconds));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] =
            static_cast<float>(0.5 * std::sin(2 * std::numbers::pi * hertz * static_cast<double>(i) / rate));
    return std::make_unique<test::MemoryAudio>(std::vector<std::vector<float>>{samples}, rate);
}

/// A track on an output that the test reads.
class SoundTrackTest : public testing::Test {
  protected:
    SoundTrackTest() {
        test::RealtimeWatch::reset();
        auto owned = std::make_unique<ManualAudioOutput>(outputRate);
        output_ = owned.get();
        mixer_ = Mixer::create(std::move(owned));
    }
    ~SoundTrackTest() override {
        EXPECT_EQ(test::RealtimeWatch::firstViolation(), "");
        if (track_) mixer_->remove(*track_);
    }

    SoundTrack& open(std::unique_ptr<AudioFile> file) {
        if (track_) mixer_->remove(*track_);
        track_ = SoundTrack::create(std::move(file), *mixer_);
        mixer_->add(track_);
        return *track_;
    }
    void play(double rate, double clipSeconds, PitchAlgorithm pitch = PitchAlgorithm::timeDomain,
              std::int64_t later = 0) {
        track_->setTransport({rate, clipSeconds, mixer_->renderedFrames() + later, pitch});
    }
    /// The left channel of the next output; the right one is the same.
    std::vector<float> pull(double seconds) {
        std::vector<float> left(static_cast<std::size_t>(seconds * outputRate)), right(left.size());
        for (std::size_t at = 0; at < left.size();) {
            const std::size_t some = std::min<std::size_t>(left.size() - at, 1009);
            track_->waitUntilReady(mixer_->renderedFrames() + static_cast<std::int64_t>(some));
            output_->pull(left.data() + at, right.data() + at, some);
            at += some;
        }
        EXPECT_EQ(left, right);
        return left;
    }
    /// Seconds at which there are ticks.
    static std::vector<double> ticksIn(const std::vector<float>& heard) {
        std::vector<double> found;
        for (std::size_t i = 0; i < heard.size(); ++i) {
            const std::size_t from = i < 200 ? 0 : i - 200;
            const auto window = std::span(heard).subspan(from, std::min(heard.size() - from, i - from + 200));
            if (heard[i] > 0.05F && heard[i] == *std::ranges::max_element(window))
                found.push_back(static_cast<double>(i) / outputRate);
        }
        return found;
    }

    ManualAudioOutput* output_ = nullptr;
    std::shared_ptr<Mixer> mixer_;
    std::shared_ptr<SoundTrack> track_;
};

TEST_F(SoundTrackTest, everyTickIsAtItsPlace) {
    struct Case {
        const char* name;
        double fileRate, rate, offset, from;
        PitchAlgorithm pitch;
        double first, between; ///< seconds of the output
    };
    constexpr auto kept = PitchAlgorithm::timeDomain, follows = PitchAlgorithm::varispeed;
    for (const Case& test : {
             Case{"as it is", 48000, 1, 0, 1.1, kept, 0.15, 0.25},
             Case{"later by an odd offset", 48000, 1, 0.71234, 0, kept, 0.71234, 0.25},
             Case{"its head cut", 48000, 1, -3.2, 0, kept, 0.05, 0.25},
             Case{"another rate", 44100, 1, 0.1, 0.2, kept, 0.15, 0.25},
             Case{"four times the rate", 192000, 1, 0.1, 0.2, kept, 0.15, 0.25},
             Case{"backwards", 48000, -1, 0.1, 2.0, kept, 0.15, 0.25},
             Case{"backwards at another rate", 44100, -1, -0.1, 2.0, kept, 0.1, 0.25},
             Case{"slow", 48000, 0.25, 0, 0.95, follows, 0.2, 1},
             Case{"slow, backwards", 48000, -0.25, 0, 1.55, follows, 0.2, 1},
             Case{"twice, pitch follows", 48000, 2, 0, 0.95, follows, 0.025, 0.125},
         }) {
        SCOPED_TRACE(test.name);
        open(ticks(test.fileRate, 30, 1)).setOffset(test.offset);
        pull(0.05);
        play(test.rate, test.from, test.pitch);
        constexpr double length = 1.31;
        const auto found = ticksIn(pull(length));
        EXPECT_EQ(found.size(), static_cast<std::size_t>((length - test.first) / test.between) + 1);
        for (std::size_t i = 0; i < found.size(); ++i)
            EXPECT_NEAR(found[i], test.first + static_cast<double>(i) * test.between, 0.6 / outputRate);
    }
}

/// Noise that is louder in every other second of the file.
std::unique_ptr<AudioFile> noise(double rate, double seconds) {
    std::mt19937 random(1); // a fixed signal: others may by chance match a few milliseconds away
    std::uniform_real_distribution<float> value(-1, 1);
    std::vector<float> samples(static_cast<std::size_t>(rate * seconds));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = value(random) * (std::fmod(static_cast<double>(i) / rate, 2) < 1 ? 0.1F : 0.8F);
    return std::make_unique<test::MemoryAudio>(std::vector<std::vector<float>>{samples}, rate);
}

TEST_F(SoundTrackTest, keptPitchBeginsAtItsPlaceAndDoesNotDrift) {
    for (const auto& [fileRate, rate] : {std::pair(48000.0, 2.0), {44100, 1.5}, {48000, -2}}) {
        SCOPED_TRACE(rate);
        open(noise(fileRate, 60));
        const double from = 30.3;
        const auto hear = [&](double speed, double seconds) {
            play(speed, from, PitchAlgorithm::spectral);
            return pull(seconds);
        };
        // After the crossfade, the first milliseconds are those of normal speed: finds where they fit best.
        const auto plain = hear(rate < 0 ? -1 : 1, 0.05);
        const auto heard = hear(rate, 8 / std::abs(rate));
        const auto likeness = [&](std::ptrdiff_t lag) {
            double sum = 0;
            for (std::ptrdiff_t i = 200; i < 330; ++i)
                sum += static_cast<double>(plain[static_cast<std::size_t>(i)]) *
                       static_cast<double>(heard[static_cast<std::size_t>(i + lag)]);
            return sum;
        };
        std::ptrdiff_t best = -190;
        for (std::ptrdiff_t lag = -190; lag <= 190; ++lag)
            if (likeness(lag) > likeness(best)) best = lag;
        EXPECT_LE(std::abs(best), 48);
        // The loudness changes at each second of the file.
        double level = 0;
        bool isLoud = false;
        std::vector<double> changes;
        for (std::size_t i = 0; i < heard.size(); ++i) {
            level += 0.005 * (std::abs(heard[i]) - level);
            if (isLoud ? level > 0.15 : level < 0.3) continue;
            isLoud = !isLoud;
            if (i > 4800) changes.push_back(static_cast<double>(i) / outputRate);
        }
        EXPECT_NEAR(static_cast<double>(changes.size()), 8, 1);
        for (const double change : changes) {
            const double second = from + change * rate;
            EXPECT_NEAR((second - std::round(second)) / rate, 0, 0.04);
        }
    }
}

TEST_F(SoundTrackTest, aClapIsHeardAtItsPlaceAtEachSpeed) {
    // Claps of 5 ms, which are anywhere between the cuts of the tempo change.
    constexpr double apart = 0.737, length = 0.005;
    std::vector<float> samples(std::size_t{48000} * 5);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double since = std::fmod(static_cast<double>(i) / 48000, apart);
        samples[i] = static_cast<float>(0.002 * std::sin(0.05 * static_cast<double>(i)));
        if (since < length) samples[i] = static_cast<float>(0.8 * std::cos(2000 * since));
    }
    open(std::make_unique<test::MemoryAudio>(std::vector<std::vector<float>>{samples}, 48000));
    for (const double rate : {2.0, -2.0, 1.5, -1.5}) {
        SCOPED_TRACE(rate);
        const double from = rate > 0 ? 0.1 : 4.9;
        play(rate, from, PitchAlgorithm::spectral);
        const std::vector<float> heard = pull(4.6 / std::abs(rate));
        int claps = 0;
        for (double clap = apart; clap < 4.6; clap += apart) {
            if (rate < 0 && clap < 0.6) continue;
            // The attack is the first loud frame; when played backwards, the last one.
            const auto place = static_cast<std::ptrdiff_t>((clap - from) / rate * outputRate);
            const auto around = std::span(heard).subspan(static_cast<std::size_t>(place - 1440), 2880);
            const auto isLoud = [](float value) { return std::abs(value) > 0.4F; };
            std::ptrdiff_t attack = std::ranges::find_if(around, isLoud) - around.begin();
            if (rate < 0)
                attack = std::find_if(around.rbegin(), around.rend(), isLoud).base() - around.begin();
            EXPECT_NEAR(static_cast<double>(attack - 1440) / outputRate, 0, 0.001) << clap;
            EXPECT_NEAR(static_cast<double>(std::ranges::count_if(around, isLoud)), 160, 40) << clap;
            ++claps;
        }
        EXPECT_GE(claps, 6);
    }
}

TEST_F(SoundTrackTest, changesMakeNoClick) {
    SoundTrack& track = open(tone(100, 48000, 60));
    track.setEnd(20);
    const auto roughest = [](const std::vector<float>& heard) {
        double most = 0;
        for (std::size_t i = 1; i < heard.size(); ++i)
            most = std::max<double>(most, std::abs(heard[i] - heard[i - 1]));
        return most;
    };
    // The tone's own steps are 0.0066; a crossfade of 4 ms adds to them.
    constexpr double smooth = 0.03;
    std::vector<float> all = pull(0.1);
    const auto hear = [&](double seconds) {
        const auto more = pull(seconds);
        all.insert(all.end(), more.begin(), more.end());
    };
    play(1, 0.0024);
    hear(0.2);
    for (int i = 0; i < 20; ++i) {
        track.setOffset(0.0133 * i);
        hear(0.02);
    }
    track.setVolume(0.3F);
    hear(0.1);
    track.setVolume(1);
    play(-1, 5.0042);
    hear(0.1);
    play(4, 5);
    hear(0.1);
    play(1.5, 19.8042);
    hear(0.4); // past the end
    play(0, 3);
    hear(0.05);
    EXPECT_LT(roughest(all), smooth);
    EXPECT_EQ(all.back(), 0);
    EXPECT_TRUE(track.levels().empty());
}

TEST_F(SoundTrackTest, aChangedOffsetIsHeardInTheNextBlock) {
    open(ticks(48000, 30)).setOffset(0);
    play(1, 0);
    pull(1.05);
    track_->setOffset(0.1);
    const auto found = ticksIn(pull(0.5));
    ASSERT_EQ(found.size(), 2U);
    EXPECT_NEAR(found[0], 0.05, 1 / outputRate);
    EXPECT_NEAR(found[1], 0.3, 1 / outputRate);
}

TEST_F(SoundTrackTest, beginsAtItsFrameAndEndsWithTheClip) {
    open(ticks(48000, 30)).setEnd(1.1);
    play(1, 0.9, PitchAlgorithm::timeDomain, 30001);
    const auto heard = pull(2);
    // The tick at 1.0 s is heard 0.1 s after the start; the one at 1.25 s is after the end.
    EXPECT_EQ(ticksIn(heard), std::vector<double>{(30001 + 4800) / outputRate});
    const auto levels = track_->levels();
    EXPECT_TRUE(levels.empty());
    // While one transport runs, the next waits for its frame.
    play(1, 0.0);
    pull(0.1);
    play(1, 0.9, PitchAlgorithm::timeDomain, 24000);
    EXPECT_EQ(ticksIn(pull(1)), (std::vector<double>{0.15, 0.4, 0.6}));
    // Nothing is heard before the clip's first frame.
    open(ticks(48000, 30)).setOffset(-1);
    play(-1, 0.3);
    EXPECT_EQ(ticksIn(pull(1)), std::vector<double>{0.05});
}

TEST_F(SoundTrackTest, filesWithAllKindsOfDamage) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    std::vector<float> wild(48000, 0.25F);
    for (std::size_t i = 0; i < wild.size(); i += 7) wild[i] = i % 2 == 0 ? infinity : std::nanf("");
    wild[700] = 3e38F;
    struct Case {
        const char* name;
        std::unique_ptr<AudioFile> file;
        double loudAt, silentAt; ///< seconds
    };
    const auto memory = [](std::vector<float> samples, double rate, std::int64_t claimed, std::size_t bad) {
        return std::make_unique<test::MemoryAudio>(std::vector<std::vector<float>>{std::move(samples)}, rate,
                                                   claimed, bad);
    };
    std::array cases{
        Case{"no numbers", memory(wild, 48000, -1, SIZE_MAX), 0.5, 1.5},
        Case{"the same at another rate", memory(wild, 44100, -1, SIZE_MAX), 0.5, 1.5},
        Case{"ends early", memory(std::vector<float>(24000, 0.5F), 48000, 48000, SIZE_MAX), 0.4, 0.6},
        Case{"a bad place", memory(std::vector<float>(48000, 0.5F), 48000, -1, 24000), 0.4, 1.5},
        Case{"claims nothing", memory(std::vector<float>(48000, 0.5F), 48000, 0, SIZE_MAX), -1, 0.6},
        Case{"one sample", memory({0.5F}, 48000, -1, SIZE_MAX), -1, 0.6},
    };
    for (Case& test : cases) {
        SCOPED_TRACE(test.name);
        open(std::move(test.file));
        for (const double rate : {1.0, 1.5, 0.5}) {
            play(rate, 0, rate < 1 ? PitchAlgorithm::varispeed : PitchAlgorithm::spectral);
            const auto heard = pull(1.55 / rate);
            const auto around = [&](double seconds) {
                const auto at = static_cast<std::ptrdiff_t>(seconds / rate * outputRate);
                return *std::max_element(heard.begin() + at - 500, heard.begin() + at + 500);
            };
            for (const float sample : heard) ASSERT_LT(std::abs(sample), 20);
            if (test.loudAt > 0) {
                EXPECT_GT(around(test.loudAt), 0.2F);
            }
            EXPECT_LT(around(test.silentAt), 0.01F);
        }
    }
}

TEST_F(SoundTrackTest, levelsAreOfEveryChannel) {
    std::vector<std::vector<float>> channels(8, std::vector<float>(96000));
    for (std::size_t c = 0; c < channels.size(); ++c)
        for (std::size_t i = 0; i < channels[c].size(); ++i)
            channels[c][i] = (i % 2 == 0 ? 0.1F : -0.1F) * static_cast<float>(c);
    open(std::make_unique<test::MemoryAudio>(channels, 48000));
    EXPECT_EQ(track_->channelCount(), 8);
    EXPECT_EQ(track_->durationSeconds(), 2);
    EXPECT_TRUE(track_->levels().empty());
    play(1, 0);
    std::vector<float> left(4800), right(4800);
    track_->waitUntilReady(4800);
    output_->pull(left.data(), right.data(), left.size());
    EXPECT_NEAR(right[4000], 0.1F, 1e-6);
    const auto levels = track_->levels();
    ASSERT_EQ(levels.size(), 8U);
    for (std::size_t c = 0; c < levels.size(); ++c) {
        EXPECT_NEAR(levels[c].peak, 0.1F * static_cast<float>(c), 1e-6);
        EXPECT_NEAR(levels[c].rms, 0.1F * static_cast<float>(c), 1e-6);
    }
}

TEST_F(SoundTrackTest, controlsChangeWhileADeviceReads) {
    SoundTrack& track = open(tone(300, 44100, 20));
    std::atomic<bool> isDone = false;
    std::thread device([&] {
        std::vector<float> left(256), right(256);
        while (!isDone) {
            output_->pull(left.data(), right.data(), left.size());
            std::this_thread::yield();
        }
    });
    std::mt19937 random(test::randomSeed());
    for (int i = 0; i < 150; ++i) {
        const double rate = std::array{0.0, 1.0, -1.0, 2.0, 0.25, -1.5, 8.0}[random() % 7];
        play(rate, static_cast<double>(random() % 20), static_cast<PitchAlgorithm>(random() % 3));
        track.setOffset(static_cast<double>(random() % 100) / 50 - 1);
        track.setVolume(static_cast<float>(random() % 100) / 100);
        EXPECT_LE(track.levels().size(), 1U);
        if (i % 10 == 0) track.waitUntilReady(mixer_->renderedFrames());
    }
    isDone = true;
    device.join();
}

TEST(SincResampler, imagesAndAliasesAreNinetyDecibelsDown) {
    struct Case {
        double inputRate, rate, hertz;
        bool isHeard;
    };
    for (const Case& test :
         {Case{44100, 48000, 50, true}, Case{44100, 48000, 997, true}, Case{44100, 48000, 10007, true},
          Case{44100, 48000, 19800, true}, Case{48000, 44100, 997, true}, Case{48000, 44100, 19500, true},
          Case{96000, 48000, 1000, true}, Case{96000, 48000, 30000, false}, Case{32000, 48000, 14000, true},
          Case{192000, 48000, 60000, false}}) {
        constexpr std::size_t count = 4000;
        SincResampler resampler(test.inputRate / test.rate);
        std::vector<float> input(2 * resampler.reach() + 8 +
                                 static_cast<std::size_t>(count * test.inputRate / test.rate));
        for (std::size_t i = 0; i < input.size(); ++i)
            input[i] = static_cast<float>(
                std::sin(2 * std::numbers::pi * test.hertz * static_cast<double>(i) / test.inputRate));
        std::vector<float> output(count);
        const std::array<const float*, 1> from{input.data()};
        const std::array<float*, 1> to{output.data()};
        const auto start = static_cast<double>(resampler.reach());
        resampler.render(from, start, false, to, count);
        double error = 0;
        for (std::size_t i = 0; i < count; ++i) {
            const double time = start / test.inputRate + static_cast<double>(i) / test.rate;
            const double expected = test.isHeard ? std::sin(2 * std::numbers::pi * test.hertz * time) : 0;
            error += (output[i] - expected) * (output[i] - expected);
        }
        EXPECT_LT(10 * std::log10(2 * error / count), -90)
            << test.inputRate << " to " << test.rate << " at " << test.hertz;
    }
}

} // namespace
} // namespace orvane::platform
