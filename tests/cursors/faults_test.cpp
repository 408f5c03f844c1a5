// The n-th call of the record manager fails, for n = 1, 2, … until none fails any more: every cursor ends
// with a code of its own, holds nothing open, and reads again afterwards.
#include "include/vark40.h"
#include "src/frame/lifecycle.h"
#include "tests/support/books.h"
#include "tests/support/engine_faults.h"

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

    // Runs an Init and its reads to the end with call n failing. Returns how many records came and went well.
    static int Run(const std::function<int32_t()> &init, const std::function<int32_t()> &read, int32_t &code)
    {
        code = init();
        int delivered = 0;
        while (code == 1) {
            code = read();
            if (code == 1 || code == 2) ++delivered;
        }
        return delivered;
    }

    // `last` is the code with which an undisturbed run ends.
    void FailEach(const std::function<int32_t()> &init, const std::function<int32_t()> &read, int32_t last)
    {
        int32_t code = 0;
        const int all = Run(init, read, code);
        ASSERT_EQ(last, code);
        for (int n = 1;; ++n) {
            ASSERT_LT(n, 200) << "it does not end";
            SCOPED_TRACE(n);
            VARK_SchliesseDB();
            FailEngineCall(n);
            const int delivered = Run(init, read, code);
            if (StopEngineFaults() < n) {
                EXPECT_EQ(all, delivered);
                EXPECT_EQ(last, code);
                return;
            }
            // A close that fails is nobody's business, and so is the first read of the account cursor.
            EXPECT_TRUE(code == -3 || (code == last && delivered == all) || (code == 0 && delivered == 0))
                << code;
            EXPECT_EQ(-40, read());
            EXPECT_EQ(all, Run(init, read, code));
        }
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
             2);
}

TEST_F(CursorFaults, OfTheSachkontoCursor)
{
    FailEach([] { return VARK_InitHoleKonto(1, 1, "", 1); },
             [] { return VARK_HoleSako(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr); }, -3);
}

TEST_F(CursorFaults, OfThePersonalAccountCursor)
{
    FailEach([] { return VARK_InitHoleKonto(1, 4, "10000", 1); },
             [] {
                 return VARK_HolePeko(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                      0, nullptr, nullptr, nullptr);
             },
             2);
}

TEST_F(CursorFaults, OfTheOpenItemCursor)
{
    FailEach([] { return VARK_InitHoleOP(1, "10000", 4, 1); },
             [] {
                 return VARK_HoleOP(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 0,
                                    nullptr, nullptr, nullptr);
             },
             2);
}

TEST_F(CursorFaults, OfABalance)
{
    char out[17];
    for (int n = 1; n < 100; ++n) {
        VARK_SchliesseDB();
        FailEngineCall(n);
        const int32_t code = VARK_HoleSaldo(1, "1200", 1, 1, 1, out);
        if (StopEngineFaults() < n) {
            EXPECT_EQ(1, code);
            return;
        }
        EXPECT_TRUE(code == -3 || code == 1) << code;
        EXPECT_EQ(1, VARK_HoleSaldo(1, "1200", 1, 1, 1, out));
    }
    FAIL() << "it does not end";
}
