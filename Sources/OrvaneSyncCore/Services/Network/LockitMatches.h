#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Network/LockitFields.h"

#include <memory>
#include <stop_token>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvane {

/// The metadata that a sync has applied to the clips so far, and their metadata before. A plain value; copies
/// are independent. Any thread.
class LockitLayer {
  public:
    explicit LockitLayer(SyncGroupList before) : before_(std::move(before)) {}

    struct Applied {
        int updated = 0;      ///< clips that the answer contains
        int withMetadata = 0; ///< clips that have metadata of the service afterwards
    };
    /// Replaces the metadata of each clip whose exact file name is in the answer. A clip with an empty answer
    /// is not changed. Clips that have lost metadata that was applied before get it again. Throws Stopped.
    Applied apply(SyncGroupList& groups, ClipMatchResponse answer, const std::stop_token& stop = {});
    /// Applies the metadata again to clips that have lost it.
    void reapply(SyncGroupList& groups) const;
    /// The clips without the applied metadata. Metadata that was changed by others since then stays.
    SyncGroupList without(SyncGroupList groups) const;
    /// Whether the clips are still as `apply` left them.
    bool isUnchangedSince(const SyncGroupList& groups) const { return groups.changesSince(left_).empty(); }
    /// Whether nothing was applied.
    bool isEmpty() const { return positioned_.empty(); }

  private:
    SyncGroupList before_;
    /// The clips with the metadata applied to them, the newest last; never empty. Shared with a list of clips
    /// as long as that is not edited.
    std::unordered_map<UUID, std::vector<SyncGroupList::Element>> positioned_;
    SyncGroupList left_;                                       ///< the clips after the last `apply`
    int withMetadata_ = 0;                                     ///< number of those with metadata
    std::unordered_multimap<std::string, std::size_t> places_; ///< index in `left_`, by file name
};

/// `LockitLayer::lay` for a single answer.
int applyLockitMatches(SyncGroupList& groups, ClipMatchResponse answer);
/// The number of clips with metadata of the service.
int lockitClipCount(const SyncGroupList& groups);

} // namespace orvane
