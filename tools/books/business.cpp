#include "tools/books/generator.h"

#include "text/windows1252.h"

#include <algorithm>

namespace books {

using namespace tools;
using namespace vark;

using text::operator""_w;

// Where a partner's goods come from or go to, which decides on the tax.
enum class Market : uint8_t { Home, Community, CommunityPrivate, Outside };

Market MarketOf(const PartnerRow &partner)
{
    if (std::strcmp(partner.Land, "D") == 0) return Market::Home;
    if (*partner.UstId != 0) return Market::Community;
    constexpr const char *members[] = {"A",  "B", "DK",  "E", "F",  "FIN", "GB",
                                       "GR", "I", "IRL", "L", "NL", "P",   "S"};
    const bool isMember = std::any_of(std::begin(members), std::end(members),
                                      [&](const char *land) { return std::strcmp(land, partner.Land) == 0; });
    return isMember ? Market::CommunityPrivate : Market::Outside;
}

// Revenue from a market other than the one at home.
int RevenueFrom(Market market)
{
    return market == Market::Community ? 5110 : market == Market::CommunityPrivate ? 5115 : 5120;
}

// The account that what is taken off a sale goes to: the revenue itself for other markets, so that the boxes
// of the tax return hold what was sold in the end.
int DeductionOf(const OpenItem &item, const PartnerRow &partner, int regular, int reduced)
{
    const Market market = MarketOf(partner);
    if (market != Market::Home) return RevenueFrom(market);
    return (item.Duty.Key & SteuerErmaessigt) != 0 ? reduced : regular;
}

// A few at home have most of the business; those abroad are no rare ones.
int32_t Generator::AnyPartner(const std::vector<Account> &partners, const std::vector<int32_t> &abroad)
{
    if (!abroad.empty() && Dice.Chance(10)) {
        return abroad[static_cast<size_t>(Dice.Below(static_cast<int64_t>(abroad.size())))];
    }
    return static_cast<int32_t>(Dice.Skewed(static_cast<int64_t>(partners.size())));
}

void Generator::Sale(int64_t room)
{
    const int32_t index = AnyPartner(Books.Debitoren, CustomersAbroad);
    Account &customer = Books.Debitoren[static_cast<size_t>(index)];
    const Market market = MarketOf(*customer.Partner);
    const bool isHome = market == Market::Home;

    const int64_t parts = Dice.Chance(15) ? std::min<int64_t>(Dice.Between(2, 5), room) : 1;
    Account *const home = Pick(Sales, nullptr);
    ++Invoice;
    OpenItem item{index, Booking + 1, "AR", Invoice, Today, 0, 0, 0, 0, {}};
    for (int64_t part = 0; part < parts; ++part) {
        Line line;
        line.Soll = &customer;
        line.Haben = isHome ? Pick(Sales, home) : Get(RevenueFrom(market));
        if (isHome) {
            line.Duty = TaxOf(*line.Haben, true);
        } else if (market == Market::CommunityPrivate) {
            // A private customer in the EC pays the tax of this country.
            line.Duty = {Get(2430), Today >= regularChange ? regularSince : regularBefore, SteuerEg, true};
        }
        line.HabenAmount = Amount(150, 16000);
        line.TaxAmount = Percent(line.HabenAmount, line.Duty.Rate);
        line.SollAmount = line.HabenAmount + line.TaxAmount;
        if (parts > 1) line.Status = BubeSplitSoll;
        if (parts > 1 && part == 0) {
            line.Status |= BubeSplitAnfang;
            line.Parts = static_cast<int16_t>(parts - 1);
        }
        line.Prefix = "AR";
        line.Voucher = Invoice;
        line.Text = isHome                      ? "Warenlieferung"_w
                    : market == Market::Outside ? "Ausfuhrlieferung"_w
                                                : "EG-Lieferung"_w;
        Book(line);
        item.Original += line.SollAmount;
        item.NetOpen += line.HabenAmount;
        item.TaxOpen += line.TaxAmount;
        if (part == 0) item.Duty = line.Duty;
    }
    item.Open = item.Original;
    Receivable.push_back(item);
}

// A day's takings: one line stands for itself, the small ones behind it are folded into one sum. All of them
// have the same accounts, which a reader of a folded line takes from its neighbour.
void Generator::CashSale(int64_t room)
{
    Account *till = Find(1820) != nullptr ? Find(1820) : Get(1810);
    Account *sales = Pick(Sales, nullptr);
    const bool isTaxDueNow = Books.Of->PaysTaxOnReceipt;
    const int64_t folded = std::min<int64_t>(Dice.Between(2, 6), room - 1 - (isTaxDueNow ? 1 : 0));
    if (folded < 0) return;
    int64_t net = 0;
    int64_t tax = 0;
    ++Voucher;
    for (int64_t part = 0; part <= folded; ++part) {
        Line line;
        line.Soll = till;
        line.Haben = sales;
        line.Duty = TaxOf(*sales, true);
        line.RateSource = BubeSteuerErrechnet & ~ordinaryRateSource;
        line.HabenAmount = Amount(20, 300);
        line.TaxAmount = Percent(line.HabenAmount, line.Duty.Rate);
        line.SollAmount = line.HabenAmount + line.TaxAmount;
        line.Status = folded > 0 ? BubeSplitSoll : 0;
        if (part > 0) line.Status |= BubeGefaltet;
        if (part == 0 && folded > 0) {
            line.Status |= BubeSplitAnfang;
            line.Parts = static_cast<int16_t>(folded);
        }
        line.Prefix = "KA";
        line.Voucher = Voucher;
        line.Text = part == 0 ? "Tageslosung"_w : "Tageslosung, Einzelverkauf"_w;
        Book(line);
        net += line.HabenAmount;
        tax += line.TaxAmount;
    }
    if (isTaxDueNow && tax != 0) BookTaxDue(TaxOf(*sales, true).Key, Today, net, tax, "KA", Voucher);
}

// The tax of what was paid moves from the account for tax that is not yet due.
void Generator::BookTaxDue(uint8_t key, Day invoiced, int64_t net, int64_t tax, const char *prefix,
                           int64_t voucher)
{
    Line due;
    due.Soll = Get(kontoSteuerNichtFaellig);
    due.Haben = Get((key & SteuerErmaessigt) != 0 ? 2420 : invoiced >= regularChange ? 2410 : 2411);
    due.SollAmount = tax;
    due.HabenAmount = tax;
    due.Status = BubeSteuerbuchung;
    due.Duty.Key = key;
    due.TaxBase = net;
    due.Prefix = prefix;
    due.Voucher = voucher;
    due.Text = "Steuer wird fällig"_w;
    Book(due);
}

void Generator::Purchase(int64_t room)
{
    const int32_t index = AnyPartner(Books.Kreditoren, SuppliersAbroad);
    Account &supplier = Books.Kreditoren[static_cast<size_t>(index)];
    const PartnerRow &partner = *supplier.Partner;
    const bool isHome = std::strcmp(partner.Land, "D") == 0;
    const bool isCommunity = *partner.UstId != 0;
    // A Mandant without imports books them as purchases in the EC, which all have.
    Account *abroad = !isCommunity && Find(6120) != nullptr ? Find(6120) : Get(6110);

    const int64_t parts = isHome && Dice.Chance(20) ? std::min<int64_t>(Dice.Between(2, 4), room) : 1;
    Account *const home = Pick(Purchases, nullptr);
    ++Receipt;
    OpenItem item{index, Booking + 1, "ER", Receipt, Today, 0, 0, 0, 0, {}};
    for (int64_t part = 0; part < parts; ++part) {
        Line line;
        line.Haben = &supplier;
        line.Soll = isHome ? Pick(Purchases, home) : abroad;
        if (isHome) line.Duty = TaxOf(*line.Soll, false);
        line.SollAmount = Amount(60, 5200);
        line.TaxAmount = Percent(line.SollAmount, line.Duty.Rate);
        line.HabenAmount = line.SollAmount + line.TaxAmount;
        if (line.Soll->Number == 6110) CommunityNet += line.SollAmount;
        if (line.Soll->Number == 6120) ImportNet += line.SollAmount;
        if (parts > 1) line.Status = BubeSplitHaben;
        if (parts > 1 && part == 0) {
            line.Status |= BubeSplitAnfang;
            line.Parts = static_cast<int16_t>(parts - 1);
        }
        line.Prefix = "ER";
        line.Voucher = Receipt;
        line.Text = isHome ? "Eingangsrechnung"_w : "Eingangsrechnung Ausland"_w;
        Book(line);
        item.Original += line.HabenAmount;
        item.NetOpen += line.SollAmount;
        item.TaxOpen += line.TaxAmount;
        if (part == 0) item.Duty = line.Duty;
    }
    item.Open = item.Original;
    Payable.push_back(item);
}

// Whether a discount is taken, and what it comes to: net and tax of it.
struct Discount {
    int64_t Net = 0;
    int64_t Tax = 0;
};

Discount DiscountOf(const PartnerRow &partner, const OpenItem &item, Random &dice)
{
    const int percent = ShareOf(partner.Skonto);
    if (percent == 0 || item.Booking == 0 || item.Open != item.Original || !dice.Chance(40)) return {};
    const int64_t gross = Percent(item.Open, percent);
    Discount discount;
    discount.Net = (gross * 10000 + (10000 + item.Duty.Rate) / 2) / (10000 + item.Duty.Rate);
    discount.Tax = Percent(discount.Net, item.Duty.Rate);
    if (discount.Net < smallestNet) return {};
    return discount;
}

// Puts an item among those that wait for long. When there are enough of these, the oldest comes back instead
// of it, to be settled; else nothing.
std::optional<OpenItem> Generator::Delay(std::deque<OpenItem> &late, const OpenItem &item, int64_t wanted)
{
    constexpr int64_t fewest = 3;
    constexpr int64_t share = 5;
    late.push_back(item);
    if (static_cast<int64_t>(late.size()) <= std::max(fewest, wanted / share)) return std::nullopt;
    const OpenItem oldest = late.front();
    late.pop_front();
    return oldest;
}

// Money that comes or goes before there is an invoice. It waits as an item of its own, below zero, and goes
// back when too much waits.
void Generator::PayAhead(bool isCustomer)
{
    constexpr size_t most = 4;
    std::deque<OpenItem> &ahead = isCustomer ? ReceivedAhead : PaidAhead;
    std::vector<Account> &partners = isCustomer ? Books.Debitoren : Books.Kreditoren;
    ++Statement;
    Line line;
    line.Prefix = "BA";
    line.Voucher = Statement;
    const auto book = [&](Account &partner, int64_t amount, bool isBack) {
        line.Soll = isCustomer != isBack ? Get(1840) : &partner;
        line.Haben = isCustomer != isBack ? &partner : Get(1840);
        line.SollAmount = amount;
        line.HabenAmount = amount;
        line.Text = isBack ? "Rückzahlung à conto"_w : "Zahlung à conto"_w;
        Book(line);
    };
    if (ahead.size() >= most) {
        const OpenItem item = ahead.front();
        ahead.pop_front();
        book(partners[static_cast<size_t>(item.Account)], -item.Open, true);
        return;
    }
    const auto index = static_cast<int32_t>(Dice.Skewed(static_cast<int64_t>(partners.size())));
    const int64_t amount = std::max<int64_t>(Amount(200, 4000) / 10000, 1) * 10000;
    ahead.push_back({index, Booking + 1, "BA", Statement, Today, -amount, -amount, -amount, 0, {}});
    book(partners[static_cast<size_t>(index)], amount, false);
}

void Generator::CustomerPays(int64_t room)
{
    if (Dice.Chance(2)) return PayAhead(true);
    if (Receivable.empty()) return;
    OpenItem item = Receivable.front();
    Receivable.pop_front();
    if (Dice.Chance(4)) {
        // Reminders instead of a payment.
        const auto oldest = Delay(LateReceivable, item, WantedOpen());
        if (!oldest) return;
        item = *oldest;
    }
    Account &customer = Books.Debitoren[static_cast<size_t>(item.Account)];
    const bool isTaxDueNow = Books.Of->PaysTaxOnReceipt && item.TaxOpen != 0;
    if (isTaxDueNow && room < 2) {
        Receivable.push_front(item);
        return;
    }
    const Discount discount = room >= 3 ? DiscountOf(*customer.Partner, item, Dice) : Discount{};
    const int64_t discounted = discount.Net + discount.Tax;
    // Now and then only a part is paid. With tax on receipt a part would need its share of the tax: all or
    // nothing.
    const bool isPart = discounted == 0 && !isTaxDueNow && item.Open > 20000 && Dice.Chance(6);
    const int64_t paid = isPart ? item.Open / 2 : item.Open - discounted;

    ++Statement;
    Line line;
    line.Soll = Get(1840);
    line.Haben = &customer;
    line.SollAmount = paid;
    line.HabenAmount = paid;
    line.Prefix = "BA";
    line.Voucher = Statement;
    line.Text = isPart ? "Teilzahlung"_w : "Zahlungseingang"_w;
    if (discounted != 0) {
        line.Status = BubeSplitHaben | BubeSplitAnfang;
        line.Parts = 1;
    }
    Book(line);
    if (discounted != 0) {
        Line skonto;
        skonto.Soll = Get(DeductionOf(item, *customer.Partner, 5210, 5220));
        skonto.Haben = &customer;
        skonto.SollAmount = discount.Net;
        skonto.HabenAmount = discounted;
        if (item.Duty.Of != nullptr) {
            skonto.Duty = item.Duty;
            skonto.Duty.OnHaben = false;
        }
        skonto.TaxAmount = discount.Tax;
        skonto.Status = BubeSplitHaben;
        skonto.Prefix = "BA";
        skonto.Voucher = Statement;
        skonto.Text = "Skonto"_w;
        Book(skonto);
    }
    if (isTaxDueNow) {
        BookTaxDue(item.Duty.Key, item.Date, item.NetOpen - discount.Net, item.TaxOpen - discount.Tax, "BA",
                   Statement);
    }
    if (!isPart) return;
    item.Open -= paid;
    item.TaxOpen -= item.TaxOpen / 2;
    item.NetOpen = item.Open - item.TaxOpen;
    if (const auto oldest = Delay(LateReceivable, item, WantedOpen())) Receivable.push_front(*oldest);
}

void Generator::SupplierIsPaid(int64_t room)
{
    if (Dice.Chance(2)) return PayAhead(false);
    if (Payable.empty()) return;
    OpenItem item = Payable.front();
    Payable.pop_front();
    Account &supplier = Books.Kreditoren[static_cast<size_t>(item.Account)];
    const Discount discount = room >= 2 ? DiscountOf(*supplier.Partner, item, Dice) : Discount{};
    const int64_t discounted = discount.Net + discount.Tax;
    const bool isPart = discounted == 0 && item.Open > 20000 && Dice.Chance(6);

    ++Statement;
    Line line;
    line.Soll = &supplier;
    line.Haben = Get(Find(1850) != nullptr && Dice.Chance(25) ? 1850 : 1840);
    line.SollAmount = isPart ? item.Open / 2 : item.Open - discounted;
    line.HabenAmount = line.SollAmount;
    line.Prefix = "BA";
    line.Voucher = Statement;
    line.Text = isPart ? "Abschlagszahlung"_w : "Überweisung"_w;
    if (discounted != 0) {
        line.Status = BubeSplitSoll | BubeSplitAnfang;
        line.Parts = 1;
    }
    Book(line);
    if (isPart) {
        item.Open -= line.SollAmount;
        if (const auto oldest = Delay(LatePayable, item, WantedOwed())) Payable.push_front(*oldest);
    }
    if (discounted == 0) return;
    Line skonto;
    skonto.Soll = &supplier;
    skonto.Haben = Get(6230);
    skonto.SollAmount = discounted;
    skonto.HabenAmount = discount.Net;
    if (item.Duty.Of != nullptr) {
        skonto.Duty = item.Duty;
        skonto.Duty.OnHaben = true;
    }
    skonto.TaxAmount = discount.Tax;
    skonto.Status = BubeSplitSoll;
    skonto.Prefix = "BA";
    skonto.Voucher = Statement;
    skonto.Text = "Skonto"_w;
    Book(skonto);
}

void Generator::SmallExpense()
{
    constexpr int64_t fewestCash = 50000;
    Account &expense = *Pick(Expenses, nullptr);
    Account &till = *Get(1810);
    const bool hasCash = till.Years[YearIndex].Balance() >= fewestCash;
    ++Voucher;
    BookExpense(expense, hasCash ? till : *Get(1840), Amount(12, 240), hasCash ? "KA" : "BA", Voucher,
                hasCash ? "Barauslage"_w : "Kartenzahlung"_w);
}

// Part of an open invoice is taken back.
void Generator::CreditNote(int64_t room)
{
    const bool isPossible = !Receivable.empty() && Receivable.front().Booking != 0;
    if (!isPossible || room < 1 || Books.Of->PaysTaxOnReceipt) return Sale(1);
    OpenItem item = Receivable.front();
    Receivable.pop_front();
    ++Voucher;
    Line line;
    Account &customer = Books.Debitoren[static_cast<size_t>(item.Account)];
    line.Soll = Get(DeductionOf(item, *customer.Partner, 5240, 5245));
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
        line.Voucher = Voucher;
        line.Text = "Gutschrift wegen Mängeln"_w;
        Book(line);
        item.Open -= line.HabenAmount;
        item.NetOpen -= line.SollAmount;
        item.TaxOpen -= line.TaxAmount;
        Receivable.push_front(item);
    } else {
        Receivable.push_front(item);
        Sale(1);
    }
}

// The till is never empty and never too full.
void Generator::MoveCash()
{
    for (const int till : {1810, 1820}) {
        Account *account = Find(till);
        if (account == nullptr) continue;
        const int64_t balance = account->Years[YearIndex].Balance();
        ++Voucher;
        if (balance < 50000) {
            BookPlain(till, 1840, 300000, "KA", Voucher, "Barabhebung"_w);
            return;
        }
        if (balance > 2000000) {
            BookPlain(1840, till, balance / 100000 * 100000 - 500000, "KA", Voucher, "Einzahlung"_w);
            return;
        }
    }
    SmallExpense();
}

void Generator::RareThing()
{
    ++Voucher;
    switch (Dice.Below(4)) {
    case 0:
        // Reversed with negative amounts, so that the turnover is as if nothing had been.
        BookPlain(8550, 1840, -Amount(12, 40), "BA", Voucher, "Storno Kontoführung"_w);
        return;
    case 1: BookPlain(8550, 1840, Amount(12, 60), "BA", Voucher, "Kontoführung"_w); return;
    case 2:
        if (Sales.size() > 1 && Sales.front() != Sales.back()) {
            // No turnover: it is left out of the boxes of the tax return.
            BookPlain(Sales.front()->Number, Sales.back()->Number, Amount(50, 900), "UB", Voucher,
                      "Umbuchung zwischen Erlösen"_w, BubeOhneKennzahl);
            return;
        }
        [[fallthrough]];
    default: BookPlain(1840, 5410, Amount(15, 200), "BA", Voucher, "Habenzinsen"_w); return;
    }
}

// One thing of a working day, at most `room` records.
void Generator::Anything(int64_t room)
{
    const auto open = static_cast<int64_t>(Receivable.size() + LateReceivable.size());
    const auto owed = static_cast<int64_t>(Payable.size() + LatePayable.size());
    const int64_t wantedOpen = WantedOpen();
    const int64_t wantedOwed = WantedOwed();
    const int64_t before = Written;
    const int64_t die = Dice.Below(100);
    if (die < 36) {
        if (open > wantedOpen && Dice.Chance(50)) {
            CustomerPays(room);
        } else {
            Sale(room);
        }
    } else if (die < 60) {
        if (open >= wantedOpen) CustomerPays(room);
    } else if (die < 74) {
        if (owed > wantedOwed && Dice.Chance(50)) {
            SupplierIsPaid(room);
        } else {
            Purchase(room);
        }
    } else if (die < 86) {
        if (owed >= wantedOwed) SupplierIsPaid(room);
    } else if (die < 89) {
        CashSale(room);
    } else if (die < 95) {
        SmallExpense();
    } else if (die < 97) {
        CreditNote(room);
    } else if (die < 99) {
        MoveCash();
    } else {
        RareThing();
    }
    if (Written == before) Sale(room);
}

} // namespace books
