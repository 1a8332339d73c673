#include "Platform/BrowserSession.h"
#include "Platform/CredentialStore.h"
#include "Platform/Files.h"
#include "Platform/Stop.h"
#include "Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <functional>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvane::platform {
namespace {

/// Without a key store of the desktop.
class CredentialStoreTest : public testing::Test {
  protected:
    unsigned permissions() const {
        struct stat status {};
        EXPECT_EQ(::stat(file.c_str(), &status), 0);
        return status.st_mode & 0777U;
    }

    std::optional<Secret> valueOf(const char* account) const { return valueOf(account, *store); }
    static std::optional<Secret> valueOf(const char* account, CredentialStore& of) {
        const auto found = of.read({"missing", account}, CredentialStore::Asking::once);
        EXPECT_FALSE(found.isLocked);
        return found.value(account);
    }

    test::TemporaryDirectory folder;
    test::ScopedEnvironment noBus{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"};
    const std::string file = folder.path("below/credentials.json");
    std::shared_ptr<CredentialStore> store = CredentialStore::create(file);
};

TEST_F(CredentialStoreTest, keepsSecretsInAFileOfItsOwnerAlone) {
    EXPECT_FALSE(valueOf("token"));
    // If the key store does not answer, it may still have the secret, unless the secret was in the file.
    EXPECT_THROW(store->remove({"token"}), CredentialError);
    {
        const test::ScopedEnvironment noDesktop{"DBUS_SESSION_BUS_ADDRESS", nullptr},
            noRuntime{"XDG_RUNTIME_DIR", folder.path().c_str()}, noScreen{"DISPLAY", nullptr};
        EXPECT_NO_THROW(store->remove({"token"})) << "no store, and no file";
    }
    EXPECT_FALSE(files::exists(file)); // reading creates no file
    store->save("token", Secret("one"));
    store->save("other", Secret("two"));
    store->save("token", Secret("three"));
    EXPECT_EQ(permissions(), 0600U);
    ASSERT_EQ(::chmod(file.c_str(), 0644), 0); // by a backup, say
    EXPECT_EQ(valueOf("token", *CredentialStore::create(file)), Secret("three"));
    EXPECT_EQ(permissions(), 0600U);
    store->remove({"token", "none"});
    EXPECT_FALSE(valueOf("token"));
    EXPECT_EQ(valueOf("other"), Secret("two"));
    EXPECT_FALSE(store->describe().isEncrypted);
    EXPECT_EQ(store->describe().where, file);
#ifndef ORVANE_SANITIZED
    EXPECT_EQ(::prctl(PR_GET_DUMPABLE), 0) << "a core file would hold the secrets";
#endif
}

TEST_F(CredentialStoreTest, writesNoSecretWhereALinkLeads) {
    folder.write("below/elsewhere", "{}");
    ASSERT_EQ(::symlink(folder.path("below/elsewhere").c_str(), file.c_str()), 0);
    try {
        store->save("token", Secret("hush"));
        ADD_FAILURE() << "saved";
    } catch (const CredentialError& error) {
        EXPECT_EQ(std::string(error.what()).find("hush"), std::string::npos);
    }
    EXPECT_EQ(folder.read("below/elsewhere"), "{}");
}

class BrowserSessionTest : public testing::Test {
  protected:
    /// The callback that a session ends with, or why there is none. `user` acts once the page is shown.
    std::string outcome(const std::function<void(BrowserSession&)>& user,
                        std::chrono::milliseconds limit = std::chrono::minutes(1),
                        const std::stop_token& stop = {}) {
        std::shared_ptr<BrowserSession> session;
        session = BrowserSession::create({.callbackScheme = "our-scheme",
                                          .open =
                                              [&](const std::string&) {
                                                  user(*session);
                                                  return true;
                                              },
                                          .limit = limit,
                                          .registersScheme = false});
        EXPECT_FALSE(session->complete("our-scheme://early"));
        try {
            const std::string callback = session->run("https://example.com", stop);
            EXPECT_FALSE(session->complete("our-scheme://late"));
            return callback;
        } catch (const BrowserSessionError& error) {
            return error.kind() == BrowserSessionError::Kind::cancelled ? "cancelled" : "timed out";
        } catch (const Stopped&) {
            return "stopped";
        }
    }

    test::TemporaryDirectory folder;
    test::ScopedEnvironment runtime{"XDG_RUNTIME_DIR", folder.path().c_str()};
};

TEST_F(BrowserSessionTest, takesTheFirstCallbackOfItsScheme) {
    const std::string callback = "our-scheme://oauth/callback?code=1";
    EXPECT_EQ(outcome([&](BrowserSession&) { EXPECT_TRUE(BrowserSession::deliver(callback)); }), callback);
    EXPECT_EQ(outcome([&](BrowserSession& session) {
                  EXPECT_FALSE(session.complete("https://example.com/?code=1"));
                  BrowserSession::deliver("other:1");
                  EXPECT_TRUE(session.complete(" " + callback + "\n")); // as it was pasted
              }),
              callback);
    EXPECT_FALSE(BrowserSession::deliver(callback)) << "nobody waits any more";
}

TEST_F(BrowserSessionTest, endsWithoutACallback) {
    EXPECT_EQ(outcome([](BrowserSession& session) { session.cancel(); }), "cancelled");
    EXPECT_EQ(outcome([](BrowserSession&) {}, std::chrono::milliseconds(1)), "timed out");
    std::stop_source stop;
    EXPECT_EQ(
        outcome([&](BrowserSession&) { stop.request_stop(); }, std::chrono::minutes(1), stop.get_token()),
        "stopped");
}

TEST_F(BrowserSessionTest, doesNotListenInAFolderThatOthersCanWrite) {
    ASSERT_EQ(::chmod(folder.path().c_str(), 0700), 0);
    ASSERT_EQ(::mkdir(folder.path("orvane-tandrel").c_str(), 0777), 0);
    ASSERT_EQ(::chmod(folder.path("orvane-tandrel").c_str(), 0777), 0); // others could put a socket there
    EXPECT_EQ(outcome([](BrowserSession& session) {
                  EXPECT_FALSE(BrowserSession::deliver("our-scheme://x"));
                  session.complete("our-scheme://pasted");
              }),
              "our-scheme://pasted");
}

} // namespace
} // namespace orvane::platform
