#include "report-engine/helper.h"

#include "host/helpers.h"
#include "report-engine/complain.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace rs {

int longestSilence_ms = 70'000;

namespace {

constexpr int step_ms = 100; // between two looks at what the person wants

// What a helper has said: numbers are taken out as they come.
struct Hearing {
    char *Said;
    size_t Size;
    size_t Length;
    int64_t Done;
};

void TakeNumbers(Hearing &hearing)
{
    char *end = nullptr;
    while (hearing.Length > 0 && hearing.Said[0] == '+' &&
           (end = static_cast<char *>(std::memchr(hearing.Said, '\n', hearing.Length))) != nullptr) {
        int64_t number = 0;
        for (const char *digit = hearing.Said + 1; digit < end && *digit >= '0' && *digit <= '9'; ++digit) {
            number = number * 10 + (*digit - '0');
        }
        hearing.Done = number;
        const auto used = static_cast<size_t>(end + 1 - hearing.Said);
        std::memmove(hearing.Said, end + 1, hearing.Length - used);
        hearing.Length -= used;
    }
}

// Hears a helper to its end: told through a pipe, since a host may ignore its children's ends or collect them
// itself. `stopped`: by the person or for its silence.
Ended Hear(int pipe, Hearing &hearing, const Progress *progress, int64_t whole)
{
    int silence_ms = 0;
    for (;;) {
        pollfd waits = {pipe, POLLIN, 0};
        const int ready = poll(&waits, 1, step_ms);
        if (ready < 0 && errno != EINTR) return Ended::failed;
        if (progress != nullptr && !progress->GoesOn(progress->Context, hearing.Done, whole)) {
            return Ended::stopped;
        }
        if (ready <= 0) {
            silence_ms += step_ms;
            if (silence_ms >= longestSilence_ms) return Ended::failed;
            continue;
        }
        silence_ms = 0;
        if (hearing.Length == hearing.Size - 1) return Ended::good; // more than anybody reads
        const ssize_t got = read(pipe, hearing.Said + hearing.Length, hearing.Size - 1 - hearing.Length);
        if (got < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (got <= 0) return Ended::good;
        hearing.Length += static_cast<size_t>(got);
        TakeNumbers(hearing);
    }
}

} // namespace

Ended RunHelper(const char *name, char *const *arguments, const int *descriptors, int count, char *said,
                size_t size, const Progress *progress, int64_t whole)
{
    said[0] = 0;
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) {
        ComplainOf(name, errno);
        return Ended::failed;
    }
    int all[host::maxOfHelper];
    std::memcpy(all, descriptors, sizeof(int) * static_cast<size_t>(count));
    all[count] = ends[1];
    pid_t child = 0;
    const int error = host::StartHelper(name, arguments, all, count + 1, child);
    close(ends[1]);
    if (error != 0) {
        close(ends[0]);
        if (error == ENOENT) {
            Complain(name, " fehlt neben librs.so.");
        } else if (error == EPERM) {
            Complain(name, " neben librs.so oder ein Verzeichnis darüber ist für andere beschreibbar.");
        } else {
            ComplainOf(name, error);
        }
        return Ended::failed;
    }
    Hearing hearing = {said, size, 0, 0};
    const Ended ended = Hear(ends[0], hearing, progress, whole);
    close(ends[0]);
    if (ended != Ended::good) host::EndHelper(child);
    host::AwaitEnd(child);
    said[ended == Ended::good ? hearing.Length : 0] = 0;
    if (ended == Ended::stopped) return ended;
    if (ended == Ended::failed) Complain(name, " antwortet nicht.");
    if (ended == Ended::good && hearing.Length == 0) Complain(name, " hat vorzeitig geendet.");
    constexpr size_t ok = 2;
    if (std::strncmp(said, "ok", ok) != 0 || (said[ok] != 0 && said[ok] != '\n')) return Ended::failed;
    const char *line = said + ok + (said[ok] != 0 ? 1 : 0);
    std::memmove(said, line, std::strlen(line) + 1);
    return Ended::good;
}

} // namespace rs
