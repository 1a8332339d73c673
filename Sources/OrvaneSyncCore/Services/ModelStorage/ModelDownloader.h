#pragma once

#include "Platform/HTTPClient.h"

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>

namespace orvane {

/// Why a model was not downloaded; the description is for people.
class ModelDownloadError : public std::runtime_error {
  public:
    enum class Kind { downloadFailed, invalidResponse, writeFailed, invalidURL, checksumMismatch, cancelled };
    ModelDownloadError(Kind kind, const std::string& description)
        : std::runtime_error(description), kind_(kind) {}
    Kind kind() const { return kind_; }

  private:
    Kind kind_;
};

/// What is downloaded, and as which model.
struct ModelDownload {
    std::string id;
    std::string url;
    std::string expectedSHA256; ///< hexadecimal; empty: nothing is tested
};

/// Brings models into their folder: an archive is unpacked there, anything else stays a file. Nothing is in
/// its place before it is whole and tested; what a download that broke off has left is not fetched twice. Any
/// thread that may wait.
class ModelDownloader {
  public:
    /// Null: that of this installation.
    explicit ModelDownloader(std::shared_ptr<platform::HTTPClient> client = nullptr);

    /// Too little room fails before anything is written, where the server says how much it will send.
    /// `progress` takes the share that is done, on this thread. Redirects are followed, from a secure address
    /// to secure ones alone. Gives the path of the model. Throws ModelDownloadError.
    std::string download(const ModelDownload& wanted, const std::function<void(double share)>& progress,
                         const std::stop_token& stop) const;

  private:
    void fetch(const ModelDownload& wanted, const std::string& to,
               const std::function<void(double)>& progress, const std::stop_token& stop) const;

    std::shared_ptr<platform::HTTPClient> client_;
};

} // namespace orvane
