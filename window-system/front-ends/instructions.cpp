#include "window-system/front-ends/instructions.h"

#include "text/windows1252.h"
#include "window-system/dialogs/boxes.h"
#include "window-system/dialogs/in_view.h"
#include "window-system/front-ends/headless.h"
#include "window-system/model/collation.h"
#include "window-system/model/handles.h"
#include "window-system/model/input.h"
#include "window-system/model/memory.h"
#include "window-system/model/queue.h"
#include "window-system/model/rows.h"
#include "window-system/model/texts.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace varkui {

namespace {

__attribute__((format(printf, 2, 3))) void Fail(Step &step, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): it was started one line above
    vsnprintf(step.Failure, sizeof step.Failure, format, arguments);
    va_end(arguments);
    step.Failed = true;
}

// The rest of `line` behind `word` and blanks, or null when the line does not begin with that word.
const char *After(const char *line, const char *word)
{
    const size_t length = strlen(word);
    if (strncmp(line, word, length) != 0) return nullptr;
    const char *rest = line + length;
    if (*rest != 0 && *rest != ' ' && *rest != '\t') return nullptr;
    while (*rest == ' ' || *rest == '\t') {
        ++rest;
    }
    return rest;
}

// Reads a decimal number at `rest` and moves behind it and the blanks that follow; false when there is none.
bool TakeNumber(const char *&rest, LONG &number)
{
    int64_t value = 0;
    const char *at = rest;
    for (; *at >= '0' && *at <= '9' && value <= INT32_MAX; ++at) {
        value = value * 10 + (*at - '0');
    }
    if (at == rest || value > INT32_MAX || (*at != 0 && *at != ' ' && *at != '\t')) return false;
    while (*at == ' ' || *at == '\t') {
        ++at;
    }
    rest = at;
    number = static_cast<LONG>(value);
    return true;
}

bool IsQuoted(const char *rest)
{
    const size_t length = strlen(rest);
    return length >= 2 && rest[0] == '"' && rest[length - 1] == '"';
}

// A value in Windows-1252: a pair of quotes around it keeps its blanks and is taken off. It is valid until
// the next one.
const char *ValueOf(const Step &step, const char *rest)
{
    const size_t length = strlen(rest);
    text::FromUtf8(rest, step.Value, length + 1);
    if (!IsQuoted(rest)) return step.Value;
    step.Value[strlen(step.Value) - 1] = 0;
    return step.Value + 1;
}

// A Windows-1252 text for a message, in UTF-8 on one line.
struct Shown {
    char Text[600];
    explicit Shown(const char *text)
    {
        text::ToUtf8(text, Text, sizeof Text);
        for (char *at = Text; *at != 0; ++at) {
            if (*at == '\n' || *at == '\r') *at = ' ';
        }
    }
};

// "dialog 101 "Title"" or the like.
struct Named {
    char Text[800];
    explicit Named(Window *window)
    {
        if (window->Kind == Kind::Dialog && window->Dialog->IsBox) {
            snprintf(Text, sizeof Text, "a message box is open: %s", Shown(TextOfBox(window)).Text);
        } else if (window->Kind == Kind::Dialog) {
            snprintf(Text, sizeof Text, "dialog %d \"%s\" is open", window->Dialog->Number,
                     Shown(TextOf(window)).Text);
        } else {
            snprintf(Text, sizeof Text, "the window \"%s\" is open", Shown(TextOf(window)).Text);
        }
    }
};

// The control that an instruction begins with by its id; `rest` moves behind it. Null fails the step.
Window *TakeControl(Step &step, const char *&rest)
{
    LONG id = 0;
    if (!TakeNumber(rest, id)) {
        Fail(step, "\"%s\" does not begin with the number of a control", rest);
        return nullptr;
    }
    Window *control = FindControl(step.Top, id);
    if (control == nullptr) Fail(step, "there is no control %d: %s", id, Named(step.Top).Text);
    return control;
}

// The same for a control that must be shown and enabled.
Window *TakeUsable(Step &step, const char *&rest)
{
    Window *control = TakeControl(step, rest);
    if (control == nullptr) return nullptr;
    const auto id = static_cast<int>(control->Id);
    if (!IsShown(control)) {
        Fail(step, "control %d is hidden", id);
        return nullptr;
    }
    if (!AreEnabled(control)) {
        Fail(step, "control %d is disabled", id);
        return nullptr;
    }
    return control;
}

void PostTo(Step &step, const Window *control, Input *input)
{
    if (!PostInput(control->Handle, input)) Fail(step, "there is no memory for the instruction");
}

bool IsEmpty(Step &step, const char *rest)
{
    if (*rest == 0) return true;
    Fail(step, "\"%s\" is too much", rest);
    return false;
}

// ---- Boxes and dialogs ----

void DoDialog(Step &step, const char *rest)
{
    LONG number = 0;
    if (!TakeNumber(rest, number) || *rest != 0) {
        Fail(step, "\"%s\" is not the number of a dialog", rest);
    } else if (step.Top->Kind != Kind::Dialog || IsBox(step.Top) || step.Top->Dialog->Number != number) {
        Fail(step, "dialog %d is expected, but %s", number, Named(step.Top).Text);
    }
}

struct AnswerWord {
    const char *Word;
    int Id;
};

constexpr AnswerWord answerWords[] = {{"ok", IDOK},       {"cancel", IDCANCEL}, {"abort", IDABORT},
                                      {"retry", IDRETRY}, {"ignore", IDIGNORE}, {"yes", IDYES},
                                      {"no", IDNO}};

void DoBox(Step &step, const char *rest)
{
    const AnswerWord *word = nullptr;
    for (const AnswerWord &candidate : answerWords) {
        if (After(rest, candidate.Word) != nullptr) word = &candidate;
    }
    if (word == nullptr) {
        Fail(step, "\"box %s\" names no answer", rest);
        return;
    }
    if (!IsBox(step.Top)) {
        Fail(step, "a message box is expected, but %s", Named(step.Top).Text);
        return;
    }
    const char *shown = TextOfBox(step.Top);
    const char *wanted = ValueOf(step, After(rest, word->Word));
    const Window *button = FindControl(step.Top, word->Id);
    if (button == nullptr) {
        Fail(step, "the message box has no button \"%s\": %s", word->Word, Shown(shown).Text);
    } else if (strstr(shown, wanted) == nullptr) {
        Fail(step, "the message box reads \"%s\", not \"%s\"", Shown(shown).Text, Shown(wanted).Text);
    } else {
        PostTo(step, button, MakeInput(InputKind::Click));
    }
}

void DoClose(Step &step, const char *rest)
{
    if (!IsEmpty(step, rest)) return;
    const Window *top = step.Top;
    const bool closes = !IsBox(top) || BoxHasButton(top->Dialog->BoxStyle, IDCANCEL) ||
                        BoxHasButton(top->Dialog->BoxStyle, IDOK);
    if (!closes) {
        Fail(step, "the message box cannot be closed without an answer: %s", Shown(TextOfBox(step.Top)).Text);
        return;
    }
    PostTo(step, top, MakeInput(InputKind::Close));
}

// ---- Controls ----

bool HasField(const Window *control)
{
    if (control->Kind == Kind::ComboBox) return (control->Style & CBS_TYPEMASK) != CBS_DROPDOWNLIST;
    return control->Kind == Kind::Edit;
}

void DoText(Step &step, const char *rest)
{
    const Window *control = TakeUsable(step, rest);
    if (control == nullptr) return;
    const auto id = static_cast<int>(control->Id);
    if (!HasField(control)) {
        Fail(step, "control %d takes no text", id);
        return;
    }
    if (control->Kind == Kind::Edit && (control->Style & ES_READONLY) != 0) {
        Fail(step, "control %d is read-only", id);
        return;
    }
    const char *value = ValueOf(step, rest);
    Input *input = MakeInput(InputKind::Text);
    if (input != nullptr) input->Text = CopyText(value, strlen(value));
    PostTo(step, control, input);
}

enum class ButtonType : unsigned char { Push, Check, Radio, Other };

ButtonType TypeOf(const Window *control)
{
    if (control->Kind != Kind::Button) return ButtonType::Other;
    switch (control->Style & BS_TYPEMASK) {
    case BS_PUSHBUTTON:
    case BS_DEFPUSHBUTTON: return ButtonType::Push;
    case BS_CHECKBOX:
    case BS_AUTOCHECKBOX:
    case BS_3STATE:
    case BS_AUTO3STATE: return ButtonType::Check;
    case BS_RADIOBUTTON:
    case BS_AUTORADIOBUTTON: return ButtonType::Radio;
    default: return ButtonType::Other;
    }
}

void PutCheck(Step &step, const char *rest, bool check)
{
    const Window *control = TakeUsable(step, rest);
    if (control == nullptr || !IsEmpty(step, rest)) return;
    const ButtonType type = TypeOf(control);
    const bool fits = type == ButtonType::Check || (type == ButtonType::Radio && check);
    if (!fits) {
        Fail(step, "control %d cannot be %s", static_cast<int>(control->Id), check ? "checked" : "unchecked");
        return;
    }
    const bool isSo = type == ButtonType::Check && (control->Button->Check == BST_CHECKED) == check;
    if (!isSo) PostTo(step, control, MakeInput(InputKind::Click));
}

void DoCheck(Step &step, const char *rest) { PutCheck(step, rest, true); }

void DoUncheck(Step &step, const char *rest) { PutCheck(step, rest, false); }

void DoPress(Step &step, const char *rest)
{
    const Window *control = TakeUsable(step, rest);
    if (control == nullptr || !IsEmpty(step, rest)) return;
    if (TypeOf(control) == ButtonType::Other) {
        Fail(step, "control %d is no button", static_cast<int>(control->Id));
        return;
    }
    // A refused press is not repeated by the answer without a person.
    if (control->Id == WantedAnswer(step.Top)) step.Top->Answer = Unseen::Answered;
    PostTo(step, control, MakeInput(InputKind::Click));
}

void DoFocus(Step &step, const char *rest)
{
    const Window *control = TakeUsable(step, rest);
    if (control == nullptr || !IsEmpty(step, rest)) return;
    PostTo(step, control, MakeInput(InputKind::Focus));
}

// Rows of a list box or combo box, null for a control without.
const Rows *RowsOf(const Window *control)
{
    if (control->Kind == Kind::ListBox) return &control->List->Rows;
    if (control->Kind == Kind::ComboBox) return &control->Combo->Rows;
    return nullptr;
}

LONG CountRows(const Window *control)
{
    if (control->Kind == Kind::TabControl) return control->Tabs->Count;
    const Rows *rows = RowsOf(control);
    return rows != nullptr ? rows->Count : -1;
}

const char *TextOfRow(const Window *control, LONG index)
{
    if (control->Kind == Kind::TabControl) return control->Tabs->Items[index].Text;
    return RowAt(*RowsOf(control), index)->Text;
}

LONG SelectedRow(const Window *control)
{
    if (control->Kind == Kind::TabControl) return control->Tabs->Selected;
    if (control->Kind == Kind::ComboBox) return control->Combo->Selected;
    return control->List->Selected;
}

// The row that reads `text`, else the first that begins so; -1 for none.
LONG FindText(const Window *control, const char *text)
{
    const LONG count = CountRows(control);
    LONG beginning = -1;
    for (LONG i = 0; i < count; ++i) {
        const char *row = TextOfRow(control, i);
        if (strcmp(row, text) == 0) return i;
        if (beginning == -1 && strncmp(row, text, strlen(text)) == 0) beginning = i;
    }
    return beginning;
}

// The row named at `rest`, by its number or, in quotes, its text; -1 fails the step.
LONG TakeRow(Step &step, const Window *control, const char *rest)
{
    const auto id = static_cast<int>(control->Id);
    LONG row = -1;
    if (IsQuoted(rest)) {
        const char *text = ValueOf(step, rest);
        row = FindText(control, text);
        if (row == -1) Fail(step, "control %d has no row \"%s\"", id, Shown(text).Text);
    } else if (!TakeNumber(rest, row) || *rest != 0) {
        row = -1;
        Fail(step, "\"%s\" is neither the number of a row nor a text in quotes", rest);
    } else if (row >= CountRows(control)) {
        Fail(step, "control %d has no row %d, but %d rows", id, row, CountRows(control));
        row = -1;
    }
    return row;
}

void ChooseRow(Step &step, const char *rest, InputKind kind)
{
    const Window *control = TakeUsable(step, rest);
    if (control == nullptr) return;
    const bool fits = kind == InputKind::Pick ? control->Kind == Kind::ListBox : CountRows(control) >= 0;
    if (!fits) {
        Fail(step, "control %d has no rows to %s", static_cast<int>(control->Id),
             kind == InputKind::Pick ? "activate" : "select");
        return;
    }
    const LONG row = TakeRow(step, control, rest);
    if (row != -1) PostTo(step, control, MakeInput(kind, row));
}

void DoSelect(Step &step, const char *rest) { ChooseRow(step, rest, InputKind::Select); }

void DoActivate(Step &step, const char *rest) { ChooseRow(step, rest, InputKind::Pick); }

// ---- Keys ----

struct KeyName {
    const char *Name;
    unsigned Key;
    unsigned char Character;
};

constexpr KeyName keyNames[] = {
    {"Tab", VK_TAB, '\t'},    {"Enter", VK_RETURN, '\r'}, {"Escape", VK_ESCAPE, 0x1B},
    {"Space", VK_SPACE, ' '}, {"Up", VK_UP, 0},           {"Down", VK_DOWN, 0},
    {"Left", VK_LEFT, 0},     {"Right", VK_RIGHT, 0},     {"Home", VK_HOME, 0},
    {"End", VK_END, 0},       {"PageUp", VK_PRIOR, 0},    {"PageDown", VK_NEXT, 0},
    {"Insert", VK_INSERT, 0}, {"Delete", VK_DELETE, 0},   {"Backspace", VK_BACK, 0x08},
    {"F1", VK_F1, 0},         {"F2", VK_F1 + 1, 0},       {"F3", VK_F1 + 2, 0},
    {"F4", VK_F1 + 3, 0},     {"F5", VK_F1 + 4, 0},       {"F6", VK_F1 + 5, 0},
    {"F7", VK_F1 + 6, 0},     {"F8", VK_F1 + 7, 0},       {"F9", VK_F1 + 8, 0},
    {"F10", VK_F1 + 9, 0},    {"F11", VK_F1 + 10, 0},     {"F12", VK_F1 + 11, 0},
};

// Takes "Ctrl+" and the like off the front of `name`.
bool TakeModifier(const char *&name, const char *modifier)
{
    const size_t length = strlen(modifier);
    if (strncmp(name, modifier, length) != 0) return false;
    name += length;
    return true;
}

bool NameKey(const Step &step, const char *name, KeyPress &press)
{
    for (;;) {
        if (TakeModifier(name, "Ctrl+")) {
            press.Control = true;
        } else if (TakeModifier(name, "Shift+")) {
            press.Shift = true;
        } else if (TakeModifier(name, "Alt+")) {
            press.Alt = true;
        } else {
            break;
        }
    }
    for (const KeyName &each : keyNames) {
        if (strcmp(each.Name, name) != 0) continue;
        press.Key = each.Key;
        press.Character = each.Character;
        return true;
    }
    const char *character = ValueOf(step, name);
    if (character[0] == 0 || character[1] != 0) return false;
    constexpr unsigned otherKey = 0xE7; // a key known only by what it types
    const unsigned char lower = LowerCase(static_cast<unsigned char>(*character));
    press.Character = static_cast<unsigned char>(*character);
    press.Key = lower >= 'a' && lower <= 'z'   ? lower - 'a' + 'A'
                : lower >= '0' && lower <= '9' ? lower
                                               : otherKey;
    return true;
}

void DoKeyName(Step &step, const char *rest)
{
    KeyPress press = {};
    if (!NameKey(step, rest, press)) {
        Fail(step, "\"%s\" is not the name of a key", rest);
    } else if (!PostKey(step.Owner, press)) {
        Fail(step, "there is no memory for the instruction");
    }
}

// ---- Expectations ----

void ExpectTitle(Step &step, const char *rest)
{
    const char *wanted = ValueOf(step, rest);
    if (strcmp(TextOf(step.Top), wanted) == 0) return;
    Fail(step, "the title is \"%s\", not \"%s\"", Shown(TextOf(step.Top)).Text, Shown(wanted).Text);
}

void ExpectFocus(Step &step, const char *rest)
{
    const Window *control = TakeControl(step, rest);
    if (control == nullptr || !IsEmpty(step, rest)) return;
    const Window *focus = Find(step.Owner->Focus);
    if (focus == control) return;
    if (focus == nullptr) {
        Fail(step, "control %d has not the focus, and none has", static_cast<int>(control->Id));
    } else {
        Fail(step, "control %d has the focus, not %d", static_cast<int>(focus->Id),
             static_cast<int>(control->Id));
    }
}

void ExpectText(Step &step, const char *rest)
{
    const Window *control = TakeControl(step, rest);
    if (control == nullptr) return;
    const char *wanted = ValueOf(step, rest);
    if (strcmp(TextOf(control), wanted) == 0) return;
    Fail(step, "the text of control %d is \"%s\", not \"%s\"", static_cast<int>(control->Id),
         Shown(TextOf(control)).Text, Shown(wanted).Text);
}

// The text that names a field or list, with its "&".
void ExpectLabel(Step &step, const char *rest)
{
    const Window *control = TakeControl(step, rest);
    if (control == nullptr) return;
    const Window *label = LabelOf(control);
    const char *wanted = ValueOf(step, rest);
    if (label == nullptr) {
        Fail(step, "control %d has no label", static_cast<int>(control->Id));
    } else if (strcmp(TextOf(label), wanted) != 0) {
        Fail(step, "the label of control %d is \"%s\", not \"%s\"", static_cast<int>(control->Id),
             Shown(TextOf(label)).Text, Shown(wanted).Text);
    }
}

// A control with rows at `rest`; null fails the step.
const Window *TakeList(Step &step, const char *&rest)
{
    const Window *control = TakeControl(step, rest);
    if (control == nullptr || CountRows(control) >= 0) return control;
    Fail(step, "control %d has no rows", static_cast<int>(control->Id));
    return nullptr;
}

void ExpectRows(Step &step, const char *rest)
{
    const Window *control = TakeList(step, rest);
    if (control == nullptr) return;
    LONG count = 0;
    if (!TakeNumber(rest, count) || *rest != 0) {
        Fail(step, "\"%s\" is not a number of rows", rest);
    } else if (count != CountRows(control)) {
        Fail(step, "control %d has %d rows, not %d", static_cast<int>(control->Id), CountRows(control),
             count);
    }
}

// The selected row, by its number or text; nothing means that none is selected.
void ExpectRow(Step &step, const char *rest)
{
    const Window *control = TakeList(step, rest);
    if (control == nullptr) return;
    const auto id = static_cast<int>(control->Id);
    const LONG selected = SelectedRow(control);
    const char *text = selected >= 0 ? TextOfRow(control, selected) : "";
    LONG number = -1;
    const char *digits = rest;
    const bool byNumber = TakeNumber(digits, number) && *digits == 0;
    const char *wanted = ValueOf(step, rest);
    const bool holds = *rest == 0 ? selected < 0
                       : byNumber ? selected == number
                                  : selected >= 0 && strcmp(text, wanted) == 0;
    if (holds) return;
    if (selected < 0) {
        Fail(step, "control %d has no row selected, not \"%s\"", id, Shown(wanted).Text);
    } else {
        Fail(step, "control %d has row %d \"%s\" selected, not \"%s\"", id, selected, Shown(text).Text,
             Shown(wanted).Text);
    }
}

struct StateWord {
    const char *Word;
    bool (*Holds)(const Window *control);
};

bool IsChecked(const Window *control)
{
    return control->Kind == Kind::Button && control->Button->Check == BST_CHECKED;
}

constexpr StateWord stateWords[] = {
    {"enabled", [](const Window *control) { return AreEnabled(control); }},
    {"disabled", [](const Window *control) { return !AreEnabled(control); }},
    {"checked", [](const Window *control) { return IsChecked(control); }},
    {"unchecked", [](const Window *control) { return !IsChecked(control); }},
    {"visible", [](const Window *control) { return IsShown(control); }},
    {"hidden", [](const Window *control) { return !IsShown(control); }},
};

struct Instruction {
    const char *Word;
    void (*Do)(Step &step, const char *rest);
    bool ToBoxes; // may be done to a message box
};

constexpr Instruction expectations[] = {
    {"title", ExpectTitle, true}, {"focus", ExpectFocus, true}, {"text", ExpectText, true},
    {"label", ExpectLabel, true}, {"rows", ExpectRows, true},   {"row", ExpectRow, true},
};

void DoExpect(Step &step, const char *rest)
{
    for (const Instruction &each : expectations) {
        const char *behind = After(rest, each.Word);
        if (behind == nullptr) continue;
        each.Do(step, behind);
        return;
    }
    for (const StateWord &each : stateWords) {
        const char *behind = After(rest, each.Word);
        if (behind == nullptr) continue;
        const Window *control = TakeControl(step, behind);
        if (control == nullptr || !IsEmpty(step, behind)) return;
        if (!each.Holds(control))
            Fail(step, "control %d is not %s", static_cast<int>(control->Id), each.Word);
        return;
    }
    Fail(step, "\"expect %s\" is not an instruction", rest);
}

constexpr Instruction instructions[] = {
    {"dialog", DoDialog, false},   {"box", DoBox, true},
    {"text", DoText, false},       {"check", DoCheck, false},
    {"uncheck", DoUncheck, false}, {"press", DoPress, false},
    {"select", DoSelect, false},   {"activate", DoActivate, false},
    {"focus", DoFocus, false},     {"key", DoKeyName, true},
    {"close", DoClose, true},      {"expect", DoExpect, true},
};

} // namespace

void Do(Step &step, const char *line)
{
    for (const Instruction &each : instructions) {
        const char *rest = After(line, each.Word);
        if (rest == nullptr) continue;
        if (IsBox(step.Top) && !each.ToBoxes) {
            Fail(step, "\"%s\" does not fit: %s", line, Named(step.Top).Text);
        } else {
            each.Do(step, rest);
        }
        return;
    }
    Fail(step, "\"%s\" is not an instruction", line);
}

} // namespace varkui
