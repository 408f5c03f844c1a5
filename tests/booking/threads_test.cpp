#include "include/vark40.h"
#include "tests/booking/audit.h"
#include "tests/booking/ledger.h"

#include <gtest/gtest.h>
#include <set>
#include <thread>

using namespace vark;
using namespace vark::test;

namespace {

constexpr int threadCount = 8;
constexpr int rounds = 25; // each posts a single and a split posting, and keeps an account

std::string BelegOf(int thread, int round, char kind)
{
    return std::string(1, kind) + std::to_string(thread) + "-" + std::to_string(round);
}

void PostAll(int thread, int mandant, int &refused)
{
    const char *datum = thread % 4 == 0 ? "15.5.97" : "15.5.98"; // some in the year before
    for (int round = 0; round < rounds; ++round) {
        const std::string amount = std::to_string(thread * 1000 + round);
        const std::string single = BelegOf(thread, round, 'E');
        refused += VARK_BuchungEinfuegenDirektEx(0, mandant, 16, datum, single.c_str(), "", "4000", 1,
                                                 "70000", 2, amount.c_str(), "", "", 1, 0) != 1;
        const std::string split = BelegOf(thread, round, 'S');
        refused += VARK_SplitStart(mandant, 16, datum, split.c_str(), 0) != 1;
        for (const char *haben : {"1200", "1000", "70000"}) {
            refused += VARK_SplitEinfuegenEx("4000", 1, haben, haben[0] == '7' ? 2 : 1, amount.c_str(), "",
                                             "", "", 1) != 1;
        }
        refused += VARK_SplitEnde(1, 0) != 1;
        const std::string konto = std::to_string(200000 + thread * 1000 + round);
        refused += VARK_PekoDirekt(1, 4, 0, mandant, konto.c_str(), konto.c_str(), "Name", "", "", "", "", "",
                                   "", "", "", "", "", "", 0, 0, "", 0, 0) != 1;
        refused += VARK_ExistiertKonto(mandant, konto.c_str(), 4) != 1;
    }
}

} // namespace

TEST(Threads, EightPostIntoTwoMandantenAtOnceAndNothingIsLost)
{
    Ledger books({.Kostenrechnung = true});
    books.AddLedger(2, {.Kostenrechnung = true});
    for (const int mandant : {1, 2}) {
        books.Insert(mandant, TableKoscha, MakeKoscha(1, 2));
        books.Insert(mandant, TableKoschaze, MakeKoschaze(1, "100", "", 0, "033,33"));
        books.Insert(mandant, TableKoschaze, MakeKoschaze(1, "101", "", 0, "066,67"));
    }
    std::vector<std::thread> threads;
    std::vector<int> refused(threadCount);
    threads.reserve(threadCount);
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back(
            [thread, &refused] { PostAll(thread, 1 + thread % 2, refused[static_cast<size_t>(thread)]); });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(std::vector<int>(threadCount), refused);
    EXPECT_EQ(Lines{}, books.TakeBoxes());
    for (const int mandant : {1, 2}) {
        EXPECT_EQ("", AuditPostings(books, mandant));
        std::set<std::string> expected;
        for (int thread = mandant - 1; thread < threadCount; thread += 2) {
            for (int round = 0; round < rounds; ++round) {
                expected.insert(BelegOf(thread, round, 'E') + " 1");
                expected.insert(BelegOf(thread, round, 'S') + " 3");
            }
        }
        std::set<std::string> written;
        int32_t number = 0;
        for (const BatRecord &bat : books.Read<BatRecord>(mandant, TableBat)) {
            EXPECT_EQ(++number, +bat.Buchungsnummer);
            EXPECT_TRUE(written.insert(TextOf(bat.Beleg) + " " + std::to_string(bat.Anzahl)).second);
        }
        EXPECT_EQ(expected, written);
        EXPECT_EQ(4u + static_cast<size_t>(threadCount / 2 * rounds), books.Count(mandant, TableDebi));
    }
}

TEST(Threads, EachHasItsOwnMandantAndFlag)
{
    Ledger books;
    books.AddLedger(2);
    BuchungEingabe booking = PlainBooking();
    ASSERT_EQ(1, VARK_BuchungEinfuegen(&booking, 1));
    std::thread([booking]() mutable {
        booking.Mandant = 2;
        booking.Stapel = 99;
        EXPECT_EQ(-6, VARK_BuchungEinfuegen(&booking, 0));
    }).join();
    EXPECT_EQ(Lines{}, books.TakeBoxes());
    booking.Stapel = 99;
    EXPECT_EQ(-6, VARK_BuchungEinfuegen(&booking, 1));
    EXPECT_EQ(1u, books.TakeBoxes().size());
    char out[8];
    std::thread([&out] { EXPECT_EQ(-5, VARK_HoleFreieKontonr(9, 4, out)); }).join();
    EXPECT_EQ(Lines{}, books.TakeBoxes()) << "a new thread is silent until told otherwise";
}
