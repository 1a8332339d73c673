#include "OrvaneSyncCore/Utilities/FilenameUtils.h"

#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace orvane::FilenameUtils {

namespace {

constexpr std::string_view separators = "_- .";

std::vector<std::string_view> pieces(std::string_view name) {
    std::vector<std::string_view> result;
    while (!name.empty()) {
        const std::size_t end = std::min(name.find_first_of(separators), name.size());
        if (end > 0) result.push_back(name.substr(0, end));
        name.remove_prefix(std::min(end + 1, name.size()));
    }
    return result;
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
    const auto parts = pieces(withoutExtension(upper));
    for (const auto part : parts)
        if (anyOf(part, words)) return true;
    for (std::size_t i = 0; i + 1 < parts.size(); ++i)
        if ((parts[i] == "ROOM" && parts[i + 1] == "TONE") || (parts[i] == "WILD" && parts[i + 1] == "TRACK"))
            return true;
    return false;
}

bool isMOS(std::string_view name) {
    const std::string upper = platform::text::uppercased(name);
    const auto parts = pieces(withoutExtension(upper));
    return std::find(parts.begin(), parts.end(), "MOS") != parts.end();
}

} // namespace orvane::FilenameUtils
