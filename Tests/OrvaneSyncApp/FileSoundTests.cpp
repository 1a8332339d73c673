#include "OrvaneSyncApp/Controllers/AudioLevelProvider.h"
#include "OrvaneSyncApp/Controllers/RawFileAudioPlayer.h"
#include "Support/FakePlayer.h"
#include "Support/VirtualMainThread.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

struct Players {
    test::VirtualMainThread thread;
    std::shared_ptr<platform::MainThread> mainThread{&thread, [](auto*) {}};
    std::shared_ptr<test::FakePlayerSystem> system = std::make_shared<test::FakePlayerSystem>(mainThread);
};

TEST(AudioLevelProvider, showsSmoothedLevelsWhileAttached) {
    Players players;
    players.system->usual.soundChannelCount = 2;
    const auto player = players.system->makePlayer();
    auto& fake = *players.system->players.front();
    const auto meters = AudioLevelProvider::create(players.mainThread);
    int changes = 0;
    const auto subscription = meters->onChange([&] { ++changes; });
    player->load({}, [](const auto&) {});
    players.thread.runPosted();

    meters->attach(*player);
    EXPECT_TRUE(meters->isActive());
    EXPECT_EQ(meters->channelCount(), 2);
    fake.heard = {{1, 1}, {0.0316228F, 0.0316228F}};
    players.thread.advance(AudioLevelProvider::updateInterval);
    ASSERT_EQ(meters->levels().channels.size(), 2U);
    EXPECT_EQ(meters->levels().channelCount, 2);
    EXPECT_EQ(meters->levels().timestamp, 3600);
    EXPECT_NEAR(meters->levels().channels[1].peak, 0.5, 1e-5);
    fake.heard.clear(); // paused: the meters fall
    players.thread.advance(AudioLevelProvider::updateInterval);
    EXPECT_NEAR(meters->levels().channels[0].rms, 0.85, 1e-5);
    changes = 0;
    players.thread.advance(std::chrono::seconds(1));
    EXPECT_NEAR(changes, 60, 1);
    EXPECT_LT(meters->levels().channels[0].peak, 0.001);
    // Another recording has another number of channels, or there is none.
    players.system->usual.soundChannelCount = 1;
    player->setSound(nullptr);
    players.thread.advance(AudioLevelProvider::updateInterval);
    EXPECT_EQ(meters->channelCount(), 1);
    for (const bool hasSound : {false, true}) {
        players.system->usual.hasSound = hasSound;
        player->setSound(nullptr);
        fake.heard = {{1, 1}};
        players.thread.advance(AudioLevelProvider::updateInterval);
        EXPECT_EQ(meters->levels().channels.size(), hasSound ? 1U : 0U);
    }

    meters->detach();
    EXPECT_FALSE(meters->isActive());
    EXPECT_TRUE(meters->levels().channels.empty());
    EXPECT_EQ(players.thread.pendingTimers(), 0U);
    players.system->usual.hasSound = false;
    player->load({}, [](const auto&) {});
    players.thread.runPosted();
    meters->attach(*player);
    EXPECT_FALSE(meters->isActive());
}

TEST(RawFileAudioPlayer, playsOneFileAtATime) {
    Players players;
    players.system->settle = [&] { players.thread.runPosted(); };
    const auto preview =
        RawFileAudioPlayer::create(players.system, WaveformState::create(players.mainThread, nullptr));
    const MediaAsset first(FileURL{"/none/A.WAV"}, AssetKind::audio),
        second(FileURL{"/none/B.WAV"}, AssetKind::audio);
    const auto fake = [&]() -> test::FakePlayer& { return *players.system->players.front(); };

    preview->seek(0.5); // nothing is loaded
    preview->togglePlayback(first);
    EXPECT_EQ(preview->currentAssetID(), first.id);
    EXPECT_TRUE(preview->isPlaying());
    EXPECT_TRUE(preview->waveform()->isLoading());
    players.thread.runPosted();
    EXPECT_EQ(preview->duration(), 10);
    EXPECT_EQ(fake().rate(), 1);
    players.system->advance(2, {});
    EXPECT_NEAR(preview->currentTime(), 2, 0.05);
    preview->togglePlayback(first);
    EXPECT_FALSE(preview->isPlaying());
    EXPECT_EQ(fake().rate(), 0);
    preview->seek(7);
    EXPECT_EQ(preview->currentTime(), 10);
    preview->seek(0.95);
    preview->togglePlayback(first);
    players.system->advance(1, {});
    // It stopped at the end and returned to the start.
    EXPECT_FALSE(preview->isPlaying());
    EXPECT_EQ(preview->currentTime(), 0);
    EXPECT_EQ(fake().currentTime().seconds(), 0);
    preview->togglePlayback(first);
    EXPECT_EQ(fake().rate(), 1);

    // Another file, paused before it is opened.
    preview->togglePlayback(second);
    EXPECT_EQ(preview->currentTime(), 0);
    preview->togglePlayback(second);
    players.thread.runPosted();
    EXPECT_FALSE(preview->isPlaying());
    EXPECT_EQ(fake().rate(), 0);
    EXPECT_EQ(preview->duration(), 10);
    // After a file that cannot be opened, nothing is loaded.
    players.system->usual = {};
    preview->togglePlayback(first);
    players.thread.runPosted();
    EXPECT_FALSE(preview->currentAssetID());
    EXPECT_FALSE(preview->isPlaying());
    EXPECT_FALSE(fake().isLoaded());
    EXPECT_EQ(players.system->players.size(), 1U);
}

} // namespace
} // namespace orvane
