#pragma once

#include <string>

namespace orvane {

/// A warning as a window says it, without the options of the command line that the core quotes in it. Pure;
/// any thread.
std::string warningInWords(std::string warning);

} // namespace orvane
