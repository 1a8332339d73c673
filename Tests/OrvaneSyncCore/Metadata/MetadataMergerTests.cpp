#include "OrvaneSyncCore/Services/Metadata/MetadataMerger.h"

#include "OrvaneSyncCore/Services/Metadata/ImportedMetadataClearing.h"
#include "Support/Assets.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using Fields = std::map<std::string, std::string>;
using Rows = std::vector<std::vector<std::string>>; ///< the first row has the column names

ALEFile report(const Rows& rows) {
    ALEFile::Builder builder;
    PackedTexts columns;
    for (const std::string& name : rows.front()) columns.append(name);
    builder.setColumns(std::move(columns));
    for (std::size_t i = 1; i < rows.size(); ++i) {
        builder.beginRow();
        for (const std::string& cell : rows[i]) {
            builder.extendCell(cell);
            builder.endCell();
        }
    }
    return std::move(builder).build();
}

SyncGroup clipOf(const std::string& filename) {
    return {test::video(filename), {}, MatchStatus::unmatched()};
}

TEST(MetadataMerger, pairsARowWithItsClip) {
    const auto name = ALEMatchStrategy::name();
    const auto column = [](std::string title) { return ALEMatchStrategy::column(std::move(title)); };
    const auto check = [&](const char* rule, const ALEMatchStrategy& strategy, const Rows& rows,
                           const std::string& filename, const std::optional<Fields>& expected) {
        SCOPED_TRACE(rule);
        SyncGroupList groups{clipOf("other.mov"), clipOf(filename)};
        const SyncGroupList before = groups;
        const auto result = MetadataMerger().merge(report(rows), groups, strategy);
        EXPECT_EQ(result, (MetadataMerger::MergeResult{expected ? 1 : 0, 2}));
        EXPECT_EQ(groups[1].aleMetadata, expected);
        if (rows.size() == 2) {
            EXPECT_EQ(MetadataMerger().rowsWithoutClip(report(rows), groups, strategy).empty(), !!expected);
        }
        EXPECT_FALSE(groups[0].aleMetadata);
        EXPECT_FALSE(before[1].aleMetadata); // an earlier copy of the list is not changed
    };
    check("case and extension do not count", name, {{"Name"}, {"A001C003.mov"}}, "a001c003.MOV",
          Fields{{"Name", "A001C003.mov"}});
    check("the later row counts whole", name, {{"Name", "Note"}, {"A", "first"}, {"a.mxf"}}, "A.mov",
          Fields{{"Name", "a.mxf"}});
    check("no row, no metadata", name, {{"Name"}, {"B"}}, "A.mov", {});
    check("a reel is no name", name, {{"Name"}, {"a001c003"}}, "a001c003_X.mov", {});
    check("rows without a name belong to no clip", name, {{"Tape"}, {"A"}}, "A.mov", {});
    check("a reel that is longer than the name's prefix", column("Tape"), {{"Tape"}, {"A001"}},
          "A001C003_240101_R1AB.mov", {});
    check("the prefix in front of the first _", column("Tape"), {{"Tape"}, {"A001C003"}},
          "A001C003_240101_R1AB.mov", Fields{{"Tape", "A001C003"}});
    check("the prefix keeps its case", column("Tape"), {{"Tape"}, {"a001c003"}}, "A001C003_X.mov", {});
    check("a row's own case and extension", column("File"), {{"File"}, {"A001_X.MXF"}}, "a001_x.mov",
          Fields{{"File", "A001_X.MXF"}});
    check("the file before the reel", column("File"), {{"File", "N"}, {"A001", "reel"}, {"A001_X", "file"}},
          "A001_X.mov", Fields{{"File", "A001_X"}, {"N", "file"}});
    check("rows of one reel are laid over each other", column("Tape"),
          {{"Tape", "Scene", "Note"}, {"A001", "12", "one"}, {"A001", "", "two"}, {"", "x", "y"}, {"A001"}},
          "A001_X.mov", Fields{{"Tape", "A001"}, {"Scene", "12"}, {"Note", "two"}});
    check("a column's name is exact", column("tape"), {{"Tape"}, {"A001"}}, "A001_X.mov", {});
    check("a column's name of blanks means the name", column(" "), {{"Name", " "}, {"A", "B"}}, "A.mov",
          Fields{{"Name", "A"}, {" ", "B"}});
    check("an empty prefix is no reel", column("Tape"), {{"Tape"}, {""}, {"_"}}, "_X.mov", {});
}

TEST(MetadataMerger, aRowMayNameTheSound) {
    const auto check = [](const char* rule, const ALEMatchStrategy& strategy, const Rows& rows,
                          const std::vector<std::string>& recordings,
                          const std::optional<std::string>& note) {
        SCOPED_TRACE(rule);
        SyncGroup group = clipOf("A001.mov");
        for (const std::string& name : recordings)
            group.audioMatches.emplace_back(test::audio(name), 0.0, 10.0);
        SyncGroupList groups{clipOf("T1.mov"), group};
        MetadataMerger().merge(report(rows), groups, strategy);
        EXPECT_FALSE(groups[0].aleMetadata) << "its own name is no recording's";
        const auto& found = groups[1].aleMetadata;
        EXPECT_EQ(found ? std::optional(found->at("Note")) : std::nullopt, note);
    };
    const auto name = ALEMatchStrategy::name(), tape = ALEMatchStrategy::column("Tape");
    check("any file of the take, whatever the case", name, {{"File Name", "Note"}, {"t2.WAV", "x"}},
          {"T1.wav", "T2.wav"}, "x");
    check("the main one first", name, {{"Filename", "Note"}, {"T2.wav", "y"}, {"T1.wav", "x"}},
          {"T1.wav", "T2.wav"}, "x");
    check("by every strategy", tape, {{"clip", "Note"}, {"T1.bwf", "x"}}, {"T1.wav"}, "x");
    check("the camera's row first", name,
          {{"Name", "Clip", "Note"}, {"A001", "", "camera"}, {"x", "T1.wav", "sound"}}, {"T1.wav"}, "camera");
    check("without an extension, in a folder", name, {{"FILE_NAME", "Note"}, {"D:\\SR1\\T1.2", "x"}},
          {"T1.2.wav"}, "x");
    check("one name for the files of all channels", name, {{"File Name", "Note"}, {"T1_X.WAV", "x"}},
          {"T1_3.wav"}, "x");
    check("a camera's file is no recording", name, {{"File Name", "Note"}, {"T1.mov", "x"}}, {"T1.wav"}, {});
    check("a take is no file", name, {{"Take", "Note"}, {"T1.wav", "x"}}, {"T1.wav"}, {});
}

TEST(MetadataMerger, appliesNameAndSensorRate) {
    // `rows`: a column and its cell each
    const auto check = [&](Rows rows, const std::string& clipName, std::optional<double> rate) {
        rows[0].emplace_back("Name");
        rows[1].emplace_back("A");
        SyncGroup group = clipOf("A.mov");
        group.video.sensorFrameRate = 50;
        SyncGroupList groups{group};
        MetadataMerger().merge(report(rows), groups, ALEMatchStrategy::name());
        SCOPED_TRACE(rows[0][0]);
        EXPECT_EQ(groups[0].clipName, clipName);
        EXPECT_EQ(groups[0].video.sensorFrameRate, rate);
        EXPECT_FALSE(groups[0].video.offspeedConfidence);
    };
    check({{"Scene", "Take"}, {"12", "3"}}, "12-3", 50);
    check({{"Scene", "Take"}, {"12", ""}}, "A.mov", 50);
    check({{"Take", "Sensor FPS"}, {"3", " 120\t"}}, "A.mov", 120);
    check({{"SENSOR_FPS"}, {"59.94"}}, "A.mov", 59.94);
    check({{"sensorfps", "Camera FPS"}, {"0", "96"}}, "A.mov", 96);
    check({{"sensorfps", "original_fps"}, {"abc", "1e2"}}, "A.mov", 100);
    check({{"Original FPS", "Shooting Rate"}, {"24", "48"}}, "A.mov", 48);
    check({{"sensor_fps", "Sensor FPS"}, {"100", "-1"}}, "A.mov", 100);
    check({{"sensor_fps", "Sensor FPS"}, {"nan", "1e999"}}, "A.mov", 50);
    check({{"sensorfps"}, {"23,976"}}, "A.mov", 50);
    check({{"FPS", "project fps"}, {"120", "120"}}, "A.mov", 50);
}

TEST(ImportedMetadataClearing, takesOffOneKindAndKeepsTheRest) {
    SyncGroup both = clipOf("A.mov"), empty = clipOf("B.mov"), none = clipOf("C.mov");
    both.aleMetadata = both.lockitMetadata = Fields{{"Scene", "1"}};
    both.clipName = "1-1";
    empty.aleMetadata = Fields{};
    SyncGroupList groups{both, empty, none};
    const SyncGroupList before = groups;
    EXPECT_EQ(ImportedMetadataClearing::clearALEMetadataForAllClips(groups), 1);
    EXPECT_FALSE(groups[0].aleMetadata);
    EXPECT_TRUE(groups[0].hasLockitMetadata());
    EXPECT_EQ(groups[0].clipName, "1-1");
    EXPECT_TRUE(before[0].hasALEMetadata());
    EXPECT_EQ(groups.element(1), before.element(1)); // untouched, and still shared
    EXPECT_EQ(ImportedMetadataClearing::clearLockitMetadataForAllClips(groups), 1);
    EXPECT_EQ(ImportedMetadataClearing::clearLockitMetadataForAllClips(groups), 0);
    EXPECT_FALSE(ImportedMetadataClearing::clearALEMetadata(empty));
    EXPECT_TRUE(ImportedMetadataClearing::clearLockitMetadata(both));
}

} // namespace
} // namespace orvane
