#include "OrvaneSyncCore/Services/SmartAudio/AnalysisCache.h"

#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Services/Takes/SoundKey.h"
#include "OrvaneSyncCore/Utilities/PackedBytes.h"

#include <utility>

namespace orvane {

AnalysisCache::AnalysisCache(std::string folder, std::uint64_t mostBytes, std::uint32_t version)
    : version_(version), files_(std::move(folder), ".analysis", mostBytes) {}

std::shared_ptr<AnalysisCache> AnalysisCache::shared() {
    return std::make_shared<AnalysisCache>(AppStorageHelper::analysisCacheDirectory());
}

std::optional<std::string> AnalysisCache::keyOf(const SmartAudioRequest& request) {
    std::string key;
    if (!appendSound(key, request.sound)) return std::nullopt;
    appendPlain(key, request.channelCount);
    appendPlain(key, static_cast<std::uint32_t>(request.ixmlTracks.size()));
    for (const IXMLTrack& track : request.ixmlTracks) {
        appendPlain(key, track.channelIndex);
        appendText(key, track.name);
    }
    for (const int track : request.candidateTracks) appendPlain(key, track);
    return key;
}

std::optional<StoredAnalysis> AnalysisCache::find(const std::string& key) const {
    const auto bytes = files_.read(key);
    return bytes ? analysisFromBytes(*bytes, key, version_) : std::nullopt;
}

void AnalysisCache::store(const std::string& key, const SmartAudioRequest& request,
                          const StoredAnalysis& analysis) {
    const SmartAudioResult& result = analysis.result;
    const bool isWhole =
        result.isHeard() && result.incompleteFiles.empty() && !SmartAudioRouter::endsEarly(result);
    if (isWhole && keyOf(request) == key) files_.write(key, analysisBytes(key, version_, analysis));
}

} // namespace orvane
