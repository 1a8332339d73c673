#pragma once

#include "OrvaneSyncCore/Models/DoubtCure.h"
#include "OrvaneSyncCore/Models/RawValues.h"
#include "OrvaneSyncCore/Models/UUID.h"

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
        otherDay,       ///< its sound is, or may be, of another day
        ambiguous,      ///< several recordings, none clearly best
        otherDateFits,  ///< a recording of another date would fit
        constantOffset, ///< all sound of a card is off by one time
        timecodeRate,   ///< the labels count at another rate than they were read at
        dropMix,        ///< drop frame and non-drop labels among files that meet
        shortSound,     ///< the clip is longer than its sound
        mutedSpeech,    ///< speech on a channel that is off, far above what is on
        cutByTrim,      ///< the trim mode cuts the clip's length
        splitGap,       ///< a gap between the parts of a split take
        notTimeOfDay,   ///< the timecode counts something else than the time of day
        noTimecode,     ///< nothing says when the clip was filmed
        cutFile,        ///< a file ends before what its headers promise
        drift,          ///< the sound runs faster or slower than the picture
        missingFile,    ///< a take in mono files lacks one that others have
    };

    Kind kind = Kind::ambiguous;
    std::string message; ///< one sentence for people, with the numbers and the file's name
    DoubtCure cure;      ///< options, or a decision of the editor
    /// The channel that `mutedSpeech` is about, from 1.
    std::optional<int> channel{};
    /// The message for the row of its clip, which has the clip's name and room for the beginning; empty: as
    /// it is.
    std::string reason{};
    /// Of what has numbers of each clip's own: the clip with these, for a text about several clips at once.
    std::string own{};
    /// The message where a window says it otherwise, as it has no options; empty: as it is.
    std::string windowMessage{};
    /// What the clip should have, by what its camera heard.
    struct Suggestion {
        std::optional<UUID> recordingID{}; ///< absent: the one that it has
        double offsetSeconds = 0;          ///< by hand
        bool operator==(const Suggestion&) const = default;
    };
    std::optional<Suggestion> suggestion{};

    bool operator==(const SyncDoubt&) const = default;
};
template <>
struct RawValues<SyncDoubt::Kind> {
    static constexpr std::array<std::string_view, 15> texts{
        "otherDay",     "ambiguous",  "otherDateFits", "constantOffset", "timecodeRate",
        "dropMix",      "shortSound", "mutedSpeech",   "cutByTrim",      "splitGap",
        "notTimeOfDay", "noTimecode", "cutFile",       "drift",          "missingFile"};
};

/// The doubts whether the right recording lies under a clip. The others are about what is heard and seen of
/// it.
inline constexpr std::array doubtsAboutMatching{
    SyncDoubt::Kind::otherDay,       SyncDoubt::Kind::ambiguous,    SyncDoubt::Kind::otherDateFits,
    SyncDoubt::Kind::constantOffset, SyncDoubt::Kind::timecodeRate, SyncDoubt::Kind::dropMix,
    SyncDoubt::Kind::notTimeOfDay,   SyncDoubt::Kind::noTimecode};

/// A doubt about a whole card, with the clips that it concerns.
struct CardDoubt {
    SyncDoubt doubt;
    std::vector<UUID> groupIDs; ///< in the order of the clips

    bool operator==(const CardDoubt&) const = default;
};

JSON toJSON(const SyncDoubt& doubt);
/// One line for a terminal: the message and the cure.
std::string warningOf(const SyncDoubt& doubt);
/// The keys of the doubt, and `groupIDs`.
JSON toJSON(const CardDoubt& doubt);

} // namespace orvane
