#include "MediaFactory/SmallShoot.h"
#include "OrvaneSyncApp/ControllerTest.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "Support/Assets.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using namespace std::chrono_literals;

/// Single operations. Three clips: one with three recordings, one with another, one without.
class EditingTest : public test::ControllerTest {
  protected:
    EditingTest() {
        SyncGroup three = test::clip(test::video("A.mov"), test::slated(test::audio("one.wav"), "12", "3"));
        three.audioMatches.emplace_back(test::audio("two.wav"), 0, 60);
        three.audioMatches.emplace_back(test::audio("three.wav"), 0, 60);
        three.matchStatus = MatchStatus::ambiguous(3);
        for (AudioMatch& match : three.audioMatches) match.audio.edit().channelCount = 9;
        open({three, test::clip(test::video("B.mov", "11:00:00:00"), test::audio("four.wav", "11:00:10:00")),
              SyncGroup(test::video("C.mov", ""), {}, MatchStatus::unmatched())});
    }

    void open(std::vector<SyncGroup> groups) {
        controller_->openStoredWork({{}, {}, SyncGroupList(std::move(groups))});
    }
    const SyncGroup& group(std::size_t position = 0) const {
        return controller_->work().syncGroups()[position];
    }
    UUID id(std::size_t position = 0) const { return group(position).id; }
    void change(std::size_t position, const std::function<void(SyncGroup&)>& how) {
        std::vector<SyncGroup> groups(controller_->work().syncGroups().begin(),
                                      controller_->work().syncGroups().end());
        how(groups[position]);
        open(std::move(groups));
    }
    void nudge() {
        controller_->withUndo(undoSteps::adjustAudioOffset,
                              [&] { controller_->clips().adjustAudioOffset(id(), 0.04); });
    }
    int stepsToUndo() {
        int steps = 0;
        for (; controller_->work().undoState().canUndo; ++steps) controller_->undo();
        return steps;
    }
};

TEST_F(EditingTest, nudgesBelongTogetherWithinTheWindow) {
    // `gaps`: between nudges
    const auto check = [&](const char* name, const std::vector<std::chrono::milliseconds>& gaps, int steps) {
        open({controller_->work().syncGroups().begin(), controller_->work().syncGroups().end()});
        const double before = group().manualAudioOffsetSeconds;
        nudge();
        for (const auto gap : gaps) {
            mainThread_->advance(gap);
            nudge();
        }
        EXPECT_EQ(stepsToUndo(), steps) << name;
        EXPECT_EQ(group().manualAudioOffsetSeconds, before) << name;
        mainThread_->advance(10s);
    };
    check("one", {}, 1);
    check("a burst", {499ms, 499ms}, 1);
    check("a burst renews the window, however long", std::vector<std::chrono::milliseconds>(100, 400ms), 1);
    check("a fourth one 0.6 s later", {100ms, 100ms, 600ms}, 2);
    check("the window is open at its end", {500ms}, 2);
    check("time that stands still", {0ms, 0ms}, 1);
    open({controller_->work().syncGroups().begin(), controller_->work().syncGroups().end()});
    nudge();
    controller_->withUndo(undoSteps::toggleApproved, [&] { controller_->clips().toggleApproved(id()); });
    nudge();
    controller_->withUndo(undoSteps::toggleApproved, [&] { controller_->clips().toggleApproved(id()); });
    controller_->withUndo(undoSteps::toggleApproved, [&] { controller_->clips().toggleApproved(id()); });
    EXPECT_EQ(stepsToUndo(), 5) << "another name between two, and steps without a window";
}

TEST_F(EditingTest, changesWithinAChangeAreOneStep) {
    const auto lock = [&](std::size_t position) {
        controller_->withUndo(undoSteps::toggleLocked,
                              [&] { controller_->clips().toggleLocked(id(position)); });
    };
    controller_->withUndo(undoSteps::toggleLocked, [&] {
        for (const std::size_t position : {0, 1, 2}) lock(position);
    });
    EXPECT_THROW(
        controller_->withUndo(undoSteps::toggleApproved, [] { throw std::runtime_error("refused"); }),
        std::runtime_error);
    lock(0);
    EXPECT_EQ(stepsToUndo(), 2);
    for (const std::size_t position : {0, 1, 2}) EXPECT_FALSE(group(position).isLocked) << position;
}

TEST_F(EditingTest, whatIsNoClipNoNumberOrNoPoolChangesNothing) {
    constexpr double none = std::numeric_limits<double>::quiet_NaN(),
                     infinity = std::numeric_limits<double>::infinity();
    const std::string before = toJSONArray(controller_->work().syncGroups()).dump();
    controller_->clips().adjustAudioOffset(id(), none);
    controller_->clips().setAudioAnchor(id(), infinity);
    controller_->tracks().setMasterGain(id(), -infinity, true);
    controller_->clips().setManualSensorFrameRate(id(), none);
    controller_->tracks().addBlockOverride(id(), 5, infinity, 9);
    controller_->recordings().chooseRecording(UUID::random(), UUID::random());
    controller_->recordings().chooseRecording(id(), UUID::random());
    EXPECT_EQ(toJSONArray(controller_->work().syncGroups()).dump(), before);

    SyncGroup alone(test::video("C.mov"), {}, MatchStatus::manual());
    alone.video.projectFrameRate = 0;
    open({alone});
    EXPECT_EQ(controller_->clips().inferredProjectFrameRate(id()), 24) << "without any other";
    finish(controller_->recordings().resyncClip(id()));
    finish(controller_->recordings().resyncAllClips());
    EXPECT_EQ(group().matchStatus, MatchStatus::manual());
    controller_->clips().setManualSensorFrameRate(id(), 50);
    EXPECT_EQ(group().video.offspeedConfidence, OffspeedConfidence::confirmed(false, 1));
}

TEST_F(EditingTest, whatMakesNoDifferenceIsNoStep) {
    finish(controller_->recordings().resyncAllClips());
    controller_->recordings().removeAudioMatch(id(1), group(1).audioMatches[0].id);
    ASSERT_FALSE(controller_->work().wildTracks().empty());
    const UUID match = group().audioMatches.front().id, wild = controller_->work().wildTracks()[0].id;
    settings_->set(settings::trimMode, TrimMode::overlap);
    nudge();
    controller_->undo();
    const UndoState before = controller_->work().undoState();
    ASSERT_TRUE(before.canRedo);
    const std::pair<const char*, std::function<void()>> edits[] = {
        {"the name that it has", [&] { controller_->clips().setManualClipName(id(), " "); }},
        {"the method that it has", [&] { controller_->clips().setSyncMethod(id(), SyncMethod::timecode); }},
        {"there and back",
         [&] {
             for (int i = 0; i < 2; ++i) controller_->clips().toggleLocked(id());
         }},
        {"the same wild track", [&] { controller_->recordings().renameWildTrack(wild, ""); }},
        {"the setting that it has",
         [&] { controller_->changeSetting(undoSteps::setTrimMode, settings::trimMode, TrimMode::overlap); }},
    };
    for (const auto& [name, edit] : edits) {
        controller_->withUndo({"Nothing"}, edit);
        EXPECT_EQ(controller_->work().undoState(), before) << name;
    }
    finish(controller_->recordings().resyncClip(id()));
    EXPECT_EQ(controller_->work().undoState(), before) << "the same recordings";
    EXPECT_EQ(group().audioMatches.front().id, match);
}

TEST_F(EditingTest, matchingAnewKeepsWhatWasDecidedMeanwhile) {
    RecordingEditing& recordings = controller_->recordings();
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"a nudge", [&] { controller_->clips().adjustAudioOffset(id(), 0.04); }},
        {"a recording that is taken off",
         [&] { recordings.removeAudioMatch(id(), group().audioMatches[0].id); }},
        {"a clip that goes", [&] { recordings.removeVideoFromSync(id(2)); }},
    };
    const std::vector<SyncGroup> all(controller_->work().syncGroups().begin(),
                                     controller_->work().syncGroups().end());
    for (const bool isOfAll : {false, true})
        for (const auto& [name, edit] : cases) {
            SCOPED_TRACE(std::string(name) + (isOfAll ? ", all clips" : ", two clips"));
            open(all);
            for (const std::size_t clip : {0U, 1U})
                recordings.removeAudioMatch(id(clip), group(clip).audioMatches.back().id);
            controller_->smartAudio().caches().state.results[id()] = {};
            platform::Task matching = isOfAll ? recordings.resyncAllClips() : recordings.resyncClip(id());
            if (!isOfAll) matching = recordings.resyncClip(id(1));
            controller_->withUndo({"Edit"}, edit);
            const double offset = group().manualAudioOffsetSeconds;
            const auto clips = controller_->work().syncGroups().size();
            finish(matching);
            EXPECT_EQ(std::pair(group().audioMatches.size(), group(1).audioMatches.size()),
                      std::pair(3UL, 1UL));
            EXPECT_EQ(group().manualAudioOffsetSeconds, offset);
            EXPECT_EQ(controller_->work().syncGroups().size(), clips);
            EXPECT_TRUE(controller_->work().wildTracks().empty());
            EXPECT_TRUE(controller_->smartAudio().state().results.empty());
            EXPECT_EQ(stepsToUndo(), 2) << "the edit, and the matching on top of it";
            EXPECT_EQ(group().audioMatches.size(), 2U);
        }
    const platform::Task stopped = recordings.resyncClip(id());
    controller_->openStoredWork({{}, {}, controller_->work().syncGroups()});
    finish(stopped);
    EXPECT_FALSE(controller_->work().undoState().canUndo) << "other work";
    recordings.removeAudioMatch(id(), group().audioMatches.back().id);
    finish(recordings.resyncClip(id()));
    EXPECT_EQ(group().audioMatches.size(), 2U) << "after one that was stopped";
}

TEST_F(EditingTest, matchingAnewKeepsTheChosenRecording) {
    RecordingEditing& recordings = controller_->recordings();
    const auto attach = [&](MediaAsset audio) {
        audio.channelCount = 2;
        recordings.attachAudioToGroup(id(), audio);
    };
    const std::vector<SyncGroup> all(controller_->work().syncGroups().begin(),
                                     controller_->work().syncGroups().end());
    const struct {
        const char* name;
        std::function<void()> settle;
        const char* heard;
        MatchStatus status;
        std::set<int> tracks;
    } cases[] = {
        {"still there", [] {}, "two.wav", MatchStatus::manual(), {2, 3}},
        {"beside one that was taken off",
         [&] {
             recordings.removeAudioMatch(id(), group().audioMatches.back().id);
             recordings.chooseRecording(id(), group().audioMatches.front().id);
         },
         "two.wav",
         MatchStatus::manual(),
         {2, 3}},
        {"one that only hands had attached",
         [&] {
             attach(test::audio("far.wav", "15:00:00:00"));
             recordings.chooseRecording(id(), group().audioMatches.back().id);
         },
         "one.wav",
         MatchStatus::matched(),
         {1, 2, 3, 4, 5, 6, 7, 8, 9}},
    };
    for (const bool isOfAll : {false, true})
        for (const auto& one : cases) {
            SCOPED_TRACE(one.name);
            open(all);
            recordings.chooseRecording(id(), group().audioMatches[1].id);
            change(0, [](SyncGroup& own) { own.manualActiveTracks = {2, 3}; });
            one.settle();
            for (int i = 0; i < 2; ++i) // matching once more keeps the same
                finish(isOfAll ? recordings.resyncAllClips() : recordings.resyncClip(id()));
            EXPECT_EQ(group().audioMatches.front().audio->filename, one.heard);
            EXPECT_EQ(group().matchStatus, one.status);
            EXPECT_EQ(group().manualActiveTracks, one.tracks);
        }
}

TEST_F(EditingTest, wildTracksGoAndComeWithTheirRecordings) {
    const auto wild = [&] {
        std::string text;
        for (const WildTrack& track : controller_->work().wildTracks())
            text += track.customName + (track.isApproved ? "! " : " ");
        return text;
    };
    const auto step = [&](auto edit) { controller_->withUndo({"Edit"}, edit); };
    RecordingEditing& recordings = controller_->recordings();
    for (int i = 0; i < 2; ++i) recordings.removeAudioMatch(id(), group().audioMatches[1].id);
    finish(recordings.resyncClip(id()));
    EXPECT_EQ(wild(), "") << "they are used again";
    controller_->undo();
    step([&] { recordings.attachAudioToGroup(id(2), controller_->work().wildTracks()[1].audio); });
    finish(recordings.resyncAllClips());
    EXPECT_EQ(group(2).audioMatches.size(), 0U);
    EXPECT_EQ(wild(), "");
    for (int i = 0; i < 2; ++i) controller_->undo();
    EXPECT_EQ(wild(), "two three ");
    const MediaAsset two = controller_->work().wildTracks()[0].audio;
    step([&] { recordings.renameWildTrack(two.id, "Birds"); });
    step([&] { recordings.toggleWildTrackApproved(two.id); });
    step([&] { recordings.attachAudioToGroup(id(2), two); });
    EXPECT_EQ(wild(), "three ");
    controller_->undo();
    EXPECT_EQ(wild(), "Birds! three ");
    controller_->redo();
    step([&] { recordings.removeVideoFromSync(id(2)); });
    EXPECT_EQ(wild(), "three two ");
    recordings.renameWildTrack(two.id, "Wind");
    controller_->undo();
    EXPECT_EQ(wild(), "three ");
    controller_->redo();
    EXPECT_EQ(wild(), "three Wind ");
    while (controller_->work().undoState().canUndo) controller_->undo();
    EXPECT_EQ(wild(), "Birds! three ") << "names are no part of a step";
}

TEST_F(EditingTest, whatDoesNotExistIsRefused) {
    const auto range = [&](std::size_t clip, double start, double end, int track) {
        controller_->tracks().addBlockOverride(id(clip), start, end, track);
    };
    const std::pair<const char*, std::function<void()>> edits[] = {
        {"a track below the first", [&] { range(0, 1, 2, 0); }},
        {"a track behind the last", [&] { range(0, 1, 2, 10); }},
        {"a clip without sound", [&] { range(2, 1, 2, 1); }},
        {"before the clip", [&] { range(0, -0.01, 2, 1); }},
        {"behind the clip", [&] { range(0, 59, 60.01, 1); }},
        {"too quiet", [&] { controller_->tracks().setMasterGain(id(), -60.1, false); }},
        {"too loud", [&] { controller_->tracks().setMasterGain(id(), 40.1, false); }},
        {"more than a day", [&] { controller_->clips().adjustAudioOffset(id(), -0.01); }},
    };
    controller_->clips().adjustAudioOffset(id(), -86400);
    range(0, 0, 60, 9);
    controller_->tracks().setMasterGain(id(), 40, false);
    const std::string before = toJSONArray(controller_->work().syncGroups()).dump();
    for (const auto& [name, edit] : edits) EXPECT_THROW(edit(), OutOfRange) << name;
    EXPECT_EQ(toJSONArray(controller_->work().syncGroups()).dump(), before);
}

TEST_F(EditingTest, rangeOverridesMakeRoom) {
    // `keepsFirst`: one of the pieces keeps the old id
    const auto check = [&](double start, double end, const char* result, bool keepsFirst) {
        const UUID first = UUID::random();
        change(0, [&](SyncGroup& group) { group.manualBlockOverrides = {{first, 1, 20, 1}}; });
        controller_->tracks().addBlockOverride(id(), start, end, 9);
        std::string text; // in tenths of seconds
        for (const BlockOverride& one : group().manualBlockOverrides)
            text += std::to_string(std::lround(10 * one.startSeconds)) + "-" +
                    std::to_string(std::lround(10 * one.endSeconds)) + ":" + std::to_string(one.trackIndex) +
                    " ";
        EXPECT_EQ(text, result);
        EXPECT_EQ(std::ranges::count(group().manualBlockOverrides, first, &BlockOverride::id), keepsFirst)
            << result;
    };
    check(12, 14, "10-120:1 120-140:9 140-200:1 ", true);
    check(0.5, 4, "5-40:9 40-200:1 ", false);
    check(25, 19, "10-190:1 190-250:9 ", true);
    check(0, 30, "0-300:9 ", false);
    check(20, 21, "10-200:1 200-210:9 ", true);
    check(5, 5.09, "10-200:1 ", true); // too short
    check(5, 5.11, "10-50:1 50-51:9 51-200:1 ", true);
}

TEST_F(EditingTest, aSensorRateByHandIsConfirmedUntilItIsTakenBack) {
    change(0, [](SyncGroup& group) { group.video.projectFrameRate = 25; });
    for (const auto& [fps, isOffspeed] : {std::pair(25.45, false), {25.55, true}, {24.45, true}}) {
        controller_->clips().setManualSensorFrameRate(id(), fps);
        EXPECT_EQ(group().video.offspeedConfidence, OffspeedConfidence::confirmed(isOffspeed, fps / 25))
            << fps;
    }
    controller_->clips().setManualSensorFrameRate(id(), std::nullopt);
    EXPECT_EQ(group().video.offspeedConfidence, OffspeedConfidence::suspectedUnconfirmed(1));
    EXPECT_FALSE(group().video.sensorFrameRate || group().video.projectFrameRate);

    change(0, [](SyncGroup& group) {
        group.video.frameRate = group.video.projectFrameRate = 50;
        group.video.timecodeFrameRate = TimecodeFrameRate::fps25;
    });
    controller_->clips().setManualSensorFrameRate(id(), 100);
    EXPECT_EQ(group().video.projectFrameRate, 50);
    controller_->clips().setManualSensorFrameRate(id(), 50);
    EXPECT_EQ(group().video.projectFrameRate, 25) << "half-rate timecode by the editor's word";
}

TEST_F(EditingTest, anAmbiguousClipIsConfirmedUnlessItIsLocked) {
    for (const bool byAttaching : {false, true}) {
        change(0, [](SyncGroup& group) { group.matchStatus = MatchStatus::ambiguous(3); });
        for (const bool isLocked : {true, false}) {
            controller_->clips().toggleLocked(id());
            byAttaching ? controller_->recordings().attachAudioToGroup(id(), *group().audioMatches[1].audio)
                        : controller_->recordings().confirmAmbiguousMatch(id());
            EXPECT_EQ(group().matchStatus, isLocked ? MatchStatus::ambiguous(3) : MatchStatus::manual());
            EXPECT_EQ(group().audioMatches.size(), 3U);
        }
    }
}

TEST_F(EditingTest, anAssetMayLieInTheListThatLosesIt) {
    controller_->recordings().removeAudioMatch(id(), group().audioMatches[1].id);
    controller_->recordings().attachAudioToGroup(id(2), controller_->work().wildTracks()[0].audio);
    EXPECT_EQ(group(2).primaryAudio()->filename, "two.wav");
    EXPECT_EQ(group(2).audioMatches[0].overlapDurationSeconds, 0) << "the clip has no place";
    EXPECT_TRUE(controller_->work().wildTracks().empty());
}

TEST_F(EditingTest, pickupsRunFromATakeToTheEndOfItsScene) {
    std::vector<SyncGroup> groups;
    for (const auto& [scene, take] : std::vector<std::pair<const char*, const char*>>{
             {"7", "2"}, {"7", "003"}, {"7", "4"}, {"7", "5x"}, {"8", "4"}, {"7", "5"}})
        groups.push_back(test::clip(test::video("V.mov"), test::slated(test::audio("T.wav"), scene, take)));
    groups.push_back(test::clip(test::video("V.mov"), test::audio("T.wav")));
    open(groups);
    controller_->clips().markScenePickupFromHere(id(3)); // its take is no whole number
    controller_->clips().markScenePickupFromHere(id(6)); // it has no take
    std::string flags;
    const auto read = [&] {
        flags.clear();
        for (const SyncGroup& one : controller_->work().syncGroups()) flags += one.isPickup ? 'x' : '.';
        return flags;
    };
    EXPECT_EQ(read(), ".......");
    controller_->clips().markScenePickupFromHere(id(1));
    EXPECT_EQ(read(), ".xx..x.");
}

TEST_F(EditingTest, masterGainGoesBackToTheMeasurement) {
    change(0, [](SyncGroup& group) { group.measuredLUFS = -30; });
    controller_->tracks().setMasterGain(id(), 6, false);
    EXPECT_EQ(group().masterGainDB, 6);
    settings_->setByName("smartAudio.targetLUFS", -20.0);
    settings_->setByName("smartAudio.preset", "Documentary");
    controller_->tracks().resetMasterGain(id());
    EXPECT_DOUBLE_EQ(group().masterGainDB, 10);
    EXPECT_TRUE(group().masterGainAuto);
    controller_->tracks().setMasterGain(id(1), 6, false);
    controller_->tracks().resetMasterGain(id(1));
    EXPECT_EQ(group(1).masterGainDB, 6) << "nothing was measured";
}

TEST_F(EditingTest, switchesGoOnAndOff) {
    using Switch = void (ClipEditing::*)(UUID);
    const std::tuple<const char*, Switch, std::function<bool(const SyncGroup&)>> switches[] = {
        {"approved", &ClipEditing::toggleApproved, [](const SyncGroup& g) { return g.isApproved; }},
        {"pickup", &ClipEditing::togglePickup, [](const SyncGroup& g) { return g.isPickup; }},
        {"export", &ClipEditing::toggleExcludedFromExport,
         [](const SyncGroup& g) { return g.isExcludedFromExport; }},
        {"multicam", &ClipEditing::toggleExcludedFromMulticam,
         [](const SyncGroup& g) { return g.isExcludedFromMulticamFlag.value_or(false); }},
        {"silent", &ClipEditing::toggleMOS,
         [](const SyncGroup& g) { return g.matchStatus == MatchStatus::mos(); }},
    };
    for (const auto& [name, turn, isOn] : switches)
        for (const bool on : {true, false}) {
            (controller_->clips().*turn)(id(2));
            EXPECT_EQ(isOn(group(2)), on) << name;
        }
    controller_->clips().toggleMOS(id());
    EXPECT_EQ(group().matchStatus, MatchStatus::ambiguous(3)) << "it has sound";
    for (const bool on : {true, false}) {
        controller_->clips().setGenerateNativeMOS(id(), on);
        controller_->clips().setGenerateProjectRateClip(id(), !on);
        EXPECT_EQ(group().generateNativeMOSClip, on);
        EXPECT_EQ(group().shouldGenerateProjectRateClip(), !on);
    }
}

TEST_F(EditingTest, aRecordingComesAndGoesWithWhatItMakesOfTheClip) {
    controller_->recordings().attachAudioToGroup(id(1), test::audio("five.wav", "11:00:55:00"));
    EXPECT_EQ(group(1).audioMatches[1].syncOffsetSeconds, 55);
    EXPECT_EQ(group(1).audioMatches[1].overlapDurationSeconds, 5);
    EXPECT_EQ(group(1).matchStatus, MatchStatus::manual());
    for (const MatchStatus& left :
         {MatchStatus::ambiguous(2), MatchStatus::manual(), MatchStatus::unmatched()}) {
        controller_->recordings().removeAudioMatch(id(), group().audioMatches[0].id);
        EXPECT_EQ(group().matchStatus, left);
    }
}

TEST_F(EditingTest, resettingAClipLeavesItsMatchesAlone) {
    const std::string asMatched = toJSON(group()).dump();
    ClipEditing& clips = controller_->clips();
    clips.adjustAudioOffset(id(), 0.2);
    clips.setAudioAnchor(id(), 2);
    clips.toggleApproved(id());
    clips.toggleLocked(id());
    finish(controller_->tracks().toggleTrackActive(id(), 2));
    finish(controller_->tracks().addBlockOverride(id(), 1, 2, 3));
    clips.resetClipToAutoSync(id());
    EXPECT_EQ(toJSON(group()).dump(), asMatched);
    const std::function<void()> decisions[] = {
        [&] { clips.adjustAudioOffset(id(), 0.2); },
        [&] { clips.setAudioAnchor(id(), 2); },
        [&] { clips.toggleApproved(id()); },
        [&] { clips.toggleLocked(id()); },
        [&] { finish(controller_->tracks().toggleTrackActive(id(), 2)); },
    };
    for (const auto& decide : decisions) {
        decide();
        EXPECT_NE(toJSON(group()).dump(), asMatched);
        finish(clips.resetAllClipsToAutoSync());
        EXPECT_EQ(toJSON(group()).dump(), asMatched);
    }
}

TEST_F(EditingTest, theRateOfOtherClipsIsTheMostFrequentOne) {
    const auto inferred = [&](const std::vector<std::optional<double>>& rates) {
        std::vector<SyncGroup> groups;
        for (const auto rate : rates) {
            groups.emplace_back(test::video("V.mov"), std::vector<AudioMatch>{}, MatchStatus::unmatched());
            groups.back().video.projectFrameRate = rate;
        }
        open(groups);
        return controller_->clips().inferredProjectFrameRate(id());
    };
    EXPECT_EQ(inferred({30, 25, 24, 25}), 25);
    EXPECT_EQ(inferred({{}, 50, 25, 25, 50}), 50) << "of equals the first";
    EXPECT_EQ(inferred({25, {}, 0}), 24) << "no other clip has any";
}

TEST_F(EditingTest, batchRenamingIsOneStepAndOneNotice) {
    BatchRenamer renamer;
    renamer.prefix = "X ";
    int notices = 0;
    const auto subscription = controller_->onChange([&](ImportField field) {
        if (field == ImportField::syncGroups) ++notices;
    });
    settings_->setByName("clipNamingSource", "audio");
    controller_->clips().applyBatchRename(renamer);
    EXPECT_EQ(notices, 1);
    controller_->clips().applyBatchRename(renamer, std::vector<UUID>());
    EXPECT_EQ(notices, 1) << "none of them";
    EXPECT_EQ(group(0).manualClipName, "X one");
    EXPECT_EQ(group(1).manualClipName, "X four");
    EXPECT_EQ(group(2).manualClipName, std::nullopt) << "bears its camera's name";
    mainThread_->advance(2s);
    controller_->clips().clearAllManualNames();
    EXPECT_EQ(group(0).manualClipName, std::nullopt);
    controller_->clips().clearAllManualNames();
    EXPECT_EQ(stepsToUndo(), 2) << "clearing nothing is no step";
}

TEST_F(EditingTest, filesToAttachAreThoseOfThePoolThatLieNowhere) {
    const auto names = [](const std::vector<MediaAsset>& files) {
        std::string text;
        for (const MediaAsset& file : files) text += file.filenameStem() + " ";
        return text;
    };
    controller_->recordings().removeAudioMatch(id(), group().audioMatches[1].id);
    EXPECT_EQ(names(controller_->recordings().availableAudioPool()), "four one three two ");
    EXPECT_EQ(names(controller_->recordings().rawFilesAvailableToAttach(id(2))), "four one three ");
    EXPECT_EQ(names(controller_->recordings().rawFilesAvailableToAttach(id(1))), "one three ");

    const MediaAsset one = *group().audioMatches[0].audio, unused = controller_->work().wildTracks()[0].audio;
    EXPECT_EQ(controller_->recordings().rawFilesMenuLabel(unused), "two.wav");
    EXPECT_EQ(controller_->recordings().rawFilesMenuLabel(one), "one.wav  ·  also on A.mov");
    controller_->recordings().attachAudioToGroup(id(2), one);
    EXPECT_EQ(controller_->recordings().rawFilesMenuLabel(one), "one.wav  ·  also on 2 clips");
    EXPECT_EQ(controller_->recordings().clipNames(one.id), (std::vector<std::string>{"A.mov", "C.mov"}));
    controller_->recordings().removeVideoFromSync(id());
    EXPECT_EQ(controller_->recordings().rawFilesMenuLabel(one), "one.wav  ·  also on C.mov");
    for (const MediaAsset& audio : controller_->recordings().availableAudioPool())
        EXPECT_EQ(controller_->recordings().audioInPool(audio.id)->url, audio.url);
    ASSERT_NE(controller_->recordings().audioInPool(unused.id), nullptr);
    EXPECT_EQ(controller_->recordings().audioInPool(unused.id)->filename, "two.wav");
    EXPECT_EQ(controller_->recordings().audioInPool(UUID::random()), nullptr);

    test::makeSmallShoot(folder_.path());
    scan(folder("camera"), folder("sound"));
    EXPECT_EQ(controller_->recordings().availableAudioPool().size(), 2U) << "after a scan, what it found";
    EXPECT_NE(controller_->recordings().audioInPool(controller_->recordings().availableAudioPool().back().id),
              nullptr);
    EXPECT_EQ(controller_->recordings().rawFilesAvailableToAttach(clip("A001C002")->id).size(), 1U);
}

TEST_F(EditingTest, aChosenFileIsReadAndAttachedAsAStep) {
    test::makeSmallShoot(folder_.path());
    scan(std::nullopt, folder("sound"));
    const FileURL file = controller_->work().wildTracks()[0].audio.url;
    open({SyncGroup(test::video("C.mov"), {}, MatchStatus::unmatched())});
    finish(controller_->recordings().chooseAndAttachAudio(id(), file));
    ASSERT_EQ(group().audioMatches.size(), 1U);
    EXPECT_EQ(group().primaryAudio()->url, file);
    EXPECT_TRUE(group().primaryAudio()->durationSeconds);
    EXPECT_EQ(controller_->work().undoState().undoActionName, "Attach Audio");

    const auto abandoned = controller_->recordings().chooseAndAttachAudio(id(), file);
    controller_.reset();
    finish(abandoned);
}

TEST_F(EditingTest, storedWorkReplacesEverythingAndIsToldWhenItStands) {
    test::makeSmallShoot(folder_.path());
    scan(folder("camera"), folder("sound"));
    nudge();
    const SyncGroup stored = test::clip(test::video("stored.mov"), test::audio("s.wav"));
    std::vector<ImportField> told;
    auto subscription = controller_->onChange([&](ImportField field) {
        told.push_back(field);
        EXPECT_EQ(controller_->work().syncGroups().size(), 1U);
        EXPECT_EQ(controller_->work().videoFolderURL(), FileURL{"/elsewhere"});
        EXPECT_EQ(controller_->work().undoState(), UndoState{});
    });
    controller_->openStoredWork({FileURL{"/elsewhere"}, {}, SyncGroupList{stored}});
    subscription.reset();
    EXPECT_EQ(std::ranges::count(told, ImportField::syncGroups), 1);
    EXPECT_EQ(std::ranges::count(told, ImportField::undoState), 1);
    EXPECT_TRUE(controller_->work().wildTracks().empty());
    EXPECT_FALSE(controller_->scan().scanResult());
    EXPECT_FALSE(controller_->work().audioFolderURL());
    nudge();
    EXPECT_EQ(stepsToUndo(), 1);
    EXPECT_EQ(group().id, stored.id);
}

} // namespace
} // namespace orvane
