#pragma once

#include "OrvaneSyncCLI/Context.h"
#include "Platform/AudioFile.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace orvane::cli {

class ProgressLine;

/// For a file with several sound tracks: the one that players choose, or all side by side.
enum class SoundTracks { main, all };

/// Opens the sound of a file of the command line. Throws CommandError if it cannot be read or has no sound.
std::unique_ptr<platform::AudioFile> openSound(const std::string& path,
                                               SoundTracks tracks = SoundTracks::main);

/// Why files that need the media libraries can't be read, and what to do; empty if no file needed them in
/// vain.
std::string missedLibraryText();

/// Seconds in the file, and those that its header states; 0 without a rate.
double secondsOf(const platform::AudioFile& file);
double secondsOf(const platform::AudioFile& file, std::int64_t frames);
double promisedSecondsOf(const platform::AudioFile& file);

/// Call it after so many frames of the file were read: warns if the file ends before the length that its
/// header states. Throws ReadFailed if a read failed.
void checkHeard(const Context& context, const std::string& path, const platform::AudioFile& file,
                std::int64_t heardFrames);
/// Throws ReadFailed if a read of the file failed.
void checkRead(const std::string& path, const platform::AudioFile& file);

/// Shows on the progress line how many of so many seconds were analysed; is called with their share.
std::function<void(double share)> hearing(ProgressLine& line, double seconds);

} // namespace orvane::cli
