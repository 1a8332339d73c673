#include "MediaFactory/MediaFactory.h"
#include "Platform/MediaInspectionText.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

namespace orvane::test {
namespace {

TEST(MediaWave, readsFormatAndDuration) {
    const auto second = [](const WaveFormat& format) {
        return WaveMaker().format(format).silence(format.sampleRate);
    };
    const std::string adpcm = le16(17) + le16(1) + le32(8000) + le32(4000) + le16(256) + le16(4);
    const auto check = [&](const char* name, const WaveMaker& maker, const char* expected) {
        EXPECT_EQ(inspectionText(inspectBytes(maker.bytes())), expected) << name;
    };
    check("16 bits", second({.channels = 2, .samples = SampleFormat::pcm16}), "1 s, 48000 Hz 2 ch");
    check("24 bits", second({.sampleRate = 96000}), "1 s, 96000 Hz 1 ch");
    check("float", second({.samples = SampleFormat::float32}), "1 s, 48000 Hz 1 ch");
    check("extensible", second({.channels = 12, .extensible = true}), "1 s, 48000 Hz 12 ch");
    check("chunks around the sound, odd ones too",
          WaveMaker()
              .chunk("JUNK", "odd")
              .bext({})
              .format({})
              .iXML("<BWFXML/>")
              .silence(48000)
              .chunk("LIST", "INFO"),
          "1 s, 48000 Hz 1 ch");
    check("format behind the sound",
          WaveMaker().chunk("data", field("", 48000)).format({.samples = SampleFormat::pcm8}),
          "1 s, 48000 Hz 1 ch");
    check("RF64", WaveMaker().rf64().format({}).silence(48000).chunk("iXML", "<BWFXML/>"),
          "1 s, 48000 Hz 1 ch");
    check("no size was ever written", WaveMaker().format({}).silenceClaiming(0, 48000),
          "1 s, 48000 Hz 1 ch, unclosed");
    check("an empty recording with chunks behind it",
          WaveMaker().format({}).silenceClaiming(0, 0).iXML("<BWFXML/>"), "0 s, 48000 Hz 1 ch");
    check("sound that begins like a chunk",
          WaveMaker().format({}).chunkClaiming("data", 0, "iXML" + le32(999999) + field("", 144000 - 8)),
          "1 s, 48000 Hz 1 ch, unclosed");
    check("all ones without RF64", WaveMaker().format({}).silenceClaiming(0xFFFFFFFF, 48000),
          "1 s, 48000 Hz 1 ch");
    check("past the end", WaveMaker().format({}).silenceClaiming(0x7FFFFFFE, 48000), "1 s, 48000 Hz 1 ch");
    check("a compressed recording counts its frames",
          WaveMaker().chunk("fmt ", adpcm).chunk("fact", le32(16000)).chunk("data", "xxxx"),
          "2 s, 8000 Hz 1 ch");
    check("or has a byte rate", WaveMaker().chunk("fmt ", adpcm).chunk("data", field("", 4000)),
          "1 s, 8000 Hz 1 ch");
    check("no sound", WaveMaker().format({}), "? s, 48000 Hz 1 ch");
    check("no format", WaveMaker().silence(48000), "? s");
    check("a format too short", WaveMaker().chunk("fmt ", "12345678"), "? s");
    check("no channels", WaveMaker().format({.channels = 0}).silence(0), "? s");
    check("no rate", WaveMaker().format({.sampleRate = 0}).silence(100), "? s");
    check("a rate that is none", WaveMaker().format({.sampleRate = 4'000'000'000}).silence(100), "? s");
    check("a chunk past the end hides what follows",
          WaveMaker().format({}).chunkClaiming("JUNK", 0x7FFFFFFF, "").silence(48000), "? s, 48000 Hz 1 ch");
    EXPECT_EQ(inspectionText(inspectBytes("RIFF" + le32(4) + "AVI ")), "nothing");
    std::string cutOff =
        WaveMaker().format({}).chunkClaiming("data", 0, "iXML" + le32(4) + field("", 144000 - 8)).bytes();
    EXPECT_EQ(inspectionText(inspectBytes(cutOff)), "0 s, 48000 Hz 1 ch");
    cutOff.replace(4, 4, le32(0));
    EXPECT_EQ(inspectionText(inspectBytes(cutOff)), "1 s, 48000 Hz 1 ch, unclosed")
        << "nor was the size of the file";
}

TEST(MediaWave, tellsARecordingThatWasNeverClosed) {
    constexpr std::uint32_t ones = 0xFFFFFFFF;
    const std::string sound = std::string(72000, 'x'), zeros(72000, '\0');
    struct Case {
        const char* name;
        const char* form;
        std::uint32_t formSize, dataSize;
        std::string sound;
        const char* expected;
    };
    const std::vector<Case> cases{
        {"a stream to a pipe", "RIFF", ones, ones, sound, "0.5 s, 48000 Hz 1 ch"},
        {"one size is 0", "RIFF", 0, ones, sound, "0.5 s, 48000 Hz 1 ch, unclosed"},
        {"both are in an empty ds64", "RF64", ones, ones, sound, "0.5 s, 48000 Hz 1 ch, unclosed"},
        {"nothing but a header", "RIFF", 0, 0, "", "0 s, 48000 Hz 1 ch, unclosed"},
        {"an empty recording", "RIFF", 4 + 24 + 36 + 8, 0, "", "0 s, 48000 Hz 1 ch"},
        {"sizes of a moment before", "RIFF", 144072, 144000, sound + sound + sound,
         "1 s, 48000 Hz 1 ch, unclosed"},
        {"room that was made for more", "RIFF", 144072, 144000, sound + sound + zeros, "1 s, 48000 Hz 1 ch"},
        {"a tag behind the end", "RIFF", 144072, 144000, sound + sound + "TAG" + std::string(125, 'x'),
         "1 s, 48000 Hz 1 ch"},
        {"a chunk that the form forgot", "RIFF", 144072, 144000, sound + sound + "iXML" + le32(72000) + sound,
         "1 s, 48000 Hz 1 ch"},
        {"the size of the form alone", "RIFF", 0, 72000, sound, "0.5 s, 48000 Hz 1 ch"}};
    for (const Case& one : cases) {
        const bool isLarge = std::string_view(one.form) == "RF64";
        std::string bytes = WaveMaker()
                                .chunk(isLarge ? "ds64" : "JUNK", std::string(28, '\0'))
                                .format({})
                                .chunkClaiming("data", one.dataSize, one.sound)
                                .bytes();
        bytes.replace(0, 8, one.form + le32(one.formSize));
        EXPECT_EQ(inspectionText(inspectBytes(bytes)), one.expected) << one.name;
    }
    const auto aiff = [&](std::uint32_t formSize, std::uint32_t frames, std::uint32_t soundSize) {
        return "FORM" + be32(formSize) + "AIFFCOMM" + be32(18) + be16(1) + be32(frames) + be16(24) +
               be16(0x400E) + be32(0xBB800000) + be32(0) + "SSND" + be32(soundSize) + be64(0) + sound;
    };
    EXPECT_EQ(inspectionText(inspectBytes(aiff(0, 0, 0))), "0.5 s, 48000 Hz 1 ch, unclosed");
    EXPECT_EQ(inspectionText(inspectBytes(aiff(72046, 0, 72008))), "0.5 s, 48000 Hz 1 ch, unclosed");
    EXPECT_EQ(inspectionText(inspectBytes(aiff(72046, 24000, 72008))), "0.5 s, 48000 Hz 1 ch");
}

TEST(MediaWave, isBounded) {
    WaveMaker many;
    for (int i = 0; i < 20000; ++i) many.chunk("JUNK", "");
    EXPECT_EQ(inspectionText(inspectBytes(many.format({}).bytes())), "? s");

    const TemporaryDirectory folder;
    WaveMaker().rf64().format({.channels = 8}).silence(1'000'000'000).writeTo(folder.path("big.wav"));
    EXPECT_EQ(inspectionText(platform::inspectMedia(folder.path("big.wav"))), "20833.33 s, 48000 Hz 8 ch");
}

TEST(MediaWave, takesTheDateOfTheList) {
    const auto with = [](const std::string& list) {
        return metadataText(inspectBytes(WaveMaker().chunk("LIST", list).format({}).silence(1).bytes()));
    };
    const std::string name = std::string("INAM") + le32(3) + field("abc", 4);
    EXPECT_EQ(with("INFO" + name + "ICRD" + le32(11) + field("2024-03-09", 12)),
              "ICRD(creationDate)='2024-03-09' ");
    EXPECT_EQ(with("INFOICRD" + le32(99) + "2024"), "");
    EXPECT_EQ(with("adtlICRD" + le32(4) + "2024"), "");
}

TEST(MediaWave, readsWhatIsThereOfATruncatedFile) {
    const std::string whole =
        WaveMaker().bext({}).format({.channels = 2}).silence(100).chunk("iXML", "<BWFXML/>").bytes();
    const std::size_t formatEnd = 12 + 8 + 602 + 8 + 16, dataEnd = formatEnd + 8 + 600;
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        const auto read = inspectBytes(whole.substr(0, length));
        ASSERT_EQ(read.has_value(), length >= 12) << length;
        ASSERT_EQ(read && !read->audioTracks.empty(), length >= formatEnd - 2)
            << length; // all of the format but the bit depth
        if (length < formatEnd + 8) continue;
        const auto frames = (std::min(length, dataEnd) - formatEnd - 8) / 6;
        ASSERT_EQ(read->durationSeconds, static_cast<double>(frames) / 48000) << length;
    }
}

} // namespace
} // namespace orvane::test
