#include "OrvaneSyncCore/Utilities/FilenameUtils.h"

#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <string>

namespace orvane::FilenameUtils {

namespace {

constexpr bool isSeparator(char c) { return c == '_' || c == '-' || c == ' ' || c == '.'; }

/// Whether the test holds for any word of the name. The test gets the word and the word before it, which is
/// empty for the first.
template <class Test>
bool anyPiece(std::string_view name, const Test& test) {
    std::string_view previous;
    while (!name.empty()) {
        const auto end = std::ranges::find_if(name, isSeparator);
        const std::string_view piece(name.begin(), end);
        name = std::string_view(end == name.end() ? end : end + 1, name.end());
        if (piece.empty()) continue;
        if (test(previous, piece)) return true;
        previous = piece;
    }
    return false;
}

template <std::size_t count>
bool anyOf(std::string_view piece, const std::array<std::string_view, count>& words) {
    return std::find(words.begin(), words.end(), piece) != words.end();
}

} // namespace

std::string_view withoutExtension(std::string_view name) {
    const std::size_t point = name.rfind('.');
    if (point == std::string_view::npos || point == 0 || point + 1 == name.size()) return name;
    return name.substr(0, point);
}

bool isAtmo(std::string_view name) {
    static constexpr std::array<std::string_view, 6> words{"ATMO",    "AMB",      "AMBIENCE",
                                                           "AMBIENT", "ROOMTONE", "WILDTRACK"};
    const std::string upper = platform::text::uppercased(name);
    return anyPiece(withoutExtension(upper), [](std::string_view previous, std::string_view piece) {
        return anyOf(piece, words) || (previous == "ROOM" && piece == "TONE") ||
               (previous == "WILD" && piece == "TRACK");
    });
}

bool isMadeRoomTone(std::string_view name) { return name.find(madeRoomToneEnding) != std::string_view::npos; }

bool isMOS(std::string_view name) {
    const std::string upper = platform::text::uppercased(name);
    return anyPiece(withoutExtension(upper),
                    [](std::string_view, std::string_view piece) { return piece == "MOS"; });
}

} // namespace orvane::FilenameUtils
