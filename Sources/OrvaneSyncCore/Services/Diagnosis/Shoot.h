#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/SyncDoubts.h"
#include "OrvaneSyncCore/Services/Matching/RecorderFolders.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Matching/WholeRecordings.h"

#include <cstddef>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orvane {

struct Take;

/// The files of a work, each with its place computed once. One thread at a time.
struct Shoot {
    struct Clip {
        const SyncGroup* group;
        std::optional<FilePlace> place;
        /// Index in `recordings` of the first match; absent for a clip without sound, and for sound without a
        /// place.
        std::optional<std::size_t> primary;
        bool isDecided = false; ///< the editor decided which recording it has, so there is no doubt about it
        bool isCovered = false; ///< `isCovered` of its group
        /// Its first recording was attached by hand and not moved, and the two have no common timecode that
        /// gives its place.
        bool isUnplaced = false;
        /// A recording without a start, from a recorder that knows the time. It may have begun at midnight
        /// under this clip (`Places::midnightOffset`). Only for a clip that is not covered and does not have
        /// this recording.
        const MediaAsset* atMidnight = nullptr;

        std::optional<long> likelyDay() const { return place->likelyDay(); }
        /// Its place on its likely day.
        FilePlace likelyPlace() const {
            FilePlace likely = *place;
            likely.day = likely.likelyDay();
            return likely;
        }
    };

    explicit Shoot(const DoubtInput& theInput, const std::stop_token& theStop);

    const DoubtInput& input;
    const std::stop_token& stop;
    std::vector<Clip> clips; ///< in the order of the groups
    std::vector<Recording> recordings;
    std::unordered_map<UUID, std::size_t> recordingByID; ///< index in `recordings`
    /// Known for all recordings, also for those without a place in time.
    RecorderFolders recorderFolders;
    std::string_view recorderOf(const MediaAsset& recording) const { return recorderFolders.of(recording); }
    /// What is searched for under a clip: a take that was cut into several files counts as one.
    WholeRecordings wholes;
    /// By the first file of each whole recording: whether a clip has a part of it.
    std::vector<bool> usedWholes() const;

    struct File {
        const MediaAsset* asset;
        std::size_t folder; ///< index in `folders`
    };
    std::vector<File> files;                   ///< the clips', then the recordings
    std::vector<std::string_view> folders;     ///< that have files directly in them; sorted by bytes, with a
                                               ///< slash at the end
    std::vector<std::size_t> recordingFolders; ///< by number of a recording: index in `folders`

    std::string nameOf(const MediaAsset& asset) const { return "'" + input.names.of(asset) + "'"; }

  private:
    void listFiles();
};

/// The longest overlap that one channel of the take has with the clip, all parts of the channel together.
double heardSeconds(const SyncGroup& group, const Take& take);

/// The path without the file's name and the slash before it.
std::string_view folderOf(const MediaAsset& asset);

} // namespace orvane
