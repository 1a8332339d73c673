#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

// What the doubts about rates and those about clocks have in common.
namespace orvane {

/// What makes an explanation worth telling.
namespace explanation {
inline constexpr int fewest = 3;        ///< clips, and recordings that they find
inline constexpr double majority = 0.6; ///< of the clips without sound
/// It must find sound for so many times the clips that have theirs without it.
inline constexpr double clearly = 1.5;
} // namespace explanation

/// How many clips an explanation finds sound for, and how many recordings it takes for that.
struct Found {
    int clips = 0;
    int recordings = 0;
};

/// How the recordings overlap the clips, by number, and the cards that they make up.
///
/// A card is what is in one folder and of one day, or of one night that passes midnight by its dates, without
/// the files that are copies or channels of others. Of recorders that make a folder for each take, it is what
/// lies in one folder above. Where the files of one recorder in a folder lie under clips and those of another
/// one do not, each has cards of its own. Clips of which none has a day overlap the recordings of all days,
/// which then make one card.
class RecordersCards {
  public:
    RecordersCards(const Shoot& shoot, const std::vector<const Shoot::Clip*>& clips);

    std::vector<Card> cards;
    std::vector<bool> isRight;       ///< it comes first under a clip that has all of its sound
    std::vector<bool> isOverlapping; ///< it lies under a part of a clip
    std::vector<bool> isFitting;     ///< it lies under all of a clip, or within it

    int countOf(const std::vector<std::size_t>& files, const std::vector<bool>& those) const;
    /// Few of its recordings lie where they are.
    bool fitsFewClips(const Card& card) const;

  private:
    using Files = std::vector<std::size_t>;
    std::vector<Card> nights(const std::string& folder, Files files) const;
    void keepOneOfATake(Files& files) const;
    std::vector<Card> byRecorder(const std::string& folder, const Files& files) const;
    FilePlace placeOf(std::size_t file) const;
    bool fits(const AudioMatch& match, std::size_t file, const FilePlace& clip) const;

    const Shoot& shoot_;
    bool areClipsDated_ = false;
};
/// "the recordings in '/S'"; of one of several recorders there "the recordings in '/S' ('T1.WAV' –
/// 'T4.WAV')".
std::string nameOfCard(const Card& card, const Shoot& shoot);
/// Cards of clips with a place, in the order of the clips.
std::vector<Card> camerasCards(const Shoot& shoot);

SyncEngine::TCRange moved(const SyncEngine::TCRange& range, double seconds);
/// Seconds since 1970 for a file with a day, since midnight for one without.
SyncEngine::TCRange onLine(const FilePlace& place);
/// Of the clip by the day that it most likely is of.
SyncEngine::TCRange likelyRange(const Shoot::Clip& clip);

/// Dated files cover dated ones where their days and times overlap, by the rule `same` on one day alone;
/// where one of the two has no date, the time of day counts.
class Covers {
  public:
    explicit Covers(MatchingDays days) : isSameDayOnly_(days == MatchingDays::same) {}
    void add(const FilePlace& sound, std::size_t item);
    void finish();
    /// The item that lies under all of the clip.
    std::optional<std::size_t> of(const FilePlace& clip) const;

  private:
    bool isSameDayOnly_;
    Cover dated_, undated_, all_;
    std::map<long, Cover> days_; ///< where no clip overlaps another day's sound
};

/// Clips that a clock may have parted from their sound: with a place, neither settled by hand nor shot
/// without sound.
struct TimedClips {
    explicit TimedClips(const Shoot& shoot);
    std::vector<const Shoot::Clip*> all, uncovered;
};

/// The share of the hours of the clips during which there is sound.
double soundShare(const Shoot& shoot, const std::vector<const Shoot::Clip*>& clips);

/// A night goes on after its meal, and the next day begins later than that.
inline constexpr double longestPauseOfANight = 21600;

/// What people set clocks wrong by are multiples of it.
inline constexpr double niceOffsetStepSeconds = 1800;
/// Of the labels of most clips, unless the work says at which rate timecode is read.
TimecodeFrameRate rateOfLabels(const Shoot& shoot);
/// The rates whose seconds have as many labels as those of the given one, itself among them.
std::vector<TimecodeFrameRate> ratesCountingAs(TimecodeFrameRate rate);
/// How long labels of that rate take to count so many seconds.
double labelSeconds(double seconds, TimecodeFrameRate rate);

/// The rate at which clips and recordings would match, where labels that count alike were read at another.
/// Whether there is one.
bool addRateDoubt(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts);
/// Where a rate was given, and at the rates that the files state one offset would lay the same recordings
/// under the same clips: timecode says as much for both, and nobody heard which one is right.
void addGivenRateDoubt(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts);
void addRepeatDoubts(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts);
/// Of one recording or two of a card that would lie under all clips by one whole hour alone.
void addLongRecordings(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts);

} // namespace orvane
