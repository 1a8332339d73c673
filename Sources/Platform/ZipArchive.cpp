#include "Platform/ZipArchive.h"

#include "Platform/ByteCursor.h"
#include "Platform/Files.h"
#include "Platform/NewFile.h"
#include "Platform/RandomAccessFile.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <zlib.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

namespace orvane::platform {

namespace {

constexpr std::uint32_t endSignature = 0x06054B50, directorySignature = 0x02014B50,
                        localSignature = 0x04034B50;
constexpr std::uint16_t stored = 0, deflated = 8;
constexpr std::uint32_t mostEntries = 100'000;
constexpr std::size_t step = std::size_t{1} << 18U;

[[noreturn]] void refuse(const std::string& path, const std::string& why) {
    throw ZipError("can't unpack " + text::validUTF8(path) + ": " + why);
}

RandomAccessFile opened(const std::string& path) {
    auto file = RandomAccessFile::open(path);
    if (!file) refuse(path, "it can't be read");
    return std::move(*file);
}

struct Entry {
    std::string name;
    std::uint16_t method = stored;
    std::uint32_t checksum = 0;
    std::uint64_t packedBytes = 0, bytes = 0;
    std::uint64_t headerAt = 0;
};

/// The place of the list of entries, by the record at the end, which a comment may follow.
struct Directory {
    std::uint64_t at = 0;
    std::uint32_t count = 0;
};
std::optional<Directory> directoryOf(RandomAccessFile& file) {
    constexpr std::uint64_t recordBytes = 22, longestComment = 65535;
    if (file.size() < recordBytes) return std::nullopt;
    const std::uint64_t from = file.size() - std::min(file.size(), recordBytes + longestComment);
    const std::vector<std::byte> tail = file.read(from, file.size() - from);
    const ByteCursor bytes(tail);
    for (std::size_t at = tail.size() - recordBytes + 1; at-- > 0;)
        if (bytes.u32le(at) == endSignature)
            return Directory{bytes.u32le(at + 16).value_or(0), bytes.u16le(at + 10).value_or(0)};
    return std::nullopt;
}

/// A relative path that stays below the folder.
bool staysBelow(std::string_view name) {
    if (name.empty() || name.front() == '/' || name.find('\\') != std::string_view::npos ||
        name.find('\0') != std::string_view::npos)
        return false;
    for (std::size_t from = 0; from <= name.size();) {
        const std::size_t end = std::min(name.find('/', from), name.size());
        const std::string_view piece = name.substr(from, end - from);
        if (piece == ".." || piece == ".") return false;
        from = end + 1;
    }
    return true;
}

std::vector<Entry> entriesOf(RandomAccessFile& file, const std::string& path, std::uint64_t mostBytes) {
    const auto directory = directoryOf(file);
    if (!directory || directory->count > mostEntries) refuse(path, "it is no ZIP archive");
    constexpr std::size_t fixedBytes = 46;
    std::vector<Entry> entries;
    std::uint64_t at = directory->at, total = 0;
    for (std::uint32_t i = 0; i < directory->count; ++i) {
        const std::vector<std::byte> fixed = file.read(at, fixedBytes);
        const ByteCursor header(fixed);
        if (header.u32le(0) != directorySignature || fixed.size() < fixedBytes)
            refuse(path, "its list of entries is damaged");
        Entry entry;
        const std::uint16_t flags = *header.u16le(8);
        entry.method = *header.u16le(10);
        entry.checksum = *header.u32le(16);
        entry.packedBytes = *header.u32le(20);
        entry.bytes = *header.u32le(24);
        const std::uint16_t nameBytes = *header.u16le(28);
        const std::uint64_t rest = std::uint64_t{*header.u16le(30)} + *header.u16le(32);
        const std::uint32_t mode = *header.u32le(38) >> 16U;
        entry.headerAt = *header.u32le(42);
        const std::vector<std::byte> name = file.read(at + fixedBytes, nameBytes);
        entry.name.assign(reinterpret_cast<const char*>(name.data()), name.size());
        constexpr std::uint32_t kinds = 0170000, link = 0120000;
        if (!staysBelow(entry.name) || (mode & kinds) == link)
            refuse(path, "an entry leads out of the folder");
        if ((flags & 1U) != 0 || (entry.method != stored && entry.method != deflated))
            refuse(path, "an entry is encrypted or packed in an unknown way");
        total += entry.bytes;
        if (total > mostBytes) refuse(path, "its entries take too much space");
        entries.push_back(std::move(entry));
        at += fixedBytes + nameBytes + rest;
    }
    return entries;
}

/// Passes on the bytes of an entry as they are unpacked.
class Unpacking {
  public:
    Unpacking(const Entry& entry, const std::string& archive, NewFile& out)
        : entry_(entry), archive_(archive), out_(out), room_(step) {
        // Without the header of zlib's own format.
        if (inflateInit2(&stream_, -MAX_WBITS) != Z_OK) refuse(archive, "there is too little memory");
    }
    ~Unpacking() { inflateEnd(&stream_); }
    Unpacking(const Unpacking&) = delete;
    Unpacking& operator=(const Unpacking&) = delete;

    void add(std::vector<std::byte>& packed) {
        if (entry_.method == stored) return take(reinterpret_cast<const char*>(packed.data()), packed.size());
        stream_.next_in = reinterpret_cast<Bytef*>(packed.data());
        stream_.avail_in = static_cast<uInt>(packed.size());
        do {
            stream_.next_out = reinterpret_cast<Bytef*>(room_.data());
            stream_.avail_out = static_cast<uInt>(room_.size());
            const int state = inflate(&stream_, Z_NO_FLUSH);
            if (state != Z_OK && state != Z_STREAM_END && state != Z_BUF_ERROR)
                refuse(archive_, "an entry is damaged");
            take(room_.data(), room_.size() - stream_.avail_out);
            if (state == Z_STREAM_END) break;
        } while (stream_.avail_out == 0 || stream_.avail_in > 0);
    }
    void end() const {
        if (bytes_ != entry_.bytes || checksum_ != entry_.checksum) refuse(archive_, "an entry is damaged");
    }

  private:
    void take(const char* bytes, std::size_t count) {
        bytes_ += count;
        if (bytes_ > entry_.bytes) refuse(archive_, "an entry is larger than it says");
        checksum_ = static_cast<std::uint32_t>(
            crc32(checksum_, reinterpret_cast<const Bytef*>(bytes), static_cast<uInt>(count)));
        out_.append({bytes, count});
    }

    const Entry& entry_;
    const std::string& archive_;
    NewFile& out_;
    std::vector<char> room_;
    z_stream stream_{};
    std::uint64_t bytes_ = 0;
    std::uint32_t checksum_ = 0;
};

} // namespace

bool isZipArchive(const std::string& path) {
    auto file = RandomAccessFile::open(path);
    return file && file->peek(0, 4).u32le(0) == localSignature;
}

std::uint64_t unpackedBytes(const std::string& path, std::uint64_t mostBytes) {
    RandomAccessFile file = opened(path);
    std::uint64_t bytes = 0;
    for (const Entry& entry : entriesOf(file, path, mostBytes)) bytes += entry.bytes;
    return bytes;
}

void unpackZip(const std::string& path, const std::string& folder, std::uint64_t mostBytes,
               const std::stop_token& stop) {
    RandomAccessFile file = opened(path);
    files::createDirectories(folder);
    for (const Entry& entry : entriesOf(file, path, mostBytes)) {
        const std::string target = folder + "/" + entry.name;
        if (entry.name.ends_with('/')) {
            files::createDirectories(target.substr(0, target.size() - 1));
            continue;
        }
        constexpr std::uint64_t fixedBytes = 30;
        const ByteCursor header = file.peek(entry.headerAt, fixedBytes);
        if (header.u32le(0) != localSignature || header.size() < fixedBytes)
            refuse(path, "an entry is damaged");
        std::uint64_t at = entry.headerAt + fixedBytes + *header.u16le(26) + *header.u16le(28);
        files::createDirectories(files::folderOf(target));
        NewFile out(target);
        Unpacking unpacking(entry, path, out);
        for (std::uint64_t left = entry.packedBytes; left > 0;) {
            throwIfStopped(stop);
            auto packed = file.read(at, std::min<std::uint64_t>(left, step));
            if (packed.empty()) refuse(path, "it ends early");
            at += packed.size();
            left -= packed.size();
            unpacking.add(packed);
        }
        unpacking.end();
        out.takePlace();
    }
}

} // namespace orvane::platform
