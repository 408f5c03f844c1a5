// The library's messages are boxes here. Each is answered where nobody sees windows, as it comes up and with
// the button that does the least, and its text is kept; a dialog is cancelled.
#include "tools/common/texts.h"
#include "tools/vark/reasons.h"

#include <cstdio>
#include <utility>
#include <vector>
#include <windows.h>

namespace cli {

namespace {

constexpr char dialogClass[] = "#32770";

std::vector<std::string> told; // that nobody has taken yet
std::string passed;            // on, and not written yet
int catchers = 0;

std::string TextOfWindow(HWND window)
{
    std::string text(static_cast<size_t>(GetWindowTextLengthA(window)) + 1, '\0');
    text.resize(static_cast<size_t>(GetWindowTextA(window, text.data(), static_cast<int>(text.size()))));
    return tools::ToUtf8(text);
}

std::string ClassOf(HWND window)
{
    char name[32] = "";
    GetClassNameA(window, name, sizeof name);
    return name;
}

// The text of a message box: that of the one static control that has any, since the other is its sign.
std::string TextOfBox(HWND box)
{
    for (HWND each = GetWindow(box, GW_CHILD); each != nullptr; each = GetWindow(each, GW_HWNDNEXT)) {
        std::string text = ClassOf(each) == "Static" ? TextOfWindow(each) : "";
        if (!text.empty()) return text;
    }
    return {};
}

WPARAM SafestAnswer(HWND box)
{
    for (const int answer : {IDCANCEL, IDNO}) {
        if (GetDlgItem(box, answer) != nullptr) return static_cast<WPARAM>(answer);
    }
    return IDOK;
}

void Keep(std::string text)
{
    for (char &character : text) {
        if (character == '\n' || character == '\r') character = ' ';
    }
    if (catchers > 0) {
        told.push_back(std::move(text));
    } else {
        std::fprintf(stderr, "MERIDA: %s\n", text.c_str());
    }
}

LRESULT CALLBACK OnWindow(int code, WPARAM which, LPARAM more)
{
    HWND window = reinterpret_cast<HWND>(which);
    if (code == HCBT_ACTIVATE && ClassOf(window) == dialogClass) {
        // The library's dialogs carry their number there.
        if (GetWindowContextHelpId(window) == 0) Keep(TextOfBox(window));
        PostMessageA(window, WM_COMMAND, SafestAnswer(window), 0);
    }
    return CallNextHookEx(nullptr, code, which, more);
}

} // namespace

void UseNoWindows() { SetWindowsHookExA(WH_CBT, OnWindow, nullptr, GetCurrentThreadId()); }

// Nothing is kept in a file here, so it always catches.
ReasonCatcher::ReasonCatcher(const std::string &)
{
    catches = true;
    ++catchers;
}

ReasonCatcher::~ReasonCatcher()
{
    told.clear();
    if (--catchers > 0) return;
    std::fputs(std::exchange(passed, {}).c_str(), stderr);
}

std::string ReasonCatcher::Take()
{
    std::string reasons;
    for (const std::string &text : std::exchange(told, {})) {
        if (!reasons.empty()) reasons += ' ';
        reasons += text;
    }
    return reasons;
}

// Inside of another one it waits for the end of that one.
void ReasonCatcher::Pass(const std::string &text) const
{
    if (catchers > 1) {
        passed += text;
    } else {
        std::fputs(text.c_str(), stderr);
    }
}

FILE *ReasonCatcher::Real() const { return stderr; }

std::string ReasonCatcher::TakePartReason() { return {}; }

} // namespace cli
