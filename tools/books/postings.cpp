#include "tools/books/postings.h"

#include "src/values/amounts.h"
#include "text/windows1252.h"
#include "tools/books/random.h"
#include "tools/common/table_file.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <optional>
#include <stdexcept>

namespace books {

namespace fs = std::filesystem;
using namespace tools;
using namespace vark;

using text::operator""_w;

namespace {

constexpr int postingMonths = 18;
// Records in one transaction: enough that its end costs nothing, few enough that it stays small in memory.
constexpr int recordsPerTransaction = 20000;
// Above this number amounts shrink, so that a year's turnover stays far below the largest amount.
constexpr int64_t fullAmountsCount = 100000;
// A sale below this would show a wrong rate where the rate is worked out from the amounts.
constexpr int64_t smallestNet = 1000;

// Percent in hundredths.
constexpr int regularBefore = 1500;
constexpr int regularSince = 1600;
constexpr int reducedRate = 700;
constexpr int lumpRate = 1230; // travel, as a lump sum
const Day regularChange = DayOf(1998, 4, 1);

// Half up, which is what rounding of a positive or negative amount means in the books.
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

void PutRate(RateText &field, int hundredths)
{
    field[0] = static_cast<char>('0' + hundredths / 1000 % 10);
    field[1] = static_cast<char>('0' + hundredths / 100 % 10);
    field[2] = ',';
    field[3] = static_cast<char>('0' + hundredths / 10 % 10);
    field[4] = static_cast<char>('0' + hundredths % 10);
    field[5] = 0;
}

// `width` digits of a number, without a NUL.
void PutDigits(char *to, int64_t number, int width)
{
    for (int i = width - 1; i >= 0; --i) {
        to[i] = static_cast<char>('0' + number % 10);
        number /= 10;
    }
}

template <size_t Width> void PutText(char (&field)[Width], const char *windows1252)
{
    std::memcpy(field, windows1252, std::min(std::strlen(windows1252), Width - 1));
}

// What an amount in DM is in another currency, at the first rate that the books have; 0 without a currency.
int64_t ForeignAmount(const char *currency, int64_t pfennig)
{
    constexpr int64_t units[] = {1, 1, 100, 1000, 10000, 100000};
    for (const CurrencyRow &row : Currencies()) {
        if (std::strcmp(row.Code, currency) == 0) return pfennig * 100 * units[row.UnitCode] / row.FirstRate;
    }
    return 0;
}

// What a posting's tax does.
struct Tax {
    Account *Of = nullptr; // tax account, null for none
    int Rate = 0;          // hundredths
    uint8_t Key = 0;       // Steuerflags
    bool OnHaben = false;
};

// One record of bube in the making. The side that carries the tax holds the net amount, the other the gross
// one.
struct Line {
    Account *Soll = nullptr;
    Account *Haben = nullptr;
    int64_t SollAmount = 0;
    int64_t HabenAmount = 0;
    Tax Duty = {};
    int64_t TaxAmount = 0;
    uint16_t Status = 0;
    int16_t Parts = 0; // of a split's first line: how many follow it
    const char *Prefix = "";
    int64_t Voucher = 0;
    const char *Text = ""; // Windows-1252
    int64_t TaxBase = 0;   // where it isn't the net amount
};

// An invoice that waits for its payment.
struct OpenItem {
    int32_t Account; // index among Debitoren or Kreditoren
    int32_t Booking; // Buchungsnummer, 0 for one of an earlier year
    int32_t Voucher;
    Day Date;
    int64_t Original;
    int64_t Open;
    int64_t NetOpen; // of what is open: net and tax, for the discount and for tax on receipt
    int64_t TaxOpen;
    Tax Duty;
    int16_t Reminders;
};

struct CostShare {
    CostObject *First;
    CostObject *Second; // null for none
    int Share;          // hundredths of a percent; 10000 all of it
    uint8_t Flag;
    AccountNumber FirstKey;
    AccountNumber SecondKey;
    char Text[sizeof(KobuRecord::Text)];
};

struct CostTemplate {
    int Number;
    std::vector<CostShare> Shares;
};

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

// The two tables of a year that postings go into, written in transactions of bounded size.
struct YearFiles {
    TableFile Bube;
    TableFile Kobu;
    std::optional<EngineTransaction> Transaction;
    int Pending = 0;

    explicit YearFiles(const fs::path &directory)
        : Bube(LayoutOf(TableBube), directory, OpenMode::Accelerated),
          Kobu(LayoutOf(TableKobu), directory, OpenMode::Accelerated)
    {}

    void Write(TableFile &table, void *record)
    {
        if (!Transaction) Transaction.emplace();
        table.Insert(record);
        if (++Pending >= recordsPerTransaction) Flush();
    }

    void Flush()
    {
        if (Transaction) Transaction->Finish();
        Transaction.reset();
        Pending = 0;
    }

    void Close()
    {
        Flush();
        Bube.Close();
        Kobu.Close();
    }
};

struct Generator {
    Ledger &Books;
    const PostingPlan &Plan;
    const fs::path &Data;
    const Progress &Report;
    Random Dice;
    std::vector<CostTemplate> Templates;
    std::deque<OpenItem> Receivable;
    std::deque<OpenItem> Payable;
    std::optional<YearFiles> Files;

    int YearIndex = 0;
    Day Today = 0;
    int Month = 0; // 0..11, fiscal
    PackedDate TodayPacked = {};
    SortDate TodaySort = {};
    int Running = 0; // of the day
    int32_t Booking = 0;
    int64_t Written = 0;
    int64_t CostLines = 0;
    int64_t Shrink = 1;
    int32_t Invoice = 0;
    int32_t Receipt = 0;
    int32_t Statement = 0;
    int32_t Voucher = 0;
    int64_t CommunityNet = 0;           // bought in the EC this month
    Totals DebitorMonth, KreditorMonth; // of the collective accounts
    std::vector<Account *> Sales, Purchases, Expenses;

    Generator(Ledger &ledger, const PostingPlan &plan, const fs::path &data, const Progress &progress);

    // ---- Accounts ----
    Account *Get(int number) const;
    Account *Find(int number) const { return Books.FindSachkonto(number); }
    Tax TaxOf(const Account &account, bool onHaben) const;
    // One of the accounts; with `like` given, one with the same tax key, so that an invoice has one rate.
    Account *Pick(const std::vector<Account *> &accounts, const Account *like);

    // ---- Records ----
    void Book(Line line);
    void BookCosts(const Line &line, int32_t booking);
    void Add(Account &account, int64_t soll, int64_t haben, bool isClosing);
    void BookPlain(int soll, int haben, int64_t amount, const char *prefix, int64_t voucher, const char *text,
                   uint16_t status = 0);
    void BookExpense(Account &expense, Account &payer, int64_t net, const char *prefix, int64_t voucher,
                     const char *text);
    bool HasRoom(int64_t records) const { return Written + records <= Plan.Count; }

    // ---- What happens ----
    void AddOpenings();
    void Sale(int64_t room);
    void CashSale(int64_t room);
    void Purchase(int64_t room);
    void CustomerPays(int64_t room);
    void SupplierIsPaid(int64_t room);
    void SmallExpense();
    void CreditNote(int64_t room);
    void MoveCash();
    void RareThing();
    void Anything(int64_t room);
    void MonthBegins();
    void MonthMiddle();
    void MonthWages();
    void MonthEnds();
    void YearEnds();
    void Reconcile();

    int64_t Amount(int64_t lowDm, int64_t highDm);
    // What every month costs; the smaller Mandanten have smaller rooms and fewer people.
    int64_t Fixed(int64_t pfennig) const
    {
        return Books.Of->OpeningShare == 1 ? pfennig : pfennig / (Books.Of->OpeningShare * 2);
    }
    void StartYear(int index);
    void Run();
    int64_t WriteOpenItems();
};

Generator::Generator(Ledger &ledger, const PostingPlan &plan, const fs::path &data, const Progress &progress)
    : Books(ledger), Plan(plan), Data(data),
      Report(progress), Dice{plan.Seed * 3 + static_cast<uint64_t>(ledger.Of->Number)},
      Templates(MakeTemplates(ledger)), Shrink(std::max<int64_t>(1, plan.Count / fullAmountsCount))
{
    const auto collect = [this](std::vector<Account *> &to, std::initializer_list<int> numbers) {
        for (const int number : numbers) {
            if (Account *account = Find(number)) to.push_back(account);
        }
    };
    // An account named twice is used twice as often.
    collect(Sales, {5010, 5010, 5010, 5020, 5020, 5030, 5040, 5050, 5060, 5070, 5070, 5070, 5080, 5090, 5090,
                    5095, 5095, 5097});
    collect(Purchases, {6010, 6010, 6020, 6020, 6030, 6040, 6050, 6060, 6070, 6070, 6080, 6210, 8210, 8220,
                        8310, 8450, 8480});
    collect(Expenses, {8110, 8110, 8250, 8260, 8410, 8410, 8430, 8440, 8590});
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

void Generator::Add(Account &account, int64_t soll, int64_t haben, bool isClosing)
{
    YearSums &sums = account.Years[YearIndex];
    Totals &slot = isClosing ? sums.Slot0 : sums.Month[Month];
    slot.Soll += soll;
    slot.Haben += haben;
    ++sums.Count[Month];
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
    const bool isClosing = (line.Status & BubeOhneNetto) != 0;
    Add(*line.Soll, line.SollAmount, 0, isClosing);
    Add(*line.Haben, 0, line.HabenAmount, isClosing);
    record.Steuerherkunft = tax.Key;
    if (tax.Of != nullptr) {
        std::memcpy(record.Steuerkonto, tax.Of->Key, sizeof record.Steuerkonto);
        // The rate is worked out from the amounts: the side of the tax is all that is kept of its key here.
        record.Steuerflags = static_cast<uint8_t>((tax.OnHaben ? BubeSteuerPlus : BubeSteuerMinus) | 0x10);
        Add(*tax.Of, tax.OnHaben ? 0 : line.TaxAmount, tax.OnHaben ? line.TaxAmount : 0, isClosing);
        line.TaxBase = tax.OnHaben ? line.HabenAmount : line.SollAmount;
    }
    record.Steuerklasse = static_cast<uint8_t>(tax.Key & (BubeKlasse2 | BubeKlasse4 | BubeKlasse80));
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
    if (Books.Of->HasCosts && !isClosing) BookCosts(line, record.Buchungsnummer);
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

// Invoices of the year before that are not yet paid, on every second partner.
void Generator::AddOpenings()
{
    const Day first = FiscalYearStart(firstFiscalYear, Books.Of->FirstMonth);
    const auto add = [&](std::vector<Account> &accounts, std::deque<OpenItem> &items, int sign) {
        for (size_t i = 0; i < accounts.size(); i += 2) {
            const int64_t amount = Amount(200, 6000);
            SetVortrag(accounts[i].Years[0], sign * amount);
            items.push_back({static_cast<int32_t>(i),
                             0,
                             static_cast<int32_t>(i + 1),
                             first - 5 - static_cast<Day>(i % 40),
                             amount,
                             amount,
                             amount,
                             0,
                             {},
                             0});
        }
    };
    add(Books.Debitoren, Receivable, 1);
    add(Books.Kreditoren, Payable, -1);
    BalanceOpening(Books);
}

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

void Generator::StartYear(int index)
{
    if (Files) Files->Close();
    Files.emplace(Data / Books.Directory(index));
    if (index > 0) CarryOver(Books);
    YearIndex = index;
}

void Generator::Run()
{
    AddOpenings();
    const Day first = FiscalYearStart(firstFiscalYear, Books.Of->FirstMonth);
    const Day last = LastPostingDay(Books);
    const auto isWorkday = [](Day day) { return WeekdayOf(day) < 5; };
    int workdays = 0;
    Day lastWorkday = first;
    for (Day day = first; day <= last; ++day) {
        if (!isWorkday(day)) continue;
        ++workdays;
        lastWorkday = day;
    }
    int workdaysDone = 0;
    // What the ends of months still need of the count.
    constexpr int64_t monthEndRecords = 4 + 4;
    int previousMonth = -1;
    bool middleDone = false;
    bool wagesDone = false;
    StartYear(0);
    for (Day day = first; day <= last; ++day) {
        const FiscalDay fiscal = FiscalOf(day, Books.Of->FirstMonth);
        const bool isMonthEnd = FiscalOf(day + 1, Books.Of->FirstMonth).Month != fiscal.Month;
        if (!isWorkday(day) && !isMonthEnd) continue;
        if (fiscal.Year - firstFiscalYear != YearIndex) StartYear(fiscal.Year - firstFiscalYear);
        Today = day;
        Month = fiscal.Month - 1;
        Running = 0;
        MakePacked(TodayPacked, day, Books.Of->FirstMonth);
        MakeSort(TodaySort, day, Books.Of->FirstMonth);
        if (Month != previousMonth) {
            previousMonth = Month;
            middleDone = false;
            wagesDone = false;
            MonthBegins();
        }
        if (!middleDone && fiscal.DayOfMonth >= 10) {
            middleDone = true;
            MonthMiddle();
        }
        if (!wagesDone && fiscal.DayOfMonth >= 26) {
            wagesDone = true;
            MonthWages();
        }
        const bool isLast = day >= lastWorkday;
        if (isWorkday(day)) ++workdaysDone;
        const int64_t target = isLast ? Plan.Count - monthEndRecords : Plan.Count * workdaysDone / workdays;
        while (isWorkday(day) && Written < target) {
            Anything(target - Written);
        }
        if (isMonthEnd) {
            MonthEnds();
            if (fiscal.Month == 12) YearEnds();
            Reconcile();
            // What is left when an end needed less than was kept for it.
            while (day == last && HasRoom(1)) {
                SmallExpense();
            }
        }
        Report(static_cast<double>(day - first) / static_cast<double>(last - first + 1));
    }
    Files->Close();
    Files.reset();
}

int64_t Generator::WriteOpenItems()
{
    int64_t count = 0;
    const fs::path directory = Data / Books.Directory(yearCount - 1);
    const auto write = [&](TableId id, const std::deque<OpenItem> &items,
                           const std::vector<Account> &accounts) {
        TableFile table(LayoutOf(id), directory, OpenMode::Accelerated);
        uint32_t number = 0;
        for (size_t at = 0; at < items.size();) {
            EngineTransaction transaction;
            for (int i = 0; i < recordsPerTransaction && at < items.size(); ++i, ++at) {
                const OpenItem &item = items[at];
                const Account &account = accounts[static_cast<size_t>(item.Account)];
                const PartnerRow &partner = *account.Partner;
                const TermRow *term = &Terms().front();
                for (const TermRow &row : Terms()) {
                    if (row.Number == partner.Zahlungsziel) term = &row;
                }
                OpenItemRecord record{};
                record.Nummer = ++number;
                std::memcpy(record.Konto, account.Key, sizeof record.Konto);
                std::memcpy(record.Referenz1, account.Of == Kind::Debitor ? "AR" : "ER", 2);
                PutDigits(record.Referenz1 + 2, item.Voucher, 6);
                PutText(record.Referenz2, item.Booking == 0 ? "Vorjahr"_w : "");
                MakeSort(record.Datum1, item.Date, Books.Of->FirstMonth);
                MakeSort(record.Termin, item.Date + term->DaysNet, Books.Of->FirstMonth);
                MakeSort(record.Skontodatum, item.Date + term->DaysSkonto, Books.Of->FirstMonth);
                text::FromUtf8(partner.Name1, record.Text1, sizeof record.Text1);
                PutText(record.Text2, item.Booking == 0            ? "Rechnung aus dem Vorjahr"_w
                                      : item.Open == item.Original ? "Rechnung"_w
                                                                   : "Rechnung, Rest"_w);
                record.Flag = item.Open == item.Original ? 0 : 1;
                PutAmount(record.Betrag1, item.Open);
                MakeKey(record.Konto2,
                        account.Of == Kind::Debitor ? kontoForderungen : kontoVerbindlichkeiten);
                text::FromUtf8(partner.Skonto, record.Satz, sizeof record.Satz);
                record.Wert1 = item.Reminders;
                PutAmount(record.Betrag3, item.Original);
                PutAmount(record.Betrag2, Percent(item.Open, ShareOf(partner.Skonto)));
                PutAmount(record.Betrag4, item.Original - item.Open);
                record.Wert3 = item.Booking;
                text::FromUtf8(partner.Waehrung, record.Waehrung, sizeof record.Waehrung);
                PutAmount(record.Waehrungsbetrag, ForeignAmount(partner.Waehrung, item.Open));
                record.Zahlungsart = static_cast<uint8_t>(1 + item.Account % 4);
                table.Insert(&record);
                ++count;
            }
            transaction.Finish();
        }
        table.Close();
    };
    write(TableOpdebi, Receivable, Books.Debitoren);
    write(TableOpkred, Payable, Books.Kreditoren);
    return count;
}

} // namespace

Day LastPostingDay(const Ledger &ledger)
{
    const int months = ledger.Of->FirstMonth - 1 + postingMonths;
    return DayOf(firstFiscalYear + months / 12, months % 12 + 1, 1) - 1;
}

int64_t WritePostings(Ledger &ledger, const PostingPlan &plan, const fs::path &data, const Progress &progress)
{
    Generator generator(ledger, plan, data, progress);
    generator.Run();
    return generator.Written + generator.CostLines + generator.WriteOpenItems();
}

} // namespace books
