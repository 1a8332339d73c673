#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Chance.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"
#include "OrvaneSyncCore/Services/Matching/AssetPlacement.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "OrvaneSyncCore/Utilities/RateText.h"
#include "Platform/Stop.h"
#include "Timecode/TimecodeFrameRate.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <optional>
#include <set>
#include <utility>

namespace orvane {

namespace {

constexpr double aFrameSeconds = 1.0 / 24; // shorter at any higher rate

/// Timecode that was counted at another rate than the files state.
class RateDoubts {
  public:
    RateDoubts(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts)
        : shoot_(shoot), doubts_(doubts), clips_(clips), rate_(rateOfLabels(shoot)) {}

    bool add(std::vector<SoundClaim>* toHear) {
        const auto rate = otherRate();
        if (!rate) return false;
        const auto heard = heardAtOneOffset(rate->found, toHear);
        // The doubts about clocks then report that offset.
        if (heard.isConfirmed()) return false;
        addRate(*rate, heard);
        return true;
    }

  private:
    struct Explained : Found {
        /// Offsets at which the recordings would lie under all of these clips at the current rates as well;
        /// empty if the end is before the start.
        SyncEngine::TCRange offsets{-std::numeric_limits<double>::infinity(),
                                    std::numeric_limits<double>::infinity()};
        /// The clips, and their recordings as in `WholeRecordings`.
        std::vector<std::pair<const Shoot::Clip*, std::size_t>> pairs = {};

        bool fitsOneOffset() const { return offsets.startSeconds <= offsets.endSeconds; }
        double offset() const { return std::round((offsets.startSeconds + offsets.endSeconds) / 2); }
    };
    struct Rate {
        TimecodeFrameRate rate;
        Explained found;
    };

    /// The rate at which most clips without sound find it, if labels that count equally were read at another
    /// rate: 23.976 as 24, drop frame as non-drop.
    std::optional<Rate> otherRate() const {
        const double now = static_cast<double>(clips_.evidence.size() - clips_.uncovered.size());
        if (static_cast<double>(clips_.evidence.size()) <= explanation::clearly * now) return std::nullopt;
        const double share = soundShare(shoot_, clips_.evidence);
        std::optional<Rate> best;
        int most = explanation::fewest - 1;
        for (const auto candidate : ratesCountingAs(rate_)) {
            if (candidate == shoot_.input.rules.timecodeRate || isRefutedByEar(candidate)) continue;
            platform::throwIfStopped(shoot_.stop);
            const auto [all, without] = foundAt(candidate);
            // Drop frame and 30 keep to one clock but for some frames: the one that a file states is right.
            const bool isRather =
                best && without.clips == most && isStated(candidate) && !isStated(best->rate);
            if ((without.clips <= most && !isRather) || without.recordings < explanation::fewest) continue;
            if (without.clips < explanation::majority * static_cast<double>(clips_.uncovered.size()) ||
                all.clips <= explanation::clearly * now ||
                chance::atLeast(without.clips, static_cast<int>(clips_.uncovered.size()), share) >
                    chance::smallest)
                continue;
            most = without.clips;
            best = Rate{candidate, without};
        }
        return best;
    }
    bool isStated(TimecodeFrameRate rate) const {
        const auto states = [rate](const MediaAsset& file) { return file.timecodeFrameRate == rate; };
        return std::ranges::any_of(shoot_.clips,
                                   [&](const Shoot::Clip& clip) { return states(clip.group->video); }) ||
               std::ranges::any_of(shoot_.recordings,
                                   [&](const Recording& recording) { return states(*recording.asset); });
    }
    /// Whether sound was heard at one distance from its place at the current rates, which shows no drift, and
    /// at several distances from its place at this rate.
    bool isRefutedByEar(TimecodeFrameRate rate) const {
        if (shoot_.input.heardLags == nullptr) return false;
        std::vector<double> asRead, atRate;
        for (const Shoot::Clip* clip : clips_.all) {
            if (!clip->primary || clip->group->manualAudioOffsetSeconds != 0) continue;
            const AudioMatch& match = clip->group->audioMatches.front();
            const auto lag = shoot_.input.heardLags->find(match.id);
            const auto sound = AssetPlacement(*match.audio, rate).range();
            const auto picture = AssetPlacement(clip->group->video, rate).range();
            if (lag == shoot_.input.heardLags->end() || !sound || !picture) continue;
            asRead.push_back(lag->second.seconds);
            const double start = sound->startSeconds - picture->startSeconds;
            atRate.push_back(
                std::remainder(match.syncOffsetSeconds + lag->second.seconds - start, secondsADay));
        }
        return agreementOf(asRead, explanation::fewest, 0) && !agreementOf(atRate, explanation::fewest, 0);
    }
    /// Whether the cameras heard the recordings at one distance from their places at the current rates. At
    /// another rate the distance would grow with the time of day.
    ClaimedOffset::Heard heardAtOneOffset(const Explained& found, std::vector<SoundClaim>* toHear) const {
        if (!found.fitsOneOffset()) return {};
        ClaimedOffset claimed(shoot_, (found.offsets.endSeconds - found.offsets.startSeconds) / 2);
        for (const auto& [clip, whole] : found.pairs) {
            const double start = shoot_.wholes.places[whole].range.startSeconds + found.offset() -
                                 clip->place->range.startSeconds;
            const std::size_t part = shoot_.wholes.partAt(whole, -start);
            claimed.add(*clip, part, start + shoot_.wholes.startsAt[part]);
        }
        return claimed.heard(toHear);
    }
    static bool areApart(const FilePlace& a, const FilePlace& b) {
        constexpr double aFrame = 0.01; // shorter than a frame at any rate
        return std::abs(a.range.startSeconds - b.range.startSeconds) > aFrame;
    }
    /// For all clips, and for those without sound.
    std::pair<Explained, Explained> foundAt(TimecodeFrameRate rate) const {
        MatchRules rules = shoot_.input.rules;
        rules.timecodeRate = rate;
        Places places(rules);
        Covers covers(rules.days);
        std::vector<bool> isMoved(shoot_.recordings.size());
        std::vector<double> starts(shoot_.recordings.size()); // seconds since midnight
        for (std::size_t i = 0; i < shoot_.recordings.size(); ++i)
            if (auto place = places.of(*shoot_.recordings[i].asset)) {
                place->day = shoot_.recordings[i].place.day;
                isMoved[i] = areApart(*place, shoot_.recordings[i].place);
                place->range.endSeconds =
                    place->range.startSeconds + shoot_.wholes.places[i].range.durationSeconds();
                starts[i] = place->range.startSeconds;
                if (shoot_.wholes.isFirst(i)) covers.add(*place, i);
            }
        covers.finish();
        std::set<std::size_t> used;
        Explained all, without;
        for (const Shoot::Clip* clip : clips_.evidence) {
            auto place = places.of(clip->group->video);
            if (place) place->day = clip->place->day;
            const auto sound = place ? covers.of(*place) : std::nullopt;
            if (!sound) continue;
            ++all.clips;
            // If the recording lies under the clip when both are read at the current rates, something else
            // keeps them from matching.
            if (clip->isCovered || !(isMoved[*sound] || areApart(*place, *clip->place))) continue;
            ++without.clips;
            without.pairs.emplace_back(clip, *sound);
            used.insert(shoot_.wholes.partAt(
                *sound, std::remainder(place->range.startSeconds - starts[*sound], secondsADay)));
            const SyncEngine::TCRange &stays = shoot_.wholes.places[*sound].range,
                                      &clipStays = clip->place->range;
            without.offsets.startSeconds = std::max(
                without.offsets.startSeconds, clipStays.endSeconds - stays.endSeconds - coverSlackSeconds);
            without.offsets.endSeconds = std::min(
                without.offsets.endSeconds, clipStays.startSeconds - stays.startSeconds + coverSlackSeconds);
        }
        without.recordings = static_cast<int>(used.size());
        return {all, without};
    }
    void addRate(const Rate& rate, const ClaimedOffset::Heard& heard) {
        const std::string text = rateText(rate.rate);
        const auto concerned = concernedBy(rate.rate);
        // Timecode that was set once and runs at the rate that it states is as likely, unless the cameras
        // heard several distances.
        std::string offsetFits;
        DoubtCure cure(CureOption::Kind::timecodeRate, text);
        if (heard.isUnasked) {
            offsetFits = cureWords::oneOffsetFitsToo;
            cure = cureWords::listenForTheRate();
        } else if (rate.found.fitsOneOffset() && heard.spreadSeconds == 0) {
            const double offset = rate.found.offset();
            offsetFits = "; with the recordings moved by about " + offsetSpanText(std::abs(offset), rate_) +
                         (offset < 0 ? " earlier" : " later") + " they would as well";
            cure += ", then check a clap early and one late on the card; where both are off, and not "
                    "alike, " +
                    DoubtCure(CureOption::Kind::soundOffset,
                              offsetText(offset + shoot_.input.rules.soundOffsetSeconds, rate_))
                        .in(aloneIn(concerned)) +
                    " instead";
        }
        addCardDoubt(doubts_,
                     {SyncDoubt::Kind::timecodeRate,
                      "clips and recordings drift apart with the time of day; with timecode that counts " +
                          text + " frames a second, " + std::to_string(rate.found.clips) + " of " +
                          counted(clips_.uncovered.size(), "clip", "clips") +
                          " without all of their sound would match" + offsetFits,
                      std::move(cure)},
                     concerned);
    }
    /// The scan for an offset that would also move the sound of the other clips; absent if there are none.
    std::optional<CureScan> aloneIn(const std::vector<const Shoot::Clip*>& clips) const {
        const std::string_view folder = folderOf(clips.front()->group->video);
        const auto isIn = [&](const Shoot::Clip* clip) { return folderOf(clip->group->video) == folder; };
        if (clips.size() == clips_.all.size() || !std::ranges::all_of(clips, isIn)) return std::nullopt;
        return OffsetCure(shoot_, rate_).scanOfClips({std::string(folder), std::nullopt, {}});
    }
    /// Clips that are not covered, and clips whose sound would move: they may have their sound because of the
    /// wrong rate.
    std::vector<const Shoot::Clip*> concernedBy(TimecodeFrameRate rate) const {
        MatchRules rules = shoot_.input.rules;
        rules.timecodeRate = rate;
        Places places(rules);
        const auto stays = [&](const Shoot::Clip* clip) {
            if (!clip->isCovered || !clip->primary) return false;
            const Recording& own = shoot_.recordings[*clip->primary];
            const auto picture = places.of(clip->group->video), sound = places.of(*own.asset);
            if (!picture || !sound) return false;
            const auto between = [](const FilePlace& first, const FilePlace& second) {
                return second.range.startSeconds - first.range.startSeconds;
            };
            return std::abs(between(*picture, *sound) - between(*clip->place, own.place)) <= aFrameSeconds;
        };
        std::vector<const Shoot::Clip*> concerned;
        std::ranges::remove_copy_if(clips_.all, std::back_inserter(concerned), stays);
        return concerned;
    }

    const Shoot& shoot_;
    SyncDoubts& doubts_;
    const TimedClips& clips_;
    TimecodeFrameRate rate_;
};

} // namespace

bool addRateDoubt(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts,
                  std::vector<SoundClaim>* toHear) {
    return RateDoubts(shoot, clips, doubts).add(toHear);
}

void addGivenRateDoubt(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts) {
    const MatchRules& rules = shoot.input.rules;
    if (!rules.timecodeRate || rules.soundOffsetSeconds != 0) return;
    std::vector<const Shoot::Clip*> moved; // relative to each other, compared with the rates that they state
    // Of these clips, and of those with equal places at both rates.
    std::set<std::string_view> folders, staying;
    std::set<std::size_t> used;
    double first = -std::numeric_limits<double>::infinity(), last = -first;
    int heard = 0, audible = 0;
    platform::StopCheck check(shoot.stop);
    for (const Shoot::Clip* clip : clips.all) {
        check();
        if (!clip->isCovered || !clip->primary) continue;
        const AudioMatch& match = clip->group->audioMatches.front();
        if (shoot.input.heardLags != nullptr && shoot.input.heardLags->contains(match.id)) ++heard;
        const auto picture = AssetPlacement(clip->group->video).range();
        const auto sound = AssetPlacement(*match.audio).range();
        if (!picture || !sound) continue;
        const double start = std::remainder(sound->startSeconds - picture->startSeconds, secondsADay);
        const std::string_view folder = folderOf(clip->group->video);
        if (std::abs(start - match.syncOffsetSeconds) <= aFrameSeconds) {
            staying.insert(folder);
            continue;
        }
        moved.push_back(clip);
        if (isAudible(*clip)) ++audible;
        folders.insert(folder);
        used.insert(*clip->primary);
        first = std::max(first,
                         picture->durationSeconds() - (start + sound->durationSeconds()) - coverSlackSeconds);
        last = std::min(last, coverSlackSeconds - start);
    }
    // If no offset is needed, the rate does not decide whether clips find sound.
    if (heard >= explanation::fewest || std::cmp_less(moved.size(), explanation::fewest) ||
        std::cmp_less(used.size(), explanation::fewest) || first > last || (first <= 0 && last >= 0))
        return;
    // An offset would also move the sound of the other clips.
    if (!staying.empty() && (folders.size() > 1 || staying.contains(*folders.begin()))) return;
    const double offset = std::round((first + last) / 2);
    // Recordings that count samples have no label to which the rate of the clips applies.
    const TimecodeFrameRate stated = labelRate(moved.front()->group->video);
    const bool isStatedByAll = std::ranges::all_of(moved, [&](const Shoot::Clip* clip) {
        return labelRate(clip->group->video) == stated && shoot.recordings[*clip->primary].isCounted;
    });
    DoubtCure instead = "a scan without the rate";
    if (isStatedByAll) {
        CureWay way{{{CureOption::Kind::timecodeRate, rateText(stated)},
                     {CureOption::Kind::soundOffset, offsetText(offset, stated)}}};
        if (!staying.empty())
            way.scan =
                OffsetCure(shoot, stated).scanOfClips({std::string(*folders.begin()), std::nullopt, {}});
        instead = std::move(way);
    }
    // Microphones measure the offset, which timecode shows only roughly.
    const bool isUnasked = shoot.input.heardLags == nullptr && audible >= explanation::fewest;
    const std::string by = isUnasked ? "one offset"
                                     : "about " + offsetSpanText(std::abs(offset), stated) +
                                           (offset < 0 ? " earlier" : " later");
    addCardDoubt(
        doubts,
        {SyncDoubt::Kind::timecodeRate,
         counted(moved.size(), "clip has its sound", "clips have their sound") + " by timecode that counts " +
             rateText(*rules.timecodeRate) +
             " frames a second, and would have it as well by what the files "
             "state, with the recordings moved by " +
             by,
         isUnasked ? cureWords::listenForTheRate()
                   : "check a clap early and one late on the card, and lock the clips where both are right; "
                     "where they are off, and not alike, " +
                         instead},
        moved);
}

} // namespace orvane
