#include "window-system/front-ends/front_end.h"

#include "window-system/dialogs/boxes.h"
#include "window-system/front-ends/headless.h"
#include "window-system/front-ends/in_charge.h"
#include "window-system/front-ends/lines.h"
#include "window-system/front-ends/plays.h"
#include "window-system/front-ends/screen.h"
#include "window-system/front-ends/script.h"
#include "window-system/model/handles.h"
#include "window-system/model/model.h"
#include "window-system/model/texts.h"
#include "window-system/model/threads.h"
#include "window-system/model/window.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <pthread.h>

namespace varkui {

namespace {

pthread_mutex_t choosing = PTHREAD_MUTEX_INITIALIZER;
std::atomic<bool> isChosen;

bool IsSet(const char *name)
{
    const char *value = secure_getenv(name);
    return value != nullptr && *value != 0;
}

// False when the choice has to be repeated, after a passing lack of resources.
bool Choose()
{
    const char *wish = secure_getenv("VARK_UI");
    if (wish == nullptr || *wish == 0)
        wish = IsSet("DISPLAY") || IsSet("WAYLAND_DISPLAY") ? "gtk" : "headless";
    constexpr char script[] = "script:";
    if (strncmp(wish, script, sizeof script - 1) == 0) {
        if (OpenScript(wish + sizeof script - 1)) PutInCharge(FrontEnd::Script);
    } else if (strcmp(wish, "gtk") == 0) {
        const Start start = StartScreen();
        if (start == Start::Done) PutInCharge(FrontEnd::Screen);
        return start != Start::NotNow;
    } else if (strcmp(wish, "headless") != 0) {
        char line[256];
        snprintf(line, sizeof line, "VARK_UI=%s ist unbekannt. Es geht ohne Bildschirm weiter.", wish);
        WriteToStandardError("varkui", line);
    }
    return true;
}

// The front end in charge now. The first call reads $VARK_UI and starts it, so the lock must not be held
// then.
FrontEnd CurrentFrontEnd()
{
    if (isChosen) return InCharge();
    pthread_mutex_lock(&choosing);
    if (!isChosen) isChosen = Choose();
    pthread_mutex_unlock(&choosing);
    return InCharge();
}

bool Ask(Thread *thread)
{
    if (IsPlayedTo(thread)) return PlayNext(thread);
    switch (InCharge()) {
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
    if (InCharge() != FrontEnd::Screen) return;
    const Locked locked;
    TellScreen();
}

// Writes a dialog or box that is shown for the first time to the log.
void LogDialog(HWND window)
{
    char prefix[32] = "box";
    char text[longestLine] = "";
    {
        const Locked locked;
        Window *dialog = Find(window);
        if (dialog == nullptr || dialog->Kind != Kind::Dialog || dialog->Parent != nullptr) return;
        if (dialog->Dialog->Logged || (dialog->Style & WS_VISIBLE) == 0) return;
        dialog->Dialog->Logged = true;
        const char *shown = dialog->Dialog->IsBox ? TextOfBox(dialog) : TextOf(dialog);
        snprintf(text, sizeof text, "%s", shown);
        if (!dialog->Dialog->IsBox) snprintf(prefix, sizeof prefix, "dialog %d", dialog->Dialog->Number);
    }
    LogText(prefix, text);
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
    pthread_mutex_init(&choosing, nullptr); // another thread may have held it
    PutInCharge(FrontEnd::Headless);
}

void Unasked(const char *caption, const char *text)
{
    LogText("box", text);
    WriteToStandardError(caption, text);
}

} // namespace

const FrontEndCalls frontEndCalls = {[] { CurrentFrontEnd(); },
                                     Ask,
                                     Show,
                                     LogDialog,
                                     Idle,
                                     ThreadEnds,
                                     Forget,
                                     Unasked,
                                     [](const char *text) { LogText("box", text); }};

} // namespace varkui

using namespace varkui;

BOOL VarkUiHasUser(void) { return varkui::CurrentFrontEnd() != varkui::FrontEnd::Headless ? TRUE : FALSE; }
