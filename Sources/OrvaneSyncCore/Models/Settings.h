#pragma once

#include "OrvaneSyncCore/Models/Settings/Export.h"
#include "OrvaneSyncCore/Models/Settings/Metadata.h"
#include "OrvaneSyncCore/Models/Settings/Offspeed.h"
#include "OrvaneSyncCore/Models/Settings/Program.h"
#include "OrvaneSyncCore/Models/Settings/Project.h"
#include "OrvaneSyncCore/Models/Settings/SmartAudio.h"
#include "OrvaneSyncCore/Models/Settings/Sound.h"

/// Every setting of the user, each declared once: key, type and default, heading, meaning, and where it has
/// them choices, range, the words of the settings screen and its place in the help. Readers ask
/// `store.get(settings::trimMode)`; lists, presets, checks and the help go over `SettingsCatalogue::all()`,
/// which has the families in the order of `settings::families` and each in the order of its header.
///
/// Without a default: maps that only hold what the user changed, and start points that only count under their
/// mode. Presets and folders of any age hold the experimental key of the volume keyframes; its reader takes
/// it where the other one is absent.
namespace orvane::settings {}
