// The window system's calls under their own names, for a part that is loaded beside libvarkui.so: forwarded
// to that one, which is loaded at the first of them. Without it there is no window and no answer: every call
// gives 0.
#include "host/companions.h"
#include "host/standard_error.h"
#include "window-system/include/varkui.h"

#include <dlfcn.h>
#include <pthread.h>

namespace {

void *windowSystem;
pthread_once_t once = PTHREAD_ONCE_INIT;

void LoadWindowSystem()
{
    static constexpr char missing[] = "MERIDA: libvarkui.so fehlt, nichts kann angezeigt werden\n";
    windowSystem = host::LoadBeside("libvarkui.so");
    if (windowSystem == nullptr) host::WriteToStandardError(missing, sizeof missing - 1);
}

void *FindCall(const char *name)
{
    pthread_once(&once, LoadWindowSystem);
    return windowSystem != nullptr ? dlsym(windowSystem, name) : nullptr;
}

} // namespace

#define VARKUI_CALL(Result, Name, Parameters, Arguments)                                                     \
    Result Name Parameters                                                                                   \
    {                                                                                                        \
        using Call = Result(*) Parameters;                                                                   \
        static const auto call = reinterpret_cast<Call>(FindCall(#Name));                                    \
        return call != nullptr ? call Arguments : Result();                                                  \
    }
#include "window-system/include/calls.def"
#undef VARKUI_CALL
