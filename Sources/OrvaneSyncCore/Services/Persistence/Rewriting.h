#pragma once

#include <string>

namespace orvane {

/// Whether stored JSON text has keys or elements, perhaps from a later version, that the rewritten text
/// lacks. Null members do not count. Throws JSONError.
bool losesSomething(const std::string& stored, const std::string& rewritten);

} // namespace orvane
