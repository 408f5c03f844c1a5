// The window system's calls under their own names, forwarded to libvarkui.so, which is loaded at the first of
// them. Without it there is no window and no answer: every call gives 0.
#include "src/platform/linux/own_parts.h"
#include "src/platform/window_api.h"

#include <cstdio>
#include <dlfcn.h>
#include <pthread.h>

namespace {

void *windowSystem;
pthread_once_t once = PTHREAD_ONCE_INIT;

void LoadWindowSystem()
{
    windowSystem = vark::LoadOwnPart("libvarkui.so");
    if (windowSystem == nullptr)
        std::fputs("MERIDA: libvarkui.so fehlt, nichts kann angezeigt werden\n", stderr);
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
