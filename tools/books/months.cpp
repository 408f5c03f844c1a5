#include "tools/books/generator.h"

#include "text/windows1252.h"

#include <iterator>

namespace books {

using namespace tools;
using namespace vark;

using text::operator""_w;

namespace {

// Percent in hundredths, on what is bought outside the European Community.
constexpr int customsRate = 350;

} // namespace

void Generator::MonthBegins()
{
    ++Voucher;
    BookPlain(8010, 1840, Fixed(320000), "BA", Voucher, "Miete"_w);
    BookExpense(*Get(8150), *Get(1840), Fixed(74000), "BA", Voucher, "Leasing Lieferwagen"_w);
    BookPlain(8420, 1840, Fixed(41380), "BA", Voucher, "Telefon"_w);
    if (Month % 3 == 0) BookPlain(8530, 1840, Fixed(96500), "BA", Voucher, "Versicherungen"_w);
    if (Find(5310) != nullptr) BookPlain(1840, 5310, Fixed(85000), "BA", Voucher, "Mieteinnahme"_w);
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
    // Private use of a car bears tax like a sale, which no payment ever makes due.
    if (!Books.Of->PaysTaxOnReceipt) {
        BookTaxed(7010, 5360, Fixed(52000), "LO", "Kraftfahrzeugnutzung"_w, BubeKlasse40);
    }
}

void Generator::MonthEnds()
{
    ++Voucher;
    BookPlain(7530, 1260, Fixed(64000), "AF", Voucher, "Abschreibung Büroeinrichtung"_w);
    BookPlain(7540, 1240, Fixed(118000), "AF", Voucher, "Abschreibung Fahrzeuge"_w);
    BookPlain(7510, 1010, Fixed(27500), "AF", Voucher, "Abschreibung Software"_w);
    MonthTax();
    if ((Month + 1) % 3 == 0) QuarterEnds();
}

// Tax on what was bought abroad.
void Generator::MonthTax()
{
    const int rate = Today >= regularChange ? regularSince : regularBefore;
    if (CommunityNet != 0) {
        // A purchase in the EC bears tax on both sides.
        BookPlain(1630, 2430, Percent(CommunityNet, rate), "UB", Voucher, "Steuer auf EG-Erwerbe"_w);
        BookPlain(kontoGegenErwerbe, kontoErwerbe, CommunityNet, "UB", Voucher, "EG-Erwerbe des Monats"_w);
        CommunityNet = 0;
    }
    if (ImportNet != 0) {
        BookPlain(1650, 1840, Percent(ImportNet, rate), "BA", Voucher, "Einfuhrumsatzsteuer"_w);
        BookPlain(6220, 1840, Percent(ImportNet, customsRate), "BA", Voucher, "Zoll"_w);
        ImportNet = 0;
    }
    if (Find(2465) == nullptr) return;
    // An eleventh of the year's tax is paid ahead in February and counted in the return for December.
    constexpr int february = 2;
    constexpr int december = 12;
    const int calendarMonth = (Books.Of->FirstMonth - 1 + Month) % 12 + 1;
    const int64_t paid = Find(2465)->Years[YearIndex].Balance();
    if (calendarMonth == february) {
        BookPlain(2465, 1840, Fixed(1240000), "BA", Voucher, "Sondervorauszahlung"_w);
    } else if (calendarMonth == december && paid > 0) {
        BookPlain(2450, 2460, paid, "UB", Voucher, "Anrechnung Sondervorauszahlung"_w);
        BookPlain(2460, 2465, paid, "UB", Voucher, "Ausgleich Sondervorauszahlung"_w, BubeOhneKennzahl);
    }
}

void Generator::QuarterEnds()
{
    const Account *loan = Find(2210);
    if (loan != nullptr && loan->Years[YearIndex].Balance() != 0) {
        BookPlain(8620, 1840, Fixed(960000), "BA", Voucher, "Darlehenszinsen"_w);
        BookPlain(2210, 1840, Fixed(800000), "BA", Voucher, "Darlehenstilgung"_w);
    }
    if (!Books.Of->PaysTaxOnReceipt) BookTaxed(1810, 5140, Fixed(68000), "KA", "Kantine"_w);
    BookPlain(1840, 2990, Fixed(43700), "BA", Voucher, "Zahlung ohne Angaben"_w);
    BookPlain(1999, 1840, Fixed(29100), "BA", Voucher, "Abbuchung ohne Beleg"_w);
    if ((Month + 1) % 6 == 0) BookPlain(8990, 1999, Fixed(29100), "UB", Voucher, "ohne Klärung"_w);
    // A count is no money: it stands in the journal, and in no month's totals.
    constexpr int64_t heads = 2300;
    if (Find(9110) != nullptr)
        BookPlain(9110, 9100, heads, "ST", Voucher, "Beschäftigte"_w, BubeNichtImMonat);
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
