// The window system's calls under their own names, for a part that is loaded beside libvarkui.so: forwarded
// to that one, which is loaded at the first of them. Without it there is no window and no answer: every call
// gives 0. What kept it from being loaded, as too many open files do, may pass, so the next call tries again.
#include "host/companions.h"
#include "host/standard_error.h"
#include "window-system/include/varkui.h"

#include <atomic>
#include <cerrno>
#include <dlfcn.h>
#include <pthread.h>

namespace {

std::atomic<void *> windowSystem{nullptr};
pthread_mutex_t loading = PTHREAD_MUTEX_INITIALIZER;
bool isMissingTold = false; // guarded by it

void *LoadWindowSystem()
{
    static constexpr char missing[] = "MERIDA: libvarkui.so fehlt, nichts kann angezeigt werden\n";
    static constexpr char open[] =
        "MERIDA: libvarkui.so oder ein Verzeichnis darüber ist für andere beschreibbar, "
        "nichts kann angezeigt werden\n";
    pthread_mutex_lock(&loading);
    void *loaded = windowSystem.load(std::memory_order_relaxed);
    if (loaded == nullptr) loaded = host::LoadBeside("libvarkui.so");
    const bool isOpen = loaded == nullptr && errno == EPERM;
    windowSystem.store(loaded, std::memory_order_release);
    const bool isTold = loaded != nullptr || isMissingTold;
    isMissingTold = isMissingTold || loaded == nullptr;
    pthread_mutex_unlock(&loading);
    if (isTold) return loaded;
    if (isOpen)
        host::WriteToStandardError(open, sizeof open - 1);
    else
        host::WriteToStandardError(missing, sizeof missing - 1);
    return loaded;
}

void *FindCall(const char *name)
{
    void *loaded = windowSystem.load(std::memory_order_acquire);
    if (loaded == nullptr) loaded = LoadWindowSystem();
    return loaded != nullptr ? dlsym(loaded, name) : nullptr;
}

} // namespace

#define VARKUI_CALL(Result, Name, Parameters, Arguments)                                                     \
    Result Name Parameters                                                                                   \
    {                                                                                                        \
        using Call = Result(*) Parameters;                                                                   \
        static std::atomic<Call> known{nullptr};                                                             \
        Call call = known.load(std::memory_order_relaxed);                                                   \
        if (call == nullptr) {                                                                               \
            call = reinterpret_cast<Call>(FindCall(#Name));                                                  \
            known.store(call, std::memory_order_relaxed);                                                    \
        }                                                                                                    \
        return call != nullptr ? call Arguments : Result();                                                  \
    }
#include "window-system/include/calls.def"
#undef VARKUI_CALL
