// Opens two Mandanten in turn, COUNT times in all: a call for another Mandant closes the tables of the one
// before and opens its own.
//   mandant_opening CONFIG_DIRECTORY COUNT   prints the seconds
#include "bench/peers/peer.h"
#include "include/vark40.h"

int main(int argumentCount, char **arguments)
{
    const auto [directory, count] = PeerArguments(argumentCount, arguments);
    setenv("VARK_CONFIG_DIR", directory, 1);
    setenv("VARK_UI", "headless", 1);
    const auto open = [](int32_t mandant) { Must(VARK_ExistiertKonto(mandant, "1810", 1) >= 0 ? 0 : 1); };
    open(1);
    open(2);

    const Stopwatch watch;
    for (long i = 0; i < count; ++i) {
        open(static_cast<int32_t>(i % 2 + 1));
    }
    watch.Print();
}
