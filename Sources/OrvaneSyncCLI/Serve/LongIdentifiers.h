#pragma once

#include "Platform/JSON.h"

#include <string>
#include <string_view>

namespace orvane::cli::rpc {

/// Numbers in requests that are larger than JSON values here can hold. As an identifier, each is within the
/// server a text that no client sends, and outside it is the number as its client wrote it. Elsewhere each
/// becomes the nearest number that fits, so that the request is answered by its identifier.
class LongIdentifiers {
  public:
    LongIdentifiers();

    /// Throws JSONError.
    platform::JSON parsed(const std::string& line) const;
    std::string text(const platform::JSON& message) const;

  private:
    std::string readable(std::string_view line) const;

    const std::string mark_; ///< random, so that no text of a client begins with it
};

} // namespace orvane::cli::rpc
