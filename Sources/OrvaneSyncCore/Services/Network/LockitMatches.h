#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Network/LockitRecords.h"

#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvane {

/// Shot and take as one text, such as "12A-3", each without white space around it; a blank text counts as
/// none. The take alone without a shot, the shot alone without a take.
std::optional<std::string> composedTake(const std::optional<std::string>& shot,
                                        const std::optional<std::string>& take);

/// What a clip of the service says, by the texts of `LockitField`. Fields without a value are left out.
std::map<std::string, std::string> lockitFields(const LockitClip& clip);

/// What a sync has laid over the clips so far, and what they had before. A plain value; copies are
/// independent. Any thread.
class LockitLayer {
  public:
    explicit LockitLayer(SyncGroupList before) : before_(std::move(before)) {}

    /// Gives each clip whose file name, exactly, is matched what the answer says, in place of what it had;
    /// the number of these clips. An answer without a value leaves a clip as it was. Throws Stopped.
    int lay(SyncGroupList& groups, const ClipMatchResponse& answer, const std::stop_token& stop = {});
    /// Lays what it knows over clips that have come to be without it.
    void layAgain(SyncGroupList& groups) const;
    /// The same clips as if nothing had been laid over them; what somebody else wrote meanwhile stays.
    SyncGroupList without(SyncGroupList groups) const;
    /// Nothing differs from what there was before.
    bool isEmpty() const { return laid_.empty(); }

  private:
    using Fields = std::map<std::string, std::string>;

    void index(const SyncGroupList& groups);

    SyncGroupList before_;
    std::unordered_map<UUID, std::vector<Fields>> laid_;       ///< the newest last; never empty
    SyncGroupList indexed_;                                    ///< that `places_` are of; as laid over last
    std::unordered_multimap<std::string, std::size_t> places_; ///< by file name
};

/// As `LockitLayer::lay`, for one answer by itself.
int applyLockitMatches(SyncGroupList& groups, const ClipMatchResponse& answer);
/// How many clips have metadata of the service.
int lockitClipCount(const SyncGroupList& groups);

} // namespace orvane
