// Durable postings through the exported call, into sample books: a payment, which has no tax and no cost
// lines.
//   posting CONFIG_DIRECTORY COUNT [THREADS [apart]]   prints the seconds
// CONFIG_DIRECTORY is where `books beispiel` made an installation. The threads share COUNT among them and
// post into Mandant 1, or with `apart` each into a Mandant of its own.
#include "bench/peers/peer.h"
#include "include/vark40.h"

#include <latch>
#include <thread>
#include <vector>

namespace {

void Post(int32_t mandant)
{
    const int32_t result = VARK_BuchungEinfuegenDirekt(0, mandant, 16, "15.6.98", "B1", "Messung", "1810", 1,
                                                       "10010", 4, "119,00", "", "");
    Must(result == 1 ? 0 : 1);
}

} // namespace

int main(int argumentCount, char **arguments)
{
    const auto [directory, count] = PeerArguments(argumentCount, arguments);
    const long threads = argumentCount > 3 ? NumberOf(arguments[3]) : 1;
    const bool apart = argumentCount > 4;
    const long each = count / threads;
    setenv("VARK_CONFIG_DIR", directory, 1);
    setenv("VARK_UI", "headless", 1);

    std::latch ready(threads + 1);
    std::vector<std::thread> posting;
    for (long thread = 0; thread < threads; ++thread) {
        const auto mandant = static_cast<int32_t>(apart ? thread + 1 : 1);
        posting.emplace_back([&ready, mandant, each] {
            Post(mandant); // the first call opens the tables
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
