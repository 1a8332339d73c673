#pragma once

#include "OrvaneSyncApp/Controllers/DerivedFromClips.h"
#include "OrvaneSyncApp/Controllers/MatchedBy.h"
#include "OrvaneSyncApp/Controllers/WorkEnvironment.h"
#include "OrvaneSyncApp/Controllers/WorkFiles.h"
#include "OrvaneSyncCore/Models/ExportKinds.h"
#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Models/ScanScope.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Models/WildTrack.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

namespace orvane {

struct ProjectEntries;

/// The open work for reading, with what is derived from its clips. Interface thread.
class WorkState {
  public:
    using Environment = WorkEnvironment;
    const Environment environment;

    const std::optional<FileURL>& videoFolderURL() const { return videoFolderURL_; }
    const std::optional<FileURL>& audioFolderURL() const { return audioFolderURL_; }
    const ScanScope& scanScope() const { return scanScope_; }
    /// All folders that a scan reads, each once: first the video folder, then the audio folder, then the
    /// others.
    std::vector<FileURL> folders() const;
    /// The corrections for the next matching of all clips, with the work's days if it has its own.
    const SourceCorrections& sourceCorrections() const { return sourceCorrections_; }
    /// The same with the days: those of the work, unless the setting was changed after they were set.
    SourceCorrections nextCorrections() const;
    /// The rules by which the present clips were matched, whatever the corrections and settings are.
    const MatchRules& matchRules() const { return matchedBy_.rules; }
    /// What a file has to store of the next corrections, and of those by which the clips were matched if they
    /// differ. The standard days are left out.
    SourceCorrections keptCorrections() const;
    std::optional<SourceCorrections> keptMatchedBy() const;
    /// The parts of an opened project that belong to no clip; null: none.
    const std::shared_ptr<const ProjectEntries>& projectEntries() const { return projectEntries_; }
    const SyncGroupList& syncGroups() const { return syncGroups_; }
    /// Null if there is no such clip, or it is locked.
    const SyncGroup* unlockedGroup(const UUID& groupID) const;
    /// Audio that no video uses, including room tone.
    const std::vector<WildTrack>& wildTracks() const { return *wildTracks_; }
    /// The same for a caller that keeps them: the object never changes, and every change makes another one.
    const std::shared_ptr<const std::vector<WildTrack>>& sharedWildTracks() const { return wildTracks_; }
    /// There are no clips because the editor removed the last one, not because nothing is open or was found.
    bool isEmptiedByEdit() const { return isEmptiedByEdit_; }
    /// Changes with the folders, the result of the scan, the wild tracks and the results of Smart Audio: what
    /// doubts are derived from besides the clips, the rules and the settings.
    std::uint64_t doubtInputsRevision() const { return doubtInputsRevision_; }

    /// Of the clips that are settled.
    struct Counts {
        int withSound = 0, withoutSound = 0;
        int excludedWithSound = 0, excludedWithoutSound = 0; ///< those of them that are excluded from exports

        static Counts of(const SyncGroupList& groups); ///< any thread
    };
    int matchedCount() const { return syncClipCount() + mosCount(); } ///< settled clips, without audio too
    int unmatchedCount() const;                                       ///< ambiguous and unmatched ones
    const Counts& counts() const;
    int syncClipCount() const { return counts().withSound; } ///< settled clips with audio
    int mosCount() const { return counts().withoutSound; }   ///< settled clips without audio
    /// The name of every clip in Final Cut, by group, made with the naming settings. Valid until these or the
    /// clips change.
    const DisplayNames& displayNames() const;
    /// The same for a caller that keeps them; null if they may have changed since they were last requested.
    std::shared_ptr<const DisplayNames> displayNamesIfMade() const;
    /// The names of the files of the clips and wild tracks for messages. Valid until these change.
    const FileNames& fileNames() const;
    /// The indices in the list of clips that use the audio, ascending. Valid until the clips change.
    const std::vector<std::size_t>& clipsUsing(const UUID& audioID) const;

  protected: // for OpenWork, which changes it
    explicit WorkState(Environment theEnvironment) : environment(std::move(theEnvironment)) {}
    ~WorkState() = default;
    void assertOnMainThread() const;
    void forgetClipPlaces() { clipsByAudio_.reset(); } ///< after every change of the clips

    using WildTracks = std::shared_ptr<const std::vector<WildTrack>>;
    std::optional<FileURL> videoFolderURL_;
    std::optional<FileURL> audioFolderURL_;
    ScanScope scanScope_;
    SourceCorrections sourceCorrections_;
    MatchingDays daysOfSetting_ = MatchingDays::automatic; ///< when the corrections were taken
    MatchedBy matchedBy_;
    std::shared_ptr<const ProjectEntries> projectEntries_;
    std::uint64_t doubtInputsRevision_ = 0;
    SyncGroupList syncGroups_;
    WildTracks wildTracks_ = std::make_shared<const std::vector<WildTrack>>();
    bool isEmptiedByEdit_ = false;

  private:
    /// Absent until the first request.
    mutable std::optional<std::unordered_map<UUID, std::vector<std::size_t>>> clipsByAudio_;
    mutable DerivedFromClips<Counts> counts_;
    mutable DerivedFromClips<FileNames> fileNames_;
    mutable WildTracks wildTracksInNames_; ///< those in `fileNames_`
    mutable DerivedFromClips<DisplayNames> displayNames_;
    mutable std::optional<NamingRules> namedBy_; ///< those that made `displayNames_`
};

} // namespace orvane
