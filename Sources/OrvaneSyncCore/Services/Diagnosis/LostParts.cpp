#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/CommonOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Services/Matching/ChannelNames.h"
#include "OrvaneSyncCore/Services/Matching/SplitRecordingDetector.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cstdint>
#include <map>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;
using platform::text::formatted;

/// A file of a recording in parts, and the nearest one before it by its number.
struct PartPair {
    const Recording* before;
    const Recording* after;
    std::int64_t skipped; ///< numbers between the two

    double gapSeconds() const { return onLine(after->place).startSeconds - onLine(before->place).endSeconds; }
    bool adjoin() const {
        return SplitRecordingDetector::follows(onLine(before->place), onLine(after->place));
    }
};

/// By how much the number of a part is above that of a part before it. The first one may have no number.
std::optional<std::int64_t> countedOn(const MediaAsset& before, const MediaAsset& after) {
    const std::string name = before.normalizedName(), next = after.normalizedName();
    const auto own = piecesOfName(name), others = piecesOfName(next);
    const auto [piece, other] = std::ranges::mismatch(own, others);
    const auto numberOf = [](std::string_view text) {
        const std::size_t word = text.find_last_not_of("0123456789");
        return platform::text::decimalInteger(text.substr(word == std::string_view::npos ? 0 : word + 1));
    };
    const auto first = piece == own.end() ? std::optional<std::int64_t>(1) : numberOf(*piece);
    const auto second = other == others.end() ? std::nullopt : numberOf(*other);
    return first && second ? std::optional(*second - *first) : std::nullopt;
}

std::vector<PartPair> partPairsIn(std::vector<const Recording*> files) {
    // The part before may be followed by the channels of its recorder and by files of other recorders.
    constexpr std::size_t mostBetween = 32;
    std::ranges::stable_sort(files, {},
                             [](const Recording* file) { return onLine(file->place).startSeconds; });
    std::vector<PartPair> all;
    for (std::size_t i = 0; i < files.size(); ++i) {
        std::optional<PartPair> nearest;
        for (std::size_t k = i - std::min(i, mostBetween); k < i; ++k) {
            const Recording &before = *files[k], &after = *files[i];
            if (!SplitRecordingDetector::mayContinue(*before.asset, *after.asset)) continue;
            const auto steps = countedOn(*before.asset, *after.asset);
            if (steps && *steps > 0 && (!nearest || *steps - 1 < nearest->skipped))
                nearest = {&before, &after, *steps - 1};
        }
        if (nearest) all.push_back(*nearest);
    }
    return all;
}

bool isUnder(const Shoot::Clip& clip, const FilePlace& gap) {
    const auto apart = clip.place ? secondsApart(clip, gap) : std::nullopt;
    return apart && *apart < gap.range.durationSeconds() && *apart + clip.place->range.durationSeconds() > 0;
}

void addGap(const Shoot& shoot, const PartPair& parts, SyncDoubts& doubts) {
    FilePlace gap = parts.before->place;
    gap.range = {gap.range.endSeconds, gap.range.endSeconds + parts.gapSeconds()};
    std::vector<const Shoot::Clip*> clips;
    bool isSettled = false; // a clip there was, which means no more of it is to be looked for
    for (const Shoot::Clip& clip : shoot.clips) {
        if (!isUnder(clip, gap)) continue;
        if (doubts.has(clip.group->id, {Kind::splitGap})) return; // reports this gap
        if (clip.isDecided || clip.group->isLocked || clip.group->isExcludedFromExport)
            isSettled = true;
        else if (!doubts.has(clip.group->id, {Kind::constantOffset, Kind::timecodeRate, Kind::notTimeOfDay}))
            clips.push_back(&clip);
    }
    if (clips.empty() && isSettled) return;
    const DoubtCure cure = cureWords::lookForPart();
    for (const Shoot::Clip* clip : clips)
        if (const auto own = doubts.byGroup.find(clip->group->id); own != doubts.byGroup.end())
            for (SyncDoubt& doubt : own->second)
                if (doubt.kind == Kind::shortSound || doubt.kind == Kind::cutByTrim) doubt.cure = cure;
    addCardDoubt(doubts,
                 {Kind::splitGap,
                  shoot.nameOf(*parts.before->asset) + " and " + shoot.nameOf(*parts.after->asset) +
                      " are parts of one recording, and by their numbers " +
                      counted(parts.skipped, "part", "parts") + " between them, " +
                      formatted("%.1f s", parts.gapSeconds()) + " of sound, " +
                      (parts.skipped == 1 ? "is" : "are") + " missing",
                  cure},
                 clips);
}

} // namespace

void addLostParts(const Shoot& shoot, SyncDoubts& doubts) {
    std::map<std::string_view, std::vector<const Recording*>> folders;
    for (const Recording& recording : shoot.recordings)
        folders[folderOf(*recording.asset)].push_back(&recording);
    for (const auto& [folder, files] : folders) {
        const std::vector<PartPair> pairs = partPairsIn(files);
        // Numbers may count takes as well. Those of parts show by several files that follow each other by
        // number and in time, and none that do so by number alone.
        int parts = 0, others = 0;
        double longest = 0;
        for (const PartPair& one : pairs) {
            if (one.skipped > 0) continue;
            ++(one.adjoin() ? parts : others);
            if (one.adjoin()) longest = std::max(longest, one.before->place.range.durationSeconds());
        }
        constexpr int fewestParts = 2; // one take may begin as another one ends
        if (parts < fewestParts || others > 0) continue;
        constexpr double slackSeconds = 1; // for the rounding of each part
        for (const PartPair& one : pairs)
            if (one.skipped > 0 && one.gapSeconds() > SplitRecordingDetector::contiguityToleranceSeconds &&
                one.gapSeconds() <= static_cast<double>(one.skipped) * (longest + slackSeconds))
                addGap(shoot, one, doubts);
    }
}

} // namespace orvane
