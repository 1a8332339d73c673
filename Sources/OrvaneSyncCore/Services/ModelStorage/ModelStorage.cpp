#include "OrvaneSyncCore/Services/ModelStorage/ModelStorage.h"

#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "Platform/Files.h"
#include "Platform/SHA256.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

namespace orvane::ModelStorage {

namespace files = platform::files;

namespace {

std::int64_t bytesOf(const std::string& path, const std::stop_token& stop = {}) {
    const auto there = files::attributes(path);
    if (!there) return 0;
    if (!there->isDirectory) return there->size;
    std::int64_t bytes = 0;
    files::walk(
        path,
        [&](const std::string& file, files::WalkEntry kind) {
            platform::throwIfStopped(stop);
            if (kind != files::WalkEntry::file) return;
            if (const auto attributes = files::attributes(file)) bytes += attributes->size;
        },
        [](const std::string&) { return true; }, files::Hidden::include);
    return bytes;
}

} // namespace

std::string modelsDirectory() { return AppStorageHelper::modelStorageDirectory(); }
std::string localPath(std::string_view id) { return modelsDirectory() + "/" + std::string(id) + ".bin"; }
std::string localPackagePath(std::string_view id) {
    return modelsDirectory() + "/" + std::string(id) + ".mlpackage";
}
std::string downloadPath(std::string_view id) { return modelsDirectory() + "/.download-" + std::string(id); }

bool isInstalled(std::string_view id) {
    return files::exists(localPath(id)) || files::exists(localPackagePath(id));
}

std::int64_t sizeOnDisk(std::string_view id) {
    const std::string file = localPath(id);
    return bytesOf(files::exists(file) ? file : localPackagePath(id));
}

void remove(std::string_view id) {
    const std::string download = downloadPath(id);
    for (const std::string& path :
         {localPath(id), localPackagePath(id), download, download + ".part", download + ".part.tag"}) {
        try {
            files::removeTree(path);
        } catch (const platform::FileError&) { // if one cannot be removed, the other is removed all the same
        }
    }
}

std::int64_t totalSizeMB(const std::stop_token& stop) {
    constexpr std::int64_t mebibyte = 1'048'576;
    return bytesOf(modelsDirectory(), stop) / mebibyte;
}

bool verifySHA256(const std::string& path, std::string_view expectedHash, const std::stop_token& stop) {
    try {
        return platform::hexadecimal(platform::sha256OfFile(path, stop)) ==
               platform::text::lowercased(expectedHash);
    } catch (const platform::FileError&) {
        return false;
    }
}

} // namespace orvane::ModelStorage
