#include "OrvaneSyncCore/Export/ExportFixtures.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace orvane {
namespace {

using namespace test;
using Names = std::vector<std::string>;

SyncGroup camera(const std::string& filename, const std::string& start = "10:00:00:00", double seconds = 10) {
    MediaAsset made = picture(filename);
    made.startTimecodeString = start;
    made.durationSeconds = seconds;
    return matched(std::move(made), {recording(1)});
}

SyncGroup changed(SyncGroup group, const std::function<void(SyncGroup&)>& change) {
    change(group);
    return group;
}

/// The file names of the clusters, such as "a b | c d".
std::string clustersOf(const SyncGroupList& groups) {
    std::string text;
    for (const auto& cluster : FCPXMLExporter::findMulticamGroups(groups)) {
        if (!text.empty()) text += " |";
        for (const UUID& id : cluster)
            text.append(text.empty() ? "" : " ").append(groups.find(id)->video.filenameStem());
    }
    return text;
}

TEST(MulticamClusters, AreClipsThatRolledAtTheSameMoment) {
    const auto stamped = [](std::uint64_t samples, std::optional<double> rate) {
        return [=](SyncGroup& group) {
            group.video.bextTimeReference = samples;
            group.video.sampleRate = rate;
        };
    };
    const auto rates = [](std::optional<double> sensor, std::optional<double> project) {
        return [=](SyncGroup& group) {
            group.video.sensorFrameRate = sensor;
            group.video.projectFrameRate = project;
        };
    };
    const auto created = [](int day) {
        return [=](SyncGroup& group) {
            group.video.contentCreatedDate = Date{} + std::chrono::hours(24 * day + 12);
        };
    };
    const auto excluded = [](SyncGroup& group) { group.isExcludedFromMulticamFlag = true; };
    const auto bare = [](SyncGroup& group) { group.video.startTimecodeString = std::nullopt; };
    const auto at = [](const char* start) { return camera("b.mov", start); };
    const SyncGroup a = camera("a.mov");
    const struct {
        const char* name;
        SyncGroupList groups;
        const char* clusters;
    } cases[] = {
        {"alone", {a}, ""},
        {"at once", {a, at("10:00:00:00")}, "a b"},
        {"clips that only touch", {a, at("10:00:10:00")}, ""},
        {"one frame in common", {a, at("10:00:09:24")}, "a b"},
        {"the first clip decides",
         {camera("a.mov", "10:00:00:00", 30), camera("b.mov", "10:00:00:00", 5),
          camera("c.mov", "10:00:20:00", 30), camera("d.mov", "10:00:40:00", 5)},
         "a b c"},
        {"partners of a clip that stays alone are free for others",
         {camera("a.mov", "09:00:00:00"), at("10:00:05:00"), camera("c.mov", "10:00:09:00")},
         "b c"},
        {"a clip is in one cluster only",
         {camera("a.mov"), at("10:00:05:00"), camera("c.mov", "10:00:12:00"), camera("d.mov", "10:00:12:00")},
         "a b | c d"},
        {"excluded", {a, changed(at("10:00:00:00"), excluded)}, ""},
        {"no start", {a, changed(at(""), bare)}, ""},
        {"a start that is no timecode is midnight", {camera("a.mov", "00:00:00:00"), at("noon")}, "a b"},
        {"no duration", {a, camera("b.mov", "10:00:00:00", 0)}, ""},
        {"a time reference goes before the timecode",
         {a, changed(at("01:00:00:00"), stamped(36005ULL * 48000, std::nullopt))},
         "a b"},
        {"a time reference of nothing is none", {a, changed(at("10:00:00:00"), stamped(0, 48000))}, "a b"},
        {"no rate to read it by", {a, changed(at("10:00:00:00"), stamped(36000ULL * 48000, 0))}, ""},
        {"two days by their names", {camera("a_240517.mov"), camera("b_240518.mov")}, ""},
        {"one day is not known", {camera("a_240517.mov"), at("10:00:00:00")}, "a_240517 b"},
        {"two days by their files", {changed(a, created(1)), changed(at("10:00:00:00"), created(2))}, ""},
        {"slow motion lies where it was shot, within 10 of 50 seconds",
         {changed(camera("a.mov", "10:00:00:00", 50), rates(120, 24)), at("10:00:10:00"),
          changed(camera("c.mov", "10:00:09:00"), rates(24, 24))},
         "a c"},
        {"a rate that hardly differs", {changed(camera("a.mov"), rates(25.2, 25)), at("10:00:09:23")}, "a b"},
    };
    for (const auto& c : cases) EXPECT_EQ(clustersOf(c.groups), c.clusters) << c.name;
}

TEST(MulticamClusters, AreTheSameAsThoseOfAPlainWalk) {
    const auto overlap = [](const SyncGroup& a, const SyncGroup& b) {
        const auto range = [](const SyncGroup& group) {
            const double start = TimecodeUtils::tcToSeconds(*group.video.startTimecodeString, 25);
            return std::pair(start, start + *group.video.durationSeconds);
        };
        const auto [a0, a1] = range(a);
        const auto [b0, b1] = range(b);
        const auto dayA = a.video.shootDay(), dayB = b.video.shootDay();
        return std::min(a1, b1) > std::max(a0, b0) && !(dayA && dayB && *dayA != *dayB);
    };
    for (unsigned seed = 1; seed <= 60; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&](unsigned limit) { return static_cast<int>(random() % limit); };
        std::vector<SyncGroup> made;
        for (int i = 0; i < 30; ++i) {
            const char* day[] = {"", "_240517", "_240518"};
            made.push_back(camera("c" + std::to_string(i) + day[below(3)] + ".mov",
                                  TimecodeUtils::secondsToTC(below(120), 25.0), 1 + below(12)));
        }
        const SyncGroupList groups(std::move(made));
        std::vector<std::vector<UUID>> expected;
        std::vector<bool> claimed(groups.size());
        for (std::size_t a = 0; a < groups.size(); ++a) {
            if (claimed[a]) continue;
            std::vector<std::size_t> cluster{a};
            for (std::size_t b = a + 1; b < groups.size(); ++b)
                if (!claimed[b] && overlap(groups[a], groups[b])) cluster.push_back(b);
            if (cluster.size() < 2) continue;
            auto& ids = expected.emplace_back();
            for (const std::size_t member : cluster) {
                claimed[member] = true;
                ids.push_back(groups[member].id);
            }
        }
        EXPECT_EQ(FCPXMLExporter::findMulticamGroups(groups), expected) << "seed " << seed;
    }
}

TEST(MulticamClips, CamerasAreNamedByTheirFilesElseByTheirPlace) {
    const struct {
        const char* filename;
        std::size_t index;
        const char* name;
    } cases[] = {
        {"a003c012.mov", 5, "Cam A"},
        {"A1.mov", 1, "Cam A"},
        {"CLIP1.mov", 0, "Cam A"},
        {"CLIP2.mov", 1, "Cam B"},
        {"B12", 2, "Cam C"},
        {"B123", 2, "Cam B"},
        {"1A23.mov", 25, "Cam Z"},
        {"\xC3\xA9"
         "7.mov",
         0, "Cam \xC3\x89"},
        {"", 26, "Cam ["},
        {"clip.mov", 0xD800 - 65, "Cam 55232"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(FCPXMLExporter::deriveCameraName(picture(c.filename), c.index), c.name) << c.filename;
}

TEST(MulticamClips, AreRenderedToTheCodecOfMostSources) {
    const struct {
        MulticamCodec requested;
        std::vector<std::optional<std::string>> sources;
        const char* codec;
    } cases[] = {
        {MulticamCodec::automatic, {}, "Apple ProRes 422 LT"},
        {MulticamCodec::automatic, {std::nullopt, std::nullopt}, "Apple ProRes 422 LT"},
        {MulticamCodec::automatic, {"apch", "apcn", "apcn"}, "Apple ProRes 422"},
        {MulticamCodec::automatic, {"apch", "apcn"}, "Apple ProRes 422 HQ"},
        {MulticamCodec::automatic, {std::nullopt, "AP4X"}, "Apple ProRes 4444"},
        {MulticamCodec::automatic, {"ap4h", "ap4x", "apcs", "apcs"}, "Apple ProRes 422 LT"},
        {MulticamCodec::automatic, {"apco"}, "Apple ProRes 422 Proxy"},
        {MulticamCodec::automatic, {"hev1"}, "H.264"},
        {MulticamCodec::automatic, {"XAVC", "xavc", "apch"}, "Apple ProRes 422 LT"},
        {MulticamCodec::proRes4444, {"apco"}, "Apple ProRes 4444"},
        {MulticamCodec::h264, {}, "H.264"},
    };
    for (const auto& c : cases) {
        std::vector<MediaAsset> videos(c.sources.size(), picture());
        std::vector<const MediaAsset*> pointers;
        for (std::size_t i = 0; i < videos.size(); ++i) {
            videos[i].videoCodecFourCC = c.sources[i];
            pointers.push_back(&videos[i]);
        }
        EXPECT_EQ(FCPXMLExporter::resolveMulticamCodec(c.requested, pointers), c.codec);
    }
}

TEST(MulticamClips, GoToTheSceneOfMostAngles) {
    const struct {
        Names scenes;
        bool split;
        int chosen;        ///< place of the angle, -1 for none
        const char* named; ///< in the warning
    } cases[] = {
        {{"12", "12", "13"}, true, 0, "(12, 13): c0.mov, c1.mov, c2.mov —"},
        {{"13", "12"}, true, 0, "(12, 13): c0.mov, c1.mov —"},
        {{"14", "13", "13"}, true, 1, "(13, 14): c0.mov, c1.mov, c2.mov —"},
        {{"", "12"}, true, 1, nullptr},
        {{"12", "12"}, true, 0, nullptr},
        {{"", ""}, true, -1, nullptr},
        {{"12", "13"}, false, -1, nullptr},
        {{}, true, -1, nullptr},
    };
    for (const auto& c : cases) {
        std::vector<SyncGroup> made;
        std::vector<const SyncGroup*> groups;
        FCPXMLExporter::NamesByGroup buckets;
        for (std::size_t i = 0; i < c.scenes.size(); ++i)
            made.push_back(camera("c" + std::to_string(i) + ".mov"));
        for (std::size_t i = 0; i < made.size(); ++i) {
            groups.push_back(&made[i]);
            if (!c.scenes[i].empty()) buckets[made[i].id] = c.scenes[i];
        }
        std::vector<std::string> warnings;
        const auto id = FCPXMLExporter::multicamBucketGroupID(groups, buckets, c.split, warnings);
        EXPECT_EQ(id, c.chosen < 0 ? std::nullopt
                                   : std::optional(made.at(static_cast<std::size_t>(c.chosen)).id));
        ASSERT_EQ(warnings.size(), c.named == nullptr ? 0U : 1U);
        if (c.named == nullptr) continue;
        EXPECT_EQ(warnings.front(), std::string("Multicam angles span different scenes ") + c.named +
                                        " placed in the first angle's scene event.");
    }
}

TEST(MulticamClips, StandBesideTheClipsOrInTheirPlace) {
    SyncGroupList groups{camera("A001C001.mov"), camera("B001C001.mov", "10:00:02:00", 20),
                         camera("far.mov", "12:00:00:00")};
    ExportSettings settings = settingsAt(29.97);
    settings.clipNamingSource = GroupNaming::Source::video;
    const auto lines = [&](const char* text) {
        return linesWith(FCPXMLExporter::exportDocument(groups, {}, settings).fcpxmlString, text);
    };
    EXPECT_EQ(lines("<mc-"), (Names{"<mc-angle name=\"Cam A\" angleID=\"angle_cam_a\">",
                                    "<mc-angle name=\"Cam B\" angleID=\"angle_cam_b\">",
                                    "<mc-clip ref=\"r12\" name=\"A001C001 + B001C001\" start=\"36000s\" "
                                    "duration=\"22s\">",
                                    "<mc-source angleID=\"angle_cam_a\" srcEnable=\"all\"/>"}));
    EXPECT_EQ(lines("<multicam"), Names{"<multicam format=\"r1\" tcStart=\"36000s\" tcFormat=\"NDF\" "
                                        "renderFormat=\"Apple ProRes 422 LT\">"});
    EXPECT_EQ(lines("<gap"), Names{"<gap offset=\"0s\" start=\"36000s\" duration=\"2s\"/>"});
    EXPECT_EQ(lines("<sync-clip").size(), 5U);

    ExportResult result = FCPXMLExporter::exportDocument(groups, {}, settings);
    EXPECT_EQ(result.syncClipCount, 3);
    EXPECT_EQ(result.multicamCount, 1);
    settings.generateSyncClips = false;
    result = FCPXMLExporter::exportDocument(groups, {}, settings);
    EXPECT_EQ(result.syncClipCount, 0);
    EXPECT_EQ(result.multicamCount, 1);
    EXPECT_EQ(lines("<sync-clip").size(), 2U) << "the clip that has no partner is nowhere";
    settings.generateMulticam = false;
    EXPECT_EQ(lines("<multicam").size(), 0U);

    groups.update(groups[0].id, [](SyncGroup& group) { group.video.frameRate = 59.94; });
    settings.generateMulticam = true;
    EXPECT_EQ(lines("tcFormat=\"DF\"").size(), 1U) << "the first camera's own rate decides";
    groups.update(groups[1].id, [](SyncGroup& group) { group.audioMatches.clear(); });
    EXPECT_EQ(lines("<multicam").size(), 0U) << "a clip without sound is no angle";
}

} // namespace
} // namespace orvane
