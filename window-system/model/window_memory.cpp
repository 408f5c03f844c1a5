#include "window-system/model/window_memory.h"

#include "window-system/model/classes.h"
#include "window-system/model/handles.h"
#include "window-system/model/memory.h"
#include "window-system/model/model.h"
#include "window-system/model/queue.h"
#include "window-system/model/states.h"
#include "window-system/model/texts.h"
#include "window-system/model/threads.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

#include <cassert>
#include <cstring>

namespace varkui {

namespace {

void ReleaseWindow(Window *window)
{
    FreeState(window);
    Release(window->Text);
    for (Property *property = window->Properties; property != nullptr;) {
        Property *next = property->Next;
        Release(property->Name);
        Release(property);
        property = next;
    }
    Release(window->Extra);
    Release(window);
}

} // namespace

Window *MakeWindow(WindowClass *windowClass, Thread *thread, const Creation &creation)
{
    auto *window = static_cast<Window *>(Allocate(sizeof(Window)));
    if (window == nullptr) return nullptr;
    window->Class = windowClass;
    window->Kind = windowClass->Kind;
    window->Procedure = windowClass->Procedure;
    window->Thread = thread;
    window->Style = creation.Style & ~WS_VISIBLE;
    window->ExStyle = creation.ExStyle;
    window->Id = reinterpret_cast<LONG_PTR>(creation.Menu);
    window->Instance = creation.Instance;
    window->Place = creation.Place;
    window->ExtraBytes = windowClass->ExtraBytes;
    window->Extra = static_cast<unsigned char *>(Allocate(static_cast<size_t>(window->ExtraBytes)));
    const char *title = creation.Title != nullptr ? creation.Title : "";
    const bool complete =
        window->Extra != nullptr && ReplaceText(window, title, strlen(title)) && MakeState(window);
    window->Handle = complete ? TakeHandle(window) : nullptr;
    if (window->Handle == nullptr) {
        ReleaseWindow(window);
        return nullptr;
    }
    window->Changed = changedAll;
    return window;
}

void TakeOut(Window *window)
{
    assert(window->FirstChild == nullptr);
    for (Window *each = model.FirstTop; each != nullptr; each = each->Next) {
        if (each->Owner == window) each->Owner = nullptr;
    }
    Thread *thread = window->Thread;
    if (thread->Focus == window->Handle) thread->Focus = nullptr;
    if (thread->Active == window->Handle) thread->Active = nullptr;
    DropMessages(window);
    Unlink(window);
    --thread->WindowCount;
    --window->Class->Windows;
    FreeHandle(window->Handle);
    ReleaseWindow(window);
}

void ForgetWindows()
{
    // The parent's windows stay allocated, since another thread may have been changing them at the fork.
    unsigned next = 1;
    for (const Window *each = NextInTable(next); each != nullptr; each = NextInTable(next)) {
        FreeHandle(each->Handle);
    }
    for (WindowClass *each = model.Classes; each != nullptr; each = each->Next) {
        each->Windows = 0;
    }
    model.FirstTop = nullptr;
    model.LastTop = nullptr;
}

} // namespace varkui
