#pragma once

#include <chrono>
#include <compare>
#include <map>
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

/// Out-of-range days and months carry over (31 February is 2 or 3 March). Absent outside the years 1 to 9999.
std::optional<Date> date(const Fields& local);

struct Day {
    int year = 0, month = 0, day = 0;
    auto operator<=>(const Day&) const = default;
};
/// As `date`, at twelve o'clock.
std::optional<Date> noon(const Day& day);
Fields fields(Date date);
/// The moment at which a clock in the user's time zone shows what a clock that is `zoneMinutes` ahead of UTC
/// shows at `date`.
std::optional<Date> withClockOf(Date date, int zoneMinutes);
/// The first instant of that day in the user's time zone.
Date startOfDay(Date date);

/// Starts of days, for a caller that asks for thousands of dates on few days. The system reads the time
/// zone's file at each request, so it is asked little more than once for each day. One thread at a time.
class DayStarts {
  public:
    /// As `startOfDay`.
    Date of(Date date);
    /// The start of that day, taken from its noon.
    std::optional<Date> of(const Day& day);

  private:
    std::map<Date, Date> lasts_; ///< by start of a day: its last second, or the latest that was asked for
    std::map<Day, std::optional<Date>> named_;
};

} // namespace calendar

/// ISO 8601 in UTC, such as 2024-05-17T10:00:00Z; milliseconds are written if there are any.
std::string iso8601(Date date);
/// An internet date and time with or without fractional seconds, and a zone ("Z", "+02:00" or "+0200").
std::optional<Date> dateFromISO8601(std::string_view text);
/// By how many minutes the zone of such a text is ahead of UTC; absent for "Z", which does not say where the
/// text was written.
std::optional<int> zoneMinutesFromISO8601(std::string_view text);
/// yyyy-MM-dd'T'HH:mm:ss without a zone, in the user's calendar.
std::optional<Date> dateFromLocalISO8601(std::string_view text);

} // namespace orvane
