#include "tools/books/check_open_items.h"

#include "tools/books/check_reading.h"

namespace books {

using namespace tools;
using namespace vark;

namespace {

void CheckItems(YearCheck &year, TableId id, AccountKind kind)
{
    const std::string &stem = LayoutOf(id).Stem;
    std::unordered_map<uint64_t, int64_t> open;
    Check<OpenItemRecord>(year, id, [&](const OpenItemRecord &record) {
        const std::string key = std::to_string(record.Nummer);
        open[Packed(record.Konto)] += Pfennig(record.Betrag1);
        Day first = 0;
        Day due = 0;
        if (DayOfSort(record.Datum1, year.Of.FirstMonth, first) &&
            DayOfSort(record.Termin, year.Of.FirstMonth, due) && due < first) {
            year.Tell("datum", stem, key, "Termin", DisplayDay(due) + " liegt vor dem Belegdatum");
        }
    });
    const TableId accounts = kind == AccountKind::Debitor ? TableDebi : TableKred;
    if (!year.AreRead({id, accounts})) return;
    for (const AccountState &account : year.Accounts) {
        if (account.Kind != kind) continue;
        const int64_t balance = kind == AccountKind::Debitor ? account.Balance() : -account.Balance();
        const auto items = open.find(account.Key);
        const int64_t sum = items != open.end() ? items->second : 0;
        if (sum != balance) {
            year.Tell("offene-posten", stem, account.Number, "Betrag1",
                      "die Posten ergeben " + Money(sum) + ", der Saldo ist " + Money(balance));
        }
    }
}

} // namespace

void CheckOpenItems(YearCheck &year)
{
    CheckItems(year, TableOpdebi, AccountKind::Debitor);
    CheckItems(year, TableOpkred, AccountKind::Kreditor);
}

} // namespace books
