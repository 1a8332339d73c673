#include "OrvaneSyncCore/Export/ExportFixtures.h"
#include "OrvaneSyncCore/Export/RandomShoot.h"
#include "Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>

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

/// Documents of each version of the format, checked against its type definition.
class ExporterValidation : public testing::Test {
  protected:
    void SetUp() override {
        if (!std::filesystem::exists(definitions_) || std::system("xmllint --version >/dev/null 2>&1") != 0)
            GTEST_SKIP() << "needs the format's type definitions and xmllint";
    }

    static bool hasDefinition(fcpxml::FCPXMLVersion version) {
        return version >= fcpxml::FCPXMLVersion::v1_8;
    }

    void add(std::string document, fcpxml::FCPXMLVersion version) {
        // Documents are declared standalone, and a standalone document with blanks between elements is not
        // valid against a definition outside it. Only the declaration stands in the way.
        const std::string standalone = " standalone=\"yes\"";
        document.erase(document.find(standalone), standalone.size());
        auto& files = files_[std::string(fcpxml::attributeText(version))];
        const std::string name =
            std::string(fcpxml::attributeText(version)) + "-" + std::to_string(files.size());
        files.push_back(folder_.write(name + ".fcpxml", document));
    }

    void expectValid() const {
        for (const auto& [version, files] : files_) {
            const auto definition = definitions_ / ("FCPXMLv1_" + version.substr(2) + ".dtd");
            std::string command = "xmllint --noout --dtdvalid '" + definition.string() + "'";
            for (const std::string& file : files) command += " '" + file + "'";
            const int status = std::system((command + " 2>'" + folder_.path("report.txt") + "'").c_str());
            EXPECT_EQ(status, 0) << "version " << version << "\n" << folder_.read("report.txt");
        }
    }

  private:
    std::filesystem::path definitions_ = sharedFolder() / "dtd";
    TemporaryDirectory folder_;
    std::map<std::string, std::vector<std::string>> files_; ///< by version
};

TEST_F(ExporterValidation, EveryVersionFollowsItsTypeDefinition) {
    WildTrack wild(recording(2, "wind.wav"));
    wild.isApproved = true;
    for (auto version = fcpxml::FCPXMLVersion::v1_8; version <= fcpxml::latestFCPXMLVersion;
         version = static_cast<fcpxml::FCPXMLVersion>(static_cast<int>(version) + 1)) {
        ExportSettings settings = settingsAt(25);
        settings.fcpxmlVersion = version;
        const SyncGroupList groups = manyClips(settings);
        add(FCPXMLExporter::exportDocument(groups, {wild}, settings).fcpxmlString, version);
    }
    expectValid();
}

TEST_F(ExporterValidation, RandomShootsFollowTheTypeDefinition) {
    for (unsigned seed = 1; seed <= 200; ++seed) {
        Shoot shoot = randomShoot(seed, seed % 2 == 0 ? Numbers::any : Numbers::sane);
        if (!hasDefinition(shoot.settings.fcpxmlVersion))
            shoot.settings.fcpxmlVersion = fcpxml::latestFCPXMLVersion;
        // The definition has no place for a parameter in a channel's element.
        shoot.settings.experimentalVolumeKeyframes = false;
        shoot.groups.update(shoot.groups[0].id, [](SyncGroup& group) { group.isExcludedFromExport = false; });
        add(FCPXMLExporter::exportDocument(shoot.groups, shoot.wildTracks, shoot.settings).fcpxmlString,
            shoot.settings.fcpxmlVersion);
    }
    expectValid();
}

} // namespace
} // namespace orvane
