// Durable postings through the exported call, into sample books: a payment, which has no tax and no cost
// lines.
//   posting CONFIG_DIRECTORY COUNT [CLIENTS [apart [processes]]]   prints the seconds
// CONFIG_DIRECTORY is where `books beispiel` made an installation. The clients share COUNT among them and
// post into Mandant 1, or with `apart` each into a Mandant of its own. They are threads, or processes.
#include "bench/peers/processes.h"
#include "include/vark40.h"

#include <latch>
#include <thread>
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
    TimeProcesses(clients, [apart, each](long client) {
        const auto mandant = static_cast<int32_t>(apart ? client + 1 : 1);
        Post(mandant);
        return [mandant, each] {
            for (long i = 0; i < each; ++i) {
                Post(mandant);
            }
        };
    });
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
