#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncApp/SmartAudioDriverTest.h"
#include "OrvaneSyncCore/Services/SmartAudio/AnalysisCache.h"
#include "OrvaneSyncCore/Services/Stems/BanditStemSeparator.h"
#include "OrvaneSyncCore/Services/Stems/StemCache.h"
#include "OrvaneSyncCore/Utilities/Base64.h"
#include "Support/StemModel.h"

#include <filesystem>

namespace orvane {
namespace {

using test::SmartAudioDriverTest;

TEST_F(SmartAudioDriverTest, editsForgetOrRenewWhatTheyMakeStale) {
    analyseAll();
    const UUID a = clip("A001")->id, b = clip("B001")->id;
    controller_->tracks().addBlockOverride(a, 2, 4, 3);
    settle();
    EXPECT_EQ(blockTracks("A001"), (Tracks{2, 3})) << "heard again, with the range laid over";
    controller_->tracks().removeBlockOverride(a, clip("A001")->manualBlockOverrides.at(0).id);
    settle();
    EXPECT_EQ(blockTracks("A001"), Tracks{2});

    controller_->withUndo(undoSteps::soloTrackActive, [&] { controller_->tracks().soloTrackActive(a, 5); });
    settle();
    EXPECT_EQ(controller_->work().undoState().undoActionName, "Toggle Audio Track");
    std::vector<SmartAudioProgress> steps;
    auto subscription = controller_->onChange([&](ImportField field) {
        if (field == ImportField::smartAudioProgress)
            steps.push_back(controller_->smartAudio().state().progress);
    });
    controller_->clips().resetAllClipsToAutoSync();
    settle();
    subscription.reset();
    EXPECT_EQ(active("A001"), Tracks{2}) << "the choice by hand is gone, and the result is back";
    const auto second = std::ranges::find(steps, 2, &SmartAudioProgress::current);
    ASSERT_NE(second, steps.end());
    EXPECT_EQ(second->fraction, 1) << "the recording of both cameras is read once";
    EXPECT_TRUE(clip("B001")->measuredLUFS.has_value());
    EXPECT_EQ(clip("A001")->measuredLUFS, clip("B001")->measuredLUFS);

    controller_->clips().resetClipToAutoSync(a);
    EXPECT_EQ(result("A001"), nullptr);
    EXPECT_NE(result("B001"), nullptr);
    controller_->clips().adjustAudioOffset(b, 1);
    EXPECT_NE(result("B001"), nullptr) << "a nudge changes nothing of what is heard";
    controller_->undo();
    EXPECT_TRUE(controller_->smartAudio().state().results.empty());
    EXPECT_EQ(active("A001"), Tracks{2}) << "before the solo";
    EXPECT_EQ(clip("B001")->manualAudioOffsetSeconds, 0);
}

TEST_F(SmartAudioDriverTest, takingBackKeepsTheResultsOfWhatIsAskedAsBefore) {
    const UUID a = clip("A001")->id, b = clip("B001")->id;
    controller_->withUndo(undoSteps::toggleApproved, [&] { controller_->clips().toggleApproved(a); });
    controller_->withUndo(undoSteps::toggleAlgorithmInclusion,
                          [&] { controller_->tracks().toggleAlgorithmInclusion(b, 2); });
    analyseAll();
    controller_->withUndo(undoSteps::addBlockOverride,
                          [&] { controller_->tracks().addBlockOverride(a, 2, 4, 3); });
    settle();
    EXPECT_EQ(blockTracks("A001"), (Tracks{2, 3}));
    controller_->undo();
    EXPECT_TRUE(controller_->smartAudio().state().results.empty());
    mainThread_->runPosted();
    EXPECT_EQ(blockTracks("A001"), Tracks{2}) << "laid without the range";
    controller_->undo();
    controller_->undo();
    mainThread_->runPosted();
    EXPECT_EQ(result("B001"), nullptr) << "heard without the track that is back";
    EXPECT_NE(result("A001"), nullptr);
    EXPECT_EQ(active("A001"), Tracks{2}) << "which the clips of before the analysis had not";
}

TEST_F(SmartAudioDriverTest, resultsComeBackWithTheirClipsAndTellWhatTheyWereMadeWith) {
    analyseAll();
    const std::size_t all = controller_->smartAudio().state().results.size();
    ASSERT_GT(all, 1U);
    SyncGroupList clips = controller_->work().syncGroups();
    controller_->openStoredWork({});
    EXPECT_TRUE(controller_->smartAudio().state().results.empty());
    const UUID changed = clips.front().id;
    // As another program would change it.
    clips.update(changed, [](SyncGroup& group) { group.algorithmExcludedTracks = {2}; });
    controller_->openStoredWork({{}, {}, clips});
    EXPECT_EQ(controller_->smartAudio().state().results.size(), all - 1);
    EXPECT_FALSE(controller_->smartAudio().state().results.contains(changed));

    EXPECT_EQ(controller_->smartAudio().outdatedCount(), 0U);
    settings_->setByName("smartAudio.blockMode", "coarse");
    EXPECT_EQ(controller_->smartAudio().outdatedCount(), all - 1);
    analyseAll();
    EXPECT_EQ(controller_->smartAudio().outdatedCount(), 0U);
    settings_->setByName("smartAudio.blockMode", "fine");
    analyseAll(false, SmartAudioMode::off);
    EXPECT_EQ(controller_->smartAudio().outdatedCount(), 0U) << "what has no result";
}

TEST_F(SmartAudioDriverTest, storedResultsComeBackAfterAStart) {
    const auto stores = std::make_shared<AnalysisCache>(work_.path("analyses"));
    const auto restart = [&](SyncGroupList clips) {
        controller_ = make(nullptr, nullptr, stores);
        controller_->openStoredWork({folder("shoot"), {}, std::move(clips)});
        finish(controller_->smartAudio().recalled());
    };
    restart(controller_->work().syncGroups());
    EXPECT_TRUE(controller_->smartAudio().state().results.empty()) << "nothing was analysed";
    analyseAll();
    const UUID a = clip("A001")->id, b = clip("B001")->id;
    controller_->tracks().addBlockOverride(a, 2, 4, 3);
    settle();
    const SmartAudioResult before = *result("A001");
    const SyncGroupList clips = controller_->work().syncGroups();

    restart(clips);
    ASSERT_NE(result("A001"), nullptr);
    EXPECT_EQ(*result("A001"), before) << "with the editor's range";
    EXPECT_NE(result("B001"), nullptr);
    EXPECT_EQ(controller_->smartAudio().outdatedCount(), 0U);
    EXPECT_TRUE(controller_->work().syncGroups().changesSince(clips).empty()) << "no clip is changed";

    const struct {
        const char* what;
        std::function<void(SyncGroup&)> change;
    } others[] = {
        {"was never analysed", [](SyncGroup& own) { own.tracksManuallyEdited.reset(); }},
        {"other tracks were chosen", [](SyncGroup& own) { own.manualActiveTracks = {1}; }},
        {"other tracks may be chosen", [](SyncGroup& own) { own.algorithmExcludedTracks = {3}; }},
    };
    for (const auto& test : others) {
        SyncGroupList changed = clips;
        changed.update(b, test.change);
        restart(changed);
        EXPECT_EQ(result("B001"), nullptr) << test.what;
        EXPECT_NE(result("A001"), nullptr) << test.what;
    }

    // A recording that has changed since is analysed again.
    writeRecording("T01.WAV", std::uint64_t{tenOClock} * sampleRate, {1, 2, 3, 4, 5, 6}, 0,
                   (seconds + 1) * sampleRate);
    restart(clips);
    EXPECT_EQ(result("A001"), nullptr);
}

TEST_F(SmartAudioDriverTest, aScanAfterWhichTheDecisionsAreKeptKeepsTheResults) {
    analyseAll();
    controller_->withUndo(undoSteps::toggleLocked,
                          [&] { controller_->clips().toggleLocked(clip("B001")->id); });
    const WorkFiles earlier = controller_->recordings().workFiles();
    scan(folder("shoot"), std::nullopt);
    EXPECT_EQ(result("A001"), nullptr);
    finish(controller_->recordings().keepDecisions(earlier));
    EXPECT_NE(result("A001"), nullptr);
    EXPECT_NE(result("B001"), nullptr);
    EXPECT_EQ(active("A001"), Tracks{2});
}

TEST_F(SmartAudioDriverTest, outdatedResultsAreMadeAgainEachInItsMode) {
    analyseAll();
    settings_->setByName("smartAudioMode", "studio");
    analyse(clip("B001")->id);
    settings_->setByName("smartAudio.blockMode", "coarse");
    ASSERT_EQ(controller_->smartAudio().outdatedCount(), 2U);
    finish(controller_->smartAudio().reanalyseOutdated());
    EXPECT_EQ(controller_->smartAudio().outdatedCount(), 0U);
    EXPECT_EQ(controller_->smartAudio().termsOf(clip("A001")->id)->mode, SmartAudioMode::standard);
    EXPECT_EQ(controller_->smartAudio().termsOf(clip("B001")->id)->mode, SmartAudioMode::studio);
}

TEST_F(SmartAudioDriverTest, blocksAreMeasuredOnTheDialogueOfAModel) {
    const std::string runtime = test::runtimeFolder(folder_.path());
    if (!platform::ModelRuntime::find({&runtime, 1}))
        GTEST_SKIP() << "needs ONNX Runtime: Scripts/install-dependencies.sh models";
    analyseAll();
    const double before = result("A001")->blocks.front().peakDB;
    const auto separator = std::make_shared<BanditStemSeparator>(
        work_.write("BanditV2.onnx", *base64::decoded(test::passThroughModel)), std::vector{runtime});
    separator->prepare();
    const auto store = std::make_shared<RenderedAudioStore>(work_.path("caches"), settings_);
    controller_ = make(nullptr, std::make_shared<StemCache>(separator, store));
    scan(folder("shoot"), std::nullopt);
    const platform::Task analysis =
        controller_->smartAudio().runSmartAudioAnalysis(SmartAudioMode::standard, false);
    ASSERT_TRUE(mainThread_->waitUntil([&] { return analysis.isDone(); }));
    ASSERT_TRUE(result("A001")->stemMetrics);
    // The model gets the mean of six channels, and only one has speech.
    EXPECT_NEAR(result("A001")->blocks.front().peakDB, before - 20 * std::log10(6.0), 0.5);
    EXPECT_EQ(blockTracks("A001"), Tracks{2});
}

} // namespace
} // namespace orvane
