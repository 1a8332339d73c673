#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncApp/SmartAudioDriverTest.h"
#include "OrvaneSyncCore/Services/SmartAudio/LUFSMeter.h"

#include <filesystem>

namespace orvane {
namespace {

namespace fs = std::filesystem;
using test::SmartAudioDriverTest;

TEST_F(SmartAudioDriverTest, hearsEverySettledClipWithSound) {
    ASSERT_EQ(clip("A001")->matchStatus, MatchStatus::matched());
    ASSERT_EQ(clip("D001")->matchStatus, MatchStatus::ambiguous(2));
    std::vector<SmartAudioProgress> steps;
    bool wasAnalyzing = false;
    const auto subscription = controller_->onChange([&](ImportField field) {
        if (field != ImportField::smartAudioProgress) return;
        wasAnalyzing = wasAnalyzing || controller_->smartAudio().state().isAnalyzing;
        if (controller_->smartAudio().state().progress.total > 0)
            steps.push_back(controller_->smartAudio().state().progress);
    });
    analyseAll();
    EXPECT_EQ(controller_->smartAudio().state().results.size(), 2U);
    ASSERT_NE(result("A001"), nullptr);
    ASSERT_NE(result("B001"), nullptr);
    EXPECT_EQ(*result("A001"), *result("B001")); // two cameras with one recording
    EXPECT_EQ(blockTracks("A001"), Tracks{2});
    for (const char* name : {"A001", "B001"}) {
        EXPECT_EQ(active(name), Tracks{2});
        EXPECT_EQ(clip(name)->tracksManuallyEdited, false);
        EXPECT_FALSE(clip(name)->measuredLUFS); // measured only if one clip is requested
    }
    EXPECT_TRUE(active("D001").empty());
    EXPECT_TRUE(wasAnalyzing);
    EXPECT_FALSE(controller_->smartAudio().state().isAnalyzing);
    ASSERT_GE(steps.size(), 2U); // the first and the last are always shown
    EXPECT_EQ(steps.front(), (SmartAudioProgress{"Listening to T01.WAV", 1, 2, 0}));
    EXPECT_EQ(steps.back().current, 2);
    EXPECT_EQ(steps.back().fraction, 1); // the second clip needs no reading
    for (const auto& step : steps) EXPECT_TRUE(step.fraction >= 0 && step.fraction <= 1);
    EXPECT_EQ(controller_->smartAudio().state().progress, SmartAudioProgress{});

    const auto document =
        controller_->exporting().exportFCPXML(controller_->exporting().exportSettings({})).fcpxmlString;
    EXPECT_NE(document.find("role=\"dialogue.Boom\" active=\"0\""), std::string::npos) << document;
    EXPECT_EQ(document.find("role=\"dialogue.Lav Anna\" active"), std::string::npos);
    EXPECT_NE(document.find("<adjust-loudness amount=\"30\""), std::string::npos);
    EXPECT_EQ(document.find("<adjust-volume"), std::string::npos);

    analyseAll(true, SmartAudioMode::off);
    EXPECT_TRUE(controller_->smartAudio().state().results.empty());
    EXPECT_EQ(active("A001"), Tracks{2}); // the choice is kept
}

TEST_F(SmartAudioDriverTest, aRequestForOneClipAlwaysHearsItAndMeasuresItsLoudness) {
    settings_->setByName("smartAudioMode", "off");
    analyse(clip("D001")->id);
    ASSERT_NE(result("D001"), nullptr);
    EXPECT_EQ(result("D001")->tracks.at(1).loudnessAmount, 0.3F); // as in the mode Standard
    EXPECT_EQ(active("D001"), Tracks{2});

    settings_->setByName("smartAudioMode", " Cinematic ");
    settings_->setByName("smartAudio.targetLUFS", -23);
    settings_->setByName("smartAudio.preset", "Cinematic");
    analyse(clip("A001")->id);
    EXPECT_EQ(result("A001")->tracks.at(1).loudnessAmount, 0.6F);
    const auto measured = LUFSMeter::measureIntegratedLUFS(clip("A001")->audioMatches.at(0).audio->url);
    ASSERT_TRUE(measured);
    EXPECT_EQ(clip("A001")->measuredLUFS, measured);
    EXPECT_NEAR(clip("A001")->masterGainDB, -23 - (*measured - 4), 1e-9);
    const auto document = controller_->exporting().exportSingleClip(
        clip("A001")->id, controller_->exporting().exportSettings({}));
    EXPECT_NE(document.fcpxmlString.find("<adjust-volume amount="), std::string::npos);

    analyse(UUID::random());
    analyse(clip("C_MOS")->id);
    EXPECT_EQ(controller_->smartAudio().state().results.size(), 2U);
}

TEST_F(SmartAudioDriverTest, measuresTheLoudnessOfAllClips) {
    makeClip("S001", 1800);
    test::WaveMaker()
        .format({.sampleRate = sampleRate, .samples = test::SampleFormat::pcm16})
        .bext({.date = "2026-11-20", .timeReference = std::uint64_t{tenOClock + 1800} * sampleRate})
        .silence(seconds * sampleRate)
        .writeTo(folder_.write("shoot/S01.WAV", ""));
    scan(folder("shoot"), std::nullopt);
    controller_->tracks().setMasterGain(clip("B001")->id, 3, false);
    const auto measuring = controller_->smartAudio().measureLoudness();
    EXPECT_EQ(controller_->smartAudio().state().progress.phase, "Measuring the loudness of T01.WAV");
    finish(measuring);
    const double lufs = clip("A001")->measuredLUFS.value_or(0);
    EXPECT_EQ(clip("A001")->measuredLUFS,
              LUFSMeter::measureIntegratedLUFS(clip("A001")->audioMatches.at(0).audio->url));
    EXPECT_NEAR(clip("A001")->masterGainDB, -27 - (lufs - 2.25), 1e-9);
    EXPECT_EQ(clip("B001")->measuredLUFS, lufs);
    EXPECT_EQ(clip("B001")->masterGainDB, 3) << "set by hand";
    EXPECT_EQ(clip("S001")->masterGainDB, 0) << "nothing to raise";
    EXPECT_FALSE(clip("D001")->measuredLUFS) << "not settled";
    EXPECT_TRUE(controller_->smartAudio().state().results.empty());
    const auto warnings = smartAudioWarnings(WorkSnapshot(*controller_));
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_TRUE(warnings[0].starts_with("no loudness could be measured for 'S001.mov': ")) << warnings[0];
}

TEST_F(SmartAudioDriverTest, leavesAClipAloneWhoseChannelsAreAllExcluded) {
    analyseAll();
    const UUID a = clip("A001")->id;
    controller_->tracks().soloAlgorithmInclusion(a, 6);
    settle();
    finish(controller_->tracks().toggleAlgorithmInclusion(a, 6));
    EXPECT_EQ(result("A001"), nullptr);
    const Tracks before = active("A001");
    EXPECT_FALSE(before.empty());
    analyseAll(true);
    EXPECT_EQ(result("A001"), nullptr);
    EXPECT_EQ(active("A001"), before);
    EXPECT_NE(result("B001"), nullptr) << "another camera of the recording";
    const auto warnings = smartAudioWarnings(WorkSnapshot(*controller_));
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_TRUE(warnings[0].starts_with("Smart Audio left out A001.mov: ")) << warnings[0];
    settings_->setByName("smartAudio.blockMode", "coarse");
    EXPECT_FALSE(controller_->smartAudio().isOutdated(a)) << "it has no result";
    EXPECT_EQ(controller_->smartAudio().outdatedCount(), 1U);
    settings_->setByName("smartAudio.blockMode", nullptr);

    finish(controller_->tracks().toggleAlgorithmInclusion(a, 2));
    ASSERT_NE(result("A001"), nullptr) << "heard again once there is a channel";
    EXPECT_EQ(blockTracks("A001"), Tracks{2});
    EXPECT_TRUE(smartAudioWarnings(WorkSnapshot(*controller_)).empty());
}

/// The same sound as one file, and as one file for each channel, each in two parts, with a copy and a second
/// recorder.
TEST_F(SmartAudioDriverTest, hearsATakeInSeveralFilesAsOneRecording) {
    const std::uint64_t start = std::uint64_t{tenOClock + 1800} * sampleRate;
    constexpr std::uint32_t end = seconds * sampleRate, cut = end / 2 - 321;
    makeClip("P001", 3600);
    makeRecording("poly.WAV", 3600, 3);
    makeClip("M001", 1800);
    for (const int track : {3, 2, 1})
        for (const char* card : {"A/", "B/"}) {
            const std::string name = card + std::string("M_") + std::to_string(track);
            writeRecording(name + "-001.WAV", start, {track}, 0, cut);
            writeRecording(name + "-002.WAV", start, {track}, cut, end);
        }
    writeRecording("other.WAV", start, {2, 2}, 0, end);
    scan(folder("shoot"), std::nullopt);
    ASSERT_EQ(clip("M001")->audioMatches.size(), 13U);
    const UUID id = clip("M001")->id;
    const auto& matches = clip("M001")->audioMatches;
    const auto second = std::ranges::find(matches, "other.WAV",
                                          [](const AudioMatch& match) { return match.audio->filename; });
    EXPECT_NE(second, matches.begin()) << "the parts cover as much together";
    controller_->recordings().removeAudioMatch(id, second->id);  // the editor removes one
    EXPECT_EQ(clip("M001")->matchStatus, MatchStatus::manual()); // one recording is left
    analyse(id);
    analyse(clip("P001")->id);
    ASSERT_NE(result("M001"), nullptr);
    EXPECT_EQ(*result("M001"), *result("P001"));
    EXPECT_EQ(active("M001"), Tracks{2});
    EXPECT_EQ(clip("M001")->measuredLUFS, clip("P001")->measuredLUFS);

    finish(controller_->tracks().toggleAlgorithmInclusion(id, 2)); // by its running number
    EXPECT_FALSE(blockTracks("M001").contains(2));
    const std::string& path = clip("M001")->primaryAudio()->url.path;
    std::filesystem::remove(path.substr(0, path.rfind('/')) + "/M_3-002.WAV");
    finish(controller_->tracks().toggleAlgorithmInclusion(id, 2));
    ASSERT_EQ(result("M001")->incompleteFiles.size(), 1U);
    EXPECT_EQ(result("M001")->incompleteFiles.front().filename, "M_3-002.WAV");
    EXPECT_EQ(blockTracks("M001"), Tracks{2});
}

TEST_F(SmartAudioDriverTest, keepsTheEditorsHandUnlessTold) {
    analyseAll();
    const auto check = [&](const char* rule, bool byHand, bool force, bool isExcluded,
                           const Tracks& expectedActive, bool isByHand) {
        SCOPED_TRACE(rule);
        const UUID id = clip("A001")->id;
        if (clip("A001")->algorithmExcludedTracks.contains(2))
            controller_->tracks().toggleAlgorithmInclusion(id, 2);
        settle();
        analyseAll(true);
        if (byHand) {
            controller_->tracks().soloTrackActive(id, 1);
            controller_->tracks().toggleTrackActive(id, 3);
        }
        if (isExcluded) controller_->tracks().toggleAlgorithmInclusion(id, 2);
        settle();
        if (force) analyse(id, true);
        EXPECT_EQ(active("A001"), expectedActive);
        EXPECT_EQ(clip("A001")->hasManualTrackEdits(), isByHand);
        EXPECT_EQ(blockTracks("A001").contains(2), !isExcluded);
    };
    check("the algorithm's own choice follows its result", false, false, true, {1}, false);
    check("a choice by hand stays while the result changes", true, false, true, {1, 3}, true);
    check("and goes when told to", true, true, false, {2}, false);
    // A recording that can no longer be read has no blocks, and the choice is kept.
    std::filesystem::remove(folder_.path("shoot/T01.WAV"));
    controller_->tracks().soloTrackActive(clip("A001")->id, 3);
    settle();
    analyse(clip("A001")->id, true);
    EXPECT_EQ(*result("A001"), SmartAudioResult{});
    EXPECT_EQ(active("A001"), Tracks{3});
    EXPECT_TRUE(clip("A001")->hasManualTrackEdits());
    EXPECT_EQ(clip("A001")->measuredLUFS, -70);
}

TEST_F(SmartAudioDriverTest, togglingStartsFromWhatIsHeard) {
    controller_->tracks().toggleTrackActive(clip("A001")->id, 2); // without a result: every channel is active
    EXPECT_EQ(active("A001"), (Tracks{1, 3, 4, 5, 6}));
    EXPECT_EQ(result("A001"), nullptr); // a clip that was not analysed is not analysed by this
    controller_->tracks().toggleTrackActive(clip("D001")->id, 9); // both recordings count
    EXPECT_EQ(active("D001"), (Tracks{1, 2, 3, 4, 5, 6, 9}));
    controller_->tracks().toggleTrackActive(clip("C_MOS")->id, 1);
    EXPECT_TRUE(active("C_MOS").empty());
    controller_->tracks().soloAlgorithmInclusion(clip("C_MOS")->id, 1);
    EXPECT_TRUE(clip("C_MOS")->algorithmExcludedTracks.empty());
    controller_->tracks().soloAlgorithmInclusion(clip("B001")->id, 4);
    EXPECT_EQ(clip("B001")->algorithmExcludedTracks, (Tracks{1, 2, 3, 5, 6}));
    controller_->tracks().toggleTrackActive(UUID::random(), 1);
    controller_->tracks().soloAlgorithmInclusion(UUID::random(), 1);

    analyseAll(true);
    EXPECT_EQ(active("B001"), Tracks{4}); // alone, although it has no speech
    controller_->tracks().toggleTrackActive(clip("A001")->id, 2);
    settle();
    EXPECT_TRUE(active("A001").empty());
    controller_->tracks().toggleTrackActive(clip("A001")->id, 3); // the blocks are still on track 2
    settle();
    EXPECT_EQ(active("A001"), (Tracks{2, 3}));
}

TEST_F(SmartAudioDriverTest, startsByItselfOnlyWhereTheSettingWasWritten) {
    const auto check = [&](const char* stored, bool isOn, std::size_t results) {
        if (stored != nullptr) settings_->setByName("smartAudioMode", stored);
        controller_->smartAudio().setAnalysesAfterScan(isOn);
        finish(controller_->scan().startScan());
        finish(controller_->smartAudio().waitForAnalysisAfterScan());
        EXPECT_EQ(controller_->smartAudio().state().results.size(), results) << (stored ? stored : "");
    };
    check(nullptr, true, 0);
    check("off", true, 0);
    check("loud", true, 0);
    check("studio", false, 0);
    check("studio", true, 2);
    EXPECT_EQ(result("A001")->tracks.at(1).loudnessAmount, 0.5F);
    finish(controller_->scan().startScan()); // other clips: the old results are removed
    settle();
    EXPECT_EQ(controller_->smartAudio().state().results.size(), 2U);
    EXPECT_NE(result("A001"), nullptr);
}

TEST_F(SmartAudioDriverTest, passesOverWhatHasGoneWhileItListened) {
    mainThread_->advance(platform::progressInterval);
    const auto all = controller_->smartAudio().runSmartAudioAnalysis(SmartAudioMode::standard, false);
    const auto one = controller_->smartAudio().runSmartAudioForGroup(clip("D001")->id, false);
    controller_->reset();
    EXPECT_TRUE(controller_->smartAudio().state().isAnalyzing);
    finish(all);
    finish(one);
    EXPECT_TRUE(controller_->smartAudio().state().results.empty());
    EXPECT_FALSE(controller_->smartAudio().state().isAnalyzing);

    scan(folder("shoot"), std::nullopt);
    const auto abandoned = controller_->smartAudio().runSmartAudioForGroup(clip("A001")->id, false);
    const std::weak_ptr<ImportController> watch = controller_;
    controller_.reset();
    EXPECT_TRUE(watch.expired());
    finish(abandoned);
}

TEST_F(SmartAudioDriverTest, aResultAnswersWhatTheClipIsWhenItComes) {
    const auto check = [&](const char* change, const std::function<void(const UUID&)>& meanwhile,
                           bool isHeard, const Tracks& expectedActive) {
        for (const bool wasKnown : {false, true}) {
            SCOPED_TRACE(std::string(change) + (wasKnown ? ", known before" : ""));
            finish(controller_->scan().startScan());
            const UUID id = clip("A001")->id;
            if (wasKnown) analyse(id);
            controller_->withUndo(undoSteps::toggleTrackActive,
                                  [&] { controller_->clips().toggleApproved(id); });
            if (!wasKnown) settings_->setByName("smartAudioMode", "standard");
            const auto listening = controller_->smartAudio().runSmartAudioForGroup(id, false);
            meanwhile(id);
            finish(listening);
            settle();
            EXPECT_EQ(result("A001") != nullptr, isHeard);
            const bool isUntouched = !wasKnown && !isHeard;
            EXPECT_EQ(active("A001"), isUntouched ? Tracks{} : expectedActive);
            EXPECT_EQ(clip("A001")->measuredLUFS.has_value(), isHeard || wasKnown);
            settings_->setByName("smartAudioMode", nullptr);
        }
    };
    check("nothing", [](const UUID&) {}, true, {2});
    check("undone", [&](const UUID&) { controller_->undo(); }, true, {2});
    check("the channel taken from the algorithm, and undone",
          [&](const UUID& id) {
              controller_->withUndo(undoSteps::toggleAlgorithmInclusion,
                                    [&] { controller_->tracks().toggleAlgorithmInclusion(id, 2); });
              controller_->undo();
          },
          true, {2});
    check("put back to auto", [&](const UUID& id) { controller_->clips().resetClipToAutoSync(id); }, false,
          {});
    check("its recording taken away",
          [&](const UUID& id) {
              controller_->recordings().removeAudioMatch(id, clip("A001")->audioMatches.at(0).id);
          },
          false, {2});
    check("the channel taken from the algorithm",
          [&](const UUID& id) { controller_->tracks().toggleAlgorithmInclusion(id, 2); }, true, {1});
    check("and given back",
          [&](const UUID& id) {
              controller_->tracks().toggleAlgorithmInclusion(id, 2);
              controller_->tracks().toggleAlgorithmInclusion(id, 2);
          },
          true, {2});
    check("a range by hand", [&](const UUID& id) { controller_->tracks().addBlockOverride(id, 2, 4, 3); },
          true, {2, 3});
}

TEST_F(SmartAudioDriverTest, aRangeByHandKeepsItsPlaceInThePicture) {
    const UUID a = clip("A001")->id;
    analyse(a);
    controller_->tracks().addBlockOverride(a, 2, 4, 3);
    settle();
    const auto byHand = [&] {
        std::string text; // in tenths of a second of the recording
        for (const BlockDecision& block : result("A001")->blocks)
            if (block.activeTrack == 3)
                text += std::to_string(std::lround(10 * block.startSeconds)) + "-" +
                        std::to_string(std::lround(10 * block.endSeconds));
        return text;
    };
    EXPECT_EQ(byHand(), "20-40");
    const std::pair<double, const char*> nudges[] = {{0.5, "15-35"}, {-3, "45-65"}, {6, "0-5"}, {1, ""}};
    for (const auto& [later, place] : nudges) {
        controller_->clips().adjustAudioOffset(a, later);
        EXPECT_EQ(byHand(), place) << later;
        EXPECT_EQ(active("A001").contains(3), *place != '\0') << later;
    }
    controller_->clips().resetAudioOffset(a);
    EXPECT_EQ(byHand(), "20-40");
    EXPECT_EQ(clip("A001")->manualBlockOverrides.at(0).startSeconds, 2);

    // A recording that begins one second into the clip.
    fs::rename(folder_.path("shoot/T01.WAV"), folder_.path("away.WAV"));
    makeRecording("T09.WAV", 1, 3);
    finish(controller_->scan().startScan());
    controller_->tracks().addBlockOverride(clip("A001")->id, 2, 4, 3);
    analyse(clip("A001")->id);
    EXPECT_EQ(byHand(), "10-30");
}

TEST_F(SmartAudioDriverTest, oneReadingAnswersAllChangesMadeBeforeIt) {
    const UUID a = clip("A001")->id;
    analyse(a);
    std::vector<SmartAudioProgress> steps;
    int measurements = 0;
    bool countsGroups = false;
    const auto subscription = controller_->onChange([&](ImportField field) {
        if (field == ImportField::smartAudioProgress && controller_->smartAudio().state().isAnalyzing)
            steps.push_back(controller_->smartAudio().state().progress);
        if (field == ImportField::syncGroups && countsGroups) ++measurements;
    });
    mainThread_->advance(platform::progressInterval); // so that the beginning is shown
    for (int track = 3; track <= 6; ++track) controller_->tracks().toggleTrackActive(a, track);
    controller_->tracks().toggleAlgorithmInclusion(a, 2);
    countsGroups = true;
    settle();
    EXPECT_EQ(measurements, 1);
    EXPECT_EQ(active("A001"), (Tracks{2, 3, 4, 5, 6}));
    EXPECT_FALSE(blockTracks("A001").contains(2)) << "the last change counts too";

    ASSERT_FALSE(steps.empty());
    for (const auto& step : steps) {
        EXPECT_EQ(step.phase, "Listening to T01.WAV");
        EXPECT_EQ(step.current, 1);
        EXPECT_EQ(step.total, 1);
    }
    EXPECT_EQ(steps.front().fraction, 0);

    // A change of the options does not affect the running reading.
    settings_->setByName("smartAudioMode", "studio");
    controller_->tracks().soloTrackActive(a, 3);
    settings_->setByName("smartAudioMode", "cinematic");
    controller_->tracks().soloTrackActive(a, 4);
    settle();
    EXPECT_EQ(result("A001")->tracks.at(1).loudnessAmount, 0.6F);

    // Of two runs the earlier one is shown until it ends.
    steps.clear();
    mainThread_->advance(platform::progressInterval);
    const auto all = controller_->smartAudio().runSmartAudioAnalysis(SmartAudioMode::standard, false);
    const auto one = controller_->smartAudio().runSmartAudioForGroup(clip("D001")->id, false);
    finish(all);
    finish(one);
    const auto isOfOne = [](const SmartAudioProgress& step) { return step.total == 1; };
    EXPECT_TRUE(std::ranges::is_partitioned(steps, std::not_fn(isOfOne)));
    EXPECT_EQ(steps.front(), (SmartAudioProgress{"Listening to T01.WAV", 1, 2, 0}));
}

} // namespace
} // namespace orvane
