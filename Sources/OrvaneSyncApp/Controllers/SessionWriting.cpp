#include "OrvaneSyncApp/Controllers/SessionWriting.h"

#include "OrvaneSyncCore/Services/Takes/TakeDecisions.h"
#include "Platform/Stop.h"

#include <exception>
#include <string_view>
#include <utility>

namespace orvane {

namespace {

/// If one file cannot be written, the others are still written.
template <class Operation>
void attempt(std::vector<std::string>& failures, std::string_view file, const Operation& write) {
    try {
        write();
    } catch (const std::exception& error) {
        failures.push_back(std::string(file) + ": " + error.what());
    }
}

} // namespace

void SessionWork::changesAll() {
    folders.hasVideo = folders.hasAudio = folders.hasScope = folders.hasCorrections = true;
    wildTracks.known.reset();
}

std::optional<StoredSession> readStoredSession(const SessionStore& store, const UUID& id,
                                               const std::stop_token& stop) {
    if (!store.exists(id)) return std::nullopt;
    StoredSession session{store.readGroups(id, stop), store.readFolders(id), store.readWildTracks(id, stop),
                          store.readInfo(id), store.readFolderInfos()};
    platform::throwIfStopped(stop);
    session.groups.groups.updateWhere(countsTakesSeparately, countTakesTogether);
    return session;
}

void writeSessionWork(const SessionStore& store, SessionGroupsWriter& writer, const UUID& id,
                      const UnwrittenSession& data, SessionWriteOutcome& outcome) {
    outcome.isDeleted = (!data.work || !data.isChanged) && store.isDeleted(id);
    if (outcome.isDeleted || !data.work) return;
    attempt(outcome.failures, "groups.json", [&] {
        store.create(id); // another process may have deleted it in the meantime
        if (data.work->leavesClipsAlone) return;
        auto written = writer.write(id, data.work->groups, data.work->isEmptiedByEdit);
        if (written.kept) outcome.kept.push_back(std::move(*written.kept));
        outcome.areClipsOutdated = written.areOutdated;
    });
    const WildTracksChange& wildTracks = data.work->wildTracks;
    if (!wildTracks.isEmpty() || !store.hasWildTracks(id))
        attempt(outcome.failures, "wild_tracks.json", [&] {
            auto changed = store.changeWildTracks(id, wildTracks, outcome.areClipsOutdated);
            if (changed.kept) outcome.kept.push_back(std::move(*changed.kept));
        });
    const SessionFoldersChange& change = data.work->folders;
    auto onDisk = store.readFolders(id);
    outcome.folders = std::move(onDisk.record);
    // If the user has not chosen other folders, the file stays as it is, even if it can't be read.
    if (change.isEmpty() && (outcome.folders || onDisk.problem)) return;
    attempt(outcome.failures, "folders.json", [&] {
        auto changed = store.changeFolders(id, change);
        if (changed.kept) outcome.kept.push_back(std::move(*changed.kept));
        outcome.folders = std::move(changed.record);
    });
}

/// If another process has changed the session's clips, writes only what was decided in this process. A name
/// made from the folders is made from those on the disk.
void writeSessionRecord(const SessionStore& store, const UnwrittenSession& data,
                        SessionWriteOutcome& outcome) {
    if (outcome.isDeleted) return;
    const bool isOfFolders = data.work && !data.work->folders.isEmpty();
    auto change = outcome.areClipsOutdated && !isOfFolders ? data.change.decisions() : data.change;
    if (!change) return;
    if (outcome.areClipsOutdated) change->counts.reset();
    if (change->derivedName && outcome.folders)
        change->derivedName = defaultName(*outcome.folders, change->modified.value_or(Date{}));
    attempt(outcome.failures, "session.json", [&] {
        auto changed = store.changeInfo(data.info, *change);
        if (changed.kept) outcome.kept.push_back(std::move(*changed.kept));
        outcome.info = std::move(changed.record);
    });
}

} // namespace orvane
