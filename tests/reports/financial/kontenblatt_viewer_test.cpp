// The window in which sheets live, with the real report engine and windows, and nobody before the screen:
// what is pressed is pressed by the test.
#include "include/vark40.h"
#include "report-engine/include/rs.h"
#include "src/frame/lifecycle.h"
#include "src/frame/report_engine.h"
#include "src/platform/platform.h"
#include "src/platform/window_api.h"
#include "src/reports/frame/report_params.h"
#include "src/reports/frame/tab_dialog.h"
#include "tests/reports/frame/played_dialog.h"
#include "tests/support/alloc_faults.h"
#include "tests/support/books.h"
#include "tests/support/display.h"
#include "tests/support/engine_faults.h"

#include <atomic>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

using namespace vark;
using namespace vark::test;

namespace {

constexpr int previousMonth = 1094;
constexpr int nextMonth = 1095;
constexpr int previousAccount = 1024;
constexpr int nextAccount = 1025;
constexpr int newChoice = 3;

struct SheetWindow : testing::Test {
    Books books;
    ReportParams params{};
    HWND frame = nullptr;

    explicit SheetWindow(const std::string &script = "") : books(script) {}

    void SetUp() override
    {
        MandantOptions options;
        books.AddMandant(1, options);
        for (const char *number : {"1000", "1200", "1400"}) {
            SakoRecord record = MakeSako(number);
            SetText(record.Name, std::string("Konto ") + number);
            books.Insert(1, TableSako, record);
            books.Insert(1, TableSako, record, "1997");
        }
        books.Insert(1, TableBube, MakeBube(1, "100518", "1200", "8400", "000000011,00"));
        books.Insert(1, TableBube, MakeBube(2, "100618", "1200", "8400", "000000022,00"));
        books.Insert(1, TableBube, MakeBube(3, "110518", "1400", "8400", "000000033,00"));
        EXPECT_EQ(1, VARK_Status());
        for (const auto &entry : std::filesystem::directory_iterator(TEMPLATES)) {
            std::filesystem::copy_file(entry.path(),
                                       std::string(ReportPath) + entry.path().filename().string());
        }
        Choose(5, "1200");
    }
    void TearDown() override
    {
        if (IsWindow(frame)) DestroyWindow(frame);
        VARK_SchliesseDB();
    }

    // A single account for a month (or another period) of 1998.
    void Choose(int code, const char *account, int32_t jahrIndex = 18)
    {
        params = {};
        params.ParamFlags = ParamZeitraum | ParamJahr | ParamKontoArt | ParamKonten | ParamEinzeln;
        params.Zeitraum = code;
        params.JahrIndex = jahrIndex;
        params.KontoArt = KontoartSachkonto;
        SetText(params.SachkontoVon, account);
    }
    void Open(HWND parent = nullptr)
    {
        frame = static_cast<HWND>(VARK_Kontenblatt(1, 0, static_cast<VarkWindow>(parent), &params));
    }

    HWND Bar() const
    {
        return FindChild([](HWND child) { return GetDlgItem(child, newChoice) != nullptr; });
    }
    HWND View() const
    {
        return FindChild([](HWND child) { return GetDlgItem(child, newChoice) == nullptr; });
    }
    HWND FindChild(const std::function<bool(HWND)> &wanted) const
    {
        for (HWND child = GetWindow(frame, GW_CHILD); child != nullptr;
             child = GetWindow(child, GW_HWNDNEXT)) {
            if (wanted(child)) return child;
        }
        return nullptr;
    }
    bool IsEnabled(int button) const { return IsWindowEnabled(GetDlgItem(Bar(), button)) != FALSE; }
    void Press(int button) const { SendMessageA(GetDlgItem(Bar(), button), BM_CLICK, 0, 0); }
    static void Size(HWND window, int width, int height)
    {
        SetWindowPos(window, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER);
    }
    static RECT ClientOf(HWND window)
    {
        RECT client{};
        GetClientRect(window, &client);
        return client;
    }
    RECT PlaceOf(HWND child) const
    {
        RECT place{};
        GetWindowRect(child, &place);
        POINT corner = {place.left, place.top};
        ScreenToClient(frame, &corner);
        return {corner.x, corner.y, corner.x + place.right - place.left, corner.y + place.bottom - place.top};
    }

    // What the sheet in the frame says.
    std::string Text() const
    {
        const auto exportView = reinterpret_cast<decltype(&RSExportView)>(
            FindEntry(reportEngine.ReportEngineLibrary, "RSExportView"));
        const std::string path = books.Directory() + "/blatt.txt";
        EXPECT_EQ(1, exportView(static_cast<RSWindow>(frame), path.c_str()));
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    bool Says(const std::string &text) const { return Text().find(text) != std::string::npos; }
};

std::string ClassOf(HWND window)
{
    char name[64] = {};
    GetClassNameA(window, name, sizeof name);
    return name;
}

std::string TitleOf(HWND window)
{
    char title[128] = {};
    GetWindowTextA(window, title, sizeof title);
    return title;
}

struct SheetWindowAsked : SheetWindow {
    SheetWindowAsked()
        : SheetWindow("dialog 114\npress 1\n"
                      "dialog 114\nexpect checked 20005\nexpect checked 20056\nexpect text 20054 1200\n"
                      "text 20054 1000\ncheck 20013\npress 1\n")
    {}
};

struct SheetWindowCancelled : SheetWindow {
    SheetWindowCancelled() : SheetWindow("dialog 114\npress 1\ndialog 114\ntext 20054 1000\npress 2\n") {}
};

} // namespace

TEST_F(SheetWindow, HoldsTheViewAndItsBar)
{
    VARK_InitReports(0, 0, "Blätter", nullptr);
    Open();
    ASSERT_TRUE(IsWindow(frame));
    EXPECT_EQ("tervoKontenblatt", ClassOf(frame));
    EXPECT_EQ(TitleOf(View()), TitleOf(frame));
    ASSERT_NE(nullptr, View());
    ASSERT_NE(nullptr, Bar());
    EXPECT_EQ(1u, uint32_t{params.ViewResult});
    EXPECT_TRUE(IsWindowVisible(frame));
    EXPECT_TRUE(Says("11,00"));
    EXPECT_TRUE(Says("Mai 1998"));
}

TEST_F(SheetWindow, PlacesTheBarBelowTheViewInTheMiddle)
{
    Open();
    Size(frame, 1200, 700);
    const RECT client = ClientOf(frame);
    const RECT bar = PlaceOf(Bar());
    const RECT view = PlaceOf(View());
    EXPECT_EQ((client.right - (bar.right - bar.left)) / 2, bar.left);
    EXPECT_EQ(client.bottom, bar.bottom);
    EXPECT_EQ(0, view.left);
    EXPECT_EQ(0, view.top);
    EXPECT_EQ(client.right, view.right);
    EXPECT_EQ(bar.top, view.bottom);
}

TEST_F(SheetWindow, PutsTheBarOfANarrowFrameAtItsLeftEdge)
{
    Open();
    Size(frame, 200, 700);
    EXPECT_EQ(0, PlaceOf(Bar()).left);
}

TEST_F(SheetWindow, HidesTheBarWhereItLeavesNoRoom)
{
    Open();
    const RECT bar = PlaceOf(Bar());
    RECT outer{};
    GetWindowRect(frame, &outer);
    const int border = outer.bottom - outer.top - ClientOf(frame).bottom;
    Size(frame, 900, bar.bottom - bar.top + border);
    EXPECT_FALSE(IsWindowVisible(Bar()));
    EXPECT_EQ(ClientOf(frame).bottom, PlaceOf(View()).bottom);
    Size(frame, 900, 600);
    EXPECT_TRUE(IsWindowVisible(Bar()));
}

TEST_F(SheetWindow, WalksThroughTheMonths)
{
    Open();
    EXPECT_TRUE(IsEnabled(previousMonth));
    EXPECT_TRUE(IsEnabled(nextMonth));
    HWND earlier = View();
    Press(nextMonth);
    EXPECT_FALSE(IsWindow(earlier)) << "the earlier view has gone";
    EXPECT_TRUE(Says("Juni 1998"));
    EXPECT_TRUE(Says("22,00"));
    Press(previousMonth);
    Press(previousMonth);
    EXPECT_TRUE(Says("April 1998"));
}

TEST_F(SheetWindow, StopsAtTheEdgeOfTheBookableYears)
{
    Choose(12, "1200");
    Open();
    EXPECT_TRUE(IsEnabled(previousMonth));
    EXPECT_FALSE(IsEnabled(nextMonth));
    const std::string before = Text();
    Press(nextMonth);
    EXPECT_EQ(before, Text()) << "a press of a disabled button does nothing";
}

TEST_F(SheetWindow, GoesOverTheEndOfABookableYearInTheBooksOfTheFirstSheet)
{
    Choose(12, "1200", 17);
    Open();
    EXPECT_TRUE(Says("Dezember 1997"));
    ASSERT_TRUE(IsEnabled(nextMonth));
    Press(nextMonth);
    EXPECT_TRUE(Says("Januar 1998"));
    Press(previousMonth);
    EXPECT_TRUE(Says("Dezember 1997"));
}

TEST_F(SheetWindow, HasNoMonthsToWalkThroughForAQuarter)
{
    Choose(14, "1200");
    Open();
    EXPECT_FALSE(IsEnabled(previousMonth));
    EXPECT_FALSE(IsEnabled(nextMonth));
    EXPECT_TRUE(IsEnabled(nextAccount));
}

TEST_F(SheetWindow, WalksThroughTheAccounts)
{
    Open();
    Press(nextAccount);
    EXPECT_TRUE(Says("Konto 1400"));
    EXPECT_TRUE(Says("33,00"));
    EXPECT_FALSE(IsEnabled(nextAccount)) << "it is the last one";
    Press(previousAccount);
    Press(previousAccount);
    EXPECT_TRUE(Says("Konto 1000"));
    EXPECT_FALSE(IsEnabled(previousAccount));
    EXPECT_TRUE(Says("Mai 1998"));
}

TEST_F(SheetWindow, KeepsSizeZoomAndPlaceFromSheetToSheet)
{
    constexpr int zoomList = 106;
    constexpr LRESULT chosen = 4;
    Open();
    SetWindowPos(frame, nullptr, 40, 30, 700, 520, SWP_NOZORDER);
    SendDlgItemMessageA(View(), zoomList, CB_SETCURSEL, chosen, 0);
    SendMessageA(View(), WM_COMMAND, MAKELONG(zoomList, CBN_SELCHANGE), 0);
    RECT framePlace{};
    GetWindowRect(frame, &framePlace);
    const RECT viewPlace = PlaceOf(View());
    for (const int button : {nextAccount, nextMonth, previousAccount, previousMonth}) {
        HWND earlier = View();
        Press(button);
        ASSERT_FALSE(IsWindow(earlier)) << "there is a new sheet";
        RECT place{};
        GetWindowRect(frame, &place);
        EXPECT_EQ(0, std::memcmp(&framePlace, &place, sizeof place)) << button;
        place = PlaceOf(View());
        EXPECT_EQ(0, std::memcmp(&viewPlace, &place, sizeof place)) << button;
        EXPECT_EQ(chosen, SendDlgItemMessageA(View(), zoomList, CB_GETCURSEL, 0, 0)) << button;
    }
}

TEST_F(SheetWindow, HasNoAccountsToWalkThroughForARange)
{
    params.ParamFlags &= ~uint32_t{ParamEinzeln};
    Open();
    EXPECT_FALSE(IsEnabled(previousAccount));
    EXPECT_FALSE(IsEnabled(nextAccount));
    EXPECT_TRUE(IsEnabled(nextMonth));
}

TEST_F(SheetWindow, KeepsTheSheetWhenTheNextOneFails)
{
    Open();
    HWND view = View();
    const std::string before = Text();
    FailEngineOperation(9, 1, 2);
    Press(nextMonth);
    StopEngineFaults();
    EXPECT_EQ(view, View());
    EXPECT_EQ(before, Text());
    const Lines boxes = books.TakeBoxes();
    ASSERT_FALSE(boxes.empty());
    EXPECT_EQ("Das Kontenblatt konnte nicht erstellt werden!", boxes.back());
    Press(nextMonth);
    EXPECT_TRUE(Says("Juni 1998")) << "and goes on from it";
}

TEST_F(SheetWindow, IsWholeOrAsItWasWhicheverReadFails)
{
    Open();
    std::string standing = Text();
    bool isAhead = false;
    for (int n = 1; n < 400; ++n) {
        const int button = isAhead ? previousMonth : nextMonth;
        FailEngineCall(n, 2);
        Press(button);
        const bool wasTried = StopEngineFaults() >= n;
        books.TakeBoxes();
        const std::string now = Text();
        EXPECT_TRUE(now == standing || now.find(isAhead ? "Mai 1998" : "Juni 1998") != std::string::npos)
            << n;
        if (now != standing) isAhead = !isAhead;
        standing = now;
        if (!wasTried) return;
    }
    FAIL() << "no end of record operations";
}

TEST_F(SheetWindow, GoesOnAfterTheBooksWereClosedAndAnotherMandantChosen)
{
    MandantOptions options;
    books.AddMandant(2, options);
    Open();
    VARK_SchliesseDB();
    char konto[16] = "";
    EXPECT_EQ(1, VARK_HoleFreieKontonr(2, KontoartDebitor, konto));
    Press(nextMonth);
    EXPECT_TRUE(Says("22,00"));
}

TEST_F(SheetWindowAsked, TakesANewChoice)
{
    Open();
    Press(newChoice);
    EXPECT_TRUE(Says("Konto 1000"));
    EXPECT_TRUE(Says("1. Quartal 1998"));
    EXPECT_FALSE(IsEnabled(nextMonth));
    EXPECT_EQ(5, int32_t{params.Zeitraum}) << "the caller's block may be gone by then";
    for (const std::string &line : books.TakeLog()) {
        EXPECT_FALSE(line.starts_with("script:")) << line;
    }
}

TEST_F(SheetWindowCancelled, StaysAsItIs)
{
    Open();
    const std::string before = Text();
    HWND view = View();
    SendMessageA(frame, WM_COMMAND, newChoice, 0);
    EXPECT_EQ(view, View());
    EXPECT_EQ(before, Text());
}

TEST_F(SheetWindow, NotificationsOfOthersAndOtherCodesDoNothing)
{
    Open();
    const std::string before = Text();
    struct {
        NMHDR Header;
        WPARAM Press;
    } notification = {{View(), 0, 0x111}, nextMonth};
    SendMessageA(frame, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notification));
    notification.Header = {Bar(), 0, 0x112};
    SendMessageA(frame, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notification));
    notification.Header = {Bar(), 0, 0x111};
    notification.Press = MAKELONG(nextMonth, 1);
    SendMessageA(frame, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notification));
    EXPECT_EQ(before, Text());
    SendMessageA(frame, WM_USER + 2, 0, 0);
    SendMessageA(frame, WM_USER + 2, 0, reinterpret_cast<LPARAM>(View()));
    EXPECT_EQ(before, Text()) << "no window, and the view that is there, change nothing";
}

TEST_F(SheetWindow, IsServedByTheHostsLoopWhileItIsActive)
{
    Open();
    SendMessageA(frame, WM_ACTIVATE, WA_ACTIVE, 0);
    EXPECT_EQ(Bar(), ActiveBarWindow.load());
    MSG tab{};
    tab.hwnd = GetDlgItem(Bar(), nextMonth);
    tab.message = WM_KEYDOWN;
    tab.wParam = VK_TAB;
    EXPECT_EQ(1, VARK_IsMessage(reinterpret_cast<VarkMessage *>(&tab)));
    DestroyWindow(frame);
    EXPECT_EQ(0, VARK_IsMessage(reinterpret_cast<VarkMessage *>(&tab))) << "a bar that has gone is forgotten";
}

TEST_F(SheetWindow, LetterOfAButtonWorksFromTheSheetToo)
{
    Open();
    SendMessageA(frame, WM_ACTIVATE, WA_ACTIVE, 0);
    MSG letter{};
    letter.hwnd = View();
    letter.message = WM_SYSCHAR;
    letter.wParam = 'n'; // "&nächster Monat"
    EXPECT_EQ(1, VARK_IsMessage(reinterpret_cast<VarkMessage *>(&letter)));
    EXPECT_TRUE(Says("Juni 1998"));
    letter.wParam = 'x';
    VARK_IsMessage(reinterpret_cast<VarkMessage *>(&letter));
    EXPECT_TRUE(Says("Juni 1998"));
}

TEST_F(SheetWindow, FreesItsStateAndReportWhenItGoes)
{
    Open();
    DestroyWindow(frame);
    const long before = LiveAllocations();
    for (int i = 0; i < 3; ++i) {
        Choose(5, "1200");
        Open();
        Press(nextMonth);
        DestroyWindow(frame);
    }
    EXPECT_EQ(before, LiveAllocations());
}

TEST_F(SheetWindow, MayGoWhileItsDialogIsOpen)
{
    Open();
    const long before = LiveAllocations();
    {
        const Onlooker onlooker([this](HWND) { DestroyWindow(frame); });
        Press(newChoice);
    }
    EXPECT_FALSE(IsWindow(frame));
    EXPECT_LT(LiveAllocations(), before) << "its state went when the press had been handled";
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

TEST_F(SheetWindow, LetsTwoFramesGoTheirOwnWays)
{
    Open();
    HWND first = frame;
    Choose(6, "1400");
    Open();
    HWND second = frame;
    Press(previousMonth);
    EXPECT_TRUE(Says("33,00"));
    frame = first;
    Press(nextMonth);
    EXPECT_TRUE(Says("22,00"));
    DestroyWindow(second);
    Press(previousMonth);
    EXPECT_TRUE(Says("11,00"));
}

TEST_F(SheetWindow, ServesFramesOnTwoThreads)
{
    const auto walk = [](const char *account, const char *amount) {
        ReportParams block{};
        block.ParamFlags = ParamZeitraum | ParamJahr | ParamKontoArt | ParamKonten | ParamEinzeln;
        block.Zeitraum = 4;
        block.JahrIndex = 18;
        block.KontoArt = KontoartSachkonto;
        SetText(block.SachkontoVon, account);
        HWND window = static_cast<HWND>(VARK_Kontenblatt(1, 0, nullptr, &block));
        EXPECT_TRUE(IsWindow(window)) << account << amount;
        HWND bar = nullptr;
        for (HWND child = GetWindow(window, GW_CHILD); child != nullptr;
             child = GetWindow(child, GW_HWNDNEXT)) {
            if (GetDlgItem(child, newChoice) != nullptr) bar = child;
        }
        for (int i = 0; i < 5; ++i) {
            SendMessageA(GetDlgItem(bar, i % 2 == 0 ? nextMonth : previousMonth), BM_CLICK, 0, 0);
        }
        DestroyWindow(window);
        VARK_SchliesseDB();
    };
    std::thread other([&] { walk("1200", "11,00"); });
    walk("1400", "33,00");
    other.join();
}

TEST_F(SheetWindow, ThreadThatEndsTakesItsStatesAlong)
{
    const long before = LiveAllocations();
    std::thread([this] {
        ReportParams block = params;
        EXPECT_NE(nullptr, VARK_Kontenblatt(1, 0, nullptr, &block));
    }).join();
    EXPECT_GE(before + 2, LiveAllocations()) << "at most what the view itself holds";
}

TEST_F(SheetWindow, TakesTheParentsRoomAndTheHostsClass)
{
    WNDCLASSA made{};
    made.lpszClassName = "Wirt";
    made.lpfnWndProc = DefWindowProcA;
    ASSERT_NE(0, RegisterClassA(&made));
    HWND host = CreateWindowExA(0, "Wirt", "Wirt", WS_OVERLAPPEDWINDOW, 0, 0, 800, 500, nullptr, nullptr,
                                nullptr, nullptr);
    ASSERT_NE(nullptr, host);
    VARK_InitReports(WS_CHILD | WS_VISIBLE | WS_VSCROLL | WS_HSCROLL, 0, "Blätter",
                     static_cast<VarkWindow>(host));
    Open(host);
    ASSERT_TRUE(IsWindow(frame));
    EXPECT_EQ("Wirt", ClassOf(frame));
    EXPECT_EQ(host, GetParent(frame));
    const RECT room = ClientOf(host);
    RECT place{};
    GetWindowRect(frame, &place);
    EXPECT_EQ(room.right, place.right - place.left);
    EXPECT_EQ(room.bottom, place.bottom - place.top);
    EXPECT_EQ(0U, static_cast<DWORD>(GetWindowLongA(frame, GWL_STYLE)) & (WS_VSCROLL | WS_HSCROLL));
    Press(nextMonth);
    EXPECT_TRUE(Says("Juni 1998"));
    EXPECT_EQ(reinterpret_cast<ULONG_PTR>(&DefWindowProcA), GetClassLongPtrA(host, GCLP_WNDPROC))
        << "later windows of the host are not ours";
    DestroyWindow(host);
    EXPECT_FALSE(IsWindow(frame)) << "the frame goes with its parent";
    EXPECT_EQ(1, VARK_InitReports(0, 0, "Blätter", nullptr));
}

TEST_F(SheetWindow, TakesItsStateFromBehindTheMdiStructure)
{
    VARK_InitReports(0, WS_EX_MDICHILD, "Blätter", nullptr);
    Open();
    ASSERT_TRUE(IsWindow(frame));
    Press(nextMonth);
    EXPECT_TRUE(Says("Juni 1998"));
}

TEST_F(SheetWindow, FailedAllocationLeavesTheSheetOrNothing)
{
    for (int n = 1; n < 40; ++n) {
        Choose(5, "1200");
        FailAllocation(n);
        Open();
        const bool wasTried = StopAllocationFaults() >= n;
        books.TakeBoxes();
        EXPECT_EQ(IsWindow(frame) ? 1u : 0u, uint32_t{params.ViewResult}) << n;
        if (IsWindow(frame)) DestroyWindow(frame);
        VARK_SchliesseDB();
        EXPECT_EQ(0, OpenEngineFiles()) << n;
        if (!wasTried) return;
    }
}

TEST_F(SheetWindow, UnknownMandantLeavesTheBlockUntouched)
{
    params.ViewResult = 5;
    const ReportParams before = params;
    EXPECT_EQ(nullptr, VARK_Kontenblatt(7, 0, nullptr, &params));
    EXPECT_EQ(0, std::memcmp(&before, &params, sizeof params));
    EXPECT_EQ(Lines{}, books.TakeBoxes());
}

// ---- On a screen ----

namespace {

struct SheetWindowOnScreen : SheetWindow {
    Display display;

    void SetUp() override
    {
        const std::string missing = display.Begin(std::filesystem::path(VARKUI_LIBRARY).parent_path());
        if (!missing.empty()) GTEST_SKIP() << missing;
        SheetWindow::SetUp();
    }

    // Accepts the dialog, which offers account 1200, and handles the frame's messages while `person` acts.
    void Show(const std::function<void()> &person)
    {
        std::atomic<bool> isOpen{false};
        std::thread acting([&] {
            EXPECT_TRUE(Display::HasKeyboard("Kontenblatt"));
            Display::Do("key Return");
            EXPECT_TRUE(Eventually([&] { return isOpen.load(); }));
            if (HasFailure()) {
                display.End(); // the dialog would wait for ever
                return;
            }
            EXPECT_TRUE(Display::HasKeyboard(TitleOf(frame)));
            person();
            PostMessageA(frame, WM_CLOSE, 0, 0);
        });
        Open();
        isOpen = IsWindow(frame) != FALSE;
        MSG message;
        while (IsWindow(frame) && GetMessageA(&message, nullptr, 0, 0) > 0) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
        acting.join();
    }

    // The buttons' places in the frame, in the order in which Tab goes through them.
    std::vector<RECT> Buttons() const
    {
        std::vector<RECT> places;
        for (int id : {previousMonth, nextMonth, previousAccount, nextAccount, newChoice}) {
            places.push_back(PlaceOf(GetDlgItem(Bar(), id)));
        }
        return places;
    }

    void ExpectButtonsInSight() const
    {
        const RECT client = ClientOf(frame);
        const RECT bar = PlaceOf(Bar());
        EXPECT_EQ(PlaceOf(View()).bottom, bar.top) << "the sheet has the rest";
        EXPECT_EQ(client.bottom, bar.bottom);
        const std::vector<RECT> places = Buttons();
        for (size_t i = 0; i < places.size(); ++i) {
            EXPECT_GE(places[i].left, bar.left) << i;
            EXPECT_GE(places[i].top, bar.top) << i;
            EXPECT_LE(places[i].right, client.right) << i;
            EXPECT_LE(places[i].bottom, client.bottom) << i;
            for (size_t other = 0; other < i; ++other) {
                EXPECT_TRUE(places[other].right <= places[i].left || places[other].bottom <= places[i].top)
                    << other << " lies over " << i;
            }
        }
    }

    // By the mouse, at the place where the button is told to be.
    bool ClickLeadsToTheLastAccount() const
    {
        const RECT place = PlaceOf(GetDlgItem(Bar(), nextAccount));
        return Eventually([&] {
            Display::Do("getactivewindow mousemove --window %1 " +
                        std::to_string((place.left + place.right) / 2) + " " +
                        std::to_string((place.top + place.bottom) / 2) + " click 1");
            return Eventually([&] { return !IsEnabled(nextAccount); }, std::chrono::seconds(2));
        });
    }
};

} // namespace

TEST_F(SheetWindowOnScreen, HasItsButtonsInOneRow)
{
    Show([&] {
        ExpectButtonsInSight();
        for (const RECT &place : Buttons()) {
            EXPECT_EQ(place.top, Buttons()[0].top);
        }
        EXPECT_TRUE(ClickLeadsToTheLastAccount());
    });
}

TEST_F(SheetWindowOnScreen, HasRowsInWhichButtonsWithLargeLettersFindRoom)
{
    ASSERT_EQ(system("xprop -root -f RESOURCE_MANAGER 8s -set RESOURCE_MANAGER 'Xft.dpi: 192'"), 0);
    Show([&] {
        EXPECT_GT(Buttons()[4].top, Buttons()[0].top);
        ExpectButtonsInSight();
        EXPECT_TRUE(ClickLeadsToTheLastAccount());
        ExpectButtonsInSight();
        const LONG before = ClientOf(frame).right;
        Display::Do("getactivewindow windowsize %1 640 800");
        EXPECT_TRUE(Eventually([&] { return ClientOf(frame).right < before; }));
        EXPECT_TRUE(Eventually([&] { return PlaceOf(Bar()).bottom == ClientOf(frame).bottom; }));
        EXPECT_GT(Buttons()[4].top, Buttons()[2].top) << "two in a row";
        ExpectButtonsInSight();
    });
}
