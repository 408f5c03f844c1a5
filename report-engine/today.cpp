#include "report-engine/today.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace rs {

void TodayText(char *out)
{
    const char *given = secure_getenv("VARK_HEUTE");
    if (given != nullptr && std::strlen(given) == 10 && given[2] == '.' && given[5] == '.' &&
        std::strspn(given, "0123456789.") == 10) {
        std::memcpy(out, given, 11);
        return;
    }
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    char text[40];
    std::snprintf(text, sizeof text, "%02d.%02d.%04d", local.tm_mday, local.tm_mon + 1, local.tm_year + 1900);
    std::memcpy(out, text, 10);
    out[10] = 0;
}

} // namespace rs
