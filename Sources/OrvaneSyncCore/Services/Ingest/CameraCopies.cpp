#include "OrvaneSyncCore/Services/Ingest/CameraCopies.h"

#include "Platform/MainThread.h"
#include "Platform/RandomAccessFile.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace orvane::CameraCopies {

namespace {

using platform::RandomAccessFile;
using Piece = std::array<std::byte, 4096>;
constexpr std::uint64_t piecesOfFile = 12; // at the start and the end, where headers are, and between

/// The indices of the videos that have the same file name.
using Namesakes = std::vector<std::size_t>;

std::string_view folderOfVideo(const MediaAsset& video) {
    return std::string_view(video.url.path).substr(0, video.url.path.rfind('/') + 1);
}

bool mayBeCopy(const MediaAsset& file, const MediaAsset& original) {
    const auto size = file.fileSizeBytes.value_or(0), whole = original.fileSizeBytes.value_or(0);
    if (size == 0 || size > whole || folderOfVideo(file) == folderOfVideo(original)) return false;
    if (file.endsEarly()) return true;
    return size == whole && !original.endsEarly() && file.startTimecodeString == original.startTimecodeString;
}

/// Absent if the piece cannot be read completely.
std::optional<Piece> pieceAt(const RandomAccessFile& file, std::uint64_t position, std::size_t bytes) {
    Piece piece{};
    if (file.readInto(position, std::span(piece).first(bytes)) != bytes) return std::nullopt;
    return piece;
}

/// Whether the other file begins with this file's bytes. Zeros at the end of a file that ends early are space
/// that the copying program reserved.
bool beginsWith(const MediaAsset& original, const MediaAsset& copy) {
    const auto own = RandomAccessFile::open(copy.url.path), other = RandomAccessFile::open(original.url.path);
    if (!own || !other || own->size() > other->size()) return false;
    const auto bytes = static_cast<std::size_t>(std::min<std::uint64_t>(own->size(), sizeof(Piece)));
    const std::uint64_t last = own->size() - bytes;
    bool mayBeReserved = copy.endsEarly();
    bool hasEqualPiece = false;
    for (std::uint64_t i = piecesOfFile; i-- > 0;) {
        const std::uint64_t position =
            last / (piecesOfFile - 1) * i + last % (piecesOfFile - 1) * i / (piecesOfFile - 1);
        const auto piece = pieceAt(*own, position, bytes);
        if (!piece) return false;
        if (mayBeReserved && *piece == Piece{}) continue;
        // The piece in which the copying stopped has bytes of the file and zeros.
        const bool mayBreakOff = std::exchange(mayBeReserved, false) && i + 1 < piecesOfFile;
        if (piece == pieceAt(*other, position, bytes))
            hasEqualPiece = true;
        else if (!mayBreakOff)
            return false;
    }
    return hasEqualPiece;
}

} // namespace

std::vector<CameraCopy> takeOut(std::vector<MediaAsset>& videos, const std::stop_token& stop) {
    std::map<std::string, Namesakes> byName;
    for (std::size_t i = 0; i < videos.size(); ++i)
        byName[platform::text::lowercased(videos[i].filename)].push_back(i);
    std::vector<Namesakes> names;
    for (auto& [name, files] : byName)
        if (files.size() > 1) names.push_back(std::move(files));

    std::vector<std::optional<std::size_t>> originals(videos.size()); // by index of the copy
    const auto compare = [&](std::size_t which) {
        Namesakes& files = names[which];
        std::ranges::stable_sort(files, {}, [&](std::size_t i) {
            return std::pair(videos[i].endsEarly(), ~videos[i].fileSizeBytes.value_or(0));
        });
        Namesakes kept;
        for (const std::size_t i : files) {
            const auto original = std::ranges::find_if(kept, [&](std::size_t other) {
                return mayBeCopy(videos[i], videos[other]) && beginsWith(videos[other], videos[i]);
            });
            if (original == kept.end())
                kept.push_back(i);
            else
                originals[i] = *original;
        }
    };
    constexpr std::size_t atOnce = 8; // so that slow disks and servers work on several files at once
    platform::concurrently(names.size(), atOnce, compare, stop);

    std::vector<CameraCopy> copies;
    for (std::size_t i = 0; i < videos.size(); ++i)
        if (const auto original = originals[i])
            copies.push_back({videos[i].url, videos[*original].url, videos[i].endsEarly()});
    std::size_t next = 0;
    std::erase_if(videos, [&](const MediaAsset&) { return originals[next++].has_value(); });
    return copies;
}

} // namespace orvane::CameraCopies
