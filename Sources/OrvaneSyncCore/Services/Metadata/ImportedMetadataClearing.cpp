#include "OrvaneSyncCore/Services/Metadata/ImportedMetadataClearing.h"

namespace orvane::ImportedMetadataClearing {

namespace {

using Metadata = decltype(SyncGroup::aleMetadata);

bool clear(SyncGroup& group, Metadata SyncGroup::*field) {
    Metadata& metadata = group.*field;
    if (!metadata || metadata->empty()) return false;
    metadata.reset();
    return true;
}

int clearAll(SyncGroupList& groups, bool (*has)(const SyncGroup&), bool (*clearOne)(SyncGroup&)) {
    int cleared = 0;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        if (!has(groups[i])) continue; // stays shared with other lists
        groups.updateAt(i, clearOne);
        ++cleared;
    }
    return cleared;
}

} // namespace

bool clearALEMetadata(SyncGroup& group) { return clear(group, &SyncGroup::aleMetadata); }
bool clearLockitMetadata(SyncGroup& group) { return clear(group, &SyncGroup::lockitMetadata); }

int clearALEMetadataForAllClips(SyncGroupList& groups) {
    return clearAll(
        groups, [](const SyncGroup& group) { return group.hasALEMetadata(); }, clearALEMetadata);
}

int clearLockitMetadataForAllClips(SyncGroupList& groups) {
    return clearAll(
        groups, [](const SyncGroup& group) { return group.hasLockitMetadata(); }, clearLockitMetadata);
}

} // namespace orvane::ImportedMetadataClearing
