#include "ControllerTest.h"

#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkReview.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/SmartAudio/LUFSMeter.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformCache.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformReduction.h"
#include "Support/Assets.h"

namespace orvane::test {
namespace {

/// A clip of 20 s at 25 frames a second whose recording has a clap at 3 s and speech from 10 s on.
class TimelineTest : public ControllerTest {
  protected:
    /// Mono, at 8000 Hz.
    MediaAsset recording(std::string_view name, std::string_view start, const std::vector<float>& samples) {
        MediaAsset made = audio(name, start, static_cast<double>(samples.size()) / 8000);
        made.url = FileURL{folder_.write(std::string(name),
                                         WaveMaker().format({.sampleRate = 8000}).samples(samples).bytes())};
        made.channelCount = 1;
        return made;
    }

    TimelineTest() {
        std::vector<float> samples(std::size_t{20} * 8000, 0.001F);
        for (std::size_t i = 24'000; i < 24'400; ++i) samples[i] = i % 2 == 0 ? 0.9F : -0.9F;
        for (std::size_t i = 80'000; i < 88'000; ++i) samples[i] = i % 2 == 0 ? 0.3F : -0.3F;
        const MediaAsset sound = recording("T.wav", "10:00:00:00", samples);
        SyncGroup group = test::clip(video("A.mov", "10:00:00:00", 20), sound);
        id_ = group.id;
        sound_ = sound.url;
        ImportController::Dependencies dependencies;
        dependencies.mainThread = mainThread_;
        dependencies.settings = settings_;
        dependencies.clock = mainThread_->clock();
        dependencies.waveformCache = cache_;
        controller_ = ImportController::create(std::move(dependencies));
        controller_->openStoredWork({{}, {}, SyncGroupList({group})});
    }
    const SyncGroup& group() const { return *controller_->work().syncGroups().find(id_); }

    UUID id_;
    FileURL sound_;
    std::shared_ptr<WaveformCache> cache_ = std::make_shared<WaveformCache>(work_.path("waveforms"));
};

TEST_F(TimelineTest, theClapBecomesTheAnchorUnlessTheEditorWasFaster) {
    TimelineController& timeline = controller_->timeline();
    const platform::Task overtaken = timeline.autoDetectAudioAnchorIfMissing(id_);
    timeline.setAnchor(id_, 7);
    finish(overtaken);
    EXPECT_EQ(group().audioAnchorOffsetInAudioSeconds, 7);
    controller_->undo();
    const platform::Task ofLocked = timeline.autoDetectAudioAnchorIfMissing(id_);
    controller_->clips().toggleLocked(id_);
    finish(ofLocked);
    EXPECT_FALSE(group().audioAnchorOffsetInAudioSeconds);
    controller_->clips().toggleLocked(id_);
    controller_->withUndo(undoSteps::setManualClipName,
                          [&] { controller_->clips().setManualClipName(id_, "Hero"); });
    finish(timeline.autoDetectAudioAnchorIfMissing(id_));
    EXPECT_EQ(group().audioAnchorOffsetInAudioSeconds, 3);
    controller_->undo();
    EXPECT_FALSE(controller_->work().undoState().canUndo) << "it was no step";
    EXPECT_EQ(group().manualClipName, std::nullopt);
    EXPECT_EQ(group().audioAnchorOffsetInAudioSeconds, 3) << "taking back the name leaves the clap";
}

TEST_F(TimelineTest, theClapOfASplitTakeIsWhereTheClipShowsIt) {
    std::vector<float> first(std::size_t{8} * 8000, 0.001F);
    first[16'000] = 1;    // 2 s before the clip
    first[56'000] = 0.9F; // 3 s into it
    SyncGroup split =
        test::clip(video("S.mov", "10:00:00:00", 20),
                   recording("T-2.wav", "10:00:04:00", std::vector<float>(std::size_t{16} * 8000)));
    split.audioMatches.front().syncOffsetSeconds = 4;
    split.audioMatches.emplace_back(recording("T-1.wav", "09:59:56:00", first), -4, 4);
    controller_->openStoredWork({{}, {}, SyncGroupList({split})});
    const auto now = [&]() -> const SyncGroup& { return *controller_->work().syncGroups().find(split.id); };
    finish(controller_->timeline().autoDetectAudioAnchorIfMissing(split.id));
    EXPECT_EQ(now().audioAnchorOffsetInAudioSeconds, -1); // in time of the file that begins at 4 s
    EXPECT_EQ(now().resolvedClapPointSeconds(), 3);
    EXPECT_EQ(controller_->timeline().setAnchor(split.id, -99), -8);
    EXPECT_EQ(controller_->timeline().setAnchor(split.id, 99), 16);
}

TEST_F(TimelineTest, aClipWithoutARateCountsAsItsDocumentDoes) {
    SyncGroup other = group();
    other.video.frameRate = 0.4; // too low for counting frames
    SyncGroup voter = test::clip(video("V.mov", "11:00:00:00", 20, 30), audio("V.wav", "11:00:00:00", 20));
    voter.video.projectFrameRate = 30;
    controller_->openStoredWork({{}, {}, SyncGroupList({other, voter})});
    controller_->timeline().nudgeByFrames(id_, 3);
    EXPECT_NEAR(group().manualAudioOffsetSeconds, 0.1, 1e-12);
    EXPECT_EQ(reviewLines(WorkSnapshot(*controller_)).front()[ReviewColumn::offsetFrames], "3");
    settings_->set(settings::targetFrameRate, 50.0);
    EXPECT_EQ(controller_->timeline().timelineFrameRate(group()), 50);
}

TEST_F(TimelineTest, ANudgeIsAFrameOfWhatIsExported) {
    SyncGroup other = group();
    other.video.projectFrameRate = 23.976; // from its timecode track; the pictures have 25
    controller_->openStoredWork({{}, {}, SyncGroupList({other})});
    for (int i = 0; i < 12; ++i) controller_->timeline().nudgeByFrames(id_, 1);
    EXPECT_NEAR(group().manualAudioOffsetSeconds, 12 * 1001.0 / 24000, 1e-9);
}

TEST_F(TimelineTest, aDragSnapsTheAnchorToAnOnset) {
    TimelineController& timeline = controller_->timeline();
    timeline.setAnchor(id_, 9);
    timeline.show(id_);
    const double pointsPerSecond = timeline.zoom().pixelsPerSecond();
    finish(timeline.dragAudio(id_, 0.9 * pointsPerSecond, {.shift = true}));
    EXPECT_NEAR(group().manualAudioOffsetSeconds, 1, 0.002); // the onset at 10 s, exact to one bin
    // The same drag in steps, back to its beginning: no remainder is left.
    for (const double seconds : {0.3, 1.7, -0.4, 0.0})
        timeline.handleContainerDrag(seconds * pointsPerSecond, {});
    EXPECT_NEAR(group().manualAudioOffsetSeconds, 1, 0.002);
    EXPECT_EQ(timeline.liveDragSeconds(), 0);
    EXPECT_THROW(timeline.handleContainerDrag(1e9 * pointsPerSecond, {}), OutOfRange);
    timeline.handleContainerDrag(0, {});
    EXPECT_NEAR(group().manualAudioOffsetSeconds, 1, 0.002);
}

TEST_F(TimelineTest, anAnalysisLeavesTheWaveformAndTheLoudness) {
    finish(controller_->smartAudio().runSmartAudioForGroup(id_, false));
    EXPECT_DOUBLE_EQ(group().measuredLUFS.value_or(0), LUFSMeter::measureIntegratedLUFS(sound_).value_or(1));
    const TakeSound take{group(), takeOf(group(), assumedChannels)};
    const auto kept = cache_->find(*WaveformCache::placeOf(take, WaveformReduction::reviewBins));
    ASSERT_TRUE(kept);
    EXPECT_EQ(*kept, reducedWaveform(take, WaveformReduction::reviewBins, nullptr, 1));
    controller_->timeline().show(id_);
    finish(controller_->timeline().loadWaveform());
    EXPECT_EQ(controller_->timeline().waveform()->waveform().onsetMarkers.size(), 2U);
}

} // namespace
} // namespace orvane::test
