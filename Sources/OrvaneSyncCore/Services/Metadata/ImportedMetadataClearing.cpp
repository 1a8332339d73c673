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

} // namespace

bool clearALEMetadata(SyncGroup& group) { return clear(group, &SyncGroup::aleMetadata); }
bool clearLockitMetadata(SyncGroup& group) { return clear(group, &SyncGroup::lockitMetadata); }

int clearALEMetadataForAllClips(SyncGroupList& groups) {
    return static_cast<int>(
        groups.updateWhere([](const SyncGroup& group) { return group.hasALEMetadata(); }, clearALEMetadata));
}

int clearLockitMetadataForAllClips(SyncGroupList& groups) {
    return static_cast<int>(groups.updateWhere(
        [](const SyncGroup& group) { return group.hasLockitMetadata(); }, clearLockitMetadata));
}

} // namespace orvane::ImportedMetadataClearing
