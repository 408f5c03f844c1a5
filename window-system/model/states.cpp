#include "window-system/model/states.h"

#include "window-system/model/memory.h"
#include "window-system/model/rows.h"
#include "window-system/model/window.h"

#include <unistd.h>

namespace varkui {

namespace {

size_t StateSize(enum Kind kind)
{
    switch (kind) {
    case Kind::Dialog: return sizeof(DialogState);
    case Kind::Button: return sizeof(ButtonState);
    case Kind::Edit: return sizeof(EditState);
    case Kind::ListBox: return sizeof(ListState);
    case Kind::ComboBox: return sizeof(ComboState);
    case Kind::TabControl: return sizeof(TabState);
    case Kind::Picture: return sizeof(PictureState);
    case Kind::Plain:
    case Kind::Static: break;
    }
    return 0;
}

} // namespace

bool MakeState(Window *window)
{
    const size_t size = StateSize(window->Kind);
    if (size == 0) return true;
    window->State = Allocate(size);
    if (window->State == nullptr) return false;
    switch (window->Kind) {
    case Kind::Edit: window->Edit->Limit = longestText; break;
    case Kind::ListBox:
        window->List->Selected = LB_ERR;
        window->List->Rows.Sorted = (window->Style & LBS_SORT) != 0;
        break;
    case Kind::ComboBox:
        window->Combo->Selected = CB_ERR;
        window->Combo->Rows.Sorted = (window->Style & CBS_SORT) != 0;
        window->Combo->Edit.Limit = longestText;
        break;
    case Kind::TabControl: window->Tabs->Selected = -1; break;
    case Kind::Picture: window->Picture->Shown.Descriptor = -1; break;
    default: break;
    }
    return true;
}

void FreeState(Window *window)
{
    if (window->State == nullptr) return;
    if (window->Kind == Kind::ListBox) RemoveAllRows(window->List->Rows);
    if (window->Kind == Kind::ComboBox) RemoveAllRows(window->Combo->Rows);
    if (window->Kind == Kind::TabControl) {
        for (int i = 0; i < window->Tabs->Count; ++i) {
            Release(window->Tabs->Items[i].Text);
        }
        Release(window->Tabs->Items);
    }
    if (window->Kind == Kind::Picture && window->Picture->Shown.Descriptor >= 0) {
        close(window->Picture->Shown.Descriptor);
    }
    Release(window->State);
    window->State = nullptr;
}

} // namespace varkui
