#include "OrvaneSyncApp/Controllers/Commands/WorkReview.h"

#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Matching/ClipRate.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Services/Matching/TakeMembership.h"
#include "OrvaneSyncCore/Services/Takes/ClipRecordings.h"
#include "OrvaneSyncCore/Services/Takes/RecordedAtOnce.h"
#include "OrvaneSyncCore/Services/Takes/SeparateUnits.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace orvane {

namespace {

using enum ReviewColumn;
using platform::text::trimmed;

/// The rates at which the column of offsets counts frames.
ClipRates ratesOf(const WorkSnapshot& work) {
    return {work.groups(), work.settings().get(settings::targetFrameRate)};
}

bool isChosen(const SyncGroup& group) { return group.matchStatus.isSettled() && !group.isMOS(); }

/// Whether "only" and the clip's first recording would change nothing. It is a decision, also about a clip
/// that matching gave that recording alone: it settles the clip's doubts.
bool isOnlyChoice(const SyncGroup& group) {
    return isChosen(group) && recordingsOf(group).size() == 1 &&
           (group.isLocked || group.matchStatus.kind == MatchStatus::Kind::manual);
}

std::vector<std::string> recordingTexts(const SyncGroup& group, const FileNames& names) {
    std::vector<std::string> texts;
    for (const auto& recording : recordingsOf(group)) texts.push_back(recordingText(group, recording, names));
    return texts;
}

/// Fills in the cells that the editor may change.
void fillDecisions(ReviewLine& line, const SyncGroup& group, const ClipRates& rates) {
    line[choice] = isChosen(group) ? "1" : "";
    line[offsetFrames] = reviewFrames(group.manualAudioOffsetSeconds * rates.of(group.video));
    line[name] = group.manualClipName.value_or("");
    line[skip] = group.isExcludedFromExport ? "x" : "";
    line[lock] = group.isLocked ? "x" : "";
}

/// Each doubt with its cure; without doubts, why the clip is not settled.
std::string doubtText(const SyncGroup& group, const SyncDoubts& doubts, UnmatchedReasons& reasons) {
    const auto own = doubts.byGroup.find(group.id);
    if (own == doubts.byGroup.end() || own->second.empty())
        return group.matchStatus.isSettled() ? "" : reasons.ofClip(group);
    std::vector<std::string> texts;
    for (const SyncDoubt& one : own->second) {
        // The message about a card may name a file of another clip.
        const std::string& text =
            one.reason.empty() || doubts.ofCard(one) == nullptr ? one.message : one.reason;
        texts.push_back(one.cure.isEmpty() ? text : text + " (" + one.cure.text() + ")");
    }
    return platform::text::joined(texts, "; ");
}

SeparateUnits unitsOf(const SyncGroupList& groups, Places& places) {
    std::vector<SeparateUnits::Clip> clips;
    for (const SyncGroup& group : groups)
        if (const auto place = places.of(group.video))
            clips.push_back({&group, place->range, place->knownDay()});
    return SeparateUnits(std::move(clips));
}

/// The recordings beside the clip's first one that a choice of the first one removes, as they would be heard
/// as well: those of another unit, and those that the recorder of the first one cannot have made at the same
/// time.
std::vector<UUID> notBesideFirst(const SyncGroup& group, const SeparateUnits& units) {
    std::vector<UUID> others;
    if (group.audioMatches.size() < 2) return others;
    const MediaAsset& first = *group.primaryAudio();
    for (const std::size_t match : ofOtherMoments(group)) others.push_back(group.audioMatches[match].id);
    for (const TakeFile& file : takeOf(group, assumedChannels).files) {
        const AudioMatch& match = group.audioMatches[file.matchIndex];
        if (file.role == TakeRole::alternate && units.areOfTwo(first, *match.audio) &&
            std::ranges::find(others, match.id) == others.end())
            others.push_back(match.id);
    }
    return others;
}

class Reading {
  public:
    explicit Reading(const WorkSnapshot& work)
        : work_(work), names_(work.fileNames()), rates_(ratesOf(work)), places_(work.matchRules()) {
        for (const SyncGroup& group : work.groups()) places_.learn(group.video);
        for (const SyncGroup& group : work.groups()) {
            shown_[shownName(group)].push_back(&group);
            byFilename_[trimmedText(group.video.url.lastPathComponent())].push_back(&group);
        }
    }

    ReviewReading result;

    void read(const ReviewLine& line) {
        const SyncGroup* group = clipOf(line);
        if (group == nullptr) return;
        ReviewLine present;
        fillDecisions(present, *group, rates_);
        ReviewDecision decision{.groupID = group->id};
        decision.isLocked = changedSwitch(line, lock, "lock", group->isLocked);
        readChoice(line, *group, decision);
        if (decision.isLocked == true && decision.others.empty() && line[choice] &&
            !trimmed(*line[choice]).empty())
            findOtherDays(*group, decision);
        readOffset(line, present, *group, decision);
        if (!decision.others.empty()) addRestOfTake(*group, decision);
        if (line[name] && trimmed(*line[name]) != trimmed(*present[name]) &&
            trimmed(*line[name]) != asRead(name, *present[name]))
            decision.name = line[name];
        decision.isSkipped = changedSwitch(line, skip, "skip", group->isExcludedFromExport);
        if (isDoubtOpen(line, *group, decision)) {
            if (openDoubts_ == 0) openDoubt_ = line;
            ++openDoubts_;
        }
        if (!decision.isEmpty()) result.decisions.push_back(std::move(decision));
    }

    /// Reports doubts that `diagnose` wrote into the lines and that nobody knows without measuring: the clips
    /// would be in the document as if they were right.
    void reportOpenDoubts() {
        if (openDoubts_ == 1)
            problem(openDoubt_,
                    "nothing in the line settles its doubt: decide, or lock the clip if its sound is right");
        else if (openDoubts_ > 1)
            problem(openDoubt_, "nothing in this line and " +
                                    counted(openDoubts_ - 1, "more line", "more lines") +
                                    " settles their doubts: decide, or lock the clips whose sound is right");
    }

    /// A copy of a table may have been cut off, with what was filled in for the clips of the last lines.
    void reportClipsWithoutLine() {
        const SyncGroup* first = nullptr;
        long long count = 0;
        for (const SyncGroup& group : work_.groups()) {
            if (seen_.contains(group.id)) continue;
            if (first == nullptr) first = &group;
            ++count;
        }
        if (first == nullptr) return;
        const std::string of = " of " + counted(work_.groups().size(), "clip", "clips");
        const std::string name = "'" + names_.of(first->video) + "'";
        result.problems.push_back(
            count == 1
                ? "review: the table has no line for 1" + of + ", " + name +
                      ": it stays as it is, and a doubt about its sound is not settled"
                : "review: the table has no line for " + std::to_string(count) + of + ", the first is " +
                      name + ": they stay as they are, and doubts about their sound are not settled");
    }

  private:
    bool isDoubtOpen(const ReviewLine& line, const SyncGroup& group, const ReviewDecision& decision) const {
        if (!line[doubt] || trimmed(*line[doubt]).empty() || !isChosen(group) ||
            group.matchStatus.kind == MatchStatus::Kind::manual || group.isLocked ||
            group.isExcludedFromExport || group.manualAudioOffsetSeconds != 0 || decision.matchID ||
            !decision.others.empty() || decision.offsetSeconds || decision.isSkipped == true ||
            decision.isLocked == true)
            return false;
        return !work_.doubts().byGroup.contains(group.id);
    }
    static std::string trimmedText(std::string_view text) { return std::string(trimmed(text)); }
    /// The cell as it is after being written to a table and read back.
    static std::string asRead(ReviewColumn column, const std::string& cell) {
        ReviewLine line;
        line[clip] = "clip"; // a line with no other cell would be left out
        line[column] = cell;
        return trimmedText(*readReviewTable(writtenReviewTable({line})).front()[column]);
    }
    std::string shownName(const SyncGroup& group) const { return asRead(cameraFile, names_.of(group.video)); }
    /// The place of a recording that is named as in a table, or as in the table of a smaller shoot, without
    /// leading folders; absent if none or several match.
    static std::optional<std::size_t> placeOf(const std::string& wanted,
                                              const std::vector<std::string>& texts) {
        if (const auto at = std::ranges::find(texts, wanted); at != texts.end())
            return static_cast<std::size_t>(at - texts.begin());
        std::optional<std::size_t> place;
        for (std::size_t i = 0; i < texts.size(); ++i) {
            if (!texts[i].ends_with("/" + wanted) && !wanted.ends_with("/" + texts[i])) continue;
            if (place) return std::nullopt;
            place = i;
        }
        return place;
    }
    std::optional<bool> changedSwitch(const ReviewLine& line, ReviewColumn column, const std::string& name,
                                      bool present) {
        if (!line[column]) return std::nullopt;
        const auto isOn = reviewSwitch(*line[column]);
        if (!isOn) problem(line, name + " must be x or nothing, not '" + *line[column] + "'");
        return isOn == present ? std::nullopt : isOn;
    }
    /// Whether the line may choose another recording; if not, reports why.
    bool mayChange(const ReviewLine& line, const SyncGroup& group, const ReviewDecision& decision) {
        const bool isOpen = !group.isLocked || decision.isLocked == false;
        if (!isOpen) problem(line, "the clip is locked and keeps its recordings; unlock it first");
        return isOpen;
    }
    void problem(const ReviewLine& line, const std::string& what) {
        result.problems.push_back("review, line " + std::to_string(line.number) + ": " + what);
    }

    const SyncGroup* clipOf(const ReviewLine& line) {
        const std::string file = trimmedText(*line[cameraFile]);
        std::vector<const SyncGroup*> found;
        if (const auto exact = shown_.find(file); exact != shown_.end())
            found = exact->second;
        else if (const SyncGroup* original = clipOfCopy(file); original != nullptr)
            found.push_back(original);
        else if (const auto others = byFilename_.find(file.substr(file.rfind('/') + 1));
                 others != byFilename_.end() && !file.empty())
            std::ranges::copy_if(others->second, std::back_inserter(found), [&](const SyncGroup* group) {
                const std::string path = platform::text::validUTF8(group->video.url.path);
                return path == file || path.ends_with("/" + file);
            });
        if (found.size() == 1 && seen_.insert(found.front()->id).second) return found.front();
        problem(line, (found.empty()       ? "there is no clip of the camera file '"
                       : found.size() == 1 ? "a line before this one is for the same clip, '"
                                           : "several clips have the camera file '") +
                          file + "'; nothing of the line is used");
        return nullptr;
    }

    /// The clip of a camera file that the scan left out as a copy of another one; null if there is none, or
    /// several.
    const SyncGroup* clipOfCopy(const std::string& file) const {
        if (!work_.scanResult() || file.empty()) return nullptr;
        const FileURL* original = nullptr;
        for (const CameraCopy& copy : work_.scanResult()->copies) {
            const std::string path = platform::text::validUTF8(copy.url.path);
            if (path != file && !path.ends_with("/" + file)) continue;
            if (original != nullptr && *original != copy.originalURL) return nullptr;
            original = &copy.originalURL;
        }
        if (original == nullptr) return nullptr;
        const auto group = std::ranges::find(
            work_.groups(), *original, [](const SyncGroup& one) -> const FileURL& { return one.video.url; });
        return group != work_.groups().end() ? &*group : nullptr;
    }

    void readChoice(const ReviewLine& line, const SyncGroup& group, ReviewDecision& decision) {
        if (!line[choice] || trimmed(*line[choice]).empty()) return;
        const auto only = onlyChoice(*line[choice]);
        const auto number = reviewNumber(only.value_or(*line[choice]));
        const auto recordings = recordingsOf(group);
        const bool isWhole = number && *number == std::floor(*number) && *number >= 1 &&
                             *number <= static_cast<double>(std::numeric_limits<int>::max());
        if (!number) return readNamedChoice(line, group, decision);
        if (!isWhole)
            return problem(line, "choice must be the number of a recording, not '" + *line[choice] + "'");
        std::size_t position = static_cast<std::size_t>(*number) - 1;
        if (line[sound] && !trimmed(*line[sound]).empty()) {
            // The numbers are those of the line: the clip may list its recordings in another order meanwhile.
            const auto wanted = recordingOfNumber(*line[sound], static_cast<int>(*number));
            const auto texts = recordingTexts(group, names_);
            const auto place = wanted ? placeOf(*wanted, texts) : std::nullopt;
            if (wanted && !place) {
                if (!isChoiceOfTable(line))
                    problem(line, "the recording '" + *wanted + "' is none of the clip's");
                return;
            }
            position = place.value_or(recordings.size());
        }
        if (position >= recordings.size())
            return problem(line, "there is no recording number '" + *line[choice] + "'");
        const bool isDone = position == 0 && (only ? isOnlyChoice(group) : isChosen(group));
        if (isDone || !mayChange(line, group, decision)) return;
        decision.matchID = group.audioMatches[recordings[position].front()].id;
        decision.isAlone = only.has_value();
    }

    /// Finds the recording by the name of one of its files, first among the clip's recordings, then among
    /// all: recordings of phones and recorders without timecode are matched to no clip.
    void readNamedChoice(const ReviewLine& line, const SyncGroup& group, ReviewDecision& decision) {
        std::string wanted = asRead(choice, trimmedText(*line[choice]));
        if (pool_.empty()) pool_ = work_.audioPool();
        if (poolNames_.empty())
            for (const MediaAsset* recording : pool_)
                poolNames_.push_back(asRead(choice, names_.of(*recording)));
        auto place = placeOf(wanted, poolNames_);
        const auto only = place ? std::nullopt : onlyChoice(wanted); // which a name may begin with as well
        if (only) place = placeOf(wanted = *only, poolNames_);
        if (!place)
            return problem(line, "choice must be the number of one of the clip's recordings or the name of a "
                                 "file among all recordings, with its folder where several have that name; "
                                 "not '" +
                                     wanted + "'");
        const UUID& id = pool_[*place]->id;
        const auto recordings = recordingsOf(group);
        for (std::size_t position = 0; position < recordings.size(); ++position)
            for (const std::size_t match : recordings[position]) {
                if (group.audioMatches[match].audio->id != id) continue;
                const bool isDone = position == 0 && (only ? isOnlyChoice(group) : isChosenAlone(group));
                if (isDone || !mayChange(line, group, decision)) return;
                decision.matchID = group.audioMatches[match].id;
                decision.isAlone = only.has_value();
                return;
            }
        if (mayChange(line, group, decision)) decision.others.emplace_back(*pool_[*place]);
    }

    /// Whether naming the clip's first recording would change nothing. The number 1 is also in the table of a
    /// clip that nobody decided, the name only where it was chosen.
    bool isChosenAlone(const SyncGroup& group) {
        if (group.isLocked) return isChosen(group);
        if (group.matchStatus.kind != MatchStatus::Kind::manual) return false;
        if (!units_) units_ = unitsOf(work_.groups(), places_);
        return notBesideFirst(group, *units_).empty();
    }

    /// Adds the other files of the chosen recording's take that meet the clip, once its sound is moved as the
    /// line says; all of them if no file of the take meets it. Files without timecode have no known order.
    void addRestOfTake(const SyncGroup& group, ReviewDecision& decision) {
        const MediaAsset& chosen = *decision.others.front();
        if (!places_.of(chosen)) return;
        std::vector<TakeMembership::Candidate> files{placed(chosen)};
        if (placed_.empty())
            for (const MediaAsset* recording : pool_)
                if (!recording->isAtmo() && places_.of(*recording)) placed_.push_back(placed(*recording));
        std::ranges::copy_if(placed_, std::back_inserter(files),
                             [&](const auto& file) { return file.audio->id != chosen.id; });
        std::vector<const MediaAsset*> take, meeting;
        const double moved = decision.offsetSeconds.value_or(group.manualAudioOffsetSeconds);
        const SyncEngine::TCRange picture{0, group.video.durationSeconds.value_or(0)};
        for (const TakeMembership::Member& member : TakeMembership::of(files).members) {
            const MediaAsset& file = *files[member.candidate].audio;
            const double start =
                moved + SyncEngine::matchByTimecode(group.video, file, places_.rules()).syncOffsetSeconds;
            take.push_back(&file);
            if (SyncEngine::overlapDuration(picture, {start, start + file.durationSeconds.value_or(0)}))
                meeting.push_back(&file);
        }
        for (const MediaAsset* file : meeting.empty() ? take : meeting)
            if (file->id != chosen.id) decision.others.emplace_back(*file);
    }
    /// On the axis of days and times.
    TakeMembership::Candidate placed(const MediaAsset& recording) {
        const FilePlace place = *places_.of(recording);
        const double day = static_cast<double>(place.day.value_or(0)) * secondsADay;
        return {&recording, {day + place.range.startSeconds, day + place.range.endSeconds}};
    }

    /// If the chosen recording is itself of another day, none is removed: the dates may be wrong.
    void findOtherDays(const SyncGroup& group, ReviewDecision& decision) {
        const auto clip = places_.of(group.video);
        if (!clip || group.isMOS()) return;
        const auto isOther = [&](const AudioMatch& match) {
            return areOfOtherDays(*clip, places_.of(*match.audio));
        };
        for (const AudioMatch& match : group.audioMatches)
            if (isOther(match)) decision.otherDays.push_back(match.id);
        const UUID& chosen = decision.matchID ? *decision.matchID : group.audioMatches.front().id;
        if (std::ranges::find(decision.otherDays, chosen) != decision.otherDays.end())
            decision.otherDays.clear();
    }

    void readOffset(const ReviewLine& line, const ReviewLine& present, const SyncGroup& group,
                    ReviewDecision& decision) {
        if (!line[offsetFrames]) return;
        const std::string_view cell = trimmed(*line[offsetFrames]);
        const auto frames = cell.empty() ? std::optional(0.0) : reviewNumber(cell);
        const auto byDecimals = reviewNumberByDecimals(cell);
        if (!frames && byDecimals && reviewFrames(*byDecimals) == *present[offsetFrames]) return;
        if (!frames)
            return problem(line, "offset_frames must be a number of frames, not '" + std::string(cell) + "'" +
                                     (byDecimals ? ", which may be a thousand times as many; write it "
                                                   "without a comma or point"
                                                 : ""));
        const double seconds = *frames / rates_.of(group.video);
        if (std::abs(seconds) > secondsADay)
            return problem(line, "an offset of " + std::string(cell) + " frames is more than a day");
        if (reviewFrames(*frames) == *present[offsetFrames]) return;
        if (*frames != 0 && !isOfSound(line, group, decision))
            return problem(line, "the offset is not used: the clip has none of the recordings in the line");
        decision.offsetSeconds = seconds;
    }
    /// Whether the line names the clip's recording under `sound`, or another one under `choice`: an offset is
    /// that of one recorder's clock. True for a line without recordings.
    bool isOfSound(const ReviewLine& line, const SyncGroup& group, const ReviewDecision& decision) const {
        const std::string cell = trimmedText(line[choice].value_or(""));
        const bool isNamed = !cell.empty() && !reviewNumber(cell);
        if (isNamed || decision.matchID || group.isMOS() || trimmed(line[sound].value_or("")).empty())
            return true;
        // Another scan may have other files of the take.
        const auto firstFile = [](const std::string& text) { return text.substr(0, text.find(" + ")); };
        const std::vector<std::string> own{firstFile(recordingTexts(group, names_).front())};
        for (int number = 1;; ++number) {
            const auto named = recordingOfNumber(*line[sound], number);
            if (!named) return number == 1;
            if (placeOf(firstFile(*named), own)) return true;
        }
    }

    const WorkSnapshot& work_;
    const FileNames& names_;
    const ClipRates rates_;
    Places places_;
    std::optional<SeparateUnits> units_; ///< made when it is needed
    std::unordered_map<std::string, std::vector<const SyncGroup*>> shown_, byFilename_;
    std::unordered_set<UUID> seen_;
    long long openDoubts_ = 0;                      ///< lines
    ReviewLine openDoubt_;                          ///< the first of them
    std::vector<const MediaAsset*> pool_;           ///< all recordings; filled when the first one is named
    std::vector<std::string> poolNames_;            ///< as tables write them
    std::vector<TakeMembership::Candidate> placed_; ///< those of `pool_` with a place in time
};

/// Removes what lies beside the chosen recordings by chance. To be called when all clips have theirs, because
/// these show the units.
void removeBesideChosen(ImportController& controller, const std::vector<ReviewDecision>& decisions) {
    const SyncGroupList groups = controller.work().syncGroups();
    Places places(controller.work().matchRules());
    for (const SyncGroup& group : groups) places.learn(group.video);
    const SeparateUnits units = unitsOf(groups, places);
    for (const ReviewDecision& decision : decisions) {
        const SyncGroup* group = decision.matchID ? groups.find(decision.groupID) : nullptr;
        if (group == nullptr || group->isMOS()) continue;
        const auto others = notBesideFirst(*group, units);
        for (const UUID& other : others) controller.recordings().removeAudioMatch(group->id, other);
        // A removal leaves the choice among the rest open.
        if (!others.empty()) controller.recordings().chooseRecording(group->id, *decision.matchID);
    }
}

/// Removes what is no part of the clip's first take and no copy of it.
void removeAlternates(ImportController& controller, const UUID& groupID) {
    const SyncGroup* group = controller.work().syncGroups().find(groupID);
    if (group == nullptr || group->isMOS()) return;
    std::vector<UUID> others;
    for (const TakeFile& file : takeOf(*group, assumedChannels).files)
        if (file.role == TakeRole::alternate) others.push_back(group->audioMatches[file.matchIndex].id);
    for (const UUID& other : others) controller.recordings().removeAudioMatch(groupID, other);
}

/// Attaches the files of a take, chooses the first one, and removes the clip's other recordings: the clip's
/// offset moves all of its recordings, and the chosen take alone is to be moved by it.
void replaceRecordings(ImportController& controller, const UUID& groupID,
                       const std::vector<Shared<MediaAsset>>& files) {
    for (const Shared<MediaAsset>& file : files) controller.recordings().attachAudioToGroup(groupID, *file);
    std::optional<UUID> attached;
    if (const SyncGroup* group = controller.work().syncGroups().find(groupID))
        for (const AudioMatch& match : group->audioMatches)
            if (match.audio->id == files.front()->id) attached = match.id;
    if (!attached) return;
    controller.recordings().chooseRecording(groupID, *attached);
    removeAlternates(controller, groupID);
}

void setLock(ImportController& controller, const UUID& groupID, bool isLocked) {
    const SyncGroup* group = controller.work().syncGroups().find(groupID);
    if (group != nullptr && group->isLocked != isLocked) controller.clips().toggleLocked(groupID);
}

void chooseRecordings(ImportController& controller, const ReviewDecision& decision) {
    if (decision.isLocked == false) setLock(controller, decision.groupID, false);
    if (!decision.others.empty()) replaceRecordings(controller, decision.groupID, decision.others);
    if (decision.matchID) controller.recordings().chooseRecording(decision.groupID, *decision.matchID);
    if (decision.isAlone) {
        removeAlternates(controller, decision.groupID);
        // A removal leaves the choice among the rest open.
        controller.recordings().chooseRecording(decision.groupID, *decision.matchID);
    }
    for (const UUID& other : decision.otherDays)
        controller.recordings().removeAudioMatch(decision.groupID, other);
}

void carryOutTheRest(ImportController& controller, const ReviewDecision& decision) {
    if (decision.offsetSeconds) {
        controller.clips().resetAudioOffset(
            decision.groupID); // so that the sum is exactly the requested offset
        controller.clips().adjustAudioOffset(decision.groupID, *decision.offsetSeconds);
    }
    if (decision.name) controller.clips().setManualClipName(decision.groupID, *decision.name);
    const SyncGroup* group = controller.work().syncGroups().find(decision.groupID);
    if (group != nullptr &&
        decision.isSkipped.value_or(group->isExcludedFromExport) != group->isExcludedFromExport)
        controller.clips().toggleExcludedFromExport(decision.groupID);
    if (decision.isLocked == true) setLock(controller, decision.groupID, true);
}

/// Fills in what the doubts suggest. Returns the number of lines.
std::size_t fillInSuggestions(std::vector<ReviewLine>& lines, const WorkSnapshot& work) {
    const ClipRates rates = ratesOf(work);
    std::unordered_map<UUID, std::string> recordings;
    for (const MediaAsset* recording : work.audioPool())
        recordings.emplace(recording->id, work.fileNames().of(*recording));
    std::size_t count = 0, number = 0;
    for (const SyncGroup& group : work.groups()) {
        ReviewLine& line = lines.at(number++);
        const SyncDoubt::Suggestion* suggestion = work.doubts().suggestionFor(group);
        if (suggestion == nullptr) continue;
        const auto& [recording, seconds, isAlone] = *suggestion;
        if (recording) line[choice] = (isAlone ? "only " : "") + recordings[*recording];
        if (!recording || seconds != 0)
            line[offsetFrames] = reviewFrames(std::round(seconds * rates.of(group.video)));
        ++count;
    }
    return count;
}

bool isMatchingInDoubt(const SyncDoubts& doubts, const UUID& groupID) {
    const auto own = doubts.byGroup.find(groupID);
    return own != doubts.byGroup.end() && std::ranges::any_of(own->second, [](const SyncDoubt& doubt) {
               return rowOf(doubt.kind).topic == DoubtTopic::matching;
           });
}

/// Names the recording of each clip that would be in doubt if nothing had been listened to: a program that
/// applies the table without listening then has no doubt about it. Returns the number of lines.
std::size_t fillInSettledByEar(std::vector<ReviewLine>& lines, const WorkSnapshot& work) {
    if (!work.wasListenedTo()) return 0;
    const SyncDoubts unheard = work.doubtsByTimecode();
    std::size_t count = 0, number = 0;
    for (const SyncGroup& group : work.groups()) {
        ReviewLine& line = lines.at(number++);
        if (!isChosen(group) || group.isLocked || !isMatchingInDoubt(unheard, group.id) ||
            isMatchingInDoubt(work.doubts(), group.id))
            continue;
        line[choice] = work.fileNames().of(*group.primaryAudio());
        ++count;
    }
    return count;
}

} // namespace

std::vector<ReviewLine> reviewLines(const WorkSnapshot& work, const std::stop_token& stop) {
    const DisplayNames& displayNames = work.displayNames();
    const FileNames& files = work.fileNames();
    UnmatchedReasons reasons = work.unmatchedReasons();
    const SyncDoubts& doubts = work.doubts();
    const ClipRates rates = ratesOf(work);
    std::vector<ReviewLine> lines;
    for (const SyncGroup& group : work.groups()) {
        platform::throwIfStopped(stop);
        ReviewLine line{.number = lines.size() + 2};
        line[clip] = displayNames.at(group.id);
        line[cameraFile] = files.of(group.video);
        line[sound] = numberedRecordings(recordingTexts(group, files));
        line[status] = std::string(group.matchStatus.name());
        line[doubt] = doubtText(group, doubts, reasons);
        fillDecisions(line, group, rates);
        lines.push_back(std::move(line));
    }
    return lines;
}

std::size_t fillInWhatWasHeard(std::vector<ReviewLine>& lines, const WorkSnapshot& work) {
    return fillInSuggestions(lines, work) + fillInSettledByEar(lines, work);
}

std::vector<ReviewDecision> suggestedDecisions(const WorkSnapshot& work, const std::vector<UUID>& groupIDs,
                                               const std::stop_token& stop) {
    std::vector<ReviewLine> lines = reviewLines(work, stop), suggested;
    if (fillInSuggestions(lines, work) == 0) return {};
    const std::unordered_set<UUID> wanted(groupIDs.begin(), groupIDs.end());
    for (std::size_t i = 0; i < lines.size(); ++i)
        if (const SyncGroup& group = work.groups()[i];
            wanted.contains(group.id) && work.doubts(stop).suggestionFor(group) != nullptr)
            suggested.push_back(std::move(lines[i]));
    return readDecisions(work, suggested, stop).decisions;
}

ReviewReading readDecisions(const WorkSnapshot& work, const std::vector<ReviewLine>& lines,
                            const std::stop_token& stop) {
    Reading reading(work);
    for (const ReviewLine& line : lines) {
        platform::throwIfStopped(stop);
        reading.read(line);
    }
    reading.reportOpenDoubts();
    reading.reportClipsWithoutLine();
    return std::move(reading.result);
}

void carryOut(ImportController& controller, const UndoStep& step,
              const std::vector<ReviewDecision>& decisions) {
    if (!decisions.empty())
        controller.withUndo(step, [&] {
            for (const ReviewDecision& decision : decisions) chooseRecordings(controller, decision);
            removeBesideChosen(controller, decisions);
            for (const ReviewDecision& decision : decisions) carryOutTheRest(controller, decision);
        });
}

} // namespace orvane
