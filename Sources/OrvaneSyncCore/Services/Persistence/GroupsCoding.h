#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <memory>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane {

/// A clip has a value with which its file could not be read again.
class EncodingError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Encodes the clips of a session as text and costs only as much as has changed: the text of every clip of
/// the last list is kept, and a clip that is still the same element of the list is not encoded again. One
/// thread at a time.
class GroupsEncoder {
  public:
    /// A JSON array of the clips in order. Throws EncodingError.
    std::string encode(const SyncGroupList& groups);

  private:
    struct Encoded {
        SyncGroupList::Element group; ///< kept, so that the address is not reused for another clip
        std::shared_ptr<const std::string> text;
    };

    std::vector<Encoded> last_;
};

/// Decodes such a text. If the id of a clip has occurred before, the clip gets a new id, so that each can be
/// found. Throws JSONError, DecodingError with the number of the clip and the key, or Stopped.
SyncGroupList groupsFromText(const std::string& text, const std::stop_token& stop = {});

} // namespace orvane
