#include "OrvaneSyncCore/Services/Diagnosis/RecordRun.h"

#include "OrvaneSyncCore/Services/Diagnosis/WrittenTimes.h"

#include <cstddef>

namespace orvane {

std::optional<WrittenClip> writtenOf(const Shoot::Clip& clip) {
    const auto seconds = writtenSeconds(clip.group->video);
    return seconds && clip.place ? std::optional(WrittenClip{&clip, *seconds}) : std::nullopt;
}

bool countsWhileRunning(const std::vector<WrittenClip>& clips) {
    constexpr double sameSeconds = 10, farSeconds = 300, adjoiningSeconds = 0.1, mostly = 0.8;
    int rising = 0, steady = 0;
    bool adjoin = true;
    double lost = 0;
    for (std::size_t i = 1; i < clips.size(); ++i) {
        const SyncEngine::TCRange &before = clips[i - 1].range(), &range = clips[i].range();
        const double written = clips[i].seconds - clips[i - 1].seconds;
        const auto missing = [&](double from, double to) {
            return std::remainder(written - (to - from), secondsADay);
        };
        const double atStart = missing(before.startSeconds, range.startSeconds),
                     atEnd = missing(before.endSeconds, range.endSeconds);
        const double least = std::abs(atStart) < std::abs(atEnd) ? atStart : atEnd;
        if (std::abs(least) <= sameSeconds) {
            ++steady;
        } else if (least > 0 && range.startSeconds > before.startSeconds) {
            ++rising;
            lost += least;
            adjoin = adjoin && std::abs(range.startSeconds - before.endSeconds) <= adjoiningSeconds;
        }
    }
    const auto pairs = static_cast<double>(clips.size()) - 1;
    return rising >= (adjoin ? 1 : 2) && rising >= steady && rising + steady >= mostly * pairs &&
           lost > farSeconds;
}

} // namespace orvane
