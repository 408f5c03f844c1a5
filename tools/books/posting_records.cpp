#include "tools/books/posting_records.h"

#include "text/windows1252.h"
#include "tools/books/record_fields.h"

#include <stdexcept>

namespace books {

using namespace tools;
using namespace vark;

using text::operator""_w;

namespace {

constexpr int reducedRate = 700;
constexpr int lumpRate = 1230; // travel, as a lump sum

} // namespace

Account *Generator::Get(int number) const
{
    Account *account = Find(number);
    if (account == nullptr) throw std::logic_error("no such account in the chart: " + std::to_string(number));
    return account;
}

Account *Pick(Generator &maker, const std::vector<Account *> &accounts, const Account *like)
{
    while (true) {
        Account *account =
            accounts[static_cast<size_t>(maker.Dice.Below(static_cast<int64_t>(accounts.size())))];
        if (like == nullptr || account->Row->Tax == like->Row->Tax) return account;
    }
}

Tax TaxOf(Generator &maker, const Account &account, bool onHaben)
{
    const uint8_t key = account.Row->Tax;
    const bool isInput = (key & SteuerVorsteuer) != 0;
    const bool isNew = maker.Today >= regularChange;
    const auto tax = [&](int output, int input, int rate) {
        return Tax{maker.Get(isInput                            ? input
                             : maker.Books.Of->PaysTaxOnReceipt ? kontoSteuerNichtFaellig
                                                                : output),
                   rate, key, onHaben};
    };
    switch (key & ~SteuerVorsteuer) {
    case SteuerRegelsatz:
        return tax(isNew ? 2410 : 2411, isNew ? 1610 : 1611, isNew ? regularSince : regularBefore);
    case SteuerErmaessigt: return tax(2420, 1620, reducedRate);
    case SteuerSonstigerSatz: return tax(2440, 1640, lumpRate);
    default: return {};
    }
}

int64_t Amount(Generator &maker, int64_t lowDm, int64_t highDm)
{
    const int64_t span = (highDm - lowDm) * 100 / maker.Shrink;
    return std::max(smallestNet, lowDm * 100 / maker.Shrink + maker.Dice.Skewed(span + 1));
}

namespace {

// What a posting of this status adds to an account. Every posting counts; what is not yet in the month's
// totals is in the year's end or nowhere.
void Add(Generator &maker, Account &account, int64_t soll, int64_t haben, uint16_t status)
{
    YearSums &sums = account.Years[maker.YearIndex];
    ++sums.Count[maker.Month];
    if ((status & BubeNichtImMonat) != 0) return;
    Totals &slot = (status & BubeOhneNetto) != 0 ? sums.Slot0 : sums.Month[maker.Month];
    slot.Soll += soll;
    slot.Haben += haben;
    if (account.Of == Kind::Sachkonto) return;
    Totals &month = account.Of == Kind::Debitor ? maker.DebitorMonth : maker.KreditorMonth;
    month.Soll += soll;
    month.Haben += haben;
}

// Costs follow the account that has a Kostenschablone, Soll before Haben.
void BookCosts(Generator &maker, const Line &line, int32_t booking)
{
    const auto templateOf = [&maker](const Account &account) -> const CostTemplate * {
        if (account.Row == nullptr) return nullptr;
        for (const CostTemplate &row : maker.Templates) {
            if (row.Number == account.Row->Kostenschablone) return &row;
        }
        return nullptr;
    };
    const auto isResult = [](const Account &account) {
        return account.Row != nullptr && account.Row->Number >= 5000 && account.Row->Number < 9000;
    };
    const CostTemplate *shares = templateOf(*line.Soll);
    bool onHaben = false;
    if (shares == nullptr) {
        shares = templateOf(*line.Haben);
        onHaben = shares != nullptr;
    }
    if (shares == nullptr) {
        if (!maker.Books.Of->NeedsCosts || (!isResult(*line.Soll) && !isResult(*line.Haben))) return;
        shares = &maker.Templates.front();
        onHaben = !isResult(*line.Soll);
    }
    const Account &account = onHaben ? *line.Haben : *line.Soll;
    const int64_t net = onHaben ? line.HabenAmount : line.SollAmount;
    int64_t rest = net;
    for (const CostShare &share : shares->Shares) {
        const bool isLast = &share == &shares->Shares.back();
        const int64_t part = isLast ? rest : Percent(net, share.Share);
        rest -= part;
        KobuRecord record{};
        record.FinaleBuchung = booking;
        std::memcpy(record.Datum, maker.TodaySort, sizeof maker.TodaySort);
        std::memcpy(record.Kostenobjekt1, share.FirstKey, sizeof record.Kostenobjekt1);
        std::memcpy(record.Kostenobjekt2, share.SecondKey, sizeof record.Kostenobjekt2);
        std::memcpy(record.Konto, account.Key, sizeof record.Konto);
        record.Flag = static_cast<uint8_t>(share.Flag | (onHaben ? KobuHaben : 0));
        PutAmount(record.Betrag, part);
        std::memcpy(record.Text, share.Text, sizeof record.Text);
        maker.Files->Write(maker.Files->Kobu, &record);
        ++maker.CostLines;
        const int64_t signedPart = onHaben ? -part : part;
        share.First->Month[maker.YearIndex][maker.Month] += signedPart;
        if (share.Second != nullptr) share.Second->Month[maker.YearIndex][maker.Month] += signedPart;
    }
}

} // namespace

void Book(Generator &maker, Line line)
{
    BubeRecord record{};
    std::memcpy(record.Schluessel.Folge, maker.TodaySort, 6);
    PutDigits(record.Schluessel.Folge + 6, ++maker.Running, 4);
    std::memcpy(record.Schluessel.Belegdatum, maker.TodayPacked, sizeof maker.TodayPacked);
    std::memcpy(record.Sollkonto, line.Soll->Key, sizeof record.Sollkonto);
    std::memcpy(record.Habenkonto, line.Haben->Key, sizeof record.Habenkonto);
    record.Status = line.Status;
    const Tax &tax = line.Duty;
    Add(maker, *line.Soll, line.SollAmount, 0, line.Status);
    Add(maker, *line.Haben, 0, line.HabenAmount, line.Status);
    record.Steuerherkunft = tax.Key;
    if (tax.Of != nullptr) {
        std::memcpy(record.Steuerkonto, tax.Of->Key, sizeof record.Steuerkonto);
        // The rate is worked out from the amounts: the side of the tax is all that is kept of its key here.
        record.Steuerflags =
            static_cast<uint8_t>((tax.OnHaben ? BubeSteuerPlus : BubeSteuerMinus) | line.RateSource);
        Add(maker, *tax.Of, tax.OnHaben ? 0 : line.TaxAmount, tax.OnHaben ? line.TaxAmount : 0, line.Status);
        line.TaxBase = tax.OnHaben ? line.HabenAmount : line.SollAmount;
    }
    constexpr uint8_t classes = BubeKlasse2 | BubeKlasse4 | BubeKlasse80;
    record.Steuerklasse = line.Class != 0 ? line.Class : static_cast<uint8_t>(tax.Key & classes);
    std::memcpy(record.Beleg, line.Prefix, 2);
    PutDigits(record.Beleg + 2, line.Voucher, 6);
    std::memcpy(record.Datum, maker.TodayPacked, sizeof maker.TodayPacked);
    PutAmount(record.Soll, line.SollAmount);
    PutAmount(record.Haben, line.HabenAmount);
    PutAmount(record.Steuer, line.TaxAmount);
    PutText(record.Text, line.Text);
    record.Buchungsnummer = ++maker.Booking;
    // Entered some days after the date of its voucher, but in the same fiscal year.
    const Day yearEnd =
        FiscalYearStart(maker.Books.YearOf(maker.YearIndex) + 1, maker.Books.Of->FirstMonth) - 1;
    MakeSort(record.Buchungsdatum, std::min(maker.Today + static_cast<Day>(maker.Voucher % 4), yearEnd),
             maker.Books.Of->FirstMonth);
    const auto &user = Users()[static_cast<size_t>(maker.Booking) % Users().size()];
    text::FromUtf8(user.Key, record.Benutzer, sizeof record.Benutzer);
    PutAmount(record.Grundbetrag, line.TaxBase);
    PutRate(record.Steuersatz, tax.Rate);
    record.Anzahl = line.Parts;
    maker.Files->Write(maker.Files->Bube, &record);
    ++maker.Written;
    constexpr uint16_t notInMonth = BubeOhneNetto | BubeNichtImMonat;
    if (maker.Books.Of->HasCosts && (line.Status & notInMonth) == 0)
        BookCosts(maker, line, record.Buchungsnummer);
}

void BookPlain(Generator &maker, int soll, int haben, int64_t amount, const char *prefix, int64_t voucher,
               const char *text, uint16_t status)
{
    Line line;
    line.Soll = maker.Get(soll);
    line.Haben = maker.Get(haben);
    line.SollAmount = amount;
    line.HabenAmount = amount;
    line.Status = status;
    line.Prefix = prefix;
    line.Voucher = voucher;
    line.Text = text;
    Book(maker, line);
}

void BookTaxed(Generator &maker, int soll, int haben, int64_t net, const char *prefix, const char *text,
               uint8_t taxClass)
{
    Line line;
    line.Soll = maker.Get(soll);
    line.Haben = maker.Get(haben);
    line.Duty = TaxOf(maker, *line.Haben, true);
    line.HabenAmount = net;
    line.TaxAmount = Percent(net, line.Duty.Rate);
    line.SollAmount = net + line.TaxAmount;
    line.Class = taxClass;
    line.Prefix = prefix;
    line.Voucher = maker.Voucher;
    line.Text = text;
    Book(maker, line);
}

void BookExpense(Generator &maker, Account &expense, Account &payer, int64_t net, const char *prefix,
                 int64_t voucher, const char *text)
{
    Line line;
    line.Soll = &expense;
    line.Haben = &payer;
    line.Duty = TaxOf(maker, expense, false);
    line.SollAmount = net;
    line.TaxAmount = Percent(net, line.Duty.Rate);
    line.HabenAmount = net + line.TaxAmount;
    line.Prefix = prefix;
    line.Voucher = voucher;
    line.Text = text;
    Book(maker, line);
}

} // namespace books
