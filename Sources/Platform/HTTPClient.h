#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane::platform {

/// Names are compared without regard to case.
using HTTPHeaders = std::vector<std::pair<std::string, std::string>>;

struct HTTPRequest {
    std::string method = "GET";
    /// https, or http to this machine (localhost, 127.0.0.0/8, [::1]).
    std::string url;
    HTTPHeaders headers = {};
    std::string body = {};
    double connectTimeoutSeconds = 15;
    /// From the request to the last byte of the response.
    double timeoutSeconds = 60;
    /// The longest time in which no byte is sent or received; 0: no limit beyond the others.
    double idleTimeoutSeconds = 0;
    /// A longer response fails. For a download, the size of the file.
    std::uint64_t mostBodyBytes = std::uint64_t{64} << 20U;
    /// For a download that breaks off: the part received stays as "<path>.part", and the next download
    /// continues from there if the server says that its file is the same.
    bool keepsPart = false;
};

struct HTTPResponse {
    int status = 0;
    HTTPHeaders headers;
    std::string body; ///< empty after a download

    /// The first header of that name.
    std::optional<std::string> header(std::string_view name) const;
};

/// Why there is no response. The description is a sentence for people. It contains neither headers nor bodies
/// nor what follows the path of the URL, as these may hold secrets.
class HTTPError : public std::runtime_error {
  public:
    enum class Kind {
        unavailable, ///< this installation lacks the network module
        invalidURL,  ///< no URL, or one that is not allowed
        unreachable, ///< no such host, refused, or the connection broke
        notHTTP,     ///< the peer does not speak HTTP
        insecure,    ///< the server's certificate is not valid
        timedOut,
        cancelled,
        tooLarge,
        file ///< a download could not be written
    };

    HTTPError(Kind kind, const std::string& description) : std::runtime_error(description), kind_(kind) {}
    Kind kind() const { return kind_; }

  private:
    Kind kind_;
};

/// Sends HTTP requests over a verified connection. Calls wait for the response: any thread but the interface
/// thread; several may run at once. A redirect is a response like any other and is never followed, so that
/// nothing is sent to a server that was not asked for. All calls throw HTTPError.
class HTTPClient {
  public:
    virtual ~HTTPClient() = default;

    /// `stop` ends the call at once.
    virtual HTTPResponse send(const HTTPRequest& request, std::stop_token stop = {}) = 0;

    /// Bytes received so far, and the total if the server stated it. An exception ends the download and
    /// passes through. The first call comes before anything is written.
    using Progress = std::function<void(std::uint64_t received, std::optional<std::uint64_t> total)>;
    /// Writes the body of a response with status 200 to the file, whole or not at all: under a temporary name
    /// in its folder until it is complete. A response with any other status leaves no file and returns its
    /// body. The remaining part of a partial file counts as 200. `progress` is called on the calling thread.
    virtual HTTPResponse download(const HTTPRequest& request, const std::string& path,
                                  const Progress& progress = {}, std::stop_token stop = {}) = 0;

    /// The client of this installation; its calls fail with `unavailable` where the module is missing.
    static std::shared_ptr<HTTPClient> create();
};

} // namespace orvane::platform
