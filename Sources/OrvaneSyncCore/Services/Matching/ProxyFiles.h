#pragma once

#include "OrvaneSyncCore/Models/ScanModels.h"

#include <string_view>
#include <vector>

namespace orvane {

/// Tells the small copies that cameras and ingest programs write beside their originals. Pure; any thread.
namespace ProxyFiles {

/// Whether a folder of this name holds proxies, whatever its case: "Proxy", "Sub", "LRV" and the like.
bool isProxyFolder(std::string_view name);

/// Takes the proxies out of the videos, the others keep their order. A proxy lies in a folder for proxies
/// that its original does not lie in, has the original's name (up to what a camera puts behind the name of a
/// proxy), its start and its length, both within a frame, and fewer pixels. Everything else stays: a file
/// without its original, one of another take, one whose size is not known.
std::vector<ProxyFile> takeOut(std::vector<MediaAsset>& videos);

} // namespace ProxyFiles
} // namespace orvane
