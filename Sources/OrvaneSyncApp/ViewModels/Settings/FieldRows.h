#pragma once

#include "OrvaneSyncCore/Services/Metadata/LockitFieldMapping.h"

#include <string>
#include <vector>

namespace orvane {

/// Where one field of LockitNetwork goes, as the table of fields shows it.
struct FieldRow {
    LockitField field;
    std::string name;
    FCPMetaTarget target;
    std::string customKey; ///< as it was stored
    bool isDefault = true;
    std::string remark{};   ///< for people: what it is joined with; empty: nothing
    bool isLeftOut = false; ///< its key is blank; the remark says so
};

/// All fields, in the order in which they are exported.
std::vector<FieldRow> fieldRows(const LockitFieldMapping& mapping);

} // namespace orvane
