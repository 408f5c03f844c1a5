// What this part has once in a process: its limits, its clock, and what it has to say.
#include "host/standard_error.h"
#include "record-manager/server/connection.h"

#include <cstdio>
#include <cstring>
#include <ctime>
#include <pthread.h>

namespace wbtrv {

const Limits *serverLimits = nullptr;

int64_t Now_us()
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1000000 + now.tv_nsec / 1000;
}

namespace {

pthread_mutex_t reportMutex = PTHREAD_MUTEX_INITIALIZER;
constexpr int64_t reportPause_us = 10000000;

} // namespace

void Report(const char *directory, const char *text)
{
    static char last[512];
    static int64_t lastAt_us = 0;
    char line[512] = "";
    if (snprintf(line, sizeof line - 1, "wbtrv32: %s/%s: %s", directory, serverName, text) < 0) return;
    for (char *at = line; *at != 0; ++at) {
        if (*at == '\n') *at = ' ';
    }
    line[strlen(line)] = '\n';
    pthread_mutex_lock(&reportMutex);
    const int64_t now = Now_us();
    const bool again = strcmp(line, last) == 0 && now - lastAt_us < reportPause_us;
    if (!again) {
        memcpy(last, line, sizeof last);
        lastAt_us = now;
    }
    pthread_mutex_unlock(&reportMutex);
    if (!again) host::WriteToStandardError(line, strlen(line));
}

} // namespace wbtrv
