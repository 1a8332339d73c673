#include "OrvaneSyncCore/Services/Ingest/MediaProbeService.h"
#include "OrvaneSyncCore/Services/Ingest/StartTimecode.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"
#include "Timecode/Timecode.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <memory>

namespace orvane {
namespace {

struct Closer {
    void operator()(std::FILE* pipe) const { ::pclose(pipe); }
};

std::string output(const std::string& command) {
    const std::unique_ptr<std::FILE, Closer> pipe(::popen(command.c_str(), "r"));
    std::string text;
    std::array<char, 4096> piece{};
    while (pipe != nullptr && std::fgets(piece.data(), piece.size(), pipe.get()) != nullptr)
        text += piece.data();
    return text;
}

/// The value of the last "key=value" line that has one, else empty.
std::string value(const std::string& lines, const std::string& key) {
    std::string found;
    for (std::size_t at = lines.find(key + "="); at != std::string::npos;
         at = lines.find(key + "=", at + 1)) {
        const std::size_t start = at + key.size() + 1;
        const std::string text = lines.substr(start, lines.find('\n', start) - start);
        if (!text.empty() && text != "N/A" && text != "0/0") found = text;
    }
    return found;
}

/// A frame has different labels in drop and non-drop counting, so starts are compared as counts of frames,
/// and as labels only if the asset states how it counts.
std::int64_t frameCount(const std::string& label, TimecodeFrameRate rate) {
    const auto timecode = Timecode::fromString(label, rate);
    const double fps = timecodeRate::rate(rate).doubleValue();
    return timecode ? std::llround(timecode->realTimeValue() * fps) : -1;
}

struct Case {
    const char* name;
    const char* rate;
    const char* timecode;
    const char* codecs;
    const char* knownDifference = nullptr; ///< why our start is different
};

TEST(FFprobe, agreesAboutFilesThatFFmpegWrites) {
    if (output("ffprobe -version 2>/dev/null && ffmpeg -version 2>/dev/null").empty())
        GTEST_SKIP() << "no ffprobe";
    constexpr const char *mpeg2 = "-c:v mpeg2video -c:a pcm_s16le", *mjpeg = "-c:v mjpeg -c:a pcm_s16le",
                         *mpeg4 = "-c:v mpeg4 -c:a aac";
    const Case cases[] = {
        {"25.mxf", "25", "01:02:03:04", mpeg2},
        {"drop.mxf", "30000/1001", "10:00:00;02", mpeg2},
        {"non-drop.mxf", "30000/1001", "10:00:00:02", mpeg2},
        {"film.mxf", "24000/1001", "23:59:59:23", mpeg2},
        {"50.mxf", "50", "00:00:10:49", "-c:v jpeg2000 -c:a pcm_s16le"},
        {"59.mxf", "60000/1001", "02:00:00;10", "-c:v jpeg2000 -c:a pcm_s16le"},
        {"25.mov", "25", "01:02:03:04", mjpeg},
        {"drop.mov", "30000/1001", "10:01:00;02", mjpeg},
        {"non-drop.mov", "30000/1001", "10:01:00:02", mjpeg},
        {"film.mov", "24000/1001", "00:00:00:01", mjpeg},
        {"30.mp4", "30", "12:00:00:29", mpeg4},
        {"drop.mp4", "30000/1001", "23:59:59;29", mpeg4},
        {"none.mp4", "25", "", mpeg4},
        {"a.wav", "25", "", "-vn -c:a pcm_s24le"},
        {"large.wav", "25", "", "-vn -c:a pcm_s24le -rf64 always"},
        {"reference.wav", "25", "", "-vn -c:a pcm_s24le -write_bext 1 -metadata time_reference=172800000",
         "01:00:00:00"}, // ffprobe gives the sample count; without an iXML we read it at 24 frames a second
        {"big-endian.aiff", "25", "", "-vn -c:a pcm_s16be"},
    };
    const test::TemporaryDirectory folder;
    std::shared_ptr<platform::MemorySettingsStore> settings =
        std::make_shared<platform::MemorySettingsStore>();
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        const std::string path = folder.path(one.name), rate = one.rate, label = one.timecode;
        output("ffmpeg -v error -y -threads 1 -f lavfi -i color=s=96x64:d=1:r=" + rate +
               " -f lavfi -i sine=d=1:r=48000 -threads 1 " + one.codecs +
               (label.empty() ? "" : " -timecode '" + label + "'") + " '" + path + "' 2>&1");
        const std::string facts = output(
            "ffprobe -v error -of default -show_entries format=duration:format_tags=timecode:stream=width,"
            "r_frame_rate,sample_rate:stream_tags=timecode '" +
            path + "' 2>&1");
        const FileURL url{path};
        const MediaAsset asset = MediaProbeService(settings, nullptr).probe(url, assetKindFrom(url).value());
        ASSERT_FALSE(value(facts, "duration").empty()) << facts;
        EXPECT_NEAR(asset.durationSeconds.value_or(-1), std::stod(value(facts, "duration")), 1e-3);
        EXPECT_EQ(std::to_string(std::lround(asset.sampleRate.value_or(0))), value(facts, "sample_rate"));
        if (asset.kind == AssetKind::video) {
            EXPECT_EQ(std::to_string(asset.width.value_or(0)), value(facts, "width"));
            const std::size_t slash = rate.find('/');
            const double fps =
                std::stod(rate) / (slash == std::string::npos ? 1 : std::stod(rate.substr(slash + 1)));
            EXPECT_NEAR(asset.frameRate.value_or(0), fps, 1e-4);
        }
        const std::string theirs = value(facts, "TAG:timecode");
        if (one.knownDifference != nullptr) {
            EXPECT_TRUE(theirs.empty());
            EXPECT_EQ(asset.startTimecodeString, one.knownDifference);
            continue;
        }
        ASSERT_EQ(asset.startTimecodeString.has_value(), !theirs.empty());
        if (theirs.empty()) continue;
        EXPECT_EQ(theirs, label);
        const double fps = asset.projectFrameRate.value_or(0);
        const auto ours = asset.timecodeFrameRate.value_or(TimecodeUtils::frameRate(fps));
        const auto stated = StatedTimecode::rateOf(static_cast<int>(std::lround(fps)),
                                                   theirs.find(';') != std::string::npos, fps);
        ASSERT_TRUE(stated.has_value());
        EXPECT_EQ(frameCount(*asset.startTimecodeString, ours), frameCount(theirs, *stated))
            << *asset.startTimecodeString;
        if (asset.timecodeFrameRate) {
            EXPECT_EQ(*asset.startTimecodeString, theirs);
        }
    }
}

} // namespace
} // namespace orvane
