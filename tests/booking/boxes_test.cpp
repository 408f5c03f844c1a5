// A box stands until somebody clicks. Nobody else may have to wait for that, so none is shown while the
// library has a transaction open, whatever fails.
#include "include/vark40.h"
#include "src/platform/window_api.h"
#include "tests/booking/ledger.h"
#include "tests/support/engine_faults.h"

#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

int boxes;
int boxesInTransaction;

} // namespace

// The linker leads calls of MessageBoxA here.
extern "C" {
int __real_MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT style);
int __wrap_MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT style)
{
    ++boxes;
    if (IsInEngineTransaction()) ++boxesInTransaction;
    return __real_MessageBoxA(owner, text, caption, style);
}
}

namespace {

// Every record operation of the call fails once, the last loop without a fault.
void FailEach(const char *what, const std::function<int32_t()> &call)
{
    int n = 1;
    for (bool met = true; met; ++n) {
        boxes = 0;
        FailEngineCall(n);
        const int32_t code = call();
        met = StopEngineFaults() >= n;
        EXPECT_EQ(0, boxesInTransaction) << what << ", call " << n;
        EXPECT_TRUE(code == 1 || boxes > 0) << what << ", call " << n << ": a failure is told, " << code;
        VARK_SchliesseDB();
    }
    EXPECT_GT(n, 10);
}

} // namespace

TEST(Boxes, ComeWhenTheTransactionIsOver)
{
    Ledger books({.Kostenrechnung = true});
    books.AddKostenschablone(1, {"050,00", "050,00"});
    FailEach("a single posting", [] {
        return VARK_BuchungEinfuegenDirektEx(1, 1, 16, "15.5.98", "1", "", "4000", 1, "70000", 2, "100", "",
                                             "", 1, 6);
    });
    FailEach("one of the year before", [] {
        return VARK_BuchungEinfuegenDirektEx(1, 1, 16, "15.5.97", "1", "", "4000", 1, "70000", 2, "100", "",
                                             "", 1, 0);
    });
    FailEach("a split posting", [] {
        VARK_SplitStart(1, 16, "15.5.98", "1", 0);
        VARK_SplitEinfuegen("4000", 1, "1200", 1, "1", "", "", "");
        VARK_SplitEinfuegen("4000", 1, "1000", 1, "2", "", "", "");
        return VARK_SplitEnde(1, 1);
    });
    int number = 20000;
    FailEach("a new account", [&number] {
        const std::string konto = std::to_string(++number);
        return VARK_PekoDirekt(1, 4, 1, 1, konto.c_str(), konto.c_str(), "Name", "", "", "", "", "", "", "",
                               "", "", "", "4000", 0, 0, "", 0, 6);
    });
    FailEach("a changed account", [] {
        return VARK_PekoDirekt(2, 4, 1, 1, "10000", "", "Name", "", "", "", "", "", "", "", "", "", "",
                               "4000", 0, 0, "", 0, 6);
    });
}

// The failed write is told first, then what became of it.
TEST(Boxes, OfATransactionComeInTheirOrder)
{
    Ledger books;
    constexpr uint16_t opInsert = 2;
    FailEngineOperation(opInsert, 1, 18);
    EXPECT_EQ(-3,
              VARK_BuchungEinfuegenDirekt(1, 1, 16, "15.5.98", "1", "", "4000", 1, "1200", 1, "1", "", ""));
    StopEngineFaults();
    EXPECT_EQ(Lines{"Disk full"}, books.TakeBoxes());
    EXPECT_EQ(0, boxesInTransaction);
}
