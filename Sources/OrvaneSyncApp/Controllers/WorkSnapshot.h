#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncCore/Services/Diagnosis/UnmatchedReasons.h"

#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <unordered_set>
#include <vector>

namespace orvane {

/// All that is said of the open work, as it is at one moment, to be said on another thread. Shares what
/// the work holds, so that it costs little to make. What it derives from that, it derives when it is asked:
/// one thread at a time.
class WorkSnapshot {
  public:
    /// Interface thread.
    explicit WorkSnapshot(const ImportController& controller);

    const SyncGroupList& groups() const { return source_.files.groups; }
    /// The recordings of the scan, without one those of the clips and wild tracks.
    std::vector<const MediaAsset*> audioPool() const { return source_.files.audioPool(); }
    const std::vector<WildTrack>& wildTracks() const { return *source_.files.wildTracks; }
    const MatchRules& matchRules() const { return source_.rules; }
    const SmartAudioResults& smartAudioResults() const { return source_.smartAudioResults; }
    const platform::SettingsStore& settings() const { return *settings_; }
    /// As the last scan had them; null without one.
    const std::shared_ptr<const ScanResult>& scanResult() const { return source_.files.scanned; }

    std::vector<FileURL> folders;
    ScanState scanState;
    std::shared_ptr<const DiscoveryResult> discoveryResult;
    SourceCorrections sourceCorrections;
    std::shared_ptr<const ALEFile> aleFile;
    std::optional<std::string> aleMatchStatus, aleImportError;
    std::unordered_set<UUID> passedOver;               ///< as SmartAudioState has them
    std::vector<FileURL> clipsNotFound, tracksLeftOut; ///< as ProjectController has them

    const FileNames& fileNames() const;
    const DisplayNames& displayNames() const;
    /// Throws Stopped.
    const SyncDoubts& doubts(const std::stop_token& stop = {}) const;
    /// Whether the first way of its cure does, as `CureTrial::helps`. Matches; throws Stopped.
    bool helps(const CardDoubt& doubt, const std::stop_token& stop = {}) const;
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
