#include "OrvaneSyncCore/Models/WildTrack.h"

#include "OrvaneSyncCore/Models/JSONFields.h"
#include "OrvaneSyncCore/Models/MovedFiles.h"

#include <unordered_map>

namespace orvane {

WildTrack::WildTrack(MediaAsset asset, const std::optional<std::string>& name)
    : id(asset.id), audio(std::move(asset)),
      customName(name && !name->empty() ? *name : audio.filenameStem()) {}

void carryNamesAndApprovals(std::vector<WildTrack>& tracks, const std::vector<WildTrack>& decided) {
    std::unordered_map<UUID, const WildTrack*> byID;
    std::unordered_map<FileURL, const WildTrack*> byFile;
    for (const WildTrack& track : decided) {
        byID.emplace(track.id, &track);
        byFile.emplace(track.audio.url, &track);
    }
    MovedFiles::Files before, now;
    for (const WildTrack& track : decided) before.push_back(&track.audio);
    for (const WildTrack& track : tracks) now.push_back(&track.audio);
    const MovedFiles moved(before, now);
    for (WildTrack& track : tracks) {
        const WildTrack* known = nullptr;
        if (const auto same = byID.find(track.id); same != byID.end())
            known = same->second;
        else if (const auto file = byFile.find(track.audio.url); file != byFile.end())
            known = file->second;
        else if (const MediaAsset* elsewhere = moved.before(track.audio))
            known = byFile.at(elsewhere->url);
        if (known == nullptr) continue;
        track.customName = known->customName;
        track.isApproved = known->isApproved;
    }
}

template <>
struct JSONFields<WildTrack> {
    static constexpr std::tuple list{JSONField{"id", &WildTrack::id}, JSONField{"audio", &WildTrack::audio},
                                     JSONField{"customName", &WildTrack::customName},
                                     JSONField{"isApproved", &WildTrack::isApproved}};
};

JSON toJSON(const WildTrack& track) { return fieldsToJSON(track); }

template <>
WildTrack fromJSON<WildTrack>(const JSON& json) {
    WildTrack track = filledFromJSON(json, WildTrack(MediaAsset(UUID(), FileURL(), AssetKind::audio)));
    track.id = track.audio.id; // whatever id is stored beside it
    return track;
}

} // namespace orvane
