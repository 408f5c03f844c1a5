// Controls: what they answer to messages and what they tell their parent.
#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "front_end_setup.h"
#include "text/windows1252.h"
#include "window-system/include/varkui.h"

using namespace text;

namespace {

// The notices that the parent of all controls here got: "id code".
std::vector<std::pair<int, int>> notices;

LRESULT CALLBACK Collecting(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_COMMAND) {
        EXPECT_EQ(GetDlgItem(window, LOWORD(wParam)), reinterpret_cast<HWND>(lParam));
        notices.emplace_back(LOWORD(wParam), static_cast<SHORT>(HIWORD(wParam)));
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

using Codes = std::vector<int>;

Codes TakeNotices(int id)
{
    Codes codes;
    for (const auto &[from, code] : notices) {
        if (from == id) codes.push_back(code);
    }
    notices.clear();
    return codes;
}

struct Controls : testing::Test {
    FrontEndSetup frontEnd;
    HWND parent = nullptr;
    int nextId = 1;

    Controls()
    {
        WNDCLASSA collecting = {};
        collecting.lpfnWndProc = Collecting;
        collecting.lpszClassName = "Collecting";
        RegisterClassA(&collecting);
        parent = CreateWindowExA(0, "Collecting", "", WS_POPUP | WS_VISIBLE, 0, 0, 500, 500, nullptr, nullptr,
                                 nullptr, nullptr);
        notices.clear();
    }

    HWND Make(const char *className, DWORD style, const char *text = "")
    {
        return CreateWindowExA(WS_EX_NOPARENTNOTIFY, className, text, WS_CHILD | WS_VISIBLE | style, 0, 0,
                               100, 100, parent, reinterpret_cast<HMENU>(static_cast<intptr_t>(nextId++)),
                               nullptr, nullptr);
    }

    static LRESULT Add(HWND list, const char *text)
    {
        return SendMessageA(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
    }

    static std::string Row(HWND list, int index)
    {
        char text[200] = "";
        const LRESULT length =
            SendMessageA(list, LB_GETTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text));
        if (length == LB_ERR) return "(none)";
        EXPECT_EQ(length, SendMessageA(list, LB_GETTEXTLEN, static_cast<WPARAM>(index), 0));
        return text;
    }

    static std::string Text(HWND window)
    {
        char text[200];
        GetWindowTextA(window, text, sizeof text);
        return text;
    }

    static void Type(HWND window, const char *text)
    {
        for (; *text != 0; ++text) {
            SendMessageA(window, WM_CHAR, static_cast<unsigned char>(*text), 0);
        }
    }
};

} // namespace

// ---- Buttons ----

TEST_F(Controls, PushButtonsTellOfAClick)
{
    HWND button = Make("Button", BS_PUSHBUTTON, "&Neu...");
    SendMessageA(button, BM_CLICK, 0, 0);
    EXPECT_EQ(TakeNotices(1), Codes{BN_CLICKED});
    EXPECT_EQ(GetFocus(), button);
    SendMessageA(button, WM_KEYDOWN, VK_SPACE, 0);
    EXPECT_TRUE(SendMessageA(button, BM_GETSTATE, 0, 0) & BST_PUSHED);
    SendMessageA(button, WM_KEYUP, VK_SPACE, 0);
    SendMessageA(button, WM_LBUTTONDOWN, 0, 0);
    SendMessageA(button, WM_LBUTTONUP, 0, 0);
    SendMessageA(button, WM_LBUTTONUP, 0, 0); // let go of what was not pressed
    EXPECT_EQ(TakeNotices(1), (Codes{BN_CLICKED, BN_CLICKED}));
    EnableWindow(button, FALSE);
    SendMessageA(button, BM_CLICK, 0, 0);
    EXPECT_EQ(TakeNotices(1), Codes{});
    EXPECT_EQ(SendMessageA(button, BM_SETCHECK, 1, 0), 0);
    EXPECT_EQ(SendMessageA(button, BM_GETCHECK, 0, 0), 0);
}

TEST_F(Controls, CheckBoxesChangeByThemselvesOrNot)
{
    HWND automatic = Make("Button", BS_AUTOCHECKBOX);
    HWND plain = Make("Button", BS_CHECKBOX);
    HWND three = Make("Button", BS_AUTO3STATE);
    for (HWND each : {automatic, plain, three}) {
        SendMessageA(each, BM_CLICK, 0, 0);
    }
    EXPECT_EQ(SendMessageA(automatic, BM_GETCHECK, 0, 0), BST_CHECKED);
    EXPECT_EQ(SendMessageA(plain, BM_GETCHECK, 0, 0), BST_UNCHECKED);
    EXPECT_EQ(notices.size(), 3u);
    SendMessageA(automatic, BM_CLICK, 0, 0);
    EXPECT_EQ(SendMessageA(automatic, BM_GETCHECK, 0, 0), BST_UNCHECKED);
    SendMessageA(three, BM_CLICK, 0, 0);
    EXPECT_EQ(SendMessageA(three, BM_GETCHECK, 0, 0), BST_INDETERMINATE);
    SendMessageA(plain, BM_SETCHECK, BST_CHECKED, 0);
    EXPECT_EQ(SendMessageA(plain, BM_GETCHECK, 0, 0), BST_CHECKED);
    SendMessageA(automatic, BM_SETCHECK, BST_INDETERMINATE, 0); // has two states
    EXPECT_EQ(SendMessageA(automatic, BM_GETCHECK, 0, 0), BST_CHECKED);
}

TEST_F(Controls, RadioButtonsUncheckTheirGroupAlone)
{
    HWND one = Make("Button", BS_AUTORADIOBUTTON | WS_GROUP);
    HWND two = Make("Button", BS_AUTORADIOBUTTON);
    HWND other = Make("Button", BS_AUTORADIOBUTTON | WS_GROUP);
    SendMessageA(other, BM_CLICK, 0, 0);
    SendMessageA(one, BM_CLICK, 0, 0);
    SendMessageA(two, BM_CLICK, 0, 0);
    EXPECT_EQ(SendMessageA(one, BM_GETCHECK, 0, 0), BST_UNCHECKED);
    EXPECT_EQ(SendMessageA(two, BM_GETCHECK, 0, 0), BST_CHECKED);
    EXPECT_EQ(SendMessageA(other, BM_GETCHECK, 0, 0), BST_CHECKED);
    EXPECT_NE(GetWindowLongA(two, GWL_STYLE) & static_cast<LONG>(WS_TABSTOP), 0);
    EXPECT_EQ(GetWindowLongA(one, GWL_STYLE) & static_cast<LONG>(WS_TABSTOP), 0);
}

TEST_F(Controls, PlainRadioButtonsLeaveTheirChecksToTheDialog)
{
    HWND one = Make("Button", BS_RADIOBUTTON | WS_GROUP);
    HWND two = Make("Button", BS_RADIOBUTTON);
    SendMessageA(one, BM_SETCHECK, BST_CHECKED, 0);
    SendMessageA(two, BM_CLICK, 0, 0);
    EXPECT_EQ(SendMessageA(one, BM_GETCHECK, 0, 0), BST_CHECKED); // a click still finds the old one
    EXPECT_EQ(SendMessageA(two, BM_GETCHECK, 0, 0), BST_UNCHECKED);
    EXPECT_EQ(TakeNotices(2), Codes{BN_CLICKED});
}

TEST_F(Controls, ButtonsTellOfTheFocusOnRequest)
{
    HWND loud = Make("Button", BS_PUSHBUTTON | BS_NOTIFY);
    Make("Button", BS_PUSHBUTTON);
    SetFocus(loud);
    SetFocus(parent);
    EXPECT_EQ(TakeNotices(1), (Codes{BN_SETFOCUS, BN_KILLFOCUS}));
}

TEST_F(Controls, SayHowADialogIsToTreatThem)
{
    struct {
        const char *className;
        DWORD style;
        LRESULT code;
    } const cases[] = {
        {"Button", BS_PUSHBUTTON, DLGC_BUTTON | DLGC_UNDEFPUSHBUTTON},
        {"Button", BS_DEFPUSHBUTTON, DLGC_BUTTON | DLGC_DEFPUSHBUTTON},
        {"Button", BS_RADIOBUTTON, DLGC_BUTTON | DLGC_RADIOBUTTON},
        {"Button", BS_AUTOCHECKBOX, DLGC_BUTTON},
        {"Button", BS_GROUPBOX, DLGC_STATIC},
        {"Static", SS_LEFT, DLGC_STATIC},
        {"Edit", 0, DLGC_HASSETSEL | DLGC_WANTCHARS | DLGC_WANTARROWS},
        {"ListBox", 0, DLGC_WANTARROWS | DLGC_WANTCHARS},
        {"ComboBox", CBS_DROPDOWN, DLGC_WANTARROWS | DLGC_WANTCHARS},
        {"SysTabControl32", 0, DLGC_WANTARROWS},
    };
    for (const auto &row : cases) {
        EXPECT_EQ(SendMessageA(Make(row.className, row.style), WM_GETDLGCODE, 0, 0), row.code)
            << row.className << row.style;
    }
}

// ---- Edits ----

TEST_F(Controls, EditsTellOfChanges)
{
    HWND edit = Make("Edit", 0);
    SetWindowTextA(edit, "10000");
    EXPECT_EQ(TakeNotices(1), (Codes{EN_UPDATE, EN_CHANGE}));
    EXPECT_FALSE(SendMessageA(edit, EM_GETMODIFY, 0, 0));
    SetFocus(edit);
    Type(edit, "2");
    SetFocus(nullptr);
    EXPECT_EQ(TakeNotices(1), (Codes{EN_SETFOCUS, EN_UPDATE, EN_CHANGE, EN_KILLFOCUS}));
    EXPECT_EQ(Text(edit), "210000"); // a text that was set has the caret before it
    EXPECT_TRUE(SendMessageA(edit, EM_GETMODIFY, 0, 0));
}

TEST_F(Controls, EditsSelectAndReplace)
{
    HWND edit = Make("Edit", 0, "Kasse");
    EXPECT_EQ(SendMessageA(edit, EM_GETSEL, 0, 0), MAKELONG(0, 0));
    SendMessageA(edit, EM_SETSEL, 0, -1);
    EXPECT_EQ(SendMessageA(edit, EM_GETSEL, 0, 0), MAKELONG(0, 5));
    Type(edit, "Bank");
    EXPECT_EQ(Text(edit), "Bank");
    SendMessageA(edit, EM_SETSEL, 1, 3);
    DWORD start = 9;
    DWORD end = 9;
    SendMessageA(edit, EM_GETSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end));
    EXPECT_EQ(start, 1u);
    EXPECT_EQ(end, 3u);
    SendMessageA(edit, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>("lin"));
    EXPECT_EQ(Text(edit), "Blink");
    SendMessageA(edit, EM_SETSEL, 99, 99);
    EXPECT_EQ(SendMessageA(edit, EM_GETSEL, 0, 0), MAKELONG(5, 5));
    SendMessageA(edit, EM_SETSEL, 0, 5);
    SendMessageA(edit, EM_SETSEL, static_cast<WPARAM>(-1), 0); // nothing
    EXPECT_EQ(SendMessageA(edit, EM_GETSEL, 0, 0), MAKELONG(5, 5));
}

TEST_F(Controls, EditsAreEditedByKeys)
{
    HWND edit = Make("Edit", 0, "abcdef");
    SetFocus(edit);
    const auto press = [edit](WPARAM key) { SendMessageA(edit, WM_KEYDOWN, key, 0); };
    press(VK_END);
    Type(edit, "\b");
    press(VK_LEFT);
    press(VK_LEFT);
    press(VK_DELETE);
    EXPECT_EQ(Text(edit), "abce");
    press(VK_HOME);
    Type(edit, "x\b\b");
    press(VK_RIGHT);
    Type(edit, "y");
    EXPECT_EQ(Text(edit), "aybce");
    Type(edit, "\x01"
               "z"); // Ctrl+A
    EXPECT_EQ(Text(edit), "z");
    press(VK_DELETE);
    Type(edit, "\x1F\x7F");
    EXPECT_EQ(Text(edit), "z");
}

TEST_F(Controls, EditsKeepTheirLimitOnTyping)
{
    HWND edit = Make("Edit", 0);
    EXPECT_EQ(SendMessageA(edit, EM_GETLIMITTEXT, 0, 0), 30000);
    SendMessageA(edit, EM_LIMITTEXT, 4, 0);
    Type(edit, "DEM12");
    EXPECT_EQ(Text(edit), "DEM1");
    const Codes codes = TakeNotices(1);
    EXPECT_EQ(codes.back(), EN_MAXTEXT);
    SendMessageA(edit, EM_SETSEL, 0, 2);
    Type(edit, "x"); // what is replaced makes room
    EXPECT_EQ(Text(edit), "xM1");
    SendMessageA(edit, EM_REPLACESEL, 0, reinterpret_cast<LPARAM>("abc"));
    EXPECT_EQ(Text(edit), "xaM1");
    SetWindowTextA(edit, "länger als vier"_w); // the program itself is not limited
    EXPECT_EQ(Text(edit), "länger als vier"_w);
}

TEST_F(Controls, EditsTakeOnlyWhatTheirStyleAllows)
{
    HWND number = Make("Edit", ES_NUMBER);
    Type(number, "1a2-");
    EXPECT_EQ(Text(number), "12");
    HWND upper = Make("Edit", ES_UPPERCASE);
    Type(upper, "dmäß"_w);
    EXPECT_EQ(Text(upper), "DMÄß"_w);
    HWND lower = Make("Edit", ES_LOWERCASE);
    Type(lower, "DMÄ"_w);
    EXPECT_EQ(Text(lower), "dmä"_w);
    HWND readOnly = Make("Edit", ES_READONLY, "fest");
    Type(readOnly, "x");
    EXPECT_EQ(Text(readOnly), "fest");
    SendMessageA(readOnly, EM_SETREADONLY, FALSE, 0);
    Type(readOnly, "x");
    EXPECT_EQ(Text(readOnly), "xfest");
}

TEST_F(Controls, EditsOfManyLinesTakeEnter)
{
    HWND edit = Make("Edit", ES_MULTILINE | ES_WANTRETURN);
    MSG enter = {edit, WM_KEYDOWN, VK_RETURN, 0, 0, {0, 0}};
    EXPECT_TRUE(SendMessageA(edit, WM_GETDLGCODE, VK_RETURN, reinterpret_cast<LPARAM>(&enter)) &
                DLGC_WANTMESSAGE);
    Type(edit, "a\rb");
    EXPECT_EQ(Text(edit), "a\r\nb");
    EXPECT_EQ(SendMessageA(edit, EM_GETLINECOUNT, 0, 0), 2);
    TakeNotices(1);
    SetWindowTextA(edit, "c");
    EXPECT_EQ(TakeNotices(1), Codes{}); // of many lines, a text that is set is not told
}

// ---- List boxes ----

TEST_F(Controls, ListBoxesSortAsGermansDo)
{
    HWND list = Make("ListBox", LBS_SORT);
    for (const char *name :
         {"Zander"_w, "müller"_w, "Mull"_w, "Mueller"_w, "Äpfel"_w, "Apfel"_w, "Strasse"_w, "Straße"_w,
          "10 %"_w, " leer"_w, "-"_w, "Ölmann"_w, "Otto"_w, "MÜLLER"_w, "9"_w}) {
        EXPECT_GE(Add(list, name), 0);
    }
    const char *const expected[] = {" leer"_w,  "-"_w,       "10 %"_w,    "9"_w,      "Apfel"_w,
                                    "Äpfel"_w,  "Mueller"_w, "Mull"_w,    "müller"_w, "MÜLLER"_w,
                                    "Ölmann"_w, "Otto"_w,    "Strasse"_w, "Straße"_w, "Zander"_w};
    ASSERT_EQ(SendMessageA(list, LB_GETCOUNT, 0, 0), 15);
    for (int i = 0; i < 15; ++i) {
        EXPECT_EQ(Row(list, i), expected[i]) << i;
    }
}

TEST_F(Controls, ListBoxesKeepValuesWithTheirRows)
{
    HWND list = Make("ListBox", LBS_SORT);
    for (const char *name : {"b", "a", "c"}) {
        const auto row = static_cast<WPARAM>(Add(list, name));
        SendMessageA(list, LB_SETITEMDATA, row, *name);
    }
    EXPECT_EQ(SendMessageA(list, LB_GETITEMDATA, 0, 0), 'a');
    EXPECT_EQ(SendMessageA(list, LB_GETITEMDATA, 2, 0), 'c');
    EXPECT_EQ(SendMessageA(list, LB_DELETESTRING, 0, 0), 2);
    EXPECT_EQ(SendMessageA(list, LB_GETITEMDATA, 0, 0), 'b');
    EXPECT_EQ(SendMessageA(list, LB_GETITEMDATA, 2, 0), LB_ERR);
    EXPECT_EQ(SendMessageA(list, LB_SETITEMDATA, static_cast<WPARAM>(-1), 0), LB_ERR);
    EXPECT_EQ(SendMessageA(list, LB_DELETESTRING, 2, 0), LB_ERR);
}

TEST_F(Controls, ListBoxesKeepTheSelectionOnItsRow)
{
    HWND list = Make("ListBox", LBS_SORT | LBS_NOTIFY);
    Add(list, "b");
    Add(list, "d");
    EXPECT_EQ(SendMessageA(list, LB_GETCURSEL, 0, 0), LB_ERR);
    EXPECT_EQ(SendMessageA(list, LB_SETCURSEL, 1, 0), 1);
    Add(list, "a");
    EXPECT_EQ(SendMessageA(list, LB_GETCURSEL, 0, 0), 2);
    SendMessageA(list, LB_DELETESTRING, 0, 0);
    EXPECT_EQ(SendMessageA(list, LB_GETCURSEL, 0, 0), 1);
    SendMessageA(list, LB_DELETESTRING, 1, 0);
    EXPECT_EQ(SendMessageA(list, LB_GETCURSEL, 0, 0), LB_ERR);
    EXPECT_EQ(SendMessageA(list, LB_SETCURSEL, 1, 0), LB_ERR); // beyond the end
    EXPECT_EQ(SendMessageA(list, LB_SETCURSEL, 0, 0), 0);
    EXPECT_EQ(SendMessageA(list, LB_SETCURSEL, static_cast<WPARAM>(-1), 0), LB_ERR);
    EXPECT_EQ(SendMessageA(list, LB_GETCURSEL, 0, 0), LB_ERR);
    EXPECT_EQ(TakeNotices(1), Codes{}); // the program's own doing is not told
    SendMessageA(list, LB_RESETCONTENT, 0, 0);
    EXPECT_EQ(SendMessageA(list, LB_GETCOUNT, 0, 0), 0);
}

TEST_F(Controls, ListBoxesInsertWhereTold)
{
    HWND list = Make("ListBox", LBS_SORT);
    Add(list, "b");
    EXPECT_EQ(SendMessageA(list, LB_INSERTSTRING, 0, reinterpret_cast<LPARAM>("z")), 0);
    EXPECT_EQ(SendMessageA(list, LB_INSERTSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>("a")), 2);
    EXPECT_EQ(SendMessageA(list, LB_INSERTSTRING, 9, reinterpret_cast<LPARAM>("x")), LB_ERR);
    EXPECT_EQ(Row(list, 0) + Row(list, 1) + Row(list, 2), "zba");
    EXPECT_EQ(SendMessageA(list, LB_FINDSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>("a")), 2);
    EXPECT_EQ(SendMessageA(list, LB_ADDSTRING, 0, 0), LB_ERR);
}

TEST_F(Controls, ListBoxesFindBeginningsGoingRound)
{
    for (const DWORD style : {DWORD{0}, DWORD{LBS_SORT}}) {
        HWND list = Make("ListBox", style);
        for (const char *name : {"Äpfel"_w, "apfel"_w, "Birne"_w, "Birnenmus"_w, "Kirsche"_w}) {
            Add(list, name);
        }
        const auto find = [list](int after, const char *text, UINT how = LB_FINDSTRING) {
            return Row(list, static_cast<int>(SendMessageA(list, how, static_cast<WPARAM>(after),
                                                           reinterpret_cast<LPARAM>(text))));
        };
        EXPECT_EQ(find(-1, "BIRN"), "Birne");
        EXPECT_EQ(find(2, "birn"), "Birnenmus");
        EXPECT_EQ(find(3, "birn"), "Birne");
        EXPECT_EQ(find(4, "birn"), "Birne");
        EXPECT_EQ(find(-1, "ä"_w), "Äpfel"_w);
        EXPECT_EQ(find(-1, "A"), "apfel");
        EXPECT_EQ(find(-1, "birne", LB_FINDSTRINGEXACT), "Birne");
        EXPECT_EQ(find(-1, "birn", LB_FINDSTRINGEXACT), "(none)");
        EXPECT_EQ(find(-1, "Pflaume"), "(none)");
        EXPECT_EQ(
            SendMessageA(list, LB_SELECTSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>("kir")), 4);
        EXPECT_EQ(SendMessageA(list, LB_GETCURSEL, 0, 0), 4);
    }
}

TEST_F(Controls, ListBoxesAreFullAtTheLimit)
{
    VarkUiLimitLists(3);
    HWND list = Make("ListBox", LBS_SORT);
    HWND combo = Make("ComboBox", CBS_DROPDOWN);
    for (int i = 0; i < 3; ++i) {
        EXPECT_GE(Add(list, "x"), 0);
        EXPECT_EQ(SendMessageA(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>("x")), i);
    }
    EXPECT_EQ(Add(list, "x"), LB_ERRSPACE);
    EXPECT_EQ(SendMessageA(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>("x")), CB_ERRSPACE);
    EXPECT_EQ(SendMessageA(list, LB_GETCOUNT, 0, 0), 3);
    VarkUiLimitLists(0);
    EXPECT_GE(Add(list, "x"), 0);
}

TEST_F(Controls, ListBoxesAreWalkedByKeysAndTell)
{
    HWND list = Make("ListBox", LBS_NOTIFY);
    for (const char *name : {"Anna", "Berta", "Bodo", "Cäsar"_w}) {
        Add(list, name);
    }
    SetFocus(list);
    TakeNotices(1);
    const auto press = [list](WPARAM key) {
        SendMessageA(list, WM_KEYDOWN, key, 0);
        return static_cast<int>(SendMessageA(list, LB_GETCURSEL, 0, 0));
    };
    EXPECT_EQ(press(VK_DOWN), 0);
    EXPECT_EQ(press(VK_DOWN), 1);
    EXPECT_EQ(press(VK_UP), 0);
    EXPECT_EQ(press(VK_UP), 0);
    EXPECT_EQ(press(VK_END), 3);
    EXPECT_EQ(press(VK_DOWN), 3);
    EXPECT_EQ(press(VK_HOME), 0);
    EXPECT_EQ(press(VK_NEXT), 3);
    EXPECT_EQ(press(VK_PRIOR), 0);
    EXPECT_EQ(TakeNotices(1), Codes(7, LBN_SELCHANGE));
    Type(list, "b");
    EXPECT_EQ(SendMessageA(list, LB_GETCURSEL, 0, 0), 1);
    Type(list, "B");
    EXPECT_EQ(SendMessageA(list, LB_GETCURSEL, 0, 0), 2);
    Type(list, "bx");
    EXPECT_EQ(SendMessageA(list, LB_GETCURSEL, 0, 0), 1);
    SetFocus(nullptr);
    EXPECT_EQ(TakeNotices(1), (Codes{LBN_SELCHANGE, LBN_SELCHANGE, LBN_SELCHANGE, LBN_KILLFOCUS}));
}

TEST_F(Controls, ListBoxesTakeTabStops)
{
    HWND list = Make("ListBox", LBS_USETABSTOPS);
    const int stops[] = {30, 70};
    EXPECT_TRUE(SendMessageA(list, LB_SETTABSTOPS, 2, reinterpret_cast<LPARAM>(stops)));
    EXPECT_FALSE(SendMessageA(list, LB_SETTABSTOPS, 99, reinterpret_cast<LPARAM>(stops)));
    EXPECT_FALSE(SendMessageA(list, LB_SETTABSTOPS, 2, 0));
    EXPECT_TRUE(SendMessageA(list, LB_SETTABSTOPS, 0, 0));
}

TEST_F(Controls, ListBoxesTakeAHundredThousandRows)
{
    for (const DWORD style : {DWORD{LBS_SORT}, DWORD{0}}) {
        HWND list = Make("ListBox", style);
        const auto begin = std::chrono::steady_clock::now();
        unsigned random = 1;
        for (int i = 0; i < 100000; ++i) {
            random = random * 1664525u + 1013904223u;
            const std::string name = "Konto " + std::to_string(random >> 8) + "\tKürzel\tName"_w;
            ASSERT_GE(Add(list, name.c_str()), 0);
        }
        const auto filled = std::chrono::steady_clock::now();
        EXPECT_EQ(SendMessageA(list, LB_GETCOUNT, 0, 0), 100000);
        EXPECT_EQ(
            SendMessageA(list, LB_FINDSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>("Konto x")),
            LB_ERR);
        const auto searched = std::chrono::steady_clock::now();
        using std::chrono::milliseconds;
        RecordProperty(style == 0 ? "fill_ms" : "fill_sorted_ms",
                       static_cast<int>(std::chrono::duration_cast<milliseconds>(filled - begin).count()));
        // A bound for slow machines and sanitizers, far below what a list with linear insertion takes; the
        // benchmark measures.
        EXPECT_LT(filled - begin, milliseconds(6000));
        EXPECT_LT(searched - filled, milliseconds(200));
    }
}

// ---- Combo boxes ----

TEST_F(Controls, ComboBoxesShowTheSelectedRowInTheirField)
{
    HWND combo = Make("ComboBox", CBS_DROPDOWN);
    for (const char *units : {"1", "10", "100", "1000"}) {
        SendMessageA(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(units));
    }
    EXPECT_EQ(SendMessageA(combo, CB_GETCURSEL, 0, 0), CB_ERR);
    EXPECT_EQ(SendMessageA(combo, CB_SETCURSEL, 2, 0), 2);
    EXPECT_EQ(Text(combo), "100");
    SetWindowTextA(combo, "10");
    EXPECT_EQ(SendMessageA(combo, CB_GETCURSEL, 0, 0), CB_ERR);
    EXPECT_EQ(TakeNotices(1), Codes{});
    char text[10];
    EXPECT_EQ(SendMessageA(combo, CB_GETLBTEXT, 3, reinterpret_cast<LPARAM>(text)), 4);
    EXPECT_STREQ(text, "1000");
    EXPECT_EQ(SendMessageA(combo, CB_GETLBTEXTLEN, 4, 0), CB_ERR);
    EXPECT_EQ(
        SendMessageA(combo, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>("10")), 1);
    EXPECT_EQ(SendMessageA(combo, CB_FINDSTRING, 1, reinterpret_cast<LPARAM>("10")), 2);
    EXPECT_EQ(SendMessageA(combo, CB_SELECTSTRING, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>("1000")),
              3);
    SendMessageA(combo, CB_SETITEMDATA, 3, 77);
    EXPECT_EQ(SendMessageA(combo, CB_GETITEMDATA, 3, 0), 77);
    EXPECT_EQ(SendMessageA(combo, CB_INSERTSTRING, 0, reinterpret_cast<LPARAM>("0")), 0);
    EXPECT_EQ(SendMessageA(combo, CB_GETCURSEL, 0, 0), 4);
    EXPECT_EQ(SendMessageA(combo, CB_DELETESTRING, 0, 0), 4);
    SendMessageA(combo, CB_RESETCONTENT, 0, 0);
    EXPECT_EQ(Text(combo), "");
}

TEST_F(Controls, ComboBoxesTellWhatAPersonTypes)
{
    HWND combo = Make("ComboBox", CBS_DROPDOWN);
    SendMessageA(combo, CB_LIMITTEXT, 4, 0);
    SetFocus(combo);
    Type(combo, "DEM12");
    EXPECT_EQ(Text(combo), "DEM1");
    const Codes codes = TakeNotices(1);
    EXPECT_EQ(codes.front(), CBN_SETFOCUS);
    EXPECT_EQ(codes.size(), 1u + 2u * 4u);
    EXPECT_EQ(codes.back(), CBN_EDITCHANGE);
    EXPECT_TRUE(SendMessageA(combo, CB_SETEDITSEL, 0, MAKELPARAM(1, 2)));
    EXPECT_EQ(SendMessageA(combo, CB_GETEDITSEL, 0, 0), MAKELONG(1, 2));
    SetFocus(nullptr);
    EXPECT_EQ(TakeNotices(1), Codes{CBN_KILLFOCUS});
}

TEST_F(Controls, ComboBoxesAreWalkedByKeysAndDropDown)
{
    HWND combo = Make("ComboBox", CBS_DROPDOWNLIST);
    for (const char *name : {"DEM", "FRF", "USD"}) {
        SendMessageA(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name));
    }
    SetFocus(combo);
    TakeNotices(1);
    SendMessageA(combo, WM_KEYDOWN, VK_DOWN, 0);
    SendMessageA(combo, WM_KEYDOWN, VK_END, 0);
    EXPECT_EQ(Text(combo), "USD");
    EXPECT_EQ(TakeNotices(1), (Codes{CBN_SELENDOK, CBN_SELCHANGE, CBN_SELENDOK, CBN_SELCHANGE}));
    Type(combo, "f");
    EXPECT_EQ(Text(combo), "FRF");
    TakeNotices(1);
    SendMessageA(combo, WM_KEYDOWN, VK_F4, 0);
    EXPECT_TRUE(SendMessageA(combo, CB_GETDROPPEDSTATE, 0, 0));
    MSG enter = {combo, WM_KEYDOWN, VK_RETURN, 0, 0, {0, 0}};
    EXPECT_TRUE(SendMessageA(combo, WM_GETDLGCODE, VK_RETURN, reinterpret_cast<LPARAM>(&enter)) &
                DLGC_WANTMESSAGE);
    SendMessageA(combo, WM_KEYDOWN, VK_RETURN, 0);
    EXPECT_FALSE(SendMessageA(combo, CB_GETDROPPEDSTATE, 0, 0));
    EXPECT_EQ(TakeNotices(1), (Codes{CBN_DROPDOWN, CBN_CLOSEUP}));
    EXPECT_EQ(SendMessageA(combo, CB_SETEDITSEL, 0, 0), CB_ERR); // has no field
    EXPECT_FALSE(SetWindowTextA(combo, "x"));
}

// ---- Tab controls ----

TEST_F(Controls, TabControlsHoldTitlesAndValues)
{
    HWND tabs = Make("SysTabControl32", 0);
    EXPECT_EQ(SendMessageA(tabs, TCM_GETCURSEL, 0, 0), -1);
    const auto insert = [tabs](WPARAM index, std::string title) {
        TCITEMA item = {};
        item.mask = TCIF_TEXT | TCIF_PARAM;
        item.pszText = title.data();
        item.lParam = static_cast<LPARAM>(title.size());
        return SendMessageA(tabs, TCM_INSERTITEMA, index, reinterpret_cast<LPARAM>(&item));
    };
    EXPECT_EQ(insert(0, "Vergleichszeitraum"), 0);
    EXPECT_EQ(SendMessageA(tabs, TCM_GETCURSEL, 0, 0), 0); // the first is in view
    EXPECT_EQ(insert(0, "Zeitraum"), 0);
    EXPECT_EQ(SendMessageA(tabs, TCM_GETCURSEL, 0, 0), 1);
    EXPECT_EQ(insert(9, "am Ende"), 2);
    EXPECT_EQ(SendMessageA(tabs, TCM_GETITEMCOUNT, 0, 0), 3);
    EXPECT_EQ(SendMessageA(tabs, TCM_SETCURSEL, 2, 0), 1); // the one before
    EXPECT_EQ(SendMessageA(tabs, TCM_SETCURSEL, 3, 0), -1);
    char title[9] = "";
    TCITEMA item = {};
    item.mask = TCIF_TEXT | TCIF_PARAM;
    item.pszText = title;
    item.cchTextMax = sizeof title;
    EXPECT_TRUE(SendMessageA(tabs, TCM_GETITEMA, 0, reinterpret_cast<LPARAM>(&item)));
    EXPECT_STREQ(title, "Zeitraum");
    EXPECT_EQ(item.lParam, 8);
    char changed[] = "neu";
    item.mask = TCIF_TEXT;
    item.pszText = changed;
    EXPECT_TRUE(SendMessageA(tabs, TCM_SETITEMA, 1, reinterpret_cast<LPARAM>(&item)));
    EXPECT_FALSE(SendMessageA(tabs, TCM_SETITEMA, 9, reinterpret_cast<LPARAM>(&item)));
    EXPECT_FALSE(SendMessageA(tabs, TCM_GETITEMA, 0, 0));
    EXPECT_TRUE(SendMessageA(tabs, TCM_DELETEITEM, 0, 0));
    EXPECT_EQ(SendMessageA(tabs, TCM_GETCURSEL, 0, 0), 1);
    EXPECT_TRUE(SendMessageA(tabs, TCM_DELETEALLITEMS, 0, 0));
    EXPECT_EQ(SendMessageA(tabs, TCM_GETCURSEL, 0, 0), -1);
    RECT room = {0, 0, 200, 100};
    SendMessageA(tabs, TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&room));
    EXPECT_GT(room.top, 14);
    SendMessageA(tabs, TCM_ADJUSTRECT, TRUE, reinterpret_cast<LPARAM>(&room));
    EXPECT_EQ(room.top, 0);
    EXPECT_EQ(room.right, 200);
}
