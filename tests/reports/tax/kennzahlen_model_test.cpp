// The boxes of random books against a second reckoning: whole Pfennigs instead of decimal text, the months of
// the calendar instead of fiscal years, a sum for each box instead of a list. Every period of every book has
// to agree to the cent.
#include "include/vark40.h"
#include "tests/support/books.h"
#include "tests/support/recording_engine.h"
#include "tests/support/report_calls.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

using namespace vark;
using namespace vark::test;

namespace {

constexpr int firstYear = 1997;
constexpr int yearCount = 2;

const std::set<int> wholeBoxes = {41, 42, 44, 49, 43, 48, 50, 86, 35, 77, 91, 92, 93, 94, 57, 71, 72, 78, 79};
const std::set<int> exactBoxes = {36, 76, 80, 65, 66, 61, 62, 63, 64, 59, 58, 69,
                                  39, 75, 45, 46, 87, 88, 37, 38, 95, 70, 73, 74};
const std::set<int> notFromAccounts = {50, 86, 87, 88, 35, 36};

struct ModelAccount {
    std::string Number;
    int Kennzahl;
    std::array<std::array<std::array<int64_t, 2>, 12>, yearCount> Months; // year, month, Soll and Haben
    std::array<bool, yearCount> IsThere;
};

struct ModelPosting {
    int Year;  // 0 or 1
    int Month; // fiscal, 1 to 12
    std::string Soll, Haben, Steuerkonto;
    int64_t SollBetrag, HabenBetrag, Grundbetrag;
    unsigned Status, Steuerflags, Herkunft, Klasse;
    std::string Satz;
};

struct Model {
    int FirstMonth = 1; // of the fiscal year
    bool IsExact = false;
    bool WithSonderkonto = false;
    std::string Sonderkonto;
    int FirstPostable = firstYear;
    std::vector<ModelAccount> Accounts;
    std::vector<ModelPosting> Postings;

    // The fiscal year (0 or 1) and month of a month of the calendar.
    [[nodiscard]] std::pair<int, int> Fiscal(int year, int month) const
    {
        if (month >= FirstMonth) return {year - firstYear, month - FirstMonth + 1};
        return {year - 1 - firstYear, month - FirstMonth + 13};
    }
    // The fiscal months of a period, those of postable years alone.
    [[nodiscard]] std::set<std::pair<int, int>> MonthsOf(int code, int year) const
    {
        std::set<std::pair<int, int>> months;
        if (code <= 12) months.insert({year - firstYear, code});
        const int first = code == 17 ? 1 : 3 * (code - 13) + 1;
        const int last = code == 17 ? 12 : first + 2;
        for (int month = first; code > 12 && month <= last; ++month) {
            months.insert(Fiscal(year, month));
        }
        std::erase_if(months, [this](const std::pair<int, int> &month) {
            return month.first + firstYear < FirstPostable || month.first >= yearCount;
        });
        return months;
    }
    [[nodiscard]] const ModelAccount *Find(const std::string &number) const
    {
        for (const ModelAccount &account : Accounts) {
            if (account.Number == number) return &account;
        }
        return nullptr;
    }
    [[nodiscard]] bool Counts(const ModelAccount &account) const
    {
        return account.Kennzahl != 0 && !(WithSonderkonto && notFromAccounts.contains(account.Kennzahl));
    }
    [[nodiscard]] std::map<int, int64_t> Boxes(const std::set<std::pair<int, int>> &months) const
    {
        std::map<int, int64_t> boxes;
        for (const ModelAccount &account : Accounts) {
            if (!Counts(account)) continue;
            for (const auto &[year, month] : months) {
                const auto &sums = account.Months[static_cast<size_t>(year)][static_cast<size_t>(month - 1)];
                boxes[account.Kennzahl] += sums[1] - sums[0];
            }
        }
        int last = 0;
        for (const ModelPosting &posting : Postings) {
            if (months.contains({posting.Year, posting.Month})) Take(posting, boxes, last);
        }
        return boxes;
    }
    [[nodiscard]] std::pair<int, int> BoxesOf(unsigned klasse, const std::string &satz, int last) const
    {
        if (IsExact && (klasse & 0x80) != 0) return {last, 0};
        if (!IsExact && (klasse & 0x40) != 0) return {85, 0};
        if ((klasse & 2) != 0) return {50, 0};
        if ((klasse & 4) != 0) return {86, 0};
        if (IsExact && satz == "12,00") return {87, 0};
        if (IsExact && satz == "16,00") return {88, 0};
        return {35, 36};
    }
    void Take(const ModelPosting &posting, std::map<int, int64_t> &boxes, int &last) const
    {
        if ((posting.Status & 0x10) != 0) {
            const ModelAccount *soll = Find(posting.Soll);
            const ModelAccount *haben = Find(posting.Haben);
            if (soll != nullptr && Counts(*soll)) boxes[soll->Kennzahl] += posting.SollBetrag;
            if (haben != nullptr && Counts(*haben)) boxes[haben->Kennzahl] -= posting.HabenBetrag;
        }
        if (!WithSonderkonto) return;
        int64_t basis = posting.Grundbetrag;
        int64_t steuer = posting.SollBetrag;
        unsigned klasse = posting.Klasse;
        const bool onOther = !posting.Steuerkonto.empty() &&
                             (Sonderkonto.empty() || posting.Steuerkonto != Sonderkonto) &&
                             (posting.Herkunft & 0x20) == 0;
        if (onOther) {
            const bool sollIsLower = AmountOf(posting.SollBetrag) <= AmountOf(posting.HabenBetrag);
            basis = sollIsLower ? posting.SollBetrag : posting.HabenBetrag;
            steuer = sollIsLower ? posting.HabenBetrag - posting.SollBetrag
                                 : posting.SollBetrag - posting.HabenBetrag;
            klasse = posting.Herkunft;
        } else if ((posting.Status & 0x200) == 0) {
            return;
        }
        const auto [first, second] = BoxesOf(klasse, posting.Satz, last);
        last = first;
        int sign = 0;
        if ((posting.Steuerflags & 6) != 0) {
            sign = (posting.Steuerflags & 4) != 0 ? 1 : -1;
        } else if (!Sonderkonto.empty() && (posting.Soll == Sonderkonto || posting.Haben == Sonderkonto)) {
            sign = posting.Soll == Sonderkonto ? 1 : -1;
        }
        boxes[first] += sign * basis;
        boxes[second] += sign * steuer;
    }
    // What the record has to say of the boxes: those that are not zero.
    [[nodiscard]] std::map<std::string, std::string> Form(const std::set<std::pair<int, int>> &months) const
    {
        std::map<std::string, std::string> form;
        for (const auto &[box, sum] : Boxes(months)) {
            const bool isWhole = wholeBoxes.contains(box);
            if (!isWhole && !exactBoxes.contains(box)) continue;
            std::string text = AmountOf(sum);
            if (isWhole && !IsExact) text.replace(10, 2, "00");
            if (text == "000000000,00") continue;
            form["Kz" + std::to_string(box)] = text;
            if (box == 72 || box == 79) form["Kz" + std::to_string(box) + "Kopie"] = text;
        }
        return form;
    }
};

struct Chance {
    std::mt19937 Source;

    int Below(int end) { return static_cast<int>(Source() % static_cast<unsigned>(end)); }
    template <typename Value> Value Of(const std::vector<Value> &values)
    {
        return values[static_cast<size_t>(Below(static_cast<int>(values.size())))];
    }
    int64_t Amount() { return Below(8) == 0 ? 0 : Below(2) == 0 ? Below(300) : Below(99'999'999); }
    int64_t SignedAmount() { return Below(6) == 0 ? -Amount() : Amount(); }
};

Model MakeModel(Chance &chance, int round)
{
    Model model;
    model.FirstMonth = chance.Of<int>({1, 1, 4, 7, 10, 3, 12});
    model.IsExact = round % 2 == 1;
    model.WithSonderkonto = round % 4 >= 2;
    model.Sonderkonto = chance.Below(5) == 0 ? "" : "1790";
    model.FirstPostable = chance.Below(4) == 0 ? firstYear + 1 : firstYear;
    std::vector<int> kennzahlen = {0, 85, 40, 50, 86, 35, 36};
    kennzahlen.insert(kennzahlen.end(), wholeBoxes.begin(), wholeBoxes.end());
    kennzahlen.insert(kennzahlen.end(), exactBoxes.begin(), exactBoxes.end());
    std::vector<std::string> numbers = {"1790"};
    for (int i = 0; i < 60; ++i) {
        ModelAccount account{};
        account.Number = std::to_string(1000 + i * 137);
        account.Kennzahl = chance.Of(kennzahlen);
        account.IsThere = {chance.Below(6) != 0, chance.Below(6) != 0};
        for (size_t year = 0; year < yearCount; ++year) {
            for (auto &month : account.Months[year]) {
                if (account.IsThere[year]) month = {chance.SignedAmount(), chance.SignedAmount()};
            }
        }
        // Only an account of both years is posted on: what a search finds of the others is another matter.
        if (account.IsThere[0] && account.IsThere[1]) numbers.push_back(account.Number);
        model.Accounts.push_back(account);
    }
    for (int i = 0; i < 250; ++i) {
        ModelPosting posting{};
        posting.Year = chance.Below(yearCount);
        posting.Month = 1 + chance.Below(12);
        posting.Soll = chance.Of(numbers);
        posting.Haben = chance.Below(4) == 0 ? "1790" : chance.Of(numbers);
        posting.Steuerkonto = chance.Of<std::string>({"", "", "1790", "1776", "1576"});
        posting.SollBetrag = chance.SignedAmount();
        posting.HabenBetrag = chance.Below(3) == 0 ? posting.SollBetrag : chance.SignedAmount();
        posting.Grundbetrag = chance.SignedAmount();
        posting.Status = chance.Of<unsigned>({0, 0x10, 0x200, 0x200, 0x210, 0x08, 0x1EF, 0xFFFF});
        posting.Steuerflags = static_cast<unsigned>(chance.Below(4) == 0 ? 0 : chance.Below(32));
        posting.Herkunft = chance.Of<unsigned>({0, 2, 4, 0x20, 0x22, 0x40, 0x80, 0x86, 0x12});
        posting.Klasse = chance.Of<unsigned>({0, 2, 4, 6, 0x40, 0x42, 0x80, 0x82, 0x10, 0xFF});
        posting.Satz = chance.Of<std::string>({"12,00", "16,00", "15,00", "07,00", "16,01", ""});
        model.Postings.push_back(posting);
    }
    return model;
}

void PutAmount(AmountText &field, int64_t amount, bool mayBeEmpty)
{
    SetText(field, amount == 0 && mayBeEmpty ? "" : AmountOf(amount));
}

void Write(Books &books, int mandant, const Model &model)
{
    MandantOptions options;
    options.FirstFiscalMonth = static_cast<int16_t>(model.FirstMonth);
    options.LowerYear = std::to_string(model.FirstPostable);
    books.AddMandant(mandant, options);
    books.ChangeMandant(mandant, [&](FistaRecord &record) {
        record.UStVAVariante = model.IsExact ? 1 : 0;
        record.Sonderkontomodus = model.WithSonderkonto ? 1 : 0;
        SetText(record.Sonderkonto, model.Sonderkonto); // as it was typed, without blanks
    });
    for (int year = model.FirstPostable - firstYear; year < yearCount; ++year) {
        const std::string yearText = std::to_string(firstYear + year);
        for (const ModelAccount &account : model.Accounts) {
            if (!account.IsThere[static_cast<size_t>(year)]) continue;
            SakoRecord record = MakeSako(account.Number);
            record.Kennzahl = static_cast<int16_t>(account.Kennzahl);
            for (size_t month = 0; month < 12; ++month) {
                const auto &sums = account.Months[static_cast<size_t>(year)][month];
                PutAmount(record.Umsaetze.Monat[month].Soll, sums[0], month % 2 == 0);
                PutAmount(record.Umsaetze.Monat[month].Haben, sums[1], month % 2 == 0);
            }
            SetText(record.Umsaetze.Vortrag.Haben, "000777777,77"); // counts in no month
            SetText(record.Umsaetze.Slot0.Haben, "000888888,88");
            books.Insert(mandant, TableSako, record, yearText);
        }
        // Class 0x80 looks back, so postings have to lie in the books in the order of the model.
        int number = 0;
        for (const ModelPosting &posting : model.Postings) {
            if (posting.Year != year) continue;
            ++number;
            const std::string month = std::to_string(100 + posting.Month).substr(1);
            const std::string day = number % 3 == 0 ? "01" : number % 3 == 1 ? "15" : "28";
            BubeRecord record = MakeBube(number, day + month + std::to_string(firstYear + year - 1980),
                                         posting.Soll, posting.Haben, "000000000,00");
            SetText(record.Steuerkonto, posting.Steuerkonto.empty() ? "" : Justified(posting.Steuerkonto));
            PutAmount(record.Soll, posting.SollBetrag, true);
            PutAmount(record.Haben, posting.HabenBetrag, true);
            PutAmount(record.Grundbetrag, posting.Grundbetrag, true);
            record.Status = static_cast<uint16_t>(posting.Status);
            record.Steuerflags = static_cast<uint8_t>(posting.Steuerflags);
            record.Steuerherkunft = static_cast<uint8_t>(posting.Herkunft);
            record.Steuerklasse = static_cast<uint8_t>(posting.Klasse);
            SetText(record.Steuersatz, posting.Satz);
            books.Insert(mandant, TableBube, record, yearText);
        }
    }
}

// In the order in which the books hold them: by month, then day, then number.
void SortPostings(Model &model)
{
    for (int year = 0; year < yearCount; ++year) {
        int number = 0;
        std::vector<std::pair<int, ModelPosting>> sorted;
        for (const ModelPosting &posting : model.Postings) {
            if (posting.Year != year) continue;
            ++number;
            const int day = number % 3 == 0 ? 1 : number % 3 == 1 ? 15 : 28;
            sorted.emplace_back((posting.Month * 100 + day) * 1000 + number, posting);
        }
        std::erase_if(model.Postings, [year](const ModelPosting &posting) { return posting.Year == year; });
        std::sort(sorted.begin(), sorted.end(),
                  [](const auto &a, const auto &b) { return a.first < b.first; });
        for (const auto &[place, posting] : sorted) {
            model.Postings.push_back(posting);
        }
    }
}

} // namespace

TEST(KennzahlenModel, EveryPeriodOfRandomBooksAgreesToTheCent)
{
    constexpr unsigned seed = 19980615;
    constexpr int rounds = 12;
    Chance chance{std::mt19937(seed)};
    Books books;
    std::vector<Model> models;
    for (int round = 0; round < rounds; ++round) {
        models.push_back(MakeModel(chance, round));
        Write(books, round + 1, models.back());
        SortPostings(models.back());
    }
    ASSERT_EQ(1, VARK_Status());
    RecordingEngine sent;
    sent.Install();
    int made = 0;
    size_t filled = 0;
    for (int round = 0; round < rounds; ++round) {
        const Model &model = models[static_cast<size_t>(round)];
        // A year that cannot be posted to is replaced by the dialog.
        for (int year = model.FirstPostable; year < firstYear + yearCount; ++year) {
            for (int code = 1; code <= 17; ++code) {
                const std::string what = "seed " + std::to_string(seed) + " round " + std::to_string(round) +
                                         " year " + std::to_string(year) + " period " + std::to_string(code);
                const auto months = model.MonthsOf(code, year);
                sent.Calls.clear();
                ReportParams params = PeriodOf(code, year - 1980);
                const bool isShown = VARK_UmsatzSteuerVoranmeldung(round + 1, nullptr, &params) != nullptr;
                ASSERT_EQ(!months.empty(), isShown) << what;
                if (!isShown) continue;
                auto fields = FieldsOf(sent.Records(0).at(0));
                std::erase_if(fields, [](const auto &field) { return !field.first.starts_with("Kz"); });
                const auto wanted = model.Form(months);
                ASSERT_EQ(wanted, fields) << what;
                ++made;
                filled += wanted.size();
            }
        }
    }
    EXPECT_GT(made, 300);
    EXPECT_GT(filled, 5000u);
    VARK_SchliesseDB();
}
