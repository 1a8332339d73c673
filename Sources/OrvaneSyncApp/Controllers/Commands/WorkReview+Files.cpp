#include "OrvaneSyncApp/Controllers/Commands/WorkReview.h"

#include "OrvaneSyncCore/Services/Ingest/ALEParser.h"
#include "Platform/Files.h"
#include "Platform/Text.h"

#include <cstdint>
#include <utility>

namespace orvane {

void writeReviewFile(const std::string& path, const std::vector<ReviewLine>& lines, RunInputs inputs,
                     const OutputPermission& permission) {
    const OutputGuard guard(OutputKind::table, std::move(inputs), permission);
    guard.check(path);
    if (!permission.replacesOthers && isOwnOutput(OutputKind::table, path)) {
        const std::vector<ReviewLine> there = readReviewFile(path);
        if (const ReviewLine* lost = firstLostDecision(there, lines))
            throw OutputRefused(
                OutputRefused::Reason::place,
                platform::text::validUTF8("can't write '" + path + "': line " + std::to_string(lost->number) +
                                          " of the table there holds a decision or a note that the new one "
                                          "would not; give the new table another name, or " +
                                          std::string(permission.option) + " to replace it"));
    }
    guard.write(path, writtenReviewTable(lines));
}

std::vector<ReviewLine> readReviewFile(const std::string& path, const std::stop_token& stop) {
    const std::string where = "can't read the review '" + path + "': ";
    try {
        constexpr std::uint64_t mostBytes = std::uint64_t{1} << 30U;
        const std::string text =
            ALEParser::decodeText(platform::files::readText(path, mostBytes, stop), stop);
        return readReviewTable(text, stop);
    } catch (const ReviewTableError& error) {
        throw ReviewTableError(where + error.what());
    } catch (const ALEParserError& error) {
        throw ReviewTableError(where + error.what());
    }
}

} // namespace orvane
