#include "OrvaneSyncCore/Models/SyncDoubt.h"

namespace orvane {

JSON toJSON(const SyncDoubt& doubt) {
    JSON json;
    json.set("kind", rawValue(doubt.kind));
    json.set("message", doubt.message);
    json.set("cure", doubt.cure);
    return json;
}

JSON toJSON(const CardDoubt& doubt) {
    JSON json = toJSON(doubt.doubt);
    json.set("groupIDs", toJSONArray(doubt.groupIDs));
    return json;
}

} // namespace orvane
