// Every cursor under each fault of a record operation and of memory: it ends with a code of its own, holds
// nothing open, and reads again afterwards.
#include "include/vark40.h"
#include "src/frame/lifecycle.h"
#include "tests/support/books.h"
#include "tests/support/fault_loop.h"

#include <functional>
#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

struct CursorFaults : testing::Test {
    Books books;

    void SetUp() override
    {
        books.AddMandant(1);
        books.Insert(1, TableSako, MakeSako("1200"));
        books.Insert(1, TableSako, MakeSako("8400"));
        books.Insert(1, TableDebi, MakePersonal("10000"));
        books.Insert(1, TableDebi, MakePersonal("10001"));
        books.Insert(1, TableSteke, MakeSteke(2, 0, "010418", "16,00", "1776", "1576"));
        books.Insert(1, TableSteke, MakeSteke(2, 1, "010100", "15,00", "1775", "1575"));
        for (int32_t nummer = 1; nummer <= 4; ++nummer) {
            BubeRecord posting = MakeBube(nummer, "150118", "10000", "8400", "000000116,00");
            posting.Steuerflags = BubeSteuerMinus;
            if (nummer == 2) posting.Status = BubeGefaltet;
            books.Insert(1, TableBube, posting);
            books.Insert(1, TableOpdebi,
                         MakeOpenItem(static_cast<uint32_t>(nummer), nummer % 2 != 0 ? "10000" : "10001",
                                      "180115", "000000116,00"));
        }
    }
    void TearDown() override { VARK_SchliesseDB(); }

    // `last` is the code with which an undisturbed run ends, after `all` records.
    static void FailEach(const std::function<int32_t()> &init, const std::function<int32_t()> &read,
                         int32_t last, int all)
    {
        const auto run = [&] {
            int32_t code = init();
            int delivered = 0;
            while (code == 1) {
                code = read();
                if (code == 1 || code == 2) ++delivered;
            }
            // A code that ends the cursor has ended it.
            if (code != -42) {
                EXPECT_EQ(-40, read());
            }
            return code == last && delivered == all ? 1 : code;
        };
        // The first read of the account cursors takes a failure for an empty table (0).
        EXPECT_GT(RunFaultLoop({.Call = run, .Codes = {-3, 0}}), 15);
    }
};

} // namespace

TEST_F(CursorFaults, OfThePostingCursor)
{
    FailEach([] { return VARK_InitHoleBube(1, "1.1.98", 1); },
             [] {
                 char date[11];
                 char beleg[9];
                 char text[40];
                 char soll[8];
                 char haben[8];
                 char amount[17];
                 char percent[8];
                 char tax[17];
                 uint32_t part = 0;
                 uint32_t kinds[2];
                 return VARK_HoleBube(&part, date, beleg, text, soll, &kinds[0], haben, &kinds[1], 3, amount,
                                      percent, tax);
             },
             2, 3);
}

TEST_F(CursorFaults, OfTheSachkontoCursor)
{
    FailEach([] { return VARK_InitHoleKonto(1, 1, "", 1); },
             [] { return VARK_HoleSako(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr); }, -3, 1);
}

TEST_F(CursorFaults, OfThePersonalAccountCursor)
{
    FailEach([] { return VARK_InitHoleKonto(1, 4, "10000", 1); },
             [] {
                 return VARK_HolePeko(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                      0, nullptr, nullptr, nullptr);
             },
             2, 2);
}

TEST_F(CursorFaults, OfTheOpenItemCursor)
{
    FailEach([] { return VARK_InitHoleOP(1, "10000", 4, 1); },
             [] {
                 return VARK_HoleOP(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 0,
                                    nullptr, nullptr, nullptr);
             },
             2, 2);
}

// Ends what there is; no fault can touch it but the one of the thread's own memory.
TEST_F(CursorFaults, OfAnEarlyEnd)
{
    RunFaultLoop({.Call =
                      [] {
                          const int32_t code = VARK_InitHoleKonto(1, 1, "", 1);
                          if (code != 1) return code;
                          return VARK_BeendeHolen();
                      },
                  .Codes = {-3, 0}});
}
