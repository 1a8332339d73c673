#include "LockitServer/LockitServer.h"
#include "MediaFactory/SmallShoot.h"
#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncCLI/Serve/RPCServer.h"
#include "OrvaneSyncCore/Services/Persistence/SessionStore.h"
#include "Platform/Files.h"
#include "RunCommand.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <streambuf>

namespace orvane::cli {
namespace {

/// Acts as a user at a terminal: reads the page's address from standard error, opens it and pastes the
/// resulting address into the standard input.
class UserAtTerminal {
  public:
    explicit UserAtTerminal(const test::LockitServer& server) : in_(*this, server), err_(*this) {}

    std::istream in{&in_};
    std::ostream err{&err_};
    std::string said() {
        const std::lock_guard lock(mutex_);
        return said_;
    }

  private:
    class Err final : public std::streambuf {
      public:
        explicit Err(UserAtTerminal& user) : user_(user) {}
        int_type overflow(int_type c) override {
            const std::lock_guard lock(user_.mutex_);
            user_.said_ += static_cast<char>(c);
            user_.changed_.notify_all();
            return c;
        }

      private:
        UserAtTerminal& user_;
    };
    class In final : public std::streambuf {
      public:
        In(UserAtTerminal& user, const test::LockitServer& server) : user_(user), server_(server) {}
        int_type underflow() override {
            if (!typed_.empty()) return traits_type::eof();
            std::unique_lock lock(user_.mutex_);
            const auto end = [&] { return user_.said_.find("\n\nOnce you"); };
            user_.changed_.wait(lock, [&] { return end() != std::string::npos; });
            const std::size_t start = user_.said_.find("http");
            typed_ = "\nnonsense\n" + server_.callbackFor(user_.said_.substr(start, end() - start)) + "\n";
            setg(typed_.data(), typed_.data(), typed_.data() + typed_.size());
            return traits_type::to_int_type(typed_.front());
        }

      private:
        UserAtTerminal& user_;
        const test::LockitServer& server_;
        std::string typed_;
    };

    std::mutex mutex_;
    std::condition_variable changed_;
    std::string said_;
    In in_;
    Err err_;
};

/// The whole program with a service, folders of its own and no key store.
class LockitCommandTest : public testing::Test {
  protected:
    LockitCommandTest() {
        test::makeSmallShoot(folder_.path("shoot"));
        folder_.write("config/Orvane Tandrel/service.json", server_.serviceFile().dump());
        std::filesystem::permissions(folder_.path("config/Orvane Tandrel/service.json"),
                                     std::filesystem::perms::owner_read);
        server_.addProject("p1", JSON::Object{{"name", "Film"}, {"isSeries", true}});
        test::LockitServer::Clips clips;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path("shoot/camera")))
            clips[entry.path().filename().string()] =
                JSON::Object{{"preformatted", JSON::Object{{"scene", "77"}}},
                             {"take", JSON::Object{{"comment", "the best"}}}};
        server_.addDay("p1",
                       JSON::Object{{"uuid", "d1"},
                                    {"day", 3},
                                    {"date", JSON::Object{{"year", 2026}, {"month", 11}, {"day", 5}}}},
                       clips);
    }
    Outcome signIn() {
        UserAtTerminal user(server_);
        std::ostringstream out;
        Context context{out, user.err, user.in};
        context.settings = std::make_shared<platform::MemorySettingsStore>();
        const std::vector<std::string> words{"lockit", "sign-in", "--json"};
        const int status = run(words, context);
        return {status, out.str(), user.said()};
    }

    test::LockitServer server_;
    test::TemporaryDirectory folder_;
    test::ScopedEnvironment config_{"XDG_CONFIG_HOME", folder_.path("config").c_str()};
    test::ScopedEnvironment data_{"XDG_DATA_HOME", folder_.path("data").c_str()};
    test::ScopedEnvironment runtime_{"XDG_RUNTIME_DIR", folder_.path().c_str()};
    test::ScopedEnvironment noBus_{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"};
    test::ScopedEnvironment noScreen_{"DISPLAY", nullptr}, noWayland_{"WAYLAND_DISPLAY", nullptr};
};

TEST_F(LockitCommandTest, signsInListsAndWritesADocumentWithWhatTheServiceSays) {
    const auto shootTo = [&](const std::string& name) {
        return std::vector<std::string>{"sync",
                                        folder_.path("shoot/camera"),
                                        folder_.path("shoot/sound"),
                                        "-o",
                                        folder_.path(name),
                                        "--no-smart-audio",
                                        "--lockit",
                                        "p1"};
    };
    const Outcome before = runWith(shootTo("none.fcpxml"));
    EXPECT_EQ(before.status, 1);
    EXPECT_NE(before.err.find("Not signed in to LockitNetwork."), std::string::npos) << before.err;
    // The text is one line, although a window shows it in paragraphs.
    EXPECT_NE(runWith({"lockit", "projects"}).err.find("LockitNetwork. Settings"), std::string::npos);
    EXPECT_FALSE(platform::files::exists(folder_.path("none.fcpxml")));

    const Outcome signedIn = signIn();
    EXPECT_EQ(signedIn.status, 0) << signedIn.err;
    EXPECT_EQ(signedIn.json().find("isSignedIn")->boolean(), true);
    EXPECT_EQ(*signedIn.json().find("accountEmail")->string(), "script@example.com");
    const std::size_t refused = signedIn.err.find("begins with orvane-tandrel://");
    EXPECT_NE(refused, std::string::npos);
    EXPECT_EQ(refused, signedIn.err.rfind("begins with orvane-tandrel://")) << "not for the empty line";
    EXPECT_NE(signedIn.err.find("not encrypted"), std::string::npos);
    EXPECT_NE(runWith({"lockit"}).out.find("Signed in to LockitNetwork as script@example.com."),
              std::string::npos);
    const JSON projects = runWith({"lockit", "projects", "--json"}).json();
    EXPECT_EQ(projects.dump(), R"([{"isSeries":true,"name":"Film","uuid":"p1"}])");
    EXPECT_NE(runWith({"lockit", "days", "p1"}).out.find("2026-11-05"), std::string::npos);

    const Outcome synced = runWith(shootTo("out.fcpxml"));
    EXPECT_EQ(synced.status, 0) << synced.err;
    EXPECT_NE(synced.err.find("✓ Matched"), std::string::npos) << synced.err;
    const std::string document = folder_.read("out.fcpxml");
    EXPECT_NE(document.find(R"(key="com.apple.proapps.studio.scene" value="77")"), std::string::npos);
    EXPECT_NE(document.find("V: the best"), std::string::npos);

    EXPECT_EQ(runWith({"lockit", "sign-out"}).out, "Signed out of LockitNetwork.\n");
    {
        const test::ScopedEnvironment noBus{"DBUS_SESSION_BUS_ADDRESS", nullptr},
            noRuntime{"XDG_RUNTIME_DIR", folder_.path("none").c_str()};
        EXPECT_EQ(runWith({"lockit", "sign-out"}).out, "Nobody is signed in to LockitNetwork.\n");
    }
    EXPECT_EQ(folder_.read("data/Orvane Tandrel/credentials.json").find("access"), std::string::npos);
    EXPECT_EQ(runWith({"lockit", "projects"}).status, 1);
    EXPECT_EQ(runWith({"lockit", "days"}).status, 2);
    EXPECT_EQ(runWith({"oauth-callback", "orvane-tandrel://x"}).status, 1) << "nobody waits";
}

TEST_F(LockitCommandTest, saysThatNoServiceIsConfigured) {
    std::filesystem::remove(folder_.path("config/Orvane Tandrel/service.json"));
    for (const char* verb : {"status", "sign-in", "projects"}) {
        const Outcome outcome = runWith({"lockit", verb});
        EXPECT_NE((outcome.out + outcome.err).find("No metadata service is configured"), std::string::npos)
            << verb;
    }
    EXPECT_NE(runWith({"lockit", "status", "--json"}).json().find("configurationProblem"), nullptr);
    const std::pair<const char*, const char*> files[] = {
        {R"({"baseURL":"http://example.com","clientID":"c"})", "http is allowed to this machine alone"},
        {R"({"baseURL":"ftp://example.com","clientID":"c"})", "begins with https://"},
        {R"({"baseURL":"https://user@example.com","clientID":"c"})", "begins with https://"},
        {R"({"baseURL":7})", "baseURL: expected text"},
        {"{", "no JSON"},
        {R"({"baseURL":"https://example.com"})", "has to name \"clientID\""}};
    for (const auto& [text, problem] : files) {
        folder_.write("config/Orvane Tandrel/service.json", text);
        EXPECT_NE(runWith({"lockit", "status"}).out.find(problem), std::string::npos) << text;
    }
    folder_.write("config/Orvane Tandrel/service.json",
                  R"({"baseURL":"http://127.0.0.1:1/","clientID":"c","clientSecret":"s"})");
    EXPECT_NE(runWith({"doctor"}).out.find("chmod 600"), std::string::npos);
}

TEST_F(LockitCommandTest, mapsFields) {
    const auto settings = std::make_shared<platform::MemorySettingsStore>();
    const auto mapping = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {"lockit", "mapping"});
        return runWith(std::move(words), false, {}, settings);
    };
    EXPECT_EQ(*mapping({"list", "--json"}).json().find("takeComment")->string(), "notes");
    EXPECT_NE(mapping({"custom", "setName", "com.example.set"}).out.find("com.example.set"),
              std::string::npos);
    EXPECT_EQ(*mapping({"set", "tags", "keyword", "--json"}).json().find("setName")->string(), "custom");
    EXPECT_NE(mapping({"set", "tag", "keyword"}).err.find("did you mean 'tags'"), std::string::npos);
    EXPECT_EQ(mapping({"set", "tags", "banana"}).status, 2);
    EXPECT_EQ(*mapping({"reset", "--json"}).json().find("setName")->string(), "off");
}

/// A program that uses `serve` shows the page itself.
TEST_F(LockitCommandTest, servesASessionFromTheSignInToTheExport) {
    const auto loop = platform::RunLoop::create();
    const auto settings = std::make_shared<platform::MemorySettingsStore>();
    registerStandardDefaults(*settings);
    commands::CommandContext context;
    context.settings = settings;
    context.controller =
        ImportController::create({.mainThread = loop, .settings = settings, .probeCache = nullptr});
    context.sessions = SessionManager::create({.mainThread = loop, .settings = settings});
    context.sessions->start(context.controller);
    std::vector<JSON> said;
    rpc::Server server(context, commands::allCommands(),
                       [&](const std::string& line) { said.push_back(JSON::parse(line)); });
    context.showPage = [&](const std::string& url) {
        const std::string callback = server_.callbackFor(url);
        loop->post([&, callback] { // handled while the sign-in waits
            for (const std::string& address : {std::string("https://evil.example/"), callback})
                server.receive(
                    R"({"jsonrpc":"2.0","id":9,"method":"completeSignIn","params":{"callbackURL":")" +
                    address + "\"}}");
        });
        return true;
    };
    const auto call = [&](const std::string& method, const std::string& params = "{}") {
        said.clear();
        server.receive(R"({"jsonrpc":"2.0","id":1,"method":")" + method + R"(","params":)" + params + "}",
                       [&] { loop->post([&] { loop->quit(); }); });
        loop->run();
        const JSON* result = said.back().find("result");
        EXPECT_NE(result, nullptr) << said.back().dump();
        return result == nullptr ? JSON() : *result;
    };
    EXPECT_EQ(call("lockitStatus").dump(), R"({"isSignedIn":false,"isSyncingLockit":false})");
    EXPECT_TRUE(call("signIn").isNull());
    ASSERT_EQ(said.size(), 3U);
    EXPECT_EQ(said[0].find("error")->find("code")->integer(), -32602);
    EXPECT_TRUE(said[1].find("result")->isNull());
    EXPECT_EQ(call("lockitDays", R"({"projectID":"p1"})").elements()->front().find("label")->dump(), "\"3\"");

    call("newSession");
    call("setFolders", R"({"videoFolder":")" + folder_.path("shoot") + "\"}");
    call("startScan");
    EXPECT_TRUE(call("syncLockitNetwork").string()->starts_with("No Lockit project assigned."));
    const std::string id = context.sessions->currentSessionId()->text();
    call("setSessionFolder", R"({"sessionId":")" + id + R"(","folder":"Film"})");
    call("setLockitProject", R"({"forFolder":"Film","projectID":"p1"})");
    EXPECT_TRUE(call("syncLockitNetwork").string()->starts_with("✓ Matched"));
    EXPECT_EQ(*call("undoState").find("undoActionName")->string(), "Sync LockitNetwork");
    const std::string first = *call("state").find("syncGroups")->elements()->front().find("id")->string();
    EXPECT_EQ(
        call("groupedMetadata", R"({"groupID":")" + first + "\"}").find("lockitMetadata")->dump(),
        R"([{"group":"Shot / Scene","rows":[{"key":"scene","value":"77"},{"key":"takeComment","value":"the best"}]}])");
    EXPECT_TRUE(call("setFieldMapping", R"({"field":"scene","target":"custom","customKey":"k"})").isNull());
    EXPECT_EQ(*call("fieldMapping").find("scene")->string(), "custom");
    call("exportFCPXML", R"({"output":")" + folder_.path("served.fcpxml") + "\"}");
    EXPECT_NE(folder_.read("served.fcpxml").find(R"(key="k" value="77")"), std::string::npos);

    // The command line opens the same session.
    call("undo");
    call("saveSession");
    const Outcome synced = runWith({"lockit", "sync", "--session", id}, true);
    EXPECT_NE(synced.out.find("✓ Matched"), std::string::npos) << synced.err;
    EXPECT_NE(synced.err.find("LockitNetwork 0/1"), std::string::npos) << synced.err;
    const auto groups =
        SessionStore(folder_.path("data/Orvane Tandrel/Sessions")).readGroups(*UUID::fromText(id));
    EXPECT_TRUE(groups.groups.front().hasLockitMetadata());
}

} // namespace
} // namespace orvane::cli
