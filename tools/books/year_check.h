// The check of a year at work: what it gathers while it reads. The sources of its subjects alone include it.
#pragma once

#include "tools/books/check_values.h"
#include "tools/books/check_year.h"
#include "tools/common/calendar.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace books {

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

struct YearCheck {
    Findings &Out;
    const tools::Mandant &Of;
    int Year;
    std::filesystem::path Directory, LastDirectory, Before;
    bool IsLastYear;

    std::set<vark::TableId> Unread; // tables that could not be read: nothing is concluded from them
    std::unordered_map<uint64_t, size_t> AccountOf;
    std::vector<AccountState> Accounts;
    std::unordered_map<uint64_t, size_t> CostOf;
    std::vector<CostState> Costs;
    std::map<int, std::vector<Rate>> Rates; // by code, in the order of their sequence numbers
    std::set<int32_t> Templates, Terms, Batches;
    std::set<std::string> Users, Currencies;
    std::map<int32_t, int> TemplateLines; // as the head says
    std::set<std::string> ShortNames;

    YearCheck(Findings &findings, const YearPlace &place, const tools::Mandant &mandant, int year)
        : Out(findings), Of(mandant), Year(year), Directory(place.Directory),
          LastDirectory(place.LastDirectory), Before(place.Before),
          IsLastYear(std::to_string(year) == mandant.UpperYear)
    {}

    void Tell(std::string_view rule, std::string_view table, std::string_view key, std::string_view field,
              std::string_view text)
    {
        Out.Tell(rule, table, key, field, text);
    }

    AccountState *Find(const vark::AccountNumber &number)
    {
        const auto found = AccountOf.find(Packed(number));
        return found != AccountOf.end() ? &Accounts[found->second] : nullptr;
    }

    bool InYear(tools::Day day) const { return tools::FiscalOf(day, Of.FirstMonth).Year == Year; }

    // Whether all of these tables were read to their end.
    bool AreRead(std::initializer_list<vark::TableId> tables) const
    {
        return std::none_of(tables.begin(), tables.end(),
                            [this](vark::TableId id) { return Unread.count(id) > 0; });
    }
};

} // namespace books
