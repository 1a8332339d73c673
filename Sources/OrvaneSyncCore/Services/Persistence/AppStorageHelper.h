#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The application's directories: absolute paths in the bytes of the file system. Each getter creates its
/// directory and those above it if they are missing. A failure to do so is ignored, as the file operation
/// after it will fail with a reason. Work is stored below the XDG data directory, caches below the XDG cache
/// directory. Any thread.
namespace orvane::AppStorageHelper {

inline constexpr std::string_view appFolderName = "Orvane Tandrel";
// Folders of rendered sound below `cachesDirectory`.
inline constexpr std::string_view mixdownsFolderName = "mixdowns";
inline constexpr std::string_view voiceIsolationFolderName = "VoiceIsolation";
inline constexpr std::string_view stemsFolderName = "StemCache";

/// Makes the existing folders of settings, work and caches accessible to their owner alone, even if they were
/// created with wider rights. Returns a line for each folder that stays open to others, with the reason.
std::vector<std::string> keepPrivate();

std::string applicationSupportDirectory();
/// Contains only what can be made again, even if the user's cache and data directories are the same.
std::string cachesDirectory();

std::string sessionsDirectory();
std::string presetsDirectory();
std::string modelStorageDirectory();
std::string calibrationDirectory();
/// Room tone, with a folder for each work.
std::string atmoDirectory();

/// The file of secrets if the system has no key store. The file and its folder may not exist.
std::string credentialFile();

std::string probeCacheDirectory();
std::string stemCacheDirectory();
std::string waveformCacheDirectory();
std::string analysisCacheDirectory();
std::string voiceIsolationCacheDirectory();

/// The size in bytes of all files below `cachesDirectory`, including hidden ones.
std::int64_t cacheSizeBytes();
/// Removes every entry of `cachesDirectory` that the system lets it remove; returns the size before that.
std::int64_t clearDiskCaches();

} // namespace orvane::AppStorageHelper
