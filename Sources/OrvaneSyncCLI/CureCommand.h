#pragma once

#include "OrvaneSyncApp/Controllers/WorkSnapshot.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::cli {

/// The call with the options of a cure, as a shell reads it: "orvanesync diagnose shoot --days same". `call`:
/// its words, the program first. Of several ways to cure it is the first. Nothing where no options do all of
/// it, as where files have to be put into a folder of their own, and for names that no terminal shows.
std::optional<std::string> cureCommand(std::span<const std::string> call, std::string_view cure);

/// Those of all doubts, each once, in their order.
std::vector<std::string> cureCommands(std::span<const std::string> call, const WorkSnapshot& work);

} // namespace orvane::cli
