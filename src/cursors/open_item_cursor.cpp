// The cursor over the open items of Kreditoren or Debitoren, in the order of their running numbers.
#include "include/vark40.h"
#include "src/booking/account_queries.h"
#include "src/cursors/cursor.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/model/accounts.h"
#include "src/model/posting_records.h"
#include "src/values/account_numbers.h"
#include "src/values/dates.h"
#include "text/fixed_text.h"

#include <cstring>

namespace vark {

namespace {

// Goes on to an item of the account that is asked for; there is no key to find it by, so this is a walk.
bool SkipOthers(ThreadContext &context, OpenItemRecord &record, bool &found, TableId table)
{
    const AccountNumber &wanted = context.CursorAccount;
    while (found && wanted[0] != 0 && std::memcmp(record.Konto, wanted, sizeof wanted) != 0) {
        if (!GetNextF(context, &record, found, table)) return false;
    }
    return true;
}

void KeepKey(ThreadContext &context, const OpenItemRecord &record)
{
    context.CursorKey = KeyOfNumber(static_cast<int32_t>(record.Nummer));
}

void GiveSortDate(char *out, const SortDate &sortDate, int firstFiscalMonth)
{
    PackedDate date;
    text::CopyText(date, sortDate);
    ToSortDate(date);
    GiveDate(out, date, firstFiscalMonth);
}

} // namespace

} // namespace vark

using namespace vark;

int32_t VARK_CALL VARK_InitHoleOP(int32_t mandant, const char *konto, int32_t kontoart, int32_t showMessages)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    context->ShowMessages = showMessages;
    EndCursor(*context);
    const AccountKind *const kind = FindPersonalKind(kontoart);
    if (kind == nullptr) return Report(*context, Message::KontoartUnzulaessig, kindRefused, nullptr, -1);
    FistaRecord fista;
    const int32_t selected = SelectMandantOrReport(*context, mandant, fista);
    if (selected < 1) return selected;

    AccountNumber &account = context->CursorAccount;
    JustifyLimit(account, konto);
    if (account[0] != 0) {
        bool exists = false;
        if (!Exists(*context, KeyOfText(account, sizeof account), exists, kind->Table)) return engineFailure;
        if (!exists) return Report(*context, Message::KontonummerUnzulaessig, VARK_FEHLER_KONTO, "K", -1);
    }
    const TableId table = kind->OpenItems;
    if (!BeginCursor(*context, table)) return engineFailure;
    OpenItemRecord record;
    bool found = false;
    if (!GetFirstF(*context, &record, found, table) || !SkipOthers(*context, record, found, table)) {
        return EndCursorWith(*context, engineFailure);
    }
    if (!found) return EndCursorWith(*context, cursorEmpty);
    KeepKey(*context, record);
    return cursorReady;
}

int32_t VARK_CALL VARK_HoleOP(char *konto, char *referenz1, char *referenz2, char *datum1, char *datum2,
                              char *datum3, char *text1, char *text2, int32_t form, char *betrag1,
                              char *betrag2, char *waehrung)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    if (context->CursorKind != TableOpkred && context->CursorKind != TableOpdebi) return noSuchCursor;
    const bool wantsAmount = betrag1 != nullptr || betrag2 != nullptr;
    if (wantsAmount && !IsFormOrReport(*context, form)) return formRefused;
    if (!ResumeCursor(*context)) return EndCursorWith(*context, engineFailure);
    const auto table = static_cast<TableId>(context->CursorKind);
    OpenItemRecord record;
    bool found = false;
    if (!GetEqual(*context, &record, context->CursorKey, found, table)) {
        return EndCursorWith(*context, engineFailure);
    }
    if (!found) return EndCursorWith(*context, recordGone);
    GiveAccount(konto, record.Konto);
    GiveText(referenz1, record.Referenz1);
    GiveText(referenz2, record.Referenz2);
    GiveSortDate(datum1, record.Datum1, context->FirstFiscalMonth);
    GiveSortDate(datum2, record.Termin, context->FirstFiscalMonth);
    GiveSortDate(datum3, record.Skontodatum, context->FirstFiscalMonth);
    GiveText(text1, record.Text1);
    GiveText(text2, record.Text2);
    GiveAmount(betrag1, record.Betrag1, form);
    GiveAmount(betrag2, record.Betrag2, form);
    if (record.Waehrung[0] != 0) {
        GiveText(waehrung, record.Waehrung);
    } else {
        GiveText(waehrung, context->MandantWaehrung, sizeof record.Waehrung);
    }
    if (!GetNextF(*context, &record, found, table) || !SkipOthers(*context, record, found, table)) {
        return EndCursorWith(*context, engineFailure);
    }
    if (!found) return EndCursorWith(*context, lastDelivered);
    KeepKey(*context, record);
    return cursorReady;
}
