#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <string>
#include <vector>

namespace orvane::bench {

/// A folder of camera and recorder files as on a card: names, timecode tracks, broadcast chunks, track names.
/// The media data are holes in the files.
struct MediaCorpus {
    std::vector<FileURL> videos;
    std::vector<FileURL> audios;
    std::string folder;

    std::size_t size() const { return videos.size() + audios.size(); }
};

inline constexpr int filesOfAKind = 1000;

/// Makes the files below the folder unless they are there already.
MediaCorpus mediaCorpus(const std::string& folder);

inline constexpr int clipsACard = 250;
/// Two cameras that roll together, each with a card of its own and both with the same file names, and takes
/// of four to eight mono files, each of which covers some of the clips. Made as above.
MediaCorpus twoCards(const std::string& folder);

inline constexpr int clipsOfAWeek = 3750;
/// A week's shoot, 600 clips a day at the same hours, each with a recording of its own, with folders for each
/// day's picture and sound. Made as above.
MediaCorpus weekOfCards(const std::string& folder);

/// Probed assets as from a shoot of many days, without files: each video overlaps one recording of its day.
/// Each day begins so many seconds later than the one before; with 0 a clip also meets recordings of the
/// neighbouring days.
struct AssetCorpus {
    std::vector<MediaAsset> videos;
    std::vector<MediaAsset> audios;
};
AssetCorpus assetCorpus(int clips, int clipsADay, int shiftOfADay);

/// Matched clips with one recording of `channels` named channels each.
SyncGroupList matchedGroups(int clips, int channels);

} // namespace orvane::bench
