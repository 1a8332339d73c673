#include "SessionBenchmarks.h"

#include "Corpus.h"

#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/SessionManager.h"
#include "OrvaneSyncCLI/Serve/RPCServer.h"
#include "OrvaneSyncCore/Services/Persistence/GroupsCoding.h"
#include "Platform/Files.h"
#include "Platform/JSONView.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace orvane::bench {

namespace {

constexpr int clips = 10000;
constexpr int channels = 8;

/// Clips of two recordings each.
SyncGroupList twiceMatched() {
    std::vector<SyncGroup> groups;
    for (const SyncGroup& matched : matchedGroups(clips, channels)) {
        SyncGroup& group = groups.emplace_back(matched);
        MediaAsset second = group.audioMatches.front().audio;
        second.id = UUID::random();
        group.audioMatches.emplace_back(std::move(second), 1, 1);
    }
    return SyncGroupList(std::move(groups));
}

/// An open session that is on the disk.
class OpenSession {
  public:
    explicit OpenSession(const std::string& folder) {
        const auto settings = std::make_shared<platform::MemorySettingsStore>();
        ImportController::Dependencies work;
        work.mainThread = loop_;
        work.settings = settings;
        controller = ImportController::create(std::move(work));
        SessionManager::Dependencies sessions;
        sessions.mainThread = loop_;
        sessions.settings = settings;
        sessions.sessionsDir = folder;
        manager = SessionManager::create(std::move(sessions));
        manager->newSession(*controller);
        controller->openStoredWork({{}, {}, twiceMatched()});
        manager->save(*controller);
        finishWrites();
    }
    ~OpenSession() { manager->deleteSession(id()); }
    OpenSession(const OpenSession&) = delete;
    OpenSession& operator=(const OpenSession&) = delete;

    UUID id() const { return *manager->currentSessionId(); }
    void changeOne() {
        controller->clips().toggleApproved(controller->work().syncGroups()[++at_ % clips].id);
    }
    void finishWrites() { finish(manager->flush()); }
    void finish(const platform::Task& task) {
        task.whenDone([this](const std::exception_ptr&) { loop_->quit(); });
        loop_->run();
    }

    std::shared_ptr<ImportController> controller;
    std::shared_ptr<SessionManager> manager;

  private:
    const std::shared_ptr<platform::RunLoop> loop_ = platform::RunLoop::create();
    std::size_t at_ = 0;
};

/// The interface thread's part of a save; the rest runs later.
void saveAfterOneChange(benchmark::State& state, const std::string& folder) {
    OpenSession session(folder);
    for ([[maybe_unused]] auto _ : state) {
        session.changeOne();
        const auto start = std::chrono::steady_clock::now();
        session.manager->save(*session.controller);
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        session.finishWrites();
    }
}

void encodeAfterOneChange(benchmark::State& state) {
    SyncGroupList groups = twiceMatched();
    GroupsEncoder encoder;
    encoder.encode(groups);
    std::size_t at = 0;
    for ([[maybe_unused]] auto _ : state) {
        groups.update(groups[++at % clips].id,
                      [](SyncGroup& group) { group.isApproved = !group.isApproved; });
        benchmark::DoNotOptimize(encoder.encode(groups));
    }
}

void encodeAll(benchmark::State& state) {
    const SyncGroupList groups = twiceMatched();
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(GroupsEncoder().encode(groups));
}

void openSession(benchmark::State& state, const std::string& folder) {
    OpenSession session(folder);
    const UUID id = session.id();
    for ([[maybe_unused]] auto _ : state) session.finish(session.manager->load(id, session.controller));
}

/// The least that any reader must do: read the file and check that it is JSON.
void parseSession(benchmark::State& state, const std::string& folder) {
    const OpenSession session(folder);
    const std::string path = SessionStore(folder).groupsPath(session.id());
    platform::JSONParser parser;
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(parser.parse(platform::files::readText(path)));
}

/// The whole answer of `serve` to a request for its state, up to the pipe.
void serveState(benchmark::State& state, const std::string& folder) {
    OpenSession session(folder);
    commands::CommandContext context;
    context.controller = session.controller;
    context.sessions = session.manager;
    context.settings = std::make_shared<platform::MemorySettingsStore>();
    std::size_t bytes = 0;
    cli::rpc::Server server(context, commands::allCommands(),
                            [&](const std::string& line) { bytes += line.size(); });
    for ([[maybe_unused]] auto _ : state) server.receive(R"({"jsonrpc":"2.0","id":1,"method":"state"})");
    benchmark::DoNotOptimize(bytes);
}

} // namespace

void registerSessionBenchmarks(const std::string& folder) {
    const std::string sessions = folder + "/sessions";
    const auto add = [](const char* name, auto&& function) {
        return benchmark::RegisterBenchmark(name, function)->Unit(benchmark::kMillisecond);
    };
    add("saveAfterOneChange", [sessions](benchmark::State& state) { saveAfterOneChange(state, sessions); })
        ->UseManualTime()
        ->Iterations(10);
    add("encodeAfterOneChange", encodeAfterOneChange)->UseRealTime();
    add("encodeAll", encodeAll)->UseRealTime();
    add("openSession", [sessions](benchmark::State& state) { openSession(state, sessions); })->UseRealTime();
    add("serveState", [sessions](benchmark::State& state) { serveState(state, sessions); })->UseRealTime();
    add("parseSession", [sessions](benchmark::State& state) {
        parseSession(state, sessions);
    })->UseRealTime();
}

void printSessionRows(const Medians& results) {
    const auto ms = [&](const char* name) { return results.milliseconds.at(name); };
    constexpr double mostToSave = 100, mostToOpen = 500; // for returning the state, too
    const double save = ms("saveAfterOneChange");
    printRow("save 10,000 clips after a change, UI thread", text("%.3f ms", save),
             text("%.1f ms all encoded", ms("encodeAll")), text("%.0f x", ms("encodeAll") / save),
             text("< %.0f ms", mostToSave), save < mostToSave);
    printRow("encode 10,000 clips after a change", text("%.1f ms", ms("encodeAfterOneChange")),
             text("%.1f ms all encoded", ms("encodeAll")),
             text("%.0f x", ms("encodeAll") / ms("encodeAfterOneChange")), text("< %.0f ms", mostToSave),
             ms("encodeAfterOneChange") < mostToSave);
    printRow("open a session of 10,000 clips", text("%.0f ms", ms("openSession")),
             text("%.0f ms bare parsing", ms("parseSession")),
             text("%.1f x", ms("openSession") / ms("parseSession")), text("< %.0f ms", mostToOpen),
             ms("openSession") < mostToOpen);
    printRow("state of 10,000 clips through serve", text("%.0f ms", ms("serveState")),
             text("%.1f ms clips encoded", ms("encodeAll")),
             text("%.1f x", ms("serveState") / ms("encodeAll")), text("< %.0f ms", mostToOpen),
             ms("serveState") < mostToOpen);
}

} // namespace orvane::bench
