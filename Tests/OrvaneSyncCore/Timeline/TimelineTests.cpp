#include "OrvaneSyncCore/Services/Timeline/AudioDrag.h"
#include "OrvaneSyncCore/Services/Timeline/ClipPlaces.h"
#include "OrvaneSyncCore/Services/Timeline/FrameAccumulator.h"
#include "OrvaneSyncCore/Services/Timeline/TimelineRuler.h"
#include "OrvaneSyncCore/Services/Timeline/TimelineZoomState.h"
#include "Support/Test.h"

#include <limits>
#include <vector>

namespace orvane {
namespace {

TEST(TimelineZoom, keepsTheMomentUnderThePointerElseUnderThePlayhead) {
    for (const bool hasPointer : {true, false})
        for (const double playhead : {0.0, 30.0, 58.0}) {
            TimelineZoomState zoom{.viewportWidth = 1000, .clipDuration = 60, .playheadSeconds = playhead};
            if (hasPointer) zoom.cursorViewportX = 100;
            const double x = hasPointer ? 100 : zoom.viewportX(playhead);
            const auto momentAtX = [&] { return (x + zoom.scrollOffset) / zoom.pixelsPerSecond(); };
            const double moment = momentAtX();
            for (const double factor : {1.25, 1.25, 40.0, 0.8, 0.8}) {
                zoom.applyZoom(factor);
                EXPECT_NEAR(momentAtX(), moment, 1e-9) << hasPointer << playhead << factor;
            }
            EXPECT_NEAR(zoom.zoomScale, 40, 1e-9);
            for (int i = 0; i < 30; ++i) zoom.applyZoom(0.8);
            EXPECT_EQ(zoom.zoomScale, 1);
            EXPECT_EQ(zoom.scrollOffset, 0);
            EXPECT_NEAR(zoom.contentSeconds() * zoom.pixelsPerSecond(), 1000, 1e-9);
        }
    TimelineZoomState atTheEdge{.viewportWidth = 1000, .clipDuration = 60, .cursorViewportX = 0};
    atTheEdge.applyZoom(2);
    EXPECT_EQ(atTheEdge.scrollOffset, 0);
    TimelineZoomState closest{.zoomScale = 64, .scrollOffset = 7};
    for (const double factor : {1.25, 0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
        closest.applyZoom(factor);
        EXPECT_EQ(closest.zoomScale, 64);
        EXPECT_EQ(closest.scrollOffset, 7);
    }
}

TEST(TimelineZoom, fitsTheClipAndPadsForTheSound) {
    TimelineZoomState zoom{.viewportWidth = 700, .clipDuration = 60};
    zoom.zoomFit();
    EXPECT_DOUBLE_EQ(zoom.zoomScale, 70.0 / 60);
    EXPECT_DOUBLE_EQ(zoom.pixelsPerSecond() * 60, 700);
    EXPECT_DOUBLE_EQ(TimelineZoomState{.viewportWidth = 500}.fitPixelsPerSecond(), 50);
    EXPECT_EQ(TimelineZoomState{.viewportWidth = 0}.fitPixelsPerSecond(), 60);
    zoom.updateViewportWidth(700.5);
    EXPECT_EQ(zoom.viewportWidth, 700);

    struct Case {
        double clip, offset, audio, pre, post;
    };
    for (const Case& one :
         {Case{60, -12, 0, 14, 5}, Case{60, -1, 60, 5, 5}, Case{60, 3, 10, 5, 5}, Case{10, 0, 30, 5, 22},
          Case{10, 0, 10, 5, 5}, Case{10, 4, 10, 5, 6}, Case{10, -30, 30, 32, 5}}) {
        zoom.clipDuration = one.clip;
        zoom.sizePaddingForAudio(one.offset, one.audio);
        EXPECT_EQ(zoom.preRollSeconds, one.pre) << one.offset;
        EXPECT_EQ(zoom.postRollSeconds, one.post) << one.offset << " " << one.audio;
    }
}

TEST(TimelineZoom, keepsWhatIsInViewWhenTheSoundMoves) {
    TimelineZoomState zoom{.zoomScale = 64, .viewportWidth = 700, .clipDuration = 8};
    zoom.sizePaddingForAudio(1198, 20); // a recording of another time of the day
    zoom.zoomFit();
    zoom.scrollOffset = zoom.preRollSeconds * zoom.pixelsPerSecond();
    const double scale = zoom.pixelsPerSecond();
    for (const double offset : {-40.0, 600.0}) {
        zoom.sizePaddingForAudio(offset, 100);
        EXPECT_NEAR(zoom.viewportX(0), 0, 1e-6) << offset;
        EXPECT_NEAR(zoom.pixelsPerSecond(), scale, 1e-6) << offset;
    }
}

TEST(TimelineRuler, choosesTicksAndNamesThem) {
    struct Case {
        double duration, width, interval;
    };
    for (const Case& one : {Case{600, 1200, 30}, Case{1200, 60, 60}, Case{300, 60, 300}, Case{70, 800, 10},
                            Case{1, 800, 0.5}, Case{10, 0, 60}})
        EXPECT_EQ(TimelineRuler::rulerInterval(one.duration, one.width), one.interval) << one.duration;
    for (const Case& one :
         {Case{60, 600 / 7200.0, 1800}, Case{60, 0.2, 300}, Case{60, 1e-9, 86400}, Case{30, 2, 30}})
        EXPECT_EQ(TimelineRuler::legibleInterval(one.duration, one.width), one.interval) << one.width;
    EXPECT_EQ(TimelineRuler::formatTime(125.9), "2:05");
    EXPECT_EQ(TimelineRuler::formatTime(-5), "-0:05");
    EXPECT_EQ(TimelineRuler::formatTime(-0.5), "0:00");
    EXPECT_EQ(TimelineRuler::formatTime(6000), "100:00");
    for (const auto& [seconds, label] :
         {std::pair(3599.9, "59:59"), {5400.6, "1:30:00"}, {-3600.0, "-1:00:00"}})
        EXPECT_EQ(TimelineRuler::labelText(seconds), label);
}

TEST(Scrolling, givesWholeStepsAndKeepsTheRest) {
    FrameAccumulator trackpad, wheel;
    std::vector<int> steps;
    for (int i = 0; i < 8; ++i) steps.push_back(trackpad.frames(1, true));
    EXPECT_EQ(steps, (std::vector{0, 0, 0, 1, 0, 0, 0, 1}));
    EXPECT_EQ(wheel.frames(-2.5, false), -2);
    EXPECT_EQ(wheel.remainder, -0.5);
    EXPECT_EQ(wheel.frames(1, false), 0); // back towards 0
    EXPECT_EQ(wheel.frames(std::numeric_limits<double>::infinity(), false), 0);
    ZoomScroll zoom;
    EXPECT_EQ(zoom.steps(3), 0);
    EXPECT_EQ(zoom.steps(6), 2);
    EXPECT_EQ(zoom.steps(-5), -1);
    EXPECT_EQ(pinchZoomFactor(6), 1.2);
    for (const double wild : {26.0, -11.5}) EXPECT_FALSE(pinchZoomFactor(wild)) << wild;
}

TEST(AudioDrag, movesByFramesFreelyOrToAnOnset) {
    constexpr double frame = 1001.0 / 24000;
    const std::vector<double> onsets{2, 5};
    const AudioDrag::Timeline plain{.pixelsPerSecond = 100, .frameRate = 23.976};
    AudioDrag::Timeline anchored = plain;
    anchored.anchorSeconds = 1.9;
    anchored.onsetMarkers = onsets;
    struct Case {
        const char* name;
        AudioDrag::Timeline timeline;
        DragModifiers modifiers;
        double translation, seconds;
    };
    for (const Case& one : {Case{"whole frames", plain, {}, 10, 2 * frame},
                            {"backwards", plain, {}, -7, -2 * frame},
                            {"freely", plain, {.command = true}, 10, 0.1},
                            {"Command before Shift", anchored, {.command = true, .shift = true}, 5, 0.05},
                            {"to an onset", anchored, {.shift = true}, 30, 0.1},
                            {"no onset is near", anchored, {.shift = true}, 100, 1},
                            {"Shift without an anchor", plain, {.shift = true}, 10, 2 * frame}}) {
        AudioDrag drag;
        double offset = drag.move(one.translation * 7, one.modifiers, one.timeline).value_or(0);
        offset += drag.move(one.translation, one.modifiers, one.timeline).value_or(0);
        EXPECT_NEAR(offset, one.seconds, 1e-12) << one.name;
        EXPECT_FALSE(drag.move(one.translation, one.modifiers, one.timeline)) << one.name;
    }
    EXPECT_FALSE(AudioDrag().move(10, {}, {.pixelsPerSecond = 0, .frameRate = 25}));
}

TEST(ClipPlaces, stayWithinTheClipUnlessTheSoundBeginsBeforeIt) {
    EXPECT_EQ(ClipPlaces::ofAnchor(3, 1, 60), 4);
    EXPECT_EQ(ClipPlaces::ofAnchor(3, 60, 60), 60);
    EXPECT_EQ(ClipPlaces::ofAnchor(3, -5, 60), -2);
    EXPECT_EQ(ClipPlaces::ofAnchor(-1, 2, 60), 1);
    EXPECT_EQ(ClipPlaces::ofClick(99, 30, -2), 28);
    EXPECT_EQ(ClipPlaces::ofClick(-1, 30, -2), -2);
}

} // namespace
} // namespace orvane
