#pragma once

#include "OrvaneSyncCore/Services/Export/ExportSettings.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"

#include <string>
#include <vector>

namespace orvane::FCPXMLExporter {

/// The roles of the channels of a clip, one for each running number. Final Cut Pro switches channels by their
/// role, so all roles of a clip differ.
class ChannelRoles {
  public:
    ChannelRoles(const SyncGroup& group, const Take& take, const ExportSettings& settings);

    /// `number` is a running number, from 1.
    const std::string& of(int number) const { return roles_[static_cast<std::size_t>(number - 1)]; }
    int count() const { return static_cast<int>(roles_.size()); }

  private:
    std::vector<std::string> roles_;
};

} // namespace orvane::FCPXMLExporter
