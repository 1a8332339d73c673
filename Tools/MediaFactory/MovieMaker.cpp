#include "MediaFactory/MovieMaker.h"

#include <algorithm>

namespace orvane::test {

namespace {

constexpr std::uint32_t movieTimescale = 600;
constexpr std::size_t atomHeaderBytes = 8;
constexpr std::size_t wideHeaderBytes = 16;

const std::string& unityMatrix() {
    static const std::string matrix = be32(0x10000) + be32(0) + be32(0) + be32(0) + be32(0x10000) + be32(0) +
                                      be32(0) + be32(0) + be32(0x40000000);
    return matrix;
}

std::uint64_t fixedPoint(double value) { return static_cast<std::uint64_t>(value * 65536); }

/// In units of the movie.
std::uint64_t movieDuration(const TrackSpec& track) {
    return track.timescale == 0 ? 0 : track.duration * movieTimescale / track.timescale;
}

std::string sampleTable(const TrackSpec& track, std::uint64_t offset) {
    std::uint32_t samples = 0;
    std::string runs;
    for (const auto& [count, length] : track.timeToSample) {
        samples += count;
        runs += be32(count) + be32(length);
    }
    const bool empty = track.sampleEntry.empty();
    std::string sizes;
    for (const std::uint32_t size : track.sizeTable) sizes += be32(size);
    if (!track.sizeTable.empty()) samples = static_cast<std::uint32_t>(track.sizeTable.size());
    return atom("stbl", fullAtom("stsd", be32(empty ? 0 : 1) + track.sampleEntry) +
                            fullAtom("stts", be32(track.timeToSample.size()) + runs) +
                            fullAtom("stsc", be32(1) + be32(1) + be32(std::max(samples, 1U)) + be32(1)) +
                            fullAtom("stsz", be32(track.sampleSize) + be32(samples) + sizes) +
                            (track.wideOffset ? fullAtom("co64", be32(1) + be64(offset))
                                              : fullAtom("stco", be32(1) + be32(offset))));
}

std::string mediaHeaderAtom(const std::string& handler) {
    if (handler == "vide") return fullAtom("vmhd", be64(0), 0, 1);
    if (handler == "soun") return fullAtom("smhd", be32(0));
    return atom("gmhd", fullAtom("gmin", be64(0) + be32(0)));
}

std::string trackAtom(const TrackSpec& track, std::size_t number, std::uint64_t offset) {
    const std::string header =
        fullAtom("tkhd",
                 be64(0) + be32(number) + be32(0) + be32(movieDuration(track)) + be64(0) + be64(0) +
                     unityMatrix() + be32(fixedPoint(track.width)) + be32(fixedPoint(track.height)),
                 0, track.enabled ? 0xF : 0);
    const std::string media =
        fullAtom("mdhd", be64(0) + be32(track.timescale) + be32(track.duration) + be16(0x55C4) + be16(0)) +
        fullAtom("hdlr", field("mhlr", 4) + field(track.handler, 4) + field("", 12) + std::string(1, '\0')) +
        atom("minf", mediaHeaderAtom(track.handler) +
                         atom("dinf", fullAtom("dref", be32(1) + fullAtom("url ", "", 0, 1))) +
                         sampleTable(track, offset));
    return atom("trak", header + track.trackAtoms + atom("mdia", media));
}

std::string soundEntry(const AudioSpec& spec) {
    const auto channels = static_cast<std::uint64_t>(spec.channels);
    const std::string start =
        field("", 6) + be16(1) + be16(static_cast<std::uint64_t>(spec.version)) + field("", 6);
    if (spec.version == 2)
        return start + be16(3) + be16(16) + be16(0xFFFE) + be16(0) + be32(0x10000) + be32(72) +
               beFloat64(spec.sampleRate) + be32(channels) + be32(0x7F000000) + be32(16) + be32(0) +
               be32(2 * channels) + be32(1);
    std::string body = start + be16(channels) + be16(16) + be32(0) + be32(fixedPoint(spec.sampleRate));
    if (spec.version == 1) body += be32(1) + be32(2) + be32(2 * channels) + be32(2);
    return body;
}

/// A "data" atom: type code (1 text, 21 integer, 24 64-bit float), locale, value.
std::string dataAtom(const MetadataValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return atom("data", be32(1) + be32(0) + *text);
    if (const auto* number = std::get_if<std::int64_t>(&value))
        return atom("data", be32(21) + be32(0) + be32(static_cast<std::uint64_t>(*number)));
    return atom("data", be32(24) + be32(0) + beFloat64(std::get<double>(value)));
}

std::string metaHandler(std::string_view kind) {
    return fullAtom("hdlr", be32(0) + field(kind, 4) + field("", 12) + std::string(1, '\0'));
}

} // namespace

std::string atom(std::string_view type, std::string_view body) {
    return atomClaiming(static_cast<std::uint32_t>(atomHeaderBytes + body.size()), type, body);
}

std::string atomClaiming(std::uint32_t size, std::string_view type, std::string_view body) {
    return be32(size) + field(type, 4) + std::string(body);
}

std::string wideAtom(std::string_view type, std::string_view body) {
    return be32(1) + field(type, 4) + be64(wideHeaderBytes + body.size()) + std::string(body);
}

std::string fullAtom(std::string_view type, std::string_view body, int version, std::uint32_t flags) {
    return atom(type, be32(static_cast<std::uint64_t>(version) << 24U | flags) + std::string(body));
}

MovieMaker& MovieMaker::video(const VideoSpec& spec) {
    const std::string entry =
        field("", 6) + be16(1) + field("", 16) + be16(static_cast<std::uint64_t>(spec.width)) +
        be16(static_cast<std::uint64_t>(spec.height)) + be32(0x480000) + be32(0x480000) + be32(0) + be16(1) +
        field("", 32) + be16(24) + be16(0xFFFF) + spec.entryAtoms;
    std::string bytes;
    std::vector<std::uint32_t> sizes;
    for (const std::string& picture : spec.pictures) {
        bytes += picture;
        sizes.push_back(static_cast<std::uint32_t>(picture.size()));
    }
    return track({.handler = "vide",
                  .timescale = spec.timescale,
                  .duration = std::uint64_t{spec.frames} * spec.frameDuration,
                  .sampleEntry = atom(spec.codec, entry),
                  .timeToSample = {{spec.frames, spec.frameDuration}},
                  .sampleSize = spec.pictures.empty() ? 1U : 0U,
                  .width = static_cast<double>(spec.width),
                  .height = static_cast<double>(spec.height),
                  .enabled = spec.enabled,
                  .sample = std::move(bytes),
                  .sizeTable = std::move(sizes)});
}

MovieMaker& MovieMaker::audio(const AudioSpec& spec) {
    return track({.handler = "soun",
                  .timescale = static_cast<std::uint32_t>(spec.sampleRate),
                  .duration = spec.samples,
                  .sampleEntry = atom(spec.codec, soundEntry(spec) + spec.entryAtoms),
                  .timeToSample = {{spec.samples, 1}},
                  .sampleSize = spec.sound.empty() ? 1 : 2 * static_cast<std::uint32_t>(spec.channels),
                  .sample = spec.sound});
}

MovieMaker& MovieMaker::timecode(const TimecodeSpec& spec) {
    const std::uint32_t frames = spec.frameDuration == 0 ? 0 : spec.timescale / spec.frameDuration;
    const std::string entry = field("", 6) + be16(1) + be32(0) + be32(spec.flags) + be32(spec.timescale) +
                              be32(spec.frameDuration) + std::string(1, static_cast<char>(frames)) +
                              std::string(1, '\0');
    return track({.handler = "tmcd",
                  .timescale = spec.timescale,
                  .duration = std::uint64_t{spec.frameDuration} * 250,
                  .sampleEntry = atom(spec.format, entry),
                  .timeToSample = {{1, spec.frameDuration * 250}},
                  .sampleSize = spec.sampleSize,
                  .wideOffset = spec.wideOffset,
                  .sampleOffset = spec.sampleOffset,
                  .sample = be32(spec.firstFrame),
                  .sizeTable = spec.sizeTable,
                  .trackAtoms = spec.trackAtoms});
}

MovieMaker& MovieMaker::track(const TrackSpec& spec) {
    tracks_.push_back(spec);
    return *this;
}

MovieMaker& MovieMaker::metadata(const std::string& key, const MetadataValue& value) {
    metadata_.emplace_back(key, value);
    return *this;
}

MovieMaker& MovieMaker::listItem(const std::string& type, const MetadataValue& value) {
    listItems_.emplace_back(type, value);
    return *this;
}

MovieMaker& MovieMaker::userData(const std::string& type, const std::string& text, std::uint16_t language) {
    return userDataAtom(atom(type, be16(text.size()) + be16(language) + text));
}

MovieMaker& MovieMaker::movieAtom(const std::string& bytes) {
    movieAtoms_ += bytes;
    return *this;
}

MovieMaker& MovieMaker::userDataAtom(const std::string& bytes) {
    userData_ += bytes;
    return *this;
}

MovieMaker& MovieMaker::leadingAtom(const std::string& bytes) {
    leading_ += bytes;
    return *this;
}

MovieMaker& MovieMaker::trailingAtom(const std::string& bytes) {
    trailing_ += bytes;
    return *this;
}

MovieMaker& MovieMaker::duration(std::uint64_t units, std::uint32_t timescale) {
    duration_ = {units, timescale};
    return *this;
}

MovieMaker& MovieMaker::created(std::uint32_t time) {
    created_ = time;
    return *this;
}

MovieMaker& MovieMaker::movieFirst() {
    movieFirst_ = true;
    return *this;
}

MovieMaker& MovieMaker::mediaBytes(std::uint64_t count) {
    mediaBytes_ = count;
    return *this;
}

MovieMaker& MovieMaker::wideMedia() {
    wideMedia_ = true;
    return *this;
}

MovieMaker& MovieMaker::endlessMedia() {
    endlessMedia_ = true;
    return *this;
}

std::string MovieMaker::userDataBox() const {
    std::string body = userData_;
    if (!listItems_.empty()) {
        std::string list;
        for (const auto& [type, value] : listItems_) list += atom(type, dataAtom(value));
        body += fullAtom("meta", metaHandler("mdir") + atom("ilst", list));
    }
    return body.empty() ? body : atom("udta", body);
}

std::string MovieMaker::movie(std::uint64_t mediaStart) const {
    std::uint64_t longest = 0;
    std::uint64_t samplesAt = mediaStart;
    std::string tracks;
    for (std::size_t i = 0; i < tracks_.size(); ++i) {
        longest = std::max(longest, movieDuration(tracks_[i]));
        const std::uint64_t own = tracks_[i].sample.empty() ? mediaStart : samplesAt;
        tracks += trackAtom(tracks_[i], i + 1, tracks_[i].sampleOffset.value_or(own));
        samplesAt += tracks_[i].sample.size();
    }
    const auto [units, timescale] = duration_.value_or(std::pair(longest, movieTimescale));
    std::string header = be32(created_) + be32(0) + be32(timescale) + be32(units) + be32(0x10000) +
                         be16(0x100) + field("", 10) + unityMatrix() + field("", 24) +
                         be32(tracks_.size() + 1);
    std::string body = fullAtom("mvhd", header) + tracks;
    if (!metadata_.empty()) {
        std::string keys, list;
        for (std::size_t i = 0; i < metadata_.size(); ++i) {
            keys += atom("mdta", metadata_[i].first);
            list += be32(atomHeaderBytes + dataAtom(metadata_[i].second).size()) + be32(i + 1) +
                    dataAtom(metadata_[i].second);
        }
        body += atom("meta", metaHandler("mdta") + fullAtom("keys", be32(metadata_.size()) + keys) +
                                 atom("ilst", list));
    }
    return atom("moov", body + userDataBox() + movieAtoms_);
}

std::string MovieMaker::mediaHeader() const {
    std::uint64_t size = mediaBytes_;
    for (const TrackSpec& track : tracks_) size += track.sample.size();
    if (endlessMedia_) return be32(0) + "mdat";
    if (wideMedia_) return be32(1) + "mdat" + be64(wideHeaderBytes + size);
    return be32(atomHeaderBytes + size) + "mdat";
}

SparseBytes MovieMaker::sparse() const {
    SparseBytes file;
    file.append(atom("ftyp", "qt  " + be32(0x200) + "qt  ")).append(leading_);
    const std::string header = mediaHeader();
    const std::uint64_t movieBytes = movieFirst_ ? movie(0).size() : 0;
    const std::uint64_t mediaStart = file.size() + movieBytes + header.size();
    if (movieFirst_) file.append(movie(mediaStart));
    file.append(header);
    for (const TrackSpec& track : tracks_) file.append(track.sample);
    file.appendZeros(mediaBytes_);
    if (!movieFirst_) file.append(movie(mediaStart));
    return file.append(trailing_);
}

} // namespace orvane::test
