// Every export of this folder with the n-th call of the record manager, and the n-th allocation, failing.
#include "include/vark40.h"
#include "src/frame/beliefs.h"
#include "src/frame/engine_calls.h"
#include "src/frame/record_store.h"
#include "tests/booking/ledger.h"
#include "tests/support/alloc_faults.h"
#include "tests/support/engine_faults.h"
#include "tests/support/fault_loop.h"

#include <cstring>
#include <fstream>
#include <functional>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <thread>

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

    // Runs `call` under each fault, on the books as `undo` leaves them. A call that answers 1 has done all
    // its work, any other nothing.
    int Run(
        const std::function<int32_t()> &call, const std::vector<int32_t> &codes,
        const std::function<void()> &undo, const std::function<void()> &alsoJudge = [] {})
    {
        const Lines before = Snapshot(books);
        EXPECT_EQ(1, call());
        const Lines after = Snapshot(books);
        VARK_SchliesseDB();
        undo();
        EXPECT_EQ(before, Snapshot(books)) << "the test brings the books back";
        const auto judge = [&](const std::string &what, int32_t code) {
            if (code == 1) {
                EXPECT_EQ(after.size(), Snapshot(books).size()) << what;
            } else {
                EXPECT_EQ(before, Snapshot(books)) << what;
            }
            alsoJudge();
        };
        return RunFaultLoop({.Call = call, .Codes = codes, .Undo = undo, .Judge = judge});
    }
    int Post(const std::function<int32_t()> &call, const std::vector<int32_t> &codes)
    {
        return Run(call, codes, [this] { RemovePostings(); });
    }
    // A query changes nothing, also where it goes well.
    int Ask(const std::function<int32_t()> &call, const std::vector<int32_t> &codes = {-3})
    {
        return Run(call, codes, [] {});
    }

    void RemovePostings()
    {
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
    EXPECT_GT(Post([&] { return VARK_BuchungEinfuegen(&booking, 0); }, {-3}), 20);
}

TEST_F(Faults, UnderASinglePostingOfTheYearBefore)
{
    const BuchungEingabe booking = CostlyBooking("150597");
    Post([&] { return VARK_BuchungEinfuegen(&booking, 0); }, {-3});
}

TEST_F(Faults, UnderAPostingWithTax)
{
    Post(
        [] {
            return VARK_BuchungEinfuegenDirektEx(0, 1, 16, "150598", "", "", "10000", 4, "8400", 1, "115",
                                                 "15", "", 0, 6);
        },
        {-3});
}

TEST_F(Faults, UnderAPostingWithAFreeRate)
{
    Post(
        [] {
            return VARK_BuchungEinfuegenDirekt(0, 1, 16, "150598", "", "", "10000", 4, "8100", 1, "115", "15",
                                               "");
        },
        {-3});
}

TEST_F(Faults, UnderAPostingWithCostsThatAreObligatory)
{
    books.ChangeMandant(1, [](FistaRecord &record) { record.KostenPflicht = 1; });
    const BuchungEingabe booking = CostlyBooking("150598");
    Post([&] { return VARK_BuchungEinfuegen(&booking, 0); }, {-3, -24});
}

TEST_F(Faults, UnderAPostingInForeignCurrency)
{
    books.Insert(1, TableKurse, MakeKurs("USD", "180515", "000000001,75"));
    Post(
        [] {
            return VARK_BuchungEinfuegenDirekt(0, 1, 16, "150598", "", "", "10003", 4, "8400", 1, "116", "",
                                               "");
        },
        {-3, 0});
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
    Post([&] { return VARK_SplitBuchungEinfuegen(&split, 0); }, {-3});
}

// More parts than stand inline, so that memory is asked for. A part for which there is none is refused by
// itself (-2): the host gives up, and nothing is written.
TEST_F(Faults, UnderASplitPostingPieceByPiece)
{
    Post(
        [] {
            int32_t code = VARK_SplitStart(1, 16, "150598", "", 0);
            for (int i = 0; i < 17 && code == 1; ++i) {
                code = VARK_SplitEinfuegen("4000", 1, i % 2 == 0 ? "1200" : "1000", 1, "1", "", "", "");
            }
            return code == 1 ? VARK_SplitEnde(1, 0) : code;
        },
        {-3, -2});
    Post(
        [] {
            int32_t code = VARK_SplitStartEx(1, 16, "150598", "", 7, 6);
            if (code == 1) code = VARK_SplitEinfuegenEx("4000", 1, "1200", 1, "1", "", "", "", 1);
            if (code == 1) code = VARK_SplitEinfuegenEx("4000", 1, "1000", 1, "2", "", "", "", 0);
            return code == 1 ? VARK_SplitEnde(1, 0) : code;
        },
        {-3});
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
    const auto undo = [&] { VARK_Peko(3, 4, &peko, 0); };
    Run([&] { return VARK_Peko(1, 4, &peko, 0); }, {-3}, undo);
    Run(
        [] {
            return VARK_PekoDirekt(1, 4, 0, 1, "20000", "NEU", "Neu", "", "", "", "", "", "", "", "12345678",
                                   "1234567890", "Bank", "4000", 0, 0, "2", 0, 6);
        },
        {-3}, undo);
}

// Nobody else may find the record of a call that has come back locked.
void ExpectUnlocked(const std::function<int32_t()> &change)
{
    constexpr uint16_t unlock = 27;
    if (LastFailedOperation() == unlock) return; // then it is, until the thread's tables are closed
    int32_t code = 0;
    std::thread([&] { code = change(); }).join();
    EXPECT_TRUE(code == 1 || code == -28) << code;
}

TEST_F(Faults, UnderADeletedPersonalAccount)
{
    PekoEingabe peko{};
    peko.Mandant = 1;
    SetText(peko.Konto, "10000");
    Run([&] { return VARK_Peko(3, 4, &peko, 0); }, {-3},
        [&] {
            if (books.Count(1, TableDebi) == 3) books.Insert(1, TableDebi, MakePersonal("10000"));
        },
        [&] { ExpectUnlocked([&] { return VARK_Peko(3, 4, &peko, 0); }); });
}

TEST_F(Faults, UnderAChangedPersonalAccount)
{
    PekoEingabe peko{};
    peko.Mandant = 1;
    SetText(peko.Kuerzel, "K10000");
    SetText(peko.Name1, "Anders");
    Run([&] { return VARK_Peko(2, 4, &peko, 0); }, {-3},
        [&] { books.Replace(1, TableDebi, MakePersonal("10000")); },
        [&] { ExpectUnlocked([&] { return VARK_Peko(2, 4, &peko, 0); }); });
}

TEST_F(Faults, UnderTheAccountQueries)
{
    Ask([] { return VARK_ExistiertKonto(1, "70000", 2); });
    Ask([] {
        char out[8];
        return VARK_HoleFreieKontonr(1, 4, out);
    });
}

TEST_F(Faults, UnderBalancesOfEachKind)
{
    books.Insert(1, TableKore, MakeKore("100"));
    const struct {
        const char *Konto;
        int32_t Art;
    } accounts[] = {{"1200", 1}, {"70000", 2}, {"10000", 4}, {"100", 8}};
    for (const auto &account : accounts) {
        Ask([&] {
            char out[17];
            return VARK_HoleSaldo(1, account.Konto, account.Art, 0, 3, out);
        });
    }
}

// Every export but those of the reports, which have their own tests, is called under faults somewhere.
TEST(FaultTests, MissNoExport)
{
    const auto read = [](const char *path) {
        std::ifstream file(std::string(VARK_SOURCE_DIR "/") + path);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    const std::string header = read("include/vark40.h");
    const std::string tests = read("tests/booking/faults_test.cpp") + read("tests/cursors/faults_test.cpp") +
                              read("tests/pickers/faults_test.cpp");
    const std::string mark = "VARK_CALL VARK_";
    int found = 0;
    for (size_t at = header.find(mark); at != std::string::npos; at = header.find(mark, at + 1)) {
        const size_t start = at + std::strlen("VARK_CALL ");
        const size_t open = header.find('(', start);
        const std::string name = header.substr(start, open - start);
        const std::string arguments = header.substr(open, header.find(';', open) - open);
        const bool isReport = arguments.find("ReportParams") != std::string::npos ||
                              name == "VARK_InitReports" || name == "VARK_IsMessage";
        // These two make no call that could fail: the one reads a number, the other closes.
        if (isReport || name == "VARK_Status" || name == "VARK_SchliesseDB") continue;
        EXPECT_NE(std::string::npos, tests.find(name + "(")) << name;
        ++found;
    }
    EXPECT_EQ(27, found);
}

// The loop has to find what is left behind, or its silence says nothing.
TEST_F(Faults, AreFoundWhereACallLeavesSomethingBehind)
{
    const auto complaints = [](const std::function<void()> &leave) {
        testing::TestPartResultArray found;
        {
            const testing::ScopedFakeTestPartResultReporter reporter(
                testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS, &found);
            RunFaultLoop({.Call =
                              [&] {
                                  const int32_t code = VARK_ExistiertKonto(1, "70000", 2);
                                  if (code != 1 && GetThreadContext() != nullptr) leave();
                                  return code;
                              },
                          .Codes = {-3}});
        }
        return found.size();
    };
    EXPECT_EQ(0, complaints([] {}));
    std::vector<void *> blocks;
    EXPECT_GT(complaints([&] { blocks.push_back(std::malloc(1)); }), 0);
    for (void *block : blocks) {
        std::free(block);
    }
    StopsAtBrokenBelief = false; // what is left behind breaks some
    EXPECT_GT(complaints([] { LockNext(*GetThreadContext()); }), 0);
    EXPECT_GT(complaints([] { GetThreadContext()->TransactionDepth = 1; }), 0);
    EXPECT_GT(complaints([&] {
                  PositionBlock position{};
                  char path[256] = {};
                  books.TablePath(1, TableSako).copy(path, sizeof path - 1);
                  char nothing[1] = {};
                  CallEngine(0, position, nothing, nullptr, path, 0);
              }),
              0);
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
