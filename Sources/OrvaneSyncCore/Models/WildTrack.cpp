#include "OrvaneSyncCore/Models/WildTrack.h"

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
    for (WildTrack& track : tracks) {
        const WildTrack* known = nullptr;
        if (const auto same = byID.find(track.id); same != byID.end())
            known = same->second;
        else if (const auto file = byFile.find(track.audio.url); file != byFile.end())
            known = file->second;
        if (known == nullptr) continue;
        track.customName = known->customName;
        track.isApproved = known->isApproved;
    }
}

JSON toJSON(const WildTrack& track) {
    JSON json;
    json.set("id", toJSON(track.id));
    json.set("audio", toJSON(track.audio));
    json.set("customName", track.customName);
    json.set("isApproved", track.isApproved);
    return json;
}

template <>
WildTrack fromJSON<WildTrack>(const JSON& json) {
    WildTrack track(required<MediaAsset>(json, "audio"));
    required<UUID>(json, "id"); // belongs to the form; the one that counts is the audio's
    track.customName = required<std::string>(json, "customName");
    track.isApproved = required<bool>(json, "isApproved");
    return track;
}

} // namespace orvane
