#include "OrvaneSyncCore/Services/Ingest/ContentMarks.h"

#include "OrvaneSyncCore/Utilities/QuickHash.h"
#include "Platform/MainThread.h"
#include "Platform/RandomAccessFile.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <map>
#include <string_view>
#include <tuple>

namespace orvane::ContentMarks {

namespace {

constexpr std::size_t pieces = 8, pieceBytes = 4096;
constexpr std::uint64_t markBits = (std::uint64_t{1} << 53) - 1; // the integers that a JSON number holds
                                                                 // exactly

std::string_view folder(const MediaAsset& file) {
    return std::string_view(file.url.path).substr(0, file.url.path.rfind('/'));
}

/// Groups of recordings with the same name, size and start in several folders.
std::vector<std::vector<std::size_t>> likelyCopies(const std::vector<MediaAsset>& recordings) {
    using Likeness = std::tuple<std::uint64_t, std::string_view, std::uint64_t>;
    const auto likenessOf = [](const MediaAsset& file) {
        return Likeness(*file.fileSizeBytes,
                        file.startTimecodeString ? std::string_view(*file.startTimecodeString) : "",
                        file.bextTimeReference.value_or(0));
    };
    std::map<Likeness, std::vector<std::size_t>> byLikeness;
    for (std::size_t i = 0; i < recordings.size(); ++i)
        if (recordings[i].fileSizeBytes.value_or(0) > 0) byLikeness[likenessOf(recordings[i])].push_back(i);
    std::vector<std::vector<std::size_t>> copies;
    for (const auto& [likeness, files] : byLikeness) {
        if (files.size() < 2) continue;
        std::map<std::string, std::vector<std::size_t>> byName;
        for (const std::size_t i : files)
            byName[platform::text::lowercased(recordings[i].filename)].push_back(i);
        for (auto& [name, same] : byName) {
            const std::string_view first = folder(recordings[same.front()]);
            if (std::ranges::any_of(same, [&](std::size_t i) { return folder(recordings[i]) != first; }))
                copies.push_back(std::move(same));
        }
    }
    return copies;
}

using Piece = std::array<std::byte, pieceBytes>;

/// The piece with that number, padded with zeros; absent if it cannot be read.
std::optional<Piece> pieceOf(const platform::RandomAccessFile& file, std::uint64_t number) {
    const std::uint64_t position = number * pieceBytes;
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(pieceBytes, file.size() - position));
    Piece piece{};
    if (file.readInto(position, std::span(piece).first(wanted)) != wanted) return std::nullopt;
    return piece;
}

/// Absent if the end cannot be read. Some programs create a file in full size and then write it; if they stop
/// early, the rest is zeros.
std::optional<bool> hasZerosAtItsEnd(const platform::RandomAccessFile& file) {
    if (file.size() < 2 * pieceBytes) return false;
    const auto last = pieceOf(file, file.size() / pieceBytes - 1);
    return last ? std::optional(*last == Piece{}) : std::nullopt;
}

/// The share of the first file, from its beginning, that equals the second file; by binary search for the
/// first difference.
double shareInCommon(const std::string& path, const std::string& other) {
    const auto a = platform::RandomAccessFile::open(path), b = platform::RandomAccessFile::open(other);
    if (!a || !b) return 0;
    std::uint64_t same = 0, differing = a->size() / pieceBytes;
    while (differing - same > 1) {
        const std::uint64_t middle = same + (differing - same) / 2;
        const auto own = pieceOf(*a, middle), theirs = pieceOf(*b, middle);
        (own && own == theirs ? same : differing) = middle;
    }
    return static_cast<double>(differing * pieceBytes) / static_cast<double>(a->size());
}

} // namespace

std::vector<std::size_t> missingIn(const std::vector<MediaAsset>& recordings) {
    std::vector<std::size_t> missing;
    for (const auto& same : likelyCopies(recordings)) {
        const auto isDated = [&](std::size_t i) { return recordings[i].shootDay().has_value(); };
        if (std::ranges::all_of(same, isDated)) continue;
        for (const std::size_t i : same)
            if (!recordings[i].contentMark) missing.push_back(i);
    }
    return missing;
}

std::vector<BrokenOff> brokenOffIn(const std::vector<MediaAsset>& recordings, const std::stop_token& stop) {
    const auto copies = likelyCopies(recordings);
    std::vector<std::vector<BrokenOff>> found(copies.size());
    const auto compare = [&](std::size_t which) {
        std::vector<std::size_t> empty;
        std::optional<std::size_t> whole;
        for (const std::size_t i : copies[which]) {
            const auto file = platform::RandomAccessFile::open(recordings[i].url.path);
            const auto endsInZeros = file ? hasZerosAtItsEnd(*file) : std::nullopt;
            if (endsInZeros && *endsInZeros) empty.push_back(i);
            if (endsInZeros && !*endsInZeros) whole = i;
        }
        for (const std::size_t i : empty)
            if (whole && !recordings[i].heldShare)
                found[which].push_back(
                    {i, shareInCommon(recordings[i].url.path, recordings[*whole].url.path)});
    };
    constexpr std::size_t atOnce = 8; // disks must seek, and servers answer with delay
    platform::concurrently(copies.size(), atOnce, compare, stop);
    std::vector<BrokenOff> all;
    for (const auto& some : found) all.insert(all.end(), some.begin(), some.end());
    return all;
}

std::optional<std::uint64_t> of(const std::string& path) {
    const auto file = platform::RandomAccessFile::open(path);
    if (!file) return std::nullopt;
    std::string read;
    std::array<std::byte, pieceBytes> piece{};
    for (std::size_t i = 0; i < pieces; ++i) {
        const std::uint64_t position = file->size() / (2 * pieces) * (2 * i + 1);
        const std::size_t wanted =
            static_cast<std::size_t>(std::min<std::uint64_t>(pieceBytes, file->size() - position));
        if (file->readInto(position, std::span(piece).first(wanted)) != wanted) return std::nullopt;
        read.append(reinterpret_cast<const char*>(piece.data()), wanted);
    }
    return quickHash(read) & markBits;
}

} // namespace orvane::ContentMarks
