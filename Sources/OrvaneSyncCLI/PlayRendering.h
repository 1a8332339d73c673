#pragma once

#include "OrvaneSyncCLI/Arguments.h"
#include "OrvaneSyncCLI/Context.h"
#include "OrvaneSyncCLI/PlayRange.h"

#include <string>

namespace orvane::cli {

/// Writes what a player shows and plays: a movie with one picture for each frame of the video, each the one
/// that is shown at that time; or, if the name ends in ".wav", a file of the sound alone. Sound has two
/// channels. Throws CommandError and platform::FileError, OutputRefused among them.
void renderRange(Context& context, const Arguments& arguments, const PlayRange& range,
                 const std::string& output);

} // namespace orvane::cli
