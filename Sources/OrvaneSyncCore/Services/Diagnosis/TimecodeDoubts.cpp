#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Chance.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClipClaims.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Services/Diagnosis/HeardDates.h"
#include "OrvaneSyncCore/Services/Diagnosis/RecordRun.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Services/Diagnosis/WrittenTimes.h"
#include "OrvaneSyncCore/Services/Matching/ClipRate.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "OrvaneSyncCore/Utilities/FilenameUtils.h"
#include "OrvaneSyncCore/Utilities/RateText.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Timecode/TimecodeFrameRate.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <utility>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;
using TCRange = SyncEngine::TCRange;

/// Whether timecode is the time of day at all. Evidence are the dates of the files: each clip's, compared
/// with those of its card and of the other clips.
class TimecodeDoubts {
  public:
    TimecodeDoubts(const Shoot& shoot, SyncDoubts& doubts) : shoot_(shoot), doubts_(doubts) {}

    void add() {
        for (const Shoot::Clip& clip : shoot_.clips) {
            if (clip.isUnplaced && !clip.group->isExcludedFromExport) unplaced(clip);
            if (clip.isDecided || clip.group->matchStatus.kind == MatchStatus::Kind::mos) continue;
            if (!clip.place || (clip.group->isMOS() && countsFromZero(clip.group->video)))
                withoutTimecode(clip);
            else if (clip.atMidnight != nullptr)
                atMidnight(clip);
            else if (clip.group->isMOS())
                otherCount(clip);
            if (!clip.place) continue;
            if (const auto dated = writtenOf(clip))
                cards_[std::string(folderOf(clip.group->video))].push_back(*dated);
        }
        for (auto& [folder, clips] : cards_)
            if (std::ranges::sort(clips, {}, &Written::seconds); countsWhileRunning(clips))
                addCard(folder, clips);
        singleOutliers();
        recordingsWithoutTimecode();
    }

  private:
    using Written = WrittenClip;

    static std::string momentText(double seconds) {
        const double day = std::floor(seconds / secondsADay);
        const double rest = seconds - day * secondsADay;
        return dayText(static_cast<long>(day)) + " " +
               TimecodeUtils::secondsToTC(rest, TimecodeFrameRate::fps25).substr(0, 8);
    }
    /// Adds a doubt whose message begins with the name of the clip; the rest is enough in the clip's row.
    void doubt(const Shoot::Clip& clip, Kind kind, const std::string& about, DoubtCure cure) {
        doubt(clip, kind, shoot_.nameOf(clip.group->video) + " " + about, std::move(cure), about);
    }
    void doubt(const Shoot::Clip& clip, Kind kind, std::string message, DoubtCure cure, std::string reason) {
        doubts_.byGroup[clip.group->id].push_back(
            {kind, std::move(message), std::move(cure), {}, std::move(reason)});
    }

    void withoutTimecode(const Shoot::Clip& clip) {
        const MediaAsset& video = clip.group->video;
        const double length = video.durationSeconds.value_or(0);
        if (!clip.group->isMOS() || !(length > 0) || shoot_.input.recordings.empty()) return;
        // Heard sound is better evidence than dates, and a channel with heard sound holds no timecode.
        if (doubts_.has(clip.group->id, {Kind::noTimecode})) return;
        std::string message =
            std::string(clip.place ? "counts from 00:00:00:00, as cameras without a set clock do"
                                   : "has no timecode") +
            ", and no sound can be found for it";
        const auto seconds = writtenSeconds(video);
        if (seconds) message += "; it is dated " + momentText(*seconds);
        const HeardDates& dates = datesHeardIn(folderOf(video));
        const bool areHeard = seconds && dates.clips > 0;
        ByDate found;
        if (areHeard)
            found = byDatesHeard(video, *seconds, dates);
        else if (seconds)
            found = byDate(video, *seconds, length);
        message += found.text;
        DoubtCure cure = byHand("its recording", video.channelCount.value_or(0) > 0 && !areHeard);
        if (areHeard && !found.own.empty()) cure = std::move(cure) + checkAClap;
        doubt(clip, Kind::noTimecode, message, std::move(cure));
        doubts_.byGroup[clip.group->id].back().own = std::move(found.own);
    }
    /// What the date of a clip shows about its sound; `own` names both if there is one.
    struct ByDate {
        std::string text, own;
    };
    ByDate byDate(const MediaAsset& video, double seconds, double length) {
        const double behind = secondsBehind(folderOf(video));
        const auto sound = soundAt(seconds + behind, length);
        if (!sound) return {};
        const MediaAsset& recording = *shoot_.recordings[*sound].asset;
        const std::string name = shoot_.nameOf(recording);
        const auto positioned = SyncEngine::matchByTimecode(video, recording, shoot_.input.rules);
        const auto frames = offsetByDate(video, shoot_.recordings[*sound].place, positioned, behind);
        ByDate found;
        if (behind == 0)
            found.text = ", when " + name + " was recorded";
        else
            found.text = ", " + spanText(std::abs(behind)) + (behind > 0 ? " before" : " after") +
                         " the time of the recordings, as all clips of its folder are, and " + name +
                         " was recorded then";
        if (frames) found.text += " and lies by that date with an offset of " + framesText(*frames, video);
        found.own = shoot_.nameOf(video) + " (" + name +
                    (frames ? ", " + std::to_string(framesOf(*frames, video)) : "") + ")";
        return found;
    }

    const HeardDates& datesHeardIn(std::string_view folder) {
        const auto [known, isNew] = heardDates_.try_emplace(folder);
        if (!isNew) return known->second;
        std::vector<HeardStart> heard;
        for (const Shoot::Clip& clip : shoot_.clips)
            if (folderOf(clip.group->video) == folder)
                if (const auto start = startHeardOf(clip)) heard.push_back(*start);
        return known->second = HeardDates::of(heard);
    }
    std::optional<HeardStart> startHeardOf(const Shoot::Clip& clip) const {
        const SyncDoubt::Suggestion* heard = heardIn(clip);
        if (heard == nullptr) return std::nullopt;
        return heardStart(shoot_, clip, *heard->recordingID, heard->offsetSeconds);
    }
    ByDate byDatesHeard(const MediaAsset& video, double seconds, const HeardDates& dates) {
        const double length = video.durationSeconds.value_or(0);
        if (!dates.correction) return {};
        const double start = dates.startOf(video, seconds);
        const auto sound = datedSound().of({start, start + length});
        if (!sound) return {};
        const Recording& recording = shoot_.recordings[*sound];
        const std::string name = shoot_.nameOf(*recording.asset);
        const auto positioned = SyncEngine::matchByTimecode(video, *recording.asset, shoot_.input.rules);
        const double offset = onLine(recording.place).startSeconds - start - positioned.syncOffsetSeconds;
        constexpr double leastReported = 0.5;
        const bool areRight = std::abs(*dates.correction) < leastReported;
        return {
            ", and the dates of " + counted(dates.clips, "clip", "clips") +
                " beside it that were heard are " +
                (areRight
                     ? "right"
                     : spanText(std::abs(*dates.correction)) + (*dates.correction < 0 ? " late" : " early")) +
                ": by that, " + name + " lies with an offset of about " + framesText(offset, video),
            shoot_.nameOf(video) + " (" + name + ", about " + std::to_string(framesOf(offset, video)) + ")"};
    }

    /// How far the dates of clips without timecode are behind those of the recordings, for example because
    /// phones date in UTC: the only number of hours at which all clips of the folder have sound. 0 if their
    /// dates are right, and if the number is not certain.
    double secondsBehind(std::string_view folder) {
        const auto [known, isNew] = behind_.try_emplace(folder, 0.0);
        if (!isNew) return known->second;
        std::vector<std::pair<double, double>> dates; // date and length
        for (const Shoot::Clip& clip : shoot_.clips) {
            const MediaAsset& video = clip.group->video;
            const auto seconds = writtenSeconds(video);
            if (seconds && !clip.place && clip.group->isMOS() && folderOf(video) == folder)
                dates.emplace_back(*seconds, video.durationSeconds.value_or(0));
        }
        const auto haveSound = [&](double later) {
            return std::ranges::all_of(dates, [&](const auto& date) {
                return soundAt(date.first + later, date.second).has_value();
            });
        };
        if (std::cmp_less(dates.size(), explanation::fewest) || haveSound(0)) return 0;
        constexpr int mostHours = 14; // of a time zone
        std::vector<double> found;
        for (int hours = -mostHours; hours <= mostHours; ++hours)
            if (haveSound(hours * 3600.0)) found.push_back(hours * 3600.0);
        if (found.size() != 1) return 0;
        const auto [first, last] = std::ranges::minmax(dates);
        const double share =
            cover_.shareOf(first.first + found.front(), last.first + last.second + found.front());
        const auto count = static_cast<int>(dates.size());
        if ((2 * mostHours + 1) * chance::atLeast(count, count, share) > chance::smallest) return 0;
        return known->second = found.front();
    }
    void atMidnight(const Shoot::Clip& clip) {
        const MediaAsset& recording = *clip.atMidnight;
        doubt(clip, Kind::noTimecode,
              shoot_.nameOf(recording) + " of " + dayText(dayNumber(*recording.localCreatedDate())) +
                  " has a time reference of 0, as recorders write it that know no time; if it began at "
                  "midnight, it is sound of " +
                  shoot_.nameOf(clip.group->video),
              "attach it by hand" + cureWords::inTable("a file name under 'choice'") +
                  ", which lays it at midnight",
              {});
    }
    /// For sound at an arbitrary place, which looks as if it were right.
    void unplaced(const Shoot::Clip& clip) {
        const MediaAsset& video = clip.group->video;
        const AudioMatch& match = clip.group->audioMatches.front();
        std::string where =
            std::string("it is laid ") +
            (match.syncOffsetSeconds == 0
                 ? "from the first picture on"
                 : (clip.primary ? "where the timecodes have it, " : "at midnight, ") +
                       spanText(std::abs(match.syncOffsetSeconds)) + " from the first picture");
        const auto seconds = writtenSeconds(video);
        const auto heard = heardAttached(shoot_, clip);
        const auto frames = !heard && seconds && clip.primary
                                ? offsetByDate(video, shoot_.recordings[*clip.primary].place, match)
                                : std::nullopt;
        if (heard)
            where += "; the microphone of the camera heard it with an offset of " +
                     framesText(*heard - microphoneDelaySeconds - match.syncOffsetSeconds, video);
        else if (frames)
            where += "; by the date of the clip, " + momentText(*seconds) + ", it lies with an offset of " +
                     framesText(*frames, video);
        doubt(clip, Kind::noTimecode,
              shoot_.nameOf(*match.audio) + " was attached to " + shoot_.nameOf(video) +
                  " by hand, and no timecode says where in the clip it begins: " + where,
              "set its offset in frames" + cureWords::inTable("under 'offset_frames'") +
                  " by a clap, and lock the clip where the sound is right without one",
              where);
    }
    /// The offset for a table, in seconds, that puts the recording under the clip by the date of the clip,
    /// which is that of its first picture or of its last; absent if the recording is not under the clip then.
    static std::optional<double> offsetByDate(const MediaAsset& video, const FilePlace& sound,
                                              const AudioMatch& positioned, double secondsBehind = 0) {
        auto written = writtenSeconds(video);
        if (written) *written += secondsBehind;
        const double length = video.durationSeconds.value_or(0);
        if (!written || !sound.day) return std::nullopt;
        const double day = static_cast<double>(*sound.day) * secondsADay;
        const TCRange recorded{day + sound.range.startSeconds, day + sound.range.endSeconds};
        for (const double start : {*written, *written - length}) {
            if (!covers(recorded, {start, start + length})) continue;
            const double seconds = recorded.startSeconds - start - positioned.syncOffsetSeconds;
            if (std::abs(seconds) > secondsADay) return std::nullopt;
            return seconds;
        }
        return std::nullopt;
    }
    /// For folders in which no recording has a start: no clip can find them. Clips whose cameras heard one of
    /// them have a doubt about that instead.
    void recordingsWithoutTimecode() {
        std::vector<const Shoot::Clip*> silent;
        std::set<UUID> found = used(); // as well as those that cameras heard
        for (const Shoot::Clip& clip : shoot_.clips) {
            if (clip.isDecided || clip.group->matchStatus.kind != MatchStatus::Kind::unmatched) continue;
            if (const auto* heard = heardIn(clip))
                found.insert(*heard->recordingID);
            else
                silent.push_back(&clip);
        }
        if (silent.empty()) return;
        std::map<std::string_view, std::vector<const MediaAsset*>> folders;
        for (const MediaAsset& recording : shoot_.input.recordings)
            if (!recording.isAtmo() && !FilenameUtils::isMadeRoomTone(recording.filename) &&
                recording.durationSeconds.value_or(0) > 0)
                folders[folderOf(recording)].push_back(&recording);
        for (auto& [folder, recordings] : folders) {
            if (std::ranges::any_of(recordings, [&](const MediaAsset* recording) {
                    return shoot_.recordingByID.contains(recording->id);
                }))
                continue;
            // If a clip has one of them, the channels hold sound.
            const bool mayHoldTimecode = std::erase_if(recordings, [&](const MediaAsset* recording) {
                                             return found.contains(recording->id);
                                         }) == 0;
            if (recordings.empty()) continue;
            const auto count = static_cast<long long>(recordings.size());
            addCardDoubt(
                doubts_,
                {Kind::noTimecode,
                 counted(count, "recording", "recordings") + " in '" + std::string(folder) +
                     (count == 1 ? "', " : "', such as ") + shoot_.nameOf(*recordings.front()) +
                     (count == 1 ? ", has no timecode and no time reference: no clip can find it, and "
                                 : ", have no timecode and no time reference: no clip can find them, and ") +
                     counted(silent.size(), "clip has", "clips have") + " no sound",
                 byHand("the recordings", mayHoldTimecode)},
                silent);
        }
    }
    /// The recording that the clip's camera heard although no timecode leads to it; null if there is none.
    const SyncDoubt::Suggestion* heardIn(const Shoot::Clip& clip) const {
        const auto own = doubts_.byGroup.find(clip.group->id);
        if (own == doubts_.byGroup.end()) return nullptr;
        const auto heard = std::ranges::find_if(own->second, [](const SyncDoubt& doubt) {
            return doubt.kind == Kind::noTimecode && doubt.suggestion && doubt.suggestion->recordingID;
        });
        return heard != own->second.end() ? &*heard->suggestion : nullptr;
    }
    /// The recordings that a clip has.
    const std::set<UUID>& used() {
        if (used_.empty())
            for (const Shoot::Clip& one : shoot_.clips)
                for (const AudioMatch& match : one.group->audioMatches) used_.insert(match.audio->id);
        return used_;
    }
    /// `mayHoldTimecode`: a channel of sound may hold timecode.
    DoubtCure byHand(const char* what, bool mayHoldTimecode) const {
        const auto& heard = shoot_.input.timecodeChannel;
        DoubtCure cure =
            std::string("attach ") + what + " by hand" +
            cureWords::inTable("a file name under 'choice' and its offset under 'offset_frames'");
        if (!mayHoldTimecode || heard == settings::everyTimecodeChannel) return cure;
        const std::string option = heard ? std::string(settings::ltcChannelIndex.key) + "=" +
                                               std::to_string(settings::everyTimecodeChannel)
                                         : std::string(settings::ltcEnabled.key) + "=true";
        return cure + "; where timecode was recorded on a sound channel, " +
               DoubtCure(CureOption::Kind::setting, option) + " finds it";
    }
    /// The recording under a clip of that length that begins or ends at that time.
    std::optional<std::size_t> soundAt(double seconds, double length) {
        const Cover& cover = datedSound();
        const auto found = cover.of({seconds, seconds + length});
        return found ? found : cover.of({seconds - length, seconds});
    }
    const Cover& datedSound() {
        if (cover_.isEmpty()) cover_ = datedRecordings(shoot_);
        return cover_;
    }

    /// Drop frame that was read as non-drop, or the other way round, moves a clip by minutes. If a recording
    /// without a clip is under the moved clip, the other count is worth a test.
    void otherCount(const Shoot::Clip& clip) {
        const MediaAsset& video = clip.group->video;
        if (shoot_.input.rules.timecodeRate || !video.timecodeFrameRate) return;
        const auto own = *video.timecodeFrameRate;
        const bool isDrop = timecodeRate::isDrop(own);
        const auto other = timecodeRate::from(timecodeRate::rate(own), !isDrop);
        const auto range = other ? AssetPlacement(video, other).range() : std::nullopt;
        if (!range) return;
        for (const Recording& recording : shoot_.recordings) {
            const auto filmed = clip.place->knownDay(), recorded = recording.place.day;
            const auto& rate = recording.asset->timecodeFrameRate;
            if (!rate || timecodeRate::maxFrames(*rate) != timecodeRate::maxFrames(own) ||
                (filmed && recorded && *filmed != *recorded) || used().contains(recording.asset->id) ||
                !covers(recording.place.range, *range))
                continue;
            return doubt(clip, Kind::dropMix,
                         std::string("counts ") + (isDrop ? "drop frame" : "non-drop") +
                             " and has no sound; counted as " + (isDrop ? "non-drop" : "drop frame") + ", " +
                             shoot_.nameOf(*recording.asset) + " covers all of it",
                         DoubtCure(CureWay{.options = {{CureOption::Kind::timecodeRate, rateText(*other)}},
                                           .isForSome = true}) +
                             ", in a scan of such clips alone where others count otherwise");
        }
    }

    void addCard(const std::string& folder, const std::vector<Written>& clips) {
        std::vector<const Shoot::Clip*> all;
        for (const Written& one : clips) {
            all.push_back(one.clip);
            reported_.insert(one.clip);
        }
        std::ranges::sort(all); // in the order of the clips
        const double written = clips.back().seconds - clips.front().seconds;
        const double labels = clips.back().range().startSeconds - clips.front().range().startSeconds;
        addCardDoubt(doubts_,
                     {Kind::notTimeOfDay,
                      "the timecode of the clips in '" + folder + "' is not the time of day: from " +
                          shoot_.nameOf(clips.front().clip->group->video) + " to " +
                          shoot_.nameOf(clips.back().clip->group->video) + " it counts " +
                          spanText(std::abs(labels)) + ", and their dates are " + spanText(written) +
                          " apart; what lies under them by timecode is sound of another moment",
                      nameOrLeaveOut(all)},
                     all);
    }

    /// Clips whose date and timecode are unrelated, while those of the other clips agree.
    void singleOutliers() {
        std::map<int, int> counts;
        int files = 0;
        for (const auto& [folder, clips] : cards_)
            for (const Written& one : clips) {
                ++files;
                for (const auto& zone : zonesOf(one.secondOfDay(), one.range()))
                    if (zone) ++counts[*zone];
            }
        constexpr int fewest = 3;
        constexpr double mostly = 0.75;
        const auto usual =
            std::ranges::max_element(counts, {}, [](const auto& entry) { return entry.second; });
        if (usual == counts.end() || usual->second < fewest || usual->second < mostly * files) return;
        for (const auto& [folder, clips] : cards_)
            for (const Written& one : clips) {
                const auto zones = zonesOf(one.secondOfDay(), one.range());
                const bool isOfZone = std::ranges::any_of(zones, [](const auto& z) { return z.has_value(); });
                if (isOfZone || reported_.contains(one.clip) || !one.clip->primary) continue;
                doubt(*one.clip, Kind::notTimeOfDay,
                      "is dated " + momentText(one.seconds) + ", and its timecode is " +
                          one.clip->group->video.startTimecodeString.value_or("another") + "; of the other " +
                          counted(usual->second, "clip", "clips") + " date and timecode agree",
                      nameOrLeaveOut({one.clip}));
            }
    }

    DoubtCure nameOrLeaveOut(const std::vector<const Shoot::Clip*>& clips) const {
        const auto heard =
            std::ranges::count_if(clips, [&](const Shoot::Clip* clip) { return heardIn(*clip) != nullptr; });
        std::string name = "no option helps: ";
        if (heard > 0)
            name += "'diagnose --review FILE' fills in what the microphones of the cameras heard in " +
                    counted(heard, "clip", "clips") + "; ";
        name += heard < std::ssize(clips)
                    ? "name the right recording of each" + std::string(heard > 0 ? " other" : "") +
                          " clip in the table of 'scan --review' ('choice', and "
                          "'offset_frames' for its place), or leave the clips out with "
                    : "or leave the clips out with ";
        return DoubtCure::Words{name, "attach the right recordings by hand, or leave the clips out with "} +
               cureWords::skip() + cureWords::lock("; lock those whose sound is right");
    }

    const Shoot& shoot_;
    SyncDoubts& doubts_;
    std::map<std::string, std::vector<Written>> cards_; ///< by folder
    std::set<const Shoot::Clip*> reported_;
    std::map<std::string_view, double> behind_;         ///< as in `secondsBehind`, by folder
    std::map<std::string_view, HeardDates> heardDates_; ///< by folder
    std::set<UUID> used_;                               ///< as `used` returns them
    Cover cover_;                                       ///< of the dated recordings, seconds since 1970
};

} // namespace

void addTimecodeDoubts(const Shoot& shoot, SyncDoubts& doubts) { TimecodeDoubts(shoot, doubts).add(); }

} // namespace orvane
