#include "OrvaneSyncApp/ControllerTest.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "Support/Assets.h"
#include "Support/Media/SmallShoot.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {
namespace {

using namespace std::chrono_literals;
using Controller = ImportController;

/// Three clips: one with three recordings, one with another, one without.
class EditingTest : public test::ControllerTest {
  protected:
    EditingTest() {
        SyncGroup three = test::clip(test::video("A.mov"), test::slated(test::audio("one.wav"), "12", "3"));
        three.audioMatches.emplace_back(test::audio("two.wav"), 0, 60);
        three.audioMatches.emplace_back(test::audio("three.wav"), 0, 60);
        three.matchStatus = MatchStatus::ambiguous(3);
        open({three, test::clip(test::video("B.mov", "11:00:00:00"), test::audio("four.wav", "11:00:10:00")),
              SyncGroup(test::video("C.mov", ""), {}, MatchStatus::unmatched())});
    }

    void open(std::vector<SyncGroup> groups) {
        controller_->openStoredWork({{}, {}, SyncGroupList(std::move(groups))});
    }
    const SyncGroup& group(std::size_t position = 0) const { return controller_->syncGroups()[position]; }
    UUID id(std::size_t position = 0) const { return group(position).id; }
    void change(std::size_t position, const std::function<void(SyncGroup&)>& how) {
        std::vector<SyncGroup> groups(controller_->syncGroups().begin(), controller_->syncGroups().end());
        how(groups[position]);
        open(std::move(groups));
    }
    void nudge(double seconds = 0.04) {
        controller_->withUndo(undoSteps::adjustAudioOffset,
                              [&] { controller_->adjustAudioOffset(id(), seconds); });
    }
    int stepsToUndo() {
        int steps = 0;
        for (; controller_->undoState().canUndo; ++steps) controller_->undo();
        return steps;
    }
    std::string wildNames() const {
        std::string names;
        for (const WildTrack& track : controller_->wildTracks()) names += track.customName + " ";
        return names;
    }
    std::string overrides() const {
        std::string text;
        for (const BlockOverride& one : group().manualBlockOverrides)
            text += std::to_string(std::lround(10 * one.startSeconds)) + "-" +
                    std::to_string(std::lround(10 * one.endSeconds)) + ":" + std::to_string(one.trackIndex) +
                    " ";
        return text;
    }
};

TEST_F(EditingTest, nudgesBelongTogetherWithinTheWindow) {
    struct Case {
        const char* name;
        std::vector<std::chrono::milliseconds> gaps; ///< between nudges
        int steps;
    };
    const Case cases[] = {
        {"one", {}, 1},
        {"a burst", {499ms, 499ms}, 1},
        {"a burst renews the window, however long", std::vector<std::chrono::milliseconds>(100, 400ms), 1},
        {"a fourth one 0.6 s later", {100ms, 100ms, 600ms}, 2},
        {"the window is open at its end", {500ms}, 2},
        {"time that stands still", {0ms, 0ms}, 1},
    };
    for (const Case& one : cases) {
        controller_->clearUndo();
        const double before = group().manualAudioOffsetSeconds;
        nudge();
        for (const auto gap : one.gaps) {
            mainThread_->advance(gap);
            nudge();
        }
        EXPECT_EQ(stepsToUndo(), one.steps) << one.name;
        EXPECT_EQ(group().manualAudioOffsetSeconds, before) << one.name;
        mainThread_->advance(10s);
    }

    controller_->clearUndo();
    nudge();
    controller_->withUndo(undoSteps::toggleApproved, [&] { controller_->toggleApproved(id()); });
    nudge();
    controller_->withUndo(undoSteps::toggleApproved, [&] { controller_->toggleApproved(id()); });
    controller_->withUndo(undoSteps::toggleApproved, [&] { controller_->toggleApproved(id()); });
    EXPECT_EQ(stepsToUndo(), 5) << "another name between two, and steps without a window";
}

TEST_F(EditingTest, undoAndRedoNameTheirStepsAndForgetTheOldest) {
    EXPECT_EQ(controller_->undoState(), UndoState{});
    controller_->undo();
    controller_->redo();
    nudge(1);
    controller_->withUndo(undoSteps::toggleLocked, [&] { controller_->toggleLocked(id()); });
    controller_->undo();
    EXPECT_EQ(controller_->undoState(), (UndoState{true, true, "Adjust Audio Offset", "Toggle Lock"}));
    EXPECT_FALSE(group().isLocked);
    controller_->redo();
    EXPECT_TRUE(group().isLocked);
    EXPECT_EQ(group().lockedAtManualOffset, 1.0);
    controller_->undo();
    controller_->undo();
    EXPECT_EQ(controller_->undoState(), (UndoState{false, true, {}, "Adjust Audio Offset"}));
    controller_->withUndo(undoSteps::togglePickup, [&] { controller_->togglePickup(id()); });
    EXPECT_FALSE(controller_->undoState().canRedo) << "a new step ends what could be redone";

    for (int i = 0; i < 60; ++i) {
        mainThread_->advance(1s);
        nudge(1);
    }
    EXPECT_EQ(stepsToUndo(), 50);
    EXPECT_EQ(group().manualAudioOffsetSeconds, 10);
    controller_->clearUndo();
    EXPECT_EQ(controller_->undoState(), UndoState{});
}

TEST_F(EditingTest, wildTracksDoNotTravelBack) {
    const UUID audio = group(1).audioMatches[0].audio->id;
    controller_->withUndo(undoSteps::removeAudioMatch,
                          [&] { controller_->removeAudioMatch(id(1), group(1).audioMatches[0].id); });
    controller_->withUndo(undoSteps::renameWildTrack, [&] { controller_->renameWildTrack(audio, "Birds"); });
    controller_->undo();
    EXPECT_EQ(wildNames(), "Birds ");
    controller_->undo();
    EXPECT_EQ(group(1).audioMatches.size(), 1U);
    EXPECT_EQ(wildNames(), "Birds ");
    controller_->renameWildTrack(audio, "");
    EXPECT_EQ(wildNames(), "four ") << "an empty name is none";
}

TEST_F(EditingTest, removedAudioSettlesTheStatusAndGoesToTheWildTracks) {
    const std::vector<UUID> matches{group().audioMatches[0].id, group().audioMatches[1].id,
                                    group().audioMatches[2].id};
    controller_->attachAudioToGroup(id(1), *group().audioMatches[2].audio); // used twice from now on
    const MatchStatus statuses[] = {MatchStatus::ambiguous(2), MatchStatus::manual(),
                                    MatchStatus::unmatched()};
    const char* wild[] = {"two ", "two ", "two one "};
    for (const std::size_t which : {1, 2, 0}) {
        const std::size_t step = 3 - group().audioMatches.size();
        controller_->removeAudioMatch(id(), UUID::random());
        controller_->removeAudioMatch(id(), matches[which]);
        EXPECT_EQ(group().matchStatus, statuses[step]);
        EXPECT_EQ(wildNames(), wild[step]);
    }
    controller_->toggleMOS(id());
    EXPECT_EQ(group().matchStatus, MatchStatus::mos());
    controller_->toggleMOS(id(1));
    EXPECT_EQ(group(1).matchStatus, MatchStatus::manual()) << "not with audio";
    controller_->removeVideoFromSync(id(1));
    EXPECT_EQ(wildNames(), "two one four three ");
    EXPECT_EQ(controller_->syncGroups().size(), 2U);

    // The asset lies in the list that loses it.
    controller_->attachAudioToGroup(id(1), controller_->wildTracks()[0].audio);
    EXPECT_EQ(group(1).primaryAudio()->filename, "two.wav");
    EXPECT_EQ(group(1).audioMatches[0].overlapDurationSeconds, 0) << "the clip has no place";
    EXPECT_EQ(wildNames(), "one four three ");
}

TEST_F(EditingTest, attachedAudioLiesWhereTheTimecodesPutIt) {
    const MediaAsset late = test::audio("late.wav", "11:00:30:00"),
                     apart = test::audio("x.wav", "12:00:00:00");
    controller_->attachAudioToGroup(id(1), late);
    controller_->attachAudioToGroup(id(1), apart);
    ASSERT_EQ(group(1).audioMatches.size(), 3U);
    EXPECT_EQ(group(1).primaryAudio()->filename, "four.wav");
    EXPECT_EQ(group(1).audioMatches[1].syncOffsetSeconds, 30);
    EXPECT_EQ(group(1).audioMatches[1].overlapDurationSeconds, 30);
    EXPECT_EQ(group(1).audioMatches[2].syncOffsetSeconds, 3600);
    EXPECT_EQ(group(1).audioMatches[2].overlapDurationSeconds, 0);
    EXPECT_EQ(group(1).matchStatus, MatchStatus::manual());

    controller_->attachAudioToGroup(id(), *group().audioMatches[1].audio);
    EXPECT_EQ(group().matchStatus, MatchStatus::manual()) << "confirms an ambiguous clip that has it";
    EXPECT_EQ(group().audioMatches.size(), 3U);
}

TEST_F(EditingTest, aLockRefusesWhatWouldChangeTheSyncAndNothingElse) {
    struct Case {
        const char* name;
        void (*edit)(Controller&, UUID);
        bool acts;
    };
    const Case cases[] = {
        {"adjustAudioOffset", [](Controller& c, UUID id) { c.adjustAudioOffset(id, 1); }, true},
        {"resetAudioOffset", [](Controller& c, UUID id) { c.resetAudioOffset(id); }, true},
        {"toggleApproved", [](Controller& c, UUID id) { c.toggleApproved(id); }, true},
        {"togglePickup", [](Controller& c, UUID id) { c.togglePickup(id); }, true},
        {"setManualClipName", [](Controller& c, UUID id) { c.setManualClipName(id, "X"); }, true},
        {"resyncClip", [](Controller& c, UUID id) { c.resyncClip(id); }, true},
        {"resyncAllClips", [](Controller& c, UUID) { c.resyncAllClips(); }, true},
        {"resetClipToAutoSync", [](Controller& c, UUID id) { c.resetClipToAutoSync(id); }, true},
        {"resetAllClipsToAutoSync", [](Controller& c, UUID) { c.resetAllClipsToAutoSync(); }, true},
        {"addBlockOverride", [](Controller& c, UUID id) { c.addBlockOverride(id, 0, 1, 1); }, true},
        {"attachAudioToGroup",
         [](Controller& c, UUID id) { c.attachAudioToGroup(id, test::audio("new.wav")); }, false},
        {"removeAudioMatch",
         [](Controller& c, UUID id) { c.removeAudioMatch(id, c.syncGroups()[0].audioMatches[0].id); }, false},
        {"confirmAmbiguousMatch", [](Controller& c, UUID id) { c.confirmAmbiguousMatch(id); }, false},
        {"removeVideoFromSync", [](Controller& c, UUID id) { c.removeVideoFromSync(id); }, false},
        {"setManualSensorFrameRate", [](Controller& c, UUID id) { c.setManualSensorFrameRate(id, 50); },
         false},
        {"lockAllInCluster",
         [](Controller& c, UUID id) { c.lockAllInCluster(id, GroupNaming::Source::video, {}); }, false},
    };
    controller_->adjustAudioOffset(id(), 0.5);
    controller_->setAudioAnchor(id(), 2);
    controller_->toggleLocked(id());
    const std::vector<SyncGroup> locked(controller_->syncGroups().begin(), controller_->syncGroups().end());
    const std::string before = toJSONArray(locked).dump();
    for (const Case& one : cases) {
        open(locked);
        one.edit(*controller_, id());
        EXPECT_EQ(toJSONArray(controller_->syncGroups()).dump() != before, one.acts) << one.name;
        if (std::string_view(one.name).starts_with("resync")) {
            EXPECT_TRUE(group().isLocked);
            EXPECT_EQ(group().lockedAtAudioAnchor, 2.0);
            EXPECT_EQ(group().manualAudioOffsetSeconds, 0.5);
            EXPECT_EQ(group().audioMatches.size(), 3U);
            EXPECT_NE(group().audioMatches[0].id, locked[0].audioMatches[0].id);
        }
        if (std::string_view(one.name).find("AutoSync") != std::string_view::npos) {
            EXPECT_EQ(group().manualAudioOffsetSeconds, 0) << one.name;
            EXPECT_FALSE(group().isLocked || group().lockedAtManualOffset) << one.name;
        }
        // Nobody is an unknown clip.
        open(locked);
        if (std::string_view(one.name).find("All") != std::string_view::npos) continue;
        one.edit(*controller_, UUID{});
        EXPECT_EQ(toJSONArray(controller_->syncGroups()).dump(), before) << one.name;
    }
}

TEST_F(EditingTest, resyncNeedsAPool) {
    open({SyncGroup(test::video("C.mov"), {}, MatchStatus::manual())});
    controller_->resyncClip(id());
    controller_->resyncAllClips();
    EXPECT_EQ(group().matchStatus, MatchStatus::manual());
}

TEST_F(EditingTest, rangeOverridesMakeRoom) {
    struct Case {
        const char* name;
        double start, end;
        const char* result;
        bool keepsFirst; ///< a piece that bears the old id
    };
    const Case cases[] = {
        {"inside, it splits", 12, 14, "10-120:1 120-140:9 140-200:1 ", true},
        {"over an end", 0.5, 4, "5-40:9 40-200:1 ", false},
        {"backwards", 25, 19, "10-190:1 190-250:9 ", true},
        {"over all of it", 0, 30, "0-300:9 ", false},
        {"touching leaves it whole", 20, 21, "10-200:1 200-210:9 ", true},
        {"too short", 5, 5.09, "10-200:1 ", true},
        {"no number", 5, std::numeric_limits<double>::infinity(), "10-200:1 ", true},
    };
    for (const Case& one : cases) {
        const UUID first = UUID::random();
        change(0, [&](SyncGroup& group) { group.manualBlockOverrides = {{first, 1, 20, 1}}; });
        controller_->addBlockOverride(id(), one.start, one.end, 9);
        EXPECT_EQ(overrides(), one.result) << one.name;
        const auto& left = group().manualBlockOverrides.front();
        EXPECT_EQ(left.id == first, one.keepsFirst) << one.name;
        EXPECT_EQ(std::ranges::count(group().manualBlockOverrides, first, &BlockOverride::id),
                  one.keepsFirst);
    }
}

TEST_F(EditingTest, aSensorRateByHandIsConfirmed) {
    using Confidence = OffspeedConfidence;
    struct Case {
        const char* name;
        std::optional<double> own, fps, project;
        Confidence confidence;
    };
    const Case cases[] = {
        {"takes the rate of most others", {}, 120, 24, Confidence::confirmed(true, 5)},
        {"keeps its own project rate", 25, 50, 25, Confidence::confirmed(true, 2)},
        {"within the tolerance", 25, 25.4, 25, Confidence::confirmed(false, 25.4 / 25)},
        {"slower counts too", 25, 20, 25, Confidence::confirmed(true, 0.8)},
        {"no rate at all", 25, 0, 25, Confidence::confirmed(false, 0)},
        {"a project rate that is none", 0, 50, 0, Confidence::confirmed(false, 1)},
        {"back to the file", 25, {}, {}, Confidence::suspectedUnconfirmed(1)},
    };
    for (const Case& one : cases) {
        std::vector<SyncGroup> groups(4, SyncGroup(test::video("V.mov"), {}, MatchStatus::mos()));
        const std::optional<double> rates[] = {one.own, 24, 25, 24};
        for (std::size_t i = 0; i < groups.size(); ++i) {
            groups[i] = SyncGroup(test::video("V.mov"), {}, MatchStatus::mos());
            groups[i].video.projectFrameRate = rates[i];
        }
        open(groups);
        controller_->setManualSensorFrameRate(id(), one.fps);
        EXPECT_EQ(group().video.sensorFrameRate, one.fps) << one.name;
        EXPECT_EQ(group().video.projectFrameRate, one.project) << one.name;
        EXPECT_EQ(group().video.offspeedConfidence, one.confidence) << one.name;
    }
    EXPECT_EQ(controller_->inferredProjectFrameRate(id()), 24);
    open({group()});
    EXPECT_EQ(controller_->inferredProjectFrameRate(id()), 24) << "without any other";
}

TEST_F(EditingTest, pickupsRunFromATakeToTheEndOfItsScene) {
    std::vector<SyncGroup> groups;
    for (const auto& [scene, take] : std::vector<std::pair<const char*, const char*>>{
             {"7", "2"}, {"7", "003"}, {"7", "4"}, {"7", "5x"}, {"8", "4"}, {"7", "5"}})
        groups.push_back(test::clip(test::video("V.mov"), test::slated(test::audio("T.wav"), scene, take)));
    groups.push_back(test::clip(test::video("V.mov"), test::audio("T.wav")));
    open(groups);
    controller_->markScenePickupFromHere(id(3)); // no whole number
    controller_->markScenePickupFromHere(id(6)); // no take
    std::string flags;
    const auto read = [&] {
        flags.clear();
        for (const SyncGroup& one : controller_->syncGroups()) flags += one.isPickup ? 'x' : '.';
        return flags;
    };
    EXPECT_EQ(read(), ".......");
    controller_->markScenePickupFromHere(id(1));
    EXPECT_EQ(read(), ".xx..x.");
}

TEST_F(EditingTest, masterGainGoesBackToTheMeasurement) {
    change(0, [](SyncGroup& group) { group.measuredLUFS = -30; });
    controller_->setMasterGain(id(), 6, false);
    EXPECT_EQ(group().masterGainDB, 6);
    settings_->set("smartAudio.targetLUFS", -20.0);
    settings_->set("smartAudio.preset", "Documentary");
    controller_->resetMasterGain(id());
    EXPECT_DOUBLE_EQ(group().masterGainDB, 10);
    EXPECT_TRUE(group().masterGainAuto);
    controller_->setMasterGain(id(1), 6, false);
    controller_->resetMasterGain(id(1));
    EXPECT_EQ(group(1).masterGainDB, 6) << "nothing was measured";
}

TEST_F(EditingTest, batchRenamingIsOneStepAndOneNotice) {
    BatchRenamer renamer;
    renamer.prefix = "X ";
    int notices = 0;
    const auto subscription = controller_->onChange([&](ImportField field) {
        if (field == ImportField::syncGroups) ++notices;
    });
    settings_->set("clipNamingSource", "audio");
    controller_->applyBatchRename(renamer);
    EXPECT_EQ(notices, 1);
    EXPECT_EQ(group(0).manualClipName, "X one");
    EXPECT_EQ(group(1).manualClipName, "X four");
    EXPECT_EQ(group(2).manualClipName, std::nullopt) << "bears its camera's name";
    mainThread_->advance(2s);
    controller_->clearAllManualNames();
    EXPECT_EQ(group(0).manualClipName, std::nullopt);
    controller_->clearAllManualNames();
    EXPECT_EQ(stepsToUndo(), 2) << "clearing nothing is no step";
}

TEST_F(EditingTest, filesToAttachAreThoseOfThePoolThatLieNowhere) {
    const auto names = [](const std::vector<MediaAsset>& files) {
        std::string text;
        for (const MediaAsset& file : files) text += file.filenameStem() + " ";
        return text;
    };
    controller_->removeAudioMatch(id(), group().audioMatches[1].id);
    EXPECT_EQ(names(controller_->availableAudioPool()), "one three four two ");
    EXPECT_EQ(names(controller_->rawFilesAvailableToAttach(id(2))), "four one three ");
    EXPECT_EQ(names(controller_->rawFilesAvailableToAttach(id(1))), "one three ");

    const MediaAsset one = *group().audioMatches[0].audio, unused = controller_->wildTracks()[0].audio;
    EXPECT_EQ(controller_->rawFilesMenuLabel(unused), "two.wav");
    EXPECT_EQ(controller_->rawFilesMenuLabel(one), "one.wav  ·  also on A.mov");
    controller_->attachAudioToGroup(id(2), one);
    EXPECT_EQ(controller_->rawFilesMenuLabel(one), "one.wav  ·  also on 2 clips");
    EXPECT_EQ(controller_->clipNames(one.id), (std::vector<std::string>{"A.mov", "C.mov"}));
    controller_->removeVideoFromSync(id());
    EXPECT_EQ(controller_->rawFilesMenuLabel(one), "one.wav  ·  also on C.mov");
    for (const MediaAsset& audio : controller_->availableAudioPool())
        EXPECT_EQ(controller_->audioInPool(audio.id)->url, audio.url);
    ASSERT_NE(controller_->audioInPool(unused.id), nullptr);
    EXPECT_EQ(controller_->audioInPool(unused.id)->filename, "two.wav");
    EXPECT_EQ(controller_->audioInPool(UUID::random()), nullptr);

    test::makeSmallShoot(folder_.path());
    scan(folder("camera"), folder("sound"));
    EXPECT_EQ(controller_->availableAudioPool().size(), 2U) << "after a scan, what it found";
    EXPECT_NE(controller_->audioInPool(controller_->availableAudioPool().back().id), nullptr);
    EXPECT_EQ(controller_->rawFilesAvailableToAttach(clip("A001C002")->id).size(), 1U);
}

TEST_F(EditingTest, aChosenFileIsReadAndAttachedAsAStep) {
    test::makeSmallShoot(folder_.path());
    scan(std::nullopt, folder("sound"));
    const FileURL file = controller_->wildTracks()[0].audio.url;
    open({SyncGroup(test::video("C.mov"), {}, MatchStatus::unmatched())});
    finish(controller_->chooseAndAttachAudio(id(), file));
    ASSERT_EQ(group().audioMatches.size(), 1U);
    EXPECT_EQ(group().primaryAudio()->url, file);
    EXPECT_TRUE(group().primaryAudio()->durationSeconds);
    EXPECT_EQ(controller_->undoState().undoActionName, "Attach Audio");

    const auto abandoned = controller_->chooseAndAttachAudio(id(), file);
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
        EXPECT_EQ(controller_->syncGroups().size(), 1U);
        EXPECT_EQ(controller_->videoFolderURL(), FileURL{"/elsewhere"});
        EXPECT_EQ(controller_->undoState(), UndoState{});
    });
    controller_->openStoredWork({FileURL{"/elsewhere"}, {}, SyncGroupList{stored}});
    subscription.reset();
    EXPECT_EQ(std::ranges::count(told, ImportField::syncGroups), 1);
    EXPECT_EQ(std::ranges::count(told, ImportField::undoState), 1);
    EXPECT_TRUE(controller_->wildTracks().empty());
    EXPECT_FALSE(controller_->scanResult());
    EXPECT_FALSE(controller_->audioFolderURL());
    nudge();
    EXPECT_EQ(stepsToUndo(), 1);
    EXPECT_EQ(group().id, stored.id);
}

TEST_F(EditingTest, numbersThatAreNoneChangeNothing) {
    const std::string before = toJSONArray(controller_->syncGroups()).dump();
    controller_->adjustAudioOffset(id(), std::numeric_limits<double>::quiet_NaN());
    controller_->setAudioAnchor(id(), std::numeric_limits<double>::infinity());
    controller_->setMasterGain(id(), -std::numeric_limits<double>::infinity(), true);
    controller_->setManualSensorFrameRate(id(), std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(toJSONArray(controller_->syncGroups()).dump(), before);
    controller_->adjustAudioOffset(id(), 1e308);
    controller_->adjustAudioOffset(id(), 1e308);
    EXPECT_EQ(group().manualAudioOffsetSeconds, 1e308);
}

} // namespace
} // namespace orvane
