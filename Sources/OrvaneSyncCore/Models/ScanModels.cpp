#include "OrvaneSyncCore/Models/ScanModels.h"

#include "OrvaneSyncCore/Utilities/EnumTable.h"

#include <array>

namespace orvane {

namespace {

struct StateRow {
    std::string_view name;
    std::string_view progressText;
};

constexpr std::array<StateRow, 5> stateRows{{
    {"idle", ""},
    {"discovering", "Discovering files..."},
    {"probing", "Reading metadata..."},
    {"matching", "Matching timecodes..."},
    {"done", "Done"},
}};

} // namespace

std::string_view name(ScanState state) { return rowOf(stateRows, state).name; }
std::string_view progressText(ScanState state) { return rowOf(stateRows, state).progressText; }

JSON toJSON(const DiscoveryResult& result) {
    JSON json;
    json.set("videoURLs", toJSONArray(result.videoURLs));
    json.set("audioURLs", toJSONArray(result.audioURLs));
    return json;
}

JSON toJSON(const ScanError& error) {
    JSON json;
    json.set("id", toJSON(error.id));
    json.set("url", toJSON(error.url));
    json.set("message", error.message);
    return json;
}

JSON toJSON(const ProxyFile& proxy) {
    JSON json;
    json.set("url", toJSON(proxy.url));
    json.set("originalURL", toJSON(proxy.originalURL));
    return json;
}

JSON toJSON(const CameraCopy& copy) {
    JSON json;
    json.set("url", toJSON(copy.url));
    json.set("originalURL", toJSON(copy.originalURL));
    json.set("endsEarly", copy.endsEarly);
    return json;
}

JSON toJSON(const ScanResult& result) {
    JSON json;
    json.set("videoAssets", toJSONArray(result.videoAssets));
    json.set("audioAssets", toJSONArray(result.audioAssets));
    json.set("scanDuration", result.scanDuration);
    json.set("errors", toJSONArray(result.errors));
    json.set("proxies", toJSONArray(result.proxies));
    json.set("copies", toJSONArray(result.copies));
    return json;
}

} // namespace orvane
