#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncCore/Models/SyncDoubt.h"
#include "OrvaneSyncCore/Services/SmartAudio/MasterGain.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioPredictor.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

// What the inspector shows about a clip's sound. Interface thread.

/// The recordings of a clip, and those that could be added.
struct RecordingsPart {
    static constexpr std::string_view choosePrompt = "Pick an audio file to attach to this sync clip.";
    static constexpr std::string_view detachHint = "Detach this video from the session. Audio matches return "
                                                   "to the wildtrack pool. The video file itself "
                                                   "is not deleted.";

    struct File {
        UUID matchID;
        std::string name;
        std::string facts; ///< where it begins, how much of the clip it covers, its channels

        bool operator==(const File&) const = default;
    };
    struct Recording {
        std::string title;
        std::vector<File> files; ///< at least one
        bool operator==(const Recording&) const = default;
    };
    std::vector<Recording> recordings; ///< the first one is played
    std::string prompt;                ///< what has to be decided or done; may be empty
    bool isAmbiguous = false;
    bool isLocked = false;
    bool isMeantSilent = false;
    bool isOutside = false; ///< the sound ends before the picture or begins after it

    /// Whether there are several recordings, of which one click chooses one.
    bool hasChoice() const { return recordings.size() > 1 && !isLocked; }

    static RecordingsPart of(const ImportController& controller, const SyncGroup& group);
    bool operator==(const RecordingsPart&) const = default;
};

/// A recording that could be attached to a clip. First come those that the clip's doubts suggest. Sorted by
/// distance from the clip; at the same distance, wild tracks come before recordings of other clips. Then come
/// recordings without a time, and last those of another day.
struct Attachable {
    MediaAsset audio;
    std::string label;
    std::string day = {};                ///< set if it differs from the day of the clip
    std::string start = {};              ///< timecode; empty if unknown
    std::optional<double> fromClip = {}; ///< seconds; negative: the recording ends before the clip begins
    /// A doubt names it, or names an offset that moves it under the clip.
    bool isSuggested = false;
};
/// `doubts`: those of the clip.
std::vector<Attachable> attachableTo(const ImportController& controller, const UUID& groupID,
                                     const std::vector<SyncDoubt>& doubts = {});

/// The channels of the clip's recording.
struct ChannelsPart {
    struct Channel {
        int track = 0;      ///< from 1
        std::string name;   ///< the recorder's name for it, else its number
        std::string kind;   ///< such as "boom", and the reason; empty before an analysis
        std::string share;  ///< the part of the take that the algorithm gives to it; empty before an analysis
        std::string ranges; ///< ranges chosen by the editor; empty: none
        std::string gain;   ///< the recommended gain; empty: none
        bool isActive = true;
        bool isAllowed = true; ///< the analysis may use it
        bool isSolo = false;   ///< the player plays it alone

        bool operator==(const Channel&) const = default;
    };
    std::vector<Channel> channels;
    std::string summary;
    std::string music; ///< music found in the stems; empty: none
    bool isAnalysed = false;
    bool isChosenByHand = false;

    static ChannelsPart of(const ImportController& controller, const SyncGroup& group);
    bool operator==(const ChannelsPart&) const = default;
};

/// How loud the clip is, and how loud it will be.
struct LoudnessPart {
    std::string source, preset, target, forecast;
    double gainDB = 0;
    std::string gain; ///< "+3.0 dB"
    bool isMeasured = false;
    bool isAutomatic = true;
    std::string warning;    ///< empty: none
    std::string estimation; ///< shown if there is no calibration

    static LoudnessPart of(const SyncGroup& group, const MasterGain::Target& target,
                           const SmartAudioPredictor& predictor);
    bool operator==(const LoudnessPart&) const = default;
};

} // namespace orvane
