#pragma once

#include "FCPXMLKit/model/Model.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Services/Export/ExportSettings.h"

#include <optional>
#include <string>

/// The times of a document. The product of seconds and rate is cut to whole frames after adding 0.00001 of a
/// frame in the direction of its sign; it is never rounded up to the next frame. The product uses the rate as
/// it is passed; the duration of a frame is that of the exact rate that it stands for. So rates must come
/// from `usableRate` or `clipRate`, which are exact: with 23.976 itself, a second and a thousandth has 23
/// frames. Pure; any thread.
namespace orvane::FCPXMLExporter {

fcpxml::Time frameDurationTime(double fps);
/// Absent for an absent duration, one not above 0, and one beyond 2^53 frames.
std::optional<fcpxml::Time> durationTime(std::optional<double> seconds, double fps);
/// The duration of a picture to its last frame, even if the file's own sound is longer. At least one frame: a
/// file may state its length in thousandths of a second.
std::optional<fcpxml::Time> pictureDuration(const MediaAsset& video, double fps);
/// Absent for an absent text and one that does not parse. `counted` is the rate of the timecode; if absent,
/// the rate of `fps`, with drop frame for fractional rates near 30 and 60.
std::optional<fcpxml::Time> timecodeToTime(const std::optional<std::string>& text, double fps,
                                           std::optional<TimecodeFrameRate> counted = std::nullopt);
/// The start of the picture on the timecode axis, on a frame of `fps`.
std::optional<fcpxml::Time> pictureStartTime(const MediaAsset& video, double fps);
/// The same with the label read at a corrected rate, if one is given and the label exists at it: the place of
/// the picture relative to others, whatever the file states.
std::optional<fcpxml::Time> correctedPictureStartTime(const MediaAsset& video, double fps,
                                                      std::optional<TimecodeFrameRate> corrected);
/// Zero for less than a whole frame; negative for an earlier moment.
fcpxml::Time manualOffsetTime(double seconds, double fps);
/// Exact to the sample if the file has a time reference.
std::optional<fcpxml::Time> audioStartTime(const MediaAsset& asset);
/// The place of the first sample on the clip's axis, without manual and global offset. It is the exact
/// distance from the picture's label to the recording's own start, moved as matching moved it (by a day
/// across midnight, by a correction). If one of them has no start, it is the sync offset, to the sample.
fcpxml::Time audioPlaceTime(const SyncGroup& group, const AudioMatch& match, double fps,
                            const ExportSettings& settings);
/// The duration of all samples of a sound file, exactly. Absent for an absent duration and one not above 0.
std::optional<fcpxml::Time> soundDuration(std::optional<double> seconds, int sampleRate);
/// The part of a sound asset of that duration that a clip uses: its whole frames, so that no clip ends after
/// its asset. If it is shorter than a frame, all of it, so that no clip has length zero.
fcpxml::Time soundLength(const std::optional<fcpxml::Time>& duration, double fps);
/// True for 29.97 and 59.94; depends only on the rate.
bool isDropFrame(double fps);
/// By the timecode's own rate if the file states it, else by the rate of the clip's times.
fcpxml::TcFormat tcFormat(const MediaAsset& video, double fps);
/// 1000 frames, for a file without a duration.
fcpxml::Time fallbackDuration(double fps);
/// The rate of the clip in a document with these settings.
double clipRate(const MediaAsset& video, const ExportSettings& settings);

} // namespace orvane::FCPXMLExporter
