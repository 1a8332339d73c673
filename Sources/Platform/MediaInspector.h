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

/// Hz. What claims more is no sample rate.
constexpr double highestSampleRate = 10'000'000;

/// The timecode of the first frame, as a container counts it.
struct CountedTimecode {
    std::int64_t frames = 0; ///< since midnight; drop frame skips labels, not frames
    std::uint32_t rateNumerator = 0, rateDenominator = 1; ///< frames per second of the count
    bool isDrop = false;
};

/// What the headers of a media file say. Whatever a file does not say is absent. Cover art and timecode
/// tracks are no video tracks.
struct MediaInspection {
    struct VideoTrack {
        std::optional<double> width;  ///< pixels, as coded
        std::optional<double> height; ///< pixels, as coded
        /// Frames per second: number of samples over the media's duration, rounded to 32-bit precision.
        std::optional<double> nominalFrameRate;
        /// Seconds of the file's timeline until its last picture has been shown, edit lists counted; read
        /// from QuickTime and MP4 files.
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
    /// Of an MXF. The timecode track of a movie is a track with samples, and not read here.
    std::optional<CountedTimecode> startTimecode;
    /// Seconds since 1970 UTC: when the header of a movie, or the package of an MXF, says that it was made.
    std::optional<std::int64_t> headerTime;
    /// Of a file that ends before its headers say it does: the share of its media data that is there, below
    /// 1; 0 where the header that says how to read it is missing. The length of a WAVE or AIFF file is then
    /// that of what is there; that of others is what the headers promise. A WAVE file, and a movie whose
    /// header comes first, end where nothing but zeros follow, as behind a copy that broke off.
    std::optional<double> heldShare;
    /// Of a WAVE or AIFF file whose recorder never wrote how long its sound is, or had written less than
    /// there is: the length is that of what its headers allow to read, and its end may be missing.
    bool isUnclosed = false;
};

/// Inspects a file without reading media data but for a few KB at its end. QuickTime/MP4, WAVE, AIFF and MXF
/// are read from their headers alone; everything else, and what our own readers cannot read, goes through the
/// media library. Nothing when nobody can read it. Throws nothing but std::bad_alloc; any thread. `path` is
/// in the bytes of the file system.
std::optional<MediaInspection> inspectMedia(const std::string& path);
/// The same on a file that is open already, so that one probe opens it once. `ranOut` is set when the
/// result depends on the moment: the media library was needed and is missing, or ran out of time or memory.
std::optional<MediaInspection> inspectMedia(const std::string& path, RandomAccessFile& file, bool& ranOut);
/// What our own readers can tell, without the path and without a media library.
std::optional<MediaInspection> inspectMediaHeaders(RandomAccessFile& file);

/// The program that runs the media libraries. Where it is missing or does not start, only the headers of
/// QuickTime, MP4, MXF, WAVE and AIFF files and the sound of WAVE files can be read.
struct MediaHelper {
    std::string path;      ///< empty where it is not beside the program
    std::string version;   ///< of OrvaneSync and of the interface; empty where it does not start
    std::string libraries; ///< for people, such as "libavformat 59.27.100, libsndfile-1.2.0"
    bool isUsable = false; ///< it was built together with this program
};
/// Starts it where none is running.
MediaHelper mediaHelper();
/// Whether a file has asked for the media libraries while their program is missing or does not start. Any
/// thread.
bool mediaLibraryWasMissed();
/// Why the system gives that program no memory to hand over what it reads; empty where it does. Any thread.
std::string whyNoSharedMemory();
/// Those of the codecs, by the names that libavcodec gives them, that can be decoded.
std::vector<std::string> decodableCodecs(const std::vector<std::string>& codecs);

} // namespace orvane::platform
