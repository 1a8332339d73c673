#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// An instant, to the millisecond.
using Date = std::chrono::sys_time<std::chrono::milliseconds>;

/// The user's calendar: the Gregorian calendar in the machine's time zone.
namespace calendar {

struct Fields {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
};

/// Out-of-range days and months carry over (31 February is 2 or 3 March). Nothing beyond the years 1 to 9999.
std::optional<Date> date(const Fields& local);
Fields fields(Date date);
/// The first instant of that day in the user's time zone.
Date startOfDay(Date date);

} // namespace calendar

/// ISO 8601 in UTC, such as 2024-05-17T10:00:00Z; with milliseconds where there are any.
std::string iso8601(Date date);
/// An internet date and time with or without fractional seconds, and a zone ("Z", "+02:00" or "+0200").
std::optional<Date> dateFromISO8601(std::string_view text);
/// yyyy-MM-dd'T'HH:mm:ss without a zone, in the user's calendar.
std::optional<Date> dateFromLocalISO8601(std::string_view text);

} // namespace orvane
