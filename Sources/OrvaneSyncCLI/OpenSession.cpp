#include "OrvaneSyncCLI/OpenSession.h"

#include "OrvaneSyncCLI/RunUntilDone.h"
#include "OrvaneSyncCore/Utilities/FilenameUtils.h"
#include "Platform/Text.h"

#include <utility>
#include <vector>

namespace orvane::cli {

SessionInfo sessionNamed(const SessionStore& store, const std::string& words) {
    const auto sessions = store.list();
    const std::string wanted = platform::text::uppercased(words);
    std::vector<SessionInfo> found;
    for (const SessionInfo& info : sessions) {
        if (info.id.text() == wanted) return info;
        if (info.id.text().starts_with(wanted) || info.name == words) found.push_back(info);
    }
    // A session whose record can't be read is in no list.
    if (const auto id = UUID::fromText(wanted); id && found.empty() && store.exists(*id)) return {.id = *id};
    if (words.empty() || found.empty()) throw CommandError("there is no session '" + words + "'");
    if (found.size() > 1)
        throw CommandError("'" + words + "' means " + std::to_string(found.size()) +
                           " sessions; orvanesync session list shows their ids");
    return found.front();
}

OpenSession::OpenSession(const Context& context, const SessionStore& store, SessionInfo info)
    : info_(std::move(info)), loop_(platform::RunLoop::create()) {
    const auto folders = store.readFolders(info_.id);
    if (folders.problem) context.warn(*folders.problem);
    folders_ = folders.record.value_or(SessionFolders{});
    auto read = store.readGroups(info_.id);
    if (read.problem) throw CommandError(*read.problem);
    ImportController::Dependencies dependencies;
    dependencies.mainThread = loop_;
    dependencies.settings = context.settings;
    dependencies.clock = context.clock;
    dependencies.stems = context.openStems();
    controller_ = ImportController::create(std::move(dependencies));
    auto wildTracks = store.readWildTracks(info_.id);
    if (wildTracks.problem) context.warn(*wildTracks.problem);
    controller_->openStoredWork({folders_.videoFolder, folders_.audioFolder, std::move(read.groups),
                                 std::move(wildTracks.record).value_or(std::vector<WildTrack>()),
                                 folders_.scope, folders_.corrections, folders_.matchedBy});
}

void OpenSession::wait(const platform::Task& operation) const {
    if (!operation.isDone()) runUntilDone(*loop_, operation);
}

const SyncGroup& OpenSession::clipNamed(const std::string& words) const {
    const auto names = controller_->work().displayNames();
    const auto id = UUID::fromText(words);
    std::vector<const SyncGroup*> found;
    for (const SyncGroup& group : controller_->work().syncGroups()) {
        const std::string& file = group.video.filename;
        if (id == group.id || names.at(group.id) == words || file == words ||
            FilenameUtils::withoutExtension(file) == words)
            found.push_back(&group);
    }
    if (found.empty()) throw CommandError("the session has no clip '" + words + "'");
    if (found.size() > 1)
        throw CommandError("'" + words + "' means " + std::to_string(found.size()) +
                           " clips of the session; name the camera file, or the clip's id");
    return *found.front();
}

} // namespace orvane::cli
