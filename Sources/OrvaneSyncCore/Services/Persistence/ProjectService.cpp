#include "OrvaneSyncCore/Services/Persistence/ProjectService.h"

#include "Platform/Files.h"
#include "Platform/JSONParts.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace orvane {

namespace files = platform::files;

ProjectError ProjectError::unsupportedVersion(std::int64_t version) {
    return {Kind::unsupportedVersion,
            "Project version " + std::to_string(version) +
                " is not supported (current: " + std::to_string(OrvaneSyncProject::currentVersion) + ")"};
}

ProjectError ProjectError::invalidFile(std::string_view reason) {
    return {Kind::invalidFile, "File is not a valid .orvanesync project: " + std::string(reason)};
}

OrvaneSyncProject ProjectService::snapshot(const std::optional<FileURL>& videoFolder,
                                           const std::optional<FileURL>& audioFolder,
                                           const std::optional<FileURL>& aleFile, const SyncGroupList& groups,
                                           Date savedAt, ScanScope scope) const {
    OrvaneSyncProject project;
    project.savedAt = savedAt;
    project.videoFolderPath = videoFolder;
    project.audioFolderPath = audioFolder;
    project.scanScope = std::move(scope);
    project.aleFilePath = aleFile;
    project.groups.reserve(groups.size());
    for (const SyncGroup& group : groups) project.groups.emplace_back(group);
    return project;
}

std::string ProjectService::encoded(const OrvaneSyncProject& project) {
    return toJSON(project).dump(JSON::Layout::pretty) + "\n";
}

OrvaneSyncProject ProjectService::decoded(std::string_view text, const std::stop_token& stop) {
    try {
        const auto members = platform::memberParts(text, stop);
        if (!members) throw ProjectError::invalidFile("expected an object");
        // The version is checked first: a file of another version may have other keys, and its number
        // explains more.
        const auto version =
            std::ranges::find(*members, "version", &platform::JSONMemberParts::value_type::first);
        const auto number = version != members->end() ? JSON::parse(version->second).integer() : std::nullopt;
        if (number && *number != OrvaneSyncProject::currentVersion)
            throw ProjectError::unsupportedVersion(*number);
        return projectFromParts(*members, stop);
    } catch (const platform::JSONError& error) {
        throw ProjectError::invalidFile(error.what());
    } catch (const DecodingError& error) {
        throw ProjectError::invalidFile(error.what());
    }
}

void ProjectService::save(const OrvaneSyncProject& project, const FileURL& url,
                          const OutputGuard& guard) const {
    const std::string text = encoded(project);
    // A number without a JSON form would give a file that cannot be opened.
    decoded(text);
    guard.write(url.path, text);
}

OrvaneSyncProject ProjectService::load(const FileURL& url, const std::stop_token& stop) const {
    constexpr std::uint64_t mostBytes = std::uint64_t{1} << 30U;
    return decoded(files::readText(url.path, mostBytes, stop), stop);
}

void ProjectService::applyEdits(const OrvaneSyncProject& project, SyncGroupList& groups) const {
    std::unordered_map<FileURL, const PersistedGroup*> entries;
    for (const PersistedGroup& entry : project.groups) entries[entry.videoPath] = &entry;
    SyncGroupList edited;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const auto found = entries.find(groups[i].video.url);
        if (found == entries.end()) {
            edited.append(groups.element(i));
            continue;
        }
        SyncGroup group = groups[i];
        found->second->applyTo(group);
        edited.append(std::move(group));
    }
    groups = std::move(edited);
}

} // namespace orvane
