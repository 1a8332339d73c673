#include "Platform/Media/MovieHeaders.h"

#include "Platform/Media/MovieAtoms.h"
#include "Platform/Media/MovieFragments.h"
#include "Platform/Media/MovieMetadata.h"
#include "Platform/Media/MovieSampleDescription.h"
#include "Platform/Media/ZeroTail.h"
#include "Platform/MovieTail.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace orvane::platform {

namespace {

/// Enough fragments to compute a frame rate; all of them are read only if nothing else states the duration.
constexpr int fragmentsForRate = 16;
constexpr int mostFragments = 10000;
constexpr std::size_t mostTracks = 1000;
constexpr std::uint64_t smallHeaderBytes = 8; ///< of an atom whose size has 32 bits
constexpr std::size_t datedHeaderBytes = 36;  ///< of a movie, media or track header, up to its duration
/// Most runs of equal samples that are added up if a media header states no duration.
constexpr std::size_t mostTimeRuns = 65536;

/// Units per second, and a number of units; 0 if not known.
struct TimeSpan {
    std::uint32_t timescale = 0;
    std::uint64_t units = 0;
};

struct Track {
    std::uint32_t trackID = 0;
    std::uint32_t handler = 0;
    bool isEnabled = true;
    std::uint32_t headerWidth = 0, headerHeight = 0; ///< pixels
    std::uint64_t shownUnits = 0;                    ///< in units of the movie, edits included
    bool hasEdits = false;
    TimeSpan media;
    std::optional<Atom> descriptions, times, sizes;
};

struct Movie {
    TimeSpan header;
    bool hasHeader = false;
    std::uint64_t extendedUnits = 0; ///< "mehd": with all fragments, units of the movie
    std::vector<Track> tracks;
    FragmentedTracks fragments;
};

/// All ones mean "not known", which is 0 here.
std::uint64_t readUnits(const ByteCursor& body, std::size_t at, bool isWide) {
    const std::uint64_t units = isWide ? body.u64be(at).value_or(0) : body.u32be(at).value_or(0);
    return units == (isWide ? UINT64_MAX : UINT32_MAX) ? 0 : units;
}

/// The timescale and duration, which "mvhd" and "mdhd" keep at the same places.
TimeSpan readTimeSpan(RandomAccessFile& file, const Atom& atom) {
    const ByteCursor body = peekBody(file, atom, datedHeaderBytes);
    const bool isWide = body.u8(0) == 1;
    return {body.u32be(isWide ? 20 : 12).value_or(0), readUnits(body, isWide ? 24 : 16, isWide)};
}

/// The creation time of "mvhd", which counts from 1904. Nothing if it is 0.
std::optional<std::int64_t> readCreationTime(RandomAccessFile& file, const Atom& mvhd) {
    constexpr std::int64_t secondsFrom1904To1970 = 2'082'844'800;
    const ByteCursor body = peekBody(file, mvhd, datedHeaderBytes);
    const std::uint64_t time =
        body.u8(0) == 1 ? body.u64be(4).value_or(0) : std::uint64_t{body.u32be(4).value_or(0)};
    if (time == 0 || time > INT64_MAX) return std::nullopt;
    return static_cast<std::int64_t>(time) - secondsFrom1904To1970;
}

double seconds(double units, std::uint32_t timescale) { return timescale == 0 ? 0 : units / timescale; }
double seconds(const TimeSpan& span) { return seconds(static_cast<double>(span.units), span.timescale); }

/// Sums a run length table, for the rare file whose media header does not state its duration. 0 for a table
/// that was cut off or is too long.
std::uint64_t sumTimes(RandomAccessFile& file, const Atom& stts) {
    constexpr std::size_t listHeaderBytes = 8, runBytes = 8;
    const std::uint32_t claimed = peekBody(file, stts, listHeaderBytes).u32be(4).value_or(0);
    if (claimed > mostTimeRuns || stts.bodySize() < listHeaderBytes + claimed * runBytes) return 0;
    std::uint64_t sum = 0;
    for (std::uint64_t i = 0; i < claimed; ++i) {
        const ByteCursor run = file.peek(stts.body + listHeaderBytes + i * runBytes, runBytes);
        sum += std::uint64_t{run.u32be(0).value_or(0)} * run.u32be(4).value_or(0);
    }
    return sum;
}

/// From "stsz" or "stz2", which have the count at the same place. A table that states each size cannot count
/// more samples than it has room for.
std::uint64_t countSamples(RandomAccessFile& file, const Atom& sizes) {
    constexpr std::size_t fieldsBytes = 12;
    const ByteCursor body = peekBody(file, sizes, fieldsBytes);
    const std::uint32_t uniform = body.u32be(4).value_or(0), count = body.u32be(8).value_or(0);
    const std::uint64_t room = (sizes.bodySize() - fieldsBytes) * 8;
    std::uint64_t bits = 0;
    if (sizes.type == fourCC("stz2"))
        bits = uniform & 0xFFU;
    else if (uniform == 0)
        bits = 32;
    return bits == 0 ? count : std::min<std::uint64_t>(count, room / bits);
}

class MovieReader {
  public:
    explicit MovieReader(RandomAccessFile& file) : file_(file) {}

    std::optional<MediaInspection> read() {
        const auto moov = findMovie();
        if (!moov) return std::nullopt;
        // Nothing is missing after a header at the end of the file, whatever its media data states.
        if (moov->end < file_.size()) result_.heldShare = heldShareOfMovie(file_);
        readMovie(*moov);
        if (!movie_.hasHeader && movie_.tracks.empty()) return std::nullopt;
        if (!movie_.fragments.empty())
            sumFragments(file_, moov->end, knowsDuration() ? fragmentsForRate : mostFragments,
                         movie_.fragments);

        result_.durationSeconds = duration();
        // Only an initialisation segment: its index states how much there would be.
        if (result_.durationSeconds == 0 && !movie_.fragments.empty())
            result_.durationSeconds = indexedSeconds(file_, moov->end);
        if (!result_.heldShare && movie_.fragments.empty()) result_.heldShare = shareBeforeZeros(moov->end);
        for (const Track& track : movie_.tracks) {
            if (track.handler == fourCC("vide")) addVideo(track);
            if (track.handler == fourCC("soun")) addAudio(track);
        }
        return std::move(result_);
    }

  private:
    /// For media data after the header: the part that a copy did not reach is zeros. Nothing for complete
    /// data.
    std::optional<double> shareBeforeZeros(std::uint64_t behindHeader) {
        AtomReader atoms(file_, behindHeader, file_.size());
        const double seconds = result_.durationSeconds.value_or(0);
        while (const auto atom = atoms.next()) {
            if (atom->type != fourCC("mdat")) continue;
            const auto size = static_cast<double>(atom->bodySize());
            if (!(seconds > 0) || !(size > 0)) break;
            const std::uint64_t end = endOfWritten(
                file_, {.begin = atom->body, .end = atom->end, .bytesPerSecond = size / seconds});
            if (end < atom->end) return static_cast<double>(end - atom->body) / size;
        }
        return std::nullopt;
    }
    /// Media data whose stated end is the end of the file, or beyond it, may hide the header from a reader of
    /// the atoms.
    std::optional<Atom> findMovie() {
        AtomReader atoms(file_, 0, file_.size());
        std::uint64_t end = 0;
        bool isMedia = false;
        while (const auto atom = atoms.next()) {
            if (atom->type == fourCC("moov")) return atom;
            isMedia = atom->type == fourCC("mdat");
            end = atom->end;
        }
        if (end < file_.size()) isMedia = file_.peek(end + 4, 4).u32be(0) == fourCC("mdat");
        const auto found = isMedia ? findMovieInTail(file_) : std::nullopt;
        if (!found || found->end > file_.size()) return std::nullopt;
        return Atom{fourCC("moov"), found->begin - smallHeaderBytes, found->begin, found->end};
    }

    void readMovie(const Atom& moov) {
        AtomReader atoms(file_, moov);
        while (const auto atom = atoms.next()) {
            switch (atom->type) {
            case fourCC("mvhd"):
                movie_.header = readTimeSpan(file_, *atom);
                result_.headerTime = readCreationTime(file_, *atom);
                movie_.hasHeader = true;
                break;
            case fourCC("trak"):
                if (movie_.tracks.size() < mostTracks) movie_.tracks.push_back(readTrack(*atom));
                break;
            case fourCC("mvex"):
                readExtends(*atom);
                break;
            case fourCC("meta"):
                readMetadata(file_, *atom, result_.metadata);
                break;
            case fourCC("udta"):
                readUserData(file_, *atom, result_.metadata);
                break;
            default:
                break;
            }
        }
    }

    void readExtends(const Atom& mvex) {
        AtomReader atoms(file_, mvex);
        while (const auto atom = atoms.next()) {
            if (atom->type == fourCC("mehd")) {
                const ByteCursor body = peekBody(file_, *atom, 12);
                movie_.extendedUnits = readUnits(body, 4, body.u8(0) == 1);
            } else if (atom->type == fourCC("trex") && movie_.fragments.size() < mostTracks) {
                addTrackExtends(file_, *atom, movie_.fragments);
            }
        }
    }

    Track readTrack(const Atom& trak) {
        Track track;
        AtomReader atoms(file_, trak);
        while (const auto atom = atoms.next()) {
            if (atom->type == fourCC("tkhd")) readTrackHeader(*atom, track);
            if (atom->type == fourCC("edts")) track.hasEdits = true;
            if (atom->type == fourCC("mdia")) readMedia(*atom, track);
        }
        return track;
    }

    void readTrackHeader(const Atom& tkhd, Track& track) {
        constexpr std::size_t narrowBytes = 84, widerBy = 12;
        const ByteCursor body = peekBody(file_, tkhd, narrowBytes + widerBy);
        const std::size_t shift = body.u8(0) == 1 ? widerBy : 0;
        constexpr std::uint32_t enabledFlag = 1;
        track.isEnabled = (body.u32be(0).value_or(enabledFlag) & enabledFlag) != 0;
        track.trackID = body.u32be(shift == 0 ? 12 : 20).value_or(0);
        track.shownUnits = readUnits(body, shift == 0 ? 20 : 28, shift != 0);
        track.headerWidth = body.u32be(76 + shift).value_or(0) >> 16U;
        track.headerHeight = body.u32be(80 + shift).value_or(0) >> 16U;
    }

    void readMedia(const Atom& mdia, Track& track) {
        AtomReader atoms(file_, mdia);
        while (const auto atom = atoms.next()) {
            if (atom->type == fourCC("mdhd")) track.media = readTimeSpan(file_, *atom);
            if (atom->type == fourCC("hdlr")) track.handler = peekBody(file_, *atom, 12).u32be(8).value_or(0);
            if (atom->type != fourCC("minf")) continue;
            if (const auto table = findChild(file_, *atom, fourCC("stbl"))) readSampleTable(*table, track);
        }
    }

    void readSampleTable(const Atom& stbl, Track& track) {
        AtomReader atoms(file_, stbl);
        while (const auto atom = atoms.next()) {
            if (atom->type == fourCC("stsd")) track.descriptions = *atom;
            if (atom->type == fourCC("stts")) track.times = *atom;
            if (atom->type == fourCC("stsz") || atom->type == fourCC("stz2")) track.sizes = *atom;
        }
    }

    bool holdsSamples() {
        return std::ranges::any_of(movie_.tracks, [this](const Track& track) {
            return track.sizes && countSamples(file_, *track.sizes) > 0;
        });
    }

    /// A header without samples of its own states the whole duration, fragments included. One with samples
    /// states only their duration: a recording in fragments that was never finished.
    bool knowsDuration() { return movie_.extendedUnits > 0 || (movie_.header.units > 0 && !holdsSamples()); }

    double fragmentSeconds() const {
        double longest = 0;
        for (const Track& track : movie_.tracks)
            if (const auto found = movie_.fragments.find(track.trackID); found != movie_.fragments.end())
                longest = std::max(longest, seconds(found->second.duration, track.media.timescale));
        return longest;
    }

    std::optional<double> duration() {
        if (movie_.header.timescale == 0) return std::nullopt;
        if (movie_.extendedUnits > 0)
            return seconds(static_cast<double>(movie_.extendedUnits), movie_.header.timescale);
        if (movie_.header.units > 0)
            return seconds(movie_.header) + (knowsDuration() ? 0 : fragmentSeconds());
        double longest = 0;
        for (const Track& track : movie_.tracks) longest = std::max(longest, seconds(track.media));
        return longest + (longest > 0 && !holdsSamples() ? 0 : fragmentSeconds());
    }

    std::optional<double> nominalFrameRate(const Track& track) {
        double samples = 0, units = 0;
        if (track.sizes) samples = static_cast<double>(countSamples(file_, *track.sizes));
        if (samples > 0) {
            units = static_cast<double>(track.media.units);
            if (units <= 0 && track.times) units = static_cast<double>(sumTimes(file_, *track.times));
        } else {
            const auto found = movie_.fragments.find(track.trackID);
            if (found == movie_.fragments.end()) return std::nullopt;
            samples = found->second.samples;
            units = found->second.duration;
        }
        const double length = seconds(units, track.media.timescale);
        if (samples <= 0 || length <= 0) return std::nullopt;
        return static_cast<double>(static_cast<float>(samples / length));
    }

    /// The track header includes the edits, which may delay a track or show a part of it, but in units of the
    /// movie, which may be as coarse as a millisecond.
    std::optional<double> endSeconds(const Track& track) {
        const double edited = seconds(static_cast<double>(track.shownUnits), movie_.header.timescale);
        if (track.hasEdits && edited > 0) return edited;
        if (!movie_.fragments.empty() && knowsDuration()) return std::nullopt; // not all were added up
        double own = seconds(track.media);
        if (const auto found = movie_.fragments.find(track.trackID); found != movie_.fragments.end())
            own += seconds(found->second.duration, track.media.timescale);
        return own > 0 ? std::optional(own) : std::nullopt;
    }

    /// Chapter pictures are tracks of still images, which no player shows as the picture.
    static bool isStillImages(const Track& track, std::uint32_t codec) {
        const bool isImage = codec == fourCC("jpeg") || codec == fourCC("png ") || codec == fourCC("gif ");
        return isImage && !track.isEnabled;
    }

    void addVideo(const Track& track) {
        const auto description =
            track.descriptions ? readVideoDescription(file_, *track.descriptions) : std::nullopt;
        MediaInspection::VideoTrack video;
        std::uint32_t width = track.headerWidth, height = track.headerHeight;
        if (description) {
            if (isStillImages(track, description->codec)) return;
            video.codecFourCC = fourCCText(description->codec);
            if (description->width > 0 && description->height > 0) {
                width = description->width;
                height = description->height;
            }
        }
        if (width > 0 && height > 0) {
            video.width = width;
            video.height = height;
        }
        video.nominalFrameRate = nominalFrameRate(track);
        video.endSeconds = endSeconds(track);
        result_.videoTracks.push_back(std::move(video));
    }

    void addAudio(const Track& track) {
        const auto description =
            track.descriptions ? readAudioDescription(file_, *track.descriptions) : std::nullopt;
        MediaInspection::AudioTrack audio;
        if (description) {
            constexpr std::uint32_t mostChannels = 65535;
            if (description->channels > 0 && description->channels <= mostChannels)
                audio.channelCount = static_cast<int>(description->channels);
            // The media of a sound track counts in samples.
            const double rate = description->sampleRate > 0 ? description->sampleRate : track.media.timescale;
            if (rate > 0 && rate <= highestSampleRate) audio.sampleRate = rate;
        }
        result_.audioTracks.push_back(audio);
    }

    RandomAccessFile& file_;
    Movie movie_;
    MediaInspection result_;
};

} // namespace

std::optional<MediaInspection> inspectMovie(RandomAccessFile& file) { return MovieReader(file).read(); }

std::optional<double> heldShareOfMovie(RandomAccessFile& file) {
    AtomReader atoms(file, 0, file.size());
    std::uint64_t end = 0, media = 0;
    bool hasHeader = false;
    while (const auto atom = atoms.next()) {
        if (atom->type == fourCC("mdat")) media += atom->bodySize();
        hasHeader = hasHeader || atom->type == fourCC("moov");
        end = atom->end;
    }
    // A camera that lost power while recording has not written the header.
    if (end == file.size() && media > 0 && !hasHeader) return 0;
    // Reading ends at an atom that states more than the file has.
    constexpr std::size_t wideHeaderBytes = 16;
    const std::uint64_t left = file.size() - end;
    const ByteCursor header =
        file.peek(end, static_cast<std::size_t>(std::min<std::uint64_t>(left, wideHeaderBytes)));
    if (end == 0 || header.u32be(4) != fourCC("mdat")) return std::nullopt;
    std::uint64_t size = header.u32be(0).value_or(0), ownHeader = smallHeaderBytes;
    if (size == 1) {
        size = header.u64be(smallHeaderBytes).value_or(0);
        ownHeader = wideHeaderBytes;
    }
    if (size <= left || left < ownHeader) return std::nullopt;
    return static_cast<double>(media + left - ownHeader) /
           (static_cast<double>(media) + static_cast<double>(size - ownHeader));
}

} // namespace orvane::platform
