#include "OrvaneSyncCore/Services/Ingest/IXMLReader.h"

#include "Platform/Text.h"
#include "Platform/WaveChunks.h"

#include <algorithm>
#include <array>
#include <vector>

namespace orvane {

namespace {

using platform::ByteCursor;
using platform::RandomAccessFile;
using platform::WaveChunks;

/// The last field that is used ends at byte 346; the coding history after it may be long and is not read.
constexpr std::size_t bextBytesRead = 512;
constexpr std::uint64_t documentPiece = std::uint64_t{1} << 18U;
/// Far larger than any recorder's document; several files are read at the same time.
constexpr std::size_t largestDocument = std::size_t{1} << 26U;

/// The bytes of the wanted chunks; of each name the first chunk that is not empty.
struct Chunks {
    bool wantsBext = false;
    bool wantsIXML = false;
    std::vector<std::byte> bext;
    std::string ixml;
    bool hasIXML = false;

    bool isComplete() const { return (!wantsBext || !bext.empty()) && (!wantsIXML || hasIXML); }
};

/// Reads only up to the first NUL: a hole in a sparse file may claim gigabytes.
void readDocument(RandomAccessFile& file, std::uint64_t at, std::uint64_t size, Chunks& chunks) {
    while (size > 0 && chunks.ixml.size() < largestDocument) {
        const std::vector<std::byte> piece = file.read(at, std::min(size, documentPiece));
        if (piece.empty()) return;
        chunks.hasIXML = true;
        const std::string_view text = ByteCursor(piece).text();
        const std::size_t end = text.find('\0');
        chunks.ixml += text.substr(0, end);
        if (end != std::string_view::npos) return;
        at += piece.size();
        size -= piece.size();
    }
}

void readChunks(RandomAccessFile& file, Chunks& chunks) {
    const auto form = WaveChunks::formOf(file);
    if (!form) return;
    WaveChunks reader(file, *form);
    while (const auto chunk = chunks.isComplete() ? std::nullopt : reader.next()) {
        if (chunk->is("bext") && chunks.wantsBext && chunks.bext.empty())
            chunks.bext = file.read(chunk->body, chunk->bounded(bextBytesRead));
        else if (chunk->is("iXML") && chunks.wantsIXML && !chunks.hasIXML)
            readDocument(file, chunk->body, chunk->size, chunks);
    }
}

/// The field without blanks and control characters (including NUL) at both ends. Absent if its bytes are not
/// ASCII.
std::optional<std::string_view> asciiField(const ByteCursor& chunk, std::size_t at, std::size_t count) {
    const auto bytes = chunk.slice(at, count);
    if (!bytes || !platform::text::isASCII(bytes->text())) return std::nullopt;
    const auto isTrimmed = [](char c) { return c <= ' ' || c == '\x7F'; };
    std::string_view text = bytes->text();
    while (!text.empty() && isTrimmed(text.front())) text.remove_prefix(1);
    while (!text.empty() && isTrimmed(text.back())) text.remove_suffix(1);
    return text;
}

/// Year, month and day separated by ":" or "-", at noon.
std::optional<Date> dateFromField(std::string_view text) {
    std::array<std::int64_t, 3> numbers{};
    std::size_t count = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(":-"), text.size());
        const std::string_view piece = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (piece.empty()) continue;
        if (count == numbers.size()) return std::nullopt;
        const auto number = platform::text::decimalInteger(piece);
        if (!number) return std::nullopt;
        numbers[count++] = *number;
    }
    if (count != numbers.size()) return std::nullopt;
    constexpr int noon = 12;
    // The field has ten characters, so every number fits into 32 bits.
    return calendar::date({static_cast<int>(numbers[0]), static_cast<int>(numbers[1]),
                           static_cast<int>(numbers[2]), noon, 0, 0});
}

IXMLReader::Bext parseBext(const ByteCursor& chunk) {
    constexpr std::size_t originatorAt = 256, originatorBytes = 32;
    constexpr std::size_t dateAt = 320, dateBytes = 10;
    constexpr std::size_t timeReferenceAt = 338;

    IXMLReader::Bext result;
    if (const auto text = asciiField(chunk, originatorAt, originatorBytes); text && !text->empty())
        result.originator = std::string(*text);
    if (const auto text = asciiField(chunk, dateAt, dateBytes); text && text->size() == dateBytes)
        result.originationDate = dateFromField(*text);
    if (const auto samples = chunk.u64le(timeReferenceAt); samples && *samples != 0) result.timeRef = samples;
    return result;
}

} // namespace

IXMLReader::Broadcast IXMLReader::readWanted(RandomAccessFile& file, bool wantsBext, bool wantsIXML) {
    Chunks chunks;
    chunks.wantsBext = wantsBext;
    chunks.wantsIXML = wantsIXML;
    readChunks(file, chunks);
    Broadcast result;
    if (chunks.hasIXML) {
        if (auto document = parseDocument(chunks.ixml)) {
            result.ixml = std::move(document->data);
            result.timestamp = document->timestamp;
        }
    }
    result.bext = parseBext(ByteCursor(chunks.bext));
    return result;
}

IXMLReader::Broadcast IXMLReader::readWanted(const std::string& path, bool wantsBext, bool wantsIXML) {
    auto file = RandomAccessFile::open(path);
    return file ? readWanted(*file, wantsBext, wantsIXML) : Broadcast();
}

std::optional<IXMLData> IXMLReader::read(const std::string& path) const {
    return readWanted(path, false, true).ixml;
}

std::optional<std::uint64_t> IXMLReader::readBextTimeReference(const std::string& path) const {
    return readBextFull(path).timeRef;
}

IXMLReader::All IXMLReader::readAll(const std::string& path) const {
    Broadcast broadcast = readWanted(path, true, true);
    return {std::move(broadcast.ixml), broadcast.bext.timeRef};
}

IXMLReader::Bext IXMLReader::readBextFull(const std::string& path) const {
    return readWanted(path, true, false).bext;
}

IXMLReader::Broadcast IXMLReader::readBroadcast(RandomAccessFile& file) const {
    return readWanted(file, true, true);
}

} // namespace orvane
