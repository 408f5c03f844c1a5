#include "src/walks/cost_lines.h"

#include "src/frame/record_store.h"
#include "src/values/dates.h"
#include "src/walks/posting_walk.h"
#include "text/fixed_text.h"

#include <cstring>

namespace vark {

using text::CopyText;

namespace {

constexpr unsigned kobuByDate = 3;
constexpr unsigned splitByNumber = 1;

bool IsInRange(const CostScan &scan)
{
    if (std::memcmp(scan.Line.Datum, scan.Bis, sizeof scan.Bis - 1) > 0) return false;
    const unsigned key = KeyOf(scan.Code);
    return key == kobuByDate ||
           std::memcmp(ObjectOf(scan.Line, static_cast<CostObject>(key)), scan.Objekt, accountDigits) == 0;
}

bool Take(CostScan &scan, bool isRead)
{
    scan.Found = isRead && scan.Found && IsInRange(scan);
    return isRead;
}

bool Begin(CostScan &scan, ThreadContext &context, const KeyBuffer &key, TableKeyCode code,
           const PackedDate &bis)
{
    scan.Found = false;
    scan.Context = &context;
    scan.Code = code;
    CopyText(scan.Bis, bis);
    ToSortDate(scan.Bis);
    return Take(scan, GetGreaterEqualF(context, &scan.Line, key, scan.Found, code));
}

// The Teilbuchung of a line in a Stapel: a record of split, or the image inside bat.
bool FindTeilbuchung(ThreadContext &context, const KobuRecord &line, SplitRecord &teil, bool &found)
{
    if (line.Splitnummer != 0) {
        const TableKeyCode code = KeyCode(TableSplit, splitByNumber);
        return GetEqual(context, &teil, KeyOfNumber(line.Splitnummer), found, code);
    }
    BatRecord bat;
    if (!GetEqual(context, &bat, KeyOfNumber(line.Buchungsnummer), found, TableBat)) return false;
    if (found) teil = bat.Teil;
    return true;
}

const AccountNumber &SideOf(const SplitRecord &teil, const KobuRecord &line)
{
    return IsOnHaben(line) ? teil.Habenkonto : teil.Sollkonto;
}

} // namespace

bool HoldCostTables(HeldTables &held, CostTables &tables)
{
    const ThreadContext &context = held.Context;
    tables = {{TableKobu, SlotFree29}, 1};
    if (std::strcmp(context.WorkYear, context.MandantYear) == 0) return true;
    tables.Count = 2;
    return HoldOfYear(held, TableKobu, context.MandantYear, SlotFree29);
}

const AccountNumber &ObjectOf(const KobuRecord &line, CostObject which)
{
    return which == CostObject::First ? line.Kostenobjekt1 : line.Kostenobjekt2;
}

bool BeginCostLines(CostScan &scan, ThreadContext &context, TableId kobu, const PackedDate &von,
                    const PackedDate &bis)
{
    CopyText(scan.Objekt, "");
    SortDate first;
    CopyText(first, von);
    ToSortDate(first);
    return Begin(scan, context, KeyOfText(first, sizeof first), KeyCode(kobu, kobuByDate), bis);
}

bool BeginCostLinesOf(CostScan &scan, ThreadContext &context, TableId kobu, const AccountNumber &objekt,
                      CostObject which, const PackedDate &von, const PackedDate &bis)
{
    CopyText(scan.Objekt, objekt);
    SortDate first;
    CopyText(first, von);
    ToSortDate(first);
    KeyBuffer key = KeyOfText(objekt, sizeof objekt);
    std::memcpy(key.Bytes + sizeof objekt, first, sizeof first);
    return Begin(scan, context, key, KeyCode(kobu, static_cast<unsigned>(which)), bis);
}

bool NextCostLine(CostScan &scan)
{
    return Take(scan, GetNextF(*scan.Context, &scan.Line, scan.Found, scan.Code));
}

bool FindCostWords(ThreadContext &context, const KobuRecord &line, CostWords &words, bool &found)
{
    words = {};
    found = false;
    if (IsFinal(line)) {
        CopyText(words.Konto, line.Konto);
        BubeRecord posting;
        if (!FindPosting(context, line.FinaleBuchung, posting, found)) return false;
        if (!found) return true;
        CopyText(words.Beleg, posting.Beleg);
        CopyText(words.Text, posting.Text);
        return true;
    }
    SplitRecord teil{};
    int32_t buchungsnummer = line.Buchungsnummer;
    if (line.Splitnummer != 0) {
        if (!FindTeilbuchung(context, line, teil, found)) return false;
        if (!found) return true;
        buchungsnummer = teil.Buchungsnummer;
    }
    BatRecord bat;
    if (!GetEqual(context, &bat, KeyOfNumber(buchungsnummer), found, TableBat)) return false;
    if (!found) return true;
    if (line.Splitnummer == 0) teil = bat.Teil;
    CopyText(words.Konto, SideOf(teil, line));
    CopyText(words.Beleg, bat.Beleg);
    CopyText(words.Text, teil.Text);
    return true;
}

bool FindCostAccount(ThreadContext &context, const KobuRecord &line, AccountNumber &konto, bool &found)
{
    CopyText(konto, line.Konto);
    found = true;
    if (IsFinal(line) || konto[0] != 0) return true;
    SplitRecord teil;
    if (!FindTeilbuchung(context, line, teil, found)) return false;
    if (found) CopyText(konto, SideOf(teil, line));
    return true;
}

} // namespace vark
