#pragma once

#include "OrvaneSyncCore/Models/JSONCoding.h"
#include "OrvaneSyncCore/Models/MatchingDays.h"
#include "Timecode/TimecodeFrameRate.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace orvane {

/// A correction that cannot be understood or does not exist, such as frame 25 at 25 frames a second. The
/// description is for the user.
class CorrectionError : public std::invalid_argument {
  public:
    using std::invalid_argument::invalid_argument;
};

/// What people know better than the files of a work. Corrections move where matching lays the files; what the
/// files state of themselves stays as it is.
struct SourceCorrections {
    /// "[-]HH:MM:SS:FF", added to the start of every recording. Counted at `timecodeRate`, else at the rate
    /// of most clips.
    std::optional<std::string> soundOffset = {};
    /// "YYYY-MM-DD", on which the earliest recording of each shoot began, whatever its name and its header
    /// say. The others keep their distance in days.
    std::optional<std::string> soundDate = {};
    /// At which the labels of clips and recordings count, whatever the files say. A file whose label does
    /// not exist at this rate keeps its own. Starts in samples are no labels.
    std::optional<TimecodeFrameRate> timecodeRate = {};
    /// Which days may meet; absent: those of the setting.
    std::optional<MatchingDays> days = {};

    bool isEmpty() const { return *this == SourceCorrections(); }
    bool operator==(const SourceCorrections&) const = default;

    /// From texts as they are typed; the rate as "23.976", "29.97DF", "30000/1001" or the name of its case.
    /// Throws CorrectionError.
    static SourceCorrections fromTexts(std::optional<std::string> soundOffset,
                                       std::optional<std::string> soundDate,
                                       const std::optional<std::string>& timecodeRate);
    /// Throws CorrectionError where the frame of `soundOffset` exists at no rate, or not at `timecodeRate`,
    /// or a text is malformed.
    void check() const;
    /// Seconds; 0 without an offset. `rateOfClips` counts where `timecodeRate` is absent. Throws
    /// CorrectionError.
    double soundOffsetSeconds(TimecodeFrameRate rateOfClips) const;
    /// Days since 1970; absent without a date. Throws CorrectionError.
    std::optional<long> soundDay() const;
};

/// The text of a signed duration of less than a day, as `soundOffset` has it, to the nearest frame.
std::string offsetText(double seconds, TimecodeFrameRate rate);

/// The keys are the names of the fields, the rate by the name of its case, the days as their setting has
/// them; absent values are left out.
JSON toJSON(const SourceCorrections& corrections);
/// Values that cannot be understood are as good as none.
template <>
SourceCorrections fromJSON<SourceCorrections>(const JSON& json);
/// The key `sourceCorrections` of a record, which is there where some are.
void setSourceCorrections(JSON& record, const SourceCorrections& corrections);
SourceCorrections sourceCorrectionsFrom(const JSON& record);

} // namespace orvane
