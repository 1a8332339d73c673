#pragma once

#include <cstdint>
#include <stop_token>
#include <string>
#include <string_view>

/// The folder of optional models below the application's data folder. Any thread that may wait.
namespace orvane::ModelStorage {

std::string modelsDirectory();
/// The two places that a model may have: a file, and a folder.
std::string localPath(std::string_view id);
std::string localPackagePath(std::string_view id);

bool isInstalled(std::string_view id);
std::int64_t sizeOnDisk(std::string_view id); ///< bytes; 0 for one that is not there
/// Removes both, and what a download that broke off has left, as far as the system lets it.
void remove(std::string_view id);
/// Where a model lies while it is downloaded.
std::string downloadPath(std::string_view id);
/// Of everything in the folder, in whole units of 1,048,576 bytes. Throws Stopped.
std::int64_t totalSizeMB(const std::stop_token& stop = {});
/// `expectedHash` in hexadecimal digits of either case. False for a file that cannot be read. Throws Stopped.
bool verifySHA256(const std::string& path, std::string_view expectedHash, const std::stop_token& stop = {});
} // namespace orvane::ModelStorage
