// Windows: their life, their place in the tree, what they carry.
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "front_end_setup.h"
#include "window-system/include/varkui.h"

namespace {

// Every message that procedures of this test got, as "name message", in order.
std::vector<std::string> heard;

std::string NameOf(HWND window)
{
    char text[32];
    GetWindowTextA(window, text, sizeof text);
    return text;
}

std::string NameOf(UINT message)
{
    switch (message) {
    case WM_NCCREATE: return "nccreate";
    case WM_CREATE: return "create";
    case WM_SHOWWINDOW: return "show";
    case WM_SIZE: return "size";
    case WM_MOVE: return "move";
    case WM_ENABLE: return "enable";
    case WM_ACTIVATE: return "activate";
    case WM_SETFOCUS: return "setfocus";
    case WM_KILLFOCUS: return "killfocus";
    case WM_DESTROY: return "destroy";
    case WM_NCDESTROY: return "ncdestroy";
    case WM_PARENTNOTIFY: return "parentnotify";
    default: return "";
    }
}

LRESULT CALLBACK Listening(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    const std::string name = NameOf(message);
    if (!name.empty()) heard.push_back(NameOf(window) + " " + name);
    return DefWindowProcA(window, message, wParam, lParam);
}

struct Windows : testing::Test {
    FrontEndSetup frontEnd;

    Windows()
    {
        WNDCLASSA listening = {};
        listening.lpfnWndProc = Listening;
        listening.cbWndExtra = 16;
        listening.lpszClassName = "Listening";
        RegisterClassA(&listening);
        heard.clear();
    }

    static HWND Make(const char *title, HWND parent = nullptr, DWORD style = WS_POPUP, int id = 0)
    {
        return CreateWindowExA(0, "Listening", title, style, 10, 20, 100, 50, parent,
                               reinterpret_cast<HMENU>(static_cast<intptr_t>(id)), nullptr, nullptr);
    }
};

} // namespace

TEST_F(Windows, HearOfTheirCreationShowingAndDestruction)
{
    HWND window = Make("a");
    ASSERT_NE(window, nullptr);
    ShowWindow(window, SW_SHOW);
    EXPECT_TRUE(DestroyWindow(window));
    const std::vector<std::string> expected = {"a nccreate",  "a create",   "a show",     "a size",
                                               "a move",      "a activate", "a setfocus", "a show",
                                               "a killfocus", "a destroy",  "a ncdestroy"};
    EXPECT_EQ(heard, expected);
    EXPECT_FALSE(IsWindow(window));
}

TEST_F(Windows, AreDestroyedFromTheOutsideInAndFreedFromTheInsideOut)
{
    HWND outer = Make("outer");
    HWND child = Make("child", outer, WS_CHILD);
    Make("grandchild", child, WS_CHILD);
    heard.clear();
    DestroyWindow(outer);
    const std::vector<std::string> expected = {"outer destroy",      "child destroy",
                                               "grandchild destroy", "grandchild ncdestroy",
                                               "child ncdestroy",    "outer ncdestroy"};
    EXPECT_EQ(heard, expected);
}

TEST_F(Windows, TakeTheWindowsTheyOwnAlong)
{
    HWND owner = Make("owner");
    HWND child = Make("child", owner, WS_CHILD);
    HWND owned = Make("owned", child); // the outermost window around the child becomes the owner
    EXPECT_EQ(GetParent(owned), owner);
    EXPECT_EQ(GetWindow(owned, GW_OWNER), owner);
    DestroyWindow(owner);
    EXPECT_FALSE(IsWindow(owned));
    EXPECT_FALSE(IsWindow(child));
}

TEST_F(Windows, TellTheirParentUnlessAskedNotTo)
{
    HWND outer = Make("outer");
    heard.clear();
    HWND loud = Make("loud", outer, WS_CHILD);
    HWND quiet = CreateWindowExA(WS_EX_NOPARENTNOTIFY, "Listening", "quiet", WS_CHILD, 0, 0, 1, 1, outer,
                                 nullptr, nullptr, nullptr);
    DestroyWindow(quiet);
    DestroyWindow(loud);
    int notices = 0;
    for (const std::string &each : heard) {
        notices += each == "outer parentnotify" ? 1 : 0;
    }
    EXPECT_EQ(notices, 2);
}

TEST_F(Windows, AreRefusedByWhatTheyNeed)
{
    EXPECT_EQ(CreateWindowExA(0, "Unheard of", "", 0, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr),
              nullptr);
    EXPECT_EQ(CreateWindowExA(0, nullptr, "", 0, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(Make("orphan", nullptr, WS_CHILD), nullptr);
    int notAWindow = 0;
    EXPECT_EQ(Make("orphan", reinterpret_cast<HWND>(&notAWindow), WS_CHILD), nullptr);
    EXPECT_NE(Make("unowned", reinterpret_cast<HWND>(&notAWindow)), nullptr);
}

TEST_F(Windows, AreUndoneWhenTheirProcedureRefuses)
{
    WNDCLASSA refusing = {};
    refusing.lpszClassName = "Refusing";
    refusing.lpfnWndProc = [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
        if (message == WM_CREATE) {
            const auto *told = reinterpret_cast<const CREATESTRUCTA *>(lParam);
            EXPECT_STREQ(told->lpszName, "title");
            EXPECT_EQ(told->cx, 30);
            EXPECT_EQ(*static_cast<int *>(told->lpCreateParams), 7);
            return -1;
        }
        return DefWindowProcA(window, message, wParam, lParam);
    };
    EXPECT_NE(RegisterClassA(&refusing), 0);
    int parameter = 7;
    EXPECT_EQ(
        CreateWindowExA(0, "refusing", "title", 0, 10, 20, 30, 40, nullptr, nullptr, nullptr, &parameter),
        nullptr);
    EXPECT_TRUE(UnregisterClassA("REFUSING", nullptr));
}

TEST_F(Windows, StandInTheOrderOfTheirMakingTopmostFirst)
{
    HWND outer = Make("outer");
    HWND first = Make("1", outer, WS_CHILD, 11);
    HWND second = Make("2", outer, WS_CHILD, 12);
    HWND third = Make("3", outer, WS_CHILD, 13);
    EXPECT_EQ(GetWindow(outer, GW_CHILD), first);
    EXPECT_EQ(GetWindow(first, GW_HWNDNEXT), second);
    EXPECT_EQ(GetWindow(second, GW_HWNDPREV), first);
    EXPECT_EQ(GetWindow(second, GW_HWNDLAST), third);
    EXPECT_EQ(GetWindow(third, GW_HWNDNEXT), nullptr);
    EXPECT_EQ(GetDlgItem(outer, 12), second);
    EXPECT_EQ(GetDlgItem(outer, 14), nullptr);
    EXPECT_EQ(GetDlgCtrlID(third), 13);

    SetWindowPos(first, second, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE); // behind the second
    EXPECT_EQ(GetWindow(outer, GW_CHILD), second);
    EXPECT_EQ(GetWindow(second, GW_HWNDNEXT), first);
    SetWindowPos(third, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    EXPECT_EQ(GetWindow(outer, GW_CHILD), third);
    SetWindowPos(third, HWND_BOTTOM, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    EXPECT_EQ(GetWindow(first, GW_HWNDNEXT), third);
}

TEST_F(Windows, MoveBetweenParentsButNeverIntoThemselves)
{
    HWND one = Make("one");
    HWND other = Make("other");
    HWND child = Make("child", one, WS_CHILD);
    HWND inner = Make("inner", child, WS_CHILD);
    EXPECT_EQ(SetParent(child, other), one);
    EXPECT_EQ(GetParent(child), other);
    EXPECT_TRUE(IsChild(other, inner));
    EXPECT_FALSE(IsChild(one, inner));
    EXPECT_EQ(SetParent(child, inner), nullptr);
    EXPECT_EQ(SetParent(child, child), nullptr);
    EXPECT_EQ(GetParent(child), other);
    EXPECT_EQ(SetParent(child, nullptr), other);
    EXPECT_EQ(GetParent(child), nullptr);
}

TEST_F(Windows, AreNeverMoreThanAHundredDeep)
{
    HWND outer = Make("outer");
    HWND deepest = outer;
    int depth = 0;
    for (HWND next = outer; next != nullptr; next = Make("x", deepest, WS_CHILD)) {
        deepest = next;
        ++depth;
    }
    EXPECT_EQ(depth, 100);
    HWND another = Make("another");
    EXPECT_EQ(SetParent(outer, another), nullptr); // would push the deepest one level further
    EXPECT_TRUE(DestroyWindow(outer));
    EXPECT_FALSE(IsWindow(deepest));
}

TEST_F(Windows, KnowTheirRectanglesInsideEachOther)
{
    HWND outer = Make("outer"); // at 10, 20
    HWND child =
        CreateWindowExA(0, "Listening", "", WS_CHILD, 5, 6, 30, 20, outer, nullptr, nullptr, nullptr);
    RECT rectangle = {};
    EXPECT_TRUE(GetWindowRect(child, &rectangle));
    EXPECT_EQ(rectangle.left, 15);
    EXPECT_EQ(rectangle.top, 26);
    EXPECT_EQ(rectangle.right, 45);
    EXPECT_EQ(rectangle.bottom, 46);
    EXPECT_TRUE(GetClientRect(child, &rectangle));
    EXPECT_EQ(rectangle.left, 0);
    EXPECT_EQ(rectangle.right, 30);
    EXPECT_EQ(rectangle.bottom, 20);
    POINT point = {1, 2};
    EXPECT_TRUE(ClientToScreen(child, &point));
    EXPECT_EQ(point.x, 16);
    EXPECT_EQ(point.y, 28);
    EXPECT_TRUE(ScreenToClient(outer, &point));
    EXPECT_EQ(point.x, 6);
    EXPECT_EQ(point.y, 8);
    EXPECT_EQ(MapWindowPoints(child, outer, &point, 1), MAKELONG(5, 6));
    EXPECT_EQ(point.x, 11);
    EXPECT_FALSE(GetWindowRect(outer, nullptr));
    EXPECT_FALSE(ClientToScreen(nullptr, &point));
}

TEST_F(Windows, HearOfANewSizeAndPlace)
{
    HWND window = Make("a");
    heard.clear();
    MoveWindow(window, 1, 2, 3, 4, TRUE);
    EXPECT_EQ(heard, (std::vector<std::string>{"a size", "a move"}));
    heard.clear();
    MoveWindow(window, 1, 2, 3, 4, TRUE);
    EXPECT_TRUE(heard.empty());
    SetWindowPos(window, nullptr, 9, 9, 30, -5, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    RECT rectangle = {};
    GetClientRect(window, &rectangle);
    EXPECT_EQ(rectangle.right, 30);
    EXPECT_EQ(rectangle.bottom, 0); // no size is negative
}

TEST_F(Windows, AreVisibleWhenAllAroundThemAre)
{
    HWND outer = Make("outer");
    HWND child = Make("child", outer, WS_CHILD | WS_VISIBLE);
    EXPECT_FALSE(IsWindowVisible(child));
    EXPECT_FALSE(ShowWindow(outer, SW_SHOWNA));
    EXPECT_TRUE(IsWindowVisible(child));
    EXPECT_EQ(GetActiveWindow(), nullptr); // SW_SHOWNA does not activate
    EXPECT_TRUE(ShowWindow(outer, SW_HIDE));
    EXPECT_FALSE(IsWindowVisible(child));
    SetWindowPos(outer, nullptr, 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_SHOWWINDOW | SWP_NOACTIVATE);
    EXPECT_TRUE(IsWindowVisible(outer));
}

TEST_F(Windows, TellWhetherTheyWereDisabled)
{
    HWND window = Make("a");
    heard.clear();
    EXPECT_FALSE(EnableWindow(window, FALSE));
    EXPECT_FALSE(IsWindowEnabled(window));
    EXPECT_TRUE(EnableWindow(window, FALSE));
    EXPECT_TRUE(EnableWindow(window, TRUE));
    EXPECT_TRUE(IsWindowEnabled(window));
    EXPECT_EQ(heard, (std::vector<std::string>{"a enable", "a enable"}));
}

TEST_F(Windows, KeepTheFocusWhenTheyAreDisabledButDoNotGetIt)
{
    HWND outer = Make("outer", nullptr, WS_POPUP | WS_VISIBLE);
    HWND one = Make("one", outer, WS_CHILD | WS_VISIBLE);
    HWND other = Make("other", outer, WS_CHILD | WS_VISIBLE);
    SetFocus(one);
    EnableWindow(one, FALSE);
    EXPECT_EQ(GetFocus(), one);
    EXPECT_EQ(SetFocus(other), one);
    EXPECT_EQ(SetFocus(one), nullptr);
    EXPECT_EQ(GetFocus(), other);
    EnableWindow(outer, FALSE);
    EXPECT_EQ(SetFocus(one), nullptr); // one around it is disabled
}

TEST_F(Windows, LeaveTheirFocusAndActivityToOthers)
{
    HWND first = Make("first", nullptr, WS_POPUP | WS_VISIBLE);
    HWND second = Make("second", nullptr, WS_POPUP | WS_VISIBLE);
    HWND child = Make("child", second, WS_CHILD | WS_VISIBLE);
    EXPECT_EQ(GetActiveWindow(), second);
    EXPECT_EQ(SetFocus(child), second);
    DestroyWindow(child);
    EXPECT_EQ(GetFocus(), second); // back to the parent
    EXPECT_EQ(SetActiveWindow(first), second);
    EXPECT_EQ(GetFocus(), first);
    EXPECT_EQ(SetActiveWindow(second), first);
    ShowWindow(second, SW_HIDE);
    EXPECT_EQ(GetActiveWindow(), first);
    DestroyWindow(first);
    EXPECT_EQ(GetActiveWindow(), nullptr);
    EXPECT_EQ(GetFocus(), nullptr);
}

TEST_F(Windows, ThatAreOwnedGiveActivityBackToTheirOwner)
{
    HWND owner = Make("owner", nullptr, WS_POPUP | WS_VISIBLE);
    Make("between", nullptr, WS_POPUP | WS_VISIBLE);
    HWND owned = Make("owned", owner, WS_POPUP | WS_VISIBLE);
    EXPECT_EQ(GetActiveWindow(), owned);
    DestroyWindow(owned);
    EXPECT_EQ(GetActiveWindow(), owner);
}

TEST_F(Windows, CarryPointersAndNumbersInTheirExtraBytes)
{
    HWND window = Make("a");
    int target = 0;
    const auto pointer = reinterpret_cast<LONG_PTR>(&target);
    EXPECT_EQ(SetWindowLongPtrA(window, 0, pointer), 0);
    EXPECT_EQ(GetWindowLongPtrA(window, 0), pointer);
    EXPECT_EQ(SetWindowLongPtrA(window, 8, 5), 0);
    EXPECT_EQ(SetWindowLongPtrA(window, 9, 5), 0); // would reach beyond the 16 bytes
    EXPECT_EQ(GetWindowLongPtrA(window, 9), 0);
    EXPECT_EQ(GetWindowLongPtrA(window, 16), 0);
    EXPECT_EQ(SetWindowLongA(window, 12, 77), 0);
    EXPECT_EQ(GetWindowLongA(window, 12), 77);
    EXPECT_EQ(SetWindowLongPtrA(window, GWLP_USERDATA, pointer), 0);
    EXPECT_EQ(GetWindowLongPtrA(window, GWLP_USERDATA), pointer);
    EXPECT_EQ(GetWindowLongA(window, GWL_STYLE), static_cast<LONG>(WS_POPUP));
    EXPECT_EQ(SetWindowLongPtrA(window, GWLP_ID, 42), 0);
    EXPECT_EQ(GetWindowLongPtrA(window, -99), 0);
    EXPECT_EQ(GetWindowLongPtrA(nullptr, GWL_STYLE), 0);
}

TEST_F(Windows, CanBeSubclassed)
{
    static WNDPROC before;
    static int calls;
    HWND window = Make("a");
    before = reinterpret_cast<WNDPROC>(SetWindowLongPtrA(
        window, GWLP_WNDPROC,
        reinterpret_cast<LONG_PTR>(+[](HWND target, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
            ++calls;
            return CallWindowProcA(before, target, message, wParam, lParam);
        })));
    EXPECT_EQ(before, Listening);
    SetWindowTextA(window, "neu");
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(NameOf(window), "neu");
    EXPECT_EQ(SetWindowLongPtrA(window, GWLP_WNDPROC, 0), 0);
    EXPECT_EQ(CallWindowProcA(nullptr, window, WM_CLOSE, 0, 0), 0);
}

TEST_F(Windows, CarryPropertiesByName)
{
    HWND window = Make("a");
    int value = 0;
    EXPECT_EQ(GetPropA(window, "tervoTKHelp"), nullptr);
    EXPECT_TRUE(SetPropA(window, "tervoTKHelp", &value));
    EXPECT_EQ(GetPropA(window, "TERVOTKHELP"), &value);
    EXPECT_TRUE(SetPropA(window, "tervoTKHelp", window));
    EXPECT_EQ(RemovePropA(window, "tervoTKHelp"), window);
    EXPECT_EQ(RemovePropA(window, "tervoTKHelp"), nullptr);
    EXPECT_FALSE(SetPropA(window, nullptr, &value));
    EXPECT_FALSE(SetPropA(window, "", &value));
    EXPECT_FALSE(SetPropA(nullptr, "name", &value));
}

TEST_F(Windows, CutTheirTextToTheRoomOfTheReader)
{
    HWND window = Make("Summen- und Saldenliste");
    char text[7];
    EXPECT_EQ(GetWindowTextA(window, text, sizeof text), 6);
    EXPECT_STREQ(text, "Summen");
    EXPECT_EQ(GetWindowTextLengthA(window), 23);
    EXPECT_EQ(GetWindowTextA(window, text, 0), 0);
    EXPECT_EQ(GetWindowTextA(window, nullptr, 10), 0);
    EXPECT_TRUE(SetWindowTextA(window, nullptr));
    EXPECT_EQ(GetWindowTextLengthA(window), 0);
    EXPECT_EQ(GetWindowTextA(nullptr, text, sizeof text), 0);
    EXPECT_STREQ(text, "");
}

TEST_F(Windows, VisitAllInside)
{
    HWND outer = Make("outer");
    HWND child = Make("a", outer, WS_CHILD);
    Make("b", child, WS_CHILD);
    Make("c", outer, WS_CHILD);
    std::string visited;
    EXPECT_TRUE(EnumChildWindows(
        outer,
        [](HWND window, LPARAM lParam) -> BOOL {
            *reinterpret_cast<std::string *>(lParam) += NameOf(window);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&visited)));
    EXPECT_EQ(visited, "abc");
    EXPECT_FALSE(EnumChildWindows(outer, nullptr, 0));
}

TEST_F(Windows, OfClassesThatAreInUseKeepThem)
{
    HWND window = Make("a");
    EXPECT_FALSE(UnregisterClassA("Listening", nullptr));
    char name[5];
    EXPECT_EQ(GetClassNameA(window, name, sizeof name), 4);
    EXPECT_STREQ(name, "List");
    WNDCLASSA told = {};
    EXPECT_TRUE(GetClassInfoA(nullptr, "LISTENING", &told));
    EXPECT_EQ(told.lpfnWndProc, Listening);
    EXPECT_EQ(told.cbWndExtra, 16);
    EXPECT_EQ(RegisterClassA(&told), 0); // taken
    EXPECT_EQ(SetClassLongPtrA(window, GCL_CBWNDEXTRA, 4), 16u);
    HWND smaller = Make("b");
    EXPECT_EQ(GetWindowLongPtrA(smaller, 0), 0);
    SetWindowLongPtrA(smaller, 0, 5);
    EXPECT_EQ(GetWindowLongPtrA(smaller, 0), 0); // four bytes hold no pointer
    EXPECT_EQ(SetWindowLongA(smaller, 0, 5), 0);
    EXPECT_EQ(GetWindowLongA(smaller, 0), 5);
    DestroyWindow(window);
    DestroyWindow(smaller);
    EXPECT_TRUE(UnregisterClassA("Listening", nullptr));
    EXPECT_FALSE(UnregisterClassA("Listening", nullptr));
    EXPECT_FALSE(UnregisterClassA("Button", nullptr));
}

TEST_F(Windows, StayDeadWhenTheirHandleIsUsedOn)
{
    HWND window = Make("a");
    HWND child = Make("b", window, WS_CHILD);
    DestroyWindow(window);
    for (int i = 0; i < 100; ++i) {
        DestroyWindow(Make("other"));
    }
    EXPECT_FALSE(IsWindow(window));
    EXPECT_FALSE(IsWindow(child));
    EXPECT_FALSE(DestroyWindow(window));
    EXPECT_EQ(SendMessageA(window, WM_GETTEXTLENGTH, 0, 0), 0);
    EXPECT_FALSE(PostMessageA(window, WM_NULL, 0, 0));
    EXPECT_EQ(SetFocus(window), nullptr);
    EXPECT_FALSE(ShowWindow(window, SW_SHOW));
    EXPECT_FALSE(EnableWindow(window, FALSE));
    EXPECT_FALSE(SetWindowPos(window, nullptr, 0, 0, 0, 0, 0));
}

TEST_F(Windows, AreNothingToAnyCallWhenTheyAreDead)
{
    HWND window = Make("a");
    HWND living = Make("b");
    int value = 0;
    EXPECT_TRUE(SetPropA(window, "Eigenschaft", &value));
    SetWindowLongPtrA(window, GWLP_USERDATA, 5);
    DestroyWindow(window);
    EXPECT_EQ(GetPropA(window, "Eigenschaft"), nullptr);
    EXPECT_FALSE(SetPropA(window, "Eigenschaft", &value));
    EXPECT_EQ(RemovePropA(window, "Eigenschaft"), nullptr);
    for (const int index : {GWLP_USERDATA, GWLP_WNDPROC, GWLP_HWNDPARENT, GWL_STYLE, GWL_ID, 0}) {
        EXPECT_EQ(GetWindowLongPtrA(window, index), 0) << index;
        EXPECT_EQ(SetWindowLongPtrA(window, index, 7), 0) << index;
        EXPECT_EQ(GetWindowLongPtrA(window, index), 0) << index;
        EXPECT_EQ(GetWindowLongA(window, index), 0) << index;
    }
    EXPECT_EQ(GetClassLongPtrA(window, GCL_CBWNDEXTRA), 0u);
    char text[20] = "unberührt";
    EXPECT_EQ(GetWindowTextA(window, text, sizeof text), 0);
    EXPECT_STREQ(text, "");
    EXPECT_FALSE(SetWindowTextA(window, "neu"));
    EXPECT_EQ(GetWindowTextLengthA(window), 0);
    EXPECT_EQ(GetClassNameA(window, text, sizeof text), 0);
    EXPECT_EQ(GetParent(window), nullptr);
    EXPECT_EQ(SetParent(window, living), nullptr);
    EXPECT_EQ(SetParent(living, window), nullptr);
    for (UINT relation = 0; relation < 7; ++relation) {
        EXPECT_EQ(GetWindow(window, relation), nullptr) << relation;
    }
    EXPECT_FALSE(IsChild(window, living));
    EXPECT_FALSE(IsChild(living, window));
    EXPECT_FALSE(IsWindowVisible(window));
    EXPECT_FALSE(IsWindowEnabled(window));
    RECT rectangle = {1, 2, 3, 4};
    EXPECT_FALSE(GetWindowRect(window, &rectangle));
    EXPECT_FALSE(GetClientRect(window, &rectangle));
    EXPECT_FALSE(MapDialogRect(window, &rectangle));
    EXPECT_EQ(rectangle.right, 3);
    EXPECT_FALSE(MoveWindow(window, 1, 1, 1, 1, FALSE));
    EXPECT_FALSE(BringWindowToTop(window));
    EXPECT_FALSE(SetForegroundWindow(window));
    EXPECT_EQ(SetActiveWindow(window), nullptr);
    EXPECT_EQ(GetDlgItem(window, 1), nullptr);
    EXPECT_EQ(GetDlgCtrlID(window), 0);
    EXPECT_FALSE(SetDlgItemTextA(window, 1, "neu"));
    EXPECT_EQ(SendDlgItemMessageA(window, 1, WM_GETTEXTLENGTH, 0, 0), 0);
    EXPECT_EQ(IsDlgButtonChecked(window, 1), 0u);
    EXPECT_EQ(GetNextDlgTabItem(window, nullptr, FALSE), nullptr);
    EXPECT_FALSE(EndDialog(window, 1));
    MSG message = {};
    EXPECT_FALSE(IsDialogMessageA(window, &message));
    message.hwnd = window;
    message.message = WM_USER;
    EXPECT_EQ(DispatchMessageA(&message), 0);
    EXPECT_EQ(GetMessageA(&message, window, 0, 0), -1); // instead of waiting for what can never come
    EXPECT_EQ(Make("child", window, WS_CHILD), nullptr);
    HWND unowned = Make("unowned", window);
    EXPECT_EQ(GetWindow(unowned, GW_OWNER), nullptr);
    EXPECT_TRUE(DestroyWindow(unowned));
    EXPECT_TRUE(DestroyWindow(living));
}

TEST_F(Windows, MayBeDestroyedByTheirOwnHandlers)
{
    WNDCLASSA suicidal = {};
    suicidal.lpszClassName = "Suicidal";
    suicidal.lpfnWndProc = [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
        if (message == WM_SIZE || message == WM_KILLFOCUS || message == WM_USER) DestroyWindow(window);
        if (message == WM_DESTROY) {
            EXPECT_FALSE(DestroyWindow(window)); // runs already
            EXPECT_EQ(
                CreateWindowExA(0, "Static", "", WS_CHILD, 0, 0, 1, 1, window, nullptr, nullptr, nullptr),
                nullptr);
        }
        return DefWindowProcA(window, message, wParam, lParam);
    };
    RegisterClassA(&suicidal);
    const auto make = [](DWORD style) {
        return CreateWindowExA(0, "Suicidal", "", style, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    };
    EXPECT_EQ(make(WS_POPUP | WS_VISIBLE), nullptr); // shown, told its size, gone
    HWND window = make(WS_POPUP);
    EXPECT_TRUE(SetWindowPos(window, nullptr, 0, 0, 50, 50, 0));
    EXPECT_FALSE(IsWindow(window));
    window = make(WS_POPUP);
    EXPECT_EQ(SendMessageA(window, WM_USER, 0, 0), 0);
    EXPECT_FALSE(IsWindow(window));
    window = make(WS_POPUP);
    SetFocus(window);
    EXPECT_EQ(GetFocus(), window);
    SetFocus(nullptr);
    EXPECT_FALSE(IsWindow(window));
}

TEST_F(Windows, MakeRoomForTensOfThousands)
{
    std::vector<HWND> windows;
    for (HWND window = Make("x"); window != nullptr && windows.size() < 2000; window = Make("x")) {
        windows.push_back(window);
    }
    EXPECT_EQ(windows.size(), 2000u);
    for (HWND window : windows) {
        EXPECT_LT(reinterpret_cast<uintptr_t>(window), uintptr_t{1} << 31); // hosts keep them in 32 bits
        EXPECT_GT(reinterpret_cast<uintptr_t>(window), 0xFFFFu);
        DestroyWindow(window);
    }
}
