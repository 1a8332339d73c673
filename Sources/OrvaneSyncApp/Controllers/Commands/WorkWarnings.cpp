#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Services/Naming/ResultsList.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/FilenameUtils.h"
#include "OrvaneSyncCore/Utilities/PathGlob.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Platform/Files.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"
#include "Timecode/ExactRate.h"
#include "Timecode/Timecode.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <map>
#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace orvane {

namespace {

using Names = std::vector<std::string>;

/// The rate at which the file counts frames, if the table of timecode rates does not have it.
std::optional<double> otherRateOfTimecode(const MediaAsset& video) {
    constexpr double sameRate = 0.01; // of the rate
    if (!video.startTimecodeString || video.timecodeFrameRate || !video.projectFrameRate) return std::nullopt;
    const double stated = *video.projectFrameRate;
    const double read =
        timecodeRate::frameRateForRealTimeCalculation(TimecodeUtils::frameRate(exactRateValue(stated)));
    return std::abs(stated - read) > sameRate * stated ? std::optional(read) : std::nullopt;
}

/// A lower rate is used only for time lapses over hours, and no camera of a shoot reaches a higher one: such
/// a rate is more often an error in a report.
bool isUsualSensorRate(double framesPerSecond) {
    constexpr double slowest = 0.1, fastest = 10'000;
    return framesPerSecond >= slowest && framesPerSecond <= fastest;
}

/// The end of an exclusion that also names the folder of the scan, and would match without it.
std::optional<std::string> exclusionBelow(const std::string& glob, const WorkSnapshot& work) {
    const auto isFound = [&](const std::string& folder, const std::string& end) {
        const PathGlob below(end);
        const auto matches = [&](const FileURL& file) {
            return file.path.starts_with(folder) && below.matchesOrHolds(file.path.substr(folder.size()));
        };
        return std::ranges::any_of(work.discoveryResult->videoURLs, matches) ||
               std::ranges::any_of(work.discoveryResult->audioURLs, matches);
    };
    for (const FileURL& one : work.folders) {
        const std::string folder = one.path + (one.path.ends_with('/') ? "" : "/");
        for (std::size_t slash = glob.find('/'); slash != std::string::npos;
             slash = glob.find('/', slash + 1)) {
            const std::string begin = glob.substr(0, slash + 1);
            std::string end = glob.substr(slash + 1);
            if (folder.ends_with((begin.starts_with('/') ? "" : "/") + begin) && isFound(folder, end))
                return end;
        }
    }
    return std::nullopt;
}

void addUnusedExclusions(const WorkSnapshot& work, std::vector<std::string>& warnings) {
    for (const std::string& glob : work.discoveryResult->unusedExclusions) {
        const auto end = exclusionBelow(glob, work);
        warnings.push_back(
            "the exclusion '" + glob + "' fits nothing in the folders; " +
            (end ? "it is compared with names below them: try '" + *end + "'" : "check how it is written"));
    }
}

void addProxies(const WorkSnapshot& work, std::vector<std::string>& warnings) {
    if (!work.scanResult() || work.scanResult()->proxies.empty()) return;
    Names proxies;
    for (const ProxyFile& proxy : work.scanResult()->proxies) proxies.push_back(proxy.url.path);
    warnings.push_back("left out as proxies of files that are here: " + firstAndMore(proxies));
}

void addCopies(const WorkSnapshot& work, std::vector<std::string>& warnings) {
    if (!work.scanResult()) return;
    Names all, cut;
    for (const CameraCopy& copy : work.scanResult()->copies) {
        all.push_back(copy.url.path);
        if (copy.endsEarly) cut.push_back(copy.url.path);
    }
    if (all.empty()) return;
    const CameraCopy& first = work.scanResult()->copies.front();
    warnings.push_back("left out as copies of camera files that are here: " + firstAndMore(all) +
                       "; the first one is a copy of '" + first.originalURL.path + "'");
    if (!cut.empty())
        warnings.push_back("these copies end early, and the other ones are used: " + firstAndMore(cut) +
                           "; copy them from the card again if they are kept");
}

/// Without this, a card with only unknown kinds of files would look like an empty card.
void addUnreadKinds(const WorkSnapshot& work, std::vector<std::string>& warnings) {
    if (!work.discoveryResult) return;
    std::map<std::string, int> counts; // by kind
    Names names;
    for (const FileURL& file : work.discoveryResult->unreadMedia) {
        ++counts[platform::text::uppercased(file.lowercasedExtension())];
        names.push_back(file.path);
    }
    if (names.empty()) return;
    Names kinds;
    for (const auto& [kind, count] : counts) kinds.push_back(std::to_string(count) + " " + kind);
    warnings.push_back("files of kinds that can't be read: " + platform::text::joined(kinds, ", ") + "; " +
                       firstAndMore(names) + "; convert them to QuickTime, MP4, MXF, WAVE or AIFF");
}

/// The file by which the clip got its row; null if the row was matched by a reel.
const MediaAsset* fileOfRow(const SyncGroup& group) {
    std::unordered_set<std::string> named; // by `normalizedName`
    for (const auto& [column, cell] : *group.aleMetadata)
        named.insert(platform::text::lowercased(
            FilenameUtils::withoutExtension(cell.substr(cell.find_last_of("/\\") + 1))));
    if (named.contains(group.video.normalizedName())) return &group.video;
    for (const AudioMatch& match : group.audioMatches) {
        const std::string name = match.audio->normalizedName();
        if (named.contains(name) || named.contains(name.substr(0, name.rfind('_')) + "_x"))
            return &*match.audio;
    }
    return nullptr;
}

/// A report names files without folders, so each file of that name gets the row.
void addFilesThatAReportMixesUp(const WorkSnapshot& work, std::vector<std::string>& warnings) {
    if (!work.aleFile) return;
    std::unordered_map<std::string, const MediaAsset*> firstOfName;
    std::unordered_set<std::string> said;
    Names names;
    for (const SyncGroup& group : work.groups()) {
        const MediaAsset* file = group.hasALEMetadata() ? fileOfRow(group) : nullptr;
        if (!file) continue;
        std::string name = file->normalizedName();
        const auto [first, isNew] = firstOfName.try_emplace(name, file);
        if (!isNew && first->second->url != file->url && said.insert(std::move(name)).second)
            names.push_back(file->filename);
    }
    if (!names.empty())
        warnings.push_back("the report can't tell files of one name in different folders apart, and each has "
                           "the same row: " +
                           firstAndMore(names));
}

/// The values of the clip's row that contradict the clip; empty if there are none.
std::string contradictionOf(const SyncGroup& group) {
    constexpr double sameStartSeconds = 1;
    const auto cell = [&](const char* name) {
        const auto found = group.aleMetadata->find(name);
        return found == group.aleMetadata->end() ? std::string()
                                                 : std::string(platform::text::trimmed(found->second));
    };
    MediaAsset stated = group.video;
    stated.startTimecodeString = cell("Start");
    const auto start = SyncEngine::tcRange(group.video), other = SyncEngine::tcRange(stated);
    if (start && other && Timecode::fromString(*stated.startTimecodeString, labelRate(group.video)) &&
        std::abs(other->startSeconds - start->startSeconds) > sameStartSeconds)
        return "starts at " + *stated.startTimecodeString + ", and the clip at " +
               *group.video.startTimecodeString;
    const auto date = dateFromISO8601(cell("Shoot Date") + "T00:00:00Z"), day = group.video.shootDay();
    constexpr long longestNight = 1; // a report has the day on which the shooting began
    if (date && day &&
        std::abs(std::chrono::floor<std::chrono::days>(*date).time_since_epoch().count() - dayNumber(*day)) >
            longestNight)
        return "is of " + cell("Shoot Date") + ", and the clip is not";
    return {};
}

/// Cameras use the same names again on each card, so a report may match clips of another day.
void addReportOfAnotherDay(const WorkSnapshot& work, std::vector<std::string>& warnings) {
    if (!work.aleFile) return;
    std::size_t rows = 0, wrong = 0;
    std::string first;
    for (const SyncGroup& group : work.groups()) {
        if (!group.hasALEMetadata() || fileOfRow(group) != &group.video) continue;
        ++rows;
        const std::string contradiction = contradictionOf(group);
        if (contradiction.empty()) continue;
        if (wrong++ == 0) first = "the row of '" + work.fileNames().of(group.video) + "' " + contradiction;
    }
    if (wrong == 0 || wrong * 2 < rows) return; // a few wrong cells are typing errors
    warnings.push_back("the report may be of another day: " + first +
                       (wrong > 1 ? "; likewise " + counted(wrong - 1, "more clip", "more clips") : "") +
                       "; load the report of these clips");
}

/// Parts of an opened project that apply to no clip.
void addUnusedOfProject(const WorkSnapshot& work, std::vector<std::string>& warnings) {
    Names clips;
    for (const FileURL& video : work.clipsNotFound) clips.push_back(video.path);
    if (!clips.empty())
        warnings.push_back(counted(clips.size(), "clip", "clips") +
                           " of the project can't be found: " + firstAndMore(clips) +
                           "; the edits are kept for a scan with the files where they were when the "
                           "project was saved");
    clips.clear();
    for (const FileURL& copy : work.copiesNotApplied) clips.push_back(copy.path);
    if (!clips.empty())
        warnings.push_back("the project has other decisions for copies than for the files that are used, and "
                           "these are not applied: " +
                           firstAndMore(clips) + "; check these clips before the project is saved");
    const auto& leftOut = work.tracksLeftOut;
    if (leftOut.empty()) return;
    clips.clear();
    for (const FileURL& video : leftOut) clips.push_back(work.fileNames().of(video));
    warnings.push_back("the project's choice of tracks is left out of " + firstAndMore(clips) +
                       ": it was made for recordings that are not here; bring them back and open the "
                       "project again, or choose the tracks again before it is saved");
}

} // namespace

std::string firstAndMore(const std::vector<std::string>& names) {
    const auto more = names.size() - 1;
    return "'" + names.front() + "'" + (more > 0 ? " and " + std::to_string(more) + " more" : "");
}

std::vector<std::string> scanWarnings(const WorkSnapshot& work) {
    std::vector<std::string> warnings;
    addUnusedOfProject(work, warnings);
    if (const auto& found = work.discoveryResult) {
        for (const FileURL& folder : found->unreadableFolders)
            warnings.push_back("can't read the folder '" + folder.path + "'; its files are missing here");
        Names links;
        for (const FileURL& link : found->brokenLinks) links.push_back(link.path);
        if (!links.empty())
            warnings.push_back("links that lead nowhere: " + firstAndMore(links) +
                               "; what they lead to is missing here");
    }
    if (work.discoveryResult) addUnusedExclusions(work, warnings);
    addUnreadKinds(work, warnings);
    addProxies(work, warnings);
    addCopies(work, warnings);
    addFilesThatAReportMixesUp(work, warnings);
    addReportOfAnotherDay(work, warnings);
    if (const auto& scan = work.scanResult(); scan && !scan->unreadFiles.empty()) {
        Names files;
        for (const FileURL& file : scan->unreadFiles) files.push_back(file.path);
        warnings.push_back("can't read all of " + firstAndMore(files) +
                           "; what is known of such a file may not be all, and the next scan reads it again");
    }
    std::map<std::pair<double, double>, Names> otherRates; // by the stated rate and the rate that is used
    std::map<double, Names> sensorRates;
    for (const SyncGroup& group : work.groups()) {
        const MediaAsset& video = group.video;
        if (const auto read = otherRateOfTimecode(video))
            otherRates[{*video.projectFrameRate, *read}].push_back(work.fileNames().of(video));
        if (video.sensorFrameRate && !isUsualSensorRate(*video.sensorFrameRate))
            sensorRates[*video.sensorFrameRate].push_back(work.fileNames().of(video));
    }
    for (const auto& [rates, names] : otherRates)
        warnings.push_back("the timecode of " + firstAndMore(names) + " counts " +
                           formatted("%.6g", rates.first) + " frames a second and is read as if it counted " +
                           formatted("%.6g", rates.second) + "; their places may be wrong");
    for (const auto& [rate, names] : sensorRates)
        warnings.push_back("a sensor rate of " + formatted("%.6g fps", rate) +
                           " is unusual and stretches the clip; check it: " + firstAndMore(names));
    return warnings;
}

std::optional<std::string> missingMediaWarning(const WorkSnapshot& work, const std::stop_token& stop) {
    Names missing;
    std::unordered_set<std::string_view> seen;
    const auto look = [&](const MediaAsset& asset) {
        if (seen.insert(asset.url.path).second && !platform::files::exists(asset.url.path))
            missing.push_back(asset.url.path);
    };
    for (const SyncGroup& group : work.groups()) {
        if (group.isExcludedFromExport || !group.matchStatus.isSettled()) continue;
        platform::throwIfStopped(stop);
        look(group.video);
        for (const AudioMatch& match : group.audioMatches) look(*match.audio);
    }
    if (missing.empty()) return std::nullopt;
    return counted(missing.size(), "media file", "media files") +
           " of the document can't be found: " + firstAndMore(missing) +
           "; check that the card or drive is connected under the same name";
}

std::vector<std::string> leftOutWarnings(const WorkSnapshot& work) {
    std::vector<std::string> warnings;
    UnmatchedReasons reasons = work.unmatchedReasons();
    for (const SyncGroup& group : filtered(work.groups(), FilterMode::issues))
        warnings.push_back("not in the document: " + work.fileNames().of(group.video) + " (" +
                           reasons.ofClip(group) + ")");
    return warnings;
}

std::vector<std::string> doubtWarnings(const WorkSnapshot& work, Matching matching) {
    std::vector<std::string> warnings;
    std::unordered_set<UUID> clips;
    for (const CardDoubt& doubt : work.doubts().summary(work.groups())) {
        if (matching == Matching::isDone && rowOf(doubt.doubt.kind).topic == DoubtTopic::matching)
            clips.insert(doubt.groupIDs.begin(), doubt.groupIDs.end());
        else
            warnings.push_back(warningOf(doubt.doubt));
    }
    if (!clips.empty())
        warnings.push_back(counted(clips.size(), "clip", "clips") +
                           " may have the wrong sound; 'orvanesync diagnose' of the folders says why, and "
                           "what 'scan' and 'sync' do about it");
    return warnings;
}

void addOwnWarnings(const WorkSnapshot& work, ExportResult& result, Matching matching,
                    const std::stop_token& stop) {
    if (auto missing = missingMediaWarning(work, stop))
        result.warnings.insert(result.warnings.begin(), *std::move(missing));
    for (const auto& warnings :
         {leftOutWarnings(work), doubtWarnings(work, matching), smartAudioWarnings(work)})
        result.warnings.insert(result.warnings.end(), warnings.begin(), warnings.end());
    if (result.syncClipCount + result.multicamCount == 0)
        result.warnings.push_back("the document holds no clip; look at the settings " +
                                  std::string(settings::generateSyncClips.key) + " and " +
                                  std::string(settings::wrapMOSInSyncClip.key));
}

} // namespace orvane
