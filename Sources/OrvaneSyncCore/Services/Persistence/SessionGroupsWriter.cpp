#include "OrvaneSyncCore/Services/Persistence/SessionGroupsWriter.h"

#include "Platform/FileLock.h"

namespace orvane {

namespace files = platform::files;

namespace {

/// The same elements, and so the same clips: an element never changes.
bool areSame(const SyncGroupList& a, const SyncGroupList& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (a.element(i) != b.element(i)) return false;
    return true;
}

bool isSameFile(const platform::FileAttributes& a, const platform::FileAttributes& b) {
    return a.identity == b.identity && a.size == b.size &&
           a.modificationSinceReference == b.modificationSinceReference;
}

} // namespace

void SessionGroupsWriter::opened(const UUID& id, const SessionStore::Groups& read) {
    Open session;
    session.file = read.file;
    session.isUnreadable = read.problem.has_value();
    if (read.file && !read.problem) session.onDisk = read.groups;
    open_[id] = std::move(session);
}

std::optional<std::string> SessionGroupsWriter::write(const UUID& id, const SyncGroupList& groups) {
    Open& session = open_[id];
    const std::string path = store_.groupsPath(id);
    if (session.onDisk && areSame(*session.onDisk, groups) && files::exists(path)) return std::nullopt;

    const std::string text = session.encoder.encode(groups);
    const std::string folder = store_.folderOf(id);
    const platform::FileLock lock = platform::FileLock::ofFolder(folder);
    if (!session.isTidied) files::removeAbandonedTemporaries(folder);
    session.isTidied = true;
    auto kept = keepUnknown(session, path);
    files::writeAtomically(path, text);
    session.file = files::attributes(path);
    session.onDisk = groups;
    return kept;
}

/// A file that can't be read is kept for good. Of another process's clips the latest are kept, so that two
/// that take turns do not fill the disk: either way both sides' work is there.
std::optional<std::string> SessionGroupsWriter::keepUnknown(Open& session, const std::string& path) const {
    const auto there = files::attributes(path);
    if (!there) return std::nullopt;
    const bool isKnown = session.file && isSameFile(*session.file, *there);
    if (isKnown && !session.isUnreadable) return std::nullopt;
    const std::string kept = session.isUnreadable ? files::unreadableName(path) : path + ".other";
    files::keepAs(path, kept);
    const std::string said = session.isUnreadable
                                 ? "The clips of this session could not be read; their file was kept as "
                                 : "Another program has changed this session; its clips were kept as ";
    session.isUnreadable = false;
    session.file = there;
    return said + kept;
}

} // namespace orvane
