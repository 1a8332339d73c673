#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncCore/Services/SmartAudio/AnalysisCache.h"
#include "Platform/Files.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

namespace orvane {
namespace {

/// With a value other than the default in every member.
StoredAnalysis analysis() {
    StoredAnalysis all;
    all.terms.mode = SmartAudioMode::custom;
    all.terms.config = SmartAudioConfig{0.1F, 11, 0.2F, 0.3F, -4, 60, false};
    all.terms.blockSettings = {Aggressiveness::inclusive, BlockMode::coarse, -10, 9, 5, -2, 0.5,
                               SmartAudioRouting::speaker};
    all.result.tracks = {{2, 0.3F, std::nullopt, 0.5F, 50, -3.5F, 0.25F, 12.5F, -33, 0.75F}};
    all.result.bestTrackIndex = 2;
    all.result.windowedBestTracks = {{0, 1.25, 2}, {1.25, 3, 1}};
    all.result.windowDurationSeconds = 0.5;
    all.result.blocks = {{0, 2, 2, 1, BlockKind::multiActiveWarn, 1.5, -6, "two speakers"}};
    all.result.channelClassifications = {{1, ChannelKind::boom, 0.5F, "name", "anna", true}};
    all.result.detectedCharacter = MaterialCharacter::fastDialog;
    all.result.stemMetrics = StemMetrics{{0.1F}, {0.2F, 0.3F}, {}, 0.4F};
    all.result.heardSeconds = 3;
    all.result.promisedSeconds = 3;
    all.lufs = -23.5;
    return all;
}

class AnalysisCacheTest : public testing::Test {
  protected:
    void record(float level) const {
        folder_.write("a.wav", test::WaveMaker().samples(std::vector<float>(4800, level)).bytes());
    }
    SmartAudioRequest request() const {
        SmartAudioRequest made;
        made.sound = FileURL{folder_.path("a.wav")};
        made.channelCount = 2;
        return made;
    }
    test::TemporaryDirectory folder_, cacheFolder_;
};

TEST_F(AnalysisCacheTest, givesWhatWasStoredForTheSameRecordingAndClip) {
    record(0.5F);
    AnalysisCache cache(cacheFolder_.path());
    const std::string key = *AnalysisCache::keyOf(request());
    EXPECT_FALSE(cache.find(key));
    cache.store(key, request(), analysis());
    EXPECT_EQ(cache.find(key), analysis());
    EXPECT_FALSE(AnalysisCache(cacheFolder_.path(), AnalysisCache::usualMostBytes, 2).find(key))
        << "made by an analysis of another version";

    const auto differs = [&](const std::function<void(SmartAudioRequest&)>& change) {
        SmartAudioRequest other = request();
        change(other);
        return !cache.find(*AnalysisCache::keyOf(other));
    };
    EXPECT_TRUE(differs([](auto& one) { one.channelCount = 3; }));
    EXPECT_TRUE(differs([](auto& one) { one.candidateTracks = {1}; }));
    EXPECT_TRUE(differs([](auto& one) { one.ixmlTracks = {{1, "Boom"}}; }));

    const auto names = platform::files::childNames(cacheFolder_.path());
    ASSERT_EQ(names->size(), 1U);
    const std::string whole = cacheFolder_.read(names->front());
    std::string flipped = whole;
    flipped[whole.size() / 2] ^= 1;
    for (const std::string& damaged : {flipped, whole.substr(0, whole.size() - 5), std::string("ORVANAL1")}) {
        cacheFolder_.write(names->front(), damaged);
        EXPECT_FALSE(cache.find(key)) << damaged.size();
    }
}

TEST_F(AnalysisCacheTest, storesOnlyWhatIsWholeAndStillThere) {
    record(0.5F);
    AnalysisCache cache(cacheFolder_.path());
    const std::string key = *AnalysisCache::keyOf(request());
    StoredAnalysis partial = analysis();
    partial.result.incompleteFiles = {{"b.wav", 0, 3}};
    cache.store(key, request(), partial);
    partial = analysis();
    partial.result.promisedSeconds = 60;
    cache.store(key, request(), partial);
    cache.store(key, request(), {});
    EXPECT_FALSE(cache.find(key));
    folder_.write("a.wav", folder_.read("a.wav") + "ab"); // another size, even if the date is the same
    cache.store(key, request(), analysis());
    EXPECT_FALSE(cache.find(key)) << "changed while it was read";
    EXPECT_NE(AnalysisCache::keyOf(request()), key);
    platform::files::remove(folder_.path("a.wav"));
    EXPECT_FALSE(AnalysisCache::keyOf(request()));
}

} // namespace
} // namespace orvane
