// Filling the account pick dialog with every Debitor of Mandant 1, headless: from the call of the export
// until the dialog, filled and cancelled, is gone.
//   picker_fill CONFIG_DIRECTORY COUNT   prints the seconds for COUNT accounts
// CONFIG_DIRECTORY is where `books beispiel --personenkonten` made an installation.
#include "bench/peers/peer.h"
#include "include/vark40.h"

int main(int argumentCount, char **arguments)
{
    const char *const directory = PeerArguments(argumentCount, arguments).Directory;
    setenv("VARK_CONFIG_DIR", directory, 1);
    setenv("VARK_UI", "headless", 1);
    char konto[8];
    // The first call binds the parts and opens the tables; it sees one account.
    Must(VARK_HoleKonto(nullptr, 1, 4, nullptr, "10010", konto));
    const Stopwatch watch;
    Must(VARK_HoleKonto(nullptr, 1, 4, nullptr, nullptr, konto));
    watch.Print();
    VARK_SchliesseDB();
    return 0;
}
