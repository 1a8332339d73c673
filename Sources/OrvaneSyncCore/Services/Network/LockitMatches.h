#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Network/LockitFields.h"

#include <memory>
#include <stop_token>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvane {

/// What a sync has laid over the clips so far, and what they had before. A plain value; copies are
/// independent. Any thread.
class LockitLayer {
  public:
    explicit LockitLayer(SyncGroupList before) : before_(std::move(before)) {}

    struct Laid {
        int updated = 0;      ///< clips that the answer speaks of
        int withMetadata = 0; ///< clips that have metadata of the service then
    };
    /// Gives each clip whose file name, exactly, is matched what the answer says, in place of what it had. An
    /// answer without a value leaves a clip as it was. Clips that have come to be without what was laid
    /// before get it again. Throws Stopped.
    Laid lay(SyncGroupList& groups, ClipMatchResponse answer, const std::stop_token& stop = {});
    /// Applies what it knows to clips that have come to be without it.
    void reapply(SyncGroupList& groups) const;
    /// The same clips as if nothing had been laid over them; what somebody else wrote meanwhile stays.
    SyncGroupList without(SyncGroupList groups) const;
    /// These clips are as `lay` left them; nobody has edited one since.
    bool isUnchangedSince(const SyncGroupList& groups) const { return groups.changesSince(left_).empty(); }
    /// Nothing differs from what there was before.
    bool isEmpty() const { return laid_.empty(); }

  private:
    SyncGroupList before_;
    /// What clips were given, the newest last; never empty. A list shares these groups as long as nobody
    /// edits them.
    std::unordered_map<UUID, std::vector<SyncGroupList::Element>> laid_;
    SyncGroupList left_;                                       ///< as laid over last
    int withMetadata_ = 0;                                     ///< of these
    std::unordered_multimap<std::string, std::size_t> places_; ///< in these, by file name
};

/// As `LockitLayer::lay`, for one answer by itself.
int applyLockitMatches(SyncGroupList& groups, ClipMatchResponse answer);
/// How many clips have metadata of the service.
int lockitClipCount(const SyncGroupList& groups);

} // namespace orvane
