#pragma once

#include "OrvaneSyncCore/Models/FileURL.h"
#include "Platform/JSON.h"

#include <functional>

namespace orvane {

/// A rendered file.
struct RenderResult {
    FileURL url;
    double durationSeconds = 0;
    double sampleRate = 0; ///< Hz

    bool operator==(const RenderResult&) const = default;
};

inline platform::JSON toJSON(const RenderResult& result) {
    platform::JSON json;
    json.set("url", result.url.absoluteString());
    json.set("durationSeconds", result.durationSeconds);
    json.set("sampleRate", result.sampleRate);
    return json;
}

/// Called with the finished share of a recording, ascending from 0 to 1, on the rendering thread.
using RenderProgress = std::function<void(double share)>;

} // namespace orvane
