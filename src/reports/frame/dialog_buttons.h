// The controls of a report's dialog by their numbers: not every dialog has each.
#pragma once

#include "src/platform/window_api.h"

namespace vark {

// Whether the dialog has the control.
inline bool HasControl(HWND dialog, int control) { return GetDlgItem(dialog, control) != nullptr; }

// The state of a check box or a radio button; false where there is none.
inline bool IsChecked(HWND dialog, int button) { return IsDlgButtonChecked(dialog, button) == BST_CHECKED; }

// Puts it on or off, without a notification.
inline void SetChecked(HWND dialog, int button, bool isChecked)
{
    SendDlgItemMessageA(dialog, button, BM_SETCHECK, isChecked ? BST_CHECKED : BST_UNCHECKED, 0);
}

} // namespace vark
