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

/// Extensions decide what counts as media; lower case, without the dot.
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
    /// The rate at which `startTimecodeString` counts, where the file states it; absent: that of the picture.
    std::optional<TimecodeFrameRate> timecodeFrameRate;
    /// Name of the file beside this one that stated `startTimecodeString`; absent: this file's own.
    std::optional<std::string> timecodeSideFile;
    std::optional<double> durationSeconds; ///< on the file's own timeline
    /// For how long a video shows pictures, where its sound goes on for a frame or more behind the last one;
    /// absent: to the end of the file.
    std::optional<double> pictureSeconds;
    std::optional<Date> contentCreatedDate;
    /// By how much the clock that wrote it is ahead of UTC, where the file states that.
    std::optional<int> dateZoneMinutes;
    /// The time in the header of the container. Many cameras and every copying program write their own clock
    /// there, so it ranks candidates and never decides about a shoot day.
    std::optional<Date> headerDate;
    std::optional<double> frameRate; ///< the rate the video file plays at, frames per second
    std::optional<int> width;        ///< pixels
    std::optional<int> height;       ///< pixels
    std::optional<int> channelCount;
    std::optional<double> sampleRate; ///< Hz
    std::optional<std::string> videoCodecFourCC;
    std::optional<double> sensorFrameRate;  ///< the rate the sensor really ran at
    std::optional<double> projectFrameRate; ///< the base rate the camera recorded against
    std::optional<OffspeedConfidence> offspeedConfidence;
    std::optional<SourceRateDomain> sourceRateDomainOverride; ///< the user's choice; absent: derived
    std::optional<IXMLData> ixmlData;
    std::optional<std::uint64_t> bextTimeReference; ///< samples since midnight
    /// Hz, at which the file's own iXML says that this was counted, where that is 1 % and more from its
    /// sample rate: a program converted the sound and copied the count.
    std::optional<double> statedStampRate;
    std::optional<std::string> bextOriginator;
    std::optional<std::uint64_t> fileSizeBytes; ///< when it was probed
    /// Of its media data the share that is there, 0 to 1, where the file ends half a second and more before
    /// what its headers promise, or holds nothing by which it could be read; absent: it ends as it should.
    std::optional<double> heldShare;
    /// True of a recording whose recorder never wrote how long it is: its end may be missing; absent
    /// otherwise.
    std::optional<bool> isUnclosed;
    /// Of pieces of its sound, where they were read to tell it from a recording of the same name, size and
    /// start: what differs in it is no copy. Below 2^53, as JSON holds no more.
    std::optional<std::uint64_t> contentMark;

    /// Its end is missing, or may be.
    bool endsEarly() const { return heldShare || isUnclosed.value_or(false); }
    double slowMotionFactor() const;
    bool isOffspeed() const;
    bool isSuspectedOffspeedUnconfirmed() const;
    SourceRateDomain sourceRateDomain() const;
    std::optional<double> realDurationSeconds() const;
    /// How much of a video there is to be seen, on the file's own timeline.
    std::optional<double> shownSeconds() const { return pictureSeconds ? pictureSeconds : durationSeconds; }
    /// Room tone, by name or by the recorder's wild-track flag. Never matched to picture.
    bool isAtmo() const;
    std::string normalizedName() const;    ///< file name without extension, lower case
    std::string filenameStem() const;      ///< file name without extension
    std::string formatDescription() const; ///< such as "8ch 48kHz" or "1920x1080 25 fps"
    /// The date in the file, in the user's calendar as the clock that wrote it showed it: a phone that filmed
    /// in another zone is of the day that people had there, as its sound is.
    std::optional<Date> localCreatedDate() const;
    /// Start of the day, in the user's calendar, of the date in the name, else of the date in the file.
    std::optional<Date> shootDay() const;
    /// The same, for a caller that asks thousands of files.
    std::optional<Date> shootDay(calendar::DayStarts& starts) const;

    /// Six digits YYMMDD that stand alone in the name, at noon of the user's calendar.
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
