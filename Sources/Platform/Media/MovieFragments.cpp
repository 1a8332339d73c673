#include "Platform/Media/MovieFragments.h"

#include <algorithm>

namespace orvane::platform {

namespace {

constexpr std::size_t runHeaderBytes = 8; ///< version, flags, sample count

struct FragmentHeader {
    std::uint32_t trackID = 0;
    std::optional<std::uint32_t> defaultSampleDuration;
};

std::optional<FragmentHeader> readFragmentHeader(RandomAccessFile& file, const Atom& tfhd) {
    constexpr std::uint32_t hasBaseOffset = 0x1, hasDescription = 0x2, hasDuration = 0x8;
    const ByteCursor body = peekBody(file, tfhd, 32);
    const auto flags = body.u32be(0), trackID = body.u32be(4);
    if (!flags || !trackID) return std::nullopt;
    FragmentHeader header{*trackID, std::nullopt};
    const std::size_t at =
        8U + ((*flags & hasBaseOffset) != 0 ? 8U : 0U) + ((*flags & hasDescription) != 0 ? 4U : 0U);
    if ((*flags & hasDuration) != 0) header.defaultSampleDuration = body.u32be(at);
    return header;
}

/// Adds a run ("trun") whose samples each state their duration, window by window.
void addTimedSamples(RandomAccessFile& file, std::uint64_t begin, std::uint64_t end, std::size_t stride,
                     std::uint32_t count, FragmentedTrack& into) {
    const std::uint64_t present = std::min<std::uint64_t>(count, (end - begin) / stride);
    const std::size_t perWindow = RandomAccessFile::windowBytes / stride;
    for (std::uint64_t done = 0; done < present;) {
        const auto some = static_cast<std::size_t>(std::min<std::uint64_t>(present - done, perWindow));
        const ByteCursor samples = file.peek(begin + done * stride, some * stride);
        for (std::size_t i = 0; i < some; ++i) into.duration += samples.u32be(i * stride).value_or(0);
        done += some;
    }
    into.samples += static_cast<double>(present);
}

void addRun(RandomAccessFile& file, const Atom& trun, std::uint32_t defaultDuration, FragmentedTrack& into) {
    constexpr std::uint32_t hasDataOffset = 0x1, hasFirstFlags = 0x4, hasDuration = 0x100;
    constexpr std::uint32_t perSampleFields = 0xF00; // duration, size, flags, composition offset
    const ByteCursor body = peekBody(file, trun, runHeaderBytes);
    const auto flags = body.u32be(0), count = body.u32be(4);
    if (!flags || !count) return;
    if ((*flags & hasDuration) == 0) {
        into.samples += *count;
        into.duration += static_cast<double>(*count) * defaultDuration;
        return;
    }
    std::size_t stride = 0;
    for (std::uint32_t field = hasDuration; field < perSampleFields; field <<= 1U)
        if ((*flags & field) != 0) stride += 4;
    const std::uint64_t begin = trun.body + runHeaderBytes + ((*flags & hasDataOffset) != 0 ? 4U : 0U) +
                                ((*flags & hasFirstFlags) != 0 ? 4U : 0U);
    if (begin < trun.end) addTimedSamples(file, begin, trun.end, stride, *count, into);
}

void addTrackFragment(RandomAccessFile& file, const Atom& traf, FragmentedTracks& tracks) {
    const auto tfhd = findChild(file, traf, fourCC("tfhd"));
    const auto header = tfhd ? readFragmentHeader(file, *tfhd) : std::nullopt;
    if (!header) return;
    const auto found = tracks.find(header->trackID);
    if (found == tracks.end()) return;
    FragmentedTrack& track = found->second;
    const std::uint32_t duration = header->defaultSampleDuration.value_or(track.defaultSampleDuration);
    AtomReader atoms(file, traf);
    while (const auto child = atoms.next())
        if (child->type == fourCC("trun")) addRun(file, *child, duration, track);
}

} // namespace

void addTrackExtends(RandomAccessFile& file, const Atom& trex, FragmentedTracks& tracks) {
    const ByteCursor body = peekBody(file, trex, 16);
    const auto trackID = body.u32be(4), duration = body.u32be(12);
    if (trackID && duration) tracks.emplace(*trackID, FragmentedTrack{*duration, 0, 0});
}

void sumFragments(RandomAccessFile& file, std::uint64_t begin, int mostFragments, FragmentedTracks& tracks) {
    AtomReader topLevel(file, begin, file.size());
    while (const auto atom = topLevel.next()) {
        if (atom->type != fourCC("moof")) continue;
        if (mostFragments-- <= 0) return;
        AtomReader atoms(file, *atom);
        while (const auto child = atoms.next())
            if (child->type == fourCC("traf")) addTrackFragment(file, *child, tracks);
    }
}

double indexedSeconds(RandomAccessFile& file, std::uint64_t begin) {
    const auto sidx = findChild(file, {0, begin, begin, file.size()}, fourCC("sidx"));
    if (!sidx) return 0;
    constexpr std::size_t narrowHeaderBytes = 24, wideHeaderBytes = 32, referenceBytes = 12;
    constexpr std::uint32_t refersToIndex = 0x80000000;
    const ByteCursor body = peekBody(file, *sidx, wideHeaderBytes);
    const std::size_t headerBytes = body.u8(0) == 1 ? wideHeaderBytes : narrowHeaderBytes;
    const auto timescale = body.u32be(8);
    const auto count = body.u16be(headerBytes - 2);
    if (timescale.value_or(0) == 0 || !count) return 0;
    if (sidx->bodySize() < headerBytes + *count * referenceBytes) return 0;
    double units = 0;
    for (std::size_t i = 0; i < *count; ++i) {
        const ByteCursor reference = file.peek(sidx->body + headerBytes + i * referenceBytes, referenceBytes);
        if ((reference.u32be(0).value_or(refersToIndex) & refersToIndex) == 0)
            units += reference.u32be(4).value_or(0);
    }
    return units / *timescale;
}

} // namespace orvane::platform
