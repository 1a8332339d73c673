#include "OrvaneSyncCore/Services/Matching/Recordings.h"

#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <utility>

namespace orvane {

namespace {

// Clocks of cameras differ from time-of-day timecode by minutes, a clock of another time zone by hours.
constexpr double closeSeconds = 300;

/// How many days before the day of its date a file began, according to the date's own time of day: -1, 0 or
/// 1. Absent if the date is neither the start nor the end that the timecode states. A date at exactly
/// midnight has no time of day.
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

constexpr double zoneStepSeconds = 900;
// For a camera whose date counts in UTC: date and timecode are from one clock.
constexpr double zoneSlackSeconds = 120;
constexpr int fewestOfAZone = 2;
constexpr double agreeingShare = 0.9; // of the files of a card; one may have been written again
// The longest pause within a night of shooting, such as a meal. The next day begins after a longer one.
constexpr double longestPauseSeconds = 21600;

/// By how many quarters of an hour a time of day is ahead of another, in the shorter direction; absent if the
/// difference is not a whole number of quarters.
std::optional<int> quartersAhead(double secondOfDay, double other) {
    const double ahead = std::remainder(secondOfDay - other, secondsADay);
    const double quarters = std::round(ahead / zoneStepSeconds);
    if (std::abs(ahead - quarters * zoneStepSeconds) > zoneSlackSeconds) return std::nullopt;
    constexpr int halfADay = 48;
    const int count = static_cast<int>(quarters);
    return count == -halfADay ? halfADay : count;
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

bool areOfOtherDays(const FilePlace& clip, const std::optional<FilePlace>& sound) {
    if (!sound || !sound->day) return false;
    const auto filmed = clip.knownDay();
    if (!filmed) return clip.headerDay && std::abs(*clip.headerDay - *sound->day) > 1;
    if (*filmed == *sound->day) return false;
    const double between = static_cast<double>(*sound->day - *filmed) * secondsADay;
    return !SyncEngine::overlapDuration(
        clip.range, {sound->range.startSeconds + between, sound->range.endSeconds + between});
}

std::optional<double> Places::midnightOffset(const FilePlace& clip, const MediaAsset& recording) const {
    const auto date = recording.localCreatedDate();
    const auto filmed = clip.likelyDay();
    if (recording.startTimecodeString || recording.bextTimeReference || !date || !filmed ||
        rules_.soundOffsetSeconds != 0 || rules_.soundDay)
        return std::nullopt;
    const double offset =
        static_cast<double>(dayNumber(*date) - *filmed) * secondsADay - clip.range.startSeconds;
    const SyncEngine::TCRange picture{0, clip.range.durationSeconds()},
        sound{offset, offset + recording.durationSeconds.value_or(0)};
    return SyncEngine::overlapDuration(picture, sound) ? std::optional(offset) : std::nullopt;
}

std::string_view folderPath(const MediaAsset& asset) {
    const std::string& path = asset.url.path;
    return std::string_view(path).substr(0, path.rfind('/') + 1);
}

long dayNumber(Date date) {
    const auto local = calendar::fields(date);
    const std::chrono::sys_days day =
        std::chrono::year(local.year) / static_cast<unsigned>(local.month) / static_cast<unsigned>(local.day);
    return day.time_since_epoch().count();
}

double secondOfDay(Date date) {
    const auto local = calendar::fields(date);
    return local.hour * 3600.0 + local.minute * 60.0 + local.second;
}

std::array<std::optional<int>, 2> zonesOf(double secondOfDay, const SyncEngine::TCRange& range) {
    const auto atStart = quartersAhead(secondOfDay, range.startSeconds);
    auto atEnd = quartersAhead(secondOfDay, range.endSeconds);
    if (atEnd == atStart) atEnd.reset();
    return {atStart, atEnd};
}

void Places::CardDates::add(double secondOfDay, const SyncEngine::TCRange& range) {
    ++files;
    for (const auto& zone : zonesOf(secondOfDay, range))
        if (zone) ++byZone[*zone];
}

std::optional<int> Places::CardDates::zone() const {
    if (files < fewestOfAZone) return std::nullopt;
    for (const auto& [zone, count] : byZone)
        if (count >= agreeingShare * files) return zone;
    return std::nullopt;
}

Places::Source Places::sourceOf(const MediaAsset& asset) {
    return asset.kind == AssetKind::audio ? Source::audioDate : Source::videoDate;
}

std::optional<long> Places::daysBefore(Source source, const MediaAsset& asset, double secondOfDay,
                                       const SyncEngine::TCRange& range) const {
    if (const auto before = orvane::daysBefore(secondOfDay, range)) return before;
    const auto zone = zoneOf(source, asset);
    const auto zones = zonesOf(secondOfDay, range);
    if (!zone || secondOfDay == 0 || std::ranges::find(zones, zone) == zones.end()) return std::nullopt;
    return std::lround((range.startSeconds + *zone * zoneStepSeconds - secondOfDay) / secondsADay);
}

long Places::numberOf(Date startOfDay) {
    if (!lastDay_ || lastDay_->first != startOfDay) lastDay_ = {startOfDay, dayNumber(startOfDay)};
    return lastDay_->second;
}

void Places::findDay(const MediaAsset& asset, FilePlace& place) {
    place.shootDay = asset.shootDay(starts_);
    if (!place.shootDay) return;
    place.statedDay = numberOf(*place.shootDay);
    const auto date = asset.localCreatedDate();
    if (!date || starts_.of(*date) != *place.shootDay) return;
    const auto named = MediaAsset::shootDateFromFilename(asset.filename);
    if (named && starts_.of(*named) == *place.shootDay) return;
    *place.statedDay -= daysBefore(sourceOf(asset), asset, secondOfDay(*date), place.range).value_or(0);
}

void Places::learn(const MediaAsset& asset, const AssetPlacement& placement) {
    if (!asset.contentCreatedDate && !asset.headerDate) return;
    const auto range = placement.range();
    if (!range) return;
    if (const auto date = asset.localCreatedDate()) learn(sourceOf(asset), asset, secondOfDay(*date), *range);
    if (asset.headerDate) learn(Source::header, asset, secondOfDay(*asset.headerDate), *range);
}

void Places::learn(Source source, const MediaAsset& asset, double secondOfDay,
                   const SyncEngine::TCRange& range) {
    if (secondOfDay == 0) return;
    Dates& dates = dates_[static_cast<std::size_t>(source)];
    auto card = dates.byFolder.find(folderPath(asset));
    if (card == dates.byFolder.end()) card = dates.byFolder.emplace(folderPath(asset), CardDates()).first;
    card->second.add(secondOfDay, range);
    dates.all.add(secondOfDay, range);
}

std::optional<int> Places::zoneOf(Source source, const MediaAsset& asset) const {
    const Dates& dates = dates_[static_cast<std::size_t>(source)];
    const auto card = dates.byFolder.find(folderPath(asset));
    if (card == dates.byFolder.end()) return std::nullopt;
    // For cameras that make a folder for each clip, all folders together are the card.
    return card->second.files < fewestOfAZone ? dates.all.zone() : card->second.zone();
}

std::optional<long> Places::daysBeforeByZone(const MediaAsset& asset, double secondOfDay,
                                             const SyncEngine::TCRange& range) const {
    const Dates& dates = dates_[static_cast<std::size_t>(Source::header)];
    const auto card = dates.byFolder.find(folderPath(asset));
    if (secondOfDay == 0 || (card != dates.byFolder.end() && card->second.files >= fewestOfAZone))
        return std::nullopt;
    for (const auto& zone : zonesOf(secondOfDay, range))
        if (zone)
            return std::lround((range.startSeconds + *zone * zoneStepSeconds - secondOfDay) / secondsADay);
    return std::nullopt;
}

std::optional<FilePlace> Places::of(const MediaAsset& asset, const AssetPlacement& placement) {
    const auto range = placement.range();
    if (!range) return std::nullopt;
    FilePlace place{.range = *range};
    findDay(asset, place);
    place.day = asset.kind == AssetKind::audio && rules_.soundDay ? rules_.soundDay : place.statedDay;
    if (!place.day && asset.headerDate) {
        const auto before = daysBefore(Source::header, asset, secondOfDay(*asset.headerDate), *range);
        const auto byZone = before ? before : daysBeforeByZone(asset, secondOfDay(*asset.headerDate), *range);
        place.headerDay = dayNumber(*asset.headerDate) - byZone.value_or(0);
        place.isHeaderClose = before.has_value();
        place.isHeaderOfAZone = !before && byZone;
    }
    if (asset.kind == AssetKind::audio) {
        place.range.startSeconds += rules_.soundOffsetSeconds;
        place.range.endSeconds += rules_.soundOffsetSeconds;
    }
    return place;
}

std::vector<Recording> recordingsAmong(const std::vector<MediaAsset>& audios, Places& places,
                                       const std::stop_token& stop) {
    std::vector<MediaAsset> takes;
    takes.reserve(audios.size());
    std::vector<FilePlace> positioned;
    positioned.reserve(audios.size());
    std::vector<AssetPlacement> placements;
    placements.reserve(audios.size());
    platform::StopCheck check(stop);
    for (const MediaAsset& audio : audios) {
        check();
        places.learn(audio, placements.emplace_back(places.placementOf(audio)));
    }
    std::size_t kept = 0; // of `placements`
    for (std::size_t i = 0; i < audios.size(); ++i) {
        check();
        if (audios[i].isAtmo()) continue;
        const auto place = places.of(audios[i], placements[i]);
        if (!place) continue;
        takes.push_back(audios[i]);
        positioned.push_back(*place);
        placements[kept++] = placements[i];
    }
    if (const auto given = places.rules().soundDay) giveDay(positioned, *given);
    std::vector<Recording> recordings;
    recordings.reserve(takes.size());
    for (auto& take : Shared<MediaAsset>::together(std::move(takes))) {
        const std::size_t i = recordings.size();
        recordings.push_back({std::move(take), positioned[i], placements[i]});
    }
    return recordings;
}

} // namespace orvane
