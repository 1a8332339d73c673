#pragma once

#include <stdexcept>
#include <string>

namespace orvane {

/// LockitNetwork did not give what it was asked for. Failures of the transport (platform::HTTPError) and of
/// the decoding (DecodingError) come as they are; an answer that is not HTTP is an invalid response.
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
    int status() const { return status_; } ///< of HTTP; 0 where there was none

  private:
    LockitError(Kind kind, const std::string& description, int status)
        : std::runtime_error(description), kind_(kind), status_(status) {}

    Kind kind_;
    int status_;
};

} // namespace orvane
