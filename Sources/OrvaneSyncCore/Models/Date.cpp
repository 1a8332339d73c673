#include "OrvaneSyncCore/Models/Date.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <iterator>
#include <mutex>

namespace orvane {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr int firstYear = 1;
constexpr int lastYear = 9999;

std::int64_t wholeSeconds(Date date) { return std::chrono::floor<seconds>(date).time_since_epoch().count(); }

std::tm localTime(std::int64_t sinceEpoch) {
    const auto time = static_cast<std::time_t>(sinceEpoch);
    std::tm local{};
    localtime_r(&time, &local);
    return local;
}

/// `mktime` behind a lock: it reads the time zone again with every call, under a lock of the C library that
/// race checkers do not know. They know this one.
std::int64_t secondsFromLocal(std::tm& local) {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    return std::mktime(&local);
}

/// `count` digits from the front of the text.
std::optional<int> takeNumber(std::string_view& text, std::size_t count) {
    if (text.size() < count) return std::nullopt;
    int value = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (text[i] < '0' || text[i] > '9') return std::nullopt;
        value = value * 10 + (text[i] - '0');
    }
    text.remove_prefix(count);
    return value;
}

bool take(std::string_view& text, char c) {
    if (!text.starts_with(c)) return false;
    text.remove_prefix(1);
    return true;
}

/// "." and digits; the first three count.
std::optional<milliseconds> takeFraction(std::string_view& text) {
    if (!take(text, '.')) return milliseconds{0};
    int value = 0;
    std::size_t count = 0;
    while (const auto digit = takeNumber(text, 1)) {
        if (count < 3) value = value * 10 + *digit;
        ++count;
    }
    if (count == 0) return std::nullopt;
    for (; count < 3; ++count) value *= 10;
    return milliseconds{value};
}

std::optional<seconds> takeZone(std::string_view& text) {
    if (take(text, 'Z')) return seconds{0};
    int sign = 1;
    if (take(text, '-'))
        sign = -1;
    else if (!take(text, '+'))
        return std::nullopt;
    const auto hours = takeNumber(text, 2);
    take(text, ':');
    const auto minutes = takeNumber(text, 2);
    if (!hours || !minutes || *hours > 23 || *minutes > 59) return std::nullopt;
    return seconds{sign * (*hours * 3600 + *minutes * 60)};
}

std::optional<std::chrono::sys_days> takeDay(std::string_view& text) {
    const auto year = takeNumber(text, 4);
    if (!year || !take(text, '-')) return std::nullopt;
    const auto month = takeNumber(text, 2);
    if (!month || !take(text, '-')) return std::nullopt;
    const auto day = takeNumber(text, 2);
    if (!day) return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year{*year},
                                           std::chrono::month{static_cast<unsigned>(*month)},
                                           std::chrono::day{static_cast<unsigned>(*day)}};
    if (!date.ok()) return std::nullopt;
    return std::chrono::sys_days{date};
}

std::optional<seconds> takeClock(std::string_view& text) {
    const auto hour = takeNumber(text, 2);
    if (!hour || !take(text, ':')) return std::nullopt;
    const auto minute = takeNumber(text, 2);
    if (!minute || !take(text, ':')) return std::nullopt;
    const auto second = takeNumber(text, 2);
    constexpr int leapSecond = 60;
    if (!second || *hour > 23 || *minute > 59 || *second > leapSecond) return std::nullopt;
    return seconds{*hour * 3600 + *minute * 60 + *second};
}

/// Day, "T" and time of day, read as UTC.
std::optional<Date> takeMoment(std::string_view& text) {
    const auto day = takeDay(text);
    if (!day || !take(text, 'T')) return std::nullopt;
    const auto clock = takeClock(text);
    if (!clock) return std::nullopt;
    return Date{*day} + *clock;
}

} // namespace

std::optional<Date> calendar::date(const Fields& local) {
    if (local.year < firstYear || local.year > lastYear) return std::nullopt;
    std::tm time{};
    time.tm_year = local.year - 1900;
    time.tm_mon = local.month - 1;
    time.tm_mday = local.day;
    time.tm_hour = local.hour;
    time.tm_min = local.minute;
    time.tm_sec = local.second;
    time.tm_isdst = -1;
    return Date{seconds{secondsFromLocal(time)}};
}

std::optional<Date> calendar::noon(const Day& day) {
    constexpr int hour = 12;
    return date({day.year, day.month, day.day, hour, 0, 0});
}

calendar::Fields calendar::fields(Date date) {
    const std::tm local = localTime(wholeSeconds(date));
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

std::optional<Date> calendar::withClockOf(Date date, int zoneMinutes) {
    const Date shown = date + std::chrono::minutes(zoneMinutes);
    const auto day = std::chrono::floor<std::chrono::days>(shown);
    const std::chrono::year_month_day ymd{day};
    const std::chrono::hh_mm_ss clock{shown - day};
    return calendar::date({static_cast<int>(ymd.year()), static_cast<int>(static_cast<unsigned>(ymd.month())),
                           static_cast<int>(static_cast<unsigned>(ymd.day())),
                           static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                           static_cast<int>(clock.seconds().count())});
}

Date calendar::startOfDay(Date date) {
    const std::int64_t given = wholeSeconds(date);
    std::tm local = localTime(given);
    const int day = local.tm_mday;
    local.tm_hour = local.tm_min = local.tm_sec = 0;
    local.tm_isdst = -1;
    std::int64_t start = secondsFromLocal(local);
    // If the clock jumps over midnight, the day begins at the first instant that exists. mktime may return an
    // instant before or after the jump.
    constexpr std::int64_t halfHour = 1800;
    while (localTime(start).tm_mday != day && start < given) start += halfHour;
    // If midnight comes twice, mktime returns either of the two, depending on its earlier calls.
    while (localTime(start - halfHour).tm_mday == day) start -= halfHour;
    return Date{seconds{start}};
}

Date calendar::DayStarts::of(Date date) {
    const auto after = lasts_.upper_bound(date);
    if (after != lasts_.begin())
        if (const auto& [start, last] = *std::prev(after); date <= last) return start;
    const Date start = startOfDay(date);
    // Absent or of another day where the clock jumps over midnight.
    const Fields day = fields(date);
    const auto evening = calendar::date({day.year, day.month, day.day, 23, 59, 59});
    const bool isOfDay = evening && fields(*evening).day == day.day;
    return lasts_.insert_or_assign(start, isOfDay ? std::max(date, *evening) : date).first->first;
}

std::optional<Date> calendar::DayStarts::of(const Day& day) {
    const auto [found, isNew] = named_.try_emplace(day);
    if (isNew)
        if (const auto date = noon(day)) found->second = of(*date);
    return found->second;
}

std::string iso8601(Date date) {
    const auto day = std::chrono::floor<std::chrono::days>(date);
    const std::chrono::year_month_day ymd{day};
    const std::chrono::hh_mm_ss clock{date - day};
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d", static_cast<int>(ymd.year()),
                  static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    std::string result = text.data();
    if (const auto fraction = clock.subseconds().count(); fraction != 0) {
        std::snprintf(text.data(), text.size(), ".%03d", static_cast<int>(fraction));
        result += text.data();
    }
    return result + "Z";
}

std::optional<Date> dateFromISO8601(std::string_view text) {
    const auto moment = takeMoment(text);
    const auto fraction = moment ? takeFraction(text) : std::nullopt;
    const auto zone = fraction ? takeZone(text) : std::nullopt;
    if (!zone || !text.empty()) return std::nullopt;
    return *moment + *fraction - *zone;
}

std::optional<int> zoneMinutesFromISO8601(std::string_view text) {
    const bool isDate = takeMoment(text) && takeFraction(text);
    if (!isDate || text == "Z") return std::nullopt;
    const auto zone = takeZone(text);
    if (!zone || !text.empty()) return std::nullopt;
    return static_cast<int>(zone->count() / 60);
}

std::optional<Date> dateFromLocalISO8601(std::string_view text) {
    const auto moment = takeMoment(text);
    return moment && text.empty() ? calendar::withClockOf(*moment, 0) : std::nullopt;
}

} // namespace orvane
