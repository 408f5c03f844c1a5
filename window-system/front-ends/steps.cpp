#include "window-system/front-ends/steps.h"

#include "text/windows1252.h"
#include "window-system/dialogs/boxes.h"
#include "window-system/dialogs/in_view.h"
#include "window-system/model/rows.h"
#include "window-system/model/texts.h"
#include "window-system/model/tree.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace varkui {

void Fail(Step &step, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): it was started one line above
    vsnprintf(step.Failure, sizeof step.Failure, format, arguments);
    va_end(arguments);
    step.Failed = true;
}

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

const char *ValueOf(const Step &step, const char *rest)
{
    const size_t length = strlen(rest);
    text::FromUtf8(rest, step.Value, length + 1);
    if (!IsQuoted(rest)) return step.Value;
    step.Value[strlen(step.Value) - 1] = 0;
    return step.Value + 1;
}

ShownText::ShownText(const char *text)
{
    text::ToUtf8(text, Text, sizeof Text);
    for (char *at = Text; *at != 0; ++at) {
        if (*at == '\n' || *at == '\r') *at = ' ';
    }
}

NamedWindow::NamedWindow(Window *window)
{
    if (window->Kind == Kind::Dialog && window->Dialog->IsBox) {
        snprintf(Text, sizeof Text, "a message box is open: %s", ShownText(TextOfBox(window)).Text);
    } else if (window->Kind == Kind::Dialog) {
        snprintf(Text, sizeof Text, "dialog %d \"%s\" is open", window->Dialog->Number,
                 ShownText(TextOf(window)).Text);
    } else {
        snprintf(Text, sizeof Text, "the window \"%s\" is open", ShownText(TextOf(window)).Text);
    }
}

Window *TakeControl(Step &step, const char *&rest)
{
    LONG id = 0;
    if (!TakeNumber(rest, id)) {
        Fail(step, "\"%s\" does not begin with the number of a control", rest);
        return nullptr;
    }
    Window *control = FindControl(step.Top, id);
    if (control == nullptr) Fail(step, "there is no control %d: %s", id, NamedWindow(step.Top).Text);
    return control;
}

bool IsEmpty(Step &step, const char *rest)
{
    if (*rest == 0) return true;
    Fail(step, "\"%s\" is too much", rest);
    return false;
}

namespace {

// Rows of a list box or combo box, null for a control without.
const Rows *RowsOf(const Window *control)
{
    if (control->Kind == Kind::ListBox) return &control->List->Rows;
    if (control->Kind == Kind::ComboBox) return &control->Combo->Rows;
    return nullptr;
}

} // namespace

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

} // namespace varkui
