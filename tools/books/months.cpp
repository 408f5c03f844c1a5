#include "tools/books/months.h"

#include "text/windows1252.h"
#include "tools/books/posting_records.h"
#include "tools/books/record_fields.h"

#include <iterator>

namespace books {

using namespace tools;
using namespace vark;

using text::operator""_w;

namespace {

// Percent in hundredths, on what is bought outside the European Community.
constexpr int customsRate = 350;

} // namespace

void MonthBegins(Generator &maker)
{
    ++maker.Voucher;
    BookPlain(maker, 8010, 1840, maker.Fixed(320000), "BA", maker.Voucher, "Miete"_w);
    BookExpense(maker, *maker.Get(8150), *maker.Get(1840), maker.Fixed(74000), "BA", maker.Voucher,
                "Leasing Lieferwagen"_w);
    BookPlain(maker, 8420, 1840, maker.Fixed(41380), "BA", maker.Voucher, "Telefon"_w);
    if (maker.Month % 3 == 0)
        BookPlain(maker, 8530, 1840, maker.Fixed(96500), "BA", maker.Voucher, "Versicherungen"_w);
    if (maker.Find(5310) != nullptr)
        BookPlain(maker, 1840, 5310, maker.Fixed(85000), "BA", maker.Voucher, "Mieteinnahme"_w);
}

void MonthMiddle(Generator &maker)
{
    ++maker.Voucher;
    BookPlain(maker, 2450, 1840, maker.Fixed(1250000), "BA", maker.Voucher, "Umsatzsteuer-Vorauszahlung"_w);
    BookPlain(maker, 2510, 1840, maker.Fixed(1180000), "BA", maker.Voucher, "Lohnsteuer"_w);
    BookPlain(maker, 2520, 1840, maker.Fixed(1460000), "BA", maker.Voucher, "Krankenkassen"_w);
}

// Wages are one split: what the company owes for them stands on Soll, and on Haben who gets it.
void MonthWages(Generator &maker)
{
    ++maker.Voucher;
    constexpr struct {
        int Account;
        int64_t Amount;
        const char *Text;
    } parts[] = {{2530, 4120000, "Auszahlung"_w},
                 {2510, 1180000, "Lohn- und Kirchensteuer"_w},
                 {2520, 730000, "Anteil der Beschäftigten"_w}};
    for (const auto &part : parts) {
        Line line;
        line.Soll = maker.Get(7010);
        line.Haben = maker.Get(part.Account);
        line.SollAmount = maker.Fixed(part.Amount);
        line.HabenAmount = line.SollAmount;
        line.Status = BubeSplitSoll;
        if (&part == parts) {
            line.Status |= BubeSplitAnfang;
            line.Parts = static_cast<int16_t>(std::size(parts) - 1);
        }
        line.Prefix = "LO";
        line.Voucher = maker.Voucher;
        line.Text = part.Text;
        Book(maker, line);
    }
    BookPlain(maker, 7050, 2520, maker.Fixed(730000), "LO", maker.Voucher, "Anteil des Arbeitgebers"_w);
    BookPlain(maker, 2530, 1840, maker.Fixed(4120000), "BA", maker.Voucher, "Löhne und Gehälter"_w);
    // Private use of a car bears tax like a sale, which no payment ever makes due.
    if (!maker.Books.Of->PaysTaxOnReceipt) {
        BookTaxed(maker, 7010, 5360, maker.Fixed(52000), "LO", "Kraftfahrzeugnutzung"_w, BubeKlasse40);
    }
}

namespace {

// Tax on what was bought abroad.
void MonthTax(Generator &maker)
{
    const int rate = maker.Today >= regularChange ? regularSince : regularBefore;
    if (maker.CommunityNet != 0) {
        // A purchase in the EC bears tax on both sides.
        BookPlain(maker, 1630, 2430, Percent(maker.CommunityNet, rate), "UB", maker.Voucher,
                  "Steuer auf EG-Erwerbe"_w);
        BookPlain(maker, kontoGegenErwerbe, kontoErwerbe, maker.CommunityNet, "UB", maker.Voucher,
                  "EG-Erwerbe des Monats"_w);
        maker.CommunityNet = 0;
    }
    if (maker.ImportNet != 0) {
        BookPlain(maker, 1650, 1840, Percent(maker.ImportNet, rate), "BA", maker.Voucher,
                  "Einfuhrumsatzsteuer"_w);
        BookPlain(maker, 6220, 1840, Percent(maker.ImportNet, customsRate), "BA", maker.Voucher, "Zoll"_w);
        maker.ImportNet = 0;
    }
    if (maker.Find(2465) == nullptr) return;
    // An eleventh of the year's tax is paid ahead in February and counted in the return for December.
    constexpr int february = 2;
    constexpr int december = 12;
    const int calendarMonth = (maker.Books.Of->FirstMonth - 1 + maker.Month) % 12 + 1;
    const int64_t paid = maker.Find(2465)->Years[maker.YearIndex].Balance();
    if (calendarMonth == february) {
        BookPlain(maker, 2465, 1840, maker.Fixed(1240000), "BA", maker.Voucher, "Sondervorauszahlung"_w);
    } else if (calendarMonth == december && paid > 0) {
        BookPlain(maker, 2450, 2460, paid, "UB", maker.Voucher, "Anrechnung Sondervorauszahlung"_w);
        BookPlain(maker, 2460, 2465, paid, "UB", maker.Voucher, "Ausgleich Sondervorauszahlung"_w,
                  BubeOhneKennzahl);
    }
}

void QuarterEnds(Generator &maker)
{
    const Account *loan = maker.Find(2210);
    if (loan != nullptr && loan->Years[maker.YearIndex].Balance() != 0) {
        BookPlain(maker, 8620, 1840, maker.Fixed(960000), "BA", maker.Voucher, "Darlehenszinsen"_w);
        BookPlain(maker, 2210, 1840, maker.Fixed(800000), "BA", maker.Voucher, "Darlehenstilgung"_w);
    }
    if (!maker.Books.Of->PaysTaxOnReceipt)
        BookTaxed(maker, 1810, 5140, maker.Fixed(68000), "KA", "Kantine"_w);
    BookPlain(maker, 1840, 2990, maker.Fixed(43700), "BA", maker.Voucher, "Zahlung ohne Angaben"_w);
    BookPlain(maker, 1999, 1840, maker.Fixed(29100), "BA", maker.Voucher, "Abbuchung ohne Beleg"_w);
    if ((maker.Month + 1) % 6 == 0)
        BookPlain(maker, 8990, 1999, maker.Fixed(29100), "UB", maker.Voucher, "ohne Klärung"_w);
    // A count is no money: it stands in the journal, and in no month's totals.
    constexpr int64_t heads = 2300;
    if (maker.Find(9110) != nullptr)
        BookPlain(maker, 9110, 9100, heads, "ST", maker.Voucher, "Beschäftigte"_w, BubeNichtImMonat);
}

} // namespace

void MonthEnds(Generator &maker)
{
    ++maker.Voucher;
    BookPlain(maker, 7530, 1260, maker.Fixed(64000), "AF", maker.Voucher, "Abschreibung Büroeinrichtung"_w);
    BookPlain(maker, 7540, 1240, maker.Fixed(118000), "AF", maker.Voucher, "Abschreibung Fahrzeuge"_w);
    BookPlain(maker, 7510, 1010, maker.Fixed(27500), "AF", maker.Voucher, "Abschreibung Software"_w);
    MonthTax(maker);
    if ((maker.Month + 1) % 3 == 0) QuarterEnds(maker);
}

// What the year's end brings counts neither in the last month nor in the tax return, but in the slot of its
// own.
void YearEnds(Generator &maker)
{
    ++maker.Voucher;
    const int stock = maker.Find(1410) != nullptr ? 1410 : maker.Find(1450) != nullptr ? 1450 : 1480;
    BookPlain(maker, stock, 6310, maker.Fixed(1840000), "AB", maker.Voucher, "Bestandserhöhung"_w,
              BubeOhneNetto);
    BookPlain(maker, 7010, 2120, maker.Fixed(620000), "AB", maker.Voucher, "Rückstellung für Urlaub"_w,
              BubeOhneNetto);
    BookPlain(maker, 8460, 2140, maker.Fixed(950000), "AB", maker.Voucher, "Rückstellung für Abschluß"_w,
              BubeOhneNetto);
    BookPlain(maker, 1910, 8530, maker.Fixed(212000), "AB", maker.Voucher, "Versicherungen Folgejahr"_w,
              BubeOhneNetto);
    BookPlain(maker, 8730, 2110, maker.Fixed(1430000), "AB", maker.Voucher, "Gewerbesteuer"_w, BubeOhneNetto);
}

void Reconcile(Generator &maker)
{
    ++maker.Voucher;
    const Totals debitoren = maker.DebitorMonth;
    const Totals kreditoren = maker.KreditorMonth;
    const auto book = [&maker](int soll, int haben, int64_t amount, const char *text) {
        if (amount != 0) BookPlain(maker, soll, haben, amount, "SB", maker.Voucher, text);
    };
    book(kontoForderungen, kontoAbstimmungDebitoren, debitoren.Soll, "Sammelbuchung Debitoren"_w);
    book(kontoAbstimmungDebitoren, kontoForderungen, debitoren.Haben, "Sammelbuchung Debitoren"_w);
    book(kontoVerbindlichkeiten, kontoAbstimmungKreditoren, kreditoren.Soll, "Sammelbuchung Kreditoren"_w);
    book(kontoAbstimmungKreditoren, kontoVerbindlichkeiten, kreditoren.Haben, "Sammelbuchung Kreditoren"_w);
    maker.DebitorMonth = {};
    maker.KreditorMonth = {};
}

} // namespace books
