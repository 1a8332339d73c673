#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncCore/Services/SmartAudio/MasterGain.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioPredictor.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

// What the inspector says of a clip's sound. Interface thread.

/// The recordings of a clip, and those that could be added.
struct RecordingsPart {
    static constexpr std::string_view choosePrompt = "Pick an audio file to attach to this sync clip.";
    static constexpr std::string_view detachHint = "Detach this video from the session. Audio matches return "
                                                   "to the wildtrack pool. The video file itself "
                                                   "is not deleted.";

    struct File {
        UUID matchID;
        std::string name;
        std::string facts; ///< where it begins, how much of the clip it covers, channels

        bool operator==(const File&) const = default;
    };
    struct Recording {
        std::string title;
        std::vector<File> files; ///< at least one
        bool operator==(const Recording&) const = default;
    };
    std::vector<Recording> recordings; ///< the first is heard
    std::string prompt;                ///< what is to be decided, or done; may be empty
    bool isAmbiguous = false;
    bool isLocked = false;
    bool isMeantSilent = false;

    /// A recording can be chosen among several with one click.
    bool hasChoice() const { return recordings.size() > 1 && !isLocked; }

    static RecordingsPart of(const ImportController& controller, const SyncGroup& group);
    bool operator==(const RecordingsPart&) const = default;
};

/// What a clip could get: what lies nearest to it first, of equal ones wild tracks before what other clips
/// use; behind them what has no place in time, and what is of another day behind all.
struct Attachable {
    MediaAsset audio;
    std::string label;
    std::string day = {};                ///< where it is another one than that of the clip
    std::string start = {};              ///< timecode; empty where there is none
    std::optional<double> fromClip = {}; ///< seconds; negative: ends before the clip begins
};
std::vector<Attachable> attachableTo(const ImportController& controller, const UUID& groupID);

/// The channels of a clip's take.
struct ChannelsPart {
    struct Channel {
        int track = 0;      ///< from 1
        std::string name;   ///< the recorder's, else the number
        std::string kind;   ///< such as "boom", and why it counts as that; empty before an analysis
        std::string share;  ///< how much of the take the algorithm gives it; empty before an analysis
        std::string ranges; ///< chosen by hand; empty: none
        std::string gain;   ///< recommended; empty: none
        bool isActive = true;
        bool isAllowed = true; ///< the analysis may use it
        bool isSolo = false;   ///< the player plays it alone

        bool operator==(const Channel&) const = default;
    };
    std::vector<Channel> channels;
    std::string summary;
    std::string music; ///< what stems say; empty: nothing
    bool isAnalysed = false;
    bool isChosenByHand = false;

    static ChannelsPart of(const ImportController& controller, const SyncGroup& group);
    bool operator==(const ChannelsPart&) const = default;
};

/// How loud the clip is and will be.
struct LoudnessPart {
    std::string source, preset, target, forecast;
    double gainDB = 0;
    std::string gain; ///< "+3.0 dB"
    bool isMeasured = false;
    bool isAutomatic = true;
    std::string warning;    ///< empty: none
    std::string estimation; ///< said without a calibration

    static LoudnessPart of(const SyncGroup& group, const MasterGain::Target& target,
                           const SmartAudioPredictor& predictor);
    bool operator==(const LoudnessPart&) const = default;
};

} // namespace orvane
