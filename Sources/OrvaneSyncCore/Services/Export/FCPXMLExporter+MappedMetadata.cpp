#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"

#include <algorithm>

namespace orvane::FCPXMLExporter {

namespace {

/// Several fields may be mapped to one key: then their values are joined under it.
void add(std::vector<fcpxml::MetadataItem>& items, const std::string& key, std::string value) {
    const auto existing = std::ranges::find(items, key, &fcpxml::MetadataItem::key);
    if (existing != items.end()) {
        existing->value = existing->value.value_or("") + " · " + value;
        return;
    }
    fcpxml::MetadataItem item;
    item.key = key;
    item.value = std::move(value);
    items.push_back(std::move(item));
}

} // namespace

MappedItems lockitMappedItems(const SyncGroup& group, const ExportSettings& settings) {
    MappedItems mapped;
    if (!group.hasLockitMetadata()) return mapped;
    const LockitFieldMapping& mapping = settings.lockitFieldMapping;
    for (const LockitField field : allLockitFields) {
        const auto entry = group.lockitMetadata->find(std::string(rawValue(field)));
        if (entry == group.lockitMetadata->end() || entry->second.empty()) continue;
        const std::string& value = entry->second;
        switch (mapping.target(field)) {
        case FCPMetaTarget::off:
            break;
        case FCPMetaTarget::keyword:
            mapped.keywords.push_back(value);
            break;
        case FCPMetaTarget::notes:
            mapped.notes.push_back(value);
            break;
        default:
            if (const auto key = mapping.metadataKey(field))
                add(mapped.items, *key, settings.metadataPrefix + value);
        }
    }
    return mapped;
}

} // namespace orvane::FCPXMLExporter
