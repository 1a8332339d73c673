#pragma once

#include "OrvaneSyncCore/Models/JSONCoding.h"

namespace orvane {

/// The value of one setting for storage as JSON: a boolean, an integer, a 64-bit float, a text, a list or a
/// map of these.
struct AnyCodable {
    JSON value;
};

JSON toJSON(const AnyCodable& setting);
/// Uses the first kind that fits, in the order above, so that a whole number is read as an integer. A null at
/// any depth throws DecodingError.
template <>
AnyCodable fromJSON<AnyCodable>(const JSON& json);

} // namespace orvane
