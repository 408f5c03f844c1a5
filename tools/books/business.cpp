#include "tools/books/business.h"

#include "text/windows1252.h"
#include "tools/books/markets.h"
#include "tools/books/payments.h"
#include "tools/books/posting_records.h"
#include "tools/books/record_fields.h"

#include <algorithm>

namespace books {

using namespace tools;
using namespace vark;

using text::operator""_w;

namespace {

// A few at home have most of the business; those abroad are no rare ones.
int32_t AnyPartner(Generator &maker, const std::vector<Account> &partners, const std::vector<int32_t> &abroad)
{
    if (!abroad.empty() && maker.Dice.Chance(10)) {
        return abroad[static_cast<size_t>(maker.Dice.Below(static_cast<int64_t>(abroad.size())))];
    }
    return static_cast<int32_t>(maker.Dice.Skewed(static_cast<int64_t>(partners.size())));
}

void Sale(Generator &maker, int64_t room)
{
    const int32_t index = AnyPartner(maker, maker.Books.Debitoren, maker.CustomersAbroad);
    Account &customer = maker.Books.Debitoren[static_cast<size_t>(index)];
    const Market market = MarketOf(*customer.Partner);
    const bool isHome = market == Market::Home;

    const int64_t parts = maker.Dice.Chance(15) ? std::min<int64_t>(maker.Dice.Between(2, 5), room) : 1;
    Account *const home = Pick(maker, maker.Sales, nullptr);
    ++maker.Invoice;
    OpenItem item{index, maker.Booking + 1, "AR", maker.Invoice, maker.Today, 0, 0, 0, 0, {}};
    for (int64_t part = 0; part < parts; ++part) {
        Line line;
        line.Soll = &customer;
        line.Haben = isHome ? Pick(maker, maker.Sales, home) : maker.Get(RevenueFrom(market));
        if (isHome) {
            line.Duty = TaxOf(maker, *line.Haben, true);
        } else if (market == Market::CommunityPrivate) {
            // A private customer in the EC pays the tax of this country.
            line.Duty = {maker.Get(2430), maker.Today >= regularChange ? regularSince : regularBefore,
                         SteuerEg, true};
        }
        line.HabenAmount = Amount(maker, 150, 16000);
        line.TaxAmount = Percent(line.HabenAmount, line.Duty.Rate);
        line.SollAmount = line.HabenAmount + line.TaxAmount;
        if (parts > 1) line.Status = BubeSplitSoll;
        if (parts > 1 && part == 0) {
            line.Status |= BubeSplitAnfang;
            line.Parts = static_cast<int16_t>(parts - 1);
        }
        line.Prefix = "AR";
        line.Voucher = maker.Invoice;
        line.Text = isHome                      ? "Warenlieferung"_w
                    : market == Market::Outside ? "Ausfuhrlieferung"_w
                                                : "EG-Lieferung"_w;
        Book(maker, line);
        item.Original += line.SollAmount;
        item.NetOpen += line.HabenAmount;
        item.TaxOpen += line.TaxAmount;
        if (part == 0) item.Duty = line.Duty;
    }
    item.Open = item.Original;
    maker.Receivable.push_back(item);
}

// A day's takings: one line stands for itself, the small ones behind it are folded into one sum. All of them
// have the same accounts, which a reader of a folded line takes from its neighbour.
void CashSale(Generator &maker, int64_t room)
{
    Account *till = maker.Find(1820) != nullptr ? maker.Find(1820) : maker.Get(1810);
    Account *sales = Pick(maker, maker.Sales, nullptr);
    const bool isTaxDueNow = maker.Books.Of->PaysTaxOnReceipt;
    const int64_t folded = std::min<int64_t>(maker.Dice.Between(2, 6), room - 1 - (isTaxDueNow ? 1 : 0));
    if (folded < 0) return;
    int64_t net = 0;
    int64_t tax = 0;
    ++maker.Voucher;
    for (int64_t part = 0; part <= folded; ++part) {
        Line line;
        line.Soll = till;
        line.Haben = sales;
        line.Duty = TaxOf(maker, *sales, true);
        line.RateSource = BubeSteuerErrechnet & ~ordinaryRateSource;
        line.HabenAmount = Amount(maker, 20, 300);
        line.TaxAmount = Percent(line.HabenAmount, line.Duty.Rate);
        line.SollAmount = line.HabenAmount + line.TaxAmount;
        line.Status = folded > 0 ? BubeSplitSoll : 0;
        if (part > 0) line.Status |= BubeGefaltet;
        if (part == 0 && folded > 0) {
            line.Status |= BubeSplitAnfang;
            line.Parts = static_cast<int16_t>(folded);
        }
        line.Prefix = "KA";
        line.Voucher = maker.Voucher;
        line.Text = part == 0 ? "Tageslosung"_w : "Tageslosung, Einzelverkauf"_w;
        Book(maker, line);
        net += line.HabenAmount;
        tax += line.TaxAmount;
    }
    if (isTaxDueNow && tax != 0)
        BookTaxDue(maker, TaxOf(maker, *sales, true).Key, maker.Today, net, tax, "KA", maker.Voucher);
}

void Purchase(Generator &maker, int64_t room)
{
    const int32_t index = AnyPartner(maker, maker.Books.Kreditoren, maker.SuppliersAbroad);
    Account &supplier = maker.Books.Kreditoren[static_cast<size_t>(index)];
    const PartnerRow &partner = *supplier.Partner;
    const bool isHome = std::strcmp(partner.Land, "D") == 0;
    const bool isCommunity = *partner.UstId != 0;
    // A Mandant without imports books them as purchases in the EC, which all have.
    Account *abroad = !isCommunity && maker.Find(6120) != nullptr ? maker.Find(6120) : maker.Get(6110);

    const int64_t parts =
        isHome && maker.Dice.Chance(20) ? std::min<int64_t>(maker.Dice.Between(2, 4), room) : 1;
    Account *const home = Pick(maker, maker.Purchases, nullptr);
    ++maker.Receipt;
    OpenItem item{index, maker.Booking + 1, "ER", maker.Receipt, maker.Today, 0, 0, 0, 0, {}};
    for (int64_t part = 0; part < parts; ++part) {
        Line line;
        line.Haben = &supplier;
        line.Soll = isHome ? Pick(maker, maker.Purchases, home) : abroad;
        if (isHome) line.Duty = TaxOf(maker, *line.Soll, false);
        line.SollAmount = Amount(maker, 60, 5200);
        line.TaxAmount = Percent(line.SollAmount, line.Duty.Rate);
        line.HabenAmount = line.SollAmount + line.TaxAmount;
        if (line.Soll->Number == 6110) maker.CommunityNet += line.SollAmount;
        if (line.Soll->Number == 6120) maker.ImportNet += line.SollAmount;
        if (parts > 1) line.Status = BubeSplitHaben;
        if (parts > 1 && part == 0) {
            line.Status |= BubeSplitAnfang;
            line.Parts = static_cast<int16_t>(parts - 1);
        }
        line.Prefix = "ER";
        line.Voucher = maker.Receipt;
        line.Text = isHome ? "Eingangsrechnung"_w : "Eingangsrechnung Ausland"_w;
        Book(maker, line);
        item.Original += line.HabenAmount;
        item.NetOpen += line.SollAmount;
        item.TaxOpen += line.TaxAmount;
        if (part == 0) item.Duty = line.Duty;
    }
    item.Open = item.Original;
    maker.Payable.push_back(item);
}

} // namespace

void SmallExpense(Generator &maker)
{
    constexpr int64_t fewestCash = 50000;
    Account &expense = *Pick(maker, maker.Expenses, nullptr);
    Account &till = *maker.Get(1810);
    const bool hasCash = till.Years[maker.YearIndex].Balance() >= fewestCash;
    ++maker.Voucher;
    BookExpense(maker, expense, hasCash ? till : *maker.Get(1840), Amount(maker, 12, 240),
                hasCash ? "KA" : "BA", maker.Voucher, hasCash ? "Barauslage"_w : "Kartenzahlung"_w);
}

namespace {

// Part of an open invoice is taken back.
void CreditNote(Generator &maker, int64_t room)
{
    const bool isPossible = !maker.Receivable.empty() && maker.Receivable.front().Booking != 0;
    if (!isPossible || room < 1 || maker.Books.Of->PaysTaxOnReceipt) return Sale(maker, 1);
    OpenItem item = maker.Receivable.front();
    maker.Receivable.pop_front();
    ++maker.Voucher;
    Line line;
    Account &customer = maker.Books.Debitoren[static_cast<size_t>(item.Account)];
    line.Soll = maker.Get(DeductionOf(item, *customer.Partner, 5240, 5245));
    line.Haben = &customer;
    line.SollAmount = std::max(smallestNet, item.NetOpen / 10);
    if (item.Duty.Of != nullptr) {
        line.Duty = item.Duty;
        line.Duty.OnHaben = false;
    }
    line.TaxAmount = Percent(line.SollAmount, line.Duty.Rate);
    line.HabenAmount = line.SollAmount + line.TaxAmount;
    if (line.HabenAmount < item.Open) {
        line.Prefix = "GU";
        line.Voucher = maker.Voucher;
        line.Text = "Gutschrift wegen Mängeln"_w;
        Book(maker, line);
        item.Open -= line.HabenAmount;
        item.NetOpen -= line.SollAmount;
        item.TaxOpen -= line.TaxAmount;
        maker.Receivable.push_front(item);
    } else {
        maker.Receivable.push_front(item);
        Sale(maker, 1);
    }
}

// The till is never empty and never too full.
void MoveCash(Generator &maker)
{
    for (const int till : {1810, 1820}) {
        Account *account = maker.Find(till);
        if (account == nullptr) continue;
        const int64_t balance = account->Years[maker.YearIndex].Balance();
        ++maker.Voucher;
        if (balance < 50000) {
            BookPlain(maker, till, 1840, 300000, "KA", maker.Voucher, "Barabhebung"_w);
            return;
        }
        if (balance > 2000000) {
            BookPlain(maker, 1840, till, balance / 100000 * 100000 - 500000, "KA", maker.Voucher,
                      "Einzahlung"_w);
            return;
        }
    }
    SmallExpense(maker);
}

void RareThing(Generator &maker)
{
    ++maker.Voucher;
    switch (maker.Dice.Below(4)) {
    case 0:
        // Reversed with negative amounts, so that the turnover is as if nothing had been.
        BookPlain(maker, 8550, 1840, -Amount(maker, 12, 40), "BA", maker.Voucher, "Storno Kontoführung"_w);
        return;
    case 1:
        BookPlain(maker, 8550, 1840, Amount(maker, 12, 60), "BA", maker.Voucher, "Kontoführung"_w);
        return;
    case 2:
        if (maker.Sales.size() > 1 && maker.Sales.front() != maker.Sales.back()) {
            // No turnover: it is left out of the boxes of the tax return.
            BookPlain(maker, maker.Sales.front()->Number, maker.Sales.back()->Number, Amount(maker, 50, 900),
                      "UB", maker.Voucher, "Umbuchung zwischen Erlösen"_w, BubeOhneKennzahl);
            return;
        }
        [[fallthrough]];
    default:
        BookPlain(maker, 1840, 5410, Amount(maker, 15, 200), "BA", maker.Voucher, "Habenzinsen"_w);
        return;
    }
}

} // namespace

void Anything(Generator &maker, int64_t room)
{
    const auto open = static_cast<int64_t>(maker.Receivable.size() + maker.LateReceivable.size());
    const auto owed = static_cast<int64_t>(maker.Payable.size() + maker.LatePayable.size());
    const int64_t wantedOpen = maker.WantedOpen();
    const int64_t wantedOwed = maker.WantedOwed();
    const int64_t before = maker.Written;
    const int64_t die = maker.Dice.Below(100);
    if (die < 36) {
        if (open > wantedOpen && maker.Dice.Chance(50)) {
            CustomerPays(maker, room);
        } else {
            Sale(maker, room);
        }
    } else if (die < 60) {
        if (open >= wantedOpen) CustomerPays(maker, room);
    } else if (die < 74) {
        if (owed > wantedOwed && maker.Dice.Chance(50)) {
            SupplierIsPaid(maker, room);
        } else {
            Purchase(maker, room);
        }
    } else if (die < 86) {
        if (owed >= wantedOwed) SupplierIsPaid(maker, room);
    } else if (die < 89) {
        CashSale(maker, room);
    } else if (die < 95) {
        SmallExpense(maker);
    } else if (die < 97) {
        CreditNote(maker, room);
    } else if (die < 99) {
        MoveCash(maker);
    } else {
        RareThing(maker);
    }
    if (maker.Written == before) Sale(maker, room);
}

} // namespace books
