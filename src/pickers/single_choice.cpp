#include "src/pickers/single_choice.h"

#include "src/frame/dialogs.h"
#include "src/frame/lifecycle.h"
#include "src/pickers/pick_list.h"

namespace vark {

namespace {

struct Run {
    const SingleChoice &Choice;
    int32_t Result;
};

void Choose(HWND dialog, Run &run)
{
    const SingleChoice &choice = run.Choice;
    const int line = RequireLine(dialog, choice.List);
    if (line == noLine) return;
    const int32_t number = NumberOfLine(dialog, choice.List, line);
    if (choice.NoNumber != 0 && number <= 0) {
        run.Result = choice.NoNumber;
    } else {
        run.Result = number;
        RememberChoice(choice.Key, number);
    }
    EndDialog(dialog, IDOK);
}

INT_PTR CALLBACK Procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto *run = DialogState<Run>(dialog, message, lParam);
    if (run == nullptr) return FALSE;
    if (message == WM_INITDIALOG) {
        run->Result = run->Choice.Fill(run->Choice, dialog);
        if (run->Result < 0) EndDialog(dialog, IDCANCEL);
        return TRUE;
    }
    if (message != WM_COMMAND) return FALSE;
    const int id = LOWORD(wParam);
    const int notice = HIWORD(wParam);
    if ((id == IDOK && notice == BN_CLICKED) || (id == run->Choice.List && notice == LBN_DBLCLK)) {
        Choose(dialog, *run);
    } else if (id == IDCANCEL && notice == BN_CLICKED) {
        run->Result = pickCancelled;
        EndDialog(dialog, IDCANCEL);
    } else {
        return FALSE;
    }
    return TRUE;
}

} // namespace

int32_t RunSingleChoice(const SingleChoice &choice, HWND owner)
{
    Run run{choice, pickCancelled};
    return RunDialog(choice.Dialog, owner, Procedure, &run) ? run.Result : engineFailure;
}

} // namespace vark
