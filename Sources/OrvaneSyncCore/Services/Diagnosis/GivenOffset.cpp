#include "OrvaneSyncCore/Services/Diagnosis/CardTimes.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClipClaims.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/CommonOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

namespace {

/// Seconds between the clip's sound and the sound that its camera heard; absent if it was not measured.
std::optional<double> heardLag(const Shoot& shoot, const Shoot::Clip& clip) {
    const auto* heard = shoot.input.heardLags;
    if (heard == nullptr) return std::nullopt;
    const auto found = heard->find(clip.group->audioMatches.front().id);
    return found != heard->end() ? std::optional(found->second.seconds) : std::nullopt;
}

/// Whether a decision of the user or a microphone confirms the place of the clip's sound.
bool isChecked(const Shoot& shoot, const Shoot::Clip& clip) {
    if (clip.isDecided || clip.group->manualAudioOffsetSeconds != 0) return true;
    const auto lag = heardLag(shoot, clip);
    return lag && std::abs(*lag) < inPlaceSeconds;
}

/// The cards of recordings, without the given offset. Each is tried with the clips that have its sound.
class StatedPlaces {
  public:
    StatedPlaces(const Shoot& shoot, SyncDoubts& doubts)
        : shoot_(shoot), doubts_(doubts), given_(shoot.input.rules.soundOffsetSeconds),
          rate_(rateOfLabels(shoot)) {}

    /// Adds a doubt for each card that the cameras heard at the places that its files state.
    void addHeard(std::vector<SoundClaim>* toHear) {
        forEachCard([&](const Card& card, const Clips& clips) {
            if (clips.checked >= explanation::fewest) return;
            ClaimedOffset claimed(shoot_, coverSlackSeconds);
            const CardTimes times(shoot_, card);
            const Cover stated = times.coverAt(-given_);
            for (const Shoot::Clip* clip : clips.unchecked)
                if (const auto sound = times.covered(stated, *clip)) {
                    const double start =
                        times.range(sound->whole).startSeconds - given_ - sound->clip.startSeconds;
                    const std::size_t part = shoot_.wholes.partAt(sound->whole, -start);
                    claimed.add(*clip, part, start + shoot_.wholes.startsAt[part]);
                }
            if (const auto heard = claimed.heard(toHear); heard.isConfirmed()) addHeardAt(card, clips, heard);
        });
    }
    /// Adds a doubt for each card whose recordings lie under about as many clips without the offset.
    void addUnsupported() {
        if (!isOfAWrongHour(given_, rate_)) return;
        forEachCard([&](const Card& card, const Clips& clips) {
            if (clips.checked >= explanation::fewest) return;
            const CardTimes times(shoot_, card);
            const Cover moved = times.coverAt(0), stated = times.coverAt(-given_);
            int with = 0, without = 0;
            for (const Shoot::Clip& clip : shoot_.clips) {
                if (!clip.place || clip.group->isExcludedFromExport || !times.mayOverlap(clip)) continue;
                with += times.covered(moved, clip) ? 1 : 0;
                without += times.covered(stated, clip) ? 1 : 0;
            }
            if (with == 0 || with > explanation::clearly * without) return;
            const bool isUnasked = shoot_.input.heardLags == nullptr &&
                                   std::ranges::any_of(clips.unchecked, [](const Shoot::Clip* clip) {
                                       return isAudible(*clip);
                                   });
            const std::string lock = "lock three clips that are right";
            DoubtCure cure =
                DoubtCure::Words{"check a clap; where it is off, leave --sound-offset out, else " + lock,
                                 "check a clap; where it is off, remove the offset, else " + lock};
            if (isUnasked)
                cure = DoubtCure::Words{"compare it with the sound of the cameras ('diagnose' does), or ",
                                        "compare it with the sound of the cameras with “Listen to the "
                                        "Cards”, or "} +
                       cure;
            addCardDoubt(doubts_,
                         {SyncDoubt::Kind::constantOffset,
                          "only the given offset of " + offsetSpanText(std::abs(given_), rate_) +
                              " says where " + nameOfCard(card, shoot_) + " lie: with it they lie under " +
                              counted(with, "clip", "clips") + ", and without it under " +
                              std::to_string(without),
                          std::move(cure)},
                         clips.unchecked);
        });
    }

  private:
    /// Those that have sound of one card.
    struct Clips {
        std::vector<const Shoot::Clip*> unchecked;
        int checked = 0;
    };
    template <class Use>
    void forEachCard(const Use& use) {
        if (given_ == 0) return;
        const std::vector<Card> cards = cardsOfRecorders(shoot_);
        for (const Card& card : cards) {
            platform::throwIfStopped(shoot_.stop);
            Clips clips;
            for (const Shoot::Clip& clip : shoot_.clips) {
                if (!clip.place || !clip.primary || clip.group->isExcludedFromExport ||
                    !isOn(card, shoot_, *shoot_.recordings[*clip.primary].asset))
                    continue;
                if (isChecked(shoot_, clip))
                    ++clips.checked;
                else
                    clips.unchecked.push_back(&clip);
            }
            const bool isInDoubt = std::ranges::any_of(clips.unchecked, [&](const Shoot::Clip* clip) {
                return doubts_.has(clip->group->id,
                                   {SyncDoubt::Kind::constantOffset, SyncDoubt::Kind::timecodeRate});
            });
            if (!clips.unchecked.empty() && !isInDoubt) use(card, clips);
        }
    }
    void addHeardAt(const Card& card, const Clips& clips, const ClaimedOffset::Heard& heard) {
        // Without the offset, a card whose clips were heard in place would be wrong.
        const bool isRightForOthers = std::ranges::any_of(shoot_.clips, [&](const Shoot::Clip& clip) {
            const auto lag = clip.primary ? heardLag(shoot_, clip) : std::nullopt;
            return lag && std::abs(*lag) < inPlaceSeconds &&
                   !isOn(card, shoot_, *shoot_.recordings[*clip.primary].asset);
        });
        const double correction = heard.correctionSeconds.value_or(0);
        const HeardClock clock =
            std::abs(correction) < inPlaceSeconds ? HeardClock{0, true} : heardClock(correction, rate_);
        const OffsetCure cure(shoot_, rate_);
        addCardDoubt(doubts_,
                     {SyncDoubt::Kind::constantOffset,
                      "the microphones of the cameras heard " + nameOfCard(card, shoot_) + " under " +
                          counted(heard.clips, "clip", "clips") +
                          " where the files place them, without the given offset of " +
                          offsetSpanText(std::abs(given_), rate_),
                      cure.of(card, clock.seconds - given_)
                              .in(isRightForOthers ? cure.scanOfRecordings(card, false) : std::nullopt) +
                          (clock.isExact ? "" : checkAClap)},
                     clips.unchecked);
    }

    const Shoot& shoot_;
    SyncDoubts& doubts_;
    double given_;
    TimecodeFrameRate rate_;
};

} // namespace

void addStatedPlaces(const Shoot& shoot, SyncDoubts& doubts) {
    StatedPlaces(shoot, doubts).addHeard(nullptr);
}

void addStatedPlaceClaims(const Shoot& shoot, SyncDoubts& doubts, std::vector<SoundClaim>& toHear) {
    StatedPlaces(shoot, doubts).addHeard(&toHear);
}

void addGivenOffset(const Shoot& shoot, SyncDoubts& doubts) {
    const double given = shoot.input.rules.soundOffsetSeconds;
    const TimecodeFrameRate rate = rateOfLabels(shoot);
    if (given == 0) return;
    if (isOfAWrongHour(given, rate)) return StatedPlaces(shoot, doubts).addUnsupported();
    std::vector<const Shoot::Clip*> clips;
    std::vector<OffsetWindow> windows;
    int checked = 0, audible = 0;
    platform::StopCheck check(shoot.stop);
    for (const Shoot::Clip& clip : shoot.clips) {
        check();
        if (!clip.place || !clip.primary || clip.group->isExcludedFromExport) continue;
        if (isChecked(shoot, clip)) {
            ++checked;
            continue;
        }
        if (!clip.isCovered) continue;
        if (doubts.has(clip.group->id, {SyncDoubt::Kind::constantOffset, SyncDoubt::Kind::timecodeRate,
                                        SyncDoubt::Kind::drift}))
            return;
        if (isAudible(clip)) ++audible;
        const FilePlace& sound = shoot.wholes.places[*clip.primary];
        if (const auto window = windowOf(clip, sound, clips.size())) {
            windows.push_back(*window);
            clips.push_back(&clip);
        }
    }
    // If the clips' own sound was not analysed, there is no doubt yet: 'diagnose' analyses it.
    const bool isUnasked = shoot.input.heardLags == nullptr && audible >= explanation::fewest;
    if (checked >= explanation::fewest || isUnasked || std::cmp_less(clips.size(), explanation::fewest))
        return;
    const CommonOffset known{given, deepest(windows, clips.size()).likelyWidthSeconds};
    if (!known.isGuess(rate)) return;
    const auto elsewhere =
        std::ranges::count_if(clips, [&](const auto* clip) { return heardLag(shoot, *clip).has_value(); });
    const std::string heard = elsewhere > 0 ? "; the microphones of the cameras heard that of " +
                                                  counted(elsewhere, "clip", "clips") + " elsewhere"
                                            : "";
    addCardDoubt(doubts,
                 {SyncDoubt::Kind::constantOffset,
                  "the sound of " + counted(clips.size(), "clip", "clips") + " lies by an offset of " +
                      offsetSpanText(std::abs(given), rate) + " that only timecode suggests" +
                      known.knownTo(rate) + heard,
                  DoubtCure::Words{"check a clap, give the offset that it shows as --sound-offset, and lock "
                                   "three clips that are right",
                                   "check a clap, move three clips by hand, and lock those that are right"}},
                 clips);
    for (const Shoot::Clip* clip : clips)
        if (const auto lag = heardLag(shoot, *clip);
            lag &&
            haveNoOtherSound(shoot, {clip}, shoot.recorderOf(*clip->group->audioMatches.front().audio)))
            doubts.byGroup[clip->group->id].back().suggestion =
                SyncDoubt::Suggestion{.offsetSeconds = *lag - microphoneDelaySeconds};
}

} // namespace orvane
