#include "window-system/windows/life.h"

#include "window-system/model/classes.h"
#include "window-system/model/handles.h"
#include "window-system/model/input.h"
#include "window-system/model/model.h"
#include "window-system/model/queue.h"
#include "window-system/model/threads.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"
#include "window-system/model/window_memory.h"
#include "window-system/windows/focus.h"
#include "window-system/windows/places.h"
#include "window-system/windows/sending.h"

namespace varkui {

namespace {

// Makes every check that can refuse a new window before it changes the model.
HWND Create(LPCSTR className, Creation &creation, HWND parentHandle)
{
    Locked locked(mutates);
    WindowClass *windowClass = FindClass(className);
    Thread *thread = Self();
    if (windowClass == nullptr || thread == nullptr) return nullptr;
    Window *parent = Find(parentHandle);
    if ((creation.Style & WS_CHILD) != 0) {
        if (parent == nullptr || parent->Destroying) return nullptr;
        if (DepthOf(parent) + 1 >= deepestNesting) return nullptr;
        creation.Parent = parent;
    } else if (parent != nullptr) {
        creation.Owner = Outermost(parent);
        if (creation.Owner->Destroying || OwnerDepthOf(creation.Owner) + 1 >= deepestNesting) return nullptr;
        creation.Menu = nullptr;
    }
    Window *window = MakeWindow(windowClass, thread, creation);
    if (window == nullptr) return nullptr;
    window->Owner = creation.Owner;
    LinkBehind(window, creation.Parent, creation.Parent != nullptr ? creation.Parent->LastChild : nullptr);
    ++thread->WindowCount;
    ++windowClass->Windows;
    return window->Handle;
}

// ---- Destruction ----

// Frees another thread's window from a parent that goes; its own thread destroys it later.
void LetGo(Window *window)
{
    Unlink(window);
    LinkBehind(window, nullptr, model.LastTop);
    window->Style &= ~WS_VISIBLE;
    Note(window, changedState | changedParent);
    DestroyElsewhere(window);
}

void TellDestruction(HWND handle)
{
    {
        const Locked locked;
        Window *window = Find(handle);
        if (window == nullptr) return;
        window->Destroying = true;
        window->DestroyTold = true;
    }
    SendMessageA(handle, WM_DESTROY, 0, 0);
    for (;;) {
        HWND child = nullptr;
        {
            const Locked locked(mutates);
            Window *window = Find(handle);
            if (window == nullptr) return;
            Window *each = window->FirstChild;
            while (each != nullptr && (each->DestroyTold || each->Thread != window->Thread)) {
                Window *next = each->Next;
                if (each->Thread != window->Thread) {
                    LetGo(each);
                }
                each = next;
            }
            if (each == nullptr) return;
            child = each->Handle;
        }
        TellDestruction(child);
    }
}

void TakeApart(HWND handle)
{
    for (;;) {
        HWND child = nullptr;
        {
            const Locked locked;
            Window *window = Find(handle);
            if (window == nullptr) return;
            if (window->FirstChild == nullptr) break;
            child = window->FirstChild->Handle;
        }
        TakeApart(child);
    }
    SendMessageA(handle, WM_NCDESTROY, 0, 0);
    const Locked locked(mutates);
    Window *window = Find(handle);
    if (window != nullptr) TakeOut(window);
}

void DestroyOwned(HWND handle)
{
    for (;;) {
        HWND owned = nullptr;
        {
            const Locked locked(mutates);
            Window *window = Find(handle);
            if (window == nullptr || window->Parent != nullptr) return;
            for (Window *each = model.FirstTop; each != nullptr && owned == nullptr; each = each->Next) {
                if (each->Owner != window || each->Destroying) continue;
                if (each->Thread == window->Thread) {
                    owned = each->Handle;
                } else {
                    each->Owner = nullptr;
                    DestroyElsewhere(each);
                }
            }
        }
        if (owned == nullptr) return;
        DestroyWindow(owned);
    }
}

// Removes the windows of an ending thread without a message.
void TakeAwayWindows(Thread *thread)
{
    // Other threads' windows inside are freed first; then each window is removed once it is empty.
    unsigned next = 1;
    for (Window *window = NextInTable(next); window != nullptr; window = NextInTable(next)) {
        if (window->Parent == nullptr || window->Parent->Thread != thread) continue;
        if (window->Thread != thread) LetGo(window);
    }
    for (int depth = 0; depth <= deepestNesting && thread->WindowCount > 0; ++depth) {
        next = 1;
        for (Window *window = NextInTable(next); window != nullptr; window = NextInTable(next)) {
            if (window->Thread == thread && window->FirstChild == nullptr) TakeOut(window);
        }
    }
}

} // namespace

void DestroyElsewhere(Window *window) { DoElsewhere(window, DestroyWindow); }

void TellParents(HWND handle, UINT event)
{
    HWND around[deepestNesting];
    int count = 0;
    LONG_PTR id = 0;
    {
        const Locked locked;
        const Window *window = Find(handle);
        if (window != nullptr) id = window->Id;
        for (; window != nullptr && window->Parent != nullptr; window = window->Parent) {
            if ((window->ExStyle & WS_EX_NOPARENTNOTIFY) != 0) break;
            around[count++] = window->Parent->Handle;
        }
    }
    const bool isPress = event == WM_LBUTTONDOWN;
    for (int i = 0; i < count; ++i) {
        Tell(around[i], WM_PARENTNOTIFY, isPress ? event : MAKEWPARAM(event, id),
             isPress ? 0 : reinterpret_cast<LPARAM>(handle));
    }
}

void EndThread(Thread *thread)
{
    while (thread->FirstSent != nullptr) {
        Sent *sent = thread->FirstSent;
        thread->FirstSent = sent->Next;
        Finish(sent, 0);
    }
    while (thread->Handling != nullptr) {
        Sent *sent = thread->Handling;
        thread->Handling = sent->Next;
        Finish(sent, 0);
    }
    TakeAwayWindows(thread);
    while (thread->FirstPosted != nullptr) {
        Posted *posted = thread->FirstPosted;
        thread->FirstPosted = posted->Next;
        FreePosted(posted);
    }
    FreeInput(thread->Current);
    Thread **link = &model.Threads;
    while (*link != thread) {
        link = &(*link)->Next;
    }
    *link = thread->Next;
    frontEnd.ThreadEnds(thread);
}

void ForgetEverything()
{
    ForgetWindows();
    frontEnd.Forget();
}

} // namespace varkui

using namespace varkui;

HWND CreateWindowExA(DWORD exStyle, LPCSTR className, LPCSTR title, DWORD style, int x, int y, int width,
                     int height, HWND parent, HMENU menu, HINSTANCE instance, LPVOID parameter)
{
    constexpr int defaultWidth = 640;
    constexpr int defaultHeight = 480;
    if (x == CW_USEDEFAULT || y == CW_USEDEFAULT) x = y = 0;
    if (width == CW_USEDEFAULT || height == CW_USEDEFAULT) {
        width = defaultWidth;
        height = defaultHeight;
    }
    Creation creation = {style,   exStyle, title, PlaceAt(x, y, width, height),
                         nullptr, nullptr, menu,  instance};
    HWND window = Create(className, creation, parent);
    if (window == nullptr) return nullptr;

    const MDICREATESTRUCTA inside = {
        className, title, instance, x, y, width, height, style, reinterpret_cast<LPARAM>(parameter)};
    const bool isInside = (exStyle & WS_EX_MDICHILD) != 0;
    CREATESTRUCTA told = {isInside ? const_cast<MDICREATESTRUCTA *>(&inside) : parameter,
                          instance,
                          creation.Menu,
                          parent,
                          height,
                          width,
                          y,
                          x,
                          static_cast<LONG>(style),
                          title,
                          className,
                          exStyle};
    if (SendMessageA(window, WM_NCCREATE, 0, reinterpret_cast<LPARAM>(&told)) == 0) {
        const Locked locked(mutates);
        Window *made = Find(window);
        // Children made before the refusal lose their parent.
        while (made != nullptr && made->FirstChild != nullptr) {
            Window *child = made->FirstChild;
            Unlink(child);
            LinkBehind(child, nullptr, model.LastTop);
            Note(child, changedParent);
        }
        if (made != nullptr) TakeOut(made);
        return nullptr;
    }
    if (SendMessageA(window, WM_CREATE, 0, reinterpret_cast<LPARAM>(&told)) == -1) {
        DestroyWindow(window);
        return nullptr;
    }
    if ((style & WS_CHILD) != 0) TellParents(window, WM_CREATE);
    if ((style & WS_VISIBLE) != 0) ShowWindow(window, SW_SHOW);
    return IsWindow(window) != 0 ? window : nullptr;
}

BOOL DestroyWindow(HWND window)
{
    bool hadFocus = false;
    bool outermost = false;
    {
        const Locked locked(mutates);
        Window *found = Find(window);
        if (!IsWindowOfCaller(found) || found->Destroying) return FALSE;
        found->Destroying = true;
        if (found->Kind == Kind::Dialog) found->Dialog->Ended = true;
        outermost = found->Parent == nullptr;
        const Window *focus = Find(found->Thread->Focus);
        hadFocus = focus != nullptr && (focus == found || LiesInside(focus, found));
    }
    TellParents(window, WM_DESTROY);
    SetShown(window, false);
    if (outermost) {
        ActivateAnother(window);
    } else if (hadFocus) {
        MoveFocus(GetParent(window));
    }
    DestroyOwned(window);
    TellDestruction(window);
    TakeApart(window);
    if (outermost) {
        frontEnd.Idle();
        frontEnd.Show();
    }
    return TRUE;
}
