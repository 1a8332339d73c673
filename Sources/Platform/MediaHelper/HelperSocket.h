#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <poll.h>
#include <string>

/// The socket between the program and a media helper.
namespace orvane::platform::helper {

/// The descriptor of the socket that a helper has when it starts.
constexpr int messageDescriptor = 3;
constexpr std::size_t longestMessage = std::size_t{64} << 20U; ///< bytes

/// False when the other side has ended.
bool send(int descriptor, const std::string& message);
/// The clock that limits the wait for an answer, and the wait itself: a test passes its own.
struct WaitClock {
    std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;
    /// As poll(2) of one descriptor; -1 millisecond: no limit.
    std::function<int(pollfd& wanted, int milliseconds)> poll = [](pollfd& wanted, int milliseconds) {
        return ::poll(&wanted, 1, milliseconds);
    };
};
/// Nothing when the other side has ended, has not sent the whole message in this time, or sends too much.
/// Without a limit it waits for ever.
std::optional<std::string> receive(int descriptor,
                                   std::optional<std::chrono::milliseconds> limit = std::nullopt,
                                   const WaitClock& clock = {});

} // namespace orvane::platform::helper
