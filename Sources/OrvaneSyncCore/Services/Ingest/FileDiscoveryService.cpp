#include "OrvaneSyncCore/Services/Ingest/FileDiscoveryService.h"

#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Utilities/PathGlob.h"
#include "Platform/Files.h"
#include "Platform/MediaRecognition.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace orvane {

namespace {

/// Folders that a desktop shows as one file. Their contents are private to a program: proxies, renders and
/// originals of an editing library must not be found as clips.
constexpr std::array<std::string_view, 35> packageExtensions{
    "app",        "appex",        "aplibrary", "band",          "bundle",     "component",    "dvdmedia",
    "fcpbundle",  "fcpcache",     "framework", "imovielibrary", "kext",       "logicx",       "lrlibrary",
    "mpkg",       "musiclibrary", "pages",     "photoslibrary", "photobooth", "photolibrary", "pkg",
    "playground", "plugin",       "prefpane",  "rcproject",     "rtfd",       "sparsebundle", "theater",
    "tvlibrary",  "vst",          "vst3",      "workflow",      "xcarchive",  "xcodeproj",    "xpc"};

bool isPackage(const std::string& folder) {
    const std::string extension = FileURL{folder}.lowercasedExtension();
    return std::ranges::find(packageExtensions, extension) != packageExtensions.end();
}

/// Files that cameras write beside their clips: thumbnails, photos, small copies for a phone.
constexpr auto stillsAndProxies = std::to_array<std::string_view>(
    {"3fr",  "arw", "avif", "bmp", "cr2", "cr3", "crw", "dcr",  "erf", "fff", "gif",  "gpr", "hdr",  "heic",
     "heif", "hif", "iiq",  "j2c", "j2k", "jp2", "jpe", "jpeg", "jpf", "jpg", "jps",  "jpx", "jxl",  "jxs",
     "kdc",  "lrf", "lrv",  "mef", "mos", "mrw", "nef", "nrw",  "orf", "pef", "png",  "pnm", "ppm",  "psb",
     "psd",  "raf", "rw2",  "rwl", "sr2", "srf", "srw", "tga",  "thm", "tif", "tiff", "wdp", "webp", "x3f"});

bool isStillOrProxy(const FileURL& url) {
    return std::ranges::find(stillsAndProxies, url.lowercasedExtension()) != stillsAndProxies.end();
}

class Exclusions {
  public:
    explicit Exclusions(const std::vector<std::string>& globs) {
        for (const std::string& glob : globs) rules_.push_back({glob, PathGlob(glob)});
    }

    bool cover(std::string_view pathBelowFolder) {
        bool isCovered = false;
        for (Rule& rule : rules_) {
            if (!rule.glob.matches(pathBelowFolder)) continue;
            rule.isUsed = isCovered = true;
        }
        return isCovered;
    }

    std::vector<std::string> unused() const {
        std::vector<std::string> globs;
        for (const Rule& rule : rules_)
            if (!rule.isUsed) globs.push_back(rule.text);
        return globs;
    }

  private:
    struct Rule {
        std::string text;
        PathGlob glob;
        bool isUsed = false;
    };
    std::vector<Rule> rules_;
};

void discoverInto(DiscoveryResult& result, const std::string& folder, Exclusions& exclusions,
                  const std::stop_token& stop) {
    using platform::files::WalkEntry;
    const std::size_t above = folder.size() + (folder.ends_with('/') ? 0 : 1);
    const auto isExcluded = [&](const std::string& path) {
        return exclusions.cover(std::string_view(path).substr(above));
    };
    const auto visit = [&](const std::string& path, WalkEntry entry) {
        platform::throwIfStopped(stop);
        FileURL url{path};
        const auto kind = assetKindFrom(url);
        if (entry == WalkEntry::brokenLink) {
            // A broken link without an extension may be a link to a whole folder.
            if ((kind || url.lowercasedExtension().empty()) && !isExcluded(path))
                result.brokenLinks.push_back(std::move(url));
            return;
        }
        if (isExcluded(path)) return;
        if (!kind) {
            if (entry != WalkEntry::directory && platform::isMediaName(path) && !isStillOrProxy(url))
                result.unreadMedia.push_back(std::move(url));
            return;
        }
        if (entry == WalkEntry::linkedFile) result.linkedFiles.push_back(url);
        auto& list = *kind == AssetKind::video ? result.videoURLs : result.audioURLs;
        list.push_back(std::move(url));
    };
    const auto unreadable = [&result](const std::string& path) {
        result.unreadableFolders.push_back({path});
    };
    const auto descend = [&](const std::string& path) {
        return !isPackage(path) && !isPackage(platform::files::behindLinks(path)) && !isExcluded(path);
    };
    if (!platform::files::walk(folder, visit, descend, platform::files::Hidden::skip, unreadable,
                               platform::files::LinkedFolders::enter))
        unreadable(folder);
}

/// Gives every file its standard path. Each folder is resolved only once.
class Standardization {
  public:
    explicit Standardization(std::stop_token stop) : stop_(std::move(stop)) {}

    FileURL standardized(const FileURL& url) {
        const std::size_t slash = url.path.rfind('/');
        if (slash == std::string::npos) return {platform::files::standardized(url.path)};
        const auto [folder, isNew] = folders_.try_emplace(url.path.substr(0, slash));
        if (isNew) {
            // A link in the last component is not resolved, so resolve the path of something inside the
            // folder.
            const std::string inside = platform::files::standardized(folder->first + "/x");
            folder->second = inside.substr(0, inside.size() - 1);
        }
        return {folder->second + url.path.substr(slash + 1)};
    }

    /// Without duplicates, in the order of the paths.
    std::vector<FileURL> sortedWithoutDuplicates(const std::vector<FileURL>& urls) {
        std::unordered_set<FileURL> seen;
        std::vector<FileURL> result;
        result.reserve(urls.size());
        for (const FileURL& url : urls) {
            platform::throwIfStopped(stop_);
            FileURL standard = standardized(url);
            if (seen.insert(standard).second) result.push_back(std::move(standard));
        }
        sortByPath(result);
        return result;
    }

  private:
    const std::stop_token stop_;
    std::unordered_map<std::string, std::string> folders_;
};

/// Of several names of one file keeps the file itself, otherwise the first link. `links`: the links among the
/// files. All paths are standard ones.
void leaveOutSecondNames(std::vector<FileURL>& files, const std::unordered_set<FileURL>& links) {
    std::unordered_set<std::string> known;
    for (const FileURL& file : files)
        if (!links.contains(file)) known.insert(file.path);
    std::erase_if(files, [&](const FileURL& file) {
        return links.contains(file) &&
               !known.insert(platform::files::standardized(platform::files::behindLinks(file.path))).second;
    });
}

} // namespace

DiscoveryResult FileDiscoveryService::discover(const std::string& folder) const {
    return discover(std::vector<std::string>{folder});
}

DiscoveryResult FileDiscoveryService::discover(const std::vector<std::string>& folders,
                                               const std::stop_token& stop,
                                               const std::vector<std::string>& exclusions) const {
    DiscoveryResult result;
    Exclusions rules(exclusions);
    for (const std::string& folder : folders) discoverInto(result, folder, rules, stop);
    result.unusedExclusions = rules.unused();
    return result;
}

DiscoveryResult FileDiscoveryService::discoverOnce(const std::vector<std::string>& folders,
                                                   const std::stop_token& stop,
                                                   const std::vector<std::string>& exclusions) const {
    DiscoveryResult found = discover(folders, stop, exclusions);
    Standardization standard(stop);
    for (auto* list : {&found.videoURLs, &found.audioURLs, &found.unreadableFolders, &found.brokenLinks,
                       &found.linkedFiles, &found.unreadMedia})
        *list = standard.sortedWithoutDuplicates(*list);
    if (found.linkedFiles.empty()) return found;
    const std::unordered_set<FileURL> links(found.linkedFiles.begin(), found.linkedFiles.end());
    for (auto* list : {&found.videoURLs, &found.audioURLs}) leaveOutSecondNames(*list, links);
    return found;
}

} // namespace orvane
