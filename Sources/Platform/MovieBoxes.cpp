#include "Platform/MovieBoxes.h"

namespace orvane::platform::movie {

namespace {

/// The identity matrix.
std::string matrix() {
    std::string out;
    for (const std::uint32_t value : {0x10000U, 0U, 0U, 0U, 0x10000U, 0U, 0U, 0U, 0x40000000U})
        be(out, value, 4);
    return out;
}

std::string handler(std::string_view type, std::string_view subtype) {
    return fullBox("hdlr", 0, std::string(type) + std::string(subtype) + zeros(12) + zeros(1));
}

} // namespace

void be(std::string& out, std::uint64_t value, int bytes) {
    for (int i = bytes - 1; i >= 0; --i)
        out += static_cast<char>(value >> (8U * static_cast<unsigned>(i)) & 0xFFU);
}

std::string zeros(std::size_t count) { return std::string(count, '\0'); }

std::string box(std::string_view type, const std::string& body) {
    std::string out;
    be(out, body.size() + 8, 4);
    out += type;
    return out + body;
}

std::string fullBox(std::string_view type, std::uint32_t versionAndFlags, const std::string& body) {
    std::string full;
    be(full, versionAndFlags, 4);
    return box(type, full + body);
}

std::string fileType() { return box("ftyp", std::string("qt  ") + zeros(4) + "qt  "); }

std::string movieHeader(std::uint32_t timeScale, std::uint64_t durationUnits, std::uint32_t nextTrack) {
    std::string header = zeros(8);
    be(header, timeScale, 4);
    be(header, durationUnits, 4);
    be(header, 0x10000, 4); // rate
    be(header, 0x100, 2);   // volume
    header += zeros(10) + matrix() + zeros(24);
    be(header, nextTrack, 4);
    return fullBox("mvhd", 0, header);
}

std::string track(const Track& track) {
    constexpr std::uint32_t inUse = 0xF; // enabled, in movie, preview and poster
    std::string header = zeros(8);
    be(header, track.number, 4);
    header += zeros(4);
    be(header, track.durationInMovie, 4);
    header += zeros(12);
    be(header, track.isSound ? 0x100 : 0, 2); // volume
    header += zeros(2) + matrix();
    be(header, static_cast<std::uint64_t>(track.width) << 16U, 4);
    be(header, static_cast<std::uint64_t>(track.height) << 16U, 4);
    std::string mediaHeader = zeros(8);
    be(mediaHeader, track.timeScale, 4);
    be(mediaHeader, track.duration, 4);
    constexpr std::uint32_t undetermined = 0x55C4; // the language
    be(mediaHeader, undetermined, 2);
    mediaHeader += zeros(2);
    std::string reference; // to this file
    be(reference, 1, 4);
    const std::string data = box("dinf", fullBox("dref", 0, reference + fullBox("alis", 1, "")));
    const std::string kind = track.isSound ? fullBox("smhd", 0, zeros(4)) : fullBox("vmhd", 1, zeros(8));
    return box("trak", fullBox("tkhd", inUse, header) +
                           box("mdia", fullBox("mdhd", 0, mediaHeader) +
                                           handler("mhlr", track.isSound ? "soun" : "vide") +
                                           box("minf", kind + handler("dhlr", "alis") + data +
                                                           box("stbl", track.sampleTable))));
}

std::string pictureDescription(int width, int height, std::string_view name, int bitsPerPixel) {
    constexpr std::size_t nameBytes = 31;
    std::string entry = zeros(6);
    be(entry, 1, 2); // data reference
    entry += zeros(16);
    be(entry, static_cast<std::uint64_t>(width), 2);
    be(entry, static_cast<std::uint64_t>(height), 2);
    be(entry, 72U << 16U, 4); // dots per inch
    be(entry, 72U << 16U, 4);
    entry += zeros(4);
    be(entry, 1, 2); // picture of a sample
    be(entry, name.size(), 1);
    entry += name;
    entry += zeros(nameBytes - name.size());
    be(entry, static_cast<std::uint64_t>(bitsPerPixel), 2);
    be(entry, 0xFFFF, 2); // no colour table
    return entry;
}

} // namespace orvane::platform::movie
