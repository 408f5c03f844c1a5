// The exports that ask, over sample books: the balance of every account, every open item.
//   query_calls saldo|op CONFIG_DIRECTORY [PASSES]   prints calls, memory and, last, the seconds
// CONFIG_DIRECTORY is where `books beispiel` made an installation.
#include "bench/query_calls.h"

#include "include/vark40.h"

#include <vector>

namespace {

constexpr int kinds[] = {1, 2, 4};

std::vector<QueryAccount> AllAccounts()
{
    std::vector<QueryAccount> accounts;
    for (const int art : kinds) {
        Must(VARK_InitHoleKonto(1, art, nullptr, 1) == 1 ? 0 : 1);
        // The last Sachkonto comes with -3, the last personal account with 2.
        for (int32_t result = 1; result == 1;) {
            QueryAccount account{{}, art};
            result = art == 1 ? VARK_HoleSako(account.Konto, nullptr, nullptr, nullptr, nullptr, nullptr)
                              : VARK_HolePeko(account.Konto, nullptr, nullptr, nullptr, nullptr, nullptr,
                                              nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                              nullptr, nullptr, nullptr, 0, nullptr, nullptr, nullptr);
            accounts.push_back(account);
        }
    }
    return accounts;
}

void AskBalances(long passes)
{
    const std::vector<QueryAccount> accounts = AllAccounts();
    QueryReport report;
    const Stopwatch watch;
    for (long pass = 0; pass < passes; ++pass) {
        for (const QueryAccount &account : accounts) {
            char out[17];
            Must(VARK_HoleSaldo(1, account.Konto, account.Art, 1, 3, out) == 1 ? 0 : 1);
            ++report.Calls;
        }
        report.EndPass();
    }
    report.Print(watch.Seconds());
}

void AskItems(long passes)
{
    QueryReport report;
    const Stopwatch watch;
    for (long pass = 0; pass < passes; ++pass) {
        for (const int art : {2, 4}) {
            Must(VARK_InitHoleOP(1, "", art, 1) == 1 ? 0 : 1);
            for (int32_t result = 1; result == 1;) {
                char konto[8], reference1[10], reference2[10], day1[11], day2[11], day3[11], text1[26],
                    text2[26], amount1[17], amount2[17], currency[5];
                result = VARK_HoleOP(konto, reference1, reference2, day1, day2, day3, text1, text2, 3,
                                     amount1, amount2, currency);
                Must(result >= 1 ? 0 : 1);
                ++report.Calls;
            }
        }
        report.EndPass();
    }
    report.Print(watch.Seconds());
}

} // namespace

int main(int argumentCount, char **arguments)
{
    const QueryTask task = QueryTask::From(argumentCount, arguments);
    setenv("VARK_CONFIG_DIR", task.Directory, 1);
    setenv("VARK_UI", "headless", 1);
    if (task.What == "saldo") AskBalances(task.Passes);
    if (task.What == "op") AskItems(task.Passes);
    VARK_SchliesseDB();
}
