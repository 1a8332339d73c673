#pragma once

namespace orvane::platform::text {

/// Where ICU gets no memory, the new-handler is called, as our own allocations do: left to itself, ICU
/// breaks over it or waits for ever. Before anything of Text.h is used, on one thread.
void callNewHandlerWithoutMemory();

} // namespace orvane::platform::text
