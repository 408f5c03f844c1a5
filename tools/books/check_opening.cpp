#include "tools/books/check_opening.h"

#include "tools/books/check_reading.h"

namespace books {

namespace fs = std::filesystem;
using namespace tools;
using namespace vark;

namespace {

int64_t ClosingOf(const AccountSums &sums)
{
    int64_t balance = Pfennig(sums.Vortrag.Soll) - Pfennig(sums.Vortrag.Haben) + Pfennig(sums.Slot0.Soll) -
                      Pfennig(sums.Slot0.Haben);
    for (const SollHaben &month : sums.Monat) {
        balance += Pfennig(month.Soll) - Pfennig(month.Haben);
    }
    return balance;
}

void CompareOpening(YearCheck &year, const AccountNumber &number, int64_t closing)
{
    const AccountState *account = year.Find(number);
    if (account == nullptr) {
        if (closing == 0) return;
        year.Tell("vortrag", "sako", Konto(number), "Konto",
                  "das Konto des Vorjahrs fehlt, sein Saldo war " + Money(closing));
        return;
    }
    const bool isCarried = account->Kind != AccountKind::Sachkonto || account->Zuordnung == ZuordnungAktiva;
    if (!isCarried || account->VortragBalance == closing) return;
    year.Tell("vortrag", KindName(account->Kind), account->Number, "Umsaetze.Vortrag",
              Money(account->VortragBalance) + ", das Vorjahr endete mit " + Money(closing));
}

} // namespace

void CheckOpening(YearCheck &year)
{
    if (!fs::exists(year.Before) || !year.AreRead({TableSako, TableDebi, TableKred})) return;
    std::set<uint64_t> known;
    const auto compare = [&](const AccountNumber &number, const AccountSums &sums) {
        known.insert(Packed(number));
        CompareOpening(year, number, ClosingOf(sums));
    };
    try {
        TableFile accounts(LayoutOf(TableSako), year.Before, OpenMode::ReadOnly);
        SakoRecord account{};
        for (bool found = accounts.StepFirst(&account); found; found = accounts.StepNext(&account)) {
            compare(account.Konto, account.Umsaetze);
        }
        for (const TableId id : {TableDebi, TableKred}) {
            TableFile partners(LayoutOf(id), year.Before, OpenMode::ReadOnly);
            PersonalRecord partner{};
            for (bool found = partners.StepFirst(&partner); found; found = partners.StepNext(&partner)) {
                compare(partner.Konto, partner.Umsaetze);
            }
        }
    } catch (const EngineError &error) {
        if (IsCircumstance(error.Status)) throw;
        return; // told where that year is checked
    }
    for (const AccountState &account : year.Accounts) {
        if (account.VortragBalance == 0 || known.count(account.Key) > 0) continue;
        year.Tell("vortrag", KindName(account.Kind), account.Number, "Umsaetze.Vortrag",
                  Money(account.VortragBalance) + ", im Vorjahr gab es das Konto nicht");
    }
}

} // namespace books
