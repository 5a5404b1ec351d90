// Days and times of the Gregorian calendar, also before it was in use, as seconds and as text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace host {

// A month of 1 to 12 and so on; fields out of their range move the others: month 13 is January.
struct CivilTime {
    std::int64_t year = 1904;
    std::int64_t month = 1, day = 1;  // from 1
    std::int64_t hour = 0, minute = 0, second = 0;
};

// Since January 1, 1904, 0:00:00.
std::int64_t SecondsOf(const CivilTime& time);

CivilTime CivilTimeOf(std::int64_t seconds);

// Whether every field is in its range, and the day in its month.
bool IsSound(const CivilTime& time);

std::int32_t DayOfWeek(const CivilTime& time);  // 1 is Sunday
std::int32_t DayOfYear(const CivilTime& time);  // from 1

// Weeks begin on Sunday; January 1 is in week 1.
std::int32_t WeekOfYear(const CivilTime& time);

// Hours that the system's local time was ahead of Greenwich at a local time.
double LocalOffset(const CivilTime& time);

// A moment, in seconds since 1970 in Greenwich, in the system's local time.
CivilTime LocalTimeOf(std::int64_t moment);

// --- As text, in English, the same on every machine -------------------------------------------

std::string SqlDate(const CivilTime& time);          // 2026-11-22
std::string SqlDateTime(const CivilTime& time);      // 2026-11-22 13:05:09
std::string ShortDate(const CivilTime& time);        // 11/22/2026
std::string AbbreviatedDate(const CivilTime& time);  // Nov 22, 2026
std::string LongDate(const CivilTime& time);         // Sunday, November 22, 2026
std::string ShortTime(const CivilTime& time);        // 1:05 PM
std::string LongTime(const CivilTime& time);         // 1:05:09 PM

// "2026-11-22", and with a time if `withTime`; nothing for any other text and for days that are none.
std::optional<CivilTime> ReadSqlDate(std::string_view text, bool withTime);

// A date as people write it: 2026-11-22, 11/22/2026, 22.11.2026, November 22, 2026, 22 Nov 2026,
// each with a time behind it if it has one: 13:05, 13:05:09, 1:05 PM. Years of two digits are those
// from 1969 to 2068.
std::optional<CivilTime> ReadDate(std::string_view text);

}  // namespace host
