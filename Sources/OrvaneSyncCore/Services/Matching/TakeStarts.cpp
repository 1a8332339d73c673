#include "OrvaneSyncCore/Services/Matching/TakeStarts.h"

#include "OrvaneSyncCore/Services/Matching/ChannelNames.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Matching/SplitRecordingDetector.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>

namespace orvane::TakeStarts {

namespace {

bool hasStart(const MediaAsset& recording) {
    return recording.startTimecodeString || recording.bextTimeReference;
}

/// Folder, sample rate and length in samples: all three are equal for files that one recorder writes side by
/// side.
using Form = std::tuple<std::string, double, std::int64_t>;

std::optional<Form> formOf(const MediaAsset& recording) {
    const double rate = recording.sampleRate.value_or(0);
    const double samples = recording.durationSeconds.value_or(0) * rate;
    constexpr double most = 1e15;
    if (!(samples >= 1) || samples > most) return std::nullopt;
    const std::string& path = recording.url.path;
    return Form(path.substr(0, path.rfind('/') + 1), rate, std::llround(samples));
}

} // namespace

void share(std::vector<MediaAsset>& recordings, const std::stop_token& stop) {
    platform::StopCheck check(stop);
    struct Side {
        std::vector<const MediaAsset*> started;
        std::vector<MediaAsset*> others;
    };
    std::map<Form, Side> sides;
    for (MediaAsset& recording : recordings) {
        check();
        const auto form = formOf(recording);
        if (!form) continue;
        Side& side = sides[*form];
        if (hasStart(recording))
            side.started.push_back(&recording);
        else
            side.others.push_back(&recording);
    }
    for (auto& [form, side] : sides)
        for (MediaAsset* const recording : side.others) {
            const ChannelName name(*recording);
            const auto found = std::ranges::find_if(side.started, [&](const MediaAsset* started) {
                check();
                return name.differsOnlyInChannelWord(ChannelName(*started));
            });
            if (found == side.started.end()) continue;
            recording->startTimecodeString = (*found)->startTimecodeString;
            recording->timecodeFrameRate = (*found)->timecodeFrameRate;
            recording->bextTimeReference = (*found)->bextTimeReference;
        }
}

void continueAtMidnight(std::vector<MediaAsset>& recordings, const std::stop_token& stop) {
    platform::StopCheck check(stop);
    std::vector<const MediaAsset*> before; // recordings that end at midnight
    for (const MediaAsset& recording : recordings) {
        check();
        if (const auto range = SyncEngine::tcRange(recording);
            range && SplitRecordingDetector::follows(*range, {secondsADay, secondsADay}))
            before.push_back(&recording);
    }
    if (before.empty()) return;
    const auto dayOf = [](const MediaAsset& recording) -> std::optional<long> {
        const auto date = recording.localCreatedDate();
        return date ? std::optional(dayNumber(*date)) : std::nullopt;
    };
    for (MediaAsset& recording : recordings) {
        const auto day = dayOf(recording);
        if (hasStart(recording) || !day) continue;
        const auto part = std::ranges::find_if(before, [&](const MediaAsset* one) {
            check();
            const auto dayBefore = dayOf(*one);
            return dayBefore && *dayBefore + 1 == *day && folderPath(*one) == folderPath(recording) &&
                   SplitRecordingDetector::mayContinue(*one, recording);
        });
        if (part == before.end()) continue;
        recording.startTimecodeString = "00:00:00:00";
        recording.timecodeFrameRate = (*part)->timecodeFrameRate;
    }
}

} // namespace orvane::TakeStarts
