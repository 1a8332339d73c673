#pragma once

#include "OrvaneSyncCLI/Context.h"
#include "Platform/AudioFile.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace orvane::cli {

class ProgressLine;

/// Of a file with several sound tracks: the one that players take, or all side by side.
enum class SoundTracks { main, all };

/// The sound of a file that a command was given. Throws CommandError where there is nothing to read or
/// nothing in it can be heard.
std::unique_ptr<platform::AudioFile> openSound(const std::string& path,
                                               SoundTracks tracks = SoundTracks::main);

/// Why what needs the media libraries can't be read, and what to do; empty where nothing needed them in vain.
std::string missedLibraryText();

/// Seconds that are there, and those that the header promises; 0 without a rate.
double secondsOf(const platform::AudioFile& file);
double secondsOf(const platform::AudioFile& file, std::int64_t frames);
double promisedSecondsOf(const platform::AudioFile& file);

/// Once so many frames of the file were heard: warns where the file ends before what its header promises.
/// Throws ReadFailed where a read failed.
void checkHeard(const Context& context, const std::string& path, const platform::AudioFile& file,
                std::int64_t heardFrames);
/// Throws ReadFailed where a read of the file failed.
void checkRead(const std::string& path, const platform::AudioFile& file);

/// Shows on the line how many of so many seconds were heard; takes the share of them.
std::function<void(double share)> hearing(ProgressLine& line, double seconds);

} // namespace orvane::cli
