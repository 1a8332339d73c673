#pragma once

#include "OrvaneSyncCore/Services/Ingest/ProbeCache.h"
#include "Platform/SettingsStore.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvane {

/// The check of one thing that the program may need from the machine.
struct SystemCheck {
    const char* name;
    const char* status; ///< "ok", "problem", or "unused" if nothing needs it
    std::string detail;
};

/// Checks everything that the program needs. Starts programs and reads files, for at most a second: not on
/// the interface thread. `openProbeCache`: opens the program's cache; called once.
std::vector<SystemCheck> systemChecks(const platform::SettingsStore& settings,
                                      const std::function<std::shared_ptr<ProbeCache>()>& openProbeCache);

} // namespace orvane
