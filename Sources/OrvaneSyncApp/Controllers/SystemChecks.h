#pragma once

#include "OrvaneSyncCore/Services/Ingest/ProbeCache.h"
#include "Platform/SettingsStore.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvane {

/// One thing that the program may need of the machine.
struct SystemCheck {
    const char* name;
    const char* status; ///< "ok", "problem", or "unused" for what nothing asks for
    std::string detail;
};

/// Looks at everything that the program needs. Starts programs and reads files, a second at most: not on
/// the interface thread. `openProbeCache`: the cache of this program; called once.
std::vector<SystemCheck> systemChecks(const platform::SettingsStore& settings,
                                      const std::function<std::shared_ptr<ProbeCache>()>& openProbeCache);

} // namespace orvane
