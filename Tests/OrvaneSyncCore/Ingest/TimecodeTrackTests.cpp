#include "OrvaneSyncCore/Services/Ingest/TimecodeTrackReader.h"

#include "MediaFactory/MediaFactory.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using test::MovieMaker;
using test::TimecodeSpec;

std::optional<TimecodeTrackReader::Start> readTrack(const std::string& bytes) {
    auto file = platform::RandomAccessFile::overBytes(std::as_bytes(std::span(bytes)));
    return TimecodeTrackReader::read(file);
}

std::optional<std::string> timecode(const std::string& bytes) {
    const auto start = readTrack(bytes);
    return start ? std::optional(start->timecode) : std::nullopt;
}

MovieMaker movie(const TimecodeSpec& spec) { return MovieMaker().video({}).audio({}).timecode(spec); }

TEST(TimecodeTrack, rateAndFirstSampleGiveTheStart) {
    const auto check = [&](const char* name, const TimecodeSpec& spec, const char* timecode,
                           std::optional<double> rate,
                           std::optional<TimecodeFrameRate> counted = TimecodeFrameRate::fps25) {
        SCOPED_TRACE(name);
        const auto start = readTrack(movie(spec).mediaBytes(64).bytes());
        ASSERT_TRUE(start.has_value());
        EXPECT_EQ(start->timecode, timecode);
        EXPECT_EQ(start->projectFrameRate, rate);
        EXPECT_EQ(start->timecodeFrameRate, rate ? counted : std::nullopt);
    };
    check("25 frames", {25, 1, 90000}, "01:00:00:00", 25.0);
    using enum TimecodeFrameRate;
    const auto drop = [](std::uint32_t timescale, std::uint32_t duration, std::uint32_t first) {
        return TimecodeSpec{
            .timescale = timescale, .frameDuration = duration, .firstFrame = first, .flags = 1};
    };
    check("drop frame by its flag", drop(30000, 1001, 1800), "00:01:00;02", 30000.0 / 1001, fps29_97d);
    check("no flag, no drop", {30000, 1001, 1800}, "00:01:00:00", 30000.0 / 1001, fps29_97);
    check("59.94 in drop", drop(60000, 1001, 3600), "00:01:00;04", 60000.0 / 1001, fps59_94d);
    check("a flag at a rate without drop", drop(25, 1, 90000), "01:00:00:00", 25.0);
    check("23.976", {24000, 1001, 86400}, "01:00:00:00", 24000.0 / 1001, fps23_976);
    check("23.98 in hundredths", {2398, 100, 86400}, "01:00:00:00", 24000.0 / 1001, fps23_976);
    check("47.952", {48000, 1001, 172800}, "01:00:00:00", 48000.0 / 1001, fps47_952);
    check("50", {50, 1, 180049}, "01:00:00:49", 50.0, fps50);
    check("100", {100, 1, 360099}, "01:00:00:99", 100.0, fps100);
    check("120", {120, 1, 432119}, "01:00:00:119", 120.0, fps120);
    check("119.88 in drop", drop(120000, 1001, 7200), "00:01:00;008", 120000.0 / 1001, fps119_88d);
    check("a rate that is no timecode's counts at 24", {15, 1, 86400}, "01:00:00:00", 15.0, std::nullopt);
    check("beyond a day", {25, 1, 25U * 86400}, "1 00:00:00:00", 25.0);
    check("a negative count", {25, 1, 0xFFFFFFFF}, "00:00:00:01", 25.0);
    check("the lowest count", {25, 1, 0x80000000}, "994 04:55:45:23", 25.0);
    check("no scale", {0, 1, 86400}, "01:00:00:00", std::nullopt);
    check("no frame duration", {25, 0, 86400}, "01:00:00:00", std::nullopt);
    check("240 is the highest rate", {240, 1, 24}, "00:00:01:00", 240.0, std::nullopt);
    check("above 240", {241, 1, 24}, "00:00:01:00", std::nullopt);
    check("at 24 without a rate, hours go on", {0, 0, 86400 * 30}, "30:00:00:00", std::nullopt);
    check("another format", {.firstFrame = 86400, .format = "tc64"}, "01:00:00:00", std::nullopt);
    check("64-bit offsets", {.firstFrame = 25, .wideOffset = true}, "00:00:01:00", 25.0);
    check("a table of one size", {.firstFrame = 25, .sampleSize = 0, .sizeTable = {4}}, "00:00:01:00", 25.0);
    check("the first of several", {.firstFrame = 25, .sampleSize = 0, .sizeTable = {4, 4, 4}}, "00:00:01:00",
          25.0);
    const auto edits = [](std::string_view entries, int version = 0) {
        return test::atom("edts", test::fullAtom("elst", entries, version));
    };
    const auto entry = [](std::int64_t time) {
        return test::be32(600) + test::be32(static_cast<std::uint64_t>(time)) + test::be32(0x10000);
    };
    check("a trimmed copy", {.firstFrame = 25, .trackAtoms = edits(test::be32(1) + entry(50))}, "00:00:03:00",
          25.0);
    check("a delay in front", {.firstFrame = 25, .trackAtoms = edits(test::be32(2) + entry(-1) + entry(50))},
          "00:00:03:00", 25.0);
    check("an edit list of 64 bits",
          {.firstFrame = 25,
           .trackAtoms = edits(test::be32(1) + test::be64(600) + test::be64(50) + test::be32(0x10000), 1)},
          "00:00:03:00", 25.0);
    check("an edit list that was cut off", {.firstFrame = 25, .trackAtoms = edits(test::be32(9))},
          "00:00:01:00", 25.0);
    check("a sample that claims more than is read", {.firstFrame = 25, .sampleSize = 12}, "00:00:01:00",
          25.0);
}

TEST(TimecodeTrack, aSampleThatIsNotThereGivesNothing) {
    const std::pair<const char*, TimecodeSpec> cases[] = {
        {"a table that is not there", {.sampleSize = 0}},
        {"a first sample that is too short", {.sampleSize = 0, .sizeTable = {2, 4}}},
        {"shorter than a count", {.sampleSize = 3}},
        {"longer than the file", {.sampleSize = 0xFFFFFFFF}},
        {"behind the file", {.sampleOffset = 1'000'000}},
        {"a sum that overflows", {.wideOffset = true, .sampleOffset = ~0ULL - 2}},
    };
    for (const auto& [name, spec] : cases) EXPECT_FALSE(readTrack(movie(spec).bytes()).has_value()) << name;
    EXPECT_FALSE(readTrack(MovieMaker().video({}).audio({}).bytes()).has_value()) << "no such track";
    EXPECT_FALSE(readTrack(test::atom("ftyp", "qt  ")).has_value());
    EXPECT_FALSE(readTrack("").has_value());
}

TEST(TimecodeTrack, theMovieIsFoundAtAnyPlace) {
    const TimecodeSpec spec{25, 1, 90000};
    const std::pair<const char*, std::string> cases[] = {
        {"in front", movie(spec).movieFirst().bytes()},
        {"behind a 64-bit mdat", movie(spec).wideMedia().mediaBytes(100).bytes()},
        {"behind an mdat to the end of the file", movie(spec).endlessMedia().mediaBytes(100).bytes()},
        {"behind junk that is no atom", movie(spec).bytes() + "junk"},
        {"the last one in the tail",
         movie(spec).endlessMedia().mediaBytes(100).leadingAtom("....moov").bytes()},
    };
    for (const auto& [name, bytes] : cases) EXPECT_EQ(timecode(bytes), "01:00:00:00") << name;
}

TEST(TimecodeTrack, theTailIsBounded) {
    const auto behind = [](std::uint64_t bytes) {
        return timecode(movie({25, 1, 25}).endlessMedia().trailingAtom(std::string(bytes, '\0')).bytes());
    };
    EXPECT_EQ(behind(4'990'000), "00:00:01:00");
    EXPECT_FALSE(behind(5'000'000).has_value());
    const std::string unfinished(16, '\xFF');
    EXPECT_FALSE(timecode(unfinished + "12345678").has_value());
    EXPECT_FALSE(timecode(unfinished + test::be32(8) + "moov12345678").has_value())
        << "a movie without contents";
    EXPECT_FALSE(timecode("\xFF\xFF\xFF\xFFmoov").has_value());
    EXPECT_FALSE(timecode("abcmoov12345").has_value());
}

TEST(TimecodeTrack, laterAtomsOfAKindReplaceEarlierOnes) {
    using test::atom;
    using test::be32;
    using test::fullAtom;
    const std::string sample = be32(50);
    const auto description = [](std::string_view format, std::uint32_t scale) {
        return fullAtom("stsd", be32(1) + be32(34) + std::string(format) + std::string(6, '\0') +
                                    test::be16(1) + be32(0) + be32(0) + be32(scale) + be32(1) + "\x19" +
                                    std::string(1, '\0'));
    };
    const auto handler = [](std::string_view type) { return fullAtom("hdlr", be32(0) + std::string(type)); };
    const auto offset = [](std::uint32_t at) { return fullAtom("stco", be32(1) + be32(at)); };
    const auto size = fullAtom("stsz", be32(4) + be32(1));
    const auto whole = [&](const std::string& tracks) {
        // The sample is in a "free" atom before the movie, at position 8.
        return timecode(atom("free", sample) + atom("moov", tracks));
    };
    const auto track = [&](const std::string& head, const std::string& table, const std::string& tail = {}) {
        return atom("trak", atom("mdia", head + atom("minf", atom("stbl", table)) + tail));
    };
    const std::string table = description("tmcd", 25) + size + offset(8);
    const auto check = [&](const char* name, const std::string& tracks,
                           const std::optional<std::string>& start) {
        EXPECT_EQ(whole(tracks), start) << name;
    };
    check("one of each", track(handler("tmcd"), table), "00:00:02:00");
    check("the handler last", track("", table, handler("tmcd")), "00:00:02:00");
    check("offsets", track(handler("tmcd"), offset(0) + table), "00:00:02:00");
    check("a last offset that lies", track(handler("tmcd"), table + offset(1'000'000)), {});
    check("descriptions", track(handler("tmcd"), table + description("tmcd", 50)), "00:00:01:00");
    check("another format", track(handler("tmcd"), table + description("mp4a", 50)), "00:00:02:00");
    check("another handler", track(handler("vide"), table), {});
    check("a track without an offset is passed over",
          track(handler("tmcd"), size) + track(handler("tmcd"), table), "00:00:02:00");
    check("the last media of a track counts",
          atom("trak", atom("mdia", handler("tmcd") + atom("minf", atom("stbl", table))) + atom("mdia")), {});
}

} // namespace
} // namespace orvane
