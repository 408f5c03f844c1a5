// How long a program takes until a person can use its window.
//   until_usable TITLE [KEY ...] -- COMMAND ...
// Starts COMMAND and waits until the window of that title has the keyboard and the middle of it is drawn;
// then presses the keys and waits until COMMAND has ended by itself. Without keys it is over when it is
// drawn. Prints the seconds.
#include "bench/window_watch.h"

int main(int argumentCount, char **arguments)
{
    std::vector<std::string> keys;
    int at = 2;
    for (; at < argumentCount && std::string(arguments[at]) != "--"; ++at) {
        keys.emplace_back(arguments[at]);
    }
    if (at + 1 >= argumentCount) return 2;
    Watched watched = StartWatched(arguments[1], arguments + at + 1);
    WaitUntilDrawn(watched);
    for (const std::string &key : keys) {
        Press(watched, key);
    }
    if (!keys.empty()) WaitUntilEnded(watched);
    const double seconds = watched.SinceStart.Seconds();
    Leave(watched);
    std::printf("%.6f\n", seconds);
    return 0;
}
