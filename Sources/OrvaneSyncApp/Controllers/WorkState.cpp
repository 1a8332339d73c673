#include "OrvaneSyncApp/Controllers/WorkState.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"
#include "OrvaneSyncCore/Services/Naming/ClipNames.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace orvane {

namespace {

bool countAlike(const SyncGroup& before, const SyncGroup& now) {
    return before.matchStatus.isSettled() == now.matchStatus.isSettled() && before.isMOS() == now.isMOS() &&
           before.isExcludedFromExport == now.isExcludedFromExport;
}

bool haveSameFiles(const SyncGroup& before, const SyncGroup& now) {
    return before.video.url == now.video.url &&
           std::ranges::equal(
               before.audioMatches, now.audioMatches, {},
               [](const AudioMatch& match) -> const FileURL& { return match.audio->url; },
               [](const AudioMatch& match) -> const FileURL& { return match.audio->url; });
}

} // namespace

void WorkState::assertOnMainThread() const { assert(environment.mainThread->isCurrent()); }

SourceCorrections WorkState::nextCorrections() const {
    assertOnMainThread();
    SourceCorrections corrections = sourceCorrections_;
    const MatchingDays setting = environment.settings->get(settings::matchingDays);
    if (!corrections.days || setting != daysOfSetting_) corrections.days = setting;
    return corrections;
}

SourceCorrections WorkState::keptCorrections() const { return withoutStandardDays(nextCorrections()); }

std::optional<SourceCorrections> WorkState::keptMatchedBy() const {
    auto kept = withoutStandardDays(matchedBy_.corrections);
    return kept != keptCorrections() ? std::optional(std::move(kept)) : std::nullopt;
}

std::vector<FileURL> WorkState::folders() const {
    std::vector<FileURL> all;
    const auto add = [&](const FileURL& folder) {
        if (std::ranges::find(all, folder) == all.end()) all.push_back(folder);
    };
    if (videoFolderURL_) add(*videoFolderURL_);
    if (audioFolderURL_) add(*audioFolderURL_);
    std::ranges::for_each(scanScope_.moreFolders, add);
    return all;
}

int WorkState::unmatchedCount() const { return static_cast<int>(syncGroups_.size()) - matchedCount(); }

WorkState::Counts WorkState::Counts::of(const SyncGroupList& groups) {
    Counts counts;
    for (const SyncGroup& group : groups) {
        if (!group.matchStatus.isSettled()) continue;
        ++(group.isMOS() ? counts.withoutSound : counts.withSound);
        if (group.isExcludedFromExport)
            ++(group.isMOS() ? counts.excludedWithoutSound : counts.excludedWithSound);
    }
    return counts;
}

const WorkState::Counts& WorkState::counts() const {
    assertOnMainThread();
    return counts_.of(syncGroups_, countAlike, [this] { return Counts::of(syncGroups_); });
}

std::shared_ptr<const DisplayNames> WorkState::displayNamesIfMade() const {
    assertOnMainThread();
    auto rules = NamingRules::of(*environment.settings);
    if (namedBy_ != rules) displayNames_.reset();
    namedBy_ = std::move(rules);
    return displayNames_.ifMade(syncGroups_, haveSameNameInputs);
}

const DisplayNames& WorkState::displayNames() const {
    displayNamesIfMade();
    return displayNames_.of(syncGroups_, haveSameNameInputs, [this] {
        return WorkFiles{syncGroups_, wildTracks_, nullptr}.displayNames(*namedBy_);
    });
}

const FileNames& WorkState::fileNames() const {
    assertOnMainThread();
    if (std::exchange(wildTracksInNames_, wildTracks_) != wildTracks_) fileNames_.reset();
    return fileNames_.of(syncGroups_, haveSameFiles, [this] {
        return WorkFiles{syncGroups_, wildTracks_, nullptr}.fileNames();
    });
}

const std::vector<std::size_t>& WorkState::clipsUsing(const UUID& audioID) const {
    assertOnMainThread();
    if (!clipsByAudio_) {
        clipsByAudio_.emplace();
        for (std::size_t position = 0; position < syncGroups_.size(); ++position)
            for (const AudioMatch& match : syncGroups_[position].audioMatches) {
                auto& clips = (*clipsByAudio_)[match.audio->id];
                if (clips.empty() || clips.back() != position) clips.push_back(position);
            }
    }
    static const std::vector<std::size_t> none;
    const auto found = clipsByAudio_->find(audioID);
    return found == clipsByAudio_->end() ? none : found->second;
}

const SyncGroup* WorkState::unlockedGroup(const UUID& groupID) const {
    assertOnMainThread();
    const SyncGroup* group = syncGroups_.find(groupID);
    return group != nullptr && !group->isLocked ? group : nullptr;
}

} // namespace orvane
