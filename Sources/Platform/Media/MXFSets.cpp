#include "Platform/Media/MXFSets.h"

#include "Platform/Media/ZeroTail.h"

#include <algorithm>
#include <utility>

namespace orvane::platform::mxf {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t keyBytes = 16;
constexpr std::size_t longestLength = 9; ///< of the length field: one byte with the value 8, then 8 bytes
constexpr std::uint64_t longestRunIn = 65536;
constexpr std::size_t longestSet = 65536; ///< the tags and lengths of a set have 16 bits
constexpr std::size_t mostSets = 10000;
constexpr std::size_t mostBytes = std::size_t{1} << 24U;
constexpr int mostPackets = 10000;

// Byte 7 of a key is the version of the registry, and differs between writers.
constexpr std::size_t versionAt = 7;
constexpr auto partitionKey = "\x06\x0E\x2B\x34\x02\x05\x01\x01\x0D\x01\x02\x01\x01"sv;
constexpr auto setKey = "\x06\x0E\x2B\x34\x02\x53\x01\x01\x0D\x01\x01\x01\x01\x01"sv;
constexpr auto metadataKey = "\x06\x0E\x2B\x34"sv;
constexpr auto essenceKey = "\x06\x0E\x2B\x34\x01\x02"sv;
constexpr auto indexKey = "\x06\x0E\x2B\x34\x02\x53\x01\x01\x0D\x01\x02\x01\x01\x10"sv;
constexpr std::uint8_t headerPartition = 2, footerPartition = 4; ///< byte 13 of a partition's key
constexpr std::uint8_t closedComplete = 4, openComplete = 3;     ///< byte 14

bool matches(std::string_view key, std::string_view pattern) {
    if (key.size() < pattern.size()) return false;
    for (std::size_t i = 0; i < pattern.size(); ++i)
        if (i != versionAt && key[i] != pattern[i]) return false;
    return true;
}

struct Packet {
    std::string key;
    std::uint64_t value = 0; ///< position in the file
    std::uint64_t size = 0;  ///< of the value, never past the end of the file
};

std::optional<Packet> readPacket(RandomAccessFile& file, std::uint64_t position) {
    const ByteCursor header = file.peek(position, keyBytes + longestLength);
    const auto key = header.slice(0, keyBytes);
    const auto first = header.u8(keyBytes);
    if (!key || !first || !key->text().starts_with(metadataKey)) return std::nullopt;
    std::uint64_t size = *first;
    std::size_t lengthBytes = 0;
    if ((*first & 0x80U) != 0) { // the number of bytes that hold the length
        lengthBytes = *first & 0x7FU;
        if (lengthBytes == 0 || lengthBytes > 8) return std::nullopt;
        size = 0;
        for (std::size_t i = 0; i < lengthBytes; ++i) {
            const auto byte = header.u8(keyBytes + 1 + i);
            if (!byte) return std::nullopt;
            size = size << 8U | *byte;
        }
    }
    Packet packet{std::string(key->text()), position + keyBytes + 1 + lengthBytes, size};
    if (packet.value > file.size() || size > file.size() - packet.value) return std::nullopt;
    return packet;
}

struct Partition {
    std::uint64_t start = 0; ///< where its key begins
    std::uint64_t end = 0;   ///< after its pack
    std::uint8_t kind = 0, status = 0;
    std::uint64_t footer = 0; ///< counted from the first partition; 0: not known

    bool isComplete() const { return status == closedComplete || status == openComplete; }
};

std::optional<Partition> readPartition(RandomAccessFile& file, std::uint64_t position) {
    const auto packet = readPacket(file, position);
    if (!packet || !matches(packet->key, partitionKey)) return std::nullopt;
    constexpr std::size_t footerAt = 24;
    Partition partition{position, packet->value + packet->size, static_cast<std::uint8_t>(packet->key[13]),
                        static_cast<std::uint8_t>(packet->key[14])};
    const ByteCursor pack = file.peek(
        packet->value, static_cast<std::size_t>(std::min<std::uint64_t>(packet->size, footerAt + 8)));
    partition.footer = pack.u64be(footerAt).value_or(0);
    return partition;
}

std::optional<Partition> findFirstPartition(RandomAccessFile& file) {
    const auto isHeader = [](const std::optional<Partition>& partition) {
        return partition && partition->kind == headerPartition;
    };
    if (auto first = readPartition(file, 0); isHeader(first)) return first;
    // A file of another kind costs one read of its first bytes. An MXF with a run-in is rare, and a run-in
    // does not begin with the signature of another container.
    const std::vector<std::byte> front = file.read(0, longestRunIn + keyBytes);
    const std::string_view text = ByteCursor(front).text();
    // If it is not found, `npos` is beyond the longest.
    for (std::size_t at = text.find(metadataKey, 1); at <= longestRunIn; at = text.find(metadataKey, at + 1))
        if (auto first = readPartition(file, at); isHeader(first)) return first;
    return std::nullopt;
}

/// The sets after a partition's pack, up to its index, its essence or the next partition.
std::vector<Set> readSets(RandomAccessFile& file, const Partition& partition) {
    std::vector<Set> sets;
    std::size_t kept = 0;
    std::uint64_t position = partition.end;
    for (int i = 0; i < mostPackets && sets.size() < mostSets; ++i) {
        const auto packet = readPacket(file, position);
        if (!packet || matches(packet->key, essenceKey) || matches(packet->key, indexKey)) break;
        constexpr std::uint8_t lastPartition = 4;
        if (matches(packet->key, partitionKey) && static_cast<std::uint8_t>(packet->key[13]) <= lastPartition)
            break;
        if (matches(packet->key, setKey) && packet->size <= longestSet && packet->size <= mostBytes - kept) {
            sets.push_back(
                {static_cast<std::uint8_t>(packet->key[14]), file.read(packet->value, packet->size)});
            kept += packet->size;
        }
        position = packet->value + packet->size;
    }
    return sets;
}

/// By the position in the first partition, else by the index of partitions at the end of the file, whose last
/// four bytes are its length and whose last entry is the footer.
std::optional<Partition> findFooter(RandomAccessFile& file, const Partition& first) {
    std::uint64_t footer = first.footer;
    constexpr std::uint64_t entryBytes = 12, lengthBytes = 4;
    if (footer == 0 && file.size() > entryBytes + lengthBytes) {
        const ByteCursor end = file.peek(file.size() - entryBytes - lengthBytes, entryBytes + lengthBytes);
        const std::uint64_t length = end.u32be(entryBytes).value_or(0);
        constexpr std::uint64_t mostIndex = 1U << 20U;
        if (length < file.size() && length <= mostIndex &&
            file.peek(file.size() - length, 4).text() == metadataKey)
            footer = end.u64be(4).value_or(0);
    }
    if (footer == 0 || footer > file.size() || first.start > file.size() - footer) return std::nullopt;
    auto partition = readPartition(file, first.start + footer);
    return partition && partition->kind == footerPartition ? partition : std::nullopt;
}

/// Nothing for a file that has its footer, or whose header states none. If a copy broke off in a file that
/// was given its full size first, the footer's place holds zeros, as does everything after the copied part.
std::optional<double> shareBeforeFooter(RandomAccessFile& file, const Partition& first) {
    if (first.footer == 0) return std::nullopt;
    std::uint64_t end = file.size();
    if (first.footer < file.size() - first.start) {
        if (readPartition(file, first.start + first.footer)) return std::nullopt;
        end = endOfWritten(file, {.begin = first.end, .end = file.size()});
        if (end == file.size() || end > first.start + first.footer) return std::nullopt;
    }
    return static_cast<double>(end - first.start) / static_cast<double>(first.footer);
}

} // namespace

ByteCursor Set::property(std::uint16_t tag) const {
    const ByteCursor all(bytes);
    constexpr std::size_t headBytes = 4;
    std::size_t at = 0;
    while (const auto length = all.u16be(at + 2)) {
        const auto value = all.slice(at + headBytes, *length);
        if (!value) break;
        if (all.u16be(at) == tag) return *value;
        at += headBytes + *length;
    }
    return {};
}

Label Set::label(std::uint16_t tag) const {
    const auto value = property(tag).slice(0, keyBytes);
    return value ? Label(value->text()) : Label();
}

std::vector<Label> Set::labels(std::uint16_t tag) const {
    constexpr std::size_t headBytes = 8; // number of entries, and length of each
    const ByteCursor array = property(tag);
    std::vector<Label> result;
    for (std::size_t at = headBytes; const auto one = array.slice(at, keyBytes); at += keyBytes)
        result.emplace_back(one->text());
    return result;
}

Rate Set::rate(std::uint16_t tag) const {
    const ByteCursor value = property(tag);
    return {value.u32be(0).value_or(0), value.u32be(4).value_or(1)};
}

std::int64_t Set::position(std::uint16_t tag) const {
    return static_cast<std::int64_t>(property(tag).u64be(0).value_or(0));
}

std::optional<Header> readHeader(RandomAccessFile& file) {
    const auto first = findFirstPartition(file);
    if (!first) return std::nullopt;
    Header header{readSets(file, *first), first->isComplete()};
    header.heldShare = shareBeforeFooter(file, *first);
    if (header.heldShare) return header;
    if (header.isComplete) return header;
    if (const auto footer = findFooter(file, *first)) {
        std::vector<Set> last = readSets(file, *footer);
        if (!last.empty()) header = {std::move(last), footer->isComplete()};
    }
    return header;
}

} // namespace orvane::platform::mxf
