#include "src/reports/frame/output_choice.h"

namespace vark {

namespace {

constexpr UINT messageOutput = WM_USER + 6; // a click on one of the buttons, after its own handling

void ShowOutput(HWND dialog, int32_t choice)
{
    SendDlgItemMessageA(dialog, controlBildschirm, BM_SETCHECK, choice == 0 ? BST_CHECKED : BST_UNCHECKED, 0);
    SendDlgItemMessageA(dialog, controlDrucker, BM_SETCHECK, choice == 1 ? BST_CHECKED : BST_UNCHECKED, 0);
}

} // namespace

void InitOutputChoice(HWND dialog, int32_t &choice, int32_t &state)
{
    if (choice != 0 && choice != 1) choice = 0;
    state = choice;
    ShowOutput(dialog, state);
}

bool OutputControlMessage(int32_t &state, HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    const int control = LOWORD(wParam);
    if (control != controlBildschirm && control != controlDrucker) return false;
    if (message == WM_COMMAND) {
        PostMessageA(dialog, messageOutput, wParam, lParam);
        return true;
    }
    if (message != messageOutput) return false;
    if (HIWORD(wParam) == BN_CLICKED) {
        state = control == controlDrucker ? 1 : 0;
        ShowOutput(dialog, state);
    }
    return true;
}

} // namespace vark
