#include "Platform/MediaHelper/HelperSocket.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <sys/socket.h>

namespace orvane::platform::helper {

namespace {

using TimePoint = std::chrono::steady_clock::time_point;
constexpr auto never = TimePoint::max();

bool sendAll(int descriptor, const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t sent = ::send(descriptor, bytes, count, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent <= 0) return false;
        bytes += sent;
        count -= static_cast<std::size_t>(sent);
    }
    return true;
}

bool waitForBytes(int descriptor, TimePoint until, const WaitClock& clock) {
    for (;;) {
        int milliseconds = -1;
        if (until != never) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - clock.now()).count();
            milliseconds = static_cast<int>(std::max<decltype(left)>(left, 0));
        }
        pollfd wanted{descriptor, POLLIN, 0};
        const int ready = clock.poll(wanted, milliseconds);
        if (ready > 0) return true;
        if (ready == 0 || errno != EINTR) return false;
    }
}

bool receiveAll(int descriptor, char* bytes, std::size_t count, TimePoint until, const WaitClock& clock) {
    while (count > 0) {
        if (!waitForBytes(descriptor, until, clock)) return false;
        const ssize_t got = ::recv(descriptor, bytes, count, 0);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        bytes += got;
        count -= static_cast<std::size_t>(got);
    }
    return true;
}

} // namespace

bool send(int descriptor, const std::string& message) {
    const auto length = static_cast<std::uint32_t>(message.size());
    return message.size() <= longestMessage &&
           sendAll(descriptor, reinterpret_cast<const char*>(&length), sizeof length) &&
           sendAll(descriptor, message.data(), message.size());
}

std::optional<std::string> receive(int descriptor, std::optional<std::chrono::milliseconds> limit,
                                   const WaitClock& clock) {
    const auto until = limit ? clock.now() + *limit : never;
    std::uint32_t length = 0;
    if (!receiveAll(descriptor, reinterpret_cast<char*>(&length), sizeof length, until, clock) ||
        length > longestMessage)
        return std::nullopt;
    std::string message(length, '\0');
    if (!receiveAll(descriptor, message.data(), message.size(), until, clock)) return std::nullopt;
    return message;
}

} // namespace orvane::platform::helper
