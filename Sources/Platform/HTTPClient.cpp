#include "Platform/HTTPClient.h"

#include "Platform/InterfaceThread.h"
#include "Platform/Modules.h"
#include "Platform/Network/NetworkModule.h"
#include "Platform/Text.h"

#include <utility>

namespace orvane::platform {

namespace {

class NoClient final : public HTTPClient {
  public:
    explicit NoClient(std::string problem) : problem_(std::move(problem)) {}
    HTTPResponse send(const HTTPRequest& /*request*/, std::stop_token /*stop*/) override { fail(); }
    HTTPResponse download(const HTTPRequest& /*request*/, const std::string& /*path*/,
                          const Progress& /*progress*/, std::stop_token /*stop*/) override {
        fail();
    }

  private:
    [[noreturn]] void fail() const {
        throw HTTPError(HTTPError::Kind::unavailable,
                        "This installation has no network module (" + problem_ + ")");
    }

    const std::string problem_;
};

/// The module's client, with the check that it is not called on the interface thread: the module does not
/// know that thread.
class CheckedClient final : public HTTPClient {
  public:
    explicit CheckedClient(std::shared_ptr<HTTPClient> client) : client_(std::move(client)) {}
    HTTPResponse send(const HTTPRequest& request, std::stop_token stop) override {
        assertMayBlock("asking a server");
        return client_->send(request, std::move(stop));
    }
    HTTPResponse download(const HTTPRequest& request, const std::string& path, const Progress& progress,
                          std::stop_token stop) override {
        assertMayBlock("a download");
        return client_->download(request, path, progress, std::move(stop));
    }

  private:
    const std::shared_ptr<HTTPClient> client_;
};

} // namespace

std::optional<std::string> HTTPResponse::header(std::string_view name) const {
    const std::string wanted = text::lowercased(name);
    for (const auto& [key, value] : headers)
        if (text::lowercased(key) == wanted) return value;
    return std::nullopt;
}

std::shared_ptr<HTTPClient> HTTPClient::create() {
    const auto& [module, problem] = modules::own<NetworkModule>();
    if (module == nullptr) return std::make_shared<NoClient>(problem);
    return std::make_shared<CheckedClient>(module->httpClient());
}

} // namespace orvane::platform
