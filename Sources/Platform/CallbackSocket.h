#pragma once

#include <optional>
#include <string>

namespace orvane::platform {

/// The local socket through which a callback of the browser reaches the program that waits for it. Only
/// processes of the same user can connect, and only they are listened to.
class CallbackSocket {
  public:
    /// One that nobody can reach where it can't be made. An earlier one is nobody's from here on.
    static CallbackSocket listen();
    ~CallbackSocket();
    CallbackSocket(CallbackSocket&& other) noexcept;
    CallbackSocket& operator=(CallbackSocket&&) = delete;
    CallbackSocket(const CallbackSocket&) = delete;
    CallbackSocket& operator=(const CallbackSocket&) = delete;

    /// For polling; negative where there is none.
    int descriptor() const { return descriptor_; }
    /// What a process that has connected says; nothing from other users, and from one that says nothing for a
    /// second, or too much.
    std::optional<std::string> received() const;

    /// False where nobody listens.
    static bool send(const std::string& message);

  private:
    CallbackSocket(int descriptor, std::string path) : descriptor_(descriptor), path_(std::move(path)) {}

    int descriptor_;
    std::string path_;
};

} // namespace orvane::platform
