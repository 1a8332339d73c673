#include "Platform/CallbackSocket.h"

#include "Platform/Files.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace orvane::platform {

namespace {

constexpr std::size_t longestMessage = std::size_t{64} << 10U;
constexpr timeval socketTimeLimit{1, 0};

/// A folder of the user's session, else one of this program's; only if no other user can enter it.
std::string folder() {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    const std::string base =
        runtime != nullptr && *runtime == '/' ? std::string(runtime) : files::dataHome() + "/Orvane Tandrel";
    const std::string path = base + "/orvane-tandrel";
    try {
        files::createDirectories(path);
    } catch (const FileError&) {
        return {};
    }
    struct stat status {};
    const bool isOwn = ::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
                       status.st_uid == ::geteuid() && (status.st_mode & 0077U) == 0;
    return isOwn ? path : "";
}

std::optional<sockaddr_un> address() {
    const std::string path = folder() + "/callback";
    sockaddr_un made{};
    made.sun_family = AF_UNIX;
    if (!path.starts_with('/') || path == "/callback" || path.size() >= sizeof made.sun_path)
        return std::nullopt;
    std::memcpy(static_cast<void*>(made.sun_path), path.data(), path.size());
    return made;
}

int makeSocket() {
    const int made = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (made >= 0) ::fchmod(made, 0600); // the mode that its name will have
    return made;
}

const sockaddr* general(const sockaddr_un& address) { return reinterpret_cast<const sockaddr*>(&address); }

bool isOfThisUser(int connection) {
    ucred other{};
    socklen_t size = sizeof other;
    return ::getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &other, &size) == 0 && other.uid == ::geteuid();
}

} // namespace

CallbackSocket CallbackSocket::listen() {
    const auto place = address();
    const int made = place ? makeSocket() : -1;
    if (made < 0) return {-1, {}};
    std::string path(static_cast<const char*>(place->sun_path));
    ::unlink(path.c_str());
    constexpr int waiting = 8;
    if (::bind(made, general(*place), sizeof *place) == 0 && ::listen(made, waiting) == 0)
        return {made, std::move(path)};
    ::close(made);
    return {-1, {}};
}

CallbackSocket::~CallbackSocket() {
    if (descriptor_ < 0) return;
    ::close(descriptor_);
    // The name may belong to a newer session by now, which then answers.
    const auto place = address();
    const int probe = place ? makeSocket() : -1;
    if (probe < 0) return;
    if (::connect(probe, general(*place), sizeof *place) != 0) ::unlink(path_.c_str());
    ::close(probe);
}

CallbackSocket::CallbackSocket(CallbackSocket&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), path_(std::move(other.path_)) {}

std::optional<std::string> CallbackSocket::received() const {
    const int connection = ::accept4(descriptor_, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection < 0) return std::nullopt;
    ::setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &socketTimeLimit, sizeof socketTimeLimit);
    std::string message;
    std::array<char, 4096> piece{};
    ssize_t count = -1;
    if (isOfThisUser(connection))
        while (message.size() <= longestMessage &&
               (count = ::recv(connection, piece.data(), piece.size(), 0)) > 0)
            message.append(piece.data(), static_cast<std::size_t>(count));
    ::close(connection);
    return count == 0 && !message.empty() ? std::optional(std::move(message)) : std::nullopt;
}

bool CallbackSocket::send(const std::string& message) {
    const auto place = address();
    const int made = place ? makeSocket() : -1;
    if (made < 0) return false;
    bool isSent = ::connect(made, general(*place), sizeof *place) == 0 && isOfThisUser(made);
    ::setsockopt(made, SOL_SOCKET, SO_SNDTIMEO, &socketTimeLimit, sizeof socketTimeLimit);
    for (std::size_t sent = 0; isSent && sent < message.size();) {
        const ssize_t count = ::send(made, message.data() + sent, message.size() - sent, MSG_NOSIGNAL);
        isSent = count > 0;
        if (isSent) sent += static_cast<std::size_t>(count);
    }
    ::close(made);
    return isSent;
}

} // namespace orvane::platform
