#pragma once

#include "OrvaneSyncCore/Models/IXMLModels.h"
#include "OrvaneSyncCore/Models/OffspeedDetector.h"
#include "Timecode/TimecodeFrameRate.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

enum class AssetKind { video, audio };

/// Media files are recognised by these extensions alone; lower case, without the dot.
inline constexpr std::array<std::string_view, 4> videoExtensions{"mov", "mxf", "mp4", "m4v"};
inline constexpr std::array<std::string_view, 4> audioExtensions{"wav", "bwf", "aif", "aiff"};
std::optional<AssetKind> assetKindFrom(const FileURL& url);

/// One probed media file. Identity, and equality, is by `id` alone.
struct MediaAsset {
    MediaAsset(FileURL url, AssetKind kind);
    MediaAsset(UUID id, FileURL url, AssetKind kind);

    UUID id;
    FileURL url;
    AssetKind kind;
    std::string filename; ///< last path component, with extension, valid UTF-8
    std::optional<std::string> startTimecodeString;
    /// The rate at which `startTimecodeString` counts, if the file states it; absent: the picture's rate.
    std::optional<TimecodeFrameRate> timecodeFrameRate;
    /// The name of the file beside this one that gave `startTimecodeString`; absent: the media file itself
    /// gave it.
    std::optional<std::string> timecodeSideFile;
    std::optional<double> durationSeconds; ///< on the file's own timeline
    /// The length of a video's picture, if its sound goes on for a frame or more after it; absent: the
    /// picture goes on to the end of the file.
    std::optional<double> pictureSeconds;
    std::optional<Date> contentCreatedDate;
    /// By how many minutes the clock that wrote the date is ahead of UTC, if the file states it.
    std::optional<int> dateZoneMinutes;
    /// The time in the container's header. Many cameras and all copying programs write the time of their own
    /// clock there, so it ranks candidates but never decides about a shoot day.
    std::optional<Date> headerDate;
    std::optional<double> frameRate; ///< the rate the video file plays at, frames per second
    std::optional<int> width;        ///< pixels
    std::optional<int> height;       ///< pixels
    std::optional<int> channelCount;
    std::optional<double> sampleRate; ///< Hz
    std::optional<std::string> videoCodecFourCC;
    std::optional<double> sensorFrameRate;  ///< the rate at which the sensor ran
    std::optional<double> projectFrameRate; ///< the base rate of the camera's recording
    std::optional<OffspeedConfidence> offspeedConfidence;
    std::optional<SourceRateDomain> sourceRateDomainOverride; ///< the user's choice; absent: derived
    std::optional<IXMLData> ixmlData;
    std::optional<std::uint64_t> bextTimeReference; ///< samples since midnight, from the header
    /// Hz. The sample rate at which, according to the file's iXML, `bextTimeReference` was counted, if it
    /// differs by 1 % or more from the file's sample rate: a program converted the sound and copied the
    /// count.
    std::optional<double> statedStampRate;
    std::optional<std::string> bextOriginator;
    std::optional<std::uint64_t> fileSizeBytes; ///< at the time of probing
    /// The share of the media data that exists, 0 to 1, if the file ends half a second or more before the end
    /// that its headers give, or if it has nothing that is needed to read it; absent: the file is complete.
    std::optional<double> heldShare;
    /// True for a recording whose recorder never wrote its length: its end may be missing. Otherwise absent.
    std::optional<bool> isUnclosed;
    /// A hash of pieces of its sound, read only if another recording has the same name, size and start: files
    /// with different marks are not copies. Below 2^53, the largest exact integer in JSON.
    std::optional<std::uint64_t> contentMark;

    /// Its end is missing, or may be.
    bool endsEarly() const { return heldShare || isUnclosed.value_or(false); }
    double slowMotionFactor() const;
    bool isOffspeed() const;
    bool isSuspectedOffspeedUnconfirmed() const;
    SourceRateDomain sourceRateDomain() const;
    std::optional<double> realDurationSeconds() const;
    /// The length of a video's visible picture, on the file's own timeline.
    std::optional<double> shownSeconds() const { return pictureSeconds ? pictureSeconds : durationSeconds; }
    /// Room tone, by name or by the recorder's wild-track flag. Never matched to a video.
    bool isAtmo() const;
    std::string normalizedName() const;    ///< file name without extension, lower case
    std::string filenameStem() const;      ///< file name without extension
    std::string formatDescription() const; ///< such as "8ch 48kHz" or "1920x1080 25 fps"
    /// The date in the file, as its own clock showed it, placed in the user's calendar: a phone that filmed
    /// in another time zone has the date of that place, as the sound from there has.
    std::optional<Date> localCreatedDate() const;
    /// The start of the day of the date in the name, or else of the date in the file; in the user's calendar.
    std::optional<Date> shootDay() const;
    /// The same, for a caller that needs thousands of files.
    std::optional<Date> shootDay(calendar::DayStarts& starts) const;

    /// Six digits YYMMDD in the name, with no other characters between two separators, at noon in the user's
    /// calendar.
    static std::optional<Date> shootDateFromFilename(std::string_view filename);

    bool operator==(const MediaAsset& other) const { return id == other.id; }
};

JSON toJSON(AssetKind kind);
template <>
AssetKind fromJSON<AssetKind>(const JSON& json);
JSON toJSON(const MediaAsset& asset);
template <>
MediaAsset fromJSON<MediaAsset>(const JSON& json);
template <>
MediaAsset fromJSON<MediaAsset>(const JSONView& json);

} // namespace orvane
