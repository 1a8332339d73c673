#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/SyncDoubts.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Support/Assets.h"
#include "Support/RandomSeed.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <span>

namespace orvane::test::doubts {

using Kind = SyncDoubt::Kind;
using Random = std::mt19937;

inline double within(Random& random, double from, double to) {
    return std::uniform_real_distribution<double>(from, to)(random);
}

inline std::uint64_t samples(double seconds) {
    return static_cast<std::uint64_t>(std::llround(seconds * 48000));
}

inline MediaAsset recordingAt(const std::string& path, double start, double seconds) {
    MediaAsset made(FileURL{path}, AssetKind::audio);
    made.bextTimeReference = samples(start);
    made.sampleRate = 48000;
    made.durationSeconds = seconds;
    return made;
}

inline MediaAsset clipAt(const std::string& path, double start, double seconds,
                         TimecodeFrameRate rate = TimecodeFrameRate::fps25) {
    MediaAsset made(FileURL{path}, AssetKind::video);
    made.startTimecodeString = TimecodeUtils::secondsToTC(start, rate);
    made.timecodeFrameRate = rate;
    made.durationSeconds = seconds;
    return made;
}

/// A shoot, its matching and its doubts.
struct Shot {
    std::vector<MediaAsset> videos, audios;
    std::map<std::string, std::string> soundOf; ///< by name of the clip; only clips that have sound

    SyncGroupList groups = {};
    SyncDoubts doubts = {};

    void derive(const MatchRules& rules = {}, TrimMode trim = TrimMode::commonDuration) {
        FileNames names;
        for (const MediaAsset& file : videos) names.add(file);
        for (const MediaAsset& file : audios) names.add(file);
        DoubtInput input{groups, audios, rules, trim, {}, names};
        input.timecodeChannel = timecodeChannel;
        doubts = SyncDoubts::of(input);
    }
    void diagnose(const MatchRules& rules = {}, TrimMode trim = TrimMode::commonDuration) {
        groups = SyncEngine().match(videos, audios, rules);
        derive(rules, trim);
        if (!settlesAll && locks.empty() && !locksWhatIsHeard) return;
        for (SyncGroup group : groups) {
            if (settlesAll && group.matchStatus.kind == MatchStatus::Kind::ambiguous)
                group.matchStatus = MatchStatus::manual();
            group.isLocked = locksWhatIsHeard ? !group.isMOS() : group.video.filename == locks;
            groups.update(group.id, [&](SyncGroup& own) { own = group; });
        }
        derive(rules, trim);
    }
    std::optional<int> timecodeChannel = {}; ///< as in `DoubtInput`
    bool settlesAll = false;                 ///< settles ambiguous clips by their first recording
    std::string locks = {};                  ///< the clip of this name
    bool locksWhatIsHeard = false;
    void date(std::span<MediaAsset> files, const char* day, std::size_t from = 0) {
        for (std::size_t i = from; i < files.size(); ++i)
            files[i].contentCreatedDate = dateFromISO8601(std::string(day) + "T00:00:00Z");
    }
    int count(Kind kind) const {
        int found = 0;
        for (const auto& [id, own] : doubts.byGroup)
            found += std::ranges::count(own, kind, &SyncDoubt::kind) > 0;
        return found;
    }
    std::optional<CardDoubt> card(Kind kind) const {
        for (const CardDoubt& card : doubts.cards)
            if (card.doubt.kind == kind) return card;
        return std::nullopt;
    }
};

/// A day of takes with pauses between them. `soundShare`: of the clips that have sound.
inline void shootADay(Shot& shot, Random& random, int takes, const std::string& name, double soundShare = 1) {
    double at = within(random, 7, 9) * 3600;
    for (int take = 1; take <= takes; ++take) {
        const double seconds = within(random, 20, 90);
        const std::string number = name + "_" + std::to_string(take);
        shot.videos.push_back(clipAt("/CAM/A" + number + ".mov", at, seconds));
        if (within(random, 0, 1) < soundShare) {
            const double before = within(random, 2, 15), after = within(random, 2, 15);
            shot.audios.push_back(
                recordingAt("/SOUND/T" + number + ".wav", at - before, seconds + before + after));
            shot.soundOf["A" + number + ".mov"] = "T" + number + ".wav";
        }
        at += seconds + within(random, 40, 900);
    }
}

/// Splits some recordings into two files, as when the first one is full.
inline void splitTakes(Shot& shot, Random& random) {
    const auto whole = shot.audios;
    for (std::size_t i = 0; i < whole.size(); ++i) {
        if (within(random, 0, 1) < 0.5) continue;
        const double first = std::round(within(random, 0.3, 0.7) * *whole[i].durationSeconds);
        MediaAsset rest = recordingAt(whole[i].url.path + "_2.wav", 0, *whole[i].durationSeconds - first);
        rest.bextTimeReference = *whole[i].bextTimeReference + samples(first);
        rest.contentCreatedDate = whole[i].contentCreatedDate;
        shot.audios[i].durationSeconds = first;
        shot.audios.push_back(rest);
    }
}

} // namespace orvane::test::doubts
