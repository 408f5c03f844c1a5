// Dialogs: made from tables and templates, modal and modeless, their keyboard, and what becomes of them when
// nobody sees them.
#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <thread>
#include <vector>

#include "dialog_run.h"
#include "front_end_setup.h"
#include "text/windows1252.h"

using namespace varkui;
using namespace text;

namespace {

constexpr int nameId = 100;
constexpr int checkId = 101;
constexpr int firstRadio = 110;
constexpr int listId = 120;
constexpr int otherButton = 130;

const DialogControl controls[] = {
    {DialogControlKind::Text, -1, "&Name:"_w, 7, 9, 40, 8, 0, 0},
    {DialogControlKind::Edit, nameId, "", 50, 7, 100, 14, 0, 0},
    {DialogControlKind::CheckBox, checkId, "&wiederkehrend"_w, 50, 25, 100, 10, 0, 0},
    {DialogControlKind::Group, -1, "Ü&bersicht"_w, 7, 40, 150, 50, 0, 0},
    {DialogControlKind::RadioButton, firstRadio, "&eins", 12, 50, 60, 10, WS_GROUP | WS_TABSTOP, 0},
    {DialogControlKind::RadioButton, firstRadio + 1, "&zwei", 12, 62, 60, 10, 0, 0},
    {DialogControlKind::RadioButton, firstRadio + 2, "&drei", 12, 74, 60, 10, 0, 0},
    {DialogControlKind::ListBox, listId, "", 7, 95, 150, 40, WS_GROUP | LBS_SORT, 0},
    {DialogControlKind::DefaultButton, IDOK, "OK", 160, 7, 50, 14, WS_GROUP, 0},
    {DialogControlKind::PushButton, IDCANCEL, "Abbrechen", 160, 24, 50, 14, 0, 0},
    {DialogControlKind::PushButton, otherButton, "&Ändern..."_w, 160, 41, 50, 14, 0, 0},
};
const DialogTable table = {108, "Stapel ändern"_w, 217, 140, controls, std::size(controls), 0};

struct Dialogs : testing::Test {
    FrontEndSetup frontEnd;
};

int FocusId() { return GetDlgCtrlID(GetFocus()); }

// Runs the table while a script plays; the script's failures would show in the log.
INT_PTR RunScripted(const FrontEndSetup &frontEnd, const std::string &script,
                    const DialogHandler &handler = {})
{
    frontEnd.UseScript(script);
    const INT_PTR result = RunTable(table, handler);
    EXPECT_EQ(frontEnd.Log().find("script:"), std::string::npos) << frontEnd.Log();
    return result;
}

} // namespace

TEST_F(Dialogs, HaveWhatTheirTableSays)
{
    HWND dialog = MakeFromTable(table);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(TextOf(dialog), "Stapel ändern"_w);
    EXPECT_FALSE(IsWindowVisible(dialog));
    EXPECT_EQ(TextOf(dialog, otherButton), "&Ändern..."_w);
    char name[20];
    GetClassNameA(GetDlgItem(dialog, nameId), name, sizeof name);
    EXPECT_STREQ(name, "Edit");
    GetClassNameA(GetDlgItem(dialog, listId), name, sizeof name);
    EXPECT_STREQ(name, "ListBox");
    const LONG styleOfList = GetWindowLongA(GetDlgItem(dialog, listId), GWL_STYLE);
    EXPECT_NE(styleOfList & static_cast<LONG>(LBS_SORT), 0);
    EXPECT_EQ(styleOfList & static_cast<LONG>(LBS_NOINTEGRALHEIGHT), 0) << "a row would be cut off";
    RECT place = {50, 7, 150, 21};
    EXPECT_TRUE(MapDialogRect(dialog, &place));
    RECT real = {};
    GetWindowRect(GetDlgItem(dialog, nameId), &real);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&real), 2);
    EXPECT_EQ(real.left, place.left);
    EXPECT_EQ(real.top, place.top);
    EXPECT_EQ(real.right, place.right);
    EXPECT_EQ(real.bottom, place.bottom);
    EXPECT_FALSE(MapDialogRect(GetDlgItem(dialog, nameId), &place));
    EXPECT_EQ(SendMessageA(dialog, DM_GETDEFID, 0, 0), MAKELONG(IDOK, DC_HASDEFID));
    DestroyWindow(dialog);
}

// The older form of a template, whose style word comes first.
TEST_F(Dialogs, AreMadeFromTheShortFormOfTemplatesToo)
{
    std::vector<WORD> words;
    const auto dword = [&words](DWORD value) {
        words.push_back(static_cast<WORD>(value));
        words.push_back(static_cast<WORD>(value >> 16));
    };
    const auto text = [&words](const char16_t *letters) {
        for (; *letters != 0; ++letters) {
            words.push_back(*letters);
        }
        words.push_back(0);
    };
    dword(0x40000444);
    dword(0);
    words.insert(words.end(), {1, 1, 2, 40, 20}); // one control, place and size
    words.push_back(0);                           // no menu
    words.push_back(0);                           // no class
    text(u"Blatt €");
    words.push_back(8);
    text(u"Helv");
    if (words.size() % 2 != 0) words.push_back(0);
    dword(WS_CHILD | WS_VISIBLE);
    dword(0);
    words.insert(words.end(), {4, 8, 20, 10, 1094, 0xFFFF, 0x80});
    text(u"voriger Monat");
    words.push_back(0);

    HWND parent = MakeFromTable(table);
    HWND bar = CreateDialogIndirectParamA(nullptr, reinterpret_cast<LPCDLGTEMPLATEA>(words.data()), parent,
                                          nullptr, 0);
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(GetParent(bar), parent);
    EXPECT_EQ(TextOf(bar), "Blatt €"_w);
    EXPECT_EQ(TextOf(bar, 1094), "voriger Monat");
    DestroyWindow(parent);
    EXPECT_FALSE(IsWindow(bar));
}

TEST_F(Dialogs, BeginWithTheFirstControlFocusedAndItsTextSelected)
{
    RunScripted(frontEnd, "dialog 108\nexpect focus 100\npress 1\n",
                [](HWND dialog, UINT message, WPARAM wParam, LPARAM) {
                    if (message == WM_INITDIALOG) {
                        EXPECT_EQ(reinterpret_cast<HWND>(wParam), GetDlgItem(dialog, nameId));
                        SetDlgItemTextA(dialog, nameId, "Miete");
                        return INT_PTR{TRUE};
                    }
                    if (message == WM_COMMAND && LOWORD(wParam) == IDOK) {
                        EXPECT_EQ(SendDlgItemMessageA(dialog, nameId, EM_GETSEL, 0, 0), MAKELONG(0, 5));
                    }
                    return INT_PTR{0};
                });
}

TEST_F(Dialogs, KeepTheFocusThatTheirProcedureSet)
{
    RunScripted(frontEnd, "expect focus 120\npress 1\n", [](HWND dialog, UINT message, WPARAM, LPARAM) {
        if (message != WM_INITDIALOG) return INT_PTR{0};
        SetFocus(GetDlgItem(dialog, listId));
        return focusIsSet;
    });
}

TEST_F(Dialogs, ReturnWhatEndDialogWasGiven) { EXPECT_EQ(RunScripted(frontEnd, "press 1\n"), IDOK); }

TEST_F(Dialogs, AreNotShownWhenTheyEndAtOnce)
{
    const INT_PTR result = RunTable(table, [](HWND dialog, UINT message, WPARAM, LPARAM) {
        if (message == WM_INITDIALOG) EndDialog(dialog, -3);
        return INT_PTR{message == WM_INITDIALOG};
    });
    EXPECT_EQ(result, -3);
    EXPECT_EQ(frontEnd.Log(), "");
}

TEST_F(Dialogs, ThatCannotBeMadeReturnMinusOne)
{
    EXPECT_EQ(DialogBoxIndirectParamA(nullptr, nullptr, nullptr, ForwardToHandler, 0), -1);
    EXPECT_EQ(CreateDialogIndirectParamA(nullptr, nullptr, nullptr, ForwardToHandler, 0), nullptr);
}

TEST_F(Dialogs, DisableTheirOwnerUntilTheyEnd)
{
    frontEnd.UseScript("press 130\ndialog 109\npress 1\nexpect enabled 130\npress 1\n");
    const DialogTable inner = {109, "innen", 217, 140, controls, std::size(controls), 0};
    RunTable(table, [&inner](HWND dialog, UINT message, WPARAM wParam, LPARAM) {
        if (message == WM_COMMAND && LOWORD(wParam) == otherButton) {
            HWND field = GetDlgItem(dialog, nameId); // the outermost window around it is disabled
            RunTable(
                inner,
                [dialog](HWND, UINT innerMessage, WPARAM innerParam, LPARAM) {
                    if (innerMessage == WM_COMMAND && LOWORD(innerParam) == IDOK) {
                        EXPECT_FALSE(IsWindowEnabled(dialog));
                    }
                    return INT_PTR{0};
                },
                field);
            EXPECT_TRUE(IsWindowEnabled(dialog));
            EXPECT_EQ(GetActiveWindow(), dialog);
            EXPECT_EQ(FocusId(), otherButton);
            return INT_PTR{1};
        }
        return INT_PTR{0};
    });
    EXPECT_EQ(frontEnd.Log(), "dialog 108 Stapel ändern\npress 130\ndialog 109 innen\ndialog 109\npress 1\n"
                              "expect enabled 130\npress 1\n");
}

TEST_F(Dialogs, LeaveAnOwnerDisabledThatWasSoBefore)
{
    HWND owner = CreateWindowExA(0, "Static", "", WS_POPUP | WS_DISABLED, 0, 0, 9, 9, nullptr, nullptr,
                                 nullptr, nullptr);
    RunTable(table, {}, owner);
    EXPECT_FALSE(IsWindowEnabled(owner));
}

TEST_F(Dialogs, MoveTheFocusWithTabInTheOrderOfTheTable)
{
    RunScripted(frontEnd,
                "expect focus 100\nkey Tab\nexpect focus 101\nkey Tab\nexpect focus 110\nkey Tab\n"
                "expect focus 120\nkey Tab\nexpect focus 1\nkey Tab\nexpect focus 2\nkey Tab\n"
                "expect focus 130\nkey Tab\nexpect focus 100\nkey Shift+Tab\nexpect focus 130\npress 1\n");
}

TEST_F(Dialogs, SkipHiddenAndDisabledControlsWithTab)
{
    RunScripted(frontEnd, "key Tab\nexpect focus 110\nkey Tab\nexpect focus 1\npress 1\n",
                [](HWND dialog, UINT message, WPARAM, LPARAM) {
                    if (message == WM_INITDIALOG) {
                        EnableWindow(GetDlgItem(dialog, checkId), FALSE);
                        ShowWindow(GetDlgItem(dialog, listId), SW_HIDE);
                    }
                    return INT_PTR{0};
                });
}

TEST_F(Dialogs, WalkRadioButtonsWithTheArrowsAndChooseThem)
{
    std::vector<int> clicked;
    RunScripted(frontEnd,
                "focus 110\nkey Down\nexpect focus 111\nexpect checked 111\nexpect unchecked 110\nkey Right\n"
                "expect checked 112\nkey Down\nexpect checked 110\nkey Up\nexpect checked 112\n"
                "key Tab\nexpect focus 120\nkey Shift+Tab\nexpect focus 112\npress 1\n",
                [&clicked](HWND, UINT message, WPARAM wParam, LPARAM) {
                    if (message == WM_COMMAND && LOWORD(wParam) / 10 == 11 && HIWORD(wParam) == BN_CLICKED) {
                        clicked.push_back(LOWORD(wParam));
                    }
                    return INT_PTR{0};
                });
    EXPECT_EQ(clicked, (std::vector<int>{111, 112, 110, 112}));
}

TEST_F(Dialogs, LeadWithMnemonicsToWhatTheyName)
{
    RunScripted(frontEnd,
                "key Alt+z\nexpect focus 111\nexpect checked 111\nkey Alt+n\nexpect focus 100\nkey Alt+W\n"
                "expect focus 101\nexpect checked 101\nkey Alt+w\nexpect unchecked 101\n"
                "key Alt+b\nexpect focus 111\npress 1\n");
}

TEST_F(Dialogs, TakeAMnemonicWithoutAltWhereNoTextIsTyped)
{
    RunScripted(frontEnd,
                "focus 101\nkey z\nexpect checked 111\nfocus 100\nkey z\nexpect text 100 z\npress 1\n");
}

TEST_F(Dialogs, PressWithAMnemonicThatHasAnUmlaut)
{
    int presses = 0;
    RunScripted(frontEnd, "key Alt+ä\nkey Alt+Ä\npress 1\n",
                [&presses](HWND, UINT message, WPARAM wParam, LPARAM) {
                    if (message == WM_COMMAND && LOWORD(wParam) == otherButton) ++presses;
                    return INT_PTR{0};
                });
    EXPECT_EQ(presses, 2);
}

TEST_F(Dialogs, PressTheDefaultButtonWithEnterUnlessAnotherHasTheFocus)
{
    std::vector<int> pressed;
    const DialogHandler count = [&pressed](HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message != WM_COMMAND || HIWORD(wParam) != BN_CLICKED) return INT_PTR{0};
        pressed.push_back(LOWORD(wParam));
        EXPECT_EQ(reinterpret_cast<HWND>(lParam), GetDlgItem(dialog, LOWORD(wParam)));
        return INT_PTR{LOWORD(wParam) != IDCANCEL};
    };
    RunScripted(frontEnd, "key Enter\nfocus 130\nkey Enter\nfocus 120\nkey Enter\nkey Escape\n", count);
    EXPECT_EQ(pressed, (std::vector<int>{IDOK, otherButton, IDOK, IDCANCEL}));
}

TEST_F(Dialogs, DoNotPressADisabledDefaultButton)
{
    int presses = 0;
    RunScripted(frontEnd, "key Enter\nclose\n", [&presses](HWND dialog, UINT message, WPARAM wParam, LPARAM) {
        if (message == WM_INITDIALOG) EnableWindow(GetDlgItem(dialog, IDOK), FALSE);
        if (message == WM_COMMAND && LOWORD(wParam) == IDOK) ++presses;
        return INT_PTR{0};
    });
    EXPECT_EQ(presses, 0);
}

TEST_F(Dialogs, AreCancelledByTheirCloseBox) { EXPECT_EQ(RunScripted(frontEnd, "close\n"), IDCANCEL); }

TEST_F(Dialogs, MoveTheFocusOnWhenAsked)
{
    RunScripted(frontEnd, "press 130\nexpect focus 100\npress 101\nexpect focus 110\npress 1\n",
                [](HWND dialog, UINT message, WPARAM wParam, LPARAM) {
                    if (message != WM_COMMAND) return INT_PTR{0};
                    if (LOWORD(wParam) == otherButton) {
                        SendMessageA(dialog, WM_NEXTDLGCTL,
                                     reinterpret_cast<WPARAM>(GetDlgItem(dialog, nameId)), TRUE);
                    }
                    if (LOWORD(wParam) == checkId) {
                        // A control that is disabled under the focus keeps it until the dialog moves on.
                        EnableWindow(GetDlgItem(dialog, checkId), FALSE);
                        EXPECT_EQ(FocusId(), checkId);
                        SendMessageA(dialog, WM_NEXTDLGCTL, 0, 0);
                    }
                    return INT_PTR{0};
                });
}

TEST_F(Dialogs, HearOfLeavingAFieldWhenABoxComesUp)
{
    std::vector<int> left;
    RunScripted(frontEnd, "press 130\nbox ok Hinweis\nexpect focus 130\nfocus 100\npress 1\n",
                [&left](HWND dialog, UINT message, WPARAM wParam, LPARAM) {
                    if (message != WM_COMMAND) return INT_PTR{0};
                    if (HIWORD(wParam) == EN_KILLFOCUS) left.push_back(LOWORD(wParam));
                    if (LOWORD(wParam) == otherButton) MessageBoxA(dialog, "Ein Hinweis", "MERIDA", MB_OK);
                    return INT_PTR{0};
                });
    EXPECT_EQ(left, (std::vector<int>{nameId, nameId}));
}

TEST_F(Dialogs, MayBeDestroyedByTheirOwnHandlers)
{
    for (const UINT when : {UINT{WM_INITDIALOG}, UINT{WM_ACTIVATE}, UINT{WM_SHOWWINDOW}, UINT{WM_COMMAND}}) {
        const INT_PTR result = RunTable(table, [when](HWND dialog, UINT message, WPARAM, LPARAM) {
            if (message == when) DestroyWindow(dialog);
            return INT_PTR{0};
        });
        EXPECT_LE(result, 0) << when; // never an OK
    }
}

TEST_F(Dialogs, EndWithAnotherThreadsEndDialog)
{
    const INT_PTR result = RunTable(table, [](HWND dialog, UINT message, WPARAM wParam, LPARAM) {
        if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL) {
            std::thread([dialog] { EXPECT_TRUE(EndDialog(dialog, 77)); }).join();
        }
        return INT_PTR{message == WM_COMMAND}; // nothing else ends it
    });
    EXPECT_EQ(result, 77);
}

// What another thread sends is handled while the dialog's thread waits for messages; no message follows it.
TEST_F(Dialogs, EndWithWhatTheyDoAboutASentMessage)
{
    for (const bool destroyed : {false, true}) {
        std::thread sender;
        const INT_PTR result = RunTable(table, [&](HWND dialog, UINT message, WPARAM, LPARAM) {
            if (message == WM_INITDIALOG) {
                pollfd arrives = {VarkUiDescriptor(), POLLIN, 0};
                MSG ignored = {};
                PeekMessageA(&ignored, nullptr, 0, 0, PM_NOREMOVE);
                sender = std::thread([dialog] { SendMessageA(dialog, WM_USER, 0, 0); });
                EXPECT_EQ(poll(&arrives, 1, -1), 1);
            }
            if (message == WM_USER && destroyed) DestroyWindow(dialog);
            if (message == WM_USER && !destroyed) EndDialog(dialog, 7);
            return INT_PTR{message == WM_COMMAND}; // nothing else ends it
        });
        sender.join();
        EXPECT_EQ(result, destroyed ? 0 : 7);
    }
}

TEST_F(Dialogs, EndWithAnOwnerOfAnotherThread)
{
    std::atomic<HWND> owner{nullptr};
    std::atomic<bool> goes{false};
    std::thread host([&] {
        owner = MakeFromTable(table);
        goes.wait(false);
        DestroyWindow(owner);
    });
    while (owner == nullptr) {
        std::this_thread::yield();
    }
    const INT_PTR result = RunTable(
        table,
        [&](HWND, UINT message, WPARAM, LPARAM) {
            if (message == WM_INITDIALOG) {
                pollfd arrives = {VarkUiDescriptor(), POLLIN, 0};
                MSG ignored = {};
                PeekMessageA(&ignored, nullptr, 0, 0, PM_NOREMOVE);
                goes = true;
                goes.notify_one();
                EXPECT_EQ(poll(&arrives, 1, -1), 1);
            }
            return INT_PTR{message == WM_COMMAND}; // nothing else ends it
        },
        owner);
    host.join();
    EXPECT_EQ(result, 0);
}

TEST_F(Dialogs, HandTheEndOfTheProgramOn)
{
    const INT_PTR result = RunTable(table, [](HWND, UINT message, WPARAM, LPARAM) {
        if (message == WM_INITDIALOG) PostQuitMessage(5);
        return INT_PTR{0};
    });
    EXPECT_EQ(result, 0);
    MSG message = {};
    EXPECT_EQ(GetMessageA(&message, nullptr, 0, 0), FALSE);
    EXPECT_EQ(message.wParam, 5u);
}

TEST_F(Dialogs, WithoutAPersonAreCancelled)
{
    EXPECT_EQ(RunTable(table), IDCANCEL);
    EXPECT_EQ(frontEnd.Log(), "dialog 108 Stapel ändern\n");
}

TEST_F(Dialogs, WithoutAPersonAreAnsweredAsTheyAskToBe)
{
    const INT_PTR result = RunTable(table, [](HWND dialog, UINT message, WPARAM, LPARAM) {
        if (message == WM_INITDIALOG) SetPropA(dialog, VARKUI_ANSWER_PROP, reinterpret_cast<HANDLE>(IDOK));
        return INT_PTR{0};
    });
    EXPECT_EQ(result, IDOK);
}

TEST_F(Dialogs, WithoutAPersonAreCancelledWhenTheirAnswerIsRefused)
{
    testing::internal::CaptureStderr();
    int tries = 0;
    const INT_PTR result = RunTable(table, [&tries](HWND dialog, UINT message, WPARAM wParam, LPARAM) {
        if (message == WM_INITDIALOG) SetPropA(dialog, VARKUI_ANSWER_PROP, reinterpret_cast<HANDLE>(IDOK));
        if (message == WM_COMMAND && LOWORD(wParam) == IDOK) {
            ++tries;
            MessageBoxA(GetActiveWindow(), "Unzulässige Tagesangabe!"_w, "MERIDA", MB_ICONEXCLAMATION);
            return INT_PTR{TRUE};
        }
        return INT_PTR{0};
    });
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "MERIDA: Unzulässige Tagesangabe!\n");
    EXPECT_EQ(result, IDCANCEL);
    EXPECT_EQ(tries, 1);
    EXPECT_EQ(frontEnd.Log(), "dialog 108 Stapel ändern\nbox Unzulässige Tagesangabe!\n");
}

TEST_F(Dialogs, WithoutAPersonEndEvenWhenTheyRefuseEverything)
{
    const INT_PTR result = RunTable(table, [](HWND, UINT message, WPARAM, LPARAM) {
        return INT_PTR{message == WM_COMMAND || message == WM_CLOSE || message == WM_SYSCOMMAND};
    });
    EXPECT_EQ(result, 0);
}

TEST_F(Dialogs, ReadNumbersFromFieldsStrictly)
{
    HWND dialog = MakeFromTable(table);
    struct {
        const char *text;
        BOOL isSigned;
        BOOL translated;
        UINT value;
    } const cases[] = {
        {"1998", FALSE, TRUE, 1998},
        {"  98", FALSE, TRUE, 98},
        {"98x", FALSE, TRUE, 98},
        {"", FALSE, FALSE, 0},
        {"x", FALSE, FALSE, 0},
        {"-5", FALSE, FALSE, 0},
        {"-5", TRUE, TRUE, UINT(-5)},
        {"4294967295", FALSE, TRUE, 4294967295u},
        {"4294967296", FALSE, FALSE, 0},
        {"2147483648", TRUE, FALSE, 0},
        {"-2147483648", TRUE, TRUE, 0x80000000u},
    };
    for (const auto &row : cases) {
        SetDlgItemTextA(dialog, nameId, row.text);
        BOOL translated = 2;
        EXPECT_EQ(GetDlgItemInt(dialog, nameId, &translated, row.isSigned), row.value) << row.text;
        EXPECT_EQ(translated, row.translated) << row.text;
    }
    SetDlgItemInt(dialog, nameId, 1997, FALSE);
    EXPECT_EQ(TextOf(dialog, nameId), "1997");
    SetDlgItemInt(dialog, nameId, 0x80000000u, TRUE);
    EXPECT_EQ(TextOf(dialog, nameId), "-2147483648");
    SetDlgItemInt(dialog, nameId, 0, TRUE);
    EXPECT_EQ(TextOf(dialog, nameId), "0");
    EXPECT_EQ(GetDlgItemInt(dialog, 999, nullptr, FALSE), 0u);
}

TEST_F(Dialogs, CheckOneRadioButtonOfMany)
{
    HWND dialog = MakeFromTable(table);
    CheckRadioButton(dialog, firstRadio, firstRadio + 2, firstRadio + 1);
    EXPECT_EQ(IsDlgButtonChecked(dialog, firstRadio), 0u);
    EXPECT_EQ(IsDlgButtonChecked(dialog, firstRadio + 1), 1u);
    CheckDlgButton(dialog, checkId, BST_CHECKED);
    EXPECT_EQ(IsDlgButtonChecked(dialog, checkId), 1u);
    EXPECT_EQ(IsDlgButtonChecked(dialog, 999), 0u);
    EXPECT_FALSE(CheckDlgButton(dialog, 999, 1));
    EXPECT_FALSE(CheckRadioButton(nullptr, 1, 2, 1));
}

namespace {

const DialogControl pageControls[] = {
    {DialogControlKind::Edit, 20000, "", 5, 5, 50, 14, 0, 0},
    {DialogControlKind::CheckBox, 20001, "Januar", 5, 25, 50, 10, 0, 0},
};
const DialogTable page = {125, "", 100, 60, pageControls, 2, childDialogStyle};

const DialogControl tabControls[] = {
    {DialogControlKind::TabControl, 1044, "", 5, 5, 140, 80, 0, 0},
    {DialogControlKind::Text, 1045, "", 10, 22, 130, 60, 0, 0},
    {DialogControlKind::CheckBox, 1046, "Beachte &Vergleichszeitraum"_w, 5, 90, 120, 10, 0, 0},
    {DialogControlKind::DefaultButton, IDOK, "OK", 150, 7, 50, 14, 0, 0},
    {DialogControlKind::PushButton, IDCANCEL, "Abbrechen", 150, 24, 50, 14, 0, 0},
};
const DialogTable tabDialog = {124, "GuV", 207, 110, tabControls, std::size(tabControls), 0};

} // namespace

// Two pages in a modeless dialog, run by a loop of the caller's own.
TEST_F(Dialogs, WithPagesWalkThroughTheOneInView)
{
    frontEnd.UseScript("dialog 124\nexpect focus 1044\nexpect rows 1044 2\nexpect row 1044 \"Zeitraum\"\n"
                       "key Tab\nexpect focus 20000\ntext 20000 1998\nexpect text 20000 1998\n"
                       "key Tab\nexpect focus 20001\nkey Tab\nexpect focus 1046\n"
                       "select 1044 1\nexpect row 1044 1\nexpect text 20000\ntext 20000 1997\n"
                       "select 1044 \"Zeitraum\"\nexpect text 20000 1998\n"
                       "text 20000 falsch\nselect 1044 1\nexpect row 1044 0\npress 1\n");
    HWND pages[2] = {};
    bool ended = false;
    const DialogHandler handler = [&](HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_INITDIALOG) {
            HWND tabs = GetDlgItem(dialog, 1044);
            char titles[2][20] = {"Zeitraum", "Vergleichszeitraum"};
            RECT place = {};
            GetWindowRect(GetDlgItem(dialog, 1045), &place);
            MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT *>(&place), 2);
            HWND before = GetDlgItem(dialog, 1045);
            for (int i = 0; i < 2; ++i) {
                TCITEMA item = {};
                item.mask = TCIF_TEXT;
                item.pszText = titles[i];
                EXPECT_EQ(SendMessageA(tabs, TCM_INSERTITEMA, static_cast<WPARAM>(i),
                                       reinterpret_cast<LPARAM>(&item)),
                          i);
                pages[i] = MakeFromTable(page, nullptr, dialog);
                SetWindowPos(pages[i], before, place.left, place.top, 0, 0,
                             SWP_NOSIZE | (i == 0 ? SWP_SHOWWINDOW : 0));
                before = pages[i];
            }
            return INT_PTR{TRUE};
        }
        if (message == WM_NOTIFY) {
            const auto *header = reinterpret_cast<const NMHDR *>(lParam);
            EXPECT_EQ(header->idFrom, 1044u);
            const auto current = SendMessageA(header->hwndFrom, TCM_GETCURSEL, 0, 0);
            if (header->code == TCN_SELCHANGING) {
                const bool refuses = TextOf(pages[current], 20000) == "falsch";
                SetWindowLongPtrA(dialog, DWLP_MSGRESULT, refuses ? 1 : 0);
                return INT_PTR{TRUE};
            }
            ShowWindow(pages[1 - current], SW_HIDE);
            ShowWindow(pages[current], SW_SHOW);
            return INT_PTR{TRUE};
        }
        if (message == WM_COMMAND && LOWORD(wParam) == IDOK) {
            ended = true;
            return INT_PTR{TRUE};
        }
        return INT_PTR{0};
    };
    HWND dialog = MakeFromTable(tabDialog, &handler);
    ShowWindow(dialog, SW_SHOW);
    MSG message = {};
    while (!ended && GetMessageA(&message, nullptr, 0, 0) > 0) {
        if (IsDialogMessageA(dialog, &message) != FALSE) continue;
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    EXPECT_TRUE(ended);
    DestroyWindow(dialog);
    EXPECT_FALSE(IsWindow(pages[0]));
    EXPECT_EQ(frontEnd.Log().find("script:"), std::string::npos) << frontEnd.Log();
}

TEST_F(Dialogs, IgnoreMessagesThatAreNotTheirs)
{
    HWND dialog = MakeFromTable(table);
    HWND stranger = MakeFromTable(table);
    MSG message = {stranger, WM_KEYDOWN, VK_TAB, 0, 0, {0, 0}};
    EXPECT_FALSE(IsDialogMessageA(dialog, &message));
    EXPECT_FALSE(IsDialogMessageA(nullptr, &message));
    EXPECT_FALSE(IsDialogMessageA(dialog, nullptr));
    message.hwnd = GetDlgItem(dialog, nameId);
    EXPECT_TRUE(IsDialogMessageA(dialog, &message));
}

TEST_F(Dialogs, LendTheirTabKeyToWindowsThatAreNone)
{
    HWND window = CreateWindowExA(0, "Static", "", WS_OVERLAPPEDWINDOW, 0, 0, 200, 100, nullptr, nullptr,
                                  nullptr, nullptr);
    const auto make = [](HWND parent, const char *name, DWORD exStyle) {
        return CreateWindowExA(exStyle, name, "", WS_CHILD | WS_VISIBLE | WS_TABSTOP, 0, 0, 10, 10, parent,
                               nullptr, nullptr, nullptr);
    };
    HWND first = make(window, "Button", 0);
    HWND inner = CreateWindowExA(WS_EX_CONTROLPARENT, "Static", "", WS_CHILD | WS_VISIBLE, 0, 0, 100, 50,
                                 window, nullptr, nullptr, nullptr);
    HWND second = make(inner, "Edit", 0);
    HWND last = make(window, "Button", 0);
    ShowWindow(window, SW_SHOW);
    SetFocus(first);
    for (HWND expected : {second, last, first}) {
        MSG message = {GetFocus(), WM_KEYDOWN, VK_TAB, 0, 0, {0, 0}};
        EXPECT_TRUE(IsDialogMessageA(window, &message));
        EXPECT_EQ(GetFocus(), expected);
    }
    DestroyWindow(window);
}

// Boxes and dialogs on several threads at once, each answered on its own thread.
TEST_F(Dialogs, RunOnSeveralThreadsAtOnce)
{
    constexpr int threadCount = 6;
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    std::atomic<int> cancelled{0};
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back([&cancelled] {
            for (int round = 0; round < 20; ++round) {
                if (RunTable(table) == IDCANCEL) ++cancelled;
            }
        });
    }
    for (std::thread &each : threads) {
        each.join();
    }
    EXPECT_EQ(cancelled, 120);
}
