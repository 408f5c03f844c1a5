#include "tools/books/payments.h"

#include "text/windows1252.h"
#include "tools/books/markets.h"
#include "tools/books/posting_records.h"
#include "tools/books/record_fields.h"

#include <algorithm>
#include <deque>
#include <optional>

namespace books {

using namespace tools;
using namespace vark;

using text::operator""_w;

namespace {

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

} // namespace

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

} // namespace books
