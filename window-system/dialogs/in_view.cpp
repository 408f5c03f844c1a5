#include "window-system/dialogs/in_view.h"

#include "window-system/model/handles.h"
#include "window-system/model/model.h"
#include "window-system/model/texts.h"
#include "window-system/model/threads.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

namespace varkui {

ModalLoop *LoopOf(const Window *dialog)
{
    for (ModalLoop *loop = dialog->Thread->Modal; loop != nullptr; loop = loop->Outer) {
        if (loop->Dialog == dialog->Handle) return loop;
    }
    return nullptr;
}

Window *Topmost(Thread *thread)
{
    Window *active = Find(thread->Active);
    if (active != nullptr && IsShown(active) && (active->Style & WS_DISABLED) == 0 && !active->Destroying)
        return active;
    for (const ModalLoop *loop = thread->Modal; loop != nullptr; loop = loop->Outer) {
        Window *dialog = Find(loop->Dialog);
        if (dialog != nullptr && !loop->Ended && IsShown(dialog)) return dialog;
    }
    for (Window *each = model.FirstTop; each != nullptr; each = each->Next) {
        if (each->Thread == thread && IsShown(each) && (each->Style & WS_DISABLED) == 0 && !each->Destroying)
            return each;
    }
    return nullptr;
}

const Window *LabelOf(const Window *control)
{
    const Kind kind = control->Kind;
    if (kind != Kind::Edit && kind != Kind::ListBox && kind != Kind::ComboBox) return nullptr;
    const Window *before = control->Previous;
    if (before == nullptr || before->Kind != Kind::Static) return nullptr;
    return TextOf(before)[0] != 0 ? before : nullptr;
}

int CurrentDefault(Window *dialog)
{
    const Window *focus = Find(dialog->Thread->Focus);
    if (focus != nullptr && focus->Kind == Kind::Button && LiesInside(focus, dialog) && AreEnabled(focus)) {
        const DWORD type = focus->Style & BS_TYPEMASK;
        if (type == BS_PUSHBUTTON || type == BS_DEFPUSHBUTTON) return static_cast<int>(focus->Id);
    }
    return dialog->Kind == Kind::Dialog ? dialog->Dialog->DefaultId : 0;
}

} // namespace varkui
