#pragma once

#include "OrvaneSyncCore/Models/DoubtCure.h"
#include "OrvaneSyncCore/Models/JSONCoding.h"
#include "OrvaneSyncCore/Models/UUID.h"
#include "OrvaneSyncCore/Utilities/EnumTable.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// Why a clip may not have the right sound, or not all of it, and what to do about it. Derived, never stored.
struct SyncDoubt {
    enum class Kind : std::uint8_t {
        otherDay,       ///< its sound is, or may be, from another day
        ambiguous,      ///< several recordings, none clearly the best
        otherDateFits,  ///< a recording of another date would fit
        constantOffset, ///< all sound of a card is off by one time
        timecodeRate,   ///< the timecodes count at another rate than that at which they were read
        dropMix,        ///< drop-frame and non-drop timecodes among files that meet
        shortSound,     ///< the clip is longer than its sound
        mutedSpeech,    ///< speech on a channel that is off, much louder than on those that are on
        cutByTrim,      ///< the trim mode shortens the clip
        splitGap,       ///< a gap between the parts of a split take
        notTimeOfDay,   ///< the timecode does not count the time of day
        noTimecode,     ///< no source states when the clip was filmed
        cutFile,        ///< a file ends earlier than its headers say
        drift,          ///< the sound runs faster or slower than the picture
        missingFile,    ///< a take in mono files lacks a channel that other takes have
    };

    Kind kind = Kind::ambiguous;
    std::string message; ///< one sentence for display, with the numbers and the file's name
    DoubtCure cure;      ///< options, or a decision of the editor
    /// The channel of `mutedSpeech`, from 1.
    std::optional<int> channel{};
    /// The message for the clip's row, which already shows the clip's name and may show only the beginning of
    /// the text; empty: `message`.
    std::string reason{};
    /// For a doubt with numbers that differ between clips: the clip and its numbers, for a text about several
    /// clips; otherwise empty.
    std::string own{};
    /// The message for a window, if it differs, as windows have no options; empty: `message`.
    std::string windowMessage{};
    /// The recording that the clip should have, according to the sound of its camera, or to the time of day
    /// if the recorder lost its date.
    struct Suggestion {
        std::optional<UUID> recordingID{}; ///< absent: the clip's present recording
        double offsetSeconds = 0;          ///< the manual offset
        /// The clip's other recordings are to be removed: beside `recordingID` they would be heard out of
        /// their place.
        bool isAlone = false;
        bool operator==(const Suggestion&) const = default;
    };
    std::optional<Suggestion> suggestion{};

    bool operator==(const SyncDoubt&) const = default;
};
/// What a kind of doubt is about: whether the right recording is under a clip, or what is heard and seen of
/// it.
enum class DoubtTopic : std::uint8_t { matching, clip };

struct DoubtKindRow {
    std::string_view name; ///< in JSON
    DoubtTopic topic;
};
/// One row for each kind, in the order of the kinds.
inline constexpr auto doubtKinds = std::to_array<DoubtKindRow>({
    {"otherDay", DoubtTopic::matching},
    {"ambiguous", DoubtTopic::matching},
    {"otherDateFits", DoubtTopic::matching},
    {"constantOffset", DoubtTopic::matching},
    {"timecodeRate", DoubtTopic::matching},
    {"dropMix", DoubtTopic::matching},
    {"shortSound", DoubtTopic::clip},
    {"mutedSpeech", DoubtTopic::clip},
    {"cutByTrim", DoubtTopic::clip},
    {"splitGap", DoubtTopic::clip},
    {"notTimeOfDay", DoubtTopic::matching},
    {"noTimecode", DoubtTopic::matching},
    {"cutFile", DoubtTopic::clip},
    {"drift", DoubtTopic::clip},
    {"missingFile", DoubtTopic::clip},
});
constexpr const DoubtKindRow& rowOf(SyncDoubt::Kind kind) { return rowOf(doubtKinds, kind); }

/// A doubt about a whole card, with the clips that it affects.
struct CardDoubt {
    SyncDoubt doubt;
    std::vector<UUID> groupIDs; ///< in the order of the clips

    bool operator==(const CardDoubt&) const = default;
};

JSON toJSON(const SyncDoubt& doubt);
/// One line for a terminal: message and cure.
std::string warningOf(const SyncDoubt& doubt);
/// The keys of a doubt, and `groupIDs`.
JSON toJSON(const CardDoubt& doubt);

} // namespace orvane
