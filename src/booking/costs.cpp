#include "src/booking/costs.h"

#include "src/frame/beliefs.h"
#include "src/frame/held_tables.h"
#include "src/frame/lifecycle.h"
#include "src/frame/messages.h"
#include "src/frame/record_store.h"
#include "src/values/amounts.h"
#include "text/fixed_text.h"

#include <algorithm>
#include <cstdlib>

namespace vark {

using text::CopyText;
using text::SameText;

namespace {

// Whether an account brings a Kostenschablone of its own.
bool HasKostenschablone(const SakoRecord &sako) { return sako.Kostenschablone != 0 || sako.MitKosten != 0; }

// The line of a row of the Kostenschablone; `isLast` takes up what rounding left of the net amount. False
// when a sum overflows.
bool MakeLine(const KoschazeRecord &row, const AmountText &netto, AmountText &total, bool isLast,
              KostenSeite seite, KobuRecord &line)
{
    Holds(IsWholeAmount(netto));
    Holds(IsWholeAmount(total));
    line = {};
    CopyText(line.Kostenobjekt1, row.Kostenobjekt1);
    CopyText(line.Kostenobjekt2, row.Kostenobjekt2);
    CopyText(line.Text, row.Text);
    line.Flag = row.Flag;
    // An addition and not a bit that is set: a template's flag may hold it already.
    if (seite == KostenSeite::Haben) line.Flag = static_cast<uint8_t>(line.Flag + KobuHaben);
    if (SameText(row.Anteil, "100,00")) {
        CopyText(line.Betrag, netto);
    } else {
        RateText rate;
        CopyText(rate, sizeof rate, row.Anteil + 1, sizeof row.Anteil - 1);
        PercentOfAmount(line.Betrag, netto, rate);
    }
    Holds(line.FinaleBuchung == 0 && line.Splitnummer == 0);
    Holds(IsWholeAmount(line.Betrag));
    if (!AccumulateAmount(total, line.Betrag)) return false;
    if (!isLast) return true;
    AmountText rest;
    SubtractAmounts(rest, netto, total);
    return AccumulateAmount(line.Betrag, rest);
}

int64_t SignedAmount(const AmountText &amount)
{
    return IsNegativeAmount(amount) ? -MagnitudeOf(amount) : MagnitudeOf(amount);
}

// The lines that a whole Kostenschablone gave add up to the net amount, to the Pfennig.
bool LinesHold(const Teilbuchung &teil)
{
    int64_t sum = 0;
    for (int16_t i = 0; i < teil.Image.Kostenzeilen; ++i) {
        sum += SignedAmount(teil.Kostenzeilen[i].Betrag);
    }
    return Holds(sum == SignedAmount(teil.Image.Netto));
}

// Reads the lines of the image's Kostenschablone, `count` at most.
Expansion ExpandLines(ThreadContext &context, Teilbuchung &teil, int32_t count, KostenSeite seite)
{
    if (!Holds(teil.Kostenzeilen == nullptr) || !Holds(IsWholeAmount(teil.Image.Netto)))
        return Expansion::Failed;
    const int32_t number = teil.Image.Kostenschablone;
    teil.Image.Kostenzeilen = 0;
    KoschazeRecord row{};
    bool found = false;
    if (!GetEqual(context, &row, KeyOfNumber(number), found, TableKoschaze)) return Expansion::Failed;
    if (!found) return Expansion::Missing;
    AmountText total;
    CopyText(total, zeroAmount);
    while (found && row.Nummer == number && teil.Image.Kostenzeilen < count) {
        const bool isLast = teil.Image.Kostenzeilen + 1 == count;
        KobuRecord line;
        if (!MakeLine(row, teil.Image.Netto, total, isLast, seite, line)) return Expansion::Failed;
        if (teil.Kostenzeilen == nullptr) {
            teil.Kostenzeilen =
                static_cast<KobuRecord *>(std::calloc(static_cast<size_t>(count), sizeof(KobuRecord)));
            if (teil.Kostenzeilen == nullptr) return Expansion::Failed;
        }
        teil.Kostenzeilen[teil.Image.Kostenzeilen] = line;
        ++teil.Image.Kostenzeilen;
        if (!TeilbuchungHolds(teil)) return Expansion::Failed;
        if (!GetNextF(context, &row, found, TableKoschaze)) return Expansion::Failed;
    }
    Holds(teil.Image.Kostenzeilen <= std::max(count, 0));
    if (count > 0 && teil.Image.Kostenzeilen == count && !LinesHold(teil)) return Expansion::Failed;
    return Expansion::Done;
}

// Makes the cost lines of the side's Kostenschablone.
int32_t ExpandCosts(ThreadContext &context, TeilbuchungWork &work, KostenSeite seite, int32_t partIndex)
{
    Holds(work.Teil.Image.Kostenzeilen == 0);
    const SakoRecord &sako = seite == KostenSeite::Soll ? work.Soll : work.Haben;
    Holds(partIndex >= noPart);
    const Expansion expanded = ExpandKostenschablone(context, seite, sako.Kostenschablone, work.Teil);
    TeilbuchungHolds(work.Teil);
    if (expanded == Expansion::Done) return 1;
    if (context.CostsRequired != 0)
        return Report(context, Message::KostenstelleFehlt, costsMissing, nullptr, partIndex);
    // A posting with some of its cost lines would be half a posting.
    return expanded == Expansion::Missing ? 1 : engineFailure;
}

// Refuses a Teilbuchung without cost lines that touches a GuV account, where costs are obligatory.
int32_t RequireCosts(const ThreadContext &context, const TeilbuchungWork &work, int32_t partIndex)
{
    Holds(work.Teil.Image.Kostenzeilen == 0);
    Holds(work.Teil.Kostenzeilen == nullptr);
    const bool touchesGuv = work.Soll.Zuordnung == ZuordnungGuv || work.Haben.Zuordnung == ZuordnungGuv;
    if (context.CostsRequired == 0 || !touchesGuv) return 1;
    return Report(context, Message::KostenstelleFehlt, costsMissing, nullptr, partIndex);
}

} // namespace

int32_t CheckKostenschablone(ThreadContext &context, int32_t number, int32_t partIndex)
{
    Holds(context.TransactionDepth == 0);
    if (number == 0) return 1;
    bool found = false;
    if (!Exists(context, KeyOfNumber(number), found, TableKoscha)) return engineFailure;
    return found ? 1
                 : Report(context, Message::Unzulaessig, kostenschabloneRefused, "Die Kostenschablone ist",
                          partIndex);
}

int32_t AssignKostenschablone(const ThreadContext &context, SakoRecord &soll, uint8_t sollArt,
                              SakoRecord &haben, uint8_t habenArt, int32_t number, int32_t partIndex)
{
    if (number == 0) return 1;
    const bool sollIsSachkonto = sollArt == BuchungSachkonto;
    const bool habenIsSachkonto = habenArt == BuchungSachkonto;
    if (!sollIsSachkonto && !habenIsSachkonto) return 1;
    const bool sollIsGuv = sollIsSachkonto && soll.Zuordnung == ZuordnungGuv;
    const bool habenIsGuv = habenIsSachkonto && haben.Zuordnung == ZuordnungGuv;
    if (!sollIsGuv && !habenIsGuv)
        return Report(context, Message::GuvKontoFehlt, kostenschabloneRefused, nullptr, partIndex);
    bool toSoll = sollIsGuv;
    if (sollIsSachkonto && habenIsSachkonto) {
        if (soll.Kostenschablone != 0) {
            toSoll = true;
        } else if (haben.Kostenschablone != 0) {
            toSoll = false;
        }
    }
    Holds(toSoll ? sollIsSachkonto : habenIsSachkonto);
    (toSoll ? soll : haben).Kostenschablone = number;
    Holds(HasKostenschablone(toSoll ? soll : haben));
    return 1;
}

Expansion ExpandKostenschablone(ThreadContext &context, KostenSeite seite, int32_t number, Teilbuchung &teil)
{
    if (number == 0) return Expansion::Done;
    if (!TeilbuchungHolds(teil)) return Expansion::Failed;
    KoschaRecord head{};
    bool found = false;
    if (!GetEqual(context, &head, KeyOfNumber(number), found, TableKoscha)) return Expansion::Failed;
    if (!found) return Expansion::Missing;
    teil.Image.Kostenschablone = number;
    // The rows are read one after the other, for which their table has to stay open.
    if (!OpenTable(context, TableKoschaze)) return Expansion::Failed;
    const Expansion expanded = ExpandLines(context, teil, head.Zeilen, seite);
    CloseTable(context, TableKoschaze);
    TeilbuchungHolds(teil);
    Holds(expanded != Expansion::Done || teil.Image.Kostenschablone == number);
    return expanded;
}

int32_t SettleCosts(ThreadContext &context, TeilbuchungWork &work, CostRule rule, int32_t partIndex)
{
    const SplitRecord &image = work.Teil.Image;
    Holds(context.CostAccountingOn != 0);
    Holds(IsWholeAmount(image.Netto));
    Holds(TeilbuchungHolds(work.Teil));
    const bool sollIsSachkonto = image.SollArt == BuchungSachkonto;
    const bool habenIsSachkonto = image.HabenArt == BuchungSachkonto;
    const int32_t assigned = AssignKostenschablone(context, work.Soll, image.SollArt, work.Haben,
                                                   image.HabenArt, work.Eingabe.Kostenschablone, partIndex);
    if (assigned < 1) return assigned;
    if (rule == CostRule::SachkontoOnSoll && !sollIsSachkonto) return 1;
    if (sollIsSachkonto && HasKostenschablone(work.Soll))
        return ExpandCosts(context, work, KostenSeite::Soll, partIndex);
    if (habenIsSachkonto && HasKostenschablone(work.Haben))
        return ExpandCosts(context, work, KostenSeite::Haben, partIndex);
    return sollIsSachkonto ? RequireCosts(context, work, partIndex) : 1;
}

} // namespace vark
