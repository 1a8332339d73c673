#include "Platform/Setting.h"

#include "Platform/Text.h"

#include <array>
#include <cmath>
#include <limits>

namespace orvane::platform {

template <>
std::optional<bool> readAs<bool>(const JSON& value) {
    if (const auto flag = value.boolean()) return flag;
    if (const auto number = value.number()) {
        if (*number == 0) return false;
        if (*number == 1) return true;
    }
    if (const std::string* written = value.string()) {
        const std::string word = text::lowercased(*written);
        if (word == "true" || word == "yes" || word == "1") return true;
        if (word == "false" || word == "no" || word == "0") return false;
    }
    return std::nullopt;
}

template <>
std::optional<int> readAs<int>(const JSON& value) {
    const std::string* written = value.string();
    const auto whole = written ? text::decimalInteger(text::trimmed(*written)) : value.integer();
    if (!whole) return std::nullopt;
    return static_cast<int>(
        std::clamp<std::int64_t>(*whole, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

template <>
std::optional<double> readAs<double>(const JSON& value) {
    const std::string* written = value.string();
    const auto number = written ? text::decimalNumber(text::trimmed(*written)) : value.number();
    return number && std::isfinite(*number) ? number : std::nullopt;
}

/// A number is read as its digits: an event may be called 2024.
template <>
std::optional<std::string> readAs<std::string>(const JSON& value) {
    if (const std::string* text = value.string()) return *text;
    if (const auto whole = value.integer()) return std::to_string(*whole);
    return value.number() ? std::optional(value.dump()) : std::nullopt;
}

template <>
std::optional<JSON> readAs<JSON>(const JSON& value) {
    return value.isObject() ? std::optional(value) : std::nullopt;
}

JSON SettingDescription::defaultValue() const {
    return std::visit(
        [](const auto& value) -> JSON {
            if constexpr (std::is_same_v<std::decay_t<decltype(value)>, std::monostate>)
                return {};
            else
                return JSON(value);
        },
        readerDefault);
}

bool SettingDescription::understands(const JSON& value) const {
    switch (kind) {
    case Kind::boolean:
        return readAs<bool>(value).has_value();
    case Kind::integer:
        return readAs<int>(value).has_value();
    case Kind::number:
        return readAs<double>(value).has_value();
    case Kind::text:
        return readAs<std::string>(value).has_value();
    case Kind::map:
        return value.isObject();
    }
    return false;
}

std::optional<std::size_t> SettingDescription::choiceIndex(std::string_view text) const {
    const auto found = details.choicesInAnyCase
                           ? std::ranges::find(choices, text::lowercased(text::trimmed(text)),
                                               [](std::string_view one) { return text::lowercased(one); })
                           : std::ranges::find(choices, text);
    return found == choices.end() ? std::nullopt
                                  : std::optional(static_cast<std::size_t>(found - choices.begin()));
}

std::vector<SettingDescription::Offer> SettingDescription::offers() const {
    if (details.offered != nullptr) return details.offered();
    std::vector<Offer> all;
    if (details.choiceName == nullptr) return all;
    for (std::size_t i = 0; i < choices.size(); ++i) all.push_back({details.choiceName(i), choices[i]});
    return all;
}

std::string_view name(SettingDescription::Kind kind) {
    static constexpr std::array<std::string_view, 5> names{"boolean", "integer", "number", "text", "map"};
    return names.at(static_cast<std::size_t>(kind));
}

} // namespace orvane::platform
