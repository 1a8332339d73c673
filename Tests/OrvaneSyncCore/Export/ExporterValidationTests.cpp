#include "OrvaneSyncCore/Export/ExportFixtures.h"
#include "Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace orvane {
namespace {

using namespace test;

/// Everything that a document of today can hold.
SyncGroupList manyClips(ExportSettings& settings) {
    MediaAsset named = recording(8);
    named.ixmlData = ixml("12A", "3", {"Mix", "Boom <1>", "Lav \"Änna\"", "Lav\x01", "", "💡"});
    SyncGroup rich = matched(picture(), {named, recording(2, "B & C.WAV"), recording(1, "D.WAV")});
    rich.masterGainDB = -6.02;
    rich.manualAudioOffsetSeconds = 1.5;
    rich.manualActiveTracks = {2, 9};
    auto& result = settings.smartAudioResults[rich.id];
    for (int track = 1; track <= 8; ++track) {
        TrackAdjustment& adjustment = result.tracks.emplace_back();
        adjustment.trackIndex = track;
        adjustment.voiceIsolationAmount = 0.4F;
        adjustment.loudnessAmount = 0.3F;
    }
    SyncGroup slow = matched(picture("slow.mov"), {recording(2)}, MatchStatus::manual());
    slow.video.sensorFrameRate = 120;
    SyncGroup bare = matched(MediaAsset(FileURL{"/media/\xFF.mov"}, AssetKind::video),
                             {MediaAsset(FileURL{"/media/bare.wav"}, AssetKind::audio)});
    SyncGroup fast = slow; // its file runs at the sensor's rate: retimed
    fast.video.frameRate = 120;
    fast.id = UUID::random();
    settings.atmoFileURL = FileURL{"/media/atmo.wav"};
    settings.generateNativeMOSForOffspeed = settings.generateProjectRateForOffspeed = true;
    settings.separateEventForProjectRate = settings.generateRawMediaEvent = true;
    return {rich, slow, fast, bare, matched(picture("silent.mov"), {}, MatchStatus::mos())};
}

std::filesystem::path sharedFolder() {
    if (const char* given = std::getenv("ORVANE_SAMPLES"); given != nullptr)
        return std::filesystem::path(given).parent_path();
    return std::filesystem::path(ORVANE_SOURCE_DIR).parent_path() / "shared";
}

TEST(ExporterValidation, DocumentsFollowTheTypeDefinition) {
    const auto definitions = sharedFolder() / "dtd";
    if (!std::filesystem::exists(definitions) || std::system("xmllint --version >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "needs the format's type definitions and xmllint";
    const TemporaryDirectory folder;
    WildTrack wild(recording(2, "wind.wav"));
    wild.isApproved = true;
    for (const auto version :
         {fcpxml::FCPXMLVersion::v1_8, fcpxml::FCPXMLVersion::v1_9, fcpxml::FCPXMLVersion::v1_10,
          fcpxml::FCPXMLVersion::v1_11, fcpxml::FCPXMLVersion::v1_12, fcpxml::FCPXMLVersion::v1_13,
          fcpxml::FCPXMLVersion::v1_14}) {
        const std::string text(fcpxml::attributeText(version));
        ExportSettings settings = settingsAt(25);
        settings.fcpxmlVersion = version;
        const SyncGroupList groups = manyClips(settings);
        std::string document = FCPXMLExporter::exportDocument(groups, {wild}, settings).fcpxmlString;
        // Documents are declared standalone, and a standalone document with blanks between elements is not
        // valid against a definition outside it. Only the declaration stands in the way.
        const std::string standalone = " standalone=\"yes\"";
        document.erase(document.find(standalone), standalone.size());
        const std::string file = folder.write(text + ".fcpxml", document);
        const auto definition = definitions / ("FCPXMLv1_" + text.substr(2) + ".dtd");
        const std::string report = folder.path(text + ".txt");
        const int status = std::system(
            ("xmllint --noout --dtdvalid '" + definition.string() + "' '" + file + "' 2>'" + report + "'")
                .c_str());
        EXPECT_EQ(status, 0) << "version " << text << "\n" << folder.read(text + ".txt");
    }
}

} // namespace
} // namespace orvane
