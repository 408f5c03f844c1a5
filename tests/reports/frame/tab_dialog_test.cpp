// Dialogs with a period on each of two tab pages, played by scripts on a dialog of the tests' own, and a
// host's message loop that asks VARK_IsMessage first.
#include "tests/reports/frame/two_periods.h"

#include "include/vark40.h"
#include "tests/support/alloc_faults.h"

#include <string>
#include <thread>
#include <vector>

using namespace vark;
using namespace vark::test;
using namespace text;
using varkui::DialogControl;
using varkui::DialogControlKind;
using varkui::DialogTable;

namespace {

// A dialog of one tab control and nothing behind the tabs.
constexpr DialogControl plainControls[] = {
    {DialogControlKind::TabControl, 50, "", 7, 7, 100, 60, 0, 0},
    {DialogControlKind::DefaultButton, IDOK, "OK", 120, 7, 50, 14, 0, 0},
};
constexpr DialogTable plainTable = {900, "Seiten", 180, 80, plainControls, 2, 0};

constexpr DialogControl barControls[] = {
    {DialogControlKind::PushButton, 31, "voriger Monat", 0, 0, 60, 14, 0, 0},
    {DialogControlKind::PushButton, 32, "nächster"_w, 62, 0, 60, 14, 0, 0},
};
constexpr DialogTable barTable = {115, "", 130, 14, barControls, 2, 0};

void AddTabs(HWND dialog, int count)
{
    for (int i = 0; i < count; ++i) {
        char label[] = "Seite";
        TCITEMA item{};
        item.mask = TCIF_TEXT;
        item.pszText = label;
        SendDlgItemMessageA(dialog, 50, TCM_INSERTITEMA, static_cast<WPARAM>(i),
                            reinterpret_cast<LPARAM>(&item));
    }
}

// What a dialog of plain tabs is told, and what it answers to a change of page.
struct PlainTabs {
    std::vector<UINT> Told;
    INT_PTR Answer = 0;
};

INT_PTR CALLBACK PlainProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto *state = DialogState<PlainTabs>(dialog, message, lParam);
    if (state == nullptr || message != WM_NOTIFY) return FALSE;
    EXPECT_EQ(50u, wParam);
    const auto &header = *reinterpret_cast<const NMHDR *>(lParam);
    EXPECT_EQ(GetDlgItem(dialog, 50), header.hwndFrom);
    state->Told.push_back(header.code);
    SetWindowLongPtrA(dialog, DWLP_MSGRESULT, header.code == TCN_SELCHANGING ? state->Answer : 0);
    return TRUE;
}

HWND MakeModeless(const DialogTable &table, DLGPROC procedure, void *state, HWND owner = nullptr)
{
    DLGTEMPLATE *made = varkui::MakeDialogTemplate(table);
    HWND dialog =
        CreateDialogIndirectParamA(nullptr, made, owner, procedure, reinterpret_cast<LPARAM>(state));
    varkui::FreeDialogTemplate(made);
    return dialog;
}

LRESULT CALLBACK FrameProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_DESTROY && GetPropA(window, "main") != nullptr) PostQuitMessage(5);
    return DefWindowProcA(window, message, wParam, lParam);
}

HWND MakeFrame(HWND parent = nullptr, DWORD style = WS_OVERLAPPEDWINDOW | WS_VISIBLE)
{
    WNDCLASSA frame{};
    frame.lpszClassName = "Rahmen";
    frame.lpfnWndProc = FrameProcedure;
    RegisterClassA(&frame);
    return CreateWindowExA(0, "Rahmen", "Wirt", style, 0, 0, 400, 300, parent, nullptr, nullptr, nullptr);
}

VarkMessage KeyMessage(HWND window, WPARAM key)
{
    VarkMessage message{};
    message.hwnd = window;
    message.message = WM_KEYDOWN;
    message.wParam = key;
    return message;
}

} // namespace

// ---- The two pages ----

TEST(PeriodTabDialog, HasANameForEachField)
{
    Stage stage("dialog 127\nexpect label 20000 &Jahr:\nexpect label 22990 v&on:\nexpect label 22991 &bis:\n"
                "press 1\n");
    EXPECT_EQ(7, stage.Run());
    EXPECT_EQ("", stage.Refusals());
}

TEST(PeriodTabDialog, ShowsTheFirstPageAndNamesBoth)
{
    Stage stage("dialog 127\nexpect rows 1044 2\nexpect row 1044 Zeitraum\nselect 1044 1\n"
                "expect row 1044 Vergleichszeitraum\npress 1\n");
    EXPECT_EQ(7, stage.Run());
    EXPECT_EQ("", stage.Refusals());
    EXPECT_STREQ("010318", stage.State.Tabs.Selections[0].VonDatum) << "the page that was left was accepted";
    EXPECT_STREQ("310318", stage.State.Tabs.Selections[0].BisDatum);
    EXPECT_STREQ("1998", stage.State.Tabs.Selections[0].JahrText);
}

TEST(PeriodTabDialog, OffersQuartersOnThePagesOfTheGuvOnly)
{
    Stage stage("dialog 127\nexpect visible 20013\nexpect visible 20001\nexpect visible 20018\n"
                "expect visible 20017\npress 1\n");
    EXPECT_EQ(7, stage.Run());
    EXPECT_EQ("", stage.Refusals());
    EXPECT_EQ(0x0Fu, stage.State.Tabs.PageStates[1].Options);
}

TEST(PeriodTabDialog, OffersNoQuartersOnThePagesOfTheBilanz)
{
    Stage stage("dialog 127\nexpect visible 20001\nexpect visible 20013\n", false);
    stage.Run();
    EXPECT_NE(std::string::npos, stage.Refusals().find("there is no control 20013"));
    EXPECT_EQ(0x0Bu, stage.State.Tabs.PageStates[0].Options);
}

TEST(PeriodTabDialog, EachPageKeepsItsOwnPeriod)
{
    Stage stage("dialog 127\ncheck 1046\ncheck 20005\nselect 1044 1\nexpect checked 20003\n"
                "expect unchecked 20005\ntext 20000 1997\ncheck 20017\nselect 1044 0\nexpect checked 20005\n"
                "expect text 20000 1998\npress 1\n");
    EXPECT_EQ(7, stage.Run());
    EXPECT_EQ("", stage.Refusals());
    EXPECT_EQ(5, stage.State.Tabs.Selections[0].Code);
    EXPECT_STREQ("310518", stage.State.Tabs.Selections[0].BisDatum);
    EXPECT_EQ(17, stage.State.Tabs.Selections[1].Code);
    EXPECT_STREQ("311217", stage.State.Tabs.Selections[1].BisDatum);
    EXPECT_STREQ("1997", stage.State.Tabs.Selections[1].JahrText);
}

TEST(PeriodTabDialog, CtrlTabTurnsThePage)
{
    Stage stage("dialog 127\nkey Ctrl+Tab\nexpect row 1044 1\nkey Ctrl+Tab\nexpect row 1044 0\npress 1\n");
    EXPECT_EQ(7, stage.Run());
    EXPECT_EQ("", stage.Refusals());
}

TEST(PeriodTabDialog, CtrlShiftTabGoesTheSameWayWithTwoPages)
{
    Stage stage("dialog 127\nkey Ctrl+Shift+Tab\nexpect row 1044 1\nkey Ctrl+Shift+Tab\n"
                "expect row 1044 0\npress 1\n");
    EXPECT_EQ(7, stage.Run());
    EXPECT_EQ("", stage.Refusals());
}

namespace {

// Page after page by the key or by the mouse, with a date on the first that is none.
void TurnFromABadDate(const std::string &turn)
{
    Stage stage("dialog 127\ncheck 20018\ntext 22990 32.1.98\n" + turn +
                "\nbox ok Unzulässige Tagesangabe!\nexpect row 1044 0\nexpect focus 22990\n"
                "expect visible 22990\ntext 22990 1.1.98\n" +
                turn + "\nexpect row 1044 1\npress 1\n");
    EXPECT_EQ(7, stage.Run());
    EXPECT_EQ("", stage.Refusals());
}

} // namespace

TEST(PeriodTabDialog, BadDateKeepsThePageInViewForTheKeys) { TurnFromABadDate("key Ctrl+Tab"); }

TEST(PeriodTabDialog, BadDateKeepsThePageInViewForTheMouse) { TurnFromABadDate("select 1044 1"); }

TEST(PeriodTabDialog, ComparisonThatIsOffIsNeverChecked)
{
    Stage stage("dialog 127\nselect 1044 1\ncheck 20018\ntext 22990 99.99.99\nselect 1044 0\n"
                "expect row 1044 0\nselect 1044 1\nexpect text 22990 99.99.99\npress 1\n");
    EXPECT_EQ(7, stage.Run());
    EXPECT_EQ("", stage.Refusals());
    EXPECT_STREQ("", stage.State.Tabs.Selections[1].BisDatum) << "nothing was taken from it";
}

TEST(PeriodTabDialog, ComparisonThatIsOnStopsOkAndLeavingThePage)
{
    Stage stage("dialog 127\ncheck 1046\nselect 1044 1\ncheck 20018\ntext 22990 99.99.99\npress 1\n"
                "box ok Unzulässige Tagesangabe!\nexpect focus 22990\nselect 1044 0\n"
                "box ok Unzulässige Tagesangabe!\nexpect row 1044 1\nuncheck 1046\npress 1\n");
    EXPECT_EQ(7, stage.Run());
    EXPECT_EQ("", stage.Refusals());
}

TEST(PeriodTabDialog, FieldThatLosesTheFocusToItsOwnRefusalIsRefusedOnce)
{
    Stage stage("box ok Unzulässige Tagesangabe!\ndialog 127\nexpect focus 22990\npress 2\n");
    stage.State.Tabs.Selections[0].Code = 0;
    stage.State.AtOpening = [&](HWND dialog) {
        HWND page = stage.State.Tabs.PageWindows[0];
        SetDlgItemTextA(page, controlVon, "32.1.98");
        PostMessageA(dialog, WM_COMMAND, IDOK, 0);
        PostMessageA(page, WM_USER + 4, MAKEWPARAM(controlVon, EN_KILLFOCUS), 0);
    };
    EXPECT_EQ(0, stage.Run());
    EXPECT_EQ("", stage.Refusals());
}

TEST(PeriodTabDialog, OkChecksThePageInView)
{
    Stage stage("dialog 127\ntext 20000 1970\npress 1\nbox ok Die Jahresangabe ist unzulässig!\n"
                "expect focus 20000\ntext 20000 1997\npress 1\n");
    EXPECT_EQ(7, stage.Run());
    EXPECT_EQ("", stage.Refusals());
    EXPECT_STREQ("310317", stage.State.Tabs.Selections[0].BisDatum);
}

TEST(PeriodTabDialog, FocusFollowsFromPageToPage)
{
    // On the second page the first stop is its checked month; outside the pages the focus stays.
    Stage stage("dialog 127\nfocus 20000\nkey Ctrl+Tab\nexpect row 1044 1\ntext 20000 1997\nfocus 20000\n"
                "key Ctrl+Tab\nexpect row 1044 0\nexpect text 20000 1998\nfocus 1044\nselect 1044 1\n"
                "expect focus 1044\npress 1\n");
    HWND onOldPage = nullptr;
    stage.State.AtOk = [&](HWND) { onOldPage = GetFocus(); };
    EXPECT_EQ(7, stage.Run());
    EXPECT_EQ("", stage.Refusals());
    EXPECT_FALSE(onOldPage != nullptr && IsChild(stage.State.Tabs.PageWindows[0], onOldPage));
}

TEST(PeriodTabDialog, TabWalksFromTheTabsIntoThePageAndOut)
{
    Stage stage("dialog 127\nfocus 1044\nkey Tab\nexpect focus 20003\nkey Tab\nexpect focus 20000\nkey Tab\n"
                "expect focus 1046\nkey Tab\nexpect focus 20100\nkey Tab\nexpect focus 1\npress 1\n");
    EXPECT_EQ(7, stage.Run());
    EXPECT_EQ("", stage.Refusals());
}

TEST(PeriodTabDialog, EscapeGivesNought)
{
    Stage stage("dialog 127\nkey Escape\n");
    EXPECT_EQ(0, stage.Run());
    EXPECT_EQ("", stage.Refusals());
}

TEST(PeriodTabDialog, NobodyBeforeTheScreenPressesOkThroughTheSameChecks)
{
    Stage stage("");
    EXPECT_EQ(7, stage.Run());
    EXPECT_STREQ("310318", stage.State.Tabs.Selections[0].BisDatum);
}

TEST(PeriodTabDialog, RefusalWithNobodyBeforeTheScreenIsACancel)
{
    Stage stage("");
    stage.State.AtOpening = [&](HWND) {
        SetDlgItemTextA(stage.State.Tabs.PageWindows[0], controlYear, "1970");
    };
    EXPECT_EQ(0, stage.Run());
    EXPECT_EQ(Lines{"Die Jahresangabe ist unzulässig!"}, stage.Installation.TakeBoxes());
}

TEST(PeriodTabDialog, PagesGoWithTheDialog)
{
    Stage stage("dialog 127\npress 1\n");
    HWND pages[2] = {};
    stage.State.AtOk = [&](HWND) {
        pages[0] = stage.State.Tabs.PageWindows[0];
        pages[1] = stage.State.Tabs.PageWindows[1];
        EXPECT_TRUE(IsWindowVisible(pages[0]));
        EXPECT_FALSE(IsWindowVisible(pages[1]));
    };
    EXPECT_EQ(7, stage.Run());
    EXPECT_NE(nullptr, pages[1]);
    EXPECT_FALSE(IsWindow(pages[0]));
    EXPECT_FALSE(IsWindow(pages[1]));
    EXPECT_EQ(nullptr, stage.State.Tabs.PageWindows[1]);
}

TEST(PeriodTabDialog, PagesLieInTheirPlace)
{
    Stage stage("dialog 127\npress 1\n");
    stage.State.AtOk = [&](HWND dialog) {
        RECT place;
        RECT page;
        ASSERT_TRUE(GetWindowRect(GetDlgItem(dialog, controlPagePlace), &place));
        for (HWND window : stage.State.Tabs.PageWindows) {
            ASSERT_TRUE(GetWindowRect(window, &page));
            EXPECT_EQ(place.left, page.left);
            EXPECT_EQ(place.top, page.top);
            EXPECT_EQ(place.right, page.right);
            EXPECT_EQ(place.bottom, page.bottom);
        }
    };
    EXPECT_EQ(7, stage.Run());
}

TEST(PeriodTabDialog, MemoryThatRunsOutLeavesNothingBehind)
{
    // The dialog's template, and those of the first and of the second page.
    Stage stage("");
    for (const int n : {1, 2, 3}) {
        HWND frame = MakeFrame();
        FailAllocation(n);
        EXPECT_EQ(0, stage.Run(frame)) << n;
        StopAllocationFaults();
        const Lines boxes = stage.Installation.TakeBoxes();
        ASSERT_EQ(1u, boxes.size()) << n;
        EXPECT_EQ(0u,
                  boxes[0].find("Es kann kein Speicherplatz mehr vom Betriebssystem angefordert werden."));
        EXPECT_TRUE(IsWindowEnabled(frame));
        EXPECT_EQ(nullptr, stage.State.Tabs.PageWindows[0]);
        DestroyWindow(frame);
    }
}

// ---- The loop ----

TEST(TabDialogLoop, DisablesTheParentMeanwhile)
{
    Stage stage("dialog 127\npress 1\n");
    HWND frame = MakeFrame();
    stage.State.AtOk = [&](HWND dialog) {
        EXPECT_FALSE(IsWindowEnabled(frame));
        EXPECT_EQ(frame, GetParent(dialog));
    };
    EXPECT_EQ(7, stage.Run(frame));
    EXPECT_TRUE(IsWindowEnabled(frame));
    DestroyWindow(frame);
}

TEST(TabDialogLoop, TakesTheParentOfAChildWindow)
{
    Stage stage("dialog 127\npress 1\n");
    HWND frame = MakeFrame();
    HWND child = MakeFrame(frame, WS_CHILD | WS_VISIBLE);
    stage.State.AtOk = [&](HWND) { EXPECT_FALSE(IsWindowEnabled(frame)); };
    EXPECT_EQ(7, stage.Run(child));
    EXPECT_TRUE(IsWindowEnabled(frame));
    DestroyWindow(frame);
}

TEST(TabDialogLoop, LeavesAParentDisabledThatWasSo)
{
    Stage stage("dialog 127\npress 1\n");
    HWND frame = MakeFrame();
    EnableWindow(frame, FALSE);
    EXPECT_EQ(7, stage.Run(frame));
    EXPECT_FALSE(IsWindowEnabled(frame));
    DestroyWindow(frame);
}

TEST(TabDialogLoop, EndsWithTheDialogThatWasDestroyedWithoutAnEnd)
{
    Stage stage("dialog 127\npress 1\n");
    HWND gone = nullptr;
    stage.State.AtOpening = [&](HWND dialog) { gone = dialog; };
    // A frame that goes takes the dialog with it.
    HWND frame = MakeFrame();
    stage.State.AtOk = [&](HWND) { DestroyWindow(frame); };
    struct Ending {
        static INT_PTR CALLBACK Procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
        {
            auto *state = DialogState<TwoPeriods>(dialog, message, lParam);
            if (message == WM_COMMAND && LOWORD(wParam) == IDOK) {
                state->AtOk(dialog);
                return TRUE;
            }
            if (state != nullptr && message == WM_INITDIALOG) state->AtOpening(dialog);
            return state != nullptr && PeriodTabMessage(state->Tabs, dialog, message, wParam, lParam);
        }
    };
    EXPECT_EQ(0, RunTabDialog(TwoPeriodsTable(stage.Builder, true), frame, Ending::Procedure, &stage.State));
    EXPECT_FALSE(IsWindow(gone));
    VarkMessage message = KeyMessage(nullptr, VK_TAB);
    EXPECT_EQ(0, VARK_IsMessage(&message));
    EXPECT_EQ(nullptr, ActiveTabDialog.load());
}

TEST(TabDialogLoop, HandsTheEndOfTheProgramOn)
{
    Stage stage("");
    HWND frame = MakeFrame();
    HWND opened = nullptr;
    stage.State.AtOpening = [&](HWND dialog) {
        opened = dialog;
        PostQuitMessage(3);
        SetPropA(dialog, VARKUI_ANSWER_PROP, nullptr);
    };
    EXPECT_EQ(0, stage.Run(frame));
    EXPECT_TRUE(IsWindowEnabled(frame));
    EXPECT_FALSE(IsWindow(opened)) << "its state goes with the call";
    MSG message{};
    BOOL got = TRUE;
    while (got > 0) {
        got = GetMessageA(&message, nullptr, 0, 0);
    }
    EXPECT_EQ(0, got);
    EXPECT_EQ(3u, message.wParam);
    DestroyWindow(frame);
}

TEST(TabDialogLoop, EndOutsideOfALoopDestroysTheDialog)
{
    Stage stage("");
    PlainTabs state;
    HWND dialog = MakeModeless(plainTable, PlainProcedure, &state);
    ASSERT_NE(nullptr, dialog);
    EXPECT_EQ(0, EndTabDialog(dialog, 1));
    EXPECT_FALSE(IsWindow(dialog));
    EXPECT_EQ(0, EndTabDialog(dialog, 1)) << "nor is there anything to end";
}

// ---- VARK_IsMessage ----

TEST(IsMessage, TakesNothingWhileNoTabbedDialogIsOpen)
{
    Stage stage("");
    HWND frame = MakeFrame();
    for (UINT number = 0; number < 0x500; ++number) {
        for (const WPARAM wParam : {WPARAM{0}, WPARAM{VK_TAB}, WPARAM{VK_RETURN}}) {
            VarkMessage message{};
            message.hwnd = frame;
            message.message = number;
            message.wParam = wParam;
            EXPECT_EQ(0, VARK_IsMessage(&message)) << number;
        }
    }
    EXPECT_EQ(0, VARK_IsMessage(nullptr));
    DestroyWindow(frame);
}

TEST(IsMessage, AnswersBeforeTheLibraryIsReady)
{
    VarkMessage message{};
    EXPECT_EQ(0, VARK_IsMessage(&message));
    EXPECT_EQ(0, VARK_IsMessage(nullptr));
}

TEST(IsMessage, ForgetsADialogThatIsNoWindowAnyMore)
{
    Stage stage("");
    HWND frame = MakeFrame();
    ActiveTabDialog = frame;
    ActiveBarWindow = frame;
    DestroyWindow(frame);
    VarkMessage message = KeyMessage(frame, VK_TAB);
    EXPECT_EQ(0, VARK_IsMessage(&message));
    EXPECT_EQ(nullptr, ActiveTabDialog.load());
    EXPECT_EQ(nullptr, ActiveBarWindow.load());
}

TEST(IsMessage, FollowsTheActivationOfTheDialog)
{
    Stage stage("");
    HWND frame = MakeFrame();
    DialogBuilder builder = BeginDialog();
    HWND first = MakeModeless(TwoPeriodsTable(builder, true), TwoPeriodsProcedure, &stage.State);
    ShowWindow(first, SW_SHOW);
    EXPECT_EQ(first, ActiveTabDialog.load());
    SetActiveWindow(frame);
    EXPECT_EQ(nullptr, ActiveTabDialog.load());
    SetActiveWindow(first);
    EXPECT_EQ(first, ActiveTabDialog.load());

    TwoPeriods other;
    other.Context = stage.State.Context;
    HWND second = MakeModeless(TwoPeriodsTable(builder, true), TwoPeriodsProcedure, &other);
    ShowWindow(second, SW_SHOW);
    EXPECT_EQ(second, ActiveTabDialog.load()) << "the first loses activation and clears only itself";
    SendMessageA(first, WM_ACTIVATE, WA_INACTIVE, 0);
    EXPECT_EQ(second, ActiveTabDialog.load());
    DestroyWindow(second);
    DestroyWindow(first);
    DestroyWindow(frame);
}

namespace {

// Ctrl+Tab, with Shift or without, as the hidden keyboard of a script presses it into a host's own loop.
struct HostLoop {
    PlainTabs State;
    HWND Dialog;
    int Taken = 0;

    explicit HostLoop(int tabs) : Dialog(MakeModeless(plainTable, PlainProcedure, &State))
    {
        AddTabs(Dialog, tabs);
        AttachTabControl(Dialog, 50);
        ShowWindow(Dialog, SW_SHOW);
        ActiveTabDialog = Dialog;
    }
    ~HostLoop() { DestroyWindow(Dialog); }
    HostLoop(const HostLoop &) = delete;
    HostLoop &operator=(const HostLoop &) = delete;

    // Handles messages until the script presses OK.
    void Run()
    {
        MSG message{};
        while (GetMessageA(&message, nullptr, 0, 0) > 0) {
            if (message.message == WM_KEYDOWN && message.wParam == VK_F1) return;
            auto *asHost = reinterpret_cast<VarkMessage *>(&message);
            if (VARK_IsMessage(asHost) != 0) {
                ++Taken;
                continue;
            }
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
    }
    [[nodiscard]] int Page() const
    {
        return static_cast<int>(SendDlgItemMessageA(Dialog, 50, TCM_GETCURSEL, 0, 0));
    }
};

} // namespace

TEST(IsMessage, CtrlShiftTabGoesBackAmongThreePages)
{
    Stage stage("dialog 900\nkey Ctrl+Shift+Tab\nexpect row 50 2\nkey Ctrl+Shift+Tab\nexpect row 50 1\n"
                "key Ctrl+Tab\nkey Ctrl+Tab\nexpect row 50 0\nkey F1\n");
    HostLoop host(3);
    host.Run();
    EXPECT_EQ("", stage.Refusals());
    EXPECT_EQ(0, host.Page());
    ASSERT_EQ(8u, host.State.Told.size());
    for (size_t i = 0; i < 8; i += 2) {
        EXPECT_EQ(TCN_SELCHANGING, host.State.Told[i]);
        EXPECT_EQ(TCN_SELCHANGE, host.State.Told[i + 1]);
    }
    EXPECT_GT(host.Taken, 4) << "the keys, and what belongs to the dialog besides";
}

TEST(IsMessage, RefusedChangeKeepsThePage)
{
    Stage stage("dialog 900\nkey Ctrl+Tab\nexpect row 50 0\nkey F1\n");
    HostLoop host(2);
    host.State.Answer = 1;
    host.Run();
    EXPECT_EQ("", stage.Refusals());
    EXPECT_EQ(std::vector<UINT>{TCN_SELCHANGING}, host.State.Told);
}

TEST(IsMessage, TabsWithoutAPageAreLeftAlone)
{
    Stage stage("dialog 900\nkey Ctrl+Tab\nkey F1\n");
    HostLoop host(0);
    host.Run();
    EXPECT_EQ("", stage.Refusals());
    EXPECT_TRUE(host.State.Told.empty());
}

TEST(IsMessage, TabWithoutCtrlMovesTheFocusAsInAnyDialog)
{
    Stage stage("dialog 900\nfocus 50\nkey Tab\nexpect focus 1\nkey F1\n");
    HostLoop host(2);
    host.Run();
    EXPECT_EQ("", stage.Refusals());
    EXPECT_TRUE(host.State.Told.empty());
}

TEST(IsMessage, CtrlTabIsNothingSpecialWithoutATabControl)
{
    Stage stage("dialog 900\nkey Ctrl+Tab\nexpect row 50 0\nkey F1\n");
    HostLoop host(2);
    RemovePropA(host.Dialog, "tervoTabCtrlProp");
    host.Run();
    EXPECT_EQ("", stage.Refusals());
    EXPECT_TRUE(host.State.Told.empty());
}

TEST(IsMessage, MessagesOfOtherWindowsAreTheHosts)
{
    Stage stage("");
    HWND frame = MakeFrame();
    HostLoop host(2);
    VarkMessage message = KeyMessage(frame, VK_RETURN);
    EXPECT_EQ(0, VARK_IsMessage(&message));
    message = KeyMessage(GetDlgItem(host.Dialog, 50), VK_SPACE);
    EXPECT_EQ(1, VARK_IsMessage(&message));
    DestroyWindow(frame);
}

TEST(IsMessage, ServesTheBarOfASheetAfterTheTabbedDialog)
{
    Stage stage("");
    HWND frame = MakeFrame();
    PlainTabs state;
    HWND bar = CreateChildDialog(frame, barTable, PlainProcedure, &state);
    ASSERT_NE(nullptr, bar);
    EXPECT_NE(0, GetWindowLongA(bar, GWL_STYLE) & static_cast<LONG>(WS_CHILD));
    EXPECT_EQ(frame, GetParent(bar));
    EXPECT_FALSE(IsWindowVisible(bar));
    ShowWindow(bar, SW_SHOW);
    ActiveBarWindow = bar;
    SetFocus(GetDlgItem(bar, 31));
    VarkMessage message = KeyMessage(GetDlgItem(bar, 31), VK_TAB);
    EXPECT_EQ(1, VARK_IsMessage(&message));
    EXPECT_EQ(GetDlgItem(bar, 32), GetFocus());
    message = KeyMessage(frame, VK_TAB);
    EXPECT_EQ(0, VARK_IsMessage(&message));

    HostLoop host(2);
    message = KeyMessage(GetDlgItem(bar, 32), VK_TAB);
    EXPECT_EQ(1, VARK_IsMessage(&message)) << "not the tabbed dialog's, so the bar's";
    ActiveBarWindow = nullptr;
    DestroyWindow(frame);
}

TEST(IsMessage, ChildDialogWithoutMemoryIsNull)
{
    Stage stage("");
    HWND frame = MakeFrame();
    PlainTabs state;
    FailAllocation(1);
    EXPECT_EQ(nullptr, CreateChildDialog(frame, barTable, PlainProcedure, &state));
    StopAllocationFaults();
    DestroyWindow(frame);
}

TEST(IsMessage, HostsLoopServesATabbedDialogUntilItsEnd)
{
    // A host's frame, its loop, and a modeless dialog of two periods over it: the loop is the host's
    // throughout.
    Stage stage("dialog 127\nkey Ctrl+Tab\nexpect row 1044 1\ncheck 20005\nkey Ctrl+Tab\nexpect row 1044 0\n"
                "key Escape\nclose\n");
    HWND frame = MakeFrame();
    SetPropA(frame, "main", frame);
    DialogBuilder builder = BeginDialog();
    HWND dialog = MakeModeless(TwoPeriodsTable(builder, true), TwoPeriodsProcedure, &stage.State, frame);
    ShowWindow(dialog, SW_SHOW);
    MSG message{};
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        if (VARK_IsMessage(reinterpret_cast<VarkMessage *>(&message)) != 0) continue;
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    EXPECT_EQ(5u, message.wParam);
    EXPECT_FALSE(IsWindow(dialog));
    EXPECT_EQ("", stage.Refusals());
}
