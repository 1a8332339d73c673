#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/SyncDoubts.h"
#include "OrvaneSyncCore/Services/Matching/RecorderMark.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Matching/WholeRecordings.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orvane {

struct Take;

/// The files of a work, each with its place computed once. One thread at a time.
struct Shoot {
    struct Clip {
        const SyncGroup* group;
        std::optional<FilePlace> place;
        /// Index in `recordings` of the first match; absent for a clip without sound, and for sound without a
        /// place.
        std::optional<std::size_t> primary;
        bool isDecided = false; ///< the editor decided which recording it has, so there is no doubt about it
        bool isCovered = false; ///< `isCovered` of its group
        /// Its first recording was attached by hand and not moved, and the two have no common timecode that
        /// gives its place.
        bool isUnplaced = false;
        /// A recording without a start, from a recorder that knows the time. It may have begun at midnight
        /// under this clip (`Places::midnightOffset`). Only for a clip that is not covered and does not have
        /// this recording.
        const MediaAsset* atMidnight = nullptr;

        std::optional<long> likelyDay() const { return place->likelyDay(); }
        /// Its place on its likely day.
        FilePlace likelyPlace() const {
            FilePlace likely = *place;
            likely.day = likely.likelyDay();
            return likely;
        }
    };

    explicit Shoot(const DoubtInput& theInput, const std::stop_token& theStop);

    const DoubtInput& input;
    const std::stop_token& stop;
    std::vector<Clip> clips; ///< in the order of the groups
    std::vector<Recording> recordings;
    std::unordered_map<UUID, std::size_t> recordingByID; ///< index in `recordings`
    /// What is searched for under a clip: a take that was cut into several files counts as one.
    WholeRecordings wholes;
    /// By the first file of each whole recording: whether a clip has a part of it.
    std::vector<bool> usedWholes() const;

    std::string nameOf(const MediaAsset& asset) const { return "'" + input.names.of(asset) + "'"; }
};

/// The longest overlap that one channel of the take has with the clip, all parts of the channel together.
double heardSeconds(const SyncGroup& group, const Take& take);

/// Adds a card's doubt, for each of its clips as well.
void addCardDoubt(SyncDoubts& doubts, SyncDoubt doubt, const std::vector<const Shoot::Clip*>& clips);
/// If there is a doubt about the same clips with the same cure, adds to its message that it holds for another
/// card as well. Returns whether there is one.
bool joinEqualDoubt(SyncDoubts& doubts, const SyncDoubt& doubt, const std::vector<const Shoot::Clip*>& clips,
                    const std::string& card);

/// A clip counts as covered if it begins earlier or ends later than its sound by no more than this: that is
/// how people start and stop a recorder, and no error of its clock.
inline constexpr double coverSlackSeconds = 1;
bool covers(const SyncEngine::TCRange& sound, const SyncEngine::TCRange& clip);
/// Whether the clip's sound, moved by `movedBySeconds`, covers all of it, or one of its recordings with all
/// its parts lies within it, as a camera may roll longer than the recorder.
bool isCovered(const Shoot& shoot, const SyncGroup& group, double clipSeconds, double movedBySeconds = 0);

/// Ranges of sound, searched for one that covers a clip.
class Cover {
  public:
    void add(const SyncEngine::TCRange& range, std::size_t item) { ranges_.push_back({range, item}); }
    void finish();
    /// The item of a range that covers the clip.
    std::optional<std::size_t> of(const SyncEngine::TCRange& clip) const;
    /// The same, else the item of a range that the clip covers.
    std::optional<std::size_t> ofEither(const SyncEngine::TCRange& clip) const;
    /// The share of the time from `first` to `last` during which there is sound.
    double shareOf(double first, double last) const;
    bool isEmpty() const { return ranges_.empty(); }

  private:
    struct Range {
        SyncEngine::TCRange range;
        std::size_t item;
        std::size_t longest = 0; ///< of this range and all before it: the one that ends last
        std::size_t soonest = 0; ///< of this range and all after it: the one that ends first
    };
    std::vector<Range> ranges_;
};

/// The files of one folder, or below it, that are of one day or one night.
struct Card {
    std::string folder;
    std::optional<long> day;
    std::vector<std::size_t> files; ///< numbers of the clips or the recordings
    long movedByDays = 0;           ///< from the files' own day to `day`, if another day is tried
    long moreDays = 0;              ///< days after `day`, for a night that passes midnight
    /// If the folder has files of other recorders at other distances.
    std::optional<RecorderMark> recorder = {};

    bool isOf(long other) const { return day && other >= *day && other <= *day + moreDays; }
};
/// Whether a recording is in the folder of the card, or below it, and of its recorder and day. A recording
/// without a place in time counts as of any day.
bool isOn(const Card& card, const Shoot& shoot, const MediaAsset& recording);
std::vector<Card> cardsOf(const std::vector<Recording>& recordings);
/// By `likelyDay`. Clips without a place are on no card.
std::vector<Card> cardsOf(const std::vector<Shoot::Clip>& clips);

/// The time of the file's own date, else of its header, seconds since 1970 in the user's calendar. Ignores a
/// date at midnight: it has no time of day.
std::optional<double> writtenSeconds(const MediaAsset& video);
/// Whether the file's own date, or its header, agrees with its timecode on that day. Names may have the shoot
/// day, which continues after midnight.
bool isWrittenOn(const MediaAsset& video, const FilePlace& place, long day);
/// Whether the timecode is all zeros, as in movies of cameras that do not know the time. A clip that is dated
/// near midnight may really begin at midnight.
bool countsFromZero(const MediaAsset& video);

/// The number as a table has it in `offset_frames`, and the same with its unit, such as "-1 frame".
long long framesOf(double seconds, const MediaAsset& video);
std::string framesText(double seconds, const MediaAsset& video);

/// The path without the file's name and the slash before it.
std::string_view folderOf(const MediaAsset& asset);
/// "2024-05-17".
std::string dayText(long sinceEpoch);
/// "12.3 s", "4 min 10 s", "1 h 00 min 02 s", for two days or more "396 d 23 h 59 min 53 s".
std::string spanText(double seconds);

void addClipDoubts(const Shoot& shoot, SyncDoubts& doubts);
/// For takes in mono files.
void addMissingChannels(const Shoot& shoot, SyncDoubts& doubts);
void addCutFiles(const Shoot& shoot, SyncDoubts& doubts);
/// For clips without sound that would lie over recordings whose start was counted at another sample rate.
void addConvertedFiles(const Shoot& shoot, SyncDoubts& doubts);
/// For clips whose first recording is only doubted because of what was heard of it. Must run after all other
/// doubts except these.
void addRivalDoubts(const Shoot& shoot, SyncDoubts& doubts);
void addDayDoubts(const Shoot& shoot, SyncDoubts& doubts);
/// `toHear`, unless null: gets the claims about clocks that the cameras' microphones can decide and that were
/// not analysed.
void addClockDoubts(const Shoot& shoot, SyncDoubts& doubts, std::vector<SoundClaim>* toHear = nullptr);
/// For recorders without other doubts, because their clips have other sound. Must run after the two before.
void addRecorderDates(const Shoot& shoot, SyncDoubts& doubts);
/// By sound that was heard at the head and at the tail of some clips.
void addDrift(const Shoot& shoot, SyncDoubts& doubts);
/// Moves by hand of some clips, as evidence about the other clips.
void addOffsetsByHand(const Shoot& shoot, SyncDoubts& doubts);
/// The same by sound that was heard in some clips, if none was moved by hand.
void addHeardOffsets(const Shoot& shoot, SyncDoubts& doubts);
/// For cards of which all analysed clips have other sound than the recordings under them.
void addUnheardSound(const Shoot& shoot, SyncDoubts& doubts);
/// Long recordings without a place, and clips whose cameras heard them.
void addLoneRecordings(const Shoot& shoot, SyncDoubts& doubts);
/// For a given offset that timecode shows only roughly and nothing confirmed. Must run after those above.
void addGivenOffset(const Shoot& shoot, SyncDoubts& doubts);
/// Adapts other doubts to doubts about the clocks of the same clips, and names clips that were too short to
/// be measured. Must run after those above.
void addWordsBesideClocks(const Shoot& shoot, SyncDoubts& doubts);
/// Removes the options of cures that would move clips again that were moved manually. Must run after all
/// others.
void keepMovedClips(const Shoot& shoot, SyncDoubts& doubts);
/// Recordings that the cameras heard, for clips that no timecode leads to them.
void addSoundsByEar(const Shoot& shoot, SyncDoubts& doubts);
/// For pairs that were too many to be analysed, if no date says which of them to try.
void addPairsNotHeard(const Shoot& shoot, SyncDoubts& doubts);
/// For clips without one of the doubts above.
void addTimecodeDoubts(const Shoot& shoot, SyncDoubts& doubts);

} // namespace orvane
