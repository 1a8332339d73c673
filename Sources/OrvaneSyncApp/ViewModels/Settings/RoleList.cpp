#include "OrvaneSyncApp/ViewModels/Settings/RoleList.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "Platform/Text.h"

#include <map>
#include <utility>

namespace orvane {

RoleList::RoleList(const platform::SettingsStore& store) {
    for (const auto& subrole : settings::defaultSubroles) roles_.push_back(store.get(subrole));
}

void RoleList::move(std::size_t from, int by) {
    const auto to = static_cast<std::ptrdiff_t>(from) + by;
    if (from >= roles_.size() || to < 0 || to >= std::ssize(roles_)) return;
    std::string role = std::move(roles_[from]);
    roles_.erase(roles_.begin() + static_cast<std::ptrdiff_t>(from));
    roles_.insert(roles_.begin() + to, std::move(role));
}

platform::SettingsStore::Values RoleList::values() const {
    platform::SettingsStore::Values values;
    for (std::size_t i = 0; i < roles_.size(); ++i)
        values[std::string(settings::defaultSubroles.at(i).key)] = roles_[i];
    return values;
}

std::string RoleList::sharedRoles() const {
    std::map<std::string, std::vector<std::string>> tracks;
    for (std::size_t i = 0; i < roles_.size(); ++i) tracks[roles_[i]].push_back(std::to_string(i + 1));
    std::vector<std::string> shared;
    for (const auto& [role, numbers] : tracks)
        if (numbers.size() > 1)
            shared.push_back("tracks " + platform::text::joined(numbers, " and ") + " share “" + role + "”");
    if (shared.empty()) return "";
    return "Final Cut Pro shows tracks of one role as one: " + platform::text::joined(shared, "; ") + ".";
}

} // namespace orvane
