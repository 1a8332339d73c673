#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Services/Diagnosis/KeptFiles.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <unordered_map>
#include <variant>

namespace orvane {

namespace {

bool movesAllSound(const CureWay& way) {
    using enum CureOption::Kind;
    return std::ranges::any_of(way.options, [](const CureOption& option) {
        return option.kind == soundOffset || option.kind == soundDate || option.kind == timecodeRate;
    });
}

/// Clips whose manual offset already compensates for a wrong clock.
class MovedClips {
  public:
    explicit MovedClips(const Shoot& shoot) : shoot_(shoot) {
        for (const Shoot::Clip& clip : shoot.clips)
            if (clip.primary && !clip.group->isExcludedFromExport &&
                std::abs(clip.group->manualAudioOffsetSeconds) >= leastByHandSeconds)
                clips_.push_back(&clip);
    }
    bool isEmpty() const { return clips_.empty(); }

    /// For each way of the cure, counts these clips that it would move again; returns the largest count.
    std::ptrdiff_t movedAgainBy(const DoubtCure& cure) const {
        std::ptrdiff_t most = 0;
        for (const DoubtCure::Part& part : cure.parts())
            if (const auto* way = std::get_if<CureWay>(&part); way != nullptr && movesAllSound(*way))
                most = std::max(most, movedAgainBy(*way));
        return most;
    }

  private:
    std::ptrdiff_t movedAgainBy(const CureWay& way) const {
        const KeptFiles kept(shoot_.input.folders, way);
        std::unordered_map<std::size_t, bool> isKept; // by recording, as several clips may have one
        return std::ranges::count_if(clips_, [&](const Shoot::Clip* clip) {
            platform::throwIfStopped(shoot_.stop);
            const auto [sound, isNew] = isKept.try_emplace(*clip->primary, false);
            if (isNew) sound->second = kept.has(*clip->group->primaryAudio());
            return sound->second && kept.has(clip->group->video);
        });
    }

    const Shoot& shoot_;
    std::vector<const Shoot::Clip*> clips_;
};

/// A cure without options: after a call that is pasted or a button that is pressed, clips keep their manual
/// offsets.
DoubtCure moveClipByClip(const DoubtCure& cure, std::ptrdiff_t clips) {
    const std::string again = counted(clips, "clip was", "clips were") +
                              " moved by hand, and a correction of all recordings would move " +
                              (clips == 1 ? "it" : "them") + " again";
    return DoubtCure::Words{"move these clips in the table as well ('choice' and 'offset_frames'): " + again +
                                "; without the table: " + cure.text(),
                            "attach and move the sound of these clips by hand as well: " + again};
}

} // namespace

void keepMovedClips(const Shoot& shoot, SyncDoubts& doubts) {
    const MovedClips moved(shoot);
    if (moved.isEmpty()) return;
    std::map<std::string, std::ptrdiff_t> known; // by the text of the cure, which the clips of a card share
    const auto keep = [&](SyncDoubt& doubt) {
        const auto [entry, isNew] = known.try_emplace(doubt.cure.text());
        if (isNew) entry->second = moved.movedAgainBy(doubt.cure);
        if (entry->second > 0) doubt.cure = moveClipByClip(doubt.cure, entry->second);
    };
    for (CardDoubt& card : doubts.cards) keep(card.doubt);
    for (auto& [group, own] : doubts.byGroup)
        for (SyncDoubt& doubt : own) keep(doubt);
}

} // namespace orvane
