#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"
#include "OrvaneSyncCore/Services/Naming/OffspeedNaming.h"

#include "Support/Assets.h"
#include "Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <ctime>

namespace orvane {
namespace {

using GroupNaming::Source;
using test::audio;
using test::clip;
using test::slated;
using test::video;
using Text = std::optional<std::string>;

SyncGroup slatedClip(Text scene, Text take) {
    return clip(video("A003C012_x.mov", "10:23:45:12"),
                slated(audio("MIX_001.wav"), std::move(scene), std::move(take)));
}

SyncGroup silentClip() { return {video("A003C012_x.mov"), {}, MatchStatus::mos()}; }

TEST(GroupNaming, sourcesAndTokens) {
    for (const Source source : GroupNaming::allSources)
        EXPECT_EQ(GroupNaming::sourceFrom(rawValue(source)), source);
    EXPECT_EQ(GroupNaming::sourceFrom("Video"), Source::sceneTake);
    EXPECT_EQ(displayText(Source::sceneTake), "Scene-Take");
    EXPECT_EQ(GroupNaming::label(GroupNaming::TokenInfo::Category::date), "Date / Time");

    SyncGroup group = slatedClip("1", "2");
    group.video.contentCreatedDate = dateFromISO8601("2024-05-17T10:00:00Z");
    group.audioMatches[0].audio.edit().ixmlData->tape = "R1";
    for (const auto& token : GroupNaming::tokenCatalogue) {
        const std::string name = GroupNaming::resolve(token.token, group, 1);
        EXPECT_FALSE(name.empty() || name == token.token) << token.token << " is offered and does nothing";
    }
}

TEST(GroupNaming, numbers) {
    struct Case {
        const char* text;
        int width;
        const char* stripped;
        const char* padded;
    };
    for (const Case& test : {
             Case{"12", 3, "12", "012"}, Case{"0012", 3, "12", "012"}, Case{"1234", 3, "1234", "1234"},
             Case{"12A", 3, "12A", "12A"}, Case{"", 3, "", ""}, Case{"000", 2, "0", "00"},
             Case{"007", 0, "7", "007"}, Case{"-7", 3, "-7", "-7"}, Case{"+7", 3, "+7", "+7"},
             Case{" 7", 3, " 7", " 7"},
             Case{"0009223372036854775807", 3, "9223372036854775807", "9223372036854775807"},
             Case{"9223372036854775808", 30, "9223372036854775808", "9223372036854775808"},
             Case{"\xD9\xA3", 3, "\xD9\xA3", "\xD9\xA3"}, // a digit, but not one that is read
         }) {
        EXPECT_EQ(GroupNaming::stripTakePaddingIfNumeric(test.text), test.stripped) << test.text;
        EXPECT_EQ(GroupNaming::padSceneIfNumeric(test.text, test.width), test.padded) << test.text;
    }
    EXPECT_EQ(GroupNaming::zeroPadded(1, 1'000'000'000).size(), std::size_t{GroupNaming::widestNumber});
}

TEST(GroupNaming, sceneTakeName) {
    const auto check = [&](const Text& scene, const Text& take, const char* separator, const Text& name) {
        EXPECT_EQ(GroupNaming::sceneTakeName(slatedClip(scene, take), separator), name)
            << scene.value_or("none");
    };
    check("12A", "003", "_", "12A_3");
    check("12 A", "1", "-", "12-A-1");
    check("12_A", "1", "-", "12-A-1");
    check(" 12..A- \n", " 2 ", "-", "12-A-2");
    check("--", "1", "-", {});
    check("", "1", "-", {});
    check({}, "1", "-", {});
    check("7", {}, "-", "7");
    check("7", " ", "-", "7");
    check("7", "1A", "", "71A");
    EXPECT_EQ(GroupNaming::sceneTakeName(silentClip(), "-"), std::nullopt);
    EXPECT_EQ(GroupNaming::sceneTakeName(clip(video("a.mov"), audio("b.wav")), "-"), std::nullopt)
        << "no iXML";
}

TEST(GroupNaming, resolve) {
    SyncGroup group = slatedClip("7", "02");
    group.audioMatches[0].audio.edit().ixmlData->tape = "{video}";
    const auto check = [&](const char* name, const char* pattern, int counter, const char* result) {
        EXPECT_EQ(GroupNaming::resolve(pattern, group, counter), result) << name;
    };
    check("scene, take, padded counter", "{scene}_{take}_{counter:3}", 1, "7_2_001");
    check("the rest of the tokens", "{camera}/{video}/{audio}/{tc}", 1, "A/A003C012_x/MIX_001/10-23-45-12");
    check("every occurrence", "{scene}{scene}", 1, "77");
    check("a value that holds a later token", "{tape}", 1, "A003C012_x");
    check("no date leaves no trace", "{date}-{scene}_{time}", 1, "7");
    check("a run of four leaves two", "a----b____c", 1, "a--b__c");
    check("trimmed at the ends alone", "- _a - b_ -", 1, "a - b");
    check("the counter", "{counter}|{counter:2}|{counter:0}|{counter:02}", 123, "123|123|123|123");
    check("a width beyond reading", "{counter:99999999999999999999}", 5, "5");
    check("a token made by a counter is no token", "{counter:{counter:2}}", 1, "{counter:01}");
    check("from the last to the first", "{counter:01} {counter:{counter:2}}", 1, "1 1");
    check("no widths but for the counter", "{scene:3} {counter:} {counter:x}", 1,
          "{scene:3} {counter:} {counter:x}");
    check("no such token", "{Scene}", 1, "{Scene}");
    check("nothing", "", 1, "");
    EXPECT_EQ(GroupNaming::resolve("{scene}_{take}_{counter:3}", silentClip(), 1), "001");

    SyncGroup bomb = slatedClip("", "");
    auto& ixml = *bomb.audioMatches[0].audio.edit().ixmlData;
    for (int i = 0; i < 2000; ++i)
        *ixml.scene += "{take}", *ixml.take += "{tape}\xC3\xA9", ixml.tape = *ixml.take;
    const std::string name = GroupNaming::resolve("{scene}", bomb, 1);
    EXPECT_LE(name.size(), GroupNaming::longestName);
}

TEST(GroupNaming, datesFollowTheUsersCalendar) {
    const test::ScopedEnvironment zone("TZ", "Asia/Kolkata");
    ::tzset();
    SyncGroup group = slatedClip("1", "1");
    group.audioMatches[0].audio.edit().contentCreatedDate = dateFromISO8601("2024-05-17T20:00:00Z");
    EXPECT_EQ(GroupNaming::resolve("{date} {time}", group, 1), "2024-05-18 01-30-00") << "of the recording";
    group.video.contentCreatedDate = dateFromISO8601("2023-12-31T18:29:59.900Z");
    EXPECT_EQ(GroupNaming::resolve("{date} {time}", group, 1), "2023-12-31 23-59-59")
        << "the video's goes first";
}

TEST(GroupNaming, resolveEventName) {
    const auto check = [&](const char* pattern, const char* scene, const char* event, const char* name) {
        EXPECT_EQ(GroupNaming::resolveEventName(pattern, scene, event), name) << pattern;
    };
    check("{eventName} {scene:3}", "7", "", "007");
    check("{eventName} {scene:3}", "12A", "", "12A");
    check("{scene:2}/{scene}/{scene:0}", "7", "", "07/7/7");
    check("{scene:99999999999999999999}", "7", "", "7");
    check("{eventName}  {scene}", "7", "Day", "Day 7");
    check("a    b", "7", "", "a  b");
    check("\t{scene}\n", "{eventName}", "x", "x");
}

TEST(GroupNaming, baseName) {
    const SyncGroup full = slatedClip("7", "02"), silent = silentClip(),
                    unslated = clip(video("A003C012_x.mov"), audio("MIX.wav"));
    const auto check = [&](const char* name, const SyncGroup& group, Source source, const Text& pattern,
                           const char* base) {
        EXPECT_EQ(GroupNaming::baseName(group, source, pattern, "."), base) << name;
    };
    check("the video's", full, Source::video, {}, "A003C012_x");
    check("the recording's", full, Source::audio, {}, "MIX_001");
    check("without a recording", silent, Source::audio, {}, "A003C012_x");
    check("scene and take", full, Source::sceneTake, "{tc}", "7.2");
    check("without scene and take", unslated, Source::sceneTake, {}, "A003C012_x");
    check("a pattern", full, Source::custom, "T{take}", "T2");
    check("no pattern", full, Source::custom, {}, "7.2");
    check("an empty pattern", full, Source::custom, "", "7.2");
    check("a pattern that gives nothing", silent, Source::custom, "{date}", "A003C012_x");
}

TEST(GroupNaming, fcpClipName) {
    const auto name = [](const SyncGroup& group, int siblings, bool tag) {
        return GroupNaming::fcpClipName(group, Source::sceneTake, std::nullopt, siblings, "-", tag);
    };
    SyncGroup group = slatedClip("7", "02");
    EXPECT_EQ(name(group, 1, true), "7-2");
    EXPECT_EQ(name(group, 2, true), "7-2 Cam A");
    group.manualClipName = " \n";
    EXPECT_EQ(name(group, 1, true), "7-2") << "a blank name is none";
    EXPECT_EQ(GroupNaming::prefillClipNameFieldValue(group, Source::video, {}, "-"), "A003C012_x");
    group.manualClipName = " Hero ";
    group.isPickup = true;
    EXPECT_EQ(name(group, 2, true), "Hero Cam A PU");
    EXPECT_EQ(GroupNaming::prefillClipNameFieldValue(group, Source::video, {}, "-"), " Hero ");
    group.video.sensorFrameRate = 120;
    group.video.projectFrameRate = 24;
    EXPECT_EQ(name(group, 2, true), "Hero Cam A PU 120fps");
    EXPECT_EQ(name(group, 2, false), "Hero Cam A PU");

    struct Tag {
        std::optional<double> sensor, project;
        Text tag;
    };
    for (const Tag& test : {Tag{47.952, 24, "48fps"}, Tag{24.5, 24, {}}, Tag{12.5, 25, "12.5fps"},
                            Tag{120, {}, {}}, Tag{120, 0, {}}, Tag{{}, 24, {}}}) {
        group.video.sensorFrameRate = test.sensor;
        group.video.projectFrameRate = test.project;
        EXPECT_EQ(GroupNaming::offspeedTag(group), test.tag) << test.sensor.value_or(0);
    }
}

TEST(GroupNaming, cameraLetter) {
    const std::pair<const char*, Text> cases[] = {
        {"A003C012_x.mov", "A"}, {"B123C456", "B"},    {"A03C012.mov", {}}, {"a003C012.mov", {}},
        {"_A003C012.mov", {}},   {"A003c012.mov", {}}, {"A003C01", {}},     {"", {}}};
    for (const auto& [name, letter] : cases)
        EXPECT_EQ(GroupNaming::cameraLetter(video(name)), letter) << name;
}

TEST(OffspeedNaming, SuffixesSayTheRateAndJoinTheName) {
    const auto check = [&](const char* suffix, double fps, const char* name) {
        EXPECT_EQ(OffspeedNaming::resolveNativeMOSName("Clip", suffix, fps), name);
        EXPECT_EQ(OffspeedNaming::resolveProjectRateName("Clip", suffix, fps), name);
    };
    check("[{fps} FPS]", 120, "Clip [120 FPS]");
    check("_{fps}fps", 47.952, "Clip_48fps");
    check("-{fps}", 119.88, "Clip-120");
    check(" at {fps}/{fps}", 25, "Clip at 25/25");
    check(".{fps}", 59.94, "Clip.59.9");
    check("{fps}", 1200, "Clip 1200");
    check("{FPS}", 120, "Clip {FPS}");
    check("", 120, "Clip");
}

} // namespace
} // namespace orvane
