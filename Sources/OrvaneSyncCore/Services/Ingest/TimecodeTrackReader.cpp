#include "OrvaneSyncCore/Services/Ingest/TimecodeTrackReader.h"

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
constexpr std::uint64_t headerBytes = 8;
constexpr std::uint64_t wideHeaderBytes = 16;
constexpr std::uint64_t smallestMovie = 9;
constexpr std::uint32_t smallestSample = 4;
constexpr double highestRate = 240;
constexpr std::uint32_t dropFrameFlag = 1;

/// A stretch of the file; positions count from its start.
struct Range {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

struct Atom {
    std::uint64_t position = 0;
    std::uint64_t size = 0; ///< header included
    std::array<char, 4> type{};

    bool is(std::string_view name) const { return std::string_view(type.data(), type.size()) == name; }
    /// The contents always begin 8 bytes behind the start, also behind a 64-bit size.
    Range contents() const { return {position + headerBytes, position + size}; }
};

std::optional<Atom> readAtomHeader(RandomAccessFile& file, std::uint64_t position) {
    const ByteCursor header = file.peek(position, wideHeaderBytes);
    const auto size = header.u32be(0);
    const auto name = header.slice(4, 4);
    if (!size || !name) return std::nullopt;
    Atom atom{position, *size, {}};
    std::ranges::copy(name->text(), atom.type.begin());
    if (*size == 1) atom.size = header.u64be(headerBytes).value_or(*size);
    return atom;
}

/// Visits the atoms that lie side by side in a range until `visit` says that it has seen enough.
template <class Visit>
void walkAtoms(RandomAccessFile& file, Range range, Visit visit) {
    std::uint64_t position = range.begin;
    for (int i = 0; i < mostAtoms && position < range.end && range.end - position >= headerBytes; ++i) {
        const auto atom = readAtomHeader(file, position);
        if (!atom || atom->size < headerBytes || atom->size > range.end - position) return;
        if (!visit(*atom)) return;
        position += atom->size;
    }
}

/// As `walkAtoms`, for all atoms of one type.
template <class Visit>
void eachAtom(RandomAccessFile& file, Range range, std::string_view type, Visit visit) {
    walkAtoms(file, range, [&](const Atom& atom) {
        if (atom.is(type)) visit(atom);
        return true;
    });
}

struct TimecodeParseResult {
    std::optional<std::uint64_t> chunkOffset; ///< file position of the track's first sample
    std::optional<std::uint32_t> sampleSize;  ///< the uniform size; the table of single sizes is not read
    std::uint32_t flags = 0;                  ///< of the timecode
    std::uint32_t timescale = 0;              ///< 0 when not seen
    std::uint32_t frameDuration = 0;          ///< 0 when not seen
};

struct MdiaParseResult {
    bool isTimecodeTrack = false;
    TimecodeParseResult samples;
};

template <class T>
void keep(T& field, const std::optional<std::uint32_t>& value) {
    if (value) field = *value;
}

void parseSampleTable(RandomAccessFile& file, const Atom& table, TimecodeParseResult& result) {
    constexpr std::uint64_t offsetTableBytes = 20, wideOffsetTableBytes = 24, sizesBytes = 20;
    constexpr std::uint64_t descriptionBytes = 50;
    walkAtoms(file, table.contents(), [&](const Atom& atom) {
        const ByteCursor body = file.peek(atom.position, descriptionBytes);
        if (atom.is("stco") && atom.size >= offsetTableBytes) {
            keep(result.chunkOffset, body.u32be(16));
        } else if (atom.is("co64") && atom.size >= wideOffsetTableBytes) {
            if (const auto offset = body.u64be(16)) result.chunkOffset = *offset;
        } else if (atom.is("stsz") && atom.size >= sizesBytes) {
            keep(result.sampleSize, body.u32be(12));
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
    MdiaParseResult result;
    walkAtoms(file, media.contents(), [&](const Atom& atom) {
        if (atom.is("hdlr") && atom.size >= handlerBytes) {
            if (file.peek(atom.position + 16, 4).text() == "tmcd") result.isTimecodeTrack = true;
        } else if (atom.is("minf")) {
            eachAtom(file, atom.contents(), "stbl",
                     [&](const Atom& table) { parseSampleTable(file, table, result.samples); });
        }
        return true;
    });
    return result;
}

std::optional<TimecodeParseResult> parseMovie(RandomAccessFile& file, Range movie) {
    std::optional<TimecodeParseResult> found;
    walkAtoms(file, movie, [&](const Atom& track) {
        if (!track.is("trak")) return true;
        MdiaParseResult media;
        eachAtom(file, track.contents(), "mdia", [&](const Atom& atom) { media = parseMedia(file, atom); });
        if (media.isTimecodeTrack && media.samples.chunkOffset) found = media.samples;
        return !found;
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

/// Frames counted at 24 a second, where the track does not say a rate.
std::string plainTimecode(std::int64_t n) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%02d:%02d:%02d:%02d", static_cast<int>(n / 86400),
                  static_cast<int>(n / 1440 % 60), static_cast<int>(n / 24 % 60), static_cast<int>(n % 24));
    return text.data();
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
            return TimecodeTrackReader::Start{
                TimecodeUtils::framesToTC(n, rate.value_or(TimecodeUtils::frameRate(fps))),
                exactRateValue(fps), rate};
        }
    }
    return TimecodeTrackReader::Start{plainTimecode(n), std::nullopt, std::nullopt};
}

} // namespace

std::optional<TimecodeTrackReader::Start> TimecodeTrackReader::read(RandomAccessFile& file) {
    if (file.size() < headerBytes) return std::nullopt;
    const auto movie = findMovie(file);
    if (!movie) return std::nullopt;
    const auto samples = parseMovie(file, *movie);
    if (!samples) return std::nullopt;
    return readSample(file, *samples);
}

} // namespace orvane
