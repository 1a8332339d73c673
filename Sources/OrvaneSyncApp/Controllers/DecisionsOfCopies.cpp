#include "OrvaneSyncApp/Controllers/DecisionsOfCopies.h"

#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace orvane {

namespace {

using UsedFiles = std::unordered_map<std::string_view, std::string_view>; // by path of the copy

UsedFiles usedFiles(const std::vector<CameraCopy>& copies) {
    UsedFiles used;
    for (const CameraCopy& copy : copies) used.emplace(copy.url.path, copy.originalURL.path);
    return used;
}

std::string_view usedFileOf(const FileURL& video, const UsedFiles& used) {
    const auto found = used.find(video.path);
    return found == used.end() ? std::string_view(video.path) : found->second;
}

bool isSettledByHand(const PersistedGroup& entry) {
    return entry.matchStatusRaw == MatchStatus::manual().name();
}

bool isDecided(const PersistedGroup& entry) {
    return holdsDecisions(entry.decisions) || isSettledByHand(entry);
}

/// A project does not say whether the editor or an analysis chose the tracks.
bool hasTracks(const PersistedGroup& entry) { return !entry.decisions.manualActiveTracks.empty(); }

bool haveSameDecisions(const PersistedGroup& a, const PersistedGroup& b) {
    return haveSameContents(a.decisions, b.decisions) && isSettledByHand(a) == isSettledByHand(b);
}

using Rank = std::array<bool, 3>; ///< greater for decisions that come before others

} // namespace

std::unordered_map<std::string_view, const SyncGroup*>
clipsByUsedFile(const SyncGroupList& clips, const std::vector<CameraCopy>& copies) {
    const UsedFiles used = usedFiles(copies);
    std::unordered_map<std::string_view, const SyncGroup*> found;
    for (const SyncGroup& clip : clips) {
        const std::string_view path = usedFileOf(clip.video.url, used);
        const auto rankOf = [&](const SyncGroup& one) {
            return Rank{one.isLocked, holdsDecisions(one), one.video.url.path == path};
        };
        const auto [place, isNew] = found.try_emplace(path, &clip);
        if (!isNew && rankOf(*place->second) < rankOf(clip)) place->second = &clip;
    }
    return found;
}

std::vector<PersistedGroup> entriesOfUsedFiles(std::vector<PersistedGroup> entries,
                                               const std::vector<CameraCopy>& copies,
                                               std::vector<FileURL>& notApplied) {
    const UsedFiles used = usedFiles(copies);
    std::unordered_map<std::string_view, std::size_t> kept; // by path of the file that is used
    const auto rankOf = [&](const PersistedGroup& one) {
        return Rank{isDecided(one), hasTracks(one), !used.contains(one.videoPath.path)};
    };
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const auto [place, isNew] = kept.try_emplace(usedFileOf(entries[i].videoPath, used), i);
        // Of two entries for one file the last one counts.
        if (!isNew && rankOf(entries[place->second]) <= rankOf(entries[i])) place->second = i;
    }
    std::vector<PersistedGroup> result;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const PersistedGroup& entry = entries[i];
        const std::string_view path = usedFileOf(entry.videoPath, used);
        const PersistedGroup& first = entries[kept.at(path)];
        if (&first == &entry) {
            result.push_back(entry);
            result.back().videoPath = FileURL{std::string(path)};
        } else if (entry.videoPath != first.videoPath && (isDecided(entry) || hasTracks(entry)) &&
                   !haveSameDecisions(entry, first)) {
            notApplied.push_back(entry.videoPath);
        }
    }
    return result;
}

} // namespace orvane
