// Nothing tells in which convention the report engine's entries want to be called, so both have to do.
#include "tests/windows/wine.h"

using namespace tests;

namespace {

using Entries = OnWindows;

// "A" 65, "B" 66, "C" 67, "D" 68: 65 * 10000 + 66 * 100 + 99; 286 of the numbers of the view, 67 and 68;
// twice 100000 for what was closed, and 1.
constexpr char answers[] = "656699 421 200001\n";

} // namespace

TEST_F(Entries, ThatLeaveTheirArgumentsToTheCallerAreCalledRight)
{
    EXPECT_EQ(answers, Run(Built("stand_ins/call_entries.exe"),
                           "'" + ForWindows(Built("stand_ins/rs_cdecl.dll")) + "'"));
}

TEST_F(Entries, ThatTakeTheirArgumentsOffThemselvesAreCalledRight)
{
    EXPECT_EQ(answers, Run(Built("stand_ins/call_entries.exe"),
                           "'" + ForWindows(Built("stand_ins/rs_stdcall.dll")) + "'"));
}
