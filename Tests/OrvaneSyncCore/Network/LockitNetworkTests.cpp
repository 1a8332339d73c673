#include "LockitServer/LockitServer.h"
#include "OrvaneSyncCore/Services/Network/LockitMatches.h"
#include "OrvaneSyncCore/Services/Network/LockitNetworkClient.h"
#include "Platform/Stop.h"
#include "Support/Assets.h"
#include "Support/Test.h"
#include "Support/VirtualMainThread.h"

namespace orvane {
namespace {

using Fault = test::LockitServer::Fault;

/// The parts of a decoded answer that the rules concern; "undecodable" if decoding fails.
template <class Decode>
std::string decoded(const Decode& decode) {
    try {
        return decode();
    } catch (const DecodingError&) {       // is refused
    } catch (const platform::JSONError&) { // is refused
    }
    return "undecodable";
}

TEST(LockitRecords, aFieldOfAnotherKindSpoilsTheWholeAnswer) {
    const auto days = [](const char* body) {
        return decoded([&] {
            std::string labels;
            for (const LockitShootingDay& day : decodedList<LockitShootingDay>(body))
                labels += day.label() + ";";
            return labels;
        });
    };
    EXPECT_EQ(days(R"([{"uuid":"a","prefix":"S","suffix":"b"},{"uuid":"b","day":12,"prefix":null}])"),
              "S?b;12;");
    for (const char* body :
         {"", "{}", R"([{}])", R"([{"uuid":"a","day":"1"}])", R"([{"uuid":"a","day":1.5}])",
          R"([{"uuid":"a","date":{"year":2026,"month":1}}])", R"([null])"})
        EXPECT_EQ(days(body), "undecodable") << body;
    EXPECT_EQ(decoded([] {
                  decodedList<LockitProject>(R"([{"uuid":"a","name":"n"},{"uuid":"b"}])");
                  return "decoded";
              }),
              "undecodable");

    const auto matches = [](const char* body) {
        return decoded([&] {
            const auto response = decodedMatches(body, 1);
            if (!response.matches) return std::string("none");
            std::string text;
            for (const auto& [name, clip] : *response.matches) text += name + "+";
            return text;
        });
    };
    EXPECT_EQ(matches("{}"), "none");
    EXPECT_EQ(matches(R"({"matches":{"a.mov":null}})"), "");
    EXPECT_EQ(matches(R"({"matches":{"a.mov":{"scene":{"sets":[{"name":"Bar"},{}]}}},"unmatched":[{}]})"),
              "a.mov+");
    EXPECT_EQ(matches(R"({"matches":{"a":{},"b":null,"c":null}})"), "a+");
    for (const char* body :
         {R"({"matches":{"a":{},"b":{}}})", R"({"unmatched":{}})", R"({"matches":[]})",
          R"({"matches":{"a":{"take":{"isPickup":1}}}})", R"({"unmatched":[{"preformatted":{"tags":[1]}}]})",
          R"({"matches":{"a":{"scene":{"sets":{}}}}})", R"({"matches":{"a":{"scene":"12A"}}})"})
        EXPECT_EQ(matches(body), "undecodable") << body;

    std::stop_source stopped;
    stopped.request_stop();
    for (const char* body : {R"({"matches":{"a.mov":null}})", R"({"unmatched":[{}]})"})
        EXPECT_THROW(decodedMatches(body, 1, stopped.get_token()), platform::Stopped) << body;
}

TEST(LockitMatches, takesFieldsFromTheFirstPlaceThatHasThem) {
    struct Case {
        const char* clip;
        std::map<std::string, std::string> fields;
    };
    const Case cases[] = {
        {R"({"preformatted":{"scene":" 12A "},"scene":{"number":12}})", {{"scene", "12A"}}},
        {R"({"scene":{"number":12}})", {{"scene", "12"}}},
        {R"({"preformatted":{"scene":"  "},"scene":{"number":12}})", {}},
        {R"({"preformatted":{"shot":"12A","take":"3"},"take":{"number":4}})", {{"take", "12A-3"}}},
        {R"({"preformatted":{"shot":"12A"}})", {{"take", "12A"}}},
        {R"({"preformatted":{"shot":" "},"take":{"number":3}})", {{"take", "3"}}},
        {R"({"take":{"comment":""},"preformatted":{"takeComment":"x"}})", {}},
        {R"({"preformatted":{"takeComment":"x"}})", {{"takeComment", "x"}}},
        {R"({"slate":{"comment":"wide"},"scene":{"insideOutside":"INT","content":"They meet","dayNight":"DAY",
            "sets":[{"name":"Bar"},{"name":"Street"}]}})",
         {{"shotDescription", "wide"},
          {"intExtDayNight", "INT"},
          {"sceneContent", "They meet"},
          {"setName", "Bar"}}},
        {R"({"scene":{"sets":[{},{"name":"Street"}]}})", {}},
        {R"({"preformatted":{"tags":["print","PU"],"episode":"3 of 8"},"episode":{"number":3}})",
         {{"tags", "print, PU"}, {"episode", "3"}}},
        {R"({"preformatted":{"episode":"3 of 8"},"camera":{"label":"A"}})",
         {{"episode", "3 of 8"}, {"cameraName", "A"}}},
        {R"({"camera":{"name":"Alexa","label":"A"}})", {{"cameraName", "Alexa"}}},
    };
    for (const Case& one : cases) {
        const auto answer = decodedMatches(std::string(R"({"matches":{"A.mov":)") + one.clip + "}}", 1);
        SyncGroupList groups{{test::video("A.mov"), {}, MatchStatus::mos()},
                             {test::video("a.mov"), {}, MatchStatus::mos()}};
        const auto before = one.fields.empty()
                                ? std::optional<std::map<std::string, std::string>>{{{"scene", "old"}}}
                                : std::nullopt;
        groups.update(groups[0].id, [&](SyncGroup& group) { group.lockitMetadata = before; });
        EXPECT_EQ(applyLockitMatches(groups, answer), one.fields.empty() ? 0 : 1) << one.clip;
        EXPECT_EQ(groups[0].lockitMetadata, one.fields.empty() ? before : one.fields) << one.clip;
        EXPECT_FALSE(groups[1].lockitMetadata) << "names are compared exactly";
    }
}

/// A client of a server that does not speak HTTP.
class OtherProtocol final : public platform::HTTPClient {
  public:
    platform::HTTPResponse send(const platform::HTTPRequest&, std::stop_token) override {
        throw platform::HTTPError(platform::HTTPError::Kind::notHTTP, "");
    }
    platform::HTTPResponse download(const platform::HTTPRequest& request, const std::string&, const Progress&,
                                    std::stop_token) override {
        return send(request, {});
    }
};

class LockitNetworkClientTest : public testing::Test {
  protected:
    /// How a request ends: "done", or the text of the error.
    std::string outcome(const std::function<platform::Task(const LockitNetworkClient&)>& ask) {
        const LockitNetworkClient client(
            {mainThread, http, server.baseURL(),
             [this](std::shared_ptr<platform::Secret> token) { return provide(std::move(token)); },
             idleTimeout, idleTimeout});
        const platform::Task task = ask(client);
        std::string text = "done";
        EXPECT_TRUE(mainThread->waitUntil([&] { return task.isDone(); }));
        task.whenDone([&](const std::exception_ptr& raised) {
            try {
                if (raised) std::rethrow_exception(raised);
            } catch (const std::exception& error) {
                text = error.what();
            }
        });
        return text;
    }
    platform::Task provide(std::shared_ptr<platform::Secret> token) const {
        if (givesNone) throw std::runtime_error("no token");
        *token = platform::Secret(server.validToken());
        co_return;
    }
    static platform::Task projects(const LockitNetworkClient& client) {
        return client.listProjects(std::make_shared<std::vector<LockitProject>>());
    }

    std::shared_ptr<test::VirtualMainThread> mainThread = std::make_shared<test::VirtualMainThread>();
    test::LockitServer server;
    /// Declared after the server: the server's end waits for connections that are kept open.
    std::shared_ptr<platform::HTTPClient> http = platform::HTTPClient::create();
    bool givesNone = false;
    double idleTimeout = 60;
};

TEST_F(LockitNetworkClientTest, sendsFilenamesAndTakesTheDaysAnswer) {
    server.addProject("p", JSON::Object{{"name", "Film"}});
    server.addDay("p", JSON::Object{{"uuid", "d"}},
                  {{"ä\".mov", JSON::Object{{"camera", JSON::Object{{"name", "x"}}}}}});
    const auto response = std::make_shared<ClipMatchResponse>();
    EXPECT_EQ(outcome([&](const LockitNetworkClient& client) {
                  return client.matchClips(
                      "p", "d",
                      std::make_shared<const LockitFilenames>(std::vector<std::string>{"ä\".mov", "b"}),
                      response);
              }),
              "done");
    ASSERT_TRUE(response->matches);
    EXPECT_EQ(response->matches->at("ä\".mov"), (LockitFields{{"cameraName", "x"}}));
    EXPECT_EQ(response->matches->size(), 1U);
    const auto sent = server.seen().back();
    EXPECT_EQ(sent.method + " " + sent.path, "POST /projects/p/projectdays/d/matchClips");
    EXPECT_EQ(sent.headers.find("Content-Type")->second, "application/json");
    EXPECT_EQ(sent.headers.find("Accept")->second, "application/json");
    EXPECT_EQ(outcome(projects), "done");
    EXPECT_EQ(server.seen().back().headers.count("Content-Type"), 0U);
}

TEST_F(LockitNetworkClientTest, saysWhyThereIsNoAnswer) {
    const auto after = [&](test::LockitServer::Failure failure) {
        failure.path = "/projects";
        failure.times = 1;
        server.fail(failure);
        return outcome(projects);
    };
    EXPECT_EQ(after({.fault = Fault::status, .status = 503}), "LockitNetwork HTTP error: 503");
    EXPECT_EQ(after({.fault = Fault::body, .status = 401, .body = "[]"}),
              "Lockit access token rejected — sign in again");
    EXPECT_EQ(after({.fault = Fault::elsewhere}), "LockitNetwork HTTP error: 302");
    EXPECT_EQ(server.countOf("/elsewhere"), 0);
    EXPECT_NE(after({.fault = Fault::status, .status = 204}), "done") << "no body decodes";
    EXPECT_NE(after({.fault = Fault::wrongJSON}).find("understood (uuid: expected text). Try again"),
              std::string::npos);
    EXPECT_NE(after({.fault = Fault::body, .status = 200, .body = "<html>"}).find("it is no JSON"),
              std::string::npos);
    EXPECT_EQ(after({.fault = Fault::cut}), "127.0.0.1 can't be reached, or the connection broke");
    idleTimeout = 0.05;
    EXPECT_EQ(after({.fault = Fault::never}), "127.0.0.1 did not answer in time");
    const int requests = server.countOf("/projects");
    givesNone = true;
    EXPECT_EQ(outcome(projects), "no token");
    EXPECT_EQ(server.countOf("/projects"), requests) << "nothing is sent without a token";
    givesNone = false;
    http = std::make_shared<OtherProtocol>();
    EXPECT_EQ(outcome(projects), "Invalid response from LockitNetwork");
}

} // namespace
} // namespace orvane
