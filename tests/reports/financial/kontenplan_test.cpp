// Kontenplan: Sachkonten by the trees of GuV and Bilanz, Kreditoren and Debitoren as a list.
#include "include/vark40.h"
#include "report-engine/include/rs.h"
#include "src/frame/lifecycle.h"
#include "src/frame/report_engine.h"
#include "src/platform/platform.h"
#include "src/reports/frame/report_params.h"
#include "tests/support/books.h"
#include "tests/support/engine_faults.h"
#include "tests/support/recording_engine.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>

using namespace vark;
using namespace vark::test;

namespace {

constexpr uint16_t leaf = 0;

struct Kontenplan : testing::Test {
    Books books;
    RecordingEngine sent;
    ReportParams params{};

    void SetUp() override
    {
        books.AddMandant(1);
        books.ChangeMandant(1, [](FistaRecord &mandant) { SetText(mandant.Name, "Musterbetrieb"); });
        ASSERT_EQ(1, VARK_Status());
        sent.Install();
        params.ParamFlags = ParamKontoArt | ParamKonten;
        params.KontoArt = 1;
        for (const TableId table : {TableGuvauf, TableBilaktau, TableBilpasau}) {
            Node(table, 1, StructureGruppe, 0, 0, "Wurzel");
        }
    }
    void TearDown() override { VARK_SchliesseDB(); }

    // In the place of the one that writes down, with the templates where the books have theirs.
    static void UseRealEngine()
    {
        BindReportEngine();
        ASSERT_EQ(1, reportEngine.ReportEngineBound);
        std::filesystem::copy(TEMPLATES, ReportPath);
    }
    std::string Exported(VarkWindow view, const std::string &name)
    {
        const auto exportView = reinterpret_cast<decltype(&RSExportView)>(
            FindEntry(reportEngine.ReportEngineLibrary, "RSExportView"));
        const std::string path = books.Directory() + '/' + name;
        EXPECT_EQ(1, exportView(view, path.c_str()));
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    void Node(TableId table, int32_t id, uint16_t art, int32_t next, int32_t child, const std::string &text)
    {
        StructureRecord node{};
        node.Id = id;
        node.Art = art;
        node.Next = next;
        node.Child = child;
        SetText(node.Text, (art & StructureGruppe) != 0 ? text : Justified(text));
        books.Insert(1, table, node);
    }
    // Replaces the root so that it has children.
    void Root(TableId table, int32_t child)
    {
        books.EmptyTable(1, table);
        Node(table, 1, StructureGruppe, 0, child, "Wurzel");
    }
    void Sako(const std::string &konto, int16_t zuordnung, uint8_t flags = 0)
    {
        books.Insert(1, TableSako, MakeSako(konto, zuordnung, flags));
    }
    bool Runs() { return VARK_Kontenplan(1, nullptr, &params) != nullptr; }
    // "1000 GuV/Erlöse" for each line.
    Lines Places() const
    {
        Lines places;
        for (const std::string &record : sent.Records(1)) {
            places.push_back(Value(record, "Konto") + " " + Value(record, "Liste") + "/" +
                             Value(record, "Gruppe"));
        }
        return places;
    }
    static std::string Value(const std::string &record, const std::string &field)
    {
        const size_t at = (" | " + record).find(" | " + field + "=");
        if (at == std::string::npos) return "no " + field;
        const size_t from = at + field.size() + 1;
        return record.substr(from, record.find(" | ", from) - from);
    }
};

} // namespace

TEST_F(Kontenplan, AccountsFollowTheTreesAndTellWhereTheyBelong)
{
    Root(TableGuvauf, 2);
    Node(TableGuvauf, 2, StructureGruppe, 3, 4, "Erlöse");
    Node(TableGuvauf, 3, StructureGruppe, 0, 6, "Aufwand");
    Node(TableGuvauf, 4, leaf, 5, 0, "5010");
    Node(TableGuvauf, 5, StructureGruppe, 0, 7, "davon Inland");
    Node(TableGuvauf, 6, leaf, 0, 0, "8010");
    Node(TableGuvauf, 7, leaf, 0, 0, "5020");
    Node(TableGuvauf, 0, leaf, 0, 0, "8020"); // placed in the GuV, in no group
    Root(TableBilaktau, 2);
    Node(TableBilaktau, 2, leaf, 0, 0, "1000"); // right below the root
    Sako("8020", ZuordnungGuv);
    Sako("8010", ZuordnungGuv);
    Sako("5020", ZuordnungGuv);
    Sako("5010", ZuordnungGuv);
    Sako("1000", ZuordnungAktiva);
    Sako("9999", ZuordnungKeine);
    EXPECT_TRUE(Runs());
    EXPECT_EQ("open or_spla.rs tervoSAKTOPLAN0.0 0", sent.Calls.front());
    EXPECT_EQ(Lines{"Mandant=Musterbetrieb | Kontoart=Sachkonten | Bereich="}, sent.Records(0));
    EXPECT_EQ((Lines{"5010 GuV/Erlöse", "5020 GuV/davon Inland", "8010 GuV/Aufwand",
                     "8020 GuV/ohne Zuordnung", "1000 Bilanz Aktiv/Wurzel", "9999 ohne Zuordnung/"}),
              Places());
    EXPECT_EQ(1u, uint32_t{params.ViewResult});
}

TEST_F(Kontenplan, SecondHomesAndAccountsThatAreMissingAreLeftOut)
{
    Root(TableBilpasau, 2);
    Node(TableBilpasau, 2, StructureGegenposten, 3, 0, "1000");
    Node(TableBilpasau, 3, leaf, 4, 0, "1111"); // in no table
    Node(TableBilpasau, 4, leaf, 0, 0, "2000");
    Sako("1000", ZuordnungAktiva);
    Sako("2000", ZuordnungPassiva);
    EXPECT_TRUE(Runs());
    EXPECT_EQ(Lines{"2000 Bilanz Passiv/Wurzel"}, Places());
}

TEST_F(Kontenplan, AccountThatIsMissingFromTheListWithoutAGroupFailsTheReport)
{
    Node(TableBilaktau, 0, leaf, 0, 0, "1111");
    EXPECT_FALSE(Runs());
    EXPECT_EQ("close 7", sent.Calls.back());
    EXPECT_EQ(Lines{"Der Kontenplan konnte nicht erstellt werden!"}, books.TakeBoxes());
    EXPECT_EQ(0u, uint32_t{params.ViewResult});
}

TEST_F(Kontenplan, AccountInATreeAndWithoutAGroupIsSentTwice)
{
    Root(TableGuvauf, 2);
    Node(TableGuvauf, 2, leaf, 0, 0, "5010");
    Node(TableGuvauf, 0, leaf, 0, 0, "5010");
    Sako("5010", ZuordnungGuv);
    EXPECT_TRUE(Runs());
    EXPECT_EQ((Lines{"5010 GuV/Wurzel", "5010 GuV/ohne Zuordnung"}), Places());
}

TEST_F(Kontenplan, RangeBoundsTheTreesAndOnlyItsEndTheListWithoutAGroup)
{
    Root(TableGuvauf, 2);
    Node(TableGuvauf, 2, leaf, 3, 0, "1000");
    Node(TableGuvauf, 3, leaf, 4, 0, "2000");
    Node(TableGuvauf, 4, leaf, 0, 0, "3000");
    Node(TableGuvauf, 0, leaf, 0, 0, "1100"); // before the range and sent all the same
    Node(TableGuvauf, 0, leaf, 0, 0, "3100"); // behind it: the list ends
    Node(TableGuvauf, 0, leaf, 0, 0, "1200");
    for (const char *const konto : {"1000", "2000", "3000", "1100", "3100", "1200"}) {
        Sako(konto, ZuordnungGuv);
    }
    Sako("1500", ZuordnungKeine);
    Sako("2500", ZuordnungKeine);
    Sako("3500", ZuordnungKeine);
    std::memcpy(params.SachkontoVon, "1500", 5);
    std::memcpy(params.SachkontoBis, "2500", 5);
    EXPECT_TRUE(Runs());
    EXPECT_EQ(
        (Lines{"2000 GuV/Wurzel", "1100 GuV/ohne Zuordnung", "1500 ohne Zuordnung/", "2500 ohne Zuordnung/"}),
        Places());
    EXPECT_EQ(Lines{"Mandant=Musterbetrieb | Kontoart=Sachkonten | Bereich=von 1500 bis 2500"},
              sent.Records(0));
}

TEST_F(Kontenplan, DamagedTreeIsAFailedReport)
{
    // No root; a child that is missing; nodes that go round, sideways and downwards.
    const auto fails = [this] {
        sent.Calls.clear();
        EXPECT_FALSE(Runs());
        EXPECT_EQ("close 7", sent.Calls.back());
        EXPECT_EQ(Lines{"Der Kontenplan konnte nicht erstellt werden!"}, books.TakeBoxes());
        VARK_SchliesseDB();
    };
    books.EmptyTable(1, TableGuvauf);
    fails();
    Node(TableGuvauf, 1, StructureGruppe, 0, 2, "Wurzel");
    fails();
    Node(TableGuvauf, 2, StructureGruppe, 0, 1, "unten");
    fails();
}

TEST_F(Kontenplan, TaxIsSaidInWordsWithItsRate)
{
    books.Insert(1, TableSteke, MakeSteke(2, 0, "010418", "16,00", "2400", "1600"));
    books.Insert(1, TableSteke, MakeSteke(2, 1, "010113", "15,00", "2411", "1611"));
    books.Insert(1, TableSteke, MakeSteke(4, 0, "010103", "07,00", "2420", "1620"));
    const struct {
        const char *Konto;
        uint8_t Flags;
        const char *Wanted;
    } rows[] = {
        {"1", 0, "keine 00,00"},
        {"2", 0x20, "keine 00,00"},
        {"3", 2, "Regelsteuersatz 16,00"},
        {"4", 0x22, "Regelsteuersatz 16,00"},
        {"5", 4, "ermäßigter Satz 07,00"},
        {"6", 8, "Nullsteuersatz 05,50"},
        {"7", 16, "sonstiger Satz 05,50"},
        {"8", 128, "EG-Steuersatz 05,50"},
        {"9", 6, " 05,50"},
    };
    for (const auto &row : rows) {
        SakoRecord record = MakeSako(row.Konto, ZuordnungKeine, row.Flags);
        SetText(record.Steuersatz, "05,50");
        books.Insert(1, TableSako, record);
    }
    EXPECT_TRUE(Runs());
    const Lines records = sent.Records(1);
    ASSERT_EQ(std::size(rows), records.size());
    for (size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(rows[i].Wanted, Value(records[i], "Steuertext") + " " + Value(records[i], "Steuersatz"));
    }
}

TEST_F(Kontenplan, RatesAreThoseOfADayFarAheadAndShareTheirNumber)
{
    // Today is 15 June 1998; the walk takes a rate that begins in 2010. Its number has no reduced rate.
    books.Insert(1, TableSteke, MakeSteke(2, 0, "010130", "19,00", "2400", "1600"));
    books.Insert(1, TableSteke, MakeSteke(2, 1, "010113", "15,00", "2411", "1611"));
    books.Insert(1, TableSteke, MakeSteke(4, 1, "010103", "07,00", "2420", "1620"));
    Sako("1", ZuordnungKeine, 2);
    Sako("2", ZuordnungKeine, 4);
    EXPECT_TRUE(Runs());
    EXPECT_EQ("19,00", Value(sent.Records(1).at(0), "Steuersatz"));
    EXPECT_EQ("00,00", Value(sent.Records(1).at(1), "Steuersatz"));
}

TEST_F(Kontenplan, FieldsOfASachkontoComeFromItsRecord)
{
    SakoRecord record = MakeSako("1000");
    SetText(record.Name, "Kasse");
    SetText(record.Datum, "020318");
    record.Zustand = 1;
    record.FesterSatz = -1;
    record.Kontenplanflag = 9;
    record.Kennzahl = 81;
    record.MitKosten = 2;
    books.Insert(1, TableSako, record);
    EXPECT_TRUE(Runs());
    EXPECT_EQ(
        Lines{
            "Konto=1000 | Kuerzel=K1000 | Zustand=1 | Datum=020318 | Name=Kasse | Liste=ohne Zuordnung | "
            "Gruppe= | Steuertext=keine | Steuersatz=00,00 | FesterSatz=1 | Kontenplanflag=1 | Kennzahl=81 | "
            "Kosten=1"},
        sent.Records(1));
}

TEST_F(Kontenplan, PersonalAccountsPrintTheirMasterData)
{
    PersonalRecord record = MakePersonal("70000");
    record.Zustand = 1;
    SetText(record.Datum, "311217");
    SetText(record.Name1, "Ahorn GmbH");
    SetText(record.Name2, "Großhandel");
    SetText(record.Adresse1, "Weg 1");
    SetText(record.Plz, "20457");
    SetText(record.Land, "D");
    SetText(record.Adresse2, "Hamburg");
    SetText(record.Gegenkonto, Justified("6010"));
    SetText(record.Blz, "20050000");
    SetText(record.BankkontoAlt, "1");
    SetText(record.Bankkonto, "1234567890");
    SetText(record.Bank, "Hafenbank");
    record.Wert1 = 10;
    record.Wert2 = 30;
    SetText(record.Skonto, "03,00");
    record.Mahnkennziffer = 2;
    SetText(record.UstId, "DE123456789");
    SetText(record.Waehrung, "");
    record.Kennzeichen = 1;
    SetText(record.Kontenplantext, "Lieferant");
    books.Insert(1, TableKred, record);
    record = MakePersonal("70010");
    SetText(record.Waehrung, "USD");
    record.Zustand = 0;
    record.Kennzeichen = 2;
    books.Insert(1, TableKred, record);
    params.KontoArt = 2;
    std::memcpy(params.KreditorVon, "70000", 6);
    EXPECT_TRUE(Runs());
    EXPECT_EQ("open or_kpla.rs tervoKTOPLAN0.0 0", sent.Calls.front());
    EXPECT_EQ(Lines{"Mandant=Musterbetrieb | Kontoart=Kreditoren | Bereich=von 70000"}, sent.Records(0));
    const Lines records = sent.Records(1);
    ASSERT_EQ(2u, records.size());
    EXPECT_EQ(
        "Konto=70000 | Kuerzel=K70000 | Zustand=1 | Datum=311217 | Name1=Ahorn GmbH | Name2=Großhandel | "
        "Adresse1=Weg 1 | Plz=20457 | Land=D | Adresse2=Hamburg | Gegenkonto=6010 | Blz=20050000 | "
        "Bankkonto=1234567890 | Bank=Hafenbank | Wert1=10 | Wert2=30 | Skonto=03,00 | Mahnkennziffer=2 | "
        "Freitext=DE123456789 | Waehrung=DEM | Kennzeichen=1 | Text=Lieferant",
        records[0]);
    EXPECT_EQ("0", Value(records[1], "Zustand"));
    EXPECT_EQ("USD", Value(records[1], "Waehrung"));
    EXPECT_EQ("0", Value(records[1], "Kennzeichen"));
}

TEST_F(Kontenplan, PersonalAccountsEndWithTheRange)
{
    for (const char *const konto : {"10000", "10010", "10020"}) {
        books.Insert(1, TableDebi, MakePersonal(konto));
    }
    params.KontoArt = 4;
    std::memcpy(params.DebitorVon, "10001", 6);
    std::memcpy(params.DebitorBis, "10019", 6);
    EXPECT_TRUE(Runs());
    ASSERT_EQ(1u, sent.Records(1).size());
    EXPECT_EQ("10010", Value(sent.Records(1)[0], "Konto"));
}

TEST_F(Kontenplan, KostenstellenCannotBeAskedFor)
{
    params.KontoArt = 8;
    Sako("1000", ZuordnungKeine);
    EXPECT_TRUE(Runs());
    EXPECT_EQ(1, int32_t{params.KontoArt}) << "the dialog has no button for them";
    EXPECT_EQ("open or_spla.rs tervoSAKTOPLAN0.0 0", sent.Calls.front());
}

TEST_F(Kontenplan, WhicheverReadFailsTheReportIsWholeOrNotThere)
{
    Root(TableGuvauf, 2);
    Node(TableGuvauf, 2, leaf, 0, 0, "5010");
    Node(TableGuvauf, 0, leaf, 0, 0, "8020");
    Sako("5010", ZuordnungGuv);
    Sako("8020", ZuordnungGuv);
    Sako("9000", ZuordnungKeine);
    ASSERT_TRUE(Runs());
    VARK_SchliesseDB();
    const Lines whole = sent.Records(1);
    ASSERT_EQ(3u, whole.size());
    bool wasTried = true;
    for (int n = 1; wasTried; ++n) {
        ASSERT_LT(n, 300);
        sent.Calls.clear();
        books.TakeBoxes();
        FailEngineCall(n, 2);
        const bool isShown = Runs();
        wasTried = StopEngineFaults() >= n;
        const Lines boxes = books.TakeBoxes();
        if (isShown) {
            EXPECT_EQ(whole, sent.Records(1)) << n;
        } else if (!sent.Calls.empty()) {
            EXPECT_EQ("close 7", sent.Calls.back()) << n;
            EXPECT_EQ("Der Kontenplan konnte nicht erstellt werden!", boxes.at(boxes.size() - 1)) << n;
        }
        VARK_SchliesseDB();
    }
}

namespace {

// The field of that heading in each row of a CSV file.
Lines FieldsBelow(const std::string &heading, const std::string &csv)
{
    std::istringstream rows(csv);
    Lines found;
    size_t column = std::string::npos;
    for (std::string row; std::getline(rows, row);) {
        std::istringstream fields(row);
        Lines values;
        for (std::string field; std::getline(fields, field, ';');) {
            values.push_back(field);
        }
        if (column == std::string::npos) {
            column = static_cast<size_t>(std::find(values.begin(), values.end(), heading) - values.begin());
        } else {
            found.push_back(column < values.size() ? values[column] : "no " + heading);
        }
    }
    return found;
}

} // namespace

// The mark says that an account may be deleted; it keeps nobody from posting to it.
TEST_F(Kontenplan, TheMarkOfAnAccountIsCalledWhatItMeans)
{
    for (const char *konto : {"1000", "1200"}) {
        SakoRecord sako = MakeSako(konto, ZuordnungKeine);
        sako.Zustand = konto[1] == '0' ? 1 : 0;
        books.Insert(1, TableSako, sako);
        PersonalRecord debitor = MakePersonal(konto[1] == '0' ? "10000" : "10010");
        debitor.Zustand = sako.Zustand;
        books.Insert(1, TableDebi, debitor);
    }
    UseRealEngine();
    for (const int32_t kind : {1, 4}) {
        params.KontoArt = kind;
        VarkWindow view = VARK_Kontenplan(1, nullptr, &params);
        ASSERT_NE(nullptr, view);
        const std::string csv = Exported(view, "k.csv");
        EXPECT_EQ((Lines{"ja", "nein"}), FieldsBelow("Löschbar", csv)) << csv;
        for (const std::string &text : {csv, Exported(view, "k.txt"), Exported(view, "k.html")}) {
            EXPECT_EQ(std::string::npos, text.find("esperrt")) << text;
        }
        EXPECT_NE(std::string::npos, Exported(view, "k.txt").find(kind == 1 ? "lösch-" : "Löschbar"));
    }
}

TEST_F(Kontenplan, RealEngineMakesBothLists)
{
    Sako("1000", ZuordnungKeine);
    books.Insert(1, TableDebi, MakePersonal("10000"));
    UseRealEngine();
    for (const int32_t kind : {1, 4}) {
        params.KontoArt = kind;
        VarkWindow view = VARK_Kontenplan(1, nullptr, &params);
        ASSERT_NE(nullptr, view);
        const std::string csv = Exported(view, "kontenplan.csv");
        EXPECT_NE(std::string::npos, csv.find(kind == 1 ? "\n1000;K1000;" : "\n10000;")) << csv;
    }
}
