#include "LockitTest.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"

namespace orvane {
namespace {

using Fault = test::LockitServer::Fault;
using SyncEnd = LockitController::SyncEnd;

class LockitSyncTest : public test::LockitTest {
  protected:
    /// Opens clips named "A000C0000.mov" and so on.
    void open(int clips) {
        SyncGroupList groups;
        for (const auto& [name, clip] : test::numberedClips(0, clips))
            groups.append(SyncGroup(test::video(name), {}, MatchStatus::mos()));
        controller_->openStoredWork({{}, {}, groups});
    }
    void addDay(int number, int first, int clips) {
        server_.addProject("p", JSON::Object{{"name", "Film"}});
        server_.addDay("p", JSON::Object{{"uuid", "day" + std::to_string(number)}, {"day", number}},
                       test::numberedClips(first, clips));
    }
    std::string sync(const std::shared_ptr<LockitOAuthService>& account,
                     const std::optional<std::string>& project = "p") {
        outcome(controller_->lockit().syncLockitNetwork(account, project));
        EXPECT_FALSE(controller_->lockit().isSyncingLockit());
        return controller_->lockit().lockitSyncStatus().value_or("");
    }
    /// The scenes of the clips, "-" for an unknown one.
    std::string scenes() const {
        std::string text;
        for (const SyncGroup& group : controller_->work().syncGroups())
            text += (group.hasLockitMetadata() ? group.lockitMetadata->at("scene") : "-") + " ";
        return text;
    }
    std::string undoName() const { return controller_->work().undoState().undoActionName.value_or("-"); }
};

TEST_F(LockitSyncTest, asksDayByDayUntilEveryClipIsKnown) {
    open(3);
    addDay(1, 0, 1);
    addDay(2, 50, 1);
    addDay(3, 1, 2);
    addDay(4, 0, 3);
    EXPECT_EQ(sync(signedInAccount()),
              "✓ Matched 3 of 3 clips with LockitNetwork (shooting day(s): 1, 3; checked 4 days).");
    EXPECT_EQ(scenes(), "0A 1A 2A ");
    EXPECT_EQ(server_.countOf("day4/matchClips"), 0);
    EXPECT_EQ(undoName(), "Sync LockitNetwork");
    sync(signedInAccount());
    controller_->undo();
    EXPECT_EQ(scenes(), "- - - ") << "a sync that changed nothing is no step";
    controller_->redo();
    EXPECT_EQ(scenes(), "0A 1A 2A ");
}

TEST_F(LockitSyncTest, saysWhatCameOfIt) {
    open(2);
    EXPECT_TRUE(sync(makeAccount(false)).starts_with("No metadata service is configured"));
    EXPECT_EQ(
        sync(makeAccount(), std::nullopt),
        "No Lockit project assigned. Assign one to the folder (= production) first, via the “Lockit” pill on "
        "the folder header.");
    EXPECT_EQ(sync(makeAccount()),
              "Not signed in to LockitNetwork. Settings → Metadata → “Sign In with LockitNetwork”.");
    EXPECT_EQ(sync(signedInAccount()), "LockitNetwork server error HTTP 404.");
    server_.addProject("p", JSON::Object{{"name", "Film"}});
    EXPECT_EQ(sync(signedInAccount()),
              "The Lockit project has no shooting days (projectdays). Sync not possible.");
    addDay(1, 5, 1);
    EXPECT_EQ(
        sync(signedInAccount()),
        "No matches across all 1 shooting days.\n• Clips sent: 2, example: A000C0000.mov\nSince not a single "
        "day "
        "matched, it's a filename-format mismatch: Lockit likely knows the clips under different names (e.g. "
        "without extension, or .mxf instead of .mov). Tell me how a clip is named in LockitNetwork and I'll "
        "adjust the matching.");
    EXPECT_EQ(controller_->lockit().lastSyncEnd(), SyncEnd::noMatches);
    const auto after = [&](test::LockitServer::Failure failure) {
        failure.path = "/matchClips";
        failure.times = 1;
        server_.fail(failure);
        return sync(signedInAccount());
    };
    EXPECT_EQ(after({.fault = Fault::status, .status = 503}), "LockitNetwork server error HTTP 503.");
    EXPECT_EQ(after({.fault = Fault::elsewhere}), "LockitNetwork server error HTTP 302.");
    EXPECT_EQ(after({.fault = Fault::cut}),
              "Lockit sync failed: 127.0.0.1 can't be reached, or the connection broke");
    EXPECT_EQ(
        after({.fault = Fault::wrongJSON}),
        "Lockit sync failed: LockitNetwork's answer can't be understood (expected an object). Try again "
        "later; if it happens again, report it to the operator of the service");
    EXPECT_EQ(controller_->lockit().lastSyncEnd(), SyncEnd::failed);
    EXPECT_EQ(undoName(), "-");
}

TEST_F(LockitSyncTest, keepsTheDaysBeforeAFailure) {
    open(3);
    for (int day = 0; day < 3; ++day) addDay(day, day, 1);
    server_.fail({"/matchClips", Fault::status, 401, "", 2, 1});
    const auto account = signedInAccount();
    EXPECT_EQ(sync(account), "Not authorized (401). Please sign in again in Settings → Metadata.");
    EXPECT_EQ(scenes(), "0A 1A - ");
    EXPECT_FALSE(account->state().isSignedIn || account->state().accountEmail);
    EXPECT_TRUE(credentials_->items.empty());
    EXPECT_EQ(undoName(), "Sync LockitNetwork");

    server_.fail({"/matchClips", Fault::never, 0, "", 0, 1});
    const auto syncing = controller_->lockit().syncLockitNetwork(signedInAccount(), "p");
    ASSERT_TRUE(mainThread_->waitUntil([&] { return server_.countOf("/matchClips") == 4; }));
    syncing.requestStop();
    EXPECT_EQ(outcome(syncing), "stopped");
    EXPECT_EQ(controller_->lockit().lockitSyncStatus(), "Lockit sync failed: cancelled");
    controller_->undo();
    EXPECT_EQ(scenes(), "- - - ");
}

/// Edits that are made between two days are kept, also when the sync is undone, and undoing an edit restores
/// nothing of the sync.
TEST_F(LockitSyncTest, isOneStepOnTopOfTheEditsMadeMeanwhile) {
    open(3);
    for (int day = 0; day < 3; ++day) addDay(day, day, 1);
    const auto approve = [&](int clip) {
        controller_->withUndo(undoSteps::toggleApproved, [&] {
            controller_->clips().toggleApproved(controller_->work().syncGroups()[clip].id);
        });
    };
    const auto state = [&] {
        std::string text = scenes() + "|";
        for (const SyncGroup& group : controller_->work().syncGroups())
            text += group.isApproved ? " x" : " .";
        return text;
    };
    approve(2);
    int seen = -1;
    const auto editing = controller_->onChange([&](ImportField field) {
        const auto& lockit = controller_->lockit();
        if (field != ImportField::lockit || !lockit.isSyncingLockit() || lockit.progress().days == 0 ||
            lockit.progress().day == seen)
            return;
        seen = lockit.progress().day;
        if (seen == 1) approve(0); // its step contains the metadata of the first day
        if (seen == 2) {
            controller_->undo();
            controller_->undo(); // to the state before the sync and the edits
            controller_->redo();
            approve(1);
        }
    });
    EXPECT_TRUE(sync(signedInAccount()).starts_with("✓ Matched 3 of 3"));
    EXPECT_EQ(state(), "0A 1A 2A | . x x");
    approve(0);
    const char* const back[] = {"0A 1A 2A | . x x", "- - - | . x x", "- - - | . . x", "- - - | . . ."};
    for (const char* const expected : back) {
        controller_->undo();
        EXPECT_EQ(state(), expected);
    }
    for (int i = 0; i < 4; ++i) controller_->redo();
    EXPECT_EQ(state(), "0A 1A 2A | x x x");
}

TEST_F(LockitSyncTest, endsWithTheWorkThatItIsFor) {
    open(2);
    addDay(1, 0, 2);
    server_.fail({"/matchClips", Fault::never, 0, "", 0, 1});
    const auto syncing = controller_->lockit().syncLockitNetwork(signedInAccount(), "p");
    ASSERT_TRUE(mainThread_->waitUntil([&] { return server_.countOf("/matchClips") == 1; }));
    open(1);
    EXPECT_EQ(outcome(syncing), "stopped");
    EXPECT_EQ(scenes(), "- ");
    EXPECT_EQ(undoName(), "-");
}

TEST_F(LockitSyncTest, loadsProjectsInTheOrderOfTheirNames) {
    const auto projects = std::make_shared<std::vector<LockitProject>>();
    const auto load = [&](const std::shared_ptr<LockitOAuthService>& account) {
        return outcome(LockitController::loadProjects(account, projects));
    };
    EXPECT_TRUE(load(makeAccount(false)).starts_with("No metadata service is configured"));
    EXPECT_EQ(load(makeAccount()), "Not signed in to LockitNetwork.\n\nSettings → Metadata → “Sign In with "
                                   "LockitNetwork”, then pick a project here.");
    server_.addProject("1", JSON::Object{{"name", "film 10"}});
    server_.addProject("2", JSON::Object{{"name", "Film 2"}});
    EXPECT_EQ(load(signedInAccount()), "done");
    ASSERT_EQ(projects->size(), 2U);
    EXPECT_EQ(projects->front().name, "Film 2");
    server_.fail({"/projects", Fault::status, 500, "", 0, 1});
    EXPECT_EQ(load(signedInAccount()), "Could not load projects: LockitNetwork HTTP error: 500");
    server_.fail({"/projects", Fault::status, 401, "", 0, 1});
    const auto account = signedInAccount();
    EXPECT_EQ(load(account), "Sign in to LockitNetwork is required.");
    EXPECT_FALSE(account->state().isSignedIn);
    EXPECT_TRUE(credentials_->items.empty());
}

} // namespace
} // namespace orvane
