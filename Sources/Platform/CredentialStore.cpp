#include "Platform/CredentialStore.h"

#include "Platform/FileLock.h"
#include "Platform/Files.h"
#include "Platform/InterfaceThread.h"
#include "Platform/JSON.h"
#include "Platform/Modules.h"
#include "Platform/Random.h"
#include "Platform/SecretService/SecretServiceModule.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <span>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace orvane::platform {

namespace {

constexpr unsigned credentialFileRights = 0600;

/// One file of the user, which no other user may read.
class CredentialFile {
  public:
    explicit CredentialFile(std::string path) : path_(std::move(path)) {}
    const std::string& path() const { return path_; }

    void save(const std::string& account, const Secret& value) const {
        change([&](JSON& all) { all.set(account, value.reveal()); });
    }
    std::optional<Secret> read(const std::string& account) const {
        if (!isThere()) return std::nullopt;
        makePrivate();
        const JSON all = contents();
        const JSON* value = all.find(account);
        if (value == nullptr || value->string() == nullptr) return std::nullopt;
        return Secret(*value->string());
    }
    /// Whether any of them was in the file.
    bool remove(const CredentialStore::Accounts& accounts) const {
        if (!isThere()) return false;
        const JSON before = contents();
        const auto isIn = [&](const std::string& account) { return before.find(account) != nullptr; };
        if (std::ranges::none_of(accounts, isIn)) return false;
        change([&](JSON& all) {
            for (const std::string& account : accounts) all.remove(account);
        });
        return true;
    }

    /// The file is absent or can be read.
    bool isUnderstood() const {
        try {
            if (isThere()) return parsed().isObject();
        } catch (const FileError&) { // another user's
            return false;
        } catch (const JSONError&) {
            return false;
        }
        return true;
    }

  private:
    bool isThere() const { return files::exists(path_); }
    /// Throws FileError and JSONError.
    JSON parsed() const {
        std::string text = files::readText(path_);
        JSON all = text.empty() ? JSON::object() : JSON::parse(text);
        Secret::wipe(text);
        return all;
    }

    /// Called before anything is written into it.
    void makePrivate() const {
        const int file =
            ::open(path_.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, credentialFileRights);
        if (file < 0) fail(errno);
        const auto failure = [file] {
            struct stat status {};
            if (::fstat(file, &status) != 0) return errno;
            if (!S_ISREG(status.st_mode) || status.st_uid != ::geteuid()) return EPERM;
            return ::fchmod(file, credentialFileRights) == 0 ? 0 : errno;
        };
        const int reason = failure();
        ::close(file);
        if (reason != 0) fail(reason);
    }
    [[noreturn]] void fail(int reason) const {
        throw CredentialError("Can't keep a secret in " + path_ + ": " +
                              std::generic_category().message(reason));
    }
    /// A file that cannot be read counts as empty.
    JSON contents() const {
        try {
            JSON all = parsed();
            return all.isObject() ? std::move(all) : JSON::object();
        } catch (const FileError&) { // no secrets then
        } catch (const JSONError&) { // likewise
        }
        return JSON::object();
    }
    template <class Change>
    void change(const Change& apply) const {
        try {
            files::createDirectories(files::folderOf(path_));
            const FileLock lock = FileLock::ofFile(path_ + ".lock");
            makePrivate();
            JSON all = contents();
            apply(all);
            std::string text = all.dump(JSON::Layout::pretty);
            files::writeAtomically(path_, text);
            Secret::wipe(text);
        } catch (const FileError& error) {
            throw CredentialError(error.what());
        }
    }

    const std::string path_;
};

class StandardCredentialStore final : public CredentialStore {
  public:
    explicit StandardCredentialStore(std::string fallbackFile) : file_(std::move(fallbackFile)) {}

    void save(const std::string& account, const Secret& value) override {
        assertMayBlock("keeping a secret");
        const Answer answer = savedByDesktop(account, value, !hasRefused_);
        if (answer == Answer::done) {
            noteUse();
            file_.remove({account});
            return;
        }
        if (answer == Answer::locked && (isInUse() || !desktop()->read(false).locked.empty()))
            throw CredentialError("The key store is locked, and keeps what was saved before; unlock it and "
                                  "try again");
        file_.save(account, value);
        // What the store has from an earlier time.
        if (desktop() != nullptr) desktop()->remove({account});
    }
    Found read(const Accounts& accounts, Asking asking) override {
        assertMayBlock("looking up a secret");
        if (asking == Asking::again) hasRefused_ = false;
        Found found;
        // The value in the file was saved last: a save in the key store removes it from the file.
        for (const std::string& account : accounts)
            if (auto value = readFile(account)) found.values.emplace(account, std::move(*value));
        if (found.values.size() == accounts.size() || desktop() == nullptr) return found;
        auto kept = look();
        const bool mayHideAny = kept.answer == Answer::locked && kept.locked.empty() && isInUse();
        for (const std::string& account : accounts) {
            if (found.values.contains(account)) continue;
            if (const auto value = kept.values.find(account); value != kept.values.end())
                found.values.emplace(account, Secret(value->second));
            else
                found.isLocked |= mayHideAny || kept.locked.contains(account);
        }
        wipe(kept);
        return found;
    }
    void remove(const Accounts& accounts) override {
        assertMayBlock("removing a secret");
        Answer answer = Answer::absent;
        if (desktop() != nullptr) {
            auto kept = look(); // may unlock the store
            wipe(kept);
            answer = desktop()->remove(accounts);
        }
        const bool wasInFile = file_.remove(accounts);
        if (answer == Answer::done) {
            if (desktop() != nullptr && desktop()->read(false).values.empty()) file_.remove({inUse});
            return;
        }
        // If no store has ever kept a secret, they were all in the file; and a store that does not exist can
        // keep none.
        if (!isInUse() && (wasInFile || (answer == Answer::absent && file_.isUnderstood()))) return;
        throw CredentialError(
            answer == Answer::locked
                ? "The key store is locked and may keep what was saved in it; unlock it and try again"
                : "The key store does not answer and may keep what was saved in it; try again once it does");
    }
    Description describe() override {
        assertMayBlock("asking the key store");
        const std::string account = "doctor";
        Answer answer = Answer::none;
        if (desktop() != nullptr) {
            auto kept = desktop()->read(false);
            answer = kept.answer == Answer::locked ? Answer::locked
                                                   : savedByDesktop(account, Secret(randomText()), false);
            if (kept.answer == Answer::done) desktop()->remove({account});
            wipe(kept);
        }
        if (answer == Answer::done) return {true, false, "the desktop's key store (Secret Service)"};
        return {false, answer == Answer::locked, file_.path()};
    }

  private:
    using Answer = SecretServiceModule::Answer;
    /// The item of the file that exists as long as the key store keeps any secret, because a locked store may
    /// not report that.
    static constexpr const char* inUse = "keyStoreInUse";

    static const SecretServiceModule* desktop() { return modules::own<SecretServiceModule>().module; }
    std::optional<Secret> readFile(const std::string& account) const {
        try {
            return file_.read(account);
        } catch (const CredentialError&) { // another user's
            return std::nullopt;
        }
    }
    bool isInUse() const { return readFile(inUse).has_value(); }
    void noteUse() const {
        try {
            if (!isInUse()) file_.save(inUse, Secret("yes"));
        } catch (const CredentialError&) { // the store has the secret anyway
        }
    }
    /// Reads everything that the key store shows. The user is asked to unlock it if it keeps a secret; a user
    /// who has closed this question does not get it again with every read.
    SecretServiceModule::Found look() {
        const bool mayAsk = !hasRefused_, isKnownToKeep = isInUse();
        auto kept = desktop()->read(mayAsk);
        const bool isHidden = kept.answer == Answer::locked && kept.locked.empty() && isKnownToKeep;
        if (isHidden && mayAsk && desktop()->unlock() == Answer::done) kept = desktop()->read(false);
        if (kept.answer == Answer::done)
            hasRefused_ = false;
        else if (kept.answer == Answer::locked && (isKnownToKeep || !kept.locked.empty()))
            hasRefused_ = true;
        return kept;
    }
    Answer savedByDesktop(const std::string& account, const Secret& value, bool mayAsk) {
        if (desktop() == nullptr) return Answer::none;
        const Answer answer = desktop()->save(account, value.reveal(), mayAsk);
        if (mayAsk && answer == Answer::locked) hasRefused_ = true;
        if (answer != Answer::done) return answer;
        auto kept = desktop()->read(false);
        const auto found = kept.values.find(account);
        const bool isKept = found != kept.values.end() && found->second == value.reveal();
        wipe(kept);
        return isKept ? Answer::done : Answer::none;
    }
    static void wipe(SecretServiceModule::Found& found) {
        for (auto& [account, value] : found.values) Secret::wipe(value);
    }
    static std::string randomText() {
        constexpr std::size_t length = 16;
        std::array<std::byte, length> bytes{};
        secureRandom(bytes);
        std::string text;
        for (const std::byte byte : bytes) text += static_cast<char>('a' + (std::to_integer<int>(byte) & 15));
        return text;
    }

    const CredentialFile file_;
    std::atomic<bool> hasRefused_ = false;
};

} // namespace

std::optional<Secret> CredentialStore::Found::value(std::string_view account) const {
    const auto found = values.find(account);
    return found == values.end() ? std::nullopt : std::optional(found->second);
}

std::shared_ptr<CredentialStore> CredentialStore::create(std::string fallbackFile) {
    return std::make_shared<StandardCredentialStore>(std::move(fallbackFile));
}

} // namespace orvane::platform
