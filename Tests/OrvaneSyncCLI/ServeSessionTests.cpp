#include "OrvaneSyncCore/Services/Persistence/SessionStore.h"
#include "ServeTest.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace orvane::cli::rpc {
namespace {

TEST_F(ServeTest, keepsSessionsAndSettings) {
    call("newSession");
    scan();
    call("toggleApproved", onFirst());
    call("saveSession", R"({"name":"Day one"})");
    const std::string id = *call("sessions").elements()->front().find("id")->string();
    EXPECT_EQ(*call("sessionState").find("currentSessionId")->string(), id);
    const auto endsAnAnalysis = [this](const std::string& method, const std::string& params) {
        platform::runAsInterfaceWork(
            [this] { server_.receive(R"({"jsonrpc":"2.0","id":2,"method":"measureLoudness"})"); });
        answer(method, params);
        return said_.front().find("cancelled") != std::string::npos;
    };
    const auto session = [](const std::string& sessionID) { return R"({"sessionId":")" + sessionID + "\"}"; };
    EXPECT_FALSE(endsAnAnalysis("loadSession", session(id))) << "it is open";
    EXPECT_FALSE(endsAnAnalysis("loadSession", session(groupID_))) << "it is not there";
    EXPECT_TRUE(endsAnAnalysis("newSession", "{}"));
    scan();
    EXPECT_TRUE(endsAnAnalysis("loadSession", session(id)));
    groupID_ = *call("state").find("syncGroups")->elements()->front().find("id")->string();
    call("reset");
    EXPECT_TRUE(call("state").find("syncGroups")->elements()->empty());
    call("loadSession", R"({"sessionId":")" + id + "\"}");
    EXPECT_EQ(first("isApproved").dump(), "true");
    call("newSession");
    const std::string clips = work_.path("Orvane Tandrel/Sessions/" + id + ".orvanesync/groups.json");
    std::ofstream(clips, std::ios::app) << "]";
    EXPECT_TRUE(call("loadSession", R"({"sessionId":")" + id + "\"}").isNull());
    EXPECT_TRUE(call("state").find("syncGroups")->elements()->empty());
    EXPECT_NE(call("sessionState").find("problem")->string()->find("can't be read"), std::string::npos);
    EXPECT_EQ(call("createFolder", R"({"name":"Dreh"})").dump(), "true");
    call("setSessionFolder", R"({"sessionId":")" + id + R"(","folder":"Dreh"})");
    EXPECT_EQ(call("suggestedSessionName", R"({"sessionId":")" + id + "\"}").dump(), "\"Dreh DT 001\"");
    EXPECT_EQ(call("folderNames").dump(), "[\"Dreh\"]");
    call("deleteSession", R"({"sessionId":")" + id + "\"}");
    EXPECT_EQ(call("sessions").dump().find(id), std::string::npos);

    EXPECT_EQ(call("setting", R"({"key":"eventName"})").dump(), "\"Synced\"");
    call("setSetting", R"({"key":"eventName","value":"Day 1"})");
    call("savePreset", R"({"name":"One"})");
    call("setSetting", R"({"key":"eventName","value":null})");
    call("loadPreset", R"({"name":"One"})");
    EXPECT_EQ(call("setting", R"({"key":"eventName"})").dump(), "\"Day 1\"");
    EXPECT_EQ(call("presets").dump(), "[\"One\"]");
}

TEST_F(ServeTest, aScanThatKeepsTheDecisionsIsOneStepWithThem) {
    scan();
    call("toggleApproved", onFirst());
    call("startScan", R"({"keepDecisions":true})");
    EXPECT_EQ(first("isApproved").dump(), "true");
    const auto last = [this] { return call("undoState").find("undoActionName")->dump(); };
    EXPECT_EQ(last(), "\"Scan & Match\"");
    call("undo");
    EXPECT_EQ(last(), "\"Toggle Approved\"");
    EXPECT_EQ(first("isApproved").dump(), "true");
}

TEST_F(ServeTest, aShootWhoseFoldersWereRenamedKeepsItsDecisions) {
    call("newSession");
    scan();
    const std::string session = call("sessionState").dump();
    call("toggleLocked", onFirst());
    const std::string wild = call("state").find("wildTracks")->elements()->front().find("id")->dump();
    call("renameWildTrack", R"({"to":"Kitchen tone","id":)" + wild + "}");
    const std::string place = work_.path("renamed");
    std::filesystem::create_directory(place);
    for (const char* part : {"/camera", "/sound"})
        std::filesystem::rename(folder_.path() + part, place + part);
    call("setFolders", R"({"videoFolder":")" + place + R"(/camera","audioFolder":")" + place + "/sound\"}");
    EXPECT_EQ(call("sessionState").dump(), session);
    call("startScan", R"({"keepDecisions":true})");
    EXPECT_EQ(first("isLocked").dump(), "true");
    EXPECT_EQ(first("audioMatches").dump().find(folder_.path()), std::string::npos) << "they are gone";
    EXPECT_NE(first("video").dump().find(place), std::string::npos);
    EXPECT_NE(call("state").find("wildTracks")->dump().find("Kitchen tone"), std::string::npos);
}

TEST_F(ServeTest, whatTheDiskRefusesIsAnError) {
    call("newSession");
    const std::string id = *call("sessions").elements()->front().find("id")->string();
    EXPECT_NE(failure("renameSession", R"({"name":" ","sessionId":")" + id + "\"}"), "");
    EXPECT_NE(failure("createFolder", R"({"name":" .. "})").find("'..' is no name of a folder"),
              std::string::npos);
    call("createFolder", R"({"name":"Old"})");
    call("setSessionFolder", R"({"folder":"Old","sessionId":")" + id + "\"}");
    const std::filesystem::path sessions = work_.path("Orvane Tandrel/Sessions");
    const struct {
        std::filesystem::path file;
        std::vector<std::pair<const char*, std::string>> calls;
    } cases[] = {
        {sessions / "folders.json",
         {{"createFolder", R"({"name":"New"})"}, {"renameFolder", R"({"from":"Old","to":"Older"})"}}},
        {sessions / (id + ".orvanesync") / "session.json",
         {{"renameSession", R"({"name":"Mine","sessionId":")" + id + "\"}"},
          {"setSessionFolder", R"({"folder":"New","sessionId":")" + id + "\"}"}}}};
    for (const auto& [file, calls] : cases) {
        std::filesystem::rename(file, file.string() + ".aside");
        std::filesystem::create_directories(file / "x"); // also stops the superuser
        for (const auto& [method, params] : calls) {
            const std::string refused = failure(method, params);
            EXPECT_TRUE(refused.starts_with("1 ") && refused.ends_with("it is tried again until it succeeds"))
                << method << ": " << refused;
        }
        std::filesystem::remove_all(file);
        std::filesystem::rename(file.string() + ".aside", file);
        call("saveSession");
    }
    EXPECT_EQ(call("folderNames").dump(), R"(["New","Older"])");
    const SessionInfo kept = SessionStore(sessions).list().front();
    EXPECT_EQ(kept.name, "Mine");
    EXPECT_EQ(kept.folder, "New");
}

TEST_F(ServeTest, workWhoseLastChangeTheDiskRefusesStaysOpen) {
    call("newSession");
    const std::string other = call("sessionState").find("currentSessionId")->dump();
    call("newSession");
    const JSON id = *call("sessionState").find("currentSessionId");
    scan();
    const std::string project = R"("path":")" + folder_.path("day.orvanesync") + "\"";
    call("saveProject", "{" + project + "}");
    call("saveSession");
    const std::filesystem::path place = work_.path("Orvane Tandrel/Sessions/" + *id.string() + ".orvanesync");
    std::filesystem::rename(place, work_.path("aside"));
    std::ofstream(place) << "in the way";
    call("toggleApproved", onFirst());
    const std::pair<const char*, std::string> calls[] = {
        {"loadSession", R"("sessionId":)" + other},
        {"loadProject", project},
        {"newSession", ""},
        {"startScan", R"("ofOtherWork":true)"},
        {"setFolders", R"("videoFolder":")" + work_.path() + R"(","audioFolder":null)"},
        {"reset", ""},
    };
    for (const auto& [method, arguments] : calls) {
        const std::string refused = failure(method, "{" + arguments + "}");
        EXPECT_NE(refused.find("stays open"), std::string::npos) << method << ": " << refused;
        EXPECT_TRUE(*call("sessionState").find("currentSessionId") == id) << method;
        EXPECT_EQ(first("isApproved").dump(), "true") << method;
    }
    EXPECT_TRUE(call("reset", R"({"leaveUnsaved":true})").isNull());
    EXPECT_EQ(call("sessionState").find("currentSessionId"), nullptr);
    std::filesystem::remove(place);
    std::filesystem::rename(work_.path("aside"), place);
    call("loadSession", R"({"sessionId":)" + id.dump() + "}");
    EXPECT_EQ(first("isApproved").dump(), "true") << "the change was kept";
}

TEST_F(ServeTest, aProjectIsOpenedInASessionOfItsOwn) {
    call("newSession");
    const std::string project = R"({"path":")" + folder_.path("day.orvanesync") + "\"}";
    EXPECT_TRUE(failure("saveProject", project).starts_with("1 there are no clips"));
    scan();
    call("saveProject", project);
    call("toggleApproved", onFirst());
    call("saveSession", R"({"name":"Day one"})");
    const std::string before = *call("sessionState").find("currentSessionId")->string();
    call("setFolders", R"({"audioFolder":null})");
    EXPECT_EQ(*call("sessions").elements()->front().find("name")->string(), "Day one") << "it was given";
    call("toggleLocked", onFirst());
    call("loadProject", project);
    const std::string own = *call("sessionState").find("currentSessionId")->string();
    EXPECT_NE(own, before);
    EXPECT_FALSE(*call("undoState").find("canUndo")->boolean());
    call("saveSession");
    EXPECT_EQ(call("sessions").elements()->size(), 2U);
    const auto first = [&](const std::string& id) {
        call("loadSession", R"({"sessionId":")" + id + "\"}");
        groupID_ = *call("state").find("syncGroups")->elements()->front().find("id")->string();
        return this->first("isApproved").dump() + this->first("isLocked").dump();
    };
    EXPECT_EQ(first(before), "truetrue");
    EXPECT_EQ(first(own), "falsefalse");
    // Work without a session is not lost either.
    for (const bool isProject : {true, false}) {
        call("reset");
        scan();
        const std::size_t sessions = call("sessions").elements()->size();
        call("toggleLocked", onFirst());
        call(isProject ? "loadProject" : "newSession", isProject ? project : "{}");
        call("saveSession");
        ASSERT_EQ(call("sessions").elements()->size(), sessions + 2);
        EXPECT_EQ(first(*call("sessions").elements()->at(1).find("id")->string()), "falsetrue");
    }
}

} // namespace
} // namespace orvane::cli::rpc
