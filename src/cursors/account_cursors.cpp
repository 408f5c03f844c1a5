// The cursors over the account tables, in the order of the account numbers.
#include "include/vark40.h"
#include "src/booking/account_queries.h"
#include "src/cursors/cursor.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/model/accounts.h"
#include "src/values/account_numbers.h"

namespace vark {

namespace {

// The first account at or after a number. Reading from the first one of all, a failure counts as an empty
// table; false is a failure of the other way alone.
bool ReadFrom(ThreadContext &context, const char *vonKonto, AnyAccount &record, bool &found, TableId table)
{
    if (vonKonto == nullptr || vonKonto[0] == 0) {
        found = GetFirst(context, &record, table);
        return true;
    }
    AccountNumber number;
    JustifyNumber(number, vonKonto);
    return GetGreaterEqualF(context, &record, KeyOfText(number, sizeof number), found, table);
}

void KeepKey(ThreadContext &context, const AccountNumber &konto)
{
    context.CursorKey = KeyOfText(konto, sizeof konto);
}

} // namespace

} // namespace vark

using namespace vark;

int32_t VARK_CALL VARK_InitHoleKonto(int32_t mandant, int32_t kontoart, const char *vonKonto,
                                     int32_t showMessages)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    context->ShowMessages = showMessages;
    EndCursor(*context);
    const AccountKind *const kind = FindKind(kontoart);
    if (kind == nullptr || kind->Art == KontoartKostenstelle) {
        return Report(*context, Message::KontoartUnzulaessig, kindRefused, nullptr, -1);
    }
    FistaRecord fista;
    const int32_t selected = SelectMandantOrReport(*context, mandant, fista);
    if (selected < 1) return selected;
    if (!BeginCursor(*context, kind->Table)) return engineFailure;
    AnyAccount record;
    bool found = false;
    if (!ReadFrom(*context, vonKonto, record, found, kind->Table)) {
        return EndCursorWith(*context, engineFailure);
    }
    if (!found) return EndCursorWith(*context, cursorEmpty);
    KeepKey(*context, record.Head.Konto);
    return cursorReady;
}

int32_t VARK_CALL VARK_HoleSako(char *konto, char *kuerzel, char *name, uint32_t *zuordnung, uint32_t *flag1,
                                uint32_t *flag2)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    if (context->CursorKind != TableSako) return noSuchCursor;
    if (!ResumeCursor(*context)) return EndCursorWith(*context, engineFailure);
    SakoRecord record;
    bool found = false;
    if (!GetEqual(*context, &record, context->CursorKey, found, TableSako)) {
        return EndCursorWith(*context, engineFailure);
    }
    if (!found) return EndCursorWith(*context, recordGone);
    GiveAccount(konto, record.Konto);
    GiveText(kuerzel, record.Kuerzel);
    GiveText(name, record.Name);
    GiveNumber(zuordnung, record.Zuordnung);
    GiveNumber(flag1, record.FesterSatz != 0 ? 1 : 0);
    GiveNumber(flag2, record.MitKosten != 0 ? 1 : 0);
    // The end of the table is a failure here, unlike in VARK_HolePeko: hosts stop at it.
    if (!GetNext(*context, &record, TableSako)) return EndCursorWith(*context, engineFailure);
    KeepKey(*context, record.Konto);
    return cursorReady;
}

int32_t VARK_CALL VARK_HolePeko(char *konto, char *kuerzel, char *name1, char *name2, char *freitext,
                                char *land, char *waehrung, char *plz, char *adresse2, char *adresse1,
                                char *blz, char *bankkonto, char *bank, char *gegenkonto, uint32_t *wert1,
                                uint32_t *wert2, int32_t form, char *skonto, uint32_t *mahnkennziffer,
                                uint32_t *zahlungsziel)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    if (context->CursorKind != TableKred && context->CursorKind != TableDebi) return noSuchCursor;
    if (!ResumeCursor(*context)) return EndCursorWith(*context, engineFailure);
    const auto table = static_cast<TableId>(context->CursorKind);
    PersonalRecord record;
    bool found = false;
    if (!GetEqual(*context, &record, context->CursorKey, found, table)) {
        return EndCursorWith(*context, engineFailure);
    }
    if (!found) return EndCursorWith(*context, recordGone);
    GiveAccount(konto, record.Konto);
    GiveText(kuerzel, record.Kuerzel);
    GiveText(name1, record.Name1);
    GiveText(name2, record.Name2);
    GiveText(freitext, record.UstId);
    GiveText(land, record.Land);
    GiveText(waehrung, record.Waehrung);
    GiveText(plz, record.Plz);
    GiveText(adresse2, record.Adresse2);
    GiveText(adresse1, record.Adresse1);
    GiveText(blz, record.Blz);
    if (record.Bankkonto[0] != 0) {
        GiveText(bankkonto, record.Bankkonto);
    } else {
        GiveText(bankkonto, record.BankkontoAlt);
    }
    GiveText(bank, record.Bank);
    GiveAccount(gegenkonto, record.Gegenkonto);
    GiveNumber(wert1, record.Wert1);
    GiveNumber(wert2, record.Wert2);
    if (skonto != nullptr) {
        if (!IsFormOrReport(*context, form)) return EndCursorWith(*context, formRefused);
        GiveRate(skonto, record.Skonto, form);
    }
    if (table == TableDebi) GiveNumber(mahnkennziffer, record.Mahnkennziffer);
    GiveNumber(zahlungsziel, record.Zahlungsziel);
    if (!GetNextF(*context, &record, found, table)) return EndCursorWith(*context, engineFailure);
    if (!found) return EndCursorWith(*context, lastDelivered);
    KeepKey(*context, record.Konto);
    return cursorReady;
}
