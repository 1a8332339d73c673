#include "OrvaneSyncCore/Services/Ingest/TimecodeTrackReader.h"

#include "OrvaneSyncCore/Utilities/Day.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Platform/MovieTail.h"
#include "Timecode/ExactRate.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace orvane {

namespace {

using platform::ByteCursor;
using platform::RandomAccessFile;

constexpr int mostAtoms = 10000;
constexpr std::uint64_t atomHeaderBytes = 8;
constexpr std::uint64_t wideHeaderBytes = 16;
constexpr std::uint64_t smallestMovie = 9;
constexpr std::uint32_t smallestSample = 4;
constexpr double highestRate = 240;
constexpr std::uint32_t dropFrameFlag = 1;

/// A section of the file, in bytes from the file's start.
struct Range {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

struct Atom {
    std::uint64_t position = 0;
    std::uint64_t size = 0; ///< including the header
    std::array<char, 4> type{};

    bool is(std::string_view name) const { return std::string_view(type.data(), type.size()) == name; }
    /// The contents begin 8 bytes after the start, also if the size has 64 bits.
    Range contents() const { return {position + atomHeaderBytes, position + size}; }
};

std::optional<Atom> readAtomHeader(RandomAccessFile& file, std::uint64_t position) {
    const ByteCursor header = file.peek(position, wideHeaderBytes);
    const auto size = header.u32be(0);
    const auto name = header.slice(4, 4);
    if (!size || !name) return std::nullopt;
    Atom atom{position, *size, {}};
    std::ranges::copy(name->text(), atom.type.begin());
    if (*size == 1) atom.size = header.u64be(atomHeaderBytes).value_or(*size);
    return atom;
}

/// Visits the atoms of a range, one after the other, until `visit` returns false.
template <class Visit>
void walkAtoms(RandomAccessFile& file, Range range, Visit visit) {
    std::uint64_t position = range.begin;
    for (int i = 0; i < mostAtoms && position < range.end && range.end - position >= atomHeaderBytes; ++i) {
        const auto atom = readAtomHeader(file, position);
        if (!atom || atom->size < atomHeaderBytes || atom->size > range.end - position) return;
        if (!visit(*atom)) return;
        position += atom->size;
    }
}

/// The same for all atoms of one type.
template <class Visit>
void eachAtom(RandomAccessFile& file, Range range, std::string_view type, Visit visit) {
    walkAtoms(file, range, [&](const Atom& atom) {
        if (atom.is(type)) visit(atom);
        return true;
    });
}

struct TimecodeParseResult {
    std::optional<std::uint64_t> chunkOffset; ///< file position of the track's first sample
    std::optional<std::uint32_t> sampleSize;  ///< of the first sample
    std::uint32_t flags = 0;                  ///< flags of the timecode
    std::uint32_t timescale = 0;              ///< 0: not found
    std::uint32_t frameDuration = 0;          ///< 0: not found
    double skippedSeconds = 0;                ///< of the track before the movie's start
};

struct MdiaParseResult {
    bool isTimecodeTrack = false;
    std::uint32_t mediaTimescale = 0; ///< units per second of the track's own time; 0: not found
    TimecodeParseResult samples;
};

template <class T>
void keep(T& field, const std::optional<std::uint32_t>& value) {
    if (value) field = *value; // NOLINT(bugprone-optional-value-conversion): not every field is optional
}

void parseSampleTable(RandomAccessFile& file, const Atom& table, TimecodeParseResult& result) {
    constexpr std::uint64_t offsetTableBytes = 20, wideOffsetTableBytes = 24, sizesBytes = 20,
                            sizeTableBytes = 24;
    constexpr std::uint64_t descriptionBytes = 50;
    walkAtoms(file, table.contents(), [&](const Atom& atom) {
        const ByteCursor body = file.peek(atom.position, descriptionBytes);
        if (atom.is("stco") && atom.size >= offsetTableBytes) {
            keep(result.chunkOffset, body.u32be(16));
        } else if (atom.is("co64") && atom.size >= wideOffsetTableBytes) {
            if (const auto offset = body.u64be(16)) result.chunkOffset = offset;
        } else if (atom.is("stsz") && atom.size >= sizesBytes) {
            // One size for all samples, or 0 and a table. Many cameras write a table even for one entry.
            std::optional<std::uint32_t> size = body.u32be(12);
            if (size == 0U && body.u32be(16).value_or(0) > 0 && atom.size >= sizeTableBytes)
                size = body.u32be(20);
            keep(result.sampleSize, size);
        } else if (atom.is("stsd") && atom.size >= descriptionBytes) {
            const auto format = body.slice(20, 4);
            if (format && format->text() == "tmcd") {
                keep(result.flags, body.u32be(36));
                keep(result.timescale, body.u32be(40));
                keep(result.frameDuration, body.u32be(44));
            }
        }
        return true;
    });
}

MdiaParseResult parseMedia(RandomAccessFile& file, const Atom& media) {
    constexpr std::uint64_t handlerBytes = 20;
    constexpr std::size_t mediaHeaderBytes = 32; ///< up to the timescale, in both forms
    MdiaParseResult result;
    walkAtoms(file, media.contents(), [&](const Atom& atom) {
        if (atom.is("mdhd")) {
            const ByteCursor header =
                file.peek(atom.position, atom.size < mediaHeaderBytes ? static_cast<std::size_t>(atom.size)
                                                                      : mediaHeaderBytes);
            keep(result.mediaTimescale, header.u32be(header.u8(atomHeaderBytes) == 1 ? 28 : 20));
        } else if (atom.is("hdlr") && atom.size >= handlerBytes) {
            if (file.peek(atom.position + 16, 4).text() == "tmcd") result.isTimecodeTrack = true;
        } else if (atom.is("minf")) {
            eachAtom(file, atom.contents(), "stbl",
                     [&](const Atom& table) { parseSampleTable(file, table, result.samples); });
        }
        return true;
    });
    return result;
}

/// The time in the track at which the movie begins, in units of the track's own time. A trimmed copy keeps
/// all samples and has an edit list that begins later. Empty edits delay picture and timecode by the same
/// time, so they are skipped.
std::uint64_t firstMediaTime(RandomAccessFile& file, const Atom& edits) {
    std::uint64_t first = 0;
    eachAtom(file, edits.contents(), "elst", [&](const Atom& list) {
        constexpr std::uint64_t listHeaderBytes = 16, mostEntries = 16;
        const bool isWide = file.peek(list.position + atomHeaderBytes, 1).u8(0) == 1;
        const std::uint64_t entryBytes = isWide ? 20 : 12;
        const std::uint32_t claimed = file.peek(list.position + 12, 4).u32be(0).value_or(0);
        for (std::uint64_t i = 0; i < std::min<std::uint64_t>(claimed, mostEntries); ++i) {
            const std::uint64_t at = listHeaderBytes + i * entryBytes;
            if (at + entryBytes > list.size) return;
            const ByteCursor entry = file.peek(list.position + at, entryBytes);
            const std::int64_t time =
                isWide ? static_cast<std::int64_t>(entry.u64be(8).value_or(0))
                       : std::int64_t{static_cast<std::int32_t>(entry.u32be(4).value_or(0))};
            if (time < 0) continue;
            first = static_cast<std::uint64_t>(time);
            return;
        }
    });
    return first;
}

std::optional<TimecodeParseResult> parseMovie(RandomAccessFile& file, Range movie) {
    std::optional<TimecodeParseResult> found;
    walkAtoms(file, movie, [&](const Atom& track) {
        if (!track.is("trak")) return true;
        MdiaParseResult media;
        eachAtom(file, track.contents(), "mdia", [&](const Atom& atom) { media = parseMedia(file, atom); });
        if (!media.isTimecodeTrack || !media.samples.chunkOffset) return true;
        found = media.samples;
        if (media.mediaTimescale > 0)
            eachAtom(file, track.contents(), "edts", [&](const Atom& edits) {
                found->skippedSeconds =
                    static_cast<double>(firstMediaTime(file, edits)) / media.mediaTimescale;
            });
        return false;
    });
    return found;
}

std::optional<Range> findMovie(RandomAccessFile& file) {
    std::optional<Atom> movie;
    walkAtoms(file, {0, file.size()}, [&movie](const Atom& atom) {
        if (atom.is("moov")) movie = atom;
        return !movie;
    });
    if (!movie) {
        const auto hidden = platform::findMovieInTail(file);
        return hidden ? std::optional(Range{hidden->begin, hidden->end}) : std::nullopt;
    }
    if (movie->size < smallestMovie) return std::nullopt;
    return movie->contents();
}

/// The timecode counted at 24 frames a second, for a track without a rate.
std::string plainTimecode(std::int64_t n) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%02d:%02d:%02d:%02d", static_cast<int>(n / 86400),
                  static_cast<int>(n / 1440 % 60), static_cast<int>(n / 24 % 60), static_cast<int>(n % 24));
    return text.data();
}

/// Whole frames; 0 if the edit list begins a day or more later.
std::int64_t skippedFrames(double seconds, double fps) {
    constexpr double rounding = 1e-5; // of a frame
    return seconds < secondsADay ? static_cast<std::int64_t>(seconds * fps + rounding) : 0;
}

std::optional<TimecodeTrackReader::Start> readSample(RandomAccessFile& file,
                                                     const TimecodeParseResult& samples) {
    if (!samples.chunkOffset || !samples.sampleSize || *samples.sampleSize < smallestSample)
        return std::nullopt;
    if (*samples.chunkOffset > file.size() || *samples.sampleSize > file.size() - *samples.chunkOffset)
        return std::nullopt;
    const auto raw = file.peek(*samples.chunkOffset, smallestSample).u32be(0);
    if (!raw) return std::nullopt;
    const std::int64_t n = std::abs(std::int64_t{static_cast<std::int32_t>(*raw)});

    if (samples.timescale > 0 && samples.frameDuration > 0) {
        const double fps = static_cast<double>(samples.timescale) / samples.frameDuration;
        if (fps <= highestRate) {
            const auto rate = timecodeRate::nearest(fps, (samples.flags & dropFrameFlag) != 0);
            const std::int64_t first = n + skippedFrames(samples.skippedSeconds, fps);
            return TimecodeTrackReader::Start{
                TimecodeUtils::framesToTC(first, rate.value_or(TimecodeUtils::frameRate(fps))),
                exactRateValue(fps), rate};
        }
    }
    return TimecodeTrackReader::Start{plainTimecode(n), std::nullopt, std::nullopt};
}

} // namespace

std::optional<TimecodeTrackReader::Start> TimecodeTrackReader::read(RandomAccessFile& file) {
    if (file.size() < atomHeaderBytes) return std::nullopt;
    const auto movie = findMovie(file);
    if (!movie) return std::nullopt;
    const auto samples = parseMovie(file, *movie);
    if (!samples) return std::nullopt;
    return readSample(file, *samples);
}

} // namespace orvane
