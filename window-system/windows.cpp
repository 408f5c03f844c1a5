// Handles, classes, the tree of windows, and what a window carries.
#include <cassert>
#include <cstring>

#include "window-system/collation.h"
#include "window-system/front_end.h"
#include "window-system/memory.h"
#include "window-system/model.h"

namespace varkui {

Model model = {PTHREAD_MUTEX_INITIALIZER, nullptr, nullptr, nullptr, nullptr, 8, 20};

namespace {

// ---- Handles ----

// A handle is a place in the table and how often the place has been used, so that a dead handle is told from
// the window that lives in its place now. It fits 31 bits, since hosts keep handles in 32-bit integers, and
// lies above 16 bits, where callers put numbers that are no handles.
constexpr unsigned tableSize = 1u << handleBits;
constexpr unsigned lastUse = 0xFFFF;

struct Place {
    Window *Occupant;
    unsigned Use;      // 1 to lastUse; 2 bits of it at least are set in any handle
    unsigned NextFree; // 0 ends the list
};

Place table[tableSize]; // place 0 stays empty
unsigned usedPlaces = 1;
unsigned firstFree;
unsigned lastFree;
unsigned freePlaces;

HWND HandleOf(unsigned place)
{
    const uintptr_t value = (static_cast<uintptr_t>(table[place].Use) << handleBits) | place;
    return AsPointer<HWND>(value);
}

// Freed places are taken again in the order in which they were freed, and only once there are many: so a dead
// handle stays dead long, and the table short.
constexpr unsigned manyFree = 512;

unsigned TakePlace()
{
    unsigned place = 0;
    if (firstFree != 0 && (freePlaces > manyFree || usedPlaces == tableSize)) {
        place = firstFree;
        firstFree = table[place].NextFree;
        if (firstFree == 0) lastFree = 0;
        --freePlaces;
    } else if (usedPlaces < tableSize) {
        place = usedPlaces++;
    } else {
        return 0;
    }
    table[place].Use = table[place].Use >= lastUse ? 2 : table[place].Use < 2 ? 2 : table[place].Use + 1;
    table[place].NextFree = 0;
    return place;
}

void FreePlace(unsigned place)
{
    table[place].Occupant = nullptr;
    table[place].NextFree = 0;
    ++freePlaces;
    if (lastFree != 0) {
        table[lastFree].NextFree = place;
    } else {
        firstFree = place;
    }
    lastFree = place;
}

// ---- Classes ----

struct SystemClass {
    const char *Name;
    WNDPROC Procedure;
    int ExtraBytes;
    enum Kind Kind;
};

constexpr WORD dialogAtom = 0x8002;

const SystemClass systemClasses[] = {
    {"#32770", DefDlgProcA, DLGWINDOWEXTRA, Kind::Dialog},
    {"Button", ButtonProcedure, 0, Kind::Button},
    {"Edit", EditProcedure, 0, Kind::Edit},
    {"Static", StaticProcedure, 0, Kind::Static},
    {"ListBox", ListBoxProcedure, 0, Kind::ListBox},
    {"ComboBox", ComboBoxProcedure, 0, Kind::ComboBox},
    {WC_TABCONTROLA, TabControlProcedure, 0, Kind::TabControl},
};

ATOM nextAtom = 0xC000;

// A class of the host's; null when there is no memory.
WindowClass *AddClass(const WNDCLASSA &told)
{
    auto *made = static_cast<WindowClass *>(Allocate(sizeof(WindowClass)));
    char *name = made != nullptr ? CopyText(told.lpszClassName, strlen(told.lpszClassName)) : nullptr;
    if (name == nullptr || nextAtom == 0xFFFF) {
        Release(name);
        Release(made);
        return nullptr;
    }
    made->Name = name;
    made->OwnName = name;
    made->Procedure = told.lpfnWndProc;
    made->ExtraBytes = told.cbWndExtra;
    made->Kind = Kind::Plain;
    made->Told = told;
    made->Atom = nextAtom++;
    made->Next = model.Classes;
    model.Classes = made;
    return made;
}

void AddSystemClasses()
{
    // These need no memory, so that windows can always be tried.
    static WindowClass storage[sizeof systemClasses / sizeof systemClasses[0]];
    WindowClass *made = storage;
    for (const SystemClass &each : systemClasses) {
        made->Name = each.Name;
        made->Procedure = each.Procedure;
        made->ExtraBytes = each.ExtraBytes;
        made->Kind = each.Kind;
        made->OfSystem = true;
        made->Told.lpfnWndProc = each.Procedure;
        made->Told.cbWndExtra = each.ExtraBytes;
        made->Atom = nextAtom++;
        made->Next = model.Classes;
        model.Classes = made++;
    }
}

// A name is a text or, as a number below 65536, an atom.
WindowClass *FindClass(LPCSTR name)
{
    const auto number = reinterpret_cast<uintptr_t>(name);
    if (number == dialogAtom) name = "#32770";
    for (WindowClass *each = model.Classes; each != nullptr && name != nullptr; each = each->Next) {
        if (number <= 0xFFFF && number != dialogAtom ? each->Atom == number
                                                     : EqualWithoutCase(each->Name, name)) {
            return each;
        }
    }
    return nullptr;
}

// ---- The tree ----

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

// Puts a window that stands nowhere among the children of `parent`, behind `after` (null: first).
void LinkBehind(Window *window, Window *parent, Window *after)
{
    window->Parent = parent;
    window->Previous = after;
    window->Next = after != nullptr ? after->Next : FirstOf(parent);
    (window->Previous != nullptr ? window->Previous->Next : FirstOf(parent)) = window;
    (window->Next != nullptr ? window->Next->Previous : LastOf(parent)) = window;
}

int DepthOf(const Window *window)
{
    int depth = 0;
    for (const Window *each = window->Parent; each != nullptr; each = each->Parent) {
        ++depth;
    }
    return depth;
}

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

int OwnerDepthOf(const Window *window)
{
    int depth = 0;
    for (const Window *each = window->Owner; each != nullptr; each = each->Owner) {
        ++depth;
    }
    return depth;
}

// Longest chain of windows that are owned by each other, below `window`; `depth` bounds the recursion.
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

constexpr LONG farthest = 1000000; // places stay summable over all depths

LONG Clamp(LONG value, LONG low, LONG high) { return value < low ? low : value > high ? high : value; }

RECT PlaceAt(LONG x, LONG y, LONG width, LONG height)
{
    x = Clamp(x, -farthest, farthest);
    y = Clamp(y, -farthest, farthest);
    return RECT{x, y, x + Clamp(width, 0, farthest), y + Clamp(height, 0, farthest)};
}

POINT OriginOf(const Window *window)
{
    POINT origin = {0, 0};
    for (; window != nullptr; window = window->Parent) {
        origin.x += window->Place.left;
        origin.y += window->Place.top;
    }
    return origin;
}

// ---- Memory of a window ----

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

// Takes a window that has no children any more out of everything.
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
    FreePlace(PlaceOf(window->Handle));
    ReleaseWindow(window);
}

// What CreateWindowExA was told, once the parts that may be handles are looked up.
struct Creation {
    DWORD Style;
    DWORD ExStyle;
    LPCSTR Title;
    RECT Place;
    Window *Parent;
    Window *Owner;
    HMENU Menu;
    HINSTANCE Instance;
};

// A window in all its memory, but standing nowhere yet; null when something is missing.
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
    const unsigned place = complete ? TakePlace() : 0;
    if (place == 0) {
        ReleaseWindow(window);
        return nullptr;
    }
    table[place].Occupant = window;
    window->Handle = HandleOf(place);
    window->Changed = changedAll;
    return window;
}

// Everything that can refuse a new window is asked here, before anything is changed.
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
                    // Another thread's window is let go: its thread destroys it when it next looks.
                    Unlink(each);
                    LinkBehind(each, nullptr, model.LastTop);
                    each->Style &= ~WS_VISIBLE;
                    Note(each, changedState);
                    DestroyElsewhere(each);
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

bool IsWindowOfCaller(const Window *window) { return window != nullptr && window->Thread == Self(); }

// The property of a name; `link` is what leads to it.
Property **FindProperty(Window *window, LPCSTR name)
{
    Property **link = &window->Properties;
    while (*link != nullptr && !EqualWithoutCase((*link)->Name, name)) {
        link = &(*link)->Next;
    }
    return link;
}

// Names may also be atoms, numbers below 65536; those are refused, since nobody registers any.
bool IsName(LPCSTR name) { return reinterpret_cast<uintptr_t>(name) > 0xFFFF && *name != 0; }

} // namespace

Window *Find(HWND handle)
{
    const auto value = reinterpret_cast<uintptr_t>(handle);
    const unsigned place = static_cast<unsigned>(value & (tableSize - 1));
    if (place == 0 || table[place].Occupant == nullptr || HandleOf(place) != handle) return nullptr;
    return table[place].Occupant;
}

unsigned PlaceOf(HWND handle)
{
    return static_cast<unsigned>(reinterpret_cast<uintptr_t>(handle) & (tableSize - 1));
}

Window *NextInTable(unsigned &place)
{
    while (place < usedPlaces) {
        Window *window = table[place++].Occupant;
        if (window != nullptr) return window;
    }
    return nullptr;
}

void ForgetWindows()
{
    // What the parent had stays allocated: it may have been in any state when the process was forked.
    for (unsigned i = 1; i < usedPlaces; ++i) {
        if (table[i].Occupant != nullptr) FreePlace(i);
    }
    for (WindowClass *each = model.Classes; each != nullptr; each = each->Next) {
        each->Windows = 0;
    }
    model.FirstTop = nullptr;
    model.LastTop = nullptr;
}

void TakeAwayWindows(Thread *thread)
{
    // Foreign windows inside go free first, then each goes once it is empty.
    for (unsigned i = 1; i < usedPlaces; ++i) {
        Window *window = table[i].Occupant;
        if (window == nullptr || window->Parent == nullptr || window->Parent->Thread != thread) continue;
        if (window->Thread == thread) continue;
        Unlink(window);
        LinkBehind(window, nullptr, model.LastTop);
        window->Style &= ~WS_VISIBLE;
        Note(window, changedState);
        DestroyElsewhere(window);
    }
    for (int depth = 0; depth <= deepestNesting && thread->WindowCount > 0; ++depth) {
        for (unsigned i = 1; i < usedPlaces; ++i) {
            Window *window = table[i].Occupant;
            if (window != nullptr && window->Thread == thread && window->FirstChild == nullptr)
                TakeOut(window);
        }
    }
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

void Note(Window *window, unsigned change) { window->Changed |= change; }

const char *TextOf(const Window *window) { return window->Text != nullptr ? window->Text : ""; }

bool ReplaceText(Window *window, const char *text, size_t length)
{
    char *copy = nullptr;
    if (length > 0) {
        copy = CopyText(text, length);
        if (copy == nullptr) return false;
    }
    Release(window->Text);
    window->Text = copy;
    Note(window, changedState);
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

void Lock()
{
    static pthread_once_t once = PTHREAD_ONCE_INIT;
    pthread_once(&once, [] { AddSystemClasses(); });
    pthread_mutex_lock(&model.Lock);
}

void Unlock() { pthread_mutex_unlock(&model.Lock); }

void Locked::CheckModelIfAsked()
{
#ifndef NDEBUG
    CheckModel();
#endif
}

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
    for (unsigned i = 1; i < usedPlaces; ++i) {
        if (table[i].Occupant != nullptr && table[i].Occupant->Thread == thread) ++windows;
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
    for (unsigned i = 1; i < usedPlaces; ++i) {
        Window *window = table[i].Occupant;
        if (window == nullptr) continue;
        assert(window->Handle == HandleOf(i));
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

void SetShown(HWND handle, bool shown)
{
    bool tellSize = false;
    RECT place = {};
    {
        const Locked locked(mutates);
        Window *window = Find(handle);
        if (window == nullptr || ((window->Style & WS_VISIBLE) != 0) == shown) return;
        window->Style = shown ? window->Style | WS_VISIBLE : window->Style & ~WS_VISIBLE;
        Note(window, changedState);
        tellSize = shown && !window->SizeTold;
        window->SizeTold = window->SizeTold || tellSize;
        place = window->Place;
    }
    Tell(handle, WM_SHOWWINDOW, shown ? TRUE : FALSE, 0);
    if (!tellSize) return;
    Tell(handle, WM_SIZE, SIZE_RESTORED, MAKELPARAM(place.right - place.left, place.bottom - place.top));
    Tell(handle, WM_MOVE, 0, MAKELPARAM(place.left, place.top));
}

} // namespace varkui

using namespace varkui;

// ---- Classes ----

ATOM RegisterClassA(const WNDCLASSA *windowClass)
{
    if (windowClass == nullptr || windowClass->lpfnWndProc == nullptr || !IsName(windowClass->lpszClassName))
        return 0;
    constexpr int mostExtraBytes = 4000;
    if (windowClass->cbWndExtra < 0 || windowClass->cbWndExtra > mostExtraBytes) return 0;
    if (strlen(windowClass->lpszClassName) > longestClassName) return 0;
    const Locked locked(mutates);
    if (FindClass(windowClass->lpszClassName) != nullptr) return 0;
    const WindowClass *made = AddClass(*windowClass);
    return made != nullptr ? made->Atom : static_cast<ATOM>(0);
}

BOOL UnregisterClassA(LPCSTR name, HINSTANCE /*instance*/)
{
    const Locked locked(mutates);
    WindowClass *gone = FindClass(name);
    if (gone == nullptr || gone->OfSystem || gone->Windows > 0) return FALSE;
    WindowClass **link = &model.Classes;
    while (*link != gone) {
        link = &(*link)->Next;
    }
    *link = gone->Next;
    Release(gone->OwnName);
    Release(gone);
    return TRUE;
}

BOOL GetClassInfoA(HINSTANCE /*instance*/, LPCSTR name, WNDCLASSA *windowClass)
{
    const Locked locked;
    const WindowClass *found = FindClass(name);
    if (found == nullptr || windowClass == nullptr) return FALSE;
    *windowClass = found->Told;
    windowClass->lpfnWndProc = found->Procedure;
    windowClass->cbWndExtra = found->ExtraBytes;
    windowClass->lpszMenuName = nullptr;
    windowClass->lpszClassName = name;
    return TRUE;
}

int GetClassNameA(HWND window, LPSTR name, int size)
{
    if (name == nullptr || size <= 0) return 0;
    *name = 0;
    const Locked locked;
    const Window *found = Find(window);
    if (found == nullptr) return 0;
    size_t length = strlen(found->Class->Name);
    if (length >= static_cast<size_t>(size)) length = static_cast<size_t>(size) - 1;
    memcpy(name, found->Class->Name, length);
    name[length] = 0;
    return static_cast<int>(length);
}

ULONG_PTR GetClassLongPtrA(HWND window, int index)
{
    const Locked locked;
    const Window *found = Find(window);
    if (found == nullptr) return 0;
    switch (index) {
    case GCLP_WNDPROC: return reinterpret_cast<ULONG_PTR>(found->Class->Procedure);
    case GCL_CBWNDEXTRA: return static_cast<ULONG_PTR>(found->Class->ExtraBytes);
    case GCL_STYLE: return found->Class->Told.style;
    default: return 0;
    }
}

ULONG_PTR SetClassLongPtrA(HWND window, int index, LONG_PTR value)
{
    const ULONG_PTR before = GetClassLongPtrA(window, index);
    const Locked locked(mutates);
    Window *found = Find(window);
    if (found == nullptr || found->Class->OfSystem) return 0;
    constexpr LONG_PTR mostExtraBytes = 4000;
    if (index == GCLP_WNDPROC && value != 0) {
        found->Class->Procedure = AsPointer<WNDPROC>(value);
    } else if (index == GCL_CBWNDEXTRA && value >= 0 && value <= mostExtraBytes) {
        found->Class->ExtraBytes = static_cast<int>(value);
    } else if (index == GCL_STYLE) {
        found->Class->Told.style = static_cast<UINT>(value);
    } else {
        return 0;
    }
    return before;
}

// ---- Life ----

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

    CREATESTRUCTA told = {
        parameter, instance,  creation.Menu, parent, height, width, y, x, static_cast<LONG>(style),
        title,     className, exStyle};
    if (SendMessageA(window, WM_NCCREATE, 0, reinterpret_cast<LPARAM>(&told)) == 0) {
        const Locked locked(mutates);
        Window *made = Find(window);
        // A procedure that made windows inside its own before refusing takes them along.
        while (made != nullptr && made->FirstChild != nullptr) {
            Window *child = made->FirstChild;
            Unlink(child);
            LinkBehind(child, nullptr, model.LastTop);
        }
        if (made != nullptr) TakeOut(made);
        return nullptr;
    }
    if (SendMessageA(window, WM_CREATE, 0, reinterpret_cast<LPARAM>(&told)) == -1) {
        DestroyWindow(window);
        return nullptr;
    }
    if ((style & WS_CHILD) != 0 && (exStyle & WS_EX_NOPARENTNOTIFY) == 0) {
        Tell(parent, WM_PARENTNOTIFY, MAKEWPARAM(WM_CREATE, reinterpret_cast<uintptr_t>(menu)),
             reinterpret_cast<LPARAM>(window));
    }
    if ((style & WS_VISIBLE) != 0) ShowWindow(window, SW_SHOW);
    return IsWindow(window) != 0 ? window : nullptr;
}

BOOL DestroyWindow(HWND window)
{
    HWND parent = nullptr;
    WPARAM notice = 0;
    bool hadFocus = false;
    bool outermost = false;
    {
        const Locked locked(mutates);
        Window *found = Find(window);
        if (!IsWindowOfCaller(found) || found->Destroying) return FALSE;
        found->Destroying = true;
        if (found->Kind == Kind::Dialog) found->Dialog->Ended = true;
        outermost = found->Parent == nullptr;
        if (!outermost && (found->ExStyle & WS_EX_NOPARENTNOTIFY) == 0) parent = found->Parent->Handle;
        notice = MAKEWPARAM(WM_DESTROY, found->Id);
        const Window *focus = Find(found->Thread->Focus);
        hadFocus = focus != nullptr && (focus == found || LiesInside(focus, found));
    }
    if (parent != nullptr) Tell(parent, WM_PARENTNOTIFY, notice, reinterpret_cast<LPARAM>(window));
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
        LetGoOfScriptIfIdle();
        ShowChanges();
    }
    return TRUE;
}

BOOL IsWindow(HWND window)
{
    const Locked locked;
    return Find(window) != nullptr ? TRUE : FALSE;
}

// ---- Tree ----

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
    const Locked locked(mutates);
    Window *moved = Find(child);
    Window *target = Find(parent);
    if (moved == nullptr || moved->Destroying || (parent != nullptr && target == nullptr)) return nullptr;
    HWND before = moved->Parent != nullptr ? moved->Parent->Handle : nullptr;
    if (target == moved->Parent) return before;
    if (target != nullptr) {
        if (target == moved || target->Destroying || LiesInside(target, moved)) return nullptr;
        if (DepthOf(target) + 1 + HeightOf(moved) >= deepestNesting) return nullptr;
        // A window inside another is neither owner, nor owned, nor active.
        for (Window *each = model.FirstTop; each != nullptr; each = each->Next) {
            if (each->Owner == moved) each->Owner = nullptr;
        }
        moved->Owner = nullptr;
        if (moved->Thread->Active == child) moved->Thread->Active = nullptr;
    }
    Unlink(moved);
    LinkBehind(moved, target, nullptr);
    Note(moved, changedAll);
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
        inside = static_cast<HWND *>(Allocate(sizeof(HWND) * usedPlaces));
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

// ---- State ----

BOOL ShowWindow(HWND window, int command)
{
    bool before = false;
    bool outermost = false;
    bool mine = false;
    bool hadFocus = false;
    HWND parent = nullptr;
    {
        const Locked locked;
        const Window *found = Find(window);
        if (found == nullptr) return FALSE;
        before = (found->Style & WS_VISIBLE) != 0;
        mine = IsWindowOfCaller(found);
        outermost = found->Parent == nullptr;
        if (!outermost) parent = found->Parent->Handle;
        const Window *focus = mine ? Find(found->Thread->Focus) : nullptr;
        hadFocus = focus != nullptr && (focus == found || LiesInside(focus, found));
    }
    if (command == SW_HIDE) {
        SetShown(window, false);
        if (mine && outermost) ActivateAnother(window);
        if (mine && !outermost && hadFocus) MoveFocus(parent);
        if (mine && outermost) LetGoOfScriptIfIdle();
    } else {
        SetShown(window, true);
        LogDialog(window);
        if (mine && outermost && command != SW_SHOWNA && command != SW_SHOWNOACTIVATE)
            Activate(window, false);
    }
    if (outermost) ShowChanges();
    return before ? TRUE : FALSE;
}

BOOL IsWindowVisible(HWND window)
{
    const Locked locked;
    const Window *found = Find(window);
    return found != nullptr && IsShown(found) ? TRUE : FALSE;
}

BOOL EnableWindow(HWND window, BOOL enable)
{
    bool before = false;
    {
        const Locked locked(mutates);
        Window *found = Find(window);
        if (found == nullptr) return FALSE;
        before = (found->Style & WS_DISABLED) != 0;
        if (before == (enable == FALSE)) return before ? TRUE : FALSE;
        found->Style = enable != FALSE ? found->Style & ~WS_DISABLED : found->Style | WS_DISABLED;
        Note(found, changedState);
    }
    Tell(window, WM_ENABLE, enable != FALSE ? TRUE : FALSE, 0);
    return before ? TRUE : FALSE;
}

BOOL IsWindowEnabled(HWND window)
{
    const Locked locked;
    const Window *found = Find(window);
    return found != nullptr && (found->Style & WS_DISABLED) == 0 ? TRUE : FALSE;
}

BOOL GetWindowRect(HWND window, RECT *rectangle)
{
    const Locked locked;
    const Window *found = Find(window);
    if (found == nullptr || rectangle == nullptr) return FALSE;
    const POINT origin = OriginOf(found);
    *rectangle = RECT{origin.x, origin.y, origin.x + found->Place.right - found->Place.left,
                      origin.y + found->Place.bottom - found->Place.top};
    return TRUE;
}

BOOL GetClientRect(HWND window, RECT *rectangle)
{
    const Locked locked;
    const Window *found = Find(window);
    if (found == nullptr || rectangle == nullptr) return FALSE;
    *rectangle = RECT{0, 0, found->Place.right - found->Place.left, found->Place.bottom - found->Place.top};
    return TRUE;
}

BOOL SetWindowPos(HWND window, HWND after, int x, int y, int width, int height, UINT flags)
{
    bool sized = false;
    bool moved = false;
    bool outermost = false;
    RECT place = {};
    {
        const Locked locked(mutates);
        Window *found = Find(window);
        if (found == nullptr) return FALSE;
        outermost = found->Parent == nullptr;
        if ((flags & SWP_NOZORDER) == 0) {
            Window *sibling = Find(after);
            const auto named = reinterpret_cast<LONG_PTR>(after); // HWND_TOP 0, -_BOTTOM 1, -_TOPMOST -1, -2
            const bool top = named == 0 || named == -1 || named == -2;
            if (sibling == nullptr && !top && named != 1) return FALSE;
            if (sibling != nullptr && sibling->Parent != found->Parent) return FALSE;
            if (sibling != found) {
                Unlink(found);
                LinkBehind(found, found->Parent,
                           sibling != nullptr ? sibling
                           : top              ? nullptr
                                              : LastOf(found->Parent));
                Note(found, changedState);
            }
        }
        const RECT old = found->Place;
        const bool keepsPlace = (flags & SWP_NOMOVE) != 0;
        const bool keepsSize = (flags & SWP_NOSIZE) != 0;
        place = PlaceAt(keepsPlace ? old.left : x, keepsPlace ? old.top : y,
                        keepsSize ? old.right - old.left : width, keepsSize ? old.bottom - old.top : height);
        moved = place.left != old.left || place.top != old.top;
        sized = place.right - place.left != old.right - old.left ||
                place.bottom - place.top != old.bottom - old.top;
        found->Place = place;
        if (sized) found->SizeTold = true;
        if (sized || moved) Note(found, changedState);
    }
    if (sized)
        Tell(window, WM_SIZE, SIZE_RESTORED, MAKELPARAM(place.right - place.left, place.bottom - place.top));
    if (moved) Tell(window, WM_MOVE, 0, MAKELPARAM(place.left, place.top));
    if ((flags & SWP_SHOWWINDOW) != 0) ShowWindow(window, SW_SHOWNA);
    if ((flags & SWP_HIDEWINDOW) != 0) ShowWindow(window, SW_HIDE);
    if (outermost && (flags & (SWP_NOACTIVATE | SWP_HIDEWINDOW)) == 0 && IsWindowVisible(window) != FALSE) {
        Activate(window, false);
    } else if (!outermost && (flags & (SWP_NOACTIVATE | SWP_NOZORDER)) == 0) {
        Tell(window, WM_CHILDACTIVATE, 0, 0);
    }
    return TRUE;
}

BOOL MoveWindow(HWND window, int x, int y, int width, int height, BOOL /*repaint*/)
{
    return SetWindowPos(window, nullptr, x, y, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

BOOL BringWindowToTop(HWND window)
{
    return SetWindowPos(window, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
}

int MapWindowPoints(HWND from, HWND to, POINT *points, UINT count)
{
    const Locked locked;
    const Window *source = Find(from);
    const Window *target = Find(to);
    if (points == nullptr || (from != nullptr && source == nullptr) || (to != nullptr && target == nullptr))
        return 0;
    const POINT a = OriginOf(source);
    const POINT b = OriginOf(target);
    for (UINT i = 0; i < count; ++i) {
        points[i].x = static_cast<LONG>(static_cast<int64_t>(points[i].x) + a.x - b.x);
        points[i].y = static_cast<LONG>(static_cast<int64_t>(points[i].y) + a.y - b.y);
    }
    return MAKELONG(a.x - b.x, a.y - b.y);
}

BOOL ScreenToClient(HWND window, POINT *point)
{
    if (IsWindow(window) == FALSE || point == nullptr) return FALSE;
    MapWindowPoints(nullptr, window, point, 1);
    return TRUE;
}

BOOL ClientToScreen(HWND window, POINT *point)
{
    if (IsWindow(window) == FALSE || point == nullptr) return FALSE;
    MapWindowPoints(window, nullptr, point, 1);
    return TRUE;
}

namespace {

// The values of a window that have negative indices; false for an index that names none.
bool ReadValue(const Window *window, int index, LONG_PTR &value)
{
    switch (index) {
    case GWL_STYLE: value = static_cast<LONG>(window->Style); return true;
    case GWL_EXSTYLE: value = static_cast<LONG>(window->ExStyle); return true;
    case GWLP_ID: value = window->Id; return true;
    case GWLP_USERDATA: value = window->UserData; return true;
    case GWLP_HINSTANCE: value = reinterpret_cast<LONG_PTR>(window->Instance); return true;
    case GWLP_WNDPROC: value = reinterpret_cast<LONG_PTR>(window->Procedure); return true;
    case GWLP_HWNDPARENT: {
        const Window *parent = window->Parent != nullptr ? window->Parent : window->Owner;
        value = parent != nullptr ? reinterpret_cast<LONG_PTR>(parent->Handle) : 0;
        return true;
    }
    default: return false;
    }
}

bool WriteValue(Window *window, int index, LONG_PTR value)
{
    switch (index) {
    case GWL_STYLE: window->Style = static_cast<DWORD>(value); break;
    case GWL_EXSTYLE: window->ExStyle = static_cast<DWORD>(value); break;
    case GWLP_ID: window->Id = value; break;
    case GWLP_USERDATA: window->UserData = value; break;
    case GWLP_HINSTANCE: window->Instance = AsPointer<HINSTANCE>(value); break;
    case GWLP_WNDPROC:
        if (value == 0) return false;
        window->Procedure = AsPointer<WNDPROC>(value);
        break;
    case GWLP_HWNDPARENT: {
        Window *owner = OwnerOf(AsPointer<HWND>(value));
        if (window->Parent != nullptr || (value != 0 && owner == nullptr)) return false;
        if (owner != nullptr && IsOwnedBy(owner, window)) return false;
        if (owner != nullptr && OwnerDepthOf(owner) + 1 + OwnedDepthOf(window, 0) >= deepestNesting)
            return false;
        window->Owner = owner;
        break;
    }
    default: return false;
    }
    Note(window, changedState);
    return true;
}

// Where `size` bytes of the extra bytes begin, null when they reach beyond the end.
unsigned char *ExtraAt(Window *window, int index, int size)
{
    return index >= 0 && index <= window->ExtraBytes - size ? window->Extra + index : nullptr;
}

} // namespace

LONG_PTR GetWindowLongPtrA(HWND window, int index)
{
    const Locked locked;
    Window *found = Find(window);
    LONG_PTR value = 0;
    if (found == nullptr || ReadValue(found, index, value)) return value;
    const unsigned char *extra = ExtraAt(found, index, sizeof value);
    if (extra != nullptr) memcpy(&value, extra, sizeof value);
    return value;
}

LONG_PTR SetWindowLongPtrA(HWND window, int index, LONG_PTR value)
{
    const Locked locked(mutates);
    Window *found = Find(window);
    LONG_PTR before = 0;
    if (found == nullptr) return 0;
    if (ReadValue(found, index, before)) return WriteValue(found, index, value) ? before : 0;
    unsigned char *extra = ExtraAt(found, index, sizeof value);
    if (extra == nullptr) return 0;
    memcpy(&before, extra, sizeof before);
    memcpy(extra, &value, sizeof value);
    return before;
}

LONG GetWindowLongA(HWND window, int index)
{
    if (index < 0) return static_cast<LONG>(GetWindowLongPtrA(window, index));
    const Locked locked;
    Window *found = Find(window);
    LONG value = 0;
    const unsigned char *extra = found != nullptr ? ExtraAt(found, index, sizeof value) : nullptr;
    if (extra != nullptr) memcpy(&value, extra, sizeof value);
    return value;
}

LONG SetWindowLongA(HWND window, int index, LONG value)
{
    if (index < 0) return static_cast<LONG>(SetWindowLongPtrA(window, index, value));
    const Locked locked(mutates);
    Window *found = Find(window);
    LONG before = 0;
    unsigned char *extra = found != nullptr ? ExtraAt(found, index, sizeof value) : nullptr;
    if (extra == nullptr) return 0;
    memcpy(&before, extra, sizeof before);
    memcpy(extra, &value, sizeof value);
    return before;
}

BOOL SetPropA(HWND window, LPCSTR name, HANDLE value)
{
    if (!IsName(name)) return FALSE;
    const Locked locked(mutates);
    Window *found = Find(window);
    if (found == nullptr) return FALSE;
    Property **link = FindProperty(found, name);
    if (*link == nullptr) {
        auto *made = static_cast<Property *>(Allocate(sizeof(Property)));
        if (made != nullptr) made->Name = CopyText(name, strlen(name));
        if (made == nullptr || made->Name == nullptr) {
            Release(made);
            return FALSE;
        }
        *link = made;
    }
    (*link)->Value = value;
    return TRUE;
}

HANDLE GetPropA(HWND window, LPCSTR name)
{
    if (!IsName(name)) return nullptr;
    const Locked locked;
    Window *found = Find(window);
    const Property *property = found != nullptr ? *FindProperty(found, name) : nullptr;
    return property != nullptr ? property->Value : nullptr;
}

HANDLE RemovePropA(HWND window, LPCSTR name)
{
    if (!IsName(name)) return nullptr;
    const Locked locked(mutates);
    Window *found = Find(window);
    if (found == nullptr) return nullptr;
    Property **link = FindProperty(found, name);
    Property *gone = *link;
    if (gone == nullptr) return nullptr;
    HANDLE value = gone->Value;
    *link = gone->Next;
    Release(gone->Name);
    Release(gone);
    return value;
}

BOOL SetWindowTextA(HWND window, LPCSTR text)
{
    return SendMessageA(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)) > 0 ? TRUE : FALSE;
}

int GetWindowTextA(HWND window, LPSTR text, int size)
{
    if (text == nullptr || size <= 0) return 0;
    *text = 0;
    return static_cast<int>(
        SendMessageA(window, WM_GETTEXT, static_cast<WPARAM>(size), reinterpret_cast<LPARAM>(text)));
}

int GetWindowTextLengthA(HWND window)
{
    return static_cast<int>(SendMessageA(window, WM_GETTEXTLENGTH, 0, 0));
}

BOOL InvalidateRect(HWND window, const RECT * /*rectangle*/, BOOL /*erase*/) { return UpdateWindow(window); }

BOOL UpdateWindow(HWND window)
{
    if (IsWindow(window) == FALSE) return FALSE;
    ShowChanges();
    return TRUE;
}

// ---- Cursor and painting ----

namespace {

constexpr ULONG_PTR arrowCursor = 32512;
constexpr ULONG_PTR waitCursor = 32514;

} // namespace

HCURSOR LoadCursorA(HINSTANCE module, LPCSTR name)
{
    const auto number = reinterpret_cast<ULONG_PTR>(name);
    if (module != nullptr || number < arrowCursor || number > waitCursor) return nullptr;
    return AsPointer<HCURSOR>(number);
}

HCURSOR SetCursor(HCURSOR cursor)
{
    HCURSOR before = nullptr;
    {
        const Locked locked;
        Thread *thread = Self();
        if (thread == nullptr) return nullptr;
        before = thread->Cursor;
        thread->Cursor = cursor;
    }
    if (cursor != before) ShowChanges();
    return before;
}

DWORD GetSysColor(int index) { return index == COLOR_BTNFACE ? 0xF0F0F0u : 0u; }

COLORREF SetBkColor(HDC /*device*/, COLORREF /*color*/) { return 0; }

BOOL ExtTextOutA(HDC /*device*/, int /*x*/, int /*y*/, UINT /*options*/, const RECT * /*rectangle*/,
                 LPCSTR /*text*/, UINT /*length*/, const int * /*widths*/)
{
    return FALSE;
}

void VarkUiLimitLists(LONG rows) { LimitRows(rows); }
