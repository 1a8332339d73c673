#pragma once

#include "OrvaneSyncApp/Controllers/SoundComparison.h"
#include "OrvaneSyncApp/Controllers/WorkDoubts.h"

#include <string>

namespace orvane {

/// Such as "Listening to the cards: 3 of 18 clips".
std::string listeningText(const WorkDoubts::Listening& progress);
/// Such as "Comparing the sound: 3 of 18 clips".
std::string comparingText(const SoundComparison::Progress& progress);
/// The result, one sentence on each line.
std::string comparedText(const ComparedSound& compared);
/// About a given offset with frames by which clips were found; otherwise empty.
std::string roughOffsetText(const WorkDoubts::Listened& listened);
/// `known`: the work has doubts, all of which it had before the listening. `found`: at least one is new.
enum class DoubtsAfterListening { none, known, found };
/// The result, one sentence on each line.
std::string heardText(const WorkDoubts::Listened& listened, const NotCompared& notCompared,
                      DoubtsAfterListening doubts);

} // namespace orvane
