#include "OrvaneSyncCore/Services/Persistence/SessionGroupsWriter.h"

#include "OrvaneSyncCore/Services/Persistence/Rewriting.h"
#include "Platform/FileLock.h"

#include <utility>

namespace orvane {

namespace files = platform::files;

namespace {

/// Equal elements mean equal clips: an element never changes.
bool areSame(const SyncGroupList& a, const SyncGroupList& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (a.element(i) != b.element(i)) return false;
    return true;
}

} // namespace

void SessionGroupsWriter::opened(const UUID& id, const SessionStore::Groups& read) {
    Open session;
    session.file = read.file;
    session.isUnreadable = read.problem.has_value();
    if (read.file && !read.problem) session.onDisk = read.groups;
    open_[id] = std::move(session);
}

SessionGroupsWriter::Written SessionGroupsWriter::write(const UUID& id, const SyncGroupList& groups,
                                                        bool isEmptiedByEdit) {
    Open& session = open_[id];
    const std::string path = store_.groupsPath(id);
    if (session.onDisk && areSame(*session.onDisk, groups))
        if (const auto there = files::attributes(path))
            return {.areOutdated = !session.file || !there->isUnchangedSince(*session.file)};

    const std::string folder = store_.folderOf(id);
    const platform::FileLock lock = platform::FileLock::ofFolder(folder);
    if (!session.isTidied) files::removeAbandonedTemporaries(folder);
    session.isTidied = true;
    keepUnknown(session, path, groups.empty() && !isEmptiedByEdit);
    files::writeAtomically(path, session.encoder.encode(groups));
    session.file = files::attributes(path);
    session.onDisk = groups;
    return {.kept = std::exchange(session.kept, std::nullopt)};
}

/// Afterwards the work of both sides is on the disk. The kept file is reported with the first write that
/// succeeds.
void SessionGroupsWriter::keepUnknown(Open& session, const std::string& path, bool isReplacedByNone) {
    const auto there = files::attributes(path);
    if (!there) return;
    const auto keepAs = [&](std::string_view reason, const std::string& kept) {
        session.kept = std::string(reason) + " kept as " + kept;
    };
    const auto keep = [&](std::string_view reason) {
        keepAs(reason, files::keepBeside(path, files::otherSuffix));
    };
    // Another process may have written valid clips since this one found an unreadable file.
    if (!session.file || !there->isUnchangedSince(*session.file))
        keep("Another program has changed this session; its clips were");
    else if (session.isUnreadable)
        keepAs("The clips of this session could not be read; their file was",
               files::keepBeside(path, files::unreadableSuffix));
    else if (isReplacedByNone && session.onDisk && !session.onDisk->empty())
        keep("This session was saved without any clips; those it had were");
    else if (!session.isUnderstood && session.onDisk &&
             losesSomething(files::readText(path), session.encoder.encode(*session.onDisk)))
        keep("The clips of this session hold what this version does not know; their file was");
    session.isUnderstood = true;
    session.isUnreadable = false;
    session.file = there;
}

} // namespace orvane
