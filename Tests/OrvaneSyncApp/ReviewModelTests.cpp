#include "ControllerTest.h"

#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/ReviewPlayers.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncApp/ViewModels/Review/CameraAxis.h"
#include "OrvaneSyncApp/ViewModels/Review/MulticamViewModel.h"
#include "OrvaneSyncApp/ViewModels/Review/PictureTexts.h"
#include "OrvaneSyncApp/ViewModels/Review/ReviewViewModel.h"
#include "Support/Assets.h"
#include "Support/FakePlayer.h"

namespace orvane::test {
namespace {

using platform::MediaTime;

/// A clip of 20 s at 25 frames a second, with a recording of 20 s that starts 1.5 s into the clip, has a clap
/// at 3 s and speech from 10 s on.
class ReviewModelTest : public ControllerTest {
  protected:
    ReviewModelTest() {
        std::vector<float> samples(std::size_t{20} * 8000, 0.001F);
        for (std::size_t i = 24'000; i < 24'400; ++i) samples[i] = i % 2 == 0 ? 0.9F : -0.9F;
        for (std::size_t i = 80'000; i < 88'000; ++i) samples[i] = i % 2 == 0 ? 0.3F : -0.3F;
        MediaAsset recording = audio("T.wav", "10:00:01:12", 20);
        recording.url = FileURL{
            folder_.write("T.wav", WaveMaker().format({.sampleRate = 8000}).samples(samples).bytes())};
        recording.channelCount = 1;
        SyncGroup group = test::clip(video("A001C001.mov", "10:00:00:00", 20), recording);
        group.audioMatches.front().syncOffsetSeconds = 1.5;
        SyncGroup other = test::clip(video("B001C001.mov", "10:00:03:00", 20), recording);
        other.audioMatches.front().syncOffsetSeconds = -2;
        SyncGroup broken = test::clip(video("C001C001.mov"), recording);
        id_ = group.id;
        other_ = other.id;
        broken_ = broken.id;
        system_->usual.duration = {20, 1};
        system_->files[broken.video.url.path] = {};
        system_->settle = [this] { mainThread_->runPosted(); };
        controller_->openStoredWork({{}, {}, SyncGroupList({group, other, broken})});
        engine_ = makeEngine();
        model_ = ReviewViewModel::create(controller_, engine_);
        context_.controller = controller_;
        context_.settings = controller_->work().environment.settings;
        model_->decideOfClip = [this](KeyAction key, const UUID& clip) { context_.decideOfClip(key, clip); };
    }
    std::shared_ptr<VideoEngine> makeEngine() {
        return VideoEngine::create({.mainThread = mainThread_,
                                    .openPlayers = [this] { return system_; },
                                    .waveform = controller_->timeline().waveform()});
    }
    void load() { finish(model_->loadGroup(id_)); }
    void press(KeyAction action) {
        model_->handleKeyAction(action);
        mainThread_->runPosted();
    }
    commands::CommandContext context_;
    const SyncGroup& group() const { return *controller_->work().syncGroups().find(id_); }
    FakePlayer& player() { return *system_->players.front(); }
    double heardOffset() { return player().offsets.empty() ? 1.5 : player().offsets.back().seconds(); }
    double at() { return engine_->playhead().seconds(); }
    void run(double seconds) { system_->advance(seconds, nullptr); }

    UUID id_, other_, broken_;
    std::shared_ptr<FakePlayerSystem> system_ = std::make_shared<FakePlayerSystem>(mainThread_);
    std::shared_ptr<VideoEngine> engine_;
    std::shared_ptr<ReviewViewModel> model_;
};

TEST_F(ReviewModelTest, aClipOpensOnTheClapThatIsFound) {
    load();
    EXPECT_EQ(group().audioAnchorOffsetInAudioSeconds, 3);
    EXPECT_DOUBLE_EQ(at(), 4.5);
    EXPECT_EQ(engine_->playhead().timecodeString(), "10:00:04:12");
    EXPECT_EQ(engine_->sound().syncOffsetSeconds, 1.5);
    EXPECT_FALSE(controller_->work().undoState().canUndo);

    controller_->clips().setAudioAnchor(id_, std::nullopt);
    controller_->clips().toggleLocked(id_);
    load();
    EXPECT_DOUBLE_EQ(at(), 4.5) << "also one that was locked before it was opened";
    EXPECT_FALSE(group().audioAnchorOffsetInAudioSeconds) << "which keeps what it has";
    EXPECT_EQ(model_->clapSeconds(), 4.5) << "for the lens";
    controller_->clips().toggleLocked(id_);
    model_->nudgeByFrames(id_, 25);
    EXPECT_EQ(model_->clapSeconds(), 5.5);
    model_->nudgeByFrames(id_, -25);
    {
        bool hasStepped = false;
        const auto user = engine_->onChange([&](VideoEngineField) {
            if (!engine_->transport().isLoaded || std::exchange(hasStepped, true)) return;
            mainThread_->post([&] { engine_->stepFrames(25, false); });
        });
        load();
    }
    EXPECT_DOUBLE_EQ(at(), 1) << "the user was faster than the search";

    const auto overtaken = model_->loadGroup(id_);
    finish(model_->loadGroup(broken_));
    finish(overtaken);
    EXPECT_FALSE(engine_->transport().isLoaded);
    EXPECT_TRUE(model_->shows(broken_));
    EXPECT_FALSE(model_->canCheckClap()) << "nothing can be played";
    const SyncGroup* shown = controller_->work().syncGroups().find(broken_);
    EXPECT_NE(pictureNote(shown, *engine_, false)->title, pictureNote(shown, *engine_, true)->title);
    system_->files[shown->video.url.path] = {.hasSound = true, .duration = {8, 1}, .isVideoMissing = true};
    finish(model_->loadGroup(broken_));
    EXPECT_EQ(pictureNote(shown, *engine_, false)->title, "The camera file is missing");
    load();
    EXPECT_TRUE(model_->canCheckClap());
    press(KeyAction::nudgePeriodPlus);
    EXPECT_DOUBLE_EQ(at(), 4.54);
    controller_->undo();
    mainThread_->runPosted();
    EXPECT_DOUBLE_EQ(at(), 4.5) << "who stands on the clap stays there";
    controller_->clips().adjustAudioOffset(id_, 60);
    EXPECT_FALSE(model_->canCheckClap()) << "the clap lies behind the picture";
    model_->clapCheck();
    EXPECT_FALSE(engine_->loop().isLooping);
}

TEST_F(ReviewModelTest, aLoopWithoutAClapSaysWhyAndWhatToDo) {
    load();
    std::string said;
    model_->sayWhyNot = [&](std::string_view why) { said = why; };
    const auto check = [&] {
        said.clear();
        press(KeyAction::clapCheck);
        if (engine_->loop().isLooping) {
            engine_->clearLoop();
            said += "\nloop";
        }
        return said;
    };
    EXPECT_EQ(check(), "\nloop");
    controller_->clips().setAudioAnchor(id_, 1000);
    EXPECT_TRUE(check().starts_with("The clap point is outside of the picture.\n⟨jumpNextEdit⟩")) << said;
    controller_->clips().setAudioAnchor(id_, std::nullopt);
    EXPECT_TRUE(check().starts_with("There is no clap point yet: the loop plays around 3 s.\n")) << said;
    EXPECT_TRUE(said.ends_with("⟨updateClapPoint⟩ sets the clap point there.\nloop")) << said;
    controller_->clips().toggleLocked(id_);
    EXPECT_NE(check().find("⟨lockCurrent⟩ unlocks the clip, then ⟨updateClapPoint⟩"), std::string::npos);
    controller_->clips().toggleLocked(id_);
    controller_->recordings().removeAudioMatch(id_, group().audioMatches.front().id);
    EXPECT_NE(check().find("\nCtrl+T attaches a recording."), std::string::npos) << said;
}

TEST_F(ReviewModelTest, aHeldNudgeIsOneStep) {
    const auto shortcuts = ShortcutCenter::create({mainThread_, settings_});
    commands::ReviewPlayers players(
        controller_, shortcuts, [this] { return system_; }, true);
    finish(players.loadGroup(id_));
    /// Of a key: the press, the number of repeats, the release.
    struct Press {
        const char* key;
        int repeats;
        std::chrono::milliseconds pause{40}; ///< before each repeat but the first
    };
    using std::chrono::milliseconds;
    const auto steps = [&](const std::vector<Press>& presses) {
        for (const auto& [key, repeats, pause] : presses) {
            for (int i = 0; i <= repeats; ++i) {
                if (i > 0) mainThread_->advance(i == 1 ? milliseconds(660) : pause);
                players.keyboard().handle(*keyEventNamed(key, ModifierSet::none, true, i > 0));
            }
            players.keyboard().handle(*keyEventNamed(key, ModifierSet::none, false, false));
            mainThread_->advance(milliseconds(700));
        }
        int count = 0;
        for (; controller_->work().undoState().canUndo; ++count) controller_->undo();
        EXPECT_EQ(group().manualAudioOffsetSeconds, 0);
        return count;
    };
    EXPECT_EQ(steps({{".", 30}}), 1) << "the first repeat comes late";
    EXPECT_EQ(steps({{",", 3, milliseconds(900)}}), 1) << "the machine was busy";
    EXPECT_EQ(steps({{".", 0}, {".", 2}}), 2) << "pressed again";
    EXPECT_EQ(steps({{".", 0}, {"arrowRight", 40}, {".", 0}}), 2) << "another key was held between them";
}

TEST_F(ReviewModelTest, aNudgeGoesToTheAnchorAtRestAndIsHeardOnTheRun) {
    load();
    engine_->moveTo(9);
    press(KeyAction::nudgePeriodPlus);
    EXPECT_DOUBLE_EQ(at(), 4.54);
    EXPECT_DOUBLE_EQ(heardOffset(), 1.54);
    press(KeyAction::clapCheck);
    run(0.2);
    const int seeks = player().seeks;
    for (const KeyAction action : {KeyAction::nudgeCommaMinus10, KeyAction::audioOffsetPlus5,
                                   KeyAction::audioOffsetMinus, KeyAction::nudgePeriodPlus10})
        press(action);
    EXPECT_NEAR(heardOffset(), 1.54 + 0.16, 1e-9);
    EXPECT_EQ(player().rate(), 1);
    EXPECT_EQ(player().seeks, seeks);
    controller_->undo(); // one step: no half second passed between them
    EXPECT_DOUBLE_EQ(heardOffset(), 1.5);
    EXPECT_EQ(player().rate(), 1);
    press(KeyAction::nudgePeriodPlus);
    finish(model_->loadGroup(broken_));
    load();
    press(KeyAction::nudgePeriodPlus);
    controller_->undo();
    EXPECT_DOUBLE_EQ(group().manualAudioOffsetSeconds, 0.04) << "another clip was in view between them";
    controller_->undo();
    press(KeyAction::clapCheck);
    press(KeyAction::clapCheck);
    EXPECT_FALSE(engine_->loop().isLooping);
    EXPECT_TRUE(engine_->transport().isPlaying);
}

TEST_F(ReviewModelTest, keysClicksAndSkimsMoveThePlayhead) {
    load();
    const auto expectAt = [&](double seconds, const char* why) {
        mainThread_->runPosted();
        EXPECT_NEAR(at(), seconds, 0.003) << why; // an onset is exact to one bin
        EXPECT_FALSE(engine_->transport().isPlaying) << why;
    };
    press(KeyAction::playPause);
    press(KeyAction::jumpNextEdit);
    expectAt(11.5, "next onset");
    press(KeyAction::jumpNextEdit);
    expectAt(11.5, "there is none behind");
    press(KeyAction::jumpPrevEdit);
    expectAt(4.5, "previous onset");
    press(KeyAction::stepBackward5);
    expectAt(4.3, "five frames back");
    model_->handleSkim(8);
    model_->handleSkim(9);
    expectAt(9, "skims");
    model_->handleSkim(std::nullopt);
    expectAt(4.3, "the pointer has left");
    model_->handleSkim(8);
    press(KeyAction::stepForward);
    model_->handleSkim(std::nullopt);
    expectAt(8.04, "stepped from where the pointer was");
    model_->handleSkim(5);
    press(KeyAction::clapCheck);
    run(2);
    mainThread_->runPosted();
    EXPECT_TRUE(engine_->transport().isPlaying);
    EXPECT_LT(at(), engine_->loop().loopEnd.seconds() + 0.04) << "a loop turns back under a resting pointer";
    model_->handleSkim(std::nullopt);
    EXPECT_TRUE(engine_->transport().isPlaying);
    press(KeyAction::clearLoop);
    engine_->moveTo(4.3);
    EXPECT_EQ(model_->scrollFrames(4, true), 1);
    expectAt(4.34, "scrolled");
    model_->handleWaveformClick(30, ModifierSet::none);
    expectAt(20, "a click behind the clip");
    press(KeyAction::playPause);
    run(0.2);
    EXPECT_TRUE(engine_->transport().isPlaying && at() < 1) << "who stands at the end begins again";
    model_->handleWaveformClick(5, ModifierSet::none);
    expectAt(6.5, "a click");
    EXPECT_EQ(group().audioAnchorOffsetInAudioSeconds, 3);
    model_->handleWaveformClick(7, ModifierSet::command | ModifierSet::option);
    expectAt(8.5, "a click for the anchor");
    EXPECT_EQ(group().audioAnchorOffsetInAudioSeconds, 7);
    engine_->moveTo(6);
    press(KeyAction::updateClapPoint);
    EXPECT_DOUBLE_EQ(group().audioAnchorOffsetInAudioSeconds.value_or(0), 4.5);
    press(KeyAction::lockCurrent);
    engine_->moveTo(9);
    press(KeyAction::updateClapPoint);
    EXPECT_DOUBLE_EQ(group().audioAnchorOffsetInAudioSeconds.value_or(0), 4.5);
    press(KeyAction::toggleApproved);
    EXPECT_TRUE(group().isApproved);
    EXPECT_EQ(controller_->work().undoState().undoActionName, "Toggle Approved");
    TimelineZoomState& zoom = controller_->timeline().zoom();
    press(KeyAction::zoomIn);
    EXPECT_EQ(zoom.zoomScale, 1.25);
    EXPECT_EQ(zoom.playheadSeconds, at());
    EXPECT_EQ(controller_->timeline().zoomOf(other_).zoomScale, 1);
    finish(model_->dragAudio(other_, 9 * controller_->timeline().zoomOf(other_).pixelsPerSecond(),
                             {.shift = true}));
    EXPECT_NEAR(controller_->work().syncGroups().find(other_)->manualAudioOffsetSeconds, 9, 1e-9);
    EXPECT_EQ(zoom.zoomScale, 1.25) << "what is asked or moved of another clip shows nothing else";
}

TEST_F(ReviewModelTest, jumpsGoToTheOnsetsOfTheRecordingThatTheClipHas) {
    load();
    engine_->moveTo(1);
    controller_->withUndo(undoSteps::removeAudioMatch, [&] {
        controller_->recordings().removeAudioMatch(id_, group().audioMatches.front().id);
    });
    press(KeyAction::jumpNextEdit);
    EXPECT_DOUBLE_EQ(at(), 1) << "there is no sound";
    controller_->undo();
    mainThread_->runPosted();
    model_->handleKeyAction(KeyAction::jumpNextEdit);
    finish(model_->jumpReady());
    EXPECT_NEAR(at(), 4.5, 0.003);
    controller_->redo();
    controller_->undo();
    mainThread_->runPosted();
    model_->handleKeyAction(KeyAction::jumpNextEdit);
    model_->handleKeyAction(KeyAction::stepForward);
    finish(model_->jumpReady());
    EXPECT_NEAR(at(), 4.54, 0.003) << "who does something else meanwhile stays there";
}

TEST_F(ReviewModelTest, aDragIsHeardWhenItHasEnded) {
    load();
    const double points = controller_->timeline().zoom().pixelsPerSecond();
    model_->handleContainerDrag(0.5 * points, {});
    model_->handleContainerDrag(1.0 * points, {});
    EXPECT_DOUBLE_EQ(group().manualAudioOffsetSeconds, 1);
    EXPECT_DOUBLE_EQ(heardOffset(), 1.5);
    EXPECT_DOUBLE_EQ(at(), 5.5);
    model_->handleDragEnded();
    EXPECT_DOUBLE_EQ(heardOffset(), 2.5);
    press(KeyAction::lockCurrent);
    model_->handleContainerDrag(3 * points, {});
    EXPECT_FALSE(model_->isDraggingAudio());
    EXPECT_DOUBLE_EQ(group().manualAudioOffsetSeconds, 1);
    // Another recording is played at once, and a clip that is removed is closed.
    press(KeyAction::lockCurrent);
    controller_->recordings().removeAudioMatch(id_, group().audioMatches.front().id);
    EXPECT_EQ(player().sounds, 1);
    EXPECT_THROW(press(KeyAction::nudgePeriodPlus), OutOfRange) << "there is nothing to move";
    EXPECT_DOUBLE_EQ(group().manualAudioOffsetSeconds, 1);
    load();
    EXPECT_DOUBLE_EQ(at(), 0) << "the clap was that of the recording";
    controller_->recordings().removeVideoFromSync(id_);
    EXPECT_FALSE(model_->groupID());
    EXPECT_FALSE(engine_->transport().isLoaded);
}

TEST_F(ReviewModelTest, aClapBehindThePictureIsNotWhereItOpens) {
    controller_->clips().setAudioAnchor(id_, 19); // 20.5 s
    load();
    EXPECT_DOUBLE_EQ(at(), 0);
    model_->putClapOnFrame();
    EXPECT_GE(*model_->clapSeconds(), 0);
    EXPECT_LT(*model_->clapSeconds(), 1 / controller_->timeline().timelineFrameRate(group()));
    press(KeyAction::playPause);
    EXPECT_TRUE(engine_->transport().isPlaying);
}

TEST_F(ReviewModelTest, theFullscreenWindowFollowsTheScreensAndItsKeys) {
    struct Shown final : FullscreenManager::Window {
        explicit Shown(std::size_t& count) : open(count) { ++open; }
        ~Shown() override { --open; }
        std::size_t& open;
    };
    std::size_t open = 0;
    FullscreenManager& fullscreen = model_->fullscreen();
    fullscreen.desktop = {[] {
                              return std::vector<Screen>{{"Laptop", 1920, 1080, true}, {"Wall", 3840, 2160}};
                          },
                          [&](std::size_t) { return std::make_unique<Shown>(open); }};
    fullscreen.toggleFullscreen();
    EXPECT_EQ(open, 0U); // nothing is loaded
    load();
    fullscreen.setPreferredScreen(7);
    press(KeyAction::toggleFullscreen);
    EXPECT_EQ(fullscreen.currentScreenIndex(), 1U);
    const auto hit = [&](std::string_view key, ModifierSet modifiers = {}) {
        const bool used = fullscreen.handle(*keyEventNamed(key, modifiers, true, false));
        mainThread_->runPosted();
        return used;
    };
    EXPECT_TRUE(hit("arrowRight", ModifierSet::shift));
    EXPECT_DOUBLE_EQ(at(), 4.7);
    EXPECT_TRUE(hit("l"));
    EXPECT_EQ(player().rate(), 1);
    EXPECT_TRUE(hit("k"));
    EXPECT_EQ(player().rate(), 0);
    EXPECT_FALSE(hit("c"));
    for (const char* key : {"l", "space", "f", "arrowLeft"})
        EXPECT_FALSE(hit(key, ModifierSet::command)) << key << " with Control is another key";
    EXPECT_TRUE(hit("f"));
    EXPECT_EQ(open, 0U);
    EXPECT_EQ(screenLabel({"Laptop", 1920, 1080, true}), "Laptop, 1920×1080 (Main)");
    EXPECT_DOUBLE_EQ(FullscreenManager::hintOpacity(3.5), 0.3);
}

TEST_F(ReviewModelTest, theCamerasOfATakePlayAsOne) {
    const auto cluster = MulticamViewModel::create(controller_, [this] { return makeEngine(); });
    ClusterEngineBag& bag = cluster->bag();
    const auto cameraAt = [&](const UUID& id) { return bag.engines().at(id)->position().seconds(); };
    controller_->clips().setAudioAnchor(id_, 3);
    finish(cluster->load({id_, other_, broken_}));
    mainThread_->runPosted();
    // The clap of one camera also gives the opening position of the other, which has no clap.
    EXPECT_EQ(cameraAt(id_), 4.5);
    EXPECT_EQ(cameraAt(other_), 1);
    EXPECT_EQ(bag.memberLabels()[1].second, "Cam B");
    const auto axis = CameraAxis::of(bag, controller_->work().syncGroups());
    EXPECT_EQ(axis.cameras[2].endSeconds - axis.cameras[2].startSeconds, 60) << "not loaded, but probed";
    const auto volume = [&](std::size_t player) { return system_->players[player]->volume; };
    const auto volumes = [&] { return std::pair(volume(0), volume(1)); };
    bag.seekAll(4);
    mainThread_->runPosted();
    EXPECT_EQ(cameraAt(id_), 5.5);
    EXPECT_EQ(cameraAt(other_), 2);
    bag.setAudioSource(other_);
    cluster->handleKeyAction(KeyAction::playPause);
    EXPECT_EQ(system_->players[0]->startsAt, system_->now + std::chrono::milliseconds(50));
    EXPECT_EQ(system_->players[1]->startsAt, system_->players[0]->startsAt);
    EXPECT_EQ(volumes(), std::pair(0.0F, 1.0F));
    run(1.05);
    EXPECT_EQ(cameraAt(id_), 6.5);
    EXPECT_EQ(cameraAt(other_), 3);
    cluster->handleKeyAction(KeyAction::shuttleStop);
    EXPECT_FALSE(bag.isPlaying());
    EXPECT_EQ(volumes(), std::pair(0.0F, 0.0F));
    bag.setAudioSource(id_);
    bag.playAll();
    EXPECT_EQ(volumes(), std::pair(1.0F, 0.0F));
    bag.pauseAll();
    bag.engineFor(id_)->moveTo(bag.engineFor(id_)->transport().duration.seconds());
    mainThread_->runPosted();
    bag.playAll();
    EXPECT_EQ(cameraAt(id_), 0) << "from the end it starts anew";
    // A camera that begins later is shown at its beginning.
    bag.seekAll(1);
    mainThread_->runPosted();
    bag.playAll();
    EXPECT_EQ(cameraAt(other_), 0);
    bag.pauseAll();
    cluster->handleKeyAction(KeyAction::stepForward5);
    mainThread_->runPosted();
    EXPECT_DOUBLE_EQ(cameraAt(id_), 2.54);
    EXPECT_EQ(cluster->scrollFrames(2, false), 2);
    mainThread_->runPosted();
    EXPECT_DOUBLE_EQ(cameraAt(id_), 2.62);
    // A camera that has ended is shown at its end, and a press gives all the same speed.
    bag.engineFor(id_)->moveTo(1);
    bag.setAudioSource(other_);
    bag.engineFor(other_)->moveTo(17);
    mainThread_->runPosted();
    bag.playAll();
    EXPECT_EQ(bag.engines().at(id_)->playhead().seconds(), 20);
    run(0.5);
    EXPECT_FALSE(bag.engines().at(id_)->transport().isPlaying);
    const auto sharedOfOther = [&] { return bag.engines().at(other_)->playhead().seconds() + 2; };
    bag.setAudioSource(id_);
    EXPECT_DOUBLE_EQ(*sharedPlayhead(bag), sharedOfOther()) << "the camera that is heard waits at its end";
    bag.setAudioSource(other_);
    bag.pressL();
    EXPECT_EQ(bag.engines().at(id_)->rate(), 2);
    EXPECT_EQ(bag.engines().at(other_)->rate(), 2);
    bag.pauseAll();
    bag.setAudioSource(id_);
    bag.seekAll(1);
    mainThread_->runPosted();
    controller_->clips().adjustAudioOffset(other_, 0.5);
    EXPECT_DOUBLE_EQ(bag.memberSyncOffsets().at(other_), -1.5);
    const WaveformState& waveform = *bag.engineFor(id_)->waveform();
    ASSERT_TRUE(mainThread_->waitUntil([&] { return waveform.waveform().clipDuration > 0; }));
    controller_->withUndo(undoSteps::removeAudioMatch, [&] {
        controller_->recordings().removeAudioMatch(id_, group().audioMatches.front().id);
    });
    EXPECT_EQ(waveform.waveform().clipDuration, 0);
    controller_->undo();
    controller_->clips().setAudioAnchor(id_, 3);
    finish(cluster->load({other_, id_}));
    EXPECT_DOUBLE_EQ(cameraAt(id_), 4.5);
    EXPECT_DOUBLE_EQ(cameraAt(other_), 1.5) << "without a clap of its own, where the other one claps";
    EXPECT_EQ(bag.engines().at(id_)->playhead().timecodeString(), "10:00:04:12");
    EXPECT_EQ(bag.audioSourceMemberID(), id_); // the choice is kept while its camera is there
    controller_->withUndo(undoSteps::removeVideoFromSync,
                          [&] { controller_->recordings().removeVideoFromSync(id_); });
    EXPECT_EQ(cluster->members(), std::vector{other_});
    controller_->undo();
    EXPECT_EQ(cluster->members(), (std::vector{other_, id_})) << "it comes back with its clip";
    finish(cluster->load({other_}));
    EXPECT_EQ(bag.audioSourceMemberID(), other_);
    EXPECT_EQ(bag.engines().size(), 1U);
}

TEST_F(ReviewModelTest, theCamerasOfATakeGoToTheClapThatIsFound) {
    const auto cluster = MulticamViewModel::create(controller_, [this] { return makeEngine(); });
    ClusterEngineBag& bag = cluster->bag();
    const auto cameraAt = [&](const UUID& id) { return bag.engines().at(id)->position().seconds(); };
    controller_->clips().toggleLocked(other_);
    finish(cluster->load({id_, other_}));
    EXPECT_EQ(cameraAt(id_), 0);
    EXPECT_EQ(cameraRun(bag, other_, *sharedPlayhead(bag)), CameraRun::notYet);
    finish(cluster->findClaps());
    mainThread_->runPosted();
    EXPECT_EQ(cameraAt(id_), 4.5);
    EXPECT_EQ(cameraAt(other_), 1);
    EXPECT_FALSE(controller_->work().syncGroups().find(other_)->audioAnchorOffsetInAudioSeconds) << "locked";
    EXPECT_EQ(cameraRun(bag, other_, *sharedPlayhead(bag)), CameraRun::running);
    bag.seekAll(18.5);
    mainThread_->runPosted();
    EXPECT_EQ(cameraRun(bag, id_, *sharedPlayhead(bag)), CameraRun::running) << "on its last frame";
    bag.seekAll(20);
    mainThread_->runPosted();
    EXPECT_EQ(cameraRun(bag, id_, *sharedPlayhead(bag)), CameraRun::ended);

    finish(cluster->load({other_, id_}));
    cluster->handleKeyAction(KeyAction::stepForward);
    const double moved = cameraAt(id_);
    finish(cluster->findClaps());
    EXPECT_EQ(cameraAt(id_), moved) << "the user was faster";
}

} // namespace
} // namespace orvane::test
