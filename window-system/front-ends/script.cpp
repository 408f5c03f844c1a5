#include "window-system/front-ends/script.h"

#include "host/descriptors.h"
#include "window-system/dialogs/in_view.h"
#include "window-system/front-ends/in_charge.h"
#include "window-system/front-ends/instruction_list.h"
#include "window-system/front-ends/instructions.h"
#include "window-system/front-ends/lines.h"
#include "window-system/model/model.h"
#include "window-system/model/threads.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace varkui {

namespace {

struct Script {
    Lines List;
    Thread *Holder; // the thread it serves now
    unsigned Tickets;
};

Script script;

void ComplainAtOpening(const char *path, const char *reason)
{
    char line[longestLine];
    snprintf(line, sizeof line, "script: line 0: %s: %s", path, reason);
    Complain(line);
}

// Whether the script serves this thread now. While it serves another, the thread gets a ticket for its turn.
bool HasTurn(Thread *thread)
{
    if (script.Holder == thread) return true;
    if (script.Holder == nullptr) {
        bool first = true;
        for (const Thread *each = model.Threads; each != nullptr; each = each->Next) {
            if (each == thread || each->ScriptTicket == 0) continue;
            if (thread->ScriptTicket == 0 || each->ScriptTicket < thread->ScriptTicket) first = false;
        }
        if (first) {
            script.Holder = thread;
            thread->ScriptTicket = 0;
            return true;
        }
    }
    if (thread->ScriptTicket == 0) thread->ScriptTicket = ++script.Tickets;
    return false;
}

} // namespace

bool OpenScript(const char *path)
{
    // Without O_NONBLOCK the open of a pipe would wait for its writer.
    const int descriptor = host::OpenFile(AT_FDCWD, path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
    struct stat status {};
    if (descriptor < 0 || fstat(descriptor, &status) != 0) {
        ComplainAtOpening(path, strerror(errno));
        if (descriptor >= 0) close(descriptor);
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        close(descriptor);
        ComplainAtOpening(path, "is no regular file");
        return false;
    }
    const size_t size = static_cast<size_t>(status.st_size);
    Lines list = {};
    const bool made = MakeLines(list, size);
    size_t length = 0;
    while (made && length < size) {
        const ssize_t got = read(descriptor, list.Text + length, size - length);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        length += static_cast<size_t>(got);
    }
    close(descriptor);
    if (!made) {
        ComplainAtOpening(path, "no memory for the script");
        return false;
    }
    CutLines(list, length);
    script = Script{list, nullptr, 0};
    return true;
}

bool PlayScript(Thread *thread)
{
    Step step = {};
    step.Owner = thread;
    step.Top = Topmost(thread);
    step.Value = script.List.Value;
    if (step.Top == nullptr) {
        LetGoOfScript(thread, false);
        return false;
    }
    if (!HasTurn(thread)) return false;
    const char *line = NextInstruction(script.List);
    if (line == nullptr) {
        FallBackToHeadless();
        return true;
    }
    Do(step, line);
    char complaint[longestLine];
    snprintf(complaint, sizeof complaint, "script: line %d: %s", script.List.Number, step.Failure);
    if (step.Failed) FallBackToHeadless();
    Unlock();
    if (step.Failed) {
        Complain(complaint);
    } else {
        LogLine(line);
    }
    Lock();
    return true;
}

void LetGoOfScript(Thread *thread, bool ends)
{
    if (script.Holder != thread || (!ends && Topmost(thread) != nullptr)) return;
    script.Holder = nullptr;
    WakeAllThreads();
}

} // namespace varkui
