#include "Platform/Media/MovieAtoms.h"
#include "Platform/MediaLibrary/LibavFile.h"
#include "Platform/MediaLibrary/LibraryReaders.h"

#include <algorithm>
#include <span>
#include <string_view>

extern "C" {
#include <libavutil/bswap.h>
}

namespace orvane::platform {

namespace {

std::span<AVStream* const> streams(const LibavFile& file) { return {file->streams, file->nb_streams}; }

std::optional<double> duration(const AVStream& stream) {
    if (stream.duration == AV_NOPTS_VALUE || stream.duration < 0) return std::nullopt;
    return static_cast<double>(stream.duration) * av_q2d(stream.time_base);
}

std::optional<double> duration(const LibavFile& file) {
    std::optional<double> longest;
    for (const AVStream* stream : streams(file))
        if (const auto own = duration(*stream)) longest = std::max(longest.value_or(0), *own);
    if (!longest && file->duration != AV_NOPTS_VALUE && file->duration >= 0)
        longest = static_cast<double>(file->duration) / AV_TIME_BASE;
    return longest;
}

bool isDescribed(const LibavFile& file) {
    if (file->nb_streams == 0 || !duration(file)) return false;
    return std::ranges::all_of(streams(file), [](const AVStream* stream) {
        const AVCodecParameters& parameters = *stream->codecpar;
        if (parameters.codec_type == AVMEDIA_TYPE_VIDEO)
            return parameters.width > 0 && stream->avg_frame_rate.num > 0;
        if (parameters.codec_type == AVMEDIA_TYPE_AUDIO) return parameters.sample_rate > 0;
        return true;
    });
}

/// libav keeps the first character in the lowest byte.
std::string tagText(std::uint32_t tag) {
    std::string text = fourCCText(av_bswap32(tag));
    const bool isText = std::ranges::all_of(text, [](char c) { return c >= ' ' && c < '\x7F'; });
    return isText ? text : std::string();
}

/// The four characters in the file, or those that QuickTime has for the codec.
std::optional<std::string> codecFourCC(const AVCodecParameters& parameters) {
    if (std::string own = tagText(parameters.codec_tag); !own.empty()) return own;
    const AVCodecTag* const tables[] = {avformat_get_mov_video_tags(), nullptr};
    const std::uint32_t tag = av_codec_get_tag(tables, parameters.codec_id);
    return tag == 0 ? std::nullopt : std::optional(tagText(tag));
}

std::optional<double> frameRate(const AVStream& stream) {
    for (const AVRational rate : {stream.avg_frame_rate, stream.r_frame_rate})
        if (rate.num > 0 && rate.den > 0) return static_cast<double>(static_cast<float>(av_q2d(rate)));
    return std::nullopt;
}

/// The time of the movie header is the clock of the program that wrote the file last, not a date of the
/// content.
std::string commonKey(std::string_view key, bool isMovie) {
    const bool isDate = key == "com.apple.quicktime.creationdate" || key == "date" ||
                        (!isMovie && (key == "creation_time" || key == "creation_date"));
    return isDate ? "creationDate" : "";
}

void readMetadata(const LibavFile& file, MediaInspection& into) {
    const AVDictionaryEntry* entry = nullptr;
    while ((entry = av_dict_get(file->metadata, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
        const std::string_view key = entry->key;
        if (file.isMovie() && key == "creation_time") continue;
        into.metadata.push_back(
            {std::string(key), commonKey(key, file.isMovie()), entry->value, std::nullopt});
    }
}

} // namespace

std::optional<MediaInspection> inspectWithLibav(const std::string& path, bool& ranOut) {
    auto file = LibavFile::open(path, ranOut);
    if (!file) return std::nullopt;
    if (!isDescribed(*file)) file->findStreamInfo();
    ranOut = file->ranOutOfTime();

    MediaInspection result;
    result.durationSeconds = duration(*file);
    for (const AVStream* stream : streams(*file)) {
        const AVCodecParameters& parameters = *stream->codecpar;
        if (isPictureStream(*stream)) {
            MediaInspection::VideoTrack track;
            if (parameters.width > 0 && parameters.height > 0) {
                track.width = parameters.width;
                track.height = parameters.height;
            }
            track.nominalFrameRate = frameRate(*stream);
            track.codecFourCC = codecFourCC(parameters);
            result.videoTracks.push_back(std::move(track));
        } else if (parameters.codec_type == AVMEDIA_TYPE_AUDIO) {
            MediaInspection::AudioTrack track;
            if (parameters.ch_layout.nb_channels > 0) track.channelCount = parameters.ch_layout.nb_channels;
            if (parameters.sample_rate > 0) track.sampleRate = parameters.sample_rate;
            result.audioTracks.push_back(track);
        }
    }
    readMetadata(*file, result);
    return result;
}

} // namespace orvane::platform
