#pragma once

namespace orvane::platform {

/// Asks the X server to report a held key as presses alone, without a release between any two of them, so
/// that a release always means a released key. For the connection that reads the keys; `display` is a
/// Display* of Xlib. False if the server cannot do this, or there is no Xlib.
bool askForDetectableKeyRepeat(void* display);

} // namespace orvane::platform
