#include "FCPXMLKit/model/Values.h"

#include "FCPXMLKit/model/Digits.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace orvane::fcpxml {

namespace {

constexpr std::size_t mostDecimals = 10;
constexpr double smallestFormattedDecibels = 0.00001;

/// Digits with an optional fraction; false when a required digit is missing.
bool takeDigits(std::string_view& text) {
    const auto end = std::find_if_not(text.begin(), text.end(), isDigit);
    if (end == text.begin()) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.begin()));
    return true;
}

bool isDecibelNumber(std::string_view text) {
    if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
    if (!takeDigits(text)) return false;
    if (text.starts_with('.')) {
        text.remove_prefix(1);
        if (!takeDigits(text)) return false;
    }
    if (text.starts_with("e+") || text.starts_with("e-")) {
        text.remove_prefix(2);
        if (!takeDigits(text)) return false;
    }
    return text.empty();
}

std::string capitalised(std::string text) {
    if (!text.empty() && text.front() >= 'a' && text.front() <= 'z')
        text.front() = static_cast<char>(text.front() - 'a' + 'A');
    return text;
}

/// A standard name, also with "-" and digits after it, is capitalised; any other text is returned unchanged.
template <std::size_t count>
std::string roleDescription(const std::string& text,
                            const std::array<std::string_view, count>& standardNames) {
    for (const std::string_view name : standardNames) {
        if (!text.starts_with(name)) continue;
        std::string_view tag = std::string_view(text).substr(name.size());
        if (tag.empty()) return capitalised(text);
        if (!tag.starts_with('-')) continue;
        tag.remove_prefix(1);
        if (takeDigits(tag) && tag.empty()) return capitalised(text);
    }
    return text;
}

template <std::size_t count>
std::string describe(const Role& role, const std::array<std::string_view, count>& standardNames) {
    std::string name = roleDescription(role.name(), standardNames);
    const auto subrole = role.subrole();
    if (!subrole) return name;
    const std::string below = roleDescription(*subrole, standardNames);
    return below == name + "-1" ? name : name + " (" + below + ")";
}

/// Keeps `length` characters of a decimal number with a point; rounds up if a 5 follows.
void roundHalfUp(std::string& number, std::size_t length) {
    if (number.size() <= length) return;
    bool carry = number[length] >= '5';
    number.resize(length);
    for (std::size_t i = length; carry && i-- > 0;) {
        if (number[i] == '.') continue;
        if (!isDigit(number[i])) {
            number.insert(i + 1, 1, '1');
            return;
        }
        carry = number[i] == '9';
        number[i] = carry ? '0' : static_cast<char>(number[i] + 1);
    }
    if (carry) number.insert(0, 1, '1');
}

std::optional<int> takeNumber(std::string_view& text, std::size_t digits) {
    if (text.size() < digits ||
        !std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(digits), isDigit))
        return std::nullopt;
    int value = 0;
    std::from_chars(text.data(), text.data() + digits, value);
    text.remove_prefix(digits);
    return value;
}

bool take(std::string_view& text, char c) {
    if (!text.starts_with(c)) return false;
    text.remove_prefix(1);
    return true;
}

} // namespace

std::optional<Decibels> Decibels::fromString(std::string_view text) {
    if (!text.ends_with("dB")) return std::nullopt;
    text.remove_suffix(2);
    if (!isDecibelNumber(text)) return std::nullopt;
    if (text.starts_with('+')) text.remove_prefix(1);
    double value = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), value).ec != std::errc{}) return std::nullopt;
    return Decibels{value};
}

std::optional<DateTime> DateTime::fromString(std::string_view text) {
    using namespace std::chrono;
    const auto y = takeNumber(text, 4);
    if (!y || !take(text, '-')) return std::nullopt;
    const auto mo = takeNumber(text, 2);
    if (!mo || !take(text, '-')) return std::nullopt;
    const auto d = takeNumber(text, 2);
    if (!d || !take(text, ' ')) return std::nullopt;
    const auto h = takeNumber(text, 2);
    if (!h || !take(text, ':')) return std::nullopt;
    const auto mi = takeNumber(text, 2);
    if (!mi || !take(text, ':')) return std::nullopt;
    const auto s = takeNumber(text, 2);
    if (!s || !take(text, ' ')) return std::nullopt;
    const int sign = take(text, '-') ? -1 : 1;
    if (sign > 0) take(text, '+');
    const auto zoneHours = takeNumber(text, 2), zoneMinutes = takeNumber(text, 2);
    const year_month_day day{year{*y}, month{static_cast<unsigned>(*mo)},
                             std::chrono::day{static_cast<unsigned>(*d)}};
    if (!zoneHours || !zoneMinutes || !text.empty() || !day.ok() || *h > 23 || *mi > 59 || *s > 59)
        return std::nullopt;
    const minutes zone{sign * (*zoneHours * 60 + *zoneMinutes)};
    return DateTime{sys_days{day} + hours{*h} + minutes{*mi} + seconds{*s} - zone, zone};
}

std::string Role::name() const { return id.substr(0, id.find('.')); }

std::optional<std::string> Role::subrole() const {
    const auto point = id.find('.');
    if (point == std::string::npos || id.find('.', point + 1) != std::string::npos) return std::nullopt;
    return id.substr(point + 1);
}

std::string AudioRole::description() const {
    static constexpr std::array<std::string_view, 3> names{"dialogue", "effects", "music"};
    return describe(*this, names);
}

std::string VideoRole::description() const {
    static constexpr std::array<std::string_view, 2> names{"titles", "video"};
    return describe(*this, names);
}

std::string attributeText(int value) { return std::to_string(value); }
std::string attributeText(std::int64_t value) { return std::to_string(value); }

std::string attributeText(double value) {
    if (!std::isfinite(value)) return "0"; // the format has no such number
    // The shortest form that reads back equal has the digits that people expect: 0.3 and not
    // 0.299999999999999988898.
    std::array<char, 400> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed).ptr;
    std::string result(text.data(), end);
    if (const auto point = result.find('.'); point != std::string::npos) {
        roundHalfUp(result, point + 1 + mostDecimals);
        result.erase(result.find_last_not_of('0') + 1);
        if (result.ends_with('.')) result.pop_back();
    }
    return result == "-0" ? "0" : result;
}

std::string attributeText(const Decibels& decibels) {
    if (std::abs(decibels.value) > smallestFormattedDecibels) return attributeText(decibels.value) + "dB";
    std::array<char, 64> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), decibels.value).ptr;
    return std::string(text.data(), end) + "dB";
}

std::string attributeText(const DateTime& value) {
    using namespace std::chrono;
    const minutes zone = value.timeZone.value_or(minutes{0});
    const sys_seconds local = value.date + zone;
    const auto day = floor<days>(local);
    const year_month_day ymd{day};
    const hh_mm_ss clock{local - day};
    const auto offset = static_cast<int>(std::abs(zone.count()));
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d:%02d %c%02d%02d",
                  static_cast<int>(ymd.year()), static_cast<unsigned>(ymd.month()),
                  static_cast<unsigned>(ymd.day()), static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()),
                  zone.count() < 0 ? '-' : '+', offset / 60, offset % 60);
    return text.data();
}

std::string attributeText(const VideoColorSpace& value) {
    return value.name.empty() ? value.value : value.value + " (" + value.name + ")";
}

std::string_view attributeText(SrcEnable value) {
    static constexpr std::array<std::string_view, 4> texts{"all", "audio", "video", "none"};
    return texts.at(static_cast<std::size_t>(value));
}

} // namespace orvane::fcpxml
