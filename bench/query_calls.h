// What the programs that ask sample books and their peers have in common.
#pragma once

#include "bench/peers/peer.h"

#include <string>

// TASK DIRECTORY [PASSES]
struct QueryTask {
    std::string What;
    const char *Directory;
    long Passes;

    static QueryTask From(int count, char **arguments)
    {
        if (count < 3) {
            std::fprintf(stderr, "%s TASK DIRECTORY [PASSES]\n", arguments[0]);
            std::exit(2);
        }
        return {arguments[1], arguments[2], count > 3 ? NumberOf(arguments[3]) : 1};
    }
};

// An account as the library and the peer are asked for it: its number, and its kind at the interface.
struct QueryAccount {
    char Konto[8];
    int Art;
};

// Anonymous resident memory of this process in KiB.
inline long AnonymousMemory()
{
    long kib = 0;
    char line[256];
    FILE *status = std::fopen("/proc/self/status", "r");
    if (status == nullptr) return 0;
    while (std::fgets(line, sizeof line, status) != nullptr) {
        if (std::strncmp(line, "RssAnon:", 8) == 0) kib = NumberOf(line + std::strspn(line, "RsAnon: \t"));
    }
    std::fclose(status);
    return kib;
}

// Prints what was done, what the memory was after its first pass and after its last, and the seconds.
struct QueryReport {
    long Calls = 0;
    long MemoryAtFirst_kib = 0;

    void EndPass()
    {
        if (MemoryAtFirst_kib == 0) MemoryAtFirst_kib = AnonymousMemory();
    }
    void Print(double seconds) const
    {
        std::printf("%ld calls, RssAnon %ld KiB then %ld KiB, seconds %.6f\n", Calls, MemoryAtFirst_kib,
                    AnonymousMemory(), seconds);
    }
};
