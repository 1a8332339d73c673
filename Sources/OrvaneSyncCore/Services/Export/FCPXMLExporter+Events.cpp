#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"
#include "Platform/Text.h"

#include <algorithm>
#include <set>

namespace orvane::FCPXMLExporter {

using namespace fcpxml;

namespace {

void moveItems(std::vector<XMLElement*>& from, std::vector<XMLElement*>& to) {
    to.insert(to.end(), from.begin(), from.end());
    from.clear();
}

} // namespace

std::vector<Event> assembleSceneEvents(const std::vector<XMLElement*>& items,
                                       const std::vector<std::optional<std::string>>& bucketKeyByIndex,
                                       const std::string& fallbackEventName) {
    struct Bucket {
        std::string sortKey;
        Event event;
    };
    std::vector<Bucket> buckets;
    std::unordered_map<std::string, std::size_t> placeByName;
    Event fallback{.name = fallbackEventName};
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i >= bucketKeyByIndex.size() || !bucketKeyByIndex[i]) {
            fallback.made.push_back(items[i]);
            continue;
        }
        const std::string& name = *bucketKeyByIndex[i];
        const auto [entry, isNew] = placeByName.try_emplace(name, buckets.size());
        if (isNew) buckets.push_back({platform::text::localizedStandardSortKey(name), {name}});
        buckets[entry->second].event.made.push_back(items[i]);
    }
    std::ranges::stable_sort(buckets, {}, &Bucket::sortKey);

    std::vector<Event> events;
    events.reserve(buckets.size() + 1);
    for (Bucket& bucket : buckets) events.push_back(std::move(bucket.event));
    if (!fallback.made.empty() || events.empty()) events.push_back(std::move(fallback));
    return events;
}

std::vector<Event> assembleEvents(ExportRun& run) {
    const ExportSettings& settings = run.settings;
    std::vector<Event> events;
    const std::set<std::optional<std::string>> keys(run.bucketKeys.begin(), run.bucketKeys.end());
    run.result.sceneEventCount = static_cast<int>(keys.size() - keys.count(std::nullopt));
    if (settings.get(settings::splitEventsByScene))
        events = assembleSceneEvents(run.eventItems, run.bucketKeys, settings.get(settings::eventName));
    else
        events.push_back({.name = settings.get(settings::eventName), .made = std::move(run.eventItems)});

    // When events are split, variants that want no event of their own already stand in their scene's.
    if (!settings.get(settings::splitEventsByScene)) {
        if (!settings.get(settings::nativeMOSSeparateEvent))
            moveItems(run.nativeMOSItems, events.front().made);
        if (!settings.get(settings::projectRateSeparateEvent))
            moveItems(run.projectRateItems, events.front().made);
    }
    const auto appendEvent = [&](bool wanted, const std::string& name, std::vector<XMLElement*>& items) {
        if (wanted && !items.empty()) events.push_back({.name = name, .made = std::move(items)});
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
