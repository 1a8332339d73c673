#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Naming/PatternEditor.h"

#include <string>

namespace orvane {

/// What a naming pattern makes of a clip.
struct NamingPreview {
    std::string name;
    std::string clip; ///< whose name it is, for people
};

/// Of the first clip of the work; of a made-up one where there is none.
NamingPreview namingPreview(const PatternEditor& editor, const SyncGroupList& groups);

} // namespace orvane
