// The maker of final postings at work: its state. Only the sources of the postings include it.
#pragma once

#include "tools/books/cost_templates.h"
#include "tools/books/postings.h"
#include "tools/books/random.h"
#include "tools/common/table_file.h"

#include <deque>
#include <optional>
#include <vector>

namespace books {

// Records in one transaction: enough that its end costs nothing, few enough that it stays small in memory.
inline constexpr int recordsPerTransaction = 20000;

// A sale below this would show a wrong rate where the rate is worked out from the amounts.
inline constexpr int64_t smallestNet = 1000;

// Percent in hundredths.
inline constexpr int regularBefore = 1500;
inline constexpr int regularSince = 1600;
inline const tools::Day regularChange = tools::DayOf(1998, 4, 1);

// What a posting's tax does.
struct Tax {
    Account *Of = nullptr; // tax account, null for none
    int Rate = 0;          // hundredths
    uint8_t Key = 0;       // Steuerflags
    bool OnHaben = false;
};

// The mark of a posting whose rate is worked out from its amounts: either of two bits.
inline constexpr uint8_t ordinaryRateSource = 0x10;

// One record of bube in the making. The side that carries the tax holds the net amount, the other the gross
// one.
struct Line {
    Account *Soll = nullptr;
    Account *Haben = nullptr;
    int64_t SollAmount = 0;
    int64_t HabenAmount = 0;
    Tax Duty = {};
    int64_t TaxAmount = 0;
    uint16_t Status = 0;
    int16_t Parts = 0;                       // of a split's first line: how many follow it
    uint8_t RateSource = ordinaryRateSource; // where there is tax
    uint8_t Class = 0;                       // of the tax, where it isn't that of the key
    const char *Prefix = "";
    int64_t Voucher = 0;
    const char *Text = ""; // Windows-1252
    int64_t TaxBase = 0;   // where it isn't the net amount
};

// An invoice that waits for its payment.
struct OpenItem {
    int32_t Account; // index among Debitoren or Kreditoren
    int32_t Booking; // Buchungsnummer, 0 for one of an earlier year
    const char *Prefix;
    int32_t Voucher;
    tools::Day Date;
    int64_t Original; // below zero for money that came or went before the invoice
    int64_t Open;
    int64_t NetOpen; // of what is open: net and tax, for the discount and for tax on receipt
    int64_t TaxOpen;
    Tax Duty;
};

// The two tables of a year that postings go into, written in transactions of bounded size.
struct YearFiles {
    tools::TableFile Bube;
    tools::TableFile Kobu;
    std::optional<tools::EngineTransaction> Transaction;
    int Pending = 0;

    explicit YearFiles(const std::filesystem::path &directory)
        : Bube(tools::LayoutOf(vark::TableBube), directory, tools::OpenMode::Accelerated),
          Kobu(tools::LayoutOf(vark::TableKobu), directory, tools::OpenMode::Accelerated)
    {}

    void Write(tools::TableFile &table, void *record)
    {
        if (!Transaction) Transaction.emplace();
        table.Insert(record);
        if (++Pending >= recordsPerTransaction) Flush();
    }

    void Flush()
    {
        if (Transaction) Transaction->Finish();
        Transaction.reset();
        Pending = 0;
    }

    void Close()
    {
        Flush();
        Bube.Close();
        Kobu.Close();
    }
};

struct Generator {
    Ledger &Books;
    const PostingPlan &Plan;
    const std::filesystem::path &Data;
    const Progress &Report;
    Random Dice;
    std::vector<CostTemplate> Templates;
    std::deque<OpenItem> Receivable;
    std::deque<OpenItem> Payable;
    std::deque<OpenItem> LateReceivable, LatePayable; // wait for long, the oldest first
    std::deque<OpenItem> ReceivedAhead, PaidAhead;
    std::optional<YearFiles> Files;

    int YearIndex = 0;
    tools::Day Today = 0;
    int Month = 0; // 0..11, fiscal
    vark::PackedDate TodayPacked = {};
    vark::SortDate TodaySort = {};
    int Running = 0; // of the day
    int32_t Booking = 0;
    int64_t Written = 0;
    int64_t CostLines = 0;
    int64_t Shrink = 1;
    int32_t Invoice = 0;
    int32_t Receipt = 0;
    int32_t Statement = 0;
    int32_t Voucher = 0;
    int64_t CommunityNet = 0;           // bought in the EC this month
    int64_t ImportNet = 0;              // and outside of it
    Totals DebitorMonth, KreditorMonth; // of the collective accounts
    std::vector<Account *> Sales, Purchases, Expenses;
    std::vector<int32_t> CustomersAbroad, SuppliersAbroad;

    Generator(Ledger &ledger, const PostingPlan &plan, const std::filesystem::path &data,
              const Progress &progress);

    Account *Find(int number) const { return Books.FindSachkonto(number); }
    // An account of the chart that must be there.
    Account *Get(int number) const;
    // Two thirds of the items that are to be left over are the customers'.
    int64_t WantedOpen() const { return Plan.OpenItems * 2 / 3; }
    int64_t WantedOwed() const { return Plan.OpenItems - WantedOpen(); }
    bool HasRoom(int64_t records) const { return Written + records <= Plan.Count; }
    // What every month costs; the smaller Mandanten have smaller rooms and fewer people.
    int64_t Fixed(int64_t pfennig) const
    {
        return Books.Of->OpeningShare == 1 ? pfennig : pfennig / 2 / Books.Of->OpeningShare;
    }
};

} // namespace books
