#include "tests/support/windows/instructions.h"

#include "tests/support/windows/controls.h"
#include "tests/support/windows/person.h"
#include "tests/support/windows/pictures.h"
#include "window-system/include/varkui.h"

#include <algorithm>
#include <cstring>

namespace vark::test {

namespace {

constexpr char blanks[] = " \t\r";

Step Fail(const std::string &reason) { return {reason, nullptr}; }

Step Do(std::function<void()> act) { return {"", std::move(act)}; }

std::string Number(int number) { return std::to_string(number); }

std::string Quoted(const std::string &text) { return "\"" + Shown(text) + "\""; }

// Takes `word` and the blanks behind it off the front.
bool Take(std::string &rest, const std::string &word)
{
    if (!rest.starts_with(word)) return false;
    if (rest.size() > word.size() && strchr(blanks, rest[word.size()]) == nullptr) return false;
    rest.erase(0, std::min(rest.find_first_not_of(blanks, word.size()), rest.size()));
    return true;
}

bool TakeNumber(std::string &rest, int &number)
{
    const std::string word = rest.substr(0, rest.find_first_of(blanks));
    const bool isNumber =
        !word.empty() && word.size() < 10 && word.find_first_not_of("0123456789") == std::string::npos;
    if (!isNumber) return false;
    number = std::stoi(word);
    return Take(rest, word);
}

bool IsQuoted(const std::string &rest)
{
    return rest.size() >= 2 && rest.front() == '"' && rest.back() == '"';
}

std::string ValueOf(const std::string &rest)
{
    return FromShown(IsQuoted(rest) ? rest.substr(1, rest.size() - 2) : rest);
}

std::string Named(HWND window)
{
    if (IsBox(window)) return "a message box is open: " + Shown(TextOfBox(window));
    if (KindOf(window) != ControlKind::Dialog) return "the window " + Quoted(TextOf(window)) + " is open";
    const auto number = static_cast<int>(GetWindowContextHelpId(window));
    return "dialog " + Number(number) + " " + Quoted(TextOf(window)) + " is open";
}

// The control that an instruction begins with, and what follows it.
struct Control {
    HWND Window = nullptr;
    int Id = 0;
    std::string Rest;
    std::string Failure;
};

Control ControlOf(HWND top, std::string rest)
{
    Control control;
    if (!TakeNumber(rest, control.Id)) {
        control.Failure = "\"" + rest + "\" does not begin with the number of a control";
        return control;
    }
    control.Window = FindControl(top, control.Id);
    control.Rest = rest;
    if (control.Window == nullptr)
        control.Failure = "there is no control " + Number(control.Id) + ": " + Named(top);
    return control;
}

Control UsableControlOf(HWND top, const std::string &rest)
{
    Control control = ControlOf(top, rest);
    if (!control.Failure.empty()) return control;
    if (IsWindowVisible(control.Window) == FALSE) {
        control.Failure = "control " + Number(control.Id) + " is hidden";
    } else if (!IsUsable(control.Window)) {
        control.Failure = "control " + Number(control.Id) + " is disabled";
    }
    return control;
}

LRESULT Tell(HWND window, UINT message, WPARAM first = 0, LPARAM second = 0)
{
    return SendMessageA(window, message, first, second);
}

// A person's click first brings the window to the front.
void Activate(HWND control)
{
    HWND const outermost = GetAncestor(control, GA_ROOT);
    if (GetActiveWindow() != outermost) SetActiveWindow(outermost);
}

void Click(HWND button)
{
    Activate(button);
    Tell(button, BM_CLICK);
}

void ClickInto(HWND window, const RECT &place, bool twice)
{
    const LPARAM point = MAKELPARAM(place.left + 2, (place.top + place.bottom) / 2);
    Tell(window, WM_LBUTTONDOWN, MK_LBUTTON, point);
    Tell(window, WM_LBUTTONUP, 0, point);
    if (!twice) return;
    Tell(window, WM_LBUTTONDBLCLK, MK_LBUTTON, point);
    Tell(window, WM_LBUTTONUP, 0, point);
}

// ---- Boxes and dialogs ----

Step DialogStep(HWND top, const std::string &given)
{
    int number = 0;
    std::string rest = given;
    if (!TakeNumber(rest, number) || !rest.empty()) {
        return Fail("\"" + given + "\" is not the number of a dialog");
    }
    const bool isIt = KindOf(top) == ControlKind::Dialog && !IsBox(top) &&
                      GetWindowContextHelpId(top) == static_cast<DWORD>(number);
    return isIt ? Step{} : Fail("dialog " + Number(number) + " is expected, but " + Named(top));
}

Step BoxStep(HWND top, const std::string &given)
{
    struct Word {
        const char *Text;
        int Id;
    };
    constexpr Word words[] = {{"ok", IDOK},       {"cancel", IDCANCEL}, {"abort", IDABORT},
                              {"retry", IDRETRY}, {"ignore", IDIGNORE}, {"yes", IDYES},
                              {"no", IDNO}};
    std::string rest = given;
    const auto *word = std::find_if(std::begin(words), std::end(words),
                                    [&rest](const Word &each) { return Take(rest, each.Text); });
    if (word == std::end(words)) return Fail("\"box " + given + "\" names no answer");
    if (!IsBox(top)) return Fail("a message box is expected, but " + Named(top));
    const std::string shown = TextOfBox(top);
    const std::string wanted = ValueOf(rest);
    HWND const button = ButtonOfBox(top, word->Id);
    if (button == nullptr)
        return Fail("the message box has no button \"" + std::string(word->Text) + "\": " + Shown(shown));
    if (shown.find(wanted) == std::string::npos)
        return Fail("the message box reads " + Quoted(shown) + ", not " + Quoted(wanted));
    return Do([button] { Click(button); });
}

Step CloseStep(HWND top, const std::string &rest)
{
    if (!rest.empty()) return Fail("\"" + rest + "\" is too much");
    const bool closes =
        !IsBox(top) || ButtonOfBox(top, IDCANCEL) != nullptr || ButtonOfBox(top, IDOK) != nullptr;
    if (!closes) return Fail("the message box cannot be closed without an answer: " + Shown(TextOfBox(top)));
    return Do([top] { Tell(top, WM_SYSCOMMAND, SC_CLOSE); });
}

// ---- Controls ----

// Types a text in the place of what is there, letter by letter, so that limits and cases of the field hold.
void Type(HWND field, const std::string &text)
{
    if (TextOf(field) == text) return;
    Tell(field, EM_SETSEL, 0, -1);
    if (text.empty()) Tell(field, WM_CLEAR);
    for (const char letter : text) {
        Tell(field, WM_CHAR, static_cast<unsigned char>(letter), 1);
    }
}

Step TextStep(HWND top, const std::string &rest)
{
    const Control control = UsableControlOf(top, rest);
    if (!control.Failure.empty()) return Fail(control.Failure);
    HWND const field = FieldOf(control.Window);
    if (field == nullptr) return Fail("control " + Number(control.Id) + " takes no text");
    if ((GetWindowLongA(field, GWL_STYLE) & ES_READONLY) != 0)
        return Fail("control " + Number(control.Id) + " is read-only");
    const std::string value = ValueOf(control.Rest);
    return Do([field, value] {
        Activate(field);
        Type(field, value);
    });
}

enum class ButtonType : unsigned char { Push, Check, Radio, Other };

ButtonType TypeOf(HWND control)
{
    if (KindOf(control) != ControlKind::Button) return ButtonType::Other;
    switch (GetWindowLongA(control, GWL_STYLE) & BS_TYPEMASK) {
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

bool IsChecked(HWND control)
{
    return KindOf(control) == ControlKind::Button && Tell(control, BM_GETCHECK) == BST_CHECKED;
}

Step CheckStep(HWND top, const std::string &rest, bool check)
{
    const Control control = UsableControlOf(top, rest);
    if (!control.Failure.empty()) return Fail(control.Failure);
    if (!control.Rest.empty()) return Fail("\"" + control.Rest + "\" is too much");
    const ButtonType type = TypeOf(control.Window);
    if (type != ButtonType::Check && (type != ButtonType::Radio || !check))
        return Fail("control " + Number(control.Id) + " cannot be " + (check ? "checked" : "unchecked"));
    const bool isSo = type == ButtonType::Check && IsChecked(control.Window) == check;
    return Do([window = control.Window, isSo] {
        if (!isSo) Click(window);
    });
}

Step PressStep(HWND top, const std::string &rest)
{
    const Control control = UsableControlOf(top, rest);
    if (!control.Failure.empty()) return Fail(control.Failure);
    if (!control.Rest.empty()) return Fail("\"" + control.Rest + "\" is too much");
    if (TypeOf(control.Window) == ButtonType::Other)
        return Fail("control " + Number(control.Id) + " is no button");
    return Do([top, control] {
        // A refused press is not repeated by the answer without a person.
        if (reinterpret_cast<INT_PTR>(GetPropA(top, VARKUI_ANSWER_PROP)) == control.Id)
            SetUnseen(top, Unseen::Answered);
        Click(control.Window);
    });
}

Step FocusStep(HWND top, const std::string &rest)
{
    const Control control = UsableControlOf(top, rest);
    if (!control.Failure.empty()) return Fail(control.Failure);
    return Do([window = control.Window] {
        Activate(window);
        SetFocus(window);
    });
}

// The row that reads `text`, else the first that begins so; -1 for none.
int FindText(HWND control, const std::string &text)
{
    int beginning = -1;
    for (int row = 0; row < CountRows(control); ++row) {
        const std::string read = TextOfRow(control, row);
        if (read == text) return row;
        if (beginning == -1 && read.starts_with(text)) beginning = row;
    }
    return beginning;
}

void ClickRow(HWND list, int row, bool twice)
{
    RECT place = {};
    RECT client = {};
    GetClientRect(list, &client);
    Tell(list, LB_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&place));
    if (place.top < client.top || place.bottom > client.bottom) {
        Tell(list, LB_SETTOPINDEX, static_cast<WPARAM>(row));
        Tell(list, LB_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&place));
    }
    ClickInto(list, place, twice);
}

void SelectRow(HWND control, int row, bool twice)
{
    Activate(control);
    switch (KindOf(control)) {
    case ControlKind::TabControl: {
        RECT place = {};
        Tell(control, TCM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&place));
        ClickInto(control, place, false);
        RedrawWindow(GetAncestor(control, GA_ROOT), nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
        TakePicture(GetAncestor(control, GA_ROOT));
        break;
    }
    case ControlKind::ComboBox: {
        SetFocus(control);
        Tell(control, CB_SHOWDROPDOWN, TRUE);
        COMBOBOXINFO info = {};
        info.cbSize = sizeof info;
        GetComboBoxInfo(control, &info);
        ClickRow(info.hwndList, row, false);
        break;
    }
    default: ClickRow(control, row, twice); break;
    }
}

Step RowStep(HWND top, const std::string &rest, bool twice)
{
    const Control control = UsableControlOf(top, rest);
    if (!control.Failure.empty()) return Fail(control.Failure);
    const std::string id = Number(control.Id);
    const bool fits = twice ? KindOf(control.Window) == ControlKind::ListBox : CountRows(control.Window) >= 0;
    if (!fits) return Fail("control " + id + " has no rows to " + (twice ? "activate" : "select"));
    int row = -1;
    std::string named = control.Rest;
    if (IsQuoted(named)) {
        row = FindText(control.Window, ValueOf(named));
        if (row < 0) return Fail("control " + id + " has no row " + Quoted(ValueOf(named)));
    } else if (!TakeNumber(named, row) || !named.empty()) {
        return Fail("\"" + control.Rest + "\" is neither the number of a row nor a text in quotes");
    } else if (row >= CountRows(control.Window)) {
        return Fail("control " + id + " has no row " + Number(row) + ", but " +
                    Number(CountRows(control.Window)) + " rows");
    }
    return Do([window = control.Window, row, twice] { SelectRow(window, row, twice); });
}

// ---- Keys ----

struct KeyPress {
    WPARAM Key; // 0: known by its character alone
    WPARAM Character;
    bool Control;
    bool Shift;
    bool Alt;
};

struct KeyName {
    const char *Name;
    WPARAM Key;
};

constexpr KeyName keyNames[] = {
    {"Tab", VK_TAB},       {"Enter", VK_RETURN},  {"Escape", VK_ESCAPE},  {"Space", VK_SPACE},
    {"Up", VK_UP},         {"Down", VK_DOWN},     {"Left", VK_LEFT},      {"Right", VK_RIGHT},
    {"Home", VK_HOME},     {"End", VK_END},       {"PageUp", VK_PRIOR},   {"PageDown", VK_NEXT},
    {"Insert", VK_INSERT}, {"Delete", VK_DELETE}, {"Backspace", VK_BACK}, {"F1", VK_F1},
    {"F2", VK_F2},         {"F3", VK_F3},         {"F4", VK_F4},          {"F5", VK_F5},
    {"F6", VK_F6},         {"F7", VK_F7},         {"F8", VK_F8},          {"F9", VK_F9},
    {"F10", VK_F10},       {"F11", VK_F11},       {"F12", VK_F12},
};

bool NameKey(std::string name, KeyPress &press)
{
    const auto take = [&name](const char *modifier) {
        const bool isThere = name.starts_with(modifier);
        if (isThere) name.erase(0, strlen(modifier));
        return isThere;
    };
    for (;;) {
        if (take("Ctrl+")) {
            press.Control = true;
        } else if (take("Shift+")) {
            press.Shift = true;
        } else if (take("Alt+")) {
            press.Alt = true;
        } else {
            break;
        }
    }
    for (const KeyName &each : keyNames) {
        if (name != each.Name) continue;
        press.Key = each.Key;
        return true;
    }
    const std::string character = ValueOf(name);
    if (character.size() != 1) return false;
    press.Character = static_cast<unsigned char>(character[0]);
    return true;
}

// A character is posted as such, so that the machine's keyboard has no say in it; the system turns the
// other keys into characters itself.
void PressKey(const KeyPress &press)
{
    constexpr LPARAM once = 1;
    constexpr LPARAM withAlt = 1 << 29;
    constexpr auto released = static_cast<LPARAM>(0xC0000000);
    HWND window = GetFocus();
    if (window == nullptr) window = Topmost();
    HoldModifiers(press.Shift, press.Control, press.Alt);
    const LPARAM down = once | (press.Alt ? withAlt : 0);
    if (press.Key == 0) {
        constexpr WPARAM ofControl = 0x1F;
        PostMessageA(window, press.Alt ? WM_SYSCHAR : WM_CHAR,
                     press.Control ? press.Character & ofControl : press.Character, down);
        return;
    }
    PostMessageA(window, press.Alt ? WM_SYSKEYDOWN : WM_KEYDOWN, press.Key, down);
    PostMessageA(window, press.Alt ? WM_SYSKEYUP : WM_KEYUP, press.Key, down | released);
}

Step KeyStep(HWND, const std::string &rest)
{
    KeyPress press = {};
    if (!NameKey(rest, press)) return Fail("\"" + rest + "\" is not the name of a key");
    return Do([press] { PressKey(press); });
}

// ---- Expectations ----

Step ExpectTitle(HWND top, const std::string &rest)
{
    const std::string wanted = ValueOf(rest);
    if (TextOf(top) == wanted) return {};
    return Fail("the title is " + Quoted(TextOf(top)) + ", not " + Quoted(wanted));
}

Step ExpectFocus(HWND top, const std::string &rest)
{
    const Control control = ControlOf(top, rest);
    if (!control.Failure.empty()) return Fail(control.Failure);
    HWND const focus = GetFocus();
    if (focus != nullptr && (focus == control.Window || focus == FieldOf(control.Window))) return {};
    if (focus == nullptr) return Fail("control " + Number(control.Id) + " has not the focus, and none has");
    return Fail("control " + Number(GetDlgCtrlID(focus)) + " has the focus, not " + Number(control.Id));
}

Step ExpectText(HWND top, const std::string &rest)
{
    const Control control = ControlOf(top, rest);
    if (!control.Failure.empty()) return Fail(control.Failure);
    const std::string wanted = ValueOf(control.Rest);
    const std::string text = TextOf(control.Window);
    if (text == wanted) return {};
    return Fail("the text of control " + Number(control.Id) + " is " + Quoted(text) + ", not " +
                Quoted(wanted));
}

Step ExpectLabel(HWND top, const std::string &rest)
{
    const Control control = ControlOf(top, rest);
    if (!control.Failure.empty()) return Fail(control.Failure);
    HWND const label = LabelOf(control.Window);
    const std::string wanted = ValueOf(control.Rest);
    if (label == nullptr) return Fail("control " + Number(control.Id) + " has no label");
    if (TextOf(label) == wanted) return {};
    return Fail("the label of control " + Number(control.Id) + " is " + Quoted(TextOf(label)) + ", not " +
                Quoted(wanted));
}

Control ListOf(HWND top, const std::string &rest)
{
    Control control = ControlOf(top, rest);
    if (control.Failure.empty() && CountRows(control.Window) < 0)
        control.Failure = "control " + Number(control.Id) + " has no rows";
    return control;
}

Step ExpectRows(HWND top, const std::string &rest)
{
    Control control = ListOf(top, rest);
    if (!control.Failure.empty()) return Fail(control.Failure);
    int number = 0;
    if (!TakeNumber(control.Rest, number) || !control.Rest.empty())
        return Fail("\"" + control.Rest + "\" is not a number of rows");
    const int count = CountRows(control.Window);
    if (count == number) return {};
    return Fail("control " + Number(control.Id) + " has " + Number(count) + " rows, not " + Number(number));
}

Step ExpectRow(HWND top, const std::string &rest)
{
    const Control control = ListOf(top, rest);
    if (!control.Failure.empty()) return Fail(control.Failure);
    const int selected = SelectedRow(control.Window);
    const std::string text = selected >= 0 ? TextOfRow(control.Window, selected) : "";
    std::string named = control.Rest;
    int number = 0;
    const bool byNumber = !IsQuoted(named) && TakeNumber(named, number) && named.empty();
    const std::string wanted = ValueOf(control.Rest);
    const bool holds = control.Rest.empty() ? selected < 0
                       : byNumber           ? selected == number
                                            : selected >= 0 && text == wanted;
    if (holds) return {};
    const std::string id = "control " + Number(control.Id);
    if (selected < 0) return Fail(id + " has no row selected, not " + Quoted(wanted));
    return Fail(id + " has row " + Number(selected) + " " + Quoted(text) + " selected, not " +
                Quoted(wanted));
}

struct StateWord {
    const char *Word;
    bool (*Holds)(HWND control);
};

constexpr StateWord stateWords[] = {
    {"enabled", IsUsable},
    {"disabled", [](HWND control) { return !IsUsable(control); }},
    {"checked", IsChecked},
    {"unchecked", [](HWND control) { return !IsChecked(control); }},
    {"visible", [](HWND control) { return IsWindowVisible(control) != FALSE; }},
    {"hidden", [](HWND control) { return IsWindowVisible(control) == FALSE; }},
};

struct Word {
    const char *Text;
    Step (*Do)(HWND top, const std::string &rest);
    bool ToBoxes; // may be done to a message box
};

constexpr Word expectations[] = {
    {"title", ExpectTitle, true}, {"focus", ExpectFocus, true}, {"text", ExpectText, true},
    {"label", ExpectLabel, true}, {"rows", ExpectRows, true},   {"row", ExpectRow, true},
};

Step ExpectStep(HWND top, const std::string &given)
{
    for (const Word &each : expectations) {
        std::string rest = given;
        if (Take(rest, each.Text)) return each.Do(top, rest);
    }
    for (const StateWord &each : stateWords) {
        std::string rest = given;
        if (!Take(rest, each.Word)) continue;
        const Control control = ControlOf(top, rest);
        if (!control.Failure.empty()) return Fail(control.Failure);
        return each.Holds(control.Window) ? Step{}
                                          : Fail("control " + Number(control.Id) + " is not " + each.Word);
    }
    return Fail("\"expect " + given + "\" is not an instruction");
}

constexpr Word words[] = {
    {"dialog", DialogStep, false},
    {"box", BoxStep, true},
    {"text", TextStep, false},
    {"check", [](HWND top, const std::string &rest) { return CheckStep(top, rest, true); }, false},
    {"uncheck", [](HWND top, const std::string &rest) { return CheckStep(top, rest, false); }, false},
    {"press", PressStep, false},
    {"select", [](HWND top, const std::string &rest) { return RowStep(top, rest, false); }, false},
    {"activate", [](HWND top, const std::string &rest) { return RowStep(top, rest, true); }, false},
    {"focus", FocusStep, false},
    {"key", KeyStep, true},
    {"close", CloseStep, true},
    {"expect", ExpectStep, true},
};

} // namespace

Instructions InstructionsOf(const std::string &text)
{
    Instructions list;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        list.Lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return list;
}

const std::string *NextInstruction(Instructions &list)
{
    while (list.Next < list.Lines.size()) {
        std::string &line = list.Lines[list.Next++];
        line.erase(0, std::min(line.find_first_not_of(blanks), line.size()));
        line.erase(line.find_last_not_of(blanks) + 1);
        if (!line.empty() && line[0] != '#') return &line;
    }
    return nullptr;
}

Step StepOf(HWND top, const std::string &line)
{
    for (const Word &each : words) {
        std::string rest = line;
        if (!Take(rest, each.Text)) continue;
        if (IsBox(top) && !each.ToBoxes) return Fail("\"" + line + "\" does not fit: " + Named(top));
        return each.Do(top, rest);
    }
    return Fail("\"" + line + "\" is not an instruction");
}

} // namespace vark::test
