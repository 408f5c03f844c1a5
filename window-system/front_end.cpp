#include "window-system/front_end.h"
#include "window-system/screen.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace varkui {

namespace {

pthread_once_t chosenOnce = PTHREAD_ONCE_INIT;
std::atomic<FrontEnd> chosen{FrontEnd::Headless};

bool IsSet(const char *name)
{
    const char *value = secure_getenv(name);
    return value != nullptr && *value != 0;
}

void Choose()
{
    const char *wish = secure_getenv("VARK_UI");
    if (wish == nullptr || *wish == 0)
        wish = IsSet("DISPLAY") || IsSet("WAYLAND_DISPLAY") ? "gtk" : "headless";
    constexpr char script[] = "script:";
    if (strncmp(wish, script, sizeof script - 1) == 0) {
        if (OpenScript(wish + sizeof script - 1)) chosen = FrontEnd::Script;
    } else if (strcmp(wish, "gtk") == 0) {
        if (StartScreen()) chosen = FrontEnd::Screen;
    } else if (strcmp(wish, "headless") != 0) {
        char line[256];
        snprintf(line, sizeof line, "VARK_UI=%s is not known; going on without a screen", wish);
        WriteToStandardError("varkui", line);
    }
}

} // namespace

FrontEnd CurrentFrontEnd()
{
    pthread_once(&chosenOnce, Choose);
    return chosen;
}

void FallBackToHeadless()
{
    chosen = FrontEnd::Headless;
    WakeAllThreads();
}

namespace {

bool Ask(Thread *thread)
{
    if (IsPlayedTo(thread)) return PlayNext(thread);
    switch (chosen.load()) {
    case FrontEnd::Script: return PlayScript(thread);
    case FrontEnd::Screen:
        thread->HandledKey = thread->HeardKey;
        TellScreen();
        return false;
    case FrontEnd::Headless: break;
    }
    return AnswerUnseen(thread);
}

void Show()
{
    if (chosen != FrontEnd::Screen) return;
    const Locked locked;
    TellScreen();
}

void Idle()
{
    const Locked locked;
    Thread *thread = Self();
    if (thread != nullptr) LetGoOfScript(thread, false);
}

void ThreadEnds(Thread *thread)
{
    LetGoOfScript(thread, true);
    FreePlayed(thread);
}

void Forget()
{
    ForgetScreen();
    chosen = FrontEnd::Headless;
}

void Unasked(const char *caption, const char *text)
{
    LogText("box", text);
    WriteToStandardError(caption, text);
}

} // namespace

const FrontEndCalls frontEndCalls = {
    [] { CurrentFrontEnd(); }, Ask, Show, LogDialog, Idle, ThreadEnds, Forget, Unasked};

} // namespace varkui

BOOL VarkUiHasUser(void) { return varkui::CurrentFrontEnd() != varkui::FrontEnd::Headless ? TRUE : FALSE; }
