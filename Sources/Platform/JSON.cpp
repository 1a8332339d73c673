#include "Platform/JSON.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>

namespace orvane::platform {

namespace {

constexpr double twoTo63 = 9223372036854775808.0;
constexpr double twoTo64 = 18446744073709551616.0;

} // namespace

std::optional<bool> JSON::boolean() const {
    const bool* value = std::get_if<bool>(&value_);
    return value ? std::optional(*value) : std::nullopt;
}

std::optional<std::int64_t> JSON::integer() const {
    if (const auto* value = std::get_if<std::int64_t>(&value_)) return *value;
    if (const auto* value = std::get_if<std::uint64_t>(&value_); value && std::in_range<std::int64_t>(*value))
        return static_cast<std::int64_t>(*value);
    if (const auto* value = std::get_if<double>(&value_);
        value && *value >= -twoTo63 && *value < twoTo63 && std::trunc(*value) == *value)
        return static_cast<std::int64_t>(*value);
    return std::nullopt;
}

std::optional<std::uint64_t> JSON::unsignedInteger() const {
    if (const auto* value = std::get_if<std::uint64_t>(&value_)) return *value;
    if (const auto* value = std::get_if<std::int64_t>(&value_); value && *value >= 0)
        return static_cast<std::uint64_t>(*value);
    if (const auto* value = std::get_if<double>(&value_);
        value && *value >= 0 && *value < twoTo64 && std::trunc(*value) == *value)
        return static_cast<std::uint64_t>(*value);
    return std::nullopt;
}

std::optional<double> JSON::number() const {
    if (const auto* value = std::get_if<double>(&value_)) return *value;
    if (const auto* value = std::get_if<std::int64_t>(&value_)) return static_cast<double>(*value);
    if (const auto* value = std::get_if<std::uint64_t>(&value_)) return static_cast<double>(*value);
    return std::nullopt;
}

const JSON* JSON::find(std::string_view key) const {
    const Object* object = members();
    if (object == nullptr) return nullptr;
    const auto found = std::ranges::find(*object, key, &Object::value_type::first);
    return found == object->end() ? nullptr : &found->second;
}

void JSON::set(std::string_view key, JSON value) {
    if (isNull()) *this = object();
    Object* object = members();
    assert(object != nullptr && "only an object has members");
    if (object == nullptr) return;
    const auto found = std::ranges::find(*object, key, &Object::value_type::first);
    if (found != object->end())
        found->second = std::move(value);
    else
        object->emplace_back(std::string(key), std::move(value));
}

void JSON::remove(std::string_view key) {
    if (Object* object = members())
        std::erase_if(*object, [key](const auto& member) { return member.first == key; });
}

void JSON::append(JSON value) {
    if (isNull()) *this = array();
    Array* array = elements();
    assert(array != nullptr && "only an array takes elements");
    if (array != nullptr) array->push_back(std::move(value));
}

bool JSON::operator==(const JSON& other) const {
    if (const Object* object = members()) {
        const Object* otherObject = other.members();
        if (otherObject == nullptr || object->size() != otherObject->size()) return false;
        if (*object == *otherObject) return true;
        const auto sorted = [](const Object& from) {
            std::vector<const Object::value_type*> pointers;
            pointers.reserve(from.size());
            for (const auto& member : from) pointers.push_back(&member);
            std::ranges::sort(pointers, {},
                              [](const auto* member) -> const std::string& { return member->first; });
            return pointers;
        };
        return std::ranges::equal(sorted(*object), sorted(*otherObject),
                                  [](const auto* a, const auto* b) { return *a == *b; });
    }
    if (value_.index() == other.value_.index()) return value_ == other.value_;
    // Numbers of two kinds, of which one is an integer. Integers beyond 2^53 may be equal as doubles only.
    return number() && other.number() && integer() == other.integer() &&
           unsignedInteger() == other.unsignedInteger();
}

} // namespace orvane::platform
