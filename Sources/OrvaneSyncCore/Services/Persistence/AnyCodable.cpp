#include "OrvaneSyncCore/Services/Persistence/AnyCodable.h"

#include <utility>

namespace orvane {

JSON toJSON(const AnyCodable& setting) { return setting.value; }

template <>
AnyCodable fromJSON<AnyCodable>(const JSON& json) {
    if (const auto flag = json.boolean()) return {JSON(*flag)};
    if (const auto whole = json.integer()) return {JSON(*whole)};
    if (const auto number = json.number()) return {JSON(*number)};
    if (const std::string* text = json.string()) return {JSON(*text)};
    if (const JSON::Array* elements = json.elements()) {
        JSON::Array list;
        list.reserve(elements->size());
        for (const JSON& element : *elements) list.push_back(fromJSON<AnyCodable>(element).value);
        return {JSON(std::move(list))};
    }
    if (const JSON::Object* members = json.members()) {
        JSON::Object map;
        map.reserve(members->size());
        for (const auto& [key, element] : *members)
            map.emplace_back(key, fromJSON<AnyCodable>(element).value);
        return {JSON(std::move(map))};
    }
    throw DecodingError("AnyCodable: unsupported type");
}

} // namespace orvane
