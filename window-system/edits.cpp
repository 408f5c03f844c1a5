// Edit controls, and the editing of text that combo boxes share.
#include <cstring>

#include "window-system/collation.h"
#include "window-system/memory.h"
#include "window-system/model.h"

namespace varkui {

namespace {

Window *FindEdit(HWND handle)
{
    Window *window = Find(handle);
    return window != nullptr && window->Kind == Kind::Edit ? window : nullptr;
}

LONG LengthOf(const Window *window) { return static_cast<LONG>(strlen(TextOf(window))); }

LONG Clamp(LONG value, LONG high) { return value < 0 ? 0 : value > high ? high : value; }

bool IsMultiline(const Window *window)
{
    return window->Kind == Kind::Edit && (window->Style & ES_MULTILINE) != 0;
}

bool TakesDigitsOnly(const Window *window)
{
    return window->Kind == Kind::Edit && (window->Style & ES_NUMBER) != 0;
}

unsigned char UpperCase(unsigned char byte)
{
    for (unsigned upper = 'A'; upper <= 0xFF; ++upper) {
        const auto candidate = static_cast<unsigned char>(upper);
        if (candidate != byte && LowerCase(candidate) == byte) return candidate;
    }
    return byte;
}

// The case that the style of an edit forces on what is typed.
unsigned char Cased(const Window *window, unsigned char byte)
{
    const bool upper = window->Kind == Kind::Edit ? (window->Style & ES_UPPERCASE) != 0
                                                  : (window->Style & CBS_UPPERCASE) != 0;
    const bool lower = window->Kind == Kind::Edit && (window->Style & ES_LOWERCASE) != 0;
    return upper ? UpperCase(byte) : lower ? LowerCase(byte) : byte;
}

bool IsReadOnly(const Window *window)
{
    return window->Kind == Kind::Edit && (window->Style & ES_READONLY) != 0;
}

void TellEdited(HWND handle, Edited edited)
{
    if (edited == Edited::AtLimit) NotifyParent(handle, EN_MAXTEXT);
    if (edited == Edited::NoMemory) NotifyParent(handle, EN_ERRSPACE);
    if (edited != Edited::Changed) return;
    NotifyParent(handle, EN_UPDATE);
    NotifyParent(handle, EN_CHANGE);
}

LRESULT SetText(HWND handle, WPARAM wParam, LPARAM lParam)
{
    const LRESULT done = DefWindowProcA(handle, WM_SETTEXT, wParam, lParam);
    bool tells = false;
    {
        const Locked locked(mutates);
        Window *window = FindEdit(handle);
        if (window == nullptr) return done;
        window->Edit->Modified = false;
        ++window->Edit->Serial;
        tells = done == TRUE && !IsMultiline(window);
    }
    if (tells) TellEdited(handle, Edited::Changed);
    return done;
}

LRESULT Selection(HWND handle, WPARAM wParam, LPARAM lParam)
{
    const Locked locked;
    const Window *window = FindEdit(handle);
    if (window == nullptr) return 0;
    const LONG start = SelectionStart(*window->Edit);
    const LONG end = SelectionEnd(*window->Edit);
    if (wParam != 0) *AsPointer<DWORD *>(wParam) = static_cast<DWORD>(start);
    if (lParam != 0) *AsPointer<DWORD *>(lParam) = static_cast<DWORD>(end);
    return MAKELONG(start, end);
}

LRESULT DialogCodeOf(HWND handle, LPARAM lParam)
{
    const auto *message = AsPointer<const MSG *>(lParam);
    const Locked locked;
    const Window *window = FindEdit(handle);
    if (window == nullptr) return 0;
    LRESULT code = DLGC_HASSETSEL | DLGC_WANTCHARS | DLGC_WANTARROWS;
    const bool isReturn = message != nullptr && message->wParam == VK_RETURN &&
                          (message->message == WM_KEYDOWN || message->message == WM_CHAR);
    if (isReturn && IsMultiline(window) && (window->Style & ES_WANTRETURN) != 0) code |= DLGC_WANTMESSAGE;
    return code;
}

// Runs one editing step under the lock and tells the parent what came of it.
template <typename Step> void Edit(HWND handle, Step step)
{
    Edited edited = Edited::Nothing;
    {
        const Locked locked(mutates);
        Window *window = FindEdit(handle);
        if (window == nullptr || !AreEnabled(window) || IsReadOnly(window)) return;
        edited = step(window, *window->Edit);
    }
    TellEdited(handle, edited);
}

void ReplaceSelectionOf(HWND handle, LPARAM lParam)
{
    const auto *text = AsPointer<const char *>(lParam);
    if (text == nullptr) text = "";
    Edited edited = Edited::Nothing;
    {
        const Locked locked(mutates);
        Window *window = FindEdit(handle);
        if (window == nullptr) return;
        edited = ReplaceSelection(window, *window->Edit, text, true);
    }
    TellEdited(handle, edited);
}

LRESULT CountLines(HWND handle)
{
    const Locked locked;
    const Window *window = FindEdit(handle);
    LRESULT lines = 1;
    for (const char *text = window != nullptr ? TextOf(window) : ""; *text != 0; ++text) {
        if (*text == '\n' && IsMultiline(window)) ++lines;
    }
    return lines;
}

LRESULT EditMessage(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    const Locked locked(mutates);
    Window *window = FindEdit(handle);
    if (window == nullptr) return 0;
    EditState &edit = *window->Edit;
    switch (message) {
    case EM_SETSEL: SelectText(window, edit, static_cast<LONG>(wParam), static_cast<LONG>(lParam)); return 1;
    case EM_GETMODIFY: return edit.Modified ? TRUE : FALSE;
    case EM_SETMODIFY: edit.Modified = wParam != 0; return 0;
    case EM_LIMITTEXT:
        edit.Limit = wParam == 0 || wParam > INT32_MAX ? INT32_MAX : static_cast<LONG>(wParam);
        Note(window, changedState);
        return 0;
    case EM_GETLIMITTEXT: return edit.Limit;
    case EM_SETREADONLY:
        window->Style = wParam != 0 ? window->Style | ES_READONLY : window->Style & ~ES_READONLY;
        Note(window, changedState);
        return TRUE;
    default: return 0;
    }
}

} // namespace

LONG SelectionStart(const EditState &edit) { return edit.Anchor < edit.Caret ? edit.Anchor : edit.Caret; }

LONG SelectionEnd(const EditState &edit) { return edit.Anchor < edit.Caret ? edit.Caret : edit.Anchor; }

void SelectText(Window *window, EditState &edit, LONG start, LONG end)
{
    const LONG length = LengthOf(window);
    if (start < 0) {
        edit.Anchor = edit.Caret;
    } else {
        edit.Anchor = Clamp(start, length);
        edit.Caret = end < 0 ? length : Clamp(end, length);
    }
    ++edit.Serial;
    Note(window, changedState);
}

Edited ReplaceSelection(Window *window, EditState &edit, const char *text, bool limited)
{
    const char *old = TextOf(window);
    const LONG length = LengthOf(window);
    const LONG start = SelectionStart(edit);
    const LONG end = SelectionEnd(edit);
    const LONG kept = length - (end - start);
    auto added = static_cast<LONG>(strnlen(text, INT32_MAX / 4));
    bool cut = false;
    if (limited && added > edit.Limit - kept) {
        added = edit.Limit > kept ? edit.Limit - kept : 0;
        cut = true;
    }
    if (cut && added == 0 && start == end) return Edited::AtLimit;
    auto *whole = static_cast<char *>(Allocate(static_cast<size_t>(kept) + static_cast<size_t>(added) + 1));
    if (whole == nullptr) return Edited::NoMemory;
    memcpy(whole, old, static_cast<size_t>(start));
    memcpy(whole + start, text, static_cast<size_t>(added));
    memcpy(whole + start + added, old + end, static_cast<size_t>(length - end));
    Release(window->Text);
    window->Text = whole;
    edit.Anchor = edit.Caret = start + added;
    edit.Modified = true;
    ++edit.Serial;
    Note(window, changedState);
    return Edited::Changed;
}

Edited TypeCharacter(Window *window, EditState &edit, unsigned char character)
{
    constexpr unsigned char selectAll = 1; // Ctrl+A
    if (character == selectAll) {
        SelectText(window, edit, 0, -1);
        return Edited::Nothing;
    }
    if (character == VK_BACK) {
        if (SelectionStart(edit) == SelectionEnd(edit)) {
            if (edit.Caret == 0) return Edited::Nothing;
            edit.Anchor = edit.Caret - 1;
        }
        return ReplaceSelection(window, edit, "", false);
    }
    if (character == VK_RETURN && IsMultiline(window)) return ReplaceSelection(window, edit, "\r\n", true);
    if (character < ' ' || character == 0x7F) return Edited::Nothing;
    if (TakesDigitsOnly(window) && (character < '0' || character > '9')) return Edited::Nothing;
    const char text[2] = {static_cast<char>(Cased(window, character)), 0};
    return ReplaceSelection(window, edit, text, true);
}

Edited PressKey(Window *window, EditState &edit, WPARAM key, bool shift)
{
    const LONG length = LengthOf(window);
    LONG caret = edit.Caret;
    switch (key) {
    case VK_LEFT: caret = shift || edit.Anchor == edit.Caret ? caret - 1 : SelectionStart(edit); break;
    case VK_RIGHT: caret = shift || edit.Anchor == edit.Caret ? caret + 1 : SelectionEnd(edit); break;
    case VK_HOME: caret = 0; break;
    case VK_END: caret = length; break;
    case VK_DELETE:
        if (edit.Anchor == edit.Caret) {
            if (edit.Caret == length) return Edited::Nothing;
            edit.Anchor = edit.Caret + 1;
        }
        return ReplaceSelection(window, edit, "", false);
    default: return Edited::Nothing;
    }
    edit.Caret = Clamp(caret, length);
    if (!shift) edit.Anchor = edit.Caret;
    ++edit.Serial;
    Note(window, changedState);
    return Edited::Nothing;
}

Edited TakeTyped(Window *window, EditState &edit, const Input &input)
{
    const char *typed = input.Text != nullptr ? input.Text : "";
    // The screen may not have known of a newer text when the person typed: that one stays, and is shown
    // again.
    if (input.Serial != serialOfScript && input.Serial != edit.Serial) {
        Note(window, changedState);
        return Edited::Nothing;
    }
    const size_t length = strlen(typed);
    auto *taken = static_cast<char *>(Allocate(length + 1));
    if (taken == nullptr) return Edited::NoMemory;
    LONG count = 0;
    bool cut = false;
    for (size_t i = 0; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(typed[i]);
        if (TakesDigitsOnly(window) && (byte < '0' || byte > '9')) continue;
        if (count >= edit.Limit) {
            cut = true;
            break;
        }
        taken[count++] = static_cast<char>(Cased(window, byte));
    }
    taken[count] = 0;
    const bool same = strcmp(taken, TextOf(window)) == 0;
    if (!same) {
        Release(window->Text);
        window->Text = taken;
        edit.Modified = true;
    } else {
        Release(taken);
    }
    const bool placed = input.Serial != serialOfScript;
    edit.Caret = placed ? Clamp(input.Index, count) : count;
    edit.Anchor = placed ? Clamp(input.Index2, count) : count;
    if (input.Serial == serialOfScript || strcmp(typed, TextOf(window)) != 0) {
        ++edit.Serial; // this is not what stands on the screen
        Note(window, changedState);
    }
    return !same ? Edited::Changed : cut ? Edited::AtLimit : Edited::Nothing;
}

void TakeCaret(Window *window, EditState &edit, const Input &input)
{
    if (input.Serial != edit.Serial) return; // a newer one has been set meanwhile
    const LONG length = LengthOf(window);
    edit.Caret = Clamp(input.Index, length);
    edit.Anchor = Clamp(input.Index2, length);
}

void InputToEdit(HWND edit, const Input &input)
{
    if (input.Kind == InputKind::Caret) {
        const Locked locked(mutates);
        Window *window = FindEdit(edit);
        if (window != nullptr) TakeCaret(window, *window->Edit, input);
    }
    if (input.Kind != InputKind::Text) return;
    Edit(edit, [&input](Window *window, EditState &state) { return TakeTyped(window, state, input); });
}

LRESULT CALLBACK EditProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_GETDLGCODE: return DialogCodeOf(window, lParam);
    case WM_SETTEXT: return SetText(window, wParam, lParam);
    case WM_CHAR:
        Edit(window, [wParam](Window *edited, EditState &edit) {
            return TypeCharacter(edited, edit, static_cast<unsigned char>(wParam));
        });
        return 0;
    case WM_KEYDOWN: {
        const bool shift = GetKeyState(VK_SHIFT) < 0;
        Edit(window, [wParam, shift](Window *edited, EditState &edit) {
            return PressKey(edited, edit, wParam, shift);
        });
        return 0;
    }
    case WM_LBUTTONDOWN: SetFocus(window); return 0;
    case WM_SETFOCUS: NotifyParent(window, EN_SETFOCUS); return 0;
    case WM_KILLFOCUS: NotifyParent(window, EN_KILLFOCUS); return 0;
    case EM_GETSEL: return Selection(window, wParam, lParam);
    case EM_REPLACESEL: ReplaceSelectionOf(window, lParam); return 0;
    case EM_GETLINECOUNT: return CountLines(window);
    case EM_SETSEL:
    case EM_GETMODIFY:
    case EM_SETMODIFY:
    case EM_LIMITTEXT:
    case EM_GETLIMITTEXT:
    case EM_SETREADONLY: return EditMessage(window, message, wParam, lParam);
    default: return DefWindowProcA(window, message, wParam, lParam);
    }
}

} // namespace varkui
