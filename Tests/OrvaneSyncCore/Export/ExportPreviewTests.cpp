#include "OrvaneSyncCore/Services/Export/ExportPreview.h"

#include "OrvaneSyncCore/Export/ExportFixtures.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

using namespace test;

SyncGroup inScene(const char* scene) {
    MediaAsset sound = recording(1);
    sound.ixmlData = ixml(scene, "1");
    return matched(picture(), {sound});
}

TEST(ExportPreview, SuggestsANameFromTheScenes) {
    const auto check = [&](const std::vector<const char*>& scenes, const std::optional<std::string>& name) {
        SyncGroupList groups;
        for (const char* scene : scenes) groups.append(inScene(scene));
        EXPECT_EQ(ExportPreview::suggestedEventName(groups), name) << scenes.size();
    };
    check({}, std::nullopt);
    check({"", ""}, std::nullopt);
    check({"12A", "12A", ""}, "Scene 12A");
    check({"10", "9", "11"}, "Scenes 9-11");
    check({"S10", "S9"}, "Scenes S9-S10");
    check({"007", "3"}, "Scenes 3-007");
    SyncGroup reported = inScene("5");
    reported.aleMetadata = std::map<std::string, std::string>{{"Scene", "8"}};
    EXPECT_EQ(ExportPreview::suggestedEventName({reported}), "Scene 8");
}

TEST(ExportPreview, CountsTheEventsThatWouldBeMade) {
    ExportSettings settings;
    SyncGroup unmatched = inScene("7"), excluded = inScene("8");
    unmatched.matchStatus = MatchStatus::unmatched();
    excluded.isExcludedFromExport = true;
    const SyncGroup silent = matched(picture(), {}, MatchStatus::unmatched());
    const SyncGroupList groups{inScene("5"), inScene("05"), inScene("6"), unmatched, excluded};
    EXPECT_EQ(ExportPreview::projectedEventCount(groups, settings), 2) << "5 and 05 share a name";
    SyncGroupList more = groups;
    more.append(silent);
    EXPECT_EQ(ExportPreview::projectedEventCount(more, settings), 3) << "one without a scene";
    settings.set(settings::wrapMOSInSyncClip, false);
    EXPECT_EQ(ExportPreview::projectedEventCount(more, settings), 2);
}

TEST(ExportPreview, ForecastsWhatIsWritten) {
    const MediaAsset sound = recording(2);
    const auto clip = [&](const char* name, const MatchStatus& status,
                          const std::vector<MediaAsset>& recordings) {
        return matched(picture(name), recordings, status);
    };
    SyncGroup excluded = clip("C.mov", MatchStatus::matched(), {sound});
    SyncGroup excludedMOS = clip("N.mov", MatchStatus::mos(), {});
    excluded.isExcludedFromExport = excludedMOS.isExcludedFromExport = true;
    SyncGroup alone = clip("D.mov", MatchStatus::manual(), {sound});
    alone.isExcludedFromMulticamFlag = true;
    const SyncGroupList groups{clip("A.mov", MatchStatus::matched(), {sound}),
                               clip("B.mov", MatchStatus::matched(), {sound}),
                               excluded,
                               excludedMOS,
                               alone,
                               clip("M.mov", MatchStatus::mos(), {}),
                               clip("U.mov", MatchStatus::unmatched(), {sound}),
                               clip("X.mov", MatchStatus::ambiguous(2), {sound, recording(1)})};
    for (const bool clips : {true, false})
        for (const bool multicam : {true, false})
            for (const bool wrapsMOS : {true, false}) {
                ExportSettings settings;
                settings.set(settings::generateSyncClips, clips);
                settings.set(settings::generateMulticam, multicam);
                settings.set(settings::wrapMOSInSyncClip, wrapsMOS);
                const auto forecast = ExportPreview::forecast(groups, settings);
                const ExportResult written = FCPXMLExporter::exportDocument(groups, {}, settings);
                EXPECT_EQ(forecast.withSound + forecast.withoutSound, written.syncClipCount);
                EXPECT_EQ(forecast.multicams, written.multicamCount);
                EXPECT_EQ(forecast.withSound, clips ? 3 : 0);
                EXPECT_EQ(forecast.multicams, multicam ? 1 : 0);
            }
}

TEST(ExportPreview, ReportsHowManyClipsWereNotAnalysed) {
    SyncGroup analysed = inScene("1"), excluded = inScene("1"), ambiguous = inScene("1");
    excluded.isExcludedFromExport = true;
    ambiguous.matchStatus = MatchStatus::ambiguous(2);
    SyncGroupList groups{analysed, excluded, ambiguous, matched(picture(), {}, MatchStatus::mos())};
    SmartAudioResults results;
    results[analysed.id].blocks.emplace_back();
    EXPECT_EQ(ExportPreview::smartAudioCoverage(groups, results).text(), std::nullopt);
    const SyncGroup unheard = inScene("2"); // not analysed, as its card was not connected
    results[unheard.id] = {};
    groups.append(unheard);
    EXPECT_EQ(ExportPreview::smartAudioCoverage(groups, results).text(),
              "1 clip has not been analyzed for Smart Audio — its audio settings won’t be applied in this "
              "export.");
    EXPECT_EQ(ExportPreview::smartAudioCoverage(groups, results).choiceText(), std::nullopt);
    SyncGroup chosen = inScene("3");
    chosen.manualActiveTracks = {2};
    EXPECT_EQ(ExportPreview::smartAudioCoverage(groups, results).rangesText(true), std::nullopt);
    chosen.manualBlockOverrides.emplace_back();
    groups.append(chosen);
    EXPECT_EQ(ExportPreview::smartAudioCoverage(groups, results).choiceText(),
              "The channels that were chosen before, in 1 clip, are in the document as they are chosen.");
    EXPECT_EQ(ExportPreview::smartAudioCoverage(groups, results).rangesText(true),
              "Ranges set by hand are not in the document, in 1 clip that Smart Audio has not analyzed; "
              "analyze and "
              "export again.");
    for (const bool isAnalysed : {false, true}) {
        if (isAnalysed) results[chosen.id].blocks.emplace_back();
        EXPECT_EQ(ExportPreview::smartAudioCoverage(groups, results).rangesText(false),
                  "The times of ranges set by hand are not in the document, in 1 clip; the option “Volume "
                  "keyframes” writes them.");
    }
    EXPECT_EQ(ExportPreview::smartAudioCoverage(groups, results).rangesText(true), std::nullopt);
}

} // namespace
} // namespace orvane
