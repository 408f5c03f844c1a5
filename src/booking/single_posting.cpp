#include "src/booking/single_posting.h"

#include "src/booking/checks.h"
#include "src/booking/costs.h"
#include "src/booking/promises.h"
#include "src/booking/tax.h"
#include "src/booking/written_posting.h"
#include "src/frame/beliefs.h"
#include "src/frame/held_tables.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/frame/transactions.h"
#include "src/model/accounts.h"
#include "src/pickers/rate_entry.h"
#include "src/platform/window_api.h"
#include "src/values/amounts.h"
#include "src/values/currency.h"
#include "text/fixed_text.h"

namespace vark {

using text::CopyText;

namespace {

// The checks in their order of precedence; nothing is written before the last line.
int32_t PostSingle(ThreadContext &context, const BuchungEingabe &eingabe, TeilbuchungWork &work,
                   Buchung &buchung)
{
    BatRecord &bat = buchung.Bat;
    Promises promises{};
    PackedDate date;
    CopyText(date, eingabe.Datum);
    TakeTexts(eingabe, work.Eingabe);

    int32_t result = CheckPostingHead(context, eingabe.Stapel, date, promises.StapelPosition);
    if (result != 1) return result;
    result = CheckAccountsAndAmounts(context, work, noPart);
    if (result != 1) return result;
    result = CheckZahlungsziel(context, eingabe.Zahlungsziel);
    if (result != 1) return result;
    result = CheckKostenschablone(context, eingabe.Kostenschablone, noPart);
    if (result != 1) return result;
    result = SettleTax(context, work, date, noPart);
    if (result != 1) return result;
    result = ConvertForeignCurrency(context, work, date, bat);
    if (result != 1) return result;
    result = SettleNet(context, work, noPart);
    if (result != 1) return result;

    FillImage(work);
    Holds(TeilbuchungHolds(work.Teil));
    const SplitRecord &image = work.Teil.Image;
    bat.Stapel = eingabe.Stapel;
    CopyText(bat.Buchungsdatum, date);
    CopyText(bat.ZweitesDatum, date);
    CopyText(bat.Beleg, eingabe.Beleg);
    bat.Zahlungsziel = eingabe.Zahlungsziel;
    if (bat.Zahlungsziel == 0) {
        bat.Zahlungsziel =
            DefaultZahlungsziel(context, image.Sollkonto, image.Habenkonto, image.SollArt, image.HabenArt);
    }
    bat.Kennzeichen = eingabe.Kennzeichen;
    if (context.CostAccountingOn != 0) {
        result = SettleCosts(context, work, CostRule::EachSachkonto, noPart);
        if (result != 1) return result;
    }
    if (!StoreTeilbuchung(buchung, work.Teil, 0, 1)) return engineFailure;
    bat.Anzahl = 1;
    Holds(IsWholeAmount(bat.Teil.Brutto));
    Holds(IsWholeAmount(bat.Teil.Netto));
    Holds(BuchungHolds(buchung));
    promises.Zahlungsziel = eingabe.Zahlungsziel;
    return WriteBuchung(context, buchung, 0, &promises) ? 1 : ReportUnwritten(context, promises);
}

} // namespace

int32_t ConvertForeignCurrency(ThreadContext &context, TeilbuchungWork &work, const PackedDate &date,
                               BatRecord &bat)
{
    const TeilbuchungEingabe &eingabe = work.Eingabe;
    const bool sollIsPersonal = eingabe.SollArt != KontoartSachkonto;
    const bool habenIsPersonal = eingabe.HabenArt != KontoartSachkonto;
    if (!sollIsPersonal && !habenIsPersonal) return 1;
    const AccountNumber &konto = sollIsPersonal ? eingabe.Sollkonto : eingabe.Habenkonto;
    const AccountKind *const kind = FindPersonalKind(sollIsPersonal ? eingabe.SollArt : eingabe.HabenArt);
    if (kind == nullptr) return engineFailure;
    PersonalRecord record{};
    bool found = false;
    if (!GetEqual(context, &record, KeyOfText(konto, sizeof konto), found, kind->Table)) return engineFailure;
    if (!found) return engineFailure;
    if (record.Waehrung[0] == 0) return 1;

    char waehrung[sizeof record.Waehrung];
    CopyText(waehrung, record.Waehrung);
    KurseRecord rate{};
    if (!FindRateOrAsk(context, GetActiveWindow(), rate, waehrung, date)) return rateEntryCancelled;
    SplitRecord &image = work.Teil.Image;
    AmountText converted;
    if (!ConvertAmount(context, rate, image.Brutto, converted)) return amountNotConverted;
    CopyText(bat.Waehrung, waehrung);
    CopyText(bat.Waehrungsbetrag, converted);
    CopyText(image.Netto, converted);
    Holds(IsWholeAmount(converted));
    Holds(bat.Waehrung[0] != 0);
    return 1;
}

int32_t InsertSinglePosting(ThreadContext &context, const BuchungEingabe *eingabe, int32_t showMessages)
{
    context.ShowMessages = showMessages;
    BuchungEingabe copy{};
    if (eingabe != nullptr) copy = *eingabe;
    FistaRecord fista;
    const int32_t selected = SelectMandantOrReport(context, copy.Mandant, fista);
    if (selected < 1) return selected;
    HeldTables held(context);
    if (!HoldPostingTables(held)) return engineFailure;
    TeilbuchungWork work{};
    Buchung buchung{};
    AtRestHolds(context);
    const int32_t result = PostSingle(context, copy, work, buchung);
    Holds(result <= 1);
    AtRestHolds(context);
    FreeTeilbuchung(work.Teil);
    FreeBuchung(buchung);
    return result;
}

} // namespace vark

using namespace vark;

int32_t VARK_CALL VARK_BuchungEinfuegen(const BuchungEingabe *buchung, int32_t showMessages)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    return InsertSinglePosting(*context, buchung, showMessages);
}

int32_t VARK_CALL VARK_BuchungEinfuegenDirektEx(int32_t showMessages, int32_t mandant, int32_t stapel,
                                                const char *datum, const char *beleg, const char *text,
                                                const char *sollkonto, int32_t sollArt,
                                                const char *habenkonto, int32_t habenArt, const char *brutto,
                                                const char *steuersatz, const char *steuerbetrag,
                                                int32_t kostenschablone, int32_t zahlungsziel)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    context->ShowMessages = showMessages;
    BuchungEingabe eingabe{};
    if (!CalendarDigits(*context, datum, eingabe.Datum)) {
        return Report(*context, Message::BuchungsdatumUnzulaessig, dateRefused, nullptr, noPart);
    }
    eingabe.Mandant = mandant;
    eingabe.Stapel = stapel;
    CopyText(eingabe.Beleg, beleg);
    CopyText(eingabe.Text, text);
    CopyText(eingabe.Sollkonto, sollkonto);
    eingabe.SollArt = sollArt;
    CopyText(eingabe.Habenkonto, habenkonto);
    eingabe.HabenArt = habenArt;
    CopyText(eingabe.Brutto, brutto);
    CopyText(eingabe.Steuersatz, steuersatz);
    CopyText(eingabe.Steuerbetrag, steuerbetrag);
    eingabe.Kostenschablone = kostenschablone;
    eingabe.Zahlungsziel = zahlungsziel;
    return InsertSinglePosting(*context, &eingabe, showMessages);
}

int32_t VARK_CALL VARK_BuchungEinfuegenDirekt(int32_t showMessages, int32_t mandant, int32_t stapel,
                                              const char *datum, const char *beleg, const char *text,
                                              const char *sollkonto, int32_t sollArt, const char *habenkonto,
                                              int32_t habenArt, const char *brutto, const char *steuersatz,
                                              const char *steuerbetrag)
{
    return VARK_BuchungEinfuegenDirektEx(showMessages, mandant, stapel, datum, beleg, text, sollkonto,
                                         sollArt, habenkonto, habenArt, brutto, steuersatz, steuerbetrag, 0,
                                         0);
}
