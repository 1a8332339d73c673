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
    /// From the request to the last byte of the answer.
    double timeoutSeconds = 60;
    /// The longest time in which nothing comes or goes; 0: as long as the others allow.
    double idleTimeoutSeconds = 0;
    /// A longer answer fails. Of a download, the size of the file.
    std::uint64_t mostBodyBytes = std::uint64_t{64} << 20U;
    /// Of a download that breaks off: what came stays as "<path>.part", and the next one goes on from there
    /// as long as the server says that its file is the same.
    bool keepsPart = false;
};

struct HTTPResponse {
    int status = 0;
    HTTPHeaders headers;
    std::string body; ///< empty after a download

    /// The first header of that name.
    std::optional<std::string> header(std::string_view name) const;
};

/// Why there is no answer. The description is a sentence for people and holds neither headers nor bodies nor
/// what stands behind the path of the URL, in which secrets may lie.
class HTTPError : public std::runtime_error {
  public:
    enum class Kind {
        unavailable, ///< this installation lacks the network module
        invalidURL,  ///< no URL, or one that is not allowed
        unreachable, ///< no such host, refused, or the connection broke
        notHTTP,     ///< something else answered
        insecure,    ///< the other side's certificate is not valid
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

/// Talks HTTP over a connection that is verified. Calls wait for the answer and belong on any thread but the
/// interface thread; several may run at once. A redirect is an answer like any other: it is never followed,
/// so that nothing is sent to where nobody meant to send it. All calls throw HTTPError.
class HTTPClient {
  public:
    virtual ~HTTPClient() = default;

    /// `stop` ends the call at once.
    virtual HTTPResponse send(const HTTPRequest& request, std::stop_token stop = {}) = 0;

    /// Bytes so far, and all of them where the server said how many. What it throws ends the download and
    /// passes through; the first call is before anything is written.
    using Progress = std::function<void(std::uint64_t received, std::optional<std::uint64_t> total)>;
    /// Writes the body of an answer with status 200 to the file, whole or not at all: under a temporary name
    /// in its folder until it is complete. An answer with any other status leaves no file and gives its body;
    /// the rest of a file that was kept in part counts as 200.
    /// `progress` on the calling thread.
    virtual HTTPResponse download(const HTTPRequest& request, const std::string& path,
                                  const Progress& progress = {}, std::stop_token stop = {}) = 0;

    /// The client of this installation; its calls fail with `unavailable` where the module is missing.
    static std::shared_ptr<HTTPClient> create();
};

} // namespace orvane::platform
