#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncCore/Services/Playback/AudioLevels.h"
#include "OrvaneSyncCore/Services/Playback/ScrubAudioPlayer.h"
#include "OrvaneSyncCore/Services/Playback/ScrubSliceRing.h"
#include "OrvaneSyncCore/Services/Playback/ShuttleAudioEngine.h"
#include "Platform/Realtime/RealtimeScope.h"
#include "Support/MemoryAudio.h"
#include "Support/RealtimeWatch.h"
#include "Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <thread>
#include <utility>

namespace orvane {
namespace {

AudioSlice slice(std::vector<float> left, std::vector<float> right) {
    return {48000, {std::move(left), std::move(right)}};
}
AudioSlice constant(std::size_t frames, float value) {
    return slice(std::vector<float>(frames, value), std::vector<float>(frames, -value));
}

struct Rendered {
    std::vector<float> left, right;
};
Rendered rendered(ScrubSliceRing& ring, std::size_t frames) {
    Rendered out{std::vector<float>(frames, 9), std::vector<float>(frames, 9)};
    const platform::RealtimeScope scope;
    ring.render(out.left.data(), out.right.data(), frames);
    return out;
}

TEST(ScrubSliceRing, rampsFromTheLastSample) {
    test::RealtimeWatch::reset();
    ScrubSliceRing ring(100);
    EXPECT_EQ(rendered(ring, 4).left, (std::vector<float>(4, 0)));
    // A ramp of 32 samples from silence into the slice; after the slice zeros in the same call.
    ring.publish(constant(40, 0.5F), 1);
    Rendered heard = rendered(ring, 50);
    for (std::size_t i = 0; i < 32; ++i)
        EXPECT_FLOAT_EQ(heard.left[i], 0.5F - 0.5F * static_cast<float>(32 - i) / 32) << i;
    EXPECT_EQ(heard.right[39], -0.5F);
    EXPECT_EQ(std::count(heard.left.begin() + 40, heard.left.end(), 0.0F), 10);
    // Silence during a slice: 0.5, 0.484375, ... and then zeros.
    ring.publish(constant(60, 0.5F), 1);
    rendered(ring, 40);
    ring.silence();
    heard = rendered(ring, 40);
    for (std::size_t i = 0; i < 32; ++i) EXPECT_EQ(heard.left[i], 0.5F - 0.015625F * static_cast<float>(i));
    EXPECT_EQ(heard.left[32], 0);
    // A second slice begins at its own first frame; a slice that continues the value has no ramp.
    std::vector<float> rising(60);
    for (std::size_t i = 0; i < rising.size(); ++i) rising[i] = 0.5F + static_cast<float>(i) / 64;
    ring.publish(constant(60, 0.5F), 1);
    rendered(ring, 40);
    ring.publish(slice(rising, std::vector<float>(60, -0.5F)), 1);
    EXPECT_EQ(rendered(ring, 60).left, rising);
    EXPECT_EQ(test::RealtimeWatch::firstViolation(), "");
}

TEST(ScrubSliceRing, cutsOrIgnoresWhatDoesNotFit) {
    ScrubSliceRing ring(64);
    EXPECT_EQ(ring.capacityFrames(), 64U);
    const auto lastOf = [&](const AudioSlice& published, float volume) {
        ring.publish(published, volume);
        return rendered(ring, 64).left.back();
    };
    EXPECT_EQ(lastOf(constant(1000, 0.5F), 0.5F), 0.25F); // cut to the longest slice
    EXPECT_EQ(rendered(ring, 64).left.back(), 0);
    EXPECT_EQ(lastOf(constant(64, 0.5F), 7), 0.5F);
    EXPECT_EQ(lastOf(constant(64, 0.5F), -1), 0);
    // Ignored: the current slice continues.
    ring.publish(constant(64, 0.5F), 1);
    rendered(ring, 33);
    for (const AudioSlice& wrong :
         {AudioSlice{48000, {std::vector<float>(8, 1.0F)}}, AudioSlice{48000, {{}, {}}}, AudioSlice{}})
        ring.publish(wrong, 1);
    EXPECT_EQ(rendered(ring, 8).left, std::vector<float>(8, 0.5F));
}

TEST(ScrubSliceRing, slicesStayWholeBetweenTwoThreads) {
    ScrubSliceRing ring(64);
    std::atomic<bool> isDone = false;
    std::thread producer([&] {
        for (int i = 0; i < 20000; ++i) {
            if (i % 50 == 49)
                ring.silence();
            else
                ring.publish(constant(64, i % 2 == 0 ? 0.25F : 0.5F), 1);
        }
        isDone = true;
    });
    std::size_t wrong = 0;
    while (!isDone) {
        const Rendered heard = rendered(ring, 64);
        // After the ramp, left and right must be from the same slice.
        for (std::size_t i = 32; i < 64; ++i)
            wrong += heard.left[i] != heard.left[32] || heard.right[i] != -heard.left[i] ? 1 : 0;
    }
    producer.join();
    EXPECT_EQ(wrong, 0U);
}

TEST(ScrubBlipAudio, readsStereoSlices) {
    std::vector<std::vector<float>> channels(8, std::vector<float>(4800));
    for (std::size_t c = 0; c < channels.size(); ++c)
        for (std::size_t i = 0; i < 4800; ++i) channels[c][i] = static_cast<float>(c * 10000 + i);
    test::MemoryAudio file(channels, 48000);
    struct Case {
        double at, seconds;
        std::size_t frames, first;
    };
    for (const Case& test :
         {Case{0, 0.01, 480, 0}, Case{0.0500104, 0.0250001, 1200, 2400}, Case{0.09, 1, 480, 4320},
          Case{0.09998, 1, 1, 4799}, Case{0.1, 1, 0, 0}, Case{-0.001, 1, 0, 0}, Case{-0.00001, 0.01, 480, 0},
          Case{0.05, 0, 0, 0}, Case{0.05, -1, 0, 0}, Case{0.05, 0.00001, 0, 0}, Case{1e300, 1, 0, 0}}) {
        SCOPED_TRACE(test.at);
        const auto read = ScrubBlipAudio::readStereoSlice(file, test.at, test.seconds);
        ASSERT_EQ(read.has_value(), test.frames > 0);
        if (!read) continue;
        ASSERT_EQ(read->frameCount(), test.frames);
        EXPECT_EQ(read->channels[0][0], static_cast<float>(test.first));
        EXPECT_EQ(read->channels[1].back(), static_cast<float>(10000 + test.first + test.frames - 1));
    }
    test::MemoryAudio mono({channels[3]}, 44100);
    const auto read = ScrubBlipAudio::readStereoSlice(mono, 0, 0.1);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->channels[0], read->channels[1]);
    EXPECT_EQ(read->frameCount(), 4410U);
    EXPECT_EQ(ScrubBlipAudio::atRate(*read, 48000).frameCount(), 4800U);
    test::MemoryAudio cut({std::vector<float>(100)}, 48000, 4800);
    EXPECT_EQ(ScrubBlipAudio::readStereoSlice(cut, 0, 0.1)->frameCount(), 100U);
    EXPECT_FALSE(ScrubBlipAudio::readStereoSlice(cut, 0.05, 0.05));
    AudioSlice narrow{48000, {std::vector<float>(10)}}, small = constant(9, 0);
    EXPECT_FALSE(ScrubBlipAudio::foldToStereo(constant(10, 1), narrow));
    EXPECT_FALSE(ScrubBlipAudio::foldToStereo(constant(10, 1), small));
}

TEST(ScrubAudioPlayer, playsTheNewestBlip) {
    test::RealtimeWatch::reset();
    const test::TemporaryDirectory folder;
    std::vector<float> samples(44100);
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = i < 22050 ? 0.25F : 0.5F;
    const std::string path = folder.path("T01.WAV");
    test::WaveMaker()
        .format({.sampleRate = 44100, .samples = test::SampleFormat::float32})
        .samples(samples)
        .writeTo(path);

    auto owned = std::make_unique<platform::ManualAudioOutput>();
    platform::ManualAudioOutput& output = *owned;
    ScrubAudioPlayer player(platform::Mixer::create(std::move(owned)));
    const auto heard = [&] {
        player.waitUntilIdle();
        std::array<float, 600> left{}, right{}; // more than the player renders in one piece
        output.pull(left.data(), right.data(), left.size());
        EXPECT_EQ(left, right);
        return left[240];
    };
    EXPECT_FALSE(player.hasOpenFile());
    player.playBlip(0.1, 0.04, 1);
    player.load(TakeSound(FileURL{path}));
    EXPECT_TRUE(player.hasOpenFile());
    EXPECT_EQ(heard(), 0);
    player.playBlip(0.1, 0.04, 0);
    EXPECT_EQ(heard(), 0);
    player.playBlip(0.1, 0.04, 1);
    player.playBlip(0.7, 0.04, 0.5F);
    player.playBlip(0.1, 0.04, 1);
    EXPECT_NEAR(heard(), 0.25, 1e-3);
    player.playBlip(0.7, 0.04, 0.5F);
    EXPECT_NEAR(heard(), 0.25, 1e-3);
    player.playBlip(0.7, 5, 1);
    EXPECT_NEAR(heard(), 0.5, 1e-3);
    player.silence();
    heard();
    EXPECT_EQ(heard(), 0);
    player.playBlip(0.7, 0.04, 1);
    player.silence(); // before it was read
    EXPECT_EQ(heard(), 0);
    player.load(TakeSound(FileURL{folder.path("none.wav")}));
    player.waitUntilIdle();
    EXPECT_FALSE(player.hasOpenFile());
    player.playBlip(0.1, 0.04, 1);
    EXPECT_EQ(heard(), 0);
    player.shutdown();
    EXPECT_EQ(test::RealtimeWatch::firstViolation(), "");
}

TEST(ShuttleAudioEngine, isHeardUpToTwiceTheSpeed) {
    using Plan = AudioRenderPlan;
    for (const double sign : {1.0, -1.0})
        for (const auto& [rate, plan] : {std::pair(0.0, Plan::silent),
                                         {0.5, Plan::fastSpeed},
                                         {1.0, Plan::normalSpeed},
                                         {2.0, Plan::fastSpeed},
                                         {2.5, Plan::silent},
                                         {8.0, Plan::silent}})
            EXPECT_EQ(ShuttleAudioEngine::planForShuttleRate(sign * rate), plan) << sign * rate;
}

TEST(AudioLevels, metersSpanSixtyDecibels) {
    struct Case {
        float linear, dB, meter;
    };
    for (const Case& test : {Case{0, -200, 0}, Case{1, 0, 1}, Case{2, 6.0206F, 1},
                             Case{0.0316228F, -30, 0.5F}, Case{0.0005F, -66.0206F, 0}}) {
        const auto level = ChannelLevel::measured(3, {test.linear, test.linear});
        EXPECT_NEAR(level.peakDB, test.dB, 1e-3);
        EXPECT_NEAR(level.rms, test.meter, 1e-5);
        EXPECT_EQ(level.channel, 3);
    }
    std::vector<ChannelLevel> shown;
    const std::array<platform::ChannelPeak, 2> loud{{{1, 0.0316228F}, {1, 1}}}, quiet{};
    smooth(shown, loud, 0.85F);
    EXPECT_NEAR(shown[0].rms, 0.5, 1e-5);
    smooth(shown, quiet, 0.85F);
    EXPECT_NEAR(shown[1].peak, 0.85, 1e-5);
    EXPECT_NEAR(shown[1].peakDB, -30, 1e-4);

    EXPECT_EQ(AudioLevels::channelName(0, 1), "M");
    EXPECT_EQ(AudioLevels::channelName(1, 2), "R");
    EXPECT_EQ(AudioLevels::channelName(3, 6), "LFE");
    EXPECT_EQ(AudioLevels::channelName(7, 8), "Rrs");
    EXPECT_EQ(AudioLevels::channelName(2, 3), "CH3");
    EXPECT_EQ(AudioLevels::channelName(2, 2), "CH3");
}

} // namespace
} // namespace orvane
