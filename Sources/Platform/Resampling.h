#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace orvane::platform {

/// A sound at another sample rate: `frames` samples, silence where it ends earlier. A windowed sinc (Kaiser,
/// 32 zero crossings on either side), flat up to 0.86 of the lower of the two Nyquist frequencies and at half
/// at 0.95; nothing is delayed. Both rates in Hz, above 0. `firstAt`: where among `samples` the first one of
/// the result lies. Pure; any thread.
std::vector<float> resampled(std::span<const float> samples, double fromRate, double toRate,
                             std::size_t frames, double firstAt = 0);

} // namespace orvane::platform
