#include "OrvaneSyncApp/Controllers/SmartAudioCaches.h"

namespace orvane {

bool SlateInput::isOf(const SyncGroup& group) const {
    const SlateInput now = of(group);
    return now.video == video && now.audio.has_value() == audio.has_value() &&
           (!audio || audio->isOfSameSound(*now.audio));
}

void SmartAudioCaches::removeSmartAudioCaches(const UUID& groupID) {
    ++removals_[groupID];
    state.results.erase(groupID);
    routed.erase(groupID);
    setAside_.results.erase(groupID);
    setAside_.routed.erase(groupID);
    setAside_.passedOver.erase(groupID);
    state.passedOver.erase(groupID);
    state.soloMonitorTracks.erase(groupID);
    state.soloMonitorURLs.erase(groupID);
    removeRenderedAudio(groupID);
}

void SmartAudioCaches::removeRenderedAudio(const UUID& groupID) {
    state.mixdownURLs.erase(groupID);
    state.viProcessedURLs.erase(groupID);
    lastVIInput.erase(groupID);
    work_.notifySmartAudio({groupID});
}

void SmartAudioCaches::removeAllRenderedAudio() {
    state.mixdownURLs.clear();
    state.viProcessedURLs.clear();
    state.soloMonitorTracks.clear();
    state.soloMonitorURLs.clear();
    lastVIInput.clear();
    work_.notify(ImportField::smartAudio);
}

void SmartAudioCaches::invalidateCachesAfterUndo() {
    state.results.clear();
    routed.clear();
    state.passedOver.clear();
    state.mixdownURLs.clear();
    state.soloMonitorURLs.clear();
    state.soloMonitorTracks.clear();
    work_.notify(ImportField::smartAudio);
}

void SmartAudioCaches::removeAll() {
    state.viProcessedURLs.clear();
    state.slateResults.clear();
    state.slatesUnread.clear();
    slateInputs.clear();
    lastVIInput.clear();
    setAside_ = {};
    ++removalsOfAll_;
    invalidateCachesAfterUndo();
}

void SmartAudioCaches::leaveClips() {
    constexpr std::size_t mostClips = 20'000;
    if (left_.results.size() > mostClips) left_ = {};
    if (leftSlates_.inputs.size() > mostClips) leftSlates_ = {};
    // If a clip has older kept results, the latest ones replace them.
    const auto keep = [](auto& latest, auto& kept) {
        latest.merge(kept);
        kept = std::exchange(latest, {});
    };
    for (const auto& [groupID, file] : state.mixdownURLs) left_.rendered.insert(groupID);
    keep(state.results, left_.results);
    keep(routed, left_.routed);
    keep(state.passedOver, left_.passedOver);
    keep(state.slateResults, leftSlates_.results);
    keep(state.slatesUnread, leftSlates_.unread);
    keep(slateInputs, leftSlates_.inputs);
    removeAll();
}

void SmartAudioCaches::recallSlates(const SyncGroupList& clips) {
    if (leftSlates_.inputs.empty()) return;
    for (const SyncGroup& clip : clips) {
        const auto input = leftSlates_.inputs.find(clip.id);
        if (input == leftSlates_.inputs.end()) continue;
        const bool isSame = input->second.isOf(clip);
        const auto restore = [&](auto& from, auto& to) {
            auto node = from.extract(clip.id);
            if (node && isSame) to.insert(std::move(node)); // a newer result stays
        };
        restore(leftSlates_.results, state.slateResults);
        restore(leftSlates_.unread, state.slatesUnread);
        restore(leftSlates_.inputs, slateInputs);
    }
    work_.notify(ImportField::slates);
}

void SmartAudioCaches::recall(const SyncGroupList& clips) {
    recallSlates(clips);
    if (left_.isEmpty()) return;
    const auto move = [this](auto& from, auto& to, const UUID& groupID) {
        auto node = from.extract(groupID);
        if (!node) return;
        to.insert(std::move(node));
        setAside_.clips = {}; // that list does not include this clip
    };
    for (const SyncGroup& clip : clips) {
        move(left_.results, setAside_.results, clip.id);
        move(left_.routed, setAside_.routed, clip.id);
        move(left_.passedOver, setAside_.passedOver, clip.id);
        move(left_.rendered, setAside_.rendered, clip.id);
    }
}

void SmartAudioCaches::offer(SmartAudioSetAside stored) {
    setAside_.results.merge(stored.results);
    setAside_.routed.merge(stored.routed);
    setAside_.clips = {}; // that list says nothing about these clips
}

void SmartAudioCaches::setAsideAfterUndo(const SyncGroupList& clipsBefore) {
    if (setAside_.isEmpty()) {
        setAside_ = {.results = std::exchange(state.results, {}),
                     .routed = std::exchange(routed, {}),
                     .passedOver = std::exchange(state.passedOver, {}),
                     .rendered = {},
                     .clips = clipsBefore};
    } else {
        setAside_.results.merge(state.results);
        setAside_.routed.merge(routed);
        setAside_.passedOver.merge(state.passedOver);
        setAside_.clips = {};
    }
    for (const auto& [groupID, file] : state.mixdownURLs) setAside_.rendered.insert(groupID);
    invalidateCachesAfterUndo();
}

std::uint64_t SmartAudioCaches::removals(const UUID& groupID) const {
    const auto own = removals_.find(groupID);
    return removalsOfAll_ + (own == removals_.end() ? 0 : own->second);
}

} // namespace orvane
