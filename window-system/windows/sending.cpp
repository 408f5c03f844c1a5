#include "window-system/windows/sending.h"

#include "window-system/model/handles.h"
#include "window-system/model/memory.h"
#include "window-system/model/model.h"
#include "window-system/model/queue.h"
#include "window-system/model/threads.h"
#include "window-system/model/window.h"

namespace varkui {

void Finish(Sent *sent, LRESULT result)
{
    if (sent->Nobody) {
        Release(sent);
        return;
    }
    sent->Result = result;
    sent->Done = true;
    pthread_cond_broadcast(&sent->Sender->Wake);
}

LRESULT CallProcedureOf(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    WNDPROC procedure = nullptr;
    {
        const Locked locked;
        const Window *window = Find(handle);
        if (window == nullptr) return 0;
        procedure = window->Procedure;
    }
    return procedure(handle, message, wParam, lParam);
}

void HandleSent(Thread *thread)
{
    while (thread->FirstSent != nullptr) {
        Sent *sent = thread->FirstSent;
        thread->FirstSent = sent->Next;
        if (thread->FirstSent == nullptr) thread->LastSent = nullptr;
        sent->Next = thread->Handling;
        thread->Handling = sent;
        Unlock();
        LRESULT result = 0;
        if (sent->Instead != nullptr) {
            result = sent->Instead(sent->Target);
        } else {
            result = CallProcedureOf(sent->Target, sent->Message, sent->WParam, sent->LParam);
        }
        Lock();
        thread->Handling = sent->Next;
        Finish(sent, result);
    }
}

void Tell(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    {
        const Locked locked;
        Window *target = Find(window);
        if (target == nullptr) return;
        if (target->Thread != Self()) {
            auto *sent = static_cast<Sent *>(Allocate(sizeof(Sent)));
            if (sent == nullptr) return; // a notice that is lost; nobody waits for it
            sent->Target = window;
            sent->Message = message;
            sent->WParam = wParam;
            sent->LParam = lParam;
            sent->Nobody = true;
            AppendSent(target->Thread, sent);
            return;
        }
    }
    CallProcedureOf(window, message, wParam, lParam);
}

} // namespace varkui

using namespace varkui;

LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    WNDPROC procedure = nullptr;
    {
        const Locked locked;
        const Window *target = Find(window);
        Thread *sender = Self();
        if (target == nullptr || sender == nullptr) return 0;
        if (target->Thread != sender) {
            Sent sent = {};
            sent.Target = window;
            sent.Message = message;
            sent.WParam = wParam;
            sent.LParam = lParam;
            sent.Sender = sender;
            AppendSent(target->Thread, &sent);
            // While it waits, a thread answers others: so two that send to each other both get on.
            while (!sent.Done) {
                if (sender->FirstSent != nullptr) {
                    HandleSent(sender);
                } else {
                    pthread_cond_wait(&sender->Wake, &model.Lock);
                }
            }
            return sent.Result;
        }
        procedure = target->Procedure;
    }
    return procedure(window, message, wParam, lParam);
}
