#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncApp/Controllers/SessionWriting.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// The open session: what this process last read or wrote of it, by which a save says what has changed, and
/// what people should know of it. Interface thread.
struct OpenSession {
    std::optional<UUID> id; ///< absent: none is open
    SessionFolders folders; ///< of media
    WildTracksChange::Tracks wildTracks;
    bool areFoldersUnreadable = false;
    // Of which the problem is put together, with that of the list of folders.
    std::optional<std::string> openingProblem; ///< what of it could not be read
    std::optional<std::string> deletionProblem;
    std::optional<std::string> keptProblem; ///< the files that were kept last
    std::optional<UUID> keptOf;             ///< the session whose files they are; absent: the list of folders

    bool has(const UUID& session) const { return id == session; }
    /// Another one is open; absent: none.
    void become(std::optional<UUID> session);
    void isRead(const StoredSession& read);
    void isWritten(const SessionWork& work);
    std::optional<std::string> problem(const std::optional<std::string>& ofFolderList) const;

    SessionWork workOf(const ImportController& controller) const;
    /// `name`: one that somebody gives; blank: none.
    SessionInfoChange changeBySave(const SessionWork& work, std::optional<std::string> name, Date now) const;
    /// Whether these folders have nothing in common with those of the session: none is the same as one of
    /// these, lies in it or has it in it.
    bool isElsewhere(const std::vector<FileURL>& others) const;
};

/// Where the media of a session lay, all of it.
std::vector<FileURL> allFolders(const SessionFolders& media);

} // namespace orvane
