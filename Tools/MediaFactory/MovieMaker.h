#pragma once

#include "MediaFactory/Bytes.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace orvane::test {

/// An atom with its 32-bit size. The other functions: with a wrong size; with the 64-bit form of the size;
/// with version and flags before its body.
std::string atom(std::string_view type, std::string_view body = {});
std::string atomClaiming(std::uint32_t size, std::string_view type, std::string_view body = {});
std::string wideAtom(std::string_view type, std::string_view body = {});
std::string fullAtom(std::string_view type, std::string_view body, int version = 0, std::uint32_t flags = 0);

struct VideoSpec {
    int width = 1920;
    int height = 1080;
    std::string codec = "avc1";
    std::uint32_t timescale = 25; ///< of the media, units per second
    std::uint32_t frameDuration = 1;
    std::uint32_t frames = 250;
    std::string entryAtoms = {}; ///< after the fields of the sample description
    bool enabled = true;
    /// The bytes of each picture, for the media data; as many as `frames`.
    std::vector<std::string> pictures = {};
};

struct AudioSpec {
    int channels = 2;
    double sampleRate = 48000; ///< also the timescale of the media
    std::string codec = "mp4a";
    std::uint32_t samples = 480000;
    int version = 0; ///< of the QuickTime sound description: 0, 1 or 2
    std::string entryAtoms = {};
    std::string sound = {}; ///< 16-bit samples for the media data, in the form of the codec "twos"
};

struct TimecodeSpec {
    std::uint32_t timescale = 25;
    std::uint32_t frameDuration = 1;
    std::uint32_t firstFrame = 0; ///< the sample as the file holds it
    std::uint32_t sampleSize = 4; ///< the uniform size that the sample table states
    std::string format = "tmcd";
    bool wideOffset = false;                        ///< "co64" instead of "stco"
    std::optional<std::uint64_t> sampleOffset = {}; ///< a wrong position
    std::uint32_t flags = 0;                        ///< 1 is drop frame
    std::vector<std::uint32_t> sizeTable = {};      ///< of single sizes, after a `sampleSize` of 0
    std::string trackAtoms = {};                    ///< whole atoms before the media, such as "edts"
};

/// A track of any kind.
struct TrackSpec {
    std::string handler = {};
    std::uint32_t timescale = 600;
    std::uint64_t duration = 600;
    std::string sampleEntry = {}; ///< the atom inside "stsd"; empty: "stsd" has no entry
    std::vector<std::pair<std::uint32_t, std::uint32_t>> timeToSample = {}; ///< count, duration
    std::uint32_t sampleSize = 1;
    double width = 0, height = 0; ///< of the track header
    bool enabled = true;
    bool wideOffset = false;
    std::optional<std::uint64_t> sampleOffset = {}; ///< absent: the start of the media data
    std::string sample = {};                        ///< bytes for this track in the media data
    std::vector<std::uint32_t> sizeTable = {};
    std::string trackAtoms = {};
};

using MetadataValue = std::variant<std::string, std::int64_t, double>;

/// Makes a QuickTime or MP4 file, tracks and metadata in the order of the calls:
///     MovieMaker().video({.width = 1280, .height = 720}).timecode({25, 1, 90000}).bytes()
class MovieMaker {
  public:
    MovieMaker& video(const VideoSpec& spec);
    MovieMaker& audio(const AudioSpec& spec);
    MovieMaker& timecode(const TimecodeSpec& spec);
    MovieMaker& track(const TrackSpec& spec);
    /// Adds an item to the movie's "meta" with "keys" and "ilst", such as "com.apple.quicktime.creationdate".
    MovieMaker& metadata(const std::string& key, const MetadataValue& value);
    /// Adds an item to the "ilst" in "udta", such as "\xA9" "day".
    MovieMaker& listItem(const std::string& type, const MetadataValue& value);
    /// A QuickTime text in "udta": length, language, text.
    MovieMaker& userData(const std::string& type, const std::string& text, std::uint16_t language = 0x55C4);
    /// Whole atoms: at the end of "moov", at the end of "udta", and at the top level before and after
    /// everything but "ftyp".
    MovieMaker& movieAtom(const std::string& bytes);
    MovieMaker& userDataAtom(const std::string& bytes);
    MovieMaker& leadingAtom(const std::string& bytes);
    MovieMaker& trailingAtom(const std::string& bytes);
    /// Replaces the movie header's duration, which is otherwise that of the longest track.
    MovieMaker& duration(std::uint64_t units, std::uint32_t timescale);
    /// The creation time of the movie header, seconds since 1904.
    MovieMaker& created(std::uint32_t time);
    /// Writes "moov" before "mdat" instead of after it.
    MovieMaker& movieFirst();
    /// Adds zeros to the media data, after the samples.
    MovieMaker& mediaBytes(std::uint64_t count);
    /// The 64-bit form of the size of "mdat".
    MovieMaker& wideMedia();
    /// "mdat" states the size 0, "to the end of the file".
    MovieMaker& endlessMedia();

    std::string bytes() const { return sparse().str(); }
    /// Throws std::runtime_error.
    void writeTo(const std::string& path) const { sparse().writeTo(path); }
    SparseBytes sparse() const;
    /// The "moov" atom alone, with offsets as if the media data began at 0.
    std::string movieAtomBytes() const { return movie(0); }

  private:
    std::string movie(std::uint64_t mediaStart) const;
    std::string userDataBox() const;
    std::string mediaHeader() const;

    std::vector<TrackSpec> tracks_;
    std::vector<std::pair<std::string, MetadataValue>> metadata_;
    std::vector<std::pair<std::string, MetadataValue>> listItems_;
    std::string userData_, movieAtoms_, leading_, trailing_;
    std::optional<std::pair<std::uint64_t, std::uint32_t>> duration_;
    bool movieFirst_ = false, wideMedia_ = false, endlessMedia_ = false;
    std::uint64_t mediaBytes_ = 0;
    std::uint32_t created_ = 0;
};

} // namespace orvane::test
