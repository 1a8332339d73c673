#pragma once

#include "Platform/RandomAccessFile.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvane::platform {

/// One metadata item of a media file, in file order.
struct MediaMetadataItem {
    std::string key;       ///< the format's own key as text, such as "com.apple.quicktime.creationdate"
    std::string commonKey; ///< "creationDate" where the key has that common meaning, else empty
    std::optional<std::string> string; ///< UTF-8
    std::optional<double> number;
};

/// Hz. A higher stated value is not taken as a sample rate.
constexpr double highestSampleRate = 10'000'000;

/// The timecode of the first frame, as a container counts it.
struct CountedTimecode {
    std::int64_t frames = 0; ///< since midnight; drop frame skips labels, not frames
    std::uint32_t rateNumerator = 0, rateDenominator = 1; ///< frames per second of the count
    bool isDrop = false;
};

/// What the headers of a media file say; values that a file does not state are absent. Cover art and timecode
/// tracks do not count as video tracks.
struct MediaInspection {
    struct VideoTrack {
        std::optional<double> width;  ///< pixels, as coded
        std::optional<double> height; ///< pixels, as coded
        /// Frames per second: number of samples over the media's duration, rounded to 32-bit precision.
        std::optional<double> nominalFrameRate;
        /// Seconds of the file's timeline until its last picture ends, edit lists included; read from
        /// QuickTime and MP4 files.
        std::optional<double> endSeconds;
        /// Four characters as in the file, such as "avc1"; empty when they are not ASCII; absent without a
        /// sample description.
        std::optional<std::string> codecFourCC;
    };
    struct AudioTrack {
        std::optional<int> channelCount;
        std::optional<double> sampleRate; ///< Hz
    };
    std::optional<double> durationSeconds;
    std::vector<VideoTrack> videoTracks;
    std::vector<AudioTrack> audioTracks;
    std::vector<MediaMetadataItem> metadata;
    /// Read from MXF files only. The timecode track of a movie is a track with samples, and is not read here.
    std::optional<CountedTimecode> startTimecode;
    /// The time at which the file was made by the header of a movie, or the package of an MXF: seconds since
    /// 1970 UTC.
    std::optional<std::int64_t> headerTime;
    /// For a file that ends before its headers say: the share of its media data that is present, below 1; 0
    /// where the header that is needed to read it is missing. The length of a WAVE or AIFF file is then that
    /// of the data present; that of other files is the one that the headers state. A WAVE file, or a movie
    /// whose header comes first, ends where only zeros follow, as after a copy that broke off.
    std::optional<double> heldShare;
    /// For a WAVE or AIFF file whose recorder never wrote the length of its sound, or wrote a shorter one:
    /// the length is that which its headers allow to read, and its end may be missing.
    bool isUnclosed = false;
};

/// Inspects a file and reads no media data but a few KB at its end. QuickTime/MP4, WAVE, AIFF and MXF are
/// read from their headers; all other files, and those that our own readers cannot read, are read through the
/// media library. Nothing if no reader can read it. Throws only std::bad_alloc; any thread. `path` is in the
/// bytes of the file system.
std::optional<MediaInspection> inspectMedia(const std::string& path);
/// The same for a file that is open already, so that one probe opens it once. `ranOut` is set when a later
/// call may give another result: the media library was needed and is missing, or ran out of time or memory.
std::optional<MediaInspection> inspectMedia(const std::string& path, RandomAccessFile& file, bool& ranOut);
/// What our own readers find, without the path and without a media library.
std::optional<MediaInspection> inspectMediaHeaders(RandomAccessFile& file);

/// The program that runs the media libraries. If it is missing or does not start, only the headers of
/// QuickTime, MP4, MXF, WAVE and AIFF files and the sound of WAVE files can be read.
struct MediaHelper {
    std::string path;      ///< empty if it is not beside the program
    std::string version;   ///< of OrvaneSync and of the interface; empty if it does not start
    std::string libraries; ///< for people, such as "libavformat 59.27.100, libsndfile-1.2.0"
    bool isUsable = false; ///< it was built together with this program
};
/// Starts the program if it is not running.
MediaHelper mediaHelper();
/// Whether a file needed the media libraries while their program was missing or did not start. Any thread.
bool mediaLibraryWasMissed();
/// Why the system gives that program no shared memory to return its data in; empty if it does. Any thread.
std::string whyNoSharedMemory();
/// Those of the codecs that can be decoded, by libavcodec's names.
std::vector<std::string> decodableCodecs(const std::vector<std::string>& codecs);

} // namespace orvane::platform
