#pragma once

#include <string>

namespace orvane::bench {

/// `recording`: of eight channels, a minute or longer.
void printPlayedSoundRows(const std::string& recording);

} // namespace orvane::bench
