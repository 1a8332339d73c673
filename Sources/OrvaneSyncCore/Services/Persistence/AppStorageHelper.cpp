#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"

#include "Platform/Files.h"
#include "Platform/Folders.h"

#include <filesystem>
#include <system_error>
#include <vector>

namespace orvane::AppStorageHelper {

namespace files = platform::files;

namespace {

std::string made(std::string path) {
    try {
        files::createDirectories(path);
    } catch (const platform::FileError&) {
        // The file operation that follows fails with its own reason.
    }
    return path;
}

std::string below(const std::string& folder, std::string_view name) {
    return made(folder + "/" + std::string(name));
}

} // namespace

std::vector<std::string> keepPrivate() {
    std::vector<std::string> open;
    for (const std::string& home : {files::configHome(), files::dataHome(), files::cacheHome()}) {
        const std::string folder = home + "/" + std::string(appFolderName);
        if (const std::string why = files::makePrivate(folder); !why.empty())
            open.push_back(folder + " is open to other users, and its rights can't be changed: " + why);
    }
    return open;
}

std::string applicationSupportDirectory() { return below(files::dataHome(), appFolderName); }

std::string cachesDirectory() {
    const std::string folder = below(files::cacheHome(), appFolderName);
    // Clearing the caches removes everything in this folder.
    const auto isKept = [&](const std::string& home) {
        std::error_code isMissing;
        return std::filesystem::equivalent(folder, home + "/" + std::string(appFolderName), isMissing);
    };
    return isKept(files::dataHome()) || isKept(files::configHome()) ? below(folder, "Caches") : folder;
}

std::string sessionsDirectory() { return below(applicationSupportDirectory(), "Sessions"); }

std::string presetsDirectory() { return below(applicationSupportDirectory(), "Presets"); }

std::string modelStorageDirectory() { return below(applicationSupportDirectory(), "Models"); }

std::string calibrationDirectory() { return below(applicationSupportDirectory(), "Calibration"); }

std::string credentialFile() {
    return files::dataHome() + "/" + std::string(appFolderName) + "/credentials.json";
}
std::string atmoDirectory() { return below(applicationSupportDirectory(), "Atmo"); }

std::string probeCacheDirectory() { return below(cachesDirectory(), "ProbeCache"); }

std::string stemCacheDirectory() { return below(cachesDirectory(), stemsFolderName); }

std::string waveformCacheDirectory() { return below(cachesDirectory(), "WaveformCache"); }

std::string analysisCacheDirectory() { return below(cachesDirectory(), "AnalysisCache"); }

std::string voiceIsolationCacheDirectory() { return below(cachesDirectory(), voiceIsolationFolderName); }

std::int64_t cacheSizeBytes() {
    std::int64_t total = 0;
    files::walk(
        cachesDirectory(),
        [&total](const std::string& path, files::WalkEntry kind) {
            if (kind != files::WalkEntry::file && kind != files::WalkEntry::linkedFile) return;
            if (const auto attributes = files::attributes(path)) total += attributes->size;
        },
        [](const std::string&) { return true; }, files::Hidden::include);
    return total;
}

std::int64_t clearDiskCaches() {
    const std::int64_t size = cacheSizeBytes();
    const std::string caches = cachesDirectory();
    for (const std::string& name : files::childNames(caches).value_or(std::vector<std::string>())) {
        try {
            files::removeTree(caches + "/" + name);
        } catch (const platform::FileError&) {
            // If one entry cannot be removed, the others are removed all the same.
        }
    }
    return size;
}

} // namespace orvane::AppStorageHelper
