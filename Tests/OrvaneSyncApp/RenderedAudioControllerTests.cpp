#include "MediaFactory/MovieMaker.h"
#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncApp/ControllerTest.h"
#include "OrvaneSyncApp/Controllers/Commands/ReviewPlayers.h"
#include "OrvaneSyncApp/Controllers/ShownClipAudio.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/RenderedAudio/RenderedAudioStore.h"
#include "Support/FakePlayer.h"

#include <cmath>
#include <filesystem>

namespace orvane {
namespace {

/// One clip with a recording of two channels; the second one has speech.
class RenderedAudioControllerTest : public test::ControllerTest {
  protected:
    RenderedAudioControllerTest() {
        constexpr std::uint32_t hz = 8000, tenOClock = 36000;
        test::MovieMaker()
            .video({.frames = 25 * 10})
            .timecode({.firstFrame = 25 * tenOClock})
            .writeTo(folder_.write("shoot/A001.mov", ""));
        std::vector<float> samples;
        for (std::uint32_t i = 0; i < 12 * hz; ++i) {
            const double time = static_cast<double>(i) / hz;
            const auto hiss = static_cast<float>(0.0005 * std::sin(i * 2.1));
            samples.push_back(hiss);
            samples.push_back(
                hiss + static_cast<float>(std::fmod(time, 1.0) < 0.6 ? 0.3 * std::sin(1885 * time) : 0));
        }
        test::WaveMaker()
            .format({.channels = 2, .sampleRate = hz, .samples = test::SampleFormat::pcm16})
            .bext({.date = "2026-11-20", .timeReference = std::uint64_t{tenOClock} * hz})
            .samples(samples)
            .writeTo(folder_.write("shoot/T01.WAV", ""));
        ImportController::Dependencies dependencies{mainThread_, settings_, nullptr, mainThread_->clock()};
        dependencies.renderedAudio =
            std::make_shared<const RenderedAudioStore>(folder_.path("caches"), settings_);
        controller_ = ImportController::create(std::move(dependencies));
        scan(folder("shoot"), std::nullopt);
        id_ = clip("A001")->id;
    }

    RenderedAudioController& rendered() { return controller_->smartAudio().rendered(); }
    const SmartAudioState& state() { return controller_->smartAudio().state(); }
    void analyse() { finish(controller_->smartAudio().runSmartAudioForGroup(id_, false)); }
    /// The folder and the beginning of the name of the file that plays; empty: the recording.
    std::string plays() {
        const auto url = rendered().playbackAudioURL(id_);
        if (!url) return "";
        EXPECT_TRUE(std::filesystem::exists(url->path));
        const std::string name = url->lastPathComponent();
        return name.substr(0, name.rfind('_'));
    }

    UUID id_;
};

TEST_F(RenderedAudioControllerTest, playsWhatWasRenderedLast) {
    EXPECT_EQ(plays(), "");
    finish(rendered().runVoiceIsolationForGroup(id_));
    const FileURL ofRecording = state().viProcessedURLs.at(id_);
    analyse();
    EXPECT_TRUE(state().mixdownURLs.contains(id_));
    EXPECT_EQ(plays(), "vi") << "the preview of the recording, until it is brought up to date";
    finish(rendered().runVoiceIsolationForGroup(id_));
    EXPECT_NE(state().viProcessedURLs.at(id_), ofRecording);

    settings_->set(settings::playbackAppliesSmartAudio, false);
    EXPECT_EQ(plays(), "mixdown");
    finish(rendered().runVoiceIsolationForGroup(id_));
    EXPECT_FALSE(state().viProcessedURLs.contains(id_));
    finish(rendered().toggleSoloMonitor(id_, 2));
    EXPECT_EQ(plays(), "solo_ch1");
    finish(rendered().toggleSoloMonitor(id_, 5));
    EXPECT_EQ(state().soloMonitorTracks.at(id_), 2) << "a track that the take does not have";
    finish(rendered().toggleSoloMonitor(id_, 1));
    EXPECT_EQ(plays(), "solo_ch0");
    finish(rendered().toggleSoloMonitor(id_, 1));
    EXPECT_EQ(plays(), "mixdown");
    // A second press before the first has finished ends it too.
    const auto first = rendered().toggleSoloMonitor(id_, 2);
    rendered().toggleSoloMonitor(id_, 2);
    finish(first);
    EXPECT_EQ(plays(), "mixdown");
}

TEST_F(RenderedAudioControllerTest, editsAndUndoTakeAwayWhatTheyMakeStale) {
    analyse();
    finish(rendered().runVoiceIsolationForGroup(id_));
    const FileURL mixdown = state().mixdownURLs.at(id_);
    platform::Task again = platform::Task::ended();
    controller_->withUndo(undoSteps::addBlockOverride,
                          [&] { again = controller_->tracks().addBlockOverride(id_, 2, 4, 1); });
    finish(again);
    EXPECT_NE(state().mixdownURLs.at(id_), mixdown) << "other blocks are heard";
    finish(rendered().toggleSoloMonitor(id_, 1));
    controller_->undo();
    EXPECT_TRUE(state().mixdownURLs.empty() && state().soloMonitorURLs.empty());
    EXPECT_TRUE(state().viProcessedURLs.contains(id_)) << "it stays through undo";
    auto result = std::make_shared<std::optional<RenderResult>>();
    mainThread_->runPosted();
    finish(rendered().renderMixdown(id_, result));
    EXPECT_TRUE(*result) << "the analysis is back";
    EXPECT_EQ(state().mixdownURLs.at(id_), mixdown) << "the file of before";
    finish(controller_->smartAudio().runSmartAudioAnalysis(SmartAudioMode::standard, false));
    EXPECT_EQ(state().mixdownURLs.at(id_), mixdown) << "the same blocks";
    controller_->clips().resetClipToAutoSync(id_);
    EXPECT_EQ(plays(), "");
    // A rendering that was stopped leaves no file.
    const auto stopped = rendered().toggleSoloMonitor(id_, 2);
    stopped.requestStop();
    finish(stopped);
    EXPECT_TRUE(state().soloMonitorURLs.empty());
    EXPECT_EQ(state().rendering, SmartAudioProgress());
    finish(rendered().toggleSoloMonitor(id_, 2));
    EXPECT_EQ(plays(), "solo_ch1") << "the press that was stopped does not count";
}

TEST_F(RenderedAudioControllerTest, theClipOnScreenIsKeptUpToDate) {
    std::vector<std::string> played;
    ShownClipAudio shown(controller_, mainThread_, settings_,
                         [&](const std::optional<FileURL>&) { played.push_back(plays()); });
    const auto settle = [&] {
        ASSERT_TRUE(mainThread_->waitUntil([&] { return state().viProcessedURLs.contains(id_); }));
        mainThread_->runPosted();
    };
    shown.show(id_);
    settle();
    EXPECT_EQ(played, (std::vector<std::string>{"", "vi"}));
    const FileURL before = state().viProcessedURLs.at(id_);
    settings_->set(settings::smartAudioPreset, SmartAudioLook::documentary);
    ASSERT_TRUE(mainThread_->waitUntil([&] { return state().viProcessedURLs.at(id_) != before; }));
    shown.show(std::nullopt);
    played.clear();
    analyse();
    EXPECT_TRUE(played.empty()) << "another clip than that on screen";
}

TEST_F(RenderedAudioControllerTest, theReviewHearsWhatIsRenderedAndNothingStale) {
    auto system = std::make_shared<test::FakePlayerSystem>(mainThread_);
    commands::ReviewPlayers players(
        controller_, ShortcutCenter::create({mainThread_, settings_}), [system] { return system; }, true);
    finish(players.loadGroup(id_));
    ASSERT_TRUE(mainThread_->waitUntil([&] { return state().viProcessedURLs.contains(id_); }));
    analyse();
    ASSERT_TRUE(mainThread_->waitUntil(
        [&] { return rendered().currentAudioURL(id_) == std::optional(state().viProcessedURLs.at(id_)); }));
    const test::FakePlayer& player = *system->players.front();
    const int seeks = player.seeks;
    const int sounds = player.sounds;
    EXPECT_GE(sounds, 2) << "the preview of the recording, then that of the blocks";
    settings_->set(settings::smartAudioPreset, SmartAudioLook::documentary);
    EXPECT_EQ(rendered().currentAudioURL(id_), state().mixdownURLs.at(id_))
        << "until the preview is made anew";
    ASSERT_TRUE(mainThread_->waitUntil([&] { return player.sounds == sounds + 2; }));
    EXPECT_EQ(rendered().currentAudioURL(id_), state().viProcessedURLs.at(id_));
    EXPECT_EQ(player.seeks, seeks) << "under the picture that runs";
}

} // namespace
} // namespace orvane
