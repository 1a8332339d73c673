#pragma once

#include "Platform/HTTPClient.h"

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>

namespace orvane {

/// Why a model was not downloaded; the description is for the user.
class ModelDownloadError : public std::runtime_error {
  public:
    enum class Kind { downloadFailed, invalidResponse, writeFailed, invalidURL, checksumMismatch, cancelled };
    ModelDownloadError(Kind kind, const std::string& description)
        : std::runtime_error(description), kind_(kind) {}
    Kind kind() const { return kind_; }

  private:
    Kind kind_;
};

/// A model to download.
struct ModelDownload {
    std::string id;
    std::string url;
    std::string expectedSHA256; ///< hexadecimal; empty: not checked
};

/// Downloads models into their folder; an archive is unpacked there, any other file is kept as it is. A model
/// appears in its place only when it is complete and checked. An interrupted download is continued from where
/// it ended. Any thread that may wait.
class ModelDownloader {
  public:
    /// Null: the client of this installation.
    explicit ModelDownloader(std::shared_ptr<platform::HTTPClient> client = nullptr);

    /// If the server states the size, too little disk space is an error before anything is written.
    /// `progress` is called on this thread with the finished share. Redirects are followed, but never from
    /// https to another scheme. Returns the path of the model. Throws ModelDownloadError.
    std::string download(const ModelDownload& wanted, const std::function<void(double share)>& progress,
                         const std::stop_token& stop) const;

  private:
    void fetch(const ModelDownload& wanted, const std::string& to,
               const std::function<void(double)>& progress, const std::stop_token& stop) const;

    std::shared_ptr<platform::HTTPClient> client_;
};

} // namespace orvane
