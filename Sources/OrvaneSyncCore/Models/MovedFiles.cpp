#include "OrvaneSyncCore/Models/MovedFiles.h"

#include <unordered_set>

namespace orvane {

MovedFiles::MovedFiles(const Files& before, const Files& now) {
    const auto add = [this](const Files& files, const Files& others, Files Pair::*side) {
        std::unordered_set<std::string_view> paths;
        for (const MediaAsset* file : others) paths.insert(file->url.path);
        for (const MediaAsset* file : files)
            if (file->fileSizeBytes && !paths.contains(file->url.path))
                (pairs_[traits(*file)].*side).push_back(file);
    };
    add(before, now, &Pair::before);
    add(now, before, &Pair::now);
}

MovedFiles::Traits MovedFiles::traits(const MediaAsset& file) {
    return {file.filename, file.fileSizeBytes, file.durationSeconds, file.startTimecodeString};
}

const MovedFiles::Pair* MovedFiles::pair(const MediaAsset& file) const {
    const auto found = pairs_.find(traits(file));
    const bool isMoved =
        found != pairs_.end() && found->second.before.size() == 1 && found->second.now.size() == 1;
    return isMoved ? &found->second : nullptr;
}

const MediaAsset* MovedFiles::before(const MediaAsset& now) const {
    const Pair* moved = pair(now);
    return moved != nullptr && moved->now.front()->url == now.url ? moved->before.front() : nullptr;
}

const MediaAsset* MovedFiles::now(const MediaAsset& before) const {
    const Pair* moved = pair(before);
    return moved != nullptr && moved->before.front()->url == before.url ? moved->now.front() : nullptr;
}

} // namespace orvane
