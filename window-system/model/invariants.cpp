#include "window-system/model/invariants.h"

#include "window-system/model/handles.h"
#include "window-system/model/model.h"
#include "window-system/model/queue.h"
#include "window-system/model/rows.h"
#include "window-system/model/texts.h"
#include "window-system/model/threads.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

#include <cassert>
#include <cstring>

namespace varkui {

#ifndef NDEBUG

namespace {

void CheckSiblings(Window *parent)
{
    Window *previous = nullptr;
    for (Window *each = FirstOf(parent); each != nullptr; each = each->Next) {
        assert(each->Parent == parent);
        assert(each->Previous == previous);
        assert(Find(each->Handle) == each);
        previous = each;
    }
    assert(LastOf(parent) == previous);
}

void CheckSelection(LONG selected, LONG count)
{
    assert(selected >= -1);
    assert(selected < count);
}

void CheckEdit(const Window *window, const EditState &edit)
{
    const auto length = static_cast<LONG>(strlen(TextOf(window)));
    assert(edit.Anchor >= 0);
    assert(edit.Anchor <= length);
    assert(edit.Caret >= 0);
    assert(edit.Caret <= length);
}

void CheckState(const Window *window)
{
    const bool stateless = window->Kind == Kind::Plain || window->Kind == Kind::Static;
    assert((window->State == nullptr) == stateless);
    assert(window->Kind == window->Class->Kind);
    if (window->Kind == Kind::Edit) CheckEdit(window, *window->Edit);
    if (window->Kind == Kind::ComboBox) CheckEdit(window, window->Combo->Edit);
    if (window->Kind == Kind::ComboBox) CheckSelection(window->Combo->Selected, window->Combo->Rows.Count);
    if (window->Kind == Kind::ListBox) CheckSelection(window->List->Selected, window->List->Rows.Count);
    if (window->Kind == Kind::TabControl) CheckSelection(window->Tabs->Selected, window->Tabs->Count);
}

void CheckThread(const Thread *thread)
{
    int windows = 0;
    unsigned next = 1;
    for (const Window *each = NextInTable(next); each != nullptr; each = NextInTable(next)) {
        if (each->Thread == thread) ++windows;
    }
    assert(windows == thread->WindowCount);
    const Window *focus = Find(thread->Focus);
    assert(thread->Focus == nullptr || (focus != nullptr && focus->Thread == thread));
    const Window *active = Find(thread->Active);
    assert(thread->Active == nullptr || (active != nullptr && active->Thread == thread));
    assert(active == nullptr || active->Parent == nullptr);
    for (const ModalLoop *loop = thread->Modal; loop != nullptr; loop = loop->Outer) {
        for (const ModalLoop *outer = loop->Outer; outer != nullptr; outer = outer->Outer) {
            assert(loop->Dialog != outer->Dialog);
        }
    }
    int posted = 0;
    for (const Posted *each = thread->FirstPosted; each != nullptr; each = each->Next) {
        ++posted;
    }
    assert(posted == thread->PostedCount);
}

} // namespace

void CheckModel()
{
    CheckSiblings(nullptr);
    unsigned next = 1;
    for (Window *window = NextInTable(next); window != nullptr; window = NextInTable(next)) {
        assert(Find(window->Handle) == window);
        CheckSiblings(window);
        assert(DepthOf(window) < deepestNesting);
        assert(window->Owner == nullptr || window->Owner->Parent == nullptr);
        assert(window->Owner == nullptr || window->Parent == nullptr);
        assert(window->Owner == nullptr || !IsOwnedBy(window->Owner, window));
        CheckState(window);
    }
    for (const Thread *thread = model.Threads; thread != nullptr; thread = thread->Next) {
        CheckThread(thread);
    }
}

#else

void CheckModel() {}

#endif

void Locked::CheckModelIfAsked()
{
#ifndef NDEBUG
    CheckModel();
#endif
}

} // namespace varkui
