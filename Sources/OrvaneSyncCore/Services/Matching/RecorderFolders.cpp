#include "OrvaneSyncCore/Services/Matching/RecorderFolders.h"

#include "OrvaneSyncCore/Services/Matching/RecorderMark.h"

#include <cstddef>
#include <map>

namespace orvane {

namespace {

constexpr std::size_t fewestTakes =
    3; // as many as the error of a clock needs; a folder with fewer shows none

std::string_view above(std::string_view path) {
    const auto slash = path.rfind('/');
    return path.substr(0, slash == std::string_view::npos ? 0 : slash);
}
std::string_view folderOf(const MediaAsset& recording) { return above(recording.url.path); }

/// Equal for the files of one take. A file without a start counts as a take.
std::string takeOf(const MediaAsset& recording) {
    if (!recording.bextTimeReference && !recording.startTimecodeString) return recording.url.path;
    return std::to_string(recording.bextTimeReference.value_or(0)) + " " +
           recording.startTimecodeString.value_or("");
}

std::vector<const MediaAsset*> matchedRecordings(const SyncGroupList& clips) {
    std::vector<const MediaAsset*> recordings;
    for (const SyncGroup& clip : clips)
        for (const AudioMatch& match : clip.audioMatches) recordings.push_back(&*match.audio);
    return recordings;
}

std::vector<const MediaAsset*> pointersTo(const std::vector<MediaAsset>& recordings) {
    std::vector<const MediaAsset*> pointers;
    pointers.reserve(recordings.size());
    for (const MediaAsset& recording : recordings) pointers.push_back(&recording);
    return pointers;
}

} // namespace

RecorderFolders::RecorderFolders(const std::vector<MediaAsset>& recordings)
    : RecorderFolders(pointersTo(recordings)) {}

RecorderFolders::RecorderFolders(const SyncGroupList& clips) : RecorderFolders(matchedRecordings(clips)) {}

RecorderFolders::RecorderFolders(const std::vector<const MediaAsset*>& recordings) {
    struct Folder {
        std::set<std::string> takes; ///< as many as `fewestTakes`
        std::set<std::string> originators;
    };
    std::map<std::string_view, Folder> folders;
    for (const MediaAsset* recording : recordings) {
        Folder& folder = folders[folderOf(*recording)];
        if (folder.takes.size() == fewestTakes) continue;
        folder.takes.insert(takeOf(*recording));
        folder.originators.insert(RecorderMark::of(*recording, RecorderMark::By::originator).value);
    }
    struct Above {
        std::vector<std::string_view> folders;
        std::set<std::string> originators;
    };
    std::map<std::string_view, Above> small;
    for (const auto& [path, folder] : folders) {
        if (folder.takes.size() >= fewestTakes || above(path).empty()) continue;
        Above& together = small[above(path)];
        together.folders.push_back(path);
        together.originators.insert(folder.originators.begin(), folder.originators.end());
    }
    for (const auto& [path, together] : small) {
        // Folders of several recorders are no folders of takes.
        if (together.folders.size() < 2 || together.originators.size() > 1) continue;
        ofTakes_.insert(together.folders.begin(), together.folders.end());
        joined_.emplace(path);
    }
}

std::string_view RecorderFolders::of(const MediaAsset& recording) const {
    const std::string_view folder = folderOf(recording);
    return ofTakes_.contains(folder) ? above(folder) : folder;
}

} // namespace orvane
