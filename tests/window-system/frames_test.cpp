// Frames: windows of a program's own class around a bar of buttons and a view that is taken into them.
#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "frame.h"
#include "front_end_setup.h"

using frame::State;

namespace {

using Names = std::vector<std::string>;

struct Frames : testing::Test {
    FrontEndSetup frontEnd;

    Frames()
    {
        frame::Register();
        frame::RegisterPlain();
    }

    static RECT Inside(HWND window)
    {
        RECT rectangle = {};
        GetClientRect(window, &rectangle);
        return rectangle;
    }

    static POINT Corner(HWND window)
    {
        POINT corner = {0, 0};
        MapWindowPoints(window, GetParent(window), &corner, 1);
        return corner;
    }

    static void Handle()
    {
        MSG message = {};
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
            DispatchMessageA(&message);
        }
    }
};

} // namespace

TEST_F(Frames, KeepTheirBarCentredAtTheLowerEdgeAndGiveTheRestToTheView)
{
    State state;
    HWND window = frame::Make(state);
    ASSERT_NE(window, nullptr);
    SendMessageA(window, frame::attachMessage, 0, reinterpret_cast<LPARAM>(frame::MakeView("Blatt 1")));
    ShowWindow(window, SW_SHOW);
    const RECT bar = Inside(state.Bar);
    EXPECT_EQ(bar.right, 226 * 8 / 4); // nobody has told how large letters are: 8 and 20 pixels
    EXPECT_EQ(bar.bottom, 20 * 20 / 8);
    EXPECT_TRUE(IsWindowVisible(state.Bar));
    EXPECT_EQ(Corner(state.Bar).x, (600 - bar.right) / 2);
    EXPECT_EQ(Corner(state.Bar).y, 400 - bar.bottom);
    EXPECT_EQ(Inside(state.View).right, 600);
    EXPECT_EQ(Inside(state.View).bottom, 400 - bar.bottom);

    MoveWindow(window, 0, 0, 300, 300, TRUE);
    EXPECT_EQ(Corner(state.Bar).x, 0);
    EXPECT_EQ(Inside(state.View).right, 300);
    MoveWindow(window, 0, 0, 300, bar.bottom, TRUE);
    EXPECT_FALSE(IsWindowVisible(state.Bar));
    EXPECT_EQ(Inside(state.View).bottom, bar.bottom);
}

TEST_F(Frames, TakeAViewInAndDestroyTheOneBefore)
{
    State state;
    HWND window = frame::Make(state);
    ShowWindow(window, SW_SHOW);
    HWND first = frame::MakeView("Blatt 1");
    SendMessageA(window, frame::attachMessage, 0, reinterpret_cast<LPARAM>(first));
    EXPECT_EQ(GetParent(first), window);
    EXPECT_TRUE(IsWindowVisible(GetDlgItem(first, 11)));
    HWND second = frame::MakeView("Blatt 2");
    SendMessageA(window, frame::attachMessage, 0, reinterpret_cast<LPARAM>(second));
    EXPECT_FALSE(IsWindow(first));
    EXPECT_EQ(GetParent(second), window);
    EXPECT_EQ(TextOf(second), "Blatt 2");
    DestroyWindow(window);
    EXPECT_FALSE(IsWindow(second));
    EXPECT_FALSE(IsWindow(state.Bar));
}

TEST_F(Frames, BecomeActiveInThePlaceOfAWindowTheyTakeIn)
{
    State state;
    HWND window = frame::Make(state);
    ShowWindow(window, SW_SHOW);
    HWND view = frame::MakeView("Blatt 1");
    ShowWindow(view, SW_SHOW);
    SetFocus(GetDlgItem(view, 11));
    ASSERT_EQ(GetActiveWindow(), view);
    state.Heard.clear();
    SendMessageA(window, frame::attachMessage, 0, reinterpret_cast<LPARAM>(view));
    EXPECT_EQ(GetActiveWindow(), window);
    EXPECT_EQ(GetFocus(), GetDlgItem(view, 11));
    EXPECT_NE(std::find(state.Heard.begin(), state.Heard.end(), "activate"), state.Heard.end());
}

TEST_F(Frames, HearWhatIsPressedInTheirBarByMouseAndKeyboard)
{
    State state;
    HWND window = frame::Make(state);
    ShowWindow(window, SW_SHOW);
    SendDlgItemMessageA(state.Bar, 1095, BM_CLICK, 0, 0);
    EXPECT_EQ(state.Pressed, std::vector<int>{1095});
    EXPECT_EQ(GetFocus(), GetDlgItem(state.Bar, 1095));
    // The keys of a dialog serve the bar inside the frame too.
    MSG tab = {GetFocus(), WM_KEYDOWN, VK_TAB, 0, 0, {0, 0}};
    EXPECT_TRUE(IsDialogMessageA(state.Bar, &tab));
    EXPECT_EQ(GetFocus(), GetDlgItem(state.Bar, 3));
    MSG enter = {GetFocus(), WM_KEYDOWN, VK_RETURN, 0, 0, {0, 0}};
    EXPECT_TRUE(IsDialogMessageA(state.Bar, &enter));
    EXPECT_EQ(state.Pressed, (std::vector<int>{1095, 3}));
    MSG elsewhere = {window, WM_KEYDOWN, VK_TAB, 0, 0, {0, 0}};
    EXPECT_FALSE(IsDialogMessageA(state.Bar, &elsewhere));
}

TEST_F(Frames, HearOfWhatIsMadeAndDestroyedInsideAtAnyDepth)
{
    State state;
    HWND window = frame::Make(state);
    HWND between = CreateWindowExA(0, "Plain", "", WS_CHILD, 0, 0, 9, 9, window, nullptr, nullptr, nullptr);
    state.Heard.clear();
    HWND inner = CreateWindowExA(0, "Plain", "", WS_CHILD, 0, 0, 9, 9, between, nullptr, nullptr, nullptr);
    EXPECT_EQ(state.Heard, Names{"parentnotify"});
    DestroyWindow(inner);
    EXPECT_EQ(state.Heard, (Names{"parentnotify", "parentnotify"}));
    HWND quiet = CreateWindowExA(WS_EX_NOPARENTNOTIFY, "Plain", "", WS_CHILD, 0, 0, 9, 9, window, nullptr,
                                 nullptr, nullptr);
    CreateWindowExA(0, "Plain", "", WS_CHILD, 0, 0, 9, 9, quiet, nullptr, nullptr, nullptr);
    EXPECT_EQ(state.Heard.size(), 2u) << "what lies in a window that tells nothing is not told either";
}

TEST_F(Frames, HearWhenTheyArePlacedAsAChild)
{
    State state;
    HWND host = CreateWindowExA(0, "Plain", "Host", WS_OVERLAPPEDWINDOW, 0, 0, 800, 600, nullptr, nullptr,
                                nullptr, nullptr);
    HWND window = frame::Make(state, host, WS_CHILD | WS_CAPTION);
    ASSERT_NE(window, nullptr);
    state.Heard.clear();
    SetWindowPos(window, nullptr, 0, 0, 500, 300, SWP_NOZORDER);
    EXPECT_EQ(state.Heard, (Names{"size", "childactivate"}));
    state.Heard.clear();
    SetWindowPos(window, nullptr, 0, 0, 500, 310, SWP_NOZORDER | SWP_NOACTIVATE);
    EXPECT_EQ(state.Heard, Names{"size"});
}

TEST_F(Frames, FindTheirParameterBehindTheMdiStructure)
{
    State state;
    HWND host = CreateWindowExA(0, "Plain", "Host", WS_OVERLAPPEDWINDOW, 0, 0, 800, 600, nullptr, nullptr,
                                nullptr, nullptr);
    HWND window = frame::Make(state, host, WS_CHILD, WS_EX_MDICHILD);
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(GetWindowLongPtrA(window, 0), reinterpret_cast<LONG_PTR>(&state));
    EXPECT_NE(state.Bar, nullptr);
}

TEST_F(Frames, MayBeOfAHostsClassThatLendsItsProcedureForTheMoment)
{
    static int hostsMessages;
    hostsMessages = 0;
    WNDCLASSA made = {};
    made.lpszClassName = "Host";
    made.lpfnWndProc = [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
        if (message == WM_CREATE) ++hostsMessages;
        return DefWindowProcA(window, message, wParam, lParam);
    };
    RegisterClassA(&made);
    HWND host =
        CreateWindowExA(0, "Host", "", WS_OVERLAPPEDWINDOW, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    ASSERT_EQ(hostsMessages, 1);
    const ULONG_PTR procedure =
        SetClassLongPtrA(host, GCLP_WNDPROC, reinterpret_cast<LONG_PTR>(&frame::Procedure));
    EXPECT_EQ(procedure, reinterpret_cast<ULONG_PTR>(made.lpfnWndProc));
    EXPECT_EQ(SetClassLongPtrA(host, GCL_CBWNDEXTRA, sizeof(void *)), 0u);
    State state;
    HWND window =
        CreateWindowExA(0, "Host", "", WS_OVERLAPPEDWINDOW, 0, 0, 600, 400, host, nullptr, nullptr, &state);
    SetClassLongPtrA(host, GCLP_WNDPROC, static_cast<LONG_PTR>(procedure));
    SetClassLongPtrA(host, GCL_CBWNDEXTRA, 0);
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(hostsMessages, 1);
    EXPECT_EQ(GetWindowLongPtrA(window, 0), reinterpret_cast<LONG_PTR>(&state));
    char name[20];
    EXPECT_EQ(GetClassNameA(window, name, sizeof name), 4);
    EXPECT_STREQ(name, "Host");
    CreateWindowExA(0, "Host", "", WS_OVERLAPPEDWINDOW, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(hostsMessages, 2);
    DestroyWindow(window);
    EXPECT_EQ(state.Heard.back(), "ncdestroy");
}

TEST_F(Frames, AreClosedOnceByNobodyAndTakeTheirViewAlong)
{
    State state;
    HWND window = frame::Make(state);
    HWND view = frame::MakeView("Blatt 1");
    SendMessageA(window, frame::attachMessage, 0, reinterpret_cast<LPARAM>(view));
    ShowWindow(window, SW_SHOW);
    MSG message = {};
    while (IsWindow(window) != FALSE && GetMessageA(&message, nullptr, 0, 0) > 0) {
        DispatchMessageA(&message);
    }
    EXPECT_FALSE(IsWindow(view));
    EXPECT_EQ(state.Heard.back(), "ncdestroy");
}

TEST_F(Frames, AreUsedByAScript)
{
    frontEnd.UseScript("expect title Kontenblatt\n"
                       "expect text 11 \"Blatt 1\"\n"
                       "text 11 neu\n"
                       "press 1094\n"
                       "press 3\n"
                       "expect text 11 neu\n"
                       "close\n");
    State state;
    HWND window = frame::Make(state);
    SendMessageA(window, frame::attachMessage, 0, reinterpret_cast<LPARAM>(frame::MakeView("Blatt 1")));
    ShowWindow(window, SW_SHOW);
    MSG message = {};
    while (IsWindow(window) != FALSE && GetMessageA(&message, nullptr, 0, 0) > 0) {
        if (IsDialogMessageA(state.Bar, &message) == FALSE) DispatchMessageA(&message);
    }
    EXPECT_EQ(state.Pressed, (std::vector<int>{1094, 3}));
    EXPECT_EQ(frontEnd.Log(), "expect title Kontenblatt\nexpect text 11 \"Blatt 1\"\ntext 11 neu\n"
                              "press 1094\npress 3\nexpect text 11 neu\nclose\n");
}
