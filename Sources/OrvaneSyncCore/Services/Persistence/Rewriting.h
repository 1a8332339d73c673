#pragma once

#include <string>

namespace orvane {

/// Whether a stored JSON text has keys or elements, of a later version perhaps, that the text written in its
/// place has not. Null members say nothing. Throws JSONError.
bool losesSomething(const std::string& stored, const std::string& rewritten);

} // namespace orvane
