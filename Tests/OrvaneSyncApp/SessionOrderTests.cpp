#include "OrvaneSyncApp/SessionManagerTest.h"

#include <exception>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <thread>

namespace orvane {
namespace {

using test::SessionCommandTest;

class SessionOrderTest : public SessionCommandTest {
  protected:
    enum class Session : std::uint8_t { none, edited, other, fresh };
    struct Step {
        const char* command;
        Session session = Session::none; ///< that it names
    };

    /// Why the command failed; empty if it did not, "replaced" if the later one took its place.
    std::shared_ptr<std::string> beginStep(const Step& step) {
        std::map<std::string, std::string> arguments;
        if (step.session != Session::none)
            arguments["sessionId"] = (step.session == Session::edited ? edited_ : other_).text();
        auto outcome = std::make_shared<std::string>("running");
        begin(step.command, std::move(arguments)).whenDone([outcome](const std::exception_ptr& raised) {
            try {
                outcome->clear();
                if (raised) std::rethrow_exception(raised);
            } catch (const platform::Stopped&) {
                *outcome = "replaced";
            } catch (const std::exception& error) {
                *outcome = error.what();
            }
        });
        return outcome;
    }
    void edit(std::size_t clip) {
        const SyncGroupList& clips = controller_->work().syncGroups();
        if (clips.size() == 2) controller_->clips().toggleApproved(clips[clip].id);
    }
    Session open() const {
        const auto& current = manager_->currentSessionId();
        if (!current) return Session::none;
        return current == edited_ ? Session::edited : current == other_ ? Session::other : Session::fresh;
    }

    UUID edited_, other_;
};

TEST_F(SessionOrderTest, theSecondOfTwoCommandsFindsADefinedState) {
    using enum Session;
    struct Pair {
        Step first, second;
        Session open;
    };
    const Pair pairs[] = {
        {{"newSession"}, {"newSession"}, fresh},
        {{"newSession"}, {"loadSession", other}, other},
        {{"newSession"}, {"deleteSession", edited}, fresh},
        {{"newSession"}, {"reset"}, none},
        {{"loadSession", other}, {"newSession"}, fresh},
        {{"loadSession", other}, {"loadSession", other}, other},
        {{"loadSession", other}, {"deleteSession", edited}, other},
        {{"loadSession", edited}, {"loadSession", other}, other},
        {{"loadSession", edited}, {"loadSession", edited}, edited},
        {{"loadSession", other}, {"loadSession", edited}, edited},
        {{"loadSession", other}, {"reset"}, none},
        {{"deleteSession", edited}, {"newSession"}, fresh},
        {{"deleteSession", edited}, {"loadSession", other}, other},
        {{"deleteSession", edited}, {"deleteSession", edited}, none},
    };
    other_ = newSession();
    bringClips(1);
    flush();
    constexpr int cases = 12; // turns of the loop between the commands, with and without edits to save
    for (const Pair& pair : pairs)
        for (int one = 0; one < cases; ++one) {
            const int turns = one / 2;
            const bool isEdited = one % 2 == 0;
            SCOPED_TRACE(std::string(pair.first.command) + ", " + pair.second.command + ", " +
                         std::to_string(one));
            edited_ = newSession();
            bringClips(2);
            flush();
            if (isEdited) edit(0); // not written yet
            const auto first = beginStep(pair.first);
            for (int turn = 0; turn < turns; ++turn) mainThread_->waitUntil([] { return true; });
            if (isEdited) edit(1);
            const auto second = beginStep(pair.second);
            ASSERT_TRUE(mainThread_->waitUntil([&] { return *first != "running" && *second != "running"; }));
            flush();
            EXPECT_TRUE(first->empty() || *first == "replaced") << *first;
            EXPECT_EQ(*second, "");
            EXPECT_EQ(static_cast<int>(open()), static_cast<int>(pair.open));
            const SyncGroupList& shown = controller_->work().syncGroups();
            EXPECT_EQ(shown.size(), pair.open == edited ? 2U : pair.open == other ? 1U : 0U);
            const SessionStore store(folder_.path());
            const auto deletes = [](const Step& step) {
                return step.command == std::string("deleteSession");
            };
            ASSERT_EQ(store.exists(edited_), !deletes(pair.first) && !deletes(pair.second));
            if (!store.exists(edited_)) continue;
            EXPECT_EQ(onDisk(edited_).groups[0].isApproved, isEdited);
        }
}

TEST_F(SessionOrderTest, aDeletionIsNotUndoneByAnEarlierOneThatWasRefused) {
    namespace fs = std::filesystem;
    edited_ = newSession();
    bringClips(2);
    flush();
    const fs::path place = folder_.path(edited_.text() + ".orvanesync"), aside = folder_.path("aside");
    fs::rename(place, aside);
    folder_.write(edited_.text() + ".orvanesync", ""); // no session can be deleted there
    edit(0);
    manager_->save(*controller_);
    const Step deletion{"deleteSession", Session::edited};
    const auto first = beginStep(deletion);
    manager_->places().createFolder("Reel"); // written once the first deletion was tried
    const auto list = folder_.path("folders.json");
    for (int i = 0; i < 1'000'000 && !fs::exists(list); ++i) std::this_thread::yield();
    ASSERT_TRUE(fs::exists(list));
    fs::remove(place);
    fs::rename(aside, place);
    const auto second = beginStep(deletion);
    std::exception_ptr raised;
    const platform::Task saves = manager_->flush();
    saves.whenDone([&](const std::exception_ptr& error) { raised = error; });
    finish(saves);
    EXPECT_FALSE(raised);
    EXPECT_FALSE(first->empty());
    EXPECT_EQ(*second, "");
    EXPECT_EQ(static_cast<int>(open()), static_cast<int>(Session::none));
    EXPECT_TRUE(SessionStore(folder_.path()).isDeleted(edited_));
}

} // namespace
} // namespace orvane
