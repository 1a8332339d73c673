#include "OrvaneSyncApp/ViewModels/Results/WarningWords.h"

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

namespace orvane {

namespace {

/// The texts before and after the file's name in a warning. The name ends at the end of the warning if
/// nothing follows it; otherwise before the last `behind` that is followed by `rest`, because a name may
/// contain any text.
struct FileInWarning {
    std::string_view before, behind, rest;
};
constexpr std::array<FileInWarning, 5> filesInWarnings{
    {{"not in the document: ", " (", ")"},
     {"Project rate mismatch: ", " is ", " fps, project is "},
     {"MOS (no audio): ", "", ""},
     {"Skipped (not matched): ", "", ""},
     {"Not in the multicam clip (shorter than a frame of it): ", "", ""}}};

/// The end of the name; absent if the warning has another form.
std::size_t endOfFile(const std::string& warning, const FileInWarning& kind) {
    if (kind.behind.empty()) return warning.size();
    const std::size_t rest = warning.rfind(kind.rest);
    return rest == std::string::npos ? rest : warning.rfind(kind.behind, rest);
}

} // namespace

std::vector<WarningGroup> warningGroups(const std::vector<std::string>& warnings) {
    std::vector<WarningGroup> groups;
    std::map<std::string, std::size_t> places; // by the text without the file
    for (const std::string& warning : warnings) {
        const auto kind = std::ranges::find_if(
            filesInWarnings, [&](const FileInWarning& one) { return warning.starts_with(one.before); });
        const std::size_t end = kind == filesInWarnings.end() ? std::string::npos : endOfFile(warning, *kind);
        if (end == std::string::npos || end < kind->before.size()) {
            groups.push_back({warning, {}});
            continue;
        }
        const std::size_t begin = kind->before.size();
        const auto [place, isNew] =
            places.try_emplace(warning.substr(0, begin) + "\n" + warning.substr(end), groups.size());
        if (isNew)
            groups.push_back({warning, {}});
        else
            groups[place->second].others.push_back(warning.substr(begin, end - begin));
    }
    return groups;
}

} // namespace orvane
