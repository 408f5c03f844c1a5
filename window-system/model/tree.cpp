#include "window-system/model/tree.h"

#include "window-system/model/handles.h"
#include "window-system/model/model.h"
#include "window-system/model/window.h"

namespace varkui {

int HeightOf(const Window *window)
{
    int height = 0;
    for (const Window *child = window->FirstChild; child != nullptr; child = child->Next) {
        const int below = HeightOf(child) + 1;
        if (below > height) height = below;
    }
    return height;
}

Window *&FirstOf(Window *parent) { return parent != nullptr ? parent->FirstChild : model.FirstTop; }

Window *&LastOf(Window *parent) { return parent != nullptr ? parent->LastChild : model.LastTop; }

void Unlink(Window *window)
{
    Window *&first = FirstOf(window->Parent);
    Window *&last = LastOf(window->Parent);
    (window->Previous != nullptr ? window->Previous->Next : first) = window->Next;
    (window->Next != nullptr ? window->Next->Previous : last) = window->Previous;
    window->Previous = nullptr;
    window->Next = nullptr;
}

void LinkBehind(Window *window, Window *parent, Window *after)
{
    window->Parent = parent;
    window->Previous = after;
    window->Next = after != nullptr ? after->Next : FirstOf(parent);
    (window->Previous != nullptr ? window->Previous->Next : FirstOf(parent)) = window;
    (window->Next != nullptr ? window->Next->Previous : LastOf(parent)) = window;
}

void Raise(Window *window)
{
    Unlink(window);
    LinkBehind(window, window->Parent, nullptr);
    Note(window, changedState);
}

int DepthOf(const Window *window)
{
    int depth = 0;
    for (const Window *each = window->Parent; each != nullptr; each = each->Parent) {
        ++depth;
    }
    return depth;
}

int OwnerDepthOf(const Window *window)
{
    int depth = 0;
    for (const Window *each = window->Owner; each != nullptr; each = each->Owner) {
        ++depth;
    }
    return depth;
}

int OwnedDepthOf(const Window *window, int depth)
{
    int deepest = 0;
    if (depth > deepestNesting) return deepest;
    for (const Window *each = model.FirstTop; each != nullptr; each = each->Next) {
        if (each->Owner != window) continue;
        const int below = OwnedDepthOf(each, depth + 1) + 1;
        if (below > deepest) deepest = below;
    }
    return deepest;
}

bool IsOwnedBy(const Window *window, const Window *owner)
{
    for (const Window *each = window; each != nullptr; each = each->Owner) {
        if (each == owner) return true;
    }
    return false;
}

Window *Outermost(Window *window)
{
    while (window->Parent != nullptr) {
        window = window->Parent;
    }
    return window;
}

bool LiesInside(const Window *window, const Window *parent)
{
    for (const Window *each = window->Parent; each != nullptr; each = each->Parent) {
        if (each == parent) return true;
    }
    return false;
}

bool IsShown(const Window *window)
{
    for (; window != nullptr; window = window->Parent) {
        if ((window->Style & WS_VISIBLE) == 0) return false;
    }
    return true;
}

bool AreEnabled(const Window *window)
{
    for (; window != nullptr; window = window->Parent) {
        if ((window->Style & WS_DISABLED) != 0) return false;
    }
    return true;
}

Window *FindControl(Window *parent, LONG_PTR id)
{
    for (Window *child = parent->FirstChild; child != nullptr; child = child->Next) {
        if (child->Kind != Kind::Dialog || (child->Style & WS_VISIBLE) == 0) continue;
        Window *found = FindControl(child, id);
        if (found != nullptr) return found;
    }
    for (Window *child = parent->FirstChild; child != nullptr; child = child->Next) {
        if (child->Id == id) return child;
    }
    for (Window *child = parent->FirstChild; child != nullptr; child = child->Next) {
        if (child->Kind == Kind::Dialog && (child->Style & WS_VISIBLE) != 0) continue;
        Window *found = FindControl(child, id);
        if (found != nullptr) return found;
    }
    return nullptr;
}

Window *OwnerOf(HWND handle)
{
    Window *window = Find(handle);
    return window != nullptr ? Outermost(window) : nullptr;
}

} // namespace varkui
