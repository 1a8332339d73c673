#include "OrvaneSyncCore/Models/MediaAsset.h"
#include "Platform/JSONView.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

namespace {

using namespace orvane;

/// The asset in its JSON form, or nothing where it cannot be decoded.
template <class Json>
std::optional<std::string> asset(const Json& json) {
    try {
        return toJSON(fromJSON<MediaAsset>(json)).dump();
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

void checkRecord(std::string_view record) {
    try {
        const JSON tree = JSON::parse(record);
        platform::JSONParser parser;
        const platform::JSONView view = parser.parse(record);
        if (!(view.value() == tree)) std::abort();
        // Of a key that occurs twice the readers take different members; the tree's text has none.
        const std::string unambiguous = tree.dump();
        if (asset(tree) != asset(parser.parse(unambiguous))) std::abort();
    } catch (const platform::JSONError&) {
        // No JSON, for both.
    }
}

} // namespace

// A cache file of any bytes, and each of its records: both ways to decode an asset agree.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    checkRecord(text);
    try {
        platform::forEachRecord(text, [](std::string_view, std::string_view record) { checkRecord(record); });
    } catch (const platform::JSONError&) {
        // A cold cache.
    }
    return 0;
}
