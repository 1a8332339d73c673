#include "Platform/AudioFileWriter.h"

#include "Platform/AudioFile.h"
#include "Platform/SHA256.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <tuple>
#include <vector>

namespace orvane::platform {
namespace {

constexpr std::size_t frames = 300'001;

/// One ramp per channel, written in pieces of changing sizes.
void write(AudioFileWriter& writer) {
    std::vector<std::vector<float>> ramps(3, std::vector<float>(frames));
    for (std::size_t channel = 0; channel < ramps.size(); ++channel)
        for (std::size_t i = 0; i < frames; ++i)
            ramps[channel][i] = static_cast<float>(channel + 1) * static_cast<float>(i) / frames;
    for (std::size_t at = 0, some = 1; at < frames; at += some, some = std::min(some * 7, frames - at)) {
        const std::array<const float*, 3> piece{ramps[0].data() + at, ramps[1].data() + at,
                                                ramps[2].data() + at};
        writer.write(piece, some);
    }
}

TEST(AudioFileWriter, whatIsWrittenIsReadAgainInBothForms) {
    const test::TemporaryDirectory folder;
    for (const bool isLarge : {false, true}) {
        const std::string path = folder.path(isLarge ? "large.wav" : "plain.wav");
        AudioFileWriter writer(path, {.sampleRate = 384000, .channels = 3}, {"OrvaneSync", "12A"},
                               isLarge ? 100'000 : AudioFileWriter::largestPlainFile);
        write(writer);
        EXPECT_FALSE(std::filesystem::exists(path)) << "before it is whole";
        writer.finish();
        const std::string written = folder.read(isLarge ? "large.wav" : "plain.wav");
        EXPECT_EQ(written.substr(0, 4), isLarge ? "RF64" : "RIFF");
        struct {
            std::uint16_t kind, channels;
            std::uint32_t rate, bytesASecond;
            std::uint16_t bytesAFrame, bitsASample;
        } format{};
        std::memcpy(&format, written.data() + written.find("fmt ") + 8, sizeof format);
        EXPECT_EQ(std::tuple(format.kind, format.channels, format.rate, format.bytesASecond,
                             format.bytesAFrame, format.bitsASample),
                  std::tuple(3, 3, 384'000U, 384'000U * 12, 12, 32));
        for (const bool withLibraries : {false, true}) {
            const auto file = withLibraries ? AudioFile::openWithLibraries(path) : AudioFile::open(path);
            ASSERT_TRUE(file);
            EXPECT_EQ(file->sampleRate(), 384000);
            EXPECT_EQ(file->channelCount(), 3);
            ASSERT_EQ(file->frameCount(), static_cast<std::int64_t>(frames));
            EXPECT_EQ(file->promisedFrames(), file->frameCount());
            std::vector<float> first(frames), second(frames), third(frames);
            const std::array<float*, 3> into{first.data(), second.data(), third.data()};
            ASSERT_EQ(file->read(into, frames), frames);
            for (const std::size_t i : {std::size_t{0}, std::size_t{7}, frames / 2, frames - 1}) {
                EXPECT_EQ(first[i], static_cast<float>(i) / frames);
                EXPECT_EQ(third[i], 3.0F * static_cast<float>(i) / frames);
            }
        }
    }
}

TEST(AudioFileWriter, unfinishedFilesAreRemovedAndAFullDiskIsReported) {
    const test::TemporaryDirectory folder;
    folder.write("kept.wav", "before");
    {
        AudioFileWriter writer(folder.path("kept.wav"), {.channels = 3}, {});
        write(writer);
    }
    EXPECT_EQ(folder.read("kept.wav"), "before");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
    const auto writeWhole = [](const std::string& path) {
        AudioFileWriter writer(path, {.channels = 3}, {});
        write(writer);
        writer.finish();
    };
    EXPECT_THROW(writeWhole("/dev/full"), FileError);
    EXPECT_THROW(writeWhole(folder.path("absent/x.wav")), FileError);
    EXPECT_NO_THROW(writeWhole("/dev/null"));
}

TEST(SHA256, isThatOfTheStandard) {
    SHA256 hash;
    hash.add("a");
    hash.add("bc");
    constexpr const char* expected = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
    EXPECT_EQ(hexadecimal(hash.digest()), expected);
    const test::TemporaryDirectory folder;
    EXPECT_EQ(hexadecimal(sha256OfFile(folder.write("abc", "abc"))), expected);
    EXPECT_THROW(sha256OfFile(folder.path("absent")), FileError);
}

} // namespace
} // namespace orvane::platform
