#pragma once

#include "OrvaneSyncApp/Controllers/WorkDoubts.h"

#include <string>

namespace orvane {

/// "Listening to the cards: 3 of 18 clips".
std::string listeningText(const WorkDoubts::Listening& progress);
/// Of an offset that was given with frames, where clips were heard by it; empty else.
std::string roughOffsetText(const WorkDoubts::Listened& listened);
/// What came of it, a line a sentence. `isInDoubt`: whether anything of the work is.
std::string heardText(const WorkDoubts::Listened& listened, bool isInDoubt);

} // namespace orvane
