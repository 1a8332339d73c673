#pragma once

#include "ControllerTest.h"
#include "LockitServer/LockitServer.h"
#include "OrvaneSyncApp/Controllers/LockitOAuthService.h"
#include "Support/Assets.h"

#include <functional>
#include <map>
#include <mutex>
#include <string>

namespace orvane::test {

/// Secrets in memory; `isFull`: it reports success and stores nothing.
class MemoryCredentials final : public platform::CredentialStore {
  public:
    void save(const std::string& account, const platform::Secret& value) override {
        const std::lock_guard lock(mutex);
        if (isBroken) throw platform::CredentialError("the disk is full");
        if (!isFull) items[account] = value.reveal();
    }
    Found read(const Accounts& accounts, Asking) override {
        const std::lock_guard lock(mutex);
        Found found;
        found.isLocked = isLocked;
        for (const std::string& account : accounts)
            if (!isLocked && items.contains(account))
                found.values[account] = platform::Secret(items[account]);
        return found;
    }
    void remove(const Accounts& accounts) override {
        const std::lock_guard lock(mutex);
        if (isLocked) throw platform::CredentialError("locked");
        for (const std::string& account : accounts) items.erase(account);
    }
    Description describe() override { return {true, false, "memory"}; }

    std::mutex mutex;
    std::map<std::string, std::string> items;
    bool isFull = false, isBroken = false, isLocked = false;
};

/// A user whose actions on the page the test chooses.
class ScriptedBrowser final : public platform::BrowserSession {
  public:
    std::string run(const std::string& url, std::stop_token) override { return user(url); }
    bool complete(const std::string&) override { return false; }
    void cancel() override {}

    std::function<std::string(const std::string& url)> user;
};

/// An account on a LockitNetwork service inside the test.
class LockitTest : public ControllerTest {
  protected:
    LockitTest() {
        browser_->user = [this](const std::string& url) { return server_.callbackFor(url); };
    }
    ~LockitTest() override { mainThread_->close(); } // a request may be running

    std::shared_ptr<LockitOAuthService> makeAccount(bool isConfigured = true) {
        ServiceConfiguration configuration;
        if (isConfigured)
            configuration = ServiceConfiguration::parse(server_.serviceFile().dump(), "service.json");
        auto account = LockitOAuthService::create({.mainThread = mainThread_,
                                                   .openPage = nullptr,
                                                   .clock = mainThread_->clock(),
                                                   .http = platform::HTTPClient::create(),
                                                   .credentials = credentials_,
                                                   .browser = browser_,
                                                   .configuration = configuration});
        finish(account->ready());
        return account;
    }
    /// With a token that the service accepts for an hour.
    std::shared_ptr<LockitOAuthService> signedInAccount() {
        credentials_->items = {{"lockit.accessToken", server_.validToken()},
                               {"lockit.expiresAt", std::to_string(secondsNow() + 3600)},
                               {"lockit.accountEmail", "someone"}};
        return makeAccount();
    }
    double secondsNow() const {
        return std::chrono::duration<double>(mainThread_->clock()->date().time_since_epoch()).count();
    }

    /// Why a task failed; "done" if it succeeded.
    std::string outcome(const platform::Task& task) {
        finish(task);
        std::string text = "done";
        task.whenDone([&](const std::exception_ptr& raised) {
            try {
                if (raised) std::rethrow_exception(raised);
            } catch (const std::exception& error) {
                text = error.what();
            } catch (const platform::Stopped&) {
                text = "stopped";
            }
        });
        return text;
    }

    LockitServer server_;
    std::shared_ptr<MemoryCredentials> credentials_ = std::make_shared<MemoryCredentials>();
    std::shared_ptr<ScriptedBrowser> browser_ = std::make_shared<ScriptedBrowser>();
};

} // namespace orvane::test
