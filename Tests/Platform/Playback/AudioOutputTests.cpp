#include "Platform/Playback/DeviceOutput.h"
#include "Platform/Playback/Mixer.h"
#include "Support/RealtimeWatch.h"
#include "Support/SoundMachine.h"
#include "Support/VirtualMainThread.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

namespace orvane::platform {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

/// Keeps the places of the blocks it was asked for.
struct BlockList final : AudioRenderer {
    struct Block {
        std::int64_t first = 0, end = 0;
    };
    std::vector<Block> blocks;
    void render(const AudioBlock& block) noexcept override {
        blocks.push_back({block.firstFrame, block.firstFrame + static_cast<std::int64_t>(block.frames)});
    }
    /// Frames that were skipped or asked for twice.
    std::int64_t gaps() const {
        std::int64_t gaps = 0;
        for (std::size_t i = 1; i < blocks.size(); ++i) gaps += std::abs(blocks[i].first - blocks[i - 1].end);
        return gaps;
    }
};

/// Moves the clock to each moment at which the output has something to do.
void run(DeviceOutput& output, test::ManualClock& clock, nanoseconds time) {
    const nanoseconds end = clock.now() + time;
    for (auto next = output.tick(); next && *next <= end; next = output.tick())
        clock.set(std::max(*next, clock.now() + 1us));
    clock.set(end);
}

constexpr nanoseconds blockTime{10'666'667};

TEST(AudioOutput, clockStandsInForADevice) {
    auto clock = std::make_shared<test::ManualClock>();
    DeviceOutput output(clock, nullptr, DeviceOutput::Threads::caller);
    BlockList blocks;
    EXPECT_FALSE(output.tick());
    ASSERT_TRUE(output.start(blocks));
    run(output, *clock, 2s);
    // Each frame before it is heard, none more than two blocks ahead.
    EXPECT_NEAR(output.heardFrame(), 96000, 0.01);
    EXPECT_GE(blocks.blocks.back().end, 96000);
    EXPECT_LE(blocks.blocks.back().end, 96000 + 1024);
    EXPECT_EQ(blocks.gaps(), 0);
    output.stop();
    clock->advance(1s);
    EXPECT_NEAR(output.heardFrame(), 144000, 0.01);
    const std::size_t before = blocks.blocks.size();
    output.start(blocks);
    run(output, *clock, 100ms);
    EXPECT_EQ(blocks.blocks[before].first, 144000);
    // What the machine slept through is left out.
    clock->advance(3600s);
    output.tick();
    EXPECT_NEAR(static_cast<double>(blocks.blocks.back().end), output.heardFrame(), 1024);
}

struct PluggedOutput : testing::Test {
    PluggedOutput() { output.start(blocks); }
    std::shared_ptr<test::ManualClock> clock = std::make_shared<test::ManualClock>();
    test::SoundMachine machine;
    BlockList blocks;
    DeviceOutput output{clock, [this] { return machine.devices(); }, DeviceOutput::Threads::caller};
};

TEST_F(PluggedOutput, devicesGoAndComeWhileFramesCountOn) {
    const auto play = [&](int count) {
        for (int i = 0; i < count; ++i) {
            const double before = output.heardFrame();
            machine.ask();
            output.tick();
            clock->advance(blockTime);
            EXPECT_GE(output.heardFrame(), before);
        }
    };
    const auto expectedNow = [&] { return static_cast<double>(clock->now().count()) * 48e-6; };
    play(100);
    EXPECT_EQ(output.description(), "test device");
    EXPECT_EQ(output.latency(), 20ms);
    // Rendered 20 ms before it is heard.
    EXPECT_NEAR(static_cast<double>(blocks.blocks.back().first) - output.heardFrame(), 960 - 512, 5);
    EXPECT_NEAR(output.heardFrame(), expectedNow(), 600);

    machine.isPlugged = false;
    run(output, *clock, 2s);
    EXPECT_EQ(output.description(), "no sound device");
    EXPECT_NEAR(output.heardFrame(), expectedNow(), 600);
    EXPECT_NEAR(static_cast<double>(blocks.blocks.back().end), output.heardFrame(), 1024);
    const int attempts = machine.attempts;
    run(output, *clock, 120s);
    EXPECT_GT(machine.attempts, attempts + 20);
    EXPECT_LT(machine.attempts, attempts + 40);
    const int tries = machine.attempts;
    output.checkDevice(); // who wants to hear something does not wait for the next attempt
    output.tick();
    EXPECT_EQ(machine.attempts, tries + 1);

    machine.isPlugged = true;
    run(output, *clock, DeviceOutput::longestRetry + 1s);
    play(100);
    EXPECT_EQ(output.description(), "test device");
    EXPECT_NEAR(output.heardFrame(), expectedNow(), 1500);

    // A device that swallows sound without playing it.
    for (int i = 0; i < 1000; ++i) machine.ask();
    output.tick();
    EXPECT_EQ(output.description(), "no sound device");
    const int swallowed = machine.attempts;
    output.checkDevice(); // each press of play would open it again
    run(output, *clock, 500ms);
    EXPECT_EQ(machine.attempts, swallowed);
    EXPECT_NEAR(static_cast<double>(blocks.blocks.back().end), output.heardFrame(), 48000 * 3);
    output.stop();
    EXPECT_EQ(machine.callback, nullptr);
}

/// As the first stream of a server that has to wake its card.
TEST_F(PluggedOutput, waitsForADeviceThatTakesTwoSecondsToBegin) {
    output.tick();
    for (int i = 0; i < 3; ++i) machine.ask();
    run(output, *clock, 1950ms);
    EXPECT_EQ(output.description(), "test device");
    EXPECT_NEAR(static_cast<double>(blocks.blocks.back().end), output.heardFrame(), 1536);
    for (int i = 0; i < 300; ++i) {
        machine.ask();
        output.tick();
        clock->advance(blockTime);
    }
    EXPECT_EQ(machine.attempts, 1);
    EXPECT_EQ(output.latency(), 20ms) << "the clock still stands in";
    EXPECT_NEAR(output.heardFrame(), static_cast<double>(clock->now().count()) * 48e-6, 1500);
    // Later such a silence is the end of the device, and so it is where it never begins.
    run(output, *clock, 600ms);
    EXPECT_EQ(output.description(), "no sound device");
    run(output, *clock, DeviceOutput::longestRetry + 4 * DeviceOutput::settlingTime);
    EXPECT_GT(machine.attempts, 3);
}

/// Adds a constant, as long as it is in the mixer.
struct Constant final : MixerSource {
    float value;
    std::atomic<bool> isIn = true;
    std::atomic<int>* misplaced = nullptr;
    explicit Constant(float added) : value(added) {}
    void addTo(const AudioBlock& block) noexcept override {
        if (!isIn && misplaced != nullptr) ++*misplaced;
        for (std::size_t i = 0; i < block.frames; ++i) {
            block.left[i] += value;
            block.right[i] -= value;
        }
    }
};

TEST(Mixer, addsItsSourcesAndStopsWhenThereAreNone) {
    test::VirtualMainThread thread;
    auto owned = std::make_unique<ManualAudioOutput>();
    ManualAudioOutput& output = *owned;
    const auto mixer = Mixer::create(std::move(owned), std::shared_ptr<MainThread>(&thread, [](auto*) {}));
    std::array<float, 64> left{}, right{};
    const auto heard = [&] {
        output.pull(left.data(), right.data(), left.size());
        EXPECT_EQ(right[63], -left[63]);
        return left[63];
    };
    std::vector<std::shared_ptr<Constant>> sources;
    for (std::size_t i = 0; i < Mixer::mostSources; ++i) {
        sources.push_back(std::make_shared<Constant>(1.0F));
        EXPECT_TRUE(mixer->add(sources.back()));
    }
    EXPECT_FALSE(mixer->add(std::make_shared<Constant>(1.0F)));
    EXPECT_FALSE(mixer->add(sources[3]));
    EXPECT_EQ(heard(), 64);
    EXPECT_EQ(mixer->renderedFrames(), 64);
    mixer->remove(*sources[0]);
    EXPECT_EQ(heard(), 63);
    for (const auto& source : sources) mixer->remove(*source);
    EXPECT_EQ(sources[5].use_count(), 1);
    EXPECT_EQ(heard(), 0);
    thread.advance(4s);
    EXPECT_TRUE(mixer->add(sources[0])); // calls the stop off
    thread.advance(10s);
    EXPECT_EQ(heard(), 1);
    mixer->remove(*sources[0]);
    EXPECT_EQ(thread.pendingTimers(), 1U);
    thread.advance(Mixer::idleTime);
    EXPECT_TRUE(mixer->add(sources[1]));
    EXPECT_EQ(heard(), 1);
}

TEST(Mixer, calledSourcesAreInTheMix) {
    auto owned = std::make_unique<ManualAudioOutput>();
    ManualAudioOutput& output = *owned;
    const auto mixer = Mixer::create(std::move(owned));
    const auto first = std::make_shared<Constant>(1.0F);
    mixer->add(first); // starts the output, for the thread below
    std::atomic<bool> isDone = false;
    std::atomic<int> misplaced = 0;
    std::thread device([&] {
        std::array<float, 64> left{}, right{};
        while (!isDone) output.pull(left.data(), right.data(), left.size());
    });
    for (int i = 0; i < 3000; ++i) {
        const auto source = std::make_shared<Constant>(1.0F);
        source->misplaced = &misplaced;
        mixer->add(source);
        if (i % 3 == 0) std::this_thread::yield();
        mixer->remove(*source);
        source->isIn = false;
    }
    isDone = true;
    device.join();
    EXPECT_EQ(misplaced, 0);
    EXPECT_EQ(test::RealtimeWatch::firstViolation(), "");
}

} // namespace
} // namespace orvane::platform
