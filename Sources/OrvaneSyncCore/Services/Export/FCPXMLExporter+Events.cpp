#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"
#include "Platform/Text.h"

#include <algorithm>
#include <set>

namespace orvane::FCPXMLExporter {

using namespace fcpxml;

namespace {

void moveItems(std::vector<EventItem>& from, std::vector<EventItem>& to) {
    to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
    from.clear();
}

} // namespace

std::vector<Event> assembleSceneEvents(std::vector<EventItem> items,
                                       const std::vector<std::optional<std::string>>& bucketKeyByIndex,
                                       const std::string& fallbackEventName) {
    struct Bucket {
        std::string sortKey;
        Event event;
    };
    std::vector<Bucket> buckets;
    std::unordered_map<std::string, std::size_t> placeByName;
    Event fallback{.name = fallbackEventName, .items = {}};
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i >= bucketKeyByIndex.size() || !bucketKeyByIndex[i]) {
            fallback.items.push_back(std::move(items[i]));
            continue;
        }
        const std::string& name = *bucketKeyByIndex[i];
        const auto [entry, isNew] = placeByName.try_emplace(name, buckets.size());
        if (isNew) buckets.push_back({platform::text::localizedStandardSortKey(name), {name, {}}});
        buckets[entry->second].event.items.push_back(std::move(items[i]));
    }
    std::ranges::stable_sort(buckets, {}, &Bucket::sortKey);

    std::vector<Event> events;
    events.reserve(buckets.size() + 1);
    for (Bucket& bucket : buckets) events.push_back(std::move(bucket.event));
    if (!fallback.items.empty() || events.empty()) events.push_back(std::move(fallback));
    return events;
}

std::vector<Event> assembleEvents(ExportRun& run) {
    const ExportSettings& settings = run.settings;
    std::vector<Event> events;
    const std::set<std::optional<std::string>> keys(run.bucketKeys.begin(), run.bucketKeys.end());
    run.result.sceneEventCount = static_cast<int>(keys.size() - keys.count(std::nullopt));
    if (settings.get(settings::splitEventsByScene))
        events =
            assembleSceneEvents(std::move(run.eventItems), run.bucketKeys, settings.get(settings::eventName));
    else
        events.push_back({.name = settings.get(settings::eventName), .items = std::move(run.eventItems)});

    // When events are split, variants that want no event of their own already stand in their scene's.
    if (!settings.get(settings::splitEventsByScene)) {
        if (!settings.get(settings::nativeMOSSeparateEvent))
            moveItems(run.nativeMOSItems, events.front().items);
        if (!settings.get(settings::projectRateSeparateEvent))
            moveItems(run.projectRateItems, events.front().items);
    }
    const auto appendEvent = [&](bool wanted, const std::string& name, std::vector<EventItem>& items) {
        if (wanted && !items.empty()) events.push_back({.name = name, .items = std::move(items)});
    };
    appendEvent(settings.get(settings::nativeMOSSeparateEvent), settings.get(settings::nativeMOSEventName),
                run.nativeMOSItems);
    appendEvent(settings.get(settings::projectRateSeparateEvent),
                settings.get(settings::projectRateEventName), run.projectRateItems);
    appendEvent(true, settings.get(settings::rawMediaEventName), run.rawItems);
    run.result.eventCount = static_cast<int>(events.size());
    return events;
}

} // namespace orvane::FCPXMLExporter
