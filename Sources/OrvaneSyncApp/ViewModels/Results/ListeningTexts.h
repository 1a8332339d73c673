#pragma once

#include "OrvaneSyncApp/Controllers/WorkDoubts.h"

#include <string>

namespace orvane {

/// Such as "Listening to the cards: 3 of 18 clips".
std::string listeningText(const WorkDoubts::Listening& progress);
/// About a given offset with frames by which clips were found; otherwise empty.
std::string roughOffsetText(const WorkDoubts::Listened& listened);
/// The result, one sentence on each line. `isInDoubt`: whether the work has doubts.
std::string heardText(const WorkDoubts::Listened& listened, bool isInDoubt);

} // namespace orvane
