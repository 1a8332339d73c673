#pragma once

#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/SessionManager.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "Platform/Files.h"
#include "Support/Assets.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"
#include "Support/VirtualMainThread.h"

#include <algorithm>
#include <map>
#include <string_view>

namespace orvane::test {

/// A controller with clips and the sessions of the test's own folder, on a thread that the test runs.
class SessionManagerTest : public testing::Test {
  protected:
    SessionManagerTest() { manager_ = makeManager(); }

    std::shared_ptr<SessionManager> makeManager() {
        SessionManager::Dependencies dependencies;
        dependencies.mainThread = mainThread_;
        dependencies.settings = settings_;
        dependencies.sessionsDir = folder_.path();
        dependencies.clock = mainThread_->clock();
        return SessionManager::create(std::move(dependencies));
    }

    std::shared_ptr<ImportController> makeController() {
        ImportController::Dependencies dependencies;
        dependencies.mainThread = mainThread_;
        dependencies.settings = settings_;
        dependencies.clock = mainThread_->clock();
        return ImportController::create(std::move(dependencies));
    }

    static SyncGroupList clips(int count) {
        SyncGroupList groups;
        for (int i = 0; i < count; ++i) {
            const std::string name = std::to_string(i);
            groups.append(clip(video(name + ".mov"), audio(name + ".wav")));
        }
        return groups;
    }

    /// Puts clips into the work as a scan does: as a change that notifies listeners.
    void bringClips(int count, const char* video = "/media/Day 1") {
        controller_->openStoredWork({FileURL{video}, FileURL{"/media/Sound"}, clips(count)});
    }

    UUID newSession() {
        finish(manager_->newSession(*controller_));
        return *manager_->currentSessionId();
    }

    void finish(const platform::Task& task) {
        ASSERT_TRUE(mainThread_->waitUntil([&] { return task.isDone(); }));
    }
    void flush() { finish(manager_->flush()); }

    void approveFirst() { controller_->clips().toggleApproved(controller_->work().syncGroups().front().id); }

    std::string file(const UUID& id, const std::string& name) const {
        return id.text() + ".orvanesync/" + name;
    }
    SessionStore::Groups onDisk(const UUID& id) const { return SessionStore(folder_.path()).readGroups(id); }
    std::set<std::string> names(const UUID& id) const {
        const auto list = platform::files::childNames(folder_.path(id.text() + ".orvanesync"));
        return list ? std::set<std::string>(list->begin(), list->end()) : std::set<std::string>();
    }

    TemporaryDirectory folder_;
    std::shared_ptr<VirtualMainThread> mainThread_ = std::make_shared<VirtualMainThread>();
    std::shared_ptr<platform::MemorySettingsStore> settings_ =
        std::make_shared<platform::MemorySettingsStore>();
    std::shared_ptr<ImportController> controller_ = makeController();
    std::shared_ptr<SessionManager> manager_;
};

/// The sessions through the commands of the windows and of `serve`.
class SessionCommandTest : public SessionManagerTest {
  protected:
    SessionCommandTest() {
        manager_->start(controller_);
        context_.controller = controller_;
        context_.sessions = manager_;
        context_.settings = settings_;
    }

    platform::Task begin(std::string_view id, std::map<std::string, std::string> arguments = {}) {
        const auto row = std::ranges::find(commands::allCommands(), id, &commands::Command::id);
        platform::JSON json = platform::JSON::object();
        for (auto& [name, value] : arguments) json.set(name, std::move(value));
        const commands::Call call(*row, &json);
        if (row->whenDone) return row->whenDone(context_, call, std::make_shared<platform::JSON>());
        row->now(context_, call);
        return platform::Task::ended();
    }
    void run(std::string_view id, std::map<std::string, std::string> arguments = {}) {
        finish(begin(id, std::move(arguments)));
    }

    commands::CommandContext context_;
};

} // namespace orvane::test
