#include "OrvaneSyncApp/Controllers/ProjectTracks.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "Support/Assets.h"
#include "Support/Test.h"

namespace orvane {
namespace {

TEST(ProjectTracks, AChoiceHoldsWithoutRecordingsThatHaveNoPartInItsNumbers) {
    struct Case {
        const char* name;
        std::vector<const char*> here, missing; ///< in the project those that are here come first
        int channels;                           ///< of each file
        std::set<int> chosen;
        bool isKept;
        bool isSlated = false; ///< the files state their scene and take
    };
    const std::vector<Case> cases{
        {"a second recorder behind", {"/CART/T01.WAV"}, {"/ZOOM/B01.WAV"}, 4, {3}, true},
        {"the same of one scene and take", {"/CART/T01.WAV"}, {"/ZOOM/B01.WAV"}, 4, {3}, true, true},
        {"a second recorder in front", {"/CART/T01.WAV"}, {"/BAG/B01.WAV"}, 4, {3}, true},
        {"maybe a channel in front", {"/CART/T01.WAV"}, {"/BAG/B01.WAV"}, 4, {3}, false, true},
        {"a copy in front", {"/CART/T01.WAV"}, {"/A/T01.WAV"}, 4, {3}, true, true},
        {"the last of three mono files", {"/S/T01_1.WAV", "/S/T01_2.WAV"}, {"/S/T01_3.WAV"}, 1, {2}, true},
        {"the one between", {"/S/T01_1.WAV", "/S/T01_3.WAV"}, {"/S/T01_2.WAV"}, 1, {2}, false},
        {"a channel of the missing recorder", {"/CART/T01.WAV"}, {"/ZOOM/B01.WAV"}, 4, {3, 5}, false},
    };
    for (const Case& one : cases) {
        std::vector<MediaAsset> files;
        for (const char* path : one.here) {
            MediaAsset file(FileURL{path}, AssetKind::audio);
            file.channelCount = one.channels;
            file.bextTimeReference = 48000;
            file.durationSeconds = 60;
            files.push_back(one.isSlated ? test::slated(file, "1", "2") : file);
        }
        SyncGroup group(test::video("A.mov"), {}, MatchStatus::matched());
        PersistedGroup entry(group.id, group.video.url);
        AudioByURL known;
        for (const MediaAsset& file : files) {
            known[file.url] = &file;
            entry.audioPaths.push_back(file.url);
            group.audioMatches.emplace_back(file, 0, 60);
        }
        for (const char* path : one.missing) entry.audioPaths.push_back(FileURL{path});
        group.manualActiveTracks = one.chosen;
        OrvaneSyncProject project;
        project.groups = {entry};
        SyncGroupList groups({group});
        const auto leftOut = fitTracksToRecordings(project, groups, known, {});
        EXPECT_EQ(leftOut.empty(), one.isKept) << one.name;
        EXPECT_EQ(groups.front().manualActiveTracks, one.isKept ? one.chosen : std::set<int>{}) << one.name;
    }
}

TEST(ProjectTracks, AChoiceStaysWithTheRecordingThatWasChosen) {
    std::vector<MediaAsset> files{test::audio("A.WAV", "10:00:00:00", 60),
                                  test::audio("B.WAV", "10:00:10:00", 20)};
    AudioByURL known;
    SyncGroup group(test::video("A.mov", "10:00:00:00", 60), {}, MatchStatus::ambiguous(2));
    PersistedGroup entry(group.id, group.video.url);
    for (MediaAsset& file : files) {
        file.channelCount = 2;
        file.bextOriginator = file.filename;
        known[file.url] = &file;
        entry.audioPaths.insert(entry.audioPaths.begin(), file.url); // the second recording was chosen
        group.audioMatches.push_back(SyncEngine::matchByTimecode(group.video, file, {}));
    }
    group.manualActiveTracks = {1, 2};
    group.audioAnchorOffsetInAudioSeconds = 5;
    for (const bool isByHand : {false, true}) {
        entry.matchStatusRaw = isByHand ? "manual" : "ambiguous:2";
        OrvaneSyncProject project;
        project.groups = {entry};
        SyncGroupList groups({group});
        settleAsStored(project, groups);
        EXPECT_TRUE(fitTracksToRecordings(project, groups, known, {}).empty());
        const SyncGroup& now = groups.front();
        EXPECT_EQ(now.audioMatches.front().audio->filename, isByHand ? "B.WAV" : "A.WAV");
        EXPECT_EQ(now.matchStatus, isByHand ? MatchStatus::manual() : MatchStatus::ambiguous(2));
        EXPECT_EQ(now.manualActiveTracks, isByHand ? std::set({1, 2}) : std::set({3, 4}));
        EXPECT_EQ(now.audioAnchorOffsetInAudioSeconds, isByHand ? 5 : 15);
    }
}

} // namespace
} // namespace orvane
