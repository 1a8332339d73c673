#pragma once

#include "OrvaneSyncCore/Models/JSONCoding.h"

namespace orvane {

/// One setting on its way through JSON: a boolean, an integer, a 64-bit float, a text, a list or a map of
/// these.
struct AnyCodable {
    JSON value;
};

JSON toJSON(const AnyCodable& setting);
/// Takes the first kind that fits, in the order above, so that a whole number comes back as an integer. A
/// null, at any depth, throws DecodingError.
template <>
AnyCodable fromJSON<AnyCodable>(const JSON& json);

} // namespace orvane
