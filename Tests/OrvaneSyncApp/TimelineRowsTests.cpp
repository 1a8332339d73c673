#include "OrvaneSyncApp/Controllers/SmartAudioCaches.h"
#include "OrvaneSyncApp/ViewModels/Timeline/RecordedLevels.h"
#include "OrvaneSyncApp/ViewModels/Timeline/TimelineLayout.h"
#include "OrvaneSyncApp/ViewModels/Timeline/WaveformTile.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "OrvaneSyncCore/Services/SmartAudio/ActiveTracks.h"
#include "OrvaneSyncCore/Services/Takes/ClipSound.h"
#include "Support/Test.h"
#include "Support/TimelineClip.h"

#include <algorithm>

namespace orvane::test {

namespace {

using Spot = TimelineLayout::Spot;

/// The clip at 20 points a second; the view begins 5 s before it.
class TimelineRowsTest : public testing::Test {
  protected:
    TimelineRowsTest() { registerStandardDefaults(settings_); }

    TimelineRows rows() {
        FileNames names;
        for (const AudioMatch& match : group_.audioMatches) names.add(*match.audio);
        names.add(group_.video);
        return timelineRows(group_, 25, smartAudio_, settings_, names, &madeWith_);
    }
    TimelineLayout layout(bool isExpanded = true, double verticalScroll = 0) {
        return {std::make_shared<const TimelineRows>(rows()), zoom_, isExpanded, verticalScroll};
    }

    platform::MemorySettingsStore settings_;
    SyncGroup group_ = timelineClip();
    SmartAudioState smartAudio_;
    SmartAudioTerms madeWith_;
    TimelineZoomState zoom_{.viewportWidth = 800, .clipDuration = 30};
};

} // namespace

TEST_F(TimelineRowsTest, MetersShowTheChannelsOfTheRecordingThatAreHeard) {
    const std::size_t channels = rows().channels.size();
    const double starts = ClipSound(group_).offsetSeconds;
    WaveformResult waveform{.binsPerSecond = 10};
    for (std::size_t i = 0; i < channels; ++i) {
        waveform.peaksPerChannel.emplace_back(20, 0.1F * static_cast<float>(i + 1));
        waveform.rmsPerChannel.emplace_back(20, 0.05F);
    }
    const auto peaks = [&](double takeSeconds) {
        std::vector<float> found;
        for (const auto& one : recordedLevels(group_, smartAudio_, waveform, starts + takeSeconds))
            found.push_back(one.peak);
        return found;
    };
    ASSERT_GE(channels, 2U);
    EXPECT_FLOAT_EQ(peaks(1)[1], 0.2F);
    EXPECT_EQ(peaks(-0.5), std::vector<float>(channels)) << "before the recording";
    EXPECT_EQ(peaks(2.5), std::vector<float>(channels)) << "after it";
    smartAudio_.soloMonitorTracks[group_.id] = 1;
    EXPECT_FLOAT_EQ(peaks(1)[0], 0.1F);
    EXPECT_EQ(peaks(1)[1], 0) << "another channel plays alone";
    waveform = {};
    EXPECT_EQ(peaks(1), std::vector<float>(channels)) << "not loaded";
}

TEST_F(TimelineRowsTest, SayWhatTheAnalysisFoundAndWhatWasChosenByHand) {
    EXPECT_EQ(rows().summary, "All tracks active — run Smart Audio for recommendation");
    EXPECT_TRUE(std::ranges::all_of(rows().channels, &TimelineChannel::isActive));
    EXPECT_EQ(rows().channels[1].tooltip(), "T2 Anna\n1 manual range override(s) on this channel");

    // A session stores the choice but not the result.
    group_.manualActiveTracks = {1};
    group_.tracksManuallyEdited = false;
    EXPECT_TRUE(rows().summary.starts_with("An earlier analysis chose")) << rows().summary;
    group_.tracksManuallyEdited = true;
    EXPECT_EQ(rows().summary, "Tracks chosen by hand");
    smartAudio_.results[group_.id] = SmartAudioResult{}; // its card was missing
    EXPECT_TRUE(rows().summary.starts_with("Smart Audio could not read")) << rows().summary;
    EXPECT_FALSE(rows().isAnalysed);
    group_.manualActiveTracks.clear();
    group_.tracksManuallyEdited.reset();

    smartAudio_.results[group_.id] = timelineResult();
    smartAudio_.results[group_.id].detectedCharacter = MaterialCharacter::fastDialog;
    smartAudio_.soloMonitorTracks[group_.id] = 3;
    group_.algorithmExcludedTracks = {1};
    const TimelineRows known = rows();
    EXPECT_EQ(known.summary, "Smart Audio active · Fast Dialog / Comedy · 1s blocks");
    ASSERT_EQ(known.channels.size(), 3U);
    EXPECT_EQ(known.channels[0].tooltip(),
              "T1 Boom\nBoom · iXML: Boom\nAlgorithm picks this channel for 65% of the take");
    EXPECT_EQ(known.channels[2].name, "Track 3");
    EXPECT_EQ(known.channels[2].kindText(), "");
    EXPECT_FALSE(known.channels[0].isUsedByAlgorithm);
    EXPECT_TRUE(known.channels[1].isActive && !known.channels[2].isActive) << "no block plays the third";
    EXPECT_TRUE(known.channels[2].isSolo && !known.channels[0].isSolo);
    EXPECT_TRUE(known.channels[2].isHeard() && !known.channels[1].isHeard()) << "the third plays alone";
    EXPECT_EQ(known.anchorSeconds, 10);
    EXPECT_EQ(known.offsetText(), "+4.000 s · +100f");
    EXPECT_EQ(known.tooltip(known.blocks[3]),
              "T2 Anna + T3 Track 3  ⚠ Multi\n0:20.00 – 0:24.00\nmulti-speaker, no Mix — phase risk\n"
              "Peak -12.3 dB · gain ×1.50");
    EXPECT_EQ(tileOpacity(known.blocks[0]), 0.55);
    EXPECT_EQ(tileOpacity(known.blocks[1]), 1);
    EXPECT_EQ(tileOpacity(known.blocks[2]), 0.08);
    settings_.set(settings::bestChannelMode, BestChannelMode::perClip);
    madeWith_.blockSettings.blockMode = BlockMode::coarse;
    EXPECT_EQ(rows().summary, "Smart Audio chose Track 1 · Coarse · 4s blocks");

    group_.manualActiveTracks = {3};
    EXPECT_TRUE(rows().channels[2].isActive && !rows().channels[1].isActive);
    // Only a recording that is not part of the take has a lane.
    ASSERT_EQ(known.recordings.size(), 1U);
    EXPECT_EQ(known.recordings[0].name, "ZOOM0001.WAV");
    EXPECT_EQ(known.recordings[0].startSeconds, 10);
    EXPECT_EQ(known.laneCount, 1);
}

TEST_F(TimelineRowsTest, FindsWhatLiesUnderAPoint) {
    smartAudio_.results[group_.id] = timelineResult();
    group_.pictureClapAnchorSeconds = 9;
    const TimelineLayout all = layout();
    ASSERT_EQ(all.x(0), 100);
    const auto middle = [&](TimelineLayout::RowKind kind, int index = 0) {
        const auto* row = all.row(kind, index);
        return row->y + row->height / 3;
    };
    const auto strip = [&](int channel) {
        return all.stripRect(*all.row(TimelineLayout::RowKind::channel, channel)).y + 5;
    };
    const double sound = middle(TimelineLayout::RowKind::sound);
    const auto& row = *all.row(TimelineLayout::RowKind::sound);
    EXPECT_NEAR(all.waveformRect(row).y + all.waveformRect(row).height, all.stripRect(row).y, 1e-9);
    const struct {
        const char* name;
        double seconds, y;
        Spot spot;
        int track = 0;
        int index = -1;
    } cases[] = {
        {"the ruler, also before the clip", -3, 5, Spot::ruler},
        {"the picture", 3, middle(TimelineLayout::RowKind::picture), Spot::picture},
        {"beside the picture", -1, middle(TimelineLayout::RowKind::picture), Spot::nothing},
        {"the clap", 9.2, middle(TimelineLayout::RowKind::picture), Spot::clap},
        {"before the sound", 3.9, sound, Spot::nothing},
        {"the sound", 4.1, sound, Spot::waveform},
        {"the anchor", 10.2, sound, Spot::anchor},
        {"a channel", 10.2, middle(TimelineLayout::RowKind::channel, 2), Spot::waveform, 3},
        {"a tile of all channels", 8, all.stripRect(*all.row(TimelineLayout::RowKind::sound)).y + 5,
         Spot::tile, 0, 0},
        {"a strip without a tile", 8, strip(1), Spot::strip, 2},
        {"the left edge of a range", 12.1, strip(1), Spot::rangeStart, 2, 0},
        {"from outside too", 11.8, strip(1), Spot::rangeStart, 2, 0},
        {"its body", 13.5, strip(1), Spot::range, 2, 0},
        {"its right edge", 15.1, strip(1), Spot::rangeEnd, 2, 0},
        {"the same place on another channel", 13.5, strip(0), Spot::strip, 1},
        {"a tile of two tracks, on the second", 21, strip(2), Spot::tile, 3, 3},
        {"another recording", 11, middle(TimelineLayout::RowKind::recordings), Spot::recording, 0, 0},
        {"below everything", 11, all.height() + 1, Spot::nothing},
    };
    for (const auto& one : cases) {
        const TimelineLayout::Hit hit = all.hit(all.x(one.seconds), one.y);
        EXPECT_EQ(hit.spot, one.spot) << one.name;
        EXPECT_EQ(hit.track.value_or(0), one.track) << one.name;
        EXPECT_EQ(hit.index ? static_cast<int>(*hit.index) : -1, one.index) << one.name;
        EXPECT_NEAR(hit.seconds, one.seconds, 1e-9) << one.name;
    }
    // Rows that are scrolled under the ruler cannot be hit there.
    EXPECT_EQ(layout(true, 40).hit(all.x(5), 20).spot, Spot::ruler);
    EXPECT_EQ(layout(false).row(TimelineLayout::RowKind::channel), nullptr);
}

TEST_F(TimelineRowsTest, LaysRulerPicturesAndRangesOverTheClip) {
    const TimelineLayout all = layout();
    const auto ticks = all.ticks(5);
    ASSERT_GE(ticks.size(), 8U);
    const auto zero = std::ranges::find(ticks, "0:00", &TimelineLayout::Tick::label);
    ASSERT_NE(zero, ticks.end());
    EXPECT_EQ(zero->x, 100);
    EXPECT_TRUE(std::ranges::all_of(ticks, &TimelineLayout::Tick::isMajor)) << "frames are too narrow here";

    const auto slots = all.pictureSlots(90);
    ASSERT_EQ(slots.size(), 7U) << "600 points of clip";
    EXPECT_EQ(slots.front().x, 100);
    EXPECT_EQ(slots[2].seconds, 11.25) << "in the middle of its slot";

    const std::vector<double> onsets{0, 1, 1.01, 3, 100};
    EXPECT_EQ(all.onsetPlaces(onsets), (std::vector<double>{180, 200, 240})) << "a column once";

    EXPECT_EQ(all.span(20, 18), (TimelineSpan{18, 20}));
    EXPECT_EQ(all.span(-3, 2), (TimelineSpan{0, 2}));
    EXPECT_EQ(all.span(29, 45), (TimelineSpan{29, 30}));
    EXPECT_FALSE(all.span(3, 3.05) || all.span(-5, -1)) << "too short, outside";

    zoom_.zoomScale = 16; // 320 points a second: a frame has 12.8
    zoom_.scrollOffset = 320 * 10;
    const TimelineLayout near = layout();
    EXPECT_FALSE(near.scrollFollowing(5.5));
    const auto following = near.scrollFollowing(8);
    ASSERT_TRUE(following);
    EXPECT_NEAR(*following, 320 * 13 - 80, 1e-6);
    const auto frames = near.ticks(0.5);
    EXPECT_EQ(std::ranges::count(frames, false, &TimelineLayout::Tick::isMajor), 60)
        << "2.5 s less those at ticks";
    EXPECT_EQ(near.pictureSlots(90).front().x, -70) << "the one that reaches into the view";
}

TEST(WaveformTileTest, ShowsTheShortestPeakAtAnyZoomAndNothingBehindTheEnd) {
    std::vector<float> peaks(16'000, 0.1F), levels(16'000, 0.05F);
    peaks[0] = peaks[5000] = 0.8F;
    for (const auto& [bin, binsPerColumn] :
         {std::pair(0, 1.0), {5000, 0.25}, {5000, 1.0}, {5000, 11.3}, {5000, 40.0}}) {
        WaveformTile tile{
            .peaks = peaks, .rms = levels, .binsPerColumn = binsPerColumn, .height = 40, .gain = 1 / 0.8F};
        const double column = bin / binsPerColumn;
        tile.firstColumn = static_cast<std::int64_t>(column / WaveformTile::width) * WaveformTile::width;
        const auto pixels = drawn(tile, 0, 0xFF204060, 0xFF80A0C0);
        const auto x = static_cast<std::size_t>(column) - static_cast<std::size_t>(tile.firstColumn);
        EXPECT_EQ(pixels[x], 0xFF204060) << binsPerColumn << ": the top row";
        EXPECT_EQ(pixels[20 * WaveformTile::width + x], 0xFF80A0C0) << "the level in the middle";
        EXPECT_EQ(pixels[(x + 20) % WaveformTile::width], 0U) << "quiet columns do not reach it";
        tile.firstColumn = static_cast<std::int64_t>(column) - WaveformTile::width;
        EXPECT_EQ(drawn(tile, 0, ~0U, ~0U)[WaveformTile::width], 0U) << "the column of the next tile";
    }
    WaveformTile behind{
        .peaks = peaks, .rms = levels, .binsPerColumn = 100, .firstColumn = 160, .height = 4, .gain = 1};
    EXPECT_TRUE(
        std::ranges::all_of(drawn(behind, 0, ~0U, ~0U), [](std::uint32_t pixel) { return pixel == 0; }));
}

} // namespace orvane::test
