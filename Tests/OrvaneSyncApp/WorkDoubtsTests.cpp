#include "ControllerTest.h"
#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkReview.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncApp/ViewModels/Inspector/ClipParts.h"
#include "OrvaneSyncApp/ViewModels/Results/ListeningTexts.h"
#include "OrvaneSyncApp/ViewModels/Results/ResultsViewModel.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "Support/Assets.h"
#include "Support/TemporaryDirectory.h"

#include <cmath>
#include <random>

namespace orvane {
namespace {

using Kind = SyncDoubt::Kind;

class WorkDoubtsTest : public test::ControllerTest {
  protected:
    void open(const MediaAsset& video, const MediaAsset& audio) {
        controller_->openStoredWork({{}, {}, SyncEngine().match({video}, {audio}, MatchRules())});
    }
    std::vector<Kind> kinds() {
        finish(controller_->derivedDoubts().derive());
        std::vector<Kind> result;
        for (const auto& [id, own] : controller_->doubts().byGroup)
            for (const SyncDoubt& doubt : own) result.push_back(doubt.kind);
        return result;
    }

    static constexpr std::uint32_t rate = 8000;
    /// Noise of 25 s whose level changes as in speech.
    static std::vector<float> soundOf(unsigned seed) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> level(-50, -10), noise(-1, 1);
        std::vector<float> samples(std::size_t{25} * rate);
        float gain = 0;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            if (i % (rate * 3 / 10) == 0) gain = std::pow(10.0F, level(random) / 20);
            samples[i] = gain * noise(random);
        }
        return samples;
    }
    MediaAsset write(MediaAsset asset, const std::vector<float>& samples) const {
        asset.url = FileURL{media_.path(asset.filename + ".wav")};
        asset.channelCount = 1;
        test::WaveMaker()
            .format({.channels = 1, .sampleRate = rate})
            .samples(samples)
            .writeTo(asset.url.path);
        return asset;
    }
    const test::TemporaryDirectory media_;
};

TEST_F(WorkDoubtsTest, FollowTheWorkAndItsSettings) {
    using Kinds = std::vector<Kind>;
    EXPECT_EQ(kinds(), Kinds{});
    open(test::video("A.mov", "10:00:00:00", 60), test::audio("T.wav", "09:59:50:00", 50));
    EXPECT_EQ(kinds(), (Kinds{Kind::shortSound, Kind::cutByTrim}));
    controller_->changeSetting(undoSteps::setTrimMode, settings::trimMode, TrimMode::overlap);
    EXPECT_EQ(kinds(), Kinds{}) << "cut to the sound";
    controller_->undo();
    EXPECT_EQ(kinds().size(), 2U);
    EXPECT_EQ(settings_->value(settings::trimMode), std::nullopt) << "the default, as it was";
    controller_->redo();
    EXPECT_EQ(kinds(), Kinds{});
    const UUID clip = controller_->work().syncGroups().front().id;
    controller_->recordings().removeVideoFromSync(clip);
    EXPECT_EQ(kinds(), Kinds{});
}

TEST_F(WorkDoubtsTest, SayWhyAClipHasNoMatch) {
    controller_->openStoredWork(
        {{},
         {},
         SyncEngine().match({test::video("A.mov"), test::video("B.mov", "12:00:00:00")},
                            {test::audio("T.wav", "12:00:00:00")}, MatchRules())});
    const UUID clip = controller_->work().syncGroups().front().id;
    const ResultsViewModel results(*controller_);
    const auto reason = [&] {
        finish(controller_->derivedDoubts().derive());
        EXPECT_EQ(controller_->derivedDoubts().whyUnmatched(clip), results.row(0).reason);
        return results.row(0).reason;
    };
    EXPECT_EQ(reason(), "no sound at that time");
    controller_->clips().toggleMOS(clip);
    EXPECT_EQ(reason(), "");
    controller_->clips().toggleMOS(clip);
    EXPECT_EQ(reason(), "no sound at that time");
}

TEST_F(WorkDoubtsTest, ComparesEachClipWithItsCamera) {
    struct Case {
        double late; ///< by which the recording has the sound too late, beside the delay of the microphone
        double byHand = 0;
        std::optional<long> off = {}; ///< frames by which the sound has to be moved
        unsigned heard = 0;           ///< another sound than the recording's
    };
    constexpr double frame = 1.0 / 25, delay = 0.05, startsAt = 6;
    const std::vector<Case> cases{
        {0},         {0},           {0}, {0}, {4 * frame, 0, -4}, {-2 * frame, 0, 2}, {4 * frame, -4 * frame},
        {0, 1, -25}, {0, 0, {}, 99}};
    std::vector<MediaAsset> videos, recordings;
    for (unsigned i = 0; i < cases.size(); ++i) {
        const std::string number = std::to_string(i);
        const auto take = soundOf(i + 1), heard = cases[i].heard > 0 ? soundOf(cases[i].heard) : take;
        const auto from = heard.begin() + std::lround((startsAt + cases[i].late - delay) * rate);
        videos.push_back(write(test::video("A" + number + ".mov", "10:0" + number + ":06:00", 12),
                               {from, from + 12 * rate}));
        recordings.push_back(write(test::audio("T" + number + ".wav", "10:0" + number + ":00:00", 25), take));
    }
    videos.push_back(test::video("silent.mov", "10:00:06:00", 12));
    videos.push_back(test::video("alone.mov", "12:00:00:00", 12));
    controller_->openStoredWork({{}, {}, SyncEngine().match(videos, recordings, MatchRules())});
    const SyncGroupList groups = controller_->work().syncGroups();
    std::vector<UUID> clips;
    std::vector<std::pair<UUID, long>> wanted, found;
    for (const SyncGroup& group : groups) {
        clips.push_back(group.id);
        const auto i = static_cast<std::size_t>(group.video.filename[1] - '0');
        if (i >= cases.size()) continue;
        if (cases[i].byHand != 0) controller_->clips().adjustAudioOffset(group.id, cases[i].byHand);
        if (cases[i].off) wanted.emplace_back(group.id, *cases[i].off);
    }
    const auto result = std::make_shared<ComparedSound>();
    finish(controller_->soundComparison().compare(clips, result));
    for (const ComparedSound::Off& one : result->off) found.emplace_back(one.groupID, one.frames);
    EXPECT_EQ(found, wanted);
    EXPECT_EQ(
        comparedText(*result),
        "8 clips compared with the sound of the camera: 5 right, 3 off; to be right, move their sound by "
        "-25 to +2 frames.\nNot compared: 1 without recording, 1 without sound of the camera, 1 too short "
        "or unlike the recording.");
    ASSERT_EQ(result->unlike.size(), 1U);
    EXPECT_NE(groups.find(result->unlike.front()), nullptr);
    EXPECT_FALSE(controller_->soundComparison().progress());

    commands::CommandContext context;
    context.controller = controller_;
    const commands::Command& move = commands::command("moveAsCompared");
    const auto moved = [&] {
        const JSON none = JSON::object();
        return move.now(context, commands::Call(move, &none)).find("changedClips")->integer();
    };
    controller_->clips().toggleLocked(wanted.front().first);
    EXPECT_EQ(moved(), 2) << "not the locked clip";
    EXPECT_EQ(moved(), 0) << "each only once";
    finish(controller_->soundComparison().compare(clips, result));
    ASSERT_EQ(result->off.size(), 1U);
    EXPECT_EQ(result->off.front().groupID, wanted.front().first);
    controller_->undo();
    EXPECT_EQ(moved(), 0) << "they were right when they were compared";

    const platform::Task stopped = controller_->soundComparison().compare({clips.front()}, result);
    stopped.requestStop();
    finish(stopped);
    EXPECT_FALSE(controller_->soundComparison().progress());
    EXPECT_EQ(controller_->soundComparison().latest().compared(), 8U) << "that of the last one that ended";
}

TEST_F(WorkDoubtsTest, ListeningSaysWhatItFoundWithoutAnyMatch) {
    // The camera's microphone hears the take from the sixth second on.
    const auto take = soundOf(1);
    const auto begin = take.begin() + 6 * rate;
    const MediaAsset recording = write(test::audio("T", "", 25), take);
    const auto clip = write(test::video("A", "", 12), {begin, begin + 12 * rate});
    const auto silent = write(test::video("B", "", 12), std::vector<float>(12 * rate));
    for (const auto& [videos, said] :
         {std::pair(std::vector{clip, silent},
                    "For 2 clips the camera's sound was looked for in recordings that "
                    "may belong to it, and found for 1 clip."),
          std::pair(std::vector{silent},
                    "For 1 clip the camera's sound was looked for in recordings that may "
                    "belong to it, and found nowhere."),
          std::pair(std::vector{test::video("C", "", 12)}, "There is nothing to listen to")}) {
        controller_->openStoredWork(
            {{}, {}, SyncEngine().match(videos, {recording}, MatchRules()), {WildTrack(recording)}});
        const platform::Task listening = controller_->listenForDoubts();
        EXPECT_EQ(listening.isDone(), !controller_->derivedDoubts().listening())
            << "it can be seen and stopped";
        finish(listening);
        const std::string told =
            heardText(controller_->derivedDoubts().listened(), {}, DoubtsAfterListening::none);
        EXPECT_TRUE(told.starts_with(said)) << told;
        if (videos.size() == 1) continue;
        finish(controller_->derivedDoubts().derive());
        const auto doubts = ResultsViewModel(*controller_).doubts();
        const auto offered = std::ranges::find_if(doubts, [](const ResultsViewModel::Doubt& one) {
            return !one.cure.steps.empty() && one.cure.steps.front().command == "applySuggestions";
        });
        ASSERT_NE(offered, doubts.end());
        std::vector<UUID> all;
        for (const SyncGroup& group : controller_->work().syncGroups()) all.push_back(group.id);
        carryOut(*controller_, undoSteps::applySuggestions,
                 suggestedDecisions(WorkSnapshot(*controller_), all));
        const SyncGroup* found = controller_->work().syncGroups().find(offered->groupIDs.front());
        ASSERT_EQ(found->audioMatches.size(), 1U);
        EXPECT_EQ(found->video.filename, "A");
        EXPECT_NEAR(found->audioMatches.front().syncOffsetSeconds + found->manualAudioOffsetSeconds, -6,
                    0.05);
        EXPECT_TRUE(suggestedDecisions(WorkSnapshot(*controller_), all).empty()) << "each has a decision";
    }
}

/// The clock of the second camera is an hour ahead; its last clip has no recording.
TEST_F(WorkDoubtsTest, TheClipsOfOneCardGetTheSoundOfItsOffsetInOneStep) {
    std::vector<MediaAsset> clips, recordings;
    const auto two = [](int value) { return (value < 10 ? "0" : "") + std::to_string(value); };
    const auto at = [&](int seconds) {
        return two(10 + seconds / 3600) + ":" + two(seconds / 60 % 60) + ":" + two(seconds % 60) + ":00";
    };
    int number = 0;
    for (const int start : {15, 137, 301, 433, 610, 900}) {
        const std::string name = std::to_string(++number);
        clips.push_back(test::video("B/B00" + name + ".mov", at(3600 + start + 3), 40));
        if (start == 900) continue;
        clips.push_back(test::video("A/A00" + name + ".mov", at(start), 40));
        recordings.push_back(test::audio("S/T" + name + ".wav", at(start - 10), 70));
    }
    controller_->openStoredWork({{}, {}, SyncEngine().match(clips, recordings, MatchRules())});
    finish(controller_->derivedDoubts().derive());
    const auto doubts = ResultsViewModel(*controller_).doubts();
    const auto offered = std::ranges::find_if(
        doubts, [](const ResultsViewModel::Doubt& one) { return !one.cure.steps.empty(); });
    ASSERT_NE(offered, doubts.end());
    const CureStep step = offered->cure.steps.front();
    EXPECT_EQ(step.button, "Move Sound 01:00:00:00 for 5 clips");
    EXPECT_EQ(offered->cure.text, "move all sound by 01:00:00:00 for these clips alone");
    const SyncGroupList before = controller_->work().syncGroups();
    const UUID locked = offered->groupIDs.front();
    EXPECT_EQ(DoubtsPart::of(*controller_, *before.find(locked)).doubts.front().steps, std::vector{step});

    controller_->clips().toggleLocked(locked);
    commands::CommandContext context;
    context.controller = controller_;
    const commands::Command& command = commands::command(step.command);
    JSON arguments = step.arguments;
    for (const SyncGroup& group : before)
        if (group.video.filename == "B006.mov") {
            JSON::Array ids = *arguments.find("groupIDs")->elements();
            if (std::ranges::find(ids, JSON(group.id.text())) == ids.end()) ids.emplace_back(group.id.text());
            arguments.set("groupIDs", JSON(std::move(ids)));
        }
    const auto answer = std::make_shared<JSON>();
    finish(command.whenDone(context, commands::Call(command, &arguments), answer));
    EXPECT_EQ(answer->find("changedClips")->integer(), 4);
    EXPECT_EQ(answer->find("withoutSound")->elements()->size(), 1U);
    for (const SyncGroup& group : controller_->work().syncGroups()) {
        if (group.video.filename.front() == 'A') continue;
        const bool isLeft = group.id == locked || group.video.filename == "B006.mov";
        ASSERT_EQ(group.isMOS(), isLeft) << group.video.filename;
        if (isLeft) continue;
        EXPECT_EQ(group.primaryAudio()->filename.substr(1, 1), group.video.filename.substr(3, 1));
        EXPECT_NEAR(group.audioMatches.front().syncOffsetSeconds + group.manualAudioOffsetSeconds, -13, 0.01);
    }
    controller_->undo();
    EXPECT_EQ(controller_->work().unmatchedCount(), 6) << "in one step";
}

/// Two units whose sound folders were exchanged. Each clip has its own recording, that of a bag recorder of
/// the same unit and the end of the other unit's.
TEST_F(WorkDoubtsTest, ANamedRecordingIsChosenWithoutThoseOfAnotherUnit) {
    std::vector<MediaAsset> clips, recordings;
    const auto time = [](int second) {
        const std::string seconds = std::to_string(second % 60);
        return "10:0" + std::to_string(second / 60) + ":" + (seconds.size() < 2 ? "0" : "") + seconds + ":00";
    };
    for (int i = 0; i < 4; ++i)
        for (const bool isOfA : {true, false}) {
            const std::string number = (isOfA ? "A" : "B") + std::to_string(i);
            const int start = 10 + 60 * i + (isOfA ? 0 : 14);
            clips.push_back(
                test::video(std::string(isOfA ? "U1" : "U2") + "/CAM/" + number + ".mov", time(start), 12));
            for (const char* recorder : {"/SOUND/T", "/SOUND_BAG/L"})
                recordings.push_back(test::audio(
                    (isOfA ? "U2" : "U1") + std::string(recorder) + number + ".wav", time(start - 5), 30));
        }
    controller_->openStoredWork({{}, {}, SyncEngine().match(clips, recordings, MatchRules())});
    std::vector<ReviewLine> lines = reviewLines(WorkSnapshot(*controller_));
    for (ReviewLine& line : lines) {
        const std::string clip = *line[ReviewColumn::cameraFile];
        line[ReviewColumn::choice] = "T" + clip.substr(clip.find('.') - 2, 2) + ".wav";
    }
    const auto chosen = readDecisions(WorkSnapshot(*controller_), lines).decisions;
    EXPECT_EQ(chosen.size(), 8U) << "also those of which it is the first one";
    carryOut(*controller_, undoSteps::applyReview, chosen);
    for (const SyncGroup& group : controller_->work().syncGroups()) {
        EXPECT_EQ(group.matchStatus, MatchStatus::manual());
        ASSERT_EQ(group.audioMatches.size(), 2U) << group.video.filename;
        const std::string clip = group.video.filename.substr(0, 2);
        EXPECT_EQ(group.primaryAudio()->filename, "T" + clip + ".wav");
        EXPECT_EQ(group.audioMatches[1].audio->filename, "L" + clip + ".wav");
    }
    EXPECT_TRUE(readDecisions(WorkSnapshot(*controller_), lines).decisions.empty()) << "each has it";

    lines = reviewLines(WorkSnapshot(*controller_));
    for (std::size_t i = 0; i < lines.size(); ++i)
        lines[i][ReviewColumn::choice] = i < 4 ? "only 2" : "Only 1";
    carryOut(*controller_, undoSteps::applyReview,
             readDecisions(WorkSnapshot(*controller_), lines).decisions);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const SyncGroup& group = controller_->work().syncGroups()[i];
        EXPECT_EQ(group.matchStatus, MatchStatus::manual());
        EXPECT_EQ(group.audioMatches.size(), 1U);
        EXPECT_EQ(group.primaryAudio()->filename.front(), i < 4 ? 'L' : 'T');
    }
    EXPECT_TRUE(readDecisions(WorkSnapshot(*controller_), lines).decisions.empty());

    controller_->openStoredWork(
        {{}, {}, SyncEngine().match({clips.front()}, {recordings.front()}, MatchRules())});
    lines = reviewLines(WorkSnapshot(*controller_));
    const auto decided = [&](const char* choice) {
        lines.front()[ReviewColumn::choice] = choice;
        return readDecisions(WorkSnapshot(*controller_), lines).decisions;
    };
    EXPECT_TRUE(decided("1").empty()) << "as matching gave it";
    carryOut(*controller_, undoSteps::applyReview, decided("only 1"));
    EXPECT_EQ(controller_->work().syncGroups().front().matchStatus, MatchStatus::manual());
    EXPECT_TRUE(decided("only 1").empty());
}

TEST_F(WorkDoubtsTest, AreKeptByAMarkOnAClipWithoutARecording) {
    controller_->openStoredWork({{},
                                 {},
                                 SyncEngine().match({test::video("A.mov", "10:00:00:00", 60)},
                                                    {test::audio("T.wav", "09:59:50:00", 90),
                                                     test::audio("U.wav", "10:00:50:00", 90)},
                                                    MatchRules())});
    const UUID clip = controller_->work().syncGroups().front().id;
    const ResultsViewModel results(*controller_);
    ASSERT_EQ(kinds(), std::vector{Kind::ambiguous});
    controller_->clips().toggleApproved(clip);
    EXPECT_EQ(kinds(), std::vector{Kind::ambiguous});
    controller_->clips().toggleLocked(clip);
    EXPECT_EQ(kinds(), std::vector{Kind::ambiguous});
    ASSERT_EQ(results.doubts().size(), 1U);
    EXPECT_TRUE(results.doubts().front().cure.steps.empty()) << "what passes over locked clips is no cure";
    controller_->clips().toggleExcludedFromExport(clip);
    EXPECT_EQ(kinds(), std::vector<Kind>{}) << "left out by decision";
}

TEST_F(WorkDoubtsTest, FindTheirClipsInTheListAndLeaveThemWithTheDoubt) {
    MediaAsset later = test::video("B_260102.mov", "08:00:00:00"),
               early = test::video("A_260101.mov", "10:00:00:00", 60);
    controller_->openStoredWork(
        {{},
         {},
         SyncEngine().match({later, early}, {test::audio("T_260101.wav", "09:59:50:00", 50)}, MatchRules())});
    ResultsViewModel results(*controller_);
    const auto files = [&] {
        std::string all;
        for (std::size_t i = 0; i < results.rowCount(); ++i)
            all += results.videoURL(i).path.substr(results.videoURL(i).path.rfind('/') + 1, 1);
        return all;
    };
    finish(controller_->derivedDoubts().derive());
    using Filter = ResultsViewModel::Filter;
    const auto listed = [&](Filter filter) {
        results.setFilter(filter);
        return files();
    };
    results.setSorting(ResultsViewModel::Column::starts, true);
    EXPECT_EQ(listed(Filter::all), "AB") << "by day first";
    EXPECT_EQ(listed(Filter::issues), "B");
    EXPECT_NE(results.row(0).doubts, "") << "why it has no sound";
    EXPECT_FALSE(results.row(0).isAnalysed);
    EXPECT_EQ(listed(Filter::doubtful), "A");
    EXPECT_EQ(results.counts(), (ResultsViewModel::Counts{2, 1, 1, 1}));
    for (const SyncGroup& group : SyncGroupList(controller_->work().syncGroups()))
        if (group.isMOS()) controller_->clips().toggleLocked(group.id);
    EXPECT_EQ(listed(Filter::issues), "") << "locked as without sound, which is a decision";
    EXPECT_EQ(results.counts().issues, 0U);
    results.setSorting(ResultsViewModel::Column::marks, true);
    EXPECT_EQ(listed(Filter::all), "AB") << "what is not locked first";
    results.setSorting(ResultsViewModel::Column::marks, false);
    EXPECT_EQ(files(), "BA");
    EXPECT_EQ(listed(Filter::doubtful), "A");
    controller_->changeSetting(undoSteps::setTrimMode, settings::trimMode, TrimMode::overlap);
    finish(controller_->derivedDoubts().derive());
    EXPECT_EQ(files(), "") << "a list of doubts follows them";
}

TEST_F(WorkDoubtsTest, TheFirstCameraOfARecordingFoldsTheOthersAway) {
    const MediaAsset sound = test::audio("T.wav");
    SyncGroupList cameras;
    for (const char* name : {"A.mov", "B.mov", "C.mov"}) cameras.append(test::clip(test::video(name), sound));
    controller_->openStoredWork({{}, {}, cameras});
    ResultsViewModel results(*controller_);
    const auto foldable = [&] {
        std::vector<std::size_t> all;
        for (std::size_t i = 0; i < results.rowCount(); ++i) all.push_back(results.row(i).foldable);
        return all;
    };
    EXPECT_EQ(foldable(), (std::vector<std::size_t>{2, 0, 0}));
    std::vector<std::size_t> painted;
    const auto following =
        results.onChange([&](const ResultsViewModel::Change& change) { painted = change.rows; });
    controller_->clips().toggleApproved(results.groupID(1));
    EXPECT_EQ(painted, (std::vector<std::size_t>{1}));
    controller_->clips().toggleExcludedFromExport(results.groupID(1));
    EXPECT_EQ(painted, (std::vector<std::size_t>{0, 1, 2})) << "the cameras that remain have other names";
    results.setSorting(ResultsViewModel::Column::starts, true);
    controller_->clips().toggleApproved(results.groupID(1));
    EXPECT_EQ(painted, (std::vector<std::size_t>{1})) << "sorted";
    controller_->clips().toggleExcludedFromExport(results.groupID(1));
    EXPECT_EQ(painted.size(), 3U);
    results.toggleFolded(0);
    EXPECT_EQ(foldable(), (std::vector<std::size_t>{2}));
    EXPECT_EQ(results.order().size(), 3U);
}

TEST_F(WorkDoubtsTest, MenuShowsSoundOfAnotherDayLast) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    open(test::video("A_240517.mov"), test::audio("Z_240517.wav"));
    SyncGroup menu(test::video("B.mov"), {AudioMatch(test::audio("A_240518.wav"), 0, 1)},
                   MatchStatus::manual());
    menu.audioMatches.emplace_back(test::audio("B.wav"), 0, 1);
    menu.audioMatches.emplace_back(test::audio("C_240517.wav"), 0, 1);
    const SyncGroup clip = controller_->work().syncGroups().front();
    controller_->openStoredWork({{}, {}, SyncGroupList({clip, menu})});
    const auto names = [&](const UUID& id) {
        std::string text;
        for (const MediaAsset& audio : controller_->recordings().rawFilesAvailableToAttach(id))
            text += audio.filename + " ";
        return text;
    };
    EXPECT_EQ(names(clip.id), "B.wav C_240517.wav A_240518.wav ");
    const auto choices = [&](const UUID& id) { return recordingCandidates(controller_->work(), id).size(); };
    EXPECT_EQ(choices(menu.id), 3U);
    EXPECT_EQ(choices(clip.id) + choices(UUID::random()), 0U);
    controller_->clips().toggleLocked(menu.id);
    EXPECT_EQ(choices(menu.id), 0U);

    // Two clips together show that their headers count eight hours ahead.
    SyncGroup evening(test::video("E.mov", "16:30:00:00"), {}, MatchStatus::unmatched());
    evening.video.headerDate = dateFromISO8601("2024-05-18T00:30:00Z");
    menu.video.startTimecodeString = "15:10:00:00";
    menu.video.headerDate = dateFromISO8601("2024-05-17T23:10:00Z");
    controller_->openStoredWork({{}, {}, SyncGroupList({evening, menu})});
    EXPECT_EQ(names(evening.id), "B.wav C_240517.wav A_240518.wav ");
}

TEST_F(WorkDoubtsTest, CorrectionsHoldForEveryMatching) {
    open(test::video("A.mov"), test::audio("T.wav", "11:00:00:00"));
    EXPECT_TRUE(controller_->work().syncGroups().front().isMOS());
    const UUID clip = controller_->work().syncGroups().front().id;
    controller_->openStoredWork(
        {{}, {}, controller_->work().syncGroups(), {}, {}, {.soundOffset = "-01:00:00:00"}});
    controller_->recordings().attachAudioToGroup(clip, test::audio("T.wav", "11:00:02:00"));
    EXPECT_EQ(controller_->work().syncGroups().front().audioMatches.front().syncOffsetSeconds, 2);
    finish(controller_->recordings().resyncClip(clip));
    EXPECT_EQ(controller_->work().syncGroups().front().matchStatus, MatchStatus::matched());
    controller_->reset();
    EXPECT_TRUE(controller_->work().sourceCorrections().isEmpty());
    for (const MatchingDays days : {MatchingDays::automatic, MatchingDays::same}) {
        const SyncGroup early(test::video("A_240517.mov", "00:00:10:00"), {}, MatchStatus::unmatched());
        const WildTrack late(test::audio("T_240516.wav", "23:59:50:00", 60));
        controller_->openStoredWork({{}, {}, SyncGroupList({early}), {late}, {}, {.days = days}});
        finish(controller_->recordings().resyncClip(early.id));
        EXPECT_EQ(controller_->work().syncGroups().front().isMOS(), days == MatchingDays::same);
    }
}

} // namespace
} // namespace orvane
