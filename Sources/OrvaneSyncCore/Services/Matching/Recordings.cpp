#include "OrvaneSyncCore/Services/Matching/Recordings.h"

#include "Platform/Stop.h"

#include <chrono>
#include <cmath>
#include <utility>

namespace orvane {

namespace {

constexpr double secondsADay = 86400;
// Clocks of cameras differ from a timecode by time of day by minutes. A clock of another zone is hours away.
constexpr double closeSeconds = 300;

/// How many days before the day of its date a file began, going by the date's own time of day: -1, 0 or 1.
/// Absent where the date may be the start or the end of nothing that the timecode says. A date at exactly
/// midnight is one without a time of day.
std::optional<long> daysBefore(double secondOfDay, const SyncEngine::TCRange& range) {
    if (secondOfDay == 0) return std::nullopt;
    for (const long before : {0L, 1L, -1L}) {
        const double dated = secondOfDay + static_cast<double>(before) * secondsADay;
        if (std::abs(dated - range.startSeconds) <= closeSeconds ||
            std::abs(dated - range.endSeconds) <= closeSeconds)
            return before;
    }
    return std::nullopt;
}

} // namespace

long dayNumber(Date date) {
    const auto local = calendar::fields(date);
    const std::chrono::sys_days day =
        std::chrono::year(local.year) / static_cast<unsigned>(local.month) / static_cast<unsigned>(local.day);
    return day.time_since_epoch().count();
}

std::optional<long> Places::dayOf(const MediaAsset& asset, const SyncEngine::TCRange& range) {
    if (asset.kind == AssetKind::audio && rules_.soundDay) return rules_.soundDay;
    const auto shootDay = asset.shootDay(starts_);
    if (!shootDay) return std::nullopt;
    const long day = dayNumber(*shootDay);
    if (!asset.contentCreatedDate || starts_.of(*asset.contentCreatedDate) != *shootDay) return day;
    const auto local = calendar::fields(*asset.contentCreatedDate);
    const auto before = daysBefore(local.hour * 3600.0 + local.minute * 60.0 + local.second, range);
    if (before.value_or(0) == 0 || MediaAsset::shootDateFromFilename(asset.filename)) return day;
    return day - *before;
}

std::optional<FilePlace> Places::of(const MediaAsset& asset) {
    auto range = AssetPlacement(asset, rules_.timecodeRate).range();
    if (!range) return std::nullopt;
    FilePlace place;
    place.day = dayOf(asset, *range);
    if (!place.day && asset.headerDate) place.headerDay = dayNumber(*asset.headerDate);
    if (asset.kind == AssetKind::audio) {
        range->startSeconds += rules_.soundOffsetSeconds;
        range->endSeconds += rules_.soundOffsetSeconds;
    }
    place.range = *range;
    return place;
}

std::vector<Recording> recordingsAmong(const std::vector<MediaAsset>& audios, Places& places,
                                       const std::stop_token& stop) {
    std::vector<MediaAsset> takes;
    takes.reserve(audios.size());
    std::vector<FilePlace> laid;
    laid.reserve(audios.size());
    platform::StopCheck check(stop);
    for (const MediaAsset& audio : audios) {
        check();
        if (audio.isAtmo()) continue;
        const auto place = places.of(audio);
        if (!place) continue;
        takes.push_back(audio);
        laid.push_back(*place);
    }
    std::vector<Recording> recordings;
    recordings.reserve(takes.size());
    for (auto& take : Shared<MediaAsset>::together(std::move(takes))) {
        const AssetPlacement placement(*take, places.rules().timecodeRate);
        recordings.push_back({std::move(take), laid[recordings.size()], placement});
    }
    return recordings;
}

} // namespace orvane
