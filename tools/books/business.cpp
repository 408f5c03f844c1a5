#include "tools/books/generator.h"

#include "text/windows1252.h"

namespace books {

using namespace tools;
using namespace vark;

using text::operator""_w;

void Generator::Sale(int64_t room)
{
    const auto index = static_cast<int32_t>(Dice.Skewed(static_cast<int64_t>(Books.Debitoren.size())));
    Account &customer = Books.Debitoren[static_cast<size_t>(index)];
    const PartnerRow &partner = *customer.Partner;
    const bool isHome = std::strcmp(partner.Land, "D") == 0;
    const bool isOutside = !isHome && *partner.UstId == 0 && std::strcmp(partner.Land, "B") != 0;

    const int64_t parts = Dice.Chance(15) ? std::min<int64_t>(Dice.Between(2, 5), room) : 1;
    Account *const home = Pick(Sales, nullptr);
    ++Invoice;
    OpenItem item{index, Booking + 1, Invoice, Today, 0, 0, 0, 0, {}, 0};
    for (int64_t part = 0; part < parts; ++part) {
        Line line;
        line.Soll = &customer;
        line.Haben = isHome ? Pick(Sales, home) : Get(isOutside ? 5120 : 5110);
        if (isHome) {
            line.Duty = TaxOf(*line.Haben, true);
        } else if (!isOutside && *partner.UstId == 0) {
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
        line.Text = isHome ? "Warenlieferung"_w : isOutside ? "Ausfuhrlieferung"_w : "EG-Lieferung"_w;
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
    const int64_t folded = std::min<int64_t>(Dice.Between(2, 6), room - 1);
    ++Voucher;
    for (int64_t part = 0; part <= folded; ++part) {
        Line line;
        line.Soll = till;
        line.Haben = sales;
        line.Duty = TaxOf(*sales, true);
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
    }
}

void Generator::Purchase(int64_t room)
{
    const auto index = static_cast<int32_t>(Dice.Skewed(static_cast<int64_t>(Books.Kreditoren.size())));
    Account &supplier = Books.Kreditoren[static_cast<size_t>(index)];
    const PartnerRow &partner = *supplier.Partner;
    const bool isHome = std::strcmp(partner.Land, "D") == 0;
    const bool isCommunity = *partner.UstId != 0;
    // A Mandant without imports books them as purchases in the EC, which all have.
    Account *abroad = !isCommunity && Find(6120) != nullptr ? Find(6120) : Get(6110);

    const int64_t parts = isHome && Dice.Chance(20) ? std::min<int64_t>(Dice.Between(2, 4), room) : 1;
    Account *const home = Pick(Purchases, nullptr);
    ++Receipt;
    OpenItem item{index, Booking + 1, Receipt, Today, 0, 0, 0, 0, {}, 0};
    for (int64_t part = 0; part < parts; ++part) {
        Line line;
        line.Haben = &supplier;
        line.Soll = isHome ? Pick(Purchases, home) : abroad;
        if (isHome) line.Duty = TaxOf(*line.Soll, false);
        line.SollAmount = Amount(60, 5200);
        line.TaxAmount = Percent(line.SollAmount, line.Duty.Rate);
        line.HabenAmount = line.SollAmount + line.TaxAmount;
        if (line.Soll->Number == 6110) CommunityNet += line.SollAmount;
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

void Generator::CustomerPays(int64_t room)
{
    if (Receivable.empty()) return;
    OpenItem item = Receivable.front();
    Receivable.pop_front();
    Account &customer = Books.Debitoren[static_cast<size_t>(item.Account)];
    if (Dice.Chance(3)) {
        // A reminder instead of a payment: the item waits on.
        if (item.Reminders < 3) ++item.Reminders;
        Receivable.push_back(item);
        return;
    }
    const bool isTaxDueNow = Books.Of->PaysTaxOnReceipt && item.TaxOpen != 0;
    if (isTaxDueNow && room < 2) {
        Receivable.push_front(item);
        return;
    }
    const Discount discount = room >= 3 ? DiscountOf(*customer.Partner, item, Dice) : Discount{};
    const int64_t discounted = discount.Net + discount.Tax;
    // Now and then only a part is paid. With tax on receipt a part would need its share of the tax: all or
    // nothing.
    const bool isPart = discounted == 0 && !isTaxDueNow && item.Open > 20000 && Dice.Chance(5);
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
        const bool isReduced = (item.Duty.Key & SteuerErmaessigt) != 0;
        skonto.Soll = Get(isReduced ? 5220 : 5210);
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
        // The tax of what was paid moves from the account for tax that is not yet due.
        Line due;
        const bool isReduced = (item.Duty.Key & SteuerErmaessigt) != 0;
        const bool isNew = item.Date >= regularChange;
        due.Soll = Get(kontoSteuerNichtFaellig);
        due.Haben = Get(isReduced ? 2420 : isNew ? 2410 : 2411);
        due.SollAmount = item.TaxOpen - discount.Tax;
        due.HabenAmount = due.SollAmount;
        due.Status = BubeSteuerbuchung;
        due.Duty.Key = item.Duty.Key;
        due.TaxBase = item.NetOpen - discount.Net;
        due.Prefix = "BA";
        due.Voucher = Statement;
        due.Text = "Steuer wird fällig"_w;
        Book(due);
    }
    if (!isPart) return;
    item.Open -= paid;
    item.TaxOpen -= item.TaxOpen / 2;
    item.NetOpen = item.Open - item.TaxOpen;
    Receivable.push_back(item);
}

void Generator::SupplierIsPaid(int64_t room)
{
    if (Payable.empty()) return;
    const OpenItem item = Payable.front();
    Payable.pop_front();
    Account &supplier = Books.Kreditoren[static_cast<size_t>(item.Account)];
    const Discount discount = room >= 2 ? DiscountOf(*supplier.Partner, item, Dice) : Discount{};
    const int64_t discounted = discount.Net + discount.Tax;

    ++Statement;
    Line line;
    line.Soll = &supplier;
    line.Haben = Get(Find(1850) != nullptr && Dice.Chance(25) ? 1850 : 1840);
    line.SollAmount = item.Open - discounted;
    line.HabenAmount = line.SollAmount;
    line.Prefix = "BA";
    line.Voucher = Statement;
    line.Text = "Überweisung"_w;
    if (discounted != 0) {
        line.Status = BubeSplitSoll | BubeSplitAnfang;
        line.Parts = 1;
    }
    Book(line);
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
    Account &expense = *Pick(Expenses, nullptr);
    ++Voucher;
    BookExpense(expense, *Get(1810), Amount(12, 240), "KA", Voucher, "Barauslage"_w);
}

// Part of an open invoice is taken back.
void Generator::CreditNote(int64_t room)
{
    if (Receivable.empty() || room < 1 || Receivable.front().Booking == 0 || Books.Of->PaysTaxOnReceipt) {
        return Sale(1);
    }
    OpenItem item = Receivable.front();
    Receivable.pop_front();
    ++Voucher;
    Line line;
    line.Soll = Get(5240);
    line.Haben = &Books.Debitoren[static_cast<size_t>(item.Account)];
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
    const auto open = static_cast<int64_t>(Receivable.size());
    const auto owed = static_cast<int64_t>(Payable.size());
    // Two thirds of the items that are to be left over are the customers'.
    const int64_t wantedOpen = Plan.OpenItems * 2 / 3;
    const int64_t wantedOwed = Plan.OpenItems - wantedOpen;
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

void Generator::MonthBegins()
{
    ++Voucher;
    BookPlain(8010, 1840, Fixed(320000), "BA", Voucher, "Miete"_w);
    BookExpense(*Get(8150), *Get(1840), Fixed(74000), "BA", Voucher, "Leasing Lieferwagen"_w);
    BookPlain(8420, 1840, Fixed(41380), "BA", Voucher, "Telefon"_w);
    if (Month % 3 == 0) BookPlain(8530, 1840, Fixed(96500), "BA", Voucher, "Versicherungen"_w);
}

void Generator::MonthMiddle()
{
    ++Voucher;
    BookPlain(2450, 1840, Fixed(1250000), "BA", Voucher, "Umsatzsteuer-Vorauszahlung"_w);
    BookPlain(2510, 1840, Fixed(1180000), "BA", Voucher, "Lohnsteuer"_w);
    BookPlain(2520, 1840, Fixed(1460000), "BA", Voucher, "Krankenkassen"_w);
}

// Wages are one split: what the company owes for them stands on Soll, and on Haben who gets it.
void Generator::MonthWages()
{
    ++Voucher;
    constexpr struct {
        int Account;
        int64_t Amount;
        const char *Text;
    } parts[] = {{2530, 4120000, "Auszahlung"_w},
                 {2510, 1180000, "Lohn- und Kirchensteuer"_w},
                 {2520, 730000, "Anteil der Beschäftigten"_w}};
    for (const auto &part : parts) {
        Line line;
        line.Soll = Get(7010);
        line.Haben = Get(part.Account);
        line.SollAmount = Fixed(part.Amount);
        line.HabenAmount = line.SollAmount;
        line.Status = BubeSplitSoll;
        if (&part == parts) {
            line.Status |= BubeSplitAnfang;
            line.Parts = static_cast<int16_t>(std::size(parts) - 1);
        }
        line.Prefix = "LO";
        line.Voucher = Voucher;
        line.Text = part.Text;
        Book(line);
    }
    BookPlain(7050, 2520, Fixed(730000), "LO", Voucher, "Anteil des Arbeitgebers"_w);
    BookPlain(2530, 1840, Fixed(4120000), "BA", Voucher, "Löhne und Gehälter"_w);
}

void Generator::MonthEnds()
{
    ++Voucher;
    BookPlain(7530, 1260, Fixed(64000), "AF", Voucher, "Abschreibung Büroeinrichtung"_w);
    BookPlain(7540, 1240, Fixed(118000), "AF", Voucher, "Abschreibung Fahrzeuge"_w);
    BookPlain(7510, 1010, Fixed(27500), "AF", Voucher, "Abschreibung Software"_w);
    if (CommunityNet != 0) {
        // A purchase in the EC bears tax on both sides.
        const int rate = Today >= regularChange ? regularSince : regularBefore;
        BookPlain(1630, 2430, Percent(CommunityNet, rate), "UB", Voucher, "Steuer auf EG-Erwerbe"_w);
        CommunityNet = 0;
    }
}

// What the year's end brings counts neither in the last month nor in the tax return, but in the slot of its
// own.
void Generator::YearEnds()
{
    ++Voucher;
    const int stock = Find(1410) != nullptr ? 1410 : Find(1450) != nullptr ? 1450 : 1480;
    BookPlain(stock, 6310, Fixed(1840000), "AB", Voucher, "Bestandserhöhung"_w, BubeOhneNetto);
    BookPlain(7010, 2120, Fixed(620000), "AB", Voucher, "Rückstellung für Urlaub"_w, BubeOhneNetto);
    BookPlain(8460, 2140, Fixed(950000), "AB", Voucher, "Rückstellung für Abschluß"_w, BubeOhneNetto);
    BookPlain(1910, 8530, Fixed(212000), "AB", Voucher, "Versicherungen Folgejahr"_w, BubeOhneNetto);
    BookPlain(8730, 2110, Fixed(1430000), "AB", Voucher, "Gewerbesteuer"_w, BubeOhneNetto);
}

// Brings the collective accounts up to what happened on Debitoren and Kreditoren this month.
void Generator::Reconcile()
{
    ++Voucher;
    const Totals debitoren = DebitorMonth;
    const Totals kreditoren = KreditorMonth;
    const auto book = [this](int soll, int haben, int64_t amount, const char *text) {
        if (amount != 0) BookPlain(soll, haben, amount, "SB", Voucher, text);
    };
    book(kontoForderungen, kontoAbstimmungDebitoren, debitoren.Soll, "Sammelbuchung Debitoren"_w);
    book(kontoAbstimmungDebitoren, kontoForderungen, debitoren.Haben, "Sammelbuchung Debitoren"_w);
    book(kontoVerbindlichkeiten, kontoAbstimmungKreditoren, kreditoren.Soll, "Sammelbuchung Kreditoren"_w);
    book(kontoAbstimmungKreditoren, kontoVerbindlichkeiten, kreditoren.Haben, "Sammelbuchung Kreditoren"_w);
    DebitorMonth = {};
    KreditorMonth = {};
}

} // namespace books
