#include "Platform/Modules.h"
#include "Platform/SecretService/SecretServiceModule.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <libsecret/secret.h>
#include <memory>
#include <mutex>
#include <thread>

namespace orvane::platform {

namespace {

using Answer = SecretServiceModule::Answer;
using Found = SecretServiceModule::Found;

/// The service under which the items of this program are kept.
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

/// Ends a call that gets no answer: the store may ask the user for a password, and there may be no user.
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
    operator GCancellable*() const { return cancellable_; } // for the library's calls

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

/// Releases the references that a call returned.
struct Unrefs {
    void operator()(void* object) const { g_object_unref(object); }
};
using Service = std::unique_ptr<SecretService, Unrefs>;
using Collection = std::unique_ptr<SecretCollection, Unrefs>;
using Value = std::unique_ptr<SecretValue, Frees<secret_value_unref>>;
using Attributes = std::unique_ptr<GHashTable, Frees<g_hash_table_unref>>;

struct FreesList {
    void operator()(GList* list) const { g_list_free_full(list, g_object_unref); }
};
using Items = std::unique_ptr<GList, FreesList>;

template <class Visit>
void forEach(const Items& items, const Visit& visit) {
    for (GList* node = items.get(); node != nullptr; node = node->next) visit(SECRET_ITEM(node->data));
}

std::string accountOf(SecretItem* item) {
    const Attributes attributes(secret_item_get_attributes(item));
    const void* account = g_hash_table_lookup(attributes.get(), "account");
    return account == nullptr ? "" : static_cast<const char*>(account);
}

bool isLocked(SecretItem* item) { return secret_item_get_locked(item) != FALSE; }

/// One session with the store. A call that fails leaves its error here, and the following calls have no
/// effect.
class ServiceSession {
  public:
    ServiceSession() : service_(secret_service_get_sync(SECRET_SERVICE_OPEN_SESSION, limit_, fails())) {}
    ServiceSession(const ServiceSession&) = delete;
    ServiceSession& operator=(const ServiceSession&) = delete;
    ~ServiceSession() { g_clear_error(&error_); }

    bool hasFailed() const { return error_ != nullptr || !service_; }
    /// A restarted store does not know the session, which the next conversation would share.
    bool isWorthAnother() const {
        return hasFailed() && !isOnce && !g_error_matches(error_, G_IO_ERROR, G_IO_ERROR_CANCELLED) &&
               !g_error_matches(error_, SECRET_ERROR, SECRET_ERROR_IS_LOCKED);
    }

    /// The service is not running and cannot be started.
    bool isAbsent() const { return g_error_matches(error_, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN); }

    /// The user was asked, and is not to be asked again.
    bool isOnce = false;

    /// All items of this program, locked or not.
    Items items() {
        const Attributes any(secret_attributes_build(&schema(), nullptr));
        return Items(secret_service_search_sync(service_.get(), &schema(), any.get(), SECRET_SEARCH_ALL,
                                                limit_, fails()));
    }
    /// Loads the secrets of the unlocked items into them.
    void load(const Items& items) {
        if (items) secret_item_load_secrets_sync(items.get(), limit_, fails());
    }
    Collection standardCollection() {
        return Collection(secret_collection_for_alias_sync(service_.get(), SECRET_COLLECTION_DEFAULT,
                                                           SECRET_COLLECTION_NONE, limit_, fails()));
    }
    void store(const std::string& account, const std::string& value) {
        const Attributes attributes(secret_attributes_build(&schema(), "account", account.c_str(), nullptr));
        const Value kept(secret_value_new(value.data(), static_cast<gssize>(value.size()), "text/plain"));
        const std::string label = "OrvaneSync: " + account;
        if (secret_service_store_sync(service_.get(), &schema(), attributes.get(), SECRET_COLLECTION_DEFAULT,
                                      label.c_str(), kept.get(), limit_, fails()) == FALSE)
            isRefused_ = true;
    }
    /// It refused, without an error.
    bool isRefused() const { return isRefused_; }
    void remove(SecretItem* item) { secret_item_delete_sync(item, limit_, fails()); }

    /// Asks the user once for all of them. Returns whether any was unlocked.
    bool unlock(GList* objects) {
        const TimeLimit forTheUser;
        GError* error = nullptr;
        GList* unlocked = nullptr;
        const gint count = secret_service_unlock_sync(service_.get(), objects, forTheUser, &unlocked, &error);
        g_list_free_full(unlocked, g_object_unref);
        const Error freed(error); // it stays locked
        return count > 0;
    }

  private:
    /// Where the next call stores its error; the first one is kept.
    GError** fails() { return error_ == nullptr ? &error_ : nullptr; }

    GError* error_ = nullptr;
    bool isRefused_ = false;
    const TimeLimit limit_;
    const Service service_;
};

/// Whether the session has a bus, on which there could be a store.
bool hasBus() {
    GError* error = nullptr;
    gchar* const address = g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, nullptr, &error);
    g_clear_error(&error);
    g_free(address);
    return address != nullptr;
}

/// Asks the store, and once more if it may have been restarted.
template <class Ask>
Answer answered(const Ask& ask) {
    if (!hasBus()) return Answer::absent;
    for (bool isAgain = false;; isAgain = true) {
        ServiceSession store;
        const Answer answer = store.hasFailed() ? Answer::none : ask(store);
        if (!store.hasFailed()) return answer;
        // The bus also reports a store that has ended as unknown.
        if (isAgain || !store.isWorthAnother()) return store.isAbsent() ? Answer::absent : Answer::none;
        secret_service_disconnect();
    }
}

/// Whether the collection for new secrets can be read, after asking the user where that is allowed.
bool isOpen(ServiceSession& store, bool mayAsk) {
    const Collection collection = store.standardCollection();
    if (!collection || secret_collection_get_locked(collection.get()) == FALSE) return true;
    GList* one = g_list_prepend(nullptr, collection.get());
    const bool isUnlocked = mayAsk && store.unlock(one);
    g_list_free(one);
    return isUnlocked;
}

Answer save(const std::string& account, const std::string& value, bool mayAsk) {
    return answered([&](ServiceSession& store) {
        if (!isOpen(store, mayAsk)) return Answer::locked;
        if (!store.standardCollection()) { // the desktop asks for the password of a new one
            if (!mayAsk) return Answer::none;
            store.isOnce = true;
        }
        if (store.hasFailed()) return Answer::none;
        store.store(account, value);
        return store.isRefused() ? Answer::none : Answer::done;
    });
}

Found read(bool mayAsk) {
    Found found;
    found.answer = answered([&](ServiceSession& store) {
        found = {};
        Items items = store.items();
        GList* locked = nullptr;
        forEach(items, [&](SecretItem* item) {
            if (isLocked(item)) locked = g_list_prepend(locked, item);
        });
        const bool isUnlocked = locked != nullptr && mayAsk && store.unlock(locked);
        g_list_free(locked);
        if (isUnlocked) items = store.items();
        if (store.hasFailed()) return Answer::none;
        store.load(items);
        forEach(items, [&](SecretItem* item) {
            if (isLocked(item)) {
                found.locked.insert(accountOf(item));
                return;
            }
            const Value value(secret_item_get_secret(item));
            const char* text = value ? secret_value_get_text(value.get()) : nullptr;
            if (text != nullptr) found.values.emplace(accountOf(item), text);
        });
        return found.locked.empty() && isOpen(store, false) ? Answer::done : Answer::locked;
    });
    if (found.answer == Answer::none || found.answer == Answer::absent) found = {found.answer, {}, {}};
    return found;
}

/// A store that fails or is locked may still keep them: only an open one that shows none proves that they are
/// removed.
Answer remove(const std::vector<std::string>& accounts) {
    const auto isWanted = [&](SecretItem* item) {
        return std::ranges::find(accounts, accountOf(item)) != accounts.end();
    };
    return answered([&](ServiceSession& store) {
        forEach(store.items(), [&](SecretItem* item) {
            if (!isLocked(item) && isWanted(item) && !store.hasFailed()) store.remove(item);
        });
        if (store.hasFailed()) return Answer::none;
        Answer answer = isOpen(store, false) ? Answer::done : Answer::locked;
        forEach(store.items(), [&](SecretItem* item) {
            if (isWanted(item)) answer = isLocked(item) ? Answer::locked : Answer::none;
        });
        return answer;
    });
}

Answer unlock() {
    return answered(
        [](ServiceSession& store) { return isOpen(store, true) ? Answer::done : Answer::locked; });
}

} // namespace

} // namespace orvane::platform

const void* orvaneModule() {
    using orvane::platform::SecretServiceModule;
    static const SecretServiceModule module{orvane::platform::interfaceVersion, orvane::platform::save,
                                            orvane::platform::read, orvane::platform::remove,
                                            orvane::platform::unlock};
    return &module;
}
