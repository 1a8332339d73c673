#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncApp/ViewModels/Review/PeakHold.h"
#include "OrvaneSyncApp/ViewModels/Review/PictureTexts.h"
#include "OrvaneSyncApp/ViewModels/Review/SyncLens.h"
#include "Support/Assets.h"
#include "Support/NumberedClip.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"
#include "Support/VirtualMainThread.h"

namespace orvane {
namespace {

SyncGroup clipWithSound(double offset) {
    SyncGroup clip =
        test::clip(test::video("A.mov", "10:00:00:00", 20), test::audio("T.wav", "09:59:58:00", 10));
    clip.audioMatches.front().syncOffsetSeconds = offset;
    return clip;
}

PlayheadState playheadAt(double seconds) {
    return {.time = platform::MediaTime::fromSeconds(seconds), .clipDuration = 20, .frameRate = 25};
}

} // namespace

TEST(SyncLensTest, LooksAtTheFrameInWhichTheClapIsHeard) {
    struct Case {
        const char* name;
        double offset, anchor;
        std::int64_t frame; ///< -1: no plan
    };
    const Case cases[] = {
        {"within a frame", 0, 1.019, 25}, {"on the edge it is the frame that begins", 0, 0.36, 9},
        {"in the first frame", 0, 0, 0},  {"moved by the offset", 2, 1, 75},
        {"before the clip", -2, 1, -1},   {"behind the clip", 15, 6, -1}};
    for (const Case& each : cases) {
        SyncGroup clip = clipWithSound(each.offset);
        clip.audioAnchorOffsetInAudioSeconds = each.anchor;
        const auto plan = syncLensPlan(clip, clip.resolvedClapPointSeconds(), playheadAt(0));
        EXPECT_EQ(plan ? plan->clapFrame : -1, each.frame) << each.name;
        if (!plan) continue;
        EXPECT_NEAR(plan->endSeconds() - plan->startSeconds(), 3 / 25.0, 1e-9) << each.name;
    }
    SyncGroup clip = clipWithSound(0);
    clip.audioAnchorOffsetInAudioSeconds = 1;
    const auto moved = syncLensPlan(clip, 1, playheadAt(3), true);
    EXPECT_EQ(moved->middleFrame, 75) << "at the playhead";
    EXPECT_EQ(syncLensCaption(*moved, 0), "49 frames after");
    const auto near = syncLensPlan(clip, 1, playheadAt(0.96), true);
    EXPECT_EQ(syncLensCaption(*near, 1), "1 frame before");
    EXPECT_EQ(syncLensCaption(*near, 2), "The clap");
    EXPECT_FALSE(syncLensPlan(clipWithSound(0), std::nullopt, playheadAt(0))) << "no clap";
}

TEST(SyncLensTest, ShowsNothingBehindTheClipAndEachSampleOnce) {
    const test::TemporaryDirectory folder;
    const std::string video = folder.path("A.mov"), sound = folder.path("T.wav");
    if (!test::NumberedClip{.pictures = 3, .encoding = "-c:v mjpeg"}.make(video))
        GTEST_SKIP() << "no encoder";
    constexpr std::size_t samplesOfFrame = 8000 / 25;
    std::vector<float> samples(8000);
    samples[2 * samplesOfFrame] = 0.5F; // the first one of frame 2
    test::WaveMaker().format({.sampleRate = 8000}).samples(samples).writeTo(sound);
    const auto mainThread = std::make_shared<test::VirtualMainThread>();
    const auto lens = SyncLens::create(mainThread);
    lens->show({.video = {video},
                .sound = TakeSound(FileURL{sound}),
                .frameLength = playheadAt(0).frameLength(),
                .middleFrame = 2},
               {64, 64}, 3);
    ASSERT_TRUE(mainThread->waitUntil([&] { return !lens->isLoading(); }));
    EXPECT_TRUE(lens->seen().pictures[1]);
    EXPECT_FALSE(lens->seen().pictures[2]) << "frame 2 is the last one";
    ASSERT_EQ(lens->seen().sound.size(), 3U);
    EXPECT_EQ(lens->seen().sound[0].highest, 0);
    EXPECT_NEAR(lens->seen().sound[1].highest, 0.5, 1e-4);
}

TEST(PictureTextsTest, AfterTheEndTheTimecodeIsThatOfTheLastFrame) {
    for (const auto& [seconds, shown] : {std::pair(20.0, "00:00:19:24"),
                                         {19.96, "00:00:19:24"},
                                         {19.92, "00:00:19:23"},
                                         {0.0, "00:00:00:00"}})
        EXPECT_EQ(pictureTimecode(playheadAt(seconds)), shown) << seconds;
    EXPECT_EQ(soundTimecode(clipWithSound(15), playheadAt(20)), "10:00:02:24");
}

TEST(PictureTextsTest, TimecodeOfTheSoundIsTheRecorders) {
    EXPECT_EQ(soundTimecode(clipWithSound(-2), playheadAt(3)), "10:00:03:00");
    EXPECT_EQ(soundTimecode(clipWithSound(1), playheadAt(1.4)), "09:59:58:10") << "by the sync, not the file";
    EXPECT_EQ(soundTimecode(clipWithSound(2), playheadAt(1)), "--:--:--:--") << "before it begins";
    EXPECT_EQ(soundTimecode(clipWithSound(0), playheadAt(11)), "--:--:--:--") << "behind its end";
    SyncGroup exact = clipWithSound(0);
    exact.audioMatches.front().audio.edit().bextTimeReference = 48'000 * 3600 + 23'040;
    exact.audioMatches.front().audio.edit().sampleRate = 48'000;
    EXPECT_EQ(soundTimecode(exact, playheadAt(0)), "01:00:00:12") << "its samples know more than its text";
}

TEST(PeakHoldTest, HoldsFallsAndKeepsTheMark) {
    PeakHold hold;
    const platform::ChannelPeak loud[] = {{1.0F, 0.5F}, {0.1F, 0.05F}};
    hold.update(loud, 10);
    hold.update({}, 11);
    EXPECT_NEAR(hold.channels()[0].peakDB, 0, 0.01) << "held";
    EXPECT_NEAR(hold.channels()[1].peakDB, -20, 0.01);
    hold.update({}, 12);
    EXPECT_NEAR(hold.channels()[0].peakDB, -20, 0.01) << "20 dB a second";
    EXPECT_TRUE(hold.channels()[0].isClipped);
    EXPECT_FALSE(hold.channels()[1].isClipped);
    hold.clear();
    hold.update(std::span(loud).subspan(1), 13);
    EXPECT_FALSE(hold.channels()[0].isClipped);
}

} // namespace orvane
