#include "../Diagnosis/Shot.h"
#include "MediaFactory/LTCSignal.h"
#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncCore/Services/Waveform/SoundLag.h"
#include "OrvaneSyncCore/Services/Waveform/SoundPlace.h"
#include "Support/RandomSeed.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace orvane::test {
namespace {

constexpr int rate = 8000;

/// Noise that is louder and softer like speech.
std::vector<float> soundOf(unsigned seed, double seconds) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> level(-50, -10), noise(-1, 1);
    std::vector<float> samples(static_cast<std::size_t>(seconds * rate));
    float gain = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (i % (rate * 3 / 10) == 0) gain = std::pow(10.0F, level(random) / 20);
        samples[i] = gain * noise(random);
    }
    return samples;
}

TEST(SoundLag, IsFoundByTheCamerasOwnMicrophone) {
    const TemporaryDirectory folder;
    constexpr double takeSeconds = 25, clipSeconds = 12, startsAt = 6; // startsAt: in the take
    struct Case {
        const char* name;
        double lag; ///< from the place by timecode
        std::optional<double> heard;
        unsigned camera = 1; ///< which sound it hears; that of the recording is 1
        float gain = 0.1F, noise = 0.002F;
    };
    const std::vector<Case> cases{
        {"in its place", 0, 0},
        {"2.5 s late", 2.5, -2.5},
        {"4.3 s early", -4.3, 4.3},
        {"6.5 s early", -6.5, 6.5},
        {"6.5 s early, too much noise for that", -6.5, std::nullopt, 1, 0.001F, 0.1F},
        {"under the noise of the camera", 2.5, std::nullopt, 1, 0.001F, 0.1F},
        {"a camera without sound", 2.5, std::nullopt, 1, 0, 0},
        {"another sound", 0, std::nullopt, 2},
    };
    for (const unsigned seed : seeds(2)) {
        const auto make = [&](const std::string& name, const std::vector<float>& samples) {
            WaveMaker()
                .format({.channels = 1, .sampleRate = rate})
                .samples(samples)
                .writeTo(folder.path(name));
            return FileURL{folder.path(name)};
        };
        const auto take = soundOf(seed, takeSeconds);
        const FileURL recording = make("take.wav", take);
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> noise(-1, 1);
        std::vector<SoundLag::Pair> pairs;
        for (const Case& one : cases) {
            const auto source = one.camera == 1 ? take : soundOf(seed + one.camera, takeSeconds);
            std::vector<float> heard;
            for (std::size_t i = 0; i < static_cast<std::size_t>(clipSeconds * rate); ++i)
                heard.push_back(one.gain * source[i + static_cast<std::size_t>(startsAt * rate)] +
                                one.noise * noise(random));
            pairs.push_back({UUID::random(), make("camera" + std::to_string(pairs.size()) + ".wav", heard),
                             recording, one.lag - startsAt});
        }
        const auto lags = SoundLag::heard(pairs).lags;
        for (std::size_t i = 0; i < cases.size(); ++i) {
            const auto found = lags.find(pairs[i].matchID);
            ASSERT_EQ(found != lags.end(), cases[i].heard.has_value()) << cases[i].name << ", seed " << seed;
            if (!cases[i].heard) continue;
            EXPECT_NEAR(found->second.seconds, *cases[i].heard, 0.011) << cases[i].name;
        }
        // The same if only claims, and no matches, give the places of the recordings.
        SyncGroupList groups;
        std::vector<SoundClaim> claims;
        MediaAsset sound(recording, AssetKind::audio);
        for (const SoundLag::Pair& pair : pairs) {
            groups.append(SyncGroup(MediaAsset(pair.camera, AssetKind::video), {}, MatchStatus::unmatched()));
            claims.push_back({groups[groups.size() - 1].id, sound.id, pair.offsetSeconds});
        }
        const HeardClaims there = SoundLag::heardClaims(groups, {sound}, claims);
        for (std::size_t i = 0; i < cases.size(); ++i) {
            const HeardClaim& own = there.at(claims[i].key());
            const bool isSilent = cases[i].gain == 0 || cases[i].noise > cases[i].gain;
            EXPECT_EQ(own.couldHear, !isSilent) << cases[i].name;
            ASSERT_EQ(own.offsetSeconds.has_value(), cases[i].camera == 1 && !isSilent) << cases[i].name;
            EXPECT_NEAR(own.offsetSeconds.value_or(-startsAt), -startsAt, 0.011) << cases[i].name;
        }
        const double speed = 1.001; // the recording has 0.1 % more samples than its time
        std::vector<float> slow;
        const auto steady = soundOf(seed, 70);
        for (std::size_t i = 0; static_cast<double>(i) < 65 * rate * speed; ++i)
            slow.push_back(steady[static_cast<std::size_t>(static_cast<double>(i) / speed)]);
        const FileURL camera = make("long.wav", {steady.begin(), steady.begin() + std::ptrdiff_t{60} * rate});
        for (const bool isSlow : {true, false}) {
            const FileURL heard = make("sound.wav", isSlow ? slow : steady);
            const auto one = SoundLag::heard({{UUID(), camera, heard, 0, 60}}).lags;
            ASSERT_EQ(one.size(), 1U);
            EXPECT_NEAR(one.begin()->second.drift.value_or(1), isSlow ? -0.001 : 0, 0.0002) << seed;
        }
        pairs.assign(5, pairs[1]);
        for (SoundLag::Pair& pair : pairs) pair.matchID = UUID::random();
        EXPECT_EQ(SoundLag::heard(pairs).lags.size(), 3U) << "the others would say the same";
    }
}

TEST(SoundLag, TimecodeOnOneChannelDoesNotHideTheMicrophoneOnAnother) {
    const TemporaryDirectory folder;
    const auto take = soundOf(1, 25);
    const auto timecode = LTCSignal{.sampleRate = rate}.samples(900000, 25);
    const auto make = [&](const std::string& name, std::size_t from, std::size_t seconds, float gain) {
        std::vector<float> both;
        for (std::size_t i = 0; i < seconds * rate; ++i)
            both.insert(both.end(), {timecode[i], gain * take[i + from * rate]});
        WaveMaker().format({.channels = 2, .sampleRate = rate}).samples(both).writeTo(folder.path(name));
        return FileURL{folder.path(name)};
    };
    const SoundLag::Pair pair{UUID(), make("camera.wav", 6, 12, 0.1F), make("take.wav", 0, 25, 1), -3.6};
    const auto lags = SoundLag::heard({pair}).lags;
    ASSERT_EQ(lags.size(), 1U);
    EXPECT_NEAR(lags.begin()->second.seconds, -2.4, 0.011);
}

/// Takes at equal intervals; a wrong clock puts each take under the clip of the next one.
TEST(SoundLag, OtherTakesAreHeardUnderClipsFromWhereTheClockIsWrong) {
    constexpr int takes = 9;
    constexpr double apart = 150;
    struct Case {
        const char* name;
        int wrongFrom; ///< first take with a wrong clock
        bool isOther;  ///< the cameras hear nothing that was recorded
        std::size_t elsewhere, mostHeard;
        double late = apart;
        bool areAlike = false; ///< all takes have the same song, which is louder than the voices
    };
    for (const Case& one :
         {Case{"right", takes, false, 0, 3}, Case{"all wrong", 0, false, 3, 3},
          Case{"from the middle on", 4, false, 3, 9}, Case{"3 s late from there on", 4, false, 0, 8, 3},
          Case{"all wrong, of one song", 0, false, 2, 6, apart, true},
          Case{"right, of one song", takes, false, 0, 3, apart, true},
          Case{"across a street", 0, true, 0, 0}}) {
        const TemporaryDirectory folder;
        std::vector<MediaAsset> clips, recordings;
        for (int i = 0; i < takes; ++i) {
            const auto seed = static_cast<unsigned>(i + 1);
            const auto make = [&](const std::string& name, const std::vector<float>& samples) {
                WaveMaker()
                    .format({.channels = 1, .sampleRate = rate})
                    .samples(samples)
                    .writeTo(folder.path(name));
                return folder.path(name);
            };
            auto take = soundOf(seed, 22);
            const auto song = soundOf(takes + 1, 22);
            for (std::size_t k = 0; one.areAlike && k < take.size(); ++k) take[k] = 0.3F * take[k] + song[k];
            auto heard = soundOf(seed + 100, 15);
            if (!one.isOther) heard = {take.begin() + 3 * rate, take.begin() + 18 * rate};
            const std::string number = std::to_string(i) + ".wav";
            const double at = 36000 + apart * i;
            clips.push_back(doubts::clipAt(make("A" + number, heard), at, 15));
            clips.back().channelCount = 1;
            recordings.push_back(doubts::recordingAt(make("T" + number, take),
                                                     at - 3 + (i >= one.wrongFrom ? one.late : 0), 22));
        }
        const SyncGroupList groups = SyncEngine().match(clips, recordings, {});
        const HeardSound heard = SoundLag::heardWithNeighbours(
            groups, SoundLag::pairsToHear(groups), SoundLag::RecordingNeighbours(groups, recordings, {}));
        EXPECT_GE(heard.elsewhere.size(), one.elsewhere) << one.name;
        EXPECT_LE(heard.elsewhere.size() + heard.lags.size(), one.mostHeard) << one.name;
        for (const SyncGroup& group : groups) {
            if (group.isMOS()) continue;
            const UUID& match = group.audioMatches.front().id;
            const char number = group.video.filename[1];
            const bool isRight = group.primaryAudio()->filename[1] == number;
            EXPECT_FALSE((isRight ? heard.elsewhere.contains(match) : heard.lags.contains(match)))
                << one.name;
            const auto found = heard.elsewhere.find(match);
            if (found == heard.elsewhere.end()) continue;
            EXPECT_NEAR(found->second.seconds, -apart, 0.011);
            const auto other = std::ranges::find(recordings, found->second.recordingID, &MediaAsset::id);
            ASSERT_NE(other, recordings.end());
            EXPECT_EQ(other->filename[1], number);
        }
        if (one.late < apart) {
            for (const int i : {3, 4}) // the last one before the change, and the first one after it
                EXPECT_NEAR(heard.lags.at(groups[i].audioMatches.front().id).seconds, i < 4 ? 0 : -3, 0.011);
        } else if (one.wrongFrom == 4 && !one.isOther) {
            EXPECT_TRUE(heard.lags.contains(groups[3].audioMatches.front().id));
            EXPECT_TRUE(heard.elsewhere.contains(groups[5].audioMatches.front().id));
        }
    }
}

TEST(SoundPlace, NeedsOtherPlacesToCompareWith) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> level(-50, -10);
    std::vector<float> take(6000); // a minute
    for (std::size_t i = 0; i < take.size(); ++i) take[i] = i % 30 == 0 ? level(random) : take[i - 1];
    const auto camera = std::span(take).subspan(1500, 2000);
    const auto found = SoundPlace::anywhere(camera, take);
    ASSERT_TRUE(found && found->isPlain);
    EXPECT_NEAR(found->seconds, -15, 0.011);
    EXPECT_FALSE(SoundPlace::anywhere(camera, camera));
}

TEST(SoundLag, MinutesOfALongRecordingAreSearchedAndOtherSpeechIsDistinguishedFromNoise) {
    const TemporaryDirectory folder;
    const auto make = [&](const std::string& name, const std::vector<float>& samples) {
        WaveMaker().format({.channels = 1, .sampleRate = rate}).samples(samples).writeTo(folder.path(name));
        return FileURL{folder.path(name)};
    };
    const auto take = soundOf(1, 700);
    const FileURL recording = make("take.wav", take);
    constexpr std::ptrdiff_t from = 350 * rate, length = 20 * rate;
    std::vector<float> noise(length);
    std::mt19937 random(3);
    for (float& sample : noise) sample = std::uniform_real_distribution<float>(-0.1F, 0.1F)(random);
    const std::vector<FileURL> cameras{make("own.wav", {take.begin() + from, take.begin() + from + length}),
                                       make("other.wav", soundOf(2, 20)), make("noise.wav", noise)};
    std::vector<SoundLag::Pair> pairs;
    for (const FileURL& camera : cameras) pairs.push_back({UUID::random(), camera, recording, -150, 20});
    const HeardSound heard = SoundLag::heard(pairs);
    ASSERT_EQ(heard.lags.size(), 1U);
    EXPECT_NEAR(heard.lags.at(pairs[0].matchID).seconds, -200, 0.011);
    EXPECT_EQ(heard.unheard, std::unordered_set<UUID>{pairs[1].matchID});
}

} // namespace
} // namespace orvane::test
