#include "tools/vark/reasons.h"

#include "include/vark40.h"
#include "tools/common/exit_codes.h"
#include "tools/common/installation.h"

#include <cstdio>
#include <stdexcept>

namespace cli {

int Refuse(ReasonCatcher &catcher, int code)
{
    std::string reason = catcher.Take();
    if (reason.empty()) reason = TextOfCode(code);
    if (code == VARK_FEHLER_KEIN_DATENPFAD) tools::ConfiguredDataPath(); // names a file that cannot be read
    if (code == VARK_FEHLER_DATENBANK || code == VARK_FEHLER_KEIN_DATENPFAD ||
        code == VARK_FEHLER_KEIN_SPEICHER)
        throw std::runtime_error(reason);
    std::fflush(stdout);
    catcher.Pass("vark: " + reason + "\n");
    return tools::ExitRefused;
}

void NeedLibrary()
{
    ReasonCatcher catcher;
    const int state = VARK_Status();
    if (state == VARK_GUT) return;
    catcher.Take();
    tools::ConfiguredDataPath(); // names an ini file that cannot be read
    throw std::runtime_error(TextOfCode(state));
}

std::string TextOfCode(int code)
{
    switch (code) {
    case VARK_ABGEBROCHEN: return "Die Erfassung des Wechselkurses wurde abgebrochen.";
    case VARK_FEHLER_UMRECHNUNG: return "Der Betrag kann nicht umgerechnet werden.";
    case VARK_FEHLER_DATENBANK: return "Die Datenbank läßt sich nicht benutzen.";
    case VARK_FEHLER_MANDANT: return "Der Mandant existiert nicht.";
    case VARK_FEHLER_KONTOART: return "Die Kontoart ist unzulässig.";
    case VARK_FEHLER_NUMMERN_AUFGEBRAUCHT: return "Es ist keine Nummer mit 7 Zeichen mehr frei.";
    case VARK_FEHLER_KEIN_DATENPFAD:
        return "In keiner Ini-Datei steht, wo die Daten liegen (tolka.ini: [TOLKA] Pfad32=…).";
    case VARK_FEHLER_KEIN_SPEICHER: return "Die Bibliothek hat keinen Speicher für diesen Aufruf.";
    default: return "Abgelehnt mit dem Code " + std::to_string(code) + ".";
    }
}

} // namespace cli
