#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

namespace orvane {

namespace {

template <class Items, class Describe>
std::vector<Card> cards(const Items& items, const Describe& describe) {
    std::map<std::pair<std::string_view, std::optional<long>>, std::vector<std::size_t>> byFolder;
    for (std::size_t i = 0; i < items.size(); ++i)
        if (const auto key = describe(items[i])) byFolder[*key].push_back(i);
    std::vector<Card> result;
    for (auto& [key, files] : byFolder)
        result.push_back({std::string(key.first), key.second, std::move(files)});
    return result;
}

using CardKey = std::optional<std::pair<std::string_view, std::optional<long>>>;

} // namespace

bool isOn(const Card& card, const Shoot& shoot, const MediaAsset& recording) {
    const std::string& path = recording.url.path;
    if (!path.starts_with(card.folder) || path.size() <= card.folder.size() ||
        path[card.folder.size()] != '/' || (card.recorder && !card.recorder->isOn(recording)) ||
        (shoot.recorderFolders.isJoined(card.folder) && shoot.recorderOf(recording) != card.folder))
        return false;
    const auto found = shoot.recordingByID.find(recording.id);
    if (!card.day || found == shoot.recordingByID.end()) return true;
    const auto day = shoot.recordings[found->second].place.day;
    return day && card.isOf(*day + card.movedByDays);
}

std::vector<Card> cardsOfRecorders(const Shoot& shoot) {
    return cards(shoot.recordings, [&](const Recording& recording) {
        return CardKey({shoot.recorderOf(*recording.asset), recording.place.day});
    });
}

std::vector<Card> cardsOf(const std::vector<Shoot::Clip>& clips) {
    return cards(clips, [](const Shoot::Clip& clip) {
        return clip.place ? CardKey({folderOf(clip.group->video), clip.likelyDay()}) : CardKey();
    });
}

void addCardDoubt(SyncDoubts& doubts, SyncDoubt doubt, const std::vector<const Shoot::Clip*>& clips) {
    CardDoubt card{std::move(doubt), {}};
    for (const Shoot::Clip* clip : clips) {
        card.groupIDs.push_back(clip->group->id);
        doubts.byGroup[clip->group->id].push_back(card.doubt);
    }
    doubts.cards.push_back(std::move(card));
}

bool joinEqualDoubt(SyncDoubts& doubts, const SyncDoubt& doubt, const std::vector<const Shoot::Clip*>& clips,
                    const std::string& card) {
    const auto told = std::ranges::find_if(doubts.cards, [&](const CardDoubt& other) {
        return other.doubt.kind == doubt.kind && other.doubt.cure == doubt.cure &&
               std::ranges::equal(other.groupIDs, clips, {}, {},
                                  [](const Shoot::Clip* clip) { return clip->group->id; });
    });
    if (told == doubts.cards.end()) return false;
    const SyncDoubt before = told->doubt;
    told->doubt.message += "; likewise " + card;
    for (const Shoot::Clip* clip : clips)
        std::ranges::replace(doubts.byGroup[clip->group->id], before, told->doubt);
    return true;
}

} // namespace orvane
