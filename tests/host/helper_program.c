/* A helper: writes into each of its descriptors from 3 on, as many as its argument says, and tells in its
 * exit code whether there is a further one (1), a signal is blocked (2) or ignored that should not be (4). */
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

int main(int count, char **arguments)
{
    const int given = count > 1 ? arguments[1][0] - '0' : 0;
    int told = 0;
    for (int i = 0; i < given; ++i) {
        const char letter = (char)('a' + i);
        if (write(3 + i, &letter, 1) != 1) told |= 8;
    }
    for (int number = 3 + given; number < 100; ++number) {
        if (fcntl(number, F_GETFD) >= 0) told |= 1;
    }
    sigset_t mask;
    sigprocmask(SIG_BLOCK, NULL, &mask);
    if (sigismember(&mask, SIGUSR1)) told |= 2;
    struct sigaction action;
    sigaction(SIGPIPE, NULL, &action);
    if (action.sa_handler != SIG_DFL) told |= 4;
    if (count > 2) pause();
    return told;
}
