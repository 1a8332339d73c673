#include "OrvaneSyncCore/Services/Atmo/QuietAmbientGenerator.h"

#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncCore/Services/Atmo/SceneKey.h"
#include "OrvaneSyncCore/Services/Persistence/OutputMarks.h"
#include "Platform/AudioFile.h"
#include "Support/Assets.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <cmath>
#include <filesystem>

namespace orvane {
namespace {

constexpr std::uint32_t rate = 8000;
constexpr std::uint32_t window = rate / 10;

/// A tone of a number of windows with a level in dBFS (RMS).
struct Stretch {
    int windows;
    double dBFS;
};
using Channel = std::vector<Stretch>;

class AtmoTest : public testing::Test {
  protected:
    FileURL file(const std::string& name, const std::vector<Channel>& channels, std::uint32_t hz = rate) {
        std::vector<std::vector<float>> lists;
        for (const Channel& channel : channels) {
            auto& list = lists.emplace_back();
            for (const Stretch& stretch : channel)
                for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(stretch.windows) * (hz / 10); ++i)
                    list.push_back(static_cast<float>(std::sqrt(2) * std::pow(10, stretch.dBFS / 20) *
                                                      std::sin(static_cast<double>(list.size()) * 0.7)));
        }
        std::vector<float> samples;
        for (std::size_t i = 0; i < lists.front().size(); ++i)
            for (const auto& list : lists) samples.push_back(list[i]);
        const std::string path = folder_.write(name, "");
        test::WaveMaker()
            .format({.channels = static_cast<int>(lists.size()),
                     .sampleRate = hz,
                     .samples = test::SampleFormat::float32})
            .samples(samples)
            .writeTo(path);
        return {path};
    }
    /// Each candidate as "channel:first-end", in windows.
    std::string found(const FileURL& url) {
        std::string text;
        for (const AtmoCandidate& one : generator_.scanCandidates({url}))
            text += std::to_string(one.channelIndex) + ":" + std::to_string(one.startSample / window) + "-" +
                    std::to_string(one.endSample / window) + " ";
        return text;
    }

    test::TemporaryDirectory folder_;
    QuietAmbientGenerator generator_;
};

TEST_F(AtmoTest, findsQuietSteadyStretchesOfOneChannel) {
    struct Case {
        const char* name;
        std::vector<Channel> channels;
        const char* found;
    };
    const std::vector<Case> cases{
        {"too short by a window", {{{30, -20}, {24, -70}, {30, -20}}}, ""},
        {"just long enough", {{{30, -20}, {25, -70}, {30, -20}}}, "0:30-55 "},
        {"the first channel goes first, whatever the others hold", {{{60, -70}}, {{60, -80}}}, "0:0-60 "},
        {"the quietest of the others", {{{60, -20}}, {{60, -66}}, {{60, -72}}}, "2:0-60 "},
        {"a stretch ends where the channel changes",
         {{{30, -70}, {30, -20}}, {{30, -20}, {30, -70}}},
         "0:0-30 1:30-60 "},
        {"never above the ceiling", {{{60, -59}}}, ""},
        {"the quietest tenth sets the ceiling: -80 and 3.5 dB",
         {{{30, -80}, {60, -70}, {30, -80}}},
         "0:0-30 0:90-120 "},
        {"a step of more than half", {{{30, -75}, {1, -90}, {29, -75}}}, ""},
        {"digital silence", {{{60, -20}, {60, -1000}}}, ""},
    };
    for (const Case& one : cases) EXPECT_EQ(found(file("T.WAV", one.channels)), one.found) << one.name;
    EXPECT_EQ(found({folder_.write("BROKEN.WAV", "no sound")}), "");
}

TEST_F(AtmoTest, measuresFromTheStartOfEveryFiveSeconds) {
    // At 11025 Hz a window has 1102 frames, and 50 windows leave 25 frames of a chunk of 5 s.
    const FileURL odd = file("ODD.WAV", {{{200, -70}}}, 11025);
    const auto candidates = generator_.scanCandidates({odd});
    ASSERT_EQ(candidates.size(), 1U);
    EXPECT_EQ(candidates[0].endSample, 199 * 1102) << "the last chunk is short of a window";
    EXPECT_NEAR(candidates[0].rmsDBFS(), -70, 0.1);
}

TEST_F(AtmoTest, picksTheLongestUntilTheTargetIsReached) {
    std::vector<AtmoCandidate> all;
    const auto add = [&](double seconds, float level) {
        all.push_back({UUID::random(), {}, 0, 0, static_cast<std::int64_t>(seconds * rate), rate, level});
    };
    add(3, 0.002F);
    add(5, 0.001F);
    add(3, 0.001F);
    const auto picked = generator_.picked(all, 8);
    ASSERT_EQ(picked.size(), 2U);
    EXPECT_EQ(picked[0], all[1]);
    EXPECT_EQ(picked[1], all[2]) << "the quieter of two that last as long";
    EXPECT_TRUE(generator_.picked(all, 0).empty());
    for (int i = 0; i < 50; ++i) add(3, 0.001F);
    EXPECT_EQ(generator_.picked(all, 1e6).size(), 40U);
}

TEST_F(AtmoTest, joinsStretchesWithoutAClick) {
    const FileURL source = file("T.WAV", {{{200, -20}}, {{100, -66}, {100, -63}}});
    const auto segment = [&](int first, int windows) {
        return AtmoCandidate{UUID::random(),
                             source,
                             1,
                             first * static_cast<std::int64_t>(window),
                             (first + windows) * static_cast<std::int64_t>(window),
                             rate,
                             0.001F};
    };
    const QuietAmbientGenerator::Output output{"A/B: 1", folder_.path("out"), "effects.atmosphere"};
    const auto single = generator_.stitchCandidates({segment(10, 30)}, 60, output);
    EXPECT_EQ(single.durationSeconds, 3);
    EXPECT_EQ(single.audioURL.lastPathComponent(), "A-B- 1=Atmo.wav");
    const auto joined = generator_.stitchCandidates({segment(10, 30), segment(120, 30)}, 60, output);
    EXPECT_EQ(joined.audioURL, single.audioURL);
    EXPECT_EQ(joined.durationSeconds, 5.75);
    EXPECT_TRUE(isOwnOutput(OutputKind::rendering, joined.audioURL.path));
    EXPECT_EQ(folder_.read("out/A-B- 1=Atmo.wav").find("A/B: 1"), 36U + 12 + 8)
        << "in front of the originator";

    const auto audio = platform::AudioFile::open(joined.audioURL.path);
    std::vector<float> samples(5 * rate + 3 * rate / 4);
    float* const into = samples.data();
    ASSERT_EQ(audio->read({&into, 1}, samples.size()), samples.size());
    const auto level = [&](double from, double to) {
        double sum = 0;
        for (auto i = static_cast<std::size_t>(from * rate); i < static_cast<std::size_t>(to * rate); ++i)
            sum += static_cast<double>(samples[i]) * static_cast<double>(samples[i]);
        return 10 * std::log10(sum / ((to - from) * rate));
    };
    EXPECT_NEAR(level(0, 2.7), -66, 0.1);
    EXPECT_NEAR(level(3, 5.7), -63, 0.1);
    // The largest step between samples is that of a sine of the louder level, or of the sum of both in the
    // crossfade.
    float largest = 0;
    for (std::size_t i = 1; i < samples.size(); ++i)
        largest = std::max(largest, std::abs(samples[i] - samples[i - 1]));
    EXPECT_LT(largest, std::sqrt(2) * std::pow(10, -63.0 / 20) * 0.7 * 1.5);
}

TEST_F(AtmoTest, failsWithoutLeavingAFile) {
    const QuietAmbientGenerator::Output output{"1", folder_.path("out"), ""};
    EXPECT_THROW(generator_.stitchCandidates({}, 60, output), QuietAtmoError);
    const AtmoCandidate absent{UUID::random(), {folder_.path("absent.wav")}, 0, 0, 30000, rate, 0.001F};
    EXPECT_THROW(generator_.stitchCandidates({absent}, 60, output), platform::FileError);
    AtmoCandidate past{UUID::random(), file("T.WAV", {{{5, -70}}}), 0, 90000, 99000, rate, 0.001F};
    EXPECT_THROW(generator_.stitchCandidates({past}, 60, output), QuietAtmoError);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.path("out")), {}), 0);
    EXPECT_STREQ(
        QuietAtmoError(QuietAtmoError::Kind::noQuietSegmentsFound).what(),
        "No quiet segments long enough were found in the source audio (≥ 1.5 s of true silence required).");
}

TEST(Atmo, namesFilesAndScenes) {
    using Generator = QuietAmbientGenerator;
    EXPECT_EQ(Generator::sanitizeFilenameComponent("A/B"), "A-B");
    EXPECT_EQ(Generator::sanitizeFilenameComponent("../x\\y:z"), "--x-y-z");
    EXPECT_EQ(Generator::sanitizeFilenameComponent(".hidden "), "hidden");
    EXPECT_EQ(Generator::sanitizeFilenameComponent("."), "Unscened");
    EXPECT_EQ(Generator::sanitizeFilenameComponent("  "), "Unscened");

    SyncGroup group = test::clip(test::video("A001.mov"), test::audio("T01.WAV"));
    EXPECT_EQ(sceneKey(group), "Unscened");
    using Metadata = std::map<std::string, std::string>;
    group.aleMetadata = Metadata{{"Scene", "12A-3"}};
    EXPECT_EQ(sceneKey(group), "12A");
    group.lockitMetadata = Metadata{{"scene", "Außen 4"}};
    EXPECT_EQ(sceneKey(group), "Außen");
    group.lockitMetadata = Metadata{{"scene", "-"}};
    EXPECT_EQ(sceneKey(group), "Unscened");
}

} // namespace
} // namespace orvane
