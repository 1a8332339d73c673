#pragma once

#include "OrvaneSyncCore/Models/ScanModels.h"
#include "OrvaneSyncCore/Services/Ingest/FileDiscoveryService.h"

#include <memory>

namespace orvane {

/// What a scan found and read; the work is made of it.
struct ScanOutcome {
    std::shared_ptr<const DiscoveryResult> discoveryResult;
    std::shared_ptr<const ScanResult> scanResult;
};

} // namespace orvane
