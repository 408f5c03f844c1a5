#include "src/frame/dialogs.h"

#include "tests/support/alloc_faults.h"
#include "tests/window-system/front_end_setup.h"

#include <gtest/gtest.h>
#include <iterator>
#include <string>

using namespace vark;
using namespace vark::test;

namespace {

using varkui::DialogControlKind;

constexpr int innerButton = 100;

constexpr varkui::DialogControl controls[] = {
    {DialogControlKind::PushButton, innerButton, "Innen", 7, 7, 50, 14, 0, 0},
    {DialogControlKind::DefaultButton, IDOK, "OK", 7, 25, 50, 14, 0, 0},
};
constexpr varkui::DialogTable outerTable = {997, "Außen", 64, 46, controls, std::size(controls), 0};
constexpr varkui::DialogTable innerTable = {998, "Innen", 64, 46, controls, std::size(controls), 0};

struct Nested {
    HWND Asked; // owner that the inner dialog is asked for
    HWND Outer = nullptr;
    HWND OwnerOfInner = nullptr;
    bool IsInner = false;
};

INT_PTR CALLBACK Procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto *state = DialogState<Nested>(dialog, message, lParam);
    if (message == WM_INITDIALOG) {
        if (state->IsInner) state->OwnerOfInner = GetWindow(dialog, GW_OWNER);
        return TRUE;
    }
    if (message != WM_COMMAND || HIWORD(wParam) != BN_CLICKED) return FALSE;
    if (LOWORD(wParam) == innerButton) {
        state->Outer = dialog;
        state->IsInner = true;
        EXPECT_TRUE(RunDialog(innerTable, state->Asked, Procedure, state));
    } else {
        EndDialog(dialog, IDOK);
    }
    return TRUE;
}

} // namespace

TEST(Dialogs, WithoutAnOwnerTheActiveWindowIsIt)
{
    const FrontEndSetup frontEnd;
    const std::string once = "dialog 997\npress 100\ndialog 998\npress 1\ndialog 997\npress 1\n";
    frontEnd.UseScript(once + once);
    for (HWND asked : {HWND{}, reinterpret_cast<HWND>(0x4711)}) {
        Nested state{asked};
        EXPECT_TRUE(RunDialog(outerTable, nullptr, Procedure, &state));
        EXPECT_NE(nullptr, state.Outer);
        EXPECT_EQ(state.Outer, state.OwnerOfInner);
    }
}

TEST(Dialogs, WithoutMemoryTheUserIsTold)
{
    const FrontEndSetup frontEnd;
    Nested state{nullptr};
    FailAllocation(1);
    EXPECT_FALSE(RunDialog(outerTable, nullptr, Procedure, &state));
    StopAllocationFaults();
    EXPECT_EQ(
        "box Es kann kein Speicherplatz mehr vom Betriebssystem angefordert werden. Beenden Sie bitte das "
        "Programm und andere Anwendungen und starten Sie erneut.\n",
        frontEnd.Log());
}
