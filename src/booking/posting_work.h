// One Teilbuchung on its way from the caller's texts to its file image. A single posting goes it once, a
// split posting once for each of its Teilbuchungen: checks.h, tax.h, costs.h, written_posting.h. Every step
// returns 1, or the code that the export has to return after the message has been shown; `partIndex` (from 0)
// names the Teilbuchung in messages, noPart none.
#pragma once

#include "include/vark40.h"
#include "src/booking/written_posting.h"
#include "src/model/account_records.h"

#include <cstdint>

namespace vark {

// Codes of the checks, as the exports return them.
inline constexpr int32_t rateEntryCancelled = 0;
inline constexpr int32_t amountNotConverted = VARK_FEHLER_UMRECHNUNG;
inline constexpr int32_t stapelUnknown = VARK_FEHLER_STAPEL;
inline constexpr int32_t sollkontoRefused = VARK_FEHLER_SOLLKONTO;
inline constexpr int32_t habenkontoRefused = VARK_FEHLER_HABENKONTO;
inline constexpr int32_t sameAccount = VARK_FEHLER_KONTO;
inline constexpr int32_t dateRefused = VARK_FEHLER_DATUM;
inline constexpr int32_t bruttoRefused = VARK_FEHLER_BRUTTO;
inline constexpr int32_t steuersatzRefused = VARK_FEHLER_STEUERSATZ;
inline constexpr int32_t steuerbetragRefused = VARK_FEHLER_STEUERBETRAG;
inline constexpr int32_t costsMissing = VARK_FEHLER_KOSTEN_FEHLEN;
inline constexpr int32_t zahlungszielUnknown = VARK_FEHLER_ZAHLUNGSZIEL;
inline constexpr int32_t kostenschabloneRefused = VARK_FEHLER_KOSTENSCHABLONE;

// No Teilbuchung is named.
inline constexpr int32_t noPart = -1;

// One Teilbuchung in the making. Zeroed but for Eingabe, whose texts get their fixed forms on the way.
struct TeilbuchungWork {
    TeilbuchungEingabe Eingabe;
    SakoRecord Soll; // zero for a personal account
    SakoRecord Haben;
    bool HasUstId;    // one of the accounts is a personal one with a USt-IdNr
    bool IsFixedRate; // the account that the tax key came from allows no other rate
    uint8_t KeyClass; // class of the tax key as the accounts gave it
    uint8_t Class;    // class by which the posting is taxed
    Teilbuchung Teil; // owns its cost lines
};

} // namespace vark
