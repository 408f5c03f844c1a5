// Dialogs of the library in a real window: the host's window that owns them, and a person beside its thread.
#pragma once

#include "src/platform/window_api.h"
#include "tests/pickers/pick_books.h"
#include "tests/support/display.h"

#include <gtest/gtest.h>

namespace vark::test {

// The host's window, behind whose thread's back the dialogs are found: they are its siblings.
inline HWND MakeOwner()
{
    WNDCLASSA owner = {};
    owner.lpfnWndProc = DefWindowProcA;
    owner.lpszClassName = "Host";
    RegisterClassA(&owner);
    return CreateWindowExA(0, "Host", "Host", WS_OVERLAPPEDWINDOW, 0, 0, 100, 100, nullptr, nullptr, nullptr,
                           nullptr);
}

struct OnScreen : testing::Test {
    PickBooks books{""};
    Display display;
    HWND owner = nullptr;

    void SetUp() override
    {
        const std::string missing = display.Begin(std::filesystem::path(VARKUI_LIBRARY).parent_path());
        if (!missing.empty()) GTEST_SKIP() << missing;
        owner = MakeOwner();
        ASSERT_NE(owner, nullptr);
    }

    // Calls the library while `person` acts on what it shows, first a window of that title. Where that fails
    // the display goes, so that nothing waits for ever.
    int32_t Run(const std::string &title, const std::function<int32_t()> &pick,
                const std::function<void()> &person)
    {
        std::thread acting([&] {
            EXPECT_TRUE(display.HasKeyboard(title)) << title;
            if (!HasFailure()) person();
            if (HasFailure()) display.End();
        });
        const int32_t result = pick();
        acting.join();
        EXPECT_TRUE(display.LosesKeyboard(title)); // the next dialog of that title is another one
        return result;
    }

    HWND Topmost() const { return GetWindow(owner, GW_HWNDFIRST); }

    bool ClickRow(int list, int row) const
    {
        constexpr int rowHeight = 18;
        HWND dialog = Topmost();
        return Display::ClickUntil(
            [&] { return SendDlgItemMessageA(dialog, list, LB_GETCURSEL, 0, 0) == row; }, dialog, list, 20,
            10 + row * rowHeight);
    }
};

} // namespace vark::test
