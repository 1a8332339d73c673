#include "Platform/FileLock.h"
#include "Platform/Files.h"
#include "Platform/SettingsStore.h"

#include <algorithm>
#include <cerrno>

namespace orvane::platform {

namespace {

constexpr std::uint64_t largestSettingsFile = std::uint64_t{64} << 20U; // bytes

} // namespace

SettingsFile parseSettings(std::string_view contents) {
    SettingsFile result;
    try {
        JSON json = JSON::parse(contents);
        if (JSON::Object* members = json.members()) {
            for (auto& [key, value] : *members)
                if (!value.isNull()) result.values.insert_or_assign(std::move(key), std::move(value));
            return result;
        }
        result.problem = "it holds no JSON object";
    } catch (const JSONError& error) {
        result.problem = error.what();
    }
    return result;
}

FileSettingsStore::FileSettingsStore(std::string path) : path_(std::move(path)) {
    try {
        SettingsFile file = load();
        if (file.problem)
            problem_ = "the settings file " + path_ +
                       " can't be understood; the defaults are used: " + *file.problem;
        adopt(std::move(file.values));
    } catch (const FileError& error) {
        problem_ = error.what();
    }
}

std::optional<std::string> FileSettingsStore::problem() const {
    const std::lock_guard lock(problemMutex_);
    return problem_;
}

SettingsFile FileSettingsStore::load() const {
    // Only a file that is not there counts as one: what cannot be looked at is a problem to be told.
    if (!files::attributes(path_) && errno == ENOENT) return {};
    return parseSettings(files::readText(path_, largestSettingsFile));
}

SettingsStore::Values FileSettingsStore::persist(const Changes& changes) {
    constexpr unsigned ownerOnly = 0700; // as the base directory rules want it
    if (!files::exists(files::folderOf(path_))) files::createDirectories(files::folderOf(path_), ownerOnly);
    const FileLock lock = FileLock::ofFile(path_ + ".lock");

    const SettingsFile file = load();
    Values values = applied(file.values, changes);
    if (values == file.values) return values;

    JSON::Object members(values.begin(), values.end());
    const std::string contents = JSON(std::move(members)).dump(JSON::Layout::pretty) + "\n";
    if (file.problem) {
        const std::string kept = files::keepBeside(path_, files::unreadableSuffix);
        const std::lock_guard guard(problemMutex_);
        problem_ =
            "the settings file could not be understood (" + *file.problem + ") and was kept as " + kept;
    }
    files::writeAtomically(path_, contents);
    return values;
}

} // namespace orvane::platform
