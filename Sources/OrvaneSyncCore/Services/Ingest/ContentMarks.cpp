#include "OrvaneSyncCore/Services/Ingest/ContentMarks.h"

#include "OrvaneSyncCore/Utilities/QuickHash.h"
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
constexpr std::uint64_t markBits = (std::uint64_t{1} << 53) - 1; // what a number of JSON holds exactly

std::string_view folder(const MediaAsset& file) {
    return std::string_view(file.url.path).substr(0, file.url.path.rfind('/'));
}

} // namespace

std::vector<std::size_t> missingIn(const std::vector<MediaAsset>& recordings) {
    using Likeness = std::tuple<std::uint64_t, std::string_view, std::uint64_t>;
    const auto likenessOf = [](const MediaAsset& file) {
        return Likeness(*file.fileSizeBytes,
                        file.startTimecodeString ? std::string_view(*file.startTimecodeString) : "",
                        file.bextTimeReference.value_or(0));
    };
    std::map<Likeness, std::vector<std::size_t>> alike;
    for (std::size_t i = 0; i < recordings.size(); ++i)
        if (recordings[i].fileSizeBytes.value_or(0) > 0) alike[likenessOf(recordings[i])].push_back(i);
    std::vector<std::size_t> missing;
    for (const auto& [likeness, files] : alike) {
        if (files.size() < 2) continue;
        std::map<std::string, std::vector<std::size_t>> byName;
        for (const std::size_t i : files)
            byName[platform::text::lowercased(recordings[i].filename)].push_back(i);
        for (const auto& [name, same] : byName) {
            const std::string_view first = folder(recordings[same.front()]);
            const auto isElsewhere = [&](std::size_t i) { return folder(recordings[i]) != first; };
            const auto isDated = [&](std::size_t i) { return recordings[i].shootDay().has_value(); };
            if (std::ranges::none_of(same, isElsewhere) || std::ranges::all_of(same, isDated)) continue;
            for (const std::size_t i : same)
                if (!recordings[i].contentMark) missing.push_back(i);
        }
    }
    return missing;
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
