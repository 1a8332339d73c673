#include "OrvaneSyncCore/Services/Network/LockitMatches.h"

#include "OrvaneSyncCore/Models/LockitField.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace orvane {

namespace {

using Text = std::optional<std::string>;

Text decimal(const std::optional<std::int64_t>& number) {
    return number ? Text(std::to_string(*number)) : std::nullopt;
}

/// The first that is there, also where it is blank.
Text firstPresent(Text first, Text otherwise) { return first ? std::move(first) : std::move(otherwise); }

Text trimmedOrNone(const Text& text) {
    std::string trimmed(platform::text::trimmed(text.value_or("")));
    return trimmed.empty() ? std::nullopt : Text(std::move(trimmed));
}

template <class Record>
const Record& orEmpty(const std::optional<Record>& record) {
    static const Record empty;
    return record ? *record : empty;
}

} // namespace

Text composedTake(const Text& shot, const Text& take) {
    Text composed = trimmedOrNone(shot);
    Text number = trimmedOrNone(take);
    if (!composed) return number;
    if (number) *composed += "-" + *number;
    return composed;
}

std::map<std::string, std::string> lockitFields(const LockitClip& clip) {
    const LockitPreformatted& texts = orEmpty(clip.preformatted);
    const LockitClipScene& scene = orEmpty(clip.scene);
    const LockitClipTake& take = orEmpty(clip.take);
    const LockitClipEpisode& episode = orEmpty(clip.episode);
    const LockitCamera& camera = orEmpty(clip.camera);
    const auto& sets = orEmpty(scene.sets);
    std::map<std::string, std::string> fields;
    const auto add = [&](LockitField field, const Text& value) {
        if (auto text = trimmedOrNone(value)) fields[std::string(rawValue(field))] = std::move(*text);
    };
    add(LockitField::scene, firstPresent(texts.scene, decimal(scene.number)));
    add(LockitField::take, composedTake(texts.shot, firstPresent(texts.take, decimal(take.number))));
    add(LockitField::shotDescription, orEmpty(clip.slate).comment);
    add(LockitField::takeComment, firstPresent(take.comment, texts.takeComment));
    add(LockitField::intExtDayNight, scene.insideOutside);
    add(LockitField::sceneContent, scene.content);
    add(LockitField::setName, sets.empty() ? std::nullopt : sets.front().name);
    if (texts.tags) add(LockitField::tags, platform::text::joined(*texts.tags, ", "));
    add(LockitField::episode, firstPresent(decimal(episode.number), texts.episode));
    add(LockitField::cameraName, firstPresent(camera.name, camera.label));
    return fields;
}

/// A day's answer is of few clips of all, and the days are laid one after the other: what is known of all
/// clips stays known until somebody else changes one.
LockitLayer::Laid LockitLayer::lay(SyncGroupList& groups, const ClipMatchResponse& answer,
                                   const std::stop_token& stop) {
    platform::StopCheck check(stop);
    if (!isAsLeft(groups)) {
        layAgain(groups);
        places_.clear();
        for (std::size_t i = 0; i < groups.size(); ++i) places_.emplace(groups[i].video.filename, i);
        withMetadata_ = lockitClipCount(groups);
        left_ = groups;
    }
    Laid laid;
    std::vector<std::size_t> positions;
    std::vector<Fields> fieldsOf;
    int withMetadata = withMetadata_;
    if (answer.matches) {
        for (const auto& [filename, clip] : *answer.matches) {
            check();
            const auto [first, last] = places_.equal_range(filename);
            if (first == last) continue;
            Fields fields = lockitFields(clip);
            if (fields.empty()) continue;
            const std::size_t before = positions.size();
            for (auto place = first; place != last; ++place) {
                const SyncGroup& group = groups[place->second];
                ++laid.updated;
                if (group.lockitMetadata == fields) continue;
                if (!group.hasLockitMetadata()) ++withMetadata;
                positions.push_back(place->second);
            }
            if (positions.size() == before) continue;
            fieldsOf.resize(positions.size() - 1, fields);
            fieldsOf.push_back(std::move(fields));
        }
    }
    groups.updateAt(positions,
                    [&](SyncGroup& group, std::size_t i) { group.lockitMetadata = std::move(fieldsOf[i]); });
    for (const std::size_t position : positions)
        laid_[groups[position].id].push_back(groups.element(position));
    left_ = groups;
    laid.withMetadata = withMetadata_ = withMetadata;
    return laid;
}

void LockitLayer::layAgain(SyncGroupList& groups) const {
    if (laid_.empty() || isAsLeft(groups)) return;
    const SyncGroup* known = nullptr;
    groups.updateWhere(
        [&](const SyncGroup& group) {
            const auto laid = laid_.find(group.id);
            if (laid == laid_.end()) return false;
            known = laid->second.back().get();
            return group.lockitMetadata != known->lockitMetadata;
        },
        [&](SyncGroup& group) { group.lockitMetadata = known->lockitMetadata; });
}

SyncGroupList LockitLayer::without(SyncGroupList groups) const {
    groups.updateWhere(
        [&](const SyncGroup& group) {
            const auto laid = laid_.find(group.id);
            return laid != laid_.end() && group.lockitMetadata &&
                   std::ranges::any_of(laid->second, [&](const SyncGroupList::Element& given) {
                       return given->lockitMetadata == group.lockitMetadata;
                   });
        },
        [&](SyncGroup& group) {
            const SyncGroup* earlier = before_.find(group.id);
            group.lockitMetadata = earlier == nullptr ? std::nullopt : earlier->lockitMetadata;
        });
    return groups;
}

int applyLockitMatches(SyncGroupList& groups, const ClipMatchResponse& answer) {
    return LockitLayer(groups).lay(groups, answer).updated;
}

int lockitClipCount(const SyncGroupList& groups) {
    return static_cast<int>(std::count_if(groups.begin(), groups.end(),
                                          [](const SyncGroup& group) { return group.hasLockitMetadata(); }));
}

} // namespace orvane
