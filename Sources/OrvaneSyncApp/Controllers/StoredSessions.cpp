#include "OrvaneSyncApp/Controllers/StoredSessions.h"

#include "OrvaneSyncApp/Controllers/OpenSession.h"
#include "Platform/OnQueue.h"

#include <set>
#include <string>
#include <utility>

namespace orvane {

namespace {

/// For comparisons: each folder once, in a fixed order, in one spelling.
std::set<std::string> textsOfFolders(const std::vector<FileURL>& urls) {
    std::set<std::string> all;
    for (const FileURL& url : urls) all.insert(url.pathText());
    return all;
}

/// A separate coroutine, because its owner may be destroyed while it waits.
template <class Result, class Reading>
platform::Task readInto(std::shared_ptr<Result> result, Reading reading) {
    *result = co_await reading;
}

} // namespace

StoredSessions::StoredSessions(SessionStore store, platform::SerialQueue& queue,
                               std::shared_ptr<platform::MainThread> mainThread)
    : store_(std::move(store)), queue_(queue), mainThread_(std::move(mainThread)),
      knownRecords_(std::make_shared<SessionStore::KnownRecords>()) {}

platform::Task StoredSessions::readLists(std::shared_ptr<StoredLists> lists) const {
    return readInto(
        std::move(lists), platform::onQueue(queue_, mainThread_, [store = store_, known = knownRecords_] {
            StoredLists read;
            read.sessions = store.list(
                [&](const std::string& problem) { read.unreadable.push_back(problem); }, known.get());
            read.folders = store.readFolderInfos();
            return read;
        }));
}

platform::Task StoredSessions::read(const UUID& id,
                                    std::shared_ptr<std::optional<StoredSession>> session) const {
    return readInto(std::move(session),
                    platform::onQueue(queue_, mainThread_, [store = store_, id](const std::stop_token& stop) {
                        return readStoredSession(store, id, stop);
                    }));
}

platform::Task StoredSessions::readCopy(const UUID& id, const std::string& elsewhere,
                                        std::shared_ptr<std::optional<StoredSession>> session) const {
    return readInto(
        std::move(session),
        platform::onQueue(queue_, mainThread_, [store = store_, elsewhere, id](const std::stop_token& stop) {
            auto copy = readStoredSession(SessionStore(elsewhere), id, stop);
            if (copy) copy->sessionFolders = store.readFolderInfos();
            return copy;
        }));
}

platform::Task StoredSessions::find(std::vector<UUID> candidates, const std::vector<FileURL>& folders,
                                    std::shared_ptr<std::optional<UUID>> found) const {
    return readInto(
        std::move(found),
        platform::onQueue(
            queue_, mainThread_,
            [store = store_, candidates = std::move(candidates),
             wanted = textsOfFolders(folders)](const std::stop_token& stop) -> std::optional<UUID> {
                for (const UUID& id : candidates) {
                    platform::throwIfStopped(stop);
                    const auto record = store.readFolders(id).record;
                    if (!record) continue;
                    if (!wanted.empty() && textsOfFolders(allFolders(*record)) == wanted) return id;
                }
                return std::nullopt;
            }));
}

} // namespace orvane
