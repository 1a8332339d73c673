#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace orvane {

/// A clip holds a value that would make its file unreadable.
class EncodingError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The clips of a session as text, at the cost of what changed: the text of every clip of the last list is
/// kept, and a clip that is still the same element of the list is not encoded again. One thread at a time.
class GroupsEncoder {
  public:
    /// A JSON array, one clip after the other. Throws EncodingError.
    std::string encode(const SyncGroupList& groups);

  private:
    struct Encoded {
        SyncGroupList::Element group; ///< held, so that no other clip comes to lie where it lies
        std::shared_ptr<const std::string> text;
    };

    std::vector<Encoded> last_;
};

/// The clips of such a text. A clip whose id occurred before gets one of its own, so that each can be found.
/// Throws JSONError, or DecodingError that names the clip's number and the key.
SyncGroupList groupsFromText(const std::string& text);

} // namespace orvane
