#include "OrvaneSyncCore/Services/Ingest/LTCDecoder.h"

#include "MediaFactory/LTCSignal.h"
#include "Support/MemoryAudio.h"
#include "Support/RandomSeed.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"
#include "Timecode/Timecode.h"

#include <ltc.h>

namespace orvane {
namespace {

using Rate = TimecodeFrameRate;
using Sound = std::vector<float>;
using test::ltcBits;
using test::ltcSignal;
using test::LTCSignal;
using test::MemoryAudio;

std::optional<LTCDecoder::Frame> decoded(const Sound& signal, double sampleRate = 48000,
                                         std::optional<Rate> stated = {}) {
    MemoryAudio file({signal}, sampleRate);
    return LTCDecoder::decodeFirstFrame(file, 0, stated);
}

std::optional<std::string> label(const Sound& signal, double sampleRate = 48000) {
    const auto frame = decoded(signal, sampleRate);
    return frame ? std::optional(frame->tc) : std::nullopt;
}

/// The signal with white noise that is `decibels` below its level.
Sound noisy(Sound signal, float level, double decibels) {
    std::mt19937 random(test::randomSeed());
    std::normal_distribution<float> noise(0, level * static_cast<float>(std::pow(10, -decibels / 20)));
    for (float& sample : signal) sample += noise(random);
    return signal;
}

/// The signal after a line of that bandwidth (a low-pass with one pole).
Sound dull(Sound signal, double hertz, double sampleRate) {
    const auto share = static_cast<float>(1 - std::exp(-2 * std::numbers::pi * hertz / sampleRate));
    float level = 0;
    for (float& sample : signal) sample = level += share * (sample - level);
    return signal;
}

template <class Change>
Sound changed(Sound signal, Change change) {
    for (std::size_t i = 0; i < signal.size(); ++i) signal[i] = change(signal[i], i);
    return signal;
}

Sound silence(std::size_t count) { return Sound(count); }

Sound joined(Sound first, const Sound& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

constexpr std::array usualRates{Rate::fps23_976, Rate::fps24,     Rate::fps25,
                                Rate::fps29_97,  Rate::fps29_97d, Rate::fps30};

const std::string twoFrames = ltcBits(12, 34, 56, 20) + ltcBits(12, 34, 56, 21);

void expectStart(const Sound& signal, const LTCSignal& made, double startFrames, double tolerance = 1.5,
                 std::optional<Rate> stated = {}) {
    const auto frame = decoded(signal, made.sampleRate, stated);
    ASSERT_TRUE(frame && frame->start);
    const double day = std::round(86400 * timecodeRate::frameRateForElapsedFramesCalculation(made.rate));
    const double wrapped = std::fmod(startFrames + day, day);
    EXPECT_EQ(frame->start->rate, made.rate) << timecodeRate::name(frame->start->rate);
    EXPECT_EQ(frame->start->nearestFrame, std::llround(wrapped)) << frame->start->timecode();
    const double expected = wrapped / timecodeRate::frameRateForRealTimeCalculation(made.rate);
    EXPECT_NEAR((frame->start->seconds() - expected) * made.sampleRate, 0, tolerance);
}

TEST(LinearTimecode, startsAtAnyPlaceWithinAFrame) {
    constexpr int phases = 40;
    for (const Rate rate : usualRates)
        for (int phase = 0; phase < phases; ++phase) {
            SCOPED_TRACE(std::string(timecodeRate::name(rate)) + " " + std::to_string(phase));
            const LTCSignal made{.rate = rate};
            const double start = 903333 + phase * 31 + static_cast<double>(phase) / phases + 0.001;
            const Sound clean = made.samples(start, 0.6);
            expectStart(clean, made, start);
            expectStart(noisy(clean, made.level, 20), made, start);
        }
}

TEST(LinearTimecode, isReadFromSignalsAsCamerasAndRecordersRecordThem) {
    constexpr double start = 1234567.3;
    for (const std::uint32_t sampleRate : {22050U, 32000U, 44100U, 96000U, 192000U}) {
        SCOPED_TRACE(sampleRate);
        const LTCSignal made{.sampleRate = sampleRate, .rate = Rate::fps29_97};
        const Sound clean = made.samples(start, 1);
        expectStart(clean, made, start);
        expectStart(noisy(clean, made.level, 20), made, start);
    }
    const LTCSignal made{.rate = Rate::fps24};
    const Sound clean = made.samples(start, 1.2);
    const auto tone = [](std::size_t i, double hertz) {
        return static_cast<float>(std::sin(2 * std::numbers::pi * hertz * static_cast<double>(i) / 48000));
    };
    const std::pair<const char*, Sound> cases[] = {
        {"-40 dBFS in 16 bits", changed(clean, [](float x, auto) { return std::round(x * 655) / 32768; })},
        {"-80 dBFS", changed(clean, [](float x, auto) { return x * 2e-4F; })},
        {"upside down", changed(clean, [](float x, auto) { return -x; })},
        {"on an offset", changed(clean, [](float x, auto) { return 0.1F * x + 0.7F; })},
        {"only the lower half", changed(clean, [](float x, auto) { return std::min(x, 0.0F); })},
        {"clipped", changed(clean, [](float x, auto) { return std::clamp(10 * x, -1.0F, 1.0F); })},
        {"hum of half the level", changed(clean, [&](float x, auto i) { return x + 0.25F * tone(i, 50); })},
        {"fading",
         changed(clean, [](float x, auto i) { return x * (1.1F - static_cast<float>(i) / 57600); })},
        {"noise at 12 dB", noisy(clean, made.level, 12)},
        {"not a number now and then", changed(clean, [](float x, auto i) { return i == 9000 ? NAN : x; })},
        {"clicks", changed(clean, [](float x, auto i) { return i % 9973 == 0 ? -8 * x : x; })},
    };
    for (const auto& [name, signal] : cases) {
        SCOPED_TRACE(name);
        expectStart(signal, made, start, 3);
    }
    expectStart(noisy(dull(clean, 2500, 48000), made.level, 20), made, start, 8); // later by the line's delay
    for (const double speed : {0.96, 1.03}) {
        LTCSignal tape = made;
        tape.speed = speed;
        expectStart(tape.samples(start, 1.2), made, start, 1.5, made.rate);
    }
}

TEST(LinearTimecode, theStartMayBeBeforeMidnight) {
    for (const Rate rate : {Rate::fps25, Rate::fps29_97d, Rate::fps23_976})
        for (const double start : {-0.6, -0.4, 0.0, 0.3, -20.4}) {
            const LTCSignal made{.rate = rate};
            const auto frame = decoded(made.samples(start, 1.5));
            ASSERT_TRUE(frame && frame->start);
            const double day = std::round(86400 * timecodeRate::frameRateForElapsedFramesCalculation(rate));
            EXPECT_EQ(frame->start->nearestFrame, std::lround(start) + (start < -0.5 ? std::lround(day) : 0));
            EXPECT_GE(frame->start->seconds(), 0);
        }
}

TEST(LinearTimecode, theRateIsThatOfTheSignalUnlessItIsTooShort) {
    struct Case {
        const char* name;
        Rate sent;
        double startFrames, seconds;
        std::optional<Rate> stated;
        Rate found;
    };
    const Case cases[] = {
        {"measured against the file's word", Rate::fps24, 1000.2, 1, Rate::fps23_976, Rate::fps24},
        {"a single word: the file's word", Rate::fps24, 1000.2, 0.09, Rate::fps23_976, Rate::fps23_976},
        {"of twice the rate", Rate::fps29_97, 1000.2, 0.07, Rate::fps59_94, Rate::fps29_97},
        {"of another family", Rate::fps24, 1000.2, 0.09, Rate::fps25, Rate::fps24},
        {"the drop flag", Rate::fps29_97d, 1000.2, 0.07, {}, Rate::fps29_97d},
        {"frame 24 is none of 24", Rate::fps25, 1023.2, 0.09, {}, Rate::fps25},
    };
    for (const Case& c : cases) {
        const auto frame =
            decoded(LTCSignal{.rate = c.sent}.samples(c.startFrames, c.seconds), 48000, c.stated);
        ASSERT_TRUE(frame && frame->start) << c.name;
        EXPECT_EQ(frame->start->rate, c.found) << c.name;
    }
    LTCSignal slow{.speed = 0.85};
    EXPECT_EQ(decoded(slow.samples(1000.5, 2))->start->rate, Rate::fps25) << "frame 24 before 0";
    EXPECT_FALSE(decoded(slow.samples(1000.5, 0.2))->start.has_value());
}

TEST(LinearTimecode, givesThePlaceOfTheLabel) {
    const auto frame = decoded(joined(silence(20000), ltcSignal(twoFrames, 24)));
    ASSERT_TRUE(frame.has_value());
    EXPECT_EQ(frame->tc, "12:34:56:20");
    EXPECT_EQ(frame->atSeconds, 16384 / 48000.0);
    EXPECT_NEAR(frame->beginsAtSeconds, 20001 / 48000.0, 1 / 48000.0);
    for (const double samplesPerBit : {6.0, 20.0, 25.025, 100.0}) // no rate is assumed
        EXPECT_EQ(label(ltcSignal(twoFrames, samplesPerBit)), "12:34:56:20") << samplesPerBit;
    std::string dirty = twoFrames; // with user bits and flags
    for (const std::size_t at : {4, 7, 11, 20, 27, 28, 36, 43, 58, 59}) dirty[at] = '1';
    EXPECT_EQ(label(ltcSignal(dirty, 24)), "12:34:56:20");
    EXPECT_EQ(label(ltcSignal(twoFrames.substr(40) + twoFrames, 24)), "12:34:56:20")
        << "a word that its neighbour contradicts is passed over";
    const Sound dropout = changed(LTCSignal{}.samples(1000.2, 1),
                                  [](float x, auto i) { return i >= 9600 && i < 14400 ? 0.0F : x; });
    EXPECT_EQ(label(dropout), "00:00:40:01") << "the first that agrees with the longest run";
    EXPECT_EQ(label(ltcSignal(twoFrames, 24), std::numeric_limits<double>::infinity()), "12:34:56:20");
}

Sound spoken(const test::TemporaryDirectory& folder) {
    const std::string path = folder.path("a.wav");
    const std::string command = "espeak-ng -w '" + path + "' 'Sixteen, sixty, sixty-six: shh, see the buzz.'";
    if (std::system(command.c_str()) != 0) throw std::runtime_error("espeak-ng is not installed");
    const auto file = platform::AudioFile::open(path);
    Sound samples(static_cast<std::size_t>(file->frameCount()));
    std::array<float*, 1> channels{samples.data()};
    file->read(channels, samples.size());
    return samples;
}

TEST(LinearTimecode, givesNothing) {
    const test::TemporaryDirectory folder;
    Sound backwards = LTCSignal{}.samples(1000.3, 1);
    std::ranges::reverse(backwards);
    const auto tones = [](float, std::size_t i) {
        const double seconds = static_cast<double>(i) / 48000;
        return static_cast<float>(0.3 * std::sin(2764.6 * seconds) +
                                  0.3 * std::sin(seconds * seconds * 9000));
    };
    const std::pair<const char*, Sound> cases[] = {
        {"an empty file", {}},
        {"silence", silence(200'000)},
        {"timecode that starts after two seconds", joined(silence(200'000), ltcSignal(twoFrames, 24))},
        {"backwards", backwards},
        {"seventy minutes", ltcSignal(ltcBits(1, 70, 0, 0) + ltcBits(1, 70, 0, 1), 24)},
        {"24 hours", ltcSignal(ltcBits(24, 0, 0, 0) + ltcBits(24, 0, 0, 1), 24)},
        {"no digits", ltcSignal(ltcBits(1, 2, 3, 4).replace(0, 4, "0111"), 24)},
        {"less than one frame", ltcSignal(twoFrames.substr(0, 70), 24)},
        {"two words that contradict each other", ltcSignal(ltcBits(1, 2, 3, 4) + ltcBits(1, 2, 4, 9), 24)},
        {"not numbers", Sound(1000, NAN)},
        {"noise", noisy(silence(200'000), 1, 10)},
        {"tones", changed(silence(200'000), tones)},
        {"speech", spoken(folder)},
    };
    for (const auto& [name, signal] : cases) EXPECT_FALSE(label(signal).has_value()) << name;
    for (const double rate : {0.0, -48000.0, std::nan(""), 0.4})
        EXPECT_FALSE(label(ltcSignal(twoFrames, 24), rate).has_value()) << rate;
}

TEST(LinearTimecode, choosesTheChannel) {
    const auto at = [](int hour) { return ltcSignal(ltcBits(hour, 0, 0, 0) + ltcBits(hour, 0, 0, 1), 24); };
    const Sound none = silence(at(0).size());
    struct Case {
        int wanted;
        const char* tc;
        int channel;
    };
    for (const auto& [wanted, tc, channel] : {Case{1, "10:00:00:00", 1},
                                              {2, "11:00:00:00", 2},
                                              {7, "11:00:00:00", 2},
                                              {1 << 30, "11:00:00:00", 2},
                                              {LTCDecoder::anyChannel, "10:00:00:00", 1}}) {
        MemoryAudio file({none, at(10), at(11)}, 48000);
        const auto frame = LTCDecoder::decodeFirstFrame(file, wanted).value();
        EXPECT_EQ(frame.tc, tc) << wanted;
        EXPECT_EQ(frame.channelIndex, channel) << wanted;
    }
    MemoryAudio file({none, at(10)}, 48000);
    EXPECT_FALSE(LTCDecoder::decodeFirstFrame(file, -7)) << "the first channel";
}

/// The signal that libltc makes, as 8-bit samples in its own scale.
Sound sentByLibrary(const LTCSignal& made, SMPTETimecode first, int frames) {
    const double fps = timecodeRate::frameRateForRealTimeCalculation(made.rate);
    const auto standard = made.rate == Rate::fps25 ? LTC_TV_625_50 : LTC_TV_525_60;
    ::LTCEncoder* encoder = ltc_encoder_create(made.sampleRate, fps, standard, 0);
    ::LTCFrame word;
    ltc_encoder_set_timecode(encoder, &first);
    ltc_encoder_get_frame(encoder, &word);
    word.dfbit = timecodeRate::isDrop(made.rate) ? 1 : 0;
    ltc_encoder_set_frame(encoder, &word);
    Sound sound;
    std::vector<ltcsnd_sample_t> bytes(made.sampleRate / 10);
    for (int i = 0; i < frames; ++i) {
        ltc_encoder_encode_frame(encoder);
        const int got = ltc_encoder_copy_buffer(encoder, bytes.data());
        for (int k = 0; k < got; ++k)
            sound.push_back((static_cast<float>(bytes[static_cast<std::size_t>(k)]) - 128) / 128);
        ltc_encoder_inc_timecode(encoder);
    }
    ltc_encoder_free(encoder);
    return sound;
}

TEST(LinearTimecode, agreesWithLibltcInBothDirections) {
    for (const Rate rate : usualRates)
        for (const std::uint32_t sampleRate : {44100U, 48000U}) {
            SCOPED_TRACE(std::string(timecodeRate::name(rate)) + " " + std::to_string(sampleRate));
            const LTCSignal made{.sampleRate = sampleRate, .rate = rate};
            SMPTETimecode time{};
            std::tie(time.hours, time.mins, time.secs, time.frame) = std::tuple(10, 58, 59, 20);
            const Timecode first({.hours = 10, .minutes = 58, .seconds = 59, .frames = 20}, rate);
            const double framesPerSecond = timecodeRate::frameRateForRealTimeCalculation(rate),
                         count = std::round(first.realTimeValue() * framesPerSecond), start = count - 0.4;
            expectStart(sentByLibrary(made, time, 30), made, count, 3);

            Sound sound = made.samples(start, 1);
            expectStart(sound, made, start);
            ::LTCDecoder* decoder = ltc_decoder_create(static_cast<int>(sampleRate) / 25, 64);
            ltc_decoder_write_float(decoder, sound.data(), sound.size(), 0);
            LTCFrameExt frame;
            int read = 0;
            for (; ltc_decoder_read(decoder, &frame) != 0; ++read) {
                SMPTETimecode got;
                ltc_frame_to_time(&got, &frame.ltc, 0);
                const double at = static_cast<double>(frame.off_start) / sampleRate * framesPerSecond;
                const auto expected = Timecode::fromFrameCount(std::llround(start + at), rate).components();
                EXPECT_EQ(std::tuple(got.hours, got.mins, got.secs, got.frame),
                          std::tuple(expected.hours, expected.minutes, expected.seconds, expected.frames));
                EXPECT_EQ(frame.ltc.dfbit, timecodeRate::isDrop(rate) ? 1U : 0U);
            }
            EXPECT_GE(read, 20);
            ltc_decoder_free(decoder);
        }
}

} // namespace
} // namespace orvane
