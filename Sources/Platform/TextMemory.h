#pragma once

namespace orvane::platform::text {

/// Memory that ICU asks for in vain calls the new-handler, as our own allocations do: left to itself, ICU
/// breaks over it or waits for ever. Before anything of Text.h is used, on one thread.
void callNewHandlerWithoutMemory();

} // namespace orvane::platform::text
