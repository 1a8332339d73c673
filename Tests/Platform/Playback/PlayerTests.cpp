#include "Platform/Playback/DeviceOutput.h"
#include "Platform/Playback/PictureTrack.h"
#include "Platform/Playback/Player.h"
#include "Platform/Playback/PlayerHost.h"
#include "Support/ChildProcesses.h"
#include "Support/MemoryAudio.h"
#include "Support/NumberedClip.h"
#include "Support/RandomSeed.h"
#include "Support/SoundMachine.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"
#include "Support/VirtualMainThread.h"

#include <cmath>
#include <csignal>
#include <filesystem>
#include <future>
#include <random>

namespace orvane::test {
namespace {

using platform::MediaTime;
using platform::Player;
using platform::PlayerItem;

constexpr int pictureCount = 150;
constexpr double soundSeconds = 20;

/// A sample of 1 at each half second of the recording, at 48 kHz.
std::unique_ptr<platform::AudioFile> halfSecondTicks() {
    std::vector<float> samples(static_cast<std::size_t>(soundSeconds * 48000));
    for (std::size_t i = 0; i < samples.size(); i += 24000) samples[i] = 1;
    return std::make_unique<MemoryAudio>(std::vector<std::vector<float>>{samples}, 48000);
}

/// Constant samples of 0.5.
std::unique_ptr<platform::AudioFile> toneOf(double seconds) {
    const std::vector<float> samples(static_cast<std::size_t>(seconds * 48000), 0.5F);
    return std::make_unique<MemoryAudio>(std::vector<std::vector<float>>{samples}, 48000);
}

std::unique_ptr<platform::AudioFile> tone() { return toneOf(soundSeconds); }

/// A player on a clock that the test moves.
class PlayerTest : public testing::Test {
  protected:
    void load(const std::string& video, double offset = 0, bool hasSound = true, PlayerItem item = {}) {
        item.videoPath = video;
        if (hasSound) item.openSound = halfSecondTicks;
        item.soundOffset = MediaTime::fromSeconds(offset);
        bool isLoaded = false;
        player_->load(item, [&](const platform::PlayerFacts&) { isLoaded = true; });
        ASSERT_TRUE(main_.waitUntil([&] { return isLoaded; }));
        seek({});
    }
    void seek(MediaTime time) {
        std::optional<bool> done;
        player_->seek(time, [&](bool isShown) { done = isShown; });
        ASSERT_TRUE(main_.waitUntil([&] { return done.has_value(); }));
        EXPECT_TRUE(*done);
    }
    void advance(double seconds) {
        bool isDone = false;
        system_->advance(seconds, [&] { isDone = true; });
        ASSERT_TRUE(main_.waitUntil([&] { return isDone; }));
    }
    int shown() const { return player_->picture() ? NumberedClip::numberIn(*player_->picture()) : -2; }
    /// The number of the picture at the player's current time.
    int due(MediaTime picture) const {
        const auto number = (player_->currentTime() + MediaTime{1, 100000}).wholeUnits(picture);
        return static_cast<int>(std::clamp<std::int64_t>(number, 0, pictureCount - 1));
    }
    /// Times of the output, in seconds, at which ticks were heard from frame `from` on.
    std::vector<double> ticksFrom(std::size_t from) const {
        std::vector<double> found;
        for (std::size_t i = from; i < heard_.size(); ++i)
            if (heard_[i] > 0.3F && (i == 0 || heard_[i] >= heard_[i - 1]) &&
                (i + 1 == heard_.size() || heard_[i] > heard_[i + 1]) &&
                (found.empty() || static_cast<double>(i) / 48000 - found.back() > 0.01))
                found.push_back(static_cast<double>(i) / 48000);
        return found;
    }
    /// Checks that ticks of the recording were heard at their times, within a millisecond, while the clip ran
    /// at rate 1: it was at `clip` seconds at frame `from` of the output, and ran to the end of what was
    /// heard.
    void expectTicks(std::size_t from, double clip, double offset) const {
        std::vector<double> expected;
        const double start = static_cast<double>(from) / 48000,
                     end = static_cast<double>(heard_.size()) / 48000;
        for (int k = 0; k < soundSeconds * 2; ++k) {
            const double moment = start + k * 0.5 + offset - clip;
            // Ticks within a fade are left out.
            if (moment > start + 0.02 && moment < end - 0.02) expected.push_back(moment);
        }
        std::vector<double> found = ticksFrom(from);
        std::erase_if(found, [&](double one) { return one <= start + 0.02 || one >= end - 0.02; });
        ASSERT_EQ(found.size(), expected.size()) << "from " << start << " to " << end << ", clip " << clip;
        for (std::size_t i = 0; i < found.size(); ++i) EXPECT_NEAR(found[i], expected[i], 0.001);
    }

    const TemporaryDirectory folder_;
    VirtualMainThread main_;
    std::shared_ptr<platform::MainThread> shared_{&main_, [](auto*) {}};
    std::unique_ptr<platform::PulledPlayerSystem> system_ = [this] {
        auto system = platform::PulledPlayerSystem::create(shared_);
        system->hearSound([this](const float* left, const float*, std::size_t frames) {
            heard_.insert(heard_.end(), left, left + frames);
        });
        return system;
    }();
    std::unique_ptr<Player> player_ = system_->makePlayer();
    std::vector<float> heard_;
};

struct SyncCase {
    const char* name;
    const char* rate;
    MediaTime picture;
    double offset;
    const char* options;
};
class PlayerSync : public PlayerTest, public testing::WithParamInterface<SyncCase> {};

TEST_P(PlayerSync, showsTheFrameAndPlaysTheSampleOfTheTime) {
    const SyncCase& test = GetParam();
    const std::string path = folder_.path(test.name);
    if (!NumberedClip{pictureCount, test.rate, test.options}.make(path)) GTEST_SKIP() << "no such encoder";
    load(path, test.offset);
    std::mt19937 random(randomSeed());

    // Each report while the player runs comes with the picture of its time.
    int wrong = 0, reports = 0;
    auto watch = player_->observeTime([&](MediaTime) {
        ++reports;
        if (shown() != due(test.picture)) ++wrong;
    });
    const auto play = [&](MediaTime from, double rate, double seconds) {
        seek(from);
        reports = wrong = 0;
        const std::size_t heardBefore = heard_.size();
        player_->setRate(rate);
        advance(seconds);
        EXPECT_EQ(wrong, 0) << "at " << rate;
        EXPECT_NEAR(reports, seconds / test.picture.seconds(), 3) << "at " << rate;
        if (rate == 1) expectTicks(heardBefore, from.seconds(), test.offset);
        player_->setRate(0);
        EXPECT_EQ(shown(), due(test.picture));
        EXPECT_NEAR(player_->currentTime().seconds(), from.seconds() + rate * seconds, 1e-6);
    };
    play({}, 1, 0.8);
    play(test.picture * 37, 1, 1.0);
    play(test.picture * 90, -1, 0.9);
    EXPECT_EQ(player_->droppedPictures(), 0);

    // Steps, as exact fractions.
    int number = 60;
    seek(test.picture * number);
    for (int step = 0; step < 200; ++step) {
        number = std::clamp(number + std::uniform_int_distribution(-5, 5)(random), 0, pictureCount - 1);
        seek(test.picture * number);
        ASSERT_EQ(shown(), number) << "step " << step;
        ASSERT_EQ(player_->currentTime(), test.picture * number);
    }

    // A loop: the end of the region seeks to its start, and the sound follows.
    seek(test.picture * 40);
    wrong = 0;
    int rounds = 0;
    auto loop = player_->observeTime([&](MediaTime time) {
        if (time < test.picture * 52) return;
        ++rounds;
        player_->seek(test.picture * 40);
    });
    player_->setRate(1);
    advance(test.picture.seconds() * 12 * 3.5);
    EXPECT_EQ(rounds, 3);
    EXPECT_EQ(wrong, 0);
    loop.reset();

    // A changed offset moves the sound; the picture continues.
    const std::int64_t dropped = player_->droppedPictures();
    player_->seek({});
    player_->setSoundOffset(MediaTime::fromSeconds(0.013));
    advance(0.1);
    const double clip = player_->currentTime().seconds();
    const std::size_t from = heard_.size();
    advance(1.2);
    expectTicks(from, clip, 0.013);
    EXPECT_EQ(player_->rate(), 1);
    EXPECT_EQ(wrong, 0);

    // Pictures that a shuttle skips do not count as dropped.
    player_->seek({});
    player_->setRate(8);
    advance(0.1);
    player_->setRate(1);
    advance(0.5);
    EXPECT_EQ(player_->droppedPictures(), dropped);
}

const SyncCase syncCases[] = {
    {"long.mov", "24000/1001", {1001, 24000}, -3.2, "-c:v libx264 -preset ultrafast -g 150 -bf 3"},
    {"seconds.mp4", "30000/1001", {1001, 30000}, 3.2, "-c:v libx264 -preset ultrafast -g 30 -bf 2"},
    {"hevc.mov",
     "60",
     {1, 60},
     0.5,
     "-c:v libx265 -preset ultrafast -x265-params log-level=none -g 60 -tag:v hvc1"},
    {"intra.mov", "25", {1, 25}, 0, "-c:v prores_ks -vendor apl0"},
    {"hr.mxf", "60000/1001", {1001, 60000}, -0.7, "-c:v dnxhd -profile:v dnxhr_sq -pix_fmt yuv422p"},
    {"group.mxf", "50", {1, 50}, 1.1, "-c:v mpeg2video -g 12 -bf 2 -b:v 5M -pix_fmt yuv422p"},
    {"high.mp4", "48", {1, 48}, -1.04, "-c:v libx264 -preset ultrafast -g 12 -bf 2 -x264-params open-gop=1"},
};
INSTANTIATE_TEST_SUITE_P(Encodings, PlayerSync, testing::ValuesIn(syncCases), [](const auto& one) {
    const std::string name = one.param.name;
    return name.substr(0, name.find('.')) + "_" + name.substr(name.find('.') + 1);
});

class PlayerTransport : public PlayerTest {
  protected:
    void SetUp() override {
        path_ = folder_.path("clip.mov");
        ASSERT_TRUE(
            (NumberedClip{pictureCount, "25", "-c:v libx264 -preset ultrafast -g 25 -bf 2"}.make(path_)));
    }
    std::string path_;
    const MediaTime picture_{1, 25};
};

TEST_F(PlayerTransport, endsOnceInEitherDirectionAndShowsKeyPicturesAtSpeed) {
    load(path_);
    EXPECT_EQ(player_->facts().duration, (MediaTime{6, 1}));
    int ends = 0;
    const auto watch = player_->observeEnd([&] {
        ++ends;
        EXPECT_EQ(player_->rate(), 0);
    });
    for (const double rate : {1.0, 2.0, 4.0, 8.0, 32.0, -1.0, -2.0, -8.0, -32.0}) {
        ends = 0;
        seek(rate > 0 ? MediaTime{5, 1} : MediaTime{1, 1});
        player_->setRate(rate);
        advance(3);
        EXPECT_EQ(ends, 1) << rate;
        EXPECT_EQ(player_->currentTime(), (rate > 0 ? MediaTime{6, 1} : MediaTime{})) << rate;
        EXPECT_EQ(shown(), rate > 0 ? pictureCount - 1 : 0) << rate;
    }
    // Pictures while it runs: those of the current time below 8 times the speed, key pictures from there on.
    for (const double rate : {0.25, 4.0, -4.0, 8.0, -16.0}) {
        int reports = 0;
        const auto times = player_->observeTime([&](MediaTime) {
            if (++reports < 3) return; // the first reports may still show the picture before
            if (std::abs(rate) >= 8)
                EXPECT_EQ(shown(), due(picture_) / 25 * 25) << rate;
            else
                EXPECT_EQ(shown(), due(picture_)) << rate;
        });
        seek(rate > 0 ? MediaTime{1, 2} : MediaTime{11, 2});
        player_->setRate(rate);
        advance(rate < 1 && rate > 0 ? 1 : 0.25);
        EXPECT_GT(reports, 4) << rate;
    }
    player_->setRate(0);
    advance(0);
    EXPECT_EQ(shown(), due(picture_)) << "at rest it is the exact one";
}

/// At a moment whose picture is not there.
TEST_F(PlayerTransport, showsThePictureBehindInReverseAlone) {
    platform::PictureTrack track(platform::VideoDecoder::open(path_), [](const auto&) {});
    for (const int second : {1, 2}) {
        track.seek({second, 1}, static_cast<std::uint64_t>(second));
        track.waitUntilReady({second, 1}, 0);
    }
    for (const auto& [rate, number] : {std::pair{-1.0, 50}, {-8.0, 25}, {0.0, 25}, {0.5, 25}, {1.0, 25}}) {
        const auto picture = track.shownAt({3, 2}, rate);
        EXPECT_EQ(picture ? NumberedClip::numberIn(*picture) : -2, number) << rate;
    }
}

TEST_F(PlayerTransport, startsPlayersOnOneFrameOfTheOutput) {
    load(path_);
    auto other = system_->makePlayer();
    bool isLoaded = false;
    other->load({path_, halfSecondTicks, {}}, [&](const auto&) { isLoaded = true; });
    ASSERT_TRUE(main_.waitUntil([&] { return isLoaded; }));
    const auto start = player_->hostTime() + std::chrono::milliseconds(50);
    player_->setRate(1, {1, 1}, start);
    other->setRate(1, {3, 1}, start);
    advance(0.04);
    EXPECT_EQ(player_->currentTime(), (MediaTime{1, 1})) << "it has not begun";
    advance(1.01);
    EXPECT_NEAR(player_->currentTime().seconds(), 2, 1e-9);
    EXPECT_NEAR(other->currentTime().seconds(), 4, 1e-9);
    EXPECT_EQ(shown(), 50);
    EXPECT_EQ(NumberedClip::numberIn(*other->picture()), 100);
}

/// Cameras with other rates and start times, started together, for a minute.
TEST_F(PlayerTest, camerasStayWithinAFrameOfEachOther) {
    struct Camera {
        std::string rate;
        MediaTime picture, start;
        std::unique_ptr<Player> player = nullptr;
    };
    std::array<Camera, 4> cameras{{{"25", {1, 25}, {}},
                                   {"24000/1001", {1001, 24000}, {1, 3}},
                                   {"30000/1001", {1001, 30000}, {1, 2}},
                                   {"50", {1, 50}, {1, 1}}}};
    std::size_t loaded = 0;
    for (Camera& camera : cameras) {
        const std::string path = folder_.path(std::to_string(camera.picture.scale) + ".mov");
        const auto pictures = static_cast<int>(std::ceil(61.5 / camera.picture.seconds()));
        ASSERT_TRUE(
            (NumberedClip{pictures, camera.rate, "-c:v libx264 -preset ultrafast -g 50", 192, 108}.make(
                path)));
        camera.player = system_->makePlayer();
        camera.player->load({path, tone}, [&](const auto&) { ++loaded; });
    }
    ASSERT_TRUE(main_.waitUntil([&] { return loaded == cameras.size(); }));
    const auto start = cameras[0].player->hostTime() + std::chrono::milliseconds(50);
    for (Camera& camera : cameras) camera.player->setRate(1, camera.start, start);
    advance(0.05);
    for (int i = 1; i <= 160; ++i) {
        advance(0.375);
        for (const Camera& camera : cameras) {
            const MediaTime now = camera.start + MediaTime{3 * i, 8};
            ASSERT_NEAR(camera.player->currentTime().seconds(), now.seconds(), 1e-4) << camera.rate;
            const auto shown = NumberedClip::numberIn(*camera.player->picture());
            ASSERT_EQ(shown, (now + MediaTime{1, 100'000}).wholeUnits(camera.picture)) << camera.rate;
        }
    }
    for (const Camera& camera : cameras) EXPECT_EQ(camera.player->droppedPictures(), 0) << camera.rate;
}

TEST_F(PlayerTransport, playsAnotherSoundFromItsChangeOn) {
    load(path_);
    player_->setRate(1);
    advance(0.2);
    std::promise<void> gate;
    player_->setSound([opens = gate.get_future().share()] {
        opens.wait();
        return tone();
    });
    bool isDone = false;
    system_->advance(0.5, [&] { isDone = true; });
    EXPECT_FALSE(main_.waitUntil([&] { return isDone; }, std::chrono::milliseconds(20)));
    gate.set_value();
    ASSERT_TRUE(main_.waitUntil([&] { return isDone; }));
    EXPECT_NEAR(static_cast<double>(std::ranges::count(heard_, 0.5F)), 24'000, 300);
    player_->setSound(nullptr);
    EXPECT_FALSE(player_->facts().hasSound) << "the clip has none of its own";
}

TEST_F(PlayerTransport, dropsStaleSeeksAndLoads) {
    load(path_);
    std::vector<std::pair<int, bool>> done;
    for (int i = 0; i < 10; ++i)
        player_->seek(picture_ * (140 - 10 * i), [&done, i](bool isShown) { done.emplace_back(i, isShown); });
    ASSERT_TRUE(main_.waitUntil([&] { return done.size() == 10; }));
    for (const auto& [number, isShown] : done) EXPECT_EQ(isShown, number == 9) << number;
    EXPECT_EQ(shown(), 50);

    int loads = 0;
    for (int i = 0; i < 5; ++i) player_->load({path_, halfSecondTicks, {}}, [&](const auto&) { ++loads; });
    ASSERT_TRUE(main_.waitUntil([&] { return player_->isLoaded(); }));
    main_.runPosted();
    EXPECT_EQ(loads, 1);

    // Random operations while the player runs.
    std::mt19937 random(randomSeed());
    const auto below = [&](int limit) { return std::uniform_int_distribution(0, limit - 1)(random); };
    for (int i = 0; i < 300; ++i) { // for 0.3 s
        switch (below(5)) {
        case 0:
            player_->setRate(below(65) - 32);
            break;
        case 1:
            player_->seek(picture_ * (below(400) - 100));
            break;
        case 2:
            player_->setSoundOffset({below(1000) - 500, 100});
            break;
        case 3:
            player_->setPictureSize({below(300), below(300)});
            break;
        default:
            player_->setSound(halfSecondTicks);
        }
        advance(0.001);
    }
    player_->setRate(0);
    player_->setPictureSize({});
    seek(picture_ * 77);
    EXPECT_EQ(shown(), 77);
    EXPECT_EQ(player_->picture()->size, (platform::PictureSize{256, 144}));
}

TEST_F(PlayerTransport, playsWithoutPictureOrSound) {
    // Sound alone.
    load("", 1.5);
    EXPECT_FALSE(player_->facts().hasPicture);
    EXPECT_EQ(player_->facts().duration, MediaTime::fromSeconds(soundSeconds + 1.5));
    std::size_t from = heard_.size();
    player_->setRate(1);
    advance(3);
    expectTicks(from, 0, 1.5);
    // A video that can't be decoded lasts as long as its file states.
    load(folder_.path("missing.mov"), 0.5, true, {.pictureDuration = {8, 5}, .pictureFrameRate = 24});
    EXPECT_EQ(player_->facts().duration, (MediaTime{8, 5}));
    EXPECT_TRUE(player_->facts().isVideoMissing);
    EXPECT_EQ(player_->facts().nominalFrameRate, 24);
    player_->setSoundOffset({3, 1});
    EXPECT_EQ(player_->facts().duration, (MediaTime{8, 5}));
    // Neither picture nor sound.
    load(folder_.path("missing.mov"), 0, false);
    EXPECT_EQ(player_->facts().duration, MediaTime{});
    player_->setRate(1);
    advance(0.5);
    EXPECT_EQ(player_->rate(), 0) << "it ends where it begins";
    // A picture without sound whose file states a longer duration than it has.
    const std::string cut = folder_.path("cut.ts");
    ASSERT_TRUE((NumberedClip{pictureCount, "25", "-c:v libx264 -preset ultrafast -g 25"}.make(cut)));
    std::filesystem::resize_file(cut, std::filesystem::file_size(cut) / 2);
    load(cut, 0, false);
    int ends = 0;
    const auto watch = player_->observeEnd([&] { ++ends; });
    player_->setRate(1);
    advance(8);
    EXPECT_EQ(ends, 1);
    EXPECT_GT(shown(), 40);
    // The video's own sound if no other can be opened; then a file that is removed while it plays.
    const std::string own = folder_.path("own.mov");
    ASSERT_TRUE(
        (NumberedClip{pictureCount, "25", "-c:v libx264 -preset ultrafast -g 25 -c:a pcm_s16le -shortest",
                      256, 144, "-f lavfi -i anullsrc=r=48000"}
             .make(own)));
    bool isLoaded = false;
    player_->load({own, [] { return std::unique_ptr<platform::AudioFile>(); }, {}},
                  [&](const auto&) { isLoaded = true; });
    ASSERT_TRUE(main_.waitUntil([&] { return isLoaded; }));
    EXPECT_TRUE(player_->facts().hasSound);
    player_->setRate(1);
    advance(1);
    std::filesystem::resize_file(own, 1000);
    advance(8);
    EXPECT_EQ(ends, 2);
    EXPECT_EQ(player_->rate(), 0);
}

TEST_F(PlayerTransport, survivesTheEndOfTheDecodingProcess) {
    load(path_);
    int ends = 0;
    const auto watch = player_->observeEnd([&] { ++ends; });
    player_->setRate(1);
    advance(1);
    for (const pid_t helper : children()) ::kill(helper, SIGKILL);
    advance(8);
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(player_->currentTime(), (MediaTime{6, 1}));
    EXPECT_EQ(shown(), pictureCount - 1) << "another process goes on";
    for (const pid_t helper : children()) ::kill(helper, SIGKILL);
    seek(picture_ * 31);
    EXPECT_EQ(shown(), 31);
}

/// On the machine's clock, which the test moves, and with a device that can be plugged in and out.
TEST_F(PlayerTransport, followsTheClockWhileTheDeviceIsPluggedOutAndIn) {
    using platform::DeviceOutput;
    SoundMachine machine;
    auto owned = std::make_unique<DeviceOutput>(
        main_.clock(), [&] { return machine.devices(); }, DeviceOutput::Threads::caller);
    DeviceOutput& output = *owned;
    const auto system = platform::makePlayerSystem(shared_, main_.clock(), std::move(owned));
    player_ = system->makePlayer();
    load(path_);
    double last = 0;
    int ends = 0;
    const auto watch = player_->observeEnd([&] { ++ends; });
    const auto times = player_->observeTime([&](MediaTime time) {
        EXPECT_GE(time.seconds(), last) << "time goes back";
        last = time.seconds();
    });
    const auto run = [&](double seconds) {
        constexpr std::chrono::nanoseconds block{10'666'667}; // the size of the device's requests
        for (int i = 0; i < seconds * 1e9 / static_cast<double>(block.count()); ++i) {
            machine.ask();
            output.tick();
            main_.advance(block);
        }
    };
    // The clip starts when its first pictures are there; a start that was cancelled does not happen.
    for (const double rate : {1, 0}) player_->setRate(rate);
    run(1);
    EXPECT_EQ(player_->currentTime(), MediaTime{});
    player_->setRate(1);
    EXPECT_EQ(player_->rate(), 1);
    run(1);
    const double late = 1 - player_->currentTime().seconds();
    EXPECT_LT(late, 0.5);
    machine.isPlugged = false;
    run(2);
    EXPECT_EQ(output.description(), "no sound device");
    EXPECT_NEAR(player_->currentTime().seconds(), 3 - late, 0.1);
    machine.isPlugged = true;
    run(2);
    EXPECT_EQ(output.description(), "test device");
    EXPECT_NEAR(player_->currentTime().seconds(), 5 - late, 0.15);
    run(2);
    EXPECT_EQ(ends, 1);
    EXPECT_TRUE(main_.waitUntil([&] { return shown() == pictureCount - 1; }));
    // A recording that was replaced is silent before the next one is open.
    last = 0;
    load("", 0, false, {.openSound = [] { return toneOf(60); }});
    const auto runUntil = [&](bool isHeard) {
        while (player_->rate() != 0 && (machine.left.back() != 0) != isHeard) {
            run(0.01);
            // The player reads ahead on its own threads.
            main_.waitUntil([] { return false; }, std::chrono::milliseconds(1));
        }
        return player_->rate() != 0;
    };
    player_->setRate(1);
    EXPECT_TRUE(runUntil(true));
    std::promise<void> gate;
    player_->setSound([opens = gate.get_future().share()] {
        opens.wait();
        return tone();
    });
    EXPECT_TRUE(runUntil(false));
    gate.set_value();
    player_.reset(); // must end before the machine
}

} // namespace
} // namespace orvane::test
