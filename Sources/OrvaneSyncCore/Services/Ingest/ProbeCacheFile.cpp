#include "OrvaneSyncCore/Services/Ingest/ProbeCacheFile.h"

#include "OrvaneSyncCore/Utilities/PackedBytes.h"
#include "OrvaneSyncCore/Utilities/QuickHash.h"

#include <algorithm>
#include <utility>

namespace orvane {

namespace {

constexpr std::string_view signature = "ORVPROBE";
constexpr std::uint32_t layout = 1;
constexpr std::size_t cacheHeaderBytes = signature.size() + 2 * sizeof(std::uint32_t);
constexpr std::size_t indexEntryBytes = sizeof(std::uint64_t) + 2 * sizeof(std::uint32_t);

} // namespace

std::shared_ptr<const ProbeCacheFile> ProbeCacheFile::fromBytes(std::string bytes) {
    PackedReader in(bytes);
    const bool isOurs = in.bytes(signature.size()) == signature && in.plain<std::uint32_t>() == layout;
    const auto count = in.plain<std::uint32_t>();
    if (!isOurs || in.hasFailed() || count > in.left() / indexEntryBytes) return nullptr;
    return std::shared_ptr<const ProbeCacheFile>(new ProbeCacheFile(std::move(bytes), count));
}

std::uint64_t ProbeCacheFile::hashAt(std::size_t index) const {
    return PackedReader(std::string_view(bytes_).substr(cacheHeaderBytes + index * indexEntryBytes))
        .plain<std::uint64_t>();
}

std::optional<ProbeRecord> ProbeCacheFile::record(std::size_t index) const {
    PackedReader entry(std::string_view(bytes_).substr(cacheHeaderBytes + index * indexEntryBytes));
    entry.plain<std::uint64_t>();
    const auto position = entry.plain<std::uint32_t>(), length = entry.plain<std::uint32_t>();
    if (position > bytes_.size() || length > bytes_.size() - position) return std::nullopt;
    return ProbeRecord::fromBytes(std::string_view(bytes_).substr(position, length));
}

std::optional<ProbeRecord> ProbeCacheFile::find(std::string_view path) const {
    const std::uint64_t wanted = quickHash(path);
    std::size_t low = 0, high = count_;
    while (low < high) {
        const std::size_t middle = low + (high - low) / 2;
        if (hashAt(middle) < wanted)
            low = middle + 1;
        else
            high = middle;
    }
    // In a damaged index all entries may have the same hash.
    constexpr std::size_t mostAlike = 8;
    for (std::size_t i = low; i < std::min(count_, low + mostAlike) && hashAt(i) == wanted; ++i)
        if (const auto found = record(i); found && found->path == path) return found;
    return std::nullopt;
}

std::string ProbeCacheFile::bytes(const std::vector<std::string>& records) {
    std::vector<std::pair<std::uint64_t, const std::string*>> order;
    std::uint64_t size = cacheHeaderBytes;
    for (const std::string& bytes : records) {
        const auto record = ProbeRecord::fromBytes(bytes);
        if (!record || size + indexEntryBytes + bytes.size() > mostBytes) continue;
        size += indexEntryBytes + bytes.size();
        order.emplace_back(quickHash(record->path), &bytes);
    }
    std::ranges::sort(order);
    std::string out(signature);
    out.reserve(static_cast<std::size_t>(size));
    appendPlain(out, layout);
    appendPlain(out, static_cast<std::uint32_t>(order.size()));
    auto position = cacheHeaderBytes + order.size() * indexEntryBytes;
    for (const auto& [hash, bytes] : order) {
        appendPlain(out, hash);
        appendPlain(out, static_cast<std::uint32_t>(position));
        appendPlain(out, static_cast<std::uint32_t>(bytes->size()));
        position += bytes->size();
    }
    for (const auto& [hash, bytes] : order) out += *bytes;
    return out;
}

} // namespace orvane
