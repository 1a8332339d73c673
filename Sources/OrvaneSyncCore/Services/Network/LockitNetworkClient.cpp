#include "OrvaneSyncCore/Services/Network/LockitNetworkClient.h"

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
        : dependencies(std::move(theDependencies)), queue(platform::SerialQueue::create("lockit")) {}

    const Dependencies dependencies;
    const std::unique_ptr<platform::SerialQueue> queue;
};

LockitNetworkClient::LockitNetworkClient(Dependencies dependencies)
    : connection_(std::make_shared<const Connection>(std::move(dependencies))) {}

namespace {

/// The body of an answer that is one.
std::string bodyOf(platform::HTTPResponse response) {
    constexpr int unauthorized = 401, firstGood = 200, firstOther = 300;
    if (response.status <= 0) throw LockitError::invalidResponse();
    if (response.status == unauthorized) throw LockitError::unauthorized();
    if (response.status < firstGood || response.status >= firstOther)
        throw LockitError::httpError(response.status);
    return std::move(response.body);
}

} // namespace

platform::Task LockitNetworkClient::request(std::shared_ptr<const Connection> connection, std::string path,
                                            Body body, Decode decode) {
    const Dependencies& with = connection->dependencies;
    const auto token = std::make_shared<platform::Secret>();
    const platform::Task providing = with.bearerProvider(token);
    co_await providing;
    platform::HTTPRequest request;
    request.url = with.baseURL + path;
    request.headers = {{"Authorization", "Bearer " + token->reveal()}, {"Accept", "application/json"}};
    request.idleTimeoutSeconds = with.idleTimeoutSeconds;
    request.timeoutSeconds = with.resourceTimeoutSeconds;
    if (body) {
        request.method = "POST";
        request.headers.emplace_back("Content-Type", "application/json");
    }
    auto sending = platform::onQueue(*connection->queue, with.mainThread,
                                     [http = with.http, request = std::move(request), body = std::move(body),
                                      decode = std::move(decode)](const std::stop_token& stop) mutable {
                                         if (body) request.body = body();
                                         platform::HTTPResponse response = http->send(request, stop);
                                         for (auto& [name, value] : request.headers)
                                             platform::Secret::wipe(value);
                                         decode(bodyOf(std::move(response)));
                                     });
    co_await sending;
}

platform::Task LockitNetworkClient::currentUser(std::shared_ptr<LockitUser> user) const {
    return request(connection_, "/user", nullptr, [user = std::move(user)](const std::string& body) {
        *user = decodedAnswer<LockitUser>(body);
    });
}

platform::Task LockitNetworkClient::listProjects(std::shared_ptr<std::vector<LockitProject>> projects) const {
    return request(connection_, "/projects", nullptr,
                   [projects = std::move(projects)](const std::string& body) {
                       *projects = decodedList<LockitProject>(body);
                   });
}

platform::Task
LockitNetworkClient::listShootingDays(const std::string& projectID,
                                      std::shared_ptr<std::vector<LockitShootingDay>> days) const {
    return request(
        connection_, "/projects/" + projectID + "/projectdays", nullptr,
        [days = std::move(days)](const std::string& body) { *days = decodedList<LockitShootingDay>(body); });
}

platform::Task LockitNetworkClient::matchClips(const std::string& projectID, const std::string& shootingDayID,
                                               std::shared_ptr<const LockitFilenames> names,
                                               std::shared_ptr<ClipMatchResponse> response) const {
    return request(
        connection_, "/projects/" + projectID + "/projectdays/" + shootingDayID + "/matchClips",
        [names = std::move(names)] { return names->body; },
        [response = std::move(response)](const std::string& body) {
            *response = decodedAnswer<ClipMatchResponse>(body);
        });
}

} // namespace orvane
