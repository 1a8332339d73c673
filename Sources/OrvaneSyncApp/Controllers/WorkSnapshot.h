#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncCore/Services/Diagnosis/NotCompared.h"
#include "OrvaneSyncCore/Services/Diagnosis/UnmatchedReasons.h"

#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <unordered_set>
#include <vector>

namespace orvane {

/// A copy of the open work at one moment, for use on another thread. Shares the contents of the work, so it
/// costs little to make. Derived values are made at the first request: one thread at a time.
class WorkSnapshot {
  public:
    /// Interface thread.
    explicit WorkSnapshot(const ImportController& controller);

    const SyncGroupList& groups() const { return source_.files.groups; }
    /// The recordings of the scan; without one, those of the clips and wild tracks.
    std::vector<const MediaAsset*> audioPool() const { return source_.files.audioPool(); }
    const std::vector<WildTrack>& wildTracks() const { return *source_.files.wildTracks; }
    const MatchRules& matchRules() const { return source_.rules; }
    const SmartAudioResults& smartAudioResults() const { return source_.smartAudioResults; }
    const platform::SettingsStore& settings() const { return *settings_; }
    /// That of the last scan; null without one.
    const std::shared_ptr<const ScanResult>& scanResult() const { return source_.files.scanned; }

    std::vector<FileURL> folders;
    ScanState scanState;
    std::shared_ptr<const DiscoveryResult> discoveryResult;
    SourceCorrections sourceCorrections;
    std::shared_ptr<const ALEFile> aleFile;
    std::optional<std::string> aleMatchStatus, aleImportError;
    std::unordered_set<UUID> passedOver;                                 ///< as in SmartAudioState
    std::vector<FileURL> clipsNotFound, tracksLeftOut, copiesNotApplied; ///< as in ProjectController

    const FileNames& fileNames() const;
    const DisplayNames& displayNames() const;
    /// Throws Stopped.
    const SyncDoubts& doubts(const std::stop_token& stop = {}) const;
    /// The doubts of the same work if nothing had been listened to, as a program has them that does not
    /// listen. Throws Stopped.
    SyncDoubts doubtsByTimecode(const std::stop_token& stop = {}) const;
    bool wasListenedTo() const { return source_.heard != nullptr; }
    /// Whether the first option of the doubt's cure helps; see `CureTrial::helps`. Matches the clips; throws
    /// Stopped.
    bool helps(const CardDoubt& doubt, const std::stop_token& stop = {}) const;
    /// As the last listening left it.
    NotCompared notCompared() const { return NotCompared::of(groups(), source_.heard.get(), doubts()); }
    OpenWork::Counts counts() const { return OpenWork::Counts::of(groups()); }
    /// Why clips have no sound and recordings no clip.
    UnmatchedReasons unmatchedReasons() const;

  private:
    std::shared_ptr<const platform::SettingsStore> settings_;
    DoubtSource source_;
    NamingRules namingRules_;
    mutable std::optional<FileNames> fileNames_;
    mutable std::shared_ptr<const DisplayNames> displayNames_;
    mutable std::shared_ptr<const SyncDoubts> doubts_;
};

} // namespace orvane
