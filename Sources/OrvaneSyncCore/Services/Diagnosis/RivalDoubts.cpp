#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClipClaims.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClipInDoubt.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/ExchangedFolders.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Services/Diagnosis/LeavingOut.h"
#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"
#include "OrvaneSyncCore/Services/Matching/MeetingOrder.h"
#include "OrvaneSyncCore/Services/Matching/TakeMembership.h"
#include "OrvaneSyncCore/Services/Matching/UnitNearness.h"
#include "OrvaneSyncCore/Services/Takes/SeparateUnits.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <optional>
#include <ranges>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;
using platform::text::formatted;

constexpr double rivalShare = 0.5; // of the overlap of the take that the clip uses, as in matching
constexpr double equalShare = 0.9; // of the part that the take covers

/// How a scan leaves out the recorder of one folder, if no clip needs it.
class OtherRecorders {
  public:
    explicit OtherRecorders(const Shoot& shoot) : shoot_(shoot), leavingOut_(shoot) {
        for (const Shoot::Clip& clip : shoot.clips)
            if (const auto heard = heardAmong(shoot, clip))
                heard_.emplace_back(clip.group, folderOf(*clip.group->audioMatches[*heard].audio));
    }

    /// `kept`: the folder of a recording that stays. Empty if no options leave out only the other folder, or
    /// if a clip whose first recording is in it may need it, because no camera showed that `kept` is right.
    const DoubtCure& without(std::string_view folder, std::string_view kept) {
        const auto [known, isNew] = cures_.try_emplace({folder, kept});
        if (isNew)
            known->second =
                cureOf(std::string(folder) + "/", std::string(kept) + "/", areHeardWith(kept, folder));
        return known->second;
    }
    /// Whether the cameras heard at least three recordings of the folder, and none of them in its place.
    bool isOutOfPlace(std::string_view folder) {
        const auto [known, isNew] = isOutOfPlace_.try_emplace(folder);
        if (isNew)
            known->second = areHeardOutOfPlace(
                shoot_, [&](const MediaAsset& recording) { return folderOf(recording) == folder; });
        return known->second;
    }
    /// Whether the cameras of several clips with recordings of both folders heard those of the first folder
    /// in place, and no camera heard those of the other.
    bool areHeardWith(std::string_view folder, std::string_view other) const {
        constexpr int fewest = 2; // each found at a clear place
        int own = 0, others = 0;
        for (const auto& heard : heard_) {
            const SyncGroup& clip = *heard.first;
            const std::string_view in = heard.second;
            const auto isIn = [&clip](std::string_view one) {
                return std::ranges::any_of(clip.audioMatches, [&](const AudioMatch& match) {
                    return folderOf(*match.audio) == one;
                });
            };
            if (!isIn(folder) || !isIn(other)) continue;
            own += in == folder ? 1 : 0;
            others += in == other ? 1 : 0;
        }
        return own >= fewest && others == 0;
    }

    /// Whether the clip's camera has sound of both folders, that of `folder` in place, as the clips of the
    /// same camera before and after this one show that were measured. At most one was measured in between,
    /// this one included, and found in neither recording.
    bool isOfClock(const Shoot::Clip& clip, std::string_view folder, std::string_view other) const {
        const auto isAsMeasured = [&](const auto& clips) {
            int missed = 0;
            for (const Shoot::Clip& one : clips) {
                if (folderOf(one.group->video) != folderOf(clip.group->video)) continue;
                const auto isIn = [](std::string_view in) {
                    return [in](const AudioMatch& match) { return folderOf(*match.audio) == in; };
                };
                const auto& matches = one.group->audioMatches;
                const auto own = std::ranges::find_if(matches, isIn(folder));
                if (own == matches.end() || std::ranges::none_of(matches, isIn(other))) continue;
                if (isHeardInPlace(shoot_, one, *own)) return true;
                const HeardClaim* heard = heardClaim(shoot_, claimInPlace(one, *own));
                if (heard == nullptr || !heard->couldHear) continue;
                if (heard->offsetSeconds || ++missed > 1) return false;
            }
            return true;
        };
        const std::span<const Shoot::Clip> all(shoot_.clips);
        const auto at = static_cast<std::size_t>(&clip - all.data());
        return isAsMeasured(all.subspan(at)) && isAsMeasured(all.first(at + 1) | std::views::reverse);
    }

    /// A recorder that the cameras of several clips heard elsewhere than in its place, by one offset.
    struct OwnClock {
        std::string offset;  ///< "1.44 s later"
        DoubtCure documents; ///< text after a cure: how a document gets its sound in place
    };
    /// Of the folder of a recording, all of whose clips are of one day; null if they did not agree.
    const OwnClock* clockOf(const MediaAsset& recording) {
        const std::string_view folder = folderOf(recording);
        const auto [known, isNew] = clocks_.try_emplace(folder);
        if (isNew) known->second = findClock(recording, folder);
        return known->second ? &*known->second : nullptr;
    }

    /// The options that leave out one or the other of two recorders of one unit, such as a cart and a bag,
    /// for any number of cameras. Empty unless all clips with sound of one recorder also have sound of the
    /// other, and each camera heard both.
    const std::string& eitherOf(std::string_view folder, std::string_view other) {
        const auto [known, isNew] = pairNames_.try_emplace({folder, other});
        if (isNew && folder != other)
            known->second = optionsForEither(std::string(folder) + "/", std::string(other) + "/");
        return known->second;
    }

  private:
    std::optional<OwnClock> findClock(const MediaAsset& recording, std::string_view folder) const {
        std::vector<double> offsets;
        for (const Shoot::Clip& clip : shoot_.clips)
            for (const AudioMatch& match : clip.group->audioMatches) {
                if (folderOf(*match.audio) != folder) continue;
                const HeardClaim* heard = heardClaim(shoot_, claimInPlace(clip, match));
                if (heard != nullptr && heard->offsetSeconds)
                    offsets.push_back(*heard->offsetSeconds - match.syncOffsetSeconds);
            }
        const auto agreed = agreementOf(std::move(offsets), explanation::fewest);
        const auto placed = shoot_.recordingByID.find(recording.id);
        if (!agreed || placed == shoot_.recordingByID.end()) return std::nullopt;
        const TimecodeFrameRate rate = rateOfLabels(shoot_);
        const HeardClock clock = heardClock(agreed->seconds, rate);
        const Card card{std::string(folder), shoot_.recordings[placed->second].place.day, {}};
        const OffsetCure cure(shoot_, rate);
        return OwnClock{offsetSpanText(std::abs(clock.seconds), rate) +
                            (clock.seconds < 0 ? " earlier" : " later"),
                        "; for a document with its sound, " +
                            cure.of(card, clock.seconds).in(cure.scanOfRecordings(card, false)) +
                            (clock.isExact ? "" : checkAClap)};
    }
    /// Whether a file is of the recorder of `folder`. The recorder's folder is the highest one that does not
    /// contain the folder of the other recorder. Both folders end with a slash.
    static std::function<bool(const MediaAsset&)> recordingsOf(const std::string& folder,
                                                               const std::string& other) {
        const auto same = std::ranges::mismatch(folder, other).in1 - folder.begin();
        const bool holdsOther = other.starts_with(folder);
        const std::string whole =
            holdsOther ? folder : folder.substr(0, folder.find('/', static_cast<std::size_t>(same)) + 1);
        return [folder, holdsOther, whole](const MediaAsset& file) {
            return file.kind == AssetKind::audio &&
                   (holdsOther ? folderOf(file) == std::string_view(folder).substr(0, folder.size() - 1)
                               : file.url.path.starts_with(whole));
        };
    }
    /// A camera's cards are folders beside each other, and the numbers in their file names continue. If file
    /// names repeat, the folders may be of several cameras, and each counts as one.
    static std::string cameraOf(const MediaAsset& video, bool doNamesRepeat) {
        const std::string_view card = folderOf(video);
        return doNamesRepeat
                   ? std::string(card)
                   : std::string(card.substr(0, card.rfind('/') + 1)) + std::string(namePattern(video));
    }
    static bool haveRepeatedNames(const std::vector<const Shoot::Clip*>& clips) {
        std::set<std::string_view> names;
        for (const Shoot::Clip* clip : clips) names.insert(clip->group->video.filename);
        return names.size() < clips.size();
    }
    std::string optionsForEither(const std::string& folder, const std::string& other) const {
        const auto isOne = recordingsOf(folder, other), isOther = recordingsOf(other, folder);
        const auto has = [](const Shoot::Clip& clip, const auto& isOf) {
            return std::ranges::any_of(clip.group->audioMatches,
                                       [&](const AudioMatch& match) { return isOf(*match.audio); });
        };
        std::vector<const Shoot::Clip*> users;
        for (const Shoot::Clip& clip : shoot_.clips) {
            if (has(clip, isOne) != has(clip, isOther)) return {};
            if (!has(clip, isOne)) continue;
            users.push_back(&clip);
        }
        const bool doNamesRepeat = haveRepeatedNames(users);
        std::map<std::string, bool> cameras; // whether it heard both in place in one clip
        for (const Shoot::Clip* clip : users) {
            const auto isHeardOf = [&](const auto& isOf) {
                return std::ranges::any_of(clip->group->audioMatches, [&](const AudioMatch& match) {
                    return isOf(*match.audio) && isHeardInPlace(shoot_, *clip, match);
                });
            };
            bool& hasHeardBoth = cameras[cameraOf(clip->group->video, doNamesRepeat)];
            hasHeardBoth = hasHeardBoth || (isHeardOf(isOne) && isHeardOf(isOther));
        }
        if (!std::ranges::all_of(cameras, [](const auto& camera) { return camera.second; })) return {};
        const auto without = leavingOut_.of(isOne), withoutOther = leavingOut_.of(isOther);
        if (!areOfOneDay(users) || !without || !withoutOther || !without->folders.empty() ||
            !withoutOther->folders.empty())
            return {};
        return DoubtCure(CureWay{without->options()}).text() + " or " +
               DoubtCure(CureWay{withoutOther->options()}).text();
    }
    DoubtCure cureOf(const std::string& folder, const std::string& kept, bool isKeptHeard) const {
        if (folder == kept) return {};
        const auto isOther = recordingsOf(folder, kept), isOfKept = recordingsOf(kept, folder);
        const auto isOthers = [&](const AudioMatch& match) { return isOther(*match.audio); };
        std::vector<const Shoot::Clip*> users;
        for (const Shoot::Clip& clip : shoot_.clips) {
            const auto& matches = clip.group->audioMatches;
            if (std::ranges::none_of(matches, isOthers)) continue;
            const auto isKept = [&](const AudioMatch& match) { return isOfKept(*match.audio); };
            if (isOthers(matches.front()) && !(isKeptHeard && std::ranges::any_of(matches, isKept)))
                return {};
            users.push_back(&clip);
        }
        if (!(areOfOneCamera(users) || (isKeptHeard && haveAllCamerasHeard(users, kept))) ||
            !areOfOneDay(users))
            return {};
        const auto options = leavingOut_.of(isOther);
        if (!options) return {};
        return DoubtCure(options->globs.empty() ? "a scan " : "") + CureWay{options->options()};
    }

    /// Each of several cameras may have a recorder of its own, unless each camera heard the kept recorder in
    /// one of its clips.
    bool haveAllCamerasHeard(const std::vector<const Shoot::Clip*>& clips, const std::string& kept) const {
        const bool doNamesRepeat = haveRepeatedNames(clips);
        std::set<std::string> cameras;
        for (const auto& [group, in] : heard_)
            if ((std::string(in) + "/").starts_with(kept))
                cameras.insert(cameraOf(group->video, doNamesRepeat));
        return std::ranges::all_of(clips, [&](const Shoot::Clip* clip) {
            return cameras.contains(cameraOf(clip->group->video, doNamesRepeat));
        });
    }
    /// Each of several cameras may have a recorder of its own.
    static bool areOfOneCamera(const std::vector<const Shoot::Clip*>& clips) {
        std::vector<const Shoot::Clip*> timed;
        for (const Shoot::Clip* clip : clips) {
            if (folderOf(clip->group->video) != folderOf(clips.front()->group->video) ||
                namePattern(clip->group->video) != namePattern(clips.front()->group->video))
                return false;
            if (clip->place) timed.push_back(clip);
        }
        const auto rangeOf = [](const Shoot::Clip* clip) { return likelyRange(*clip); };
        std::ranges::sort(timed, {}, [&](const Shoot::Clip* clip) { return rangeOf(clip).startSeconds; });
        return std::ranges::adjacent_find(timed, [&](const auto* a, const auto* b) {
                   return SyncEngine::overlapDuration(rangeOf(a), rangeOf(b)).has_value();
               }) == timed.end();
    }
    /// Two recordings at one time of day without a date may be of two days.
    bool areOfOneDay(const std::vector<const Shoot::Clip*>& clips) const {
        return std::ranges::all_of(clips, [&](const Shoot::Clip* clip) {
            std::optional<long> day;
            return std::ranges::all_of(clip->group->audioMatches, [&](const AudioMatch& match) {
                const auto found = shoot_.recordingByID.find(match.audio->id);
                if (found == shoot_.recordingByID.end()) return false;
                const auto own = shoot_.recordings[found->second].place.day;
                if (!day) day = own;
                return own && own == day;
            });
        });
    }

    const Shoot& shoot_;
    const LeavingOut leavingOut_;
    std::map<std::pair<std::string_view, std::string_view>, DoubtCure> cures_;
    /// Options, by the two folders.
    std::map<std::pair<std::string_view, std::string_view>, std::string> pairNames_;
    std::map<std::string_view, bool> isOutOfPlace_;
    std::map<std::string_view, std::optional<OwnClock>> clocks_;
    /// The folder is that of the recordings in which the clip was heard.
    std::vector<std::pair<const SyncGroup*, std::string_view>> heard_;
};

/// Units that shoot at the same time, by the folders of their sound. Clips near to such a folder have
/// recordings of it.
class SoundUnits {
  public:
    explicit SoundUnits(const Shoot& shoot) {
        for (const Shoot::Clip& clip : shoot.clips) {
            if (!clip.primary || !clip.place) continue;
            const MediaAsset& sound = *shoot.recordings[*clip.primary].asset;
            const auto nearness = folders_.of(clip.group->video, sound);
            cameras_[folderOf(clip.group->video)].push_back(nearness);
            const SyncEngine::TCRange range = likelyRange(clip);
            const auto [known, isNew] = units_.try_emplace(folderOf(sound), Unit{nearness, range});
            Unit& unit = known->second;
            if (nearness > unit.nearest) unit = {nearness, range};
            if (nearness < unit.nearest) continue;
            unit.hours.startSeconds = std::min(unit.hours.startSeconds, range.startSeconds);
            unit.hours.endSeconds = std::max(unit.hours.endSeconds, range.endSeconds);
        }
    }
    /// Whether clips that are nearer to the recording have their sound from its folder, at the time of this
    /// clip.
    bool isOfOthers(const MediaAsset& recording, const Shoot::Clip& clip) const {
        const auto unit = units_.find(folderOf(recording));
        return unit != units_.end() && clip.place &&
               unit->second.nearest > folders_.of(clip.group->video, recording) &&
               SyncEngine::overlapDuration(unit->second.hours, likelyRange(clip));
    }
    /// Whether most clips of that camera have sound that is nearer to them.
    bool mostHaveNearer(const Shoot::Clip& clip, const UnitNearness& nearness) const {
        const auto camera = cameras_.find(folderOf(clip.group->video));
        return camera != cameras_.end() && 2 * std::ranges::count_if(camera->second, [&](const auto& own) {
                                               return own > nearness;
                                           }) > std::ssize(camera->second);
    }

  private:
    struct Unit {
        UnitNearness nearest;
        SyncEngine::TCRange hours; ///< of the clips at this nearness
    };

    mutable NearnessOfFolders folders_;
    std::map<std::string_view, Unit> units_; ///< by folder of the sound
    /// Nearness of each clip's sound, by folder of the clips.
    std::map<std::string_view, std::vector<UnitNearness>> cameras_;
};

SeparateUnits separateUnits(const Shoot& shoot) {
    std::vector<SeparateUnits::Clip> clips;
    for (const Shoot::Clip& clip : shoot.clips)
        if (clip.place) clips.push_back({clip.group, clip.place->range, clip.place->knownDay()});
    return SeparateUnits(std::move(clips));
}

/// Clips that have, beside their own sound, a recording that another unit made at the same time.
class SoundOfOtherUnits {
  public:
    explicit SoundOfOtherUnits(const Shoot& shoot)
        : shoot_(shoot), leavingOut_(shoot), units_(separateUnits(shoot)) {}

    void addTo(ClipInDoubt& of) {
        const MediaAsset& own = *of.group.audioMatches.front().audio;
        for (const TakeFile& file : of.take.files) {
            const MediaAsset& other = of.fileOf(file);
            if (isHeard(file.role) || !units_.isOfOther(of.group, other) ||
                isHeardInPlace(of.shoot, of.clip, of.group.audioMatches[file.matchIndex]))
                continue;
            const std::string beside =
                shoot_.nameOf(other) + " of another unit, which ran at the same time, beside its own sound";
            of.add(Kind::ambiguous, of.name + " has " + beside + " " + shoot_.nameOf(own),
                   DoubtCure("take that recording off the clip, or lock the clip") + without(other, own),
                   "has " + beside);
            return;
        }
    }

  private:
    /// Leaves out all files of the other unit, its cameras included: they would only have this unit's sound.
    const DoubtCure& without(const MediaAsset& other, const MediaAsset& own) {
        const std::string folder = SeparateUnits::folderApart(other, own);
        const auto [known, isNew] = cures_.try_emplace(folder);
        if (!isNew) return known->second;
        const auto isOthers = [&](const MediaAsset& file) { return file.url.path.starts_with(folder); };
        std::set<UUID> clips;
        for (const Shoot::Clip& clip : shoot_.clips)
            if (const MediaAsset* sound = clip.group->primaryAudio(); sound != nullptr && isOthers(*sound))
                clips.insert(clip.group->video.id);
        const auto options =
            leavingOut_.of([&](const MediaAsset& file) { return isOthers(file) || clips.contains(file.id); });
        if (options)
            known->second = DoubtCure(options->globs.empty() ? "; a scan " : "; ") +
                            CureWay{options->options()} + " makes a document of the clip's own unit";
        return known->second;
    }

    const Shoot& shoot_;
    const LeavingOut leavingOut_;
    const SeparateUnits units_;
    std::map<std::string, DoubtCure> cures_; ///< by folder of the other unit
};

/// Recorders other than the one whose sound the clip uses.
class Rivals {
  public:
    Rivals(const Shoot& shoot, const Shoot::Clip& clip) : of_(shoot, clip) {}

    /// If two recorders ran equally long, the names of their folders decide which one is first.
    std::vector<SyncDoubt> doubts(OtherRecorders& others, const SoundUnits& units,
                                  SoundOfOtherUnits& ofOthers) {
        equalRecordings(others, units);
        if (of_.doubts.empty()) outOfPlace(others);
        if (of_.doubts.empty()) ownUnit();
        if (of_.doubts.empty()) noOwnSound(units);
        if (of_.doubts.empty()) ofOthers.addTo(of_);
        return std::move(of_.doubts);
    }

  private:
    /// What other recorders have in common with the clip, all files of a recorder together, by folder.
    std::map<std::string_view, std::vector<const AudioMatch*>> alternates() const {
        std::map<std::string_view, std::vector<const AudioMatch*>> byFolder;
        const auto candidate = [](const AudioMatch& match) {
            const double start = match.syncOffsetSeconds;
            return TakeMembership::Candidate{&*match.audio,
                                             {start, start + match.audio->durationSeconds.value_or(0)}};
        };
        for (const TakeFile& file : of_.take.files) {
            const AudioMatch& match = of_.group.audioMatches[file.matchIndex];
            const auto isCopyOf = [&](const AudioMatch& other) {
                return TakeMembership::isCutShort(candidate(match), candidate(other));
            };
            if (file.role == TakeRole::alternate && std::ranges::none_of(of_.group.audioMatches, isCopyOf))
                byFolder[folderOf(*match.audio)].push_back(&match);
        }
        return byFolder;
    }
    /// The overlap with the sound that the clip uses.
    double commonSeconds(const std::vector<const AudioMatch*>& matches) const {
        const SyncEngine::TCRange heard{
            std::max(of_.take.offsetSeconds, 0.0),
            std::min(of_.take.offsetSeconds + of_.take.durationSeconds, of_.length())};
        std::vector<SyncEngine::TCRange> ranges;
        for (const AudioMatch* match : matches) {
            const double start = std::max(match->syncOffsetSeconds, 0.0);
            ranges.push_back({start, start + match->overlapDurationSeconds});
        }
        return coveredSeconds(heard, std::move(ranges));
    }
    UnitNearness nearness(const MediaAsset& recording) const {
        return UnitNearness::of(of_.group.video, recording);
    }
    void equalRecordings(OtherRecorders& others, const SoundUnits& units) {
        const double least = heardSeconds(of_.group, of_.take) * equalShare;
        const AudioMatch& first = of_.group.audioMatches.front();
        for (const auto& [folder, matches] : alternates()) {
            if (commonSeconds(matches) < least) continue;
            // The clip uses the sound of its own unit.
            const MediaAsset& other = *matches.front()->audio;
            if (units.isOfOthers(other, of_.clip) && nearness(*first.audio) > nearness(other)) continue;
            const std::string_view own = folderOf(*first.audio);
            const bool isOtherHeard = others.areHeardWith(folder, own);
            const std::string_view kept = isOtherHeard ? folder : own;
            const DoubtCure& without = others.without(isOtherHeard ? own : folder, kept);
            const bool isKnown = isOtherHeard || others.areHeardWith(own, folder);
            const MediaAsset& left = *(isOtherHeard ? first : *matches.front()).audio;
            const auto* clock = isKnown && !without.isEmpty() ? others.clockOf(left) : nullptr;
            of_.add(Kind::ambiguous,
                    of_.shoot.nameOf(*first.audio) + " and " + of_.shoot.nameOf(*matches.front()->audio) +
                        " overlap as much of " + of_.name +
                        ", neither is clearly best, and the first one is heard" +
                        (isKnown ? "; the microphones of the cameras heard what lies in '" +
                                       std::string(kept) + "' in its place, and the other " +
                                       (clock != nullptr ? clock->offset : "not")
                                 : ""),
                    without.isEmpty() ? chooseText(others.eitherOf(own, folder))
                                      : withoutText(without, isKnown) +
                                            (clock != nullptr ? clock->documents : DoubtCure()));
            of_.doubts.back().suggestion = suggestionFor(kept, isOtherHeard ? own : folder, others);
            return;
        }
    }
    /// The recording that was measured in place; of a clip that was not measured, that of the recorder that
    /// was, if the other one is out of place.
    std::optional<SyncDoubt::Suggestion> suggestionFor(std::string_view kept, std::string_view dropped,
                                                       OtherRecorders& others) const {
        if (const auto heard = heardAmong(of_.shoot, of_.clip))
            return suggestionToChoose(of_.shoot, of_.clip, *heard);
        const auto& matches = of_.group.audioMatches;
        const auto own = std::ranges::find_if(
            matches, [&](const AudioMatch& match) { return folderOf(*match.audio) == kept; });
        const bool isOtherInPlace = std::ranges::any_of(matches, [&](const AudioMatch& match) {
            return folderOf(*match.audio) == dropped && isHeardInPlace(of_.shoot, of_.clip, match);
        });
        if (own == matches.end() || isOtherInPlace || !others.areHeardWith(kept, dropped) ||
            !others.isOutOfPlace(dropped) || !others.isOfClock(of_.clip, kept, dropped))
            return std::nullopt;
        return SyncDoubt::Suggestion{.recordingID = own->audio->id, .isAlone = true};
    }
    /// Adds a doubt about a recording that is out of its place: its sound would be an echo if it was switched
    /// on.
    void outOfPlace(OtherRecorders& others) {
        const std::string_view own = folderOf(*of_.group.audioMatches.front().audio);
        for (const auto& [folder, matches] : alternates()) {
            if (!others.areHeardWith(own, folder) || !others.isOutOfPlace(folder)) continue;
            const DoubtCure& without = others.without(folder, own);
            const DoubtCure takeOff = "take it off these clips, or lock them";
            of_.add(Kind::ambiguous,
                    of_.shoot.nameOf(*matches.front()->audio) + " lies beside the sound of " + of_.name +
                        ", and the microphones of the cameras heard what is in '" + std::string(folder) +
                        "' out of its place",
                    without.isEmpty() ? takeOff : without + " leaves that recorder out; else " + takeOff);
            of_.doubts.back().suggestion = suggestionFor(own, folder, others);
            return;
        }
    }
    /// Each of several cameras may have a recorder of its own, unless it heard both.
    static DoubtCure chooseText(const std::string& optionsForEither) {
        DoubtCure choice = cureWords::choose();
        if (optionsForEither.empty())
            return choice + " clip by clip, as another clip may need the other recording, or lock the clips" +
                   DoubtCure::Words{
                       "; where one recorder was for all cameras, leave the folder of the other one "
                       "out of the scan",
                       ""};
        return choice + ", or lock the clips; " +
               DoubtCure::Words{optionsForEither + " leaves the other recorder out",
                                "a scan without one of their folders leaves that recorder out"};
    }
    /// Of two recordings that no camera heard, the user chooses which one to leave out, so the options are
    /// only a text.
    static DoubtCure withoutText(const DoubtCure& without, bool isKnown) {
        const DoubtCure choice = cureWords::choose() + ", or lock the clips; ";
        return isKnown ? choice + without + " leaves the other recorder out"
                       : choice +
                             DoubtCure::Words{without.text() + " leaves the other recorder out",
                                              "a scan without one of their folders leaves that recorder out"};
    }

    /// For clips of which another unit's sound covers more than that of their own unit, which began late or
    /// ended early.
    void ownUnit() {
        const MediaAsset& first = *of_.group.audioMatches.front().audio;
        const double heard = heardSeconds(of_.group, of_.take);
        for (const auto& [folder, matches] : alternates()) {
            const MediaAsset& own = *matches.front()->audio;
            const double common = commonSeconds(matches);
            if (common < heard * rivalShare || nearness(own) <= nearness(first)) continue;
            of_.add(Kind::ambiguous,
                    of_.shoot.nameOf(own) + " of the clip's own unit has " + formatted("%.1f s", common) +
                        " of the " + formatted("%.1f s", heard) + " that " + of_.shoot.nameOf(first) +
                        " of another one has of " + of_.name + ", which is heard",
                    cureWords::choose() + ", or lock the clips");
            return;
        }
    }

    /// If the clip's own recorder did not run, that is no reason to use another unit's sound.
    void noOwnSound(const SoundUnits& units) {
        const MediaAsset& first = *of_.group.audioMatches.front().audio;
        const auto isAsFar = [&](const AudioMatch& match) {
            return nearness(*match.audio) <= nearness(first);
        };
        if (!units.isOfOthers(first, of_.clip) || !units.mostHaveNearer(of_.clip, nearness(first)) ||
            !std::ranges::all_of(of_.group.audioMatches, isAsFar))
            return;
        of_.addOf(Kind::ambiguous,
                  "has no sound of its own unit, and " + of_.shoot.nameOf(first) + " of another one is heard",
                  "look for a recording that is missing on the cards, or " + cureWords::choose() +
                      ", or lock the clips; if it was shot without sound, " + cureWords::skipToLeaveOut());
    }

    ClipInDoubt of_;
};

} // namespace

void addRivalDoubts(const Shoot& shoot, SyncDoubts& doubts) {
    using enum Kind;
    OtherRecorders others(shoot);
    const SoundUnits units(shoot);
    SoundOfOtherUnits ofOthers(shoot);
    const auto ofKnownUnit = addExchangedFolders(shoot, doubts);
    addFromEachClip(doubts, shoot, [&](const Shoot::Clip& clip) -> std::vector<SyncDoubt> {
        const SyncGroup& group = *clip.group;
        // If the recording itself is in doubt, one of its rivals may be right.
        if (group.audioMatches.empty() || clip.isDecided || ofKnownUnit.contains(group.id) ||
            !group.matchStatus.isSettled() || group.matchStatus.kind == MatchStatus::Kind::manual ||
            doubts.has(group.id,
                       {otherDay, otherDateFits, constantOffset, timecodeRate, notTimeOfDay, ambiguous}))
            return {};
        return Rivals(shoot, clip).doubts(others, units, ofOthers);
    });
}

} // namespace orvane
