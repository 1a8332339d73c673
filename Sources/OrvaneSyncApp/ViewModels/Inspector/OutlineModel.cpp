#include "OrvaneSyncApp/ViewModels/Inspector/OutlineModel.h"

#include "OrvaneSyncApp/ViewModels/Results/ClipTexts.h"
#include "OrvaneSyncApp/ViewModels/Results/DoubtCures.h"
#include "OrvaneSyncApp/ViewModels/Results/ShootOrder.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"
#include "OrvaneSyncCore/Services/Naming/SidebarOutline.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <algorithm>
#include <set>
#include <tuple>
#include <utility>

namespace orvane {

namespace {

/// The higher the number, the more urgent it is to look at the clip.
int urgencyInOutline(OutlineModel::Certainty certainty) {
    using Certainty = OutlineModel::Certainty;
    switch (certainty) {
    case Certainty::missing:
        return 3;
    case Certainty::doubtful:
        return 2;
    case Certainty::settled:
        return 1;
    case Certainty::silent:
        break;
    }
    return 0;
}

/// Whether both clips are listed at the same place with the same name.
bool haveSamePlaceAndName(const SyncGroup& a, const SyncGroup& b) {
    const auto listing = [](const SyncGroup& group) {
        const MediaAsset* audio = group.primaryAudio();
        return std::tuple(group.manualClipName, group.isPickup, group.isExcludedFromMulticam(),
                          group.video.sensorFrameRate, group.video.projectFrameRate,
                          group.isExcludedFromExport, group.matchStatus.isSettled(),
                          audio == nullptr ? std::string() : audio->url.path);
    };
    return listing(a) == listing(b);
}

void addStatusLine(std::string& text, const std::string& line) { text += (text.empty() ? "" : "\n") + line; }

} // namespace

std::string OutlineModel::Counts::text() const {
    std::string text = shown == all ? "" : std::to_string(shown) + " of ";
    text += counted(all, "clip", "clips");
    text += "\n" + std::to_string(locked) + " locked";
    if (toDecide > 0) text += " · " + std::to_string(toDecide) + " to decide";
    return text;
}

OutlineModel::OutlineModel(ImportController& controller) : controller_(controller) {
    observation_ = controller.onChange([this](const ImportChange& change) { follow(change); });
    layOut();
}

void OutlineModel::setSearch(const std::string& text) {
    search_ = SearchWords(text);
    layOut();
}

void OutlineModel::showOnly(const std::optional<std::vector<UUID>>& clips) {
    only_.reset();
    if (clips) {
        only_.emplace();
        for (const UUID& clip : *clips) only_->emplace(clip, only_->size());
    }
    layOut();
}

std::size_t OutlineModel::placeAmongOnly(const SyncGroup& clip) const {
    const auto found = only_->find(clip.id);
    return found == only_->end() ? only_->size() : found->second;
}

void OutlineModel::followNaming() {
    if (naming_ != NamingRules::of(*controller_.work().environment.settings)) layOut();
}

void OutlineModel::toggleFolded(std::size_t row) {
    if (!rows_.at(row).isTake) return;
    if (folded_.erase(rows_[row].key) == 0) folded_.insert(rows_[row].key);
    layOut();
}

OutlineModel::Row OutlineModel::row(std::size_t index) const {
    const Place& place = rows_.at(index);
    const auto& doubts = controller_.doubts().byGroup;
    const auto all = [&](auto holds) {
        return std::ranges::all_of(place.clips, [&](const auto& clip) { return holds(*clip); });
    };
    Row row;
    row.label = place.label;
    row.isTake = place.isTake;
    row.isInTake = place.isInTake;
    row.isFolded = place.isTake && folded_.contains(place.key);
    row.isApproved = all([](const SyncGroup& clip) { return clip.isApproved; });
    row.isLocked = all([](const SyncGroup& clip) { return clip.isLocked; });
    row.isExcluded = all([](const SyncGroup& clip) { return clip.isExcludedFromExport; });
    row.certainty = Certainty::silent;
    for (const auto& clip : place.clips) {
        const Certainty own = certaintyOf(*clip, doubts.contains(clip->id));
        if (urgencyInOutline(own) > urgencyInOutline(row.certainty)) row.certainty = own;
        row.isMovedSinceLock = row.isMovedSinceLock || isMovedSinceLock(*clip);
    }
    if (row.isMovedSinceLock && row.certainty != Certainty::missing) row.certainty = Certainty::doubtful;
    if (place.isTake) {
        row.facts = counted(place.cameras, "camera", "cameras");
        if (place.clips.size() < place.cameras)
            row.facts = std::to_string(place.clips.size()) + " of " + row.facts;
        row.status = "Open these cameras as multicam";
        return row;
    }
    const SyncGroup& clip = *place.clips.front();
    const std::string file = controller_.work().fileNames().of(clip.video);
    // If the clip is named after its file, the file name is not shown a second time.
    const std::string& why = controller_.derivedDoubts().whyUnmatched(clip.id);
    row.facts = !file.starts_with(place.label) ? file : why.empty() ? clip.matchStatus.label() : why;
    row.status = file;
    if (const std::string several = recordingCountText(clip); !several.empty()) {
        row.facts = several;
        addStatusLine(row.status, several);
    }
    if (row.isMovedSinceLock) {
        const double rate = controller_.timeline().timelineFrameRate(clip);
        row.facts = movedText(clip, rate);
        addStatusLine(row.status, movedSinceLockText(clip, rate));
    }
    addStatusLine(row.status, matchText(clip, takeOf(clip, assumedChannels)));
    if (!why.empty()) addStatusLine(row.status, why);
    if (const auto found = doubts.find(clip.id); found != doubts.end())
        for (const SyncDoubt& doubt : found->second) addStatusLine(row.status, messageInWords(doubt));
    return row;
}

std::optional<UUID> OutlineModel::groupID(std::size_t row) const {
    return rows_.at(row).isTake ? std::nullopt : std::optional(rows_[row].clips.front()->id);
}

std::vector<UUID> OutlineModel::clipsOf(std::size_t row) const {
    std::vector<UUID> ids;
    for (const auto& clip : rows_.at(row).clips) ids.push_back(clip->id);
    return ids;
}

std::optional<std::size_t> OutlineModel::rowOf(const UUID& groupID) const {
    const auto found = rowByGroup_.find(groupID);
    return found == rowByGroup_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<UUID> OutlineModel::neighbour(const UUID& of, int step) const {
    if (order_.empty() || step == 0) return std::nullopt;
    const auto found = placeInOrder_.find(of);
    if (found == placeInOrder_.end()) return step > 0 ? order_.front() : order_.back();
    const auto target = static_cast<std::ptrdiff_t>(found->second) + step;
    if (target < 0 || target >= static_cast<std::ptrdiff_t>(order_.size())) return std::nullopt;
    return order_[static_cast<std::size_t>(target)];
}

std::optional<OutlineModel::PlaceInList> OutlineModel::placeInList(const UUID& groupID) const {
    const auto found = placeInOrder_.find(groupID);
    if (found == placeInOrder_.end()) return std::nullopt;
    return PlaceInList{found->second + 1, order_.size()};
}

OutlineModel::Counts OutlineModel::counts() const {
    const OpenWork& work = controller_.work();
    const auto isToDecide = [](const SyncGroup& group) {
        return group.matchStatus.kind == MatchStatus::Kind::ambiguous;
    };
    Counts counts = counts_.of(
        work.syncGroups(),
        [&](const SyncGroup& before, const SyncGroup& now) {
            return before.isLocked == now.isLocked && isToDecide(before) == isToDecide(now);
        },
        [&] {
            Counts all;
            for (const SyncGroup& group : work.syncGroups()) {
                if (group.isLocked) ++all.locked;
                if (isToDecide(group)) ++all.toDecide;
            }
            return all;
        });
    counts.all = work.syncGroups().size();
    counts.shown = order_.size();
    return counts;
}

void OutlineModel::follow(const ImportChange& change) {
    ResultsViewModel::Change changed;
    if (change.field == ImportField::report) return layOut(); // the names depend on the report
    if (change.field == ImportField::smartAudio && change.smartAudioClips) {
        for (const UUID& clip : *change.smartAudioClips)
            if (const auto row = rowByGroup_.find(clip); row != rowByGroup_.end())
                changed.rows.push_back(row->second);
        if (!changed.rows.empty()) listeners_.notify(changed);
        return;
    }
    if (change.field == ImportField::smartAudio || change.field == ImportField::doubts) {
        for (std::size_t i = 0; i < rows_.size(); ++i) changed.rows.push_back(i);
        return listeners_.notify(changed);
    }
    if (change.field != ImportField::syncGroups) return;
    const SyncGroupChanges changes = change.clipChanges();
    if (!changes.removed.empty() || !changes.inserted.empty() || !changes.moved.empty()) return layOut();
    for (const std::size_t position : changes.changed)
        if (!haveSamePlaceAndName(change.clips[position], change.clipsBefore[position])) return layOut();
    for (const std::size_t position : changes.changed) {
        const auto& clip = change.clips.element(position);
        const auto row = rowOf(clip->id);
        if (!row) continue;
        for (const std::size_t i : std::set{*row, takeRowOf(clip->id).value_or(*row)}) {
            *std::ranges::find(rows_[i].clips, clip->id, [](const auto& own) { return own->id; }) = clip;
            changed.rows.push_back(i);
        }
    }
    if (!changes.changed.empty()) listeners_.notify(changed);
}

void OutlineModel::layOut() {
    const OpenWork& work = controller_.work();
    naming_ = NamingRules::of(*work.environment.settings);
    const DisplayNames& names = work.displayNames();
    rows_.clear();
    order_.clear();
    rowByGroup_.clear();
    placeInOrder_.clear();
    const auto add = [&](const SidebarNode& node, bool isInTake, bool isHidden) {
        placeInOrder_[node.group->id] = order_.size();
        order_.push_back(node.group->id);
        if (!isHidden) rows_.push_back({{}, names.at(node.group->id), {node.group}, false, isInTake});
        rowByGroup_[node.group->id] = rows_.size() - 1;
    };
    auto nodes = SidebarOutline::build(work.syncGroups(), naming_.source, naming_.pattern);
    std::vector<ClipsOfRow> clips;
    clips.reserve(nodes.size());
    for (const SidebarNode& node : nodes) {
        ClipsOfRow& row = clips.emplace_back();
        if (node.group) row.push_back(node.group.get());
        for (const SidebarNode& child : node.children) row.push_back(child.group.get());
    }
    std::vector<std::size_t> order = shootOrder(clips, work.syncGroups());
    const auto byPlace = [this](const SyncGroup* clip) { return placeAmongOnly(*clip); };
    if (only_)
        std::ranges::stable_sort(order, {}, [&](std::size_t node) {
            return byPlace(*std::ranges::min_element(clips[node], {}, byPlace));
        });
    for (const std::size_t place : order) {
        SidebarNode& node = nodes[place];
        if (only_)
            std::ranges::stable_sort(node.children, {},
                                     [&](const SidebarNode& child) { return byPlace(child.group.get()); });
        if (node.group) {
            if (isFound(names.at(node.group->id), *node.group)) add(node, false, false);
            continue;
        }
        const std::size_t cameras = node.children.size();
        std::erase_if(node.children, [&](const SidebarNode& child) {
            return !isFound(node.label + " " + names.at(child.group->id), *child.group);
        });
        if (node.children.empty()) continue;
        Place take{node.id,
                   GroupNaming::baseName(*node.children.front().group, naming_.source, naming_.pattern,
                                         naming_.separator),
                   {},
                   true,
                   false,
                   cameras};
        for (const SidebarNode& child : node.children) take.clips.push_back(child.group);
        rows_.push_back(std::move(take));
        for (const SidebarNode& child : node.children) add(child, true, folded_.contains(node.id));
    }
    listeners_.notify({.isLayoutChanged = true});
}

std::optional<std::size_t> OutlineModel::takeRowOf(const UUID& groupID) const {
    std::optional<std::size_t> row = rowOf(groupID);
    while (row && rows_[*row].isInTake) --*row;
    return row && rows_[*row].isTake ? row : std::nullopt;
}

bool OutlineModel::isFound(const std::string& label, const SyncGroup& group) const {
    if (only_ && !only_->contains(group.id)) return false;
    return search_.isEmpty() || search_.areIn(searchedText(group, label, controller_.work()));
}

} // namespace orvane
