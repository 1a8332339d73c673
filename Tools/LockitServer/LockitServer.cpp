#include "LockitServer/LockitServer.h"

#include "OrvaneSyncCore/Models/UUID.h"
#include "OrvaneSyncCore/Utilities/Base64.h"
#include "Platform/SHA256.h"

#include <httplib.h>

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <optional>
#include <set>
#include <thread>

namespace orvane::test {

using platform::JSON;

namespace {

constexpr int unauthorized = 401, badRequest = 400, notFound = 404, found = 302;

std::string challengeOf(const std::string& verifier) {
    platform::SHA256 hash;
    hash.add(verifier);
    const auto digest = hash.digest();
    std::string text = base64::encoded({reinterpret_cast<const char*>(digest.data()), digest.size()});
    std::ranges::replace(text, '+', '-');
    std::ranges::replace(text, '/', '_');
    std::erase(text, '=');
    return text;
}

} // namespace

class LockitServer::Machine {
  public:
    explicit Machine(Options options) : options_(std::move(options)) {
        server_.set_tcp_nodelay(true);
        server_.set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
            return received(request, response);
        });
        server_.Get("/oauth/authorize",
                    [this](const auto& request, auto& response) { authorize(request, response); });
        server_.Post("/oauth/access-token",
                     [this](const auto& request, auto& response) { giveTokens(request, response); });
        whenAllowed("/user", [this](const auto&, auto& response) {
            respond(response, JSON::Object{{"uuid", "u1"}, {"email", options_.email}, {"login", "script"}});
        });
        whenAllowed("/projects", [this](const auto&, auto& response) {
            JSON all = JSON::array();
            for (const auto& [uuid, project] : projects_) all.append(project.record);
            respond(response, all);
        });
        whenAllowed("/projects/([^/]+)/projectdays", [this](const auto& request, auto& response) {
            const auto project = projects_.find(request.matches[1]);
            if (project == projects_.end()) return void(response.status = notFound);
            JSON all = JSON::array();
            for (const auto& day : project->second.days) all.append(day.record);
            respond(response, all);
        });
        server_.Post("/projects/([^/]+)/projectdays/([^/]+)/matchClips",
                     [this](const auto& request, auto& response) {
                         if (isAllowed(request, response)) matchClips(request, response);
                     });
        port_ = options_.port == 0 ? server_.bind_to_any_port("127.0.0.1")
                                   : (server_.bind_to_port("127.0.0.1", options_.port) ? options_.port : -1);
        if (port_ <= 0) throw std::runtime_error("port " + std::to_string(options_.port) + " is in use");
        thread_ = std::thread([this] { server_.listen_after_bind(); });
        while (!server_.is_running()) std::this_thread::yield();
    }
    ~Machine() {
        {
            const std::lock_guard lock(mutex_);
            isOver_ = true;
        }
        changed_.notify_all();
        server_.stop();
        if (thread_.joinable()) thread_.join();
    }
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    struct Day {
        JSON record;
        /// Each clip as text, in the form of an answer.
        std::map<std::string, std::string> clips;
    };
    struct Project {
        JSON record;
        std::vector<Day> days;
    };

    Options options_;
    int port_ = 0;
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    bool isOver_ = false, isLateAnswered_ = false;
    std::map<std::string, Project> projects_; ///< not changed while requests arrive
    std::set<std::string> tokens_, refreshTokens_;
    std::map<std::string, std::string> challenges_; ///< by code
    std::vector<Failure> failures_;
    std::vector<Seen> seen_;

    std::string newToken(const char* kind) { return std::string(kind) + "-" + UUID::random().text(); }

  private:
    using Handled = httplib::Server::HandlerResponse;
    using Handler = httplib::Server::Handler;

    void whenAllowed(const char* path, const Handler& handler) {
        server_.Get(path, [this, handler](const httplib::Request& request, httplib::Response& response) {
            if (isAllowed(request, response)) handler(request, response);
        });
    }

    static void respond(httplib::Response& response, const JSON& json) {
        response.set_content(json.dump(), "application/json");
    }

    /// Bodies are read only after this; those of requests are recorded where they are checked.
    Handled received(const httplib::Request& request, httplib::Response& response) {
        std::unique_lock lock(mutex_);
        Seen one{request.method, request.target, {}, {}};
        for (const auto& [name, value] : request.headers) one.headers.emplace(name, value);
        seen_.push_back(std::move(one));
        changed_.notify_all();
        const auto failure = std::ranges::find_if(failures_, [&](const Failure& each) {
            return request.path.ends_with(each.path) && each.times > 0;
        });
        if (failure == failures_.end() || failure->after-- > 0) return Handled::Unhandled;
        --failure->times;
        const Failure& now = *failure; // copied: not used after the lock is released
        switch (now.fault) {
        case Fault::status:
        case Fault::body:
            response.status = now.status;
            response.set_content(now.body, "application/json");
            break;
        case Fault::cut:
            response.set_content_provider(1000, "application/json",
                                          [](std::size_t, std::size_t, httplib::DataSink& sink) {
                                              sink.write("[{\"uuid\":", 9);
                                              return false;
                                          });
            break;
        case Fault::never:
            changed_.wait(lock, [this] { return isOver_; });
            response.status = 503;
            break;
        case Fault::late:
            changed_.wait(lock, [this] { return isOver_ || isLateAnswered_; });
            return Handled::Unhandled;
        case Fault::wrongJSON:
            response.set_content("[{\"uuid\": 1}]", "application/json");
            break;
        case Fault::elsewhere:
            response.set_redirect("/elsewhere");
            break;
        }
        return Handled::Handled;
    }

    bool isAllowed(const httplib::Request& request, httplib::Response& response) {
        const std::string header = request.get_header_value("Authorization");
        const std::lock_guard lock(mutex_);
        const bool isKnown = header.starts_with("Bearer ") && tokens_.contains(header.substr(7));
        if (!isKnown) {
            response.status = unauthorized;
            response.set_content("{\"error\":\"invalid_token\"}", "application/json");
        }
        return isKnown;
    }

    void note(const httplib::Request& request) {
        const std::lock_guard lock(mutex_);
        for (auto one = seen_.rbegin(); one != seen_.rend(); ++one)
            if (one->path == request.target && one->body.empty()) {
                one->body = request.body;
                return;
            }
    }

    void authorize(const httplib::Request& request, httplib::Response& response) {
        if (request.get_param_value("client_id") != options_.clientID ||
            request.get_param_value("response_type") != "code" ||
            request.get_param_value("code_challenge_method") != "S256") {
            response.status = badRequest;
            return;
        }
        const std::string code = newToken("code");
        {
            const std::lock_guard lock(mutex_);
            challenges_[code] = request.get_param_value("code_challenge");
        }
        const std::string target = request.get_param_value("redirect_uri") + "?code=" + code +
                                   "&state=" + request.get_param_value("state");
        if (request.get_header_value("Accept").find("text/html") == std::string::npos) {
            response.status = found;
            response.set_header("Location", target);
            return;
        }
        response.set_content("<!doctype html><title>LockitNetwork demo</title><h1>LockitNetwork demo</h1>"
                             "<p>OrvaneSync wants to read your productions.</p><p><a href=\"" +
                                 target + "\">Allow</a></p>",
                             "text/html");
    }

    void giveTokens(const httplib::Request& request, httplib::Response& response) {
        note(request);
        const std::string basic = "Basic " + base64::encoded(options_.clientID + ":" + options_.clientSecret);
        const auto refuse = [&](const char* why) {
            response.status = badRequest;
            respond(response, JSON::Object{{"error", why}});
        };
        if (request.get_header_value("Authorization") != basic) return refuse("invalid_client");
        const std::string grant = request.get_param_value("grant_type");
        const std::lock_guard lock(mutex_);
        if (grant == "authorization_code") {
            const auto code = challenges_.find(request.get_param_value("code"));
            if (code == challenges_.end() ||
                challengeOf(request.get_param_value("code_verifier")) != code->second)
                return refuse("invalid_grant");
            challenges_.erase(code); // each is valid once
        } else if (refreshTokens_.erase(request.get_param_value("refresh_token")) == 0) {
            return refuse("invalid_grant");
        }
        const std::string access = *tokens_.insert(newToken("access")).first;
        const std::string refresh = *refreshTokens_.insert(newToken("refresh")).first;
        respond(response, JSON::Object{{"access_token", access},
                                       {"refresh_token", refresh},
                                       {"token_type", "Bearer"},
                                       {"expires_in", options_.lifetimeSeconds}});
    }

    void matchClips(const httplib::Request& request, httplib::Response& response) {
        const auto project = projects_.find(request.matches[1]);
        const Day* day = nullptr;
        if (project != projects_.end())
            for (const Day& one : project->second.days)
                if (*one.record.find("uuid")->string() == request.matches[2].str()) day = &one;
        if (day == nullptr) return void(response.status = notFound);
        std::string body = "{\"matches\":{";
        const JSON names = JSON::parse(request.body);
        for (const JSON& name : *names.elements()) {
            if (body.back() != '{') body += ',';
            const auto clip = day->clips.find(*name.string());
            body += name.dump() + ":" + (clip == day->clips.end() ? "null" : clip->second);
        }
        response.set_content(body + "},\"unmatched\":[]}", "application/json");
    }

    httplib::Server server_;
    std::thread thread_;
};

LockitServer::LockitServer() : LockitServer(Options()) {}
LockitServer::LockitServer(Options options) : machine_(std::make_unique<Machine>(std::move(options))) {}
LockitServer::~LockitServer() = default;

std::string LockitServer::baseURL() const { return "http://127.0.0.1:" + std::to_string(machine_->port_); }

JSON LockitServer::serviceFile() const {
    return JSON::Object{{"baseURL", baseURL()},
                        {"clientID", machine_->options_.clientID},
                        {"clientSecret", machine_->options_.clientSecret}};
}

void LockitServer::addProject(const std::string& uuid, JSON project) {
    project.set("uuid", uuid);
    machine_->projects_[uuid].record = std::move(project);
}

void LockitServer::addDay(const std::string& project, JSON day, const Clips& clips) {
    Machine::Day& added = machine_->projects_[project].days.emplace_back();
    added.record = std::move(day);
    for (const auto& [name, clip] : clips) added.clips[name] = clip.dump();
}

std::string LockitServer::callbackFor(const std::string& authorizeURL) const {
    httplib::Client client("127.0.0.1", machine_->port_);
    const std::string base = baseURL();
    if (!authorizeURL.starts_with(base)) return {};
    const auto answer = client.Get(authorizeURL.substr(base.size()));
    return answer ? answer->get_header_value("Location") : "";
}

std::string LockitServer::validToken() const {
    const std::lock_guard lock(machine_->mutex_);
    return *machine_->tokens_.insert(machine_->newToken("access")).first;
}

void LockitServer::rejectTokens() {
    const std::lock_guard lock(machine_->mutex_);
    machine_->tokens_.clear();
}

void LockitServer::fail(Failure failure) {
    const std::lock_guard lock(machine_->mutex_);
    machine_->failures_.push_back(std::move(failure));
}

void LockitServer::answerLate() {
    {
        const std::lock_guard lock(machine_->mutex_);
        machine_->isLateAnswered_ = true;
    }
    machine_->changed_.notify_all();
}

std::vector<LockitServer::Seen> LockitServer::seen() const {
    const std::lock_guard lock(machine_->mutex_);
    return machine_->seen_;
}

int LockitServer::countOf(std::string_view pathEnd) const {
    const auto all = seen();
    return static_cast<int>(
        std::ranges::count_if(all, [&](const Seen& one) { return one.path.ends_with(pathEnd); }));
}

void LockitServer::waitUntilAsked(const std::string& pathEnd) const {
    std::unique_lock lock(machine_->mutex_);
    machine_->changed_.wait(lock, [&] {
        return std::ranges::any_of(machine_->seen_,
                                   [&](const Seen& one) { return one.path.ends_with(pathEnd); });
    });
}

LockitServer::Clips numberedClips(int first, int count) {
    LockitServer::Clips clips;
    for (int i = first; i < first + count; ++i) {
        std::array<char, 32> name{};
        std::snprintf(name.data(), name.size(), "A%03dC%04d.mov", i / 1000, i);
        const std::string number = std::to_string(i);
        clips[name.data()] = JSON::Object{
            {"uuid", "clip-" + number},
            {"fileName", name.data()},
            {"scene", JSON::Object{{"number", i},
                                   {"content", "What happens in scene " + number},
                                   {"insideOutside", "INT"},
                                   {"sets", JSON::Array{JSON::Object{{"name", "Bar"}}}}}},
            {"slate", JSON::Object{{"number", i}, {"comment", "wide, from the door"}}},
            {"take", JSON::Object{{"number", i % 9 + 1}, {"comment", "good"}, {"isPickup", false}}},
            {"camera", JSON::Object{{"name", "A"}, {"model", "35"}}},
            {"preformatted", JSON::Object{{"scene", number + "A"},
                                          {"shot", number},
                                          {"take", std::to_string(i % 9 + 1)},
                                          {"tags", JSON::Array{"print"}}}}};
    }
    return clips;
}

} // namespace orvane::test
