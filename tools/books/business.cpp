#include "tools/books/business.h"

#include "text/windows1252.h"
#include "tools/books/posting_records.h"
#include "tools/books/record_fields.h"

#include <algorithm>

namespace books {

using namespace tools;
using namespace vark;

using text::operator""_w;

namespace {

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
int32_t AnyPartner(Generator &maker, const std::vector<Account> &partners, const std::vector<int32_t> &abroad)
{
    if (!abroad.empty() && maker.Dice.Chance(10)) {
        return abroad[static_cast<size_t>(maker.Dice.Below(static_cast<int64_t>(abroad.size())))];
    }
    return static_cast<int32_t>(maker.Dice.Skewed(static_cast<int64_t>(partners.size())));
}

// The tax of what was paid moves from the account for tax that is not yet due.
void BookTaxDue(Generator &maker, uint8_t key, Day invoiced, int64_t net, int64_t tax, const char *prefix,
                int64_t voucher)
{
    Line due;
    due.Soll = maker.Get(kontoSteuerNichtFaellig);
    due.Haben = maker.Get((key & SteuerErmaessigt) != 0 ? 2420 : invoiced >= regularChange ? 2410 : 2411);
    due.SollAmount = tax;
    due.HabenAmount = tax;
    due.Status = BubeSteuerbuchung;
    due.Duty.Key = key;
    due.TaxBase = net;
    due.Prefix = prefix;
    due.Voucher = voucher;
    due.Text = "Steuer wird fällig"_w;
    Book(maker, due);
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
std::optional<OpenItem> Delay(std::deque<OpenItem> &late, const OpenItem &item, int64_t wanted)
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
void PayAhead(Generator &maker, bool isCustomer)
{
    constexpr size_t most = 4;
    std::deque<OpenItem> &ahead = isCustomer ? maker.ReceivedAhead : maker.PaidAhead;
    std::vector<Account> &partners = isCustomer ? maker.Books.Debitoren : maker.Books.Kreditoren;
    ++maker.Statement;
    Line line;
    line.Prefix = "BA";
    line.Voucher = maker.Statement;
    const auto book = [&](Account &partner, int64_t amount, bool isBack) {
        line.Soll = isCustomer != isBack ? maker.Get(1840) : &partner;
        line.Haben = isCustomer != isBack ? &partner : maker.Get(1840);
        line.SollAmount = amount;
        line.HabenAmount = amount;
        line.Text = isBack ? "Rückzahlung à conto"_w : "Zahlung à conto"_w;
        Book(maker, line);
    };
    if (ahead.size() >= most) {
        const OpenItem item = ahead.front();
        ahead.pop_front();
        book(partners[static_cast<size_t>(item.Account)], -item.Open, true);
        return;
    }
    const auto index = static_cast<int32_t>(maker.Dice.Skewed(static_cast<int64_t>(partners.size())));
    const int64_t amount = std::max<int64_t>(Amount(maker, 200, 4000) / 10000, 1) * 10000;
    ahead.push_back(
        {index, maker.Booking + 1, "BA", maker.Statement, maker.Today, -amount, -amount, -amount, 0, {}});
    book(partners[static_cast<size_t>(index)], amount, false);
}

void CustomerPays(Generator &maker, int64_t room)
{
    if (maker.Dice.Chance(2)) return PayAhead(maker, true);
    if (maker.Receivable.empty()) return;
    OpenItem item = maker.Receivable.front();
    maker.Receivable.pop_front();
    if (maker.Dice.Chance(4)) {
        // Reminders instead of a payment.
        const auto oldest = Delay(maker.LateReceivable, item, maker.WantedOpen());
        if (!oldest) return;
        item = *oldest;
    }
    Account &customer = maker.Books.Debitoren[static_cast<size_t>(item.Account)];
    const bool isTaxDueNow = maker.Books.Of->PaysTaxOnReceipt && item.TaxOpen != 0;
    if (isTaxDueNow && room < 2) {
        maker.Receivable.push_front(item);
        return;
    }
    const Discount discount = room >= 3 ? DiscountOf(*customer.Partner, item, maker.Dice) : Discount{};
    const int64_t discounted = discount.Net + discount.Tax;
    // Now and then only a part is paid. With tax on receipt a part would need its share of the tax: all or
    // nothing.
    const bool isPart = discounted == 0 && !isTaxDueNow && item.Open > 20000 && maker.Dice.Chance(6);
    const int64_t paid = isPart ? item.Open / 2 : item.Open - discounted;

    ++maker.Statement;
    Line line;
    line.Soll = maker.Get(1840);
    line.Haben = &customer;
    line.SollAmount = paid;
    line.HabenAmount = paid;
    line.Prefix = "BA";
    line.Voucher = maker.Statement;
    line.Text = isPart ? "Teilzahlung"_w : "Zahlungseingang"_w;
    if (discounted != 0) {
        line.Status = BubeSplitHaben | BubeSplitAnfang;
        line.Parts = 1;
    }
    Book(maker, line);
    if (discounted != 0) {
        Line skonto;
        skonto.Soll = maker.Get(DeductionOf(item, *customer.Partner, 5210, 5220));
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
        skonto.Voucher = maker.Statement;
        skonto.Text = "Skonto"_w;
        Book(maker, skonto);
    }
    if (isTaxDueNow) {
        BookTaxDue(maker, item.Duty.Key, item.Date, item.NetOpen - discount.Net, item.TaxOpen - discount.Tax,
                   "BA", maker.Statement);
    }
    if (!isPart) return;
    item.Open -= paid;
    item.TaxOpen -= item.TaxOpen / 2;
    item.NetOpen = item.Open - item.TaxOpen;
    if (const auto oldest = Delay(maker.LateReceivable, item, maker.WantedOpen()))
        maker.Receivable.push_front(*oldest);
}

void SupplierIsPaid(Generator &maker, int64_t room)
{
    if (maker.Dice.Chance(2)) return PayAhead(maker, false);
    if (maker.Payable.empty()) return;
    OpenItem item = maker.Payable.front();
    maker.Payable.pop_front();
    Account &supplier = maker.Books.Kreditoren[static_cast<size_t>(item.Account)];
    const Discount discount = room >= 2 ? DiscountOf(*supplier.Partner, item, maker.Dice) : Discount{};
    const int64_t discounted = discount.Net + discount.Tax;
    const bool isPart = discounted == 0 && item.Open > 20000 && maker.Dice.Chance(6);

    ++maker.Statement;
    Line line;
    line.Soll = &supplier;
    line.Haben = maker.Get(maker.Find(1850) != nullptr && maker.Dice.Chance(25) ? 1850 : 1840);
    line.SollAmount = isPart ? item.Open / 2 : item.Open - discounted;
    line.HabenAmount = line.SollAmount;
    line.Prefix = "BA";
    line.Voucher = maker.Statement;
    line.Text = isPart ? "Abschlagszahlung"_w : "Überweisung"_w;
    if (discounted != 0) {
        line.Status = BubeSplitSoll | BubeSplitAnfang;
        line.Parts = 1;
    }
    Book(maker, line);
    if (isPart) {
        item.Open -= line.SollAmount;
        if (const auto oldest = Delay(maker.LatePayable, item, maker.WantedOwed()))
            maker.Payable.push_front(*oldest);
    }
    if (discounted == 0) return;
    Line skonto;
    skonto.Soll = &supplier;
    skonto.Haben = maker.Get(6230);
    skonto.SollAmount = discounted;
    skonto.HabenAmount = discount.Net;
    if (item.Duty.Of != nullptr) {
        skonto.Duty = item.Duty;
        skonto.Duty.OnHaben = true;
    }
    skonto.TaxAmount = discount.Tax;
    skonto.Status = BubeSplitSoll;
    skonto.Prefix = "BA";
    skonto.Voucher = maker.Statement;
    skonto.Text = "Skonto"_w;
    Book(maker, skonto);
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
