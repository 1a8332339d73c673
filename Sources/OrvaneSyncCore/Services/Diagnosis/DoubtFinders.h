#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <array>

/// The functions that find doubts, most of them in a source of their own.
namespace orvane {

/// Files that end earlier than their headers say.
void addCutFiles(const Shoot& shoot, SyncDoubts& doubts);
/// For clips without sound that would lie over recordings whose start was counted at another sample rate.
void addConvertedFiles(const Shoot& shoot, SyncDoubts& doubts);
/// Doubts that one clip and its recordings show.
void addClipDoubts(const Shoot& shoot, SyncDoubts& doubts);
/// For takes in mono files.
void addMissingChannels(const Shoot& shoot, SyncDoubts& doubts);
/// Clocks that are off, and rates at which timecode was counted.
void addClockDoubts(const Shoot& shoot, SyncDoubts& doubts);
/// For a given offset, if the cameras heard the recordings at the places that the files state.
void addStatedPlaces(const Shoot& shoot, SyncDoubts& doubts);
/// Recordings with a wrong date in one half of the day.
void addHalfDayDates(const Shoot& shoot, SyncDoubts& doubts);
/// Dates that are wrong or missing, of clips without a doubt about their half of the day.
void addDayDoubts(const Shoot& shoot, SyncDoubts& doubts);
/// For recorders without doubts so far, because their clips have other sound.
void addRecorderDates(const Shoot& shoot, SyncDoubts& doubts);
/// Recordings that the cameras heard, for clips that no timecode leads to them.
void addSoundsByEar(const Shoot& shoot, SyncDoubts& doubts);
/// Long recordings without a place, and clips whose cameras heard them.
void addLoneRecordings(const Shoot& shoot, SyncDoubts& doubts);
/// For clips without one of the doubts above.
void addTimecodeDoubts(const Shoot& shoot, SyncDoubts& doubts);
/// For pairs that were too many to be analysed, if no date says which of them to try.
void addPairsNotHeard(const Shoot& shoot, SyncDoubts& doubts);
/// By sound that was heard at the head and at the tail of some clips.
void addDrift(const Shoot& shoot, SyncDoubts& doubts);
/// For clips whose first recording is only doubted because of what was heard of it.
void addRivalDoubts(const Shoot& shoot, SyncDoubts& doubts);
/// Moves by hand of some clips, as evidence about the other clips.
void addOffsetsByHand(const Shoot& shoot, SyncDoubts& doubts);
/// The same by sound that was heard in some clips, if none was moved by hand.
void addHeardOffsets(const Shoot& shoot, SyncDoubts& doubts);
/// For a given offset that timecode shows only roughly, or not at all, and nothing confirmed.
void addGivenOffset(const Shoot& shoot, SyncDoubts& doubts);
/// For cards of which all analysed clips have other sound than the recordings under them, if nothing else
/// shows why.
void addUnheardSound(const Shoot& shoot, SyncDoubts& doubts);
/// For recordings in parts whose numbers skip one.
void addLostParts(const Shoot& shoot, SyncDoubts& doubts);
/// Adapts other doubts to doubts about the clocks of the same clips, and names clips that were too short to
/// be measured.
void addWordsBesideClocks(const Shoot& shoot, SyncDoubts& doubts);
/// Removes the options of cures that would move clips again that were moved manually.
void keepMovedClips(const Shoot& shoot, SyncDoubts& doubts);

/// In the order in which they run. Each one may use the doubts of those before it.
inline constexpr std::array doubtFinders{
    addCutFiles,          addConvertedFiles, addClipDoubts,    addMissingChannels, addClockDoubts,
    addStatedPlaces,      addHalfDayDates,   addDayDoubts,     addRecorderDates,   addSoundsByEar,
    addLoneRecordings,    addTimecodeDoubts, addPairsNotHeard, addDrift,           addRivalDoubts,
    addOffsetsByHand,     addHeardOffsets,   addGivenOffset,   addUnheardSound,    addLostParts,
    addWordsBesideClocks, keepMovedClips};

} // namespace orvane
