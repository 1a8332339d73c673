#include "OrvaneSyncCore/Services/Atmo/AtmoCandidate.h"

#include <cmath>

namespace orvane {

double AtmoCandidate::durationSeconds() const {
    return sampleRate > 0 ? static_cast<double>(endSample - startSample) / sampleRate : 0;
}

double AtmoCandidate::rmsDBFS() const {
    constexpr double digitalSilence = -120;
    return avgRMS > 0 ? 20 * std::log10(static_cast<double>(avgRMS)) : digitalSilence;
}

platform::JSON toJSON(const AtmoCandidate& candidate) {
    platform::JSON json;
    json.set("id", candidate.id.text());
    json.set("url", candidate.url.absoluteString());
    json.set("channelIndex", candidate.channelIndex);
    json.set("startSample", candidate.startSample);
    json.set("endSample", candidate.endSample);
    json.set("sampleRate", candidate.sampleRate);
    json.set("avgRMS", static_cast<double>(candidate.avgRMS));
    json.set("durationSeconds", candidate.durationSeconds());
    json.set("rmsDBFS", candidate.rmsDBFS());
    return json;
}

platform::JSON toJSON(const AtmoResult& result) {
    platform::JSON json;
    json.set("audioURL", result.audioURL.absoluteString());
    json.set("sceneName", result.sceneName);
    json.set("durationSeconds", result.durationSeconds);
    json.set("audioRole", result.audioRole);
    return json;
}

} // namespace orvane
