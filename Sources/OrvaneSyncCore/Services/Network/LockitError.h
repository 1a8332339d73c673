#pragma once

#include <stdexcept>
#include <string>

namespace orvane {

/// An answer of LockitNetwork that is not the requested one. Errors of the transport (platform::HTTPError)
/// and of decoding (DecodingError) are thrown unchanged; an answer that is not HTTP is an invalid response.
class LockitError : public std::runtime_error {
  public:
    enum class Kind { httpError, invalidResponse, unauthorized };

    static LockitError httpError(int status) {
        return {Kind::httpError, "LockitNetwork HTTP error: " + std::to_string(status), status};
    }
    static LockitError invalidResponse() {
        return {Kind::invalidResponse, "Invalid response from LockitNetwork", 0};
    }
    static LockitError unauthorized() {
        return {Kind::unauthorized, "Lockit access token rejected — sign in again", 401};
    }

    Kind kind() const { return kind_; }
    int status() const { return status_; } ///< HTTP status; 0 if there was none

  private:
    LockitError(Kind kind, const std::string& description, int status)
        : std::runtime_error(description), kind_(kind), status_(status) {}

    Kind kind_;
    int status_;
};

} // namespace orvane
