// The one record of a turnover tax return: whose it is, for when, and all boxes of the form.
#pragma once

#include "src/frame/thread_context.h"
#include "src/model/company_records.h"
#include "src/reports/frame/report_params.h"
#include "src/reports/tax/kennzahl_list.h"

#include <cstddef>
#include <cstdint>

namespace vark {

inline constexpr int formBoxCount = 45;

#pragma pack(push, 1)

struct FormRecord {
    char Name[41];
    char Name2[26];
    char Anschrift1[31];
    char Anschrift2[31];
    char Anschrift3[41];
    char Anschrift4[31];
    char Anschrift5[31];
    char Anschrift6[21];
    char Kodierzeile[35]; // of the form with exact amounts: the Steuernummer
    char Steuernummer[35];
    char Zeitraum[80];
    int32_t Periode; // 1 to 12 fiscal month, 13 to 16 quarter, 17 year
    int32_t Jahr;    // of the calendar, four digits
    uint32_t IsBerichtigt;
    AmountText Kennzahlen[formBoxCount];
};

#pragma pack(pop)

static_assert(offsetof(FormRecord, Name2) == 41);
static_assert(offsetof(FormRecord, Anschrift1) == 67);
static_assert(offsetof(FormRecord, Anschrift2) == 98);
static_assert(offsetof(FormRecord, Anschrift3) == 129);
static_assert(offsetof(FormRecord, Anschrift4) == 170);
static_assert(offsetof(FormRecord, Anschrift5) == 201);
static_assert(offsetof(FormRecord, Anschrift6) == 232);
static_assert(offsetof(FormRecord, Kodierzeile) == 253);
static_assert(offsetof(FormRecord, Steuernummer) == 288);
static_assert(offsetof(FormRecord, Zeitraum) == 323);
static_assert(offsetof(FormRecord, Periode) == 403);
static_assert(offsetof(FormRecord, Jahr) == 407);
static_assert(offsetof(FormRecord, IsBerichtigt) == 411);
static_assert(offsetof(FormRecord, Kennzahlen) == 415);
static_assert(sizeof(FormRecord) == 1000);

// The calendar year in which a period begins, in full; the form goes by it.
int FormYear(const ThreadContext &context, const PeriodSelection &period);

// Fills the record. `isBerichtigt` counts in the form with whole amounts only. False when a sum has no room.
bool FillForm(const ThreadContext &context, const FistaRecord &mandant, const PeriodSelection &period,
              const Kennzahlliste &list, bool isBerichtigt, FormRecord &form);

} // namespace vark
