#include "Platform/Network/CurlClient.h"

#include "Platform/Network/PartialFile.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <curl/curl.h>
#include <mutex>
#include <stdexcept>
#include <strings.h>

namespace orvane::platform {

namespace {

using Kind = HTTPError::Kind;

/// The library frees each of its handles by a function of its own.
template <auto Function>
struct Frees {
    void operator()(auto* handle) const { Function(handle); }
};
using Easy = std::unique_ptr<CURL, Frees<curl_easy_cleanup>>;
using Multi = std::unique_ptr<CURLM, Frees<curl_multi_cleanup>>;
using List = std::unique_ptr<curl_slist, Frees<curl_slist_free_all>>;
using URLHandle = std::unique_ptr<CURLU, Frees<curl_url_cleanup>>;

std::string part(CURLU* url, CURLUPart which) {
    char* text = nullptr;
    if (curl_url_get(url, which, &text, 0) != CURLUE_OK) return {};
    std::string value(text);
    curl_free(text);
    return value;
}

/// The part of a request's address that a message may contain, and whether it may be sent.
struct Destination {
    std::string host;
    bool isPlain = false; ///< http

    explicit Destination(const std::string& text) {
        const URLHandle url(curl_url());
        if (!url || curl_url_set(url.get(), CURLUPART_URL, text.c_str(), 0) != CURLUE_OK)
            throw HTTPError(Kind::invalidURL, "The address is no URL");
        host = part(url.get(), CURLUPART_HOST);
        const std::string scheme = part(url.get(), CURLUPART_SCHEME);
        isPlain = scheme == "http";
        if (scheme != "https" && !(isPlain && isThisMachine()))
            throw HTTPError(Kind::invalidURL,
                            "The address of " + host +
                                " is not secure: only https is allowed, and http to this machine");
    }

  private:
    bool isThisMachine() const {
        if (host == "localhost" || host == "[::1]") return true;
        // Four numbers of which the first is 127: a name such as "127.example.com" does not count.
        return host.starts_with("127.") && std::ranges::count(host, '.') == 3 &&
               std::ranges::all_of(host, [](unsigned char c) { return std::isdigit(c) != 0 || c == '.'; });
    }
};

/// Idle handles, each with the connections that its last requests left open: the next request to the same
/// host needs no new one. A handle serves one request at a time. Any thread.
class Connections {
  public:
    Multi take() {
        {
            const std::lock_guard lock(mutex_);
            if (count_ > 0) return std::move(idle_[--count_]);
        }
        return Multi(curl_multi_init());
    }

    void giveBack(Multi multi) noexcept {
        const std::lock_guard lock(mutex_);
        if (count_ < idle_.size()) idle_[count_++] = std::move(multi);
    }

  private:
    static constexpr std::size_t most_ = 4;
    std::mutex mutex_;
    std::array<Multi, most_> idle_;
    std::size_t count_ = 0; ///< the first ones are idle
};

constexpr int statusOK = 200, statusPart = 206, statusNoSuchPart = 416;

/// One running request.
class Exchange {
  public:
    Exchange(Connections& connections, const HTTPRequest& request, PartialFile* file,
             const HTTPClient::Progress& progress)
        : connections_(connections), request_(request), destination_(request.url), file_(file),
          progress_(progress), easy_(curl_easy_init()), multi_(connections.take()) {
        if (!easy_ || !multi_) throw std::bad_alloc();
        for (const auto& [name, value] : request.headers) addHeader(name + ": " + value);
        // Without this the library first asks the server whether a long body is accepted, and waits.
        addHeader("Expect:");
        if (file != nullptr && file->size() > 0) {
            resumesAt_ = received_ = file->size();
            addHeader("Range: bytes=" + std::to_string(resumesAt_) + "-");
            addHeader("If-Range: " + file->tag()); // another version is sent whole
        }
        set(CURLOPT_URL, request.url.c_str());
        set(CURLOPT_CUSTOMREQUEST, request.method.c_str());
        set(CURLOPT_HTTPHEADER, headers_.get());
        if (request.method == "HEAD") set(CURLOPT_NOBODY, 1L);
        if (!request.body.empty() || request.method == "POST" || request.method == "PUT") {
            set(CURLOPT_POSTFIELDS, request.body.data());
            set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
        }
        set(CURLOPT_PROTOCOLS_STR, destination_.isPlain ? "http" : "https");
        set(CURLOPT_NOPROXY, destination_.isPlain ? "*" : "");
        set(CURLOPT_FOLLOWLOCATION, 0L);
        set(CURLOPT_SSL_VERIFYPEER, 1L);
        set(CURLOPT_SSL_VERIFYHOST, 2L);
        set(CURLOPT_NOSIGNAL, 1L);
        set(CURLOPT_USERAGENT, "OrvaneSync/" ORVANE_VERSION);
        set(CURLOPT_CONNECTTIMEOUT_MS, milliseconds(request.connectTimeoutSeconds));
        set(CURLOPT_TIMEOUT_MS, milliseconds(request.timeoutSeconds));
        if (request.idleTimeoutSeconds > 0) {
            set(CURLOPT_LOW_SPEED_LIMIT, 1L); // bytes per second
            set(CURLOPT_LOW_SPEED_TIME, static_cast<long>(std::ceil(request.idleTimeoutSeconds)));
        }
        set(CURLOPT_WRITEFUNCTION, &receivedBody);
        set(CURLOPT_WRITEDATA, this);
        set(CURLOPT_HEADERFUNCTION, &receivedHeader);
        set(CURLOPT_HEADERDATA, this);
    }

    HTTPResponse run(const std::stop_token& stop) {
        if (stop.stop_requested()) fail(Kind::cancelled);
        curl_multi_add_handle(multi_.get(), easy_.get());
        CURLcode result = CURLE_OK;
        {
            const std::stop_callback wake(stop, [this] { curl_multi_wakeup(multi_.get()); });
            result = perform(stop);
        }
        curl_multi_remove_handle(multi_.get(), easy_.get());
        connections_.giveBack(std::move(multi_));
        if (stop.stop_requested() && result != CURLE_OK) fail(Kind::cancelled);
        if (file_ != nullptr && file_->hasFailed()) file_->throwError("write");
        if (isTooLarge_) fail(Kind::tooLarge);
        if (raised_) std::rethrow_exception(raised_);
        if (result != CURLE_OK) fail(kindOf(result));
        if (!hasBegun_) begin(); // there was no body
        response_.status = static_cast<int>(status());
        return std::move(response_);
    }

  private:
    static long milliseconds(double seconds) {
        constexpr double most = 1.0e9;
        return static_cast<long>(std::clamp(seconds * 1000, 1.0, most));
    }

    template <class Value>
    void set(CURLoption option, Value value) {
        curl_easy_setopt(easy_.get(), option, value);
    }

    void addHeader(const std::string& line) {
        if (line.find_first_of("\r\n") != std::string::npos)
            throw HTTPError(Kind::invalidURL, "A header of the request holds a line end");
        curl_slist* const shorter = headers_.release();
        curl_slist* const longer = curl_slist_append(shorter, line.c_str());
        headers_.reset(longer != nullptr ? longer : shorter);
        if (longer == nullptr) throw std::bad_alloc();
    }

    CURLcode perform(const std::stop_token& stop) {
        constexpr int longestWaitMilliseconds = 1000;
        int running = 1;
        while (running > 0) {
            if (stop.stop_requested()) return CURLE_ABORTED_BY_CALLBACK;
            if (curl_multi_perform(multi_.get(), &running) != CURLM_OK) return CURLE_OUT_OF_MEMORY;
            if (running > 0) curl_multi_poll(multi_.get(), nullptr, 0, longestWaitMilliseconds, nullptr);
        }
        int left = 0;
        const CURLMsg* message = curl_multi_info_read(multi_.get(), &left);
        return message == nullptr ? CURLE_RECV_ERROR : message->data.result;
    }

    long status() const {
        long status = 0;
        curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &status);
        return status;
    }

    static std::size_t receivedHeader(const char* data, std::size_t /*one*/, std::size_t size, void* self) {
        constexpr std::size_t mostHeaders = 1000;
        auto& exchange = *static_cast<Exchange*>(self);
        try {
            const std::string_view line(data, size);
            if (line.starts_with("HTTP/")) exchange.response_.headers.clear(); // those of an interim answer
            const std::size_t colon = line.find(':');
            if (colon == std::string_view::npos || exchange.response_.headers.size() == mostHeaders)
                return size;
            const auto trimmed = [](std::string_view text) {
                const std::size_t first = text.find_first_not_of(" \t\r\n");
                if (first == std::string_view::npos) return std::string();
                return std::string(text.substr(first, text.find_last_not_of(" \t\r\n") + 1 - first));
            };
            exchange.response_.headers.emplace_back(trimmed(line.substr(0, colon)),
                                                    trimmed(line.substr(colon + 1)));
            return size;
        } catch (...) {
            exchange.raised_ = std::current_exception();
            return 0;
        }
    }

    static std::size_t receivedBody(const char* data, std::size_t /*one*/, std::size_t size, void* self) {
        auto& exchange = *static_cast<Exchange*>(self);
        try {
            return exchange.receive(data, size) ? size : (size == 0 ? 1 : 0);
        } catch (...) {
            exchange.raised_ = std::current_exception();
            return 0;
        }
    }

    bool receive(const char* data, std::size_t size) {
        if (!hasBegun_) begin();
        received_ += size;
        isTooLarge_ = received_ > request_.mostBodyBytes;
        if (isTooLarge_) return false;
        if (file_ == nullptr || !isFile_) {
            response_.body.append(data, size);
            return true;
        }
        // First, so that it can refuse a file of this length.
        if (progress_) progress_(received_, total());
        return file_->write(data, size);
    }

    /// The headers are complete.
    void begin() {
        hasBegun_ = true;
        if (file_ == nullptr) return;
        const std::string tag = header("ETag");
        if (status() == statusPart && resumesAt_ > 0) {
            const std::string goesOn = "bytes " + std::to_string(resumesAt_) + "-";
            if (!header("Content-Range").starts_with(goesOn)) {
                file_->beginAgain("");
                throw HTTPError(Kind::unreachable,
                                destination_.host + " sent another part of the file than it was asked for");
            }
            isFile_ = true;
        } else {
            resumesAt_ = received_ = 0;
            isFile_ = status() == statusOK;
            // A weak tag does not guarantee that the bytes are the same.
            if (isFile_) file_->beginAgain(tag.starts_with('"') ? tag : "");
        }
    }

    /// Empty if there is none. This module does not contain the response's own lookup of headers.
    std::string header(const char* name) const {
        const auto found = std::ranges::find_if(
            response_.headers, [&](const auto& one) { return strcasecmp(one.first.c_str(), name) == 0; });
        return found == response_.headers.end() ? "" : found->second;
    }

    std::optional<std::uint64_t> total() const {
        curl_off_t length = -1;
        curl_easy_getinfo(easy_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
        if (length < 0) return std::nullopt;
        return resumesAt_ + static_cast<std::uint64_t>(length);
    }

    static Kind kindOf(CURLcode result) {
        switch (result) {
        case CURLE_OPERATION_TIMEDOUT:
            return Kind::timedOut;
        case CURLE_PEER_FAILED_VERIFICATION:
        case CURLE_SSL_CACERT_BADFILE:
        case CURLE_SSL_ISSUER_ERROR:
            return Kind::insecure;
        case CURLE_URL_MALFORMAT:
            return Kind::invalidURL;
        case CURLE_UNSUPPORTED_PROTOCOL: // an answer without a status line; our own URLs are checked before
        case CURLE_WEIRD_SERVER_REPLY:
            return Kind::notHTTP;
        default:
            return Kind::unreachable;
        }
    }

    [[noreturn]] void fail(Kind kind) const {
        const std::string& host = destination_.host;
        switch (kind) {
        case Kind::timedOut:
            throw HTTPError(kind, host + " did not answer in time");
        case Kind::insecure:
            throw HTTPError(kind, "The certificate of " + host + " is not valid");
        case Kind::invalidURL:
            throw HTTPError(kind, "The address of " + host + " is no URL");
        case Kind::notHTTP:
            throw HTTPError(kind, host + " answered with something else than HTTP");
        case Kind::cancelled:
            throw HTTPError(kind, "The request was cancelled");
        case Kind::tooLarge:
            throw HTTPError(kind, "The answer of " + host + " is larger than expected");
        default:
            throw HTTPError(kind, host + " can't be reached, or the connection broke");
        }
    }

    Connections& connections_;
    const HTTPRequest& request_;
    const Destination destination_;
    PartialFile* const file_;
    const HTTPClient::Progress& progress_;
    List headers_;
    Easy easy_;
    Multi multi_;
    HTTPResponse response_;
    std::uint64_t resumesAt_ = 0;
    std::uint64_t received_ = 0; ///< including earlier parts
    bool hasBegun_ = false;
    bool isFile_ = false; ///< the body is written to the file
    bool isTooLarge_ = false;
    std::exception_ptr raised_;
};

class CurlClient final : public HTTPClient {
  public:
    HTTPResponse send(const HTTPRequest& request, std::stop_token stop) override {
        return Exchange(connections_, request, nullptr, {}).run(stop);
    }
    HTTPResponse download(const HTTPRequest& request, const std::string& path, const Progress& progress,
                          std::stop_token stop) override {
        using Rest = PartialFile::Rest;
        PartialFile file(path, request.keepsPart ? Rest::kept : Rest::discarded);
        HTTPResponse response = Exchange(connections_, request, &file, progress).run(stop);
        if (response.status == statusNoSuchPart && file.size() > 0) {
            file.beginAgain("");
            response = Exchange(connections_, request, &file, progress).run(stop);
        }
        if (response.status == statusPart && file.size() > 0) response.status = statusOK;
        if (response.status == statusOK) file.complete();
        return response;
    }

  private:
    Connections connections_;
};

} // namespace

std::shared_ptr<HTTPClient> curlClient() {
    static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (initialised != CURLE_OK)
        throw HTTPError(Kind::unavailable, "The network library can't be initialised");
    return std::make_shared<CurlClient>();
}

} // namespace orvane::platform
