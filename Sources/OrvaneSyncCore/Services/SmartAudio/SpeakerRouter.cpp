#include "OrvaneSyncCore/Services/SmartAudio/SpeakerRouter.h"

#include "OrvaneSyncCore/Services/SmartAudio/BlockSmoothing.h"
#include "OrvaneSyncCore/Services/SmartAudio/ChannelClassifier.h"
#include "OrvaneSyncCore/Services/SmartAudio/RoutingWindows.h"
#include "OrvaneSyncCore/Services/SmartAudio/Segmentation.h"
#include "OrvaneSyncCore/Services/SmartAudio/SpeakerLevels.h"
#include "OrvaneSyncCore/Services/SmartAudio/TakeDefault.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane::SmartAudioBlockRouter {

namespace {

constexpr std::size_t fewestPeople = 2;
/// Each track is compared with each other one; a recording with more tracks has other kinds of channels as
/// well.
constexpr std::size_t mostPeople = 32;

/// The microphones that record several people, by any role.
class SharedTracks {
  public:
    explicit SharedTracks(const std::vector<ChannelClassification>& classifications)
        : ignoresBooms_(ChannelClassifier::areGuessedBoomsAlone(classifications)) {}

    bool contain(const ChannelClassification& track) const {
        return (track.kind == ChannelKind::boom && !ignoresBooms_) || track.kind == ChannelKind::mix ||
               track.isPreMixed;
    }

  private:
    bool ignoresBooms_;
};

// The cost of a window is 0 on the speaker's lavalier and 1 on one that is this far behind; linear in
// between.
constexpr double plainlyBehindDB = 6.0;
/// The cost, on any lavalier, of a window in which no one speaks: a long pause becomes a block of its own.
constexpr double pauseCost = 0.08;
// The cost of a switch, in windows: in a pause, and the addition in the middle of speech.
constexpr double switchCost = 1.5;
constexpr double switchInSpeechCost = 1.5;
/// The cost of not playing a person who has no other block.
constexpr double unheardCost = 50;
// A person is taken to speak if they lead clearly in this many windows in a row.
constexpr std::size_t fewestWindowsOfSpeaker = 2;

// A guessed boom or mix that is this far ahead of all lavaliers in that many windows with speech is a
// lavalier. A boom may be ahead for a moment, when someone without a lavalier laughs.
constexpr double clearlyAheadDB = 2;
constexpr double leastShareAhead = 0.1;
constexpr std::size_t fewestWindowsAhead = 8;

std::string reasonOf(const SpeakerLevels& levels, std::size_t person, std::size_t first, std::size_t end) {
    double sum = 0, weight = 0;
    for (std::size_t window = first; window < end; ++window) {
        sum += levels.presence(window) * levels.leadDB(window, person);
        weight += levels.presence(window);
    }
    const std::string name = trackName(levels.track(person));
    if (!(weight > 0)) return "speaker: " + name;
    return "speaker: " + name + " leads by " + formatted("%+.1f", sum / weight) + " dB";
}

/// Costs by window and choice; the last choice means that no one speaks.
SegmentCosts costsOf(const SpeakerLevels& levels) {
    const std::size_t people = levels.people();
    SegmentCosts costs(levels.windows(), people + 1);
    for (std::size_t window = 0; window < levels.windows(); ++window) {
        const double presence = levels.presence(window);
        double best = -1e9;
        for (std::size_t person = 0; person < people; ++person)
            best = std::max(best, levels.leadDB(window, person));
        for (std::size_t person = 0; person < people; ++person) {
            const double behind =
                std::clamp((best - levels.leadDB(window, person)) / plainlyBehindDB, 0.0, 1.0);
            costs.at(window, person) = presence * behind + (1 - presence) * pauseCost;
        }
        costs.at(window, people) = presence;
        costs.setSwitchCost(window, switchCost + switchInSpeechCost * presence);
    }
    return costs;
}

/// For each person who speaks but has no block, makes this person the only choice in the range where they
/// speak most clearly. The range is a block's length away from the ranges of others. Returns whether there
/// was such a person.
bool requireTheUnheard(const SpeakerLevels& levels, const std::vector<Segment>& segments,
                       std::size_t shortest, std::vector<bool>& isTaken, SegmentCosts& costs) {
    bool isRequired = false;
    for (std::size_t person = 0; person < levels.people(); ++person) {
        if (std::ranges::any_of(segments, [&](const Segment& one) { return one.choice == person; })) continue;
        const auto stretch = levels.clearestStretch(person, fewestWindowsOfSpeaker, isTaken);
        if (!stretch) continue;
        isRequired = true;
        for (std::size_t window = stretch->first; window < stretch->end; ++window)
            for (std::size_t other = 0; other <= levels.people(); ++other)
                if (other != person) costs.at(window, other) += unheardCost;
        const std::size_t end = std::min(stretch->end + shortest, isTaken.size());
        for (std::size_t window = stretch->first - std::min(stretch->first, shortest); window < end; ++window)
            isTaken[window] = true;
    }
    return isRequired;
}

/// Repeated, as a new block for one person may replace the only block of another.
std::vector<Segment> segmentsOf(const SpeakerLevels& levels, std::size_t shortest) {
    constexpr int mostRounds = 4;
    SegmentCosts costs = costsOf(levels);
    std::vector<bool> isTaken(levels.windows());
    std::vector<Segment> segments = cheapestSegments(costs, shortest);
    for (int round = 0; round < mostRounds; ++round) {
        if (!requireTheUnheard(levels, segments, shortest, isTaken, costs)) break;
        segments = cheapestSegments(costs, shortest);
    }
    return segments;
}

/// Whether the track is ahead of all others for long enough to be one person's microphone.
bool isAhead(const SpeakerLevels& levels, std::size_t person) {
    std::size_t spoken = 0, ahead = 0;
    for (std::size_t window = 0; window < levels.windows(); ++window) {
        if (levels.presence(window) <= 0.5) continue;
        ++spoken;
        if (levels.leadDB(window, person) > clearlyAheadDB) ++ahead;
    }
    return ahead >= fewestWindowsAhead &&
           static_cast<double>(ahead) >= leastShareAhead * static_cast<double>(spoken);
}

} // namespace

std::vector<ChannelClassification> withoutRefutedGuesses(std::vector<ChannelClassification> classifications,
                                                         const TakeStatistics& channelStats,
                                                         std::span<const PerWindowFrame> frames) {
    const SharedTracks shared(classifications);
    const auto isDoubtful = [&](const ChannelClassification& one) {
        return shared.contain(one) && ChannelClassifier::isGuessed(one);
    };
    std::vector<int> tracks;
    std::vector<ChannelClassification*> roles;
    for (ChannelClassification& one : classifications)
        if (channelStats.contains(one.trackIndex) && (!shared.contain(one) || isDoubtful(one))) {
            tracks.push_back(one.trackIndex);
            roles.push_back(&one);
        }
    if (tracks.size() < fewestPeople || tracks.size() > mostPeople ||
        std::ranges::none_of(roles, [&](const auto* one) { return isDoubtful(*one); }))
        return classifications;
    const SpeakerLevels levels(tracks, frames);
    for (std::size_t person = 0; person < roles.size(); ++person)
        if (isDoubtful(*roles[person]) && isAhead(levels, person)) roles[person]->kind = ChannelKind::lav;
    return classifications;
}

std::vector<int> personalTracks(const TakeStatistics& channelStats,
                                const std::vector<ChannelClassification>& classifications) {
    const SharedTracks shared(classifications);
    std::vector<int> tracks;
    for (const ChannelClassification& one : classifications)
        if (!shared.contain(one) && channelStats.contains(one.trackIndex)) tracks.push_back(one.trackIndex);
    return tracks;
}

bool isRoutedBySpeaker(SmartAudioRouting routing, const TakeStatistics& channelStats,
                       const std::vector<ChannelClassification>& classifications) {
    if (routing == SmartAudioRouting::takeDefault) return false;
    const std::size_t people = personalTracks(channelStats, classifications).size();
    if (people < fewestPeople || people > mostPeople) return false;
    if (routing == SmartAudioRouting::speaker) return true;
    const ClassificationByTrack classified = byTrack(classifications);
    const SharedTracks shared(classifications);
    return std::ranges::none_of(classifications, [&](const ChannelClassification& one) {
        const auto stats = channelStats.find(one.trackIndex);
        return shared.contain(one) && stats != channelStats.end() &&
               qualifiesAsDefault(stats->second, classified);
    });
}

std::vector<BlockDecision> buildBlocksBySpeaker(const std::vector<int>& tracks,
                                                std::span<const PerWindowFrame> frames, double windowSeconds,
                                                double minBlockSeconds) {
    const SpeakerLevels levels(tracks, frames);
    if (!levels.hasSpeech()) return {};
    const std::vector<Segment> segments =
        segmentsOf(levels, wholeWindows(minBlockSeconds, windowSeconds, frames.size()));

    std::vector<BlockDecision> blocks;
    blocks.reserve(segments.size());
    // A pause at the beginning gets the track of the first speaker.
    const auto isSpoken = [&](const Segment& one) { return one.choice < levels.people(); };
    const auto firstSpoken = std::ranges::find_if(segments, isSpoken);
    int track = levels.track(firstSpoken == segments.end() ? 0 : firstSpoken->choice);
    for (const Segment& one : segments) {
        if (isSpoken(one)) track = levels.track(one.choice);
        blocks.push_back(
            {.startSeconds = static_cast<double>(one.first) * windowSeconds,
             .endSeconds = static_cast<double>(one.end) * windowSeconds,
             .activeTrack = track,
             .secondaryTrack = std::nullopt,
             .kind = isSpoken(one) ? BlockKind::lav : BlockKind::silence,
             .gainMultiplier = 1.0,
             .peakDB = silentLevelDB,
             .reason = isSpoken(one) ? reasonOf(levels, one.choice, one.first, one.end) : "nobody speaks"});
    }
    for (BlockDecision& block : blocks)
        if (block.kind == BlockKind::silence) {
            const WindowRange range =
                windowsBetween(block.startSeconds, block.endSeconds, windowSeconds, frames.size());
            block.peakDB =
                levelDB(highestPeak(frames.subspan(range.first, range.end - range.first), block.activeTrack),
                        windowLevelFloor);
        }
    return blocks;
}

} // namespace orvane::SmartAudioBlockRouter
