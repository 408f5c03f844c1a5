#include "window-system/front-ends/instructions.h"

#include "window-system/dialogs/boxes.h"
#include "window-system/dialogs/in_view.h"
#include "window-system/front-ends/expectations.h"
#include "window-system/front-ends/headless.h"
#include "window-system/front-ends/steps.h"
#include "window-system/model/collation.h"
#include "window-system/model/handles.h"
#include "window-system/model/input.h"
#include "window-system/model/memory.h"
#include "window-system/model/queue.h"
#include "window-system/model/rows.h"
#include "window-system/model/texts.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

#include <cstring>

namespace varkui {

namespace {

// The control at `rest`, which must be shown and enabled; null fails the step.
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

// ---- Boxes and dialogs ----

void DoDialog(Step &step, const char *rest)
{
    LONG number = 0;
    if (!TakeNumber(rest, number) || *rest != 0) {
        Fail(step, "\"%s\" is not the number of a dialog", rest);
    } else if (step.Top->Kind != Kind::Dialog || IsBox(step.Top) || step.Top->Dialog->Number != number) {
        Fail(step, "dialog %d is expected, but %s", number, NamedWindow(step.Top).Text);
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
        Fail(step, "a message box is expected, but %s", NamedWindow(step.Top).Text);
        return;
    }
    const char *shown = TextOfBox(step.Top);
    const char *wanted = ValueOf(step, After(rest, word->Word));
    const Window *button = FindControl(step.Top, word->Id);
    if (button == nullptr) {
        Fail(step, "the message box has no button \"%s\": %s", word->Word, ShownText(shown).Text);
    } else if (strstr(shown, wanted) == nullptr) {
        Fail(step, "the message box reads \"%s\", not \"%s\"", ShownText(shown).Text, ShownText(wanted).Text);
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
        Fail(step, "the message box cannot be closed without an answer: %s",
             ShownText(TextOfBox(step.Top)).Text);
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
        if (row == -1) Fail(step, "control %d has no row \"%s\"", id, ShownText(text).Text);
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

struct Instruction {
    const char *Word;
    void (*Do)(Step &step, const char *rest);
    bool ToBoxes; // may be done to a message box
};

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
            Fail(step, "\"%s\" does not fit: %s", line, NamedWindow(step.Top).Text);
        } else {
            each.Do(step, rest);
        }
        return;
    }
    Fail(step, "\"%s\" is not an instruction", line);
}

} // namespace varkui
