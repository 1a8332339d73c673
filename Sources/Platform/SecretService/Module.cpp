#include "Platform/SecretService/SecretServiceModule.h"

#include <chrono>
#include <condition_variable>
#include <libsecret/secret.h>
#include <memory>
#include <mutex>
#include <thread>

namespace orvane::platform {

namespace {

/// Under which service the items of this program stand.
constexpr const char* serviceName = "com.orvanelabs.OrvaneTandrel";

const SecretSchema& schema() {
    static const SecretSchema all = [] {
        SecretSchema made{};
        made.name = serviceName;
        made.flags = SECRET_SCHEMA_NONE;
        made.attributes[0] = {"account", SECRET_SCHEMA_ATTRIBUTE_STRING};
        return made;
    }();
    return all;
}

template <auto Function>
struct Frees {
    void operator()(auto* object) const { Function(object); }
};
using Error = std::unique_ptr<GError, Frees<g_error_free>>;

/// Ends a call that nobody answers: the store may ask the user for a password, and there may be no user.
class TimeLimit {
  public:
    TimeLimit() : cancellable_(g_cancellable_new()), thread_([this] { wait(); }) {}
    ~TimeLimit() {
        {
            const std::lock_guard lock(mutex_);
            isOver_ = true;
        }
        changed_.notify_all();
        thread_.join();
        g_object_unref(cancellable_);
    }
    TimeLimit(const TimeLimit&) = delete;
    TimeLimit& operator=(const TimeLimit&) = delete;
    operator GCancellable*() const { return cancellable_; } // NOLINT: for the library's calls

  private:
    void wait() {
        constexpr std::chrono::seconds longest{60};
        std::unique_lock lock(mutex_);
        if (!changed_.wait_for(lock, longest, [this] { return isOver_; })) g_cancellable_cancel(cancellable_);
    }

    GCancellable* const cancellable_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool isOver_ = false;
    std::thread thread_;
};

bool save(const std::string& account, const std::string& value) {
    const TimeLimit limit;
    GError* error = nullptr;
    const bool isSaved = secret_password_store_sync(&schema(), SECRET_COLLECTION_DEFAULT,
                                                    ("OrvaneSync: " + account).c_str(), value.c_str(), limit,
                                                    &error, "account", account.c_str(), nullptr) != FALSE;
    const Error freed(error);
    return isSaved && error == nullptr;
}

std::optional<std::string> read(const std::string& account) {
    const TimeLimit limit;
    GError* error = nullptr;
    gchar* value = secret_password_lookup_sync(&schema(), limit, &error, "account", account.c_str(), nullptr);
    const Error freed(error);
    if (value == nullptr) return std::nullopt;
    std::string text(value);
    secret_password_free(value); // which wipes it
    return text;
}

bool remove(const std::string& account) {
    const TimeLimit limit;
    GError* error = nullptr;
    secret_password_clear_sync(&schema(), limit, &error, "account", account.c_str(), nullptr);
    const Error freed(error);
    // A locked store passes over what it holds, without an error. The search names that too.
    GList* left = secret_password_search_sync(&schema(), SECRET_SEARCH_ALL, limit, nullptr, "account",
                                              account.c_str(), nullptr);
    const bool isGone = left == nullptr;
    g_list_free_full(left, g_object_unref);
    return isGone;
}

} // namespace

} // namespace orvane::platform

extern "C" __attribute__((visibility("default"))) const orvane::platform::SecretServiceModule*
orvaneSecretServiceModule() {
    using orvane::platform::SecretServiceModule;
    static const SecretServiceModule module{SecretServiceModule::currentVersion, orvane::platform::save,
                                            orvane::platform::read, orvane::platform::remove};
    return &module;
}
