#pragma once

#include <stdexcept>

namespace orvane {

/// An operation named a clip that is not in the list.
class GroupNotFound : public std::runtime_error {
  public:
    static constexpr int code = 404;
    GroupNotFound() : std::runtime_error("Group not found") {}
};

/// A decision was refused, because it is about something that does not exist or is out of its range. The
/// message says what is allowed.
class OutOfRange : public std::invalid_argument {
  public:
    using std::invalid_argument::invalid_argument;
};

} // namespace orvane
