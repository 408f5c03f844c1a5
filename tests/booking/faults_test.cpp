// Every export of this folder with the n-th call of the record manager, and the n-th allocation, failing.
#include "include/vark40.h"
#include "tests/booking/ledger.h"
#include "tests/support/alloc_faults.h"
#include "tests/support/engine_faults.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>

using namespace vark;
using namespace vark::test;

namespace {

// Everything that postings and personal accounts change, record by record.
Lines Snapshot(const Ledger &books)
{
    Lines all;
    for (const std::string &year : books.years) {
        const auto add = [&](const char *name, const auto &records) {
            for (const auto &record : records) {
                all.push_back(year + " " + name + " " + HexOf(record));
            }
        };
        add("bat", books.Read<BatRecord>(1, TableBat, year));
        add("split", books.Read<SplitRecord>(1, TableSplit, year));
        add("kobu", books.Read<KobuRecord>(1, TableKobu, year));
        add("sako", books.Read<SakoRecord>(1, TableSako, year));
        add("debi", books.Read<PersonalRecord>(1, TableDebi, year));
        add("kred", books.Read<PersonalRecord>(1, TableKred, year));
    }
    return all;
}

struct Faults : ::testing::Test {
    Faults()
    {
        books.AddKostenschablone(1, {"050,00", "050,00"});
        SakoRecord record = MakeSako("4000", ZuordnungGuv);
        record.Kostenschablone = 1;
        books.ReplaceInYears(TableSako, record);
    }

    // Runs `call` over and over with one more fault each time until none is left, each time on the books as
    // `undo` leaves them. A call that answers `good` has done all its work, another one of `codes` nothing.
    void Run(const std::function<int32_t()> &call, int32_t good, const std::vector<int32_t> &codes,
             const std::function<void()> &undo)
    {
        ASSERT_EQ(good, call());
        undo();
        const Lines before = Snapshot(books);
        ASSERT_EQ(good, call());
        const size_t grown = Snapshot(books).size();
        undo();
        int engineFaults = 0;
        for (bool failed = true; failed;) {
            FailEngineCall(++engineFaults);
            const int32_t code = call();
            failed = StopEngineFaults() >= engineFaults;
            Judge("record operation " + std::to_string(engineFaults), code, good, codes, before, grown);
            undo();
        }
        EXPECT_GT(engineFaults, 2);
        int allocations = 0;
        for (bool failed = true; failed;) {
            FailAllocation(++allocations);
            const int32_t code = call();
            failed = StopAllocationFaults() >= allocations;
            Judge("allocation " + std::to_string(allocations), code, good, codes, before, grown);
            undo();
        }
        EXPECT_EQ(good, call()) << "the thread goes on as if nothing had been";
    }

    void Judge(const std::string &what, int32_t code, int32_t good, const std::vector<int32_t> &codes,
               const Lines &before, size_t grown)
    {
        if (code == good) {
            EXPECT_EQ(grown, Snapshot(books).size()) << what;
        } else {
            EXPECT_NE(codes.end(), std::find(codes.begin(), codes.end(), code)) << what << " gave " << code;
            EXPECT_EQ(before, Snapshot(books)) << what;
        }
    }

    void RemovePostings()
    {
        VARK_SchliesseDB();
        for (const TableId table : {TableBat, TableSplit, TableKobu}) {
            books.EmptyTable(1, table);
        }
    }

    Ledger books{{.Kostenrechnung = true}};
};

BuchungEingabe CostlyBooking(const char *date)
{
    BuchungEingabe booking = PlainBooking();
    SetText(booking.Datum, date);
    SetText(booking.Habenkonto, "70001");
    booking.HabenArt = 2;
    return booking;
}

TeilbuchungEingabe SalePart(const char *haben)
{
    TeilbuchungEingabe part{};
    SetText(part.Sollkonto, "4000");
    part.SollArt = 1;
    SetText(part.Habenkonto, haben);
    part.HabenArt = 1;
    SetText(part.Brutto, "100");
    return part;
}

} // namespace

TEST_F(Faults, UnderASinglePosting)
{
    const BuchungEingabe booking = CostlyBooking("150598");
    Run([&] { return VARK_BuchungEinfuegen(&booking, 0); }, 1, {-3}, [this] { RemovePostings(); });
}

TEST_F(Faults, UnderASinglePostingOfTheYearBefore)
{
    const BuchungEingabe booking = CostlyBooking("150597");
    Run([&] { return VARK_BuchungEinfuegen(&booking, 0); }, 1, {-3}, [this] { RemovePostings(); });
}

TEST_F(Faults, UnderAPostingWithTax)
{
    Run(
        [] {
            return VARK_BuchungEinfuegenDirektEx(0, 1, 16, "150598", "", "", "10000", 4, "8400", 1, "115",
                                                 "15", "", 0, 6);
        },
        1, {-3}, [this] { RemovePostings(); });
}

TEST_F(Faults, UnderAPostingWithAFreeRate)
{
    Run(
        [] {
            return VARK_BuchungEinfuegenDirekt(0, 1, 16, "150598", "", "", "10000", 4, "8100", 1, "115", "15",
                                               "");
        },
        1, {-3}, [this] { RemovePostings(); });
}

TEST_F(Faults, UnderAPostingWithCostsThatAreObligatory)
{
    books.ChangeMandant(1, [](FistaRecord &record) { record.KostenPflicht = 1; });
    const BuchungEingabe booking = CostlyBooking("150598");
    Run([&] { return VARK_BuchungEinfuegen(&booking, 0); }, 1, {-3, -24}, [this] { RemovePostings(); });
}

TEST_F(Faults, UnderAPostingInForeignCurrency)
{
    books.Insert(1, TableKurse, MakeKurs("USD", "180515", "000000001,75"));
    Run(
        [] {
            return VARK_BuchungEinfuegenDirekt(0, 1, 16, "150598", "", "", "10003", 4, "8400", 1, "116", "",
                                               "");
        },
        1, {-3, 0}, [this] { RemovePostings(); });
}

TEST_F(Faults, UnderASplitPosting)
{
    SplitEingabe split{};
    split.Mandant = 1;
    split.Stapel = 16;
    SetText(split.Datum, "150598");
    split.Anzahl = 3;
    split.Teil[0] = SalePart("1200");
    split.Teil[1] = SalePart("1000");
    split.Teil[2] = SalePart("1200");
    split.Teil[2].Kostenschablone = 1;
    Run([&] { return VARK_SplitBuchungEinfuegen(&split, 0); }, 1, {-3}, [this] { RemovePostings(); });
}

TEST_F(Faults, UnderASplitPostingPieceByPiece)
{
    Run(
        [] {
            int32_t code = VARK_SplitStart(1, 16, "150598", "", 0);
            for (int i = 0; i < 17 && code == 1; ++i) {
                code = VARK_SplitEinfuegen("4000", 1, i % 2 == 0 ? "1200" : "1000", 1, "1", "", "", "");
            }
            if (code != 1) return code;
            return VARK_SplitEnde(1, 0);
        },
        1, {-3, -2, -42}, [this] { RemovePostings(); });
}

TEST_F(Faults, UnderANewPersonalAccount)
{
    PekoEingabe peko{};
    peko.Mandant = 1;
    SetText(peko.Konto, "20000");
    SetText(peko.Kuerzel, "NEU");
    SetText(peko.Name1, "Neu");
    SetText(peko.Gegenkonto, "4000");
    peko.Zahlungsziel = 6;
    Run([&] { return VARK_Peko(1, 4, &peko, 0); }, 1, {-3},
        [&] {
            VARK_SchliesseDB();
            VARK_Peko(3, 4, &peko, 0);
            VARK_SchliesseDB();
        });
}

TEST_F(Faults, UnderADeletedPersonalAccount)
{
    PekoEingabe peko{};
    peko.Mandant = 1;
    SetText(peko.Konto, "10000");
    Run([&] { return VARK_Peko(3, 4, &peko, 0); }, 1, {-3},
        [&] {
            VARK_SchliesseDB();
            try {
                books.Insert(1, TableDebi, MakePersonal("10000"));
            } catch (const std::runtime_error &) {
                // it is still there
            }
        });
}

TEST_F(Faults, UnderAChangedPersonalAccount)
{
    PekoEingabe peko{};
    peko.Mandant = 1;
    SetText(peko.Kuerzel, "K10000");
    SetText(peko.Name1, "Anders");
    Run([&] { return VARK_Peko(2, 4, &peko, 0); }, 1, {-3},
        [&] {
            VARK_SchliesseDB();
            books.Replace(1, TableDebi, MakePersonal("10000"));
        });
}

TEST_F(Faults, UnderTheQueries)
{
    Run([] { return VARK_ExistiertKonto(1, "70000", 2); }, 1, {-3}, [] { VARK_SchliesseDB(); });
    Run(
        [] {
            char out[8];
            return VARK_HoleFreieKontonr(1, 4, out);
        },
        1, {-3}, [] { VARK_SchliesseDB(); });
}

TEST(FaultsOfTheFirstCall, WithoutMemoryForTheThreadIsACodeOfItsOwn)
{
    Ledger books;
    const BuchungEingabe booking = PlainBooking();
    ASSERT_EQ(1, VARK_Status());
    FailAllocation(1);
    EXPECT_EQ(-42, VARK_BuchungEinfuegen(&booking, 1));
    StopAllocationFaults();
    EXPECT_EQ(Lines{}, books.TakeBoxes());
    EXPECT_EQ(1, VARK_BuchungEinfuegen(&booking, 1));
}
