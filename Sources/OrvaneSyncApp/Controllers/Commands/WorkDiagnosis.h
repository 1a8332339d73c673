#pragma once

#include "OrvaneSyncApp/Controllers/WorkSnapshot.h"
#include "OrvaneSyncCore/Services/Diagnosis/LeftOver.h"

#include <map>
#include <string>
#include <vector>

namespace orvane {

/// What lies in one folder that was chosen, or in one of the folders right below it.
struct CardContents {
    std::string path;
    int files = 0;                     ///< that can be read: clips and recordings
    std::map<std::string, int> unread; ///< files of other kinds, by extension in capitals
};

/// In the order of their paths; of a chosen folder that holds folders with media, these, each a card of its
/// own. As the last scan found them.
std::vector<CardContents> cardContents(const WorkSnapshot& work);

/// Clips without sound and recordings without picture that no doubt tells of.
LeftOver leftOver(const WorkSnapshot& work);

/// The object of `diagnose --json`.
JSON diagnosisJSON(const WorkSnapshot& work);

} // namespace orvane
