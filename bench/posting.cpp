// Durable postings through the exported call, into sample books: a payment, which has no tax and no cost
// lines.
//   posting CONFIG_DIRECTORY COUNT [CLIENTS [apart [processes]]]   prints the seconds
// CONFIG_DIRECTORY is where `books beispiel` made an installation. The clients share COUNT among them and
// post into Mandant 1, or with `apart` each into a Mandant of its own. They are threads, or processes.
#include "bench/peers/peer.h"
#include "include/vark40.h"

#include <latch>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

// The day lies in the last year of each Mandant of the sample, whose fiscal years differ: into another one
// the library would open the tables anew each time.
void Post(int32_t mandant)
{
    const int32_t result = VARK_BuchungEinfuegenDirekt(0, mandant, 16, "15.9.98", "B1", "Messung", "1810", 1,
                                                       "10010", 4, "119,00", "", "");
    Must(result == 1 ? 0 : 1);
}

// The first posting of each client opens the tables and is not measured.
void PostInThreads(long clients, bool apart, long each)
{
    std::latch ready(clients + 1);
    std::vector<std::thread> posting;
    for (long client = 0; client < clients; ++client) {
        const auto mandant = static_cast<int32_t>(apart ? client + 1 : 1);
        posting.emplace_back([&ready, mandant, each] {
            Post(mandant);
            ready.arrive_and_wait();
            for (long i = 0; i < each; ++i) {
                Post(mandant);
            }
        });
    }
    ready.arrive_and_wait();
    const Stopwatch watch;
    for (std::thread &thread : posting) {
        thread.join();
    }
    watch.Print();
}

void PostInProcesses(long clients, bool apart, long each)
{
    int ready[2];
    int go[2];
    Must(pipe(ready));
    Must(pipe(go));
    char token = 0;
    for (long client = 0; client < clients; ++client) {
        if (fork() != 0) continue;
        const auto mandant = static_cast<int32_t>(apart ? client + 1 : 1);
        Post(mandant);
        Must(write(ready[1], &token, 1) == 1 ? 0 : 1);
        Must(read(go[0], &token, 1) == 1 ? 0 : 1);
        for (long i = 0; i < each; ++i) {
            Post(mandant);
        }
        std::_Exit(0);
    }
    for (long client = 0; client < clients; ++client) {
        Must(read(ready[0], &token, 1) == 1 ? 0 : 1);
    }
    const Stopwatch watch;
    for (long client = 0; client < clients; ++client) {
        Must(write(go[1], &token, 1) == 1 ? 0 : 1);
    }
    for (long client = 0; client < clients; ++client) {
        int end = 0;
        Must(wait(&end) > 0 ? end : 1);
    }
    watch.Print();
}

} // namespace

int main(int argumentCount, char **arguments)
{
    const auto [directory, count] = PeerArguments(argumentCount, arguments);
    const long clients = argumentCount > 3 ? NumberOf(arguments[3]) : 1;
    const bool apart = argumentCount > 4;
    setenv("VARK_CONFIG_DIR", directory, 1);
    setenv("VARK_UI", "headless", 1);
    const auto post = argumentCount > 5 ? PostInProcesses : PostInThreads;
    post(clients, apart, count / clients);
}
