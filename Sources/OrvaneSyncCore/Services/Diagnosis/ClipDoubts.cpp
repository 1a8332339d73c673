#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClipClaims.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClipInDoubt.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Takes/RecordedAtOnce.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string_view>
#include <utility>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;
using platform::text::formatted;

constexpr double louderDB = 12;
constexpr double ambiguityShare = 0.5; // of the best overlap, as in matching
constexpr float someSpeech = 0.1F;     // share of the windows

/// Pairs of a folder of clips and a folder of recordings, for which microphones heard something.
class HeardFolders {
  public:
    explicit HeardFolders(const Shoot& shoot) {
        const auto* heard = shoot.input.heardLags;
        if (heard == nullptr || heard->empty()) return;
        for (const Shoot::Clip& clip : shoot.clips) {
            if (!clip.primary) continue;
            const auto lag = heard->find(clip.group->audioMatches.front().id);
            if (lag == heard->end()) continue;
            Count& count = counts_[foldersOf(*clip.group)];
            ++count.heard;
            if (std::abs(lag->second.seconds) <= inPlaceSeconds) ++count.inPlace;
        }
    }
    bool hold(const SyncGroup& group) const { return counts_.contains(foldersOf(group)); }
    /// Whether all that was heard is at the place that timecode gives.
    bool areInPlace(const SyncGroup& group) const {
        const auto found = counts_.find(foldersOf(group));
        return found != counts_.end() && found->second.inPlace >= explanation::fewest &&
               found->second.inPlace == found->second.heard;
    }

  private:
    using Folders = std::pair<std::string_view, std::string_view>;
    struct Count {
        int heard = 0, inPlace = 0;
    };
    static Folders foldersOf(const SyncGroup& group) {
        return {folderOf(group.video), folderOf(*group.primaryAudio())};
    }
    std::map<Folders, Count> counts_;
};

/// The doubts about a single clip.
class ClipDoubts {
  public:
    ClipDoubts(const Shoot& shoot, const Shoot::Clip& clip) : of_(shoot, clip) {}

    std::vector<SyncDoubt> all(bool mayChooseFirst, const HeardFolders& heard) {
        addLabelOutsideOfRate(of_, of_.group.video);
        if (of_.group.isMOS()) return std::move(of_.doubts);
        addLabelOutsideOfRate(of_, *of_.group.primaryAudio());
        ambiguous(mayChooseFirst);
        if (!heard.areInPlace(of_.group)) addOtherCounts(of_); // in place: different labels do not matter
        if (of_.group.matchStatus.isSettled()) {
            addLengthDoubts(of_, heard.hold(of_.group));
            mutedSpeech();
        }
        return std::move(of_.doubts);
    }

  private:
    /// Whether the clip was settled by its first recording, as `--choose first` does with all clips.
    bool wasAmbiguous() const {
        if (of_.group.matchStatus.kind != MatchStatus::Kind::manual || !of_.clip.place || !of_.clip.primary)
            return false;
        const double least = heardSeconds(of_.group, of_.take) * ambiguityShare;
        return std::ranges::any_of(of_.take.files, [&](const TakeFile& file) {
            return file.role == TakeRole::alternate &&
                   of_.group.audioMatches[file.matchIndex].overlapDurationSeconds < least;
        });
    }
    /// Whether the camera heard the first recording at its place.
    bool isFirstHeard() const {
        const auto* heard = of_.shoot.input.heardLags;
        if (heard == nullptr) return false;
        const auto lag = heard->find(of_.group.audioMatches.front().id);
        return lag != heard->end() && std::abs(lag->second.seconds) <= inPlaceSeconds;
    }
    /// `mayChooseFirst`: no camera of the shoot heard another recording than its clip's first.
    void ambiguous(bool mayChooseFirst) {
        if (of_.clip.isDecided) return;
        const bool isSettled = wasAmbiguous();
        if (of_.group.matchStatus.kind != MatchStatus::Kind::ambiguous && !isSettled) return;
        auto heard = heardAmong(of_.shoot, of_.clip);
        if (isSettled && !heard && isFirstHeard()) heard = 0;
        // Of two recordings of one recorder that overlap, the one that was not heard is of another moment.
        if (isSettled && heard == 0 && ofOtherMoments(of_.group).empty()) return;
        std::string files;
        constexpr std::size_t most = 3;
        for (std::size_t i = 0; i < std::min(most, of_.group.audioMatches.size()); ++i) {
            const AudioMatch& match = of_.group.audioMatches[i];
            files += (i > 0 ? ", " : "") + of_.shoot.nameOf(*match.audio) + " " +
                     formatted("%.1f s", match.overlapDurationSeconds);
        }
        const std::string count = std::to_string(of_.group.audioMatches.size());
        const std::string clip = of_.name + " of " + formatted("%.1f s", of_.length());
        const std::string about = isSettled
                                      ? "the first of " + count + " recordings was chosen for " + clip +
                                            ", and none is clearly best: "
                                      : count + " recordings overlap " + clip + " and none is clearly best: ";
        if (heard)
            files += "; the microphone of the camera heard " +
                     of_.shoot.nameOf(*of_.group.audioMatches[*heard].audio);
        DoubtCure choice =
            heard && !mayChooseFirst
                ? cureWords::chooseHeard(of_.shoot.nameOf(*of_.group.audioMatches[*heard].audio))
                : cureWords::choose();
        if (!isSettled && !of_.group.isLocked && mayChooseFirst)
            choice += ", or take the first of each with " + DoubtCure(CureOption::Kind::choose, "first");
        of_.add(Kind::ambiguous, about + files,
                isSettled ? removal(heard.has_value()) + ", or lock the clip"
                : of_.group.isLocked
                    ? DoubtCure("the clip is locked without a recording and left out of the document: unlock "
                                "it, then ") +
                          choice
                    : choice,
                isSettled ? "the first was chosen: " + files : files);
        if (heard) of_.doubts.back().suggestion = suggestionToChoose(of_.shoot, of_.clip, *heard);
    }
    static DoubtCure removal(bool isHeard) {
        const std::string what = "take off what does not belong to it";
        return isHeard ? cureWords::asHeard(what, "'choice'") : DoubtCure(what);
    }
    void mutedSpeech() {
        const auto found = of_.shoot.input.smartAudioResults.find(of_.group.id);
        if (found == of_.shoot.input.smartAudioResults.end()) return;
        const SmartAudioResult& result = *found->second;
        const auto isOn = [&](const TrackAdjustment& track) {
            if (!of_.group.manualActiveTracks.empty())
                return of_.group.manualActiveTracks.contains(track.trackIndex);
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
        of_.add(Kind::mutedSpeech, channel + " of " + of_.name + why,
                "listen to it and switch it on, or " +
                    DoubtCure(DoubtCure::Words{"leave every channel on with sync --no-smart-audio",
                                               "switch Smart Audio off and every channel on"}),
                channel + why);
        of_.doubts.back().channel = muted->trackIndex;
    }
    std::string channelName(int number) const {
        for (const IXMLTrack& track : namedChannels(of_.group, of_.take))
            if (track.channelIndex == number) return " (" + track.name + ")";
        return "";
    }

    ClipInDoubt of_;
};

} // namespace

void addClipDoubts(const Shoot& shoot, SyncDoubts& doubts) {
    const bool mayChooseFirst = std::ranges::none_of(
        shoot.clips, [&](const Shoot::Clip& clip) { return heardAmong(shoot, clip).value_or(0) > 0; });
    const HeardFolders heard(shoot);
    addFromEachClip(doubts, shoot, [&](const Shoot::Clip& clip) {
        return ClipDoubts(shoot, clip).all(mayChooseFirst, heard);
    });
}

} // namespace orvane
