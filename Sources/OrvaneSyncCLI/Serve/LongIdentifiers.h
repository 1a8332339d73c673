#pragma once

#include "Platform/JSON.h"

#include <string>
#include <string_view>

namespace orvane::cli::rpc {

/// Identifiers of requests that are numbers of more than 64 bits, which JSON values here do not hold: within
/// the server each is a text that nobody else has, and outside it is the number as its client wrote it.
class LongIdentifiers {
  public:
    LongIdentifiers();

    /// Throws JSONError.
    platform::JSON parsed(const std::string& line) const;
    std::string text(const platform::JSON& message) const;

  private:
    std::string quoted(std::string_view line) const;

    const std::string mark_; ///< random, so that no text of a client begins with it
};

} // namespace orvane::cli::rpc
