#pragma once

#include "FCPXMLKit/model/Model.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Services/Export/ExportSettings.h"

#include <optional>
#include <string>

/// The times of a document. A product of seconds and rate is cut to whole frames after 0.00001 of a frame was
/// added with its sign, never rounded up to the next one. It is taken with the number as it is passed; what a
/// frame lasts is that of the exact rate which the number stands for. So rates come from `usableRate` or
/// `clipRate`, which are exact: at 23.976 itself a second and a thousandth has 23 frames. Pure; any thread.
namespace orvane::FCPXMLExporter {

fcpxml::Time frameDurationTime(double fps);
/// Nothing for an absent duration, one not above 0, and one beyond 2^53 frames.
std::optional<fcpxml::Time> durationTime(std::optional<double> seconds, double fps);
/// Of a picture, to its last frame, however long the file's own sound lasts. It has one frame at least: a
/// file may state its length in thousandths of a second.
std::optional<fcpxml::Time> pictureDuration(const MediaAsset& video, double fps);
/// Nothing for an absent text and one that does not parse. `counted` is the rate of the timecode; absent:
/// that of `fps`, fractional rates near 30 and 60 counting in drop frame.
std::optional<fcpxml::Time> timecodeToTime(const std::optional<std::string>& text, double fps,
                                           std::optional<TimecodeFrameRate> counted = std::nullopt);
/// Where the picture begins on the timecode axis, on a frame of `fps`.
std::optional<fcpxml::Time> pictureStartTime(const MediaAsset& video, double fps);
/// The same with the label read at a corrected rate, where one is given and the label exists at it: where the
/// picture lies beside others, whatever the file says.
std::optional<fcpxml::Time> correctedPictureStartTime(const MediaAsset& video, double fps,
                                                      std::optional<TimecodeFrameRate> corrected);
/// Zero below a whole frame; negative for an earlier moment.
fcpxml::Time manualOffsetTime(double seconds, double fps);
/// Exact to the sample where the file has a time reference.
std::optional<fcpxml::Time> audioStartTime(const MediaAsset& asset);
/// Where the first sample lies on the clip's axis, without manual and global offset: as far behind the start
/// of the picture as the recording's own start lies behind the picture's label, exactly, moved as matching
/// moved it (by a day across midnight, by a correction). Where one of them has no start, by the sync offset,
/// to the sample.
fcpxml::Time audioPlaceTime(const SyncGroup& group, const AudioMatch& match, double fps,
                            const ExportSettings& settings);
/// All samples of a file of sound, exactly. Nothing for an absent duration and one not above 0.
std::optional<fcpxml::Time> soundDuration(std::optional<double> seconds, int sampleRate);
/// What a clip takes of a sound asset of that duration: its whole frames, so that no clip ends behind its
/// asset; all of what is shorter than a frame, so that none has no length.
fcpxml::Time soundLength(const std::optional<fcpxml::Time>& duration, double fps);
/// 29.97 and 59.94, by the rate alone.
bool isDropFrame(double fps);
/// By the timecode's own rate where the file states it, else by that of the clip's times.
fcpxml::TcFormat tcFormat(const MediaAsset& video, double fps);
/// 1000 frames: what a file without a duration gets.
fcpxml::Time fallbackDuration(double fps);
/// That of the clip in a document with these settings.
double clipRate(const MediaAsset& video, const ExportSettings& settings);

} // namespace orvane::FCPXMLExporter
