#include "window-system/controls/editing.h"

#include "window-system/model/collation.h"
#include "window-system/model/input.h"
#include "window-system/model/memory.h"
#include "window-system/model/texts.h"
#include "window-system/model/window.h"

#include <cstring>

namespace varkui {

namespace {

LONG LengthOf(const Window *window) { return static_cast<LONG>(strlen(TextOf(window))); }

LONG Clamp(LONG value, LONG high) { return value < 0 ? 0 : value > high ? high : value; }

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

} // namespace

bool IsMultiline(const Window *window)
{
    return window->Kind == Kind::Edit && (window->Style & ES_MULTILINE) != 0;
}

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
    // A person may have typed before the screen knew a newer text: the newer one stays and is shown again.
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

} // namespace varkui
