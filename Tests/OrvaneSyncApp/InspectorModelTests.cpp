#include "ControllerTest.h"

#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncApp/ViewModels/Inspector/ClipParts.h"
#include "OrvaneSyncApp/ViewModels/Inspector/KeyOverview.h"
#include "OrvaneSyncApp/ViewModels/Inspector/OutlineModel.h"
#include "OrvaneSyncApp/ViewModels/Inspector/SoundParts.h"
#include "OrvaneSyncApp/ViewModels/Inspector/SyncPart.h"
#include "OrvaneSyncApp/ViewModels/Inspector/TypedValues.h"
#include "OrvaneSyncApp/ViewModels/Results/ClipDecisions.h"
#include "OrvaneSyncApp/ViewModels/Results/ClipTexts.h"
#include "OrvaneSyncApp/ViewModels/Results/Questions.h"
#include "Support/Assets.h"

#include <algorithm>

namespace orvane::test {
namespace {

/// Two cameras of 12-3, one clip of 12-4 and one without sound.
class InspectorModelTest : public ControllerTest {
  protected:
    InspectorModelTest() {
        MediaAsset three = slated(audio("T3.wav"), "12", "3");
        three.channelCount = 2;
        const MediaAsset four = slated(audio("T4.wav", "11:00:00:00"), "12", "4");
        SyncGroup b = test::clip(video("B001C001_x.mov"), three);
        SyncGroup a = test::clip(video("A001C001_x.mov"), three);
        SyncGroup next = test::clip(video("A001C002_x.mov", "11:00:00:00"), four);
        SyncGroup silent(video("A001C003_x.mov", "12:00:00:00"), {}, MatchStatus::unmatched());
        b_ = b.id, a_ = a.id, next_ = next.id, silent_ = silent.id;
        controller_->openStoredWork({{}, {}, SyncGroupList({b, a, next, silent})});
    }
    const SyncGroup& group(const UUID& id) const { return *controller_->work().syncGroups().find(id); }
    void change(const UUID& id, const std::function<void(SyncGroup&)>& how) {
        std::vector<SyncGroup> groups(controller_->work().syncGroups().begin(),
                                      controller_->work().syncGroups().end());
        how(*std::ranges::find(groups, id, &SyncGroup::id));
        controller_->openStoredWork({{}, {}, SyncGroupList(std::move(groups))});
    }

    UUID b_, a_, next_, silent_;
};

std::vector<std::string> labels(const OutlineModel& outline) {
    std::vector<std::string> all;
    for (std::size_t i = 0; i < outline.rowCount(); ++i) all.push_back(outline.row(i).label);
    return all;
}

TEST_F(InspectorModelTest, theOutlineFollowsTheShootAndStepsOverTakes) {
    OutlineModel outline(*controller_);
    using Labels = std::vector<std::string>;
    ASSERT_EQ(labels(outline), (Labels{"12-3", "12-3 Cam A", "12-3 Cam B", "12-4", "A001C003_x"}));
    EXPECT_FALSE(outline.groupID(0));
    EXPECT_EQ(outline.clipsOf(0), (std::vector{a_, b_}));
    EXPECT_EQ(outline.row(4).certainty, OutlineModel::Certainty::missing);
    EXPECT_EQ(outline.counts().text(), "4 clips\n0 locked") << "one without sound has nothing to choose from";
    controller_->clips().toggleExcludedFromExport(a_);
    for (const UUID& id : {a_, b_, next_, silent_})
        EXPECT_EQ(outline.row(*outline.rowOf(id)).label, exportedName(*controller_, group(id), ""));
    controller_->clips().toggleExcludedFromExport(a_);
    change(silent_, [](SyncGroup& clip) { clip.matchStatus = MatchStatus::ambiguous(2); });
    EXPECT_EQ(outline.counts().text(), "4 clips\n0 locked · 1 to decide");

    EXPECT_EQ(outline.neighbour(b_, 1), next_);
    EXPECT_EQ(outline.neighbour(next_, -2), a_);
    EXPECT_FALSE(outline.neighbour(silent_, 1));
    outline.toggleFolded(0);
    EXPECT_EQ(labels(outline), (Labels{"12-3", "12-4", "A001C003_x"}));
    EXPECT_EQ(outline.rowOf(b_), 0U);
    EXPECT_EQ(outline.neighbour(a_, 1), b_) << "folding a take does not hide it from the keys";
    outline.showOnly(std::vector{silent_, b_});
    EXPECT_EQ(labels(outline), (Labels{"A001C003_x", "12-3"})) << "in that order, still folded";
    EXPECT_EQ(outline.neighbour(silent_, 1), b_);
    EXPECT_EQ(outline.counts().text(), "2 of 4 clips\n0 locked · 1 to decide");
    outline.showOnly(std::nullopt);
    outline.setSearch("a001c00 12");
    EXPECT_EQ(labels(outline), (Labels{"12-3", "12-4"})) << "the take of which one camera is found";
    EXPECT_EQ(outline.row(0).facts, "1 of 2 cameras");
    EXPECT_EQ(outline.neighbour(silent_, 1), a_) << "from a clip that is not shown to the first that is";
    controller_->clips().setManualClipName(next_, "Hero");
    outline.setSearch("12-4");
    EXPECT_EQ(labels(outline), Labels{"Hero"}) << "by the name of before";
}

/// Takes 1 and 3 by two cameras, take 2 by the second only, and clips without a take, which have no sound.
TEST_F(InspectorModelTest, theOutlineKeepsTheOrderOfTheShoot) {
    struct Listed {
        const char *camera, *start, *take;
    };
    const auto outlineOf = [&](const std::vector<Listed>& shot) {
        std::vector<SyncGroup> clips;
        for (const auto& [camera, start, take] : shot) {
            const MediaAsset picture = video(std::string(camera) + "_x.mov", start);
            const std::string sound = std::string("T") + take + ".wav";
            clips.push_back(*take == 0 ? SyncGroup(picture, {}, MatchStatus::unmatched())
                                       : test::clip(picture, slated(audio(sound), "5", take)));
        }
        controller_->openStoredWork({{}, {}, SyncGroupList(std::move(clips))});
        OutlineModel outline(*controller_);
        std::string rows;
        for (const std::string& label : labels(outline))
            if (label.find("Cam") == std::string::npos) rows += label.substr(0, label.find('_')) + " ";
        // The list of results has the same order of clips.
        ResultsViewModel results(*controller_);
        for (std::size_t i = 0; i < results.rowCount(); ++i)
            EXPECT_EQ(outline.placeInList(results.groupID(i))->number, i + 1);
        return rows;
    };
    const Listed one{"A001C001", "10:00:00:00", "1"}, three{"A001C003", "10:30:00:00", "3"},
        silent{"A001C004", "10:50:00:00", ""};
    EXPECT_EQ(outlineOf({one,
                         three,
                         silent,
                         {"B001C001", "10:00:00:00", "1"},
                         {"B001C002", "10:10:00:00", "2"},
                         {"B001C003", "10:20:00:00", ""},
                         {"B001C004", "10:30:00:00", "3"},
                         {"B001C005", "10:40:00:00", ""},
                         {"B001C006", "10:55:00:00", ""}}),
              "5-1 5-2 B001C003 5-3 B001C005 A001C004 B001C006 ");
    EXPECT_EQ(outlineOf({one, three, {"B001C001", "09:00:00:00", ""}, {"B001C002", "10:30:00:00", "3"}}),
              "B001C001 5-1 5-3 ")
        << "before the first row of its camera";
    EXPECT_EQ(outlineOf({one, three, {"B001C001", "10:10:00:00", ""}, {"B001C002", "10:20:00:00", ""}}),
              "5-1 5-3 B001C001 B001C002 ")
        << "no row in common";
    EXPECT_EQ(outlineOf({{"A001_Epsilon_240517", "09:50:00:00", ""},
                         {"A001_Zeta_240517", "09:10:00:00", ""},
                         {"A001C007_240516", "23:00:00:00", ""},
                         {"A001C008_240517", "09:30:00:00", ""}}),
              "A001C007 A001 A001C008 A001 ")
        << "a camera whose names do not count goes by its clock";
}

TEST_F(InspectorModelTest, theOutlinePaintsOnlyWhatChanged) {
    OutlineModel outline(*controller_);
    std::vector<std::size_t> rows;
    bool isLayout = false;
    const auto following = outline.onChange([&](const ResultsViewModel::Change& change) {
        rows = change.rows;
        isLayout = change.isLayoutChanged;
    });
    controller_->clips().toggleLocked(b_);
    EXPECT_FALSE(isLayout);
    EXPECT_EQ(rows, (std::vector<std::size_t>{0, 2})) << "the clip, and the take that counts it";
    EXPECT_TRUE(outline.row(2).isLocked);
    EXPECT_FALSE(outline.row(0).isLocked) << "not every camera is";
    controller_->clips().setManualClipName(next_, "Hero");
    EXPECT_TRUE(isLayout);
    EXPECT_EQ(outline.row(3).label, "Hero");
}

TEST(TypedValuesTest, takesWhatPeopleTypeAndSaysWhatIsWrong) {
    struct Case {
        const char* typed;
        std::optional<double> frames, seconds;
    };
    for (const Case& one : {Case{"+3", 0.12, 3},
                            {" -12 f", -0.48, {}},
                            {"−5", -0.2, -5},
                            {"0,5", {}, 0.5},
                            {"1.5 s", {}, 1.5},
                            {"", {}, {}},
                            {"abc", {}, {}},
                            {"1e9", {}, {}},
                            {"nan", {}, {}}}) {
        const TypedNumber frames = offsetFromFrames(one.typed, 25, 86400);
        const TypedNumber seconds = offsetFromSeconds(one.typed, 86400);
        EXPECT_EQ(frames.value, one.frames) << one.typed;
        EXPECT_EQ(seconds.value, one.seconds) << one.typed;
        EXPECT_EQ(frames.problem.empty(), frames.value.has_value()) << one.typed;
        EXPECT_EQ(seconds.problem.empty(), seconds.value.has_value()) << one.typed;
    }
    EXPECT_NEAR(*offsetFromFrames("24", 23.976, 86400).value, 1.001, 1e-9) << "24000/1001, not 23.976";
    EXPECT_EQ(gainFromText("-3,5 dB", -60, 40).value, -3.5);
    EXPECT_FALSE(gainFromText("41", -60, 40).value);
}

TEST_F(InspectorModelTest, aScanThatRenamesLockedClipsNamesThem) {
    controller_->clips().toggleLocked(a_);
    const WorkFiles before = controller_->recordings().workFiles();
    WorkFiles now = before;
    SyncGroup sameName(video("other/A001C001_x.mov"), group(a_).audioMatches, MatchStatus::matched());
    now.groups.append(sameName);
    const NamingRules rules = NamingRules::of(*settings_);
    EXPECT_EQ(RenamedClips::of(before, now, rules).text(),
              "The name of a locked clip changed from “12-3 Cam A” to “12-3 Cam A media”.");
    EXPECT_EQ(RenamedClips::of(before, before, rules).text(), "");
}

TEST_F(InspectorModelTest, syncSaysWhatTheClipHasAndWhatWasLocked) {
    change(a_, [](SyncGroup& own) { own.audioMatches.front().syncOffsetSeconds = 1.5; });
    controller_->clips().adjustAudioOffset(a_, -0.08);
    controller_->clips().toggleLocked(a_);
    SyncPart part = SyncPart::of(group(a_), 25);
    EXPECT_EQ(part.offsetFrames, "-2");
    EXPECT_EQ(part.begins, "Sound begins 1.420 s after picture");
    EXPECT_EQ(part.anchorHint, "Unlock sync to move the clap point");
    controller_->clips().adjustAudioOffset(a_, 0.04); // in a locked clip the keys still move the sound
    part = SyncPart::of(group(a_), 25);
    const auto isAmber = [&](const auto& list) {
        for (std::size_t i = 0; i < list.rowCount(); ++i)
            if (const auto row = list.row(i); list.groupID(i) == a_)
                return row.isMovedSinceLock && row.certainty == OutlineModel::Certainty::doubtful;
        return false;
    };
    EXPECT_TRUE(isAmber(OutlineModel(*controller_)) && isAmber(ResultsViewModel(*controller_)));
    EXPECT_EQ(movedSinceLockText(group(a_), 25), "moved since locked: -2f to -1f");
    EXPECT_EQ(movedText(group(a_), 25), "moved to -1f");
    EXPECT_EQ(part.wholeFrames, "");
    controller_->clips().adjustAudioOffset(a_, 0.013);
    EXPECT_EQ(SyncPart::of(group(a_), 25).wholeFrames, "The document takes whole frames: +0.");
    controller_->clips().adjustAudioOffset(a_, -0.013);
    EXPECT_EQ(part.whyNoUpdate, part.anchorHint);
    controller_->clips().toggleLocked(a_);
    controller_->clips().setAudioAnchor(a_, 0.5); // the sound begins 1.46 s after the picture
    part = SyncPart::of(group(a_), 25);
    EXPECT_EQ(part.anchor, "Clap point 0.500 s into the recording");
    EXPECT_EQ(part.whyNoGoTo + part.whyNoUpdate + part.whyNoClear + part.whyNoCheck, "");
    controller_->clips().adjustAudioOffset(a_, -3);
    part = SyncPart::of(group(a_), 25);
    EXPECT_EQ(part.anchor, "No clap within the picture: the clap point is 1.040 s before its start");
    EXPECT_EQ(part.whyNoCheck, part.whyNoGoTo);
    change(silent_, [](SyncGroup& own) { own.audioAnchorOffsetInAudioSeconds = 1; });
    EXPECT_EQ(SyncPart::of(group(silent_), 25).updateAnchor, "Set Clap Point") << "its recording was removed";
    EXPECT_EQ(SyncPart::of(group(silent_), 25).whyNoUpdate, "The clip has no sound.");
    controller_->clips().toggleLocked(silent_);
    EXPECT_TRUE(SyncPart::of(group(silent_), 25).begins.ends_with("unlock it to attach a recording."));

    controller_->recordings().attachAudioToGroup(next_, audio("Other.wav", "11:00:00:00"));
    controller_->clips().toggleLocked(next_);
    EXPECT_TRUE(SyncPart::of(group(next_), 25).begins.ends_with("\n2 recordings, all in the document"));
    OutlineModel outline(*controller_);
    EXPECT_EQ(outline.row(*outline.rowOf(next_)).facts, "2 recordings") << "also once it is locked";
    EXPECT_EQ(outline.row(*outline.rowOf(b_)).facts, "B001C001_x.mov");

    MediaAsset slow = video("S.mov");
    slow.sensorFrameRate = 47.952;
    slow.projectFrameRate = 23.976;
    const SensorPart sensor = SensorPart::of(SyncGroup(slow, {}, MatchStatus::unmatched()));
    EXPECT_EQ(sensor.reset, "Reset to detected (25)");
    EXPECT_EQ(sensor.rates.size(), SensorPart::offered.size() + 1) << "the rate of the file can be seen";
    EXPECT_EQ(sensor.speed, "47.952 fps in a project of 23.976 fps: 2 times slower");
}

TEST_F(InspectorModelTest, recordingsCanBeChosenAndAttached) {
    MediaAsset other = audio("OTHER.wav");
    change(a_, [&](SyncGroup& own) {
        own.audioMatches.emplace_back(other, 0, 60);
        own.matchStatus = MatchStatus::ambiguous(2);
    });
    RecordingsPart part = RecordingsPart::of(*controller_, group(a_));
    ASSERT_EQ(part.recordings.size(), 2U);
    EXPECT_TRUE(part.isAmbiguous && part.hasChoice());
    EXPECT_EQ(part.recordings[1].files.front().name, "OTHER.wav");
    EXPECT_TRUE(part.prompt.starts_with("2 recordings could belong to this clip.")) << part.prompt;
    controller_->clips().toggleLocked(a_);
    part = RecordingsPart::of(*controller_, group(a_));
    EXPECT_FALSE(part.hasChoice());
    EXPECT_EQ(part.prompt, "Unlock sync to choose: ⟨lockCurrent⟩ first.");

    controller_->recordings().removeAudioMatch(next_, group(next_).audioMatches.front().id);
    const auto offered = attachableTo(*controller_, a_);
    ASSERT_EQ(offered.size(), 1U);
    EXPECT_EQ(offered.front().label, "T4.wav  ·  on no clip");
    EXPECT_EQ(offered.front().start, "11:00:00:00");
    EXPECT_NEAR(*offered.front().fromClip, 3600 - *group(a_).video.durationSeconds, 1e-6);
    const auto nearest = attachableTo(*controller_, b_);
    ASSERT_EQ(nearest.size(), 2U);
    EXPECT_EQ(nearest.front().audio.filename, "OTHER.wav") << "before the wild track, which is far away";
    EXPECT_EQ(nearest.front().fromClip, 0);
    SyncDoubt anHourOff;
    anHourOff.cure = DoubtCure(CureOption::Kind::soundOffset, "-01:00:00:00");
    const auto suggested = attachableTo(*controller_, b_, {anHourOff});
    EXPECT_EQ(suggested.front().audio.filename, "T4.wav") << "under the clip once the offset is taken off";
    EXPECT_FALSE(suggested.back().isSuggested);

    EXPECT_FALSE(RecordingsPart::of(*controller_, group(b_)).isOutside);
    controller_->clips().adjustAudioOffset(b_, -3600);
    EXPECT_TRUE(RecordingsPart::of(*controller_, group(b_)).prompt.ends_with("P moves the sound there."));
    controller_->clips().resetAudioOffset(b_);
    change(b_,
           [&](SyncGroup& own) { own.audioMatches.emplace_back(slated(audio("T1.wav"), "12", "3"), 0, 60); });
    part = RecordingsPart::of(*controller_, group(b_));
    ASSERT_EQ(part.recordings.size(), 1U);
    EXPECT_EQ(part.recordings[0].title, "T1.wav + 1 file");
    EXPECT_EQ(part.recordings[0].files.front().name, "T1.wav")
        << "its title names the file that stands first";
}

TEST_F(InspectorModelTest, channelsAndLoudnessSayWhatIsHeard) {
    ChannelsPart part = ChannelsPart::of(*controller_, group(a_));
    ASSERT_EQ(part.channels.size(), 2U);
    EXPECT_TRUE(part.channels[0].isActive && part.channels[1].isActive) << "without a choice all are heard";
    EXPECT_FALSE(questionBeforeAnalysis(controller_->work().syncGroups()));
    finish(controller_->tracks().toggleTrackActive(a_, 1));
    const auto question = questionBeforeAnalysis(controller_->work().syncGroups());
    ASSERT_TRUE(question) << "an analysis could take the choice away";
    EXPECT_TRUE(question->text.starts_with("1 clip have channels you set by hand.")) << question->text;
    part = ChannelsPart::of(*controller_, group(a_));
    EXPECT_FALSE(part.channels[0].isActive);
    EXPECT_TRUE(part.channels[1].isActive && part.isChosenByHand);
    EXPECT_EQ(part.summary, "Tracks chosen by hand");

    const auto target = MasterGain::Target::fromUserDefaults(*settings_);
    EXPECT_FALSE(LoudnessPart::of(group(a_), target, SmartAudioPredictor()).isMeasured);
    change(a_, [](SyncGroup& own) { own.measuredLUFS = -31.2, own.masterGainDB = 12.5; });
    const LoudnessPart loud = LoudnessPart::of(group(a_), target, SmartAudioPredictor());
    EXPECT_EQ(loud.source, "-31 LUFS");
    EXPECT_EQ(loud.gain, "+12.5 dB");
    EXPECT_FALSE(loud.warning.empty()) << "above 12 dB it may clip";
    EXPECT_NE(loud.estimation, "");
}

TEST_F(InspectorModelTest, namesMetadataAndDoubtsReadAsInTheWindow) {
    EXPECT_EQ(exportedName(*controller_, group(b_), "Hero"), "Hero Cam B");
    EXPECT_EQ(exportedName(*controller_, group(b_), " "), "12-3 Cam B");
    EXPECT_EQ(NameChange::of(*controller_, group(b_), "Hero").othersText(), "");
    const auto takeFile = [&](const char* path, const char* name) {
        change(next_, [&](SyncGroup& own) { own.video.url.path = path, own.video.filename = name; });
    };
    const std::string path = group(next_).video.url.path;
    takeFile("/CARD_2/A001C001_x.mov", "A001C001_x.mov"); // two cameras, by their folders
    const NameChange renamed = NameChange::of(*controller_, group(next_), "12-3 Cam A");
    EXPECT_EQ(renamed.others, 1U);
    EXPECT_TRUE(renamed.othersText().starts_with("The name of another clip changes from “12-3 Cam A” to “"))
        << renamed.othersText() << renamed.exported;
    takeFile(path.c_str(), "A001C002_x.mov");
    const MetadataPart before = MetadataPart::of(*controller_, group(next_));
    change(next_, [](SyncGroup& own) {
        own.aleMetadata = {{"Lens", "32mm"}, {"Comments", "boom in frame"}};
        own.audioMatches.front().audio.edit().ixmlData->note = "plane";
    });
    const MetadataPart metadata = MetadataPart::of(*controller_, group(next_));
    ASSERT_EQ(metadata.sources.size(), 1U);
    EXPECT_EQ(metadata.sources[0].clearCommand, "clearALEMetadata");
    EXPECT_FALSE(metadata == before);
    EXPECT_EQ(std::ranges::count(metadata.files, std::pair<std::string, std::string>("Recording", "T4.wav")),
              1);
    const NotesPart notes = NotesPart::of(*controller_, group(next_));
    using Notes = std::vector<std::pair<std::string, std::string>>;
    EXPECT_EQ(notes.notes, (Notes{{"Sound recordist", "plane"}, {"Report, Comments", "boom in frame"}}));
    EXPECT_FALSE(notes.isSearched);

    change(a_, [](SyncGroup& own) {
        own.audioMatches.emplace_back(audio("OTHER.wav"), 0, 60);
        own.matchStatus = MatchStatus::ambiguous(2);
        own.video.durationSeconds = 60;
    });
    finish(controller_->derivedDoubts().derive());
    const DoubtsPart doubts = DoubtsPart::of(*controller_, group(a_));
    ASSERT_FALSE(doubts.doubts.empty());
    for (const auto& doubt : doubts.doubts) {
        EXPECT_EQ((doubt.message + doubt.cure).find("--"), std::string::npos) << doubt.message << doubt.cure;
        EXPECT_TRUE(std::ranges::none_of(doubt.steps, &CureStep::scansAgain)) << "there is no folder to scan";
    }
}

TEST(DoubtsPartTest, twoDoubtsWithTheSameStepHaveOneButton) {
    const CureStep trim{"Trim", "setSetting", {}, true}, move{"Move", "setSetting", {}, true};
    std::vector<DoubtsPart::Doubt> doubts{{"gap", "", {trim, move}}, {"end", "", {trim}}, {"other", "", {}}};
    DoubtsPart::keepLastSteps(doubts);
    EXPECT_EQ(doubts[0].steps, std::vector{move});
    EXPECT_EQ(doubts[1].steps, std::vector{trim});
}

TEST(KeyOverviewTest, greysWhatDoesNothing) {
    using enum ShortcutAction;
    const auto row = [](const ReviewSituation& now, ShortcutAction action,
                        const ShortcutBindings& bindings = defaultBindings()) {
        for (const KeyGroup& group : keyOverview(bindings, now))
            for (const KeyGroup::Row& one : group.rows)
                if (one.action == action) return one;
        throw std::logic_error("the action is not listed");
    };
    ReviewSituation now{.hasClip = true, .isLoaded = true, .hasSound = true, .isLocked = true};
    EXPECT_TRUE(row(now, nudgePeriodPlus).acts) << "a lock leaves the nudges";
    EXPECT_FALSE(row(now, updateClapPoint).acts);
    EXPECT_FALSE(row(now, nextGroup).acts);
    for (const bool isLooping : {false, true}) {
        now.isLooping = isLooping;
        std::vector<std::string> escapes;
        for (const KeyGroup& group : keyOverview(defaultBindings(), now))
            for (const KeyGroup::Row& one : group.rows)
                if (one.key == "Esc") escapes.push_back(one.label);
        EXPECT_EQ(escapes, std::vector<std::string>{isLooping ? "Clear Loop" : "Back to the Results"});
    }
    EXPECT_THROW(row(now, audioOffsetPlus), std::logic_error) << "no key leads there";
    EXPECT_EQ(row(now, nudgePeriodPlus10).key, "Shift+.");
    EXPECT_EQ(row(now, slowMoForward).key, "K held, L");
    EXPECT_FALSE(row({}, playPause).acts);
    std::size_t count = 0;
    for (const KeyGroup& group : multicamKeyOverview(defaultBindings(), 2))
        for (const KeyGroup::Row& one : group.rows) count += one.acts ? 1U : 1000U;
    EXPECT_EQ(count, 16U)
        << "nine that play, two to other takes, two decisions, the camera, the way back, this list";
    auto bindings = defaultBindings();
    bindings[zoomFit] = bindings[playPause];
    EXPECT_FALSE(row(now, zoomFit, bindings).acts) << "another action has its key";
}

TEST(KeyOverviewTest, laysGroupsIntoColumns) {
    std::vector<KeyGroup> groups;
    for (const std::size_t rows : {12U, 4U, 6U, 3U, 4U})
        groups.push_back({"", std::vector<KeyGroup::Row>(rows)});
    for (const auto& [most, columns, lines] : {std::tuple(1, 1, 38), {2, 2, 19}, {3, 3, 13}, {9, 3, 13}}) {
        const KeyColumns positioned = keyColumns(groups, most);
        EXPECT_EQ(positioned.columns, columns) << most;
        EXPECT_EQ(positioned.lines, lines) << most;
    }
}

} // namespace
} // namespace orvane::test
