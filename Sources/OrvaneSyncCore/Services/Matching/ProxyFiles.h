#pragma once

#include "OrvaneSyncCore/Models/ScanModels.h"

#include <stop_token>
#include <string_view>
#include <vector>

namespace orvane {

/// Recognises the small copies that cameras and ingest programs write beside their originals. Pure; any
/// thread.
namespace ProxyFiles {

/// Whether a folder with this name holds proxies: "Proxy", "Sub", "LRV" and others, in any case.
bool isProxyFolder(std::string_view name);

/// Removes the proxies from the videos; the others keep their order. A proxy is in a folder for proxies that
/// does not contain its original. It has the original's name (except what a camera adds to the name of a
/// proxy), its start and its length, both within a frame, and fewer pixels. All other files stay: a file
/// without its original, one of another take, one whose size is not known.
std::vector<ProxyFile> takeOut(std::vector<MediaAsset>& videos, const std::stop_token& stop = {});

} // namespace ProxyFiles
} // namespace orvane
