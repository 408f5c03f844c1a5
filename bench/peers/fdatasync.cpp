// What the disk itself gives: one page written and made durable each.
//   fdatasync DIRECTORY COUNT   prints the seconds
#include "bench/peers/peer.h"

#include <fcntl.h>
#include <string>
#include <unistd.h>

int main(int argumentCount, char **arguments)
{
    const auto [directory, count] = PeerArguments(argumentCount, arguments);
    const int file = open((std::string(directory) + "/pages").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    Must(file < 0 ? 1 : 0);
    constexpr long pages = 64; // written in turn, so that the file does not grow meanwhile
    const char page[4096] = {};
    for (long i = 0; i < pages; ++i) {
        Must(pwrite(file, page, sizeof page, i * 4096) == sizeof page ? 0 : 1);
    }
    Must(fdatasync(file));

    const Stopwatch watch;
    for (long i = 0; i < count; ++i) {
        Must(pwrite(file, page, sizeof page, i % pages * 4096) == sizeof page ? 0 : 1);
        Must(fdatasync(file));
    }
    watch.Print();
    close(file);
}
