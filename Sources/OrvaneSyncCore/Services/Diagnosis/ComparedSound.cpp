#include "OrvaneSyncCore/Services/Diagnosis/ComparedSound.h"

#include "OrvaneSyncCore/Models/AgreedLag.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Services/Matching/ClipRate.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string_view>
#include <utility>

namespace orvane {

namespace {

/// The delay of a camera's microphone: the median of its lags, if it is no more than metres of air and a
/// converter explain. Of fewer clips than three, one error would be the median.
double delayOf(std::vector<double> lags) {
    constexpr std::size_t fewest = 3;
    if (lags.size() < fewest) return microphoneDelaySeconds;
    const auto middle = lags.begin() + std::ssize(lags) / 2;
    std::ranges::nth_element(lags, middle);
    return *middle >= -mostAheadSeconds && *middle <= mostBehindSeconds ? *middle : microphoneDelaySeconds;
}

} // namespace

ComparedSound ComparedSound::of(const SyncGroupList& clips, const HeardSound& heard) {
    ComparedSound result;
    std::map<std::string_view, std::vector<std::pair<const SyncGroup*, double>>> cameras;
    for (const SyncGroup& clip : clips) {
        if (clip.audioMatches.empty() || !clip.matchStatus.isSettled())
            ++result.withoutRecording;
        else if (clip.video.channelCount.value_or(0) <= 0)
            ++result.withoutCameraSound;
        else if (const auto lag = heard.lags.find(clip.audioMatches.front().id); lag == heard.lags.end())
            result.unlike.push_back(clip.id);
        else
            cameras[folderOf(clip.video)].emplace_back(&clip, lag->second.seconds);
    }
    for (const auto& [folder, lags] : cameras) {
        std::vector<double> seconds;
        for (const auto& [clip, lag] : lags) seconds.push_back(lag);
        const double delay = delayOf(std::move(seconds));
        for (const auto& [clip, lag] : lags) {
            constexpr double nearlyAFrame = 0.9;
            const double move = lag - delay, fps = clipRate(clip->video, rateWithoutAny);
            if (std::abs(move) >= std::max(agreedLag::leastSeconds, nearlyAFrame / fps))
                result.off.push_back(
                    {clip->id, move, std::lround(move * fps), clip->manualAudioOffsetSeconds});
            else
                ++result.right;
        }
    }
    return result;
}

JSON toJSON(const ComparedSound& compared) {
    JSON::Array off;
    for (const ComparedSound::Off& one : compared.off) {
        JSON json;
        json.set("groupID", one.groupID.text());
        json.set("seconds", one.seconds);
        json.set("frames", static_cast<int>(one.frames));
        off.push_back(std::move(json));
    }
    JSON json;
    json.set("right", static_cast<int>(compared.right));
    json.set("off", std::move(off));
    json.set("withoutRecording", static_cast<int>(compared.withoutRecording));
    json.set("withoutCameraSound", static_cast<int>(compared.withoutCameraSound));
    json.set("unlike", static_cast<int>(compared.unlike.size()));
    JSON::Array unlike;
    for (const UUID& clip : compared.unlike) unlike.emplace_back(clip.text());
    json.set("unlikeGroupIDs", std::move(unlike));
    return json;
}

} // namespace orvane
