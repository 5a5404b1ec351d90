// Days counted from a year of months that begins in March, so that leap days come last.
#include "host/framework/CivilTime.h"

#include <ctime>

namespace host {

namespace {

constexpr std::int64_t kDaySeconds = 86400;
constexpr std::int64_t kDaysTo1904 = 695361;  // from March 1 of year 0
constexpr std::int64_t kSecondsTo1970 = 2082844800;

std::int64_t FloorDivide(std::int64_t a, std::int64_t b) { return a / b - (a % b < 0); }

// Days from March 1 of year 0; the year begins in March here, so that the leap day is its last.
std::int64_t DaysTo(std::int64_t year, std::int64_t month, std::int64_t day) {
    const std::int64_t months = year * 12 + month - 3;  // from March of year 0
    const std::int64_t years = FloorDivide(months, 12), inYear = months - years * 12;
    const std::int64_t leaps = FloorDivide(years, 4) - FloorDivide(years, 100) + FloorDivide(years, 400);
    return years * 365 + leaps + (inYear * 153 + 2) / 5 + day - 1;
}

}  // namespace

std::int64_t SecondsOf(const CivilTime& time) {
    const std::int64_t days = DaysTo(time.year, time.month, time.day) - kDaysTo1904;
    return days * kDaySeconds + time.hour * 3600 + time.minute * 60 + time.second;
}

CivilTime CivilTimeOf(std::int64_t seconds) {
    const std::int64_t day = FloorDivide(seconds, kDaySeconds), rest = seconds - day * kDaySeconds;
    const std::int64_t days = day + kDaysTo1904;
    const std::int64_t era = FloorDivide(days, 146097), inEra = days - era * 146097;
    const std::int64_t years = (inEra - inEra / 1460 + inEra / 36524 - inEra / 146096) / 365;
    const std::int64_t inYear = inEra - (years * 365 + years / 4 - years / 100);
    const std::int64_t month = (inYear * 5 + 2) / 153;  // from March
    CivilTime time;
    time.day = inYear - (month * 153 + 2) / 5 + 1;
    time.month = month < 10 ? month + 3 : month - 9;
    time.year = era * 400 + years + (time.month < 3);
    time.hour = rest / 3600;
    time.minute = rest / 60 % 60;
    time.second = rest % 60;
    return time;
}

bool IsSound(const CivilTime& time) {
    const CivilTime same = CivilTimeOf(SecondsOf(time));
    return same.year == time.year && same.month == time.month && same.day == time.day && same.hour == time.hour &&
           same.minute == time.minute && same.second == time.second;
}

// January 1, 1904 was a Friday.
std::int32_t DayOfWeek(const CivilTime& time) {
    constexpr std::int64_t kFriday = 5;
    const std::int64_t days = FloorDivide(SecondsOf(time), kDaySeconds) + kFriday;
    return static_cast<std::int32_t>(days - FloorDivide(days, 7) * 7) + 1;
}

std::int32_t DayOfYear(const CivilTime& time) {
    return static_cast<std::int32_t>(DaysTo(time.year, time.month, time.day) - DaysTo(time.year, 1, 1)) + 1;
}

std::int32_t WeekOfYear(const CivilTime& time) {
    const std::int32_t firstDay = DayOfWeek({time.year});
    return (DayOfYear(time) + firstDay - 2) / 7 + 1;
}

double LocalOffset(const CivilTime& time) {
    std::tm fields{};
    fields.tm_year = static_cast<int>(time.year - 1900);
    fields.tm_mon = static_cast<int>(time.month - 1);
    fields.tm_mday = static_cast<int>(time.day);
    fields.tm_hour = static_cast<int>(time.hour);
    fields.tm_min = static_cast<int>(time.minute);
    fields.tm_sec = static_cast<int>(time.second);
    fields.tm_isdst = -1;
    std::mktime(&fields);
    return static_cast<double>(fields.tm_gmtoff) / 3600;
}

CivilTime LocalTimeOf(std::int64_t moment) {
    const std::time_t time = moment;
    std::tm fields{};
    localtime_r(&time, &fields);
    return CivilTimeOf(moment + kSecondsTo1970 + fields.tm_gmtoff);
}

}  // namespace host
