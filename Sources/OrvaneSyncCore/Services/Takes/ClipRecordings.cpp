#include "OrvaneSyncCore/Services/Takes/ClipRecordings.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace orvane {

namespace {

SyncGroup withOnly(const SyncGroup& group, const std::vector<std::size_t>& matches) {
    SyncGroup part(group.id, group.video, {}, group.matchStatus);
    for (const std::size_t match : matches) part.audioMatches.push_back(group.audioMatches[match]);
    return part;
}

} // namespace

std::vector<std::vector<std::size_t>> recordingsOf(const SyncGroup& group) {
    std::vector<std::vector<std::size_t>> recordings;
    std::vector<std::size_t> left(group.audioMatches.size());
    std::iota(left.begin(), left.end(), 0);
    while (!left.empty()) {
        std::vector<std::size_t> own, others;
        for (const TakeFile& file : takeOf(withOnly(group, left), assumedChannels).files)
            (file.role == TakeRole::alternate ? others : own).push_back(left[file.matchIndex]);
        std::ranges::sort(own);
        std::ranges::sort(others);
        recordings.push_back(std::move(own));
        left = std::move(others);
    }
    return recordings;
}

std::vector<std::size_t> recordingWith(const SyncGroup& group, const FileURL& file) {
    for (auto& recording : recordingsOf(group))
        for (const std::size_t match : recording)
            if (group.audioMatches[match].audio->url == file) return std::move(recording);
    return {};
}

void putFirst(SyncGroup& group, const std::vector<std::size_t>& recording) {
    std::vector<AudioMatch> ordered;
    for (const std::size_t match : recording) ordered.push_back(group.audioMatches[match]);
    for (std::size_t i = 0; i < group.audioMatches.size(); ++i)
        if (std::ranges::find(recording, i) == recording.end()) ordered.push_back(group.audioMatches[i]);
    group.audioMatches = std::move(ordered);
}

MatchStatus statusAfterRemoval(const SyncGroup& group) {
    if (group.isMOS()) return MatchStatus::unmatched();
    const Take take = takeOf(group, assumedChannels);
    if (std::ranges::find(take.files, TakeRole::alternate, &TakeFile::role) == take.files.end())
        return MatchStatus::manual();
    return MatchStatus::ambiguous(static_cast<int>(group.audioMatches.size()));
}

std::vector<std::size_t> inTakeOrder(const SyncGroup& group, const std::vector<std::size_t>& recording) {
    const Take take = takeOf(withOnly(group, recording), assumedChannels);
    std::vector<std::size_t> ordered;
    for (const TakeFile& file : take.files) ordered.push_back(recording[file.matchIndex]);
    return ordered;
}

std::string recordingText(const SyncGroup& group, const std::vector<std::size_t>& recording,
                          const FileNames& names) {
    const SyncGroup part = withOnly(group, recording);
    return filesText(part, takeOf(part, assumedChannels), names);
}

} // namespace orvane
