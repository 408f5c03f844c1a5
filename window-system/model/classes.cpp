#include "window-system/model/classes.h"

#include "window-system/model/collation.h"
#include "window-system/model/memory.h"
#include "window-system/model/model.h"
#include "window-system/model/window.h"

#include <cstring>

namespace varkui {

namespace {

constexpr WORD dialogAtom = 0x8002;

ATOM nextAtom = 0xC000;

} // namespace

void AddSystemClasses(const SystemClass *classes, int count)
{
    static WindowClass storage[mostSystemClasses];
    WindowClass *made = storage;
    for (int i = 0; i < count && i < mostSystemClasses; ++i) {
        const SystemClass &each = classes[i];
        made->Name = each.Name;
        made->Procedure = each.Procedure;
        made->TakeInput = each.TakeInput;
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

bool IsName(LPCSTR name) { return reinterpret_cast<uintptr_t>(name) > 0xFFFF && *name != 0; }

} // namespace varkui
