#include "OrvaneSyncCore/Models/WildTrack.h"

namespace orvane {

WildTrack::WildTrack(MediaAsset asset, const std::optional<std::string>& name)
    : id(asset.id), audio(std::move(asset)),
      customName(name && !name->empty() ? *name : audio.filenameStem()) {}

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
