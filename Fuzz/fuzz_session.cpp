#include "OrvaneSyncCore/Services/Persistence/GroupsCoding.h"
#include "OrvaneSyncCore/Services/Persistence/SessionRecords.h"
#include "Platform/JSON.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using namespace orvane;

void checkGroups(const std::string& text) {
    try {
        const SyncGroupList groups = groupsFromText(text);
        const std::string written = GroupsEncoder().encode(groups);
        if (GroupsEncoder().encode(groupsFromText(written)) != written) std::abort();
        // Both decoders of a clip give the same result.
        const JSON tree = JSON::parse(written);
        for (std::size_t i = 0; i < groups.size(); ++i)
            if (toJSON(fromJSON<SyncGroup>((*tree.elements())[i])).dump() != toJSON(groups[i]).dump())
                std::abort();
    } catch (const platform::JSONError&) {
        // A session without clips; its file is kept.
    } catch (const DecodingError&) {
        // The same.
    }
}

template <class Record>
void checkRecord(const JSON& json) {
    try {
        const JSON written = toJSON(fromJSON<Record>(json));
        if (!(toJSON(fromJSON<Record>(written)) == written)) std::abort();
    } catch (const DecodingError&) {
        // It is not listed.
    }
}

} // namespace

// The files of a session of any bytes: they are refused, or the values read are the same after they were
// written and read again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkGroups(text);
    try {
        const JSON json = JSON::parse(text);
        checkRecord<SessionInfo>(json);
        checkRecord<SessionFolders>(json);
        checkRecord<FolderInfo>(json);
    } catch (const platform::JSONError&) {
        // Not JSON.
    }
    return 0;
}
