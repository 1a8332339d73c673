#include "LockitTest.h"

namespace orvane {
namespace {

using platform::Secret;
using Fault = test::LockitServer::Fault;

class LockitOAuthTest : public test::LockitTest {
  protected:
    static constexpr const char* tokenPath = "/oauth/access-token";

    std::string item(const std::string& name) const {
        const auto found = credentials_->items.find("lockit." + name);
        return found == credentials_->items.end() ? "-" : found->second;
    }
    /// Seconds until the stored expiry of the token.
    double keptLifetime() const { return std::stod(item("expiresAt")) - secondsNow(); }
    std::string bearerOf(LockitOAuthService& account) {
        const auto token = std::make_shared<Secret>();
        const std::string how = outcome(account.currentBearerToken(token));
        return how == "done" ? token->reveal() : how;
    }
};

TEST_F(LockitOAuthTest, signsInWithAProofAndKeepsTheTokens) {
    const auto account = makeAccount();
    EXPECT_FALSE(account->state().isSignedIn);
    std::string url;
    browser_->user = [&](const std::string& page) { return server_.callbackFor(url = page); };
    const auto signingIn = account->signIn();
    EXPECT_TRUE(account->state().isAuthenticating);
    EXPECT_EQ(outcome(signingIn), "done");
    finish(account->accountEmailRefreshed());
    EXPECT_FALSE(account->state().isAuthenticating);
    EXPECT_TRUE(account->state().isSignedIn);
    EXPECT_EQ(account->state().accountEmail, "script@example.com");
    EXPECT_EQ(item("accountEmail"), "script@example.com");
    EXPECT_EQ(bearerOf(*account), item("accessToken"));
    EXPECT_TRUE(url.starts_with(server_.baseURL() +
                                "/oauth/authorize?response_type=code&client_id=test-client&state="))
        << url;
    EXPECT_NE(url.find("&redirect_uri=orvane-tandrel://oauth/callback&code_challenge="), std::string::npos);
    EXPECT_EQ(server_.countOf(tokenPath), 1);

    EXPECT_TRUE(makeAccount()->state().isSignedIn);
    finish(account->signOut());
    EXPECT_TRUE(credentials_->items.empty());
    EXPECT_FALSE(account->state().isSignedIn || account->state().accountEmail);
    EXPECT_EQ(bearerOf(*account),
              "Not signed in to LockitNetwork. Open Settings → LockitNetwork to sign in.");
}

TEST_F(LockitOAuthTest, aCallbackThatIsNotTheAnswerFetchesNoToken) {
    const auto account = makeAccount();
    const std::string good = "orvane-tandrel://oauth/callback?";
    const auto stateOf = [](const std::string& url) { return "state=" + *oauth::queryItem(url, "state"); };
    const std::pair<std::string, std::function<std::string(const std::string&)>> cases[] = {
        {"Authorization state mismatch — possible interception. Try again.",
         [&](const auto&) { return good + "code=evil"; }},
        {"Authorization state mismatch — possible interception. Try again.",
         [&](const auto&) { return good + "state=00000000-0000-4000-8000-000000000000&code=evil"; }},
        {"Lockit didn't return an authorization code. Try signing in again.",
         [&](const auto& url) { return good + stateOf(url) + "&error=access_denied"; }},
        {"Sign-in was cancelled.",
         [&](const auto&) -> std::string {
             throw platform::BrowserSessionError(platform::BrowserSessionError::Kind::cancelled, "");
         }},
        {"Unknown OAuth error.", [&](const auto&) { return std::string(); }},
    };
    for (const auto& [text, user] : cases) {
        browser_->user = user;
        EXPECT_EQ(outcome(account->signIn()), text);
        EXPECT_EQ(account->state().lastError, text);
    }
    EXPECT_EQ(server_.countOf(tokenPath), 0);
    EXPECT_TRUE(credentials_->items.empty());
    const std::string notConfigured = outcome(makeAccount(false)->signIn());
    EXPECT_TRUE(notConfigured.starts_with("No metadata service is configured")) << notConfigured;
}

TEST_F(LockitOAuthTest, keepsATokenAsLongAsTheServiceSays) {
    const std::pair<const char*, double> cases[] = {{R"("expires_in":3600)", 3600},
                                                    {R"("expires_in":7776000)", 2592000},
                                                    {R"("token_type":"Bearer")", 604800}};
    const auto account = makeAccount();
    for (const auto& [said, seconds] : cases) {
        server_.fail(
            {tokenPath, Fault::body, 200, std::string(R"({"access_token":"t",)") + said + "}", 0, 1});
        EXPECT_EQ(outcome(account->signIn()), "done");
        EXPECT_EQ(keptLifetime(), seconds) << said;
    }
}

TEST_F(LockitOAuthTest, tellsWhatTheTokenEndpointSaidWithoutItsSecrets) {
    const auto account = makeAccount();
    const std::string token = "eyJhbGciOiJIUzI1NiJ9.c2VjcmV0";
    const auto outcomeOf = [&](int status, const std::string& body) {
        server_.fail({tokenPath, Fault::body, status, body, 0, 1});
        return outcome(account->signIn());
    };
    EXPECT_EQ(outcomeOf(500, "out of order"), "Lockit token endpoint returned HTTP 500: out of order");
    EXPECT_EQ(outcomeOf(201, R"({"access_token":"short","x":")" + token + "\"}"),
              R"(Lockit token endpoint returned HTTP 201: {"access_token":"[hidden]","x":"[hidden]"})");
    EXPECT_EQ(outcomeOf(400, "bad basic test-client-secret-0123456789 refresh_token=abc&y"),
              "Lockit token endpoint returned HTTP 400: bad basic [hidden] refresh_token=[hidden]&y");
    for (const char* body : {R"({"access_token":1})", R"({"access_token":"a\r\nX: b"})",
                             R"({"access_token":"a","refresh_token":"b\n"})", "<html>"}) {
        const std::string why = outcomeOf(200, body);
        EXPECT_TRUE(why.starts_with("LockitNetwork's answer can't be understood")) << why;
    }
    EXPECT_TRUE(credentials_->items.empty());
    credentials_->isFull = true;
    const std::string unsaved = "Signed in with LockitNetwork, but the access token couldn't be saved to the "
                                "key store. Please try again.";
    EXPECT_EQ(outcome(account->signIn()), unsaved);
    credentials_->isBroken = true;
    EXPECT_EQ(outcome(account->signIn()), unsaved);
    EXPECT_FALSE(account->state().isSignedIn);
}

TEST_F(LockitOAuthTest, refreshesOnceForAllWhoWait) {
    auto account = makeAccount();
    EXPECT_EQ(outcome(account->signIn()), "done");
    const std::string first = item("accessToken");
    mainThread_->advance(std::chrono::seconds(3600 - 61));
    EXPECT_EQ(bearerOf(*account), first);
    mainThread_->advance(std::chrono::seconds(1));
    std::vector<std::shared_ptr<Secret>> tokens;
    std::vector<platform::Task> tasks;
    for (int i = 0; i < 5; ++i)
        tasks.push_back(account->currentBearerToken(tokens.emplace_back(std::make_shared<Secret>())));
    tasks.front().requestStop(); // the other callers still get theirs
    EXPECT_EQ(outcome(tasks.front()), "stopped");
    for (std::size_t i = 1; i < tasks.size(); ++i) {
        EXPECT_EQ(outcome(tasks[i]), "done");
        EXPECT_EQ(tokens[i]->reveal(), item("accessToken"));
    }
    EXPECT_NE(item("accessToken"), first);
    EXPECT_EQ(server_.countOf(tokenPath), 2);

    // An answer without a refresh token keeps the old one; an expiry that is no number counts as passed.
    const std::string refresh = item("refreshToken");
    credentials_->items["lockit.expiresAt"] = "abc";
    server_.fail({tokenPath, Fault::body, 200, R"({"access_token":"new"})", 0, 1});
    EXPECT_EQ(bearerOf(*account), "new");
    EXPECT_EQ(item("refreshToken"), refresh);

    // A refresh that fails keeps everything, and without an access token none is tried.
    credentials_->items["lockit.expiresAt"] = "0";
    server_.fail({tokenPath, Fault::status, 503, "", 0, 1});
    EXPECT_EQ(bearerOf(*account), "Lockit token endpoint returned HTTP 503: ");
    EXPECT_EQ(item("accessToken"), "new");
    EXPECT_EQ(item("refreshToken"), refresh);
    const int requests = server_.countOf(tokenPath);
    credentials_->items.erase("lockit.accessToken");
    EXPECT_TRUE(bearerOf(*account).starts_with("Not signed in"));
    EXPECT_EQ(server_.countOf(tokenPath), requests);
}

TEST_F(LockitOAuthTest, saysThatTheKeyStoreIsLockedAndThatARefreshIsRefused) {
    const auto account = signedInAccount();
    credentials_->isLocked = true;
    const std::string locked =
        "The key store, which keeps the sign-in to LockitNetwork, is locked. Unlock it "
        "in the desktop and try again.";
    EXPECT_EQ(bearerOf(*account), locked);
    EXPECT_TRUE(account->state().isKeyStoreLocked);
    EXPECT_FALSE(account->state().isSignedIn || account->state().accountEmail);
    EXPECT_EQ(outcome(account->signIn()), locked) << "no second sign-in beside the first";
    EXPECT_EQ(server_.countOf(tokenPath), 0);
    EXPECT_EQ(outcome(account->signOut()), "locked");
    credentials_->isLocked = false;
    finish(account->revalidateSignInState());
    EXPECT_TRUE(account->state().isSignedIn && !account->state().isKeyStoreLocked);
    EXPECT_EQ(account->state().accountEmail, "someone");

    credentials_->items["lockit.expiresAt"] = "0";
    credentials_->items["lockit.refreshToken"] = "old";
    const std::pair<int, bool> answers[] = {{503, false}, {400, true}};
    for (const auto& [status, isRefused] : answers) {
        server_.fail({tokenPath, Fault::status, status, "", 0, 1});
        EXPECT_NE(bearerOf(*account).find(std::to_string(status)), std::string::npos);
        EXPECT_EQ(account->state().isRefreshRefused, isRefused);
    }
    EXPECT_EQ(outcome(account->signIn()), "done");
    EXPECT_FALSE(account->state().isRefreshRefused);
}

TEST_F(LockitOAuthTest, aRefreshThatEndsAfterTheSignOutLeavesNothing) {
    const auto account = makeAccount();
    EXPECT_EQ(outcome(account->signIn()), "done");
    finish(account->accountEmailRefreshed());
    mainThread_->advance(std::chrono::hours(1));
    server_.fail({tokenPath, Fault::late, 0, "", 0, 1});
    const auto token = std::make_shared<Secret>();
    const auto asking = account->currentBearerToken(token);
    ASSERT_TRUE(mainThread_->waitUntil([&] { return server_.countOf(tokenPath) == 2; }));
    const auto signingOut = account->signOut();
    server_.answerLate();
    finish(signingOut);
    EXPECT_NE(outcome(asking), "done");
    EXPECT_TRUE(token->reveal().empty());
    EXPECT_TRUE(credentials_->items.empty());
}

} // namespace
} // namespace orvane
