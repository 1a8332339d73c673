#include "OrvaneSyncCore/Export/ExportFixtures.h"
#include "OrvaneSyncCore/Services/Export/ExportCameras.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Support/RandomSeed.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

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
std::string clustersOf(const SyncGroupList& groups, const MatchRules& rules = {}) {
    std::string text;
    for (const auto& cluster : FCPXMLExporter::findMulticamGroups(groups, rules)) {
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
    const auto check = [&](const char* name, const SyncGroupList& groups, const char* clusters) {
        EXPECT_EQ(clustersOf(groups), clusters) << name;
    };
    check("alone", {a}, "");
    check("at once", {a, at("10:00:00:00")}, "a b");
    check("clips that only touch", {a, at("10:00:10:00")}, "");
    check("less than a frame in common", {camera("a.mov", "10:00:00:00", 10.03), at("10:00:10:00")}, "");
    check("one frame in common", {a, at("10:00:09:24")}, "a b");
    check("the first clip decides",
          {camera("a.mov", "10:00:00:00", 30), camera("b.mov", "10:00:00:00", 5),
           camera("c.mov", "10:00:20:00", 30), camera("d.mov", "10:00:40:00", 5)},
          "a b c");
    check("partners of a clip that stays alone are free for others",
          {camera("a.mov", "09:00:00:00"), at("10:00:05:00"), camera("c.mov", "10:00:09:00")}, "b c");
    check(
        "a clip is in one cluster only",
        {camera("a.mov"), at("10:00:05:00"), camera("c.mov", "10:00:12:00"), camera("d.mov", "10:00:12:00")},
        "a b | c d");
    check("excluded", {a, changed(at("10:00:00:00"), excluded)}, "");
    check("no start", {a, changed(at(""), bare)}, "");
    check("a start that is no timecode is midnight", {camera("a.mov", "00:00:00:00"), at("noon")}, "a b");
    struct Sound {
        const char *name, *first, *second, *clusters;
    };
    for (const Sound& one : {Sound{"two takes of one recorder", "T1.WAV", "T4.WAV", "a c | b d"},
                             {"two recorders", "T1.WAV", "B1.WAV", "a b c d"},
                             {"channels of a take", "T1_1.WAV", "T1_2.WAV", "a b c d"}}) {
        const MediaAsset first = recording(1, one.first), second = recording(1, one.second);
        const auto heard = [&](const char* filename, bool isFirst) {
            return matched(camera(filename).video,
                           isFirst ? std::vector{first, second} : std::vector{second, first});
        };
        check(one.name,
              {heard("a.mov", true), heard("b.mov", false), heard("c.mov", true), heard("d.mov", false)},
              one.clusters);
    }
    struct Attached {
        const char *name, *sound, *clusters;
        double movedBy = 0, start = 0;
    };
    for (const Attached& one : {Attached{"each with its own take at one time", "T2.WAV", ""},
                                {"a take that goes on where the first one ends", "T2.WAV", "a b", 29},
                                {"a later clip with the next take", "T2.WAV", "a b", 20, 9},
                                {"two recorders", "B1.WAV", "a b"}}) {
        SyncGroup other = matched(camera("b.mov", TimecodeUtils::secondsToTC(36000 + one.start, 25.0)).video,
                                  {recording(1, one.sound)});
        other.manualAudioOffsetSeconds = one.movedBy;
        check(one.name, {matched(a.video, {recording(1, "T1.WAV")}), other}, one.clusters);
    }
    struct Units {
        const char* name;
        int takes, shifted; ///< of these, the other unit's clips that begin later
        double seconds;     ///< later; clips last 10 s
        const char *clusters, *warned;
    };
    for (const Units& one : {Units{"two recorders by folder", 4, 0, 0, "a0 b0 | a1 b1 | a2 b2 | a3 b3", ""},
                             {"two units that meet once", 4, 3, 50, "", ""},
                             {"two units that meet for moments", 4, 4, 8, "", ""},
                             {"units or cameras", 4, 4, 4, "a0 b0 | a1 b1 | a2 b2 | a3 b3",
                              "a0 has a/T1.WAV, and b0 has b/T1.WAV; likewise in 3 more"},
                             {"few clips", 2, 2, 7, "a0 b0 | a1 b1", "likewise in 1 more"}}) {
        std::vector<SyncGroup> units;
        for (int i = 0; i < one.takes; ++i)
            for (const char* unit : {"a", "b"}) {
                const double start = 36000 + 100 * i + (*unit == 'b' && i < one.shifted ? one.seconds : 0);
                SyncGroup clip =
                    matched(camera(unit + std::to_string(i), TimecodeUtils::secondsToTC(start, 25.0)).video,
                            {recording(1, "T1.WAV")});
                clip.video.url.path = std::string("/") + unit + "/C/" + clip.video.filename;
                MediaAsset sound = *clip.audioMatches.front().audio;
                sound.url.path = std::string("/") + unit + "/S/T1.WAV";
                clip.audioMatches.front().audio = sound;
                units.push_back(clip);
            }
        const SyncGroupList groups(std::move(units));
        check(one.name, groups, one.clusters);
        const auto warnings = FCPXMLExporter::exportDocument(groups, {}, settingsAt(25)).warnings;
        const auto warned = std::ranges::find_if(
            warnings, [](const std::string& text) { return text.find("two units") != std::string::npos; });
        ASSERT_EQ(warned != warnings.end(), *one.warned != '\0') << one.name;
        if (warned != warnings.end()) {
            EXPECT_TRUE(warned->ends_with(one.warned)) << *warned;
        }
    }
    check("the channels of a take, one under each",
          {matched(a.video, {recording(1, "T1_1.WAV")}),
           matched(at("10:00:00:00").video, {recording(1, "T1_2.WAV")})},
          "a b");
    check("no duration", {a, camera("b.mov", "10:00:00:00", 0)}, "");
    check("a time reference goes before the timecode",
          {a, changed(at("01:00:00:00"), stamped(36005ULL * 48000, std::nullopt))}, "a b");
    check("a time reference of nothing is none", {a, changed(at("10:00:00:00"), stamped(0, 48000))}, "a b");
    check("no rate to read it by", {a, changed(at("10:00:00:00"), stamped(36000ULL * 48000, 0))}, "");
    check("two days by their names", {camera("a_240517.mov"), camera("b_240518.mov")}, "");
    check("one day is not known", {camera("a_240517.mov"), at("10:00:00:00")}, "a_240517 b");
    check("two days by their files", {changed(a, created(1)), changed(at("10:00:00:00"), created(2))}, "");
    check("slow motion lies where it was shot, within 10 of 50 seconds",
          {changed(camera("a.mov", "10:00:00:00", 50), rates(120, 24)), at("10:00:10:00"),
           changed(camera("c.mov", "10:00:09:00"), rates(24, 24))},
          "a c");
    check("a rate that hardly differs", {changed(camera("a.mov"), rates(25.2, 25)), at("10:00:09:23")},
          "a b");
}

TEST(MulticamClusters, UseTheTimesOfTheMatching) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    const auto dated = [](const char* filename, const char* start, Date date) {
        return changed(camera(filename, start, 20),
                       [&](SyncGroup& group) { group.video.contentCreatedDate = date; });
    };
    const Date midnight = Date{} + std::chrono::hours(24);
    EXPECT_EQ(clustersOf({dated("a.mov", "23:59:50:00", midnight + std::chrono::seconds(10)),
                          dated("b.mov", "23:59:52:00", midnight - std::chrono::seconds(8)),
                          dated("c.mov", "23:59:52:00", midnight + std::chrono::hours(23))}),
              "a b")
        << "dated by their ends and by their starts";

    const auto headed = [](const char* filename, const char* start, Date date) {
        return changed(camera(filename, start, 20), [&](SyncGroup& group) { group.video.headerDate = date; });
    };
    const auto hours = [](int count) { return std::chrono::hours(count); };
    EXPECT_EQ(clustersOf({headed("a.mov", "10:00:00:00", Date{} + hours(34)),
                          headed("b.mov", "10:00:01:00", Date{} + hours(58)),
                          dated("c.mov", "10:00:02:00", Date{} + hours(58)),
                          dated("d.mov", "10:00:03:00", Date{} + hours(34)),
                          headed("e.mov", "10:00:04:00", Date{} + hours(42))}),
              "a d e | b c")
        << "two days; e counts UTC";
    EXPECT_EQ(clustersOf({headed("a.mov", "23:59:50:00", midnight + std::chrono::seconds(10)),
                          headed("b.mov", "23:59:52:00", midnight - std::chrono::seconds(8))}),
              "a b");

    // Camera a states 29.97, but all cameras counted at 25.
    const SyncGroupList cameras{
        changed(camera("a.mov"),
                [](SyncGroup& group) { group.video.timecodeFrameRate = TimecodeFrameRate::fps29_97; }),
        camera("b.mov", "10:00:02:00")};
    EXPECT_EQ(clustersOf(cameras), "");
    const MatchRules rules{.timecodeRate = TimecodeFrameRate::fps25};
    EXPECT_EQ(clustersOf(cameras, rules), "a b");
    ExportSettings settings = settingsAt(25);
    settings.matchRules = rules;
    const std::string gap =
        linesWith(FCPXMLExporter::exportDocument(cameras, {}, settings).fcpxmlString, "<gap ").front();
    EXPECT_EQ(attributeOf(gap, "duration"), "2s");
}

TEST(MulticamClusters, AreThoseOfASimpleSearch) {
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
    for (const unsigned seed : test::seeds(60)) {
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
    const auto check = [&](const char* filename, std::size_t index, const char* name) {
        EXPECT_EQ(FCPXMLExporter::deriveCameraName(picture(filename), index), name) << filename;
    };
    check("a003c012.mov", 5, "Cam A");
    check("A1.mov", 1, "Cam A");
    check("CLIP1.mov", 0, "Cam A");
    check("CLIP2.mov", 1, "Cam B");
    check("B12", 2, "Cam C");
    check("B123", 2, "Cam B");
    check("1A23.mov", 25, "Cam Z");
    check("\xC3\xA9"
          "7.mov",
          0, "Cam \xC3\x89");
    check("", 26, "Cam [");
    check("clip.mov", 0xD800 - 65, "Cam 55232");
}

TEST(MulticamClips, NoTwoCamerasHaveOneNameOrOneAngle) {
    const auto check = [&](const Names& paths, const Names& names) {
        std::vector<MediaAsset> videos;
        std::vector<const MediaAsset*> pointers;
        for (const std::string& path : paths) videos.emplace_back(FileURL{"/s/" + path}, AssetKind::video);
        for (const MediaAsset& video : videos) pointers.push_back(&video);
        EXPECT_EQ(FCPXMLExporter::cameraNames(pointers), names) << testing::PrintToString(paths);
    };
    check({"x/A001C001.mov", "y/B001C001.mov", "y/c.mov"}, {"Cam A", "Cam B", "Cam C"});
    check({"CARD_1/A001C001.mov", "CARD_2/A001C001.mov"}, {"Cam A CARD_1", "Cam A CARD_2"});
    check({"1/D/A001C001.mov", "B001C001.mov", "2/D/A001C007.mov"}, {"Cam A 1", "Cam B", "Cam A 2"});
    check({"A1.mov", "A2.mov", "A3.mov"}, {"Cam A", "Cam A 2", "Cam A 3"});
    check({"1/A1.mov", "1/A2.mov", "2/A3.mov"}, {"Cam A 1", "Cam A 1 2", "Cam A 2"});
    check({"Card/A1.mov", "card/A1.mov"}, {"Cam A Card", "Cam A card 2"}); // ids are lower case
    check({"B001C001.mov", "clip.mov", "clip2.mov"}, {"Cam B", "Cam C", "Cam D"});
    check({"CAM_B/clip.mov", "C Camera/clip.mov", "x/clip.mov"}, {"Cam B", "Cam C", "Cam D"});
    check({"cams/clip.mov", "CamC/clip.mov", "CAMP/clip.mov"},
          {"Cam A", "Cam C", "Cam D"}); // words are not camera names
    check({"cam a/go.mov", "cam a/pro.mov"}, {"Cam A", "Cam B"});
    check({"Cam-A/clip.mov", "x/A001C001.mov"}, {"Cam B", "Cam A"});
}

TEST(MulticamClips, AreRenderedToTheCodecOfMostSources) {
    const auto check = [&](MulticamCodec requested, const std::vector<std::optional<std::string>>& sources,
                           const char* codec) {
        std::vector<MediaAsset> videos(sources.size(), picture());
        std::vector<const MediaAsset*> pointers;
        for (std::size_t i = 0; i < videos.size(); ++i) {
            videos[i].videoCodecFourCC = sources[i];
            pointers.push_back(&videos[i]);
        }
        EXPECT_EQ(FCPXMLExporter::resolveMulticamCodec(requested, pointers), codec);
    };
    check(MulticamCodec::automatic, {}, "Apple ProRes 422 LT");
    check(MulticamCodec::automatic, {std::nullopt, std::nullopt}, "Apple ProRes 422 LT");
    check(MulticamCodec::automatic, {"apch", "apcn", "apcn"}, "Apple ProRes 422");
    check(MulticamCodec::automatic, {"apch", "apcn"}, "Apple ProRes 422 HQ");
    check(MulticamCodec::automatic, {std::nullopt, "AP4X"}, "Apple ProRes 4444");
    check(MulticamCodec::automatic, {"ap4h", "ap4x", "apcs", "apcs"}, "Apple ProRes 422 LT");
    check(MulticamCodec::automatic, {"apco"}, "Apple ProRes 422 Proxy");
    check(MulticamCodec::automatic, {"hev1"}, "H.264");
    check(MulticamCodec::automatic, {"XAVC", "xavc", "apch"}, "Apple ProRes 422 LT");
    check(MulticamCodec::proRes4444, {"apco"}, "Apple ProRes 4444");
    check(MulticamCodec::h264, {}, "H.264");
}

TEST(MulticamClips, AreInTheSceneOfMostAngles) {
    // `chosen`: place of the angle, -1 for none
    // `named`: name in the warning
    const auto check = [&](const Names& scenes, bool split, int chosen, const char* named) {
        std::vector<SyncGroup> made;
        std::vector<const SyncGroup*> groups;
        FCPXMLExporter::NamesByGroup buckets;
        for (std::size_t i = 0; i < scenes.size(); ++i)
            made.push_back(camera("c" + std::to_string(i) + ".mov"));
        for (std::size_t i = 0; i < made.size(); ++i) {
            groups.push_back(&made[i]);
            if (!scenes[i].empty()) buckets[made[i].id] = scenes[i];
        }
        std::vector<std::string> warnings;
        const auto id = FCPXMLExporter::multicamBucketGroupID(groups, buckets, split, warnings);
        EXPECT_EQ(id,
                  chosen < 0 ? std::nullopt : std::optional(made.at(static_cast<std::size_t>(chosen)).id));
        ASSERT_EQ(warnings.size(), named == nullptr ? 0U : 1U);
        if (named == nullptr) return;
        EXPECT_EQ(warnings.front(), std::string("Multicam angles span different scenes ") + named +
                                        " placed in the first angle's scene event.");
    };
    check({"12", "12", "13"}, true, 0, "(12, 13): c0.mov, c1.mov, c2.mov —");
    check({"13", "12"}, true, 0, "(12, 13): c0.mov, c1.mov —");
    check({"14", "13", "13"}, true, 1, "(13, 14): c0.mov, c1.mov, c2.mov —");
    check({"", "12"}, true, 1, nullptr);
    check({"12", "12"}, true, 0, nullptr);
    check({"", ""}, true, -1, nullptr);
    check({"12", "13"}, false, -1, nullptr);
    check({}, true, -1, nullptr);
}

TEST(MulticamClips, AreExportedBesideTheClipsOrInsteadOfThem) {
    SyncGroupList groups{camera("A001C001.mov"), camera("B001C001.mov", "10:00:02:00", 20),
                         camera("far.mov", "12:00:00:00")};
    ExportSettings settings = settingsAt(29.97);
    settings.set(settings::clipNamingSource, GroupNaming::Source::video);
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
    settings.set(settings::generateSyncClips, false);
    result = FCPXMLExporter::exportDocument(groups, {}, settings);
    EXPECT_EQ(result.syncClipCount, 0);
    EXPECT_EQ(result.multicamCount, 1);
    EXPECT_EQ(lines("<sync-clip").size(), 2U) << "the clip that has no partner is nowhere";
    settings.set(settings::generateMulticam, false);
    EXPECT_EQ(lines("<multicam").size(), 0U);

    groups.update(groups[0].id, [](SyncGroup& group) { group.video.frameRate = 59.94; });
    settings.set(settings::generateMulticam, true);
    EXPECT_EQ(lines("tcFormat=\"DF\"").size(), 1U) << "the first camera's own rate decides";
    groups.update(groups[1].id, [](SyncGroup& group) { group.audioMatches.clear(); });
    EXPECT_EQ(lines("<multicam").size(), 0U) << "a clip without sound is no angle";
}

/// The second camera runs at twice the rate of the project and begins in the middle of a project frame.
TEST(MulticamClips, ACameraIsAnAngleFromAWholeFrameOn) {
    // With less than a frame in common, the clips are not of one moment, and nothing is left out.
    for (const auto& [seconds, angles, leftOut] :
         {std::tuple{0.08, 2U, 0}, {0.06, 2U, 0}, {0.04, 0U, 1}, {0.02, 0U, 0}}) {
        SCOPED_TRACE(seconds);
        SyncGroup fast = camera("B001C001.mov", "10:00:02:01", seconds);
        fast.video.frameRate = fast.video.projectFrameRate = 50;
        const SyncGroupList groups{camera("A001C001.mov"), fast};
        const auto result = FCPXMLExporter::exportDocument(groups, {}, settingsAt(25));
        EXPECT_EQ(linesWith(result.fcpxmlString, "<mc-angle").size(), angles);
        const auto gap = "<gap offset=\"0s\" start=\"36000s\" duration=\"51/25s\"/>";
        EXPECT_EQ(linesWith(result.fcpxmlString, "<gap"), angles == 2 ? Names{gap} : Names{});
        EXPECT_EQ(std::ranges::count(result.warnings,
                                     "Not in the multicam clip (shorter than a frame of it): "
                                     "B001C001.mov"),
                  leftOut);
    }
}

TEST(MulticamClips, AnAngleWhoseSoundWasMovedIsNamed) {
    for (const auto& [moved, both, named] :
         {std::tuple{2.0, false, 1}, {0.16, false, 0}, {2.0, true, 0}, {0.0, false, 0}}) {
        const auto move = [by = moved](SyncGroup& group) { group.manualAudioOffsetSeconds = by; };
        const SyncGroup first = camera("A001C001.mov"), second = camera("B001C001.mov");
        const SyncGroupList groups{changed(first, move), both ? changed(second, move) : second};
        const auto result = FCPXMLExporter::exportDocument(groups, {}, settingsAt(25));
        ASSERT_EQ(std::ranges::count_if(
                      result.warnings,
                      [](const std::string& line) { return line.ends_with("A001C001.mov by 2.0 s"); }),
                  named)
            << moved << both;
        EXPECT_EQ(std::ssize(result.warnings), named);
    }
}

TEST(MulticamClips, ACameraThatOnlyItsMovedSoundBringsToAnotherIsNamed) {
    for (const double moved : {-3600.0, -3540.0, 0.0}) {
        SyncGroup late = camera("B001C001.mov", "09:00:00:00");
        late.audioMatches.front().syncOffsetSeconds = 3600;
        late.manualAudioOffsetSeconds = moved;
        const auto result =
            FCPXMLExporter::exportDocument({camera("A001C001.mov"), late}, {}, settingsAt(25));
        EXPECT_EQ(result.multicamCount, 0);
        EXPECT_EQ(std::ranges::any_of(result.warnings,
                                      [](const std::string& line) {
                                          return line.ends_with("program: B001C001.mov with A001C001.mov");
                                      }),
                  moved == -3600)
            << moved;
    }
}

} // namespace
} // namespace orvane
