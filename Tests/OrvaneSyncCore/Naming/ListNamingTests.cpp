#include "OrvaneSyncCore/Services/Naming/BatchRenamer.h"
#include "OrvaneSyncCore/Services/Naming/ClipNames.h"
#include "OrvaneSyncCore/Services/Naming/PatternEditor.h"
#include "OrvaneSyncCore/Services/Naming/ResultsList.h"
#include "OrvaneSyncCore/Services/Naming/SidebarOutline.h"
#include "OrvaneSyncCore/Services/Naming/SyncClustering.h"
#include "Support/Assets.h"
#include "Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

using GroupNaming::Source;
using test::audio;
using test::clip;
using test::slated;
using test::video;
using Names = std::vector<std::string>;

SyncGroup take(const char* camera, const char* scene, const char* number) {
    return clip(video(camera), slated(audio("MIX.wav"), scene, number));
}

SyncGroup excluded(SyncGroup group) {
    group.isExcludedFromMulticamFlag = true;
    return group;
}

/// Two cameras of 10-1, out of order; three clips of 2-1, one of them excluded from multicam; one clip
/// without sound.
const SyncGroupList day{
    take("B001C001.mov", "10", "1"),  take("loose.mov", "2", "1"),
    take("B001C002.mov", "2", "001"), excluded(take("C001C002.mov", "2", "1")),
    take("A001C001.mov", "10", "1"),  SyncGroup(video("solo.mov"), {}, MatchStatus::mos())};

Names files(const SyncGroupList& groups) {
    Names names;
    for (const SyncGroup& group : groups) names.push_back(group.video.filename);
    return names;
}

TEST(ClipNames, TheFolderDistinguishesTwoCamerasOfOneName) {
    struct File {
        const char *path, *start;
    };
    const auto check = [](const std::vector<File>& files, Source source, const Names& names) {
        SyncGroupList groups;
        for (const File& file : files)
            groups.append(clip(video(file.path, file.start), slated(audio("MIX.wav"), "12", "3")));
        EXPECT_EQ(ClipNames::of(groups, source, std::nullopt, "-"), names) << files.front().path;
        const auto outline = SidebarOutline::build(groups, source, std::nullopt);
        const bool isMulticam = outline.front().isMulticam;
        EXPECT_EQ(isMulticam ? outline.front().children[0].label : names[0], names[0]);
    };
    const char *ten = "10:00:00:00", *soon = "10:00:30:00", *later = "10:02:00:00";
    check({{"1/A001C001.mov", ten}, {"2/A001C001.mov", later}}, Source::sceneTake,
          {"12-3 Cam A 1", "12-3 Cam A 2"});
    check({{"1/A001C001.mov", ten}, {"2/A001C001.mov", later}}, Source::video,
          {"A001C001 Cam A 1", "A001C001 Cam A 2"});
    check({{"1/A001C001.mov", ten}, {"2/A001C005.mov", soon}, {"1/A001C002.mov", later}}, Source::sceneTake,
          {"12-3 Cam A 1", "12-3 Cam A 2", "12-3 Cam A 1"});
    check({{"1/go.mov", ten}, {"2/pro.mov", soon}}, Source::sceneTake, {"12-3 1", "12-3 2"});
    // One camera that recorded again, on its next card or on the same.
    check({{"1/A001C009.mov", ten}, {"2/A002C001.mov", later}}, Source::sceneTake,
          {"12-3 Cam A", "12-3 Cam A"});
    check({{"1/A001C001.mov", ten}, {"1/A001C002.mov", soon}}, Source::sceneTake,
          {"12-3 Cam A", "12-3 Cam A"});
    check({{"1/A001C001.mov", ten}, {"2/B001C001.mov", ten}}, Source::sceneTake,
          {"12-3 Cam A", "12-3 Cam B"});
}

TEST(ClipNames, AreUniqueAmongTheClipsOfADocument) {
    SyncGroup out = take("A001C001.mov", "1", "1"), open = take("A001C002.mov", "2", "1");
    out.isExcludedFromExport = true;
    open.matchStatus = MatchStatus::ambiguous(2);
    const SyncGroupList groups{out,
                               take("B001C001.mov", "1", "1"),
                               open,
                               take("B001C002.mov", "2", "1"),
                               take("A001C003.mov", "3", "1"),
                               take("B001C003.mov", "3", "1")};
    EXPECT_EQ(ClipNames::inDocument(groups, Source::sceneTake, std::nullopt, "-"),
              (Names{"1-1 Cam A", "1-1", "2-1 Cam A", "2-1 Cam B", "3-1 Cam A", "3-1 Cam B"}));
}

TEST(SyncClustering, clustersAndSiblings) {
    const auto clusters = SyncClustering::clusters(day, Source::sceneTake, std::nullopt);
    ASSERT_EQ(clusters.size(), 2U) << "a name that occurs once is no cluster";
    EXPECT_EQ(clusters[0], (SyncCluster{"2-1", {day[1].id, day[2].id}})) << "2 before 10";
    EXPECT_EQ(clusters[1], (SyncCluster{"10-1", {day[0].id, day[4].id}}));
    EXPECT_TRUE(SyncClustering::clusters(day, Source::video, std::nullopt).empty());
    EXPECT_EQ(SyncClustering::clusters(day, Source::custom, "").size(), 2U);
    EXPECT_EQ(SyncClustering::clusters(day, Source::audio, std::nullopt).at(0).memberIDs.size(), 4U);

    const SyncClustering::Index index(day, Source::sceneTake, std::nullopt);
    for (std::size_t i = 0; i < day.size(); ++i) {
        const auto siblings = SyncClustering::siblings(day[i], day, Source::sceneTake, std::nullopt);
        EXPECT_EQ(siblings.size(), index.siblingCount(i)) << day[i].video.filename;
        EXPECT_EQ(files(siblings), files(index.siblings(day[i])));
        EXPECT_NE(siblings.find(day[i].id), nullptr);
    }
    EXPECT_EQ(files(index.siblings(day[4])), (Names{"B001C001.mov", "A001C001.mov"}))
        << "in the order of the list";
    EXPECT_EQ(files(index.siblings(day[3])), Names{"C001C002.mov"});
    EXPECT_EQ(files(index.siblings(take("new.mov", "10", "1"))), (Names{"B001C001.mov", "A001C001.mov"}))
        << "not of the list itself";
    EXPECT_TRUE(index.siblings(take("new.mov", "11", "1")).empty());
}

TEST(SyncClustering, TakesOfTwoShootsAreTwo) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    const auto shot = [](const char* camera, const char* start, const char* header) {
        SyncGroup group = clip(video(camera, start), slated(audio("MIX.wav"), "12", "3"));
        if (header[0] != 0) group.video.headerDate = dateFromISO8601(header);
        return group;
    };
    struct Case {
        const char* name;
        SyncGroupList clips;
        std::vector<std::size_t> siblings; ///< for each clip
    };
    const std::vector<Case> cases{
        {"the same hour of two days",
         {shot("A001.mov", "10:00:00:00", "2024-05-17T10:00:00Z"),
          shot("A002.mov", "10:00:05:00", "2024-05-18T10:00:05Z"),
          shot("B001.mov", "10:00:01:00", "2024-05-17T10:00:01Z")},
         {2, 1, 2}},
        {"across midnight",
         {shot("A001.mov", "23:59:50:00", "2024-05-17T23:59:50Z"),
          shot("B001.mov", "00:00:05:00", "2024-05-18T00:00:05Z")},
         {2, 2}},
        {"dates in the names, and one camera without",
         {shot("A001_240517.mov", "10:00:00:00", ""), shot("A002_240518.mov", "10:00:00:00", ""),
          shot("B001.mov", "10:00:00:00", "")},
         {2, 1, 2}},
    };
    for (const Case& one : cases) {
        const SyncClustering::Index index(one.clips, Source::sceneTake, std::nullopt);
        std::size_t cameras = 0;
        for (std::size_t i = 0; i < one.clips.size(); ++i) {
            EXPECT_EQ(index.siblingCount(i), one.siblings[i]) << one.name << i;
            EXPECT_EQ(index.siblings(one.clips[i]).size(), one.siblings[i]) << one.name << i;
        }
        for (const SidebarNode& node : SidebarOutline::build(one.clips, Source::sceneTake, std::nullopt))
            cameras += node.isMulticam ? node.children.size() : 0;
        EXPECT_EQ(cameras, 2U) << one.name;
        EXPECT_EQ(SyncClustering::clusters(one.clips, Source::sceneTake, std::nullopt).size(), 1U);
    }
}

TEST(SidebarOutline, build) {
    const auto nodes = SidebarOutline::build(day, Source::sceneTake, std::nullopt);
    ASSERT_EQ(nodes.size(), 4U);
    const auto labels = [](const std::vector<SidebarNode>& rows) {
        Names names;
        for (const SidebarNode& row : rows) names.push_back(row.label);
        return names;
    };
    EXPECT_EQ(labels(nodes), (Names{"10-1", "2-1", "2-1", "solo"}));
    EXPECT_EQ(labels(nodes[0].children), (Names{"10-1 Cam A", "10-1 Cam B"})) << "by letter";
    EXPECT_EQ(labels(nodes[1].children), (Names{"2-1 Cam B", "2-1"})) << "no letter comes last";
    EXPECT_EQ(nodes[0].id, "10-1__multicam");
    EXPECT_TRUE(nodes[0].isMulticam);
    EXPECT_EQ(nodes[0].group, nullptr);
    EXPECT_EQ(nodes[0].children[0].id, day[4].id.text());
    EXPECT_EQ(nodes[2].group, day.element(3)) << "an excluded clip stands alone";
    EXPECT_EQ(nodes[2].id, day[3].id.text());
    EXPECT_FALSE(nodes[2].isMulticam);
    EXPECT_TRUE(nodes[2].children.empty());
}

TEST(PatternEditor, insertsAtTheCaret) {
    const auto check = [&](const char* name, const char* pattern, const std::optional<std::size_t>& caret,
                           const char* result, const std::optional<std::size_t>& caretBehind) {
        PatternEditor editor{.pattern = pattern, .caretPosition = caret};
        editor.insert("{take}");
        EXPECT_EQ(editor.pattern, result) << name;
        EXPECT_EQ(editor.caretPosition, caretBehind) << name;
    };
    check("in the middle", "a-b", 2, "a-{take}b", 8);
    check("at the end", "ab", 2, "ab{take}", 8);
    check("behind the end", "ab", 3, "ab{take}", 3);
    check("no caret", "ab", {}, "ab{take}", {});
    check("the caret counts characters",
          "\xC3\xA9"
          "e\xCC\x81"
          "z",
          2,
          "\xC3\xA9"
          "e\xCC\x81"
          "{take}z",
          8);
}

TEST(PatternEditor, previews) {
    PatternEditor editor{
        .pattern = "{scene}-{counter}", .counterDigits = 3, .counterValue = 1, .caretPosition = {}};
    EXPECT_EQ(editor.previewString({}), "");
    EXPECT_EQ(editor.previewString(day), "001"
                                         "0-001")
        << "the number is padded wherever it stands";
    editor.counterDigits = 1;
    EXPECT_EQ(editor.previewString(day), "10-1");
    editor.pattern = "{scene}-" + editor.counterToken();
    editor.counterDigits = 4;
    EXPECT_EQ(editor.previewString(day), "10-1") << "widths of their own stay";
    EXPECT_EQ(editor.counterToken(), "{counter:4}");
    editor = {.pattern = "{counter}", .counterDigits = 1'000'000, .counterValue = 99999, .caretPosition = {}};
    EXPECT_EQ(editor.counterToken(), "{counter:6}");
    EXPECT_EQ(editor.previewString(day), "009999");
    editor.counterDigits = editor.counterValue = -5;
    EXPECT_EQ(editor.counterToken(), "{counter:1}");
    EXPECT_EQ(editor.previewString(day), "1");
}

TEST(BatchRenamer, transform) {
    const auto pad = [](int digits) { return BatchRenamer{"", "", digits, "", ""}; };
    const auto check = [&](const char* name, const BatchRenamer& renamer, const char* text,
                           const char* result) { EXPECT_EQ(renamer.transform(text), result) << name; };
    check("no more than six digits", pad(2'000'000'000), "A7", "A000007");
    check("all at once", {"A", "B7", 3, "<", ">"}, "A7_A", "<B077_B007>");
    check("exact case", {"a", "x", 0, "", ""}, "Aa", "Ax");
    check("overlapping finds", {"aa", "b", 0, "", ""}, "aaa", "ba");
    check("nothing to do", {}, "x", "x");
    check("each run", pad(3), "A7_12", "A007_012");
    check("long runs stay", pad(3), "1234", "1234");
    check("other digits", pad(3), "\xD9\xA3 \xC2\xBD", "00\xD9\xA3 00\xC2\xBD");
    check("mixed digits are one run", pad(3), "1\xD9\xA3x", "01\xD9\xA3x");
    check("no numbers", pad(6), "\xE4\xB8\xAD", "\xE4\xB8\xAD");
    for (const BatchRenamer& one : {BatchRenamer{"a", "", 0, "", ""}, pad(1),
                                    BatchRenamer{"", "", 0, " ", ""}, BatchRenamer{"", "", 0, "", " "}})
        EXPECT_TRUE(one.hasOperation());
    EXPECT_FALSE((BatchRenamer{"", "only a replacement", 0, "", ""}.hasOperation()));
}

TEST(BatchRenamer, keepsCameraNames) {
    SyncGroupList groups = day;
    groups.update(day[0].id, [](SyncGroup& group) { group.manualClipName = "B001C001"; });
    groups.update(day[1].id, [](SyncGroup& group) { group.manualClipName = "Hero"; });
    for (int i = 0; i < 3; ++i) groups.append(take("x.mov", "3", "1"));
    const BatchRenamer renamer{"", "", 0, "X ", ""};
    const BatchRenamer::Settings settings;

    const std::vector<UUID> some{groups[4].id, groups[1].id, groups[0].id};
    Names before, after;
    for (const auto& row : renamer.preview(groups, some, settings)) {
        before.push_back(row.before);
        after.push_back(row.after);
    }
    EXPECT_EQ(before, (Names{"10-1 Cam A", "Hero", "B001C001 Cam B"}));
    EXPECT_EQ(after, (Names{"X 10-1 Cam A", "X Hero", "B001C001 Cam B"})) << "as the list has them";

    const auto names = renamer.newNames(groups, settings);
    ASSERT_EQ(names.size(), 7U);
    EXPECT_EQ(names[0], (std::pair{day[1].id, std::string("X Hero")}));
    EXPECT_TRUE(BatchRenamer{}.newNames(groups, settings).empty()) << "nothing to do names nobody";
    EXPECT_EQ((BatchRenamer{"Hero", "Star", 0, "", ""}.newNames(groups, settings)),
              (std::vector{std::pair{day[1].id, std::string("Star")}}))
        << "other names stay derived";
    EXPECT_EQ(BatchRenamer::manuallyNamed(groups), (std::vector<UUID>{day[0].id, day[1].id}));
}

TEST(ResultsList, filtersAndBundles) {
    SyncGroup alone = test::clip(test::video("C.mov"), test::audio("T1.wav"));
    alone.isExcludedFromMulticamFlag = true;
    const SyncGroupList groups{test::clip(test::video("A.mov"), test::audio("T1.wav")),
                               SyncGroup(test::video("X_MOS.mov"), {}, MatchStatus::mos()),
                               alone,
                               SyncGroup(test::video("U.mov"), {}, MatchStatus::unmatched()),
                               test::clip(test::video("B.mov"), test::audio("T1.wav")),
                               SyncGroup(test::video("Y_MOS.mov"), {}, MatchStatus::mos())};
    EXPECT_EQ(filtered(groups, FilterMode::all).size(), 6U);
    EXPECT_EQ(filtered(groups, FilterMode::matched).size(), 5U);
    EXPECT_EQ(filtered(groups, FilterMode::issues).front().video.filename, "U.mov");

    std::string bundles;
    for (const SharedAudioBundle& bundle : sharedAudioBundles(filtered(groups, FilterMode::matched))) {
        for (const SyncGroup& group : bundle.cams) bundles += group.video.filenameStem() + " ";
        bundles += "| ";
    }
    EXPECT_EQ(bundles, "A B | X_MOS | C | Y_MOS | ");
    EXPECT_EQ(sharedAudioBundles(groups).front().id, "/media/T1.wav");
}

} // namespace
} // namespace orvane
