#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>

namespace orvane::platform {

/// Why nobody came back from the browser. The description is a sentence for people.
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
/// the end. The desktop hands such an address to a second run of this program, which hands it on through a
/// socket that the user alone may connect to (`deliver`); a person may also paste it (`complete`).
class BrowserSession {
  public:
    virtual ~BrowserSession() = default;

    /// Waits for the callback, so never on the interface thread; of two sessions the newer one gets what the
    /// desktop hands over. Throws BrowserSessionError and Stopped.
    virtual std::string run(const std::string& url, std::stop_token stop = {}) = 0;
    /// Hands a callback to the session that waits. False where none waits, or for an address of another
    /// scheme. Any thread.
    virtual bool complete(const std::string& callbackURL) = 0;
    /// Ends the session that waits as the user's own decision. Any thread.
    virtual void cancel() = 0;

    struct Setup {
        std::string callbackScheme;
        /// Shows a page, on the thread that waits; says whether it could.
        std::function<bool(const std::string& url)> open;
        std::chrono::milliseconds limit = std::chrono::minutes(5);
        /// Whether the desktop is to know that this program takes the scheme.
        bool registersScheme = true;
    };
    static std::shared_ptr<BrowserSession> create(Setup setup);

    /// Shows a page in the browser that the desktop has for it (`xdg-open`); false where there is no desktop
    /// or none of its browsers. May take two seconds.
    static bool openInDesktop(const std::string& url);

    /// The word of the command line behind which the desktop puts the address that it hands over.
    static constexpr std::string_view callbackCommand = "oauth-callback";
    /// Hands the address to the session that waits in another process of this user; false where none does.
    static bool deliver(const std::string& callbackURL);
};

} // namespace orvane::platform
