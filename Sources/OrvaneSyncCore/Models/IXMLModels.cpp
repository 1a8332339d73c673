#include "OrvaneSyncCore/Models/IXMLModels.h"

#include "OrvaneSyncCore/Models/MediaAssetFields.h"
#include "Platform/Text.h"

namespace orvane {

namespace {

bool isTrue(const std::optional<std::string>& flag) {
    return flag && platform::text::uppercased(*flag) == "TRUE";
}

} // namespace

bool IXMLData::isCircled() const { return isTrue(circled); }
bool IXMLData::isWildTrack() const { return isTrue(wildTrack); }

JSON toJSON(const IXMLTrack& record) { return fieldsToJSON(record); }

JSON toJSON(const IXMLData& record) { return fieldsToJSON(record); }

template <>
IXMLTrack fromJSON<IXMLTrack>(const JSON& json) {
    return madeFromJSON<IXMLTrack>(json);
}

template <>
IXMLTrack fromJSON<IXMLTrack>(const JSONView& json) {
    return madeFromJSON<IXMLTrack>(json);
}

template <>
IXMLData fromJSON<IXMLData>(const JSON& json) {
    return madeFromJSON<IXMLData>(json);
}

template <>
IXMLData fromJSON<IXMLData>(const JSONView& json) {
    return madeFromJSON<IXMLData>(JSONMembers(json));
}

} // namespace orvane
