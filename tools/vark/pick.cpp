#include "tools/vark/pick.h"

#include "include/vark40.h"
#include "tools/common/exit_codes.h"
#include "tools/vark/kontoart.h"
#include "tools/vark/reasons.h"

#include <cstdio>

namespace cli {

using namespace tools;

namespace {

int32_t PickAccount(const PickOptions &options, char (&konto)[8])
{
    return VARK_HoleKonto(nullptr, options.Mandant, KontoartOf(options.Kontoart), options.From.c_str(),
                          options.To.c_str(), konto);
}

// What the codes of these dialogs say that mean something else elsewhere.
std::string ReasonOf(int code)
{
    switch (code) {
    case 0: return "abgebrochen";
    case -1: return "nichts zur Auswahl";
    case -2: return "die Liste faßt nicht alle Einträge";
    default: return TextOfCode(code);
    }
}

} // namespace

int Pick(const PickOptions &options)
{
    char konto[8] = {};
    const bool isAccount = options.What == "konto";
    int32_t chosen = 0;
    if (options.What == "mandant") chosen = VARK_HoleMandantenNr(nullptr);
    if (options.What == "stapel") {
        chosen = VARK_HoleStapelNr(nullptr, options.Manages ? -options.Mandant : options.Mandant);
    }
    if (isAccount) chosen = PickAccount(options, konto);
    if (options.What == "zahlungsziel") chosen = VARK_HoleZahlungsziel(nullptr, options.Mandant);
    if (options.What == "kostenschablone") chosen = VARK_HoleKostenschablone(nullptr, options.Mandant);

    if (chosen <= 0) {
        std::fprintf(stderr, "vark: %s\n", ReasonOf(chosen).c_str());
        return chosen == VARK_FEHLER_DATENBANK || VARK_Status() != 1 ? ExitFailure : ExitRefused;
    }
    if (isAccount) {
        std::printf("%s\n", konto);
    } else {
        std::printf("%d\n", chosen);
    }
    return ExitGood;
}

} // namespace cli
