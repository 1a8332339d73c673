#include "MediaFactory/MediaFactory.h"
#include "Platform/Media/WaveAudio.h"
#include "Platform/MediaHelper/MediaLibraryClient.h"
#include "Platform/VectorOps.h"
#include "Support/RandomSeed.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <bit>

namespace orvane::test {
namespace {

using platform::AudioFile;

/// All samples of all channels as bits, so that NaN equals itself.
std::vector<std::vector<std::uint32_t>> bits(AudioFile& file, std::size_t block) {
    const auto count = static_cast<std::size_t>(file.channelCount());
    std::vector<std::vector<std::uint32_t>> all(count);
    std::vector<std::vector<float>> room(count, std::vector<float>(block));
    std::vector<float*> channels;
    for (auto& one : room) channels.push_back(one.data());
    while (const std::size_t got = file.read(channels, block))
        for (std::size_t i = 0; i < count; ++i)
            for (std::size_t k = 0; k < got; ++k) all[i].push_back(std::bit_cast<std::uint32_t>(room[i][k]));
    return all;
}

/// Frames of random bytes: all integers and all kinds of floats.
std::string randomWave(int channels, int sampleBits, bool isFloat, std::size_t frames) {
    const auto align = static_cast<std::uint64_t>(channels * sampleBits / 8);
    std::mt19937 random(test::randomSeed());
    std::string body;
    for (std::size_t i = 0; i < frames * align; ++i) body += static_cast<char>(random());
    const std::string format = le16(isFloat ? 3 : 1) + le16(static_cast<std::uint64_t>(channels)) +
                               le32(48000) + le32(48000 * align) + le16(align) +
                               le16(static_cast<std::uint64_t>(sampleBits));
    return WaveMaker().chunk("fmt ", format).chunk("junk", "odd").chunk("data", body).bytes();
}

TEST(WaveAudio, givesTheFloatsOfTheLibrary) {
    const TemporaryDirectory folder;
    ASSERT_NE(platform::mediaLibrary(), nullptr);
    for (const int channels : {1, 2, 3, 8, 64})
        for (const auto& [sampleBits, isFloat] :
             std::vector<std::pair<int, bool>>{{16, false}, {24, false}, {32, false}, {32, true}}) {
            SCOPED_TRACE(testing::Message()
                         << channels << " channels, " << sampleBits << " bits " << isFloat);
            const std::string path = folder.write("a.wav", randomWave(channels, sampleBits, isFloat, 9001));
            const auto ours = platform::openWaveAudio(path);
            const auto library = platform::mediaLibrary()->openAudio(path);
            ASSERT_TRUE(ours && library);
            EXPECT_EQ(ours->frameCount(), library->frameCount());
            const auto expected = bits(*library, 1000);
            EXPECT_EQ(bits(*ours, 5000), expected);
            ASSERT_TRUE(ours->seek(4567));
            std::vector<float> first(10); // the other channels are left out
            std::vector<float*> one{first.data()};
            ASSERT_EQ(ours->read(one, 10), 10U);
            EXPECT_EQ(std::bit_cast<std::uint32_t>(first[9]), expected[0][4576]);
            EXPECT_EQ(bits(*ours->another(), 333), expected); // from the start
        }
}

TEST(WaveAudio, leavesEverythingElseToTheLibrary) {
    const TemporaryDirectory folder;
    const auto opens = [&](const std::string& bytes) {
        return platform::openWaveAudio(folder.write("a.wav", bytes)) != nullptr;
    };
    EXPECT_TRUE(opens(randomWave(2, 24, false, 10)));
    EXPECT_TRUE(opens(WaveMaker().rf64().format({.extensible = true}).silence(10).bytes()));
    EXPECT_FALSE(opens(randomWave(2, 8, false, 10)));
    EXPECT_FALSE(opens(randomWave(2, 64, true, 10)));
    EXPECT_FALSE(opens(randomWave(2, 24, false, 0)));
    EXPECT_FALSE(opens("RIFF"));
    EXPECT_FALSE(opens(randomWave(2, 24, false, 10).substr(0, 30)));
    const auto withFormat = [](std::uint64_t tag, std::uint64_t channels, std::uint64_t rate,
                               std::uint64_t align, std::uint64_t sampleBits) {
        const std::string format =
            le16(tag) + le16(channels) + le32(rate) + le32(0) + le16(align) + le16(sampleBits);
        return WaveMaker().chunk("fmt ", format).chunk("data", std::string(48, 'x')).bytes();
    };
    EXPECT_TRUE(opens(withFormat(1, 2, 384000, 6, 24)));
    EXPECT_TRUE(opens(withFormat(1, 2, 1, 6, 24)));
    for (const std::string& odd :
         {withFormat(1, 2, 48000, 8, 24), withFormat(1, 2, 48000, 0, 24), withFormat(1, 0, 48000, 0, 24),
          withFormat(1, 2, 0, 6, 24), withFormat(1, 2, 48000, 6, 20), withFormat(0x55, 2, 48000, 6, 24)})
        EXPECT_FALSE(opens(odd));
}

TEST(WaveAudio, readsShortWhereTheFileWasCutOff) {
    const TemporaryDirectory folder;
    const std::string path = folder.write("a.wav", randomWave(2, 24, false, 50000));
    const auto file = platform::openWaveAudio(path);
    ASSERT_NE(file, nullptr);
    std::filesystem::resize_file(path, 44 + 12 + 6 * 1000 + 3); // in the middle of a frame
    std::vector<float> left(50000), right(50000);
    std::vector<float*> channels{left.data(), right.data()};
    EXPECT_EQ(file->read(channels, 50000), 1000U);
    EXPECT_EQ(file->read(channels, 50000), 0U);
    ASSERT_TRUE(file->seek(40000));
    EXPECT_EQ(file->read(channels, 1), 0U);

    const auto opened = platform::openWaveAudio(path);
    EXPECT_EQ(opened->frameCount(), 1000);
    EXPECT_EQ(opened->promisedFrames(), 50000);
}

TEST(VectorOps, agreeWithTheirDefinitionAtAnyLength) {
    using namespace platform::vector;
    std::mt19937 random(test::randomSeed());
    std::uniform_real_distribution<float> value(-1, 1);
    std::vector<float> samples;
    for (std::size_t count = 0; count < 100; ++count, samples.push_back(value(random))) {
        SCOPED_TRACE(count);
        double sum = 0;
        float peak = 0;
        std::size_t changes = 0;
        for (std::size_t i = 0; i < count; ++i) {
            sum += static_cast<double>(samples[i]) * samples[i];
            peak = std::max(peak, std::abs(samples[i]));
            if (i > 0 && (samples[i] >= 0) != (samples[i - 1] >= 0)) ++changes;
        }
        EXPECT_NEAR(sumOfSquares(samples), sum, 1e-12);
        EXPECT_FLOAT_EQ(rms(samples),
                        count == 0 ? 0 : static_cast<float>(std::sqrt(sum / static_cast<double>(count))));
        EXPECT_EQ(maxMagnitude(samples), peak);
        EXPECT_EQ(signChanges(samples), changes);
    }
    const std::vector<float> left(samples.begin() + 7, samples.end()), right(90, 0.5F);
    double ofBoth = 0;
    for (std::size_t i = 3; i < 3 + 70; ++i) ofBoth += std::pow(left[i] + right[i], 2);
    EXPECT_NEAR(sumOfSquaresOfSum(std::array{left.data(), right.data()}, 3, 70), ofBoth, 1e-5);
    const std::vector<float> huge(40, 1e30F);
    EXPECT_DOUBLE_EQ(sumOfSquares(huge), 40 * std::pow(static_cast<double>(huge[0]), 2));
    const float infinity = std::numeric_limits<float>::infinity();
    std::vector<float> dirty{1,     infinity, -infinity, std::nanf(""), -2, std::numeric_limits<float>::max(),
                             1e-45F};
    silenceNonFinite(dirty);
    EXPECT_EQ(dirty, (std::vector<float>{1, 0, 0, 0, -2, std::numeric_limits<float>::max(), 1e-45F}));
}

} // namespace
} // namespace orvane::test
