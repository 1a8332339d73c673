#include "OrvaneSyncCore/Services/Persistence/ProjectService.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace orvane;

void demand(bool holds) {
    if (!holds) std::abort();
}

std::optional<OrvaneSyncProject> opened(std::string_view text) {
    try {
        return ProjectService::decoded(text);
    } catch (const ProjectError&) {
        return std::nullopt; // refused
    }
}

/// A new scan that found every other clip of the project, and one that the project does not know.
SyncGroupList scanned(const OrvaneSyncProject& project) {
    std::vector<SyncGroup> groups;
    for (std::size_t i = 0; i < project.groups.size(); i += 2)
        groups.emplace_back(MediaAsset(project.groups[i].videoPath, AssetKind::video),
                            std::vector<AudioMatch>{}, MatchStatus::mos());
    groups.emplace_back(MediaAsset(FileURL{"/of no project.mov"}, AssetKind::video),
                        std::vector<AudioMatch>{}, MatchStatus::mos());
    return SyncGroupList(std::move(groups));
}

} // namespace

// A project file of any bytes: it is refused, or its decisions are the same after they were applied to clips,
// saved and opened again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto project = opened({reinterpret_cast<const char*>(data), size});
    if (!project) return 0;
    demand(project->version == OrvaneSyncProject::currentVersion);
    const std::string written = ProjectService::encoded(*project);
    demand(ProjectService::encoded(ProjectService::decoded(written)) == written);

    const ProjectService service;
    const SyncGroupList untouched = scanned(*project);
    SyncGroupList edited = untouched;
    service.applyEdits(*project, edited);
    const auto saved = [&](const SyncGroupList& groups) {
        return service.snapshot(project->videoFolderPath, project->audioFolderPath, project->aleFilePath,
                                groups, project->savedAt);
    };
    const OrvaneSyncProject again = ProjectService::decoded(ProjectService::encoded(saved(edited)));
    demand(again.groups.size() == edited.size());
    SyncGroupList reopened = untouched;
    service.applyEdits(again, reopened);
    demand(ProjectService::encoded(saved(reopened)) == ProjectService::encoded(again));
    return 0;
}
