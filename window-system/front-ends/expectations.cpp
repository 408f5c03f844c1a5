#include "window-system/front-ends/expectations.h"

#include "window-system/dialogs/in_view.h"
#include "window-system/front-ends/steps.h"
#include "window-system/model/handles.h"
#include "window-system/model/rows.h"
#include "window-system/model/texts.h"
#include "window-system/model/tree.h"

#include <cstring>

namespace varkui {

namespace {

void ExpectTitle(Step &step, const char *rest)
{
    const char *wanted = ValueOf(step, rest);
    if (strcmp(TextOf(step.Top), wanted) == 0) return;
    Fail(step, "the title is \"%s\", not \"%s\"", ShownText(TextOf(step.Top)).Text, ShownText(wanted).Text);
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
         ShownText(TextOf(control)).Text, ShownText(wanted).Text);
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
             ShownText(TextOf(label)).Text, ShownText(wanted).Text);
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
        Fail(step, "control %d has no row selected, not \"%s\"", id, ShownText(wanted).Text);
    } else {
        Fail(step, "control %d has row %d \"%s\" selected, not \"%s\"", id, selected, ShownText(text).Text,
             ShownText(wanted).Text);
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

struct Expectation {
    const char *Word;
    void (*Do)(Step &step, const char *rest);
};

constexpr Expectation expectations[] = {
    {"title", ExpectTitle}, {"focus", ExpectFocus}, {"text", ExpectText},
    {"label", ExpectLabel}, {"rows", ExpectRows},   {"row", ExpectRow},
};

} // namespace

void DoExpect(Step &step, const char *rest)
{
    for (const Expectation &each : expectations) {
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

} // namespace varkui
