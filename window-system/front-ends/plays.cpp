#include "window-system/front-ends/plays.h"

#include "window-system/dialogs/boxes.h"
#include "window-system/dialogs/in_view.h"
#include "window-system/front-ends/headless.h"
#include "window-system/front-ends/instruction_list.h"
#include "window-system/front-ends/instructions.h"
#include "window-system/front-ends/lines.h"
#include "window-system/model/memory.h"
#include "window-system/model/model.h"
#include "window-system/model/threads.h"
#include "window-system/model/window.h"

#include <cstdio>
#include <cstring>

namespace varkui {

// A host's instructions for one of its threads.
struct Played {
    Lines List;
    bool IsUnseen; // nobody else answers, until the host takes the list back
    int FailedLine;
    char Failure[longestPlayFailure];
};

bool IsPlayedTo(const Thread *thread)
{
    const Played *played = thread->Played;
    return played != nullptr &&
           (played->IsUnseen || played->FailedLine != 0 || played->List.Next < played->List.End);
}

namespace {

// Dialogs not filled in as the host wants must not be accepted.
void KeepFromAccepting(Thread *thread)
{
    for (Window *each = model.FirstTop; each != nullptr; each = each->Next) {
        const bool isDialog = each->Kind == Kind::Dialog && !IsBox(each);
        if (each->Thread == thread && isDialog) each->Answer = Unseen::Answered;
    }
}

} // namespace

bool PlayNext(Thread *thread)
{
    Played &played = *thread->Played;
    Step step = {};
    step.Owner = thread;
    step.Top = Topmost(thread);
    step.Value = played.List.Value;
    if (step.Top == nullptr || played.FailedLine != 0) return AnswerUnseen(thread);
    const char *line = NextInstruction(played.List);
    // The last line may be followed by comments alone: the thread looks again who answers now.
    if (line == nullptr) return played.IsUnseen ? AnswerUnseen(thread) : true;
    Do(step, line);
    if (step.Failed) {
        played.FailedLine = played.List.Number;
        KeepFromAccepting(thread);
        memcpy(played.Failure, step.Failure, sizeof played.Failure);
        return true;
    }
    Unlock();
    LogLine(line);
    Lock();
    return true;
}

void FreePlayed(Thread *thread)
{
    if (thread->Played == nullptr) return;
    FreeLines(thread->Played->List);
    Release(thread->Played);
    thread->Played = nullptr;
}

} // namespace varkui

using namespace varkui;

BOOL VarkUiPlay(LPCSTR instructions, BOOL isUnseen)
{
    frontEnd.Choose();
    const Locked locked;
    Thread *thread = Self();
    if (thread == nullptr || instructions == nullptr) return FALSE;
    FreePlayed(thread);
    auto *played = static_cast<Played *>(Allocate(sizeof(Played)));
    const size_t length = strlen(instructions);
    if (played == nullptr || !MakeLines(played->List, length)) {
        Release(played);
        return FALSE;
    }
    memcpy(played->List.Text, instructions, length);
    CutLines(played->List, length);
    played->IsUnseen = isUnseen != FALSE;
    thread->Played = played;
    return TRUE;
}

int VarkUiPlayed(LPSTR failure, int size)
{
    const Locked locked;
    Thread *thread = Self();
    if (failure != nullptr && size > 0) *failure = 0;
    if (thread == nullptr || thread->Played == nullptr) return 0;
    Played &played = *thread->Played;
    int line = played.FailedLine;
    const char *reason = played.Failure;
    if (line == 0 && NextInstruction(played.List) != nullptr) {
        line = played.List.Number;
        reason = "nothing was open any more";
    }
    if (line != 0 && failure != nullptr && size > 0)
        snprintf(failure, static_cast<size_t>(size), "%s", reason);
    FreePlayed(thread);
    return line;
}
