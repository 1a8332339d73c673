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

/// The files of a work, each laid once. One thread at a time.
struct Shoot {
    struct Clip {
        const SyncGroup* group;
        std::optional<FilePlace> place;
        /// In `recordings`, of the first match; absent for a clip without sound, and for sound without a
        /// place.
        std::optional<std::size_t> primary;
        bool isDecided = false; ///< by the editor: no doubt about which recording it has
        bool isCovered = false; ///< as `isCovered` of its group
        /// Its first recording was attached by hand, and no timecode that both count says where it lies;
        /// where nobody has moved it.
        bool isUnplaced = false;
        /// A recording without a start, of a recorder that knows the time, which may have begun at midnight
        /// under it (`Places::midnightOffset`). Of a clip that is not covered, and has it not.
        const MediaAsset* atMidnight = nullptr;

        std::optional<long> likelyDay() const { return place->likelyDay(); }
        /// Its place on that day.
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
    std::unordered_map<UUID, std::size_t> recordingByID; ///< in `recordings`
    /// What is looked for under a clip: a take that was cut into several files lies there as one.
    WholeRecordings wholes;
    /// By the first file of each whole recording: whether a clip has a part of it.
    std::vector<bool> usedWholes() const;

    std::string nameOf(const MediaAsset& asset) const { return "'" + input.names.of(asset) + "'"; }
};

/// The most that one channel of the take has in common with the clip, all of its parts together.
double heardSeconds(const SyncGroup& group, const Take& take);

/// Puts a doubt down for each of the clips.
void addCardDoubt(SyncDoubts& doubts, SyncDoubt doubt, const std::vector<const Shoot::Clip*>& clips);
/// Says of a doubt about the same clips with the same cure that it holds for another card as well. Returns
/// whether there is one.
bool isToldLikewise(SyncDoubts& doubts, const SyncDoubt& doubt, const std::vector<const Shoot::Clip*>& clips,
                    const std::string& card);

/// What a clip may begin earlier or end later than its sound and still be covered: a slow hand at the
/// recorder is none of its clock.
inline constexpr double coverSlackSeconds = 1;
bool covers(const SyncEngine::TCRange& sound, const SyncEngine::TCRange& clip);
/// Whether the clip's sound, moved by that, lies under all of it, or one of its recordings with all of its
/// parts within it: a camera may roll longer than the recorder.
bool isCovered(const Shoot& shoot, const SyncGroup& group, double clipSeconds, double movedBySeconds = 0);

/// Ranges of sound of which one may lie under all of a clip.
class Cover {
  public:
    void add(const SyncEngine::TCRange& range, std::size_t item) { ranges_.push_back({range, item}); }
    void finish();
    /// The item of a range that covers the clip.
    std::optional<std::size_t> of(const SyncEngine::TCRange& clip) const;
    /// The same, else that of one which the clip covers.
    std::optional<std::size_t> ofEither(const SyncEngine::TCRange& clip) const;
    /// The share of the time from `first` to `last` during which there is sound.
    double shareOf(double first, double last) const;
    bool isEmpty() const { return ranges_.empty(); }

  private:
    struct Range {
        SyncEngine::TCRange range;
        std::size_t item;
        std::size_t longest = 0; ///< of this and all before it, the one that ends last
        std::size_t soonest = 0; ///< of this and all behind it, the one that ends first
    };
    std::vector<Range> ranges_;
};

/// What lies in one folder, or below it, and is of one day, or of one night.
struct Card {
    std::string folder;
    std::optional<long> day;
    std::vector<std::size_t> files; ///< by number of the clip or the recording
    long movedByDays = 0;           ///< from the files' own day to `day`, where another one is tried
    long moreDays = 0;              ///< behind `day`, of a night that passes midnight
    std::optional<RecorderMark> recorder = {}; ///< where the folder has files of others that lie otherwise

    bool isOf(long other) const { return day && other >= *day && other <= *day + moreDays; }
};
/// Whether a recording lies in the folder of the card, or below it, and is of its recorder and its day. One
/// without a place in time may be of any day.
bool isOn(const Card& card, const Shoot& shoot, const MediaAsset& recording);
std::vector<Card> cardsOf(const std::vector<Recording>& recordings);
/// By `likelyDay`. Clips without a place are on no card.
std::vector<Card> cardsOf(const std::vector<Shoot::Clip>& clips);

/// The time of the file's own date, else of its header, seconds since 1970 in the user's calendar. A date at
/// midnight is one without a time of day.
std::optional<double> writtenSeconds(const MediaAsset& video);
/// Whether the file's own date, or its header, is that moment of its timecode on that day: names may have the
/// shoot day, which goes on behind midnight.
bool isWrittenOn(const MediaAsset& video, const FilePlace& place, long day);
/// A timecode of zeros, as movies have it whose camera knows no time. One that is dated about midnight may be
/// a night's.
bool countsFromZero(const MediaAsset& video);

/// As a table says it under `offset_frames`, and the same with the word, such as "-1 frame".
long long framesOf(double seconds, const MediaAsset& video);
std::string framesText(double seconds, const MediaAsset& video);

/// Without the file's name and the slash before it.
std::string_view folderOf(const MediaAsset& asset);
/// "2024-05-17".
std::string dayText(long sinceEpoch);
/// "12.3 s", "4 min 10 s", "1 h 00 min 02 s".
std::string spanText(double seconds);

void addClipDoubts(const Shoot& shoot, SyncDoubts& doubts);
/// Of takes in mono files.
void addMissingChannels(const Shoot& shoot, SyncDoubts& doubts);
void addCutFiles(const Shoot& shoot, SyncDoubts& doubts);
/// Of clips without sound that would lie over recordings whose start was counted at another sample rate.
void addConvertedFiles(const Shoot& shoot, SyncDoubts& doubts);
/// Of clips whose first recording nothing speaks against but what was heard of it, so after all others but
/// that.
void addRivalDoubts(const Shoot& shoot, SyncDoubts& doubts);
void addDayDoubts(const Shoot& shoot, SyncDoubts& doubts);
/// `toHear`, unless null: gets what the cameras' microphones can tell of them and were not asked.
void addClockDoubts(const Shoot& shoot, SyncDoubts& doubts, std::vector<SoundClaim>* toHear = nullptr);
/// Of recorders that nothing else is said of, as their clips have other sound: so after the two before.
void addRecorderDates(const Shoot& shoot, SyncDoubts& doubts);
/// What was heard at the head and at the tail of some clips.
void addDrift(const Shoot& shoot, SyncDoubts& doubts);
/// What people moved by hand tells of the other clips.
void addOffsetsByHand(const Shoot& shoot, SyncDoubts& doubts);
/// So does what was heard of some clips, where nobody moved any.
void addHeardOffsets(const Shoot& shoot, SyncDoubts& doubts);
/// Where they had other sound than what lies under them, in all clips of a card that were listened to.
void addUnheardSound(const Shoot& shoot, SyncDoubts& doubts);
/// Long recordings that lie nowhere, beside clips whose cameras heard them.
void addLoneRecordings(const Shoot& shoot, SyncDoubts& doubts);
/// That an offset was given which timecode tells roughly, and nobody checked: so after those above.
void addGivenOffset(const Shoot& shoot, SyncDoubts& doubts);
/// Takes the options off cures that would move clips again which were moved by hand: so after all others.
void keepMovedClips(const Shoot& shoot, SyncDoubts& doubts);
/// Recordings that the cameras heard, of clips that no timecode leads to them.
void addSoundsByEar(const Shoot& shoot, SyncDoubts& doubts);
/// Where such pairs were too many to be listened to, and no date says which of them to try.
void addPairsNotHeard(const Shoot& shoot, SyncDoubts& doubts);
/// Of clips of which the above says nothing.
void addTimecodeDoubts(const Shoot& shoot, SyncDoubts& doubts);

} // namespace orvane
