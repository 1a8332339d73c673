#include "OrvaneSyncCore/Services/Diagnosis/SyncDoubts.h"

#include "OrvaneSyncCore/Services/Diagnosis/ClipClaims.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Text.h"

#include <algorithm>
#include <utility>

namespace orvane {

SyncDoubts SyncDoubts::of(const DoubtInput& input, const std::stop_token& stop) {
    const Shoot shoot(input, stop);
    SyncDoubts doubts;
    for (const auto find : doubtFinders) find(shoot, doubts);
    return doubts;
}

std::vector<SoundClaim> SyncDoubts::claims(const DoubtInput& input, const std::stop_token& stop) {
    const Shoot shoot(input, stop);
    std::vector<SoundClaim> claims;
    SyncDoubts doubts;
    addClockClaims(shoot, doubts, claims);
    addStatedPlaceClaims(shoot, doubts, claims);
    addClipClaims(shoot, claims);
    addClaimsByEar(shoot, claims);
    addDayClaims(shoot, doubts, claims);
    addLoneClaims(shoot, claims);
    return claims;
}

const SyncDoubt::Suggestion* SyncDoubts::suggestionFor(const SyncGroup& group) const {
    const auto own = byGroup.find(group.id);
    if (own == byGroup.end() || group.isLocked || group.manualAudioOffsetSeconds != 0) return nullptr;
    const auto one = std::ranges::find_if(
        own->second, [](const SyncDoubt& doubt) { return doubt.suggestion.has_value(); });
    return one != own->second.end() ? &*one->suggestion : nullptr;
}

bool SyncDoubts::has(const UUID& group, std::initializer_list<SyncDoubt::Kind> kinds) const {
    const auto own = byGroup.find(group);
    return own != byGroup.end() && std::ranges::any_of(own->second, [&](const SyncDoubt& doubt) {
               return std::ranges::find(kinds, doubt.kind) != kinds.end();
           });
}

const CardDoubt* SyncDoubts::ofCard(const SyncDoubt& doubt) const {
    const auto card = std::ranges::find_if(cards, [&](const CardDoubt& one) {
        return one.doubt.kind == doubt.kind && one.doubt.message == doubt.message &&
               one.doubt.cure == doubt.cure;
    });
    return card == cards.end() ? nullptr : &*card;
}

std::vector<CardDoubt> SyncDoubts::summary(const SyncGroupList& groups) const {
    std::vector<CardDoubt> all = cards;
    std::map<std::pair<SyncDoubt::Kind, std::string>, std::size_t> places;
    std::map<std::size_t, std::vector<std::string>> owns; // of the clips after the first
    for (const SyncGroup& group : groups) {
        const auto own = byGroup.find(group.id);
        if (own == byGroup.end()) continue;
        for (const SyncDoubt& doubt : own->second) {
            if (ofCard(doubt) != nullptr) continue;
            const auto [place, isNew] = places.try_emplace({doubt.kind, doubt.cure.text()}, all.size());
            if (isNew)
                all.push_back({doubt, {}});
            else if (!doubt.own.empty())
                owns[place->second].push_back(doubt.own);
            all[place->second].groupIDs.push_back(group.id);
        }
    }
    for (std::size_t i = cards.size(); i < all.size(); ++i)
        if (const auto more = all[i].groupIDs.size() - 1; more > 0) {
            std::vector<std::string> named = owns[i];
            constexpr std::size_t most = 5;
            named.resize(std::min(named.size(), most));
            const std::size_t others = more - named.size();
            std::string likewise = "; likewise " + platform::text::joined(named, ", ");
            if (others > 0)
                likewise += (named.empty() ? "" : " and ") + counted(others, "more clip", "more clips");
            all[i].doubt.message += likewise;
            if (!all[i].doubt.windowMessage.empty()) all[i].doubt.windowMessage += likewise;
        }
    return all;
}

} // namespace orvane
