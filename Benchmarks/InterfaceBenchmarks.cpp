#include "InterfaceBenchmarks.h"

#include "Corpus.h"
#include "Sound.h"
#include "Table.h"

#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "Platform/Files.h"
#include "Platform/InterfaceThread.h"
#include "Platform/Text.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane::bench {

namespace {

using commands::Call;
using commands::Command;
using commands::CommandContext;
using commands::Parameter;
using platform::JSON;
using std::chrono::nanoseconds;

constexpr int clips = 5000;
constexpr int channels = recordedChannels;
constexpr std::uint32_t soundRate = 48000;
constexpr int mostRounds = 3; ///< while a piece is too long: others use the machine too

/// The longest piece of each name since the last call of `take`.
class Pieces {
  public:
    void add(const char* work, nanoseconds used) {
        const std::lock_guard lock(mutex_);
        nanoseconds& longest = longest_[work];
        longest = std::max(longest, used);
    }
    std::map<std::string, nanoseconds> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(longest_, {});
    }

  private:
    std::mutex mutex_;
    std::map<std::string, nanoseconds> longest_;
};

Pieces& pieces() {
    static Pieces all;
    return all;
}

/// A command that needs what another one leaves behind: a file, a preset, a step to take back.
struct Preparation {
    std::string_view command, first;
};
constexpr Preparation preparations[] = {
    {"applyReview", "writeReview"},
    {"loadProject", "saveProject"},
    {"importShortcuts", "exportShortcuts"},
    {"loadPreset", "savePreset"},
    {"presetInForce", "savePreset"},
    {"renamePreset", "savePreset"},
    {"deletePreset", "savePreset"},
    {"loadShortcutProfile", "saveShortcutProfile"},
    {"deleteShortcutProfile", "saveShortcutProfile"},
    {"renameFolder", "createFolder"},
    {"deleteEmptyFolder", "createFolder"},
    {"folderInfo", "createFolder"},
    {"undo", "toggleApproved"},
    {"redo", "undo"},
    {"startScan", "setFolders"},
    {"clearALEMetadata", "loadALE"},
    {"clearAllALEMetadata", "loadALE"},
};
std::string_view firstOf(std::string_view command) {
    const auto* const found = std::ranges::find(preparations, command, &Preparation::command);
    return found == std::end(preparations) ? std::string_view() : found->first;
}

const Command& commandOf(std::string_view id) {
    const auto& all = commands::allCommands();
    return *std::ranges::find(all, id, [](const Command& command) { return std::string_view(command.id); });
}

struct Files {
    std::string folder; ///< of one session; emptied for each
    std::string media;  ///< 2,000 files to scan
    std::string report; ///< with a line for each of these clips
};

Files makeFiles(const std::string& folder) {
    const MediaCorpus corpus = mediaCorpus(folder);
    Files files{folder + "/interface", corpus.folder, folder + "/interface.csv"};
    std::string csv = "Name,Scene,Take,Comments\n";
    for (const SyncGroup& clip : matchedGroups(clips, 1))
        csv += clip.video.filename + ",12A,3,\"Wide, from the door\"\n";
    platform::files::writeAtomically(files.report, csv);
    return files;
}

/// An open session as in `serve`, without players, pages and a key store.
class Shoot {
  public:
    /// `isOfOneRecording`: that exists and can be analysed; the others of the clips do not.
    Shoot(const Files& files, bool isOfOneRecording) : files_(files), folder_(files.folder) {
        std::filesystem::remove_all(folder_);
        platform::files::createDirectories(folder_);
        const auto settings = std::make_shared<platform::MemorySettingsStore>();
        context.settings = settings;
        context.controller =
            ImportController::create({.mainThread = loop_, .settings = settings, .probeCache = nullptr});
        context.sessions = SessionManager::create(
            {.mainThread = loop_, .settings = settings, .sessionsDir = folder_ + "/sessions"});
        context.showPage = [](const std::string&) { return false; };
        context.sessions->start(context.controller);
        context.sessions->newSession(*context.controller);
        AssetCorpus corpus = assetCorpus(clips / 10, clips / 10, 0);
        StoredWork work{{}, {}, matchedGroups(clips, channels)};
        for (MediaAsset& audio : corpus.audios) work.wildTracks.emplace_back(std::move(audio));
        if (isOfOneRecording) putOneRecordingUnder(work.syncGroups);
        context.controller->openStoredWork(std::move(work));
        finish(context.sessions->flush());
    }
    /// Analyses all clips, of one recording, and then changes all of them in one step.
    void analyse() {
        ImportController& controller = *context.controller;
        finish(controller.smartAudio().runSmartAudioAnalysis(SmartAudioMode::standard, false));
        controller.withUndo(undoSteps::toggleApproved, [&] {
            const SyncGroupList groups = controller.work().syncGroups();
            for (const SyncGroup& group : groups) controller.clips().toggleApproved(group.id);
        });
        finish(context.sessions->flush());
    }
    /// Runs what the command needs first.
    void prepare(const Command& command) {
        const std::string_view first = firstOf(command.id);
        if (first.empty()) return;
        prepare(commandOf(first));
        run(commandOf(first));
    }
    /// Runs it in the loop until it has ended and what it set off is written. What it was refused for; empty
    /// if it was not.
    std::string run(const Command& command) {
        refusal_.clear();
        loop_->post([&, name = std::string(command.id)] {
            platform::nameInterfaceWork(name.c_str());
            begin(command);
        });
        loop_->run();
        finish(context.sessions->flush());
        return refusal_;
    }

    CommandContext context;

  private:
    void putOneRecordingUnder(SyncGroupList& groups) const {
        const std::string sound = folder_ + ".wav"; // kept from one session to the next
        makeRecording(sound, 1, soundRate);
        groups.updateWhere([](const SyncGroup&) { return true; },
                           [&](SyncGroup& group) {
                               MediaAsset heard = group.audioMatches.front().audio;
                               heard.url = FileURL(sound);
                               group.audioMatches.front().audio = std::move(heard);
                           });
    }
    void begin(const Command& command) {
        // The caller writes and releases the answer on a queue, as `serve` does.
        const auto result = answer_ = std::make_shared<JSON>();
        try {
            const JSON arguments = argumentsOf(command);
            Call call(command, &arguments);
            if (command.now) {
                command.now(context, call);
                loop_->quit();
            } else {
                command.whenDone(context, std::move(call), result)
                    .whenDone([this, result](const std::exception_ptr& raised) {
                        keepRefusal(raised);
                        loop_->quit();
                    });
            }
        } catch (const std::exception&) {
            keepRefusal(std::current_exception());
            loop_->quit();
        }
    }
    void keepRefusal(const std::exception_ptr& raised) {
        try {
            if (raised) std::rethrow_exception(raised);
        } catch (const std::exception& refusal) {
            refusal_ = refusal.what();
        }
    }
    void finish(const platform::Task& task) {
        task.whenDone([this](const std::exception_ptr&) { loop_->quit(); });
        loop_->run();
    }

    JSON argumentsOf(const Command& command) const {
        JSON arguments = JSON::Object{};
        for (const Parameter& parameter : command.parameters)
            if (!parameter.isOptional || command.id == "setFolders")
                arguments.set(parameter.name, argument(command, parameter));
        return arguments;
    }
    JSON argument(const Command& command, const Parameter& parameter) const {
        const OpenWork& work = context.controller->work();
        const std::string clip = work.syncGroups().empty() ? "" : work.syncGroups().front().id.text();
        switch (parameter.kind) {
        case Parameter::Kind::id:
            if (parameter.name == "matchID")
                return JSON(work.syncGroups().front().audioMatches.front().id.text());
            if (parameter.name == "sessionId") return JSON(context.sessions->currentSessionId()->text());
            if (parameter.name == "id") return JSON(work.wildTracks().front().id.text());
            return JSON(clip);
        case Parameter::Kind::text:
            if (parameter.name == "key") return JSON(std::string(settings::trimMode.key));
            return JSON(parameter.choices.empty() ? "name" : std::string(parameter.choices.front()));
        case Parameter::Kind::path:
            if (parameter.name == "videoFolder" || parameter.name == "audioFolder") return JSON(files_.media);
            if (command.id == "loadALE") return JSON(files_.report);
            // The file that the command before it has written.
            return JSON(folder_ + "/" +
                        std::string(firstOf(command.id).empty() ? command.id : firstOf(command.id)));
        case Parameter::Kind::number:
        case Parameter::Kind::integer:
            return JSON(std::max(1.0, parameter.lowest.value_or(1)));
        case Parameter::Kind::boolean:
            return JSON(true);
        case Parameter::Kind::any:
            return command.id == "setSetting" ? JSON("video") : JSON("value");
        case Parameter::Kind::texts:
            return JSON::Array{JSON(clip)};
        case Parameter::Kind::paths:
            return JSON::Array{JSON(folder_)};
        }
        return {};
    }

    const Files files_;
    const std::string folder_;
    std::shared_ptr<JSON> answer_;
    std::string refusal_;
    const std::shared_ptr<platform::RunLoop> loop_ = platform::RunLoop::create();
};

using Longest = std::map<std::string, nanoseconds>;

struct Measured {
    Longest pieces; ///< the shortest time of each in all rounds
    std::string refusal;
};

Measured measured(const Files& files, std::size_t command) {
    Measured result;
    Longest& shortest = result.pieces;
    const auto isTooLong = [](const auto& piece) { return piece.second > platform::longestInterfaceWork; };
    for (int round = 0; round < mostRounds; ++round) {
        // Who takes a step back keeps what is analysed.
        const bool isUndo = commands::allCommands().at(command).id == "undo";
        Shoot shoot(files, isUndo);
        if (isUndo)
            shoot.analyse();
        else
            shoot.prepare(commands::allCommands().at(command));
        pieces().take();
        result.refusal = shoot.run(commands::allCommands().at(command));
        for (const auto& [work, used] : pieces().take()) {
            const auto [known, isNew] = shortest.try_emplace(work, used);
            if (!isNew) known->second = std::min(known->second, used);
        }
        if (std::ranges::none_of(shortest, isTooLong)) break;
    }
    return result;
}

} // namespace

void printInterfaceRows(const std::string& folder) {
    // Does not use the user's presets and models.
    for (const char* home : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
        ::setenv(home, (folder + "/interface").c_str(), 1);
    platform::watchInterfaceWork(
        {nullptr, [](const char* work, nanoseconds used) { pieces().add(work, used); }});
    const auto milliseconds = [](nanoseconds time) {
        return std::chrono::duration<double, std::milli>(time).count();
    };
    std::vector<std::pair<nanoseconds, std::string>> tooLong;
    nanoseconds worst{0};
    std::vector<std::string> refused;
    const Files files = makeFiles(folder);
    const std::size_t count = commands::allCommands().size();
    for (std::size_t i = 0; i < count; ++i) {
        const std::string id(commands::allCommands()[i].id);
        const Measured command = measured(files, i);
        if (!command.refusal.empty()) refused.push_back(id + " (" + command.refusal + ")");
        for (const auto& [work, used] : command.pieces) {
            worst = std::max(worst, used);
            if (used > platform::longestInterfaceWork) tooLong.emplace_back(used, id + ": " + work);
        }
    }
    platform::watchInterfaceWork({});
    std::ranges::sort(tooLong, std::greater());
    printRow("interface thread, " + std::to_string(count) + " commands over 5,000 clips",
             text("%.1f ms of a core", milliseconds(worst)), "",
             std::to_string(tooLong.size()) + " pieces longer", "<= 10 ms", tooLong.empty());
    if (!refused.empty())
        std::cout << "  of these, " << refused.size()
                  << " were refused and so measured in part: " << platform::text::joined(refused, "; ")
                  << '\n';
    for (const auto& [used, work] : tooLong)
        printRow("  " + work, text("%.1f ms of a core", milliseconds(used)), "", "", "<= 10 ms", false);
}

} // namespace orvane::bench
