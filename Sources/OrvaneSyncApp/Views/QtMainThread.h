#pragma once

#include "Platform/MainThread.h"

#include <memory>

namespace orvane::views {

/// The loop of the application as the interface thread of everything below. Made on that thread, after the
/// application object.
std::shared_ptr<platform::MainThread> qtMainThread();

} // namespace orvane::views
