#pragma once

#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "Platform/SHA256.h"

#include <cstdint>
#include <string_view>

namespace orvane {

/// Identifies a rendering: the first 64 bits of the SHA-256 over everything that it depends on, so that a
/// later run of the program finds its file. Any thread that may wait, one at a time.
class RenderKey {
  public:
    RenderKey& add(std::string_view text);
    RenderKey& add(double number);
    RenderKey& add(int number) { return add(static_cast<double>(number)); }
    /// Adds every file of the take: path, position in the take and, if they can be read, size and
    /// modification date.
    RenderKey& add(const TakeSound& sound);

    /// Nothing may be added after this call.
    std::uint64_t value();

  private:
    platform::SHA256 hash_;
};

} // namespace orvane
