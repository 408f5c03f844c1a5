// Processes that are killed while they post. What they were told is written has to be there, and whatever is
// there has to be whole.
#include "include/vark40.h"
#include "tests/booking/audit.h"
#include "tests/booking/ledger.h"

#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <map>
#include <poll.h>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

using namespace vark;
using namespace vark::test;

namespace {

#ifndef KILLS
#define KILLS 300
#endif

// Posts until it is killed, and writes the number of each posting into the pipe when the call has returned.
// Single and split postings take turns, with cost lines, in both postable years.
[[noreturn]] void PostForEver(int round, int out)
{
    for (int number = 0;; ++number) {
        const std::string beleg = std::to_string(round) + "-" + std::to_string(number);
        const char *datum = number % 3 == 0 ? "15.5.97" : "15.5.98";
        int32_t code;
        if (number % 2 == 0) {
            code = VARK_BuchungEinfuegenDirektEx(0, 1, 16, datum, beleg.c_str(), "", "4000", 1, "70000", 2,
                                                 "100", "", "", 1, 0);
        } else {
            VARK_SplitStart(1, 16, datum, beleg.c_str(), 0);
            for (const char *haben : {"1200", "1000", "1700"}) {
                VARK_SplitEinfuegenEx("4000", 1, haben, 1, "100", "", "", "", 1);
            }
            code = VARK_SplitEnde(1, 0);
        }
        if (code != 1) _exit(1);
        if (write(out, &number, sizeof number) != sizeof number) _exit(2);
    }
}

struct Victim {
    int LastTold = -1; // number of the last posting that the process was told is written
    bool WasKilled = false;
};

// One process from its first posting to its end. It is killed at a random moment after a random posting.
Victim RunAndKill(int round, std::mt19937 &random)
{
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("pipe");
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        PostForEver(round, ends[1]);
    }
    close(ends[1]);
    Victim victim;
    int told = 0;
    const unsigned wanted = random() % 4;
    for (unsigned i = 0; i < wanted; ++i) {
        if (read(ends[0], &told, sizeof told) != sizeof told) break;
        victim.LastTold = told;
    }
    const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(random() % 3000);
    while (std::chrono::steady_clock::now() < end) {
    }
    kill(child, SIGKILL);
    while (read(ends[0], &told, sizeof told) == sizeof told) {
        victim.LastTold = told;
    }
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    victim.WasKilled = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
    return victim;
}

} // namespace

TEST(Killed, EveryPostingIsWholeOrAbsentAndWhatWasToldIsThere)
{
    Ledger books({.Kostenrechnung = true});
    books.AddKostenschablone(1, {"033,33", "066,67"});
    const unsigned seed = std::random_device()();
    std::mt19937 random(seed);
    std::map<std::string, int> told; // by round: the last number
    int postings = 0;
    for (int round = 0; round < KILLS; ++round) {
        const Victim victim = RunAndKill(round, random);
        ASSERT_TRUE(victim.WasKilled) << "seed " << seed << ", round " << round;
        told[std::to_string(round)] = victim.LastTold;
        if (round % 50 != 49 && round + 1 != KILLS) continue;
        // The audit, and what each round left: 0 to its last number told, and one more at most.
        ASSERT_EQ("", AuditPostings(books, 1)) << "seed " << seed << ", round " << round;
        std::map<std::string, int> written;
        postings = 0;
        for (const BatRecord &bat : books.Postings()) {
            const std::string beleg = TextOf(bat.Beleg);
            const size_t dash = beleg.find('-');
            const int number = std::stoi(beleg.substr(dash + 1));
            EXPECT_EQ(number % 2 == 0 ? 1 : 3, +bat.Anzahl);
            EXPECT_EQ(2, +bat.Teil.Kostenzeilen);
            EXPECT_EQ(written[beleg.substr(0, dash)]++, number) << "in their order, without a gap";
            ++postings;
        }
        for (const auto &[name, last] : told) {
            const int count = written[name];
            EXPECT_TRUE(count == last + 1 || count == last + 2)
                << "seed " << seed << ": of round " << name << " " << count << " postings after " << last + 1
                << " told";
        }
    }
    EXPECT_GT(postings, KILLS / 2) << "the processes have really posted";
    const BuchungEingabe booking = PlainBooking();
    EXPECT_EQ(1, VARK_BuchungEinfuegen(&booking, 1)) << "and the books go on";
}
