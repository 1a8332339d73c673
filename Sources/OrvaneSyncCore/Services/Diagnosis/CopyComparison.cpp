#include "OrvaneSyncCore/Services/Diagnosis/CopyComparison.h"

#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "Platform/RandomAccessFile.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace orvane {

namespace {

constexpr double copyStartSeconds = 0.001; // as matching has it

bool mayBeCopies(const AudioMatch& a, const AudioMatch& b) {
    const MediaAsset &one = *a.audio, &other = *b.audio;
    return one.fileSizeBytes && one.fileSizeBytes == other.fileSizeBytes &&
           std::abs(a.syncOffsetSeconds - b.syncOffsetSeconds) < copyStartSeconds &&
           !(one.shootDay() && other.shootDay()) && folderPath(one) != folderPath(other) &&
           platform::text::lowercased(one.filename) == platform::text::lowercased(other.filename);
}

/// By pieces that are spread over files of one size.
bool areAlike(const std::string& path, const std::string& other) {
    constexpr std::size_t pieces = 8, pieceBytes = 4096;
    const auto one = platform::RandomAccessFile::open(path), two = platform::RandomAccessFile::open(other);
    if (!one || !two) return true;
    std::array<std::byte, pieceBytes> own{}, theirs{};
    for (std::size_t i = 0; i < pieces; ++i) {
        const std::uint64_t position = one->size() / (2 * pieces) * (2 * i + 1);
        if (one->readInto(position, own) == two->readInto(position, theirs) && own != theirs) return false;
    }
    return true;
}

} // namespace

std::unordered_set<UUID> CopyComparison::falseCopies(const SyncGroupList& groups,
                                                     const std::stop_token& stop) {
    std::unordered_set<UUID> found;
    const std::lock_guard lock(mutex_);
    for (const SyncGroup& group : groups) {
        const auto& matches = group.audioMatches;
        for (std::size_t i = 0; i < matches.size(); ++i)
            for (std::size_t j = i + 1; j < matches.size(); ++j) {
                if (!mayBeCopies(matches[i], matches[j])) continue;
                platform::throwIfStopped(stop);
                Paths paths(matches[i].audio->url.path, matches[j].audio->url.path);
                if (paths.second < paths.first) std::swap(paths.first, paths.second);
                auto known = areAlike_.find(paths);
                if (known == areAlike_.end()) {
                    const bool alike = areAlike(paths.first, paths.second);
                    known = areAlike_.emplace(std::move(paths), alike).first;
                }
                if (!known->second) found.insert({matches[i].audio->id, matches[j].audio->id});
            }
    }
    return found;
}

} // namespace orvane
