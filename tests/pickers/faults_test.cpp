// Every pick dialog under each fault of a record operation and of memory. Without a window a dialog that
// opens is cancelled.
#include "include/vark40.h"
#include "tests/support/books.h"
#include "tests/support/fault_loop.h"

#include <gtest/gtest.h>

using namespace vark::test;

namespace {

struct PickerFaults : testing::Test {
    Books books;

    void SetUp() override
    {
        books.AddMandant(1);
        books.AddMandant(2);
        books.Insert(1, vark::TableSako, MakeSako("1200"));
        books.Insert(1, vark::TableSako, MakeSako("8400"));
        books.Insert(1, vark::TableStapel, MakeStapel(16));
        books.Insert(1, vark::TableZahlziel, MakeZahlziel(1));
        books.Insert(1, vark::TableKoscha, MakeKoscha(1, 1));
    }

    static void Run(const std::function<int32_t()> &call)
    {
        EXPECT_GT(RunFaultLoop({.Call = call, .Good = 0, .Codes = {-1, -3}}), 2);
    }
};

} // namespace

TEST_F(PickerFaults, OfTheMandanten)
{
    Run([] { return VARK_HoleMandantenNr(nullptr); });
}

TEST_F(PickerFaults, OfTheStapel)
{
    Run([] { return VARK_HoleStapelNr(nullptr, 1); });
    Run([] { return VARK_HoleStapelNr(nullptr, -1); });
}

TEST_F(PickerFaults, OfTheAccounts)
{
    Run([] {
        char konto[8];
        return VARK_HoleKonto(nullptr, 1, 1, "", "", konto);
    });
}

TEST_F(PickerFaults, OfTheZahlungsziele)
{
    Run([] { return VARK_HoleZahlungsziel(nullptr, 1); });
}

TEST_F(PickerFaults, OfTheKostenschablonen)
{
    Run([] { return VARK_HoleKostenschablone(nullptr, 1); });
}
