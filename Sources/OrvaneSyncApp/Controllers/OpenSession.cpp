#include "OrvaneSyncApp/Controllers/OpenSession.h"

#include "Platform/Text.h"

#include <algorithm>
#include <utility>

namespace orvane {

namespace {

/// Whether `inner` is the same folder as `outer`, or inside it.
bool isFolderWithin(const FileURL& inner, const FileURL& outer) {
    return inner == outer ||
           inner.path.starts_with(outer.path.ends_with('/') ? outer.path : outer.path + "/");
}

} // namespace

std::vector<FileURL> allFolders(const SessionFolders& media) {
    std::vector<FileURL> all = media.scope.moreFolders;
    for (const auto& one : {media.videoFolder, media.audioFolder})
        if (one) all.push_back(*one);
    return all;
}

/// If files of this session were kept during a save before it was opened, this is still to be reported.
void OpenSession::become(std::optional<UUID> session) {
    OpenSession other;
    other.id = session;
    if (session && keptOf == session) {
        other.keptProblem = std::move(keptProblem);
        other.keptOf = session;
    }
    *this = std::move(other);
}

void OpenSession::isRead(const StoredSession& read) {
    folders = read.folders.record.value_or(SessionFolders{});
    wildTracks = std::make_shared<const std::vector<WildTrack>>(
        read.wildTracks.record.value_or(std::vector<WildTrack>()));
    areFoldersUnreadable = read.folders.problem.has_value();
    for (const auto& one :
         {read.info.problem, read.folders.problem, read.wildTracks.problem, read.groups.problem})
        if (one) openingProblem = openingProblem ? *openingProblem + "; " + *one : *one;
}

void OpenSession::isWritten(const SessionWork& work) {
    folders = work.folders.folders;
    wildTracks = work.wildTracks.tracks;
    areFoldersUnreadable = areFoldersUnreadable && work.folders.isEmpty();
    isOfCopy = false;
    deletionProblem.reset();
}

std::optional<std::string> OpenSession::problem(const std::optional<std::string>& ofLists) const {
    std::vector<std::string> parts;
    for (const auto& part : {ofLists, openingProblem, deletionProblem, keptProblem})
        if (part) parts.push_back(*part);
    return parts.empty() ? std::nullopt : std::optional(platform::text::joined(parts, "; "));
}

/// Folders change only if the user chooses others: if the work has no folders, those of the session stay. A
/// bookmark, written on another platform, is removed together with the path that it was made from.
SessionWork OpenSession::workOf(const ImportController& controller) const {
    const OpenWork& open = controller.work();
    SessionWork work{
        .groups = open.syncGroups(),
        .isEmptiedByEdit = open.isEmptiedByEdit(),
        .folders = {.folders = folders},
        .wildTracks = {open.sharedWildTracks(), wildTracks},
    };
    const auto& video = open.videoFolderURL();
    const auto& audio = open.audioFolderURL();
    SessionFoldersChange& change = work.folders;
    change.hasVideo = video && video != folders.videoFolder;
    change.hasAudio = audio && audio != folders.audioFolder;
    if (change.hasVideo) {
        change.folders.videoFolder = video;
        change.folders.videoBookmark.reset();
    }
    if (change.hasAudio) {
        change.folders.audioFolder = audio;
        change.folders.audioBookmark.reset();
    }
    const ScanScope& scope = open.scanScope();
    change.hasScope = !open.folders().empty() && scope != folders.scope;
    if (change.hasScope) change.folders.scope = scope;
    const SourceCorrections corrections = open.keptCorrections();
    const auto matchedBy = open.keptMatchedBy();
    change.hasCorrections =
        !open.folders().empty() && (corrections != folders.corrections || matchedBy != folders.matchedBy);
    if (change.hasCorrections) {
        change.folders.corrections = corrections;
        change.folders.matchedBy = matchedBy;
    }
    if (isOfCopy) {
        const SessionFoldersChange chosen = change;
        work.changesAll();
        // A copy without readable folders leaves those of the own store.
        if (folders == SessionFolders{}) work.folders = chosen;
    }
    return work;
}

SessionInfoChange OpenSession::changeBySave(const SessionWork& work, std::optional<std::string> name,
                                            Date now) const {
    SessionInfoChange change{.modified = now};
    if (name && platform::text::trimmed(*name).empty()) name.reset();
    // If the session's folders could not be read, it keeps the name that was made from them.
    if (!name && (!areFoldersUnreadable || !work.folders.isEmpty()))
        change.derivedName = defaultName(work.folders.folders, now);
    if (name) change.nameAutoDerived = false;
    change.name = std::move(name);
    if (work.leavesClipsAlone) return change;
    const SyncGroupList& groups = work.groups;
    change.counts = {static_cast<int>(groups.size()),
                     static_cast<int>(std::count_if(groups.begin(), groups.end(),
                                                    [](const SyncGroup& group) { return group.isLocked; }))};
    return change;
}

bool OpenSession::isElsewhere(const std::vector<FileURL>& others) const {
    return std::ranges::none_of(allFolders(folders), [&](const FileURL& known) {
        return std::ranges::any_of(others, [&](const FileURL& other) {
            return isFolderWithin(other, known) || isFolderWithin(known, other);
        });
    });
}

} // namespace orvane
