// Small questions to the account tables: which kind an account is of, and the next free number. The exports
// VARK_ExistiertKonto and VARK_HoleFreieKontonr are defined here.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/account_records.h"

#include <cstdint>

namespace vark {

// The kind of the account `konto` (right-justified): searched among Sachkonten, Debitoren and Kreditoren in
// this order. Only a Sachkonto's record goes to `sako`; for a personal account `hasUstId` tells whether it
// has a USt-IdNr. Returns KontoartSachkonto, KontoartDebitor, KontoartKreditor or KontoartKeine; 0 when the
// engine failed.
int32_t FindAccount(ThreadContext &context, const AccountNumber &konto, SakoRecord &sako, bool &hasUstId);

} // namespace vark
