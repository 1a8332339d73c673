#pragma once

#include "Platform/SettingsStore.h"

#include <string>
#include <vector>

namespace orvane {

/// The subroles of the first tracks, in their order, as the list of roles edits them.
class RoleList {
  public:
    explicit RoleList(const platform::SettingsStore& store);

    const std::vector<std::string>& roles() const { return roles_; }
    /// Moves a role in front of another place; places beyond the ends change nothing.
    void move(std::size_t from, int by);
    /// The values to store.
    platform::SettingsStore::Values values() const;
    /// For people: the tracks that Final Cut Pro shows as one because they have one role; empty: none.
    std::string sharedRoles() const;

  private:
    std::vector<std::string> roles_;
};

} // namespace orvane
