// The window system's calls under their own names, forwarded to libvarkui.so beside this library, which is
// loaded when the first view is opened. Without it there is no window: every call gives 0.
#include "report-engine/helper.h"
#include "window-system/include/varkui.h"

#include <dlfcn.h>
#include <pthread.h>

namespace {

void *windowSystem;
pthread_once_t once = PTHREAD_ONCE_INIT;

void LoadWindowSystem()
{
    char path[PATH_MAX];
    if (rs::FindBeside("libvarkui.so", path)) windowSystem = dlopen(path, RTLD_NOW | RTLD_LOCAL);
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
