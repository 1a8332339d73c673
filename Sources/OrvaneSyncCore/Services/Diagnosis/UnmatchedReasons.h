#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvane {

/// Nothing of the file could be read but its name.
bool nothingIsKnown(const MediaAsset& asset);

/// Why clips have no sound and recordings no clip, in a few words for a table. One thread at a time.
class UnmatchedReasons {
  public:
    /// `recordings` gives all of the work, and is called once, by who needs them. `rules`: by which it was
    /// matched.
    UnmatchedReasons(SyncGroupList groups, std::function<std::vector<MediaAsset>()> recordings,
                     const MatchRules& rules);
    UnmatchedReasons(const UnmatchedReasons&) = delete;
    UnmatchedReasons& operator=(const UnmatchedReasons&) = delete;
    ~UnmatchedReasons();

    /// Of a clip without a settled match.
    std::string ofClip(const SyncGroup& group);
    /// Of a recording that no clip has.
    std::string ofRecording(const MediaAsset& recording);

  private:
    struct Laid;
    /// Where all files lie; made when somebody asks who needs it.
    Laid& laid();

    const SyncGroupList groups_;
    const std::function<std::vector<MediaAsset>()> recordings_;
    const MatchRules rules_;
    std::unique_ptr<Laid> laid_;
};

} // namespace orvane
