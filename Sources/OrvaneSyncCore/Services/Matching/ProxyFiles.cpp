#include "OrvaneSyncCore/Services/Matching/ProxyFiles.h"

#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace orvane::ProxyFiles {

namespace {

/// Lower case. Names that cameras, recorders and ingest programs give such folders: "Sub" is on XDCAM and
/// XAVC cards; "LRV" and "THMBNL" hold low-resolution files and thumbnails of action cameras and camcorders.
constexpr std::array<std::string_view, 9> folderNamesOfProxies{
    "prxy", "sub", "lrv", "thmbnl", "lowres", "low-res", "low_res", "low res", "offline"};
/// As in "01_PROXY", "Day1 Proxies" and "ProRes_Proxy". The other names also occur as words in names of units
/// and places.
constexpr std::array<std::string_view, 2> wordsOfProxies{"proxy", "proxies"};

/// After the name of the original, lower case.
constexpr std::array<std::string_view, 5> proxyEndings{"_proxy", "-proxy", " proxy", "_prxy", "_lrv"};

constexpr double assumedFrame = 1.0 / 24; // seconds, for a file that states no rate
constexpr double rounding = 1e-6;         // of a frame

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// The name without the ending of a proxy: "C0001S03" and "A001_Proxy" become C0001 and A001.
std::optional<std::string> withoutProxyEnding(std::string_view stem) {
    for (const std::string_view ending : proxyEndings)
        if (stem.size() > ending.size() && stem.ends_with(ending))
            return std::string(stem.substr(0, stem.size() - ending.size()));
    constexpr std::size_t numbered = 3; // "s03"
    if (stem.size() <= numbered) return std::nullopt;
    const std::string_view ending = stem.substr(stem.size() - numbered);
    if (ending[0] != 's' || !isDigit(ending[1]) || !isDigit(ending[2])) return std::nullopt;
    return std::string(stem.substr(0, stem.size() - numbered));
}

/// The properties of a video that are compared, read once.
struct Video {
    const MediaAsset* asset;
    std::optional<double> start; ///< timecode seconds
    double length;               ///< seconds
    double frame;                ///< seconds
    std::int64_t pixels;
};

/// Absent for a file with too few known properties.
std::optional<Video> videoOf(const MediaAsset& asset) {
    if (!asset.durationSeconds || !asset.width || !asset.height) return std::nullopt;
    const std::int64_t pixels = std::int64_t{*asset.width} * *asset.height;
    if (pixels <= 0) return std::nullopt;
    std::optional<double> start;
    if (asset.startTimecodeString)
        if (const auto range = SyncEngine::tcRange(asset)) start = range->startSeconds;
    const double rate = asset.frameRate.value_or(0);
    return Video{&asset, start, *asset.durationSeconds, rate > 0 ? 1 / rate : assumedFrame, pixels};
}

bool isInProxyFolder(const FileURL& file) { return std::ranges::any_of(folderNames(file), isProxyFolder); }

/// Folders that contain both files are no evidence: a whole shoot may be in a folder named "offline".
bool liesInProxyFolderBeside(const FileURL& file, const FileURL& original) {
    const auto own = folderNames(file), others = folderNames(original);
    const auto [first, firstOther] = std::ranges::mismatch(own, others);
    return std::any_of(first, own.end(), isProxyFolder) &&
           std::none_of(firstOther, others.end(), isProxyFolder);
}

bool isProxyOf(const Video& file, const Video& original) {
    const double frame = std::max(file.frame, original.frame) * (1 + rounding);
    if (file.pixels >= original.pixels || !(std::abs(file.length - original.length) <= frame)) return false;
    if (file.start.has_value() != original.start.has_value()) return false;
    if (file.start && !(std::abs(*file.start - *original.start) <= frame)) return false;
    return liesInProxyFolderBeside(file.asset->url, original.asset->url);
}

/// The videos by their names without extension, lower case.
class Originals {
  public:
    Originals(const std::vector<MediaAsset>& videos, platform::StopCheck& check) {
        for (const MediaAsset& video : videos) {
            check();
            if (auto own = videoOf(video)) byName_[video.normalizedName()].push_back(*own);
        }
    }

    const MediaAsset* originalOf(const MediaAsset& file) const {
        const auto own = videoOf(file);
        if (!own) return nullptr;
        const std::string name = file.normalizedName();
        for (const auto& stem : {std::optional(name), withoutProxyEnding(name)}) {
            const auto candidates = stem ? byName_.find(*stem) : byName_.end();
            if (candidates == byName_.end()) continue;
            for (const Video& original : candidates->second)
                if (isProxyOf(*own, original)) return original.asset;
        }
        return nullptr;
    }

  private:
    std::unordered_map<std::string, std::vector<Video>> byName_;
};

} // namespace

bool isProxyFolder(std::string_view name) {
    const std::string lower = platform::text::lowercased(name);
    return std::ranges::find(folderNamesOfProxies, lower) != folderNamesOfProxies.end() ||
           std::ranges::any_of(wordsOfProxies,
                               [&](std::string_view word) { return lower.find(word) != std::string::npos; });
}

std::vector<ProxyFile> takeOut(std::vector<MediaAsset>& videos, const std::stop_token& stop) {
    platform::StopCheck check(stop);
    // Most cards have no such folder, and then nothing is compared.
    std::vector<const MediaAsset*> suspects;
    std::unordered_map<std::string_view, bool> folders;
    for (const MediaAsset& video : videos) {
        check();
        const std::string_view path = video.url.path;
        const auto [folder, isNew] = folders.try_emplace(path.substr(0, path.rfind('/') + 1));
        if (isNew) folder->second = isInProxyFolder(video.url);
        if (folder->second) suspects.push_back(&video);
    }
    if (suspects.empty()) return {};

    const Originals originals(videos, check);
    std::vector<ProxyFile> proxies;
    std::unordered_set<UUID> ids;
    for (const MediaAsset* suspect : suspects) {
        check();
        if (const MediaAsset* original = originals.originalOf(*suspect)) {
            proxies.push_back({suspect->url, original->url});
            ids.insert(suspect->id);
        }
    }
    std::erase_if(videos, [&](const MediaAsset& video) { return ids.contains(video.id); });
    return proxies;
}

} // namespace orvane::ProxyFiles
