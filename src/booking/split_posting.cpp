#include "src/booking/split_posting.h"

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
#include "src/values/amounts.h"
#include "text/fixed_text.h"

#include <cstdlib>
#include <cstring>

namespace vark {

using text::CopyText;

namespace {

constexpr int32_t inlineParts = 10;
constexpr int32_t overflowStep = 5;
constexpr int32_t mostParts = INT16_MAX; // what the number of Teilbuchungen in bat can hold

const TeilbuchungEingabe &PartAt(const ThreadContext &context, const SplitEingabe &eingabe, int32_t index)
{
    if (!Holds(index >= 0) || !Holds(index < inlineParts + context.SplitCapacity)) return eingabe.Teil[0];
    return index < inlineParts ? eingabe.Teil[index] : context.SplitOverflow[index - inlineParts];
}

// All Teilbuchungen have to name the same account on one side, and on one side only. Accounts are compared
// as the caller wrote them, so "1200" and " 1200" differ.
int32_t CheckSides(const ThreadContext &context, const SplitEingabe &eingabe, uint16_t &seite)
{
    if (eingabe.Anzahl < 2) return 1;
    const TeilbuchungEingabe &first = eingabe.Teil[0];
    bool sollIsSame = true;
    bool habenIsSame = true;
    for (int32_t i = 1; i < eingabe.Anzahl; ++i) {
        const TeilbuchungEingabe &part = PartAt(context, eingabe, i);
        if (std::strncmp(part.Sollkonto, first.Sollkonto, accountDigits) != 0) sollIsSame = false;
        if (std::strncmp(part.Habenkonto, first.Habenkonto, accountDigits) != 0) habenIsSame = false;
    }
    if (sollIsSame && habenIsSame)
        return Report(context, Message::SplitkontenGleich, sidesRefused, nullptr, noPart);
    if (!sollIsSame && !habenIsSame)
        return Report(context, Message::SplitkontoFehlt, sidesRefused, nullptr, noPart);
    Holds(sollIsSame != habenIsSame);
    Holds(seite == SplitseiteKeine);
    seite = sollIsSame ? SplitseiteSoll : SplitseiteHaben;
    return 1;
}

// One Teilbuchung, checks in their order of precedence. Sets `isDropped` for a Kostenschablone that does not
// exist, which ends the posting without a code of its own.
int32_t PostPart(ThreadContext &context, TeilbuchungWork &work, Buchung &buchung, int32_t index,
                 bool &isDropped)
{
    int32_t result = CheckAccountsAndAmounts(context, work, index);
    if (result != 1) return result;
    result = CheckKostenschablone(context, work.Eingabe.Kostenschablone, index);
    if (result != 1) {
        isDropped = result == kostenschabloneRefused;
        return result;
    }
    result = SettleTax(context, work, buchung.Bat.Buchungsdatum, index);
    if (result != 1) return result;
    result = SettleNet(context, work, index);
    if (result != 1) return result;

    FillImage(work);
    const SplitRecord &image = work.Teil.Image;
    Holds(IsWholeAmount(image.Brutto));
    Holds(IsWholeAmount(image.Netto));
    if (buchung.Bat.Zahlungsziel == 0) {
        buchung.Bat.Zahlungsziel =
            DefaultZahlungsziel(context, image.Sollkonto, image.Habenkonto, image.SollArt, image.HabenArt);
    }
    if (context.CostAccountingOn != 0) {
        result = SettleCosts(context, work, CostRule::SachkontoOnSoll, index);
        if (result != 1) return result;
    }
    if (!StoreTeilbuchung(buchung, work.Teil, index, index == 0 ? 2 : 0)) return engineFailure;
    ++buchung.Bat.Anzahl;
    Holds(buchung.Bat.Anzahl == index + 1);
    Holds(BuchungHolds(buchung));
    return 1;
}

// The checks in their order of precedence; nothing is written before the last line.
int32_t PostSplit(ThreadContext &context, const SplitEingabe &eingabe, Buchung &buchung)
{
    BatRecord &bat = buchung.Bat;
    Promises promises{};
    promises.IsSplit = true;
    PackedDate date;
    CopyText(date, eingabe.Datum);
    int32_t result = CheckPostingHead(context, eingabe.Stapel, date, promises.StapelPosition);
    if (result != 1) return result;
    const bool isTooMany = eingabe.Anzahl > inlineParts && context.SplitViaEnde == 0;
    if (eingabe.Anzahl < 1 || isTooMany)
        return Report(context, Message::AnzahlTeilbuchungenFalsch, partCountRefused, nullptr, noPart);
    uint16_t seite = SplitseiteKeine;
    result = CheckSides(context, eingabe, seite);
    if (result != 1) return result;
    result = CheckZahlungsziel(context, eingabe.Zahlungsziel);
    if (result != 1) return result;

    bat.Stapel = eingabe.Stapel;
    bat.Splitseite = seite;
    CopyText(bat.Buchungsdatum, date);
    CopyText(bat.ZweitesDatum, date);
    CopyText(bat.Beleg, eingabe.Beleg);
    bat.Kennzeichen = eingabe.Kennzeichen;
    for (int32_t i = 0; i < eingabe.Anzahl; ++i) {
        TeilbuchungWork work{};
        TakeTexts(PartAt(context, eingabe, i), work.Eingabe);
        bool isDropped = false;
        result = PostPart(context, work, buchung, i, isDropped);
        FreeTeilbuchung(work.Teil);
        // Hosts have always been told success here, with nothing written.
        if (isDropped) return 1;
        if (result != 1) return result;
    }
    Holds(bat.Anzahl == eingabe.Anzahl);
    Holds(BuchungHolds(buchung));
    Holds(bat.Anzahl < 2 || bat.Splitseite != SplitseiteKeine);
    if (eingabe.Zahlungsziel != 0) bat.Zahlungsziel = eingabe.Zahlungsziel;
    promises.Zahlungsziel = eingabe.Zahlungsziel;
    return WriteBuchung(context, buchung, 0, &promises) ? 1 : ReportUnwritten(context, promises);
}

// Ends the split posting in progress: drops it, or posts what has been collected.
int32_t EndSplit(ThreadContext &context, int32_t post, int32_t showMessages)
{
    context.ShowMessages = showMessages;
    const bool wasOpen = context.SplitOpen != 0;
    context.SplitOpen = 0;
    if (post == 0) {
        context.SplitHeader = {};
        return 1;
    }
    if (!wasOpen) return noSplitOpen;
    context.SplitViaEnde = 1;
    Holds(context.SplitHeader.Anzahl <= inlineParts + context.SplitCapacity);
    const int32_t result = InsertSplitPosting(context, &context.SplitHeader, showMessages);
    context.SplitViaEnde = 0;
    AtRestHolds(context);
    Holds(context.SplitOpen == 0);
    return result;
}

// Room for the next Teilbuchung; null without memory.
TeilbuchungEingabe *NextPart(ThreadContext &context)
{
    const int32_t count = context.SplitHeader.Anzahl;
    Holds(count >= 0);
    Holds((context.SplitOverflow != nullptr) == (context.SplitCapacity > 0));
    if (count < inlineParts) return &context.SplitHeader.Teil[count];
    if (count >= mostParts) return nullptr;
    const int32_t index = count - inlineParts;
    if (context.SplitCapacity <= index) {
        const int32_t capacity = index + overflowStep;
        void *grown =
            std::realloc(context.SplitOverflow, static_cast<size_t>(capacity) * sizeof(TeilbuchungEingabe));
        if (grown == nullptr) return nullptr;
        context.SplitOverflow = static_cast<TeilbuchungEingabe *>(grown);
        context.SplitCapacity = static_cast<int16_t>(capacity);
    }
    if (!Holds(index < context.SplitCapacity)) return nullptr;
    return &context.SplitOverflow[index];
}

} // namespace

int32_t InsertSplitPosting(ThreadContext &context, const SplitEingabe *eingabe, int32_t showMessages)
{
    context.ShowMessages = showMessages;
    SplitEingabe copy{};
    if (eingabe != nullptr) copy = *eingabe;
    FistaRecord fista;
    const int32_t selected = SelectMandantOrReport(context, copy.Mandant, fista);
    if (selected < 1) return selected;
    HeldTables held(context);
    if (!HoldPostingTables(held)) return engineFailure;
    Buchung buchung{};
    AtRestHolds(context);
    const int32_t result = PostSplit(context, copy, buchung);
    Holds(result <= 1);
    AtRestHolds(context);
    FreeBuchung(buchung);
    return result;
}

} // namespace vark

using namespace vark;

int32_t VARK_CALL VARK_SplitBuchungEinfuegen(const SplitEingabe *split, int32_t showMessages)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    return InsertSplitPosting(*context, split, showMessages);
}

int32_t VARK_CALL VARK_SplitStartEx(int32_t mandant, int32_t stapel, const char *datum, const char *beleg,
                                    uint8_t kennzeichen, int32_t zahlungsziel)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    EndSplit(*context, 0, 0);
    SplitEingabe &header = context->SplitHeader;
    Holds(header.Anzahl == 0);
    AtRestHolds(*context);
    header.Mandant = mandant;
    header.Stapel = stapel;
    if (!CalendarDigits(*context, datum, header.Datum)) return dateRefused;
    CopyText(header.Beleg, beleg);
    header.Kennzeichen = kennzeichen;
    header.Zahlungsziel = zahlungsziel;
    context->SplitOpen = 1;
    return 1;
}

int32_t VARK_CALL VARK_SplitStart(int32_t mandant, int32_t stapel, const char *datum, const char *beleg,
                                  uint8_t kennzeichen)
{
    return VARK_SplitStartEx(mandant, stapel, datum, beleg, kennzeichen, 0);
}

int32_t VARK_CALL VARK_SplitEinfuegenEx(const char *sollkonto, int32_t sollArt, const char *habenkonto,
                                        int32_t habenArt, const char *brutto, const char *steuersatz,
                                        const char *steuerbetrag, const char *text, int32_t kostenschablone)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    if (context->SplitOpen == 0) {
        EndSplit(*context, 0, 0);
        return noSplitOpen;
    }
    TeilbuchungEingabe *part = NextPart(*context);
    if (part == nullptr) return noMemoryForPart;
    *part = {};
    CopyText(part->Sollkonto, sollkonto);
    part->SollArt = sollArt;
    CopyText(part->Habenkonto, habenkonto);
    part->HabenArt = habenArt;
    CopyText(part->Brutto, brutto);
    CopyText(part->Steuersatz, steuersatz);
    CopyText(part->Steuerbetrag, steuerbetrag);
    CopyText(part->Text, text);
    part->Kostenschablone = kostenschablone;
    ++context->SplitHeader.Anzahl;
    Holds(context->SplitHeader.Anzahl <= inlineParts + context->SplitCapacity);
    AtRestHolds(*context);
    return 1;
}

int32_t VARK_CALL VARK_SplitEinfuegen(const char *sollkonto, int32_t sollArt, const char *habenkonto,
                                      int32_t habenArt, const char *brutto, const char *steuersatz,
                                      const char *steuerbetrag, const char *text)
{
    return VARK_SplitEinfuegenEx(sollkonto, sollArt, habenkonto, habenArt, brutto, steuersatz, steuerbetrag,
                                 text, 0);
}

int32_t VARK_CALL VARK_SplitEnde(int32_t post, int32_t showMessages)
{
    ThreadContext *context = nullptr;
    const int32_t entered = EnterExport(context);
    if (entered != ready) return entered;
    return EndSplit(*context, post, showMessages);
}
