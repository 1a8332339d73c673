#include "OrvaneSyncApp/ViewModels/Settings/FieldRows.h"

#include "Platform/Text.h"

namespace orvane {

std::vector<FieldRow> fieldRows(const LockitFieldMapping& mapping) {
    const LockitFieldMapping defaults;
    std::vector<FieldRow> rows;
    for (const LockitField field : allLockitFields) {
        const FCPMetaTarget target = mapping.target(field);
        FieldRow row{field, std::string(displayName(field)), target, mapping.customKey(field).value_or("")};
        row.isDefault = target == defaults.target(field);
        const auto key = mapping.metadataKey(field);
        if (target == FCPMetaTarget::custom && !key) {
            row.isLeftOut = true;
            row.remark = "Without a key the field is left out.";
        }
        std::vector<std::string> partners;
        for (const LockitField other : allLockitFields)
            if (key && other != field && mapping.metadataKey(other) == key)
                partners.push_back("“" + std::string(displayName(other)) + "”");
        if (!partners.empty())
            row.remark = "Goes to the same place as " + platform::text::joined(partners, " and ") +
                         "; the values are joined by “ · ”.";
        rows.push_back(std::move(row));
    }
    return rows;
}

} // namespace orvane
