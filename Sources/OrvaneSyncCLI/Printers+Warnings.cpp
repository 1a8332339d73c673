#include "OrvaneSyncCLI/Printers.h"

#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Utilities/FilenameUtils.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Platform/Text.h"
#include "Timecode/ExactRate.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <unordered_map>
#include <unordered_set>

namespace orvane::cli {

namespace {

using Names = std::vector<std::string>;

/// A card full of files of one kind is one line, not hundreds.
std::string firstAndMore(const Names& names) {
    const auto more = names.size() - 1;
    return "'" + names.front() + "'" + (more > 0 ? " and " + std::to_string(more) + " more" : "");
}

/// The rate at which frames are counted where the table of timecodes does not know that of the file.
std::optional<double> otherRateOfTimecode(const MediaAsset& video) {
    constexpr double sameRate = 0.01; // of the rate
    if (!video.startTimecodeString || video.timecodeFrameRate || !video.projectFrameRate) return std::nullopt;
    const double stated = *video.projectFrameRate;
    const double read =
        timecodeRate::frameRateForRealTimeCalculation(TimecodeUtils::frameRate(exactRateValue(stated)));
    return std::abs(stated - read) > sameRate * stated ? std::optional(read) : std::nullopt;
}

/// Slower is a time lapse of hours, faster no camera of a shoot: more often a slip of a report.
bool isUsualSensorRate(double framesPerSecond) {
    constexpr double slowest = 0.1, fastest = 10'000;
    return framesPerSecond >= slowest && framesPerSecond <= fastest;
}

void addProxies(const ImportController& controller, std::vector<std::string>& warnings) {
    if (!controller.scan().scanResult() || controller.scan().scanResult()->proxies.empty()) return;
    Names proxies;
    for (const ProxyFile& proxy : controller.scan().scanResult()->proxies) proxies.push_back(proxy.url.path);
    warnings.push_back("left out as proxies of files that are here: " + firstAndMore(proxies));
}

/// The file by which the clip got its row; null where the row was found by a reel.
const MediaAsset* fileOfRow(const SyncGroup& group) {
    std::unordered_set<std::string> named; // as `normalizedName` has it
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

/// A report names files without their folders: its row goes to each file of the name.
void addFilesThatAReportMixesUp(const ImportController& controller, std::vector<std::string>& warnings) {
    if (!controller.reports().aleFile()) return;
    std::unordered_map<std::string, const MediaAsset*> firstOfName;
    std::unordered_set<std::string> said;
    Names names;
    for (const SyncGroup& group : controller.work().syncGroups()) {
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

} // namespace

std::vector<std::string> scanWarnings(const ImportController& controller) {
    std::vector<std::string> warnings;
    if (const auto& found = controller.scan().discoveryResult()) {
        for (const FileURL& folder : found->unreadableFolders)
            warnings.push_back("can't read the folder '" + folder.path + "'; its files are missing here");
        Names links;
        for (const FileURL& link : found->brokenLinks) links.push_back(link.path);
        if (!links.empty())
            warnings.push_back("links that lead nowhere: " + firstAndMore(links) +
                               "; what they lead to is missing here");
    }
    addProxies(controller, warnings);
    addFilesThatAReportMixesUp(controller, warnings);
    if (const auto& scan = controller.scan().scanResult(); scan && !scan->unreadFiles.empty()) {
        Names files;
        for (const FileURL& file : scan->unreadFiles) files.push_back(file.path);
        warnings.push_back("can't read all of " + firstAndMore(files) +
                           "; what is known of such a file may not be all, and the next scan reads it again");
    }
    std::map<std::pair<double, double>, Names> otherRates; // by the stated rate and the one that is taken
    std::map<double, Names> sensorRates;
    for (const SyncGroup& group : controller.work().syncGroups()) {
        const MediaAsset& video = group.video;
        if (const auto read = otherRateOfTimecode(video))
            otherRates[{*video.projectFrameRate, *read}].push_back(controller.work().fileNames().of(video));
        if (video.sensorFrameRate && !isUsualSensorRate(*video.sensorFrameRate))
            sensorRates[*video.sensorFrameRate].push_back(controller.work().fileNames().of(video));
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

} // namespace orvane::cli
