// A broken belief is told where nobody reads, without a signal that would end the host.
#include "src/frame/beliefs.h"

#include "include/vark40.h"
#include "tests/booking/ledger.h"

#include <gtest/gtest.h>
#include <unistd.h>

using namespace vark;
using namespace vark::test;

TEST(BrokenBelief, IsToldWithoutASignalWhereNobodyReads)
{
    Ledger books;
    StopsAtBrokenBelief = false;
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    close(ends[0]);
    const int standardError = dup(STDERR_FILENO);
    ASSERT_EQ(STDERR_FILENO, dup2(ends[1], STDERR_FILENO));
    EXPECT_FALSE(Holds(false)); // SIGPIPE would end this process
    dup2(standardError, STDERR_FILENO);
    close(standardError);
    close(ends[1]);
    EXPECT_EQ(1, VARK_BuchungEinfuegenDirekt(1, 1, 16, "15.04.1998", "B1", "Text", "1200", 1, "1000", 1,
                                             "100,00", "", ""));
    StopsAtBrokenBelief = true;
    VARK_SchliesseDB();
}
