#pragma once

#include <string>

namespace orvane::bench {

/// `halfHour`: a recording of eight channels. `folder`: for files made meanwhile.
void printRenderedAudioRows(const std::string& self, const std::string& program, const std::string& halfHour,
                            const std::string& folder);

} // namespace orvane::bench
