#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>

namespace orvane::platform {

/// Why the browser returned no callback. The description is a sentence for people.
class BrowserSessionError : public std::runtime_error {
  public:
    enum class Kind {
        cancelled, ///< by the user
        timedOut,
        unavailable ///< no page can be shown
    };
    BrowserSessionError(Kind kind, const std::string& description)
        : std::runtime_error(description), kind_(kind) {}
    Kind kind() const { return kind_; }

  private:
    Kind kind_;
};

/// Shows a page in the user's browser and waits for the address of our own scheme that the page leads to at
/// the end. The desktop passes this address to a second run of this program, which passes it on through a
/// socket that only the same user can connect to (`deliver`). A person may also paste it (`complete`).
class BrowserSession {
  public:
    virtual ~BrowserSession() = default;

    /// Waits for the callback, so never call it on the interface thread. Of two sessions the newer one gets
    /// the address from the desktop. Throws BrowserSessionError and Stopped.
    virtual std::string run(const std::string& url, std::stop_token stop = {}) = 0;
    /// Passes a callback to the waiting session. False if no session waits, or for an address of another
    /// scheme. Any thread.
    virtual bool complete(const std::string& callbackURL) = 0;
    /// Ends the waiting session as cancelled by the user. Any thread.
    virtual void cancel() = 0;

    struct Setup {
        std::string callbackScheme;
        /// Shows a page, on the waiting thread; returns whether it could.
        std::function<bool(const std::string& url)> open;
        std::chrono::milliseconds limit = std::chrono::minutes(5);
        /// Whether to register this program with the desktop as the handler of the scheme.
        bool registersScheme = true;
    };
    static std::shared_ptr<BrowserSession> create(Setup setup);

    /// Shows a page in the desktop's default browser (`xdg-open`); false without a desktop or a browser. May
    /// take two seconds.
    static bool openInDesktop(const std::string& url);

    /// The command line argument that precedes the address from the desktop.
    static constexpr std::string_view callbackCommand = "oauth-callback";
    /// Passes the address to the waiting session in another process of this user; false if none waits.
    static bool deliver(const std::string& callbackURL);
};

} // namespace orvane::platform
