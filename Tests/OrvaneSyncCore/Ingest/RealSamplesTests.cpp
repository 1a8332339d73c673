#include "OrvaneSyncCore/Services/Ingest/FileDiscoveryService.h"
#include "OrvaneSyncCore/Services/Ingest/MediaProbeService.h"
#include "Support/Samples.h"
#include "Support/Test.h"
#include "Timecode/Timecode.h"

#include <fstream>

namespace orvane {
namespace {

namespace fs = std::filesystem;

class RealSamples : public testing::Test {
  protected:
    void SetUp() override {
        if (!fs::exists(folder / "MANIFEST.md")) GTEST_SKIP() << "no sample files at " << folder;
    }
    /// By the path below the folder of samples.
    std::map<std::string, MediaAsset> probeAll() const {
        const DiscoveryResult found = FileDiscoveryService().discover(folder.string());
        MediaProbeService service(settings, nullptr);
        std::map<std::string, MediaAsset> assets;
        for (const auto& [urls, kind] :
             {std::pair(found.videoURLs, AssetKind::video), std::pair(found.audioURLs, AssetKind::audio)})
            for (const MediaAsset& asset : service.probeAll(urls, kind, nullptr))
                assets.emplace(fs::relative(asset.url.path, folder).string(), asset);
        return assets;
    }

    const fs::path folder = test::samplesFolder();
    std::shared_ptr<platform::MemorySettingsStore> settings =
        std::make_shared<platform::MemorySettingsStore>();
};

/// The part of a line between two texts.
std::optional<std::string> between(const std::string& line, const std::string& before,
                                   const std::string& after) {
    const std::size_t at = line.find(before);
    if (at == std::string::npos) return std::nullopt;
    const std::size_t start = at + before.size();
    return line.substr(start, line.find(after, start) - start);
}

/// The value of a word, in quotes or up to the next blank.
std::optional<std::string> fact(const std::string& line, const std::string& word) {
    if (auto quoted = between(line, " " + word + "='", "'")) return quoted;
    return between(line, " " + word + "=", " ");
}

/// The list gives the channel index and the interleave index, "3/1 Boom; 4/2 Lav"; our reader gives the
/// interleave index.
std::string listedTracks(const std::string& line) {
    std::string tracks = between(line, "| tracks=", " | ").value_or("");
    for (std::size_t slash = tracks.find('/'); slash != std::string::npos; slash = tracks.find('/')) {
        const std::size_t space = tracks.rfind(' ', slash);
        const std::size_t start = space == std::string::npos ? 0 : space + 1;
        tracks.erase(start, slash + 1 - start);
    }
    return tracks;
}

std::optional<std::string> unlessEmpty(const std::optional<std::string>& text) {
    return text && !text->empty() ? text : std::nullopt;
}

TEST_F(RealSamples, recordingsAgreeWithOtherTools) {
    const auto assets = probeAll();
    EXPECT_GE(assets.size(), 40U);
    std::ifstream manifest(folder / "MANIFEST.md");
    int recordings = 0;
    for (std::string line; std::getline(manifest, line);) {
        const auto name = between(line, "- `wav/", "`");
        if (!name || !fact(line, "timeReference")) continue;
        SCOPED_TRACE(*name);
        ++recordings;
        const MediaAsset& asset = assets.at("wav/" + *name);
        EXPECT_EQ(std::to_string(asset.bextTimeReference.value_or(0)), fact(line, "timeReference"));
        // One recorder leaves bytes of its memory after the NUL that ends the name. They are not ASCII, so
        // the whole field is ignored.
        if (fact(line, "originator") == "Metacorder Demo")
            EXPECT_FALSE(asset.bextOriginator.has_value());
        else
            EXPECT_EQ(asset.bextOriginator, fact(line, "originator"));
        ASSERT_TRUE(asset.ixmlData.has_value());
        EXPECT_EQ(asset.ixmlData->scene, fact(line, "scene"));
        EXPECT_EQ(asset.ixmlData->take, fact(line, "take"));
        EXPECT_EQ(asset.ixmlData->tape, fact(line, "tape"));
        EXPECT_EQ(asset.ixmlData->timecodeRate, fact(line, "tcRate"));
        EXPECT_EQ(asset.ixmlData->circled, unlessEmpty(fact(line, "circled")));
        std::string tracks;
        for (const IXMLTrack& track : asset.ixmlData->tracks)
            tracks += (tracks.empty() ? "" : "; ") + std::to_string(track.channelIndex) + " " + track.name;
        EXPECT_EQ(tracks, listedTracks(line));
        std::string day = fact(line, "date").value_or("");
        std::ranges::replace(day, ':', '-');
        EXPECT_EQ(asset.contentCreatedDate, dateFromLocalISO8601(day + "T12:00:00"));
        EXPECT_TRUE(asset.startTimecodeString.has_value());
    }
    EXPECT_GE(recordings, 11);

    const std::map<std::string, std::string> expected{
        {"wav/F8_Scene_1_2AG-T001_Tr1.WAV", "22:40:10:00"}, // 81610 s
        {"wav/MC_Sr001-001-06_01.WAV", "13:36:06:04"},      // 48966.163 s at 25
        {"wav/SD_A101_1.WAV", "12:39:59:00"}};              // 45644.599 s at 24000/1001: frame 1094376
    for (const auto& [name, timecode] : expected)
        EXPECT_EQ(assets.at(name).startTimecodeString, timecode) << name;

    // ffprobe gives 15:44:35:10, non-drop. The other file has no timecode track, but its start is in its XMP.
    const MediaAsset& action = assets.at("movie/gopro_max-heromode.mp4");
    const auto rate = action.timecodeFrameRate.value_or(TimecodeFrameRate::fps29_97d);
    const auto start = Timecode::fromString(action.startTimecodeString.value_or(""), rate);
    ASSERT_TRUE(start.has_value());
    EXPECT_NEAR(start->realTimeValue(), ((15 * 3600 + 44 * 60 + 35) * 30 + 10) * 1001 / 30000.0, 1e-3);
    EXPECT_EQ(assets.at("movie/xmp480qt.mov").startTimecodeString, "12:59:21:18");
    EXPECT_EQ(assets.at("movie/xmp480qt.mov").timecodeFrameRate, TimecodeFrameRate::fps29_97);
}

} // namespace
} // namespace orvane
