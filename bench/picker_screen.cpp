// The account pick dialog on a screen, with every Debitor of Mandant 1.
//   picker_screen CONFIG_DIRECTORY COUNT   ends with 0 when the last of COUNT accounts was chosen
#include "bench/peers/peer.h"
#include "include/vark40.h"

#include <string>

int main(int argumentCount, char **arguments)
{
    const auto [directory, count] = PeerArguments(argumentCount, arguments);
    setenv("VARK_CONFIG_DIR", directory, 1);
    setenv("VARK_UI", "gtk", 1);
    char konto[8] = {};
    const bool isChosen = VARK_HoleKonto(nullptr, 1, 4, nullptr, nullptr, konto) == 1;
    VARK_SchliesseDB();
    if (isChosen && konto == std::to_string(1000000 + count - 1)) return 0;
    std::fprintf(stderr, "not the last account: %s\n", konto);
    return 1;
}
