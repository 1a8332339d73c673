#include "OrvaneSyncApp/Controllers/VideoEngine.h"
#include "Support/FakePlayer.h"
#include "Support/RandomSeed.h"
#include "Support/Test.h"
#include "Support/VirtualMainThread.h"

namespace orvane::test {
namespace {

using platform::MediaTime;
using Pitch = platform::PitchAlgorithm;

/// Records the blips instead of playing them.
struct FakeBlips final : FrameBlips {
    struct Log {
        bool isOpen = false;
        std::vector<std::pair<double, double>> blips; ///< position and length
    };
    explicit FakeBlips(std::shared_ptr<Log> theLog) : log(std::move(theLog)) {}
    void load(std::optional<TakeSound> sound) override { log->isOpen = sound.has_value(); }
    bool hasOpenFile() const override { return log->isOpen; }
    void playBlip(double at, double seconds, float) override { log->blips.emplace_back(at, seconds); }
    void silence() override {}
    void shutdown() override { log->isOpen = false; }
    std::shared_ptr<Log> log;
};

class VideoEngineTest : public testing::Test {
  protected:
    VideoEngineTest() {
        system_->settle = [this] { mainThread_->runPosted(); };
        engine_ = VideoEngine::create(
            {.mainThread = mainThread_,
             .openPlayers = [this] { return system_; },
             .makeBlips = [this](const auto&) { return std::make_unique<FakeBlips>(blips_); }});
    }
    /// A clip of 10 s at 25 frames a second.
    void load(double offset = 0, std::optional<double> at = std::nullopt, double rate = 25,
              std::optional<TakeSound> sound = TakeSound(FileURL{"/T.wav"})) {
        system_->usual.nominalFrameRate = rate;
        const auto loading = engine_->loadClip(FileURL{"/A.mov"}, std::move(sound), offset, at);
        mainThread_->runPosted();
        EXPECT_TRUE(loading.isDone());
    }
    FakePlayer& player() { return *system_->players.front(); }
    double at() { return engine_->playhead().seconds(); }
    void run(double seconds) { system_->advance(seconds, nullptr); }
    /// Presses keys: J, K (pause), L, P (play), s and S (slow motion backwards and forwards).
    void press(std::string_view keys) {
        for (const char key : keys) {
            if (key == 'J') engine_->pressJ();
            if (key == 'L') engine_->pressL();
            if (key == 'K') engine_->pause(true);
            if (key == 'P') engine_->play();
            if (key == 's' || key == 'S') engine_->slowMotionScrub(key == 'S');
            mainThread_->runPosted();
        }
    }

    std::shared_ptr<VirtualMainThread> mainThread_ = std::make_shared<VirtualMainThread>();
    std::shared_ptr<FakePlayerSystem> system_ = std::make_shared<FakePlayerSystem>(mainThread_);
    std::shared_ptr<FakeBlips::Log> blips_ = std::make_shared<FakeBlips::Log>();
    std::shared_ptr<VideoEngine> engine_;
};

TEST_F(VideoEngineTest, eachPressRaisesTheSpeedAndTheOtherDirectionBeginsAtNormalSpeed) {
    struct Case {
        std::string_view keys;
        double rate;
        std::string_view label;
        Pitch pitch;
        bool isHeard;
    };
    for (const Case& c : std::vector<Case>{
             {"L", 1, "▶", Pitch::timeDomain, true},
             {"LL", 2, "▶ 2×", Pitch::spectral, true},
             {"LLL", 4, "▶ 4×", Pitch::timeDomain, false},
             {"LLLLLLLLL", 32, "▶ 32×", Pitch::timeDomain, false},
             {"JJJJJJJJJ", -32, "◀ 32×", Pitch::timeDomain, false},
             {"LLLJ", -1, "◀", Pitch::timeDomain, true},
             {"LLLJJ", -2, "◀ 2×", Pitch::spectral, true},
             {"JJJL", 1, "▶", Pitch::timeDomain, true},
             {"LLLLP", 1, "▶", Pitch::timeDomain, true},
             {"LLLLPL", 2, "▶ 2×", Pitch::spectral, true},
             {"LLK", 0, "STOP", Pitch::timeDomain, false},
             {"LLKJ", -1, "◀", Pitch::timeDomain, true},
             {"S", 0.25, "▶ SLOW", Pitch::varispeed, true},
             {"LLs", -0.25, "◀ SLOW", Pitch::varispeed, true},
             {"SL", 1, "▶", Pitch::timeDomain, true},
         }) {
        SCOPED_TRACE(c.keys);
        load(0, 5);
        engine_->setVolume(0.5F);
        press(c.keys);
        EXPECT_EQ(player().rate(), c.rate);
        EXPECT_EQ(engine_->loop().jklLabel, c.label);
        EXPECT_EQ(player().pitch, c.pitch);
        EXPECT_EQ(player().volume, c.isHeard ? 0.5F : 0.0F);
        EXPECT_EQ(engine_->sound().isDucking, !c.isHeard);
        EXPECT_EQ(engine_->transport().isPlaying, c.rate != 0);
    }
    // A volume that was set during silence applies once there is sound.
    press("K");
    engine_->setVolume(0.25F);
    EXPECT_EQ(player().volume, 0);
    press("P");
    EXPECT_EQ(player().volume, 0.25F);
}

TEST_F(VideoEngineTest, anEndStopsAndTheShuttleGoesOnFromTheOtherEnd) {
    load(0, 9.9);
    press("P");
    run(1);
    EXPECT_FALSE(engine_->transport().isPlaying);
    EXPECT_EQ(at(), 10);
    EXPECT_EQ(engine_->loop().jklLabel, "STOP");
    press("L");
    run(0.2);
    EXPECT_EQ(at(), 0.2);
    press("J");
    run(1);
    EXPECT_EQ(at(), 0);
    EXPECT_EQ(engine_->rate(), 0);
    press("s");
    run(0.4);
    EXPECT_NEAR(at(), 9.9, 0.03);
}

TEST_F(VideoEngineTest, stepsAreExactAndStayWithinTheClip) {
    const std::uint32_t seed = randomSeed();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (const auto& [rate, length] : std::vector<std::pair<double, MediaTime>>{{23.976, {1001, 24000}},
                                                                                {29.97, {1001, 30000}},
                                                                                {25, {1, 25}},
                                                                                {0, {1, 24}},
                                                                                {59.94, {1001, 60000}}}) {
        load(0, 0, rate);
        std::int64_t frame = 0;
        for (int i = 0; i < 200; ++i) {
            const int count = std::uniform_int_distribution(-3, 4)(random);
            if (frame + count < 0 || length * (frame + count) > MediaTime{9, 1}) continue;
            frame += count;
            engine_->stepFrames(count, false);
            if (i % 3 == 0) mainThread_->runPosted(); // others begin before the picture is shown
        }
        mainThread_->runPosted();
        EXPECT_EQ(engine_->playhead().time, length * frame) << rate;
        EXPECT_EQ(player().currentTime(), length * frame) << rate;
    }
    engine_->stepFrames(1'000'000, false);
    EXPECT_EQ(at(), 10);
    engine_->stepFrames(std::numeric_limits<std::int64_t>::min(), false);
    EXPECT_EQ(at(), 0);
}

TEST_F(VideoEngineTest, aFrameIsHeardBesideThePlayerOrThroughIt) {
    load(2, 4);
    engine_->stepFrames(1, true);
    EXPECT_TRUE(blips_->blips.empty()); // not before its picture is ready
    mainThread_->runPosted();
    ASSERT_EQ(blips_->blips.size(), 1U);
    EXPECT_NEAR(blips_->blips[0].first, 2.04, 1e-9);
    EXPECT_NEAR(blips_->blips[0].second, 0.04, 1e-9);

    load(0, 4, 25, std::nullopt);
    engine_->stepFrames(1, true);
    mainThread_->runPosted();
    run(0.1);
    EXPECT_EQ(player().rate(), 1);
    EXPECT_FALSE(engine_->transport().isPlaying);
    engine_->stepFrames(1, true); // from the frame, not from the position that its sound has reached
    mainThread_->runPosted();
    run(0.5);
    EXPECT_EQ(player().rate(), 0);
    EXPECT_EQ(player().currentTime(), (MediaTime{102, 25}));
    EXPECT_EQ(at(), 4.08);
    engine_->stepFrames(1, true);
    mainThread_->runPosted();
    run(0.1);
    engine_->seek(7.0); // after this the playhead is not moved back
    run(0.5);
    EXPECT_EQ(at(), 7);
    // If there is no sound to hear, no blip plays.
    for (const bool hasSound : {true, false}) {
        system_->usual.hasSound = hasSound;
        load(0, 4, 25, std::nullopt);
        engine_->setVolume(hasSound ? 0 : 1);
        engine_->stepFrames(1, true);
        mainThread_->runPosted();
        run(0.1);
        EXPECT_EQ(player().currentTime(), (MediaTime{101, 25})) << hasSound;
    }
}

TEST_F(VideoEngineTest, anotherOffsetIsHeardAtOnceAndMovesNothing) {
    load(1, 5);
    engine_->setSyncOffsetSeconds(1.00005);
    EXPECT_TRUE(player().offsets.empty());
    engine_->setSyncOffsetSeconds(1.04);
    EXPECT_EQ(player().offsets.back(), MediaTime::fromSeconds(1.04));
    EXPECT_EQ(at(), 5);
    for (const std::string_view running : {"P", "L", "S"}) {
        press(running);
        run(0.1);
        const int seeks = player().seeks;
        const double rate = player().rate(), offset = engine_->sound().syncOffsetSeconds - 0.04;
        engine_->setSyncOffsetSeconds(offset);
        EXPECT_EQ(player().offsets.back(), MediaTime::fromSeconds(offset));
        EXPECT_EQ(player().rate(), rate);
        EXPECT_EQ(player().seeks, seeks);
        EXPECT_FALSE(engine_->sound().isDucking);
    }
    // It is kept while the files are opened.
    engine_->loadClip(FileURL{"/B.mov"}, TakeSound(FileURL{"/T.wav"}), 0, std::nullopt);
    engine_->setSyncOffsetSeconds(3);
    mainThread_->runPosted();
    EXPECT_EQ(player().offsets.back(), MediaTime::fromSeconds(3));
}

TEST_F(VideoEngineTest, aLoopGoesRoundUntilItIsCleared) {
    load(0, 0, 24);
    engine_->setLoopRegion(0.2, 12);
    EXPECT_EQ(engine_->loop().loopStart, MediaTime());
    EXPECT_DOUBLE_EQ(engine_->loop().loopEnd.seconds(), 0.7);
    mainThread_->runPosted();
    run(0.8);
    EXPECT_LT(at(), 0.11);
    engine_->setSyncOffsetSeconds(0.5);
    run(0.7);
    EXPECT_TRUE(engine_->transport().isPlaying);
    engine_->clearLoop();
    run(1);
    EXPECT_GT(at(), 1);
    // The same at the end of the clip; and a step out of a paused loop is not moved back into it.
    engine_->setLoopRegion(9.8, 12);
    EXPECT_EQ(engine_->loop().loopEnd, (MediaTime{10, 1}));
    mainThread_->runPosted();
    run(0.8);
    EXPECT_TRUE(engine_->transport().isPlaying);
    EXPECT_NEAR(at(), 9.4, 0.05);
    // Around a position after the end, the last frames are repeated.
    engine_->setLoopRegion(1000, 12);
    EXPECT_EQ(engine_->loop().loopStart, (MediaTime{19, 2}));
    mainThread_->runPosted();
    run(0.6);
    EXPECT_NEAR(at(), 9.6, 0.05);
    engine_->setLoopRegion(5, 12);
    engine_->pause(true);
    engine_->seek(6);
    mainThread_->runPosted();
    EXPECT_EQ(at(), 6);
    // A file that ends before the loop begins plays once, and then pauses.
    player().cutOffAt = {5, 1};
    engine_->setLoopRegion(8, 12);
    mainThread_->runPosted();
    run(0.2);
    EXPECT_FALSE(engine_->transport().isPlaying);
    EXPECT_EQ(at(), 5);
}

TEST_F(VideoEngineTest, aClipOpensOnItsClapUnlessTheUserWasThereFirst) {
    load(0, 3);
    EXPECT_EQ(at(), 3);
    EXPECT_FALSE(engine_->correctInitialSeek(3.0005));
    EXPECT_TRUE(engine_->correctInitialSeek(12));
    EXPECT_EQ(at(), 10);
    EXPECT_TRUE(engine_->correctInitialSeek(-1));
    engine_->stepFrames(1, false);
    EXPECT_FALSE(engine_->correctInitialSeek(5));
    load(0, 30);
    EXPECT_EQ(at(), 10);
    press("P");
    EXPECT_FALSE(engine_->correctInitialSeek(5));
}

TEST_F(VideoEngineTest, onlyTheNewestLoadCounts) {
    system_->files["/bad.mov"] = {};
    const auto first = engine_->loadClip(FileURL{"/A.mov"}, std::nullopt, 0, 2);
    const auto second = engine_->loadClip(FileURL{"/bad.mov"}, std::nullopt, 0, 2);
    mainThread_->runPosted();
    EXPECT_TRUE(first.isDone() && second.isDone());
    EXPECT_FALSE(engine_->transport().isLoaded || engine_->transport().isLoading);
    press("LPSK"); // without a clip these do nothing
    engine_->stepFrames(1, true);
    engine_->setLoopRegion(1, 12);
    EXPECT_EQ(engine_->loop().jklLabel, "STOP");
    const auto dropped = engine_->loadClip(FileURL{"/A.mov"}, std::nullopt, 0, 2);
    engine_->cleanup();
    mainThread_->runPosted();
    EXPECT_TRUE(dropped.isDone());
    EXPECT_TRUE(system_->players.empty());
}

TEST_F(VideoEngineTest, aThousandCommandsInARowLeaveItWhole) {
    const std::uint32_t seed = randomSeed();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    load(0, 5);
    for (int i = 0; i < 1000; ++i) {
        switch (random() % 8) {
        case 0:
            engine_->seek(static_cast<double>(random() % 1200) / 100 - 1);
            break;
        case 1:
            engine_->stepFrames(static_cast<std::int64_t>(random() % 9) - 4, random() % 2 == 0);
            break;
        case 2:
            engine_->setSyncOffsetSeconds(static_cast<double>(random() % 60) / 10 - 3);
            break;
        case 3:
            engine_->setLoopRegion(static_cast<double>(random() % 10), 12);
            break;
        case 4:
            engine_->clearLoop();
            break;
        default:
            press(std::string(1, "JKLPsS"[random() % 6]));
        }
        if (random() % 4 == 0) run(0.001);
    }
    press("K");
    mainThread_->runPosted();
    run(0.5);
    EXPECT_EQ(player().currentTime(), engine_->playhead().time);
    EXPECT_EQ(player().rate(), 0);
    EXPECT_TRUE(engine_->shown().isDone());
}

TEST(PlayheadStateTest, theTimecodeCountsAsTheFileDoes) {
    struct Case {
        double seconds, start, rate;
        std::optional<TimecodeFrameRate> own;
        std::string_view text;
    };
    for (const Case& c : std::vector<Case>{
             {1, 3600, 25, {}, "01:00:01:00"},
             {-2, 1, 25, {}, "00:00:00:00"},
             {1001.0 / 24000 * 30, 0, 23.976, {}, "00:00:01:06"},
             {0.5, 0, 50, TimecodeFrameRate::fps25, "00:00:00:12"},
             {60.06, 0, 29.97, {}, "00:01:00;02"},
             {60.06, 0, 29.97, TimecodeFrameRate::fps29_97, "00:01:00:00"},
         }) {
        const PlayheadState state{.time = MediaTime::fromSeconds(c.seconds),
                                  .frameRate = c.rate,
                                  .startTimecodeSeconds = c.start,
                                  .timecodeRate = c.own};
        EXPECT_EQ(state.timecodeString(), c.text);
    }
}

} // namespace
} // namespace orvane::test
