#pragma once

namespace orvane::platform {

/// Asks the X server to report a key that is held as presses alone, without a release between any two of
/// them: a release then always is one. For the connection that reads the keys; `display` is a Display* of
/// Xlib. False where the server cannot, or there is no Xlib.
bool askForDetectableKeyRepeat(void* display);

} // namespace orvane::platform
