#include "OrvaneSyncApp/ViewModels/Results/BundleOrder.h"

#include "OrvaneSyncApp/ViewModels/Results/ShootOrder.h"
#include "OrvaneSyncCore/Services/Naming/ResultsList.h"

#include <algorithm>
#include <utility>

namespace orvane {

namespace {

const UUID& idOfClip(const SyncGroupList::Element& clip) { return clip->id; }

bool haveSameClips(const BundleOrder::Clips& a, const BundleOrder::Clips& b) {
    return std::ranges::equal(a, b, {}, idOfClip, idOfClip);
}

bool haveSameBundle(const SyncGroup& before, const SyncGroup& now) {
    return before.video.url == now.video.url && sharedAudioBundleID(before) == sharedAudioBundleID(now);
}

} // namespace

void BundleOrder::layOut(const SyncGroupList& clips, Rules rules) {
    rules_ = std::move(rules);
    if (!grouped_.isSame(clips, haveSameBundle)) group(clips);
    listed_.clear();
    for (const auto& [id, bundle] : byID_) {
        Update update = updateOf(bundle, clips);
        apply(update);
        if (!bundle->clips.empty()) listed_.push_back(bundle);
    }
    sort();
}

void BundleOrder::group(const SyncGroupList& clips) {
    byID_.clear();
    byPosition_.clear();
    std::vector<std::shared_ptr<Bundle>> inOrder; // of their first clips
    for (std::size_t position = 0; position < clips.size(); ++position) {
        const auto& bundle = byPosition_.emplace_back(bundleNamed(sharedAudioBundleID(clips[position])));
        if (bundle->positions.empty()) inOrder.push_back(bundle);
        bundle->positions.push_back(position);
    }
    std::vector<ClipsOfRow> rows(inOrder.size());
    for (std::size_t row = 0; row < rows.size(); ++row)
        for (const std::size_t position : inOrder[row]->positions) rows[row].push_back(&clips[position]);
    std::size_t place = 0;
    for (const std::size_t row : shootOrder(rows, clips)) inOrder[row]->shootPlace = place++;
    grouped_.set(clips);
}

std::shared_ptr<BundleOrder::Bundle>& BundleOrder::bundleNamed(const std::string& id) {
    std::shared_ptr<Bundle>& bundle = byID_[id];
    if (!bundle) bundle = std::make_shared<Bundle>(Bundle{id});
    return bundle;
}

BundleOrder::Update BundleOrder::updateOf(const std::shared_ptr<Bundle>& bundle,
                                          const SyncGroupList& clips) const {
    Update update{bundle, {}, {}};
    for (const std::size_t position : bundle->positions) {
        if (!rules_.isListed(clips[position])) continue;
        if (update.clips.empty()) update.firstListed = position;
        update.clips.push_back(clips.element(position));
    }
    if (update.clips.empty()) return update;
    update.key = rules_.keyOf ? rules_.keyOf(update.clips) : Key{static_cast<double>(bundle->shootPlace)};
    return update;
}

void BundleOrder::apply(Update& update) {
    update.bundle->clips = std::move(update.clips);
    update.bundle->key = std::move(update.key);
    update.bundle->firstListed = update.firstListed;
}

void BundleOrder::sort() {
    std::ranges::sort(listed_, [this](const auto& a, const auto& b) { return isBefore(*a, *b); });
}

bool BundleOrder::isBefore(const Bundle& a, const Bundle& b) const {
    const Key &first = rules_.isAscending ? a.key : b.key, &second = rules_.isAscending ? b.key : a.key;
    if (first.number != second.number) return first.number < second.number;
    if (const int order = first.text.compare(second.text); order != 0) return order < 0;
    return a.firstListed < b.firstListed;
}

BundleOrder::Followed BundleOrder::follow(const SyncGroupList& clips,
                                          const std::vector<std::size_t>& changed) {
    std::vector<std::shared_ptr<Bundle>> touched;
    for (const std::size_t position : changed) {
        std::shared_ptr<Bundle>& bundle = byPosition_[position];
        touched.push_back(bundle);
        const std::string id = sharedAudioBundleID(clips[position]);
        if (id == bundle->id) continue;
        // Another recording can change the places of all rows in the order of the shoot.
        if (!rules_.keyOf) return Followed::unknown;
        grouped_.reset();
        std::erase(bundle->positions, position);
        touched.push_back(bundle = bundleNamed(id));
        auto& positions = bundle->positions;
        positions.insert(std::ranges::lower_bound(positions, position), position);
    }
    std::ranges::sort(touched);
    const auto same = std::ranges::unique(touched);
    touched.erase(same.begin(), same.end());

    bool isMoved = false;
    std::vector<Update> displaced;
    for (const auto& bundle : touched) {
        Update update = updateOf(bundle, clips);
        if (update.key == bundle->key && update.firstListed == bundle->firstListed &&
            update.clips.empty() == bundle->clips.empty()) {
            isMoved = isMoved || !haveSameClips(update.clips, bundle->clips);
            apply(update);
        } else {
            displaced.push_back(std::move(update));
        }
    }
    // Above this number, sorting all of them costs less.
    constexpr std::size_t few = 64;
    if (displaced.size() <= few) {
        move(displaced);
        return isMoved || !displaced.empty() ? Followed::moved : Followed::samePlaces;
    }
    for (Update& update : displaced) {
        if (update.bundle->clips.empty()) listed_.push_back(update.bundle);
        apply(update);
    }
    std::erase_if(listed_, [](const auto& bundle) { return bundle->clips.empty(); });
    sort();
    return Followed::moved;
}

void BundleOrder::move(std::vector<Update>& displaced) {
    const auto place = [this](const std::shared_ptr<Bundle>& bundle) {
        return std::ranges::lower_bound(listed_, bundle,
                                        [this](const auto& a, const auto& b) { return isBefore(*a, *b); });
    };
    // All are removed first: a clip may be the first one of its earlier bundle and of its new one.
    for (const Update& update : displaced)
        if (!update.bundle->clips.empty()) listed_.erase(place(update.bundle));
    for (Update& update : displaced) {
        apply(update);
        if (!update.bundle->clips.empty()) listed_.insert(place(update.bundle), update.bundle);
    }
}

} // namespace orvane
