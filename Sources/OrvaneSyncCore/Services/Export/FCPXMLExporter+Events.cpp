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
    if (settings.splitEventsByScene)
        events = assembleSceneEvents(std::move(run.eventItems), run.bucketKeys, settings.eventName);
    else
        events.push_back({.name = settings.eventName, .items = std::move(run.eventItems)});

    // If events are split by scene, variants without an event of their own are already in the event of their
    // scene.
    if (!settings.splitEventsByScene) {
        if (!settings.separateEventForNativeMOS) moveItems(run.nativeMOSItems, events.front().items);
        if (!settings.separateEventForProjectRate) moveItems(run.projectRateItems, events.front().items);
    }
    const auto appendEvent = [&](bool wanted, const std::string& name, std::vector<EventItem>& items) {
        if (wanted && !items.empty()) events.push_back({.name = name, .items = std::move(items)});
    };
    appendEvent(settings.separateEventForNativeMOS, settings.nativeMOSEventName, run.nativeMOSItems);
    appendEvent(settings.separateEventForProjectRate, settings.projectRateEventName, run.projectRateItems);
    appendEvent(true, settings.rawMediaEventName, run.rawItems);
    run.result.eventCount = static_cast<int>(events.size());
    return events;
}

} // namespace orvane::FCPXMLExporter
