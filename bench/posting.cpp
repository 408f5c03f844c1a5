// Durable postings through the exported call, into sample books: a payment, which has no tax and no cost
// lines.
//   posting CONFIG_DIRECTORY COUNT   prints the seconds
// CONFIG_DIRECTORY is where `books beispiel` made an installation.
#include "bench/peers/peer.h"
#include "include/vark40.h"

int main(int argumentCount, char **arguments)
{
    const auto [directory, count] = PeerArguments(argumentCount, arguments);
    setenv("VARK_CONFIG_DIR", directory, 1);
    setenv("VARK_UI", "headless", 1);
    const auto post = [] {
        return VARK_BuchungEinfuegenDirekt(1, 1, 16, "15.6.98", "B1", "Messung", "1810", 1, "10010", 4,
                                           "119,00", "", "");
    };
    Must(post() == 1 ? 0 : 1); // the first call opens the tables

    const Stopwatch watch;
    for (long i = 0; i < count; ++i) {
        Must(post() == 1 ? 0 : 1);
    }
    watch.Print();
    VARK_SchliesseDB();
}
