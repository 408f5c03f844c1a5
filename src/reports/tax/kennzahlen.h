// What belongs into the boxes of a turnover tax return: the turnover of the accounts that have a Kennzahl,
// and the tax postings on the Sonderkonto.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/company_records.h"
#include "src/reports/frame/report_params.h"
#include "src/reports/tax/kennzahl_list.h"

namespace vark {

// The Mandant takes the form with exact amounts; the other one drops the Pfennigs of its bases.
inline bool HasExactForm(const FistaRecord &mandant) { return mandant.UStVAVariante != 0; }

// Collects a period, box by box as Haben less Soll, so that revenue and the tax on it are positive. Years of
// the period that cannot be posted to are left out without a word; the thread stays in the last year read.
// False when the record store failed, which has been shown, memory ran out, or a sum has no room.
bool CollectKennzahlen(ThreadContext &context, const FistaRecord &mandant, const PeriodSelection &period,
                       Kennzahlliste &list);

} // namespace vark
