// What the library finds when it is loaded, in a program that is made of the same objects.
#include "src/frame/lifecycle.h"
#include "src/platform/window_support.h"
#include "tests/support/alloc_faults.h"
#include "tests/support/books.h"
#include "tests/support/installation.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <thread>

using namespace vark;
using namespace vark::test;

namespace {

struct Load : testing::Test {
    std::string Directory = MakeDirectory();

    void SetUp() override { setenv("VARK_CONFIG_DIR", Directory.c_str(), 1); }
    void TearDown() override { std::filesystem::remove_all(Directory); }

    void Ini(const std::string &tolka, const std::string &vark) const
    {
        std::ofstream(Directory + "\\tolka.ini") << "[TOLKA]\n" << tolka;
        std::ofstream(Directory + "\\vark.ini") << "[VARK]\n" << vark;
    }
    std::string ReportPathOf(const std::string &tolka, const std::string &vark) const
    {
        Ini(tolka, vark);
        VARK_Status();
        return ReportPath;
    }
};

} // namespace

TEST_F(Load, ReportPathGetsTheBackslashItLacks)
{
    EXPECT_EQ("C:\\R\\", ReportPathOf("Pfad32=C:\\X\\DB\nReportPfad=C:\\other\n", "ReportPfad=C:\\R\n"));
}

TEST_F(Load, ReportPathKeepsItsBackslash)
{
    EXPECT_EQ("C:\\R\\", ReportPathOf("Pfad32=C:\\X\\DB\n", "ReportPfad=C:\\R\\\n"));
}

TEST_F(Load, ReportPathOfTheAccountingApplicationIsTakenNext)
{
    EXPECT_EQ("C:\\other\\", ReportPathOf("Pfad32=C:\\X\\DB\nReportPfad=C:\\other\n", ""));
}

TEST_F(Load, WithoutAReportPathReportsLieAboveTheData)
{
    EXPECT_EQ("C:\\X\\", ReportPathOf("Pfad32=C:\\X\\DB\\\n", ""));
}

TEST_F(Load, OfADataPathWithoutTwoLettersNothingIsLeftForReports)
{
    EXPECT_EQ("", ReportPathOf("Pfad32=DB\n", ""));
    EXPECT_STREQ("DB", DataPath);
}

TEST_F(Load, LongestReportPathHasRoomForItsBackslash)
{
    const std::string path = "C:\\" + std::string(maxPath - 5, 'r');
    EXPECT_EQ(path + "\\", ReportPathOf("Pfad32=C:\\X\\DB\n", "ReportPfad=" + path + "\n"));
}

TEST_F(Load, WithoutASlotForThreadsTheStateTellsSoForGood)
{
    Ini("Pfad32=C:\\X\\DB\n", "");
    std::vector<DWORD> slots;
    for (DWORD slot = TlsAlloc(); slot != TLS_OUT_OF_INDEXES; slot = TlsAlloc()) {
        slots.push_back(slot);
    }
    EXPECT_EQ(-42, VARK_Status());
    for (const DWORD slot : slots) {
        TlsFree(slot);
    }
    EXPECT_EQ(-42, VARK_Status());
    EXPECT_EQ(-42, VARK_ExistiertKonto(1, "1200", 1));
}

TEST(LoadedLibrary, WithoutMemoryForItsStateAThreadIsToldSoOnce)
{
    const Books books;
    ASSERT_EQ(1, VARK_Status());
    std::thread([] {
        FailAllocation(1);
        EXPECT_EQ(-42, VARK_ExistiertKonto(1, "1200", 1));
        StopAllocationFaults();
        EXPECT_EQ(-5, VARK_ExistiertKonto(1, "1200", 1)) << "there is no Mandant";
    }).join();
}

TEST(LoadedLibrary, ThreadsThatEndFreeTheirState)
{
    Books books;
    books.AddMandant(1);
    books.Insert(1, TableSako, MakeSako("1200"));
    const auto ask = [] { EXPECT_EQ(1, VARK_ExistiertKonto(1, "1200", 1)); };
    std::thread(ask).join();
    const long before = LiveAllocations();
    for (int i = 0; i < 50; ++i) {
        std::thread(ask).join();
    }
    EXPECT_EQ(before, LiveAllocations());
}

TEST(LoadedLibrary, HasTheIconOfItsAccountSheets)
{
    EXPECT_NE(nullptr, LoadIconA(LibraryModule(), MAKEINTRESOURCEA(114)));
    EXPECT_EQ(nullptr, LoadIconA(LibraryModule(), MAKEINTRESOURCEA(115)));
}
