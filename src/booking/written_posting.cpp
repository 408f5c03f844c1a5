#include "src/booking/written_posting.h"

#include "src/booking/promises.h"
#include "src/frame/beliefs.h"
#include "src/frame/held_tables.h"
#include "src/frame/record_store.h"
#include "src/frame/transactions.h"
#include "src/values/dates.h"
#include "text/fixed_text.h"

#include <charconv>
#include <cstdlib>
#include <cstring>

namespace vark {

using text::CopyText;

namespace {

int32_t YearNumber(const char (&year)[5])
{
    int32_t number = 0;
    std::from_chars(year, year + strnlen(year, sizeof year), number);
    return number;
}

// The cost lines of one Teilbuchung; of the numbers one is 0.
bool InsertLines(ThreadContext &context, const Buchung &buchung, KobuRecord *lines, int16_t count,
                 int32_t buchungsnummer, int32_t splitnummer, TableKeyCode kobu)
{
    if (!Holds(count >= 0) || !Holds(count == 0 || lines != nullptr)) return false;
    if (!Holds((buchungsnummer == 0) != (splitnummer == 0) || count == 0)) return false;
    for (int16_t i = 0; i < count; ++i) {
        KobuRecord &line = lines[i];
        line.FinaleBuchung = 0;
        line.Buchungsnummer = buchungsnummer;
        line.Splitnummer = splitnummer;
        CopyText(line.Datum, buchung.Bat.ZweitesDatum);
        ToSortDate(line.Datum);
        if (!Insert(context, &line, kobu)) return false;
    }
    return true;
}

bool InsertRecords(ThreadContext &context, Buchung &buchung, int32_t number, TableKeyCode kobu)
{
    BatRecord &bat = buchung.Bat;
    if (!BuchungHolds(buchung) || !Holds(context.TransactionDepth > 0)) return false;
    bat.Buchungsnummer = number;
    if (!Insert(context, &bat, TableBat)) return false;
    if (!InsertLines(context, buchung, buchung.Kostenzeilen, bat.Teil.Kostenzeilen, bat.Buchungsnummer, 0,
                     kobu)) {
        return false;
    }
    for (int32_t i = 1; i < bat.Anzahl; ++i) {
        Teilbuchung &teil = buchung.Weitere[i - 1];
        teil.Image.Buchungsnummer = bat.Buchungsnummer;
        teil.Image.Splitnummer = 0;
        if (!Insert(context, &teil.Image, TableSplit)) return false;
        if (!InsertLines(context, buchung, teil.Kostenzeilen, teil.Image.Kostenzeilen, 0,
                         teil.Image.Splitnummer, kobu)) {
            return false;
        }
    }
    return true;
}

} // namespace

bool TeilbuchungHolds(const Teilbuchung &teil)
{
    return Holds(teil.Image.Kostenzeilen >= 0) &&
           Holds(teil.Kostenzeilen != nullptr || teil.Image.Kostenzeilen == 0);
}

bool BuchungHolds(const Buchung &buchung)
{
    return Holds(buchung.Bat.Anzahl >= 0) && Holds(buchung.WeiterePlaetze >= 0) &&
           Holds(buchung.Bat.Anzahl - 1 <= buchung.WeiterePlaetze) &&
           Holds((buchung.Weitere != nullptr) == (buchung.WeiterePlaetze > 0)) &&
           Holds(buchung.Kostenzeilen != nullptr || buchung.Bat.Teil.Kostenzeilen == 0);
}

bool StoreTeilbuchung(Buchung &buchung, Teilbuchung &teil, int32_t index, int32_t expected)
{
    if (!BuchungHolds(buchung) || !TeilbuchungHolds(teil)) return false;
    if (!Holds(index == buchung.Bat.Anzahl) || !Holds(expected >= 0)) return false;
    const int32_t needed = index == 0 ? expected - 1 : index;
    if (needed > buchung.WeiterePlaetze) {
        void *grown = std::realloc(buchung.Weitere, static_cast<size_t>(needed) * sizeof(Teilbuchung));
        if (grown == nullptr) return false;
        buchung.Weitere = static_cast<Teilbuchung *>(grown);
        std::memset(buchung.Weitere + buchung.WeiterePlaetze, 0,
                    static_cast<size_t>(needed - buchung.WeiterePlaetze) * sizeof(Teilbuchung));
        buchung.WeiterePlaetze = needed;
    }
    if (index == 0) {
        buchung.Bat.Teil = teil.Image;
        buchung.Kostenzeilen = teil.Kostenzeilen;
    } else {
        buchung.Weitere[index - 1] = teil;
    }
    teil = {};
    return Holds(index <= buchung.WeiterePlaetze);
}

bool WriteBuchung(ThreadContext &context, Buchung &buchung, int32_t number, Promises *promises)
{
    if (!BuchungHolds(buchung) || !Holds(buchung.Bat.Anzahl > 0) || !Holds(number >= 0)) return false;
    HeldTables held(context);
    if (promises != nullptr && !HoldPromised(held, buchung, *promises)) return false;
    if (!Transaction(context, TransactionAction::Begin)) return false;
    // Cost lines lie in a table that follows the working year, while the posting itself lies in the last
    // postable one; a posting stays in one directory.
    const bool inOtherYear = YearNumber(context.WorkYear) != YearNumber(context.MandantYear);
    const TableKeyCode kobu = inOtherYear ? SlotFree30 : TableKobu;
    bool written = !inOtherYear || OpenTable(context, TableKobu, context.MandantYear, SlotFree30);
    // Accounts of another year lie in a directory where this transaction changes nothing. There it is their
    // being read that locks them, which may take its time; later the others would have to wait for it.
    if (promises != nullptr && inOtherYear)
        written = written && AccountsStillExist(context, buchung, *promises);
    written = written && InsertRecords(context, buchung, number, kobu);
    if (promises != nullptr && !inOtherYear)
        written = written && AccountsStillExist(context, buchung, *promises);
    if (promises != nullptr) written = written && ReferencesStillExist(context, buchung, *promises);
    if (inOtherYear) CloseTable(context, SlotFree30);
    if (!written) {
        // Also where the table did not open: a transaction left open would swallow the thread's next
        // postings.
        Transaction(context, TransactionAction::Abort);
        Holds(context.TransactionDepth == 0);
        return false;
    }
    return Transaction(context, TransactionAction::End);
}

void FreeBuchung(Buchung &buchung)
{
    BuchungHolds(buchung);
    for (int32_t i = 0; i < buchung.WeiterePlaetze; ++i) {
        std::free(buchung.Weitere[i].Kostenzeilen);
    }
    std::free(buchung.Weitere);
    std::free(buchung.Kostenzeilen);
    buchung = {};
}

void FreeTeilbuchung(Teilbuchung &teil)
{
    TeilbuchungHolds(teil);
    std::free(teil.Kostenzeilen);
    teil = {};
}

} // namespace vark
