// The books that the booking tests post into: a small chart of accounts in both postable years of Mandant 1.
//
//   1000, 1200         Aktiva without tax           8400  GuV, regular rate       10000  Debitor
//   1700               Passiva without tax          8300  GuV, reduced rate       10001  Debitor with
//   USt-IdNr 1750               Passiva, regular rate        8100  GuV, rate zero          10002  Debitor,
//   Zahlungsziel 5 4000, 4100         GuV without tax              8900  GuV, any other rate     10003
//   Debitor, currency USD 3400               GuV, input tax regular       8125  GuV, EU                 70000
//   Kreditor 3300               GuV, input tax reduced       8500  as 8400, rate fixed     70001  Kreditor,
//   Zahlungsziel 7
//                                                   8510  as 8100, rate fixed
//
//   steke: regular 16,00 from 1 April 1998, 15,00 from 1 January 1993, 14,00 before; reduced 7,00 from
//   1 April 1998, 6,50 before; zero 0,00; any other. Tax accounts 1776 and 1576, with the older rate 1775,
//   1575. Stapel 16 and 17; Zahlungsziele 5, 6, 7; no Kostenschablone.
#pragma once

#include "src/booking/teilbuchung.h"
#include "src/frame/thread_context.h"
#include "tests/support/books.h"

#include <string>

namespace vark::test {

struct Ledger : Books {
    explicit Ledger(const MandantOptions &options = {}, const std::string &script = "");

    // The same records for another Mandant.
    void AddLedger(int mandant, const MandantOptions &options = {});

    // A record of a table that follows the year, into each postable year of Mandant 1.
    template <typename Record> void InsertInYears(TableId table, const Record &record)
    {
        for (const std::string &year : years) {
            Insert(1, table, record, year);
        }
    }
    template <typename Record> void ReplaceInYears(TableId table, const Record &record)
    {
        for (const std::string &year : years) {
            Replace(1, table, record, year);
        }
    }

    // Kostenschablone `nummer` with these shares, on Kostenstellen 100, 101 …
    void AddKostenschablone(int32_t nummer, const Lines &shares);

    std::vector<BatRecord> Postings() const { return Read<BatRecord>(1, TableBat); }
    // The only posting in the books; throws when there is another number of them.
    BatRecord OnlyPosting() const;
    std::vector<SplitRecord> Parts() const { return Read<SplitRecord>(1, TableSplit, "", 1); }
    std::vector<KobuRecord> CostLines(const std::string &year = "") const;
    // Nothing has been written into any Stapel.
    bool IsEmpty() const;

    Lines years;
};

// The thread's context, bound to Mandant 1.
ThreadContext &BoundContext();

// A booking that goes through: 116,00 from 1200 to 4000 without tax, Stapel 16, 15 May 1998.
BuchungEingabe PlainBooking();

// A Teilbuchung with gross and net amount, as ExpandKostenschablone meets it.
Teilbuchung PartOf(const std::string &netto);

} // namespace vark::test
