#include "src/platform/platform.h"

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace vark {

namespace {

// TT.MM.JJJJ of a day that exists; anything else leaves the machine's clock in force.
bool ReadOverride(CalendarDate &date)
{
    const char *text = secure_getenv("VARK_HEUTE");
    if (text == nullptr || std::strlen(text) != 10 || text[2] != '.' || text[5] != '.') return false;
    CalendarDate read{};
    const auto number = [text](int from, int to, int &value) {
        const auto result = std::from_chars(text + from, text + to, value);
        return result.ec == std::errc() && result.ptr == text + to && value > 0;
    };
    if (!number(0, 2, read.Day) || !number(3, 5, read.Month) || !number(6, 10, read.Year)) return false;
    // A day that does not exist comes back from the calendar as another one.
    std::tm fields{};
    fields.tm_year = read.Year - 1900;
    fields.tm_mon = read.Month - 1;
    fields.tm_mday = read.Day;
    fields.tm_hour = 12;
    if (timegm(&fields) == static_cast<std::time_t>(-1)) return false;
    if (fields.tm_mday != read.Day || fields.tm_mon != read.Month - 1) return false;
    date = read;
    return true;
}

} // namespace

CalendarDate SystemToday()
{
    CalendarDate date{};
    if (ReadOverride(date)) return date;
    const std::time_t now = std::time(nullptr);
    std::tm fields{};
    localtime_r(&now, &fields);
    return {fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday};
}

} // namespace vark
