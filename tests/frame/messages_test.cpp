#include "src/frame/messages.h"

#include "src/frame/dialogs.h"
#include "tests/window-system/front_end_setup.h"
#include "text/windows1252.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>

using namespace vark;
using namespace text;

namespace {

// The latest box as it was asked for.
struct Box {
    HWND Owner;
    std::string Caption;
    UINT Style;
};
Box latest;

} // namespace

// The linker leads calls of MessageBoxA here.
extern "C" {
int __real_MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT style);
int __wrap_MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT style)
{
    latest = {owner, caption, style};
    return __real_MessageBoxA(owner, text, caption, style);
}
}

namespace {

struct Messages : testing::Test {
    FrontEndSetup frontEnd;
    ThreadContext context{};
};

std::string Utf8(const char *text)
{
    std::string out(ToUtf8(text, nullptr, 0) + 1, 0);
    out.resize(ToUtf8(text, out.data(), out.size()));
    return out;
}

} // namespace

TEST_F(Messages, EveryNumberHasItsTextAndNoOtherNumberHasOne)
{
    std::map<int, std::string> expected;
    std::ifstream list(MESSAGE_TEXTS);
    for (std::string line; std::getline(list, line);) {
        expected[std::stoi(line)] = line.substr(5);
    }
    ASSERT_EQ(175u, expected.size());
    for (int number = -10; number < 70000; ++number) {
        const char *text = MessageText(number);
        const auto entry = expected.find(number);
        ASSERT_EQ(entry != expected.end(), text != nullptr) << number;
        if (text == nullptr) continue;
        EXPECT_EQ(entry->second, Utf8(text)) << number;
        EXPECT_LT(std::string(text).size(), 400u) << number;
    }
}

TEST_F(Messages, WarningIsAnsweredWithOneForOk)
{
    EXPECT_EQ(1u, ShowMessage(1412, 0, nullptr, -1));
    EXPECT_EQ("box Das Buchungsdatum ist unzulässig!\n", frontEnd.Log());
}

TEST_F(Messages, IconAndButtonsFollowTheNumber)
{
    // 0x40 information, 0x30 exclamation, 0x20 question; 0 OK, 1 with Cancel, 3 yes, no and Cancel,
    // 4 yes and no.
    const struct {
        int32_t First, Last;
        UINT Style;
    } groups[] = {{1000, 1199, 0x40}, {1200, 1399, 0x41}, {1400, 1599, 0x30}, {1600, 1799, 0x31},
                  {1800, 1999, 0x24}, {2000, 2199, 0x23}, {3001, 3300, 0x30}};
    for (const auto &group : groups) {
        for (int32_t number = group.First; number <= group.Last; ++number) {
            EXPECT_EQ(group.Style, BoxStyle(number)) << number;
        }
    }
    for (const int32_t number : {1000, 1412, 1800, 3104}) {
        ShowMessage(number, 0, "x", -1);
        EXPECT_EQ(BoxStyle(number), latest.Style) << number;
        EXPECT_EQ("MERIDA", latest.Caption);
    }
    ShowMessage(1300, 0, nullptr, -1); // has no text
    EXPECT_EQ(0x1000u, latest.Style);
    EXPECT_EQ("MERIDA", latest.Caption);
}

TEST_F(Messages, QuestionIsAnsweredWithOneForYesAndZeroForNo)
{
    frontEnd.UseScript("box yes\nbox no\n");
    EXPECT_EQ(1u, ShowMessage(1800, 0, "Mai", -1));
    EXPECT_EQ(0u, ShowMessage(1800, 0, "Mai", -1));
}

TEST_F(Messages, TextFillsThePlaceOfTheMessage)
{
    ShowMessage(1428, 0, "100", -1);
    EXPECT_EQ("box Die Kostenstelle 100 existiert nicht!\n", frontEnd.Log());
}

TEST_F(Messages, WithoutATextThePlaceStaysVisible)
{
    ShowMessage(1428, 0, nullptr, -1);
    EXPECT_EQ("box Die Kostenstelle %s existiert nicht!\n", frontEnd.Log());
}

TEST_F(Messages, PercentSignsInTheTextAreNoPlaces)
{
    ShowMessage(1428, 0, "%s%n%d", -1);
    EXPECT_EQ("box Die Kostenstelle %s%n%d existiert nicht!\n", frontEnd.Log());
}

TEST_F(Messages, TextWithoutPlaceIgnoresWhatIsFilledIn)
{
    ShowMessage(1412, 0, "unused", -1);
    EXPECT_EQ("box Das Buchungsdatum ist unzulässig!\n", frontEnd.Log());
}

TEST_F(Messages, TeilbuchungIsCountedFromOneInFrontOfTheText)
{
    context.ShowMessages = 1;
    EXPECT_EQ(-25, Report(context, 1432, -25, nullptr, 2));
    EXPECT_EQ("box Teilbuchung 3: Die Anzahl der Teilbuchungen ist nicht korrekt!\n", frontEnd.Log());
}

TEST_F(Messages, FirstTeilbuchungIsNumberOneAndNoneIsNotNamed)
{
    ShowMessage(1412, 0, nullptr, 0);
    ShowMessage(1409, 0, "Sollk", 0);
    ShowMessage(1412, 0, nullptr, -1);
    ShowMessage(1412, 0, nullptr, -2);
    EXPECT_EQ("box Teilbuchung 1: Das Buchungsdatum ist unzulässig!\n"
              "box Teilbuchung 1: Die Sollkontonummer ist unzulässig!\n"
              "box Das Buchungsdatum ist unzulässig!\n"
              "box Das Buchungsdatum ist unzulässig!\n",
              frontEnd.Log());
}

TEST_F(Messages, AnEmptyTextFillsThePlaceWithNothing)
{
    ShowMessage(1428, 0, "", -1);
    EXPECT_EQ("box Die Kostenstelle  existiert nicht!\n", frontEnd.Log());
}

TEST_F(Messages, HighestTeilbuchungIsCountedWithoutOverflow)
{
    ShowMessage(1412, 0, nullptr, INT32_MAX);
    EXPECT_EQ("box Teilbuchung 2147483648: Das Buchungsdatum ist unzulässig!\n", frontEnd.Log());
}

TEST_F(Messages, OverlongTextIsCutNotOverrun)
{
    const std::string path(5000, 'p');
    ShowMessage(3112, 0, path.c_str(), -1);
    EXPECT_EQ(0u, frontEnd.Log().find("box File ppp"));
    EXPECT_LT(frontEnd.Log().size(), 1000u);
}

TEST_F(Messages, ReportShowsOnlyToACallerWhoWantsMessages)
{
    context.ShowMessages = 0;
    EXPECT_EQ(-8, Report(context, 1409, -8, "Sollk", -1));
    EXPECT_EQ("", frontEnd.Log());
    context.ShowMessages = 1;
    EXPECT_EQ(-8, Report(context, 1409, -8, "Sollk", -1));
    EXPECT_EQ("box Die Sollkontonummer ist unzulässig!\n", frontEnd.Log());
    context.ShowMessages = -1;
    EXPECT_EQ(0, Report(context, 1450, 0, nullptr, -1)) << "any value but 0 wants them";
    EXPECT_EQ("box Die Sollkontonummer ist unzulässig!\nbox Der Betrag kann nicht umgerechnet werden!\n",
              frontEnd.Log());
}

TEST_F(Messages, StatusIsShownByItsNumberRange)
{
    ReportStatus(4, nullptr);
    ReportStatus(12, "/daten/DB/fista.btr");
    ReportStatus(1001, nullptr);
    ReportStatus(2001, nullptr);
    EXPECT_EQ("box Key value not found\n"
              "box File /daten/DB/fista.btr not found\n"
              "box Lock Parameter Out of Range\n"
              "box Insufficient Memory\n",
              frontEnd.Log());
}

TEST_F(Messages, StatusRangesHaveTheirLimits)
{
    // 99 would be 3199, 100 is 2300, 1999 is 4199, 2000 is 3220, 2027 is 3247: numbers without a text, but
    // for the neighbours of these.
    ReportStatus(98, nullptr);
    ReportStatus(1016, nullptr);
    ReportStatus(2007, nullptr);
    EXPECT_EQ("box Internal transaction error\nbox Already Initialized\nbox No Task Slots available\n",
              frontEnd.Log());
    for (const int16_t status : {int16_t{99}, int16_t{100}, int16_t{1999}, int16_t{2000}, int16_t{800}}) {
        ReportStatus(status, nullptr);
    }
    EXPECT_EQ(5u * std::string("box Speicher voll.\n").size(),
              frontEnd.Log().size() - std::string("box Internal transaction error\nbox Already "
                                                  "Initialized\nbox No Task Slots available\n")
                                          .size());
}

TEST_F(Messages, StatusWithoutATextEndsInTheBoxForExhaustedMemory)
{
    ReportStatus(33, nullptr);
    ReportStatus(-1, nullptr);
    ReportStatus(32767, nullptr);
    EXPECT_EQ("box Speicher voll.\nbox Speicher voll.\nbox Speicher voll.\n", frontEnd.Log());
}

TEST_F(Messages, BoxForExhaustedMemoryGivesZeroForOk)
{
    EXPECT_EQ(0u, ShowMessage(3133, 0, nullptr, -1));
    EXPECT_EQ(0u, ShowMessage(INT32_MIN, 0, nullptr, -1));
    EXPECT_EQ(0u, ShowMessage(INT32_MAX, 0, "x", 5));
}

TEST_F(Messages, RecordInUseIsTold)
{
    EXPECT_TRUE(ReportLocked(84));
    EXPECT_TRUE(ReportLocked(85));
    EXPECT_FALSE(ReportLocked(0));
    EXPECT_FALSE(ReportLocked(80));
    EXPECT_EQ("box Der Datensatz wird von einer anderen Anwendung benutzt!\n"
              "box Der Datensatz wird von einer anderen Anwendung benutzt!\n",
              frontEnd.Log());
}

TEST_F(Messages, CursorIsTheOneFromBefore)
{
    HCURSOR wait = LoadCursorA(nullptr, IDC_WAIT);
    SetCursor(wait);
    ShowMessage(1412, 0, nullptr, -1);
    EXPECT_EQ(wait, SetCursor(nullptr));
}

TEST_F(Messages, ControlThatDoesNotExistIsNotFocused)
{
    EXPECT_EQ(1u, ShowMessage(1412, 22990, nullptr, -1));
    EXPECT_EQ(nullptr, FocusControl(nullptr, 22990));
    FocusAndSelect(nullptr);
    EXPECT_EQ(nullptr, GetFocus());
}

// ---- The focus afterwards ----

namespace {

using varkui::DialogControlKind;

constexpr int firstField = 100;
constexpr int secondField = 101;
constexpr int checkBox = 102;

constexpr varkui::DialogControl controls[] = {
    {DialogControlKind::Edit, firstField, "", 7, 7, 60, 14, 0, 0},
    {DialogControlKind::Edit, secondField, "", 7, 25, 60, 14, 0, 0},
    {DialogControlKind::CheckBox, checkBox, "x", 7, 43, 60, 14, 0, 0},
    {DialogControlKind::DefaultButton, IDOK, "OK", 80, 7, 50, 14, 0, 0},
    {DialogControlKind::PushButton, IDCANCEL, "Ende", 80, 25, 50, 14, 0, 0},
};
constexpr varkui::DialogTable table = {999, "Felder", 140, 60, controls, std::size(controls), 0};

// What OK does, and what the dialog found out.
struct FieldDialog {
    uint16_t Focus;
    DWORD SelectionBegin = 0;
    DWORD SelectionEnd = 0;
    HWND Dialog = nullptr;
    HWND Owner = nullptr; // of the box
};

INT_PTR CALLBACK FieldProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto *state = DialogState<FieldDialog>(dialog, message, lParam);
    if (message == WM_INITDIALOG) {
        SetDlgItemTextA(dialog, secondField, "12,50");
        SendDlgItemMessageA(dialog, secondField, EM_SETSEL, 0, 0);
        return TRUE;
    }
    if (message != WM_COMMAND || HIWORD(wParam) != BN_CLICKED) return FALSE;
    if (LOWORD(wParam) == IDOK) {
        ShowMessage(1001, state->Focus, nullptr, -1);
        state->Dialog = dialog;
        state->Owner = latest.Owner;
        SendDlgItemMessageA(dialog, secondField, EM_GETSEL, reinterpret_cast<WPARAM>(&state->SelectionBegin),
                            reinterpret_cast<LPARAM>(&state->SelectionEnd));
    }
    if (LOWORD(wParam) == IDCANCEL) EndDialog(dialog, IDCANCEL);
    return TRUE;
}

FieldDialog RunFields(uint16_t focus)
{
    FieldDialog state{.Focus = focus};
    EXPECT_TRUE(RunDialog(table, nullptr, FieldProcedure, &state));
    return state;
}

} // namespace

TEST_F(Messages, TheRefusedFieldHasTheFocusAndAllOfItsTextSelected)
{
    frontEnd.UseScript("dialog 999\nexpect focus 100\npress 1\nbox ok\nexpect focus 101\npress 2\n");
    const FieldDialog state = RunFields(secondField);
    EXPECT_EQ(0u, state.SelectionBegin);
    EXPECT_EQ(5u, state.SelectionEnd);
    EXPECT_NE(nullptr, state.Dialog);
    EXPECT_EQ(state.Dialog, state.Owner) << "the active window owns the box";
    EXPECT_EQ(std::string::npos, frontEnd.Log().find("script:")) << frontEnd.Log();
}

TEST_F(Messages, AControlWithoutATextIsOnlyFocused)
{
    frontEnd.UseScript("press 1\nbox ok\nexpect focus 102\npress 2\n");
    const FieldDialog state = RunFields(checkBox);
    EXPECT_EQ(state.SelectionBegin, state.SelectionEnd) << "the text of another field is left alone";
    EXPECT_EQ(std::string::npos, frontEnd.Log().find("script:")) << frontEnd.Log();
}

TEST_F(Messages, WithoutAFieldTheFocusStays)
{
    frontEnd.UseScript("focus 101\nkey Enter\nbox ok\nexpect focus 101\npress 2\n");
    const FieldDialog state = RunFields(0);
    EXPECT_NE(nullptr, state.Dialog);
    EXPECT_EQ(std::string::npos, frontEnd.Log().find("script:")) << frontEnd.Log();
}

TEST_F(Messages, AFieldThatTakesNoFocusIsNotSelected)
{
    frontEnd.UseScript("press 1\nbox ok\npress 2\n");
    struct Disabling {
        static INT_PTR CALLBACK Procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
        {
            const INT_PTR result = FieldProcedure(dialog, message, wParam, lParam);
            if (message == WM_INITDIALOG) ShowWindow(GetDlgItem(dialog, secondField), SW_HIDE);
            if (message == WM_INITDIALOG) EnableWindow(GetDlgItem(dialog, secondField), FALSE);
            return result;
        }
    };
    FieldDialog state{.Focus = secondField};
    EXPECT_TRUE(RunDialog(table, nullptr, Disabling::Procedure, &state));
    EXPECT_EQ(state.SelectionBegin, state.SelectionEnd);
}
