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

const std::string& textOf(const JSON& json) {
    const std::string* text = json.string();
    if (text == nullptr) throw DecodingError("expected text");
    return *text;
}

} // namespace

JSON toJSON(const UUID& id) { return id.text(); }
JSON toJSON(const FileURL& url) { return url.absoluteString(); }
JSON toJSON(Date date) { return iso8601(date); }

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
    return present(UUID::fromText(textOf(json)), "a UUID");
}

template <>
FileURL fromJSON<FileURL>(const JSON& json) {
    return present(FileURL::fromAbsoluteString(textOf(json)), "a file URL");
}

template <>
Date fromJSON<Date>(const JSON& json) {
    return present(dateFromISO8601(textOf(json)), "an ISO 8601 date");
}

template <>
bool fromJSON<bool>(const JSON& json) {
    return present(json.boolean(), "a boolean");
}

template <>
std::int64_t fromJSON<std::int64_t>(const JSON& json) {
    return present(json.integer(), "an integer");
}

template <>
int fromJSON<int>(const JSON& json) {
    const auto value = fromJSON<std::int64_t>(json);
    if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max())
        throw DecodingError("the number is out of range");
    return static_cast<int>(value);
}

template <>
std::uint64_t fromJSON<std::uint64_t>(const JSON& json) {
    return present(json.unsignedInteger(), "a whole number that is not negative");
}

template <>
double fromJSON<double>(const JSON& json) {
    return present(json.number(), "a number");
}

template <>
float fromJSON<float>(const JSON& json) {
    return static_cast<float>(fromJSON<double>(json));
}

template <>
std::string fromJSON<std::string>(const JSON& json) {
    return textOf(json);
}

const JSON& requiredMember(const JSON& object, std::string_view key) {
    if (!object.isObject()) throw DecodingError("expected an object");
    const JSON* value = object.find(key);
    if (value == nullptr) throw DecodingError("the key \"" + std::string(key) + "\" is missing");
    return *value;
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
