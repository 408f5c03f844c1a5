#include "src/platform/platform.h"

#include <charconv>
#include <chrono>
#include <cstring>

namespace vark {

namespace {

// TT.MM.JJJJ of a day that exists; anything else leaves the machine's clock in force.
bool ReadDay(const char *text, CalendarDate &date)
{
    if (text == nullptr || std::strlen(text) != 10 || text[2] != '.' || text[5] != '.') return false;
    const auto number = [text](int from, int to, int &value) {
        const auto result = std::from_chars(text + from, text + to, value);
        return result.ec == std::errc() && result.ptr == text + to && value > 0;
    };
    CalendarDate read{};
    if (!number(0, 2, read.Day) || !number(3, 5, read.Month) || !number(6, 10, read.Year)) return false;
    const std::chrono::year_month_day day{std::chrono::year{read.Year},
                                          std::chrono::month{static_cast<unsigned>(read.Month)},
                                          std::chrono::day{static_cast<unsigned>(read.Day)}};
    if (!day.ok()) return false;
    date = read;
    return true;
}

} // namespace

CalendarDate SystemToday()
{
    CalendarDate date{};
    return ReadDay(EnvironmentText("VARK_HEUTE"), date) ? date : MachineToday();
}

} // namespace vark
