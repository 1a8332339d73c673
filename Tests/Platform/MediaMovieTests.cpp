#include "MediaFactory/MediaFactory.h"
#include "Platform/MediaInspectionText.h"
#include "Support/RandomSeed.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <random>

namespace orvane::test {
namespace {

void check(const char* name, const std::string& bytes, const std::string& expected) {
    EXPECT_EQ(inspectionText(inspectBytes(bytes)), expected) << name;
}
void check(const char* name, const MovieMaker& movie, const std::string& expected) {
    check(name, movie.bytes(), expected);
}

std::string repeated(const std::string& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
}

const std::string dayKey = std::string(1, '\xA9') + "day";
const VideoSpec ntsc{.codec = "apch", .timescale = 30000, .frameDuration = 1001, .frames = 300};

/// An AAC configuration in its descriptors.
std::string esds(const std::string& configuration, std::uint8_t objectType = 0x40) {
    const auto descriptor = [](std::uint8_t tag, const std::string& body) {
        return std::string(1, static_cast<char>(tag)) + static_cast<char>(body.size()) + body;
    };
    const std::string decoder =
        std::string(1, static_cast<char>(objectType)) + field("", 12) + descriptor(5, configuration);
    return fullAtom("esds", descriptor(3, be16(1) + field("", 1) + descriptor(4, decoder)));
}

TEST(MediaMovie, readsTracksInFileOrder) {
    check("picture and sound", MovieMaker().video({}).audio({}),
          "10 s, avc1 1920x1080 25 fps, 48000 Hz 2 ch");
    check("the rate is rounded to 32 bits", MovieMaker().video(ntsc), "10.01 s, apch 1920x1080 29.97003 fps");
    check("a timecode track is no picture", MovieMaker().timecode({25, 1, 90000}).video({}),
          "10 s, avc1 1920x1080 25 fps");
    check("two of each", MovieMaker().audio({.channels = 1}).video(ntsc).video({.width = 8}).audio({}),
          "10.01 s, apch 1920x1080 29.97003 fps, avc1 8x1080 25 fps, 48000 Hz 1 ch, 48000 Hz 2 ch");
    check("chapter pictures are no picture",
          MovieMaker().video({.codec = "jpeg", .frames = 1, .enabled = false}).video({}),
          "10 s, avc1 1920x1080 25 fps");
    check("motion JPEG is one", MovieMaker().video({.codec = "jpeg"}), "10 s, jpeg 1920x1080 25 fps");
    check("a codec that is no ASCII", MovieMaker().video({.codec = "\xFF\xFE\x01\x02"}),
          "10 s,  1920x1080 25 fps");
    check("an encrypted picture",
          MovieMaker().video({.codec = "encv", .entryAtoms = atom("sinf", atom("frma", "hvc1"))}),
          "10 s, hvc1 1920x1080 25 fps");
    check("no sample description", MovieMaker().track({.handler = "vide", .width = 640, .height = 480}),
          "1 s, ? 640x480 ? fps");
    check("no media duration: the run lengths tell",
          MovieMaker()
              .track({.handler = "vide",
                      .timescale = 25,
                      .duration = 0xFFFFFFFF,
                      .timeToSample = {{50, 1}, {25, 2}}})
              .duration(2400, 600),
          "4 s, ? ?x? 18.75 fps");
    check("too many run lengths to add up",
          MovieMaker()
              .track({.handler = "vide",
                      .timescale = 25,
                      .duration = 0,
                      .timeToSample = std::vector(70000, std::pair{1U, 1U})})
              .duration(2400, 600),
          "4 s, ? ?x? ? fps");
    check("the movie's own duration wins", MovieMaker().video({}).duration(7, 2),
          "3.5 s, avc1 1920x1080 25 fps");
    check("no duration in the header: the longest track", MovieMaker().video({}).duration(0xFFFFFFFF, 600),
          "10 s, avc1 1920x1080 25 fps");
    check("a movie without a timescale", MovieMaker().video({}).duration(1000, 0),
          "? s, avc1 1920x1080 25 fps");
    check("an empty movie", MovieMaker(), "0 s");
}

TEST(MediaMovie, findsTheHeaderAtAnyPlace) {
    const char* expected = "10 s, avc1 1920x1080 25 fps";
    check("in front", MovieMaker().video({}).movieFirst().mediaBytes(100), expected);
    check("behind a 64-bit media atom", MovieMaker().video({}).wideMedia().mediaBytes(100), expected);
    check("in front of media cut off",
          MovieMaker().video({}).movieFirst().trailingAtom(atomClaiming(9999, "mdat")), expected);
    check("in front of media without end", MovieMaker().video({}).movieFirst().endlessMedia().mediaBytes(9),
          expected);
    check("behind media without end", MovieMaker().video({}).endlessMedia().mediaBytes(99), expected);
    check("behind media that claims too much", MovieMaker().leadingAtom(atomClaiming(9999, "mdat")).video({}),
          expected);
    check("with a 64-bit size", wideAtom("moov", MovieMaker().video({}).movieAtomBytes().substr(8)),
          expected);
    const TemporaryDirectory folder;
    MovieMaker().video({}).wideMedia().mediaBytes(std::uint64_t{5} << 30U).writeTo(folder.path("big.mov"));
    EXPECT_EQ(inspectionText(platform::inspectMedia(folder.path("big.mov"))), expected) << "beyond 4 GB";
}

TEST(MediaInspector, saysHowMuchOfAFileIsThere) {
    // Media data of 32 KB a second that is as random as sound, with zeros from byte `from` to byte `to` of
    // the file.
    const auto withZeros = [](std::string bytes, std::size_t from, std::size_t to) {
        std::minstd_rand random(test::randomSeed());
        const std::size_t mediaBytes = 1 << 20;
        for (std::size_t at = bytes.size() - mediaBytes; at < bytes.size(); ++at)
            bytes[at] = at < from || at >= to ? static_cast<char>(random() % 255 + 1) : '\0';
        return bytes;
    };
    const std::string long_ = WaveMaker()
                                  .format({.channels = 2, .sampleRate = 8000, .samples = SampleFormat::pcm16})
                                  .silence((1 << 20) / 4)
                                  .bytes();
    const std::string mono = WaveMaker()
                                 .format({.channels = 1, .sampleRate = 16000, .samples = SampleFormat::pcm16})
                                 .silence((1 << 20) / 2)
                                 .bytes();
    const std::string longMovie = MovieMaker().video({}).movieFirst().mediaBytes(1 << 20).bytes();
    const std::size_t end = long_.size(), anySecond = end - 32'001;
    const MovieMaker movie = MovieMaker().video({}).mediaBytes(8000);
    const auto wave = WaveMaker().format({.channels = 2, .samples = SampleFormat::pcm16});
    struct Case {
        const char* name;
        std::string bytes;
        std::size_t cutBytes;
        std::optional<double> share;
    };
    const Case cases[] = {
        {"a whole recording", WaveMaker(wave).silence(1000).bytes(), 0, {}},
        {"a recording", WaveMaker(wave).silence(1000).bytes(), 3000, 0.25},
        {"a recording without a size", WaveMaker(wave).silenceClaiming(0xFFFFFFFF, 1000).bytes(), 0, {}},
        {"a whole movie", movie.bytes(), 0, {}},
        {"a movie without its header", movie.bytes(), movie.movieAtomBytes().size() + 6000, 0.25},
        {"a movie that was not closed", movie.bytes(), movie.movieAtomBytes().size(), 0},
        {"the head of a recording", WaveMaker(wave).silence(1000).bytes().substr(0, 12), 0, 0},
        {"a movie", MovieMaker(movie).movieFirst().bytes(), 6000, 0.25},
        {"zeros from a block on", withZeros(long_, 786'432, end), 0, 0.75},
        {"a channel that was switched off", withZeros(long_, anySecond, end), 0, {}},
        {"zeros for long", withZeros(long_, end / 2 + 1, end), 0, 0.5},
        {"a receiver that was switched off for long", withZeros(mono, end / 2 + 99, end), 0, {}},
        {"one channel with zeros for most of it", withZeros(mono, end / 4 + 1, end), 0, 0.25},
        {"one channel with zeros from a block on", withZeros(mono, 786'432, end), 0, 0.75},
        {"zeros from a block on, and earlier ones",
         withZeros(long_, 786'432, end).replace(300'000, 100'000, 100'000, '\0'),
         0,
         {}},
        {"a channel that was never on", withZeros(long_, 0, end), 0, {}},
        {"a movie with zeros from a block on", withZeros(longMovie, 786'432, longMovie.size()), 0, 0.75},
        {"a movie of 64 bits", MovieMaker(movie).movieFirst().wideMedia().bytes(), 6000, 0.25},
        {"a movie without a size", MovieMaker(movie).movieFirst().endlessMedia().bytes(), 6000, {}},
    };
    const TemporaryDirectory folder;
    for (const Case& one : cases) {
        const auto path = folder.write(one.name, one.bytes.substr(0, one.bytes.size() - one.cutBytes));
        const auto inspection = platform::inspectMedia(path);
        ASSERT_TRUE(inspection) << one.name;
        EXPECT_NEAR(inspection->heldShare.value_or(-1), one.share.value_or(-1), 0.01) << one.name;
    }
}

TEST(MediaMovie, readsStreamDescriptions) {
    const auto sound = [](const AudioSpec& spec) { return MovieMaker().audio(spec).bytes(); };
    check("version 1", sound({.channels = 4, .codec = "in24", .version = 1}), "10 s, 48000 Hz 4 ch");
    check("version 2 holds what 16 bits cannot",
          sound({.channels = 24, .sampleRate = 192000, .codec = "lpcm", .version = 2}),
          "2.5 s, 192000 Hz 24 ch");
    check("AAC", sound({.entryAtoms = esds("\x12\x08")}), "10 s, 44100 Hz 1 ch");
    check("AAC with its rate written out", sound({.entryAtoms = esds("\x17\x80\x5D\xC0\x10")}),
          "10 s, 48000 Hz 2 ch");
    check("AAC with signalled band replication", sound({.entryAtoms = esds("\x2B\x11\x88")}),
          "10 s, 48000 Hz 2 ch");
    check("MP3 in the same descriptors", sound({.entryAtoms = esds("\x12\x08", 0x6B)}),
          "10 s, 48000 Hz 2 ch");
    check("inside QuickTime's wave", sound({.version = 1, .entryAtoms = atom("wave", esds("\x12\x08"))}),
          "10 s, 44100 Hz 1 ch");
    check("FLAC above 65 kHz",
          sound({.sampleRate = 192000,
                 .codec = "fLaC",
                 .entryAtoms = fullAtom("dfLa", be32(0x80000022) + field("", 10) + "\x2E\xE0\x0A\xF0")}),
          "2.5 s, 192000 Hz 6 ch");
    check("Opus", sound({.codec = "Opus", .entryAtoms = atom("dOps", field("", 1) + "\x06" + field("", 9))}),
          "10 s, 48000 Hz 6 ch");
    check("an empty description: the media's own rate",
          MovieMaker().track(
              {.handler = "soun", .timescale = 96000, .duration = 96000, .sampleEntry = atom("raw ")}),
          "1 s, 96000 Hz ? ch");
    check("rates that are none",
          MovieMaker().track({.handler = "soun",
                              .timescale = 0xFFFFFFFF,
                              .duration = 0,
                              .sampleEntry = atom("lpcm", field("", 8) + be16(2) + field("", 22) +
                                                              beFloat64(-1) + be32(2))}),
          "0 s, ? Hz 2 ch");
}

TEST(MediaMovie, addsUpFragments) {
    const std::string trex = fullAtom("trex", be32(1) + be32(1) + be32(2) + be32(0) + be32(0));
    const auto extended = [&trex](std::uint64_t header, const std::string& extends, std::uint32_t frames) {
        return MovieMaker()
            .video({.timescale = 50, .frameDuration = 2, .frames = frames})
            .duration(header, 1000)
            .movieAtom(atom("mvex", extends + trex));
    };
    const auto movie = [&](std::uint64_t header, std::uint64_t units, std::uint32_t frames) {
        return extended(header, units == 0 ? "" : fullAtom("mehd", be32(units)), frames);
    };
    const auto fragment = [](const std::string& tfhd, const std::string& trun) {
        return atom("moof", atom("traf", tfhd + trun)) + atom("mdat", "media");
    };
    const std::string plain = fullAtom("tfhd", be32(1));
    const std::string defaults = fragment(plain, fullAtom("trun", be32(100)));
    const std::string own =
        fragment(fullAtom("tfhd", be32(1) + be32(1) + be32(4), 0, 0x0A), fullAtom("trun", be32(50)));
    const std::string timed = fragment(
        plain, fullAtom("trun", be32(2) + be32(0) + be32(3) + be32(9) + be32(3) + be32(9), 0, 0x301));
    const std::string wrongCount = fragment(plain, fullAtom("trun", be32(0xFFFFFFFF) + be32(3), 0, 0x100));
    const std::string reference = be32(9) + be32(100) + be32(0);
    const auto index = [&reference](std::uint64_t claimed, int references, const std::string& nested = "") {
        return fullAtom("sidx", be32(1) + be32(50) + be64(0) + be16(0) + be16(claimed) + nested +
                                    repeated(reference, references));
    };
    check("durations of the movie", movie(0, 0, 0).trailingAtom(defaults + defaults),
          "8 s, avc1 1920x1080 25 fps");
    check("durations of the fragment", movie(0, 0, 0).trailingAtom(own), "4 s, avc1 1920x1080 12.5 fps");
    check("durations of each sample", movie(0, 0, 0).trailingAtom(timed),
          "0.12 s, avc1 1920x1080 16.66667 fps");
    check("more samples than there is room for", movie(0, 0, 0).trailingAtom(wrongCount),
          "0.06 s, avc1 1920x1080 16.66667 fps");
    check("the whole duration stands in the header", movie(0, 9000, 0).trailingAtom(defaults),
          "9 s, avc1 1920x1080 25 fps");
    check("an unfinished recording goes on in fragments", movie(10000, 0, 250).trailingAtom(defaults),
          "14 s, avc1 1920x1080 25 fps");
    check("nothing but the start", movie(0, 0, 0), "0 s, avc1 1920x1080 ? fps");
    check("the start and its index", movie(0, 0, 0).trailingAtom(index(2, 2)), "4 s, avc1 1920x1080 ? fps");
    check("a long index", movie(0, 0, 0).trailingAtom(index(20000, 20000)), "40000 s, avc1 1920x1080 ? fps");
    check("an index cut off", movie(0, 0, 0).trailingAtom(index(3, 2)), "0 s, avc1 1920x1080 ? fps");
    check("an index of indices",
          movie(0, 0, 0).trailingAtom(index(2, 1, be32(0x80000009) + be32(100) + be32(0))),
          "2 s, avc1 1920x1080 ? fps");
    check("the whole duration is not known",
          extended(0, fullAtom("mehd", be32(0xFFFFFFFF)), 0).trailingAtom(defaults),
          "4 s, avc1 1920x1080 25 fps");
    check("nor in 64 bits", extended(0, fullAtom("mehd", be64(UINT64_MAX), 1), 0).trailingAtom(defaults),
          "4 s, avc1 1920x1080 25 fps");
    check(
        "the first words on a track count",
        extended(0, trex + fullAtom("trex", be32(1) + be32(1) + be32(9) + be64(0)), 0).trailingAtom(defaults),
        "4 s, avc1 1920x1080 25 fps");
    check("another track's fragments",
          movie(0, 0, 0).trailingAtom(fragment(fullAtom("tfhd", be32(7)), fullAtom("trun", be32(9)))),
          "0 s, avc1 1920x1080 ? fps");
}

TEST(MediaMovie, readsMetadataInFileOrder) {
    using namespace std::string_literals;
    const auto typed = [](std::uint64_t type, const std::string& value) {
        return atom(
            "meta",
            fullAtom("hdlr", field("", 20)) + fullAtom("keys", be32(1) + atom("mdta", "com.acme.sensorFPS")) +
                atom("ilst", be32(24 + value.size()) + be32(1) + atom("data", be32(type) + be32(0) + value)));
    };
    const std::string freeForm = atom("----", fullAtom("mean", "com.acme") + fullAtom("name", "projectFPS") +
                                                  atom("data", be32(1) + be32(0) + "24"));
    const auto check = [&](const char* name, const MovieMaker& maker, const char* expected) {
        EXPECT_EQ(metadataText(inspectBytes(maker.bytes())), expected) << name;
    };
    check("keys, in order",
          MovieMaker()
              .metadata("com.apple.quicktime.creationdate", "2024-03-09T10:00:00+0100")
              .metadata("com.acme.sensorFPS", std::int64_t{120})
              .metadata("projectFPS", 23.976)
              .metadata("neg", std::int64_t{-5}),
          "com.apple.quicktime.creationdate(creationDate)='2024-03-09T10:00:00+0100' com.acme.sensorFPS=120 "
          "projectFPS=23.976 neg=-5 ");
    check("a list of the other kind", MovieMaker().listItem(dayKey, "2024").listItem("desc", "x"),
          "\xC2\xA9"
          "day(creationDate)='2024' desc='x' ");
    check("texts of the user data",
          MovieMaker().userData(dayKey, "2024-03-09").userData("\xA9nam", "caf\x8E", 0),
          "\xC2\xA9"
          "day(creationDate)='2024-03-09' \xC2\xA9nam='caf\xC3\xA9' ");
    check("UTF-16 by its mark", MovieMaker().userData("\xA9nam", "\xFE\xFF\0A\0B"s), "\xC2\xA9nam='AB' ");
    check("a text that claims too much",
          MovieMaker().userDataAtom(atom("\xA9nam", be16(99) + be16(0x55C4) + "abc")), "\xC2\xA9nam='abc' ");
    check("3GPP", MovieMaker().userDataAtom(fullAtom("titl", be16(0x15C7) + "Take\0"s)), "titl='Take' ");
    check("free form",
          MovieMaker().userDataAtom(
              atom("meta", be32(0) + fullAtom("hdlr", field("", 20)) + atom("ilst", freeForm))),
          "com.acme.projectFPS='24' ");
    check("32-bit float", MovieMaker().movieAtom(typed(23, beFloat32(119.5F))), "com.acme.sensorFPS=119.5 ");
    check("unsigned byte", MovieMaker().movieAtom(typed(22, "\xF0")), "com.acme.sensorFPS=240 ");
    check("64-bit", MovieMaker().movieAtom(typed(74, be64(48))), "com.acme.sensorFPS=48 ");
    check("UTF-16", MovieMaker().movieAtom(typed(2, "\0\x31\0\x32"s)), "com.acme.sensorFPS='12' ");
    check("a number without bytes", MovieMaker().movieAtom(typed(21, "")), "com.acme.sensorFPS=? ");
    check("a number too long", MovieMaker().movieAtom(typed(21, field("", 9))), "com.acme.sensorFPS=? ");
    check("text that is no UTF-8", MovieMaker().movieAtom(typed(1, "a\xFF")),
          "com.acme.sensorFPS='a\xEF\xBF\xBD' ");
}

TEST(MediaMovie, survivesImpossibleAtoms) {
    std::string nested = atom("trak");
    for (int i = 0; i < 1000; ++i) nested = atom("trak", nested);
    const std::string free = atom("free");
    const std::string video = "10 s, avc1 1920x1080 25 fps";
    const auto in = [](const std::string& bytes) { return MovieMaker().movieAtom(bytes).video({}).bytes(); };
    const auto before = [](const std::string& bytes) {
        return MovieMaker().leadingAtom(bytes).video({}).bytes();
    };
    check("no bytes", "", "nothing");
    check("seven bytes", std::string("\0\0\0\x08moo", 7), "nothing");
    check("zeros", std::string(100000, '\0'), "nothing");
    check("a movie of its header alone", atom("moov"), "nothing");
    check("size 0", before(atomClaiming(0, "free")), "nothing");
    check("size 1 with a 64-bit size of 0", before(atomClaiming(1, "free", be64(0))), "nothing");
    check("size 1 with a 64-bit size past the end", before(atomClaiming(1, "free", be64(UINT64_MAX))),
          "nothing");
    check("size 7", before(atomClaiming(7, "free")), "nothing");
    check("past the end", before(atomClaiming(0x7FFFFFFF, "free")), "nothing");
    check("20,000 siblings", before(repeated(free, 20000)), "nothing");
    check("9,000 siblings", before(repeated(free, 9000)), video);
    check("size 0 in the movie", in(atomClaiming(0, "free")), video);
    check("size 7 in the movie", in(atomClaiming(7, "free")), video);
    check("past the end of the movie", in(atomClaiming(100, "trak", "")), video);
    check("20,000 siblings in the movie", in(repeated(free, 20000)), video);
    check("1,000 deep", in(nested), video);
    check("20,000 items", in(atom("udta", repeated(atom("\xA9nam", be32(0x155C4) + "x"), 20000))), video);
    check("a table that counts more than it holds",
          MovieMaker().track({.handler = "vide",
                              .timescale = 1,
                              .duration = 1,
                              .timeToSample = {{4000000000U, 1}},
                              .sampleSize = 0}),
          "1 s, ? ?x? ? fps");
}

TEST(MediaMovie, tracksAreBounded) {
    MovieMaker maker;
    for (int i = 0; i < 1100; ++i) maker.audio({});
    EXPECT_EQ(inspectBytes(maker.bytes())->audioTracks.size(), 1000U);
}

TEST(MediaMovie, isReadWholeOrNotAtAll) {
    MovieMaker maker;
    maker.video({})
        .audio({.version = 1, .entryAtoms = atom("wave", esds("\x12\x08"))})
        .timecode({25, 1, 90000});
    maker.metadata("com.acme.sensorFPS", 120.0).userData(dayKey, "2024").mediaBytes(40);
    const std::string behind = maker.bytes();
    for (std::size_t length = 0; length < behind.size(); ++length)
        ASSERT_FALSE(inspectBytes(behind.substr(0, length))) << length;

    const std::string front = MovieMaker(maker).movieFirst().bytes();
    const std::size_t movieEnd = front.size() - 40 - 4 - 8;
    const std::string whole = inspectionText(inspectBytes(front)) + metadataText(inspectBytes(front));
    ASSERT_EQ(inspectionText(inspectBytes(behind)) + metadataText(inspectBytes(behind)), whole);
    for (std::size_t length = 0; length < front.size(); ++length) {
        const auto read = inspectBytes(front.substr(0, length));
        ASSERT_EQ(inspectionText(read) + metadataText(read), length < movieEnd ? "nothingnothing" : whole)
            << length;
    }
}

/// Each byte of the file in turn has a wrong value.
TEST(MediaMovie, survivesEveryByteOfItsHeaderBeingWrong) {
    std::string bytes =
        MovieMaker().movieFirst().video(ntsc).audio({.version = 2}).timecode({}).metadata("k", "v").bytes();
    for (std::size_t at = 0; at < bytes.size(); ++at)
        for (const char wrong : {'\0', '\x01', '\x7F', '\xFF'}) {
            const char right = std::exchange(bytes[at], wrong);
            const auto read = inspectBytes(bytes);
            ASSERT_GE(read && read->durationSeconds ? *read->durationSeconds : 0, 0) << at;
            bytes[at] = right;
        }
}

} // namespace
} // namespace orvane::test
