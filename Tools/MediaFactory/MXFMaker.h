#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvane::test {

/// A timecode component of an MXF package. An edit rate of 0 leaves the timecode out.
struct MXFTimecode {
    std::int64_t start = 0; ///< frames
    std::uint16_t base = 25;
    bool isDrop = false;
};

/// One package: the material package, the file, or the tape. Each is the source of the one before.
struct MXFPackage {
    std::optional<MXFTimecode> timecode = {};
    std::int64_t clipStart = 0; ///< position in the next package, edit units
};

struct MXFSpec {
    std::uint32_t rateNumerator = 25, rateDenominator = 1;
    std::int64_t duration = 250;    ///< edit units; -1: not known
    std::int64_t soundDuration = 0; ///< of a track of sound beside the picture; 0: no track
    std::vector<MXFPackage> packages = {{MXFTimecode{}}, {}};
    std::uint32_t width = 1920, height = 1080;
    std::uint8_t frameLayout = 0;                    ///< 1: heights are those of one field
    std::string coding = "\x04\x01\x02\x02\x71\x01"; ///< the codec's label from its byte 8
    std::string created = {};                        ///< the eight bytes of a time stamp
    std::uint8_t status = 4;                         ///< of the header partition; 4: closed and complete
};

/// The header of an MXF file: a partition and its metadata, without essence.
std::string mxfHeader(const MXFSpec& spec);
/// An unfinished header, and a footer with the final values.
std::string mxfWithFooter(const MXFSpec& header, const MXFSpec& footer, bool headerKnowsFooter);

} // namespace orvane::test
