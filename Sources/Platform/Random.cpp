#include "Platform/Random.h"

#include <sys/random.h>

#include <cerrno>
#include <cstdlib>

namespace orvane::platform {

void secureRandom(std::span<std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::getrandom(bytes.data(), bytes.size(), 0);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) std::abort();
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
}

} // namespace orvane::platform
