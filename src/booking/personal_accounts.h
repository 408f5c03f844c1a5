// Kreditoren and Debitoren on behalf of a host: new, changed, deleted. The exports VARK_Peko and
// VARK_PekoDirekt are defined here; include/vark40.h tells their codes.
#pragma once

#include "include/vark40.h"
#include "src/frame/thread_context.h"
#include "src/model/account_records.h"

#include <cstdint>

namespace vark {

// The account as VARK_Peko takes it, behind the first lines of the export; null counts as a zeroed one.
int32_t ChangePersonalAccount(ThreadContext &context, int32_t aktion, int32_t art, const PekoEingabe *eingabe,
                              int32_t showMessages);

// The record of a new personal account: no amounts, not to be deleted only by its state word of 0.
void InitPersonalRecord(PersonalRecord &record);

} // namespace vark
