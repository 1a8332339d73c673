#pragma once

#include "Platform/MediaInspector.h"

#include <cstdint>
#include <optional>
#include <string>

/// The messages between the program and its media helper: one message of bytes for each request and each
/// answer, over a stream socket. Both are built together and run on one machine, so numbers are in the
/// machine's byte order.
namespace orvane::platform::helper {

enum class Request : std::uint8_t {
    inspect,   ///< path; answers with `Inspected`
    openAudio, ///< path, whether all tracks are wanted; answers with a list of `Track`
    seek,      ///< handle, frame; answers whether the file has it
    read,      ///< handle, channels, frames; answers with the number of frames in the shared memory
    close,     ///< handle
    about,     ///< answers with `About`
    canDecode, ///< name of a codec; answers whether it can be decoded
    // Requests to a helper for pictures.
    openPictures,  ///< path; answers with a `VideoStream` or nothing
    picture,       ///< `PictureQuery`; answers with a `PictureAnswer`, whose pixels are in the shared memory
    closePictures, ///< handle
};

/// The use of a helper. One for pictures may use more memory, and shares one picture of the largest size
/// instead of samples.
enum class Purpose : std::uint8_t { sound, pictures };
/// The argument that starts a helper for pictures.
constexpr const char* picturesArgument = "pictures";

// Each record has an `exchange`: it passes the members, in the order of the message, to an archive, which
// writes or reads them (MessageCoding.h).
template <class Archive>
void exchange(Archive& archive, MediaMetadataItem& item) {
    archive(item.key, item.commonKey, item.string, item.number);
}
template <class Archive>
void exchange(Archive& archive, CountedTimecode& start) {
    archive(start.frames, start.rateNumerator, start.rateDenominator, start.isDrop);
}
template <class Archive>
void exchange(Archive& archive, MediaInspection::VideoTrack& track) {
    archive(track.width, track.height, track.nominalFrameRate, track.codecFourCC);
}
template <class Archive>
void exchange(Archive& archive, MediaInspection::AudioTrack& track) {
    archive(track.channelCount, track.sampleRate);
}
template <class Archive>
void exchange(Archive& archive, MediaInspection& facts) {
    archive(facts.durationSeconds, facts.videoTracks, facts.audioTracks, facts.metadata, facts.startTimecode,
            facts.headerTime);
}

struct Inspected {
    bool ranOut = false;
    std::optional<MediaInspection> facts;
};
template <class Archive>
void exchange(Archive& archive, Inspected& answer) {
    archive(answer.ranOut, answer.facts);
}

/// The first answer of every helper. It detects a helper of another build, whose messages may differ.
struct About {
    std::string version; ///< `helperVersion`
    std::string libraries;
};
template <class Archive>
void exchange(Archive& archive, About& about) {
    archive(about.version, about.libraries);
}

/// A sound track that the helper holds open.
struct Track {
    std::uint32_t handle = 0;
    double sampleRate = 0; ///< Hz
    std::int32_t channelCount = 0;
    std::int64_t frameCount = 0;
    std::int64_t promisedFrames = 0;
};
template <class Archive>
void exchange(Archive& archive, Track& track) {
    archive(track.handle, track.sampleRate, track.channelCount, track.frameCount, track.promisedFrames);
}

/// A time as value / scale seconds.
struct Seconds {
    std::int64_t value = 0;
    std::int64_t scale = 1;
};
template <class Archive>
void exchange(Archive& archive, Seconds& time) {
    archive(time.value, time.scale);
}

/// The pictures of a file that the helper holds open; fields as in VideoFacts.
struct VideoStream {
    std::uint32_t handle = 0;
    std::int32_t width = 0, height = 0;
    Seconds duration;
    double nominalFrameRate = 0;
    std::int64_t pictureCount = 0;
    bool isIntraOnly = false;
};
template <class Archive>
void exchange(Archive& archive, VideoStream& stream) {
    archive(stream.handle, stream.width, stream.height, stream.duration, stream.nominalFrameRate,
            stream.pictureCount, stream.isIntraOnly);
}

enum class PictureChoice : std::uint8_t {
    at,    ///< as FrameReader::pictureAt
    key,   ///< the newest key picture at or before the time
    group, ///< the newest key picture before time + tolerance, but none before the time
    next,  ///< the one after the last one that was returned
};
struct PictureQuery {
    std::uint32_t handle = 0;
    std::uint64_t number = 0; ///< of the query, ascending: for `PictureMemory::stopped`
    PictureChoice choice = PictureChoice::at;
    Seconds time, tolerance;
    std::int32_t width = 0, height = 0; ///< the limit; 0: none
};
template <class Archive>
void exchange(Archive& archive, PictureQuery& query) {
    archive(query.handle, query.number, query.choice, query.time, query.tolerance, query.width, query.height);
}

enum class PictureOutcome : std::uint8_t { picture, end, nothing, stopped };
struct PictureAnswer {
    PictureOutcome outcome = PictureOutcome::nothing;
    std::int32_t width = 0, height = 0;
    Seconds time, duration;
    std::int64_t number = 0;
    bool isLast = false; ///< decoding has shown that the file ends after it
};
template <class Archive>
void exchange(Archive& archive, PictureAnswer& answer) {
    archive(answer.outcome, answer.width, answer.height, answer.time, answer.duration, answer.number,
            answer.isLast);
}

} // namespace orvane::platform::helper
