// How windows stand in and behind each other.
#include "window-system/memory.h"
#include "window-system/model.h"

namespace varkui {

namespace {

// How deep windows lie inside `window`; the tree is never deeper than deepestNesting, so this ends soon.
int HeightOf(const Window *window)
{
    int height = 0;
    for (const Window *child = window->FirstChild; child != nullptr; child = child->Next) {
        const int below = HeightOf(child) + 1;
        if (below > height) height = below;
    }
    return height;
}

} // namespace

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

using namespace varkui;

HWND GetParent(HWND window)
{
    const Locked locked;
    const Window *found = Find(window);
    if (found == nullptr) return nullptr;
    const Window *parent = found->Parent != nullptr ? found->Parent : found->Owner;
    return parent != nullptr ? parent->Handle : nullptr;
}

HWND SetParent(HWND child, HWND parent)
{
    HWND before = nullptr;
    HWND outermost = nullptr; // is to be active in the place of `child`
    HWND focus = nullptr;
    {
        const Locked locked(mutates);
        Window *moved = Find(child);
        Window *target = Find(parent);
        if (moved == nullptr || moved->Destroying || (parent != nullptr && target == nullptr)) return nullptr;
        before = moved->Parent != nullptr ? moved->Parent->Handle : nullptr;
        if (target == moved->Parent) return before;
        if (target != nullptr) {
            if (target == moved || target->Destroying || LiesInside(target, moved)) return nullptr;
            if (DepthOf(target) + 1 + HeightOf(moved) >= deepestNesting) return nullptr;
            // A window inside another is neither owner, nor owned, nor active.
            for (Window *each = model.FirstTop; each != nullptr; each = each->Next) {
                if (each->Owner == moved) each->Owner = nullptr;
            }
            moved->Owner = nullptr;
            if (moved->Thread->Active == child) {
                moved->Thread->Active = nullptr;
                if (IsWindowOfCaller(moved)) outermost = Outermost(target)->Handle;
                focus = moved->Thread->Focus;
            }
        }
        Unlink(moved);
        LinkBehind(moved, target, nullptr);
        Note(moved, changedAll | changedParent);
    }
    if (outermost != nullptr && Activate(outermost, false)) MoveFocus(focus);
    return before;
}

HWND GetWindow(HWND window, UINT relation)
{
    const Locked locked;
    const Window *found = Find(window);
    if (found == nullptr) return nullptr;
    const Window *other = nullptr;
    switch (relation) {
    case GW_HWNDFIRST: other = FirstOf(found->Parent); break;
    case GW_HWNDLAST: other = LastOf(found->Parent); break;
    case GW_HWNDNEXT: other = found->Next; break;
    case GW_HWNDPREV: other = found->Previous; break;
    case GW_OWNER: other = found->Owner; break;
    case GW_CHILD: other = found->FirstChild; break;
    default: break;
    }
    return other != nullptr ? other->Handle : nullptr;
}

BOOL IsChild(HWND parent, HWND window)
{
    const Locked locked;
    const Window *outer = Find(parent);
    const Window *inner = Find(window);
    return outer != nullptr && inner != nullptr && LiesInside(inner, outer) ? TRUE : FALSE;
}

BOOL EnumChildWindows(HWND parent, WNDENUMPROC visit, LPARAM lParam)
{
    if (visit == nullptr) return FALSE;
    HWND *inside = nullptr;
    int count = 0;
    {
        const Locked locked;
        const Window *outer = Find(parent);
        if (outer == nullptr) return FALSE;
        inside = static_cast<HWND *>(Allocate(sizeof(HWND) * PlacesUsed()));
        if (inside == nullptr) return FALSE;
        const Window *each = outer->FirstChild;
        while (each != nullptr) {
            inside[count++] = each->Handle;
            if (each->FirstChild != nullptr) {
                each = each->FirstChild;
                continue;
            }
            while (each != outer && each->Next == nullptr) {
                each = each->Parent;
            }
            each = each == outer ? nullptr : each->Next;
        }
    }
    BOOL goOn = TRUE;
    for (int i = 0; i < count && goOn != FALSE; ++i) {
        if (IsWindow(inside[i]) != FALSE) goOn = visit(inside[i], lParam);
    }
    Release(static_cast<void *>(inside));
    return goOn;
}
