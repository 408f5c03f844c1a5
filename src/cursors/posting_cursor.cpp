// The cursor over the final postings of a fiscal year, in the order of their dates.
#include "include/vark40.h"
#include "src/booking/account_queries.h"
#include "src/booking/tax_rates.h"
#include "src/cursors/cursor.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/model/posting_records.h"
#include "src/values/dates.h"
#include "src/walks/posting_walk.h"
#include "text/fixed_text.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace vark {

namespace {

constexpr int32_t dateRefused = VARK_FEHLER_DATUM;
constexpr size_t longestDateText = 19;
constexpr char noRate[] = "  -";

using CallerDate = char[longestDateText + 1];

int32_t RefuseDate(const ThreadContext &context)
{
    return Report(context, Message::Unzulaessig, dateRefused, "Das Belegdatum ist", -1);
}

// Whether a text is a date at all, in a calendar year: the Mandant's fiscal year is not known yet, and today
// may not have been asked for on this thread.
bool IsDateText(ThreadContext &context, const char *dateText)
{
    CallerDate date = {};
    if (strnlen(dateText, sizeof date) > longestDateText) return false;
    text::CopyText(date, dateText);
    if (context.TodayShort[0] == 0) RefreshToday(context);
    const int32_t firstFiscalMonth = context.FirstFiscalMonth;
    context.FirstFiscalMonth = 1;
    const DateFault fault = ParseDateText(context, date, sizeof date, false);
    context.FirstFiscalMonth = firstFiscalMonth;
    return fault == DateGood;
}

// Goes on to the next posting that is delivered.
bool SkipFolded(PostingScan &scan)
{
    while (scan.Found && (scan.Record.Status & BubeGefaltet) != 0) {
        if (!NextPosting(scan)) return false;
    }
    return true;
}

void KeepKey(ThreadContext &context, const BubeRecord &record)
{
    context.CursorKey = KeyBuffer{};
    std::memcpy(context.CursorKey.Bytes, &record.Schluessel, sizeof record.Schluessel);
}

uint32_t NextSplitPart(uint32_t counter, uint16_t status)
{
    if ((status & (BubeSplitSoll | BubeSplitHaben)) == 0) return 0;
    return (status & BubeSplitAnfang) != 0 ? 1 : counter + 1;
}

// The kind of an account goes to `out`, unless that is null.
bool GiveKind(ThreadContext &context, uint32_t *out, const AccountNumber &konto)
{
    if (out == nullptr) return true;
    SakoRecord sako;
    bool hasUstId = false;
    const int32_t kind = FindAccount(context, konto, sako, hasUstId);
    if (kind == 0) return false;
    *out = static_cast<uint32_t>(kind);
    return true;
}

// Gives the tax rate of a posting. False when the record store fails.
bool GiveTaxRate(ThreadContext &context, char *out, const BubeRecord &record, int32_t form)
{
    if (out == nullptr) return true;
    RateText rate;
    text::CopyText(rate, zeroRate);
    if ((record.Steuerflags & BubeSteuerErrechnet) != 0) {
        if (!RateFromAmounts(record.Soll, record.Haben, rate)) {
            GiveText(out, noRate);
            return true;
        }
    } else if ((record.Steuerflags & (BubeSteuerMinus | BubeSteuerPlus)) != 0) {
        StekeRecord row;
        bool found = false;
        const auto code = static_cast<uint16_t>(record.Steuerflags & SteuerCodeMaske);
        if (!FindTaxRate(context, code, record.Datum, row, found)) return false;
        if (found) text::CopyText(rate, row.Satz);
    }
    GiveRate(out, rate, form);
    return true;
}

// The gross amount: the greater of the two sides, with the sign of the Soll side.
void GiveGross(char *out, const BubeRecord &record, int32_t form)
{
    AmountText gross;
    AmountOfMagnitude(gross, std::max(MagnitudeOf(record.Soll), MagnitudeOf(record.Haben)),
                      IsNegativeAmount(record.Soll));
    GiveAmount(out, gross, form);
}

} // namespace

} // namespace vark

using namespace vark;

int32_t VARK_CALL VARK_InitHoleBube(int32_t mandant, const char *vonDatum, int32_t showMessages)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    context->ShowMessages = showMessages;
    EndCursor(*context);
    const bool hasDate = vonDatum != nullptr && vonDatum[0] != 0;
    if (hasDate && !IsDateText(*context, vonDatum)) return RefuseDate(*context);
    FistaRecord fista;
    const int32_t selected = SelectMandantOrReport(*context, mandant, fista);
    if (selected < 1) return selected;

    PackedDate date = {};
    if (hasDate) {
        CallerDate callerDate = {};
        text::CopyText(callerDate, vonDatum);
        if (ParseDateText(*context, callerDate, sizeof callerDate, false) != DateGood) {
            return RefuseDate(*context);
        }
        text::CopyText(date, sizeof date, callerDate, sizeof date);
        const int year = PostableYear(*context, FiscalYearOf(date));
        if (year == 0) return RefuseDate(*context);
        char yearText[8] = {};
        std::to_chars(yearText, yearText + sizeof yearText, year);
        if (!SelectYear(*context, yearText)) return engineFailure;
    }
    if (!BeginCursor(*context, TableBube)) return engineFailure;
    PostingScan scan;
    if (!BeginPostings(scan, *context, DaysFrom(date)) || !SkipFolded(scan)) {
        return EndCursorWith(*context, engineFailure);
    }
    if (!scan.Found) return EndCursorWith(*context, cursorEmpty);
    KeepKey(*context, scan.Record);
    return cursorReady;
}

int32_t VARK_CALL VARK_HoleBube(uint32_t *splitTeil, char *datum, char *beleg, char *text, char *sollkonto,
                                uint32_t *sollArt, char *habenkonto, uint32_t *habenArt, int32_t form,
                                char *betrag, char *steuerprozent, char *steuerbetrag)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    if (context->CursorKind != TableBube) return noSuchCursor;
    if (!ResumeCursor(*context)) return EndCursorWith(*context, engineFailure);
    PostingScan scan;
    if (!ResumePostings(scan, *context, context->CursorKey)) return EndCursorWith(*context, engineFailure);
    if (!scan.Found) return EndCursorWith(*context, recordGone);
    const BubeRecord &record = scan.Record;

    context->SplitPartCounter = NextSplitPart(context->SplitPartCounter, record.Status);
    if (splitTeil != nullptr) *splitTeil = context->SplitPartCounter;
    const PackedDate &shownDate = record.Datum[0] != 0 ? record.Datum : record.Schluessel.Belegdatum;
    GiveDate(datum, shownDate, context->FirstFiscalMonth);
    GiveText(beleg, record.Beleg);
    GiveText(text, record.Text);
    GiveAccount(sollkonto, record.Sollkonto);
    GiveAccount(habenkonto, record.Habenkonto);
    if (!GiveKind(*context, sollArt, record.Sollkonto) || !GiveKind(*context, habenArt, record.Habenkonto)) {
        return EndCursorWith(*context, engineFailure);
    }
    if (betrag != nullptr || steuerprozent != nullptr || steuerbetrag != nullptr) {
        if (!IsFormOrReport(*context, form)) return EndCursorWith(*context, formRefused);
        GiveGross(betrag, record, form);
        if (!GiveTaxRate(*context, steuerprozent, record, form)) {
            return EndCursorWith(*context, engineFailure);
        }
        GiveAmount(steuerbetrag, record.Steuer, form);
    }

    if (!NextPosting(scan) || !SkipFolded(scan)) return EndCursorWith(*context, engineFailure);
    if (!scan.Found) return EndCursorWith(*context, lastDelivered);
    KeepKey(*context, record);
    return cursorReady;
}
