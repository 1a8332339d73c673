#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace orvane {

/// Why the user is not signed in to LockitNetwork.
class OAuthError : public std::runtime_error {
  public:
    enum class Kind {
        tokenRequestFailed,
        notSignedIn,
        userCancelled,
        stateMismatch,
        missingAuthCode,
        keychainWriteFailed,
        keyStoreLocked, ///< the key store has a sign-in that it does not show
        unknown
    };

    /// `body` must hold nothing secret; `status` is 0 without an HTTP answer.
    static OAuthError tokenRequestFailed(int status, std::string_view body) {
        return {Kind::tokenRequestFailed,
                "Lockit token endpoint returned HTTP " + std::to_string(status) + ": " + std::string(body),
                status};
    }
    /// For any other kind.
    explicit OAuthError(Kind kind) : OAuthError(kind, text(kind)) {}

    Kind kind() const { return kind_; }
    int status() const { return status_; } ///< of HTTP; 0 without an answer

  private:
    OAuthError(Kind kind, const std::string& description, int status = 0)
        : std::runtime_error(description), kind_(kind), status_(status) {}
    static std::string text(Kind kind);

    Kind kind_;
    int status_;
};

} // namespace orvane
