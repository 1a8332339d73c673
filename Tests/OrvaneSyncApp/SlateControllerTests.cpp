#include "ControllerTest.h"

#include "Support/Assets.h"
#include "Support/SlateFakes.h"

namespace orvane::test {
namespace {

/// Two clips whose videos show the same slate; the recorder states scene and take of the second.
class SlateControllerTest : public ControllerTest {
  protected:
    SlateControllerTest() {
        video_->frames = 120;
        video_->texts = {{24, {"Scene 12A", "Take 3"}}};
        ImportController::Dependencies dependencies;
        dependencies.mainThread = mainThread_;
        dependencies.settings = settings_;
        dependencies.clock = mainThread_->clock();
        dependencies.slateDetector = slateDetector(video_);
        controller_ = ImportController::create(std::move(dependencies));
        SyncGroup silent = clip(test::video("A.mov"), audio("T1.wav"));
        SyncGroup known = clip(test::video("B.mov"), slated(audio("T2.wav"), "14", "1"));
        first_ = silent.id;
        second_ = known.id;
        controller_->openStoredWork({{}, {}, SyncGroupList({silent, known})});
    }
    static SyncGroup clip(MediaAsset picture, MediaAsset recording) {
        return test::clip(std::move(picture), std::move(recording));
    }
    const SyncGroup& group() const { return *controller_->work().syncGroups().find(first_); }
    const auto& results() const { return controller_->smartAudio().state().slateResults; }

    UUID first_, second_;
    std::shared_ptr<SlateVideo> video_ = std::make_shared<SlateVideo>();
};

TEST_F(SlateControllerTest, aSearchWritesNothingAndAnAcceptedSlateIsAStep) {
    std::vector<SmartAudioProgress> seen;
    const auto subscription = controller_->onChange([&](ImportField field) {
        if (field == ImportField::slates) seen.push_back(controller_->slates().progress());
    });
    finish(controller_->slates().detectSlates());
    ASSERT_EQ(results().size(), 2U);
    EXPECT_EQ(results().at(first_).ocrScene, "12A");
    EXPECT_FALSE(controller_->work().undoState().canUndo);
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(seen.front().total, 2);
    EXPECT_EQ(seen.back(), SmartAudioProgress{});

    EXPECT_EQ(controller_->slates().proposals().size(), 1U);
    controller_->slates().acceptSlate(second_); // it has another scene: nothing is proposed
    EXPECT_FALSE(controller_->work().undoState().canUndo);
    controller_->slates().acceptSlates();
    EXPECT_EQ(controller_->work().displayNames().at(first_), "12A-3");
    EXPECT_EQ(group().aleMetadata->at("Scene"), "12A");
    EXPECT_TRUE(controller_->slates().proposals().empty());
    EXPECT_EQ(controller_->work().undoState().undoActionName, "Accept Slates");
    controller_->undo();
    EXPECT_EQ(controller_->work().displayNames().at(first_), "A");
    EXPECT_FALSE(group().aleMetadata);
    EXPECT_TRUE(controller_->slates().proposal(first_));
}

TEST_F(SlateControllerTest, aFileThatIsGoneCostsNoResult) {
    finish(controller_->slates().detectSlates());
    const auto before = results();
    const auto frames = std::exchange(video_->frames, 0);
    finish(controller_->slates().detectSlates());
    EXPECT_EQ(results(), before);
    const std::string said = controller_->slates().problem(first_).value_or("");
    EXPECT_NE(said.find("A.mov"), std::string::npos) << said;
    video_->frames = frames;
    controller_->recordings().removeAudioMatch(first_, group().audioMatches.front().id);
    finish(controller_->slates().detectSlate(first_));
    EXPECT_FALSE(controller_->slates().problem(first_));
}

TEST_F(SlateControllerTest, aResultOfOtherFilesIsDropped) {
    const platform::Task overtaken = controller_->slates().detectSlate(first_);
    controller_->recordings().removeAudioMatch(first_, group().audioMatches.front().id);
    finish(overtaken);
    EXPECT_TRUE(results().empty());
    finish(controller_->slates().detectSlate(first_));
    EXPECT_EQ(results().size(), 1U);
    const platform::Task stopped = controller_->slates().detectSlates();
    stopped.requestStop();
    finish(stopped);
    EXPECT_EQ(controller_->slates().progress(), SmartAudioProgress{});
    EXPECT_EQ(results().size(), 1U);
    controller_->reset();
    EXPECT_TRUE(results().empty());
}

TEST_F(SlateControllerTest, resultsComeBackWithTheirClips) {
    finish(controller_->slates().detectSlates());
    const auto before = results();
    SyncGroupList clips = controller_->work().syncGroups();
    controller_->openStoredWork({});
    EXPECT_TRUE(results().empty());
    // As another program would change it.
    clips.update(second_, [](SyncGroup& group) { group.audioMatches.clear(); });
    controller_->openStoredWork({{}, {}, clips});
    ASSERT_EQ(results().size(), 1U) << "of the clip with the files that were searched";
    EXPECT_EQ(results().at(first_), before.at(first_));
    EXPECT_TRUE(controller_->slates().proposal(first_));
    controller_->openStoredWork({});
    controller_->openStoredWork({{}, {}, clips});
    EXPECT_EQ(results().size(), 1U) << "each time";
}

} // namespace
} // namespace orvane::test
