#pragma once

#include "OrvaneSyncCore/Services/Metadata/LockitFieldMapping.h"

#include <string>
#include <vector>

namespace orvane {

/// The metadata key that one field of LockitNetwork is exported to, as a row of the table.
struct FieldRow {
    LockitField field;
    std::string name;
    FCPMetaTarget target;
    std::string customKey; ///< as it was stored
    bool isDefault = true;
    std::string remark{};   ///< shown to the user: the fields that it is joined with; empty: none
    bool isLeftOut = false; ///< because its key is blank; the remark says so
};

/// All fields, in the order of the export.
std::vector<FieldRow> fieldRows(const LockitFieldMapping& mapping);

} // namespace orvane
