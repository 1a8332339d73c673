#pragma once

#include <cstdint>
#include <stop_token>
#include <string>
#include <string_view>

/// The folder of optional models below the application's data folder. Any thread that may wait.
namespace orvane::ModelStorage {

std::string modelsDirectory();
/// The two possible places of a model: a file and a folder.
std::string localPath(std::string_view id);
std::string localPackagePath(std::string_view id);

bool isInstalled(std::string_view id);
std::int64_t sizeOnDisk(std::string_view id); ///< bytes; 0 if it does not exist
/// Removes both, and the rest of an interrupted download. What the system does not let it remove stays.
void remove(std::string_view id);
/// The place of a model during its download.
std::string downloadPath(std::string_view id);
/// The size of everything in the folder, in whole units of 1,048,576 bytes. Throws Stopped.
std::int64_t totalSizeMB(const std::stop_token& stop = {});
/// `expectedHash` has hexadecimal digits in upper or lower case. False if the file cannot be read. Throws
/// Stopped.
bool verifySHA256(const std::string& path, std::string_view expectedHash, const std::stop_token& stop = {});
} // namespace orvane::ModelStorage
