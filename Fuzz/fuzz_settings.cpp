#include "Platform/FileSettingsStore.h"
#include "Platform/JSON.h"
#include "Platform/SettingsStore.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

// A settings file of any bytes: it is read or has a problem, and the values read are the same after they were
// written and read again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane::platform;
    const std::string_view contents(reinterpret_cast<const char*>(data), size);
    const SettingsFile file = parseSettings(contents);
    if (file.problem && !file.values.empty()) std::abort();
    try {
        const JSON json = JSON::parse(contents);
        for (const auto layout : {JSON::Layout::compact, JSON::Layout::pretty})
            if (!(JSON::parse(json.dump(layout)) == json)) std::abort();
    } catch (const JSONError&) {
        if (!file.problem) std::abort();
    }
    return 0;
}
