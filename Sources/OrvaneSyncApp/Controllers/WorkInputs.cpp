#include "OrvaneSyncApp/Controllers/WorkInputs.h"

#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace orvane {

namespace {

/// Collects each file once. Media files already have standard paths.
class MediaInputs {
  public:
    void add(const FileURL& media) {
        if (known_.insert(media.path).second) inputs_.files.push_back({media.path, "the media file"});
    }
    void add(const SyncGroupList& groups) {
        for (const SyncGroup& group : groups) {
            add(group.video.url);
            for (const AudioMatch& match : group.audioMatches) add(match.audio->url);
        }
    }
    RunInputs in(const std::vector<FileURL>& folders) && {
        for (const FileURL& folder : folders) inputs_.addFolder(folder.path);
        return std::move(inputs_);
    }

  private:
    RunInputs inputs_;
    std::unordered_set<std::string> known_;
};

} // namespace

std::function<RunInputs()> inputsOfClips(const OpenWork& work) {
    work.notices.assertOnMainThread();
    return [folders = work.folders(), groups = work.syncGroups()] {
        MediaInputs media;
        media.add(groups);
        return std::move(media).in(folders);
    };
}

std::function<RunInputs()> inputsOfScan(const OpenWork& work, const ReportController& reports,
                                        const ScanController& scan) {
    work.notices.assertOnMainThread();
    return [folders = work.folders(), report = reports.aleFileURL(), found = scan.discoveryResult(),
            groups = work.syncGroups(), wildTracks = work.sharedWildTracks()] {
        MediaInputs media;
        if (found)
            for (const auto* urls : {&found->videoURLs, &found->audioURLs})
                for (const FileURL& url : *urls) media.add(url);
        media.add(groups);
        for (const WildTrack& track : *wildTracks) media.add(track.audio.url);
        RunInputs inputs = std::move(media).in(folders);
        if (report) inputs.addFile(report->path, "the report");
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
