// Dialogs: made from templates in memory, run modally, and their keyboard.
#include <cstring>

#include "text/windows1252.h"
#include "window-system/collation.h"
#include "window-system/memory.h"
#include "window-system/model.h"

namespace varkui {

namespace {

// ---- Templates ----

// A template is a run of 16-bit words of any alignment.
struct Reader {
    const unsigned char *At;
};

WORD TakeWord(Reader &reader)
{
    WORD word = 0;
    memcpy(&word, reader.At, sizeof word);
    reader.At += sizeof word;
    return word;
}

DWORD TakeDword(Reader &reader)
{
    const DWORD low = TakeWord(reader);
    return low | (static_cast<DWORD>(TakeWord(reader)) << 16);
}

SHORT TakeShort(Reader &reader) { return static_cast<SHORT>(TakeWord(reader)); }

constexpr size_t longestTemplateText = 1024;

// A text, a number (returned; the text is empty then) or nothing. What is longer is cut.
WORD TakeTextOrNumber(Reader &reader, char (&out)[longestTemplateText])
{
    out[0] = 0;
    WORD word = TakeWord(reader);
    if (word == 0xFFFF) return TakeWord(reader);
    size_t length = 0;
    while (word != 0) {
        const unsigned char byte = text::ByteOf(word);
        if (length + 1 < longestTemplateText) out[length++] = static_cast<char>(byte != 0 ? byte : '?');
        word = TakeWord(reader);
    }
    out[length] = 0;
    return 0;
}

// Controls begin at multiples of four bytes from the template's own beginning.
void Align(Reader &reader, const void *beginning)
{
    const auto offset = static_cast<size_t>(reader.At - static_cast<const unsigned char *>(beginning));
    reader.At += (4 - offset % 4) % 4;
}

struct TemplateHead {
    bool Extended;
    LONG Number;
    DWORD ExStyle;
    DWORD Style;
    WORD Count;
    SHORT X, Y, Width, Height;
    char Title[longestTemplateText];
};

void TakeHead(Reader &reader, TemplateHead &head)
{
    const Reader beginning = reader;
    const WORD version = TakeWord(reader);
    const WORD signature = TakeWord(reader);
    head.Extended = version == 1 && signature == 0xFFFF;
    head.Number = 0;
    if (head.Extended) {
        head.Number = static_cast<LONG>(TakeDword(reader));
        head.ExStyle = TakeDword(reader);
        head.Style = TakeDword(reader);
    } else {
        reader = beginning;
        head.Style = TakeDword(reader);
        head.ExStyle = TakeDword(reader);
    }
    head.Count = TakeWord(reader);
    head.X = TakeShort(reader);
    head.Y = TakeShort(reader);
    head.Width = TakeShort(reader);
    head.Height = TakeShort(reader);
    char ignored[longestTemplateText];
    TakeTextOrNumber(reader, ignored); // menu
    TakeTextOrNumber(reader, ignored); // class
    TakeTextOrNumber(reader, head.Title);
    if ((head.Style & DS_SETFONT) == 0) return;
    TakeWord(reader);
    if (head.Extended) TakeDword(reader);
    TakeTextOrNumber(reader, ignored);
}

struct TemplateItem {
    DWORD ExStyle;
    DWORD Style;
    SHORT X, Y, Width, Height;
    DWORD Id;
    char Class[longestTemplateText];
    char Text[longestTemplateText];
};

const char *ClassOfNumber(WORD number)
{
    switch (number) {
    case 0x80: return "Button";
    case 0x81: return "Edit";
    case 0x82: return "Static";
    case 0x83: return "ListBox";
    case 0x85: return "ComboBox";
    default: return "";
    }
}

void TakeItem(Reader &reader, const TemplateHead &head, TemplateItem &item)
{
    if (head.Extended) {
        TakeDword(reader); // help id
        item.ExStyle = TakeDword(reader);
        item.Style = TakeDword(reader);
    } else {
        item.Style = TakeDword(reader);
        item.ExStyle = TakeDword(reader);
    }
    item.X = TakeShort(reader);
    item.Y = TakeShort(reader);
    item.Width = TakeShort(reader);
    item.Height = TakeShort(reader);
    item.Id = head.Extended ? TakeDword(reader) : TakeWord(reader);
    const WORD number = TakeTextOrNumber(reader, item.Class);
    if (number != 0) {
        const char *name = ClassOfNumber(number);
        memcpy(item.Class, name, strlen(name) + 1);
    }
    TakeTextOrNumber(reader, item.Text);
    const WORD extra = TakeWord(reader);
    reader.At += extra;
}

LONG Scaled(LONG value, unsigned base, LONG divisor)
{
    const int64_t product = int64_t{value} * base;
    return static_cast<LONG>((product + (product < 0 ? -divisor / 2 : divisor / 2)) / divisor);
}

RECT Pixels(LONG left, LONG top, LONG right, LONG bottom)
{
    const Locked locked;
    return RECT{Scaled(left, model.BaseX, 4), Scaled(top, model.BaseY, 8), Scaled(right, model.BaseX, 4),
                Scaled(bottom, model.BaseY, 8)};
}

// ---- Walking controls ----

bool IsUsable(const Window *window) { return (window->Style & (WS_VISIBLE | WS_DISABLED)) == WS_VISIBLE; }

// The window behind `window` in the order of Tab, going into pages; null behind the last in `dialog`.
Window *NextControl(const Window *dialog, Window *window)
{
    const bool enters =
        window == dialog || ((window->ExStyle & WS_EX_CONTROLPARENT) != 0 && IsUsable(window));
    if (enters && window->FirstChild != nullptr) return window->FirstChild;
    while (window != dialog && window->Next == nullptr) {
        window = window->Parent;
    }
    return window == dialog ? nullptr : window->Next;
}

Window *FindTabStop(Window *dialog, const Window *control, bool previous)
{
    Window *first = nullptr;
    Window *last = nullptr;
    Window *before = nullptr;
    Window *behind = nullptr;
    bool passed = false;
    for (Window *each = NextControl(dialog, dialog); each != nullptr; each = NextControl(dialog, each)) {
        if (each == control) {
            passed = true;
            continue;
        }
        if (!IsUsable(each) || (each->Style & WS_TABSTOP) == 0) continue;
        if ((each->ExStyle & WS_EX_CONTROLPARENT) != 0) continue;
        if (first == nullptr) first = each;
        last = each;
        if (!passed) before = each;
        if (passed && behind == nullptr) behind = each;
    }
    if (control == nullptr || !passed) return previous ? last : first;
    if (previous) return before != nullptr ? before : last;
    return behind != nullptr ? behind : first;
}

bool IsInert(const Window *window)
{
    return window->Kind == Kind::Static ||
           (window->Kind == Kind::Button && (window->Style & BS_TYPEMASK) == BS_GROUPBOX);
}

Window *FindInGroup(Window *control, bool previous)
{
    Window *start = control;
    while ((start->Style & WS_GROUP) == 0 && start->Previous != nullptr) {
        start = start->Previous;
    }
    Window *first = nullptr;
    Window *last = nullptr;
    Window *before = nullptr;
    Window *behind = nullptr;
    bool passed = false;
    for (Window *each = start; each != nullptr; each = each->Next) {
        if (each != start && (each->Style & WS_GROUP) != 0) break;
        if (each == control) {
            passed = true;
            continue;
        }
        if (!IsUsable(each) || IsInert(each)) continue;
        if (first == nullptr) first = each;
        last = each;
        if (!passed) before = each;
        if (passed && behind == nullptr) behind = each;
    }
    Window *found = previous ? (before != nullptr ? before : last) : (behind != nullptr ? behind : first);
    return found != nullptr ? found : control;
}

LRESULT DialogCode(HWND control, const MSG *message)
{
    return SendMessageA(control, WM_GETDLGCODE, message != nullptr ? message->wParam : 0,
                        reinterpret_cast<LPARAM>(message));
}

// The focus as Tab and mnemonics move it: a field's content is selected.
void FocusControl(HWND control)
{
    if (control == nullptr) return;
    if ((DialogCode(control, nullptr) & DLGC_HASSETSEL) != 0) SendMessageA(control, EM_SETSEL, 0, -1);
    SetFocus(control);
}

// ---- Mnemonics ----

// The lower-case letter behind a single "&", 0 for none.
unsigned char MnemonicOf(const char *text)
{
    for (; *text != 0; ++text) {
        if (*text != '&') continue;
        if (text[1] != '&') return LowerCase(static_cast<unsigned char>(text[1]));
        ++text;
    }
    return 0;
}

bool HasMnemonic(const Window *window, unsigned char letter)
{
    if ((window->Style & WS_VISIBLE) == 0) return false;
    if (window->Kind == Kind::Static) {
        if ((window->Style & SS_NOPREFIX) != 0) return false;
    } else if (window->Kind != Kind::Button || (window->Style & WS_DISABLED) != 0) {
        return false;
    }
    return MnemonicOf(TextOf(window)) == letter;
}

struct Mnemonic {
    HWND Control;
    bool Alone;
    bool Inert; // leads to the control behind it
};

// The next control with that mnemonic behind the focus, going round.
Mnemonic FindMnemonic(Window *dialog, const Window *focus, unsigned char letter)
{
    Window *first = nullptr;
    Window *behind = nullptr;
    int count = 0;
    bool passed = false;
    for (Window *each = NextControl(dialog, dialog); each != nullptr; each = NextControl(dialog, each)) {
        if (HasMnemonic(each, letter)) {
            ++count;
            if (first == nullptr) first = each;
            if (passed && behind == nullptr) behind = each;
        }
        if (each == focus) passed = true;
    }
    const Window *found = behind != nullptr ? behind : first;
    if (found == nullptr) return Mnemonic{nullptr, false, false};
    return Mnemonic{found->Handle, count == 1, IsInert(found)};
}

// The radio button of the group around `control` that Tab reaches, else `control`.
const Window *CheckedOfGroup(Window *control)
{
    Window *each = control;
    do {
        if ((each->Style & WS_TABSTOP) != 0 && IsUsable(each)) return each;
        each = FindInGroup(each, false);
    } while (each != control);
    return control;
}

// The control that a label leads to: the next one behind it that can have the focus.
HWND BehindLabel(HWND dialog, HWND label)
{
    const Locked locked;
    Window *outer = Find(dialog);
    Window *inner = Find(label);
    if (outer == nullptr || inner == nullptr || !LiesInside(inner, outer)) return nullptr;
    for (Window *each = NextControl(outer, inner); each != nullptr; each = NextControl(outer, each)) {
        if (IsInert(each) || (each->ExStyle & WS_EX_CONTROLPARENT) != 0) continue;
        if (IsUsable(each)) return CheckedOfGroup(each)->Handle;
        if ((each->Style & WS_VISIBLE) != 0) return nullptr; // the one it names is disabled
    }
    return nullptr;
}

bool DoMnemonic(HWND dialog, unsigned char character)
{
    Mnemonic found = {};
    bool pressable = false;
    {
        const Locked locked;
        Window *outer = Find(dialog);
        const Thread *thread = Self();
        if (outer == nullptr || thread == nullptr || character <= ' ') return false;
        found = FindMnemonic(outer, Find(thread->Focus), LowerCase(character));
        const Window *control = Find(found.Control);
        pressable = control != nullptr && control->Kind == Kind::Button && !found.Inert;
    }
    if (found.Control == nullptr) return false;
    HWND target = found.Inert ? BehindLabel(dialog, found.Control) : found.Control;
    if (target == nullptr) return true;
    FocusControl(target);
    if (pressable && found.Alone && GetFocus() == target) SendMessageA(target, BM_CLICK, 0, 0);
    return true;
}

// ---- Keys ----

void PressDefault(HWND dialog)
{
    int id = 0;
    HWND button = nullptr;
    {
        const Locked locked;
        Window *found = Find(dialog);
        if (found == nullptr) return;
        id = CurrentDefault(found);
        if (id == 0) id = IDOK;
        const Window *control = FindControl(found, id);
        if (control != nullptr && (control->Style & WS_DISABLED) != 0) return;
        if (control != nullptr) button = control->Handle;
    }
    SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(button));
}

void PressCancel(HWND dialog)
{
    HWND button = GetDlgItem(dialog, IDCANCEL);
    if (button != nullptr && IsWindowEnabled(button) == FALSE) return;
    SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), reinterpret_cast<LPARAM>(button));
}

void MoveInGroup(HWND dialog, HWND control, bool previous)
{
    HWND next = GetNextDlgGroupItem(dialog, control, previous ? TRUE : FALSE);
    if (next == nullptr || next == control) return;
    FocusControl(next);
    // Moving through radio buttons chooses.
    if ((DialogCode(next, nullptr) & DLGC_RADIOBUTTON) != 0 && GetFocus() == next)
        SendMessageA(next, BM_CLICK, 0, 0);
}

void MoveOn(HWND dialog, WPARAM wParam, bool isHandle)
{
    if (isHandle) {
        FocusControl(AsPointer<HWND>(wParam));
        return;
    }
    HWND focus = GetFocus();
    FocusControl(GetNextDlgTabItem(dialog, IsChild(dialog, focus) != FALSE ? focus : nullptr,
                                   wParam != 0 ? TRUE : FALSE));
}

// A dialog may have a way of its own; any other window that is used like one knows none.
void DoTab(HWND dialog, bool previous)
{
    bool isDialog = false;
    {
        const Locked locked;
        const Window *found = Find(dialog);
        isDialog = found != nullptr && found->Kind == Kind::Dialog;
    }
    if (isDialog) {
        SendMessageA(dialog, WM_NEXTDLGCTL, previous ? 1 : 0, 0);
    } else {
        MoveOn(dialog, previous ? 1 : 0, false);
    }
}

// A key that the dialog keeps for itself; false leaves it to the control.
bool DoKey(HWND dialog, const MSG &message)
{
    const LRESULT code = DialogCode(message.hwnd, &message);
    if ((code & DLGC_WANTMESSAGE) != 0) return false;
    switch (message.wParam) {
    case VK_TAB:
        if ((code & DLGC_WANTTAB) != 0 || GetKeyState(VK_CONTROL) < 0) return false;
        DoTab(dialog, GetKeyState(VK_SHIFT) < 0);
        return true;
    case VK_LEFT:
    case VK_UP:
    case VK_RIGHT:
    case VK_DOWN:
        if ((code & DLGC_WANTARROWS) != 0) return false;
        MoveInGroup(dialog, message.hwnd, message.wParam == VK_LEFT || message.wParam == VK_UP);
        return true;
    case VK_ESCAPE: PressCancel(dialog); return true;
    case VK_RETURN: PressDefault(dialog); return true;
    default: return false;
    }
}

// A character that is a mnemonic; false leaves it to the control.
bool DoCharacter(HWND dialog, const MSG &message)
{
    const auto character = static_cast<unsigned char>(message.wParam);
    if (message.message == WM_SYSCHAR) return DoMnemonic(dialog, character);
    if ((DialogCode(message.hwnd, &message) & (DLGC_WANTCHARS | DLGC_WANTMESSAGE)) != 0) return false;
    // Without a field that takes text, the letter alone does.
    return DoMnemonic(dialog, character);
}

// ---- What a dialog does by itself ----

void RememberFocus(HWND dialog)
{
    const Locked locked(mutates);
    Window *found = Find(dialog);
    const Thread *thread = Self();
    if (found == nullptr || found->Kind != Kind::Dialog || thread == nullptr) return;
    const Window *focus = Find(thread->Focus);
    if (focus != nullptr && LiesInside(focus, found)) found->Dialog->SavedFocus = focus->Handle;
}

// Puts the focus back to where it was when the dialog was left; else, if `orFirst`, to its first control.
void RestoreFocus(HWND dialog, bool orFirst)
{
    HWND saved = nullptr;
    {
        const Locked locked;
        const Window *found = Find(dialog);
        if (found == nullptr || found->Kind != Kind::Dialog) return;
        const Thread *thread = Self();
        const Window *focus = thread != nullptr ? Find(thread->Focus) : nullptr;
        if (focus != nullptr && LiesInside(focus, found)) return;
        const Window *candidate = Find(found->Dialog->SavedFocus);
        if (candidate != nullptr && LiesInside(candidate, found)) saved = candidate->Handle;
    }
    if (saved != nullptr && SetFocus(saved) == nullptr && GetFocus() != saved) saved = nullptr;
    if (saved == nullptr && orFirst) FocusControl(GetNextDlgTabItem(dialog, nullptr, FALSE));
}

LRESULT DefaultId(HWND dialog)
{
    const Locked locked;
    const Window *found = Find(dialog);
    if (found == nullptr || found->Kind != Kind::Dialog || found->Dialog->DefaultId == 0) return 0;
    return MAKELRESULT(found->Dialog->DefaultId, DC_HASDEFID);
}

void SetDefaultId(HWND dialog, int id)
{
    const Locked locked(mutates);
    Window *found = Find(dialog);
    if (found == nullptr || found->Kind != Kind::Dialog) return;
    found->Dialog->DefaultId = id;
    Note(found, changedState);
}

LRESULT DoByItself(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_ACTIVATE:
        if (LOWORD(wParam) == WA_INACTIVE) {
            RememberFocus(dialog);
        } else {
            RestoreFocus(dialog, false);
        }
        return 0;
    case WM_SETFOCUS: RestoreFocus(dialog, true); return 0;
    case WM_CLOSE: {
        HWND button = GetDlgItem(dialog, IDCANCEL);
        if (button != nullptr && IsWindowEnabled(button) == FALSE) return 0;
        PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), reinterpret_cast<LPARAM>(button));
        return 0;
    }
    case WM_NEXTDLGCTL: MoveOn(dialog, wParam, lParam != 0); return 0;
    case DM_GETDEFID: return DefaultId(dialog);
    case DM_SETDEFID: SetDefaultId(dialog, static_cast<int>(wParam)); return TRUE;
    default: return DefWindowProcA(dialog, message, wParam, lParam);
    }
}

// The controls of a template; false when one of them could not be made.
bool MakeControls(HWND dialog, Reader &reader, const TemplateHead &head, const void *beginning)
{
    for (WORD i = 0; i < head.Count; ++i) {
        TemplateItem item = {};
        Align(reader, beginning);
        TakeItem(reader, head, item);
        const RECT place = Pixels(item.X, item.Y, item.X + item.Width, item.Y + item.Height);
        const auto id = static_cast<LONG_PTR>(static_cast<LONG>(item.Id));
        HWND control =
            CreateWindowExA(item.ExStyle | WS_EX_NOPARENTNOTIFY, item.Class, item.Text, item.Style | WS_CHILD,
                            place.left, place.top, place.right - place.left, place.bottom - place.top, dialog,
                            AsPointer<HMENU>(id), nullptr, nullptr);
        if (control == nullptr) return false;
        const Locked locked;
        Window *made = Find(control);
        Window *parent = Find(dialog);
        if (made == nullptr || parent == nullptr) return false;
        const bool isDefault = made->Kind == Kind::Button && (made->Style & BS_TYPEMASK) == BS_DEFPUSHBUTTON;
        if (isDefault && parent->Dialog->DefaultId == 0) parent->Dialog->DefaultId = static_cast<int>(id);
    }
    return true;
}

} // namespace

HWND MakeDialog(LPCDLGTEMPLATEA dialogTemplate, HWND owner, DLGPROC procedure, LPARAM parameter,
                ModalLoop *loop)
{
    if (dialogTemplate == nullptr) return nullptr;
    frontEnd.Choose(); // tells how large a dialog unit is
    Reader reader = {reinterpret_cast<const unsigned char *>(dialogTemplate)};
    TemplateHead head = {};
    TakeHead(reader, head);
    const bool isChild = (head.Style & WS_CHILD) != 0;
    const RECT place = Pixels(head.X, head.Y, head.X + head.Width, head.Y + head.Height);
    DWORD exStyle = head.ExStyle;
    if ((head.Style & DS_CONTROL) != 0) exStyle |= WS_EX_CONTROLPARENT;
    HWND dialog =
        CreateWindowExA(exStyle, "#32770", head.Title, head.Style & ~WS_VISIBLE, place.left, place.top,
                        place.right - place.left, place.bottom - place.top, owner, nullptr, nullptr, nullptr);
    if (dialog == nullptr) return nullptr;
    {
        const Locked locked(mutates);
        Window *made = Find(dialog);
        if (made == nullptr) return nullptr;
        made->Dialog->Number = head.Number;
        if (loop != nullptr) {
            loop->Dialog = dialog;
            loop->Outer = made->Thread->Modal;
            made->Thread->Modal = loop;
        }
    }
    SetWindowLongPtrA(dialog, DWLP_DLGPROC, reinterpret_cast<LONG_PTR>(procedure));
    if (!MakeControls(dialog, reader, head, dialogTemplate)) {
        DestroyWindow(dialog);
        return nullptr;
    }
    HWND first = GetNextDlgTabItem(dialog, nullptr, FALSE);
    const LRESULT takesFocus =
        SendMessageA(dialog, WM_INITDIALOG, reinterpret_cast<WPARAM>(first), parameter);
    if (IsWindow(dialog) == FALSE) return nullptr;
    if (takesFocus != 0 && !isChild && (loop == nullptr || !loop->Ended)) {
        FocusControl(GetNextDlgTabItem(dialog, nullptr, FALSE));
    }
    if (loop == nullptr && (head.Style & WS_VISIBLE) != 0) ShowWindow(dialog, SW_SHOW);
    return IsWindow(dialog) != FALSE ? dialog : nullptr;
}

namespace {

// Shows a dialog and handles messages until it ends.
void RunLoop(ModalLoop &loop)
{
    HWND dialog = loop.Dialog;
    if (!loop.Ended) ShowWindow(dialog, SW_SHOW);
    const auto goesOn = [&loop, dialog] {
        const Locked locked;
        return !loop.Ended && Find(dialog) != nullptr;
    };
    MSG message = {};
    while (goesOn()) {
        const BOOL got = GetMessageA(&message, nullptr, 0, 0);
        if (got < 0) break;
        if (got == 0) {
            // The end of the program concerns the loop outside as well.
            PostQuitMessage(static_cast<int>(message.wParam));
            break;
        }
        if (IsDialogMessageA(dialog, &message) != FALSE) continue;
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

// Takes the loop out of its thread and gives the owner back, whatever became of the dialog.
void EndModal(ModalLoop &loop)
{
    HWND disabled = nullptr;
    {
        const Locked locked(mutates);
        disabled = loop.Disabled;
        loop.Disabled = nullptr;
    }
    if (disabled != nullptr) EnableWindow(disabled, TRUE);
    DestroyWindow(loop.Dialog);
    {
        const Locked locked(mutates);
        Thread *thread = Self();
        if (thread == nullptr) return;
        for (ModalLoop **link = &thread->Modal; *link != nullptr; link = &(*link)->Outer) {
            if (*link != &loop) continue;
            *link = loop.Outer;
            break;
        }
    }
    frontEnd.Idle();
}

} // namespace

INT_PTR RunDialog(LPCDLGTEMPLATEA dialogTemplate, HWND owner, DLGPROC procedure, LPARAM parameter)
{
    HWND outermost = nullptr;
    {
        const Locked locked;
        const Window *found = OwnerOf(owner);
        if (found != nullptr) outermost = found->Handle;
    }
    ModalLoop loop = {};
    HWND made = MakeDialog(dialogTemplate, outermost, procedure, parameter, &loop);
    if (loop.Dialog == nullptr) return -1;
    if (made == nullptr) {
        EndModal(loop);
        return loop.Ended ? loop.Result : -1;
    }
    if (outermost != nullptr && !loop.Ended && EnableWindow(outermost, FALSE) == FALSE) {
        const Locked locked;
        loop.Disabled = outermost;
    }
    RunLoop(loop);
    EndModal(loop);
    return loop.Result;
}

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

using namespace varkui;

INT_PTR DialogBoxIndirectParamA(HINSTANCE /*instance*/, LPCDLGTEMPLATEA dialogTemplate, HWND owner,
                                DLGPROC procedure, LPARAM parameter)
{
    return RunDialog(dialogTemplate, owner, procedure, parameter);
}

HWND CreateDialogIndirectParamA(HINSTANCE /*instance*/, LPCDLGTEMPLATEA dialogTemplate, HWND owner,
                                DLGPROC procedure, LPARAM parameter)
{
    return MakeDialog(dialogTemplate, owner, procedure, parameter, nullptr);
}

BOOL EndDialog(HWND dialog, INT_PTR result)
{
    HWND disabled = nullptr;
    bool mine = false;
    {
        const Locked locked(mutates);
        Window *found = Find(dialog);
        if (found == nullptr || found->Kind != Kind::Dialog) return FALSE;
        ModalLoop *loop = LoopOf(found);
        if (loop != nullptr && !loop->Ended) {
            loop->Ended = true;
            loop->Result = result;
        }
        found->Dialog->Ended = true;
        mine = found->Thread == Self();
        if (mine && loop != nullptr) {
            disabled = loop->Disabled;
            loop->Disabled = nullptr;
        }
        WakeThread(found->Thread);
    }
    if (!mine) return TRUE;
    // The owner comes back before the dialog goes, so that it is the one to be active next.
    if (disabled != nullptr) EnableWindow(disabled, TRUE);
    ShowWindow(dialog, SW_HIDE);
    return TRUE;
}

LRESULT DefDlgProcA(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    const auto procedure = AsPointer<DLGPROC>(GetWindowLongPtrA(dialog, DWLP_DLGPROC));
    if (message == WM_NCCREATE || message == WM_CREATE || procedure == nullptr) {
        return DoByItself(dialog, message, wParam, lParam);
    }
    SetWindowLongPtrA(dialog, DWLP_MSGRESULT, 0);
    const INT_PTR handled = procedure(dialog, message, wParam, lParam);
    if (message == WM_INITDIALOG) return handled;
    if (handled == 0) return DoByItself(dialog, message, wParam, lParam);
    return GetWindowLongPtrA(dialog, DWLP_MSGRESULT);
}

BOOL IsDialogMessageA(HWND dialog, MSG *message)
{
    if (message == nullptr) return FALSE;
    {
        const Locked locked;
        const Window *outer = Find(dialog);
        const Window *target = Find(message->hwnd);
        if (outer == nullptr || target == nullptr || target->Thread != Self()) return FALSE;
        if (target != outer && !LiesInside(target, outer)) return FALSE;
    }
    if (message->message == WM_KEYDOWN && DoKey(dialog, *message)) return TRUE;
    if ((message->message == WM_CHAR || message->message == WM_SYSCHAR) && DoCharacter(dialog, *message))
        return TRUE;
    TranslateMessage(message);
    DispatchMessageA(message);
    return TRUE;
}

// ---- Controls by their id ----

HWND GetDlgItem(HWND dialog, int id)
{
    const Locked locked;
    const Window *found = Find(dialog);
    if (found == nullptr) return nullptr;
    for (const Window *child = found->FirstChild; child != nullptr; child = child->Next) {
        if (static_cast<int>(child->Id) == id) return child->Handle;
    }
    return nullptr;
}

int GetDlgCtrlID(HWND window)
{
    const Locked locked;
    const Window *found = Find(window);
    return found != nullptr && found->Parent != nullptr ? static_cast<int>(found->Id) : 0;
}

LRESULT SendDlgItemMessageA(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam)
{
    return SendMessageA(GetDlgItem(dialog, id), message, wParam, lParam);
}

BOOL SetDlgItemTextA(HWND dialog, int id, LPCSTR text)
{
    return SetWindowTextA(GetDlgItem(dialog, id), text);
}

UINT GetDlgItemTextA(HWND dialog, int id, LPSTR text, int size)
{
    return static_cast<UINT>(GetWindowTextA(GetDlgItem(dialog, id), text, size));
}

BOOL SetDlgItemInt(HWND dialog, int id, UINT value, BOOL isSigned)
{
    char digits[12] = {};
    char *at = digits + sizeof digits - 1;
    const bool negative = isSigned != FALSE && static_cast<int>(value) < 0;
    UINT rest = negative ? 0u - value : value;
    do {
        *--at = static_cast<char>('0' + rest % 10);
        rest /= 10;
    } while (rest != 0);
    if (negative) *--at = '-';
    return SetDlgItemTextA(dialog, id, at);
}

UINT GetDlgItemInt(HWND dialog, int id, BOOL *translated, BOOL isSigned)
{
    if (translated != nullptr) *translated = FALSE;
    char text[64];
    if (GetDlgItemTextA(dialog, id, text, sizeof text) == 0) return 0;
    const char *at = text;
    while (*at == ' ' || *at == '\t') {
        ++at;
    }
    const bool negative = isSigned != FALSE && *at == '-';
    if (negative || (isSigned != FALSE && *at == '+')) ++at;
    if (*at < '0' || *at > '9') return 0;
    int64_t value = 0;
    for (; *at >= '0' && *at <= '9'; ++at) {
        value = value * 10 + (*at - '0');
        if (value > UINT32_MAX) return 0;
    }
    if (negative) value = -value;
    if (isSigned != FALSE && (value < INT32_MIN || value > INT32_MAX)) return 0;
    if (translated != nullptr) *translated = TRUE;
    return static_cast<UINT>(value);
}

BOOL CheckDlgButton(HWND dialog, int id, UINT check)
{
    HWND button = GetDlgItem(dialog, id);
    if (button == nullptr) return FALSE;
    SendMessageA(button, BM_SETCHECK, check, 0);
    return TRUE;
}

UINT IsDlgButtonChecked(HWND dialog, int id)
{
    return static_cast<UINT>(SendDlgItemMessageA(dialog, id, BM_GETCHECK, 0, 0));
}

BOOL CheckRadioButton(HWND dialog, int first, int last, int id)
{
    if (IsWindow(dialog) == FALSE || last < first) return FALSE;
    for (HWND child = GetWindow(dialog, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        const int own = GetDlgCtrlID(child);
        if (own < first || own > last) continue;
        SendMessageA(child, BM_SETCHECK, own == id ? BST_CHECKED : BST_UNCHECKED, 0);
    }
    return TRUE;
}

HWND GetNextDlgTabItem(HWND dialog, HWND control, BOOL previous)
{
    const Locked locked;
    Window *found = Find(dialog);
    if (found == nullptr) return nullptr;
    const Window *next = FindTabStop(found, Find(control), previous != FALSE);
    return next != nullptr ? next->Handle : nullptr;
}

HWND GetNextDlgGroupItem(HWND dialog, HWND control, BOOL previous)
{
    const Locked locked;
    const Window *outer = Find(dialog);
    if (outer == nullptr) return nullptr;
    Window *inner = control != nullptr ? Find(control) : outer->FirstChild;
    if (inner == nullptr || !LiesInside(inner, outer)) return nullptr;
    const Window *next = FindInGroup(inner, previous != FALSE);
    return next->Handle;
}

BOOL MapDialogRect(HWND dialog, RECT *rectangle)
{
    if (rectangle == nullptr) return FALSE;
    {
        const Locked locked;
        const Window *found = Find(dialog);
        if (found == nullptr || found->Kind != Kind::Dialog) return FALSE;
    }
    *rectangle = Pixels(rectangle->left, rectangle->top, rectangle->right, rectangle->bottom);
    return TRUE;
}
