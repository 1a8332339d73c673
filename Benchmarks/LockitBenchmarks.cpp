#include "LockitBenchmarks.h"

#include "LockitServer/LockitServer.h"
#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "Platform/InterfaceThread.h"

#include <curl/curl.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace orvane::bench {

namespace {

constexpr int clips = 10000;
constexpr int days = 30;
constexpr const char* project = "p";

/// A production whose clips are spread over all days, so that each day has to be requested.
struct Production {
    test::LockitServer server;
    std::vector<std::string> filenames;

    Production() {
        server.addProject(project, JSON::Object{{"name", "Film"}});
        for (int day = 0; day < days; ++day) {
            const int first = day * clips / days;
            const auto known = test::numberedClips(first, (day + 1) * clips / days - first);
            for (const auto& [name, clip] : known) filenames.push_back(name);
            server.addDay(project, JSON::Object{{"uuid", "day" + std::to_string(day)}, {"day", day}}, known);
        }
    }
};

Production& production() {
    static Production made;
    return made;
}

/// Keeps tokens in memory: the time of the key store is not part of the measurement.
class OneToken final : public platform::CredentialStore {
  public:
    void save(const std::string&, const platform::Secret&) override {}
    Found read(const Accounts& accounts, Asking) override {
        Found found;
        for (const std::string& account : accounts)
            found.values[account] = platform::Secret(account == "lockit.accessToken" ? token_
                                                     : account == "lockit.expiresAt" ? "1e18"
                                                                                     : "x");
        return found;
    }
    void remove(const Accounts&) override {}
    Description describe() override { return {}; }

  private:
    const std::string token_ = production().server.validToken();
};

std::mutex longestMutex;
std::chrono::nanoseconds longestPiece{0}; ///< of the interface thread, during syncs

void sync(benchmark::State& state) {
    Production& made = production();
    platform::watchInterfaceWork({nullptr, [](const char*, std::chrono::nanoseconds used) {
                                      const std::lock_guard lock(longestMutex);
                                      longestPiece = std::max(longestPiece, used);
                                  }});
    SyncGroupList groups;
    for (const std::string& name : made.filenames)
        groups.append(
            SyncGroup(MediaAsset(FileURL{"/media/" + name}, AssetKind::video), {}, MatchStatus::mos()));
    const auto loop = platform::RunLoop::create();
    const auto finish = [&](const platform::Task& task) {
        task.whenDone([&](const std::exception_ptr&) { loop->quit(); });
        loop->run();
    };
    const auto account = LockitOAuthService::create(
        {.mainThread = loop,
         .http = platform::HTTPClient::create(),
         .credentials = std::make_shared<OneToken>(),
         .configuration = ServiceConfiguration::parse(made.server.serviceFile().dump(), "service.json")});
    finish(account->ready());
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        auto controller =
            ImportController::create({.mainThread = loop,
                                      .settings = std::make_shared<platform::MemorySettingsStore>(),
                                      .probeCache = nullptr});
        controller->openStoredWork({{}, {}, groups});
        state.ResumeTiming();
        finish(controller->lockit().syncLockitNetwork(account, project));
        if (!controller->lockit().lockitSyncStatus().value_or("").starts_with("✓ Matched 10000"))
            state.SkipWithError(controller->lockit().lockitSyncStatus().value_or("").c_str());
        state.PauseTiming(); // the end of the work is not part of the sync
        controller.reset();
        state.ResumeTiming();
    }
    platform::watchInterfaceWork({});
}

std::size_t append(char* data, std::size_t one, std::size_t size, void* body) {
    static_cast<std::string*>(body)->append(data, one * size);
    return one * size;
}

/// The same requests one after another, over one connection; the answers are read and discarded.
void requestsAlone(benchmark::State& state) {
    Production& made = production();
    JSON::Array names;
    for (const std::string& name : made.filenames) names.emplace_back(name);
    const std::string body = JSON(std::move(names)).dump();
    CURL* const easy = curl_easy_init();
    curl_slist* headers =
        curl_slist_append(nullptr, ("Authorization: Bearer " + made.server.validToken()).c_str());
    headers = curl_slist_append(headers, "Content-Type: application/json");
    headers = curl_slist_append(headers, "Expect:");
    std::string answer;
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &answer);
    const std::string start = made.server.baseURL() + "/projects/" + project + "/projectdays";
    const auto ask = [&](const std::string& url) {
        answer.clear();
        curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
        if (curl_easy_perform(easy) != CURLE_OK) state.SkipWithError("no answer");
    };
    for ([[maybe_unused]] auto _ : state) {
        curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
        ask(start);
        curl_easy_setopt(easy, CURLOPT_POSTFIELDS, body.c_str());
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE, static_cast<long>(body.size()));
        for (int day = 0; day < days; ++day) ask(start + "/day" + std::to_string(day) + "/matchClips");
        benchmark::DoNotOptimize(answer);
    }
    curl_slist_free_all(headers);
    curl_easy_cleanup(easy);
}

} // namespace

void registerLockitBenchmarks() {
    benchmark::RegisterBenchmark("lockitSync", sync)->Unit(benchmark::kMillisecond)->UseRealTime();
    benchmark::RegisterBenchmark("lockitRequests", requestsAlone)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

void printLockitRows(const Medians& results) {
    constexpr double million = 1e6, mostMilliseconds = 10;
    const auto ms = [&](const char* name) { return results.milliseconds.at(name); };
    printRatio("sync 30 days, 10,000 clips", ms("lockitSync"), ms("lockitRequests"), "bare requests", 2);
    const double longest = static_cast<double>(longestPiece.count()) / million;
    printRow("the same, longest piece of the interface thread", text("%.1f ms", longest), "", "", "<= 10 ms",
             longest <= mostMilliseconds);
}

} // namespace orvane::bench
