#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncApp/ViewModels/Results/DoubtCures.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "Platform/Files.h"
#include "ServeTest.h"
#include "Support/Assets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace orvane::cli::rpc {
namespace {

TEST_F(ServeTest, scansEditsTakesBackAndExports) {
    call("setCorrections", R"({"soundOffset":"00:00:00:59"})"); // without clips, no rate refuses it
    call("setCorrections", R"({"soundOffset":null})");
    scan();
    struct Case {
        std::string method, more; ///< arguments in addition to the clip's identifier
        std::string field;
        std::string value;  ///< of the field after the call
        std::string action; ///< the step that can be undone then
    };
    const std::vector<Case> cases{
        {"adjustAudioOffset", R"(,"deltaSeconds":0.04)", "manualAudioOffsetSeconds", "0.04",
         "Adjust Audio Offset"},
        {"setAudioAnchor", R"(,"secondsInAudio":1.5)", "audioAnchorOffsetInAudioSeconds", "1.5",
         "Set Audio Anchor"},
        {"setAudioAnchor", "", "audioAnchorOffsetInAudioSeconds", "null", "Set Audio Anchor"},
        {"resetAudioOffset", "", "manualAudioOffsetSeconds", "0.0", "Reset Audio Offset"},
        {"toggleApproved", "", "isApproved", "true", "Toggle Approved"},
        {"setManualClipName", R"(,"name":" Kitchen ")", "manualClipName", "\"Kitchen\"", "Rename Clip"},
        {"setSyncMethod", R"(,"method":"clap")", "syncMethod", "\"clap\"", "Change Sync Method"},
        {"setGenerateNativeMOS", R"(,"enabled":true)", "generateNativeMOSClip", "true", "Toggle Native MOS"},
        {"setMasterGain", R"(,"gainDB":-3,"auto":false)", "masterGainDB", "-3.0", "Set Master Gain"},
        {"soloTrackActive", R"(,"trackIndex":2)", "manualActiveTracks", "[2]", "Toggle Audio Track"},
        {"soloAlgorithmInclusion", R"(,"trackIndex":2)", "algorithmExcludedTracks", "[1,3,4,5,6]",
         "Toggle Algo Inclusion"},
        {"toggleLocked", "", "isLocked", "true", "Toggle Lock"},
    };
    const auto& rows = commands::allCommands();
    const auto row = [&](const char* id) { return std::ranges::find(rows, id, &commands::Command::id); };
    const auto reset = row("resetAudioOffset"), detect = row("autoDetectAudioAnchor");
    for (const Case& test : cases) {
        EXPECT_TRUE(call(test.method, onFirst(test.more)).isNull()) << test.method;
        EXPECT_EQ(reset->isEnabled(context_), first("manualAudioOffsetSeconds").number() != 0);
        if (test.field == "audioAnchorOffsetInAudioSeconds") {
            EXPECT_EQ(detect->isEnabled(context_, &context_.group(*UUID::fromText(groupID_))),
                      test.value == "null");
        }
        EXPECT_EQ(first(test.field).dump(), test.value) << test.method;
        EXPECT_EQ(*call("undoState").find("undoActionName")->string(), test.action);
    }
    call("undo");
    EXPECT_EQ(first("isLocked").dump(), "false");
    call("redo");
    EXPECT_EQ(first("isLocked").dump(), "true");
    EXPECT_TRUE(call("setManualSensorFrameRate", onFirst(R"(,"fps":50)")).isNull()); // the clip is locked

    const JSON written =
        call("exportFCPXML", R"({"output":")" + folder_.path("out.fcpxml") + R"(","eventName":"Served"})");
    EXPECT_EQ(written.find("syncClipCount")->integer(), 3);
    std::ostringstream document;
    document << std::ifstream(folder_.path("out.fcpxml")).rdbuf();
    EXPECT_NE(document.str().find("name=\"Kitchen Cam A\""), std::string::npos) << document.str();
    EXPECT_NE(document.str().find("<event name=\"Served\""), std::string::npos);
    EXPECT_EQ(call("exportSingleClip", onFirst(R"(,"output":")" + folder_.path("one.fcpxml") + "\""))
                  .find("syncClipCount")
                  ->integer(),
              1);
}

TEST_F(ServeTest, aMistakeChangesNothing) {
    call("newSession");
    scan();
    call("toggleApproved", onFirst());
    call("undo");
    const auto everything = [&] {
        return call("state").dump() + call("undoState").dump() + call("sessions").dump() +
               call("sessionState").dump();
    };
    call("saveSession"); // pending saves are not counted as changes
    const std::string before = everything();
    const std::string nobody = R"("33333333-3333-4333-8333-333333333333")";
    const std::string sound = folder_.path("sound") + "/DAY1_T01.WAV";
    struct Case {
        std::string method, params, failure;
    };
    const std::vector<Case> cases{
        {"setFolders", R"({"videoFolder":"/no/where","audioFolder":")" + folder_.path("sound") + "\"}",
         "1 can't read the folder '/no/where': No such file or directory"},
        {"adjustAudioOffset", onFirst(R"(,"deltaSeconds":"far")"),
         "-32602 adjustAudioOffset: deltaSeconds must be a number"},
        {"adjustAudioOffset", onFirst(R"(,"deltaSeconds":-86400.5)"),
         "-32602 adjustAudioOffset: deltaSeconds must be -86400 to 86400"},
        {"nudgeByFrames", onFirst(R"(,"frames":99999999999)"),
         "-32602 nudgeByFrames: frames must be -10000000 to 10000000"},
        {"adjustAudioOffset", onFirst(R"(,"deltaSeconds":-9223372036854775809)"),
         "-32602 adjustAudioOffset: deltaSeconds must be -86400 to 86400"},
        {"adjustAudioOffset", onFirst(R"(,"deltaSeconds":1e400)"),
         "-32602 adjustAudioOffset: deltaSeconds must be -86400 to 86400"},
        {"setMasterGain", onFirst(R"(,"gainDB":41,"auto":false)"),
         "-32602 setMasterGain: gainDB must be -60 to 40"},
        {"addBlockOverride", onFirst(R"(,"startSeconds":0,"endSeconds":1,"trackIndex":7)"),
         "-32602 addBlockOverride: trackIndex: the clip's take has tracks 1 to 6"},
        {"addBlockOverride", onFirst(R"(,"startSeconds":-1,"endSeconds":1,"trackIndex":1)"),
         "-32602 addBlockOverride: startSeconds must be 0 or more"},
        {"addBlockOverride", onFirst(R"(,"startSeconds":1,"endSeconds":1,"trackIndex":1)"),
         "-32602 addBlockOverride: the range must last 0.1 s at least"},
        {"setSyncMethod", onFirst(R"(,"method":"luck")"),
         "-32602 setSyncMethod: method must be one of timecode, clap, manual"},
        {"attachAudioToGroup", onFirst(R"(,"audio":"33333333-3333-4333-8333-333333333333")"),
         "1 attachAudioToGroup: no audio has this identifier"},
        {"runSmartAudioAnalysis", R"({"mode":"loud","forceOverwriteManualTracks":false})",
         "-32602 runSmartAudioAnalysis: mode must be one of off, standard, studio, cinematic, custom"},
        {"soloTrackActive", onFirst(R"(,"trackIndex":7)"), "-32602 trackIndex: the clip has tracks 1 to 6"},
        {"lockAllInCluster", R"({"source":"luck","of":")" + groupID_ + "\"}",
         "-32602 lockAllInCluster: source must be one of video, audio, sceneTake, custom"},
        {"calibrationBuild", R"({"matrix":"coarze"})",
         "-32602 calibrationBuild: matrix must be one of sweet, coarse"},
        {"exportFCPXML", R"({"version":"9.9","output":")" + folder_.path("x") + "\"}",
         "-32602 exportFCPXML: version must be one of 1.6, 1.7, 1.8, 1.9, 1.10, 1.11, 1.12, 1.13, 1.14"},
        {"saveProject", R"({"path":""})", "-32602 saveProject: path is empty"},
        {"saveProject", R"({"path":"/tmp/a\u0000b"})", "-32602 saveProject: path holds a NUL character"},
        {"setFolders", R"({"videoFolder":null,"audioFolder":"/a\u0000b"})",
         "-32602 setFolders: audioFolder holds a NUL character"},
        {"exportFCPXML", R"({"output":""})", "-32602 exportFCPXML: output is empty"},
        {"loadProject", R"({"path":"/no/where"})",
         "1 can't read the file '/no/where': No such file or directory"},
        {"exportFCPXML", R"({"overwrite":1,"output":")" + folder_.path("x") + "\"}",
         "-32602 exportFCPXML: overwrite must be true or false"},
        {"setSetting", R"({"key":"trimmode","value":"video"})",
         "-32602 no setting is called 'trimmode' (did you mean 'trimMode'?)"},
        {"setting", R"({"key":""})", "-32602 no setting is called ''"},
        {"setSetting", R"({"key":"trimMode","value":"longest"})",
         "-32602 the setting 'trimMode' takes one of common, video, none, overlap; not 'longest'"},
        {"setSetting", R"({"key":"globalAudioOffset.startFromTC","value":"10:61:00:00"})",
         "-32602 the setting 'globalAudioOffset.startFromTC' can't be '10:61:00:00': minutes and seconds go "
         "to "
         "59"},
        {"setAudioAnchor", onFirst(R"(,"secondsInAudio":86401)"),
         "-32602 setAudioAnchor: secondsInAudio must be 0 to 86400"},
    };
    for (const Case& test : cases) EXPECT_EQ(failure(test.method, test.params), test.failure);

    const std::string ofFirst = R"("groupID":")" + groupID_ + "\"";
    const struct {
        std::string failure;
        /// Arguments in addition to the unknown identifier.
        std::vector<std::pair<std::string, std::string>> calls;
    } unknown[] = {
        {"1 Group not found",
         {{"group", R"("groupID":)"},
          {"toggleApproved", R"("groupID":)"},
          {"adjustAudioOffset", R"("deltaSeconds":1,"groupID":)"},
          {"setSyncMethod", R"("method":"clap","groupID":)"},
          {"lockAllInCluster", R"("of":)"},
          {"soloTrackActive", R"("trackIndex":1,"groupID":)"},
          {"addBlockOverride", R"("startSeconds":0,"endSeconds":1,"trackIndex":1,"groupID":)"},
          {"chooseAndAttachAudio", R"("path":")" + sound + R"(","groupID":)"},
          {"runSmartAudioForGroup", R"("forceOverwriteManualTracks":false,"groupID":)"},
          {"clearALEMetadata", R"("groupID":)"},
          {"exportSingleClip", R"("output":")" + folder_.path("none.fcpxml") + R"(","groupID":)"}}},
        {"1 Audio match not found", {{"removeAudioMatch", ofFirst + R"(,"matchID":)"}}},
        {"1 Range override not found", {{"removeBlockOverride", ofFirst + R"(,"overrideID":)"}}},
        {"1 Wild track not found",
         {{"renameWildTrack", R"("to":"x","id":)"}, {"toggleWildTrackApproved", R"("id":)"}}},
        {"1 Session not found",
         {{"loadSession", R"("sessionId":)"},
          {"renameSession", R"("name":"x","sessionId":)"},
          {"setSessionFolder", R"("folder":"x","sessionId":)"},
          {"suggestedSessionName", R"("sessionId":)"},
          {"deleteSession", R"("sessionId":)"}}},
    };
    for (const auto& [why, calls] : unknown)
        for (const auto& [method, params] : calls)
            EXPECT_EQ(failure(method, "{" + params + nobody + "}"), why) << method;
    EXPECT_TRUE(everything() == before); // what was undone can still be redone
}

TEST_F(ServeTest, anotherFileIsReplacedOnRequestAlone) {
    scan();
    const std::string other = folder_.write("notes.txt", "mine"), project = folder_.path("day.orvanesync");
    call("saveProject", R"({"path":")" + project + "\"}");
    call("saveProject", R"({"path":")" + project + "\"}"); // to its former path
    EXPECT_NE(failure("exportFCPXML", R"({"overwrite":true,"output":")" + project + "\"}").find("1 can't"),
              std::string::npos);
    const std::pair<const char*, std::string> calls[] = {
        {"exportFCPXML", R"({"output":")" + other + "\""},
        {"exportSingleClip", R"({"groupID":")" + groupID_ + R"(","output":")" + other + "\""},
        {"saveProject", R"({"path":")" + other + "\""}};
    for (const auto& [method, arguments] : calls) {
        folder_.write("notes.txt", "mine");
        call(method, arguments + R"(,"overwrite":true})");
        EXPECT_NE(folder_.read("notes.txt"), "mine") << method;
    }
}

TEST_F(ServeTest, theDaysOfACureHoldForTheWorkUntilItsScanIsUndone) {
    scan();
    const auto daysOfNextScan = [&] {
        call("startScan");
        return context_.controller->work().matchRules().days;
    };
    const CureStep cure = cureInWords(DoubtCure(CureOption::Kind::days, "same")).steps.front();
    call(std::string(cure.command), cure.arguments.dump());
    EXPECT_EQ(daysOfNextScan(), MatchingDays::same);
    EXPECT_EQ(settings_->get(settings::matchingDays), MatchingDays::automatic);
    call("undo");
    call("redo");
    EXPECT_EQ(daysOfNextScan(), MatchingDays::same);
    call("undo");
    call("undo");
    EXPECT_EQ(daysOfNextScan(), MatchingDays::automatic);
    call(std::string(cure.command), cure.arguments.dump());
    call("setCorrections", R"({"days":null})");
    EXPECT_EQ(daysOfNextScan(), MatchingDays::automatic);
    EXPECT_NE(failure("setCorrections", R"({"days":"monday"})"), "");
}

TEST_F(ServeTest, aFolderIsNamedLeftOrTakenAway) {
    scan();
    call("setFolders", R"({"audioFolder":null})");
    EXPECT_EQ(context_.controller->work().videoFolderURL(), FileURL{folder_.path("camera")});
    EXPECT_EQ(context_.controller->work().audioFolderURL(), std::nullopt);
    // Further folders and exclusions are stored in the project and restored from it.
    const std::string sound = folder_.path("sound"), project = folder_.path("day.orvanesync");
    call("setFolders", R"({"moreFolders":[")" + sound + R"("],"exclude":["B001*"]})");
    call("setCorrections", R"({"soundDate":"2026-11-20","timecodeRate":"25"})");
    call("setCorrections", R"({"soundDate":null})");
    EXPECT_NE(failure("setCorrections", R"({"soundOffset":"01:00:00:25"})"), "") << "it counts at 25";
    EXPECT_NE(failure("setCorrections", R"({"timecodeRate":null,"soundOffset":"01:00:00:25"})"), "")
        << "and the clips do";
    const SourceCorrections corrections{{}, {}, TimecodeFrameRate::fps25};
    call("startScan");
    EXPECT_EQ(context_.controller->work().syncGroups().size(), 3U);
    EXPECT_EQ(context_.controller->work().matchedCount(), 2);
    call("saveProject", R"({"path":")" + project + "\"}");
    call("reset");
    EXPECT_TRUE(context_.controller->work().scanScope().isEmpty());
    EXPECT_TRUE(context_.controller->work().sourceCorrections().isEmpty());
    call("loadProject", R"({"path":")" + project + "\"}");
    EXPECT_EQ(context_.controller->work().scanScope(), (ScanScope{{FileURL{sound}}, {"B001*"}}));
    EXPECT_EQ(context_.controller->work().sourceCorrections(), corrections);
    EXPECT_EQ(context_.controller->work().syncGroups().size(), 3U);
    for (const char* bad : {R"({"moreFolders":["/","/nowhere"]})", R"({"moreFolders":"/"})",
                            R"({"moreFolders":[""]})", R"({"exclude":[""]})", R"({"exclude":[1]})"})
        EXPECT_NE(failure("setFolders", bad), "") << bad;
    call("setFolders", R"({"moreFolders":null,"exclude":[]})");
    EXPECT_TRUE(context_.controller->work().scanScope().isEmpty());
}

TEST_F(ServeTest, aReviewIsOneStep) {
    scan();
    const std::string table = folder_.path("review.tsv");
    call("writeReview", R"({"output":")" + table + "\"}");
    const std::string apply = R"({"path":")" + table + "\"}";
    EXPECT_EQ(call("applyReview", apply).dump(), R"({"changedClips":0,"warnings":[]})");
    EXPECT_FALSE(context_.controller->work().undoState().canUndo) << "nothing was asked for";
    folder_.write("review.tsv", "camera_file\toffset_frames\tname\tskip\tlock\n"
                                "camera/A001C001_261120_R1AB.mov\t12.5\tOne\tx\tx\n"
                                "B001C001_261120_R1CD.mov\t-1\n");
    const std::string two = call("applyReview", apply).dump();
    EXPECT_TRUE(two.starts_with(R"({"changedClips":2,"warnings":["review: the table has no line for 2 of 4)"))
        << two;
    const auto first = [&]() -> const SyncGroup& { return context_.controller->work().syncGroups().front(); };
    EXPECT_EQ(first().manualAudioOffsetSeconds, 0.5);
    EXPECT_EQ(first().manualClipName, "One");
    EXPECT_TRUE(first().isExcludedFromExport && first().isLocked);
    EXPECT_EQ(call("applyReview", apply).find("changedClips")->integer(), 0) << "it is done already";
    EXPECT_EQ(context_.controller->work().undoState().undoActionName, "Apply Review");
    const auto choosing = [&](const std::string& lock) {
        folder_.write("review.tsv",
                      "camera_file\tchoice\tlock\nA001C001_261120_R1AB.mov\tDAY1_ROOMTONE.WAV\t" + lock +
                          "\n");
        return call("applyReview", apply).dump();
    };
    EXPECT_NE(choosing("x").find("the clip is locked"), std::string::npos);
    EXPECT_TRUE(choosing("").starts_with(R"({"changedClips":1,"warnings":["review: the table has no line)"));
    EXPECT_FALSE(first().isLocked);
    EXPECT_EQ(first().primaryAudio()->filename, "DAY1_ROOMTONE.WAV") << "no recording of the clip before";
    EXPECT_EQ(first().audioMatches.size(), 1U) << "it replaces what the clip had";
    call("undo");
    call("setManualClipName", onFirst(R"(,"name":"Two\tTabs")"));
    call("writeReview", R"({"output":")" + table + R"(","overwrite":true})");
    EXPECT_EQ(call("applyReview", apply).dump(), R"({"changedClips":0,"warnings":[]})")
        << "a table shows a blank for a tab";
    call("undo");
    call("undo");
    EXPECT_EQ(first().manualAudioOffsetSeconds, 0);
    EXPECT_FALSE(first().manualClipName || first().isExcludedFromExport);
}

TEST_F(ServeTest, anotherRecordingCanBeChosen) {
    scan();
    SyncGroup group = test::clip(test::video("A.mov"), test::audio("first.wav"));
    group.audioMatches.emplace_back(test::audio("second.wav", "10:00:30:00", 10), 30, 10);
    group.matchStatus = MatchStatus::ambiguous(2);
    group.audioAnchorOffsetInAudioSeconds = 32;
    SyncGroup other = group;
    other.id = UUID::random();
    const std::string second = group.audioMatches[1].id.text();
    context_.controller->openStoredWork({{}, {}, SyncGroupList{group, other}});
    const auto clip = [&](std::size_t i) -> const SyncGroup& {
        return context_.controller->work().syncGroups()[i];
    };
    call("chooseRecording", R"({"groupID":")" + group.id.text() + R"(","matchID":")" + second + "\"}");
    EXPECT_EQ(clip(0).primaryAudio()->filename, "second.wav");
    EXPECT_EQ(clip(0).audioAnchorOffsetInAudioSeconds, 2) << "the same moment of the picture";
    EXPECT_EQ(clip(0).audioMatches.size(), 2U);
    EXPECT_EQ(clip(0).matchStatus, MatchStatus::manual());
    EXPECT_EQ(clip(1).matchStatus, MatchStatus::ambiguous(2));
    call("chooseFirst");
    EXPECT_EQ(clip(1).matchStatus, MatchStatus::manual());
    EXPECT_EQ(clip(1).primaryAudio()->filename, "first.wav");
    call("undo");
    call("undo");
    EXPECT_EQ(clip(0).primaryAudio()->filename, "first.wav");
    EXPECT_EQ(clip(0).matchStatus, MatchStatus::ambiguous(2));
}

/// The clip and its recording begin 2 s apart; the recording is longer than the clip.
TEST_F(ServeTest, theTimelineMovesTheSound) {
    scan();
    call("timeline", onFirst(R"(,"viewportWidth":600)"));
    const JSON timeline = call("timeline", onFirst());
    const auto value = [&](const JSON& of, const char* key) { return *of.find(key)->number(); };
    EXPECT_EQ(value(timeline, "viewportWidth"), 600);
    EXPECT_EQ(value(timeline, "zoomScale"), 1);
    const double seconds = value(timeline, "preRollSeconds") + value(timeline, "clipDuration") +
                           value(timeline, "postRollSeconds");
    EXPECT_DOUBLE_EQ(value(timeline, "pixelsPerSecond"), 600 / seconds);
    const auto offset = [&] { return *first("manualAudioOffsetSeconds").number(); };
    call("nudgeByFrames", onFirst(R"(,"frames":-3)"));
    EXPECT_DOUBLE_EQ(offset(), -0.12);
    call("undo");
    const std::string aSecond = R"(,"points":)" + std::to_string(600 / seconds * 0.99);
    call("dragAudio", onFirst(aSecond)); // a frame is 0.04 s
    EXPECT_NEAR(offset(), 1, 1e-9);
    call("toggleLocked", onFirst());
    call("dragAudio", onFirst(aSecond));
    call("setAnchor", onFirst(R"(,"secondsInAudio":1)"));
    EXPECT_TRUE(first("audioAnchorOffsetInAudioSeconds").isNull());
    EXPECT_NEAR(offset(), 1, 1e-9);
    call("toggleLocked", onFirst());
    call("setAnchor", onFirst(R"(,"secondsInAudio":-5)"));
    EXPECT_EQ(first("audioAnchorOffsetInAudioSeconds").number(), 0);
    EXPECT_TRUE(failure("dragAudio", onFirst(R"(,"points":1,"modifiers":["meta"])")).starts_with("-32602"));
    EXPECT_TRUE(failure("nudgeByFrames", onFirst(R"(,"frames":9000000)")).starts_with("-32602"));

    // The other camera of the take gets the same move as a suggestion, until the user dismisses it.
    const JSON outline = call("outline");
    const JSON& cameras = *outline.elements()->front().find("children");
    const std::string other =
        R"({"groupID":")" + *cameras.elements()->back().find("groupID")->string() + "\"}";
    const JSON suggestion = call("siblingSuggestion", other);
    EXPECT_EQ(*suggestion.find("text")->string(), "Cam A was shifted +25f — apply the same to this cam?");
    call("dismissSiblingSuggestion", other);
    EXPECT_TRUE(call("siblingSuggestion", other).isNull());
    call("nudgeByFrames", onFirst(R"(,"frames":1)"));
    call("nudgeByFrames", other.substr(0, other.size() - 1) + R"(,"frames":-2})");
    call("applySiblingSuggestion", other);
    EXPECT_NEAR(*call("group", other).find("manualAudioOffsetSeconds")->number(), 1.04, 1e-9);
    EXPECT_TRUE(call("siblingSuggestion", other).isNull());

    std::vector<std::int64_t> steps;
    for (int i = 0; i < 4; ++i)
        steps.push_back(*call("scrollFrames", R"({"deltaY":1,"isPrecise":true})").integer());
    EXPECT_EQ(steps, (std::vector<std::int64_t>{0, 0, 0, 1}));
    EXPECT_EQ(call("lanes", onFirst()), JSON::array());
    const JSON waveform = call("waveform", onFirst(R"(,"bins":50)"));
    EXPECT_GE(waveform.find("peaks")->elements()->size(), 50U);
    EXPECT_EQ(waveform.find("peaksPerChannel")->elements()->size(), 6U);
}

TEST_F(ServeTest, anEditAnswersWhenTheClipHasBeenAnalysedAgain) {
    MediaAsset sound = test::audio("short.wav");
    sound.url = {folder_.write("short.wav", "")};
    sound.channelCount = 2;
    test::WaveMaker()
        .format({.channels = 2, .sampleRate = 8000, .samples = test::SampleFormat::pcm16})
        .samples(std::vector<float>(std::size_t{2} * 8000 * 4, 0.25F))
        .writeTo(sound.url.path);
    const SyncGroup clip = test::clip(test::video("A.mov"), sound);
    groupID_ = clip.id.text();
    context_.controller->openStoredWork({{}, {}, SyncGroupList{clip}});
    call("runSmartAudioForGroup", onFirst(R"(,"forceOverwriteManualTracks":false)"));
    const auto tracks = [&] {
        std::string text;
        const JSON result = call("smartAudioResult", onFirst());
        for (const JSON& block : *result.find("blocks")->elements())
            text += block.find("activeTrack")->dump();
        return text;
    };
    const std::string heard = tracks();
    const std::pair<const char*, std::string> edits[] = {
        {"addBlockOverride", onFirst(R"(,"startSeconds":0,"endSeconds":60,"trackIndex":2)")},
        {"toggleTrackActive", onFirst(R"(,"trackIndex":1)")},
        {"toggleAlgorithmInclusion", onFirst(R"(,"trackIndex":1)")},
        {"resetAllClipsToAutoSync", "{}"},
    };
    for (const auto& [method, params] : edits) {
        call(method, params);
        EXPECT_FALSE(context_.controller->smartAudio().state().isAnalyzing) << method;
        EXPECT_EQ(tracks(), "2") << method;
    }
    const std::string range = first("manualBlockOverrides").elements()->front().find("id")->dump();
    call("toggleAlgorithmInclusion", onFirst(R"(,"trackIndex":1)"));
    call("removeBlockOverride", onFirst(R"(,"overrideID":)" + range));
    EXPECT_EQ(tracks(), heard);
    EXPECT_NE(heard, "2");

    // Moving a range is one undo step. The range keeps its place if the new place is refused.
    call("addBlockOverride", onFirst(R"(,"startSeconds":0,"endSeconds":60,"trackIndex":2)"));
    const auto ranges = [&] { return first("manualBlockOverrides"); };
    const JSON before = ranges();
    const std::string move = R"(,"startSeconds":30,"endSeconds":60,"overrideID":)" +
                             before.elements()->front().find("id")->dump() + R"(,"trackIndex":)";
    EXPECT_NE(failure("addBlockOverride", onFirst(move + "7")), "");
    EXPECT_TRUE(ranges() == before);
    call("addBlockOverride", onFirst(move + "1"));
    EXPECT_EQ(ranges().elements()->size(), 1U);
    call("undo");
    EXPECT_TRUE(ranges() == before);
}

TEST_F(ServeTest, bindsKeys) {
    const auto key = [](const JSON& listing, const char* action) {
        return listing.find("bindings")->find(action)->dump();
    };
    EXPECT_EQ(key(call("setShortcut", R"({"action":"clapCheck","key":"x","modifiers":["shift","option"]})"),
                  "clapCheck"),
              R"({"key":"x","modifiers":6})");
    EXPECT_EQ(call("saveShortcutProfile", R"({"name":"Night"})").dump(),
              R"({"current":"Night","profiles":["Night"]})");
    EXPECT_EQ(key(call("resetShortcuts"), "clapCheck"), R"({"key":"c","modifiers":0})");
    call("loadShortcutProfile", R"({"name":"Night"})");
    EXPECT_EQ(key(call("shortcuts"), "clapCheck"), R"({"key":"x","modifiers":6})");
    EXPECT_EQ(call("decodeShortcut", R"({"code":43,"text":"<","modifiers":["shift"]})").dump(),
              R"({"key":",","modifiers":2})");
    EXPECT_TRUE(call("decodeShortcut", R"({"code":96})").isNull());
    for (const char* bad : {R"({"action":"clap","key":"x"})", R"({"action":"clapCheck","key":"f5"})",
                            R"({"action":"clapCheck","key":"x","modifiers":["hyper"]})"})
        EXPECT_TRUE(failure("setShortcut", bad).starts_with("-32602")) << bad;
    EXPECT_TRUE(failure("loadShortcutProfile", R"({"name":"none"})").starts_with("1 "));
}

/// With ORVANE_UPDATE_GOLDEN set, the table of the guide gets the commands of the program: each keeps its
/// group, and a new one follows the command before it. Review the difference before committing it.
TEST_F(ServeTest, listsItsCommandsAsTheGuideDoes) {
    const std::string file = (std::filesystem::path(ORVANE_SOURCE_DIR) / "docs/automation.md").string();
    std::string text = platform::files::readText(file);
    const std::size_t table = text.find("| group | methods |");
    ASSERT_NE(table, std::string::npos);
    const std::size_t length = text.find("\n\n", table) - table;
    std::string rows = text.substr(table, length);
    if (std::getenv("ORVANE_UPDATE_GOLDEN") != nullptr) {
        std::size_t end = rows.find('`'); // of the entry before
        for (const commands::Command& command : commands::allCommands()) {
            const std::string entry = "`" + std::string(command.signature()) + "`";
            std::size_t at = rows.find("`" + std::string(command.id) + "`");
            if (at == std::string::npos) at = rows.find("`" + std::string(command.id) + " {");
            if (at == std::string::npos)
                rows.insert(end, ", " + entry);
            else
                rows.replace(at, rows.find('`', at + 1) + 1 - at, entry);
            end = rows.find(entry) + entry.size();
        }
        platform::files::writeAtomically(file, text.replace(table, length, rows));
    }
    std::set<std::string> described, known;
    const std::regex method("`([^`]+)`");
    for (std::sregex_iterator found(rows.begin(), rows.end(), method); found != std::sregex_iterator();
         ++found)
        described.insert((*found)[1]);
    for (const commands::Command& command : commands::allCommands()) {
        known.insert(std::string(command.signature()));
        EXPECT_TRUE(!command.title.empty() && command.help.ends_with('.')) << command.id;
    }
    EXPECT_EQ(described, known) << "ORVANE_UPDATE_GOLDEN=1 writes the table again";
    EXPECT_EQ(call("commands").dump().find(R"("choices":[])"), std::string::npos);
    const auto isEnabled = [&](const std::string& id, const std::string& params = "{}") {
        const JSON listed = call("commands", params);
        for (const JSON& command : *listed.find("commands")->elements())
            if (*command.find("id")->string() == id) return *command.find("isEnabled")->boolean();
        ADD_FAILURE() << id << " is not listed";
        return false;
    };
    EXPECT_TRUE(isEnabled("setFolders"));
    EXPECT_FALSE(isEnabled("startScan")) << "there is no folder";
    EXPECT_FALSE(isEnabled("toggleApproved")) << "there is no clip";
    scan();
    EXPECT_TRUE(isEnabled("toggleApproved"));
    EXPECT_FALSE(isEnabled("undo"));
    call("toggleLocked", onFirst());
    EXPECT_TRUE(isEnabled("undo"));
    EXPECT_TRUE(isEnabled("attachAudioToGroup")) << "for another clip";
    EXPECT_FALSE(isEnabled("attachAudioToGroup", onFirst())) << "it is locked";
    call("startScan");
    EXPECT_TRUE(isEnabled("undo"));
    call("startScan", R"({"ofOtherWork":true})");
    EXPECT_FALSE(isEnabled("undo")) << "it would bring back other work";
}

/// Runs the example of docs/automation.md as it is written there.
TEST(Automation, theExampleOfTheGuideRuns) {
    const test::TemporaryDirectory folder;
    test::makeSmallShoot(folder.path());
    std::ostringstream guide;
    guide << std::ifstream(std::filesystem::path(ORVANE_SOURCE_DIR) / "docs/automation.md").rdbuf();
    const std::string text = guide.str(), fence = "```python\n";
    const std::size_t start = text.find(fence) + fence.size();
    folder.write("automate.py", text.substr(start, text.find("```\n", start) - start));
    const test::ScopedEnvironment data("XDG_DATA_HOME", folder.path("data").c_str());
    const test::ScopedEnvironment cache("XDG_CACHE_HOME", folder.path("cache").c_str());
    const test::ScopedEnvironment config("XDG_CONFIG_HOME", folder.path("config").c_str());
    const std::string command = "python3 " + folder.path("automate.py") + " " ORVANESYNC_PROGRAM " " +
                                folder.path("camera") + " " + folder.path("sound") + " " +
                                folder.path("out.fcpxml") + " >" + folder.path("said") + " 2>&1";
    const int status = std::system(command.c_str());
    std::ostringstream said, document;
    said << std::ifstream(folder.path("said")).rdbuf();
    document << std::ifstream(folder.path("out.fcpxml")).rdbuf();
    EXPECT_EQ(status, 0) << said.str();
    EXPECT_NE(said.str().find("can be taken back: Adjust Audio Offset\n3 clips written"), std::string::npos)
        << said.str();
    EXPECT_NE(document.str().find("Day 1 shot 1"), std::string::npos);
}

} // namespace
} // namespace orvane::cli::rpc
