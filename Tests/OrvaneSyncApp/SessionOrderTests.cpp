#include "OrvaneSyncApp/SessionManagerTest.h"

#include <exception>
#include <map>
#include <memory>
#include <string>

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
        {{"loadSession", other}, {"reset"}, none},
        {{"deleteSession", edited}, {"newSession"}, fresh},
        {{"deleteSession", edited}, {"loadSession", other}, other},
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

} // namespace
} // namespace orvane
