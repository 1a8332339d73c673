#pragma once

#include "Platform/SettingsStore.h"

#include <string>
#include <vector>

namespace orvane {

/// The subroles of the first tracks, in track order, as the list of roles edits them.
class RoleList {
  public:
    explicit RoleList(const platform::SettingsStore& store);

    const std::vector<std::string>& roles() const { return roles_; }
    /// Moves a role by so many places; beyond the ends of the list, nothing changes.
    void move(std::size_t from, int by);
    /// The values to store in the settings.
    platform::SettingsStore::Values values() const;
    /// A sentence about the tracks that Final Cut Pro shows as one, because they have the same role; empty:
    /// none.
    std::string sharedRoles() const;

  private:
    std::vector<std::string> roles_;
};

} // namespace orvane
