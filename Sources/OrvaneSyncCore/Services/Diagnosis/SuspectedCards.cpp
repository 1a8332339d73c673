#include "OrvaneSyncCore/Services/Diagnosis/SuspectedCards.h"

#include "OrvaneSyncCore/Services/Takes/RecordedAtOnce.h"

#include <algorithm>
#include <utility>

namespace orvane {

namespace {

/// Recordings that clips only have beside one of the same folder and recorder. That recorder cannot have made
/// both at one time: one is of the other of two equal hours.
std::vector<std::size_t> besideTheirOwnRecorders(const Shoot& shoot) {
    std::vector<bool> isBeside(shoot.recordings.size()), isHeard(isBeside);
    for (const Shoot::Clip& clip : shoot.clips) {
        const auto others = ofOtherMoments(*clip.group);
        for (std::size_t i = 0; i < clip.group->audioMatches.size(); ++i)
            if (const auto found = shoot.recordingByID.find(clip.group->audioMatches[i].audio->id);
                found != shoot.recordingByID.end())
                (std::ranges::find(others, i) != others.end() ? isBeside : isHeard)[found->second] = true;
    }
    std::vector<std::size_t> files;
    for (std::size_t i = 0; i < isBeside.size(); ++i)
        if (isBeside[i] && !isHeard[i]) files.push_back(i);
    return files;
}

} // namespace

std::string SuspectedCard::name(const Shoot& shoot) const {
    if (!isPart) return nameOfCard(card, shoot);
    const auto file = [&](std::size_t i) { return shoot.nameOf(*shoot.recordings[i].asset); };
    return std::to_string(card.files.size()) + " of " + std::to_string(all) + " recordings in '" +
           card.folder + "' (" + file(card.files.front()) + " to " + file(card.files.back()) + ")";
}

SuspectedCards::SuspectedCards(const Shoot& shoot, const TimedClips& clips)
    : isSuspected(shoot.recordings.size()) {
    const RecordersCards recorders(shoot, clips.evidence);
    const std::vector<std::size_t> beside = besideTheirOwnRecorders(shoot);
    for (std::size_t i = 0; i < shoot.recordings.size(); ++i)
        if (const auto day = shoot.recordings[i].place.day; day && recorders.isRight[i])
            usedDays.insert(*day);
    for (const Card& card : recorders.cards) {
        const auto& files = card.files;
        const int right = recorders.countOf(files, recorders.isRight);
        if (std::cmp_less_equal(2 * right, files.size())) {
            cards.push_back({card, files.size(), false, recorders.fitsFewClips(card)});
            for (const std::size_t file : files) isSuspected[file] = true;
        }
        // The clock may have been set between these recordings. The recordings of a second recorder are first
        // under no clip.
        SuspectedCard part{card, files.size(), true};
        std::erase_if(part.card.files, [&](std::size_t file) { return recorders.isOverlapping[file]; });
        for (const std::size_t file : beside)
            if (isOn(card, shoot, *shoot.recordings[file].asset)) {
                part.card.files.push_back(file);
                if (std::ranges::find(files, file) == files.end()) ++part.all; // it was counted as a channel
            }
        if (std::max(right, recorders.countOf(files, recorders.isFitting)) >= explanation::fewest &&
            std::cmp_greater_equal(part.card.files.size(), explanation::fewest))
            cards.push_back(std::move(part));
    }
}

} // namespace orvane
