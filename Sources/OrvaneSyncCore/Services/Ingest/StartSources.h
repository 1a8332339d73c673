#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"
#include "OrvaneSyncCore/Services/Ingest/SideFiles.h"
#include "Platform/MediaInspector.h"
#include "Platform/RandomAccessFile.h"

#include <optional>

namespace orvane {

/// Where an asset takes its start from besides a timecode track and the broadcast chunks. In the order of the
/// probe: each is asked only where the ones in front of it state none. Any thread, one an asset.
namespace StartSources {

/// The count of a container: as with a timecode track, its rate is the rate of the project. False, and
/// nothing is taken, at a rate that is no timecode's: sound alone is often given a timecode of one a second.
bool takeCounted(MediaAsset& asset, const platform::CountedTimecode& counted);
/// Sets the project's rate to that of the picture where the one that is stated counts these very pictures:
/// each of them, at a rate that differs by no more than 0.2 %, or each second one, unless the camera itself
/// names it (`isConfirmed`). 24 frames a second under a timecode of 23.976 are 24.
void countPictures(MediaAsset& asset, bool isConfirmed);
/// What documents within the file say.
void readEmbedded(MediaAsset& asset, platform::RandomAccessFile& file);
/// What files beside the clip say.
void readSideFile(MediaAsset& asset, SideFiles& sideFiles);

/// The time in the container's header. Nothing before 1990: a clock that was never set begins in 1904, 1970
/// or 1980.
std::optional<Date> headerDate(const platform::MediaInspection& inspection);

} // namespace StartSources
} // namespace orvane
