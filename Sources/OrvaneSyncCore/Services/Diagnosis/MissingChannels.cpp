#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace orvane {

namespace {

/// A file of a take by a recorder that writes one file per channel: T02_3.WAV.
struct NumberedName {
    std::string_view stem, ending; ///< the text before the number and its separator, and the text after it
    int number = 0;
};

/// A number of three digits or more counts takes and parts.
std::optional<NumberedName> numberedName(std::string_view name) {
    const std::size_t point = std::min(name.rfind('.'), name.size());
    const std::size_t sign = name.substr(0, point).find_last_not_of("0123456789");
    if (sign == std::string_view::npos || sign == 0 || (name[sign] != '_' && name[sign] != '-'))
        return std::nullopt;
    const std::size_t digits = point - sign - 1;
    if (digits < 1 || digits > 2) return std::nullopt;
    int number = 0;
    for (const char digit : name.substr(sign + 1, digits)) number = 10 * number + (digit - '0');
    return NumberedName{name.substr(0, sign + 1), name.substr(point), number};
}

struct NumberedTake {
    std::vector<const Recording*> files;
    std::set<int> numbers;
    std::string_view ending;
    bool isTake = true; ///< all files begin at once, and have one channel

    void add(const Recording& file, const NumberedName& name) {
        constexpr double atOnceSeconds = 0.5;
        const bool isBeside = files.empty() || std::abs(files.front()->place.range.startSeconds -
                                                        file.place.range.startSeconds) <= atOnceSeconds;
        isTake = isTake && isBeside && file.asset->channelCount == 1;
        files.push_back(&file);
        numbers.insert(name.number);
        ending = name.ending;
    }
};

/// The takes of a card, by the beginning of their names.
using NumberedCard = std::map<std::string_view, NumberedTake>;

/// Adds the numbers of files that have no place because they end before their first sound: their channels
/// were armed.
void addEmptyFiles(const Shoot& shoot, std::map<std::string_view, NumberedCard>& cards) {
    for (const MediaAsset& file : shoot.input.recordings) {
        if (!file.endsEarly() || shoot.recordingByID.contains(file.id)) continue;
        const auto card = cards.find(folderOf(file));
        const auto name = numberedName(file.filename);
        if (card == cards.end() || !name) continue;
        if (const auto take = card->second.find(name->stem); take != card->second.end())
            take->second.numbers.insert(name->number);
    }
}

/// A number that is missing in the take although another take of its card has it. The armed channels change
/// from take to take, so absent if another take has exactly these numbers.
std::optional<int> missingNumber(const NumberedTake& take, const NumberedCard& card) {
    const std::size_t countedFromOne = take.numbers.size() - take.numbers.count(0);
    if (std::cmp_equal(countedFromOne, *take.numbers.rbegin())) return std::nullopt; // none is missing
    const auto alike = std::ranges::count_if(
        card, [&](const auto& other) { return other.second.isTake && other.second.numbers == take.numbers; });
    if (alike > 1) return std::nullopt;
    for (int number = 1; number < *take.numbers.rbegin(); ++number)
        if (!take.numbers.contains(number) && std::ranges::any_of(card, [&](const auto& other) {
                return other.second.isTake && other.second.numbers.size() > 1 &&
                       other.second.numbers.contains(number);
            }))
            return number;
    return std::nullopt;
}

} // namespace

void addMissingChannels(const Shoot& shoot, SyncDoubts& doubts) {
    std::map<std::string_view, NumberedCard> cards; // by folder
    for (const Recording& recording : shoot.recordings)
        if (const auto name = numberedName(recording.asset->filename))
            cards[folderOf(*recording.asset)][name->stem].add(recording, *name);
    addEmptyFiles(shoot, cards);
    platform::StopCheck check(shoot.stop);
    for (const Shoot::Clip& clip : shoot.clips) {
        check();
        if (!clip.primary || clip.isDecided) continue;
        const MediaAsset& own = *shoot.recordings[*clip.primary].asset;
        const auto name = numberedName(own.filename);
        if (!name) continue;
        const NumberedCard& card = cards.at(folderOf(own));
        const NumberedTake& take = card.at(name->stem);
        const auto missing = take.isTake ? missingNumber(take, card) : std::nullopt;
        if (!missing) continue;
        doubts.byGroup[clip.group->id].push_back(
            {SyncDoubt::Kind::missingFile,
             "'" + std::string(name->stem) + std::to_string(*missing) + std::string(name->ending) +
                 "' is not there beside " + shoot.nameOf(own) + " under " + shoot.nameOf(clip.group->video) +
                 ", and other takes in its folder have that channel",
             "look for it on the card, or lock the clip where the channel was not recorded"});
    }
}

} // namespace orvane
