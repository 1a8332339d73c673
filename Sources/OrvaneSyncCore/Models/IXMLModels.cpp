#include "OrvaneSyncCore/Models/IXMLModels.h"

#include "Platform/Text.h"

namespace orvane {

namespace {

bool isTrue(const std::optional<std::string>& flag) {
    return flag && platform::text::uppercased(*flag) == "TRUE";
}

} // namespace

bool IXMLData::isCircled() const { return isTrue(circled); }
bool IXMLData::isWildTrack() const { return isTrue(wildTrack); }

JSON toJSON(const IXMLTrack& track) {
    JSON json;
    json.set("channelIndex", track.channelIndex);
    json.set("name", track.name);
    return json;
}

JSON toJSON(const IXMLData& data) {
    JSON json;
    json.setIfPresent("scene", data.scene);
    json.setIfPresent("take", data.take);
    json.setIfPresent("tape", data.tape);
    json.setIfPresent("note", data.note);
    json.setIfPresent("project", data.project);
    json.setIfPresent("circled", data.circled);
    json.setIfPresent("wildTrack", data.wildTrack);
    json.setIfPresent("timecodeRate", data.timecodeRate);
    json.setIfPresent("timecodeFlag", data.timecodeFlag);
    json.set("tracks", toJSONArray(data.tracks));
    return json;
}

namespace {

template <class Json>
IXMLTrack decodedTrack(const Json& json) {
    return {required<int>(json, "channelIndex"), required<std::string>(json, "name")};
}

template <class Json>
IXMLData decodedData(const Json& json) {
    IXMLData data;
    data.scene = optional<std::string>(json, "scene");
    data.take = optional<std::string>(json, "take");
    data.tape = optional<std::string>(json, "tape");
    data.note = optional<std::string>(json, "note");
    data.project = optional<std::string>(json, "project");
    data.circled = optional<std::string>(json, "circled");
    data.wildTrack = optional<std::string>(json, "wildTrack");
    data.timecodeRate = optional<std::string>(json, "timecodeRate");
    data.timecodeFlag = optional<std::string>(json, "timecodeFlag");
    data.tracks = requiredArray<IXMLTrack>(json, "tracks");
    return data;
}

} // namespace

template <>
IXMLTrack fromJSON<IXMLTrack>(const JSON& json) {
    return decodedTrack(json);
}

template <>
IXMLTrack fromJSON<IXMLTrack>(const JSONView& json) {
    return decodedTrack(json);
}

template <>
IXMLData fromJSON<IXMLData>(const JSON& json) {
    return decodedData(json);
}

template <>
IXMLData fromJSON<IXMLData>(const JSONView& json) {
    return decodedData(JSONMembers(json));
}

} // namespace orvane
