#include "OrvaneSyncCore/Services/Matching/TakeStarts.h"
#include "Support/Assets.h"
#include "Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

MediaAsset recording(const char* name, const char* start, double seconds = 60) {
    MediaAsset made = test::audio(name, start, seconds);
    made.sampleRate = 48000;
    return made;
}

TEST(TakeStarts, AreThoseOfTheFileThatCarriesTheTimecode) {
    MediaAsset heard = recording("DAY1/Z0001_Tr1.WAV", "10:00:00:05");
    heard.bextTimeReference = 1'728'009'600;
    heard.timecodeFrameRate = TimecodeFrameRate::fps25;
    MediaAsset otherRate = recording("DAY1/Z0001_Tr4.WAV", "");
    otherRate.sampleRate = 96000;
    const struct {
        MediaAsset file;
        bool isGiven;
    } cases[] = {
        {recording("DAY1/Z0001_Tr2.WAV", ""), true},          {recording("DAY1/Z0001_TrLR.WAV", ""), true},
        {recording("DAY1/Z0001_01.WAV", ""), false}, // may be a part of a recording
        {recording("DAY1/Z0002_Tr2.WAV", ""), false},         {recording("DAY2/Z0001_Tr2.WAV", ""), false},
        {recording("DAY1/Z0001_Tr3.WAV", "", 60.001), false}, {otherRate, false},
    };
    for (const auto& [file, isGiven] : cases) {
        SCOPED_TRACE(file.url.path);
        std::vector<MediaAsset> all{file, heard};
        TakeStarts::share(all);
        EXPECT_EQ(all[0].startTimecodeString.has_value(), isGiven);
        EXPECT_EQ(all[0].bextTimeReference, isGiven ? heard.bextTimeReference : std::nullopt);
        EXPECT_EQ(all[0].timecodeFrameRate, isGiven ? heard.timecodeFrameRate : std::nullopt);
    }
}

TEST(TakeStarts, APartFromMidnightOnFollowsTheOneBefore) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    const auto dated = [](MediaAsset file, const char* date) {
        file.contentCreatedDate = dateFromISO8601(std::string(date) + "T12:00:00Z");
        return file;
    };
    const MediaAsset before = dated(recording("S/T2_1.WAV", "23:59:00:00"), "2024-05-17");
    const struct {
        MediaAsset first, second;
        bool isGiven;
    } cases[] = {
        {before, dated(recording("S/T2_2.WAV", "", 11), "2024-05-18"), true},
        {before, dated(recording("S/T2_2.WAV", "", 11), "2024-05-17"), false},
        {before, recording("S/T2_2.WAV", "", 11), false},
        {before, dated(recording("S/T3_2.WAV", "", 11), "2024-05-18"), false},
        {before, dated(recording("B/T2_2.WAV", "", 11), "2024-05-18"), false},
        {dated(recording("S/T2_1.WAV", "23:59:00:00", 58), "2024-05-17"), // ends before midnight
         dated(recording("S/T2_2.WAV", "", 11), "2024-05-18"), false},
    };
    for (const auto& [first, second, isGiven] : cases) {
        std::vector<MediaAsset> all{second, first};
        TakeStarts::continueAtMidnight(all);
        EXPECT_EQ(all[0].startTimecodeString.value_or(""), isGiven ? "00:00:00:00" : "")
            << second.url.path << " after " << first.durationSeconds.value_or(0);
    }
}

} // namespace
} // namespace orvane
