// What the library finds when it is loaded, in a program that is made of the same objects.
#include "src/frame/dialogs.h"
#include "src/frame/engine_calls.h"
#include "src/frame/lifecycle.h"
#include "src/platform/platform.h"
#include "src/platform/window_support.h"
#include "src/reports/frame/tab_dialog.h"
#include "tests/support/alloc_faults.h"
#include "tests/support/books.h"
#include "tests/support/installation.h"

#include <atomic>
#include <commctrl.h>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <thread>

using namespace vark;
using namespace vark::test;

namespace {

struct Load : testing::Test {
    std::string Directory = MakeDirectory();

    void SetUp() override
    {
        setenv("VARK_CONFIG_DIR", Directory.c_str(), 1);
        setenv("VARK_UI_LOG", (Directory + "\\log").c_str(), 1);
    }
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
    // Whatever the state is, each export answers with it, and nobody is shown anything.
    void ExpectEverywhere(int state) const
    {
        EXPECT_EQ(state, VARK_Status());
        EXPECT_EQ(state, VARK_ExistiertKonto(1, "1200", 1));
        EXPECT_EQ(state, VARK_HoleMandantenNr(nullptr));
        ReportParams params{};
        EXPECT_EQ(nullptr, VARK_Kontenplan(1, nullptr, &params));
        EXPECT_EQ(nullptr, VARK_Kontenblatt(1, 0, nullptr, &params));
        VARK_SchliesseDB();
        std::thread([state] { EXPECT_EQ(state, VARK_ExistiertKonto(1, "1200", 1)); }).join();
        EXPECT_FALSE(std::filesystem::exists(Directory + "\\log"));
    }
};

// Counts the calls that close a file, whichever thread makes them.
RecordManagerEntry underneath;
std::atomic<int> closed;

int16_t VARK_CALL CountCloses(uint16_t operation, void *position, void *data, uint32_t *dataLength, void *key,
                              uint8_t keyLength, int8_t keyNumber)
{
    if (operation == 1) ++closed;
    return underneath(operation, position, data, dataLength, key, keyLength, keyNumber);
}

// How often the system was asked for tabs, and how often that had been when a dialog with some opened.
int askedForTabs;
int askedBefore;

constexpr int tabsId = 50;
constexpr varkui::DialogControl pageControls[] = {
    {varkui::DialogControlKind::TabControl, tabsId, "", 7, 7, 100, 60, 0, 0},
    {varkui::DialogControlKind::DefaultButton, IDOK, "OK", 120, 7, 50, 14, 0, 0},
};
constexpr varkui::DialogTable pages = {900, "Seiten", 180, 80, pageControls, 2, 0};

// The dialog's state, if there is any, says that it has a loop of the system's.
INT_PTR CALLBACK PagesProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    void *const state = KeepDialogState(dialog, message, lParam);
    if (message == WM_INITDIALOG) {
        askedBefore = askedForTabs;
        EXPECT_NE(nullptr, GetDlgItem(dialog, tabsId));
    }
    if (message != WM_COMMAND || LOWORD(wParam) != IDCANCEL) return FALSE;
    if (state != nullptr) {
        EndDialog(dialog, 3);
    } else {
        EndTabDialog(dialog, 3);
    }
    return TRUE;
}

} // namespace

extern "C" {

BOOL __real_InitCommonControlsEx(const INITCOMMONCONTROLSEX *wanted); // NOLINT: the linker's names
BOOL __wrap_InitCommonControlsEx(const INITCOMMONCONTROLSEX *wanted); // NOLINT

BOOL __wrap_InitCommonControlsEx(const INITCOMMONCONTROLSEX *wanted) // NOLINT
{
    if ((wanted->dwICC & ICC_TAB_CLASSES) != 0) ++askedForTabs;
    return __real_InitCommonControlsEx(wanted);
}
}

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

TEST_F(Load, PathsOfAnyLengthAreHeldWithoutOverrun)
{
    Ini("Pfad32=C:\\" + std::string(5000, 'p') + "\n",
        "ReportPfad=" + std::string(5000, 'r') + "\nDLLPfad=" + std::string(5000, 'd') + "\n");
    EXPECT_EQ(-3, VARK_Status());
    EXPECT_EQ(maxPath - 1, std::strlen(DataPath));
    EXPECT_EQ(maxPath - 1, std::strlen(ReportPath));
    EXPECT_EQ(maxPath - 1, std::strlen(DllPath));
}

TEST_F(Load, WithoutADataPathEveryExportTellsSoForGood)
{
    ExpectEverywhere(-36);
    Ini("Pfad32=C:\\X\\DB\n", "");
    ExpectEverywhere(-36);
}

TEST_F(Load, WithoutARecordManagerEveryExportTellsSo)
{
    Ini("Pfad32=" + Directory + "\\DB\n", "");
    ExpectEverywhere(-3);
}

TEST_F(Load, IniFileThatCannotBeReadHasNoneTakeItsPlace)
{
    Ini("", "Pfad=C:\\X\\DB\n");
    HANDLE held =
        CreateFileA((Directory + "\\tolka.ini").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, held);
    EXPECT_EQ(-36, VARK_Status());
    CloseHandle(held);
}

namespace {

// The installation of the machine, in the directory of the system itself.
struct MachinesOwnFile {
    std::string Path;

    MachinesOwnFile()
    {
        char directory[MAX_PATH] = "";
        GetWindowsDirectoryA(directory, sizeof directory);
        Path = std::string(directory) + "\\tolka.ini";
        std::ofstream(Path) << "[TOLKA]\nPfad32=C:\\W\\DB\n";
    }
    MachinesOwnFile(const MachinesOwnFile &) = delete;
    MachinesOwnFile &operator=(const MachinesOwnFile &) = delete;
    ~MachinesOwnFile() { std::filesystem::remove(Path); }
};

} // namespace

TEST_F(Load, FilesLieInTheDirectoryOfTheSystem)
{
    const MachinesOwnFile file;
    unsetenv("VARK_CONFIG_DIR");
    EXPECT_EQ(-3, VARK_Status());
    EXPECT_STREQ("C:\\W\\DB", DataPath);
    EXPECT_TRUE(WriteProfileText("TOLKA", "SetzeJahr", "1", "tolka.ini"));
    char text[20];
    EXPECT_EQ(1u, ReadProfileText("TOLKA", "SetzeJahr", text, sizeof text, "tolka.ini"));
    std::ifstream stream(file.Path);
    const std::string whole{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_NE(std::string::npos, whole.find("SetzeJahr=1"));
}

TEST_F(Load, WithADirectoryOfTheirOwnFilesLieNowhereElse)
{
    const MachinesOwnFile file;
    EXPECT_EQ(-36, VARK_Status());
    EXPECT_TRUE(WriteProfileText("VARK", "Mandant", "7", "vark.ini"));
    EXPECT_TRUE(std::filesystem::exists(Directory + "\\vark.ini"));
}

TEST_F(Load, EnvironmentIsReadAsItIsNow)
{
    const auto today = [](const char *day) {
        SetEnvironmentVariableA("VARK_HEUTE", day); // of which the C runtime learns nothing
        const CalendarDate date = SystemToday();
        return std::to_string(date.Day) + "." + std::to_string(date.Month) + "." + std::to_string(date.Year);
    };
    EXPECT_EQ("24.12.1999", today("24.12.1999"));
    EXPECT_EQ("1.2.2003", today("01.02.2003"));
    SYSTEMTIME now;
    GetLocalTime(&now);
    EXPECT_NE(std::string::npos, today(nullptr).find("." + std::to_string(now.wYear)));
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
    ExpectEverywhere(-42);
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

TEST(LoadedLibrary, ThreadHasItsStateFromItsFirstExportOn)
{
    const Books books;
    ASSERT_EQ(1, VARK_Status());
    std::thread([] {
        EXPECT_EQ(nullptr, ThreadSlotValue());
        EXPECT_EQ(1, VARK_Status());
        EXPECT_EQ(nullptr, ThreadSlotValue()) << "the library's own state is not that of a thread";
        EXPECT_EQ(-5, VARK_ExistiertKonto(1, "1200", 1));
        EXPECT_NE(nullptr, ThreadSlotValue());
    }).join();
}

TEST(LoadedLibrary, ThreadsThatEndCloseNoFiles)
{
    Books books;
    books.AddMandant(1);
    books.Insert(1, TableSako, MakeSako("1200"));
    ASSERT_EQ(1, VARK_Status());
    underneath = EngineEntry;
    EngineEntry = CountCloses;
    std::atomic<int> before{0};
    std::thread([&before] {
        EXPECT_EQ(1, VARK_ExistiertKonto(1, "1200", 1));
        before = closed.load();
    }).join();
    EXPECT_EQ(before.load(), closed.load()) << "tables of the Mandant are open; the record manager ends them";
    EngineEntry = underneath;
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

TEST(LoadedLibrary, AsksForTabsBeforeItsFirstDialogOfPages)
{
    const Books books;
    EXPECT_EQ(0, askedForTabs);
    EXPECT_EQ(3, RunTabDialog(pages, nullptr, PagesProcedure, nullptr));
    EXPECT_EQ(1, askedBefore);
}

TEST(LoadedLibrary, AsksForTabsBeforeItsFirstDialogAndOnceForAll)
{
    const Books books;
    int state = 0;
    EXPECT_TRUE(RunDialog(pages, nullptr, PagesProcedure, &state));
    EXPECT_EQ(1, askedBefore);
    EXPECT_TRUE(RunDialog(pages, nullptr, PagesProcedure, &state));
    EXPECT_EQ(1, askedForTabs);
}
