// The check of a year at work: what it gathers while it reads, and its steps, one source for each subject.
// Only the sources of the check include it.
#pragma once

#include "src/values/amounts.h"
#include "tools/books/check_tables.h"
#include "tools/books/check_year.h"
#include "tools/common/calendar.h"
#include "tools/common/terminal.h"
#include "tools/common/texts.h"

#include <cstring>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace books {

int64_t Pfennig(const vark::AmountText &field);
// "-1.234,56"
std::string Money(int64_t pfennig);
// An account number's eight bytes, to look it up by.
uint64_t Packed(const vark::AccountNumber &number);
// Without its blanks.
std::string Konto(const vark::AccountNumber &number);
bool IsEmpty(const vark::AccountNumber &number);

// Whether a USt-IdNr begins with the two letters of its country, by which it is told whose it is.
bool NamesCountry(const std::string &ustId);

struct Turnover {
    int64_t Soll = 0;
    int64_t Haben = 0;
};

enum class AccountKind : uint8_t { Sachkonto, Kreditor, Debitor };

// The table of its accounts.
const char *KindName(AccountKind kind);

struct AccountState {
    AccountKind Kind;
    uint64_t Key; // the number's eight bytes
    std::string Number;
    int16_t Zuordnung;
    int64_t VortragBalance;
    Turnover Recorded[12], Posted[12];
    Turnover Slot0;
    int32_t RecordedCount[12], PostedCount[12];

    int64_t Balance() const
    {
        int64_t balance = VortragBalance + Slot0.Soll - Slot0.Haben;
        for (const Turnover &month : Recorded) {
            balance += month.Soll - month.Haben;
        }
        return balance;
    }
};

struct Rate {
    int Sequence;
    bool IsOpen; // valid since ever
    tools::Day From;
    int Percent; // hundredths
    uint64_t Umsatzsteuerkonto, Vorsteuerkonto;
};

struct CostState {
    std::string Number;
    int64_t Recorded[12];
    int64_t Posted[12];
};

struct Node {
    vark::StructureRecord Record;
    bool IsReached;
};

struct Tree {
    vark::TableId Id;
    int16_t Zuordnung;
    std::map<int32_t, Node> Nodes;
    std::vector<std::string> Outside;      // accounts of records with Id 0
    std::map<std::string, int> Leaves;     // accounts by how often they have an ordinary leaf
    std::map<std::string, int32_t> Second; // accounts with a Gegenposten leaf, and its node
};

// What a posting of a split needs of the lines before it.
struct SplitState {
    int Expected = 0; // lines that are still to come
    uint16_t Side = 0;
    uint64_t MainAccount = 0;
    std::string Head;
    std::string Day;
};

struct YearCheck {
    Findings &Out;
    const std::filesystem::path &Data;
    const tools::Mandant &Of;
    int Year;
    std::filesystem::path Directory;     // of this year
    std::filesystem::path LastDirectory; // of the last postable year
    bool IsLastYear;

    std::unordered_map<uint64_t, size_t> AccountOf;
    std::vector<AccountState> Accounts;
    std::unordered_map<uint64_t, size_t> CostOf;
    std::vector<CostState> Costs;
    std::map<int, std::vector<Rate>> Rates; // by code, in the order of their sequence numbers
    std::set<int32_t> Templates, Terms, Batches;
    std::set<std::string> Users, Currencies;
    std::map<int32_t, int> TemplateLines; // as the head says
    std::set<std::string> ShortNames;

    YearCheck(Findings &findings, const std::filesystem::path &data, const tools::Mandant &mandant, int year)
        : Out(findings), Data(data), Of(mandant), Year(year),
          Directory(data / mandant.Directory(std::to_string(year))),
          LastDirectory(data / mandant.Directory(mandant.UpperYear)),
          IsLastYear(std::to_string(year) == mandant.UpperYear)
    {}

    void Tell(std::string_view rule, std::string_view table, std::string_view key, std::string_view field,
              std::string_view text)
    {
        Out.Tell(rule, table, key, field, text);
    }

    // Checks a table, what its records refer to, and hands them to `visit` before that.
    template <typename Record, typename Visit> bool Check(vark::TableId id, Visit visit)
    {
        return CheckTable(Out, tools::LayoutOf(id), Directory, Of.FirstMonth, [&](const char *bytes) {
            Record record;
            std::memcpy(&record, bytes, sizeof record);
            visit(record);
            CheckReferences(tools::LayoutOf(id), bytes);
        });
    }

    // Reads a table that stands in the last year's directory, without checking it: that is done there.
    template <typename Record, typename Visit> void ReadLast(vark::TableId id, Visit visit)
    {
        try {
            tools::TableFile table(tools::LayoutOf(id), LastDirectory, tools::OpenMode::ReadOnly);
            Record record{};
            for (bool found = table.StepFirst(&record); found; found = table.StepNext(&record)) {
                visit(record);
            }
        } catch (const tools::EngineError &) {
            // Told where that directory is checked.
        }
    }

    AccountState *Find(const vark::AccountNumber &number)
    {
        const auto found = AccountOf.find(Packed(number));
        return found != AccountOf.end() ? &Accounts[found->second] : nullptr;
    }

    bool InYear(tools::Day day) const { return tools::FiscalOf(day, Of.FirstMonth).Year == Year; }

    // What the fields of a record refer to must be there, by the description of the tables. Nodes of trees,
    // bookings and their parts are followed where these are read.
    void CheckReferences(const tools::TableLayout &layout, const char *record);
    // What is missing of it; empty for nothing.
    std::string FaultOfReference(const tools::FieldLayout &field, const char *record) const;
    template <typename Record> void CheckReferences(vark::TableId id, const Record &record)
    {
        CheckReferences(tools::LayoutOf(id), reinterpret_cast<const char *>(&record));
    }

    void Run();
    void ReadReferences();
    void CheckAccounts();
    void AddAccount(AccountKind kind, const vark::AccountNumber &number, int16_t zuordnung,
                    const vark::AccountSums &sums);
    void CheckShortName(const char *table, const std::string &number, const std::string &name);
    void CheckSachkonto(const vark::SakoRecord &record);
    void CheckPartner(AccountKind kind, const vark::PersonalRecord &record);
    void CheckRates();
    void CheckRateRows();
    void CheckTrees();
    void CheckLeafText(const Tree &tree, const vark::StructureRecord &record);
    void CheckGroup(const Tree &tree, const vark::StructureRecord &record, int depth);
    void WalkTree(Tree &tree, int32_t id, int depth);
    void CheckPostings();
    void CheckPosting(const vark::BubeRecord &record, SplitState &split);
    void CheckTax(const vark::BubeRecord &record, const std::string &key);
    void CheckSplitLine(const vark::BubeRecord &record, const std::string &key, SplitState &split);
    void Post(const vark::AccountNumber &number, int month, int64_t soll, int64_t haben, bool counts);
    void CompareSums();
    void CheckCostObjects();
    void CheckCostLines();
    void CheckTemplates();
    void CheckSmallTables();
    void CheckExchangeRates();
    void CheckBatches();
    void CheckPart(const vark::SplitRecord &part, const std::string &table, const std::string &key,
                   tools::Day day);
    void CheckOpenItems(vark::TableId id, AccountKind kind);
    void CheckCarriedOver();
    void CheckUnused();
};

} // namespace books
