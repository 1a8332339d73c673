#include "OrvaneSyncCore/Services/Matching/ProjectFrameRateResolver.h"
#include "OrvaneSyncCore/Services/Matching/SplitRecordingDetector.h"
#include "Support/Assets.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

using SplitRecordingDetector::Candidate;
using Text = std::optional<std::string>;

TEST(SplitRecordingDetector, isContinuousChain) {
    const auto pair = [](Text originatorA, Text originatorB, Text tapeA, Text tapeB) {
        return std::vector<Candidate>{{{0, 10}, std::move(originatorA), std::move(tapeA)},
                                      {{10, 20}, std::move(originatorB), std::move(tapeB)}};
    };
    const auto check = [&](const char* name, const std::vector<Candidate>& files, bool isChain) {
        EXPECT_EQ(SplitRecordingDetector::isContinuousChain(files), isChain) << name;
    };
    check("one file is no chain", {{{0, 10}, {}, {}}}, false);
    check("in any order", {{{20.6, 30}, {}, {}}, {{0, 10}, {}, {}}, {{10.3, 20.3}, {}, {}}}, true);
    check("a gap of half a second", {{{0, 10}, {}, {}}, {{10.5, 20}, {}, {}}}, true);
    check("a gap of more", {{{0, 10}, {}, {}}, {{10.6, 20}, {}, {}}}, false);
    check("an overlap of half a second", {{{0, 10}, {}, {}}, {{9.5, 20}, {}, {}}}, true);
    check("side by side", {{{0, 10}, {}, {}}, {{0, 10}, {}, {}}}, false);
    check("case and blanks", pair("Recorder A", " recorder a\r\n", {}, {}), true);
    check("two recorders", pair("A", "B", {}, {}), false);
    check("an unknown recorder", pair("A", {}, {}, {}), true);
    check("a blank recorder", pair("A", "  ", {}, {}), true);
    check("two rolls", pair({}, {}, "A", "B"), false);
    check("one roll", pair({}, {}, "\xC3\x89", "\xC3\xA9"), true);
}

TEST(SplitRecordingDetector, mayContinue) {
    const auto stated = [](const char* name, const char* scene, const char* take, const char* tape = "R1") {
        MediaAsset part = test::audio(name, "10:00:00:00", 10);
        part.sampleRate = 48000;
        part.channelCount = 2;
        part.ixmlData = IXMLData{};
        part.ixmlData->scene = scene;
        part.ixmlData->take = take;
        part.ixmlData->tape = tape;
        return part;
    };
    const auto named = [](const char* name) { return test::audio(name, "10:00:00:00", 10); };
    MediaAsset slow = stated("A2.wav", "7", "1"), mono = slow;
    slow.sampleRate = 44100;
    mono.channelCount = 1;
    struct Case {
        const char* name;
        MediaAsset previous, current;
        bool mayContinue;
    };
    for (const Case& one : {
             Case{"one take, any number counts", stated("A1.wav", "7", "1"), stated("A2.wav", "7", "1"),
                  true},
             {"backwards", stated("A2.wav", "7", "1"), stated("A1.wav", "7", "1"), false},
             {"another word", stated("A1.wav", "7", "1"), stated("B2.wav", "7", "1"), false},
             {"another take", stated("A1.wav", "7", "1"), stated("A2.wav", "7", "2"), false},
             {"another scene", stated("A1.wav", "7", "1"), stated("A2.wav", "8", "1"), false},
             {"another roll", stated("A1.wav", "7", "1"), stated("A2.wav", "7", "1", "R2"), false},
             {"another rate", stated("A1.wav", "7", "1"), slow, false},
             {"other channels", stated("A1.wav", "7", "1"), mono, false},
             {"a number of its own", named("T_1.wav"), named("T_2.wav"), true},
             {"a part behind the take", named("T01.wav"), named("T01_2.wav"), true},
             {"takes", named("T05.wav"), named("T06.wav"), false},
             {"takes of three digits", named("A_001.wav"), named("A_002.wav"), false},
             {"parts of three digits behind a take's number", named("T01_001.wav"), named("T01_002.wav"),
              true},
         })
        EXPECT_EQ(SplitRecordingDetector::mayContinue(one.previous, one.current), one.mayContinue)
            << one.name;
}

SyncGroup voter(const char* name, std::optional<double> project, std::optional<double> file,
                std::optional<double> sensor = std::nullopt, MatchStatus status = MatchStatus::matched()) {
    MediaAsset video = test::video(name);
    video.projectFrameRate = project;
    video.frameRate = file;
    video.sensorFrameRate = sensor;
    return {video, {}, status};
}

TEST(ProjectFrameRateResolver, resolve) {
    SyncGroup excluded = voter("x", 50, 50);
    excluded.isExcludedFromExport = true;
    const auto check = [&](const char* name, const SyncGroupList& groups, double setting, double fps,
                           const char* source, const std::vector<std::string>& disagreeing) {
        const auto resolution = ProjectFrameRateResolver::resolve(groups, setting);
        EXPECT_EQ(resolution.fps, fps) << name;
        EXPECT_EQ(resolution.source, source) << name;
        EXPECT_EQ(resolution.disagreeingClips, disagreeing) << name;
    };
    check("no clips", {}, 0, 24, "fallback 24", {});
    check("the lower of equals",
          {voter("a", 25, {}), voter("b", 24, {}), voter("c", 25, {}), voter("d", 24, {})}, 0, 24,
          "detected (2 of 4 clips)", {"a", "c"});
    check("the user", {voter("a", 25, {}), voter("b", 30, {})}, 30, 30, "user setting", {"a"});
    check("the first of a kind names it", {voter("a", 23.976, {}), voter("b", 24, {}), voter("c", 24, {})}, 0,
          24000.0 / 1001, "detected (3 of 3 clips)", {});
    check("clips that are not exported",
          {excluded, voter("a", 50, {}, {}, MatchStatus::unmatched()),
           voter("b", 50, {}, {}, MatchStatus::ambiguous(2)), voter("c", 25, {}, {}, MatchStatus::mos())},
          0, 25, "detected (1 of 1 clips)", {});
    check("the project's rate before the files'",
          {voter("a", {}, 50), voter("b", {}, 50), voter("c", 25, 25)}, 0, 25, "detected (1 of 3 clips)", {});
    check("the files' rates", {voter("a", {}, 50), voter("b", {}, 25, 100), voter("c", {}, 50)}, 0, 50,
          "detected (2 of 3 clips)", {});
    check("without a project rate nothing is slow motion", {voter("a", 0, 120, 120), voter("b", {}, {})}, 0,
          120, "detected (1 of 2 clips)", {});
    check("a rate of 0 is none", {voter("a", 0, {}), voter("b", 0, {}), voter("c", 25, {})}, 0, 25,
          "detected (1 of 3 clips)", {});
}

TEST(ProjectFrameRateResolver, mode) {
    EXPECT_EQ(ProjectFrameRateResolver::mode({}), std::nullopt);
    EXPECT_EQ(ProjectFrameRateResolver::mode({30, 29.97, 25, 24, 24.1}), (std::pair{24.0, 2}))
        << "24 and 24.1 are one, 25 is not";
}

} // namespace
} // namespace orvane
