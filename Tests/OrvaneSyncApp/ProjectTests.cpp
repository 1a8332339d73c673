#include "OrvaneSyncApp/ControllerTest.h"

#include "MediaFactory/SmallShoot.h"
#include "Platform/Files.h"
#include "Support/Test.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

/// A scanned shoot with one edited clip, and project files beside it.
class ProjectTest : public test::ControllerTest {
  protected:
    ProjectTest() {
        test::makeSmallShoot(folder_.path());
        scan(folder("camera"), folder("sound"));
        controller_->setManualClipName(clip().id, "Hero");
        controller_->adjustAudioOffset(clip().id, 0.5);
        controller_->toggleLocked(clip().id);
    }

    /// Waits for the end; what went wrong, or nothing.
    std::string ended(const platform::Task& task) {
        EXPECT_TRUE(mainThread_->waitUntil([&] { return task.isDone(); }));
        std::string how;
        task.whenDone([&](const std::exception_ptr& raised) {
            try {
                if (raised) std::rethrow_exception(raised);
            } catch (const std::exception& error) {
                how = error.what();
            }
        });
        return how;
    }

    const SyncGroup& clip() const { return *ControllerTest::clip("A001C001"); }

    const FileURL file_{folder_.path("day.orvanesync")};
};

TEST_F(ProjectTest, aNewScanGetsTheEditsBack) {
    controller_->saveProject(file_);
    EXPECT_EQ(controller_->project().currentURL, file_);
    EXPECT_FALSE(controller_->project().hasUnsavedChanges);
    const UUID before = clip().id;
    controller_->togglePickup(before);

    controller_ = make(nullptr);
    EXPECT_EQ(ended(controller_->loadProject(file_)), "");
    EXPECT_EQ(controller_->scanState(), ScanState::done);
    EXPECT_EQ(clip().manualClipName, "Hero");
    EXPECT_EQ(clip().manualAudioOffsetSeconds, 0.5);
    EXPECT_FALSE(clip().isLocked);
    EXPECT_FALSE(clip().isPickup);
    EXPECT_NE(clip().id, before);
    EXPECT_EQ(controller_->project().currentURL, file_);
    EXPECT_FALSE(controller_->project().hasUnsavedChanges);

    // A re-scan drops edits; the project's come with the project alone.
    EXPECT_EQ(ended(controller_->startScan()), "");
    EXPECT_EQ(clip().manualClipName, std::nullopt);
    // Opened while a scan runs, its folders are scanned, and not those of the scan.
    controller_->setAudioFolderURL(std::nullopt);
    const auto scanning = controller_->startScan();
    EXPECT_EQ(ended(controller_->loadProject(file_)), "");
    EXPECT_EQ(clip().manualClipName, "Hero");
    EXPECT_EQ(clip().matchStatus, MatchStatus::matched());
}

TEST_F(ProjectTest, withAFolderGoneTheEditsWaitAndAreKept) {
    controller_->saveProject(file_);
    fs::rename(folder_.path("sound"), folder_.path("away"));
    const std::size_t clipsBefore = controller_->syncGroups().size();
    EXPECT_EQ(ended(controller_->loadProject(file_)), "");
    EXPECT_EQ(controller_->syncGroups().size(), clipsBefore); // as they were
    EXPECT_EQ(controller_->project().currentURL, file_);

    controller_ = make(nullptr);
    EXPECT_EQ(ended(controller_->loadProject(file_)), "");
    EXPECT_TRUE(controller_->syncGroups().empty());
    controller_->saveProject(file_);
    EXPECT_EQ(ProjectService().load(file_).groups.size(), clipsBefore);
    // The card comes back.
    fs::rename(folder_.path("away"), folder_.path("sound"));
    EXPECT_EQ(ended(controller_->startScan()), "");
    EXPECT_EQ(clip().manualClipName, "Hero");
    controller_->saveProject(file_);
    EXPECT_EQ(ProjectService().load(file_).groups.size(), clipsBefore);
}

TEST_F(ProjectTest, whatCannotBeOpenedChangesNothing) {
    controller_->saveProject(file_);
    const std::string bad = folder_.write("bad.orvanesync", "{\"version\": 2}");
    EXPECT_EQ(ended(controller_->loadProject({bad})), "Project version 2 is not supported (current: 1)");
    EXPECT_NE(ended(controller_->loadProject({folder_.path("none")})), "");
    EXPECT_EQ(controller_->project().currentURL, file_);
    EXPECT_EQ(clip().manualClipName, "Hero");
    EXPECT_THROW(controller_->saveProject({folder_.path("no/where")}), platform::FileError);
    EXPECT_EQ(controller_->project().currentURL, file_);
    // No folders at all: open, without a scan.
    auto project = ProjectService().load(file_);
    project.videoFolderPath.reset();
    project.audioFolderPath.reset();
    project.aleFilePath = FileURL{folder_.path("gone.ale")};
    const FileURL bare{folder_.path("bare.orvanesync")};
    ProjectService().save(project, bare);
    EXPECT_EQ(ended(controller_->loadProject(bare)), "");
    EXPECT_EQ(controller_->project().currentURL, bare);
    EXPECT_EQ(controller_->videoFolderURL(), std::nullopt);
    EXPECT_TRUE(controller_->aleImportError());
}

TEST_F(ProjectTest, aResetWhileItScansLeavesNothingOfIt) {
    controller_->saveProject(file_);
    controller_ = make(nullptr);
    const auto loading = controller_->loadProject(file_);
    controller_->reset();
    EXPECT_EQ(ended(loading), "");
    EXPECT_TRUE(controller_->syncGroups().empty());
    EXPECT_EQ(controller_->project().currentURL, std::nullopt);
}

} // namespace
} // namespace orvane
