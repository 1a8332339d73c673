#include "OrvaneSyncApp/ControllerTest.h"
#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncCore/Services/Matching/ProxyFiles.h"
#include "OrvaneSyncCore/Services/Matching/TakeStarts.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Support/AllocatedWork.h"
#include "Support/Assets.h"

#include <algorithm>
#include <filesystem>
#include <limits>

namespace orvane {
namespace {

using commands::JSON;
using test::AllocatedWork;

class StoppingMidwayTest : public test::ControllerTest {
  protected:
    static constexpr int clips = 3000;
    static constexpr long mostBehindAStop = 110'000; // allocations

    StoppingMidwayTest() {
        context_.controller = controller_;
        context_.settings = settings_;
        context_.sessions = SessionManager::create({.mainThread = mainThread_,
                                                    .settings = settings_,
                                                    .sessionsDir = folder_.path("sessions"),
                                                    .clock = mainThread_->clock()});
        for (int i = 0; i < clips; ++i) {
            const std::string number = std::to_string(1000 + i);
            // One after the other.
            const std::string start = TimecodeUtils::secondsToTC(i * 25, TimecodeFrameRate::fps25);
            groups_.push_back(
                test::clip(test::video("A001C" + number + ".mov", start, 20),
                           test::slated(test::audio("T" + number + ".wav", start, 20), "1", number)));
        }
    }
    /// Opens the same work each time, with nothing derived yet.
    void open() {
        for (SyncGroup& group : groups_) group.id = UUID::random();
        controller_->openStoredWork({{}, {}, SyncGroupList(groups_)});
        mainThread_->runPosted();
    }
    platform::Task begin(const char* id, const JSON& arguments) {
        const commands::Command& row = commands::command(id);
        return row.whenDone(context_, commands::Call(row, &arguments), std::make_shared<JSON>());
    }
    /// Without a limit of time, so that the load of the machine makes no difference.
    void waitFor(const std::function<bool()>& condition) {
        while (!mainThread_->waitUntil(condition)) {
        }
    }
    void finish(const platform::Task& task) {
        waitFor([&] { return task.isDone(); });
        mainThread_->runPosted();
    }
    void waitForQueues() {
        controller_->work().documents->sync([] {});
        mainThread_->runPosted();
    }

    commands::CommandContext context_;
    std::vector<SyncGroup> groups_;
};

/// After a stop, a command may do only what it does between two checks for the stop: some thousand rows at
/// most. An export looks for every file of the document after making it.
TEST_F(StoppingMidwayTest, aLongCommandBeginsNothingMoreWhereverItIsStopped) {
    if (!AllocatedWork::isCounted) GTEST_SKIP() << "a sanitizer has its own allocator";
    const std::string output = folder_.path("output");
    const JSON::Object to{{"output", output}, {"overwrite", true}};
    open();
    finish(begin("writeReview", JSON(JSON::Object{{"output", folder_.path("review.csv")}})));
    const std::pair<const char*, JSON::Object> cases[] = {
        {"exportFCPXML", to}, {"writeReview", to}, {"applyReview", {{"path", folder_.path("review.csv")}}},
        {"state", {}},        {"diagnose", {}},
    };
    for (const auto& [id, arguments] : cases) {
        const JSON given(arguments);
        long whole = std::numeric_limits<long>::max();
        for (int run = 0; run < 3; ++run) { // the last run uses what the earlier ones have stored
            open();
            AllocatedWork::begin(0);
            finish(begin(id, given));
            whole = std::min(whole, AllocatedWork::end());
        }
        std::filesystem::remove(output);
        for (const int fifth : {2, 4}) {
            SCOPED_TRACE(std::string(id) + ", " + std::to_string(fifth) + " fifths");
            open();
            AllocatedWork::begin(whole * fifth / 5);
            const platform::Task task = begin(id, given);
            waitFor([&] { return AllocatedWork::isHeld() || task.isDone(); });
            ASSERT_TRUE(AllocatedWork::isHeld());
            task.requestStop();
            AllocatedWork::release();
            finish(task);
            waitForQueues();
            EXPECT_LT(AllocatedWork::end(), mostBehindAStop);
            EXPECT_FALSE(std::filesystem::exists(output));
        }
    }
}

TEST(StoppingAScan, WhatFollowsTheReadingOfTheFilesLooksAtTheStop) {
    std::vector<MediaAsset> videos, recordings;
    for (int i = 0; i < 1100; ++i) {
        videos.push_back(test::video("A" + std::to_string(i) + ".mov"));
        recordings.push_back(test::audio("T" + std::to_string(i) + ".wav"));
    }
    std::stop_source source;
    source.request_stop();
    EXPECT_THROW(ProxyFiles::takeOut(videos, source.get_token()), platform::Stopped);
    EXPECT_THROW(TakeStarts::share(recordings, source.get_token()), platform::Stopped);
    EXPECT_THROW(TakeStarts::continueAtMidnight(recordings, source.get_token()), platform::Stopped);
}

} // namespace
} // namespace orvane
