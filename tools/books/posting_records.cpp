#include "tools/books/generator.h"

#include "src/values/amounts.h"
#include "text/windows1252.h"

#include <stdexcept>

namespace books {

using namespace tools;
using namespace vark;

using text::operator""_w;

namespace {

constexpr int reducedRate = 700;
constexpr int lumpRate = 1230; // travel, as a lump sum

} // namespace

void PutRate(RateText &field, int hundredths)
{
    field[0] = static_cast<char>('0' + hundredths / 1000 % 10);
    field[1] = static_cast<char>('0' + hundredths / 100 % 10);
    field[2] = ',';
    field[3] = static_cast<char>('0' + hundredths / 10 % 10);
    field[4] = static_cast<char>('0' + hundredths % 10);
    field[5] = 0;
}

int64_t Percent(int64_t amount, int hundredths)
{
    const int64_t product = (amount < 0 ? -amount : amount) * hundredths;
    const int64_t rounded = (product + 5000) / 10000;
    return amount < 0 ? -rounded : rounded;
}

void PutAmount(AmountText &field, int64_t pfennig)
{
    if (!AmountOfMagnitude(field, pfennig < 0 ? -pfennig : pfennig, pfennig < 0)) {
        throw std::runtime_error(
            "Ein Betrag wird größer als 999.999.999,99; bitte weniger Buchungen anlegen.");
    }
}

void PutDigits(char *to, int64_t number, int width)
{
    for (int i = width - 1; i >= 0; --i) {
        to[i] = static_cast<char>('0' + number % 10);
        number /= 10;
    }
}

int ShareOf(const char *text)
{
    int value = 0;
    for (; *text != 0; ++text) {
        if (*text != ',') value = value * 10 + *text - '0';
    }
    return value;
}

std::vector<CostTemplate> MakeTemplates(Ledger &ledger)
{
    std::vector<CostTemplate> templates;
    const auto find = [&ledger](const char *number) -> CostObject * {
        for (CostObject &object : ledger.CostObjects) {
            if (std::strcmp(object.Row->Number, number) == 0) return &object;
        }
        return nullptr;
    };
    const auto key = [](AccountNumber &out, const char *number) {
        if (*number != 0) MakeKey(out, std::stoi(number));
    };
    for (const CostTemplateRow &row : CostTemplates()) {
        if (!IsFor(row.Mandanten, ledger.Of->Number)) continue;
        CostTemplate &made = templates.emplace_back();
        made.Number = row.Number;
        for (const CostLineRow &line : CostLines()) {
            if (line.Template != row.Number || !IsFor(line.Mandanten, ledger.Of->Number)) continue;
            CostShare share{};
            share.First = find(line.Object1);
            share.Second = find(line.Object2);
            share.Share = ShareOf(line.Share);
            share.Flag = line.IsDirect ? KobuArt : 0;
            key(share.FirstKey, line.Object1);
            key(share.SecondKey, line.Object2);
            text::FromUtf8(line.Text, share.Text, sizeof share.Text);
            made.Shares.push_back(share);
        }
    }
    return templates;
}

Account *Generator::Get(int number) const
{
    Account *account = Find(number);
    if (account == nullptr) throw std::logic_error("no such account in the chart: " + std::to_string(number));
    return account;
}

Account *Generator::Pick(const std::vector<Account *> &accounts, const Account *like)
{
    while (true) {
        Account *account = accounts[static_cast<size_t>(Dice.Below(static_cast<int64_t>(accounts.size())))];
        if (like == nullptr || account->Row->Tax == like->Row->Tax) return account;
    }
}

// The tax of a posting on `account` today, as its key says.
Tax Generator::TaxOf(const Account &account, bool onHaben) const
{
    const uint8_t key = account.Row->Tax;
    const bool isInput = (key & SteuerVorsteuer) != 0;
    const bool isNew = Today >= regularChange;
    const auto tax = [&](int output, int input, int rate) {
        return Tax{Get(isInput                      ? input
                       : Books.Of->PaysTaxOnReceipt ? kontoSteuerNichtFaellig
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

// A net amount in Pfennig, smaller ones more often.
int64_t Generator::Amount(int64_t lowDm, int64_t highDm)
{
    const int64_t span = (highDm - lowDm) * 100 / Shrink;
    return std::max(smallestNet, lowDm * 100 / Shrink + Dice.Skewed(span + 1));
}

// What a posting of this status adds to an account. Every posting counts; what is not yet in the month's
// totals is in the year's end or nowhere.
void Generator::Add(Account &account, int64_t soll, int64_t haben, uint16_t status)
{
    YearSums &sums = account.Years[YearIndex];
    ++sums.Count[Month];
    if ((status & BubeNichtImMonat) != 0) return;
    Totals &slot = (status & BubeOhneNetto) != 0 ? sums.Slot0 : sums.Month[Month];
    slot.Soll += soll;
    slot.Haben += haben;
    if (account.Of == Kind::Sachkonto) return;
    Totals &month = account.Of == Kind::Debitor ? DebitorMonth : KreditorMonth;
    month.Soll += soll;
    month.Haben += haben;
}

void Generator::Book(Line line)
{
    BubeRecord record{};
    std::memcpy(record.Schluessel.Folge, TodaySort, 6);
    PutDigits(record.Schluessel.Folge + 6, ++Running, 4);
    std::memcpy(record.Schluessel.Belegdatum, TodayPacked, sizeof TodayPacked);
    std::memcpy(record.Sollkonto, line.Soll->Key, sizeof record.Sollkonto);
    std::memcpy(record.Habenkonto, line.Haben->Key, sizeof record.Habenkonto);
    record.Status = line.Status;
    const Tax &tax = line.Duty;
    Add(*line.Soll, line.SollAmount, 0, line.Status);
    Add(*line.Haben, 0, line.HabenAmount, line.Status);
    record.Steuerherkunft = tax.Key;
    if (tax.Of != nullptr) {
        std::memcpy(record.Steuerkonto, tax.Of->Key, sizeof record.Steuerkonto);
        // The rate is worked out from the amounts: the side of the tax is all that is kept of its key here.
        record.Steuerflags =
            static_cast<uint8_t>((tax.OnHaben ? BubeSteuerPlus : BubeSteuerMinus) | line.RateSource);
        Add(*tax.Of, tax.OnHaben ? 0 : line.TaxAmount, tax.OnHaben ? line.TaxAmount : 0, line.Status);
        line.TaxBase = tax.OnHaben ? line.HabenAmount : line.SollAmount;
    }
    constexpr uint8_t classes = BubeKlasse2 | BubeKlasse4 | BubeKlasse80;
    record.Steuerklasse = line.Class != 0 ? line.Class : static_cast<uint8_t>(tax.Key & classes);
    std::memcpy(record.Beleg, line.Prefix, 2);
    PutDigits(record.Beleg + 2, line.Voucher, 6);
    std::memcpy(record.Datum, TodayPacked, sizeof TodayPacked);
    PutAmount(record.Soll, line.SollAmount);
    PutAmount(record.Haben, line.HabenAmount);
    PutAmount(record.Steuer, line.TaxAmount);
    PutText(record.Text, line.Text);
    record.Buchungsnummer = ++Booking;
    // Entered some days after the date of its voucher, but in the same fiscal year.
    const Day yearEnd = FiscalYearStart(Books.YearOf(YearIndex) + 1, Books.Of->FirstMonth) - 1;
    MakeSort(record.Buchungsdatum, std::min(Today + static_cast<Day>(Voucher % 4), yearEnd),
             Books.Of->FirstMonth);
    const auto &user = Users()[static_cast<size_t>(Booking) % Users().size()];
    text::FromUtf8(user.Key, record.Benutzer, sizeof record.Benutzer);
    PutAmount(record.Grundbetrag, line.TaxBase);
    PutRate(record.Steuersatz, tax.Rate);
    record.Anzahl = line.Parts;
    Files->Write(Files->Bube, &record);
    ++Written;
    constexpr uint16_t notInMonth = BubeOhneNetto | BubeNichtImMonat;
    if (Books.Of->HasCosts && (line.Status & notInMonth) == 0) BookCosts(line, record.Buchungsnummer);
}

// Costs follow the account that has a Kostenschablone, Soll before Haben.
void Generator::BookCosts(const Line &line, int32_t booking)
{
    const auto templateOf = [this](const Account &account) -> const CostTemplate * {
        if (account.Row == nullptr) return nullptr;
        for (const CostTemplate &row : Templates) {
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
        if (!Books.Of->NeedsCosts || (!isResult(*line.Soll) && !isResult(*line.Haben))) return;
        shares = &Templates.front();
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
        std::memcpy(record.Datum, TodaySort, sizeof TodaySort);
        std::memcpy(record.Kostenobjekt1, share.FirstKey, sizeof record.Kostenobjekt1);
        std::memcpy(record.Kostenobjekt2, share.SecondKey, sizeof record.Kostenobjekt2);
        std::memcpy(record.Konto, account.Key, sizeof record.Konto);
        record.Flag = static_cast<uint8_t>(share.Flag | (onHaben ? KobuHaben : 0));
        PutAmount(record.Betrag, part);
        std::memcpy(record.Text, share.Text, sizeof record.Text);
        Files->Write(Files->Kobu, &record);
        ++CostLines;
        const int64_t signedPart = onHaben ? -part : part;
        share.First->Month[YearIndex][Month] += signedPart;
        if (share.Second != nullptr) share.Second->Month[YearIndex][Month] += signedPart;
    }
}

void Generator::BookPlain(int soll, int haben, int64_t amount, const char *prefix, int64_t voucher,
                          const char *text, uint16_t status)
{
    Line line;
    line.Soll = Get(soll);
    line.Haben = Get(haben);
    line.SollAmount = amount;
    line.HabenAmount = amount;
    line.Status = status;
    line.Prefix = prefix;
    line.Voucher = voucher;
    line.Text = text;
    Book(line);
}

// Gross on Soll, net and turnover tax on Haben.
void Generator::BookTaxed(int soll, int haben, int64_t net, const char *prefix, const char *text,
                          uint8_t taxClass)
{
    Line line;
    line.Soll = Get(soll);
    line.Haben = Get(haben);
    line.Duty = TaxOf(*line.Haben, true);
    line.HabenAmount = net;
    line.TaxAmount = Percent(net, line.Duty.Rate);
    line.SollAmount = net + line.TaxAmount;
    line.Class = taxClass;
    line.Prefix = prefix;
    line.Voucher = Voucher;
    line.Text = text;
    Book(line);
}

// Net and input tax on Soll, gross on Haben.
void Generator::BookExpense(Account &expense, Account &payer, int64_t net, const char *prefix,
                            int64_t voucher, const char *text)
{
    Line line;
    line.Soll = &expense;
    line.Haben = &payer;
    line.Duty = TaxOf(expense, false);
    line.SollAmount = net;
    line.TaxAmount = Percent(net, line.Duty.Rate);
    line.HabenAmount = net + line.TaxAmount;
    line.Prefix = prefix;
    line.Voucher = voucher;
    line.Text = text;
    Book(line);
}

} // namespace books
