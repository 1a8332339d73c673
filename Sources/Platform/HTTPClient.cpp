#include "Platform/HTTPClient.h"

#include "Platform/Modules.h"
#include "Platform/Network/NetworkModule.h"
#include "Platform/Text.h"

namespace orvane::platform {

namespace {

class NoClient final : public HTTPClient {
  public:
    HTTPResponse send(const HTTPRequest& /*request*/, std::stop_token /*stop*/) override { fail(); }
    HTTPResponse download(const HTTPRequest& /*request*/, const std::string& /*path*/,
                          const Progress& /*progress*/, std::stop_token /*stop*/) override {
        fail();
    }

  private:
    [[noreturn]] static void fail() {
        throw HTTPError(HTTPError::Kind::unavailable,
                        std::string("This installation has no network module (") + NetworkModule::fileName +
                            " is missing beside the program)");
    }
};

} // namespace

std::optional<std::string> HTTPResponse::header(std::string_view name) const {
    const std::string wanted = text::lowercased(name);
    for (const auto& [key, value] : headers)
        if (text::lowercased(key) == wanted) return value;
    return std::nullopt;
}

std::shared_ptr<HTTPClient> HTTPClient::create() {
    const NetworkModule* module = modules::own<NetworkModule>();
    return module == nullptr ? std::make_shared<NoClient>() : module->httpClient();
}

} // namespace orvane::platform
