#pragma once

#include "OrvaneSyncCore/Models/ScanModels.h"
#include "OrvaneSyncCore/Services/Ingest/FileDiscoveryService.h"

#include <memory>

namespace orvane {

/// The result of a scan; the work is made from it.
struct ScanOutcome {
    std::shared_ptr<const DiscoveryResult> discoveryResult;
    std::shared_ptr<const ScanResult> scanResult;
};

} // namespace orvane
