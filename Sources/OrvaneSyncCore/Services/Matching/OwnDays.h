#pragma once

#include "OrvaneSyncCore/Services/Matching/RecordingIndex.h"

#include <map>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

/// Which days of clips that their headers alone date are confirmed by sound. Of such a clip, what is of
/// another day and lies beside its own day's sound is that day's. Reads the recordings that it was made of.
class OwnDays {
  public:
    explicit OwnDays(const std::vector<Recording>& recordings) : recordings_(recordings) {}

    /// Of each clip what it meets, by `DayLine`. The videos must live as long as this.
    void learn(const MediaAsset& video, const FilePlace& place, const std::vector<Meeting>& meetings);
    /// Takes off what is of another day, where sound of the header's has all of the clip, three clips of its
    /// own card and day met that day's sound alone, none of them lacks it beside another day's,
    /// and the recording's own card meets clips of its own day.
    void leaveOutOthers(const MediaAsset& video, const FilePlace& place,
                        std::vector<Meeting>& meetings) const;

  private:
    using Card = std::pair<std::string_view, long>; ///< folder and day
    struct Clips {
        int ofOwnDay = 0;
        bool lacksOwn = false;
    };
    bool hasAllOfItsDay(const FilePlace& place, const std::vector<Meeting>& meetings) const;
    Card cardOf(const Meeting& meeting) const;

    const std::vector<Recording>& recordings_;
    std::map<Card, Clips> clips_;
    std::set<Card> soundOfOwnDay_;
};

} // namespace orvane
