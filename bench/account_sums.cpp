// The sums of every account of Mandant 1 up to a day, through the function of the library itself: no export
// offers it, the reports call it.
//   account_sums CONFIG_DIRECTORY TT.MM.JJ [PASSES]
// Prints the accounts, the postings of the day's month, those behind the day, memory and, last, the seconds.
#include "bench/query_calls.h"
#include "src/booking/balances.h"
#include "src/frame/lifecycle.h"
#include "src/frame/mandant.h"
#include "src/frame/record_store.h"
#include "src/model/company_records.h"
#include "src/model/posting_records.h"
#include "src/values/dates.h"
#include "text/fixed_text.h"

#include <vector>

namespace {

using namespace vark;

struct Account {
    AccountNumber Konto;
    AccountSums Sums;
};

template <typename Record>
void AddAccounts(ThreadContext &context, TableId table, std::vector<Account> &accounts)
{
    Record record;
    bool found = false;
    Must(GetFirstF(context, &record, found, table) ? 0 : 1);
    while (found) {
        Account account{};
        text::CopyText(account.Konto, record.Konto);
        std::memcpy(&account.Sums, &record.Umsaetze, sizeof account.Sums);
        accounts.push_back(account);
        Must(GetNextF(context, &record, found, table) ? 0 : 1);
    }
}

// How many postings lie in the month of a day, and how many of them behind it.
void CountPostings(ThreadContext &context, const PackedDate &date, long &inMonth, long &behind)
{
    BubeRecord record;
    bool found = false;
    SortDate day;
    text::CopyText(day, date);
    ToSortDate(day);
    KeyBuffer key{};
    std::memcpy(key.Bytes, day, 4); // year and month
    Must(GetGreaterEqualF(context, &record, key, found, TableBube) ? 0 : 1);
    while (found && std::memcmp(record.Schluessel.Folge, day, 4) == 0) {
        ++inMonth;
        if (std::memcmp(record.Schluessel.Folge, day, 6) > 0) ++behind;
        Must(GetNextF(context, &record, found, TableBube) ? 0 : 1);
    }
}

} // namespace

int main(int argumentCount, char **arguments)
{
    if (argumentCount < 3) {
        std::fprintf(stderr, "%s CONFIG_DIRECTORY TT.MM.JJ [PASSES]\n", arguments[0]);
        return 2;
    }
    const long passes = argumentCount > 3 ? NumberOf(arguments[3]) : 1;
    setenv("VARK_CONFIG_DIR", arguments[1], 1);
    setenv("VARK_UI", "headless", 1);
    ThreadContext *context = nullptr;
    Must(EnterExport(context) == ready ? 0 : 1);
    FistaRecord fista;
    Must(SelectMandant(*context, 1, fista) == 1 ? 0 : 1);
    char day[20] = {};
    text::CopyText(day, arguments[2]);
    Must(ParseDateText(*context, day, sizeof day, false) == DateGood ? 0 : 1);
    PackedDate date;
    text::CopyText(date, day);

    std::vector<Account> accounts;
    AddAccounts<SakoRecord>(*context, TableSako, accounts);
    AddAccounts<PersonalRecord>(*context, TableKred, accounts);
    AddAccounts<PersonalRecord>(*context, TableDebi, accounts);
    long inMonth = 0;
    long behind = 0;
    CountPostings(*context, date, inMonth, behind);

    QueryReport report;
    const Stopwatch watch;
    for (long pass = 0; pass < passes; ++pass) {
        for (const Account &account : accounts) {
            SollHaben sums;
            Must(AccountSumsToDate(*context, account.Konto, account.Sums, date, SumEarlierMonths | SumVortrag,
                                   TableBube, sums)
                     ? 0
                     : 1);
            ++report.Calls;
        }
        report.EndPass();
    }
    const double seconds = watch.Seconds();
    std::printf("%zu accounts %ld postings %ld behind ", accounts.size(), inMonth, behind);
    report.Print(seconds);
}
