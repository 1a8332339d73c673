#include "OrvaneSyncCore/Export/ExportFixtures.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

using namespace test;

/// One take of one recording and the cameras with those letters: B begins two seconds after A, C one second
/// before A.
void addTake(std::vector<SyncGroup>& groups, int number, const std::string& letters, const char* scene,
             const char* take) {
    const int start = 36000 + 300 * number;
    MediaAsset sound = recording(2, "SR001_T" + std::to_string(number) + ".WAV");
    sound.bextTimeReference = static_cast<std::uint64_t>(start - 2) * 48000;
    sound.ixmlData = ixml(scene, take, {"Boom", "Anna & Ben"});
    const auto check = [&](const char* name, int later, double seconds, const char* codec) {
        if (letters.find(name) == std::string::npos) return;
        MediaAsset video = picture(name + ("001C00" + std::to_string(number)) + "_260309.mov");
        video.startTimecodeString = TimecodeUtils::secondsToTC(start + later, 25.0);
        video.durationSeconds = seconds;
        video.videoCodecFourCC = codec;
        groups.push_back(matched(video, {sound}));
    };
    check("A", 0, 20, "apch");
    check("B", 2, 15, "apcn");
    check("C", -1, 22, "apch");
}

TEST(GoldenDocuments, ThreeCamerasByScene) {
    std::vector<SyncGroup> groups;
    addTake(groups, 1, "ABC", "2", "1");
    addTake(groups, 2, "AC", "10A", "3");
    // For one camera the report differs from the slate on the recorder; the report has priority.
    groups[4].aleMetadata = std::map<std::string, std::string>{{"Scene", "2"}, {"Take", "4"}};
    groups[1].masterGainDB = -3.214;
    groups[2].manualAudioOffsetSeconds = 0.08;
    MediaAsset silent = picture("D001C001_260309.mov");
    silent.startTimecodeString = "11:00:00:00";
    groups.push_back(matched(silent, {}, MatchStatus::mos()));

    ExportSettings settings = settingsAt(25);
    settings.set(settings::eventName, "Day 1");
    settings.set(settings::splitEventsByScene, true);
    settings.set(settings::generateRawMediaEvent, false);
    settings.atmoFileURL = FileURL{"/media/Atmo Kitchen.wav"};
    SmartAudioResult& heard = settings.smartAudioResults[groups[0].id];
    heard.bestTrackIndex = 2;
    TrackAdjustment& adjustment = heard.tracks.emplace_back();
    adjustment.trackIndex = 2;
    adjustment.voiceIsolationAmount = 0.4F;
    adjustment.loudnessAmount = 0.3F;
    WildTrack wild(recording(1, "wind.wav"), "Wind");
    wild.isApproved = true;

    const ExportResult result = FCPXMLExporter::exportDocument(SyncGroupList(groups), {wild}, settings);
    expectGolden("three-cameras", result.fcpxmlString);
    EXPECT_EQ(std::pair(result.eventCount, result.sceneEventCount), std::pair(3, 2));
    EXPECT_EQ(result.warnings,
              std::vector<std::string>{"Multicam angles span different scenes (Day 1 002, Day 1 10A): "
                                       "A001C002_260309.mov, C001C002_260309.mov — placed "
                                       "in the first angle's scene event."});
}

TEST(GoldenDocuments, MulticamAloneInDropFrame) {
    std::vector<SyncGroup> groups;
    for (const char* start : {"10:00:00:00", "10:00:01:02"}) {
        MediaAsset video = picture("CLIP" + std::to_string(groups.size() + 1) + ".mov");
        video.startTimecodeString = start;
        video.frameRate = video.projectFrameRate = 30000.0 / 1001;
        groups.push_back(matched(video, {recording(1)}));
    }
    ExportSettings settings = settingsAt(29.97);
    settings.set(settings::generateSyncClips, false);
    settings.set(settings::generateRawMediaEvent, false);
    settings.set(settings::multicamCodec, MulticamCodec::proRes422Proxy);
    expectGolden("multicam-alone",
                 FCPXMLExporter::exportDocument(SyncGroupList(groups), {}, settings).fcpxmlString);
}

} // namespace
} // namespace orvane
