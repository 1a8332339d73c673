#pragma once

#include "OrvaneSyncCore/Models/Date.h"
#include "OrvaneSyncCore/Models/FileURL.h"
#include "OrvaneSyncCore/Models/UUID.h"
#include "Platform/JSONView.h"

#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

using platform::JSON;
using platform::JSONMembers;
using platform::JSONView;

/// Stored JSON is not a valid record: a required key is missing, or a value has the wrong kind. The
/// description names the key.
class DecodingError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The JSON forms of records. Each record type has `JSON toJSON(const T&)` and a specialisation of
/// `fromJSON<T>`, which throws DecodingError. The forms of the basic types are declared here.
template <class T>
T fromJSON(const JSON& json);
/// The same without building the tree first. Records that occur in thousands have a specialisation.
template <class T>
T fromJSON(const JSONView& json) {
    return fromJSON<T>(json.value());
}

JSON toJSON(const UUID& id);
JSON toJSON(const FileURL& url);
JSON toJSON(Date date);
/// The shortest digits that give the float again: 0.3, not 0.30000001192092896.
JSON toJSON(float value);
template <>
UUID fromJSON<UUID>(const JSON& json);
template <>
FileURL fromJSON<FileURL>(const JSON& json);
template <>
Date fromJSON<Date>(const JSON& json);
template <>
bool fromJSON<bool>(const JSON& json);
template <>
int fromJSON<int>(const JSON& json);
template <>
std::int64_t fromJSON<std::int64_t>(const JSON& json);
template <>
std::uint64_t fromJSON<std::uint64_t>(const JSON& json);
template <>
float fromJSON<float>(const JSON& json);
template <>
double fromJSON<double>(const JSON& json);
template <>
std::string fromJSON<std::string>(const JSON& json);

template <>
UUID fromJSON<UUID>(const JSONView& json);
template <>
FileURL fromJSON<FileURL>(const JSONView& json);
template <>
Date fromJSON<Date>(const JSONView& json);
template <>
std::int64_t fromJSON<std::int64_t>(const JSONView& json);
template <>
int fromJSON<int>(const JSONView& json);
template <>
std::uint64_t fromJSON<std::uint64_t>(const JSONView& json);
template <>
double fromJSON<double>(const JSONView& json);
template <>
std::string fromJSON<std::string>(const JSONView& json);

/// The value of a key; throws DecodingError if it is missing.
const JSON& requiredMember(const JSON& object, std::string_view key);
JSONView requiredMember(const JSONView& object, std::string_view key);
JSONView requiredMember(const JSONMembers& object, std::string_view key);

/// Decodes the value of a key; an error names the key. Here and below `Json` is any of the three kinds of
/// values.
template <class T, class Json>
T decodedMember(const Json& value, std::string_view key) {
    try {
        return fromJSON<T>(value);
    } catch (const DecodingError& error) {
        throw DecodingError(std::string(key) + ": " + error.what());
    }
}

template <class T, class Json>
T required(const Json& object, std::string_view key) {
    return decodedMember<T>(requiredMember(object, key), key);
}

/// A list of records of one type.
template <class T, class Json>
std::vector<T> requiredArray(const Json& object, std::string_view key) {
    const auto elements = requiredMember(object, key).elements();
    if (!elements) throw DecodingError(std::string(key) + ": expected a list");
    std::vector<T> result;
    result.reserve(elements->size());
    for (const auto& element : *elements) result.push_back(decodedMember<T>(element, key));
    return result;
}

/// A set is stored as a list in ascending order.
template <class Json>
std::set<int> requiredSet(const Json& object, std::string_view key) {
    const auto values = requiredArray<int>(object, key);
    return {values.begin(), values.end()};
}
JSON toJSON(const std::set<int>& values);

template <class Records>
JSON toJSONArray(const Records& records) {
    JSON::Array elements;
    elements.reserve(records.size());
    for (const auto& record : records) elements.push_back(toJSON(record));
    return elements;
}

/// The one member of an object that stores a variant: the key is the case, the value its payload.
const std::pair<std::string, JSON>& singleCase(const JSON& json);
/// An object with one member, the case and its payload.
JSON caseObject(std::string_view name, JSON payload = JSON::object());

/// Absent if the key is missing or null. A value of the wrong kind is still an error.
template <class T, class Json>
std::optional<T> optional(const Json& object, std::string_view key) {
    const auto value = object.find(key);
    if (!value || value->isNull()) return std::nullopt;
    return decodedMember<T>(*value, key);
}

} // namespace orvane
