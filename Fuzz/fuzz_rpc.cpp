#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncCLI/Serve/LongIdentifiers.h"
#include "OrvaneSyncCLI/Serve/RPCServer.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Services/Persistence/SessionStore.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using namespace orvane;
using namespace orvane::cli::rpc;

void demand(bool holds) {
    if (!holds) std::abort();
}

/// The folder of all files that calls may leave. With `TMPDIR` in memory the runs are fast.
const std::filesystem::path& folder() {
    static const auto& path = *new std::filesystem::path([] { // removed after the end
        const auto made = std::filesystem::temp_directory_path() / ("fuzz_rpc." + std::to_string(::getpid()));
        std::filesystem::create_directories(made);
        for (const char* home : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
            ::setenv(home, made.c_str(), 1);
        std::atexit([] { std::filesystem::remove_all(folder()); });
        return made;
    }());
    return path;
}

UUID identifier(char digit) {
    return *UUID::fromText("00000000-0000-4000-8000-00000000000" + std::string(1, digit));
}

MediaAsset asset(AssetKind kind, const std::string& name, char digit) {
    MediaAsset made(FileURL{"/media/" + name}, kind);
    made.id = identifier(digit);
    made.frameRate = 25;
    made.durationSeconds = 60;
    made.startTimecodeString = "10:00:00:00";
    if (kind == AssetKind::audio) made.channelCount = 2;
    return made;
}

/// One clip with two recordings and one without; all have identifiers that end in 1 to 9, which the seeds
/// use.
SyncGroupList clips() {
    SyncGroup first(asset(AssetKind::video, "A.mov", '3'),
                    {AudioMatch(asset(AssetKind::audio, "T1.wav", '4'), 0, 60),
                     AudioMatch(asset(AssetKind::audio, "T2.wav", '5'), 0, 60)},
                    MatchStatus::ambiguous(2));
    first.id = identifier('1');
    first.audioMatches[0].id = identifier('6');
    first.audioMatches[1].id = identifier('7');
    first.manualBlockOverrides = {{identifier('8'), 1, 2, 1}};
    SyncGroup second(asset(AssetKind::video, "B.mov", '9'), {}, MatchStatus::unmatched());
    second.id = identifier('2');
    return {first, second};
}

/// No call opens a file that it names; its arguments are checked nevertheless.
std::vector<commands::Command> commandTable() {
    std::vector<commands::Command> table = commands::allCommands();
    for (commands::Command& command : table)
        if (std::ranges::find(command.parameters, commands::Parameter::Kind::path,
                              &commands::Parameter::kind) != command.parameters.end())
            command =
                commands::Command(command.id, command.title, command.help, command.parameters,
                                  [](commands::CommandContext&, const commands::Call&) { return JSON(); });
    return table;
}

/// `orvanesync serve` with the two clips, one message after another.
class Served {
  public:
    Served() {
        registerStandardDefaults(*settings_);
        context_.controller = ImportController::create({loop_, settings_, nullptr});
        context_.sessions = SessionManager::create({loop_, settings_});
        context_.sessions->start(context_.controller);
        context_.settings = settings_;
        context_.controller->openStoredWork({{}, {}, clips()});
    }

    void receive(const std::string& line) {
        const std::string before = state();
        said_.clear();
        server_.receive(line, [this] { loop_->quit(); });
        loop_->run();
        demand(said_.size() <= 1);
        if (said_.empty()) return demand(mayBeSilent(line));
        const JSON answer = LongIdentifiers().parsed(said_.front());
        if (!answer.isArray()) {
            check(answer);
            if (answer.find("error") != nullptr) demand(state() == before);
        } else {
            for (const JSON& one : *answer.elements()) check(one);
        }
    }

    /// The open work has been saved, unchanged.
    void end() {
        context_.sessions->flush().whenDone([this](const std::exception_ptr&) { loop_->quit(); });
        loop_->run();
        const auto session = context_.sessions->currentSessionId();
        if (!session) return;
        demand(!context_.sessions->lastSaveError());
        const auto kept = SessionStore(AppStorageHelper::sessionsDirectory()).readGroups(*session);
        demand(!kept.problem);
        if (!context_.controller->work().syncGroups().empty())
            demand(toJSONArray(kept.groups).dump() ==
                   toJSONArray(context_.controller->work().syncGroups()).dump());
    }

  private:
    std::string state() const {
        const UndoState undo = context_.controller->work().undoState();
        return toJSONArray(context_.controller->work().syncGroups()).dump() +
               undo.undoActionName.value_or("-") + undo.redoActionName.value_or("-");
    }

    static void check(const JSON& answer) {
        demand(answer.find("jsonrpc") != nullptr && answer.find("id") != nullptr);
        const JSON* error = answer.find("error");
        demand((error == nullptr) != (answer.find("result") == nullptr));
        demand(error == nullptr || (error->find("code")->integer() && error->find("message")->string()));
    }

    /// True for a blank line, or notifications alone.
    static bool mayBeSilent(const std::string& line) {
        if (line.find_first_not_of(" \t\r") == std::string::npos) return true;
        const auto isNotification = [](const JSON& message) {
            return message.isObject() && message.find("id") == nullptr;
        };
        const JSON message = LongIdentifiers().parsed(line);
        return message.isArray() ? std::ranges::all_of(*message.elements(), isNotification)
                                 : isNotification(message);
    }

    const std::shared_ptr<platform::RunLoop> loop_ = platform::RunLoop::create();
    const std::shared_ptr<platform::MemorySettingsStore> settings_ =
        std::make_shared<platform::MemorySettingsStore>();
    commands::CommandContext context_;
    std::vector<std::string> said_;
    Server server_{context_, commandTable(), [this](const std::string& line) { said_.push_back(line); }};
};

} // namespace

// Lines of any bytes as JSON-RPC messages: each request is answered once, one that fails changes no clip, and
// the work that is open at the end equals the saved one.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    folder();
    {
        Served served;
        std::string_view rest(reinterpret_cast<const char*>(data), size);
        while (!rest.empty()) {
            const std::size_t end = std::min(rest.find('\n'), rest.size());
            served.receive(std::string(rest.substr(0, end)));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
        served.end();
    }
    for (const auto& entry : std::filesystem::directory_iterator(folder()))
        std::filesystem::remove_all(entry.path());
    return 0;
}
