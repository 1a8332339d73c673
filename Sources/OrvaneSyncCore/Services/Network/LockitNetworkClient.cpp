#include "OrvaneSyncCore/Services/Network/LockitNetworkClient.h"

#include "Platform/OnQueue.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace orvane {

LockitFilenames::LockitFilenames(std::vector<std::string> theFilenames) : filenames(std::move(theFilenames)) {
    JSON::Array list;
    list.reserve(filenames.size());
    for (const std::string& name : filenames) list.emplace_back(name);
    body = JSON(std::move(list)).dump();
}

struct LockitNetworkClient::Connection {
    explicit Connection(Dependencies theDependencies)
        : dependencies(std::move(theDependencies)), queue(platform::SerialQueue::create("lockit")),
          decoding(platform::SerialQueue::create("answers")) {}

    const Dependencies dependencies;
    const std::unique_ptr<platform::SerialQueue> queue;
    const std::unique_ptr<platform::SerialQueue> decoding; ///< while the next request runs
};

LockitNetworkClient::LockitNetworkClient(Dependencies dependencies)
    : connection_(std::make_shared<const Connection>(std::move(dependencies))) {}

namespace {

/// The server's answer. Throws LockitError::invalidResponse if it is not HTTP.
platform::HTTPResponse sent(platform::HTTPClient& http, const platform::HTTPRequest& request,
                            const std::stop_token& stop) {
    try {
        return http.send(request, stop);
    } catch (const platform::HTTPError& error) {
        if (error.kind() == platform::HTTPError::Kind::notHTTP) throw LockitError::invalidResponse();
        throw;
    }
}

/// The body of a successful answer; throws LockitError otherwise.
std::string bodyOf(platform::HTTPResponse response) {
    constexpr int unauthorized = 401, firstGood = 200, firstOther = 300;
    if (response.status == unauthorized) throw LockitError::unauthorized();
    if (response.status < firstGood || response.status >= firstOther)
        throw LockitError::httpError(response.status);
    return std::move(response.body);
}

/// Each match is an object in the map of matches, which is inside the object of the answer.
std::size_t mostMatches(std::string_view answer) {
    constexpr std::size_t around = 2;
    std::size_t objects = 0;
    for (std::size_t at = answer.find('{'); at != std::string_view::npos; at = answer.find('{', at + 1))
        ++objects;
    return objects - std::min(objects, around);
}

} // namespace

platform::Task LockitNetworkClient::request(std::shared_ptr<const Connection> connection, std::string path,
                                            Body body, Decode decode, Steps steps) {
    const Dependencies& with = connection->dependencies;
    const auto token = std::make_shared<platform::Secret>();
    const platform::Task providing = with.bearerProvider(token);
    co_await providing;
    co_await steps.maySend;
    platform::HTTPRequest request;
    request.url = with.baseURL + path;
    request.headers = {{"Authorization", "Bearer " + token->reveal()}, {"Accept", "application/json"}};
    request.idleTimeoutSeconds = with.idleTimeoutSeconds;
    request.timeoutSeconds = with.resourceTimeoutSeconds;
    if (body) {
        request.method = "POST";
        request.headers.emplace_back("Content-Type", "application/json");
    }
    auto sending =
        platform::onQueue(*connection->queue, with.mainThread,
                          [http = with.http, request = std::move(request), body = std::move(body),
                           counts = steps.received != nullptr](const std::stop_token& stop) mutable {
                              if (body) request.body = body();
                              platform::HTTPResponse response = sent(*http, request, stop);
                              for (auto& [name, value] : request.headers) platform::Secret::wipe(value);
                              std::string answer = bodyOf(std::move(response));
                              const std::size_t most = counts ? mostMatches(answer) : 0;
                              return std::pair(std::move(answer), most);
                          });
    auto [answer, most] = co_await sending;
    if (steps.received) steps.received(most);
    auto reading = platform::onQueue(
        *connection->decoding, with.mainThread,
        [decode = std::move(decode), answer = std::move(answer)](const std::stop_token& stop) mutable {
            const std::string text = std::exchange(answer, {});
            understand([&] { decode(text, stop); });
        });
    co_await reading;
}

platform::Task LockitNetworkClient::currentUser(std::shared_ptr<LockitUser> user) const {
    return request(connection_, "/user", nullptr,
                   [user = std::move(user)](const std::string& body, const std::stop_token&) {
                       *user = decodedAnswer<LockitUser>(body);
                   });
}

platform::Task LockitNetworkClient::listProjects(std::shared_ptr<std::vector<LockitProject>> projects) const {
    return request(connection_, "/projects", nullptr,
                   [projects = std::move(projects)](const std::string& body, const std::stop_token&) {
                       *projects = decodedList<LockitProject>(body);
                   });
}

platform::Task
LockitNetworkClient::listShootingDays(const std::string& projectID,
                                      std::shared_ptr<std::vector<LockitShootingDay>> days) const {
    return request(connection_, "/projects/" + projectID + "/projectdays", nullptr,
                   [days = std::move(days)](const std::string& body, const std::stop_token&) {
                       *days = decodedList<LockitShootingDay>(body);
                   });
}

platform::Task LockitNetworkClient::matchClips(const std::string& projectID, const std::string& shootingDayID,
                                               const std::shared_ptr<const LockitFilenames>& names,
                                               std::shared_ptr<ClipMatchResponse> response,
                                               Steps steps) const {
    return request(
        connection_, "/projects/" + projectID + "/projectdays/" + shootingDayID + "/matchClips",
        [names] { return names->body; },
        [names, response = std::move(response)](const std::string& body, const std::stop_token& stop) {
            *response = decodedMatches(body, names->filenames.size(), stop);
        },
        std::move(steps));
}

} // namespace orvane
