#include "OrvaneSyncCore/Services/Matching/UnitNearness.h"

#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "Platform/Text.h"

#include <algorithm>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace orvane {

namespace {

/// Without the words for the content of a folder, which do not show to which unit it belongs.
template <class Names>
std::set<std::string> piecesOfFolders(Names first, Names last) {
    static const std::set<std::string, std::less<>> kinds{"audio", "cam",     "camera", "card",  "clips",
                                                          "day",   "footage", "media",  "rec",   "roll",
                                                          "snd",   "sound",   "unit",   "video", "wav"};
    std::set<std::string> pieces;
    std::string piece;
    for (; first != last; ++first)
        for (const char c : platform::text::lowercased(*first) + " ")
            if (std::string_view("_- .").find(c) == std::string_view::npos)
                piece += c;
            else if (std::string whole = std::exchange(piece, {}); !whole.empty() && !kinds.contains(whole))
                pieces.insert(std::move(whole));
    return pieces;
}

} // namespace

UnitNearness UnitNearness::of(const MediaAsset& clip, const MediaAsset& recording) {
    const auto own = folderNames(clip.url), other = folderNames(recording.url);
    const auto [a, b] = std::ranges::mismatch(own, other);
    const auto common = static_cast<std::size_t>(a - own.begin());
    if (a == own.end() || b == other.end()) return {common, 0};
    const auto names = piecesOfFolders(a, own.end());
    if (names.empty()) return {common, 0};
    const auto others = piecesOfFolders(b, other.end());
    return {common, static_cast<std::size_t>(std::ranges::count_if(
                        others, [&](const std::string& piece) { return names.contains(piece); }))};
}

UnitNearness NearnessOfFolders::of(const MediaAsset& clip, const MediaAsset& recording) {
    const auto [place, isNew] = known_.try_emplace({folderPath(clip), folderPath(recording)});
    if (isNew) place->second = UnitNearness::of(clip, recording);
    return place->second;
}

} // namespace orvane
