#include "window-system/front-ends/headless.h"

#include "window-system/dialogs/boxes.h"
#include "window-system/dialogs/in_view.h"
#include "window-system/front-ends/lines.h"
#include "window-system/model/collation.h"
#include "window-system/model/handles.h"
#include "window-system/model/input.h"
#include "window-system/model/model.h"
#include "window-system/model/queue.h"
#include "window-system/model/texts.h"
#include "window-system/model/threads.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"
#include "window-system/windows/life.h"

#include <cstdio>

namespace varkui {

namespace {

void AnswerBox(Window *box)
{
    char caption[256];
    char text[longestLine];
    snprintf(caption, sizeof caption, "%s", TextOf(box));
    snprintf(text, sizeof text, "%s", TextOfBox(box));
    const Window *button = FindControl(box, SafestAnswer(box->Dialog->BoxStyle));
    if (button != nullptr) PostInput(button->Handle, MakeInput(InputKind::Click));
    box->Answer = button != nullptr ? Unseen::Answered : Unseen::Closed;
    Unlock();
    WriteToStandardError(caption, text);
    Lock();
}

// Ends a dialog that answers and closing did not end.
void Force(Window *dialog)
{
    ModalLoop *loop = LoopOf(dialog);
    if (loop == nullptr) {
        DestroyElsewhere(dialog);
        return;
    }
    loop->Ended = true;
    loop->Result = 0;
}

// Takes the next, stronger step to end a dialog, so that its thread never waits for a person.
void AnswerDialog(Window *dialog)
{
    if (dialog->Answer == Unseen::Untouched) {
        dialog->Answer = Unseen::Answered;
        const LONG_PTR wanted = WantedAnswer(dialog);
        Window *button = wanted != 0 ? FindControl(dialog, wanted) : nullptr;
        if (button != nullptr) {
            PostInput(button->Handle, MakeInput(InputKind::Click));
            return;
        }
    }
    if (dialog->Answer == Unseen::Answered) {
        dialog->Answer = Unseen::Cancelled;
        const Window *button = FindControl(dialog, IDCANCEL);
        Post(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED),
             reinterpret_cast<LPARAM>(button != nullptr ? button->Handle : nullptr));
    } else if (dialog->Answer == Unseen::Cancelled) {
        dialog->Answer = Unseen::Closed;
        PostInput(dialog->Handle, MakeInput(InputKind::Close));
    } else {
        dialog->Answer = Unseen::Forced;
        Force(dialog);
    }
}

// The next window to be answered: the topmost one, else the innermost modal dialog, even a hidden one, since
// its thread waits for its end alone. Null when none is left.
Window *NextUnanswered(Thread *thread)
{
    Window *top = Topmost(thread);
    if (top != nullptr && top->Answer != Unseen::Forced) return top;
    for (const ModalLoop *loop = thread->Modal; loop != nullptr; loop = loop->Outer) {
        Window *dialog = Find(loop->Dialog);
        if (dialog != nullptr && !loop->Ended) return dialog;
    }
    return nullptr;
}

} // namespace

LONG_PTR WantedAnswer(const Window *dialog)
{
    for (const Property *property = dialog->Properties; property != nullptr; property = property->Next) {
        if (EqualWithoutCase(property->Name, VARKUI_ANSWER_PROP)) {
            return reinterpret_cast<LONG_PTR>(property->Value);
        }
    }
    return 0;
}

bool AnswerUnseen(Thread *thread)
{
    Window *next = NextUnanswered(thread);
    if (next == nullptr) return false;
    if (next->Kind == Kind::Dialog && next->Dialog->IsBox && next->Answer == Unseen::Untouched) {
        AnswerBox(next);
    } else if (next->Kind == Kind::Dialog) {
        AnswerDialog(next);
    } else {
        // A window other than a dialog is asked to close once; if it stays, its thread waits for other
        // threads.
        next->Answer = Unseen::Forced;
        PostInput(next->Handle, MakeInput(InputKind::Close));
    }
    return true;
}

} // namespace varkui
