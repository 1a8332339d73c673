#include "OrvaneSyncCore/Services/Ingest/LTCDecoder.h"

#include "MediaFactory/LTCSignal.h"
#include "Support/MemoryAudio.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using test::ltcBits;
using test::ltcSignal;
using test::MemoryAudio;

std::optional<std::string> decoded(const std::vector<float>& signal, double sampleRate = 48000) {
    MemoryAudio file({signal}, sampleRate);
    const auto frame = LTCDecoder::decodeFirstFrame(file, 0);
    return frame ? std::optional(frame->tc) : std::nullopt;
}

const std::string twoFrames = ltcBits(12, 34, 56, 20) + ltcBits(12, 34, 56, 21);

std::vector<float> silence(std::size_t count) { return std::vector<float>(count); }

std::vector<float> joined(std::vector<float> first, const std::vector<float>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

TEST(LinearTimecode, readsTheFirstFrame) {
    for (const double samplesPerBit : {6.0, 20.0, 24.0, 25.025, 100.0})
        for (const float level : {1.0F, 0.01F, -1.0F})
            EXPECT_EQ(decoded(ltcSignal(twoFrames, samplesPerBit, level)), "12:34:56:20") << samplesPerBit;
    EXPECT_EQ(decoded(ltcSignal(ltcBits(0, 0, 0, 0) + ltcBits(0, 0, 0, 1), 24)), "00:00:00:00");
    EXPECT_EQ(decoded(ltcSignal(ltcBits(23, 59, 59, 29) + ltcBits(0, 0, 0, 0), 24)), "23:59:59:29");
}

TEST(LinearTimecode, tellsTheBlockThatCompletedTheFrame) {
    constexpr double rate = 48000, block = 16384;
    MemoryAudio file({joined(silence(20000), ltcSignal(twoFrames, 24))}, rate);
    const auto frame = LTCDecoder::decodeFirstFrame(file, 0);
    ASSERT_TRUE(frame.has_value());
    EXPECT_EQ(frame->atSeconds, block / rate);
}

TEST(LinearTimecode, givesNothing) {
    std::vector<float> backwards = ltcSignal(twoFrames + twoFrames, 24);
    std::ranges::reverse(backwards);
    std::vector<float> noise(200'000);
    std::mt19937 random(7);
    for (float& sample : noise) sample = static_cast<float>(random() % 2001) / 1000.0F - 1;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::pair<const char*, std::vector<float>> cases[] = {
        {"an empty file", {}},
        {"200 samples", ltcSignal(twoFrames, 1)},
        {"silence", silence(200'000)},
        {"timecode that starts after two seconds", joined(silence(200'000), ltcSignal(twoFrames, 24))},
        {"backwards", backwards},
        {"seventy minutes", ltcSignal(ltcBits(1, 70, 0, 0) + ltcBits(1, 70, 0, 1), 24)},
        {"24 hours", ltcSignal(ltcBits(24, 0, 0, 0) + ltcBits(24, 0, 0, 1), 24)},
        {"less than one frame", ltcSignal(twoFrames.substr(0, 70), 24)},
        {"a first sync word without its frame; the second is not tried",
         ltcSignal(twoFrames.substr(40) + twoFrames, 24)},
        {"not numbers", std::vector<float>(1000, nan)},
    };
    for (const auto& [name, signal] : cases) EXPECT_FALSE(decoded(signal).has_value()) << name;
    decoded(noise); // anything, but it ends
    for (const double rate : {0.0, -48000.0, std::nan(""), 0.4})
        EXPECT_FALSE(decoded(ltcSignal(twoFrames, 24), rate).has_value()) << rate;
    EXPECT_EQ(decoded(ltcSignal(twoFrames, 24), std::numeric_limits<double>::infinity()), "12:34:56:20");
}

TEST(LinearTimecode, choosesTheChannel) {
    const auto at = [](int hour) { return ltcSignal(ltcBits(hour, 0, 0, 0) + ltcBits(hour, 0, 0, 1), 24); };
    const std::pair<int, const char*> cases[] = {{0, "10:00:00:00"},
                                                 {1, "11:00:00:00"},
                                                 {7, "11:00:00:00"},
                                                 {-1, "10:00:00:00"},
                                                 {1 << 30, "11:00:00:00"}};
    for (const auto& [channel, tc] : cases) {
        MemoryAudio file({at(10), at(11)}, 48000);
        EXPECT_EQ(LTCDecoder::decodeFirstFrame(file, channel).value().tc, tc) << channel;
    }
}

TEST(LinearTimecode, zeroCountsAsPositive) {
    std::vector<float> signal = ltcSignal(twoFrames, 24);
    for (float& sample : signal) sample = std::min(sample, 0.0F);
    EXPECT_EQ(decoded(signal), "12:34:56:20");
}

TEST(LinearTimecode, bitsAndFrames) {
    const std::string frame = ltcBits(1, 2, 3, 4);
    EXPECT_EQ(LTCDecoder::parseSMPTEFrame(frame), "01:02:03:04");
    EXPECT_EQ(LTCDecoder::parseSMPTEFrame("0101" + frame + "1"), "01:02:03:04");
    EXPECT_FALSE(LTCDecoder::parseSMPTEFrame(frame.substr(1)).has_value());
    EXPECT_FALSE(LTCDecoder::parseSMPTEFrame("").has_value());
    std::string dirty = frame; // user bits and the drop-frame flag
    for (const std::size_t at : {4, 7, 10, 11, 20, 28, 36, 43, 59}) dirty[at] = '1';
    EXPECT_EQ(LTCDecoder::parseSMPTEFrame(dirty), "01:02:03:04");
    EXPECT_EQ(LTCDecoder::parseSMPTEFrame(ltcBits(0, 0, 0, 39)), "00:00:00:39") << "the rate is not known";
    EXPECT_EQ(LTCDecoder::collectBits(ltcSignal("1" + frame, 24)), "1" + frame);
}

} // namespace
} // namespace orvane
