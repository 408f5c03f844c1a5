// Reports record by record. A case is a file: what is in the books, the call, and below a line of dashes
// every call of the report engine that has to follow, a record field by field. "#" begins a comment.
//
//   spiel INSTRUCTION         what a person does in the report's dialog; without any it is answered OK
//   jahre FIRST LAST          the postable years; 1997 and 1998 at first
//   mandant NAME              a Mandant of these years
//   mandantfeld FIELD VALUE   a field of his record, by the name that `books zeigen` has for it
//   jahresbeginn MONTH        first month of his fiscal year, before the first record
//   jahr YEAR                 the year that the records below lie in; 1998 at first
//
//   sako|kred|debi|kore NUMBER  an account; what follows on lines of its own is part of it:
//     name TEXT
//     vortrag SOLL HABEN
//     slot0 SOLL HABEN
//     monat FISCAL_MONTH SOLL HABEN
//     feld FIELD VALUE        any other field, by the same names; a date is written as the record has it
//   satz TABLE                any other record, of `feld` lines alone; amounts are zero at first
//   gruppe TREE ID NEXT CHILD TITLE        nodes of guvauf, bilaktau or bilpasau
//   blatt TREE ID NEXT KONTO [gegenposten]
//   baum TABLE                a tree, whose nodes follow line by line as in tests/support/trees.h
//
//   buchung DATE SOLLKONTO HABENKONTO AMOUNT
//                             a final posting, `feld` lines may follow; the date has the fiscal month, and
//                             the year from 1980
//
//   ruf REPORT [WORD ...]     the call
//     zeitraum CODE, jahrindex YEAR_FROM_1980, vom TTMMJJ, bis TTMMJJ (alone: both dates), archiv YEAR
//     art KIND, von NUMBER, zu NUMBER, einzeln, drucker
#include "include/vark40.h"
#include "src/frame/lifecycle.h"
#include "src/reports/frame/report_params.h"
#include "tests/support/books.h"
#include "tests/support/recording_engine.h"
#include "tests/support/trees.h"
#include "tools/common/layout.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

using namespace vark;
using namespace vark::test;

namespace {

using Report = VarkWindow (*)(ReportParams *params);

const std::map<std::string, Report> reports = {
    {"bilanz", [](ReportParams *params) { return VARK_Bilanz(1, 0, nullptr, params); }},
    {"eroeffnungsbilanz", [](ReportParams *params) { return VARK_Bilanz(1, 1, nullptr, params); }},
    {"buchungsjournal", [](ReportParams *params) { return VARK_Buchungsjournal(1, nullptr, params); }},
    {"guv", [](ReportParams *params) { return VARK_GUV(1, nullptr, params); }},
    {"hauptabschluss", [](ReportParams *params) { return VARK_HauptAbschluss(1, nullptr, params); }},
    {"kontenblatt", [](ReportParams *params) { return VARK_Kontenblatt(1, 0, nullptr, params); }},
    {"kontenplan", [](ReportParams *params) { return VARK_Kontenplan(1, nullptr, params); }},
    {"kostenaufteilung", [](ReportParams *params) { return VARK_KostenAufteilung(1, nullptr, params); }},
    {"kostenblatt", [](ReportParams *params) { return VARK_Kontenblatt(1, 1, nullptr, params); }},
    {"kostenjournal", [](ReportParams *params) { return VARK_Kostenjournal(1, nullptr, params); }},
    {"kostensalden", [](ReportParams *params) { return VARK_KostenSaldenListe(1, nullptr, params); }},
    {"kostenstellen", [](ReportParams *params) { return VARK_KostenstellenListe(1, nullptr, params); }},
    {"op_liste", [](ReportParams *params) { return VARK_OPListe(1, nullptr, params); }},
    {"summen_saldenliste", [](ReportParams *params) { return VARK_SummenSaldenListe(1, nullptr, params); }},
    {"umsatzstatistik", [](ReportParams *params) { return VARK_UmsatzStatistik(1, nullptr, params); }},
    {"ustva", [](ReportParams *params) { return VARK_UmsatzSteuerVoranmeldung(1, nullptr, params); }},
    {"verprobung", [](ReportParams *params) { return VARK_UmsatzSteuerVerprobung(1, nullptr, params); }},
    {"zm", [](ReportParams *params) { return VARK_ZusammenfassendeMeldung(1, nullptr, params); }},
};

// "1.234,50" as a record holds it, "000001234,50"; "-5,00" as "000000005-00".
std::string AmountOf(const std::string &text)
{
    std::string digits;
    const bool isNegative = text[0] == '-';
    for (const char character : text) {
        if (character != '.' && character != '-') digits += character;
    }
    std::string amount = std::string(12 - digits.size(), '0') + digits;
    if (isNegative) amount[9] = '-';
    return amount;
}

std::string WithoutComment(const std::string &line)
{
    std::string text = line.substr(0, line.find('#'));
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

// The bytes of one record, filled field by field.
struct OpenRecord {
    const tools::TableLayout *Layout = nullptr;
    std::vector<char> Bytes;

    void Begin(const tools::TableLayout &layout)
    {
        Layout = &layout;
        Bytes.assign(layout.RecordLength, 0);
        for (const tools::FieldLayout &field : layout.Fields) {
            if (field.Type == tools::Form::Amount) SetText(&Bytes[field.Offset], field.Width, "000000000,00");
        }
    }
    void Set(const std::string &name, const std::string &value)
    {
        const auto field = std::find_if(Layout->Fields.begin(), Layout->Fields.end(),
                                        [&](const tools::FieldLayout &known) { return known.Name == name; });
        ASSERT_NE(Layout->Fields.end(), field) << "no field " << name;
        char *const bytes = &Bytes[field->Offset];
        switch (field->Type) {
        case tools::Form::Amount: SetText(bytes, field->Width, AmountOf(value)); break;
        case tools::Form::Konto:
            std::memset(bytes, 0, field->Width);
            SetText(bytes, field->Width, value.empty() ? "" : Justified(value));
            break;
        case tools::Form::I16:
        case tools::Form::I32:
        case tools::Form::U8:
        case tools::Form::U16:
        case tools::Form::U32: {
            const auto number = static_cast<uint32_t>(std::stoll(value, nullptr, 0));
            std::memcpy(bytes, &number, field->Width);
            break;
        }
        default: std::memset(bytes, 0, field->Width); SetText(bytes, field->Width, value);
        }
    }
    template <typename Record> Record As() const
    {
        Record record;
        EXPECT_EQ(sizeof record, Bytes.size());
        std::memcpy(&record, Bytes.data(), sizeof record);
        return record;
    }
};

struct Case {
    std::unique_ptr<Books> Installation;
    RecordingEngine Engine;
    MandantOptions Options;
    std::string MandantName;
    std::vector<std::pair<std::string, std::string>> MandantFields;
    std::string Year;
    bool HasMandant = false;
    OpenRecord Open;
    const tools::TableLayout *Tree = nullptr; // the one in hand
    Lines Nodes;
    int Postings = 0;
    ReportParams Params{};
    std::string Result; // of the export, in words

    explicit Case(const std::string &script) : Installation(std::make_unique<Books>(script)) {}

    void MakeMandant()
    {
        if (HasMandant) return;
        HasMandant = true;
        Installation->AddMandant(1, Options);
        OpenRecord record;
        record.Layout = &tools::LayoutOf(TableFista);
        Installation->ChangeMandant(1, [&](FistaRecord &mandant) {
            SetText(mandant.Name, MandantName);
            record.Bytes.assign(reinterpret_cast<const char *>(&mandant),
                                reinterpret_cast<const char *>(&mandant) + sizeof mandant);
            for (const auto &[name, value] : MandantFields) {
                record.Set(name, value);
            }
            mandant = record.As<FistaRecord>();
        });
    }
    void FinishRecord()
    {
        if (Tree != nullptr) InsertTree(*Installation, 1, Tree->Id, Nodes, Year);
        Tree = nullptr;
        Nodes.clear();
        if (Open.Layout == nullptr) return;
        Installation->InsertRecord(1, Open.Layout->Id, Open.Bytes, Year);
        Open = {};
    }
    void Begin(const tools::TableLayout *layout)
    {
        ASSERT_NE(nullptr, layout);
        MakeMandant();
        FinishRecord();
        Open.Begin(*layout);
    }
    void BeginAccount(TableId table, const std::string &number)
    {
        Begin(&tools::LayoutOf(table));
        Open.Set(table == TableKore ? "Nummer" : "Konto", number);
        Open.Set("Kuerzel", "K" + number);
    }
    void Node(bool isGroup, std::istream &rest)
    {
        std::string tree;
        std::string id;
        std::string next;
        std::string text;
        rest >> tree >> id >> next;
        Begin(tools::FindLayout(tree));
        Open.Set("Id", id);
        Open.Set("Next", next);
        rest >> text;
        if (isGroup) {
            Open.Set("Art", std::to_string(StructureGruppe));
            Open.Set("Child", text);
            std::getline(rest >> std::ws, text);
            Open.Set("Text", text);
        } else {
            Open.Set("Text", Justified(text));
            if (rest >> text) Open.Set("Art", std::to_string(StructureGegenposten));
        }
    }
    void Sum(const std::string &field, std::istream &rest)
    {
        std::string soll;
        std::string haben;
        rest >> soll >> haben;
        Open.Set(field + ".Soll", soll);
        Open.Set(field + ".Haben", haben);
    }
    void SetLimit(const std::string &value, char (&sako)[8], char (&kred)[8], char (&debi)[8],
                  char (&kore)[8])
    {
        Params.ParamFlags |= ParamKonten;
        SetText(Params.KontoArt == KontoartKreditor       ? kred
                : Params.KontoArt == KontoartDebitor      ? debi
                : Params.KontoArt == KontoartKostenstelle ? kore
                                                          : sako,
                value);
    }
    void Call(std::istream &rest)
    {
        MakeMandant();
        FinishRecord();
        std::string name;
        rest >> name;
        const auto report = reports.find(name);
        ASSERT_NE(reports.end(), report) << name;
        Params.ParamFlags = ParamZeitraum | ParamKontoArt | ParamAusgabe;
        Params.KontoArt = KontoartSachkonto;
        for (std::string word; rest >> word;) {
            if (word == "drucker") {
                Params.Ausgabe = 1;
                continue;
            }
            if (word == "einzeln") {
                Params.ParamFlags |= ParamEinzeln;
                continue;
            }
            std::string value;
            rest >> value;
            if (word == "zeitraum") {
                Params.Zeitraum = std::stoi(value);
            } else if (word == "jahrindex") {
                Params.ParamFlags |= ParamJahr;
                Params.JahrIndex = std::stoi(value);
            } else if (word == "archiv") {
                Params.ParamFlags |= ParamArchivJahr;
                Params.ArchivJahr = std::stoi(value);
            } else if (word == "vom") {
                SetText(Params.VonDatum, value);
            } else if (word == "bis") {
                Params.ParamFlags |= ParamDaten;
                if (Params.VonDatum[0] == 0) SetText(Params.VonDatum, value);
                SetText(Params.BisDatum, value);
            } else if (word == "art") {
                Params.KontoArt = std::stoi(value);
            } else if (word == "von") {
                SetLimit(value, Params.SachkontoVon, Params.KreditorVon, Params.DebitorVon,
                         Params.KostenstelleVon);
            } else if (word == "zu") {
                SetLimit(value, Params.SachkontoBis, Params.KreditorBis, Params.DebitorBis,
                         Params.KostenstelleBis);
            } else {
                FAIL() << "unknown word " << word;
            }
        }
        ASSERT_EQ(1, VARK_Status()); // binds the real engine first
        Engine.Install();
        Result = report->second(&Params) != nullptr ? "ansicht" : "keine ansicht";
        Result += " " + std::to_string(uint32_t{Params.ViewResult});
    }
    void Do(const std::string &line)
    {
        std::istringstream rest(line);
        std::string word;
        std::string value;
        rest >> word;
        if (word.empty() || word == "spiel") return;
        if (Tree != nullptr && line[0] == ' ') {
            Nodes.push_back(line.substr(2));
            return;
        }
        if (word == "jahre") {
            rest >> Options.LowerYear >> Options.UpperYear;
        } else if (word == "mandant") {
            std::getline(rest >> std::ws, MandantName);
        } else if (word == "mandantfeld") {
            rest >> word;
            std::getline(rest >> std::ws, value);
            MandantFields.emplace_back(word, value);
        } else if (word == "jahresbeginn") {
            rest >> Options.FirstFiscalMonth;
        } else if (word == "jahr") {
            MakeMandant();
            FinishRecord();
            rest >> Year;
        } else if (word == "sako" || word == "kred" || word == "debi" || word == "kore") {
            rest >> value;
            BeginAccount(tools::FindLayout(word)->Id, value);
        } else if (word == "satz") {
            rest >> value;
            Begin(tools::FindLayout(value));
        } else if (word == "baum") {
            MakeMandant();
            FinishRecord();
            rest >> value;
            Tree = tools::FindLayout(value);
        } else if (word == "name") {
            std::getline(rest >> std::ws, value);
            const bool isPersonal = Open.Layout->Id == TableKred || Open.Layout->Id == TableDebi;
            Open.Set(isPersonal ? "Name1" : "Name", value);
        } else if (word == "vortrag") {
            Sum("Umsaetze.Vortrag", rest);
        } else if (word == "slot0") {
            Sum("Umsaetze.Slot0", rest);
        } else if (word == "gruppe" || word == "blatt") {
            Node(word == "gruppe", rest);
        } else if (word == "monat") {
            int month = 0;
            rest >> month;
            Sum("Umsaetze.Monat[" + std::to_string(month - 1) + "]", rest);
        } else if (word == "feld") {
            rest >> word;
            std::getline(rest >> std::ws, value);
            Open.Set(word, value);
        } else if (word == "buchung") {
            MakeMandant();
            FinishRecord();
            std::string date;
            std::string soll;
            std::string haben;
            std::string amount;
            rest >> date >> soll >> haben >> amount;
            const BubeRecord posting = MakeBube(++Postings, date, soll, haben, AmountOf(amount));
            Open.Layout = &tools::LayoutOf(TableBube);
            Open.Bytes.assign(reinterpret_cast<const char *>(&posting),
                              reinterpret_cast<const char *>(&posting) + sizeof posting);
        } else if (word == "ruf") {
            Call(rest);
        } else {
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
    // What of the script did not fit.
    [[nodiscard]] std::string Refusals() const
    {
        std::string refusals;
        for (const std::string &line : Installation->TakeLog()) {
            if (line.starts_with("script:")) refusals += line + "\n";
        }
        return refusals;
    }
};

struct GoldenReport : testing::TestWithParam<std::string> {};

} // namespace

TEST_P(GoldenReport, SendsItsRecords)
{
    std::ifstream file(GOLDEN_DIRECTORY "/" + GetParam() + ".txt");
    ASSERT_TRUE(file.good());
    std::vector<std::string> given;
    std::string script;
    std::string wanted;
    bool isWanted = false;
    for (std::string line; std::getline(file, line);) {
        const std::string text = WithoutComment(line);
        if (text == "---") {
            isWanted = true;
        } else if (isWanted) {
            if (!text.empty()) wanted += text + "\n";
        } else {
            given.push_back(text);
            if (text.starts_with("spiel ")) script += text.substr(6) + "\n";
        }
    }
    Case books(script);
    for (const std::string &line : given) {
        ASSERT_NO_FATAL_FAILURE(books.Do(line));
    }
    EXPECT_FALSE(wanted.empty());
    EXPECT_EQ(wanted, books.Sent());
    EXPECT_EQ("", books.Refusals());
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
            cases.push_back((path.parent_path().filename() / path.stem()).generic_string());
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
