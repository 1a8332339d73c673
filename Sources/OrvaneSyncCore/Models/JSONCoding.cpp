#include "OrvaneSyncCore/Models/JSONCoding.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace orvane {

namespace {

template <class T>
T present(const std::optional<T>& value, const char* expected) {
    if (!value) throw DecodingError(std::string("expected ") + expected);
    return *value;
}

template <class Json>
auto presentMember(const Json& object, std::string_view key) {
    if (!object.isObject()) throw DecodingError("expected an object");
    auto value = object.find(key);
    if (!value) throw DecodingError("the key \"" + std::string(key) + "\" is missing");
    return value;
}

// All kinds of JSON values have the same interface, so each basic type has one rule for all of them.

template <class Json>
std::string_view textOf(const Json& json) {
    const auto text = json.string();
    if (!text) throw DecodingError("expected text");
    return *text;
}

template <class Json>
UUID uuidOf(const Json& json) {
    return present(UUID::fromText(textOf(json)), "a UUID");
}

template <class Json>
FileURL fileURLOf(const Json& json) {
    return present(FileURL::fromAbsoluteString(textOf(json)), "a file URL");
}

template <class Json>
Date dateOf(const Json& json) {
    return present(dateFromISO8601(textOf(json)), "an ISO 8601 date");
}

template <class Json>
std::int64_t integerOf(const Json& json) {
    return present(json.integer(), "an integer");
}

template <class Json>
int intOf(const Json& json) {
    const std::int64_t value = integerOf(json);
    if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max())
        throw DecodingError("the number is out of range");
    return static_cast<int>(value);
}

template <class Json>
std::uint64_t unsignedOf(const Json& json) {
    return present(json.unsignedInteger(), "a whole number that is not negative");
}

template <class Json>
double numberOf(const Json& json) {
    return present(json.number(), "a number");
}

} // namespace

JSON toJSON(const UUID& id) { return id.text(); }
JSON toJSON(const FileURL& url) { return url.absoluteString(); }
JSON toJSON(Date date) { return iso8601(date); }

JSON toJSON(const std::set<int>& values) {
    JSON json = JSON::array();
    for (const int value : values) json.append(value);
    return json;
}

JSON toJSON(float value) {
    if (!std::isfinite(value)) return static_cast<double>(value);
    std::array<char, 64> text{};
    const char* end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    double wide = 0;
    std::from_chars(text.data(), end, wide);
    return static_cast<float>(wide) == value ? wide : static_cast<double>(value);
}

template <>
UUID fromJSON<UUID>(const JSON& json) {
    return uuidOf(json);
}

template <>
UUID fromJSON<UUID>(const JSONView& json) {
    return uuidOf(json);
}

template <>
FileURL fromJSON<FileURL>(const JSON& json) {
    return fileURLOf(json);
}

template <>
FileURL fromJSON<FileURL>(const JSONView& json) {
    return fileURLOf(json);
}

template <>
Date fromJSON<Date>(const JSON& json) {
    return dateOf(json);
}

template <>
Date fromJSON<Date>(const JSONView& json) {
    return dateOf(json);
}

template <>
bool fromJSON<bool>(const JSON& json) {
    return present(json.boolean(), "a boolean");
}

template <>
std::int64_t fromJSON<std::int64_t>(const JSON& json) {
    return integerOf(json);
}

template <>
std::int64_t fromJSON<std::int64_t>(const JSONView& json) {
    return integerOf(json);
}

template <>
int fromJSON<int>(const JSON& json) {
    return intOf(json);
}

template <>
int fromJSON<int>(const JSONView& json) {
    return intOf(json);
}

template <>
std::uint64_t fromJSON<std::uint64_t>(const JSON& json) {
    return unsignedOf(json);
}

template <>
std::uint64_t fromJSON<std::uint64_t>(const JSONView& json) {
    return unsignedOf(json);
}

template <>
double fromJSON<double>(const JSON& json) {
    return numberOf(json);
}

template <>
double fromJSON<double>(const JSONView& json) {
    return numberOf(json);
}

template <>
float fromJSON<float>(const JSON& json) {
    return static_cast<float>(numberOf(json));
}

template <>
std::string fromJSON<std::string>(const JSON& json) {
    return std::string(textOf(json));
}

template <>
std::string fromJSON<std::string>(const JSONView& json) {
    return std::string(textOf(json));
}

const JSON& requiredMember(const JSON& object, std::string_view key) { return *presentMember(object, key); }

JSONView requiredMember(const JSONView& object, std::string_view key) { return *presentMember(object, key); }

JSONView requiredMember(const JSONMembers& object, std::string_view key) {
    return *presentMember(object, key);
}

const std::pair<std::string, JSON>& singleCase(const JSON& json) {
    const JSON::Object* members = json.members();
    if (members == nullptr || members->size() != 1)
        throw DecodingError("Invalid number of keys found, expected one.");
    return members->front();
}

JSON caseObject(std::string_view name, JSON payload) {
    JSON json;
    json.set(name, std::move(payload));
    return json;
}

} // namespace orvane
