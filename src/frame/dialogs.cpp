#include "src/frame/dialogs.h"

#include "src/frame/messages.h"
#include "src/platform/window_support.h"

namespace vark {

bool RunDialog(const varkui::DialogTable &table, HWND owner, DLGPROC procedure, void *state)
{
    DLGTEMPLATE *made = varkui::MakeDialogTemplate(table);
    INT_PTR result = -1;
    if (made != nullptr) {
        PrepareControls();
        if (IsWindow(owner) == FALSE) owner = GetActiveWindow();
        result = DialogBoxIndirectParamA(nullptr, made, owner, procedure, reinterpret_cast<LPARAM>(state));
        varkui::FreeDialogTemplate(made);
    }
    if (result == -1) ShowMessage(Message::KeinSpeicher, 0, nullptr, -1);
    return result != -1;
}

void *KeepDialogState(HWND dialog, UINT message, LPARAM lParam)
{
    if (message == WM_INITDIALOG) SetWindowLongPtrA(dialog, DWLP_USER, lParam);
    return reinterpret_cast<void *>(GetWindowLongPtrA(dialog, DWLP_USER));
}

} // namespace vark
