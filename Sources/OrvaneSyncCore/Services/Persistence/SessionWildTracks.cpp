#include "OrvaneSyncCore/Services/Persistence/SessionWildTracks.h"

#include <algorithm>
#include <utility>

namespace orvane {

namespace {

const std::vector<WildTrack>& listOf(const WildTracksChange::Tracks& tracks) {
    static const std::vector<WildTrack> none;
    return tracks ? *tracks : none;
}

bool isSame(const WildTrack& a, const WildTrack& b) {
    return a.id == b.id && a.customName == b.customName && a.isApproved == b.isApproved;
}

} // namespace

bool WildTracksChange::isEmpty() const {
    return tracks == known || std::ranges::equal(listOf(tracks), listOf(known), isSame);
}

void WildTracksChange::apply(std::vector<WildTrack>& onDisk, bool areOtherClipsOnDisk) const {
    const auto& ours = listOf(tracks);
    std::vector<WildTrack> changed; // changed here since the disk was last read
    for (const WildTrack& track : ours)
        if (std::ranges::none_of(listOf(known), [&](const WildTrack& one) { return isSame(one, track); }))
            changed.push_back(track);
    std::vector<WildTrack> result = areOtherClipsOnDisk ? onDisk : ours;
    carryNamesAndApprovals(result, onDisk);
    carryNamesAndApprovals(result, changed);
    onDisk = std::move(result);
}

} // namespace orvane
