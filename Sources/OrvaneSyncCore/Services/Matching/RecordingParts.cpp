#include "OrvaneSyncCore/Services/Matching/RecordingParts.h"

#include "OrvaneSyncCore/Services/Matching/SplitRecordingDetector.h"

#include <algorithm>
#include <utility>

namespace orvane {

double sharedRate(const RecordingParts& parts) {
    constexpr double rateOfLabelsAlone = 24;
    const auto counted = std::ranges::find_if(parts, [](const auto& part) { return part.file->isCounted; });
    if (counted != parts.end() && counted->file->rate) return *counted->file->rate;

    const Recording* earliest = nullptr;
    const auto text = [](const Recording& part) { return part.asset->startTimecodeString.value_or(""); };
    for (const auto& [part, shift] : parts)
        if (part->rate && (earliest == nullptr || text(*part) < text(*earliest))) earliest = part;
    return earliest != nullptr ? *earliest->rate : rateOfLabelsAlone;
}

bool isOneRecording(const RecordingParts& parts) {
    const double rate = sharedRate(parts);
    std::vector<std::pair<SyncEngine::TCRange, const Recording*>> placed;
    placed.reserve(parts.size());
    for (const auto& [part, shift] : parts) {
        auto range = part->placement.range(rate);
        if (!range) return false;
        range->startSeconds += shift;
        range->endSeconds += shift;
        placed.emplace_back(*range, part);
    }
    // Most recordings that meet one picture are side by side; their times alone show this.
    std::ranges::stable_sort(placed, {}, [](const auto& one) { return one.first.startSeconds; });
    for (std::size_t i = 1; i < placed.size(); ++i)
        if (!SplitRecordingDetector::follows(placed[i - 1].first, placed[i].first)) return false;

    std::vector<SplitRecordingDetector::Candidate> candidates;
    candidates.reserve(placed.size());
    for (const auto& [range, part] : placed) {
        const auto& ixml = part->asset->ixmlData;
        candidates.push_back({range, part->asset->bextOriginator, ixml ? ixml->tape : std::nullopt});
    }
    return SplitRecordingDetector::isContinuousChain(std::move(candidates));
}

} // namespace orvane
