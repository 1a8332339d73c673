#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "OrvaneSyncCore/Services/Ingest/ProbeCache.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"
#include "Support/VirtualMainThread.h"

namespace orvane::test {

/// A controller on a thread that the test runs, and all its notices.
class ControllerTest : public testing::Test {
  protected:
    ControllerTest() {
        registerStandardDefaults(*settings_);
        controller_ = make();
    }

    std::shared_ptr<ImportController> make(std::shared_ptr<ProbeCache> cache = nullptr,
                                           std::shared_ptr<StemCache> stems = nullptr,
                                           std::shared_ptr<AnalysisCache> analyses = nullptr) {
        ImportController::Dependencies dependencies;
        dependencies.mainThread = mainThread_;
        dependencies.settings = settings_;
        dependencies.probeCache = std::move(cache);
        dependencies.clock = mainThread_->clock();
        dependencies.stems = std::move(stems);
        dependencies.analyses = std::move(analyses);
        return ImportController::create(std::move(dependencies));
    }

    FileURL folder(std::string_view below) const { return {folder_.path(below)}; }

    void scan(std::optional<FileURL> video, std::optional<FileURL> audio) {
        controller_->scan().setVideoFolderURL(std::move(video));
        controller_->scan().setAudioFolderURL(std::move(audio));
        finish(controller_->scan().startScan());
    }

    void finish(const platform::Task& task) {
        ASSERT_TRUE(mainThread_->waitUntil([&] { return task.isDone(); }));
        mainThread_->runPosted();
    }

    const SyncGroup* clip(std::string_view filenamePrefix) const {
        const auto& groups = controller_->work().syncGroups();
        const auto found = std::find_if(groups.begin(), groups.end(), [&](const SyncGroup& group) {
            return group.video.filename.starts_with(filenamePrefix);
        });
        return found == groups.end() ? nullptr : &*found;
    }

    TemporaryDirectory folder_;
    TemporaryDirectory work_;
    ScopedEnvironment dataHome_{"XDG_DATA_HOME", work_.path().c_str()}; ///< not the user's
    std::shared_ptr<VirtualMainThread> mainThread_ = std::make_shared<VirtualMainThread>();
    std::shared_ptr<platform::MemorySettingsStore> settings_ =
        std::make_shared<platform::MemorySettingsStore>();
    std::shared_ptr<ImportController> controller_;
};

} // namespace orvane::test
