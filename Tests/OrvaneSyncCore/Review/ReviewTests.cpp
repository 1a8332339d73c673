#include "OrvaneSyncCore/Services/Review/AlternateAudio.h"
#include "OrvaneSyncCore/Services/Review/CardSuggestion.h"
#include "OrvaneSyncCore/Services/Review/ReviewTable.h"
#include "OrvaneSyncCore/Services/Review/SiblingSuggestion.h"
#include "Platform/Stop.h"
#include "Support/Assets.h"
#include "Support/Test.h"

namespace orvane {
namespace {

constexpr double rate = 25;
constexpr double frame = 1 / rate;

SyncGroup camera(const char* name, double offset, const char* take = "3") {
    SyncGroup group = test::clip(test::video(name), test::slated(test::audio("T.wav"), "12", take));
    group.manualAudioOffsetSeconds = offset;
    return group;
}

/// The file name of the sibling that is suggested to the first camera.
std::string suggested(const SyncGroupList& cameras, const std::set<std::string>& dismissed = {},
                      double frameRate = rate) {
    const auto found = activeSiblingSuggestion(cameras.front(), cameras, GroupNaming::Source::sceneTake,
                                               std::nullopt, frameRate, dismissed);
    return found ? found->sibling->video.filename : "";
}

TEST(SiblingSuggestion, comesFromTheFirstSiblingThatWasMoved) {
    SyncGroup excluded = camera("B001C001.mov", 1);
    excluded.isExcludedFromMulticamFlag = true;
    struct Case {
        const char* name;
        SyncGroupList cameras;
        const char* sibling;
    };
    const Case cases[] = {
        {"moved by a frame", {camera("A.mov", 0), camera("B.mov", frame)}, "B.mov"},
        {"moved back", {camera("A.mov", 0), camera("B.mov", -frame)}, "B.mov"},
        {"half a frame is nothing", {camera("A.mov", 0), camera("B.mov", frame / 2)}, ""},
        {"the same offset already", {camera("A.mov", 0.2), camera("B.mov", 0.2)}, ""},
        {"only this clip was moved", {camera("A.mov", 0.2), camera("B.mov", 0)}, ""},
        {"another take", {camera("A.mov", 0), camera("B.mov", 1, "4")}, ""},
        {"an excluded sibling", {camera("A.mov", 0), excluded}, ""},
        {"this clip would lose its sound",
         {camera("A.mov", 0), camera("B.mov", 3600), camera("C.mov", 59)},
         "C.mov"},
        {"this clip has none to lose", {camera("A.mov", -61), camera("B.mov", 3600)}, "B.mov"},
        {"the first that qualifies",
         {camera("A.mov", 0), camera("B.mov", 0), camera("C.mov", 1), camera("D.mov", 2)},
         "C.mov"},
    };
    for (const Case& one : cases) EXPECT_EQ(suggested(one.cameras), one.sibling) << one.name;
    for (const double noRate : {0.0, -25.0}) EXPECT_EQ(suggested(cases[0].cameras, {}, noRate), "");
}

TEST(SiblingSuggestion, isDismissedUntilTheSiblingMovesAgain) {
    SyncGroupList cameras{camera("A.mov", 0), camera("B001C001_x.mov", -1.23456), camera("C.mov", 2)};
    const UUID sibling = cameras[1].id;
    const std::set<std::string> dismissed{sibling.text() + ":-1234"};
    EXPECT_EQ(suggested(cameras), "B001C001_x.mov");
    EXPECT_EQ(suggested(cameras, dismissed), "C.mov");
    cameras.update(sibling, [](SyncGroup& group) { group.manualAudioOffsetSeconds = -1.0; });
    EXPECT_EQ(suggested(cameras, dismissed), "B001C001_x.mov");
    const auto again =
        activeSiblingSuggestion(cameras[0], cameras, GroupNaming::Source::sceneTake, {}, rate, {});
    EXPECT_EQ(again->text(rate), "Cam B was shifted -25f — apply the same to this cam?");
    const SyncGroupList cards{camera("1/A001C001.mov", 0), camera("2/A001C001.mov", 1)};
    const auto card = activeSiblingSuggestion(cards[0], cards, GroupNaming::Source::sceneTake, {}, rate, {});
    EXPECT_EQ(card->text(rate), "Cam A 2 was shifted +25f — apply the same to this cam?");
    EXPECT_EQ((SiblingSuggestion{cameras.element(2), 2, ""}.text(rate)),
              "C.mov was shifted +50f — apply the same to this cam?");
}

/// Clips of a card whose clock is an hour behind; the sound of the first was moved there by hand.
TEST(CardSuggestion, givesTheClipsOfTheCardTheirRecordingsWithTheSameOffset) {
    const auto picture = [](const char* name, const char* start) {
        return SyncGroup(test::video(name, start), {}, MatchStatus::unmatched());
    };
    const std::vector<MediaAsset> sounds{
        test::audio("S/T1.wav", "11:00:00:00"), test::audio("S/T2.wav", "11:10:01:00"),
        test::audio("S/T3.wav", "11:20:00:00"), test::audio("R/T2.wav", "11:10:00:00")};
    std::vector<const MediaAsset*> audios;
    for (const MediaAsset& sound : sounds) audios.push_back(&sound);
    SyncGroup moved = test::clip(test::video("B4/B001C001.mov", "10:00:00:00"), sounds[0]);
    moved.audioMatches.front().syncOffsetSeconds = 3600;
    moved.manualAudioOffsetSeconds = -3600;
    SyncGroup locked = picture("B4/B001C003.mov", "10:20:00:00");
    locked.isLocked = true;
    SyncGroupList groups{moved,
                         picture("B4/B001C002.mov", "10:10:00:00"),
                         locked,
                         picture("B4/B001C004.mov", "10:20:10:00"),
                         picture("B4/C001C005.mov", "10:20:00:00"),
                         picture("B5/B001C006.mov", "10:20:00:00"),
                         picture("B4/B001C007.mov", "10:30:00:00"),
                         picture("B4/B001C008.mov", "10:10:40:00")};
    const auto suggested = [&](std::size_t clip, const std::set<std::string>& dismissed = {}) {
        return activeCardSuggestion(groups[clip], groups, audios, {}, dismissed);
    };
    const auto found = suggested(3);
    ASSERT_TRUE(found && found->clips.size() == 2);
    EXPECT_EQ(found->clips[0].groupID, groups[3].id) << "the one in view is the first";
    EXPECT_EQ(found->clips[1].groupID, groups[1].id);
    EXPECT_EQ(found->clips[1].files.front()->url.path, "/media/S/T2.wav") << "of the same recorder only";
    EXPECT_NEAR(found->clips[1].startSeconds, 1, 1e-6);
    EXPECT_FALSE(suggested(3, {found->dismissKey}));
    for (const std::size_t other : {0, 2, 4, 5, 6, 7}) EXPECT_FALSE(suggested(other)) << other;
    groups.update(moved.id, [](SyncGroup& own) { own.manualAudioOffsetSeconds += 0.04; });
    EXPECT_TRUE(suggested(3, {found->dismissKey}));
    FileNames names;
    names.add(moved.video);
    names.add(sounds[2]);
    EXPECT_EQ(
        found->text(rate, names),
        "The sound of B001C001.mov was shifted -90000f by hand. Shifted as much, T3.wav fits this clip.");
}

TEST(SiblingSuggestion, formatsOffsetsInFrames) {
    struct Case {
        double seconds;
        double frameRate;
        const char* text;
    };
    for (const auto& [seconds, frameRate, text] :
         {Case{-0.5, 24, "-12f"}, Case{0.0004, 24, "+0f"}, Case{-0.0004, 24000, "+0f"},
          Case{0.021, 24, "+1f"}, Case{-0.002, 24, "+0f"}, Case{1, 23.976, "+24f"},
          Case{1e300, 24, "+1000000000000000f"}})
        EXPECT_EQ(formatOffset(seconds, frameRate), text) << seconds;
}

TEST(AlternateAudio, lanesOfAllButTheFirst) {
    SyncGroup group = test::clip(test::video("A.mov"), test::audio("primary.wav"));
    EXPECT_TRUE(alternateAudioLanes(group).empty());
    MediaAsset unknown = test::audio("b.wav");
    unknown.durationSeconds.reset();
    group.audioMatches.emplace_back(test::audio("a.wav", "", 10), -5, 1); // ends at 5
    group.audioMatches.emplace_back(unknown, 4, 1);                       // begins at 4
    group.audioMatches.emplace_back(test::audio("c.wav", "", 10), 5, 1);
    group.audioMatches.emplace_back(test::audio("d.wav", "", -3), 4, 1); // its end is not before its start
    EXPECT_EQ(alternateAudioLanes(group), (std::vector{0, 1, 0, 1}));
}

using enum ReviewColumn;

ReviewLine reviewed(const std::string& file, const std::string& newName) {
    ReviewLine line;
    line[cameraFile] = file;
    line[offsetFrames] = "-3";
    line[name] = newName;
    return line;
}

TEST(ReviewTable, isReadBackFromEverySpreadsheet) {
    for (const char* text : {"=HYPERLINK(\"x\")", "+1", "-A", "@SUM(A1)", "'quoted'", "''", "plain",
                             "a \"b\" c", "\"", "1, 2; 3", "\uff1d1", ""}) {
        const std::string table = writtenReviewTable({reviewed("A001.mov", text)});
        const auto lines = readReviewTable(table);
        ASSERT_EQ(lines.size(), 1U) << table;
        EXPECT_EQ(lines[0][name], text);
        EXPECT_EQ(lines[0][offsetFrames], "-3");
        for (const std::string_view formula : {"\t=", "\t+", "\t@", "\t-A", "\t\"="})
            EXPECT_EQ(table.find(formula), std::string::npos) << table;
    }
    struct Case {
        const char *what, *table;
        std::vector<std::string> names;
    };
    const Case cases[] = {
        {"quoted, with semicolons and CRLF",
         "\"name\";\"camera_file\"\r\n\"x \"\"y\"\"\";\"a.mov\"\r\n",
         {"x \"y\""}},
        {"other columns, other case", "n\tCamera_File\tNAME\tname\n1\ta.mov\tfirst\tsecond\n", {"first"}},
        {"short and empty lines", "camera_file\tskip\tname\n\na.mov\n\t\t\nb.mov\t\tz", {"", "z"}},
        {"more semicolons than tabs",
         "camera_file\tname\na.mov\t1; 2; 3; 4\nb.mov\t;;;\n",
         {"1; 2; 3; 4", ";;;"}},
        {"a line end in a cell", "camera_file,name\na.mov,\"two\nlines\"\n", {"two\nlines"}},
        {"the delimiter in a cell", "name,camera_file\n\"one, two\",a.mov\n", {"one, two"}},
    };
    for (const Case& one : cases) {
        std::vector<std::string> names;
        for (const ReviewLine& line : readReviewTable(one.table))
            names.push_back(line[name].value_or("none"));
        EXPECT_EQ(names, one.names) << one.what;
    }
    for (const char* none : {"", "clip\tname\n", "a.mov\tx\n"})
        EXPECT_THROW(readReviewTable(none), ReviewTableError) << none;
    std::stop_source stopped;
    stopped.request_stop();
    EXPECT_THROW(readReviewTable("camera_file\na.mov", stopped.get_token()), platform::Stopped);
}

TEST(ReviewTable, readsNumbersAndMarksInOtherForms) {
    const std::pair<const char*, std::optional<double>> numbers[] = {
        {"1.0", 1},         {" 2 ", 2},       {"-0,5", -0.5},     {"\u22123", -3},   {"'-4", -4},
        {"+5", 5},          {"", {}},         {"1.2.3", {}},      {"1,234,567", {}}, {"5 frames", {}},
        {"01.02.2026", {}}, {"1,000", {}},    {"-12,500", {}},    {"0,125", 0.125},  {"1,25", 1.25},
        {"-4.497", {}},     {"0.125", 0.125}, {"-4.4970", -4.497}};
    for (const auto& [cell, number] : numbers) EXPECT_EQ(reviewNumber(cell), number) << cell;
    const std::pair<const char*, std::optional<bool>> marks[] = {
        {"x", true}, {" X ", true}, {"TRUE", true}, {"1,0", true}, {"", false}, {"0", false}, {"maybe", {}}};
    for (const auto& [cell, isSet] : marks) EXPECT_EQ(reviewSwitch(cell), isSet) << cell;
    for (const auto& [frames, cell] : {std::pair{3.0, "3"},
                                       {-2.5, "-2.5"},
                                       {1e-9, "0"},
                                       {-1e-9, "0"},
                                       {100.0, "100"},
                                       {-4.497, "-4.4970"}})
        EXPECT_EQ(reviewFrames(frames), cell);
    const std::string cell = numberedRecordings({"a; 3: b.wav", "c.wav + 3 files", "d.wav"});
    EXPECT_EQ(recordingOfNumber(cell, 1), "a; 3: b.wav");
    EXPECT_EQ(recordingOfNumber(cell, 2), "c.wav + 3 files");
    EXPECT_EQ(recordingOfNumber(cell, 3), "d.wav");
    for (const int none : {0, -1, 4}) EXPECT_FALSE(recordingOfNumber(cell, none));
}

TEST(ReviewTable, reportsWhatANewTableWouldLose) {
    const auto lines = [](const std::string& cells) {
        return readReviewTable(
            "camera_file\tstatus\tchoice\toffset_frames\tname\tskip\tnote\tsound\na.mov\t" + cells +
            (cells.ends_with("WAV") ? "" : "\t1: A.WAV; 2: B.WAV"));
    };
    const char *matched = "matched\t1\t0\t\t\t", *open = "ambiguous\t\t0\t\t\t";
    const struct {
        const char *what, *old, *fresh;
        bool isLost;
    } cases[] = {
        {"nothing decided", matched, open, false},
        {"in other forms", "matched\t1.0\t0,0\t\tno\t", open, false},
        {"a note", "matched\t1\t0\t\t\task", matched, true},
        {"a choice", "ambiguous\t2\t0\t\t\t", open, true},
        {"one that was taken over", "ambiguous\t2\t0\t\t\t", "manual\t1\t0\t\t\t\t1: B.WAV; 2: A.WAV", false},
        {"a single one", "ambiguous\tonly 2\t0\t\t\t", open, true},
        {"a single one, taken over", "ambiguous\tonly B.WAV\t0\t\t\t", "manual\t1\t0\t\t\t\t1: B.WAV", false},
        {"a file of the scan", "unmatched\tSND/B.WAV\t0\t\t\t", "unmatched\t\t0\t\t\t", true},
        {"one that is attached", "unmatched\tSND/B.WAV\t0\t\t\t", "manual\t1\t0\t\t\t\t1: B.WAV", false},
        {"one with more of its folders", "unmatched\tB.WAV\t0\t\t\t", "manual\t1\t0\t\t\t\t1: SND/B.WAV",
         false},
        {"an offset", "matched\t1\t-3\t\t\t", matched, true},
        {"a name, taken over", "matched\t1\t0\tX\tX\t", "matched\t1\t0\tX\tx\t", false},
        {"a number as a name", "matched\t1\t0\t0\t\t", matched, true},
    };
    for (const auto& one : cases)
        EXPECT_EQ(firstLostDecision(lines(one.old), lines(one.fresh)) != nullptr, one.isLost) << one.what;
    EXPECT_FALSE(firstLostDecision(lines(matched), {})) << "a clip that is gone";
    EXPECT_TRUE(firstLostDecision(lines("matched\t1\t0\t\tx\t"), {}));
    const auto locked = [](const std::string& cell) {
        return readReviewTable("camera_file\tlock\na.mov\t" + cell);
    };
    EXPECT_FALSE(firstLostDecision(locked("yes"), locked("x")));
    EXPECT_TRUE(firstLostDecision(locked("yes"), locked("no")));
}

} // namespace
} // namespace orvane
