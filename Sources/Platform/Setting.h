#pragma once

#include "Platform/JSON.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace orvane::platform {

/// One key of the settings store, whatever its type: everything that lists, presets, checks and help need.
struct SettingDescription {
    enum class Kind { boolean, integer, number, text, map };
    using Default = std::variant<std::monostate, bool, std::int64_t, double, std::string_view>;
    struct Range {
        double lowest, highest; ///< both included
    };
    /// One of the values that the settings screen offers, with its label.
    struct Offer {
        std::string text;
        JSON value;
    };
    struct HelpGroup {
        int order = 0; ///< among the groups
        std::string_view title{};
    };
    /// The place of a setting in the help of the commands that it changes the most.
    struct HelpPlace {
        HelpGroup group{};
        int order = 0; ///< within the group, from 1; 0: it is not there
    };
    /// Properties that not every setting has.
    struct Details {
        std::optional<Range> range{}; ///< of a number; a value outside is not accepted
        /// For a text: why the setting does not accept it; empty if it does.
        std::string (*whyNot)(std::string_view text) = nullptr;
        /// The stored text of a choice is accepted in any case and with blanks around it.
        bool choicesInAnyCase = false;
        /// Without a stored value, commands use different defaults; the default here is what the settings
        /// screen shows.
        bool absenceVaries = false;
        /// The default also applies to callers that read a boolean by the key alone.
        bool isRegistered = false;
        // On the settings screen.
        std::string_view label{}; ///< empty: it has no row there
        std::string_view hint{};
        std::string_view unit{}; ///< shown after a number, with its leading blank
        int decimals = 0;        ///< of a number, at least
        std::string (*choiceName)(std::size_t choice) = nullptr; ///< the labels of the choices
        /// The values that it offers, unless these are the choices in their order.
        std::vector<Offer> (*offered)() = nullptr;
        HelpPlace changed{};
    };

    std::string_view key;
    Kind kind = Kind::text;
    Default readerDefault;                       ///< none where absence has a meaning of its own
    std::span<const std::string_view> choices{}; ///< the texts that it takes; empty for any text
    std::string_view family{};                   ///< its heading in lists
    std::string_view meaning{};                  ///< one line for people, at most 80 characters
    Details details{};

    /// Null when there is none.
    JSON defaultValue() const;
    /// Whether the value is of this kind, by the rules of `readAs`. The details are not checked.
    bool understands(const JSON& value) const;
    bool isInRange(double number) const {
        return !details.range || (number >= details.range->lowest && number <= details.range->highest);
    }
    /// The place of the text among the choices.
    std::optional<std::size_t> choiceIndex(std::string_view text) const;
    /// What the settings screen offers; empty where any value may be typed.
    std::vector<Offer> offers() const;
};

/// "boolean", "integer", "number", "text" or "map".
std::string_view name(SettingDescription::Kind kind);

/// A stored value as a type of a setting; nothing where it is of another kind. A boolean can also be read
/// from the numbers 0 and 1 and the texts "true"/"yes"/"1" and "false"/"no"/"0"; a number also from its text,
/// and a text also from a number. An integer is limited to the range of its type.
template <class T>
std::optional<T> readAs(const JSON& value);
template <>
std::optional<bool> readAs<bool>(const JSON& value);
template <>
std::optional<int> readAs<int>(const JSON& value);
template <>
std::optional<double> readAs<double>(const JSON& value);
template <>
std::optional<std::string> readAs<std::string>(const JSON& value);
template <>
std::optional<JSON> readAs<JSON>(const JSON& value); ///< a map

/// The key of a setting together with its type: `bool`, `int`, `double`, `std::string`, `JSON` for a map, or
/// an enumeration whose cases are the choices in their order.
template <class T>
struct Setting : SettingDescription {
    /// For a setting without a default.
    constexpr explicit Setting(
        std::string_view theKey,
        const std::optional<T>& standard = std::nullopt) requires(!std::is_enum_v<T> &&
                                                                  !std::is_same_v<T, std::string>)
        : SettingDescription{theKey, kindOf(), defaultOf(standard)} {}
    constexpr explicit Setting(
        std::string_view theKey, std::optional<std::string_view> standard = std::nullopt,
        std::span<const std::string_view> theChoices = {}) requires std::is_same_v<T, std::string>
        : SettingDescription{theKey, Kind::text, defaultOf(standard), theChoices} {}
    constexpr Setting(std::string_view theKey, T standard,
                      std::span<const std::string_view> theChoices) requires std::is_enum_v<T>
        : SettingDescription{theKey, Kind::text, theChoices[static_cast<std::size_t>(standard)], theChoices} {
    }

    /// Nothing for a value of another kind or out of range, and for a text that the setting does not accept.
    std::optional<T> read(const JSON& value) const {
        if constexpr (std::is_enum_v<T>) {
            const auto text = readAs<std::string>(value);
            const auto index = text ? choiceIndex(*text) : std::nullopt;
            return index ? std::optional(static_cast<T>(*index)) : std::nullopt;
        } else {
            auto read = readAs<T>(value);
            if constexpr (std::is_same_v<T, int> || std::is_same_v<T, double>)
                if (read && !isInRange(*read)) return std::nullopt;
            if constexpr (std::is_same_v<T, std::string>)
                if (read && details.whyNot != nullptr && !details.whyNot(*read).empty()) return std::nullopt;
            return read;
        }
    }
    /// The default, or an empty value where there is none. Allocates only for a long text, because readers of
    /// many clips ask each time.
    T standard() const {
        if constexpr (std::is_same_v<T, JSON>) {
            return {};
        } else {
            using Held =
                std::conditional_t<std::is_same_v<T, int>, std::int64_t,
                                   std::conditional_t<std::is_same_v<T, bool> || std::is_same_v<T, double>, T,
                                                      std::string_view>>;
            const auto* held = std::get_if<Held>(&readerDefault);
            if (held == nullptr) return {};
            if constexpr (std::is_enum_v<T>)
                return static_cast<T>(std::ranges::find(choices, *held) - choices.begin());
            else
                return T(*held);
        }
    }
    JSON write(const T& value) const {
        if constexpr (std::is_enum_v<T>)
            return choices[static_cast<std::size_t>(value)];
        else
            return JSON(value);
    }

  private:
    static constexpr Kind kindOf() {
        if constexpr (std::is_same_v<T, bool>) return Kind::boolean;
        if constexpr (std::is_same_v<T, int>) return Kind::integer;
        if constexpr (std::is_same_v<T, double>) return Kind::number;
        return Kind::map;
    }
    template <class V>
    static constexpr Default defaultOf(const std::optional<V>& standard) {
        if constexpr (std::is_same_v<V, int>) {
            if (standard) return std::int64_t{*standard};
        } else if constexpr (!std::is_same_v<V, JSON>) {
            if (standard) return *standard;
        }
        return {};
    }
};

} // namespace orvane::platform
