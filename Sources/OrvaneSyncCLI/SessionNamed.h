#pragma once

#include "OrvaneSyncCore/Services/Persistence/SessionStore.h"

#include <string>

namespace orvane::cli {

/// A session by its id or the beginning of it, or by its name, as long as only one answers to it. Throws
/// CommandError.
SessionInfo sessionNamed(const SessionStore& store, const std::string& words);

} // namespace orvane::cli
