#pragma once

#include "OrvaneSyncCore/Models/Settings/Export.h"
#include "OrvaneSyncCore/Models/Settings/Metadata.h"
#include "OrvaneSyncCore/Models/Settings/Offspeed.h"
#include "OrvaneSyncCore/Models/Settings/Program.h"
#include "OrvaneSyncCore/Models/Settings/Project.h"
#include "OrvaneSyncCore/Models/Settings/SmartAudio.h"
#include "OrvaneSyncCore/Models/Settings/Sound.h"

/// Every setting of the user, each declared once: key, type and default, heading and meaning, and for some
/// settings choices, range, the words of the settings screen and a place in the help. Readers call
/// `store.get(settings::trimMode)`. Lists, presets, checks and the help use `SettingsCatalogue::all()`, which
/// has the families in the order of `settings::families` and the settings of a family in the order of its
/// header.
///
/// Without a default: maps that only hold what the user changed, and start points that only count in their
/// mode. Presets and folders may hold the experimental key of the volume keyframes; its reader uses it if the
/// other key is absent.
namespace orvane::settings {}
