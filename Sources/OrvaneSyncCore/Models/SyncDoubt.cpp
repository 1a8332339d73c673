#include "OrvaneSyncCore/Models/SyncDoubt.h"

namespace orvane {

JSON toJSON(const SyncDoubt& doubt) {
    JSON json;
    json.set("kind", rowOf(doubt.kind).name);
    json.set("message", doubt.message);
    json.set("cure", doubt.cure.text());
    return json;
}

std::string warningOf(const SyncDoubt& doubt) { return doubt.message + "; " + doubt.cure.text(); }

JSON toJSON(const CardDoubt& doubt) {
    JSON json = toJSON(doubt.doubt);
    json.set("groupIDs", toJSONArray(doubt.groupIDs));
    return json;
}

} // namespace orvane
