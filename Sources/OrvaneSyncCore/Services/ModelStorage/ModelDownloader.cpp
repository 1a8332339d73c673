#include "OrvaneSyncCore/Services/ModelStorage/ModelDownloader.h"

#include "OrvaneSyncCore/Services/ModelStorage/ModelStorage.h"
#include "Platform/Files.h"
#include "Platform/Stop.h"
#include "Platform/ZipArchive.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace orvane {

namespace {

namespace files = platform::files;
using Kind = ModelDownloadError::Kind;

constexpr int statusOK = 200;
constexpr std::array redirects{301, 302, 303, 307, 308};
constexpr int mostRedirects = 5;
constexpr double requestSeconds = 60, wholeSeconds = 3600;
constexpr std::uint64_t largestModel = std::uint64_t{8} << 30U, largestUnpacked = std::uint64_t{16} << 30U;

[[noreturn]] void failWrite(const std::string& why) {
    throw ModelDownloadError(Kind::writeFailed, "Could not save file: " + why);
}

void requireDiskSpace(std::uint64_t bytes) {
    const std::string folder = ModelStorage::modelsDirectory();
    std::error_code unknown;
    const auto space = std::filesystem::space(folder, unknown);
    if (unknown || space.available >= bytes) return;
    constexpr std::uint64_t megabyte = 1'000'000;
    failWrite("there is too little space in " + folder + ": " + std::to_string(bytes / megabyte + 1) +
              " MB are needed and " + std::to_string(space.available / megabyte) + " MB are free");
}

/// The target of a redirect; absent if it must not be followed.
std::optional<std::string> redirected(const std::string& from, const std::optional<std::string>& location) {
    if (!location || location->empty()) return std::nullopt;
    constexpr std::string_view secure = "https://";
    std::string to = *location;
    if (to.starts_with("//")) {
        to.insert(0, from.substr(0, from.find('/')));
    } else if (to.starts_with("/")) {
        const std::size_t host = from.find("//");
        to.insert(0, from.substr(0, from.find('/', host + 2)));
    }
    return from.starts_with(secure) && !to.starts_with(secure) ? std::nullopt : std::optional(to);
}

[[noreturn]] void failFor(const platform::HTTPError& error) {
    using HTTP = platform::HTTPError::Kind;
    if (error.kind() == HTTP::cancelled) throw ModelDownloadError(Kind::cancelled, "Download cancelled");
    if (error.kind() == HTTP::invalidURL) throw ModelDownloadError(Kind::invalidURL, "Invalid download URL");
    if (error.kind() == HTTP::file) failWrite(error.what());
    throw ModelDownloadError(Kind::downloadFailed, std::string("Download failed: ") + error.what());
}

/// The model's folder among the unpacked files. An archive may contain it under another name, beside metadata
/// of the system that made the archive.
std::string packageIn(const std::string& unpacked) {
    auto names = files::childNames(unpacked).value_or(std::vector<std::string>());
    std::erase_if(names, [](const std::string& name) { return name.starts_with("__MACOSX"); });
    return names.size() == 1 && names.front().ends_with(".mlpackage") ? unpacked + "/" + names.front()
                                                                      : unpacked;
}

/// Removes the path when destroyed, or by `now`, which is used for what a killed process has left there.
class Removing {
  public:
    explicit Removing(std::string path) : path_(std::move(path)) {}
    ~Removing() { now(); }
    Removing(const Removing&) = delete;
    Removing& operator=(const Removing&) = delete;

    void now() const {
        try {
            if (files::attributes(path_)) files::removeTree(path_);
        } catch (const platform::FileError&) { // the next download tries again
        }
    }

  private:
    const std::string path_;
};

/// Moves the download to its place. Throws ZipError, FileError and Stopped.
std::string installed(const std::string& download, const std::string& id, const std::stop_token& stop) {
    if (!platform::isZipArchive(download)) {
        const std::string target = ModelStorage::localPath(id);
        files::rename(download, target);
        Removing(ModelStorage::localPackagePath(id)).now();
        return target;
    }
    requireDiskSpace(platform::unpackedBytes(download, largestUnpacked));
    const std::string unpacked = download + ".unpacked", target = ModelStorage::localPackagePath(id);
    const Removing rest(unpacked);
    rest.now();
    platform::unpackZip(download, unpacked, largestUnpacked, stop);
    ModelStorage::remove(id); // also removes the archive
    files::rename(packageIn(unpacked), target);
    return target;
}

} // namespace

ModelDownloader::ModelDownloader(std::shared_ptr<platform::HTTPClient> client)
    : client_(client ? std::move(client) : platform::HTTPClient::create()) {}

void ModelDownloader::fetch(const ModelDownload& wanted, const std::string& to,
                            const std::function<void(double)>& progress, const std::stop_token& stop) const {
    bool isRoomKnown = false;
    const auto received = [&](std::uint64_t bytes, std::optional<std::uint64_t> total) {
        if (!total || *total == 0) return;
        if (!std::exchange(isRoomKnown, true)) requireDiskSpace(*total - std::min(bytes, *total));
        if (progress) progress(static_cast<double>(bytes) / static_cast<double>(*total));
    };
    platform::HTTPRequest request;
    request.url = wanted.url;
    request.timeoutSeconds = wholeSeconds;
    request.idleTimeoutSeconds = requestSeconds;
    request.mostBodyBytes = largestModel;
    request.keepsPart = true;
    for (int hop = 0;; ++hop) {
        const auto answer = client_->download(request, to, received, stop);
        if (answer.status == statusOK) return;
        auto next = std::ranges::find(redirects, answer.status) == redirects.end() || hop == mostRedirects
                        ? std::nullopt
                        : redirected(request.url, answer.header("Location"));
        if (!next)
            throw ModelDownloadError(Kind::invalidResponse,
                                     "Server returned status " + std::to_string(answer.status));
        request.url = *std::move(next);
    }
}

std::string ModelDownloader::download(const ModelDownload& wanted,
                                      const std::function<void(double)>& progress,
                                      const std::stop_token& stop) const {
    const std::string file = ModelStorage::downloadPath(wanted.id);
    try {
        fetch(wanted, file, progress, stop);
        const Removing whatIsLeft(file);
        if (!wanted.expectedSHA256.empty() && !ModelStorage::verifySHA256(file, wanted.expectedSHA256, stop))
            throw ModelDownloadError(Kind::checksumMismatch, "Downloaded file failed integrity check");
        return installed(file, wanted.id, stop);
    } catch (const platform::HTTPError& error) {
        failFor(error);
    } catch (const platform::FileError& error) {
        failWrite(error.what());
    } catch (const platform::ZipError& error) {
        failWrite(error.what());
    } catch (const platform::Stopped&) {
        throw ModelDownloadError(Kind::cancelled, "Download cancelled");
    }
}

} // namespace orvane
