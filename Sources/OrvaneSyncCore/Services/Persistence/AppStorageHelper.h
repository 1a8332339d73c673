#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The application's directories, absolute paths in the bytes of the file system. Each getter makes its
/// directory, with those above it, where it is missing; a failure to do so is ignored, and the file operation
/// that follows fails by itself. Work lies below the XDG data directory, caches below the XDG cache
/// directory. Any thread.
namespace orvane::AppStorageHelper {

inline constexpr std::string_view appFolderName = "Orvane Tandrel";
// Folders of rendered sound below `cachesDirectory`.
inline constexpr std::string_view mixdownsFolderName = "mixdowns";
inline constexpr std::string_view voiceIsolationFolderName = "VoiceIsolation";
inline constexpr std::string_view stemsFolderName = "StemCache";

/// Leaves the folders of settings, work and caches that are there to their owner alone, also those that were
/// made with wider rights. Returns a line for each that stays open to others, and why.
std::vector<std::string> keepPrivate();

std::string applicationSupportDirectory();
/// Holds nothing but what can be made again, also where the user's caches lie with the work.
std::string cachesDirectory();

std::string sessionsDirectory();
std::string presetsDirectory();
std::string modelStorageDirectory();
std::string calibrationDirectory();
/// Room tone, in a folder for each work.
std::string atmoDirectory();

/// Of secrets where the system has no key store. The file and its folder may be missing.
std::string credentialFile();

std::string probeCacheDirectory();
std::string stemCacheDirectory();
std::string waveformCacheDirectory();
std::string voiceIsolationCacheDirectory();

/// Total size in bytes of all files below `cachesDirectory`, hidden ones too.
std::int64_t cacheSizeBytes();
/// Removes every direct child of `cachesDirectory`, as far as the system lets it, and returns the size from
/// just before.
std::int64_t clearDiskCaches();

} // namespace orvane::AppStorageHelper
