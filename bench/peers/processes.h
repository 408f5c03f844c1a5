// Clients that are processes of their own.
#pragma once

#include "bench/peers/peer.h"

#include <sys/wait.h>
#include <unistd.h>

// Prints the seconds of `count` processes from the moment when all are ready until the last is done. Each
// makes itself ready by `prepare`, which is told its number, from 0 on, and gives what it then does.
template <typename Prepare> void TimeProcesses(long count, const Prepare &prepare)
{
    int ready[2];
    int go[2];
    Must(pipe(ready));
    Must(pipe(go));
    char token = 0;
    for (long number = 0; number < count; ++number) {
        if (fork() != 0) continue;
        const auto work = prepare(number);
        Must(write(ready[1], &token, 1) == 1 ? 0 : 1);
        Must(read(go[0], &token, 1) == 1 ? 0 : 1);
        work();
        std::_Exit(0);
    }
    for (long number = 0; number < count; ++number) {
        Must(read(ready[0], &token, 1) == 1 ? 0 : 1);
    }
    const Stopwatch watch;
    for (long number = 0; number < count; ++number) {
        Must(write(go[1], &token, 1) == 1 ? 0 : 1);
    }
    for (long number = 0; number < count; ++number) {
        int end = 0;
        Must(wait(&end) > 0 ? end : 1);
    }
    watch.Print();
}
