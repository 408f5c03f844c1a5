#include "window-system/front_end.h"

namespace varkui {

namespace {

// The buttons of each set in the order in which they are shown, ended by 0, and the one that does the least.
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

} // namespace varkui

using namespace varkui;

int MessageBoxA(HWND /*owner*/, LPCSTR text, LPCSTR caption, UINT style)
{
    const int safest = SafestAnswer(style);
    if (safest == 0) return 0;
    const Box box{text != nullptr ? text : "", caption != nullptr ? caption : "", style};

    const FrontEnd frontEnd = CurrentFrontEnd();
    LogText("box", box.Text);
    if (frontEnd == FrontEnd::Script) {
        const int answer = AnswerFromScript(box);
        if (answer != 0) return answer;
    }
    WriteToStandardError(box.Caption, box.Text);
    return safest;
}
