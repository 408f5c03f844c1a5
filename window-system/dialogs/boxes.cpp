#include "window-system/dialogs/boxes.h"

#include "text/windows1252.h"
#include "window-system/dialogs/dialogs.h"
#include "window-system/include/dialog_table.h"
#include "window-system/model/handles.h"
#include "window-system/model/model.h"
#include "window-system/model/texts.h"
#include "window-system/model/threads.h"
#include "window-system/model/tree.h"
#include "window-system/model/window.h"

#include <cstring>

namespace varkui {

namespace {

using namespace text;

// The buttons of each set in their order on the screen, ended by 0, and the safest one.
struct ButtonSet {
    int Buttons[4];
    int Safest;
};

constexpr ButtonSet buttonSets[] = {
    {{IDOK, 0}, IDOK},
    {{IDOK, IDCANCEL, 0}, IDCANCEL},
    {{IDABORT, IDRETRY, IDIGNORE, 0}, IDABORT},
    {{IDYES, IDNO, IDCANCEL, 0}, IDCANCEL},
    {{IDYES, IDNO, 0}, IDNO},
    {{IDRETRY, IDCANCEL, 0}, IDCANCEL},
};

const ButtonSet *ButtonsOf(UINT style)
{
    const UINT type = style & MB_TYPEMASK;
    return type < sizeof buttonSets / sizeof buttonSets[0] ? &buttonSets[type] : nullptr;
}

const char *LabelOf(int id)
{
    switch (id) {
    case IDOK: return "OK";
    case IDABORT: return "A&bbrechen"_w;
    case IDRETRY: return "&Wiederholen"_w;
    case IDIGNORE: return "&Ignorieren"_w;
    case IDYES: return "&Ja"_w;
    case IDNO: return "&Nein"_w;
    default: return "Abbrechen"_w;
    }
}

// The room of a text, in dialog units: lines of at most `lineLength` characters.
constexpr int lineLength = 60;
constexpr int unitsOfCharacter = 4;
constexpr int unitsOfLine = 8;
constexpr int mostLines = 40;

int CountLines(const char *text)
{
    int lines = 1;
    int length = 0;
    for (; *text != 0 && lines < mostLines; ++text) {
        ++length;
        if (*text != '\n' && length <= lineLength) continue;
        ++lines;
        length = 0;
    }
    return lines;
}

// The answer of Escape and the close box, 0 for none.
int ClosingAnswer(UINT style)
{
    if (BoxHasButton(style, IDCANCEL)) return IDCANCEL;
    return BoxHasButton(style, IDOK) ? IDOK : 0;
}

INT_PTR CALLBACK BoxProcedure(HWND box, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_INITDIALOG) {
        const auto style = static_cast<UINT>(lParam);
        int first = 0;
        {
            const Locked locked(mutates);
            Window *made = Find(box);
            if (made == nullptr) return FALSE;
            made->Dialog->IsBox = true;
            made->Dialog->BoxStyle = style;
            const ButtonSet *set = ButtonsOf(style);
            const UINT number = (style & MB_DEFMASK) >> 8;
            if (set == nullptr) return FALSE;
            first = number < 3 && set->Buttons[number] != 0 ? set->Buttons[number] : set->Buttons[0];
            made->Dialog->DefaultId = first;
        }
        SetFocus(GetDlgItem(box, first));
        return FALSE;
    }
    if (message != WM_COMMAND || HIWORD(wParam) != BN_CLICKED) return FALSE;
    UINT style = 0;
    {
        const Locked locked;
        const Window *found = Find(box);
        if (found == nullptr || found->Kind != Kind::Dialog) return FALSE;
        style = found->Dialog->BoxStyle;
    }
    const int id = LOWORD(wParam);
    const int answer = BoxHasButton(style, id) ? id : id == IDCANCEL ? ClosingAnswer(style) : 0;
    if (answer != 0) EndDialog(box, answer);
    return TRUE;
}

// Shows the box and returns its answer, 0 without memory for its windows.
int Run(HWND owner, const char *text, const char *caption, UINT style, const ButtonSet &set)
{
    constexpr int16_t margin = 7;
    constexpr int16_t iconSize = 20;
    constexpr int16_t buttonWidth = 56;
    constexpr int16_t buttonHeight = 14;
    constexpr int16_t gap = 4;
    const auto textHeight = static_cast<int16_t>(CountLines(text) * unitsOfLine);
    constexpr int16_t textWidth = lineLength * unitsOfCharacter;
    const auto top = static_cast<int16_t>((textHeight > iconSize ? textHeight : iconSize) + 2 * margin);
    constexpr int16_t width = textWidth + iconSize + 3 * margin;

    DialogControl controls[4] = {};
    controls[0] = {DialogControlKind::Text,
                   boxTextId,
                   text,
                   margin * 2 + iconSize,
                   margin,
                   textWidth,
                   textHeight,
                   SS_NOPREFIX,
                   0};
    uint16_t count = 1;
    for (int i = 0; i < 3 && set.Buttons[i] != 0; ++i) {
        const int id = set.Buttons[i];
        controls[count++] = {DialogControlKind::PushButton,
                             id,
                             LabelOf(id),
                             static_cast<int16_t>(margin + i * (buttonWidth + gap)),
                             top,
                             buttonWidth,
                             buttonHeight,
                             0,
                             0};
    }
    const DialogTable table = {0,        caption, width, static_cast<int16_t>(top + buttonHeight + margin),
                               controls, count,   0};
    DLGTEMPLATE *dialogTemplate = MakeDialogTemplate(table);
    if (dialogTemplate == nullptr) return 0;
    const INT_PTR answer = RunDialog(dialogTemplate, owner, BoxProcedure, static_cast<LPARAM>(style));
    FreeDialogTemplate(dialogTemplate);
    return answer > 0 ? static_cast<int>(answer) : 0;
}

BoxAnswer HostOfCaller()
{
    const Locked locked;
    const Thread *thread = Self();
    return thread != nullptr ? thread->Boxes : BoxAnswer{};
}

} // namespace

int SafestAnswer(UINT style)
{
    const ButtonSet *set = ButtonsOf(style);
    return set != nullptr ? set->Safest : 0;
}

bool BoxHasButton(UINT style, int id)
{
    const ButtonSet *set = ButtonsOf(style);
    if (set == nullptr || id == 0) return false;
    for (const int button : set->Buttons) {
        if (button == 0) return false;
        if (button == id) return true;
    }
    return false;
}

bool IsBox(const Window *window) { return window->Kind == Kind::Dialog && window->Dialog->IsBox; }

const char *TextOfBox(Window *box)
{
    const Window *text = FindControl(box, boxTextId);
    return text != nullptr ? TextOf(text) : "";
}

} // namespace varkui

using namespace varkui;

int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT style)
{
    const ButtonSet *set = ButtonsOf(style);
    if (set == nullptr) return 0;
    if (text == nullptr) text = "";
    if (caption == nullptr) caption = "";
    if (const BoxAnswer host = HostOfCaller(); host.Answer != nullptr) {
        frontEnd.AnsweredByHost(text);
        const int answer = host.Answer(text, style, host.Context);
        return BoxHasButton(style, answer) ? answer : set->Safest;
    }
    const int answer = Run(owner, text, caption, style, *set);
    if (answer != 0) return answer;
    // Without memory for its windows, or when its thread is to end, a box is answered at once.
    frontEnd.Unasked(caption, text);
    return set->Safest;
}

BOOL VarkUiAnswerBoxes(VARKUIANSWERBOX answer, void *context)
{
    const Locked locked;
    Thread *thread = Self();
    if (thread == nullptr) return FALSE;
    thread->Boxes = {answer, context};
    return TRUE;
}
