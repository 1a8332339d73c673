#pragma once

#include "OrvaneSyncCore/Models/ExportKinds.h"
#include "OrvaneSyncCore/Models/Settings/Families.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"

#include <optional>
#include <string>

/// Metadata of clips from reports and from the metadata service.
namespace orvane::settings {

inline const Declared<ReportMatchField> reportMatchField{
    "ale.matchField",
    ReportMatchField::name,
    family::reports,
    "match a report's lines by the clip's name or by one of its columns",
    {.label = "Lines belong to a clip by"}};
inline const Declared<std::string> reportMatchColumn{
    "ale.matchColumn", "Tape", family::reports, "that column", {.label = "Column"}};

inline const Declared<platform::JSON> lockitFieldMapping{"lockit.fieldMapping.v1", std::nullopt,
                                                         family::lockitFields,
                                                         "where metadata fields go in Final Cut Pro"};
inline const Declared<platform::JSON> lockitCustomKeys{"lockit.fieldMapping.customKeys.v1", std::nullopt,
                                                       family::lockitFields, "metadata keys of your own"};

} // namespace orvane::settings
