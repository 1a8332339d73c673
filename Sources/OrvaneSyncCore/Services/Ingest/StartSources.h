#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"
#include "OrvaneSyncCore/Services/Ingest/SideFiles.h"
#include "Platform/MediaInspector.h"
#include "Platform/RandomAccessFile.h"

#include <optional>

namespace orvane {

/// The sources of an asset's start besides a timecode track and the broadcast chunks, in the order of the
/// probe: each is used only if the sources before it state no start. Any thread, one for each asset.
namespace StartSources {

/// Takes the timecode of a container; as with a timecode track, its rate becomes the project's rate. Returns
/// false and takes nothing if the rate is not a timecode rate: files with sound alone often have a timecode
/// that counts seconds.
bool takeCounted(MediaAsset& asset, const platform::CountedTimecode& counted);
/// Sets the project's rate to the picture's if the stated project rate counts these pictures. It counts each
/// of them if the rates differ by at most 5 % (0.2 % if the camera itself states the project's rate,
/// `isConfirmed`), or every second one, unless `isConfirmed`. So 24 frames a second with a timecode of 23.976
/// have the project rate 24.
void countPictures(MediaAsset& asset, bool isConfirmed);
/// Takes the start from documents inside the file.
void readEmbedded(MediaAsset& asset, platform::RandomAccessFile& file);
/// Takes the start from files beside the clip.
void readSideFile(MediaAsset& asset, SideFiles& sideFiles);

/// The time in the container's header. Absent before 1990: a clock that was never set starts in 1904, 1970 or
/// 1980.
std::optional<Date> headerDate(const platform::MediaInspection& inspection);

} // namespace StartSources
} // namespace orvane
