#include "Platform/MediaInspector.h"
#include "Support/Samples.h"
#include "Support/Test.h"

#include <cstdio>
#include <fstream>

namespace orvane::test {
namespace {

/// What the list of the sample files states about one of them, as another tool read it.
struct Facts {
    struct Video {
        std::string codec;
        double width = 0, height = 0;
        std::optional<double> frameRate;
    };
    struct Audio {
        double sampleRate = 0;
        int channels = 0;
    };
    std::string file;
    std::vector<Video> videos;
    std::vector<Audio> audios;
    double longest = 0; ///< seconds, of the longest track
};

/// A line such as "- `movie/a.mp4` (123 bytes): video avc1 320x240 avg 24/1 r 24/1 9.9 s | audio aac ...".
std::optional<Facts> readFacts(const std::string& line) {
    const std::size_t nameEnd = line.find('`', 3);
    Facts facts;
    if (nameEnd == std::string::npos || !line.starts_with("- `")) return std::nullopt;
    facts.file = line.substr(3, nameEnd - 3);
    if (!facts.file.starts_with("movie/") && !facts.file.starts_with("wav/")) return std::nullopt;

    std::istringstream parts(line.substr(nameEnd));
    for (std::string part; std::getline(parts, part, '|');) {
        std::array<char, 32> codec{};
        double width = 0, height = 0, frames = 0, over = 0, rate = 0, seconds = 0;
        int channels = 0;
        const std::string video = part.substr(std::min(part.find("video "), part.size()));
        const std::string audio = part.substr(std::min(part.find("audio "), part.size()));
        if (std::sscanf(video.c_str(), "video %31s %lfx%lf avg %lf/%lf r %*s %lf s", codec.data(), &width,
                        &height, &frames, &over, &seconds) == 6) {
            const std::string name = codec.data();
            if (name.starts_with("[0]")) continue; // cover art that the tool shows as a track
            facts.videos.push_back(
                {name, width, height, over > 0 ? std::optional(frames / over) : std::nullopt});
        } else if (std::sscanf(audio.c_str(), "audio %*s %lf Hz %d ch %lf s", &rate, &channels, &seconds) ==
                   3) {
            facts.audios.push_back({rate, channels});
        }
        facts.longest = std::max(facts.longest, seconds);
    }
    return facts;
}

/// A file for which our answer differs from the other tool's on purpose.
struct Difference {
    const char* file;
    double durationSeconds;
    const char* reason;
};
constexpr Difference differences[] = {
    {"movie/e_cbcs_audio.mp4", 9.984,
     "one segment of a stream: its own length, not when it ends in the stream"},
    {"movie/e_cbcsdec.mp4", 13.706, "the same; and the captions are the longest track"},
    {"movie/m_bipbop-cenc-audioinit.mp4", 10.031, "the header states it, though the fragments are elsewhere"},
    {"movie/m_bipbop_cbcs_audio_init.mp4", 10.03102,
     "the header states it, though the fragments are elsewhere"},
    {"movie/m_bipbop_cbcs_video_init.mp4", 9.843344,
     "the header states it, though the fragments are elsewhere"},
    {"movie/m_chunk_out_of_range.mp4", 0.68, "chunks out of range do not concern the header"},
    {"movie/m_sine-3s-xhe-aac-44khz-mono.mp4", 3, "a codec that the tool does not know"},
};

void expectFacts(const Facts& facts, const platform::MediaInspection& read) {
    const auto different = std::ranges::find(differences, facts.file, &Difference::file);
    const bool isDifferent = different != std::end(differences);
    double frame = 0.001;
    if (!read.videoTracks.empty() && read.videoTracks[0].nominalFrameRate)
        frame = 1 / *read.videoTracks[0].nominalFrameRate;
    ASSERT_TRUE(read.durationSeconds);
    EXPECT_NEAR(*read.durationSeconds, isDifferent ? different->durationSeconds : facts.longest,
                isDifferent ? 0.0005 : frame);

    if (facts.videos.empty() && facts.audios.empty()) return; // the tool opened no stream
    ASSERT_EQ(read.videoTracks.size(), facts.videos.size());
    for (std::size_t i = 0; i < facts.videos.size(); ++i) {
        EXPECT_EQ(read.videoTracks[i].codecFourCC, facts.videos[i].codec);
        EXPECT_EQ(read.videoTracks[i].width, facts.videos[i].width);
        EXPECT_EQ(read.videoTracks[i].height, facts.videos[i].height);
        // The last sample of a phone's clip may end after the media does.
        EXPECT_NEAR(read.videoTracks[i].nominalFrameRate.value_or(0), facts.videos[i].frameRate.value_or(0),
                    0.005);
    }
    ASSERT_EQ(read.audioTracks.size(), facts.audios.size());
    for (std::size_t i = 0; i < facts.audios.size(); ++i) {
        EXPECT_EQ(read.audioTracks[i].sampleRate, facts.audios[i].sampleRate);
        EXPECT_EQ(read.audioTracks[i].channelCount.value_or(0), facts.audios[i].channels);
    }
}

TEST(MediaSamples, areReadAsOtherToolsReadThem) {
    std::ifstream list(samplesFolder() / "MANIFEST.md");
    if (!list) GTEST_SKIP() << "no sample files here";
    std::size_t files = 0;
    for (std::string line; std::getline(list, line);) {
        const auto facts = readFacts(line);
        if (!facts) continue;
        SCOPED_TRACE(facts->file);
        ++files;
        const auto read = platform::inspectMedia((samplesFolder() / facts->file).string());
        ASSERT_TRUE(read);
        expectFacts(*facts, *read);
    }
    EXPECT_GT(files, std::size(differences));
}

} // namespace
} // namespace orvane::test
