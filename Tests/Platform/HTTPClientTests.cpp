#include "Platform/HTTPClient.h"

#include "Support/TemporaryDirectory.h"

#include <gtest/gtest.h>
#include <httplib.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <mutex>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace orvane::platform {
namespace {

using Kind = HTTPError::Kind;
constexpr std::size_t largeSize = 3'000'000;

/// A server on the loopback interface for one test.
template <class Server>
class Serving {
  public:
    template <class... Arguments>
    explicit Serving(Arguments&&... arguments) : server_(std::forward<Arguments>(arguments)...) {
        server_.Post("/echo", [](const httplib::Request& request, httplib::Response& response) {
            response.set_header("X-Seen", request.get_header_value("X-Sent"));
            response.set_content(request.method + " " + request.body, "text/plain");
        });
        server_.Get("/large", [](const httplib::Request&, httplib::Response& response) {
            response.set_content(std::string(largeSize, 'x'), "application/octet-stream");
        });
        server_.Get("/elsewhere", [](const httplib::Request&, httplib::Response& response) {
            response.set_redirect("http://localhost/other");
        });
        // States a larger size than it sends.
        server_.Get("/cut", [](const httplib::Request&, httplib::Response& response) {
            response.set_content_provider(1000, "text/plain",
                                          [](std::size_t, std::size_t, httplib::DataSink& sink) {
                                              sink.write("begin", 5);
                                              return false;
                                          });
        });
        // Breaks off once, and states the version of the file that it sends a part of.
        server_.Get("/resumed", [this](const httplib::Request& request, httplib::Response& response) {
            const std::string tag = "\"" + version + "\"";
            // The server library always sends the requested range: it does not support If-Range.
            if (request.get_header_value("If-Range") != tag)
                const_cast<httplib::Request&>(request).ranges.clear();
            ranges.push_back(request.get_header_value("Range"));
            response.set_header("ETag", tag);
            response.set_content_provider(
                largeSize, "text/plain", [this](std::size_t at, std::size_t, httplib::DataSink& sink) {
                    const std::string piece(std::min<std::size_t>(largeSize - at, 100'000), version.front());
                    sink.write(piece.data(), piece.size());
                    return --piecesUntilCut != 0;
                });
        });
        server_.Get("/never", [this](const httplib::Request&, httplib::Response& response) {
            std::unique_lock lock(mutex_);
            isAsked_ = true;
            changed_.notify_all();
            changed_.wait(lock, [this] { return isOver_; });
            response.status = 503;
        });
        port_ = server_.bind_to_any_port("127.0.0.1");
        thread_ = std::thread([this] { server_.listen_after_bind(); });
        while (!server_.is_running()) std::this_thread::yield();
    }
    ~Serving() {
        {
            const std::lock_guard lock(mutex_);
            isOver_ = true;
        }
        changed_.notify_all();
        server_.stop();
        thread_.join();
    }
    std::string url(const std::string& path, const std::string& scheme = "http") const {
        return scheme + "://127.0.0.1:" + std::to_string(port_) + path;
    }
    void waitUntilAsked() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return isAsked_; });
    }

    std::string version = "a";
    std::vector<std::string> ranges;      ///< that were requested
    std::atomic<int> piecesUntilCut = -1; ///< negative: never

  private:
    Server server_;
    int port_ = 0;
    std::thread thread_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool isAsked_ = false;
    bool isOver_ = false;
};

/// Answers each request with a line of another protocol.
class GreetingServer final : public httplib::Server {
  public:
    explicit GreetingServer(std::string greeting) : greeting_(std::move(greeting)) {}

  private:
    bool process_and_close_socket(socket_t connection) override {
        std::array<char, 4096> request{};
        ::recv(connection, request.data(), request.size(), 0);
        ::send(connection, greeting_.data(), greeting_.size(), MSG_NOSIGNAL);
        ::close(connection);
        return true;
    }
    const std::string greeting_;
};

std::optional<Kind> failureOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const HTTPError& error) {
        EXPECT_EQ(std::string(error.what()).find("secret"), std::string::npos) << error.what();
        return error.kind();
    }
    return std::nullopt;
}

class HTTPClientTest : public testing::Test {
  protected:
    std::optional<Kind> failureOfSending(HTTPRequest request) {
        return failureOf([&] { client->send(request); });
    }

    Serving<httplib::Server> server;
    std::shared_ptr<HTTPClient> client = HTTPClient::create();
    test::TemporaryDirectory folder;
};

TEST_F(HTTPClientTest, sendsAndReceives) {
    HTTPRequest request{"POST", server.url("/echo"), {{"X-Sent", "one: two"}}, "grüße"};
    const HTTPResponse response = client->send(request);
    EXPECT_EQ(response.status, 200);
    EXPECT_EQ(response.body, "POST grüße");
    EXPECT_EQ(response.header("x-seen"), "one: two");
    EXPECT_FALSE(response.header("x-other"));
    EXPECT_EQ(client->send({"GET", server.url("/nowhere")}).status, 404);
    const HTTPResponse redirect = client->send({"GET", server.url("/elsewhere")});
    EXPECT_EQ(redirect.status, 302);
    EXPECT_EQ(redirect.header("Location"), "http://localhost/other");
}

TEST_F(HTTPClientTest, reportsWhyThereIsNoAnswer) {
    HTTPRequest slow{"GET", server.url("/never?secret")};
    slow.timeoutSeconds = 0.05;
    HTTPRequest large{"GET", server.url("/large?secret")};
    large.mostBodyBytes = largeSize - 1;
    HTTPRequest forged{"GET", server.url("/echo"), {{"A", "b\r\nC: d"}}};
    EXPECT_EQ(failureOfSending(slow), Kind::timedOut);
    EXPECT_EQ(failureOfSending(large), Kind::tooLarge);
    EXPECT_EQ(failureOfSending({"GET", server.url("/cut?secret")}), Kind::unreachable);
    EXPECT_EQ(failureOfSending({"GET", "http://127.0.0.1:1/?secret"}), Kind::unreachable);
    EXPECT_EQ(failureOfSending(forged), Kind::invalidURL);
    for (const char* greeting : {"hello there\r\n\r\n", "<html>", "HTTP/9.9.9 what\r\n\r\n"}) {
        const Serving<GreetingServer> other(greeting);
        EXPECT_EQ(failureOfSending({"GET", other.url("/?secret")}), Kind::notHTTP) << greeting;
    }
    for (const char* url : {"", "secret", "http://example.com/secret", "http://127.0.0.1.example.com/",
                            "ftp://localhost/", "file:///etc/passwd", "http://127.example.com/"})
        EXPECT_EQ(failureOfSending({"GET", url}), Kind::invalidURL) << url;
}

TEST_F(HTTPClientTest, refusesAnUntrustedCertificate) {
    const std::string key = folder.path("key.pem");
    const std::string certificate = folder.path("certificate.pem");
    const std::string command =
        "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 "
        "-subj /CN=127.0.0.1 -keyout " +
        key + " -out " + certificate + " 2>/dev/null";
    ASSERT_EQ(std::system(command.c_str()), 0);
    const Serving<httplib::SSLServer> secured(certificate.c_str(), key.c_str());
    EXPECT_EQ(failureOfSending({"POST", secured.url("/echo", "https"), {}, "secret"}), Kind::insecure);
}

TEST_F(HTTPClientTest, endsACallWhenItIsStopped) {
    std::stop_source stop;
    std::optional<Kind> failure;
    std::thread caller([&] {
        failure = failureOf([&] { client->send({"GET", server.url("/never")}, stop.get_token()); });
    });
    server.waitUntilAsked();
    stop.request_stop();
    caller.join();
    EXPECT_EQ(failure, Kind::cancelled);
}

TEST_F(HTTPClientTest, aDownloadContinuesWhereItBrokeOff) {
    const std::string path = folder.path("model.onnx");
    HTTPRequest request{"GET", server.url("/resumed")};
    request.keepsPart = true;
    const auto breaksOff = [&] {
        server.piecesUntilCut = 5;
        EXPECT_EQ(failureOf([&] { client->download(request, path); }), Kind::unreachable);
        server.piecesUntilCut = -1;
        EXPECT_FALSE(std::filesystem::exists(path));
    };
    breaksOff();
    std::uint64_t first = 0;
    const auto progress = [&](std::uint64_t received, std::optional<std::uint64_t> total) {
        if (first == 0) first = received;
        EXPECT_EQ(total, largeSize);
    };
    EXPECT_EQ(client->download(request, path, progress).status, 200);
    EXPECT_GT(first, 400'000U);
    EXPECT_TRUE(server.ranges.back().starts_with("bytes=")) << server.ranges.back();
    EXPECT_EQ(folder.read("model.onnx"), std::string(largeSize, 'a'));
    std::filesystem::remove(path);

    breaksOff();
    server.version = "b"; // another file of the same name
    EXPECT_EQ(client->download(request, path).status, 200);
    EXPECT_EQ(folder.read("model.onnx"), std::string(largeSize, 'b'));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST_F(HTTPClientTest, downloadsAWholeFileOrNone) {
    const auto filesInFolder = [&] {
        return std::distance(std::filesystem::directory_iterator(folder.path()), {});
    };
    const std::string path = folder.path("model.onnx");
    HTTPRequest large{"GET", server.url("/large")};
    large.mostBodyBytes = largeSize - 1;
    EXPECT_EQ(failureOf([&] { client->download(large, path); }), Kind::tooLarge);
    EXPECT_EQ(failureOf([&] { client->download({"GET", server.url("/cut")}, path); }), Kind::unreachable);
    std::stop_source stop;
    EXPECT_EQ(failureOf([&] {
                  client->download(
                      {"GET", server.url("/large")}, path, [&](auto, auto) { stop.request_stop(); },
                      stop.get_token());
              }),
              Kind::cancelled);
    EXPECT_EQ(failureOf([&] {
                  client->download({"GET", server.url("/large")}, folder.path("none/model"));
              }),
              Kind::file);
    EXPECT_EQ(client->download({"GET", server.url("/nowhere")}, path).status, 404);
    EXPECT_EQ(filesInFolder(), 0);

    std::uint64_t seen = 0;
    std::optional<std::uint64_t> all;
    const auto progress = [&](std::uint64_t received, std::optional<std::uint64_t> total) {
        EXPECT_GT(received, seen);
        seen = received;
        all = total;
    };
    EXPECT_EQ(client->download({"GET", server.url("/large")}, path, progress).status, 200);
    EXPECT_EQ(seen, largeSize);
    EXPECT_EQ(all, largeSize);
    EXPECT_EQ(folder.read("model.onnx"), std::string(largeSize, 'x'));
    EXPECT_EQ(filesInFolder(), 1);
}

} // namespace
} // namespace orvane::platform
