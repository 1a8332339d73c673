#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvane {

/// Whether nothing of the file could be read except its name.
bool nothingIsKnown(const MediaAsset& asset);

/// Why clips have no sound and recordings no clip, in a few words for a table. One thread at a time.
class UnmatchedReasons {
  public:
    /// `recordings` returns all recordings of the work. It is called once, when a reason first needs them.
    /// `rules`: the rules of the match.
    UnmatchedReasons(SyncGroupList groups, std::function<std::vector<MediaAsset>()> recordings,
                     const MatchRules& rules);
    UnmatchedReasons(const UnmatchedReasons&) = delete;
    UnmatchedReasons& operator=(const UnmatchedReasons&) = delete;
    ~UnmatchedReasons();

    /// For a clip without a settled match.
    std::string ofClip(const SyncGroup& group);
    /// For a recording that no clip has.
    std::string ofRecording(const MediaAsset& recording);

  private:
    struct Positioned;
    /// The places of all files; made at the first call.
    Positioned& positioned();

    const SyncGroupList groups_;
    const std::function<std::vector<MediaAsset>()> recordings_;
    const MatchRules rules_;
    std::unique_ptr<Positioned> positioned_;
};

} // namespace orvane
