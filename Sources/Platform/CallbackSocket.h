#pragma once

#include <optional>
#include <string>

namespace orvane::platform {

/// The local socket through which a callback of the browser reaches the waiting program. Only processes of
/// the same user can connect, and data from other users is ignored.
class CallbackSocket {
  public:
    /// If the socket can't be made, returns one that no process can reach. It replaces a socket that was made
    /// earlier.
    static CallbackSocket listen();
    ~CallbackSocket();
    CallbackSocket(CallbackSocket&& other) noexcept;
    CallbackSocket& operator=(CallbackSocket&&) = delete;
    CallbackSocket(const CallbackSocket&) = delete;
    CallbackSocket& operator=(const CallbackSocket&) = delete;

    /// For polling; negative if there is no socket.
    int descriptor() const { return descriptor_; }
    /// The message of a process that has connected. Nothing from other users, from a process that sends
    /// nothing for a second, or from one that sends too much.
    std::optional<std::string> received() const;

    /// False if no process is listening.
    static bool send(const std::string& message);

  private:
    CallbackSocket(int descriptor, std::string path) : descriptor_(descriptor), path_(std::move(path)) {}

    int descriptor_;
    std::string path_;
};

} // namespace orvane::platform
