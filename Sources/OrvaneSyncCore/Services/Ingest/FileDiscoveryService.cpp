#include "OrvaneSyncCore/Services/Ingest/FileDiscoveryService.h"

#include "Platform/Files.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace orvane {

namespace {

/// Folders that a desktop shows as one file. Their insides are a program's own business: proxies, renders and
/// originals of an editing library must not come up as clips.
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

void discoverInto(DiscoveryResult& result, const std::string& folder, const std::stop_token& stop) {
    const auto visit = [&](const std::string& path, platform::files::WalkEntry entry) {
        platform::throwIfStopped(stop);
        FileURL url{path};
        const auto kind = assetKindFrom(url);
        if (entry == platform::files::WalkEntry::brokenLink) {
            // Without an extension it may have stood for a whole folder.
            if (kind || url.lowercasedExtension().empty()) result.brokenLinks.push_back(std::move(url));
            return;
        }
        if (!kind) return;
        auto& list = *kind == AssetKind::video ? result.videoURLs : result.audioURLs;
        list.push_back(std::move(url));
    };
    const auto unreadable = [&result](const std::string& path) {
        result.unreadableFolders.push_back({path});
    };
    const auto descend = [](const std::string& path) { return !isPackage(path); };
    if (!platform::files::walk(folder, visit, descend, platform::files::Hidden::skip, unreadable))
        unreadable(folder);
}

} // namespace

DiscoveryResult FileDiscoveryService::discover(const std::string& folder) const {
    return discover(std::vector<std::string>{folder});
}

DiscoveryResult FileDiscoveryService::discover(const std::vector<std::string>& folders,
                                               const std::stop_token& stop) const {
    DiscoveryResult result;
    for (const std::string& folder : folders) discoverInto(result, folder, stop);
    return result;
}

} // namespace orvane
