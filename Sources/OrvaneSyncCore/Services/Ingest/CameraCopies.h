#pragma once

#include "OrvaneSyncCore/Models/ScanModels.h"

#include <stop_token>
#include <vector>

namespace orvane {

/// Finds the camera files of a card that was offloaded more than once.
namespace CameraCopies {

/// Takes the copies out of the videos; the others keep their order. A copy has the name of another file in
/// another folder, its size and its start, and equals it where both are read: in pieces of 4 KB from the
/// first to the last byte. A file that ends early is a copy of a longer one that begins with its bytes. Of
/// equal files the first stays, and a complete one before one that ends early. A file that cannot be read
/// stays. Reads only files of one name. Any thread that may wait; throws Stopped.
std::vector<CameraCopy> takeOut(std::vector<MediaAsset>& videos, const std::stop_token& stop = {});

} // namespace CameraCopies
} // namespace orvane
