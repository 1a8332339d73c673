#pragma once

#include <string>

namespace orvane::test {

/// A shoot small enough to reason about, at 25 frames a second on 20 November 2026: two cameras and one
/// six-channel recorder with named tracks. Makes "camera" and "sound" below the folder.
///
///     A001C001 and B001C001   inside take T01 of scene 12A; the recording begins 2 and 2.48 s before them
///     A001C002_..._MOS        a clip without sound
///     A001C003                at a time when nothing was recorded
///     ROOMTONE                over the clip without sound
void makeSmallShoot(const std::string& folder);

} // namespace orvane::test
