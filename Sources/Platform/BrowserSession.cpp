#include "Platform/BrowserSession.h"

#include "Platform/CallbackSocket.h"
#include "Platform/DesktopScheme.h"
#include "Platform/InterfaceThread.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <array>
#include <cstdint>
#include <mutex>
#include <optional>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace orvane::platform {

namespace {

using Kind = BrowserSessionError::Kind;

class WaitingBrowserSession final : public BrowserSession {
  public:
    explicit WaitingBrowserSession(Setup setup)
        : setup_(std::move(setup)), wake_(::eventfd(0, EFD_CLOEXEC)) {}
    ~WaitingBrowserSession() override {
        if (wake_ >= 0) ::close(wake_);
    }
    WaitingBrowserSession(const WaitingBrowserSession&) = delete;
    WaitingBrowserSession& operator=(const WaitingBrowserSession&) = delete;

    std::string run(const std::string& url, std::stop_token stop) override {
        assertMayBlock("waiting for the browser");
        const Waiting waiting(*this);
        // If neither works, the callback can still be pasted.
        const CallbackSocket socket = CallbackSocket::listen();
        if (setup_.registersScheme) registerScheme(setup_.callbackScheme);
        const std::stop_callback whenStopped(stop, [this] { wakeUp(); });
        const auto end = std::chrono::steady_clock::now() + setup_.limit;
        if (!setup_.open || !setup_.open(url))
            throw BrowserSessionError(Kind::unavailable,
                                      "No browser can be opened. Choose a default browser in "
                                      "the desktop's settings, and sign in again");
        for (;;) {
            throwIfStopped(stop);
            if (auto callback = taken()) return std::move(*callback);
            const auto left = end - std::chrono::steady_clock::now();
            if (left <= left.zero())
                throw BrowserSessionError(Kind::timedOut, "Nobody has signed in in time. Try again.");
            std::array<pollfd, 2> watched{{{wake_, POLLIN, 0}, {socket.descriptor(), POLLIN, 0}}};
            ::poll(watched.data(), watched.size(),
                   static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(left).count()));
            std::uint64_t count = 0;
            if ((watched[0].revents & POLLIN) != 0 && ::read(wake_, &count, sizeof count) < 0) continue;
            if ((watched[1].revents & POLLIN) == 0) continue;
            if (const auto handedOver = socket.received()) complete(*handedOver);
        }
    }

    bool complete(const std::string& callbackURL) override {
        const std::string_view address = text::trimmed(callbackURL);
        const std::string start = setup_.callbackScheme + ":";
        if (text::lowercased(address.substr(0, start.size())) != start) return false;
        const std::lock_guard lock(mutex_);
        if (!isWaiting_) return false;
        callback_ = address;
        wakeUp();
        return true;
    }

    void cancel() override {
        const std::lock_guard lock(mutex_);
        isCancelled_ = isWaiting_;
        wakeUp();
    }

  private:
    /// While it lives, callbacks are accepted.
    class Waiting {
      public:
        explicit Waiting(WaitingBrowserSession& session) : session_(session) { set(true); }
        ~Waiting() { set(false); }
        Waiting(const Waiting&) = delete;
        Waiting& operator=(const Waiting&) = delete;

      private:
        void set(bool isWaiting) {
            const std::lock_guard lock(session_.mutex_);
            session_.isWaiting_ = isWaiting;
            session_.isCancelled_ = false;
            session_.callback_.reset();
        }
        WaitingBrowserSession& session_;
    };

    std::optional<std::string> taken() {
        const std::lock_guard lock(mutex_);
        if (isCancelled_) throw BrowserSessionError(Kind::cancelled, "The sign-in was cancelled");
        return std::exchange(callback_, std::nullopt);
    }

    void wakeUp() const {
        const std::uint64_t one = 1;
        [[maybe_unused]] const auto written = ::write(wake_, &one, sizeof one);
    }

    const Setup setup_;
    const int wake_;
    std::mutex mutex_;
    bool isWaiting_ = false;
    bool isCancelled_ = false;
    std::optional<std::string> callback_;
};

} // namespace

std::shared_ptr<BrowserSession> BrowserSession::create(Setup setup) {
    return std::make_shared<WaitingBrowserSession>(std::move(setup));
}

bool BrowserSession::openInDesktop(const std::string& url) { return openWithDesktop(url); }

bool BrowserSession::deliver(const std::string& callbackURL) { return CallbackSocket::send(callbackURL); }

} // namespace orvane::platform
