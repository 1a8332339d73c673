#include "OrvaneSyncCore/Services/Matching/Recordings.h"

#include "Platform/Stop.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <string_view>
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

double secondOfDay(Date date) {
    const auto local = calendar::fields(date);
    return local.hour * 3600.0 + local.minute * 60.0 + local.second;
}

constexpr double zoneStepSeconds = 900;
// A camera whose date counts in UTC takes date and timecode from one clock.
constexpr double zoneSlackSeconds = 120;
constexpr int fewestOfAZone = 2;
constexpr double agreeingShare = 0.9; // of the files of a card; one may have been written anew
// A night goes on after its meal, and the next day begins later than that.
constexpr double longestPauseSeconds = 21600;

/// By how many quarters of an hour a time of day is ahead of another, the nearer way round; absent where it
/// is not ahead by whole ones.
std::optional<int> quartersAhead(double secondOfDay, double other) {
    const double ahead = std::remainder(secondOfDay - other, secondsADay);
    const double quarters = std::round(ahead / zoneStepSeconds);
    if (std::abs(ahead - quarters * zoneStepSeconds) > zoneSlackSeconds) return std::nullopt;
    constexpr int halfADay = 48;
    const int count = static_cast<int>(quarters);
    return count == -halfADay ? halfADay : count;
}

/// A date may be that of the start or that of the end.
std::array<std::optional<int>, 2> zonesOf(double secondOfDay, const SyncEngine::TCRange& range) {
    const auto atStart = quartersAhead(secondOfDay, range.startSeconds);
    auto atEnd = quartersAhead(secondOfDay, range.endSeconds);
    if (atEnd == atStart) atEnd.reset();
    return {atStart, atEnd};
}

std::string_view folderOf(const MediaAsset& asset) {
    const std::string& path = asset.url.path;
    return std::string_view(path).substr(0, path.rfind('/') + 1);
}

void giveDay(std::vector<FilePlace>& recordings, long given) {
    std::vector<FilePlace*> dated;
    for (FilePlace& place : recordings) {
        place.day = given;
        if (place.statedDay) dated.push_back(&place);
    }
    const auto startOf = [](const FilePlace* place) {
        return static_cast<double>(*place->statedDay) * secondsADay + place->range.startSeconds;
    };
    std::ranges::stable_sort(dated, {}, startOf);
    long first = 0;
    double heardTo = -std::numeric_limits<double>::infinity();
    for (FilePlace* place : dated) {
        const double start = startOf(place);
        if (start - heardTo > longestPauseSeconds) first = *place->statedDay;
        heardTo = std::max(heardTo, start + place->range.durationSeconds());
        *place->day += *place->statedDay - first;
    }
}

} // namespace

long dayNumber(Date date) {
    const auto local = calendar::fields(date);
    const std::chrono::sys_days day =
        std::chrono::year(local.year) / static_cast<unsigned>(local.month) / static_cast<unsigned>(local.day);
    return day.time_since_epoch().count();
}

std::optional<long> Places::dayOf(const MediaAsset& asset, const SyncEngine::TCRange& range) {
    const auto shootDay = asset.shootDay(starts_);
    if (!shootDay) return std::nullopt;
    const long day = dayNumber(*shootDay);
    if (!asset.contentCreatedDate || starts_.of(*asset.contentCreatedDate) != *shootDay) return day;
    const double second = secondOfDay(*asset.contentCreatedDate);
    auto before = daysBefore(second, range);
    if (const auto zone = zoneOf(asset); zone && !before) {
        const auto zones = zonesOf(second, range);
        if (std::ranges::find(zones, zone) != zones.end())
            before = std::lround((range.startSeconds + *zone * zoneStepSeconds - second) / secondsADay);
    }
    if (before.value_or(0) == 0 || MediaAsset::shootDateFromFilename(asset.filename)) return day;
    return day - *before;
}

void Places::learn(const MediaAsset& asset) {
    if (!asset.contentCreatedDate) return;
    const auto range = AssetPlacement(asset, rules_.timecodeRate).range();
    const double second = secondOfDay(*asset.contentCreatedDate);
    if (!range || second == 0) return;
    auto& cards = cards_[static_cast<std::size_t>(asset.kind)];
    auto card = cards.find(folderOf(asset));
    if (card == cards.end()) card = cards.emplace(folderOf(asset), CardDates()).first;
    ++card->second.files;
    for (const auto& zone : zonesOf(second, *range))
        if (zone) ++card->second.byZone[*zone];
}

std::optional<int> Places::zoneOf(const MediaAsset& asset) const {
    const auto& cards = cards_[static_cast<std::size_t>(asset.kind)];
    const auto card = cards.find(folderOf(asset));
    if (card == cards.end() || card->second.files < fewestOfAZone) return std::nullopt;
    for (const auto& [zone, files] : card->second.byZone)
        if (files >= agreeingShare * card->second.files) return zone;
    return std::nullopt;
}

std::optional<FilePlace> Places::of(const MediaAsset& asset) {
    auto range = AssetPlacement(asset, rules_.timecodeRate).range();
    if (!range) return std::nullopt;
    FilePlace place;
    place.statedDay = dayOf(asset, *range);
    place.day = asset.kind == AssetKind::audio && rules_.soundDay ? rules_.soundDay : place.statedDay;
    if (!place.day && asset.headerDate) {
        place.headerDay = dayNumber(*asset.headerDate);
        place.isHeaderClose = daysBefore(secondOfDay(*asset.headerDate), *range).has_value();
    }
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
        places.learn(audio);
    }
    for (const MediaAsset& audio : audios) {
        check();
        if (audio.isAtmo()) continue;
        const auto place = places.of(audio);
        if (!place) continue;
        takes.push_back(audio);
        laid.push_back(*place);
    }
    if (const auto given = places.rules().soundDay) giveDay(laid, *given);
    std::vector<Recording> recordings;
    recordings.reserve(takes.size());
    for (auto& take : Shared<MediaAsset>::together(std::move(takes))) {
        const AssetPlacement placement(*take, places.rules().timecodeRate);
        recordings.push_back({std::move(take), laid[recordings.size()], placement});
    }
    return recordings;
}

} // namespace orvane
