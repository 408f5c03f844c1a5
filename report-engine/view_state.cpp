#include "report-engine/view_state.h"

#include "text/windows1252.h"

namespace rs {

ViewWindow *StateOfView(HWND window)
{
    if (window == nullptr || GetPropA(window, viewProperty) == nullptr) return nullptr;
    return reinterpret_cast<ViewWindow *>(GetWindowLongPtrA(window, GWLP_USERDATA));
}

bool IsChild(const ViewWindow &view) { return (GetWindowLongPtrA(view.Window, GWL_STYLE) & WS_CHILD) != 0; }

void SayState(const ViewWindow &view, const char *text)
{
    char shown[600];
    text::FromUtf8(text, shown, sizeof shown);
    SetWindowTextA(Control(view, stateText), shown);
}

} // namespace rs
