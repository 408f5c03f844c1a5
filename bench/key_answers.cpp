// How long a key takes until the window shows what it did: the mean over some keys, each of which changes the
// middle of the window.
//   key_answers TITLE KEYS MEASURED_KEYS -- COMMAND ...
//   key_answers TITLE KEYS MEASURED_KEYS whole COMMAND ...
// Both are keys with blanks between; the first ones are pressed before, one after the other. Prints the
// seconds until the first change or, with "whole", until the last one before the window comes to rest.
#include "bench/window_watch.h"

#include <sstream>

namespace {

// Presses a key and waits until the picture has changed, for the seconds that took; for `longest_s` at most.
double SecondsOf(const Watched &watched, const std::string &key, double longest_s)
{
    const std::vector<unsigned long> before = MiddleOf(watched);
    const Stopwatch watch;
    Press(watched, key);
    while (watch.Seconds() < longest_s) {
        if (MiddleOf(watched) != before) return watch.Seconds();
        Pause(watched, "the window does not change");
    }
    return -1;
}

// Returns the seconds until the last change, 0 for none.
double WaitUntilSteady(const Watched &watched)
{
    constexpr double steady_s = 0.15;
    const Stopwatch sinceCall;
    double lastChange = 0;
    std::vector<unsigned long> before = MiddleOf(watched);
    for (Stopwatch watch; watch.Seconds() < steady_s;) {
        std::vector<unsigned long> now = MiddleOf(watched);
        if (now != before) {
            watch = Stopwatch();
            lastChange = sinceCall.Seconds();
        }
        before.swap(now);
        Pause(watched, "the window does not come to rest");
    }
    return lastChange;
}

} // namespace

int main(int argumentCount, char **arguments)
{
    if (argumentCount < 6) return 2;
    const bool isWhole = std::string(arguments[4]) == "whole";
    if (!isWhole && std::string(arguments[4]) != "--") return 2;
    Watched watched = StartWatched(arguments[1], arguments + 5);
    WaitUntilDrawn(watched);
    WaitUntilSteady(watched);
    std::istringstream keysBefore(arguments[2]);
    for (std::string key; keysBefore >> key;) {
        Press(watched, key);
        WaitUntilSteady(watched);
    }
    double seconds = 0;
    int count = 0;
    std::istringstream keys(arguments[3]);
    for (std::string key; keys >> key; ++count) {
        constexpr double longest_s = 5;
        const double some = SecondsOf(watched, key, longest_s);
        if (some < 0) GiveUp(watched, "a key changes nothing");
        const double rest = WaitUntilSteady(watched);
        seconds += some + (isWhole ? rest : 0);
    }
    Leave(watched);
    if (count == 0) return 2;
    std::printf("%.6f\n", seconds / count);
    return 0;
}
