#pragma once

#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "Platform/SHA256.h"

#include <cstdint>
#include <string_view>

namespace orvane {

/// Tells one rendering from another: the first 64 bits of the SHA-256 over everything that it depends on, so
/// that a later run of the program finds what was rendered. Any thread that may wait, one at a time.
class RenderKey {
  public:
    RenderKey& add(std::string_view text);
    RenderKey& add(double number);
    RenderKey& add(int number) { return add(static_cast<double>(number)); }
    /// Every file of the take: its path, its place in the take and, where they can be read, its size and
    /// modification date.
    RenderKey& add(const TakeSound& sound);

    /// Nothing may be added after it.
    std::uint64_t value();

  private:
    platform::SHA256 hash_;
};

} // namespace orvane
