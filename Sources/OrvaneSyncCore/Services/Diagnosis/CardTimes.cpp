#include "OrvaneSyncCore/Services/Diagnosis/CardTimes.h"

#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Utilities/Day.h"

#include <algorithm>
#include <limits>

namespace orvane {

bool CardTimes::mayOverlap(const Shoot::Clip& clip) const {
    const auto day = clip.likelyDay();
    return !card_.day || !day || (*day >= *card_.day - 1 && *day <= *card_.day + card_.moreDays + 1);
}

FilePlace CardTimes::placeOf(std::size_t file) const {
    FilePlace place = shoot_.wholes.places[file];
    if (place.day) *place.day += card_.movedByDays;
    return place;
}

SyncEngine::TCRange CardTimes::range(std::size_t file) const {
    const FilePlace place = placeOf(file);
    return card_.day ? onLine(place) : place.range;
}

SyncEngine::TCRange CardTimes::hoursAt(double offsetSeconds) const {
    SyncEngine::TCRange hours{std::numeric_limits<double>::infinity(),
                              -std::numeric_limits<double>::infinity()};
    for (const std::size_t file : card_.files) {
        const SyncEngine::TCRange own = range(file);
        hours.startSeconds = std::min(hours.startSeconds, own.startSeconds);
        hours.endSeconds = std::max(hours.endSeconds, own.endSeconds);
    }
    return moved(hours, offsetSeconds);
}

Cover CardTimes::coverAt(double offsetSeconds) const {
    Cover sound;
    for (const std::size_t file : shoot_.wholes.oneOfEach(card_.files))
        sound.add(moved(range(file), offsetSeconds), file);
    sound.finish();
    return sound;
}

/// Whether `accept` accepts one of the possible ranges of the clip on the axis of `range`. If only the time
/// of day is known, midnight may be between the two.
bool CardTimes::anyPlace(const Shoot::Clip& clip, const std::optional<long>& day,
                         const Accept& accept) const {
    const SyncEngine::TCRange& own = clip.place->range;
    if (card_.day && day) return accept(moved(own, static_cast<double>(*day) * secondsADay));
    const double near = static_cast<double>(card_.day.value_or(0)) * secondsADay;
    return accept(moved(own, near)) || accept(moved(own, near - secondsADay)) ||
           accept(moved(own, near + secondsADay));
}

bool CardTimes::isWithin(const SyncEngine::TCRange& hours, const Shoot::Clip& clip) const {
    return anyPlace(clip, clip.likelyDay(), [&](const SyncEngine::TCRange& own) {
        return SyncEngine::overlapDuration(hours, own).has_value();
    });
}

std::optional<CardTimes::Covered> CardTimes::covered(const Cover& sound, const Shoot::Clip& clip) const {
    return coveredOn(clip.likelyDay(), sound, clip);
}

std::optional<CardTimes::Covered> CardTimes::coveredByHours(const Cover& sound,
                                                            const Shoot::Clip& clip) const {
    return coveredOn(std::nullopt, sound, clip);
}

std::optional<CardTimes::Covered> CardTimes::coveredOn(const std::optional<long>& day, const Cover& sound,
                                                       const Shoot::Clip& clip) const {
    std::optional<Covered> found;
    anyPlace(clip, day, [&](const SyncEngine::TCRange& own) {
        if (const auto whole = sound.ofEither(own)) found = Covered{*whole, own};
        return found.has_value();
    });
    return found;
}

} // namespace orvane
