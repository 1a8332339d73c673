#include "OrvaneSyncCore/Services/Waveform/WaveformResult.h"

#include "OrvaneSyncCore/Services/Waveform/OnsetDetector.h"

#include <utility>

namespace orvane {

namespace {

using platform::JSON;

template <class Number>
JSON array(const std::vector<Number>& values) {
    JSON::Array array;
    array.reserve(values.size());
    for (const Number value : values) array.emplace_back(static_cast<double>(value));
    return array;
}

JSON array(const std::vector<std::vector<float>>& channels) {
    JSON::Array all;
    for (const auto& channel : channels) all.push_back(array(channel));
    return all;
}

} // namespace

JSON toJSON(const WaveformResult& waveform, const std::vector<double>& onsetMarkers) {
    JSON json;
    json.set("binsPerSecond", waveform.binsPerSecond);
    json.set("peaks", array(waveform.peaks));
    json.set("rms", array(waveform.rms));
    json.set("peaksPerChannel", array(waveform.peaksPerChannel));
    json.set("rmsPerChannel", array(waveform.rmsPerChannel));
    json.set("onsetMarkers", array(onsetMarkers));
    return json;
}

std::vector<double> onsetMarkersOf(const WaveformResult& waveform) {
    return OnsetDetector::detect(waveform.rms, waveform.binsPerSecond, OnsetDetector::waveformGapSeconds,
                                 OnsetDetector::waveformThresholdMultiplier);
}

} // namespace orvane
