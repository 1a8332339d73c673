#pragma once

#include "OrvaneSyncCLI/Arguments.h"
#include "OrvaneSyncCLI/Context.h"
#include "OrvaneSyncCLI/PlayRange.h"

#include <string>

namespace orvane::cli {

/// Writes what a player shows and gives to the device: a movie with one picture a frame of the video, each
/// the one that is shown at its moment, or of the sound alone a file that ends in ".wav". Sound has two
/// channels. Throws CommandError and platform::FileError, OutputRefused among them.
void renderRange(Context& context, const Arguments& arguments, const PlayRange& range,
                 const std::string& output);

} // namespace orvane::cli
