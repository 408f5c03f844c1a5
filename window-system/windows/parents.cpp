// The calls on parents, owners and siblings.
#include "window-system/model/handles.h"
#include "window-system/model/memory.h"
#include "window-system/model/model.h"
#include "window-system/model/threads.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"
#include "window-system/windows/focus.h"

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

BOOL IsWindow(HWND window)
{
    const Locked locked;
    return Find(window) != nullptr ? TRUE : FALSE;
}
