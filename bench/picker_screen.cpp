// The account pick dialog on a screen, with every Debitor of Mandant 1: from the first call of the library
// until the last account, gone to with End and taken with Return, has come back.
//   picker_screen CONFIG_DIRECTORY COUNT   prints the seconds for COUNT accounts
// Needs a display with a window manager, and bench/screen_keys in the current directory.
#include "bench/peers/peer.h"
#include "include/vark40.h"

#include <string>
#include <thread>

namespace {

void Press(const char *keys)
{
    const std::string command =
        std::string("bench/screen_keys Debitorenkontenauswahl ") + keys + " >/dev/null";
    if (std::system(command.c_str()) != 0) std::_Exit(1);
}

} // namespace

int main(int argumentCount, char **arguments)
{
    const auto [directory, count] = PeerArguments(argumentCount, arguments);
    setenv("VARK_CONFIG_DIR", directory, 1);
    setenv("VARK_UI", "gtk", 1);
    char konto[8] = {};
    const Stopwatch watch;
    std::thread person(Press, "End Return");
    const bool isChosen = VARK_HoleKonto(nullptr, 1, 4, nullptr, nullptr, konto) == 1;
    const double seconds = watch.Seconds();
    person.join();
    VARK_SchliesseDB();
    if (!isChosen || konto != std::to_string(1000000 + count - 1)) {
        std::fprintf(stderr, "not the last account: %s\n", konto);
        return 1;
    }
    std::printf("%.6f\n", seconds);
    return 0;
}
