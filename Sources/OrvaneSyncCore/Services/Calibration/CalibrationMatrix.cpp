#include "OrvaneSyncCore/Services/Calibration/CalibrationMatrix.h"

#include "Platform/Text.h"

#include <algorithm>
#include <cctype>
#include <limits>

namespace orvane {

namespace {

/// The number behind the prefix; absent if the rest is not all digits.
std::optional<int> numberBehind(std::string_view piece, std::string_view prefix) {
    if (!piece.starts_with(prefix)) return std::nullopt;
    piece.remove_prefix(prefix.size());
    const bool isDigits =
        !piece.empty() && std::ranges::all_of(piece, [](unsigned char c) { return std::isdigit(c) != 0; });
    const auto number = isDigits ? platform::text::decimalInteger(piece) : std::nullopt;
    return number && *number <= std::numeric_limits<int>::max() ? std::optional(static_cast<int>(*number))
                                                                : std::nullopt;
}

} // namespace

std::vector<CalibrationPerm> permsOf(CalibrationMatrix matrix) {
    using Values = std::vector<int>;
    const bool isCoarse = matrix == CalibrationMatrix::coarse;
    const Values ends{0, 50, 100};
    std::vector<CalibrationPerm> perms;
    for (const int voiceIsolation : isCoarse ? ends : Values{50})
        for (const int loudness : isCoarse ? ends : Values{0, 15, 25, 35, 50, 75, 100})
            for (const int uniformity : isCoarse ? ends : Values{0, 5, 10, 15, 25, 50, 100})
                perms.push_back({voiceIsolation, loudness, uniformity});
    return perms;
}

std::string filenameTag(const CalibrationPerm& perm) {
    return "VI" + std::to_string(perm.voiceIsoAmount) + "_L" + std::to_string(perm.loudnessAmount) + "_U" +
           std::to_string(perm.uniformity);
}

std::string calibrationClipName(const CalibrationPerm& perm) { return "Calib_" + filenameTag(perm); }

std::optional<CalibrationPerm> parseCalibrationPerm(std::string_view stem) {
    std::optional<int> voiceIsolation, loudness, uniformity;
    for (std::size_t from = 0; from <= stem.size();) {
        const std::size_t end = std::min(stem.find('_', from), stem.size());
        const std::string_view piece = stem.substr(from, end - from);
        if (const auto number = numberBehind(piece, "VI"))
            voiceIsolation = number;
        else if (const auto ofLoudness = numberBehind(piece, "L"))
            loudness = ofLoudness;
        else if (const auto ofUniformity = numberBehind(piece, "U"))
            uniformity = ofUniformity;
        from = end + 1;
    }
    if (!voiceIsolation || !loudness || !uniformity) return std::nullopt;
    return CalibrationPerm{*voiceIsolation, *loudness, *uniformity};
}

} // namespace orvane
