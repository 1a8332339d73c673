#pragma once

#include "OrvaneSyncApp/Controllers/WorkSnapshot.h"
#include "OrvaneSyncCore/Services/Diagnosis/LeftOver.h"

#include <map>
#include <string>
#include <vector>

namespace orvane {

/// The contents of one chosen folder, or of one folder directly below it.
struct CardContents {
    std::string path;
    int files = 0;                     ///< readable ones: clips and recordings
    std::map<std::string, int> unread; ///< files of other kinds, by extension in capitals
};

/// Sorted by path. If a chosen folder contains folders with media, each of these is a card of its own. As the
/// last scan found them.
std::vector<CardContents> cardContents(const WorkSnapshot& work);

/// Clips without sound and recordings without picture that no doubt mentions.
LeftOver leftOver(const WorkSnapshot& work);

/// The object of `diagnose --json`.
JSON diagnosisJSON(const WorkSnapshot& work);

} // namespace orvane
