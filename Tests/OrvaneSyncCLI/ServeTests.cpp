#include "MediaFactory/SmallShoot.h"
#include "OrvaneSyncCLI/Serve/Desk.h"
#include "OrvaneSyncCLI/Serve/Methods.h"
#include "OrvaneSyncCLI/Serve/RPCServer.h"
#include "OrvaneSyncCore/Services/Persistence/SettingsCatalogue.h"
#include "Platform/Files.h"
#include "Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace orvane::cli::rpc {
namespace {

/// All methods on a real controller, with an answer to each call.
class ServeTest : public testing::Test {
  protected:
    ServeTest() {
        test::makeSmallShoot(folder_.path());
        registerStandardDefaults(*settings_);
        ImportController::Dependencies work;
        work.mainThread = loop_;
        work.settings = settings_;
        desk_.controller = ImportController::create(std::move(work));
        SessionManager::Dependencies keeping;
        keeping.mainThread = loop_;
        keeping.settings = settings_;
        desk_.sessions = SessionManager::create(std::move(keeping));
        desk_.sessions->start(desk_.controller);
        desk_.settings = settings_;
    }

    JSON answer(const std::string& method, const std::string& params) {
        said_.clear();
        bool isServed = false, isWaiting = false;
        server_.receive(R"({"jsonrpc":"2.0","id":1,"method":")" + method + R"(","params":)" + params + "}",
                        [&] {
                            isServed = true;
                            if (isWaiting) loop_->quit();
                        });
        isWaiting = true;
        if (!isServed) loop_->run();
        return said_.empty() ? JSON() : JSON::parse(said_.back());
    }
    JSON call(const std::string& method, const std::string& params = "{}") {
        const JSON message = answer(method, params);
        const JSON* result = message.find("result");
        EXPECT_NE(result, nullptr) << method << " " << params << ": " << message.dump();
        return result == nullptr ? JSON() : *result;
    }
    std::string failure(const std::string& method, const std::string& params) {
        const JSON message = answer(method, params);
        const JSON* error = message.find("error");
        return error == nullptr ? "" : error->find("code")->dump() + " " + *error->find("message")->string();
    }

    void scan() {
        call("setFolders", R"({"videoFolder":")" + folder_.path("camera") + R"(","audioFolder":")" +
                               folder_.path("sound") + "\"}");
        call("startScan");
        groupID_ = *call("state").find("syncGroups")->elements()->front().find("id")->string();
    }
    /// Parameters of a call on the first clip.
    std::string onFirst(const std::string& more = "") const {
        return R"({"groupID":")" + groupID_ + "\"" + more + "}";
    }
    JSON first(const std::string& field) {
        const JSON group = call("group", onFirst());
        const JSON* value = group.find(field);
        return value == nullptr ? JSON() : *value;
    }

    test::TemporaryDirectory folder_;
    test::TemporaryDirectory work_;
    test::ScopedEnvironment dataHome_{"XDG_DATA_HOME", work_.path().c_str()};
    std::shared_ptr<platform::RunLoop> loop_ = platform::RunLoop::create();
    std::shared_ptr<platform::MemorySettingsStore> settings_ =
        std::make_shared<platform::MemorySettingsStore>();
    Desk desk_;
    std::vector<std::string> said_;
    Server server_{desk_, allMethods(), [this](const std::string& line) { said_.push_back(line); }};
    std::string groupID_;
};

TEST_F(ServeTest, scansEditsTakesBackAndExports) {
    scan();
    const std::string other = R"("33333333-3333-4333-8333-333333333333")";
    struct Case {
        std::string method, more; ///< arguments beside the clip's
        std::string field;
        std::string value;  ///< of the field afterwards
        std::string action; ///< what can be taken back then
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
    for (const Case& test : cases) {
        EXPECT_TRUE(call(test.method, onFirst(test.more)).isNull()) << test.method;
        EXPECT_EQ(first(test.field).dump(), test.value) << test.method;
        EXPECT_EQ(*call("undoState").find("undoActionName")->string(), test.action);
    }
    call("undo");
    EXPECT_EQ(first("isLocked").dump(), "false");
    call("redo");
    EXPECT_EQ(first("isLocked").dump(), "true");
    // A clip that nobody knows: an operation does nothing, a question fails.
    call("undo");
    const std::string canRedo = call("undoState").dump();
    EXPECT_TRUE(call("toggleApproved", R"({"groupID":)" + other + "}").isNull());
    EXPECT_TRUE(call("removeAudioMatch", onFirst(R"(,"matchID":)" + other)).isNull());
    EXPECT_TRUE(call("renameWildTrack", R"({"to":"x","id":)" + other + "}").isNull());
    EXPECT_EQ(call("undoState").dump(), canRedo);
    EXPECT_EQ(failure("group", R"({"groupID":)" + other + "}"), "1 Group not found");

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
    scan();
    const std::string before = call("state").find("syncGroups")->dump();
    const std::string sound = folder_.path("sound") + "/DAY1_T01.WAV";
    struct Case {
        std::string method, params, failure;
    };
    const std::vector<Case> cases{
        {"setFolders", R"({"videoFolder":"/no/where","audioFolder":")" + folder_.path("sound") + "\"}",
         "1 can't read the folder '/no/where': No such file or directory"},
        {"adjustAudioOffset", onFirst(R"(,"deltaSeconds":"far")"),
         "-32602 adjustAudioOffset: deltaSeconds must be a number"},
        {"setSyncMethod", onFirst(R"(,"method":"luck")"), "-32602 setSyncMethod: there is no method 'luck'"},
        {"attachAudioToGroup", onFirst(R"(,"audio":"33333333-3333-4333-8333-333333333333")"),
         "1 attachAudioToGroup: no audio has this identifier"},
        {"runSmartAudioAnalysis", R"({"mode":"loud","forceOverwriteManualTracks":false})",
         "-32602 runSmartAudioAnalysis: mode is off, standard, studio, cinematic or custom"},
        {"soloTrackActive", onFirst(R"(,"trackIndex":7)"), "-32602 trackIndex: the clip has tracks 1 to 6"},
        {"lockAllInCluster", R"({"source":"luck","of":")" + groupID_ + "\"}",
         "-32602 lockAllInCluster: there is no source 'luck'"},
        {"saveProject", R"({"path":""})", "-32602 saveProject: path is empty"},
        {"loadProject", R"({"path":"/no/where"})",
         "1 can't read the file '/no/where': No such file or directory"},
        {"exportFCPXML", R"({"output":")" + sound + "\"}",
         "1 -o " + sound + " names a media file; it would be overwritten"},
        {"setSetting", R"({"key":"trimMode","value":"longest"})",
         "-32602 the setting 'trimMode' takes one of common, video, none; not 'longest'"},
    };
    for (const Case& test : cases) EXPECT_EQ(failure(test.method, test.params), test.failure);
    EXPECT_TRUE(call("state").find("syncGroups")->dump() == before);
}

TEST_F(ServeTest, keepsSessionsAndSettings) {
    call("newSession");
    scan();
    call("toggleApproved", onFirst());
    call("saveSession", R"({"name":"Day one"})");
    const std::string id = *call("sessions").elements()->front().find("id")->string();
    EXPECT_EQ(*call("sessionState").find("currentSessionId")->string(), id);
    call("reset");
    EXPECT_TRUE(call("state").find("syncGroups")->elements()->empty());
    call("loadSession", R"({"sessionId":")" + id + "\"}");
    EXPECT_EQ(first("isApproved").dump(), "true");
    EXPECT_EQ(call("createFolder", R"({"name":"Dreh"})").dump(), "true");
    call("setSessionFolder", R"({"sessionId":")" + id + R"(","folder":"Dreh"})");
    EXPECT_EQ(call("suggestedSessionName", R"({"sessionId":")" + id + "\"}").dump(), "\"Dreh DT 001\"");
    EXPECT_EQ(call("folderNames").dump(), "[\"Dreh\"]");
    call("deleteSession", R"({"sessionId":")" + id + "\"}");
    EXPECT_TRUE(call("sessions").elements()->empty());

    EXPECT_EQ(call("setting", R"({"key":"eventName"})").dump(), "\"Synced\"");
    call("setSetting", R"({"key":"eventName","value":"Day 1"})");
    call("savePreset", R"({"name":"One"})");
    call("setSetting", R"({"key":"eventName","value":null})");
    call("loadPreset", R"({"name":"One"})");
    EXPECT_EQ(call("setting", R"({"key":"eventName"})").dump(), "\"Day 1\"");
    EXPECT_EQ(call("presets").dump(), "[\"One\"]");
}

/// The example of docs/automation.md, as it stands there.
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
