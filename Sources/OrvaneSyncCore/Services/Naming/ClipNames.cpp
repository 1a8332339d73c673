#include "OrvaneSyncCore/Services/Naming/ClipNames.h"

#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Services/Naming/SyncClustering.h"

#include <algorithm>
#include <limits>
#include <unordered_map>
#include <utility>

namespace orvane::ClipNames {

namespace {

/// Whether two files with the same name are in different folders.
bool shareFileName(const std::vector<const SyncGroup*>& clips, const std::vector<std::string>& folders) {
    std::unordered_map<std::string, const std::string*> folderByName;
    for (std::size_t i = 0; i < clips.size(); ++i) {
        const auto [known, isNew] = folderByName.try_emplace(clips[i]->video.normalizedName(), &folders[i]);
        if (!isNew && *known->second != folders[i]) return true;
    }
    return false;
}

/// Whether clips of different folders were recorded at the same moment, which one camera cannot do.
bool overlap(const std::vector<const SyncGroup*>& clips, const std::vector<std::string>& folders) {
    struct Rolling {
        Date day;
        SyncEngine::TCRange range;
        const std::string* folder;
    };
    std::vector<Rolling> all;
    for (std::size_t i = 0; i < clips.size(); ++i)
        if (const auto range = SyncEngine::tcRange(clips[i]->video))
            all.push_back({clips[i]->video.shootDay().value_or(Date()), *range, &folders[i]});
    std::ranges::sort(all, [](const Rolling& a, const Rolling& b) {
        return std::pair(a.day, a.range.startSeconds) < std::pair(b.day, b.range.startSeconds);
    });
    // Comparing with the clip that ends last is enough: if an earlier clip overlaps the current one, that
    // clip does too.
    const Rolling* last = nullptr;
    for (const Rolling& own : all) {
        if (last != nullptr && last->day != own.day) last = nullptr;
        if (last != nullptr && *last->folder != *own.folder &&
            last->range.endSeconds > own.range.startSeconds)
            return true;
        if (last == nullptr || own.range.endSeconds > last->range.endSeconds) last = &own;
    }
    return false;
}

} // namespace

std::vector<std::string> of(const SyncGroupList& groups, GroupNaming::Source source,
                            const std::optional<std::string>& customPattern, std::string_view separator) {
    const SyncClustering::Index clusters(groups, source, customPattern);
    const auto name = [&](std::size_t place, std::string_view folder) {
        const auto siblings =
            std::min<std::size_t>(clusters.siblingCount(place), std::numeric_limits<int>::max());
        return GroupNaming::fcpClipName(groups[place], source, customPattern, static_cast<int>(siblings),
                                        separator, false, folder);
    };
    std::vector<std::string> names;
    names.reserve(groups.size());
    for (std::size_t i = 0; i < groups.size(); ++i) names.push_back(name(i, ""));

    std::unordered_map<std::string_view, std::vector<std::size_t>> byName;
    byName.reserve(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) byName[names[i]].push_back(i);
    std::vector<std::pair<std::size_t, std::string>> distinguished;
    for (const auto& [text, places] : byName) {
        if (places.size() < 2) continue;
        std::vector<const SyncGroup*> clips;
        clips.reserve(places.size());
        for (const std::size_t place : places) clips.push_back(&groups[place]);
        const std::vector<std::string> folders = cameraFolders(clips);
        for (std::size_t i = 0; i < places.size(); ++i)
            if (!folders[i].empty()) distinguished.emplace_back(places[i], name(places[i], folders[i]));
    }
    for (auto& [place, text] : distinguished) names[place] = std::move(text);
    return names;
}

std::vector<std::string> inDocument(const SyncGroupList& groups, GroupNaming::Source source,
                                    const std::optional<std::string>& customPattern,
                                    std::string_view separator) {
    const auto isTaken = [](const SyncGroup& group) { return !group.isExcludedFromExport; };
    std::vector<std::string> names = of(groups, source, customPattern, separator);
    const SyncGroupList taken = groups.filtered(isTaken);
    if (taken.size() == groups.size()) return names;
    std::vector<std::string> own = of(taken, source, customPattern, separator);
    for (std::size_t i = 0, next = 0; i < groups.size(); ++i)
        if (isTaken(groups[i])) names[i] = std::move(own[next++]);
    return names;
}

std::vector<std::string> cameraFolders(const std::vector<const SyncGroup*>& clips) {
    std::vector<const FileURL*> files;
    files.reserve(clips.size());
    for (const SyncGroup* clip : clips) files.push_back(&clip->video.url);
    std::vector<std::string> folders = distinguishingFolders(files);
    if (shareFileName(clips, folders) || overlap(clips, folders)) return folders;
    return std::vector<std::string>(clips.size());
}

} // namespace orvane::ClipNames
