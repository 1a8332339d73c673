#include "Platform/FileSettingsStore.h"

#include "Platform/FileLock.h"
#include "Platform/Files.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <iterator>

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

FileSettingsStore::FileSettingsStore(std::string path, std::unique_ptr<SerialQueue> queue)
    : path_(std::move(path)), queue_(std::move(queue)) {
    try {
        seen_ = stamp(); // first, so that a write in the meantime is noticed later
        SettingsFile file = load();
        if (file.problem)
            problem_ = "the settings file " + path_ +
                       " can't be understood; the defaults are used: " + *file.problem;
        adoptFromDisk(std::move(file.values));
    } catch (const FileError& error) {
        problem_ = error.what();
    }
}

std::optional<std::string> FileSettingsStore::problem() const {
    const std::lock_guard lock(problemMutex_);
    return writeProblem_ ? writeProblem_ : problem_;
}

SettingsFile FileSettingsStore::load() const {
    // Only a missing file is treated as empty: a file that cannot be examined is a problem to report.
    if (!files::attributes(path_) && errno == ENOENT) return {};
    return parseSettings(files::readText(path_, largestSettingsFile));
}

FileSettingsStore::Stamp FileSettingsStore::stamp() const {
    const auto found = files::attributes(path_);
    if (!found) return std::nullopt;
    return std::tuple(found->size, found->modificationSinceReference, found->identity.first,
                      found->identity.second);
}

SerialQueue& FileSettingsStore::writing() {
    const std::lock_guard lock(pendingMutex_);
    if (!queue_) queue_ = SerialQueue::create("com.orvanelabs.OrvaneSync.Settings");
    return *queue_;
}

FileSettingsStore::~FileSettingsStore() {
    isEnding_ = true;
    queue_.reset();
}

void FileSettingsStore::persist(Changes changes, const SettingsWrite& write) {
    {
        const std::lock_guard lock(pendingMutex_);
        pending_.push_back({std::move(changes), write});
    }
    writing().post([this] { writePending(); });
}

/// Writes all waiting changes at once.
void FileSettingsStore::writePending() {
    Changes all;
    std::size_t count = 0;
    {
        const std::lock_guard lock(pendingMutex_);
        for (const Pending& one : pending_)
            for (const auto& [key, value] : one.changes) all.insert_or_assign(key, value);
        count = pending_.size();
    }
    if (count == 0) return;
    std::exception_ptr raised;
    std::optional<std::string> why;
    Values onDisk = onDisk_;
    try {
        onDisk = write(all);
    } catch (const FileError& error) {
        raised = std::current_exception();
        why = error.what();
    }
    {
        const std::lock_guard lock(problemMutex_);
        writeProblem_ = std::move(why);
    }
    std::vector<Pending> ended;
    {
        const std::lock_guard lock(pendingMutex_);
        const auto last = pending_.begin() + static_cast<std::ptrdiff_t>(count);
        ended.assign(std::make_move_iterator(pending_.begin()), std::make_move_iterator(last));
        pending_.erase(pending_.begin(), last);
    }
    adoptFromDisk(std::move(onDisk));
    for (const Pending& one : ended) endWrite(one.write, raised);
}

SettingsStore::Values FileSettingsStore::write(const Changes& changes) {
    if (!files::exists(files::folderOf(path_))) files::createDirectories(files::folderOf(path_));
    const FileLock lock = FileLock::ofFile(path_ + ".lock");

    const SettingsFile file = load();
    Values values = applied(file.values, changes);
    if (values != file.values) {
        JSON::Object members(values.begin(), values.end());
        const std::string contents = JSON(std::move(members)).dump(JSON::Layout::pretty) + "\n";
        if (file.problem) {
            const std::string kept = files::keepBeside(path_, files::unreadableSuffix);
            const std::lock_guard guard(problemMutex_);
            problem_ =
                "the settings file could not be understood (" + *file.problem + ") and was kept as " + kept;
        }
        files::writeAtomically(path_, contents);
    }
    seen_ = stamp();
    return values;
}

void FileSettingsStore::adoptFromDisk(Values onDisk) {
    onDisk_ = std::move(onDisk);
    adopt([this] {
        Values all = onDisk_;
        const std::lock_guard lock(pendingMutex_);
        for (const Pending& one : pending_) all = applied(std::move(all), one.changes);
        return all;
    });
}

void FileSettingsStore::followOthers() { lookAgainLater(writing()); }

void FileSettingsStore::lookAgainLater(SerialQueue& queue) {
    queue.after(lookInterval, [this, &queue] {
        if (isEnding_) return;
        look();
        lookAgainLater(queue);
    });
}

/// If the file cannot be read or understood at this moment, nothing changes: its writer may be at work.
void FileSettingsStore::look() {
    const Stamp now = stamp();
    if (now == seen_) return;
    try {
        SettingsFile file = load();
        if (file.problem) return;
        seen_ = now;
        adoptFromDisk(std::move(file.values));
    } catch (const FileError&) { // its writer may be at work
    }
}

} // namespace orvane::platform
