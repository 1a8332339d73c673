#pragma once

#include <string>

namespace orvane {

/// Whether a stored JSON text says something that the text written in its place would not say: keys of a
/// later version, values that were read as others. Null members say nothing. Throws JSONError.
bool losesSomething(const std::string& stored, const std::string& rewritten);

} // namespace orvane
