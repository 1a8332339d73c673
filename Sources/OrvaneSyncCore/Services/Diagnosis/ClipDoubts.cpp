#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClipClaims.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/LeavingOut.h"
#include "OrvaneSyncCore/Services/Matching/ClipRate.h"
#include "OrvaneSyncCore/Services/Matching/MeetingOrder.h"
#include "OrvaneSyncCore/Services/Matching/SplitRecordingDetector.h"
#include "OrvaneSyncCore/Services/Matching/TakeMembership.h"
#include "OrvaneSyncCore/Services/Matching/UnitNearness.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "OrvaneSyncCore/Utilities/RateText.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"
#include "Timecode/Timecode.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <utility>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;

// A camera that rolls a moment longer than the recorder is no fault.
constexpr double missingSoundSeconds = 1;
constexpr double cutSeconds = 0.5;
// Starts by timecode are rounded to a frame at either side.
constexpr double smallestGapSeconds = 0.1;
constexpr double louderDB = 12;
constexpr double ambiguityShare = 0.5; // of the best overlap, as matching has it
constexpr double equalShare = 0.9;     // of what the take covers
constexpr float someSpeech = 0.1F;     // share of the windows

// Drop frame keeps to the clock but for a few frames a day.
constexpr double smallestDriftSeconds = 0.1;

/// By the recorder's flag, else by the text of its rate. A rate that says neither is read as drop frame by
/// habit, which says nothing of the recorder.
std::optional<bool> countsDropFrame(const MediaAsset& sound) {
    if (!sound.ixmlData) return std::nullopt;
    for (const auto& said : {sound.ixmlData->timecodeFlag, sound.ixmlData->timecodeRate}) {
        const std::string text = platform::text::uppercased(said.value_or(""));
        if (text.find("DF") != std::string::npos) return text.find("NDF") == std::string::npos;
    }
    return std::nullopt;
}

/// How long labels take to count one.
double secondsOfAnHour(TimecodeFrameRate rate) { return Timecode({.hours = 1}, rate).realTimeValue(); }

DoubtCure option(TrimMode mode) {
    return {CureOption::Kind::setting,
            std::string(settings::trimMode.key) + "=" + std::string(rawValue(mode))};
}

/// How the recorder of one folder is left out of a scan, where no clip needs it.
class OtherRecorders {
  public:
    explicit OtherRecorders(const Shoot& shoot) : shoot_(shoot), leavingOut_(shoot) {}

    /// `kept`: the folder of a recording that stays. Empty where nothing leaves the other one alone out, and
    /// where it may be the right one for some of the clips.
    const DoubtCure& without(std::string_view folder, std::string_view kept) {
        const auto [known, isNew] = cures_.try_emplace({folder, kept});
        if (isNew) known->second = cureOf(std::string(folder) + "/", std::string(kept) + "/");
        return known->second;
    }

  private:
    DoubtCure cureOf(const std::string& folder, const std::string& kept) const {
        if (folder == kept) return {};
        // Its recorder's folder is the highest one that the other does not lie in.
        const auto same = std::ranges::mismatch(folder, kept).in1 - folder.begin();
        const bool holdsKept = kept.starts_with(folder);
        const std::string whole =
            holdsKept ? folder : folder.substr(0, folder.find('/', static_cast<std::size_t>(same)) + 1);
        const auto isOther = [&](const MediaAsset& file) {
            return file.kind == AssetKind::audio &&
                   (holdsKept ? folderOf(file) == std::string_view(folder).substr(0, folder.size() - 1)
                              : file.url.path.starts_with(whole));
        };
        const auto isOthers = [&](const AudioMatch& match) { return isOther(*match.audio); };
        std::vector<const Shoot::Clip*> users;
        for (const Shoot::Clip& clip : shoot_.clips) {
            const auto& matches = clip.group->audioMatches;
            if (std::ranges::none_of(matches, isOthers)) continue;
            if (isOthers(matches.front())) return {};
            users.push_back(&clip);
        }
        if (!areOfOneCamera(users) || !areOfOneDay(users)) return {};
        const auto options = leavingOut_.of(isOther);
        if (!options) return {};
        return DoubtCure(options->globs.empty() ? "a scan " : "") + CureWay{options->options()};
    }

    /// Each camera of several may have a recorder of its own.
    static bool areOfOneCamera(const std::vector<const Shoot::Clip*>& clips) {
        std::vector<const Shoot::Clip*> timed;
        for (const Shoot::Clip* clip : clips) {
            if (folderOf(clip->group->video) != folderOf(clips.front()->group->video) ||
                namePattern(clip->group->video) != namePattern(clips.front()->group->video))
                return false;
            if (clip->place) timed.push_back(clip);
        }
        const auto rangeOf = [](const Shoot::Clip* clip) { return onLine(clip->likelyPlace()); };
        std::ranges::sort(timed, {}, [&](const Shoot::Clip* clip) { return rangeOf(clip).startSeconds; });
        return std::ranges::adjacent_find(timed, [&](const auto* a, const auto* b) {
                   return SyncEngine::overlapDuration(rangeOf(a), rangeOf(b)).has_value();
               }) == timed.end();
    }
    /// Two recordings that lie at one time of day without saying of which day may be of two.
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
};

/// Units that shoot at once, by the folders of their sound: clips near to such a folder have it, too.
class SoundUnits {
  public:
    explicit SoundUnits(const Shoot& shoot) {
        for (const Shoot::Clip& clip : shoot.clips) {
            if (!clip.primary || !clip.place) continue;
            const MediaAsset& sound = *shoot.recordings[*clip.primary].asset;
            const auto nearness = UnitNearness::of(clip.group->video, sound);
            cameras_[folderOf(clip.group->video)].push_back(nearness);
            const SyncEngine::TCRange range = onLine(clip.likelyPlace());
            const auto [known, isNew] = units_.try_emplace(folderOf(sound), Unit{nearness, range});
            Unit& unit = known->second;
            if (nearness > unit.nearest) unit = {nearness, range};
            if (nearness < unit.nearest) continue;
            unit.hours.startSeconds = std::min(unit.hours.startSeconds, range.startSeconds);
            unit.hours.endSeconds = std::max(unit.hours.endSeconds, range.endSeconds);
        }
    }
    /// Clips that are nearer to the recording have their sound from its folder, while this clip was filmed.
    bool isOfOthers(const MediaAsset& recording, const Shoot::Clip& clip) const {
        const auto unit = units_.find(folderOf(recording));
        return unit != units_.end() && clip.place &&
               unit->second.nearest > UnitNearness::of(clip.group->video, recording) &&
               SyncEngine::overlapDuration(unit->second.hours, onLine(clip.likelyPlace()));
    }
    /// Most clips of that camera have sound that is nearer to them.
    bool mostHaveNearer(const Shoot::Clip& clip, const UnitNearness& nearness) const {
        const auto camera = cameras_.find(folderOf(clip.group->video));
        return camera != cameras_.end() && 2 * std::ranges::count_if(camera->second, [&](const auto& own) {
                                               return own > nearness;
                                           }) > std::ssize(camera->second);
    }

  private:
    struct Unit {
        UnitNearness nearest;
        SyncEngine::TCRange hours; ///< of the clips that lie as near
    };

    std::map<std::string_view, Unit> units_;                        ///< by folder of the sound
    std::map<std::string_view, std::vector<UnitNearness>> cameras_; ///< by folder, of the clips' sound
};

/// The doubts about one clip by itself.
class ClipDoubts {
  public:
    ClipDoubts(const Shoot& shoot, const Shoot::Clip& clip)
        : shoot_(shoot), clip_(clip), group_(*clip.group), name_(shoot.nameOf(clip.group->video)),
          take_(takeOf(*clip.group, assumedChannels)) {}

    /// Two recorders that ran as long: which one comes first is decided by their folders' names.
    std::vector<SyncDoubt> rivals(OtherRecorders& others, const SoundUnits& units) {
        equalRecordings(others, units);
        if (doubts_.empty()) ownUnit();
        if (doubts_.empty()) noOwnSound(units);
        return std::move(doubts_);
    }
    std::vector<SyncDoubt> all(bool mayChooseFirst) {
        labelOutsideOfRate(group_.video);
        if (group_.isMOS()) return std::move(doubts_);
        labelOutsideOfRate(*group_.primaryAudio());
        ambiguous(mayChooseFirst);
        dropMix();
        otherRate();
        if (group_.matchStatus.isSettled()) {
            shortSound();
            cutByTrim();
            splitGap();
            mutedSpeech();
        }
        return std::move(doubts_);
    }

  private:
    /// `reason`: as that of a doubt.
    void add(Kind kind, std::string message, DoubtCure cure, std::string reason = {}) {
        doubts_.push_back({kind, std::move(message), std::move(cure), {}, std::move(reason)});
    }
    /// What begins with the name of the clip.
    void addOf(Kind kind, const std::string& about, DoubtCure cure) {
        add(kind, name_ + " " + about, std::move(cure), about);
    }
    double length() const { return clip_.place ? clip_.place->range.durationSeconds() : 0; }
    const MediaAsset& fileOf(const TakeFile& file) const {
        return *group_.audioMatches[file.matchIndex].audio;
    }

    void labelOutsideOfRate(const MediaAsset& file) {
        if (!file.startTimecodeString || file.bextTimeReference.value_or(0) != 0) return;
        auto rate = labelRate(file);
        const auto label = Timecode::fromString(*file.startTimecodeString, rate);
        if (!label) return;
        const auto frame = label->components().frames;
        const auto& corrected = shoot_.input.rules.timecodeRate;
        if (corrected && frame < timecodeRate::maxFrames(*corrected)) rate = *corrected;
        if (frame < timecodeRate::maxFrames(rate)) return;
        const int fitting = frame < 25 ? 25 : frame < 30 ? 30 : 60;
        add(Kind::timecodeRate,
            "the timecode " + *file.startTimecodeString + " of " + shoot_.nameOf(file) + " has frame " +
                std::to_string(frame) + ", and it is read at " +
                std::to_string(timecodeRate::maxFrames(rate)) + " frames a second",
            DoubtCure(CureOption::Kind::timecodeRate, std::to_string(fitting)) +
                ", or the rate at which the timecode was made");
    }

    /// Nobody listened to clips that were settled all at once, and where a date is missing their first
    /// recording may be another day's.
    bool wasAmbiguous() const {
        if (group_.matchStatus.kind != MatchStatus::Kind::manual || !clip_.place || !clip_.primary)
            return false;
        if (clip_.place->day && shoot_.recordings[*clip_.primary].place.day) return false;
        const double least = heardSeconds(group_, take_) * ambiguityShare;
        return std::ranges::any_of(take_.files, [&](const TakeFile& file) {
            return file.role == TakeRole::alternate &&
                   group_.audioMatches[file.matchIndex].overlapDurationSeconds < least;
        });
    }
    /// `mayChooseFirst`: no camera of the shoot heard another one than what its clip lists first.
    void ambiguous(bool mayChooseFirst) {
        if (clip_.isDecided) return;
        const bool isSettled = wasAmbiguous();
        if (group_.matchStatus.kind != MatchStatus::Kind::ambiguous && !isSettled) return;
        std::string files;
        constexpr std::size_t most = 3;
        for (std::size_t i = 0; i < std::min(most, group_.audioMatches.size()); ++i) {
            const AudioMatch& match = group_.audioMatches[i];
            files += (i > 0 ? ", " : "") + shoot_.nameOf(*match.audio) + " " +
                     formatted("%.1f s", match.overlapDurationSeconds);
        }
        const std::string about = std::to_string(group_.audioMatches.size()) + " recordings overlap " +
                                  name_ + " of " + formatted("%.1f s", length()) +
                                  " and none is clearly best: ";
        const auto heard = heardAmong(shoot_, clip_);
        if (heard)
            files +=
                "; the microphone of the camera heard " + shoot_.nameOf(*group_.audioMatches[*heard].audio);
        DoubtCure choice = heard && !mayChooseFirst
                               ? cureWords::choose(shoot_.nameOf(*group_.audioMatches[*heard].audio))
                               : cureWords::choose();
        if (!isSettled && !group_.isLocked && mayChooseFirst)
            choice += ", or take the first of each with " + DoubtCure(CureOption::Kind::choose, "first");
        add(Kind::ambiguous, about + files,
            isSettled ? DoubtCure("take off what does not belong to it, or lock the clip")
            : group_.isLocked
                ? DoubtCure("the clip is locked without a recording and left out of the document: unlock "
                            "it, then ") +
                      choice
                : choice,
            files);
    }

    /// What another recorder has in common with the clip, all of its files together, by folder.
    std::map<std::string_view, std::vector<const AudioMatch*>> alternates() const {
        std::map<std::string_view, std::vector<const AudioMatch*>> byFolder;
        const auto candidate = [](const AudioMatch& match) {
            const double start = match.syncOffsetSeconds;
            return TakeMembership::Candidate{&*match.audio,
                                             {start, start + match.audio->durationSeconds.value_or(0)}};
        };
        for (const TakeFile& file : take_.files) {
            const AudioMatch& match = group_.audioMatches[file.matchIndex];
            const auto isCopyOf = [&](const AudioMatch& other) {
                return TakeMembership::isCutShort(candidate(match), candidate(other));
            };
            if (file.role == TakeRole::alternate && std::ranges::none_of(group_.audioMatches, isCopyOf))
                byFolder[folderOf(*match.audio)].push_back(&match);
        }
        return byFolder;
    }
    /// Of what is heard of the take.
    double commonSeconds(const std::vector<const AudioMatch*>& matches) const {
        const SyncEngine::TCRange heard{std::max(take_.offsetSeconds, 0.0),
                                        std::min(take_.offsetSeconds + take_.durationSeconds, length())};
        std::vector<SyncEngine::TCRange> ranges;
        for (const AudioMatch* match : matches) {
            const double start = std::max(match->syncOffsetSeconds, 0.0);
            ranges.push_back({start, start + match->overlapDurationSeconds});
        }
        return coveredSeconds(heard, std::move(ranges));
    }
    UnitNearness nearness(const MediaAsset& recording) const {
        return UnitNearness::of(group_.video, recording);
    }
    void equalRecordings(OtherRecorders& others, const SoundUnits& units) {
        const double least = heardSeconds(group_, take_) * equalShare;
        const AudioMatch& first = group_.audioMatches.front();
        for (const auto& [folder, matches] : alternates()) {
            if (commonSeconds(matches) < least) continue;
            // The sound of the clip's own unit is heard.
            const MediaAsset& other = *matches.front()->audio;
            if (units.isOfOthers(other, clip_) && nearness(*first.audio) > nearness(other)) continue;
            const DoubtCure& without = others.without(folder, folderOf(*first.audio));
            add(Kind::ambiguous,
                shoot_.nameOf(*first.audio) + " and " + shoot_.nameOf(*matches.front()->audio) +
                    " overlap as much of " + name_ + ", neither is clearly best, and the first one is heard",
                without.isEmpty()
                    ? cureWords::choose() + " clip by clip, as another clip may need the other recording, or "
                                            "lock the clips"
                    : cureWords::choose() + ", or lock the clips; " + without +
                          " leaves the other recorder out");
            return;
        }
    }

    /// Another unit's sound lies under more of the clip than that of its own, which began late or ended
    /// early.
    void ownUnit() {
        const MediaAsset& first = *group_.audioMatches.front().audio;
        const double heard = heardSeconds(group_, take_);
        for (const auto& [folder, matches] : alternates()) {
            const MediaAsset& own = *matches.front()->audio;
            const double common = commonSeconds(matches);
            if (common < heard * ambiguityShare || nearness(own) <= nearness(first)) continue;
            add(Kind::ambiguous,
                shoot_.nameOf(own) + " of the clip's own unit has " + formatted("%.1f s", common) +
                    " of the " + formatted("%.1f s", heard) + " that " + shoot_.nameOf(first) +
                    " of another one has of " + name_ + ", which is heard",
                cureWords::choose() + ", or lock the clips");
            return;
        }
    }

    /// A recorder that did not run is no reason to hear another unit's.
    void noOwnSound(const SoundUnits& units) {
        const MediaAsset& first = *group_.audioMatches.front().audio;
        const auto isAsFar = [&](const AudioMatch& match) {
            return nearness(*match.audio) <= nearness(first);
        };
        if (!units.isOfOthers(first, clip_) || !units.mostHaveNearer(clip_, nearness(first)) ||
            !std::ranges::all_of(group_.audioMatches, isAsFar))
            return;
        addOf(Kind::ambiguous,
              "has no sound of its own unit, and " + shoot_.nameOf(first) + " of another one is heard",
              "look for a recording that is missing on the cards, or " + cureWords::choose() +
                  ", or lock the clips");
    }

    static DoubtCure rateFor(std::string rate) { return {CureOption::Kind::timecodeRate, std::move(rate)}; }
    /// Only what both files say of themselves counts.
    void dropMix() {
        if (shoot_.input.rules.timecodeRate) return;
        const auto& own = group_.video.timecodeFrameRate;
        const MediaAsset& sound = *group_.primaryAudio();
        if (!own || !sound.timecodeFrameRate) return;
        const auto isDropped = countsDropFrame(sound);
        if (!isDropped || timecodeRate::rate(*own) != timecodeRate::rate(*sound.timecodeFrameRate) ||
            timecodeRate::isDrop(*own) == *isDropped)
            return;
        const auto kind = [](bool isDrop) { return isDrop ? "drop frame" : "non-drop"; };
        addOf(Kind::dropMix,
              std::string("counts ") + kind(!*isDropped) + " and " + shoot_.nameOf(sound) + " " +
                  kind(*isDropped) + "; equal timecodes lie 3.6 s apart after each hour",
              rateFor("29.97DF") + " or " + rateFor("29.97NDF") + ", whichever all were meant to count");
    }

    /// Labels of one family that were counted at two rates drift apart from midnight on. A start in samples
    /// was made from such a label at the recorder's rate.
    void otherRate() {
        if (shoot_.input.rules.timecodeRate || !clip_.place || clip_.isDecided) return;
        const auto& own = group_.video.timecodeFrameRate;
        const MediaAsset& sound = *group_.primaryAudio();
        if (!own || !sound.timecodeFrameRate || !sound.ixmlData || !sound.ixmlData->timecodeRate) return;
        const auto rateOfSound = timecodeRate::rate(*sound.timecodeFrameRate);
        if (timecodeRate::maxFrames(*own) != timecodeRate::maxFrames(*sound.timecodeFrameRate) ||
            timecodeRate::rate(*own) == rateOfSound)
            return;
        const auto other = timecodeRate::from(rateOfSound, countsDropFrame(sound).value_or(false))
                               .value_or(*sound.timecodeFrameRate);
        const double start = clip_.place->range.startSeconds;
        const double drift = start * std::abs(secondsOfAnHour(other) / secondsOfAnHour(*own) - 1);
        if (drift < smallestDriftSeconds || drift * timecodeRate::rate(*own).doubleValue() < 1) return;
        addOf(Kind::timecodeRate,
              "counts " + rateText(*own) + " frames a second and " + shoot_.nameOf(sound) + " " +
                  rateText(other) + ": where they agree on the timecode, they lie " + spanText(drift) +
                  " apart at " + spanText(start) + " after midnight",
              rateFor(rateText(*own)) + " or " + rateFor(rateText(other)) +
                  ", whichever all were meant to count");
    }

    void shortSound() {
        // Whoever cuts to the sound knows that it is shorter.
        if (shoot_.input.trimMode == TrimMode::overlap) return;
        if (!clip_.place || clip_.isUnplaced || clip_.atMidnight != nullptr || group_.video.isOffspeed() ||
            take_.isEmpty())
            return;
        const double start = take_.offsetSeconds + group_.manualAudioOffsetSeconds;
        const double before = std::clamp(start, 0.0, length());
        const double after = std::clamp(length() - (start + take_.durationSeconds), 0.0, length());
        if (isSoundCutOff())
            return addOf(Kind::shortSound,
                         "is cut to " + formatted("%.1f s,", take_.durationSeconds) +
                             " the length of its sound, counted from the picture's start, and " +
                             shoot_.nameOf(*group_.primaryAudio()) + " begins " +
                             formatted("%.1f s", before) + " after that: nothing of it is heard",
                         cureOfCut());
        if (before + after < missingSoundSeconds) return;
        if (before >= length() || after >= length())
            return addOf(
                Kind::shortSound,
                "lasts " + formatted("%.1f s", length()) + ", and " + shoot_.nameOf(*group_.primaryAudio()) +
                    " lies outside of it: no sound is heard",
                "take that recording off the clip and attach another one, or move the sound under the "
                "picture by hand");
        std::string where;
        if (before > 0.05) where = formatted("the first %.1f s", before);
        if (after > 0.05) where += (where.empty() ? "" : " and ") + formatted("the last %.1f s", after);
        const auto cut = std::ranges::find_if(
            take_.files, [&](const TakeFile& file) { return isHeard(file.role) && fileOf(file).heldShare; });
        addOf(Kind::shortSound,
              "lasts " + formatted("%.1f s", length()) + ", and " + where + " have no sound of " +
                  shoot_.nameOf(*group_.primaryAudio()),
              isPartedAtMidnight() ? acrossMidnight()
                                   : DoubtCure(cut != take_.files.end()
                                                   ? "copy " + shoot_.nameOf(fileOf(*cut)) +
                                                         " again from the card, as it ends early"
                                                   : "look for a recording that is missing on the cards") +
                                         ", or cut to the sound with " + option(TrimMode::overlap));
    }

    /// What the document cuts off the picture's end; absent where that is too little to tell.
    std::optional<double> cutOff() const {
        if (shoot_.input.trimMode != TrimMode::commonDuration || group_.video.isOffspeed())
            return std::nullopt;
        const double cut = group_.video.durationSeconds.value_or(0) - take_.durationSeconds;
        // To less than a frame nothing is cut.
        if (take_.durationSeconds * clipRate(group_.video, rateWithoutAny) < 1 || cut < cutSeconds)
            return std::nullopt;
        return cut;
    }
    /// Whether the sound begins within the picture, behind what the document keeps of it.
    bool isSoundCutOff() const {
        const double start = take_.offsetSeconds + group_.manualAudioOffsetSeconds;
        return clip_.place && cutOff() && start >= take_.durationSeconds && start < length();
    }
    static DoubtCure cureOfCut() {
        return option(TrimMode::videoDuration) + " keeps all of the picture, " + option(TrimMode::overlap) +
               " what both have";
    }
    void cutByTrim() {
        const auto cut = cutOff();
        if (!cut || isSoundCutOff() || clip_.atMidnight != nullptr) return; // which says both
        const double picture = group_.video.durationSeconds.value_or(0);
        addOf(Kind::cutByTrim,
              "is cut from " + formatted("%.1f s", picture) + formatted(" to %.1f s,", picture - *cut) +
                  " the length of its sound, counted from the picture's start",
              isPartedAtMidnight() ? acrossMidnight() : cureOfCut());
    }
    /// By the rule of neighbouring days times of day meet alone: what goes on behind midnight is not found.
    bool isPartedAtMidnight() const {
        if (shoot_.input.rules.days != MatchingDays::neighbours || !clip_.place) return false;
        const SyncEngine::TCRange behind{0, clip_.place->range.endSeconds - secondsADay};
        return behind.endSeconds > 0 &&
               std::ranges::any_of(shoot_.recordings, [&](const Recording& recording) {
                   return SyncEngine::overlapDuration(recording.place.range, behind).has_value();
               });
    }
    static DoubtCure acrossMidnight() {
        return DoubtCure(CureOption::Kind::days, std::string(rawValue(MatchingDays::automatic))) +
               ", which finds sound behind midnight";
    }

    /// For each file the one of its recorder and its channels that it continues, whatever else was recorded
    /// meanwhile.
    void splitGap() {
        if (group_.audioMatches.size() < 2) return;
        const auto endOf = [](const TakeFile& file) { return file.startSeconds + file.durationSeconds; };
        double reportedAt = -std::numeric_limits<double>::infinity(); // the channels of a take in mono files
                                                                      // miss the same moments
        for (const TakeFile& after : take_.files) {
            if (after.role == TakeRole::mirror) continue;
            const TakeFile* before = nullptr; // the one that ends last
            for (const TakeFile& file : take_.files)
                if (file.role != TakeRole::mirror && file.startSeconds < after.startSeconds &&
                    endOf(file) <= after.startSeconds + SplitRecordingDetector::contiguityToleranceSeconds &&
                    (before == nullptr || endOf(file) > endOf(*before)) &&
                    SplitRecordingDetector::mayContinue(fileOf(file), fileOf(after)))
                    before = &file;
            if (before == nullptr || std::abs(reportedAt - endOf(*before)) < 1) continue;
            if (gap(*before, after, after.startSeconds - endOf(*before))) reportedAt = endOf(*before);
        }
    }
    bool gap(const TakeFile& before, const TakeFile& after, double seconds) {
        if (seconds < smallestGapSeconds || seconds > SplitRecordingDetector::largestGapSeconds) return false;
        const double at = take_.offsetSeconds + group_.manualAudioOffsetSeconds + after.startSeconds;
        if (at - seconds < 0 || at > length()) return false;
        add(Kind::splitGap,
            formatted("%.2f s", seconds) + " of sound are missing between " + shoot_.nameOf(fileOf(before)) +
                " and " + shoot_.nameOf(fileOf(after)) + formatted(", %.1f s into ", at - seconds) + name_,
            "copy the card again, or look for a part of the recording that is missing");
        return true;
    }

    void mutedSpeech() {
        const auto found = shoot_.input.smartAudioResults.find(group_.id);
        if (found == shoot_.input.smartAudioResults.end()) return;
        const SmartAudioResult& result = *found->second;
        const auto isOn = [&](const TrackAdjustment& track) {
            if (!group_.manualActiveTracks.empty())
                return group_.manualActiveTracks.contains(track.trackIndex);
            return result.bestTrackIndex == track.trackIndex;
        };
        double loudestOn = -120;
        const TrackAdjustment* muted = nullptr;
        for (const TrackAdjustment& track : result.tracks) {
            if (isOn(track))
                loudestOn = std::max(loudestOn, static_cast<double>(track.averageLevelDB));
            else if (track.speechRatio >= someSpeech &&
                     (muted == nullptr || track.averageLevelDB > muted->averageLevelDB))
                muted = &track;
        }
        if (muted == nullptr || static_cast<double>(muted->averageLevelDB) < loudestOn + louderDB) return;
        const std::string channel =
            "channel " + std::to_string(muted->trackIndex) + channelName(muted->trackIndex);
        const std::string why = " is off and has speech " +
                                formatted("%.0f dB", static_cast<double>(muted->averageLevelDB) - loudestOn) +
                                " above what is on";
        add(Kind::mutedSpeech, channel + " of " + name_ + why,
            "listen to it and switch it on, or " +
                DoubtCure(DoubtCure::Words{"leave every channel on with sync --no-smart-audio",
                                           "switch Smart Audio off and every channel on"}),
            channel + why);
        doubts_.back().channel = muted->trackIndex;
    }
    std::string channelName(int number) const {
        for (const IXMLTrack& track : namedChannels(group_, take_))
            if (track.channelIndex == number) return " (" + track.name + ")";
        return "";
    }

    const Shoot& shoot_;
    const Shoot::Clip& clip_;
    const SyncGroup& group_;
    std::string name_;
    Take take_;
    std::vector<SyncDoubt> doubts_;
};

template <class DoubtsOf>
void addFromEachClip(SyncDoubts& doubts, const Shoot& shoot, const DoubtsOf& doubtsOf) {
    platform::StopCheck check(shoot.stop);
    for (const Shoot::Clip& clip : shoot.clips) {
        check();
        if (clip.group->isExcludedFromExport) continue;
        auto own = doubtsOf(clip);
        if (!own.empty()) std::ranges::move(own, std::back_inserter(doubts.byGroup[clip.group->id]));
    }
}

} // namespace

void addClipDoubts(const Shoot& shoot, SyncDoubts& doubts) {
    const bool mayChooseFirst = std::ranges::none_of(
        shoot.clips, [&](const Shoot::Clip& clip) { return heardAmong(shoot, clip).value_or(0) > 0; });
    addFromEachClip(doubts, shoot,
                    [&](const Shoot::Clip& clip) { return ClipDoubts(shoot, clip).all(mayChooseFirst); });
}

void addRivalDoubts(const Shoot& shoot, SyncDoubts& doubts) {
    using enum Kind;
    OtherRecorders others(shoot);
    const SoundUnits units(shoot);
    addFromEachClip(doubts, shoot, [&](const Shoot::Clip& clip) -> std::vector<SyncDoubt> {
        const SyncGroup& group = *clip.group;
        // Where the recording itself is in doubt, its rivals may be what is right.
        if (group.audioMatches.empty() || clip.isDecided || !group.matchStatus.isSettled() ||
            group.matchStatus.kind == MatchStatus::Kind::manual ||
            doubts.has(group.id,
                       {otherDay, otherDateFits, constantOffset, timecodeRate, notTimeOfDay, ambiguous}))
            return {};
        return ClipDoubts(shoot, clip).rivals(others, units);
    });
}

} // namespace orvane
