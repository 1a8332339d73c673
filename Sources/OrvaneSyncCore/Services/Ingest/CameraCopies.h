#pragma once

#include "OrvaneSyncCore/Models/ScanModels.h"

#include <stop_token>
#include <vector>

namespace orvane {

/// Finds the camera files of a card that was offloaded more than once.
namespace CameraCopies {

/// Removes the copies from the videos; the others keep their order. A copy is in another folder than the
/// original file, has its name, size and start timecode, and equals it in 12 pieces of 4 KB between the first
/// and the last byte. A file that ends early is a copy of a file that begins with its bytes. A complete file
/// stays before one that ends early; of equal files the first stays. A file that cannot be read stays. Reads
/// only files whose name occurs more than once. Any thread that may wait; throws Stopped.
std::vector<CameraCopy> takeOut(std::vector<MediaAsset>& videos, const std::stop_token& stop = {});

} // namespace CameraCopies
} // namespace orvane
