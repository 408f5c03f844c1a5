#include "src/pickers/pick_list.h"

#include "src/frame/messages.h"

namespace vark {

bool AddLine(HWND dialog, int list, const char *line, int32_t number)
{
    const LRESULT index = SendDlgItemMessageA(dialog, list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line));
    if (index < 0) return false;
    SendDlgItemMessageA(dialog, list, LB_SETITEMDATA, static_cast<WPARAM>(index), number);
    return true;
}

int SelectedLine(HWND dialog, int list)
{
    return static_cast<int>(SendDlgItemMessageA(dialog, list, LB_GETCURSEL, 0, 0));
}

int32_t NumberOfLine(HWND dialog, int list, int line)
{
    return static_cast<int32_t>(
        SendDlgItemMessageA(dialog, list, LB_GETITEMDATA, static_cast<WPARAM>(line), 0));
}

bool SelectNumber(HWND dialog, int list, int32_t number)
{
    const auto count = static_cast<int>(SendDlgItemMessageA(dialog, list, LB_GETCOUNT, 0, 0));
    for (int line = 0; line < count; ++line) {
        if (NumberOfLine(dialog, list, line) != number) continue;
        SendDlgItemMessageA(dialog, list, LB_SETCURSEL, static_cast<WPARAM>(line), 0);
        return true;
    }
    return false;
}

int RequireLine(HWND dialog, int list)
{
    const int line = SelectedLine(dialog, list);
    if (line == noLine) ShowMessage(Message::EintragWaehlen, static_cast<uint16_t>(list), nullptr, -1);
    return line;
}

void HoldDrawing(HWND dialog, int control) { SendDlgItemMessageA(dialog, control, WM_SETREDRAW, FALSE, 0); }

void ResumeDrawing(HWND dialog, int control)
{
    SendDlgItemMessageA(dialog, control, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(GetDlgItem(dialog, control), nullptr, TRUE);
}

} // namespace vark
