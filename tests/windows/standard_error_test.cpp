// What the library tells on standard error reaches whoever reads there, and holds nobody up where none does.
#include "tests/windows/wine.h"

using namespace tests;

struct StandardError : OnWindows {};

TEST_F(StandardError, IsWrittenToWithoutALongWait)
{
    const Ended ended = RunToEnd(Built("stand_ins/tell.exe"), "", "");
    EXPECT_EQ(0, ended.Code);
    EXPECT_EQ("MERIDA: interner Fehler\n", ended.Errors);
    EXPECT_EQ("read at once\nnone at once\nfull after a while\nclosed at once\n", ended.Output);
}
