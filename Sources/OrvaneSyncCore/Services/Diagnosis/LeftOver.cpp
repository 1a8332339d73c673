#include "OrvaneSyncCore/Services/Diagnosis/LeftOver.h"

#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Services/Diagnosis/UnmatchedReasons.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <set>
#include <string_view>
#include <tuple>
#include <unordered_set>
#include <utility>

namespace orvane {

namespace {

/// Files by folder and day.
class FilesByDay {
  public:
    void add(const MediaAsset& file, const FilePlace& place) {
        const auto& [start, end] = place.range;
        const auto [known, isNew] = files_.try_emplace({std::string(folderOf(file)), place.likelyDay()});
        LeftOver::Files& files = known->second;
        files.firstSeconds = isNew ? start : std::min(files.firstSeconds, start);
        files.lastSeconds = isNew ? end : std::max(files.lastSeconds, end);
        ++files.count;
    }
    std::vector<LeftOver::Files> all() && {
        std::vector<LeftOver::Files> result;
        for (auto& [key, files] : files_) {
            std::tie(files.folder, files.day) = key;
            result.push_back(std::move(files));
        }
        return result;
    }

  private:
    std::map<std::pair<std::string, std::optional<long>>, LeftOver::Files> files_;
};

std::string linesOf(const std::vector<LeftOver::Files>& all, const char* one, const char* many) {
    std::string lines;
    for (const LeftOver::Files& files : all)
        lines += "  " + counted(files.count, one, many) + " in '" + files.folder + "'" +
                 (files.day ? " of " + dayText(*files.day) : " without a date") + ", from " +
                 timeOfDayText(files.firstSeconds) + " to " + timeOfDayText(files.lastSeconds) + "\n";
    return lines;
}

int countOf(const std::vector<LeftOver::Files>& all) {
    return std::accumulate(all.begin(), all.end(), 0,
                           [](int sum, const LeftOver::Files& files) { return sum + files.count; });
}

JSON::Array toJSON(const std::vector<LeftOver::Files>& all) {
    JSON::Array list;
    for (const LeftOver::Files& files : all) {
        JSON json;
        json.set("folder", files.folder);
        json.set("count", files.count);
        if (files.day) json.set("day", dayText(*files.day));
        json.set("from", timeOfDayText(files.firstSeconds));
        json.set("to", timeOfDayText(files.lastSeconds));
        list.push_back(std::move(json));
    }
    return list;
}

/// What is reported by a doubt of its own.
bool isDamagedFile(const MediaAsset& file) {
    return file.endsEarly() || file.fileSizeBytes == 0 || nothingIsKnown(file);
}

std::unordered_set<UUID> recordingsInDoubt(const SyncDoubts& doubts) {
    std::unordered_set<UUID> recordings = doubts.recordings;
    for (const auto& [clip, own] : doubts.byGroup)
        for (const SyncDoubt& doubt : own)
            if (doubt.suggestion && doubt.suggestion->recordingID)
                recordings.insert(*doubt.suggestion->recordingID);
    return recordings;
}

/// The days of the recordings; absent if there is no recording, or one without a day.
std::optional<std::set<long>>
daysRecorded(const SyncGroupList& groups, const std::vector<const MediaAsset*>& withoutClip, Places& places) {
    std::set<long> days;
    bool areKnown = true;
    const auto add = [&](const MediaAsset& recording) {
        if (recording.isAtmo()) return;
        const auto place = places.of(recording);
        areKnown = areKnown && place && place->day;
        if (!areKnown) return;
        const double end = place->range.endSeconds;
        days.insert({*place->day, *place->day + static_cast<long>(end / secondsADay)});
    };
    for (const MediaAsset* recording : withoutClip) add(*recording);
    for (const SyncGroup& group : groups)
        for (const AudioMatch& match : group.audioMatches) add(*match.audio);
    return areKnown && !days.empty() ? std::optional(std::move(days)) : std::nullopt;
}

} // namespace

LeftOver LeftOver::of(const SyncGroupList& groups, const std::vector<const MediaAsset*>& recordings,
                      const MatchRules& rules, const SyncDoubts& doubts) {
    Places places(rules);
    FilesByDay clips, sounds;
    for (const MediaAsset* recording : recordings) places.learn(*recording);
    for (const SyncGroup& group : groups) places.learn(group.video);
    for (const SyncGroup& group : groups)
        if (group.matchStatus.kind == MatchStatus::Kind::unmatched && !group.isExcludedFromExport &&
            !doubts.byGroup.contains(group.id))
            if (const auto place = places.of(group.video)) clips.add(group.video, *place);
    const auto explained = recordingsInDoubt(doubts);
    for (const MediaAsset* recording : recordings)
        if (const auto place =
                recording->isAtmo() || isDamagedFile(*recording) || explained.contains(recording->id)
                    ? std::nullopt
                    : places.of(*recording))
            sounds.add(*recording, *place);
    LeftOver result{std::move(clips).all(), std::move(sounds).all(), {}};
    const auto recorded = daysRecorded(groups, recordings, places);
    // If clips of a folder have sound of another day, the date of the others may be wrong, too.
    std::set<std::pair<std::string_view, std::optional<long>>> withSound;
    for (const SyncGroup& group : groups)
        if (const auto place = group.isMOS() ? std::nullopt : places.of(group.video))
            withSound.emplace(folderOf(group.video), place->likelyDay());
    std::map<long, int> silent;
    std::erase_if(result.clips, [&](const Files& files) {
        if (!recorded || !files.day || recorded->contains(*files.day) ||
            withSound.contains({files.folder, files.day}))
            return false;
        silent[*files.day] += files.count;
        return result.recordings.empty();
    });
    for (const auto& [day, count] : silent) result.daysWithoutRecordings.push_back({day, count});
    const auto damagedClips = std::ranges::count_if(groups, [](const SyncGroup& group) {
        return group.audioMatches.empty() && isDamagedFile(group.video);
    });
    const auto damagedRecordings = std::ranges::count_if(
        recordings, [](const MediaAsset* recording) { return isDamagedFile(*recording); });
    if (countOf(result.clips) <= damagedRecordings || countOf(result.recordings) <= damagedClips) {
        result.clips.clear();
        result.recordings.clear();
    }
    return result;
}

std::string LeftOver::text() const {
    std::string text;
    for (const auto& [day, count] : daysWithoutRecordings)
        text += "No recording of " + dayText(day) + " is on these cards, and " +
                counted(count, "clip", "clips") + " of that day " + (count == 1 ? "has" : "have") +
                " no sound: " +
                (recordings.empty() ? ""
                                    : "unless a date is wrong and the recordings below "
                                      "belong to them, ") +
                "look for the card of the recorder.\n";
    if (clips.empty()) return text;
    return text + counted(countOf(clips), "clip has", "clips have") + " no sound, and " +
           counted(countOf(recordings), "recording has", "recordings have") + " no picture:\n" +
           linesOf(clips, "clip", "clips") + linesOf(recordings, "recording", "recordings") +
           "If the clips were shot without sound and the recordings are wild tracks or room tone, nothing is "
           "wrong. If some of them belong together, a clock or a date is: look for one clap in both, and "
           "give "
           "what lies between with --sound-offset, or the day with --sound-date.\n";
}

JSON toJSON(const LeftOver& leftOver) {
    JSON json;
    json.set("clips", toJSON(leftOver.clips));
    json.set("recordings", toJSON(leftOver.recordings));
    JSON::Array days;
    for (const auto& [day, count] : leftOver.daysWithoutRecordings) {
        JSON silent;
        silent.set("day", dayText(day));
        silent.set("count", count);
        days.push_back(std::move(silent));
    }
    json.set("silentDays", std::move(days));
    return json;
}

} // namespace orvane
