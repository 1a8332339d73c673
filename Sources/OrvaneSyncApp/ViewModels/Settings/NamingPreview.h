#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Naming/PatternEditor.h"

#include <string>

namespace orvane {

/// The name that a naming pattern gives to a clip.
struct NamingPreview {
    std::string name;
    std::string clip; ///< the clip that the name is for, as shown to the user
};

/// For the first clip of the work; for a made-up clip if there is none.
NamingPreview namingPreview(const PatternEditor& editor, const SyncGroupList& groups);

} // namespace orvane
