#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

// Shared by the doubts about rates and the doubts about clocks.
namespace orvane {

/// The least that an explanation must achieve to be reported.
namespace explanation {
inline constexpr int fewest = 3;        ///< clips, and recordings that are found for them
inline constexpr double majority = 0.6; ///< of the clips without sound
/// It must find sound for this many times as many clips as have their sound without it.
inline constexpr double clearly = 1.5;
} // namespace explanation

/// How many clips an explanation finds sound for, and how many recordings it takes for that.
struct Found {
    int clips = 0;
    int recordings = 0;
};

/// How the recordings overlap the clips, by number of the recording, and the cards that the recordings form.
///
/// A card is the files of one folder and one day (or of one night that passes midnight by its dates), without
/// the files that are copies or channels of others. If a recorder makes a folder for each take, the folder
/// above counts. If the files of one recorder in a folder lie under clips and those of another one do not,
/// each recorder has its own card. If no clip has a day, the clips overlap the recordings of all days, which
/// then form one card.
class RecordersCards {
  public:
    RecordersCards(const Shoot& shoot, const std::vector<const Shoot::Clip*>& clips);

    std::vector<Card> cards;
    std::vector<bool> isRight;       ///< it is the first recording of a covered clip
    std::vector<bool> isOverlapping; ///< it overlaps a clip
    std::vector<bool> isFitting;     ///< it covers a clip, or lies within one

    int countOf(const std::vector<std::size_t>& files, const std::vector<bool>& those) const;
    /// Whether few of the card's recordings fit a clip at their place.
    bool fitsFewClips(const Card& card) const;

  private:
    using Files = std::vector<std::size_t>;
    std::vector<Card> nights(const std::string& folder, const Files& files) const;
    void keepOneOfATake(Files& files) const;
    std::vector<Card> byRecorder(const std::string& folder, const Files& files) const;
    FilePlace placeOf(std::size_t file) const;
    bool fits(const AudioMatch& match, std::size_t file, const FilePlace& clip) const;

    const Shoot& shoot_;
    bool areClipsDated_ = false;
};
/// "the recordings in '/S'"; for one of several recorders there, "the recordings in '/S' ('T1.WAV' –
/// 'T4.WAV')".
std::string nameOfCard(const Card& card, const Shoot& shoot);
/// Cards of the clips with a place, in the order of the clips.
std::vector<Card> camerasCards(const Shoot& shoot);

SyncEngine::TCRange moved(const SyncEngine::TCRange& range, double seconds);
/// Seconds since 1970 for a file with a day, since midnight for one without.
SyncEngine::TCRange onLine(const FilePlace& place);
/// The range of the clip on its most likely day.
SyncEngine::TCRange likelyRange(const Shoot::Clip& clip);

/// Dated files cover dated ones if their days and times overlap, with the rule `same` only on one day. If one
/// of the two has no date, the time of day counts.
class Covers {
  public:
    explicit Covers(MatchingDays days) : isSameDayOnly_(days == MatchingDays::same) {}
    void add(const FilePlace& sound, std::size_t item);
    void finish();
    /// The item that covers all of the clip.
    std::optional<std::size_t> of(const FilePlace& clip) const;

  private:
    bool isSameDayOnly_;
    Cover dated_, undated_, all_;
    std::map<long, Cover> days_; ///< used if no clip overlaps another day's sound
};

/// Clips that a wrong clock may have separated from their sound: they have a place, were not settled by hand
/// and were not shot without sound.
struct TimedClips {
    explicit TimedClips(const Shoot& shoot);
    std::vector<const Shoot::Clip*> all, uncovered;
    /// `all`, and the clips that were settled by hand with the sound that timecode gives them. These are not
    /// in doubt, but show which clocks are right.
    std::vector<const Shoot::Clip*> evidence;
};

/// The share of the clips' hours during which there is sound.
double soundShare(const Shoot& shoot, const std::vector<const Shoot::Clip*>& clips);

/// The longest pause within a night of shooting, such as a meal. The next day begins after a longer one.
inline constexpr double longestPauseOfANight = 21600;

/// Recordings that are dated at least as many days from all clips are of a clock that lost its date.
inline constexpr long daysOfALostDate = 30;

/// Clocks that people set wrong are mostly wrong by multiples of this.
inline constexpr double niceOffsetStepSeconds = 1800;
/// Whether these are whole or half hours, to a frame, also as labels count them.
bool isOfAWrongHour(double seconds, TimecodeFrameRate rate);
/// The rate of the labels of most clips, unless the work sets the rate at which timecode is read.
TimecodeFrameRate rateOfLabels(const Shoot& shoot);
/// The rates that count as many labels per second as the given one, itself included.
std::vector<TimecodeFrameRate> ratesCountingAs(TimecodeFrameRate rate);
/// How long labels of that rate take to count so many seconds.
double labelSeconds(double seconds, TimecodeFrameRate rate);

/// Adds the rate at which clips and recordings would match, if their labels, which count equally, were read
/// at another rate, unless cameras heard that one offset explains it. Returns whether there is one. `toHear`
/// as in `addClockDoubts`.
bool addRateDoubt(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts,
                  std::vector<SoundClaim>* toHear);
/// For work with a given rate: adds a doubt if, at the rates that the files state, one offset would put the
/// same recordings under the same clips. Timecode supports both equally, and no microphone decided.
void addGivenRateDoubt(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts);
void addRepeatDoubts(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts);
/// For a card with one or two recordings that would lie under all clips with exactly one whole-hour offset.
void addLongRecordings(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts);

} // namespace orvane
