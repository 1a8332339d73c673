#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncCLI/Serve/RPCServer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace orvane::cli::rpc {
namespace {

/// A server with four methods of its own and `cancel`, on a thread that never waits.
struct RPCServer : testing::Test {
    std::vector<std::string> said;
    int sum = 0;
    std::vector<std::function<void()>> held;
    CommandContext context;
    Server server{context, commandTable(), [this](const std::string& line) { said.push_back(line); }};

    std::vector<Command> commandTable() {
        using enum commands::Parameter::Kind;
        return {
            *std::ranges::find(orvane::commands::allCommands(), "cancel", &Command::id),
            Command(
                "add", "Add", "", {{"number", integer}, {"note", text, true}},
                [this](CommandContext&, const Call& call) { return JSON(sum += call.integer("number")); }),
            Command(
                "fail", "Fail", "", {},
                [](CommandContext&, const Call&) -> JSON { throw std::runtime_error("Group not found"); }),
            Command::later("wait", "Wait", "", {{"groupID", id, true}},
                           [this](CommandContext&, const Call&, std::shared_ptr<JSON> result) {
                               return untilReleased(std::move(result));
                           })
                .endedByOtherWork(),
            Command("reset", "Reset", "", {{"isKnown", boolean, true}},
                    [](CommandContext&, const Call&) { return JSON(0); })
                .otherWork([](const CommandContext&, const Call& call) {
                    return !call.has("isKnown") || call.boolean("isKnown");
                }),
        };
    }

    struct Gate {
        std::vector<std::function<void()>>& held;
        bool await_ready() const { return false; }
        void await_suspend(std::coroutine_handle<> waiting) {
            held.emplace_back([waiting] { waiting.resume(); });
        }
        void await_resume() {}
    };
    platform::Task untilReleased(std::shared_ptr<JSON> result) {
        const auto stop = co_await platform::OwnStopToken();
        co_await Gate{held};
        platform::throwIfStopped(stop);
        *result = "waited";
    }
    void release() {
        for (auto& resume : std::exchange(held, {})) resume();
    }

    std::string answerTo(std::string line) {
        said.clear();
        server.receive(std::move(line));
        std::string all;
        for (const std::string& one : said) all += one;
        return all;
    }
};

TEST_F(RPCServer, answersEveryMessageAsTheProtocolSays) {
    struct Case {
        std::string line, answer;
    };
    const auto error = [](const std::string& id, int code, const std::string& message) {
        return R"({"error":{"code":)" + std::to_string(code) + R"(,"message":")" + message + R"("},"id":)" +
               id + R"(,"jsonrpc":"2.0"})";
    };
    const std::string tooLong(5'000'000, 'x');
    const std::vector<Case> cases{
        {R"({"jsonrpc":"2.0","id":1,"method":"add","params":{"number":2}})",
         R"({"id":1,"jsonrpc":"2.0","result":2})"},
        {R"({"jsonrpc":"2.0","id":"a","method":"add","params":{"number":3,"note":null}})",
         R"({"id":"a","jsonrpc":"2.0","result":5})"},
        {R"({"jsonrpc":"2.0","method":"add","params":{"number":1}})", ""},
        {R"({"jsonrpc":"2.0","method":"nothing"})", ""},
        {"", ""},
        {R"({"jsonrpc":"2.0","id":null,"method":"fail"})", error("null", 1, "Group not found")},
        {R"({"jsonrpc":"2.0","id":7,"method":"sub"})", error("7", -32601, "there is no method 'sub'")},
        {R"({"jsonrpc":"2.0","id":7,"method":"add"})", error("7", -32602, "add: number is missing")},
        {R"({"jsonrpc":"2.0","id":7,"method":"add","params":[1]})",
         error("7", -32602, "add: params must be an object with named members")},
        {R"({"jsonrpc":"2.0","id":7,"method":"add","params":{"number":1.5}})",
         error("7", -32602, "add: number must be a whole number")},
        {R"({"jsonrpc":"2.0","id":7,"method":"add","params":{"number":1,"x":1}})",
         error("7", -32602, "add: takes no 'x'")},
        {R"({"jsonrpc":"2.0","id":7,"method":"wait","params":{"groupID":"12"}})",
         error("7", -32602, "wait: groupID must be an identifier")},
        {R"({"jsonrpc":"2.0","id":7,"method":"add","params":"x"})",
         error("7", -32600, "params must be an object")},
        {R"({"jsonrpc":"2.0","id":{},"method":"add"})",
         error("null", -32600, "id must be a text or a number")},
        {R"({"jsonrpc":"1.0","id":7,"method":"add"})", error("7", -32600, R"(jsonrpc must be \"2.0\")")},
        {R"({"jsonrpc":"2.0","id":7,"method":1})", error("7", -32600, "method must be a text")},
        {R"({"jsonrpc":"2.0","id": 123456789012345678901234567890,"method":"add","params":{"number":0,"note":"\"id\":98765432109876543210"}})",
         R"({"id":123456789012345678901234567890,"jsonrpc":"2.0","result":6})"},
        {R"([{"id" : -98765432109876543210,"jsonrpc":"2.0","method":"sub"}])",
         "[" + error("-98765432109876543210", -32601, "there is no method 'sub'") + "]"},
        {"1", error("null", -32600, "a request is an object")},
        {"[]", error("null", -32600, "the batch is empty")},
        {R"([1,{"jsonrpc":"2.0","method":"add","params":{"number":1}},{"jsonrpc":"2.0","id":2,"method":"add","params":{"number":1}}])",
         "[" + error("null", -32600, "a request is an object") + R"(,{"id":2,"jsonrpc":"2.0","result":8}])"},
        {R"([{"jsonrpc":"2.0","method":"add","params":{"number":-1}}])", ""},
        {R"({"jsonrpc":"2.0","id":7,"method":"add","params":{"number":0,"note":")" + tooLong + "\"}}",
         R"({"id":7,"jsonrpc":"2.0","result":7})"},
    };
    for (const Case& test : cases) EXPECT_EQ(answerTo(test.line), test.answer) << test.line.substr(0, 200);
}

TEST_F(RPCServer, answersWhatIsNoJSONWithoutAnIdentifier) {
    for (const std::string line : {"{", "{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"\xff\xfe\"}", "nonsense",
                                   "{\"a\":1}{\"b\":2}", "\"\\ud800\""}) {
        const auto answer = JSON::parse(answerTo(line));
        EXPECT_TRUE(answer.find("id") != nullptr && answer.find("id")->isNull()) << line;
        ASSERT_NE(answer.find("error"), nullptr) << line;
    }
    EXPECT_EQ(answerTo(std::string(100'000, '[')).find(R"({"error":{"code":-32700)"), 0U);
    EXPECT_EQ(sum, 0);
}

TEST_F(RPCServer, servesOneMessageAtATimeInOrder) {
    bool isIdle = false;
    server.receive(R"({"jsonrpc":"2.0","id":1,"method":"wait"})");
    for (int i = 0; i < 1000; ++i)
        server.receive(R"({"jsonrpc":"2.0","id":2,"method":"add","params":{"number":1}})");
    server.whenIdle([&] { isIdle = true; });
    EXPECT_TRUE(said.empty());
    EXPECT_FALSE(isIdle);
    EXPECT_TRUE(server.isWaitedFor());
    release();
    EXPECT_TRUE(isIdle);
    EXPECT_FALSE(server.isWaitedFor());
    ASSERT_EQ(said.size(), 1001U);
    EXPECT_EQ(said.front(), R"({"id":1,"jsonrpc":"2.0","result":"waited"})");
    EXPECT_EQ(said.back(), R"({"id":2,"jsonrpc":"2.0","result":1000})");
}

/// Cancels a request that runs, one that waits and one that is neither; the answers keep their order.
TEST_F(RPCServer, cancelsAtOnceAndAnswersInTurn) {
    const auto cancel = [&](const std::string& id) {
        return answerTo(R"({"jsonrpc":"2.0","id":"c","method":"cancel","params":{"id":)" + id + "}}");
    };
    const auto cancelled = [](const std::string& id) {
        return R"({"error":{"code":2,"message":"cancelled"},"id":)" + id + R"(,"jsonrpc":"2.0"})";
    };
    const std::string yes = R"({"id":"c","jsonrpc":"2.0","result":true})",
                      no = R"({"id":"c","jsonrpc":"2.0","result":false})";
    EXPECT_EQ(cancel("1"), no);
    EXPECT_EQ(cancel("98765432109876543210"), no);
    server.receive(R"({"jsonrpc":"2.0","id":1,"method":"wait"})");
    server.receive(R"({"jsonrpc":"2.0","id":"1","method":"add","params":{"number":1}})");
    server.receive(
        R"([{"jsonrpc":"2.0","id":3,"method":"wait"},{"jsonrpc":"2.0","id":4,"method":"add","params":{"number":2}}])");
    EXPECT_EQ(cancel("2"), no);
    EXPECT_EQ(cancel("3"), yes);
    EXPECT_EQ(cancel("1"), yes);
    said.clear();
    release();
    EXPECT_EQ(said,
              (std::vector<std::string>{cancelled("1"), R"({"id":"1","jsonrpc":"2.0","result":1})",
                                        "[" + cancelled("3") + R"(,{"id":4,"jsonrpc":"2.0","result":3}])"}));
}

TEST_F(RPCServer, otherWorkEndsTheAnalysisInFrontOfIt) {
    const std::string wait = R"({"jsonrpc":"2.0","id":1,"method":"wait"})",
                      reset = R"({"jsonrpc":"2.0","id":2,"method":"reset"})",
                      add = R"({"jsonrpc":"2.0","id":3,"method":"add","params":{"number":1}})",
                      wrong = R"({"jsonrpc":"2.0","id":2,"method":"reset","params":{"of":1}})",
                      unknown = R"({"jsonrpc":"2.0","id":2,"method":"reset","params":{"isKnown":false}})";
    using Messages = std::vector<std::string>;
    for (const auto& [messages, stopped] :
         std::vector<std::pair<Messages, int>>{{{wait, reset}, 1},
                                               {{wait, wait, reset, reset}, 2},
                                               {{wait, add, reset}, 0},
                                               {{wait, add, wait, reset}, 1},
                                               {{wait, wait, add, reset}, 0},
                                               {{wait, "[" + wait + "]", reset}, 0},
                                               {{wait, unknown}, 0},
                                               {{"[" + wait + "," + add + "]", reset}, 0},
                                               {{wait, wrong}, 0}}) {
        said.clear();
        for (const std::string& message : messages) server.receive(message);
        EXPECT_TRUE(said.empty()) << "answers keep their turns";
        while (!held.empty()) release();
        EXPECT_EQ(said.size(), messages.size());
        EXPECT_EQ(std::ranges::count_if(
                      said, [](const std::string& one) { return one.find("cancelled") != one.npos; }),
                  stopped)
            << messages.front();
    }
}

} // namespace
} // namespace orvane::cli::rpc
