// Reports record by record. A case is a file: what is in the books, the call, and below a line of dashes
// every call of the report engine that has to follow, a record field by field. "#" begins a comment.
//
//   mandant NAME              a Mandant of the years 1997 and 1998
//   jahresbeginn MONTH        first month of his fiscal year, before the first account
//   sako|kred|debi NUMBER     an account; its name follows on a line of its own, so do its sums:
//     name TEXT
//     vortrag SOLL HABEN
//     monat FISCAL_MONTH SOLL HABEN
//   buchung DATE SOLLKONTO HABENKONTO AMOUNT     a final posting; the date has the fiscal month, and the year
//   from 1980 ruf REPORT [bis DATE] [art KIND] [von NUMBER] [zu NUMBER] [drucker]
#include "include/vark40.h"
#include "src/frame/lifecycle.h"
#include "src/reports/frame/report_params.h"
#include "tests/support/books.h"
#include "tests/support/recording_engine.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>
#include <vector>

using namespace vark;
using namespace vark::test;

namespace {

// "1.234,50" as a record holds it, "000001234,50".
std::string AmountOf(const std::string &text)
{
    std::string digits;
    for (const char character : text) {
        if (character != '.') digits += character;
    }
    return std::string(12 - digits.size(), '0') + digits;
}

std::string WithoutComment(const std::string &line)
{
    std::string text = line.substr(0, line.find('#'));
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

// One account as it is read from a case, whichever of the two kinds it is.
struct Account {
    TableId Table = TableSako;
    std::string Number;
    std::string Name;
    std::map<int, std::pair<std::string, std::string>> Sums; // by fiscal month, 0 for the Vortrag
};

template <typename Record> void FillSums(Record &record, const Account &account)
{
    for (const auto &[month, amounts] : account.Sums) {
        SollHaben &sums = month == 0 ? record.Umsaetze.Vortrag : record.Umsaetze.Monat[month - 1];
        SetText(sums.Soll, amounts.first);
        SetText(sums.Haben, amounts.second);
    }
}

struct Case {
    Books Installation;
    RecordingEngine Engine;
    MandantOptions Options;
    std::string MandantName;
    bool HasMandant = false;
    Account Open;
    int Postings = 0;
    ReportParams Params{};
    std::string Result; // of the export, in words

    void MakeMandant()
    {
        if (HasMandant) return;
        HasMandant = true;
        Installation.AddMandant(1, Options);
        Installation.ChangeMandant(1, [this](FistaRecord &record) { SetText(record.Name, MandantName); });
    }
    void FinishAccount()
    {
        if (Open.Number.empty()) return;
        if (Open.Table == TableSako) {
            SakoRecord record = MakeSako(Open.Number);
            SetText(record.Name, Open.Name);
            FillSums(record, Open);
            Installation.Insert(1, TableSako, record);
        } else {
            PersonalRecord record = MakePersonal(Open.Number);
            SetText(record.Name1, Open.Name);
            FillSums(record, Open);
            Installation.Insert(1, Open.Table, record);
        }
        Open = {};
    }
    void Begin(TableId table, std::istream &rest)
    {
        MakeMandant();
        FinishAccount();
        Open.Table = table;
        rest >> Open.Number;
    }
    void Sum(int month, std::istream &rest)
    {
        std::string soll;
        std::string haben;
        rest >> soll >> haben;
        Open.Sums[month] = {AmountOf(soll), AmountOf(haben)};
    }
    void Call(std::istream &rest)
    {
        FinishAccount();
        std::string report;
        rest >> report;
        ASSERT_EQ("summen_saldenliste", report);
        std::string word;
        std::string value;
        Params.ParamFlags = ParamZeitraum | ParamKontoArt | ParamKonten | ParamAusgabe;
        Params.KontoArt = 1;
        while (rest >> word) {
            if (word == "drucker") {
                Params.Ausgabe = 1;
                continue;
            }
            rest >> value;
            if (word == "bis") {
                Params.ParamFlags |= ParamDaten;
                SetText(Params.VonDatum, value);
                SetText(Params.BisDatum, value);
            } else if (word == "art") {
                Params.KontoArt = std::stoi(value);
            } else if (word == "von") {
                SetText(Params.KontoArt == 1   ? Params.SachkontoVon
                        : Params.KontoArt == 2 ? Params.KreditorVon
                                               : Params.DebitorVon,
                        value);
            } else if (word == "zu") {
                SetText(Params.KontoArt == 1   ? Params.SachkontoBis
                        : Params.KontoArt == 2 ? Params.KreditorBis
                                               : Params.DebitorBis,
                        value);
            } else {
                FAIL() << "unknown word " << word;
            }
        }
        ASSERT_EQ(1, VARK_Status()); // binds the real engine first
        Engine.Install();
        Result = VARK_SummenSaldenListe(1, nullptr, &Params) != nullptr ? "ansicht" : "keine ansicht";
        Result += " " + std::to_string(uint32_t{Params.ViewResult});
    }
    void Do(const std::string &line)
    {
        std::istringstream rest(line);
        std::string word;
        rest >> word;
        if (word == "mandant") {
            std::getline(rest >> std::ws, MandantName);
        } else if (word == "jahresbeginn") {
            rest >> Options.FirstFiscalMonth;
        } else if (word == "sako") {
            Begin(TableSako, rest);
        } else if (word == "kred") {
            Begin(TableKred, rest);
        } else if (word == "debi") {
            Begin(TableDebi, rest);
        } else if (word == "name") {
            std::getline(rest >> std::ws, Open.Name);
        } else if (word == "vortrag") {
            Sum(0, rest);
        } else if (word == "monat") {
            int month = 0;
            rest >> month;
            Sum(month, rest);
        } else if (word == "buchung") {
            FinishAccount();
            std::string date;
            std::string soll;
            std::string haben;
            std::string amount;
            rest >> date >> soll >> haben >> amount;
            Installation.Insert(1, TableBube, MakeBube(++Postings, date, soll, haben, AmountOf(amount)));
        } else if (word == "ruf") {
            Call(rest);
        } else if (!word.empty()) {
            FAIL() << "unknown word " << word;
        }
    }
    // What was sent, in the form of a case: a record's fields on lines of their own.
    [[nodiscard]] std::string Sent() const
    {
        std::string text;
        for (std::string call : Engine.Calls) {
            for (size_t at = call.find(" | "); at != std::string::npos; at = call.find(" | ")) {
                call.replace(at, 3, "\n  ");
            }
            text += call + "\n";
        }
        return text + Result + "\n";
    }
};

struct GoldenReport : testing::TestWithParam<std::string> {};

} // namespace

TEST_P(GoldenReport, SendsItsRecords)
{
    std::ifstream file(GOLDEN_DIRECTORY "/" + GetParam() + ".txt");
    ASSERT_TRUE(file.good());
    Case books;
    std::string wanted;
    bool isWanted = false;
    for (std::string line; std::getline(file, line);) {
        const std::string text = WithoutComment(line);
        if (text == "---") {
            isWanted = true;
        } else if (isWanted) {
            if (!text.empty()) wanted += text + "\n";
        } else {
            ASSERT_NO_FATAL_FAILURE(books.Do(text));
        }
    }
    EXPECT_FALSE(wanted.empty());
    EXPECT_EQ(wanted, books.Sent());
    VARK_SchliesseDB();
}

namespace {

// "summen_saldenliste/erster_monat", for each file.
std::vector<std::string> Cases()
{
    namespace fs = std::filesystem;
    std::vector<std::string> cases;
    for (const auto &entry : fs::recursive_directory_iterator(GOLDEN_DIRECTORY)) {
        const fs::path &path = entry.path();
        if (path.extension() == ".txt" && path.filename() != "CMakeLists.txt")
            cases.push_back((path.parent_path().filename() / path.stem()).string());
    }
    std::sort(cases.begin(), cases.end());
    return cases;
}

std::string NameOf(const testing::TestParamInfo<std::string> &info)
{
    std::string name = info.param;
    for (char &character : name) {
        if (character == '/') character = '_';
    }
    return name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Files, GoldenReport, testing::ValuesIn(Cases()), NameOf);
