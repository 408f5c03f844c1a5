// The books that the booking tests post into: a small chart of accounts in both postable years of Mandant 1.
//
//   Aktiva without tax: 1000, 1200. Passiva: 1700 without tax, 1750 with the regular rate.
//   GuV: 4000, 4100 without tax; 3400 input tax regular, 3300 reduced; 8400 regular rate, 8300 reduced,
//   8100 zero, 8900 any other, 8125 EU; 8500 as 8400 and 8510 as 8100, their rate fixed.
//   Debitoren: 10000; 10001 with USt-IdNr; 10002 with Zahlungsziel 5; 10003 with the currency USD.
//   Kreditoren: 70000; 70001 with Zahlungsziel 7.
//
//   steke: regular 16,00 from 1 April 1998, 15,00 from 1 January 1993, 14,00 before; reduced 7,00 from
//   1 April 1998, 6,50 before; zero 0,00; any other. Tax accounts 1776 and 1576, with the older rate 1775,
//   1575. Stapel 16 and 17; Zahlungsziele 5, 6, 7; no Kostenschablone.
#pragma once

#include "src/booking/posting_work.h"
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
