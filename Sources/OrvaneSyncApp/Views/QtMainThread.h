#pragma once

#include "Platform/MainThread.h"

#include <memory>

namespace orvane::views {

/// The event loop of the application as the interface thread of all lower layers. Must be made on that
/// thread, after the application object.
std::shared_ptr<platform::MainThread> qtMainThread();

} // namespace orvane::views
