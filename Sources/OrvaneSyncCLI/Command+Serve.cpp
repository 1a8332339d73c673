#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/LineReader.h"
#include "OrvaneSyncCLI/LineWriter.h"
#include "OrvaneSyncCLI/OperationProgress.h"
#include "OrvaneSyncCLI/PendingMessageLimit.h"
#include "OrvaneSyncCLI/Serve/RPCServer.h"
#include "Platform/Completion.h"
#include "Platform/FileSettingsStore.h"
#include "Platform/Interrupt.h"
#include "Platform/Playback/Player.h"
#include "Platform/Text.h"

#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <semaphore>
#include <thread>

namespace orvane::cli {

namespace {

/// Reads messages off the interface thread and passes them on in order, hardly faster than they are served
/// and answers are read. Ends the loop when all are served.
class MessageReader {
  public:
    MessageReader(std::istream& in, LineWriter& answers, std::shared_ptr<platform::RunLoop> loop,
                  rpc::Server& server, std::function<void()> whenAllServed)
        : answers_(answers), loop_(std::move(loop)), server_(server),
          whenAllServed_(std::move(whenAllServed)), thread_([this, &in] { readAll(in); }) {}
    ~MessageReader() { thread_.join(); }
    MessageReader(const MessageReader&) = delete;
    MessageReader& operator=(const MessageReader&) = delete;

  private:
    void readAll(std::istream& in) {
        LineReader lines(in);
        while (auto line = lines.next()) {
            pending_.acquire(line->text.size());
            // Some messages are answered at once.
            const auto isThereRoom = std::make_shared<std::binary_semaphore>(0);
            answers_.whenWritable([isThereRoom] { isThereRoom->release(); });
            isThereRoom->acquire();
            loop_->post([this, line = std::move(*line)]() mutable { take(std::move(line)); });
        }
        loop_->post([this] { server_.whenIdle(whenAllServed_); });
    }

    void take(LineReader::Line line) {
        const std::size_t bytes = line.text.size();
        if (line.isWhole)
            return server_.receive(std::move(line.text), [this, bytes] { pending_.release(bytes); });
        server_.refuse("the message is longer than " + std::to_string(LineReader::longestLine >> 20U) +
                       " MB");
        pending_.release(bytes);
    }

    LineWriter& answers_;
    std::shared_ptr<platform::RunLoop> loop_;
    rpc::Server& server_;
    const std::function<void()> whenAllServed_;
    PendingMessageLimit pending_;
    std::thread thread_;
};

JSON progressJSON(const SmartAudioProgress& progress) {
    JSON json;
    json.set("phase", progress.phase);
    json.set("current", progress.current);
    json.set("total", progress.total);
    json.set("fraction", progress.fraction);
    return json;
}

commands::CommandContext openWork(Context& context, const Arguments& arguments,
                                  const std::shared_ptr<platform::RunLoop>& loop) {
    ImportController::Dependencies work;
    work.mainThread = loop;
    work.settings = context.settings;
    work.clock = context.clock;
    work.renderedAudio = context.openRenderedAudio(context.settings);
    work.stems = context.openStems();
    if (!arguments.has("--no-cache")) {
        work.probeCache = context.openProbeCache();
        work.waveformCache = context.openWaveformCache();
        work.analyses = context.openAnalysisCache();
    }
    SessionManager::Dependencies keeping;
    keeping.mainThread = loop;
    keeping.settings = context.settings;
    keeping.clock = context.clock;
    commands::CommandContext opened;
    opened.controller = ImportController::create(std::move(work));
    opened.sessions = SessionManager::create(std::move(keeping));
    opened.settings = context.settings;
    opened.openPlayers = [loop, clock = context.clock,
                          isPulled =
                              arguments.has("--virtual-clock")]() -> std::shared_ptr<platform::PlayerSystem> {
        if (isPulled) return platform::PulledPlayerSystem::create(loop);
        return platform::PlayerSystem::create(loop, clock);
    };
    opened.rendersPreviews = false;
    if (auto* file = dynamic_cast<platform::FileSettingsStore*>(context.settings.get())) file->followOthers();
    opened.sessions->start(opened.controller);
    return opened;
}

std::string notSaved(const std::string& failure) { return "the session could not be saved: " + failure; }

void serve(Context& context, const Arguments& arguments) {
    if (!arguments.positionals().empty()) throw UsageError("serve must be called without a file");
    const auto loop = platform::RunLoop::create();
    commands::CommandContext work = openWork(context, arguments, loop);
    // The interface thread never waits for the reader of the answers: it would not notice a request to end.
    LineWriter answers(context.out);
    rpc::Server server(work, commands::allCommands(), [&](const std::string& line) { answers.write(line); });
    server.whenWritable([&answers, loop] {
        if (!answers.isFull()) return platform::Task::ended();
        auto writable = std::make_shared<platform::Completion>(loop);
        const platform::Task task = writable->task();
        // Moved as a whole, so that it is destroyed on the interface thread.
        answers.whenWritable([loop, writable = std::move(writable)]() mutable {
            loop->post([writable = std::move(writable)] { writable->end(); });
        });
        return task;
    });
    // Called on the thread where the sign-in waits.
    work.showPage = [loop, &server](const std::string& url) {
        loop->post([&server, url] { server.notify("openURL", JSON::Object{{"url", url}}); });
        return true;
    };
    const auto progressing = work.controller->onChange([&](ImportField field) {
        if (!server.isWaitedFor()) return; // an analysis in the background
        if (answers.isFull()) return;      // they are not being read
        if (const auto progress = operationProgress(*work.controller, field))
            server.notify("progress", progressJSON(*progress));
    });
    const auto keeping = work.sessions->onChange([&](SessionField field) {
        if (field == SessionField::problem && work.sessions->problem())
            context.warn(*work.sessions->problem());
    });
    if (work.sessions->problem()) context.warn(*work.sessions->problem());
    // Called on a thread of its own, at the very end of this function at the latest.
    const auto save = [loop, weak = std::weak_ptr(work.sessions),
                       weakWork = std::weak_ptr(work.controller)](const platform::EndProcess& end) {
        loop->post([weak, weakWork, end] {
            const auto sessions = weak.lock();
            if (!sessions) return end("");
            // An analysis would change clip after clip, each of them to be saved.
            if (const auto controller = weakWork.lock()) controller->work().running.requestStop();
            sessions->flush().whenDone([weak, end](const std::exception_ptr&) {
                const auto saved = weak.lock();
                const auto failure = saved ? saved->lastSaveError() : std::nullopt;
                end(failure ? "error: " + platform::text::printable(notSaved(*failure)) + "\n" : "");
            });
        });
    };
    platform::beforeTermination(save);
    {
        const MessageReader reader(context.in, answers, loop, server, [&] {
            work.sessions->flush().whenDone(
                [&](const std::exception_ptr&) { answers.whenWritten([loop] { loop->quit(); }); });
        });
        loop->run();
    }
    platform::beforeTermination(nullptr);
    if (const auto& failure = work.sessions->lastSaveError()) throw CommandError(notSaved(*failure));
}

} // namespace

const Command& serveCommand() {
    static const Command command{
        "serve",
        "[options]",
        "Answer JSON-RPC 2.0 requests, one a line, on standard input and output.",
        "orvanesync serve",
        {{"--no-cache", "", "read every file again; neither use nor keep earlier results"},
         {"--virtual-clock", "", "the players are paused until the method advanceClock moves their time"}},
        serve,
        "\nA request: {\"jsonrpc\": \"2.0\", \"id\": 1, \"method\": \"state\"}\n"
        "What the methods answer, and a program that uses them: docs/automation.md\n"};
    return command;
}

} // namespace orvane::cli
