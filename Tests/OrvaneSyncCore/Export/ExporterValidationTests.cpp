#include "OrvaneSyncCore/Export/ExportFixtures.h"
#include "OrvaneSyncCore/Export/RandomShoot.h"
#include "Support/RandomSeed.h"
#include "Support/Samples.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using namespace test;

/// Clips with everything that an exported document can contain.
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
    result.blocks.resize(2);
    result.blocks[0].endSeconds = result.blocks[1].startSeconds = 2.5;
    result.blocks[1].endSeconds = 9;
    result.blocks[1].activeTrack = 2;
    settings.set(settings::volumeKeyframes, true);
    SyncGroup slow = matched(picture("slow.mov"), {recording(2)}, MatchStatus::manual());
    slow.video.sensorFrameRate = 120;
    SyncGroup bare = matched(MediaAsset(FileURL{"/media/\xFF.mov"}, AssetKind::video),
                             {MediaAsset(FileURL{"/media/bare.wav"}, AssetKind::audio)});
    SyncGroup fast = slow; // its file runs at the sensor's rate: retimed
    fast.video.frameRate = 120;
    fast.id = UUID::random();
    settings.atmoFileURL = FileURL{"/media/atmo.wav"};
    settings.set(settings::generateNativeMOS, true);
    settings.set(settings::generateProjectRate, true);
    settings.set(settings::projectRateSeparateEvent, true);
    settings.set(settings::generateRawMediaEvent, true);
    return {rich, slow, fast, bare, matched(picture("silent.mov"), {}, MatchStatus::mos())};
}

/// Documents of each version of the format, checked against its type definition.
class ExporterValidation : public testing::Test {
  protected:
    void SetUp() override {
        if (!std::filesystem::exists(definitions_) || std::system("xmllint --version >/dev/null 2>&1") != 0)
            GTEST_SKIP() << "needs the format's type definitions and xmllint";
    }

    void add(std::string document, fcpxml::FCPXMLVersion version) {
        // Documents are declared standalone. A standalone document with blanks between elements is not valid
        // if its type definition is external, so the declaration is removed for the check.
        const std::string standalone = " standalone=\"yes\"";
        document.erase(document.find(standalone), standalone.size());
        auto& files = files_[std::string(fcpxml::attributeText(version))];
        const std::string name =
            std::string(fcpxml::attributeText(version)) + "-" + std::to_string(files.size());
        files.push_back(folder_.write(name + ".fcpxml", document));
    }

    void expectValid() const {
        for (const auto& [version, files] : files_)
            EXPECT_EQ(complaints(version, files), "") << "version " << version;
    }

    /// Each complaint is one line, which names the file.
    std::string complaints(const std::string& version, const std::vector<std::string>& files) const {
        const auto definition = definitions_ / ("FCPXMLv1_" + version.substr(2) + ".dtd");
        std::string command = "xmllint --noout --dtdvalid '" + definition.string() + "'";
        for (const std::string& file : files) command += " '" + file + "'";
        const int status = std::system((command + " 2>'" + folder_.path("report.txt") + "'").c_str());
        std::string report = folder_.read("report.txt");
        EXPECT_EQ(status == 0, report.empty()) << report;
        return report;
    }

  private:
    std::filesystem::path definitions_ = samplesFolder().parent_path() / "dtd";
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

constexpr unsigned sweepOfShoots = 200;

Shoot shootToValidate(unsigned seed) {
    Shoot shoot = randomShoot(seed, seed % 2 == 0 ? Numbers::any : Numbers::sane);
    if (shoot.settings.fcpxmlVersion < fcpxml::FCPXMLVersion::v1_8)
        shoot.settings.fcpxmlVersion = fcpxml::latestFCPXMLVersion;
    shoot.groups.update(shoot.groups[0].id, [](SyncGroup& group) { group.isExcludedFromExport = false; });
    return shoot;
}

TEST_F(ExporterValidation, RandomShootsFollowTheTypeDefinition) {
    std::map<std::string, int> documentsWith{
        {"multicam", 0},     {"time map", 0},  {"wrapped native", 0},  {"source media", 0},
        {"scene events", 0}, {"room tone", 0}, {"volume keyframes", 0}};
    for (const unsigned seed : test::seeds(sweepOfShoots)) {
        Shoot shoot = shootToValidate(seed);
        shoot.settings.set(settings::volumeKeyframes, true);
        const ExportResult result =
            FCPXMLExporter::exportDocument(shoot.groups, shoot.wildTracks, shoot.settings);
        const auto has = [&](const char* text) {
            return result.fcpxmlString.find(text) != std::string::npos;
        };
        documentsWith["multicam"] += has("<multicam ");
        documentsWith["time map"] += has("<timeMap");
        documentsWith["wrapped native"] +=
            result.nativeRateCount > 0 && shoot.settings.get(settings::wrapNativeMOSInSyncClip);
        documentsWith["source media"] += result.sourceMediaCount > 0;
        documentsWith["scene events"] += result.sceneEventCount > 0;
        documentsWith["volume keyframes"] += has("<keyframe ");
        documentsWith["room tone"] += has("lane=\"-10\"");
        add(result.fcpxmlString, shoot.settings.fcpxmlVersion);
    }
    constexpr int worthTheSweep = 10;
    for (const auto& [construct, documents] : documentsWith) {
        EXPECT_GE(documents, worthTheSweep) << construct;
        RecordProperty(construct, documents);
    }
    expectValid();
}

} // namespace
} // namespace orvane
