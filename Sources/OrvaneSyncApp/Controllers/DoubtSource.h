#pragma once

#include "OrvaneSyncApp/Controllers/WorkFiles.h"
#include "OrvaneSyncCore/Models/ExportKinds.h"
#include "OrvaneSyncCore/Services/Diagnosis/SyncDoubts.h"
#include "OrvaneSyncCore/Services/Diagnosis/UnmatchedReasons.h"
#include "OrvaneSyncCore/Services/Waveform/SoundLag.h"
#include "Platform/SettingsStore.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace orvane {

/// The path of a folder with all links followed, as files found in it have it.
FileURL realFolder(const FileURL& folder);

/// The settings that doubts depend on.
struct DoubtSettings {
    TrimMode trimMode;
    std::optional<int> timecodeChannel; ///< as in `DoubtInput`

    static DoubtSettings of(const platform::SettingsStore& store);
    bool operator==(const DoubtSettings&) const = default;
};

/// All data that doubts are derived from, at one moment. Shared with the work; any thread.
struct DoubtSource {
    WorkFiles files;
    MatchRules rules; ///< the clips were matched by these
    DoubtSettings settings;
    SmartAudioResults smartAudioResults;
    std::shared_ptr<const HeardSound> heard; ///< null: nothing was listened to
    std::vector<FileURL> folders;            ///< of the scan

    /// `names`: the names of these files. Throws Stopped.
    SyncDoubts doubts(const FileNames& names, const std::stop_token& stop = {}) const;
    /// As `CureTrial::helps`; `doubts` and `names` are those of these files. Throws Stopped.
    bool helps(const CardDoubt& doubt, const SyncDoubts& doubts, const FileNames& names,
               const std::stop_token& stop = {}) const;
    UnmatchedReasons unmatchedReasons() const;
    /// What the microphones of the cameras heard. Reads the files; not on the interface thread. See
    /// `SoundLag::heardWithNeighbours`.
    HeardSound listen(std::vector<SoundLag::Pair> pairs, const std::stop_token& stop,
                      const std::function<void(std::size_t done)>& progress) const;

  private:
    std::vector<FileURL> realFolders() const;
    /// The arguments and this object must outlive it.
    DoubtInput input(const std::vector<MediaAsset>& recordings, const FileNames& names) const;
    std::vector<SoundClaim> claims(const std::vector<MediaAsset>& recordings,
                                   const std::stop_token& stop) const;
    /// All recordings of the work; without a scan, they are collected in `gathered`.
    const std::vector<MediaAsset>& recordings(std::vector<MediaAsset>& gathered) const;
};

} // namespace orvane
