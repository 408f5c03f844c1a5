#include "bench/window_watch.h"

#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <csignal>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr double patience_s = 30;

int OnError(Display * /*screen*/, XErrorEvent * /*event*/)
{
    return 0; // a window may go while it is looked at
}

// A property's bytes; empty when there is none.
std::string Property(Display *screen, Window window, const char *name, Atom type)
{
    Atom actualType = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long rest = 0;
    unsigned char *data = nullptr;
    constexpr long longest = 256;
    const int status = XGetWindowProperty(screen, window, XInternAtom(screen, name, False), 0, longest, False,
                                          type, &actualType, &format, &count, &rest, &data);
    if (status != Success || data == nullptr) return "";
    const size_t width = format == 32 ? sizeof(long) : 1;
    std::string bytes(reinterpret_cast<const char *>(data), count * width);
    XFree(data);
    return bytes;
}

// The window that has the keyboard when it has that title, else none.
Window FindActive(const Watched &watched)
{
    Window active = None;
    const std::string bytes =
        Property(watched.Screen, DefaultRootWindow(watched.Screen), "_NET_ACTIVE_WINDOW", XA_WINDOW);
    if (bytes.size() < sizeof active) return None;
    std::memcpy(&active, bytes.data(), sizeof active);
    if (active == None) return None;
    const Atom utf8 = XInternAtom(watched.Screen, "UTF8_STRING", False);
    return Property(watched.Screen, active, "_NET_WM_NAME", utf8) == watched.Title ? active : None;
}

bool HasEnded(const Watched &watched, int &status) { return waitpid(watched.Program, &status, WNOHANG) != 0; }

bool IsOfOneColour(const std::vector<unsigned long> &pixels)
{
    for (const unsigned long pixel : pixels) {
        if (pixel != pixels.front()) return false;
    }
    return true;
}

} // namespace

void GiveUp(const Watched &watched, const char *why)
{
    std::fprintf(stderr, "%s: %s\n", watched.Title.c_str(), why);
    if (watched.Program > 0) kill(watched.Program, SIGKILL);
    std::_Exit(1);
}

void Pause(const Watched &watched, const char *reason)
{
    if (watched.SinceStart.Seconds() > patience_s) GiveUp(watched, reason);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

Watched StartWatched(const std::string &title, char **command)
{
    Watched watched = {XOpenDisplay(nullptr), title, -1, None, {}};
    if (watched.Screen == nullptr) GiveUp(watched, "no display");
    XSetErrorHandler(OnError);
    watched.SinceStart = Stopwatch();
    watched.Program = fork();
    if (watched.Program != 0) return watched;
    dup2(STDERR_FILENO, STDOUT_FILENO);
    execvp(command[0], command);
    std::_Exit(127);
}

void WaitUntilDrawn(Watched &watched)
{
    int status = 0;
    while ((watched.Shown = FindActive(watched)) == None || IsOfOneColour(MiddleOf(watched))) {
        if (HasEnded(watched, status)) GiveUp(watched, "the program ended before its window was drawn");
        Pause(watched, "no window");
    }
}

std::vector<unsigned long> MiddleOf(const Watched &watched)
{
    XWindowAttributes place = {};
    std::vector<unsigned long> pixels;
    if (XGetWindowAttributes(watched.Screen, watched.Shown, &place) == 0 || place.map_state != IsViewable)
        return pixels;
    XImage *image = XGetImage(watched.Screen, watched.Shown, place.width / 8, place.height / 4,
                              static_cast<unsigned>(place.width / 2), static_cast<unsigned>(place.height / 2),
                              AllPlanes, ZPixmap);
    if (image == nullptr) return pixels;
    for (int y = 0; y < image->height; ++y) {
        for (int x = 0; x < image->width; ++x) {
            pixels.push_back(XGetPixel(image, x, y));
        }
    }
    XDestroyImage(image);
    return pixels;
}

void Press(const Watched &watched, const std::string &key)
{
    const std::string held = "Alt+";
    const bool isHeld = key.starts_with(held);
    const std::string name = isHeld ? key.substr(held.size()) : key;
    const KeyCode code = XKeysymToKeycode(watched.Screen, XStringToKeysym(name.c_str()));
    const KeyCode alt = XKeysymToKeycode(watched.Screen, XStringToKeysym("Alt_L"));
    if (code == 0) GiveUp(watched, "no such key");
    if (isHeld) XTestFakeKeyEvent(watched.Screen, alt, True, CurrentTime);
    XTestFakeKeyEvent(watched.Screen, code, True, CurrentTime);
    XTestFakeKeyEvent(watched.Screen, code, False, CurrentTime);
    if (isHeld) XTestFakeKeyEvent(watched.Screen, alt, False, CurrentTime);
    XFlush(watched.Screen);
}

void WaitUntilEnded(const Watched &watched)
{
    int status = 0;
    while (!HasEnded(watched, status)) {
        Pause(watched, "the keys were not taken");
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) GiveUp(watched, "the program has failed");
}

void Leave(const Watched &watched)
{
    int status = 0;
    if (!HasEnded(watched, status)) {
        kill(watched.Program, SIGTERM);
        waitpid(watched.Program, &status, 0);
    }
    while (FindActive(watched) != None) {
        Pause(watched, "the window stays");
    }
    XCloseDisplay(watched.Screen);
}
