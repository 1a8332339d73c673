#include "ControllerTest.h"

#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Services/SmartAudio/LUFSMeter.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformCache.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformReduction.h"
#include "Support/Assets.h"

namespace orvane::test {
namespace {

/// A clip of 20 s at 25 frames a second whose recording claps at 3 s and speaks from 10 s on.
class TimelineTest : public ControllerTest {
  protected:
    TimelineTest() {
        std::vector<float> samples(std::size_t{20} * 8000, 0.001F);
        for (std::size_t i = 24'000; i < 24'400; ++i) samples[i] = i % 2 == 0 ? 0.9F : -0.9F;
        for (std::size_t i = 80'000; i < 88'000; ++i) samples[i] = i % 2 == 0 ? 0.3F : -0.3F;
        MediaAsset recording = audio("T.wav", "10:00:00:00", 20);
        recording.url = FileURL{
            folder_.write("T.wav", WaveMaker().format({.sampleRate = 8000}).samples(samples).bytes())};
        recording.channelCount = 1;
        SyncGroup group = test::clip(video("A.mov", "10:00:00:00", 20), recording);
        id_ = group.id;
        sound_ = recording.url;
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
    finish(timeline.autoDetectAudioAnchorIfMissing(id_));
    EXPECT_EQ(group().audioAnchorOffsetInAudioSeconds, 3);
    EXPECT_FALSE(controller_->work().undoState().canUndo);
}

TEST_F(TimelineTest, ANudgeIsAFrameOfWhatIsExported) {
    SyncGroup other = group();
    other.video.projectFrameRate = 23.976; // by its timecode track; the file's pictures count 25
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
    EXPECT_NEAR(group().manualAudioOffsetSeconds, 1, 0.002); // the onset at 10 s, to a bin
    // The same step by step, and back to where it began: nothing is left over.
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
