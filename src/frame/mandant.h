// Binding of the calling thread to a Mandant and a year: which directory its tables lie in, and what of the
// Mandant's record later code needs.
#pragma once

#include "include/vark40.h"
#include "src/frame/thread_context.h"
#include "src/model/company_records.h"

#include <cstdint>

namespace vark {

inline constexpr int32_t mandantUnknown = VARK_FEHLER_MANDANT;

// Binds the thread to Mandant `number` and reads its record. Returns 1; -3 when the engine failed, which has
// been shown; -5, silently, when there is no such Mandant: then the binding in force and all open tables
// stay. Costs no more than reading the record while the Mandant and its year are the ones in force.
int32_t SelectMandant(ThreadContext &context, int32_t number, FistaRecord &record);

// SelectMandant as the exports use it: an unknown Mandant is reported with message 1408.
int32_t SelectMandantOrReport(ThreadContext &context, int32_t number, FistaRecord &record);

// Moves tables 0 to 11 to the directory of `year` (four digits); tables that were open are open again after,
// with count 1. False when one could not be reopened.
bool SelectYear(ThreadContext &context, const char *year);

// Fills the three texts of today's date.
void RefreshToday(ThreadContext &context);

} // namespace vark
