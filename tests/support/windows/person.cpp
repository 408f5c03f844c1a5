#include "tests/support/windows/person.h"

#include "tests/support/windows/controls.h"
#include "tests/support/windows/instructions.h"
#include "tests/support/windows/pictures.h"
#include "tests/support/windows/shims.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <mutex>
#include <utility>

namespace vark::test {

namespace {

constexpr char loggedProperty[] = "varkPersonHasLogged";
constexpr char unseenProperty[] = "varkPersonAnswered";

enum class FrontEnd : unsigned char { Unchosen, Headless, Script, Nobody };

// The script of the process, and whom it serves: one thread until that has no window open any more, then
// the next, in the order in which they came.
struct Script {
    Instructions List;
    DWORD Holder;
    std::vector<DWORD> Waiting;
};

std::mutex choosing;
FrontEnd frontEnd;
Script script;
LONG mostRows;

// A host's instructions for its own thread. They lie behind a pointer, which has no destructor: that of a
// thread's own variable would run here when its place has been given to others.
struct Played {
    Instructions List;
    bool IsUnseen; // nobody else answers, until the host takes the list back
    size_t FailedLine;
    std::string Failure;
};

thread_local Played *played; // null when there are none
thread_local UINT_PTR timer;
thread_local bool holdsModifiers;
thread_local HWND busy; // with what the person did to it: the next line may be for a box that is not up yet

// ---- Lines ----

std::string Variable(const char *name)
{
    char value[MAX_PATH] = "";
    const DWORD length = GetEnvironmentVariableA(name, value, sizeof value);
    return length < sizeof value ? value : "";
}

void LogLine(const std::string &line)
{
    const std::string path = Variable("VARK_UI_LOG");
    if (!path.empty()) std::ofstream(path, std::ios::binary | std::ios::app) << line << '\n';
}

void WriteToStandardError(const std::string &line)
{
    const std::string whole = line + "\n";
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), whole.data(), static_cast<DWORD>(whole.size()), &written,
              nullptr);
}

// ---- The choice ----

bool ReadScript(const std::string &path)
{
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        WriteToStandardError("script: line 0: " + path + ": cannot be read");
        LogLine("script: line 0: " + path + ": cannot be read");
        return false;
    }
    script.List = InstructionsOf({std::istreambuf_iterator<char>(stream), {}});
    return true;
}

FrontEnd Chosen()
{
    const std::lock_guard<std::mutex> guard(choosing);
    if (frontEnd != FrontEnd::Unchosen) return frontEnd;
    const std::string wish = Variable("VARK_UI");
    frontEnd = wish == "gtk" ? FrontEnd::Nobody : FrontEnd::Headless;
    if (wish.starts_with("script:") && ReadScript(wish.substr(7))) frontEnd = FrontEnd::Script;
    return frontEnd;
}

void FallBackToHeadless()
{
    const std::lock_guard<std::mutex> guard(choosing);
    frontEnd = FrontEnd::Headless;
}

// ---- Nobody ----

void AnswerDialog(HWND dialog)
{
    const Unseen stage = UnseenOf(dialog);
    if (stage == Unseen::Untouched) {
        SetUnseen(dialog, Unseen::Answered);
        const auto wanted = static_cast<int>(reinterpret_cast<INT_PTR>(GetPropA(dialog, VARKUI_ANSWER_PROP)));
        HWND const button = wanted != 0 ? FindControl(dialog, wanted) : nullptr;
        if (button != nullptr) {
            SetActiveWindow(dialog);
            SendMessageA(button, BM_CLICK, 0, 0);
            return;
        }
    }
    if (stage <= Unseen::Answered) {
        SetUnseen(dialog, Unseen::Cancelled);
        SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED),
                     reinterpret_cast<LPARAM>(FindControl(dialog, IDCANCEL)));
    } else if (stage == Unseen::Cancelled) {
        SetUnseen(dialog, Unseen::Closed);
        SendMessageA(dialog, WM_SYSCOMMAND, SC_CLOSE, 0);
    } else {
        SetUnseen(dialog, Unseen::Forced);
        EndDialog(dialog, 0);
    }
}

void AnswerUnseen(HWND top)
{
    const Unseen stage = UnseenOf(top);
    if (stage == Unseen::Forced) return;
    if (IsBox(top) && stage == Unseen::Untouched) {
        HWND const button = SafestButton(top);
        SetUnseen(top, button != nullptr ? Unseen::Answered : Unseen::Closed);
        WriteToStandardError(Shown(TextOf(top)) + ": " + Shown(TextOfBox(top)));
        if (button != nullptr) SendMessageA(button, BM_CLICK, 0, 0);
    } else if (KindOf(top) == ControlKind::Dialog) {
        AnswerDialog(top);
    } else {
        SetUnseen(top, Unseen::Forced);
        SendMessageA(top, WM_SYSCOMMAND, SC_CLOSE, 0);
    }
}

// ---- Instructions ----

bool IsPlayed()
{
    return played != nullptr &&
           (played->IsUnseen || played->FailedLine != 0 || played->List.Next < played->List.Lines.size());
}

// Dialogs that are not filled in as the host wants must not be accepted.
void KeepFromAccepting()
{
    for (HWND window : WindowsOfThread()) {
        if (KindOf(window) == ControlKind::Dialog && !IsBox(window)) SetUnseen(window, Unseen::Answered);
    }
}

// Does what a line comes to. Returns whether the next one may follow at once.
bool Perform(HWND top, const std::string &line, const Step &step)
{
    LogLine(line);
    if (!step.Act) return true;
    HWND const outer = std::exchange(busy, top);
    step.Act();
    busy = outer;
    return false;
}

bool PlayNext(HWND top)
{
    const std::string *line = played->FailedLine == 0 ? NextInstruction(played->List) : nullptr;
    if (line == nullptr) {
        if (played->IsUnseen || played->FailedLine != 0) AnswerUnseen(top);
        return false;
    }
    const Step step = StepOf(top, *line);
    if (step.Failure.empty()) return Perform(top, std::string(*line), step);
    played->FailedLine = played->List.Next;
    played->Failure = step.Failure;
    KeepFromAccepting();
    return false;
}

bool HasTurn()
{
    const DWORD self = GetCurrentThreadId();
    const std::lock_guard<std::mutex> guard(choosing);
    if (script.Holder == self) return true;
    const auto place = std::find(script.Waiting.begin(), script.Waiting.end(), self);
    if (place == script.Waiting.end()) {
        script.Waiting.push_back(self);
    }
    if (script.Holder != 0 || script.Waiting.front() != self) return false;
    script.Waiting.erase(script.Waiting.begin());
    script.Holder = self;
    return true;
}

void LetGoOfScript()
{
    const DWORD self = GetCurrentThreadId();
    const std::lock_guard<std::mutex> guard(choosing);
    if (script.Holder == self) script.Holder = 0;
    std::erase(script.Waiting, self);
}

bool PlayScript(HWND top)
{
    if (!HasTurn()) return false;
    const std::string *line = NextInstruction(script.List);
    if (line == nullptr) {
        FallBackToHeadless();
        return true;
    }
    const Step step = StepOf(top, *line);
    if (step.Failure.empty()) return Perform(top, std::string(*line), step);
    const std::string complaint = "script: line " + std::to_string(script.List.Next) + ": " + step.Failure;
    FallBackToHeadless();
    WriteToStandardError(complaint);
    LogLine(complaint);
    return false;
}

// ---- Windows ----

// Dialogs and boxes shown since the last look, the outermost first.
void LogNew()
{
    std::vector<HWND> windows = WindowsOfThread();
    std::reverse(windows.begin(), windows.end());
    for (HWND window : windows) {
        const bool isNew = IsWindowVisible(window) != FALSE && KindOf(window) == ControlKind::Dialog &&
                           GetPropA(window, loggedProperty) == nullptr;
        if (!isNew) continue;
        SetPropA(window, loggedProperty, reinterpret_cast<HANDLE>(1));
        const auto number = std::to_string(GetWindowContextHelpId(window));
        TakePicture(window);
        LogLine(IsBox(window) ? "box " + Shown(TextOfBox(window))
                              : "dialog " + number + " " + Shown(TextOf(window)));
    }
}

void CALLBACK Look(HWND, UINT, UINT_PTR, DWORD)
{
    if (holdsModifiers) HoldModifiers(false, false, false);
    LogNew();
    for (;;) {
        HWND const top = Topmost();
        if (top == nullptr || top == busy) return;
        const FrontEnd chosen = Chosen();
        if (IsPlayed()) {
            if (!PlayNext(top)) return;
        } else if (chosen == FrontEnd::Script) {
            if (!PlayScript(top)) return;
        } else {
            if (chosen == FrontEnd::Headless) AnswerUnseen(top);
            return;
        }
    }
}

// A list box or combo box that takes no more than so many rows.
LRESULT CALLBACK LimitedProcedure(HWND window, UINT message, WPARAM first, LPARAM second)
{
    const auto procedure = reinterpret_cast<WNDPROC>(GetPropA(window, "varkPersonProcedure"));
    const bool adds = message == LB_ADDSTRING || message == LB_INSERTSTRING || message == CB_ADDSTRING ||
                      message == CB_INSERTSTRING;
    if (adds && mostRows > 0 && CountRows(window) >= mostRows) return LB_ERRSPACE;
    return CallWindowProcA(procedure, window, message, first, second);
}

void LimitRows(HWND window)
{
    const ControlKind kind = KindOf(window);
    if (mostRows <= 0 || (kind != ControlKind::ListBox && kind != ControlKind::ComboBox)) return;
    const LONG procedure = SetWindowLongA(window, GWL_WNDPROC, reinterpret_cast<LONG>(LimitedProcedure));
    SetPropA(window, "varkPersonProcedure", reinterpret_cast<HANDLE>(procedure));
}

// Whether nothing but `window` waits for a person on this thread.
bool IsLastOfThread(HWND window)
{
    for (HWND each : WindowsOfThread()) {
        if (each != window && IsWindowVisible(each) != FALSE) return false;
    }
    return true;
}

LRESULT CALLBACK OnWindow(int code, WPARAM first, LPARAM second)
{
    constexpr UINT betweenLooks_ms = 10; // the least that the system takes
    auto const window = reinterpret_cast<HWND>(first);
    if ((code == HCBT_CREATEWND || code == HCBT_ACTIVATE) && timer == 0)
        timer = SetTimer(nullptr, 0, betweenLooks_ms, Look);
    if (code == HCBT_CREATEWND) LimitRows(window);
    if (code == HCBT_DESTROYWND && GetAncestor(window, GA_PARENT) == GetDesktopWindow() &&
        IsLastOfThread(window))
        LetGoOfScript();
    return CallNextHookEx(nullptr, code, first, second);
}

void NTAPI OnThread(PVOID, DWORD reason, PVOID)
{
    if (reason == DLL_PROCESS_ATTACH || reason == DLL_THREAD_ATTACH)
        SetWindowsHookExA(WH_CBT, OnWindow, nullptr, GetCurrentThreadId());
    if (reason == DLL_THREAD_DETACH) LetGoOfScript();
}

} // namespace

// The loader calls what stands in this section when a thread begins or ends.
extern "C" {
extern const PIMAGE_TLS_CALLBACK personOnThread;
__attribute__((section(".CRT$XLL"), used)) const PIMAGE_TLS_CALLBACK personOnThread = OnThread;
}

void SetUnseen(HWND window, Unseen stage)
{
    SetPropA(window, unseenProperty, reinterpret_cast<HANDLE>(static_cast<INT_PTR>(stage)));
}

Unseen UnseenOf(HWND window)
{
    return static_cast<Unseen>(reinterpret_cast<INT_PTR>(GetPropA(window, unseenProperty)));
}

void HoldModifiers(bool shift, bool control, bool alt)
{
    constexpr BYTE isDown = 0x80;
    BYTE keys[256] = {};
    GetKeyboardState(keys);
    keys[VK_SHIFT] = shift ? isDown : 0;
    keys[VK_CONTROL] = control ? isDown : 0;
    keys[VK_MENU] = alt ? isDown : 0;
    SetKeyboardState(keys);
    holdsModifiers = shift || control || alt;
}

} // namespace vark::test

using namespace vark::test;

char *mkdtemp(char *pattern)
{
    static std::mutex naming;
    static DWORD serial = GetTickCount() ^ (GetCurrentProcessId() << 12);
    const std::lock_guard<std::mutex> guard(naming);
    const std::string kept(pattern, strlen(pattern) - 6);
    for (int tries = 0; tries < 1000; ++tries) {
        serial = serial * 1664525 + 1013904223;
        char digits[7];
        snprintf(digits, sizeof digits, "%06lx", serial >> 8);
        if (CreateDirectoryA((kept + digits).c_str(), nullptr) == FALSE) continue;
        memcpy(pattern + kept.size(), digits, 6);
        return pattern;
    }
    return nullptr;
}

BOOL VarkUiPlay(LPCSTR instructions, BOOL isUnseen)
{
    if (instructions == nullptr) return FALSE;
    delete played;
    played = new Played{InstructionsOf(instructions), isUnseen != FALSE, 0, ""};
    return TRUE;
}

int VarkUiPlayed(LPSTR failure, int size)
{
    size_t line = played != nullptr ? played->FailedLine : 0;
    std::string reason = played != nullptr ? played->Failure : "";
    if (played != nullptr && line == 0 && NextInstruction(played->List) != nullptr) {
        line = played->List.Next;
        reason = "nothing was open any more";
    }
    if (failure != nullptr && size > 0)
        snprintf(failure, static_cast<size_t>(size), "%s", line != 0 ? reason.c_str() : "");
    delete played;
    played = nullptr;
    return static_cast<int>(line);
}

void VarkUiLimitLists(LONG rows) { mostRows = rows; }

BOOL VarkUiHasUser() { return Chosen() == FrontEnd::Headless ? FALSE : TRUE; }
