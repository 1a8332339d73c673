#pragma once

#include "OrvaneSyncCore/Models/JSONCoding.h"
#include "OrvaneSyncCore/Models/MatchingDays.h"
#include "Timecode/TimecodeFrameRate.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace orvane {

/// A correction that is malformed or impossible, such as frame 25 at 25 frames a second. The description is
/// for the user.
class CorrectionError : public std::invalid_argument {
  public:
    using std::invalid_argument::invalid_argument;
};

/// What people know better than the files. Corrections change where matching places the files; the values
/// that the files state are not changed.
struct SourceCorrections {
    /// "[-]HH:MM:SS:FF", added to the start of every recording. Counted at `timecodeRate`, or else at the
    /// rate of most clips.
    std::optional<std::string> soundOffset = {};
    /// "YYYY-MM-DD", the day on which the earliest recording of each shoot began, whatever its name and
    /// header say. The other recordings keep their distance in days.
    std::optional<std::string> soundDate = {};
    /// The rate at which the timecodes of clips and recordings count, whatever the files say. A file whose
    /// timecode does not exist at this rate keeps its own rate. Starts in samples are not affected.
    std::optional<TimecodeFrameRate> timecodeRate = {};
    /// Which days may be matched; absent: the setting decides.
    std::optional<MatchingDays> days = {};

    bool isEmpty() const { return *this == SourceCorrections(); }
    bool operator==(const SourceCorrections&) const = default;

    /// From typed texts; the rate as "23.976", "29.97DF", "30000/1001" or the name of its case. Throws
    /// CorrectionError.
    static SourceCorrections fromTexts(std::optional<std::string> soundOffset,
                                       std::optional<std::string> soundDate,
                                       const std::optional<std::string>& timecodeRate);
    /// Throws CorrectionError if a text is malformed, or if the frame of `soundOffset` exists at no rate, or
    /// not at `timecodeRate`.
    void check() const;
    /// Seconds; 0 without an offset. `rateOfClips` is used if `timecodeRate` is absent. Throws
    /// CorrectionError.
    double soundOffsetSeconds(TimecodeFrameRate rateOfClips) const;
    /// Days since 1970; absent without a date. Throws CorrectionError.
    std::optional<long> soundDay() const;
};

/// A signed duration of less than a day as text, in the form of `soundOffset`, to the nearest frame.
std::string offsetText(double seconds, TimecodeFrameRate rate);

/// The keys are the names of the fields. The rate is stored by the name of its case, the days as in their
/// setting; absent values are left out.
JSON toJSON(const SourceCorrections& corrections);
/// Values that cannot be understood count as absent.
template <>
SourceCorrections fromJSON<SourceCorrections>(const JSON& json);
/// Writes the corrections under the key `sourceCorrections` of a record, if there are any.
void setSourceCorrections(JSON& record, const SourceCorrections& corrections);
SourceCorrections sourceCorrectionsFrom(const JSON& record);

} // namespace orvane
