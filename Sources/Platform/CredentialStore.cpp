#include "Platform/CredentialStore.h"

#include "Platform/FileLock.h"
#include "Platform/Files.h"
#include "Platform/InterfaceThread.h"
#include "Platform/JSON.h"
#include "Platform/Modules.h"
#include "Platform/Random.h"
#include "Platform/SecretService/SecretServiceModule.h"

#include <array>
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

constexpr unsigned ownerOnly = 0600;

/// One file of the user, which nobody else may read.
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
    void remove(const std::string& account) const {
        if (!isThere() || contents().find(account) == nullptr) return;
        change([&](JSON& all) { all.remove(account); });
    }

  private:
    bool isThere() const { return files::exists(path_); }

    /// Before anything is written into it.
    void makePrivate() const {
        const int file = ::open(path_.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, ownerOnly);
        if (file < 0) fail(errno);
        struct stat status {};
        const bool isRefused = ::fstat(file, &status) != 0 || !S_ISREG(status.st_mode) ||
                               status.st_uid != ::geteuid() || ::fchmod(file, ownerOnly) != 0;
        const int reason = isRefused && errno != 0 ? errno : EPERM;
        ::close(file);
        if (isRefused) fail(reason);
    }
    [[noreturn]] void fail(int reason) const {
        throw CredentialError("Can't keep a secret in " + path_ + ": " +
                              std::generic_category().message(reason));
    }
    /// A file that nobody can read holds nothing.
    JSON contents() const {
        try {
            std::string text = files::readText(path_);
            JSON all = text.empty() ? JSON::object() : JSON::parse(text);
            Secret::wipe(text);
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
        if (savedByDesktop(account, value)) {
            file_.remove(account);
            return;
        }
        file_.save(account, value);
        // A store that was locked may hold an earlier one, which would be found first.
        if (const auto* desktop = module()) desktop->remove(account);
    }
    std::optional<Secret> read(const std::string& account) override {
        assertMayBlock("looking up a secret");
        // What is in the file was saved last: a save in the key store takes it out of there.
        try {
            if (auto value = file_.read(account)) return value;
        } catch (const CredentialError&) { // of somebody else
        }
        const auto* desktop = module();
        auto value = desktop == nullptr ? std::nullopt : desktop->read(account);
        return value ? std::optional(Secret(std::move(*value))) : std::nullopt;
    }
    void remove(const std::string& account) override {
        assertMayBlock("removing a secret");
        const auto* desktop = module();
        const bool isGone = desktop == nullptr || desktop->remove(account);
        file_.remove(account);
        if (!isGone) throw CredentialError("The key store keeps " + account + "; unlock it and try again");
    }
    Description describe() override {
        assertMayBlock("asking the key store");
        const std::string account = "doctor";
        const bool isThere = savedByDesktop(account, Secret(randomText()));
        if (const auto* desktop = module()) desktop->remove(account);
        if (isThere) return {true, "the desktop's key store (Secret Service)"};
        return {false, file_.path()};
    }

  private:
    static const SecretServiceModule* module() { return modules::own<SecretServiceModule>(); }
    static bool savedByDesktop(const std::string& account, const Secret& value) {
        const auto* desktop = module();
        return desktop != nullptr && desktop->save(account, value.reveal()) &&
               desktop->read(account) == value.reveal();
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
};

} // namespace

std::shared_ptr<CredentialStore> CredentialStore::create(std::string fallbackFile) {
    return std::make_shared<StandardCredentialStore>(std::move(fallbackFile));
}

} // namespace orvane::platform
