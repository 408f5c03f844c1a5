// The parameters of a report: the caller's block taken apart into the states of a dialog and put together
// again, the dates of a period, and the texts that a report's head says them in. No window is needed here.
#pragma once

#include "include/vark40.h"
#include "src/frame/thread_context.h"
#include "src/model/tables.h"
#include "src/model/text_forms.h"

#include <cstdint>

namespace vark {

// Fields of ReportParams that are valid.
enum ParamFlag : uint32_t {
    ParamZeitraum = VARK_PARAM_ZEITRAUM,
    ParamDaten = VARK_PARAM_DATEN,
    ParamJahr = VARK_PARAM_JAHR,
    ParamKontoArt = VARK_PARAM_KONTOART,
    ParamKonten = VARK_PARAM_KONTEN,
    ParamEinzeln = VARK_PARAM_EINZELN, // no field: one single account was asked for
    ParamAusgabe = VARK_PARAM_AUSGABE,
    ParamArchivJahr = VARK_PARAM_ARCHIVJAHR,
};

// Controls of a period that a dialog has.
enum PeriodOption : uint32_t {
    PeriodDayExact = 0x01, // a free date or pair of dates
    PeriodMonths = 0x02,
    PeriodQuarters = 0x04,
    PeriodYear = 0x08,     // whole year, and the year's field
    PeriodCalendar = 0x10, // quarters and the year are those of the calendar
};

// Period codes beside the months 1..12.
inline constexpr int16_t periodNotChosen = -1;
inline constexpr int16_t periodDayExact = VARK_ZEITRAUM_TAGE;
inline constexpr int16_t periodFirstQuarter = VARK_ZEITRAUM_QUARTAL_1;
inline constexpr int16_t periodLastQuarter = VARK_ZEITRAUM_QUARTAL_4;
inline constexpr int16_t periodWholeYear = VARK_ZEITRAUM_JAHR;

struct PeriodSelection {
    uint32_t Options; // PeriodOption bits
    int16_t Code;     // -1 not chosen, 0 free dates, 1..12 fiscal month, 13..16 quarter, 17 year
    PackedDate VonDatum;
    PackedDate BisDatum;
    int16_t VonPeriode; // fiscal months
    int16_t BisPeriode;
    int16_t Jahr;       // business year minus 1980
    char JahrText[5];   // business year
    int16_t ArchivJahr; // in full, 0 for the current books
};

// Limits of a range of accounts, without leading blanks; an empty one is open.
struct AccountLimits {
    AccountNumber Von;
    AccountNumber Bis;
};

struct AccountRangeSelection {
    uint16_t HasSingle; // the dialog offers one single account
    int16_t KontoArt;   // 1, 2, 4, 8
    uint32_t Einzeln;   // one single account was chosen
    AccountLimits Sachkonto;
    AccountLimits Kreditor;
    AccountLimits Debitor;
    AccountLimits Kostenstelle;
};

// The limits of a kind 1, 2, 4 or 8; those of Sachkonten for any other.
AccountLimits &LimitsOf(AccountRangeSelection &selection, int32_t kontoart);

// Fills the states from a caller's block; those that a report does not have are null. Values outside their
// range are corrected silently.
void SpreadReportParams(const ThreadContext &context, const ReportParams &params, PeriodSelection *period,
                        AccountRangeSelection *ranges, int32_t *ausgabe);

// Writes the states back into the caller's block and marks what they fill.
void GatherReportParams(const ThreadContext &context, ReportParams &params, const PeriodSelection *period,
                        const AccountRangeSelection *ranges, const int32_t *ausgabe);

// Calendar "DDMMYY" to a PackedDate, empty for what is no date; and back.
void CallerDateToBookDate(const ThreadContext &context, const char *text, PackedDate &out);
void BookDateToCallerDate(const ThreadContext &context, const PackedDate &date, char (&out)[7]);

// The first and last day, and the first and last fiscal month, of a chosen period. Free dates stay.
void ComputePeriodDates(const ThreadContext &context, PeriodSelection &selection);

// The period as a report's head says it: "per 31.03.1998", "März 1998", "1. Quartal 1998". A short second
// year is a plain sum: 1999 gives "1999/100". Empty for a period that was not chosen.
using PeriodTitle = char[64];
void BuildPeriodTitle(const ThreadContext &context, const PeriodSelection &selection, PeriodTitle &out,
                      bool perOnly, bool calendarWording);

// The name of a date's calendar month, "März" (Windows-1252); empty for an empty date.
const char *MonthNameOfDate(const ThreadContext &context, const PackedDate &date);

// The table that a range is read from, and its limits in the form of the table's key 0; an empty `von` begins
// at the first record, an empty `bis` ends with the last.
TableId RangeLimits(const AccountRangeSelection &selection, AccountNumber &von, AccountNumber &bis);

// The words of a range: "Sachkonten" (or, with `isSingular` and equal limits, "Sachkonto"), and
// "von 1000 bis 1999".
using RangeWord = char[30];
using RangeText = char[30];
void RangeTexts(const AccountRangeSelection &selection, RangeWord *kindWord, RangeText &rangeText,
                bool isSingular);

} // namespace vark
