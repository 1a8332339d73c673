#pragma once

namespace orvane::platform::text {

/// Makes ICU call the new-handler when it gets no memory, as our own allocations do; otherwise ICU crashes or
/// waits for ever. Call it before anything of Text.h is used, on one thread.
void callNewHandlerWithoutMemory();

} // namespace orvane::platform::text
