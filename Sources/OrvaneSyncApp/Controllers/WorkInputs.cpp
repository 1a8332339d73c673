#include "OrvaneSyncApp/Controllers/WorkInputs.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>

namespace orvane {

std::function<RunInputs()> inputsOfScan(const OpenWork& work, const ReportController& reports,
                                        const ScanController& scan) {
    work.notices.assertOnMainThread();
    return [folders = work.folders(), report = reports.aleFileURL(), found = scan.discoveryResult(),
            groups = work.syncGroups(), wildTracks = work.sharedWildTracks()] {
        RunInputs inputs;
        for (const FileURL& folder : folders) inputs.addFolder(folder.path);
        if (report) inputs.addFile(report->path, "the report");
        // Media has standard paths already.
        std::unordered_set<std::string_view> known;
        const auto add = [&](const FileURL& media) {
            if (known.insert(media.path).second) inputs.files.push_back({media.path, "the media file"});
        };
        if (found)
            for (const auto* urls : {&found->videoURLs, &found->audioURLs}) std::ranges::for_each(*urls, add);
        for (const SyncGroup& group : groups) {
            add(group.video.url);
            for (const AudioMatch& match : group.audioMatches) add(match.audio->url);
        }
        for (const WildTrack& track : *wildTracks) add(track.audio.url);
        return inputs;
    };
}

std::function<RunInputs()> inputsOf(const ImportController& controller) {
    return [ofScan = inputsOfScan(controller.work(), controller.reports(), controller.scan()),
            project = controller.project().currentURL()] {
        RunInputs inputs = ofScan();
        if (project) inputs.addFile(project->path, "the project");
        return inputs;
    };
}

} // namespace orvane
