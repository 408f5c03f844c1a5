#include "window-system/dialogs/units.h"

#include "window-system/model/handles.h"
#include "window-system/model/model.h"
#include "window-system/model/window.h"

#include <cstdint>

namespace varkui {

namespace {

LONG Scaled(LONG value, unsigned base, LONG divisor)
{
    const int64_t product = int64_t{value} * base;
    return static_cast<LONG>((product + (product < 0 ? -divisor / 2 : divisor / 2)) / divisor);
}

} // namespace

RECT Pixels(LONG left, LONG top, LONG right, LONG bottom)
{
    const Locked locked;
    return RECT{Scaled(left, model.BaseX, 4), Scaled(top, model.BaseY, 8), Scaled(right, model.BaseX, 4),
                Scaled(bottom, model.BaseY, 8)};
}

} // namespace varkui

using namespace varkui;

LONG GetDialogBaseUnits(void)
{
    frontEnd.Choose(); // tells how large letters are
    const Locked locked;
    return static_cast<LONG>(model.BaseY << 16 | (model.BaseX & 0xFFFF));
}

BOOL MapDialogRect(HWND dialog, RECT *rectangle)
{
    if (rectangle == nullptr) return FALSE;
    {
        const Locked locked;
        const Window *found = Find(dialog);
        if (found == nullptr || found->Kind != Kind::Dialog) return FALSE;
    }
    *rectangle = Pixels(rectangle->left, rectangle->top, rectangle->right, rectangle->bottom);
    return TRUE;
}
