#include "OrvaneSyncCore/Models/SmartAudioConfig.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "Support/Test.h"

namespace orvane {
namespace {

TEST(SmartAudioKinds, RawValuesComeBackAndOthersDoNot) {
    EXPECT_EQ(rawValue(BlockKind::multiActiveWarn), "multiActiveWarn");
    EXPECT_EQ(fromRawValue<ChannelKind>("lav"), ChannelKind::lav);
    EXPECT_EQ(fromRawValue<MaterialCharacter>("actionAtmo"), MaterialCharacter::actionAtmo);
    EXPECT_EQ(fromRawValue<SmartAudioMode>("Cinematic"), SmartAudioMode::cinematic);
    EXPECT_EQ(fromRawValue<ChannelKind>("Lav"), std::nullopt);
    EXPECT_EQ(fromRawValue<ChannelKind>(""), std::nullopt);
    EXPECT_EQ(fromJSON<BlockKind>(JSON("silence")), BlockKind::silence);
    EXPECT_THROW(fromJSON<BlockKind>(JSON("noise")), DecodingError);
    EXPECT_THROW(fromJSON<BlockKind>(JSON(1)), DecodingError);
}

TEST(SmartAudioKinds, BlockLengthsFollowTheModeOrTheMaterial) {
    using enum MaterialCharacter;
    const auto check = [&](BlockMode mode, const std::optional<MaterialCharacter>& detected, double seconds,
                           const char* menu, const char* badge) {
        EXPECT_EQ(blockSeconds(mode, detected), seconds) << badge;
        EXPECT_EQ(menuLabel(mode, detected), menu);
        EXPECT_EQ(badgeLabel(mode, detected), badge);
    };
    check(BlockMode::adaptive, std::nullopt, 2, "Auto", "Auto · 2s blocks");
    check(BlockMode::adaptive, interview, 4, "Auto (currently: Interview / Talking Head)",
          "Interview / Talking Head · 4s blocks");
    check(BlockMode::adaptive, fastDialog, 1, "Auto (currently: Fast Dialog / Comedy)",
          "Fast Dialog / Comedy · 1s blocks");
    check(BlockMode::adaptive, actionAtmo, 2, "Auto (currently: Action / Atmo-heavy)",
          "Action / Atmo-heavy · 2s blocks");
    check(BlockMode::fine, interview, 1, "Fine — 1 s · fast comedy", "Fine · 1s blocks");
    check(BlockMode::standard, std::nullopt, 2, "Standard — 2 s · drama", "Standard · 2s blocks");
    check(BlockMode::coarse, fastDialog, 4, "Coarse — 4 s · interview", "Coarse · 4s blocks");
}

TEST(SmartAudioKinds, ModesAreFoundByTagWhateverItsCase) {
    const std::pair<const char*, std::optional<SmartAudioMode>> cases[] = {
        {"standard", SmartAudioMode::standard},
        {"  CINEMATIC\n", SmartAudioMode::cinematic},
        {"Custom", SmartAudioMode::custom},
        {"off", SmartAudioMode::off},
        {"loud", std::nullopt},
        {"cine matic", std::nullopt},
        {"", std::nullopt}};
    for (const auto& [tag, mode] : cases) EXPECT_EQ(smartAudioModeFromUITag(tag), mode) << tag;
}

TEST(SmartAudioResult, UniformityAloneIsNoAdjustment) {
    const auto isOne = [](auto TrackAdjustment::*field, auto value) {
        SmartAudioResult result;
        result.tracks.resize(2);
        result.tracks[1].*field = value;
        return result.hasAdjustments();
    };
    EXPECT_FALSE(isOne(&TrackAdjustment::loudnessUniformity, 0.5F));
    EXPECT_TRUE(isOne(&TrackAdjustment::voiceIsolationAmount, 0.0F));
    EXPECT_TRUE(isOne(&TrackAdjustment::loudnessAmount, 0.1F));
    EXPECT_TRUE(isOne(&TrackAdjustment::humReductionFrequency, 50));
    EXPECT_TRUE(isOne(&TrackAdjustment::volumeGainDB, -1.0F));
}

TEST(SmartAudioResult, StoredRecordsComeBack) {
    ChannelClassification channel{3, ChannelKind::lav, 0.9F, "iXML: Lav Anna", "anna", false};
    const JSON stored = toJSON(channel);
    EXPECT_EQ(stored.dump(), R"({"confidence":0.9,"isPreMixed":false,"kind":"lav","source":"iXML: Lav Anna",)"
                             R"("speakerName":"anna","trackIndex":3})");
    EXPECT_EQ(fromJSON<ChannelClassification>(JSON::parse(stored.dump())), channel);
    channel.speakerName = std::nullopt;
    EXPECT_EQ(fromJSON<ChannelClassification>(toJSON(channel)), channel);

    BlockDecision block{1.25, 4.5, 2, 3, BlockKind::multiActiveWarn, 0.7, -6.5, "two speakers"};
    EXPECT_EQ(fromJSON<BlockDecision>(JSON::parse(toJSON(block).dump())), block);
    JSON broken = toJSON(block);
    broken.remove("peakDB");
    EXPECT_THROW(fromJSON<BlockDecision>(broken), DecodingError);

    const SmartAudioBlockSettings settings{Aggressiveness::inclusive, BlockMode::coarse, -10, 9, 3, -2, 0.5};
    EXPECT_EQ(fromJSON<SmartAudioBlockSettings>(toJSON(settings)), settings);
    EXPECT_EQ(fromJSON<SmartAudioConfig>(JSON::parse(toJSON(SmartAudioConfig::cinematic).dump())),
              SmartAudioConfig::cinematic);
    EXPECT_EQ(fromJSON<SmartAudioPreset>(toJSON(SmartAudioPreset::drama())), SmartAudioPreset::drama());
}

TEST(SmartAudioResult, TheResultPrintsWhatIsThere) {
    SmartAudioResult result;
    TrackAdjustment track;
    track.trackIndex = 1;
    track.voiceIsolationAmount = 0.3F;
    track.estimatedSNR = 12.7F;
    result.tracks = {track};
    result.bestTrackIndex = 1;
    result.windowedBestTracks = {{0, 2, 1}};
    result.detectedCharacter = MaterialCharacter::interview;
    result.stemMetrics = StemMetrics{{0.1F}, {0.2F}, {}, 0.4F};
    result.heardSeconds = 2;
    result.promisedSeconds = 3.5;
    EXPECT_EQ(
        toJSON(result).dump(),
        R"({"bestTrackIndex":1,"blocks":[],"channelClassifications":[],"detectedCharacter":"interview",)"
        R"("heardSeconds":2.0,"promisedSeconds":3.5,)"
        R"("stemMetrics":{"dialogPerWindowPeak":[0.2],"dialogPerWindowRMS":[0.1],)"
        R"("musicPerWindowRMS":[],"musicProbability":0.4},)"
        R"("tracks":[{"averageLevelDB":0.0,"bestSourceScore":0.0,"estimatedSNR":12.7,)"
        R"("speechRatio":0.0,"trackIndex":1,"voiceIsolationAmount":0.3}],"windowDurationSeconds":0.25,)"
        R"("windowedBestTracks":[{"bestTrackIndex":1,"endSeconds":2.0,"startSeconds":0.0}]})");
    EXPECT_EQ(toJSON(SmartAudioResult()).dump().find("stem"), std::string::npos);
}

TEST(SmartAudioConfig, PresetsAndSliders) {
    EXPECT_EQ(SmartAudioConfig::preset(SmartAudioMode::custom), SmartAudioConfig::studio);
    EXPECT_EQ(SmartAudioConfig::preset(SmartAudioMode::off).voiceIsolationAmount, 0.0F);
    EXPECT_EQ(SmartAudioConfig::preset(SmartAudioMode::standard).voiceIsolationSNRThreshold, 15.0F);
    EXPECT_EQ(SmartAudioPreset::all().back().menuText(), "None");
    EXPECT_EQ(SmartAudioPreset::all()[2].menuText(), "Documentary · VI 50, L 35, U 50");

    platform::MemorySettingsStore store;
    SmartAudioConfig empty = SmartAudioConfig::fromUserDefaults(store);
    SmartAudioConfig expected = SmartAudioConfig::studio;
    expected.loudnessTargetDB = -8;
    EXPECT_EQ(empty, expected) << "an empty store";

    SmartAudioConfig::moveSliders(store, SmartAudioMode::custom);
    EXPECT_EQ(SmartAudioConfig::fromUserDefaults(store), expected) << "custom moves nothing";
    store.setByName("smartAudio.loudnessTargetDB", 0);
    SmartAudioConfig::moveSliders(store, SmartAudioMode::cinematic);
    EXPECT_EQ(SmartAudioConfig::fromUserDefaults(store), SmartAudioConfig::cinematic);
    EXPECT_EQ(store.storedByName("smartAudio.voiceIso"), JSON(0.7)) << "as people write it";

    store.setByName("smartAudio.voiceIso", 0);
    store.setByName("smartAudio.loudness", -1e300);
    store.setByName("smartAudio.autoHum", false);
    store.setByName("smartAudio.humFreq", 60);
    const SmartAudioConfig stored = SmartAudioConfig::fromUserDefaults(store);
    EXPECT_EQ(stored.voiceIsolationAmount, 0.0F) << "a stored 0 counts";
    EXPECT_EQ(stored.loudnessAmount, expected.loudnessAmount) << "out of range, it counts as not stored";
    EXPECT_FALSE(stored.autoHumReduction);
    EXPECT_EQ(stored.humFrequency, 60);
}

TEST(SmartAudioConfig, BlockSettingsReadFourKeys) {
    platform::MemorySettingsStore store;
    EXPECT_EQ(SmartAudioBlockSettings::fromUserDefaults(store), SmartAudioBlockSettings{});
    store.setByName("smartAudio.aggressiveness", "wild");
    store.setByName("smartAudio.blockMode", "coarse");
    store.setByName("smartAudio.loudnessTargetDB", -12.5);
    store.setByName("smartAudio.maxBoostDB", 30);
    store.setByName("smartAudio.routing", "speaker");
    SmartAudioBlockSettings expected;
    expected.routing = SmartAudioRouting::speaker;
    expected.blockMode = BlockMode::coarse;
    expected.loudnessTargetDB = -12.5;
    EXPECT_EQ(SmartAudioBlockSettings::fromUserDefaults(store), expected);

    // Music in a clip lowers the aggressiveness by one step and changes nothing else.
    using enum Aggressiveness;
    for (const auto& [before, after] :
         {std::pair{inclusive, balanced}, {balanced, conservative}, {conservative, conservative}}) {
        expected.aggressiveness = before;
        EXPECT_EQ(expected.consideringMusic(0.3F), expected);
        SmartAudioBlockSettings lowered = expected;
        lowered.aggressiveness = after;
        EXPECT_EQ(expected.consideringMusic(0.31F), lowered);
    }
}

} // namespace
} // namespace orvane
