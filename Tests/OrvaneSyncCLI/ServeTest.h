#pragma once

#include "MediaFactory/SmallShoot.h"
#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncCLI/Serve/RPCServer.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "Platform/InterfaceThread.h"
#include "Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orvane::cli::rpc {

/// Calls all methods on a real controller, each with one answer.
class ServeTest : public testing::Test {
  protected:
    ServeTest() {
        test::makeSmallShoot(folder_.path());
        registerStandardDefaults(*settings_);
        ImportController::Dependencies work;
        work.mainThread = loop_;
        work.settings = settings_;
        context_.controller = ImportController::create(std::move(work));
        SessionManager::Dependencies keeping;
        keeping.mainThread = loop_;
        keeping.settings = settings_;
        context_.sessions = SessionManager::create(std::move(keeping));
        context_.sessions->start(context_.controller);
        context_.settings = settings_;
    }

    JSON answer(const std::string& method, const std::string& params) {
        said_.clear();
        bool isServed = false, isWaiting = false;
        platform::runAsInterfaceWork([&] {
            server_.receive(
                R"({"jsonrpc":"2.0","id":1,"method":")" + method + R"(","params":)" + params + "}", [&] {
                    isServed = true;
                    if (isWaiting) loop_->quit();
                });
        });
        isWaiting = true;
        if (!isServed) loop_->run();
        return said_.empty() ? JSON() : JSON::parse(said_.back());
    }
    JSON call(const std::string& method, const std::string& params = "{}") {
        const JSON message = answer(method, params);
        const JSON* result = message.find("result");
        EXPECT_NE(result, nullptr) << method << " " << params << ": " << message.dump();
        return result == nullptr ? JSON() : *result;
    }
    std::string failure(const std::string& method, const std::string& params) {
        const JSON message = answer(method, params);
        const JSON* error = message.find("error");
        return error == nullptr ? "" : error->find("code")->dump() + " " + *error->find("message")->string();
    }

    void scan() {
        call("setFolders", R"({"videoFolder":")" + folder_.path("camera") + R"(","audioFolder":")" +
                               folder_.path("sound") + "\"}");
        call("startScan");
        groupID_ = *call("state").find("syncGroups")->elements()->front().find("id")->string();
    }
    /// Parameters of a call on the first clip.
    std::string onFirst(const std::string& more = "") const {
        return R"({"groupID":")" + groupID_ + "\"" + more + "}";
    }
    JSON first(const std::string& field) {
        const JSON group = call("group", onFirst());
        const JSON* value = group.find(field);
        return value == nullptr ? JSON() : *value;
    }

    test::TemporaryDirectory folder_;
    test::TemporaryDirectory work_;
    test::ScopedEnvironment dataHome_{"XDG_DATA_HOME", work_.path().c_str()};
    std::shared_ptr<platform::RunLoop> loop_ = platform::RunLoop::create();
    std::shared_ptr<platform::MemorySettingsStore> settings_ =
        std::make_shared<platform::MemorySettingsStore>();
    commands::CommandContext context_;
    std::vector<std::string> said_;
    Server server_{context_, commands::allCommands(),
                   [this](const std::string& line) { said_.push_back(line); }};
    std::string groupID_;
};

} // namespace orvane::cli::rpc
