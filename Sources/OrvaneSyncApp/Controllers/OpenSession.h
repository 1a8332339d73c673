#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncApp/Controllers/SessionWriting.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// The open session: what this process last read or wrote of it, from which a save determines what has
/// changed, and its messages for people. Interface thread.
struct OpenSession {
    std::optional<UUID> id; ///< absent: none is open
    SessionFolders folders; ///< of media
    WildTracksChange::Tracks wildTracks;
    bool areFoldersUnreadable = false;
    bool isOfCopy = false; ///< read from a copy elsewhere, and not written to the own store yet
    // The shown problem is built from these and from the problems of the lists.
    std::optional<std::string> openingProblem; ///< what of the session could not be read
    std::optional<std::string> deletionProblem;
    std::optional<std::string> keptProblem; ///< the files that were kept most recently
    std::optional<UUID> keptOf; ///< the session that these files belong to; absent: the list of folders

    bool has(const UUID& session) const { return id == session; }
    /// Another session is open; absent: none.
    void become(std::optional<UUID> session);
    void isRead(const StoredSession& read);
    void isWritten(const SessionWork& work);
    std::optional<std::string> problem(const std::optional<std::string>& ofLists) const;

    SessionWork workOf(const ImportController& controller) const;
    /// `name`: a name that the user gives; blank: none.
    SessionInfoChange changeBySave(const SessionWork& work, std::optional<std::string> name, Date now) const;
    /// Whether these folders have nothing in common with those of the session: no folder is the same as one
    /// of the others, inside it or around it.
    bool isElsewhere(const std::vector<FileURL>& others) const;
};

/// All folders of a session's media.
std::vector<FileURL> allFolders(const SessionFolders& media);

} // namespace orvane
