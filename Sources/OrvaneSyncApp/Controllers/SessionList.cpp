#include "OrvaneSyncApp/Controllers/SessionList.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <functional>
#include <limits>
#include <string_view>
#include <utility>

namespace orvane {

namespace {

bool isDecimalDigit(char c) { return c >= '0' && c <= '9'; }

/// The number in the first match of "DT[ _-]*0*([0-9]+)", in upper or lower case, whose digits fit into 64
/// bits.
std::optional<std::int64_t> shootingDayNumber(std::string_view name) {
    for (std::size_t at = 0; at + 2 <= name.size(); ++at) {
        if ((name[at] | 0x20) != 'd' || (name[at + 1] | 0x20) != 't') continue;
        std::size_t first = at + 2;
        while (first < name.size() && (name[first] == ' ' || name[first] == '_' || name[first] == '-'))
            ++first;
        if (first == name.size() || !isDecimalDigit(name[first])) continue;
        std::int64_t number = 0;
        const auto result = std::from_chars(name.data() + first, name.data() + name.size(), number);
        return result.ec == std::errc() ? std::optional(number) : std::nullopt;
    }
    return std::nullopt;
}

} // namespace

const SessionInfo* SessionList::find(const UUID& id) const {
    const auto found = std::ranges::find(sessions_, id, &SessionInfo::id);
    return found == sessions_.end() ? nullptr : &*found;
}

std::vector<UUID> SessionList::idsIn(const std::string& folder) const {
    std::vector<UUID> ids;
    for (const SessionInfo& info : sessions_)
        if (info.folder == folder) ids.push_back(info.id);
    return ids;
}

std::optional<std::string> SessionList::suggestedName(const UUID& id) const {
    const SessionInfo* named = find(id);
    if (named == nullptr || !named->folder || named->folder->empty()) return std::nullopt;
    std::int64_t highest = 0;
    for (const SessionInfo& other : sessions_) {
        if (other.id == id || other.folder != named->folder) continue;
        const std::int64_t number = shootingDayNumber(other.name).value_or(0);
        if (number < std::numeric_limits<std::int64_t>::max()) highest = std::max(highest, number);
    }
    constexpr std::size_t digits = 3;
    std::string next = std::to_string(highest + 1);
    next.insert(0, digits - std::min(digits, next.size()), '0');
    return *named->folder + " DT " + next;
}

void SessionList::place(SessionInfo info) {
    const auto found = std::ranges::find(sessions_, info.id, &SessionInfo::id);
    if (found == sessions_.end())
        sessions_.push_back(std::move(info));
    else
        *found = std::move(info);
    std::ranges::stable_sort(sessions_, std::ranges::greater{}, &SessionInfo::modified);
}

void SessionList::remove(const UUID& id) {
    std::erase_if(sessions_, [&](const SessionInfo& info) { return info.id == id; });
}

} // namespace orvane
