#pragma once

#include "Platform/MediaInspector.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

/// The messages between the program and its media helper: one message of bytes for each request and each
/// answer, over a stream socket. Both are built together and run on one machine, so numbers are in the
/// machine's byte order. The helper reads files that may be made to attack it, so the program checks every
/// length in an answer.
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

struct Inspected {
    bool ranOut = false;
    std::optional<MediaInspection> facts;
};

/// The first answer of every helper. It detects a helper of another build, whose messages may differ.
struct About {
    std::string version; ///< `helperVersion`
    std::string libraries;
};

/// A sound track that the helper holds open.
struct Track {
    std::uint32_t handle = 0;
    double sampleRate = 0; ///< Hz
    std::int32_t channelCount = 0;
    std::int64_t frameCount = 0;
    std::int64_t promisedFrames = 0;
};

/// A time as value / scale seconds.
struct Seconds {
    std::int64_t value = 0;
    std::int64_t scale = 1;
};

/// The pictures of a file that the helper holds open; fields as in VideoFacts.
struct VideoStream {
    std::uint32_t handle = 0;
    std::int32_t width = 0, height = 0;
    Seconds duration;
    double nominalFrameRate = 0;
    std::int64_t pictureCount = 0;
    bool isIntraOnly = false;
};

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

enum class PictureOutcome : std::uint8_t { picture, end, nothing, stopped };
struct PictureAnswer {
    PictureOutcome outcome = PictureOutcome::nothing;
    std::int32_t width = 0, height = 0;
    Seconds time, duration;
    std::int64_t number = 0;
    bool isLast = false; ///< decoding has shown that the file ends after it
};

/// The memory that a helper for pictures shares. Only `stopped` is accessed by both sides at any time.
struct PictureMemory {
    /// The queries up to this number are cancelled.
    std::atomic<std::uint64_t> stopped;
};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free);
/// The rows of a picture begin here, without gaps, 4 bytes for each pixel.
constexpr std::size_t pixelsOffset = 4096;
/// Enough for 8K. Pages that no picture has reached are not allocated.
constexpr std::size_t mostPixels = std::size_t{8192} * 4320;
constexpr std::size_t pictureMemoryBytes = pixelsOffset + 4 * mostPixels;

/// The samples of an answer: one channel after the other.
constexpr std::size_t sharedSamples = std::size_t{1} << 20U;
constexpr std::size_t sharedBytes = sharedSamples * sizeof(float);
/// The descriptor of the socket that a helper has when it starts.
constexpr int messageDescriptor = 3;
constexpr int memoryDescriptor = 4;

constexpr std::size_t longestMessage = std::size_t{64} << 20U; ///< bytes

/// The bytes are not a message of the expected form.
class MessageError : public std::runtime_error {
  public:
    MessageError() : std::runtime_error("a message is damaged") {}
};

// Passes the members of each record, in the order of the message, to an archive, which writes or reads them.
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
template <class Archive>
void exchange(Archive& archive, Inspected& answer) {
    archive(answer.ranOut, answer.facts);
}
template <class Archive>
void exchange(Archive& archive, About& about) {
    archive(about.version, about.libraries);
}
template <class Archive>
void exchange(Archive& archive, Track& track) {
    archive(track.handle, track.sampleRate, track.channelCount, track.frameCount, track.promisedFrames);
}

template <class Archive>
void exchange(Archive& archive, Seconds& time) {
    archive(time.value, time.scale);
}
template <class Archive>
void exchange(Archive& archive, VideoStream& stream) {
    archive(stream.handle, stream.width, stream.height, stream.duration, stream.nominalFrameRate,
            stream.pictureCount, stream.isIntraOnly);
}
template <class Archive>
void exchange(Archive& archive, PictureQuery& query) {
    archive(query.handle, query.number, query.choice, query.time, query.tolerance, query.width, query.height);
}
template <class Archive>
void exchange(Archive& archive, PictureAnswer& answer) {
    archive(answer.outcome, answer.width, answer.height, answer.time, answer.duration, answer.number,
            answer.isLast);
}

template <class T>
concept Plain = std::is_arithmetic_v<T> || std::is_enum_v<T>;

class MessageWriter {
  public:
    template <class... Values>
    std::string operator()(Values&&... values) {
        (put(values), ...);
        return bytes_;
    }

  private:
    template <Plain T>
    void put(T value) {
        bytes_.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    void put(const std::string& text) {
        put(text.size());
        bytes_ += text;
    }
    template <class T>
    void put(const std::optional<T>& value) {
        put(value.has_value());
        if (value) put(*value);
    }
    template <class T>
    void put(const std::vector<T>& list) {
        put(list.size());
        for (const T& value : list) put(value);
    }
    template <class Record>
    requires(!Plain<Record>) void put(const Record& record) {
        Members members{*this};
        exchange(members, const_cast<Record&>(record)); // which only reads it
    }
    struct Members {
        MessageWriter& writer;
        template <class... Values>
        void operator()(Values&... values) {
            (writer.put(values), ...);
        }
    };

    std::string bytes_;
};

/// Throws MessageError where the bytes end early or a length is wrong.
class MessageReader {
  public:
    explicit MessageReader(std::string_view bytes) : rest_(bytes) {}

    template <class T>
    T next() {
        T value{};
        get(value);
        return value;
    }

  private:
    std::string_view take(std::size_t count) {
        if (count > rest_.size()) throw MessageError();
        const auto taken = rest_.substr(0, count);
        rest_.remove_prefix(count);
        return taken;
    }
    void get(bool& value) { value = next<std::uint8_t>() != 0; }
    template <Plain T>
    void get(T& value) {
        std::memcpy(&value, take(sizeof value).data(), sizeof value);
    }
    void get(std::string& text) { text = take(next<std::size_t>()); }
    template <class T>
    void get(std::optional<T>& value) {
        if (next<bool>()) value = next<T>();
    }
    template <class T>
    void get(std::vector<T>& list) {
        // Grows with the data that is present, not with the stated count.
        for (auto count = next<std::size_t>(); count > 0; --count) list.push_back(next<T>());
    }
    template <class Record>
    requires(!Plain<Record>) void get(Record& record) {
        Members members{*this};
        exchange(members, record);
    }
    struct Members {
        MessageReader& reader;
        template <class... Values>
        void operator()(Values&... values) {
            (reader.get(values), ...);
        }
    };

    std::string_view rest_;
};

/// False when the other side has ended.
bool send(int descriptor, const std::string& message);
/// The clock that limits the wait for an answer, and the wait itself: a test passes its own.
struct WaitClock {
    std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;
    /// As poll(2) of one descriptor; -1 millisecond: no limit.
    std::function<int(pollfd& wanted, int milliseconds)> poll = [](pollfd& wanted, int milliseconds) {
        return ::poll(&wanted, 1, milliseconds);
    };
};
/// Nothing when the other side has ended, has not sent the whole message in this time, or sends too much.
/// Without a limit it waits for ever.
std::optional<std::string> receive(int descriptor,
                                   std::optional<std::chrono::milliseconds> limit = std::nullopt,
                                   const WaitClock& clock = {});

} // namespace orvane::platform::helper
