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

/// The open work as everybody reads it, with what is derived of its clips. Interface thread.
class WorkState {
  public:
    using Environment = WorkEnvironment;
    const Environment environment;

    const std::optional<FileURL>& videoFolderURL() const { return videoFolderURL_; }
    const std::optional<FileURL>& audioFolderURL() const { return audioFolderURL_; }
    const ScanScope& scanScope() const { return scanScope_; }
    /// All that a scan reads, each once: first the video folder, then the audio folder, then the others.
    std::vector<FileURL> folders() const;
    /// What the next matching of all clips goes by, and the days where the work has some of its own.
    const SourceCorrections& sourceCorrections() const { return sourceCorrections_; }
    /// The same with the days: those of the work, unless the setting was changed since it has them.
    SourceCorrections nextCorrections() const;
    /// By what the clips that there are were matched, whatever corrections and settings say by now.
    const MatchRules& matchRules() const { return matchedBy_.rules; }
    /// What a file has to keep of the next corrections, and of those by which the clips were matched where
    /// they are others. The standard days are left out.
    SourceCorrections keptCorrections() const;
    std::optional<SourceCorrections> keptMatchedBy() const;
    /// What an opened project says that belongs to no clip; null: nothing.
    const std::shared_ptr<const ProjectEntries>& projectEntries() const { return projectEntries_; }
    const SyncGroupList& syncGroups() const { return syncGroups_; }
    /// Null when there is no such clip, or it is locked.
    const SyncGroup* unlockedGroup(const UUID& groupID) const;
    /// Audio that no video claims, room tone included.
    const std::vector<WildTrack>& wildTracks() const { return *wildTracks_; }
    /// The same for a caller that keeps them: never changed, and another one after every change.
    const std::shared_ptr<const std::vector<WildTrack>>& sharedWildTracks() const { return wildTracks_; }
    /// There are no clips because the editor took the last one out, and not because nothing is open or found.
    bool isEmptiedByEdit() const { return isEmptiedByEdit_; }
    /// Differs after every change but those of the clips, of what is derived from them, of the steps to take
    /// back, and of a progress.
    std::uint64_t revisionBesidesClips() const { return revisionBesidesClips_; }

    /// Of the clips that are settled.
    struct Counts {
        int withSound = 0, withoutSound = 0;
        int excludedWithSound = 0, excludedWithoutSound = 0; ///< those of them that are left out of exports

        static Counts of(const SyncGroupList& groups); ///< any thread
    };
    int matchedCount() const { return syncClipCount() + mosCount(); } ///< settled clips, without audio too
    int unmatchedCount() const;                                       ///< ambiguous and unmatched ones
    const Counts& counts() const;
    int syncClipCount() const { return counts().withSound; } ///< settled clips with audio
    int mosCount() const { return counts().withoutSound; }   ///< settled clips without audio
    /// The name of every clip in Final Cut, by group, by the naming settings. Valid until these or the clips
    /// change.
    const DisplayNames& displayNames() const;
    /// The same for a caller that keeps them; null where nobody has asked for them since they may have
    /// changed.
    std::shared_ptr<const DisplayNames> displayNamesIfMade() const;
    /// What to call the files of the clips and wild tracks. Valid until these change.
    const FileNames& fileNames() const;
    /// Where in the list of clips the audio is used, ascending. Valid until the clips change.
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
    std::uint64_t revisionBesidesClips_ = 0;
    SyncGroupList syncGroups_;
    WildTracks wildTracks_ = std::make_shared<const std::vector<WildTrack>>();
    bool isEmptiedByEdit_ = false;

  private:
    /// Absent until somebody asks.
    mutable std::optional<std::unordered_map<UUID, std::vector<std::size_t>>> clipsByAudio_;
    mutable DerivedFromClips<Counts> counts_;
    mutable DerivedFromClips<FileNames> fileNames_;
    mutable WildTracks wildTracksInNames_; ///< in `fileNames_`
    mutable DerivedFromClips<DisplayNames> displayNames_;
    mutable std::optional<NamingRules> namedBy_; ///< `displayNames_`
};

} // namespace orvane
