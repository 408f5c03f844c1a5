// What templates can declare beyond rows and sums: orders, rows of data, columns that depend on the header,
// headings that are repeated, groups that close others.
#include <cstdlib>
#include <gtest/gtest.h>
#include <sstream>

#include "report_support.h"

using namespace reports;

namespace {

constexpr const char *sheetId = "tervoKTOBLATT0.0";

struct Declarations : testing::Test {
    Directory directory;
    int32_t report = 0;

    void SetUp() override { setenv("VARK_HEUTE", "31.03.1998", 1); }
    void TearDown() override { RSCloseReport(report); }

    void Open(const std::string &body, const std::string &id = sheetId)
    {
        const std::string path =
            directory.Write("or_test.rs", "report { id = '" + id + "', title = 'Test' }\n" + body);
        report = RSOpenReport(path.c_str(), id.c_str(), 0);
        ASSERT_GT(report, 0);
    }
    std::string OpenError(const std::string &body)
    {
        const std::string path = directory.Write("or_test.rs", std::string("report { id = '") + sheetId +
                                                                   "', title = 'Test' }\n" + body);
        const std::string said = Errors([&] { EXPECT_EQ(RSOpenReport(path.c_str(), sheetId, 0), 0); });
        const std::string prefix = "librs: " + path + ":";
        EXPECT_TRUE(said.starts_with(prefix)) << said;
        return said.substr(std::min(prefix.size(), said.size()), said.find('\n') - prefix.size());
    }

    int32_t AddHeader(const std::string &mandant = "Muster GmbH") const
    {
        return Record().Text(mandant, 41).AddTo(report, 0, 41);
    }
    int32_t AddAccount(const std::string &konto, int64_t soll = 0) const
    {
        return Record()
            .Text(konto, 8)
            .Text("Konto " + konto, 41)
            .Text("Sachkonto", 20)
            .Text("März 1998", 50)
            .Amount(soll)
            .Amount(0)
            .I32(0)
            .AddTo(report, 1, 149);
    }
    int32_t AddLine(int32_t number, const std::string &date, int64_t soll, const std::string &rate = "") const
    {
        return Record()
            .I32(number)
            .U32(1)
            .U32(0)
            .Text("1200", 8)
            .Text("B" + std::to_string(number), 11)
            .Date(date)
            .Text("Text", 40)
            .Amount(soll)
            .Amount(0)
            .Rate(rate)
            .AddTo(report, 2, 110);
    }
    std::string Export(const std::string &name)
    {
        EXPECT_EQ(RSExportView(OpenView(report), directory.At(name).c_str()), 1) << name;
        return ReadFile(directory.At(name));
    }
};

constexpr const char *sheet = R"(
columns {
    { "datum", "Datum", 20 }, { "nummer", "Nr.", 20, form = "number" },
    { "soll", "Soll", 25, form = "amount", sum = true }, { "saldo", "Saldo", 25, form = "amount" },
    { "satz", "%", 12, form = "rate", zero = "blank" },
}
local saldo = 0
record(1, {
    text("konto", 0, 8), amount("soll", 119), level = 1, rows = { "head" },
    emit = function(r)
        saldo = r.soll
        row("head", "Konto " .. r.konto)
    end,
    close = { rows = { "sum" }, emit = function(sum) row("sum", { soll = sum.soll, saldo = saldo }) end },
})
record(2, {
    i32("nummer", 0), date("datum", 31), amount("soll", 78), rate("satz", 104),
    order = { "datum", "nummer" }, rows = { "line" },
    emit = function(r)
        saldo = saldo + r.soll
        r.saldo = saldo
        row("line", r)
    end,
})
)";

} // namespace

TEST_F(Declarations, PutRecordsOfAGroupIntoAnOrder)
{
    Open(sheet);
    AddHeader();
    AddAccount("1000", 10000);
    AddLine(7, "150318", 300);
    AddLine(9, "200318", 400);
    AddLine(3, "010318", 100); // another pass
    AddLine(5, "150318", 200);
    AddLine(8, "311217", 50);
    AddAccount("1100");
    AddLine(2, "020318", 2);
    AddLine(1, "010318", 1);
    EXPECT_EQ(Export("a.csv"), "\xEF\xBB\xBF"
                               "Art;Datum;Nr.;Soll;Saldo;%\r\n"
                               "Gruppe;Konto 1000;;;;\r\n"
                               "Zeile;31.12.1997;8;0,50;100,50;\r\n"
                               "Zeile;01.03.1998;3;1,00;101,50;\r\n"
                               "Zeile;15.03.1998;5;2,00;103,50;\r\n"
                               "Zeile;15.03.1998;7;3,00;106,50;\r\n"
                               "Zeile;20.03.1998;9;4,00;110,50;\r\n"
                               "Summe;;;10,50;110,50;\r\n"
                               "Gruppe;Konto 1100;;;;\r\n"
                               "Zeile;01.03.1998;1;0,01;0,01;\r\n"
                               "Zeile;02.03.1998;2;0,02;0,03;\r\n"
                               "Summe;;;0,03;0,03;\r\n");
}

TEST_F(Declarations, AnOrderMayFallAndHoldsForTheWholeReport)
{
    Open("columns { { 'nummer', 'Nr.', 20, form = 'number' } }\n"
         "record(2, { i32('nummer', 0), amount('soll', 78), order = { '-soll' }, rows = { 'line' },\n"
         "  emit = function(r) row('line', r) end })\n");
    AddLine(1, "010318", 5);
    AddLine(2, "010318", -7);
    AddLine(3, "010318", 900);
    AddLine(4, "010318", 5);
    EXPECT_EQ(Export("a.csv"), "\xEF\xBB\xBF"
                               "Art;Nr.\r\nZeile;3\r\nZeile;1\r\nZeile;4\r\nZeile;2\r\n");
}

TEST_F(Declarations, AnOrderFailsWithItsTemplate)
{
    Open(
        "record(2, { i32('nummer', 0), order = { 'nummer' }, emit = function(r) error('so nicht', 0) end })\n"
        "record(1, {})\n");
    EXPECT_EQ(AddLine(1, "010318", 5), 1) << "it waits";
    const std::string said = Errors([&] { EXPECT_EQ(AddAccount("1000"), 0); });
    EXPECT_NE(said.find(":2: so nicht"), std::string::npos) << said;
    Errors([&] { EXPECT_EQ(OpenView(report), nullptr); });
}

TEST_F(Declarations, CountPagesOfAnOrderedKindAsOfAnyOther)
{
    Open(sheet);
    const int32_t counting = RSOpenVirtualReport(report);
    EXPECT_EQ(RSAddVirtualData(counting, 1, 1), 1);
    EXPECT_EQ(RSAddVirtualData(counting, 2, 150), 1);
    const int32_t counted = RSGetVirtualPages(counting);
    RSCloseVirtualReport(counting);
    AddAccount("1000");
    for (int i = 0; i < 150; ++i) {
        AddLine(i, i % 2 == 0 ? "020318" : "010318", 1);
    }
    Export("a.pdf");
    EXPECT_EQ(PageCountOf(directory.At("a.pdf")), counted);
    EXPECT_GT(counted, 1);
}

TEST_F(Declarations, RefuseOrdersThatCannotBe)
{
    EXPECT_EQ(OpenError("record(2, { order = { 'x' } })"),
              "2: 'order' names 'x', which is no field of the record");
    EXPECT_EQ(OpenError("record(2, { i32('x', 0), order = {} })"), "2: 'order' may hold 1 to 6 fields");
    EXPECT_EQ(OpenError("record(2, { i32('x', 0), order = 'x' })"), "2: 'order' must be a list of fields");
    EXPECT_EQ(OpenError("record(1, { i32('x', 0), level = 1, order = { 'x' } })"),
              "2: 'order' is for records that neither open nor close a level");
    EXPECT_EQ(OpenError("record(2, { i32('x', 0), closes = 1, order = { 'x' } })"),
              "2: 'order' is for records that neither open nor close a level");
}

TEST_F(Declarations, LeaveOutRatesOfZeroEverywhere)
{
    Open(sheet);
    AddAccount("1000");
    AddLine(1, "010318", 100, "00,00");
    AddLine(2, "010318", 0, "16,00");
    EXPECT_EQ(LinesOf(Export("a.csv"))[2], "Zeile;01.03.1998;1;1,00;1,00;\r");
    EXPECT_EQ(LinesOf(ReadFile(directory.At("a.csv")))[3], "Zeile;01.03.1998;2;0,00;1,00;16,00\r");
    const std::string json = Export("a.json");
    EXPECT_NE(json.find("\"nummer\":1,\"soll\":1.00,\"saldo\":1.00}"), std::string::npos) << json;
    EXPECT_NE(json.find("\"satz\":16.00}"), std::string::npos) << json;
    const std::string text = Export("a.txt");
    EXPECT_EQ(LinesOf(text)[4], "01.03.1998    1  1,00   1,00") << text;
    EXPECT_EQ(Export("a.html").find("0,00</td></tr>"), std::string::npos);
    Export("a.pdf");
    EXPECT_EQ(PagesOf(directory.At("a.pdf"))[0].find(" 0,00\n"), std::string::npos);
}

TEST_F(Declarations, GiveRowsOfDataToFilesInPlaceOfWhatIsPrinted)
{
    Open(R"(
columns { { "konto", "Konto\nName", 20 } }
fields {
    { "konto", "Konto" }, { "name", "Name" }, { "soll", "Soll", form = "amount" },
    { "seiten", "Seiten", form = "number" }, { "satz", "Satz", form = "rate" },
    { "bebucht", "Bebucht", form = "flag" }, { "60", "Kennzahl 60" },
}
record(0, { text("mandant", 0, 41), emit = function(r)
    about { { "mandant", r.mandant }, { "zeitraum", "März \"98\"" } }
end })
record(1, {
    text("konto", 0, 8), text("name", 8, 41), amount("soll", 119), i32("seiten", 145),
    rows = { { "text", 2 } },
    emit = function(r)
        row("text", { konto = r.konto })
        row("text", { konto = r.name })
        r.bebucht = r.soll ~= 0
        if r.bebucht then r.satz = 1600 end
        data(r)
    end,
})
)");
    AddHeader("Müller; Sohn");
    AddAccount("1000", 150);
    AddAccount("1100", 0);
    EXPECT_EQ(Export("a.csv"), "\xEF\xBB\xBF"
                               "Konto;Name;Soll;Seiten;Satz;Bebucht;Kennzahl 60\r\n"
                               "1000;Konto 1000;1,50;0;16,00;ja;\r\n"
                               "1100;Konto 1100;0,00;0;;nein;\r\n");
    EXPECT_EQ(
        Export("a.json"),
        "{\"report\":\"tervoKTOBLATT0.0\",\"title\":\"Test\",\"columns\":[\n"
        "{\"name\":\"konto\",\"title\":\"Konto\",\"form\":\"text\"},\n"
        "{\"name\":\"name\",\"title\":\"Name\",\"form\":\"text\"},\n"
        "{\"name\":\"soll\",\"title\":\"Soll\",\"form\":\"amount\"},\n"
        "{\"name\":\"seiten\",\"title\":\"Seiten\",\"form\":\"number\"},\n"
        "{\"name\":\"satz\",\"title\":\"Satz\",\"form\":\"rate\"},\n"
        "{\"name\":\"bebucht\",\"title\":\"Bebucht\",\"form\":\"flag\"},\n"
        "{\"name\":\"60\",\"title\":\"Kennzahl 60\",\"form\":\"text\"}],\"rows\":[\n"
        "{\"mandant\":\"Müller; Sohn\",\"zeitraum\":\"März \\\"98\\\"\",\"konto\":\"1000\","
        "\"name\":\"Konto 1000\",\"soll\":1.50,\"seiten\":0,\"satz\":16.00,\"bebucht\":true,\"60\":null},\n"
        "{\"mandant\":\"Müller; Sohn\",\"zeitraum\":\"März \\\"98\\\"\",\"konto\":\"1100\","
        "\"name\":\"Konto 1100\",\"soll\":0.00,\"seiten\":0,\"satz\":null,\"bebucht\":false,\"60\":null}\n"
        "]}\n");
    EXPECT_EQ(Export("a.txt"), "\nKonto\nName\n-----\n1000\nKonto 1000\n1100\nKonto 1100\n")
        << "what is printed stays in what is read";
}

namespace {

// A posting with what its lines have in common, and lines of all forms; `emit` ends the record of a line.
std::string JournalWith(const std::string &emit)
{
    return R"(
columns {
    { "nummer", "Nr.", 14, form = "number" }, { "datum", "Datum", 16 }, { "konto", "Konto", 14 },
    { "satz", "%", 10, form = "rate" }, { "text", "Text", 30 }, { "benutzer", "Benutzer", 20 },
    { "soll", "Soll", 25, form = "amount", sum = true, zero = "blank" },
    { "haben", "Haben", 0, form = "amount", sum = true },
}
fields {
    { "art", "Art" }, { "datum", "Datum" }, { "konto", "Konto" }, { "satz", "Satz", form = "rate" },
    { "text", "Text" }, { "soll", "Soll", form = "amount" }, { "nummer", "Nr.", form = "number" },
    { "netto", "Netto", form = "amount" },
}
record(1, {
    date("datum", 0), words("art", 31, { [0] = "Buchung", "Split", [3] = "Ümbuchung" }),
    text("benutzer", 35, 32), level = 1,
})
record(2, {
    i32("nummer", 0), text("konto", 4, 8), rate("satz", 28), text("text", 34, 40), amount("soll", 74),
    amount("haben", 87), rows = { "line" }, )" +
           emit + R"(
})
finish { rows = { "total" }, emit = function(sum)
    row("total", { text = sum.count .. " / " .. money(sum.haben), soll = sum.soll })
end }
)";
}

constexpr const char *journalId = "tervoBJOURNAL0.0";

} // namespace

TEST_F(Declarations, RecordsPrintThemselvesWithWhatTheirGroupLends)
{
    Open(JournalWith(""), journalId);
    const auto head = [&](const std::string &date, int32_t split, const std::string &user) {
        EXPECT_EQ(Record().Date(date).Date("").Text("", 9).Text("", 8).I32(split).Text(user, 32).AddTo(report,
                                                                                                       1, 67),
                  1);
    };
    const auto line = [&](int32_t number, const std::string &rate, const std::string &text, int64_t soll) {
        EXPECT_EQ(Record()
                      .I32(number)
                      .Text("1200", 8)
                      .Text("8400", 8)
                      .Text("", 8)
                      .Rate(rate)
                      .Text(text, 40)
                      .Amount(soll)
                      .Amount(-soll)
                      .AddTo(report, 2, 152),
                  1);
    };
    line(1, "16,00", "ohne Kopf", 5);
    head("010318", 0, "Jörg");
    line(2, "", "Büro; \"neu\"", 10000);
    head("", 1, "");
    line(-3, "07,00", "", 0);
    line(4, "00,00", "Zeile\t2", -250);
    head("311217", 2, "Änne");
    line(5, "", "x", 1);
    head("311217", 3, "");
    line(6, "", "x", 1);
    EXPECT_EQ(Export("a.csv"), "\xEF\xBB\xBF"
                               "Art;Datum;Konto;Satz;Text;Soll;Nr.;Netto\r\n"
                               ";;1200;16,00;ohne Kopf;0,05;1;\r\n"
                               "Buchung;01.03.1998;1200;;\"Büro; \"\"neu\"\"\";100,00;2;\r\n"
                               "Split;;1200;7,00;;0,00;-3;\r\n"
                               "Split;;1200;0,00;Zeile\t2;-2,50;4;\r\n"
                               ";31.12.1997;1200;;x;0,01;5;\r\n"
                               "Ümbuchung;31.12.1997;1200;;x;0,01;6;\r\n")
        << "a number without a word, and a line before every head, have none";
    EXPECT_NE(Export("a.json").find("{\"art\":null,\"datum\":\"31.12.1997\",\"konto\":\"1200\",\"satz\":null,"
                                    "\"text\":\"x\",\"soll\":0.01,\"nummer\":5,\"netto\":null}"),
              std::string::npos);
    EXPECT_EQ(Export("a.txt"), "\nNr.  Datum       Konto      %  Text         Benutzer    Soll\n"
                               "------------------------------------------------------------\n"
                               "  1              1200   16,00  ohne Kopf                0,05\n"
                               "  2  01.03.1998  1200          Büro; \"neu\"  Jörg      100,00\n"
                               " -3              1200    7,00\n"
                               "  4              1200    0,00  Zeile 2                 -2,50\n"
                               "  5  31.12.1997  1200          x            Änne        0,01\n"
                               "  6  31.12.1997  1200          x                        0,01\n"
                               "                               6 / -97,57              97,57\n")
        << "a page shows what the lines of a group have in common on the first of them";
}

TEST_F(Declarations, ARecordThatPrintsItselfIsTheSameInEveryFileAsWithAFunction)
{
    const auto fill = [&](const std::string &emit) {
        RSCloseReport(report);
        Open(JournalWith(emit), journalId);
        uint32_t seed = 17;
        const auto random = [&](uint32_t below) {
            return (seed = seed * 1664525u + 1013904223u) / 65536 % below;
        };
        for (int posting = 0; posting < 60; ++posting) {
            Record()
                .Date(random(3) == 0 ? "" : "0103" + std::to_string(10 + random(20)))
                .AddTo(report, 1, 67);
            for (uint32_t count = random(4); count > 0; --count) {
                Record line;
                line.I32(static_cast<int32_t>(random(99999)) - 50000).Text(std::to_string(random(9999)), 8);
                line.Text("", 8).Text("", 8).Rate(random(2) == 0 ? "" : "16,00");
                std::string text(random(41), ' ');
                for (char &letter : text) {
                    letter = static_cast<char>(random(256)); // a NUL ends it, a control is a blank
                }
                line.Bytes += text + std::string(40 - text.size(), 0);
                line.Amount(static_cast<int64_t>(random(60000)) * 1000000 - 30000).Amount(random(60000));
                EXPECT_EQ(line.AddTo(report, 2, 152), 1);
            }
        }
        std::string files;
        for (const char *name : {"a.csv", "a.json", "a.txt", "a.html"}) {
            files += Export(name);
        }
        Export("a.pdf");
        for (const std::string &page : PagesOf(directory.At("a.pdf"))) {
            files += page;
        }
        return files;
    };
    const std::string own = fill("");
    const std::string function = fill(R"(emit = function(r, posting)
        r.datum, r.art, r.benutzer = posting.datum, posting.art, posting.benutzer
        data(r)
        if posting.seen then r.datum, r.benutzer = nil, nil end
        posting.seen = true
        row("line", r)
    end)");
    EXPECT_GT(own.size(), 10000u);
    EXPECT_TRUE(own == function);
}

TEST_F(Declarations, ALineTakesWhatTheInnermostGroupLends)
{
    Open(R"(
columns { { "titel", "Titel", 40 }, { "konto", "Konto", 20 }, { "name", "Name", 40 } }
record(1, { text("titel", 4, 28), level = 1, rows = { "head" } })
record(2, { text("titel", 4, 28), level = 2 })
record(4, { text("konto", 0, 8), text("name", 17, 41), rows = { "line", "text" } })
record(5, { text("konto", 0, 8), closes = 2, rows = { "line" } })
)",
         "tervoGUV0.0");
    const auto group = [&](int32_t kind, const char *title) {
        EXPECT_EQ(Record().U32(0).Text(title, 28).AddTo(report, kind, 32), 1);
    };
    const auto line = [&](int32_t kind, const char *konto) {
        EXPECT_EQ(Record().Text(konto, 8).Text("", 9).Text("Name", 41).AddTo(report, kind, 110), 1);
    };
    group(1, "Außen");
    group(2, "Innen");
    line(4, "1");
    line(4, "2");
    line(5, "3");
    line(5, "4");
    group(2, "Zweite");
    line(4, "5");
    EXPECT_EQ(Export("a.csv"), "\xEF\xBB\xBF"
                               "Art;Titel;Konto;Name\r\n"
                               "Gruppe;Außen;;\r\n"
                               "Zeile;Innen;1;Name\r\n"
                               "Text;;1;Name\r\n"
                               "Zeile;;2;Name\r\n"
                               "Text;;2;Name\r\n"
                               "Zeile;Außen;3;\r\n"
                               "Zeile;;4;\r\n"
                               "Zeile;Zweite;5;Name\r\n"
                               "Text;;5;Name\r\n");
}

TEST_F(Declarations, AFunctionIsToldTheRecordThatOpenedItsGroup)
{
    Open(R"(
columns {
    { "konto", "Konto", 20 }, { "nummer", "Nr.", 20, form = "number" },
    { "zeile", "Zeile", 20, form = "number" },
}
record(1, { text("konto", 0, 8), level = 1 })
record(2, { i32("nummer", 0), rows = { "line" }, emit = function(r, account)
    if account == nil then return row("line", r) end
    account.lines = (account.lines or 0) + 1
    r.konto, r.zeile = account.konto, account.lines
    row("line", r)
end })
)");
    AddLine(1, "", 0);
    AddAccount("1000");
    AddLine(2, "", 0);
    AddLine(3, "", 0);
    AddAccount("1100");
    AddAccount("1200");
    AddLine(4, "", 0);
    EXPECT_EQ(Export("a.csv"), "\xEF\xBB\xBF"
                               "Art;Konto;Nr.;Zeile\r\nZeile;;1;\r\nZeile;1000;2;1\r\nZeile;1000;3;2\r\n"
                               "Zeile;1200;4;1\r\n");
}

TEST_F(Declarations, AFunctionMayRestWhileFieldsStayTheSame)
{
    Open(R"(
columns { { "name", "Name", 40 } }
record(1, { text("konto", 0, 8), text("name", 8, 41), amount("soll", 119), level = 1, rows = { "head" },
    changes = { "name", "soll" }, emit = function(r) row("head", r) end })
record(2, { level = 1 })
)");
    const auto add = [&](const char *name, int64_t soll, char behind = 0) {
        Record record;
        record.Text("1000", 8).Text(name, 41).Text("", 20).Text("", 50).Amount(soll);
        record.Bytes[8 + 10] = behind; // the end of the name
        EXPECT_EQ(record.AddTo(report, 1, 149), 1);
    };
    add("Eins", 1);
    add("Eins", 1, 'x');
    add("Eins", 2);
    add("Zwei", 2);
    add("Zwei", 2);
    AddLine(1, "", 0);
    add("Zwei", 2);
    EXPECT_EQ(Export("a.csv"), "\xEF\xBB\xBF"
                               "Art;Name\r\nGruppe;Eins\r\nGruppe;Eins\r\nGruppe;Zwei\r\nGruppe;Zwei\r\n")
        << "what lies behind the end of a text counts nothing; another kind has come between the last two";
    EXPECT_EQ(OpenError("record(1, { text('konto', 0, 8), changes = { 'konto' } })"),
              "2: 'changes' is for records that open a level");
    EXPECT_EQ(OpenError("record(1, { level = 1, changes = { 'konto' } })"),
              "2: 'changes' names 'konto', which is no field of the record");
    EXPECT_EQ(OpenError("record(1, { level = 1, changes = 'konto' })"),
              "2: 'changes' must be a list of fields");
    EXPECT_EQ(OpenError("record(1, { level = 1, changes = {} })"), "2: 'changes' may hold 1 to 6 fields");
}

TEST_F(Declarations, RefuseRecordsThatCannotPrintThemselves)
{
    const std::string columns =
        "columns { { 'soll', 'Soll', 20, form = 'amount' }, { 'name', 'Name', 20 } }\n";
    const std::string form = " is of another form than what takes it by its name";
    EXPECT_EQ(OpenError(columns + "record(1, { i32('soll', 0), rows = { 'line' } })"),
              "1: field 'soll'" + form);
    EXPECT_EQ(OpenError(columns + "record(1, { i32('name', 0), rows = { 'line' } })"),
              "1: field 'name'" + form);
    EXPECT_EQ(OpenError("fields { { 'name', 'Name', form = 'flag' } }\n"
                        "record(1, { i32('name', 0), level = 1 }) record(2, { rows = { 'line' } })"),
              "1: field 'name'" + form)
        << "what is lent";
    EXPECT_EQ(OpenError("record(1, { words('name', 0) })"),
              "2: bad argument #3 to 'words' (table expected, got no value)");
    EXPECT_EQ(OpenError("record(1, { words('name', 0, { '1', '2', '3', '4', '5', '6', '7', '8' }) })"),
              "2: a field has words for the numbers from 0 to 7");
    EXPECT_EQ(OpenError("record(1, { words('name', 0, { 7 }) })"), "2: 'word' must be a text");
    EXPECT_EQ(OpenError("for i = 1, 9 do words('name', 0, { 'x' }) end"),
              "2: there are too many fields with words");
    Open(columns + "record(1, { i32('soll', 0), emit = function(r) row('line', r) end, rows = { 'line' } })");
    RSCloseReport(report);
    Open("columns { { 'soll', 'Soll', 40, form = 'amount', sum = true } }\n"
         "record(1, { emit = function() add { soll = 9999999999999999 } end })\n"
         "record(2, { amount('soll', 78), rows = { 'line' } })");
    EXPECT_EQ(AddAccount("1000"), 1);
    const std::string said = Errors([&] { EXPECT_EQ(AddLine(1, "010318", 1), 0); });
    EXPECT_NE(said.find("the sum of column 'soll' grows too large"), std::string::npos) << said;
}

TEST_F(Declarations, SayInEveryPrintedRowOfJsonWhatItIsAbout)
{
    Open("columns { { 'konto', 'Konto', 20, heading = 'Kontonummer' } }\n"
         "style('fett', { like = 'head', size = 12 })\n"
         "record(1, { text('konto', 0, 8), text('zeitraum', 69, 50), rows = { 'fett' }, emit = function(r)\n"
         "  about { { 'zeitraum', r.zeitraum } } row('fett', r) end })\n");
    AddAccount("1000");
    const std::string json = Export("a.json");
    EXPECT_NE(json.find("{\"zeitraum\":\"März 1998\",\"kind\":\"head\",\"konto\":\"1000\"}"),
              std::string::npos)
        << json;
    EXPECT_NE(json.find("{\"name\":\"konto\",\"title\":\"Kontonummer\","), std::string::npos) << json;
    EXPECT_EQ(Export("a.csv"), "\xEF\xBB\xBF"
                               "Art;Kontonummer\r\nGruppe;1000\r\n")
        << "a style of the template's own goes by the name of its kind";
}

TEST_F(Declarations, RefuseDataThatFieldsDoNotHold)
{
    EXPECT_EQ(OpenError("fields {}"), "2: a row of data has 1 to 64 fields");
    EXPECT_EQ(OpenError("fields { { 'a', 'A' }, { 'a', 'B' } }"), "2: there are two fields 'a'");
    EXPECT_EQ(OpenError("fields { { 'a' } }"), "2: field 'a' has no heading");
    EXPECT_EQ(OpenError("fields { { '', 'A' } }"), "2: a field of data begins with its name");
    const auto printError = [&](const std::string &fields, const std::string &body) {
        RSCloseReport(report);
        Open(fields + "\nrecord(0, { emit = function(r) " + body + " end })\n");
        const std::string said = Errors([&] { EXPECT_EQ(AddHeader(), 0); });
        return said.substr(said.find(":3: ") + 4, said.find('\n') - said.find(":3: ") - 4);
    };
    EXPECT_EQ(printError("", "data {}"), "data{...} needs fields{...}");
    EXPECT_EQ(printError("fields { { 'a', 'A' } }", "data { a = 1 }"),
              "field 'a' of the data cannot take a number");
    EXPECT_EQ(printError("fields { { 'a', 'A', form = 'amount' } }", "data { a = 'x' }"),
              "field 'a' of the data cannot take a string");
    EXPECT_EQ(printError("fields { { 'a', 'A', form = 'flag' } }", "data { a = 1 }"),
              "field 'a' of the data cannot take a number");
    EXPECT_EQ(printError("", "about { mandant = 'x', 5 }"), "about{...} is a list of { name, text }");
    EXPECT_EQ(printError("", "about { { 'mandant' } }"), "about{...} is a list of { name, text }");
}

TEST_F(Declarations, ColumnsMayDependOnTheHeader)
{
    Open(R"(
columns {
    { "konto", "Konto", 20 }, { "name", "Name", 60 },
    { "soll", "Betrag", 30, form = "amount", sum = true, group = "Jahr" },
    { "haben", "Vergleich", 30, form = "amount", sum = true, group = "Jahr" },
}
record(0, { text("mandant", 0, 41), emit = function(r)
    column("soll", { title = r.mandant, group = "" })
    column("haben", { width = 0 })
    column("name", { width = 90, heading = "Bezeichnung" })
end })
record(1, { text("konto", 0, 8), text("name", 8, 41), amount("soll", 119), amount("haben", 132),
    rows = { "line" }, emit = function(r) row("line", r) end })
finish { rows = { "total" }, emit = function(sum) row("total", sum) end }
)");
    AddHeader("1998");
    AddAccount("1000", 150);
    EXPECT_EQ(Export("a.csv"), "\xEF\xBB\xBF"
                               "Art;Konto;Bezeichnung;1998\r\n"
                               "Zeile;1000;Konto 1000;1,50\r\n"
                               "Gesamt;;;1,50\r\n");
    EXPECT_EQ(Export("a.json").find("haben"), std::string::npos);
    const std::string html = Export("a.html");
    EXPECT_EQ(html.find("Vergleich"), std::string::npos) << html;
    EXPECT_NE(html.find("<td>1000</td><td>Konto 1000</td><td class=n>1,50</td></tr>"), std::string::npos)
        << html;
    EXPECT_EQ(Export("a.txt"), "\n\nKonto  Name        1998\n-----------------------\n"
                               "1000   Konto 1000  1,50\n                   1,50\n");
    Export("a.pdf");
    const std::string page = PagesOf(directory.At("a.pdf"))[0];
    EXPECT_EQ(page.find("Vergleich"), std::string::npos) << page;
    EXPECT_NE(page.find("1998"), std::string::npos) << page;
}

TEST_F(Declarations, ColumnsChangeOnlyBeforeAnythingIsPrinted)
{
    const auto printError = [&](const std::string &body, int32_t kind) {
        RSCloseReport(report);
        Open("columns { { 'a', 'A', 20 } }\nrecord(0, { rows = { 'text' }, emit = function(r)" +
             (kind == 0 ? body : "") + " end })\nrecord(1, { emit = function(r) " + (kind == 1 ? body : "") +
             " end })\n");
        const std::string said = Errors([&] { EXPECT_EQ(kind == 0 ? AddHeader() : AddAccount("1"), 0); });
        const size_t begin = said.find(": ", said.find("or_test.rs")) + 2;
        return said.substr(begin, said.find('\n') - begin);
    };
    const std::string late = "column(...) belongs in the function of the header, before its rows";
    EXPECT_EQ(printError("column('a', { width = 0 })", 1), late);
    EXPECT_EQ(printError("row('text', 'x') column('a', { width = 0 })", 0), late);
    EXPECT_EQ(printError("column('b', { width = 0 })", 0), "there is no column 'b'");
    EXPECT_EQ(printError("column('a', { width = 190 })", 0), "the columns take 190 mm of 180 mm");
    EXPECT_EQ(printError("column('a', { title = 'A\\nB' })", 0), "columns{...} declares 1 lines of titles");
    EXPECT_EQ(printError("column('a', { group = 'G' })", 0), "columns{...} declares no groups");
}

namespace {

// A tree of two levels of groups, with leaves on any of them.
constexpr const char *tree = R"(
columns { { "name", "Name", 60 }, { "betrag", "Betrag", 30, form = "amount", sum = true } }
style("tief", { like = "line", indent = 6 })
style("tiefkopf", { like = "head", indent = 6 })
local function group(kind, level, style)
    record(kind, { text("titel", 4, 28), level = level, rows = { style },
        emit = function(r) row(style, { name = r.titel, betrag = groupsum }) end })
end
group(1, 1, "head")
group(2, 2, "tiefkopf")
record(4, { text("text", 17, 41), amount("soll", 58), closes = 1, rows = { "line" },
    emit = function(r) row("line", { name = r.text, betrag = r.soll }) end })
record(5, { text("text", 17, 41), amount("soll", 58), closes = 2, rows = { "line" },
    emit = function(r) row("line", { name = r.text, betrag = r.soll }) end })
record(6, { text("text", 17, 41), amount("soll", 58), rows = { "tief" },
    emit = function(r) row("tief", { name = r.text, betrag = r.soll }) end })
)";

} // namespace

TEST_F(Declarations, ALeafClosesTheGroupsBeneathItsLevel)
{
    Open(tree, "tervoGUV0.0");
    const auto group = [&](int32_t kind, const char *title) {
        Record().U32(0).Text(title, 28).AddTo(report, kind, 32);
    };
    const auto leaf = [&](int32_t kind, const char *text, int64_t soll) {
        Record().Text("", 8).Text("", 9).Text(text, 41).Amount(soll).Amount(0).Amount(0).Amount(0).AddTo(
            report, kind, 110);
    };
    group(1, "Anlagen");
    group(2, "Sachanlagen");
    leaf(6, "Maschinen", 10000);
    leaf(5, "Beteiligungen", 2300);
    leaf(4, "Kasse", 5);
    EXPECT_EQ(Export("a.csv"), "\xEF\xBB\xBF"
                               "Art;Name;Betrag\r\n"
                               "Gruppe;Anlagen;123,00\r\n"
                               "Gruppe;Sachanlagen;100,00\r\n"
                               "Zeile;Maschinen;100,00\r\n"
                               "Zeile;Beteiligungen;23,00\r\n"
                               "Zeile;Kasse;0,05\r\n");
    EXPECT_EQ(Export("a.txt"), "\nName            Betrag\n----------------------\n"
                               "Anlagen         123,00\n"
                               "   Sachanlagen  100,00\n"
                               "   Maschinen    100,00\n"
                               "Beteiligungen    23,00\n"
                               "Kasse             0,05\n");
    EXPECT_NE(Export("a.html").find("td:not(.n,.c){padding-left:8.0mm}"), std::string::npos);
}

TEST_F(Declarations, RefuseGroupsThatCannotBe)
{
    EXPECT_EQ(OpenError("record(1, { level = 1, closes = 1 })"),
              "2: 'closes' is for records that open no level");
    EXPECT_EQ(OpenError("record(1, { rows = { 'head' }, again = 'head' })"),
              "2: 'again' is for records that open a level");
    EXPECT_EQ(OpenError("record(1, { level = 1, rows = { 'head' }, again = 'text' })"),
              "2: 'again' must be one of the styles in 'rows'");
}

TEST_F(Declarations, RepeatTheHeadingOfAGroupOnItsFurtherPages)
{
    Open(R"(
page { head = 0 }
columns { { "nummer", "Nr.", 20, form = "number" }, { "text", "Text", 60 },
    { "soll", "Soll", 30, form = "amount", sum = true } }
carry { level = 1, column = "text", down = "Übertrag", up = "Übertrag" }
record(1, { text("konto", 0, 8), level = 1, rows = { "head" }, again = "head",
    emit = function(r) row("head", { text = "Konto " .. r.konto, soll = groupsum }) end,
    close = { rows = { "sum" }, emit = function(sum) row("sum", { text = "Summe", soll = sum.soll }) end } })
record(2, { i32("nummer", 0), amount("soll", 78), rows = { "line" }, emit = function(r) row("line", r) end })
)");
    const int32_t counting = RSOpenVirtualReport(report);
    const auto add = [&](const char *konto, int lines) {
        AddAccount(konto);
        RSAddVirtualData(counting, 1, 1);
        for (int i = 0; i < lines; ++i) {
            AddLine(i + 1, "010318", 100);
        }
        RSAddVirtualData(counting, 2, lines);
    };
    add("1000", 150);
    add("1100", 3);
    const int32_t counted = RSGetVirtualPages(counting);
    RSCloseVirtualReport(counting);
    Export("a.pdf");
    const std::vector<std::string> pages = PagesOf(directory.At("a.pdf"));
    ASSERT_EQ(static_cast<int32_t>(pages.size()), counted);
    ASSERT_EQ(pages.size(), 3u);
    EXPECT_EQ(pages[0].find("(Fortsetzung)"), std::string::npos);
    for (const size_t page : {1u, 2u}) {
        const std::vector<std::string> lines = LinesOf(pages[page]);
        EXPECT_NE(lines[1].find("Konto 1000 (Fortsetzung)"), std::string::npos) << pages[page];
        EXPECT_EQ(lines[1].find(','), std::string::npos) << "without its figures";
        EXPECT_NE(lines[2].find("Übertrag"), std::string::npos) << pages[page];
    }
    EXPECT_EQ(pages[2].find("1100 (Fortsetzung)"), std::string::npos) << pages[2];
    EXPECT_NE(pages[2].find("Konto 1100"), std::string::npos) << pages[2];
}

namespace {

constexpr const char *twoHalves = R"(
page { gap = 10, head = 1 }
columns { { "text", "Text", 50 }, { "soll", "Soll", 35, form = "amount", sum = true } }
record(0, { text("mandant", 0, 41),
    emit = function(r) head { left = r.mandant, right = "{page}/{pages}" } end })
record(1, { text("konto", 0, 8), level = 1, beside = true, rows = { "head" }, again = "head",
    emit = function(r) bookmark(r.konto) row("head", { text = "Seite " .. r.konto }) end,
    close = { rows = { "total" },
        emit = function(sum) row("total", { text = "Summe", soll = sum.soll }) end } })
record(2, { i32("nummer", 0), amount("soll", 78), rows = { "line" },
    emit = function(r) row("line", { text = "Zeile " .. r.nummer, soll = r.soll }) end })
)";

// The lines of a page, each with its runs of blanks made one.
std::vector<std::string> TidyLines(const std::string &page)
{
    std::vector<std::string> lines;
    for (const std::string &line : LinesOf(page)) {
        std::istringstream words(line);
        std::string tidy;
        for (std::string word; words >> word;) {
            tidy += (tidy.empty() ? "" : " ") + word;
        }
        if (!tidy.empty()) lines.push_back(tidy);
    }
    return lines;
}

} // namespace

TEST_F(Declarations, GroupsBesideEachOtherHaveAHalfOfEachPage)
{
    for (const bool isLeftLonger : {true, false}) {
        Open(twoHalves);
        AddHeader();
        const auto add = [&](const char *konto, int lines) {
            AddAccount(konto);
            for (int i = 1; i <= lines; ++i) {
                AddLine(i, "010318", 100);
            }
        };
        add("A", isLeftLonger ? 80 : 3);
        add("B", isLeftLonger ? 3 : 80);
        Export("a.pdf");
        const std::vector<std::string> pages = PagesOf(directory.At("a.pdf"));
        ASSERT_EQ(pages.size(), 2u);
        const std::vector<std::string> first = TidyLines(pages[0]);
        ASSERT_GT(first.size(), 6u) << pages[0];
        EXPECT_EQ(first[0], "Muster GmbH 1/2");
        EXPECT_EQ(first[1], "Text Soll Text Soll");
        EXPECT_EQ(first[2], "Seite A Seite B");
        EXPECT_EQ(first[3], "Zeile 1 1,00 Zeile 1 1,00");
        EXPECT_EQ(first[6], "Zeile 4 1,00") << "in the longer half alone";
        const std::vector<std::string> second = TidyLines(pages[1]);
        ASSERT_GT(second.size(), 3u) << pages[1];
        EXPECT_EQ(second[0], "Muster GmbH 2/2");
        EXPECT_EQ(second[2], "Seite A (Fortsetzung) Seite B (Fortsetzung)");
        EXPECT_EQ(second.back(), isLeftLonger ? "Summe 80,00 Summe 3,00" : "Summe 3,00 Summe 80,00");
        RSCloseReport(report);
    }
    Open(twoHalves);
    AddHeader();
    AddAccount("A");
    AddLine(1, "010318", 100);
    AddAccount("B");
    AddLine(2, "010318", 200);
    const std::string text = Export("a.txt");
    EXPECT_LT(text.find("Seite A"), text.find("Zeile 1")) << text;
    EXPECT_LT(text.find("Zeile 1"), text.find("Seite B")) << "one below the other: " << text;
}

TEST_F(Declarations, AHalfAloneIsAPage)
{
    Open(twoHalves);
    AddHeader();
    AddAccount("A");
    AddLine(1, "010318", 100);
    Export("a.pdf");
    const std::vector<std::string> pages = PagesOf(directory.At("a.pdf"));
    ASSERT_EQ(pages.size(), 1u);
    EXPECT_EQ(TidyLines(pages[0]), (std::vector<std::string>{"Muster GmbH 1/1", "Text Soll", "Seite A",
                                                             "Zeile 1 1,00", "Summe 1,00"}));
}

TEST_F(Declarations, RefuseHalvesThatCannotBe)
{
    EXPECT_EQ(OpenError("record(1, { level = 1, beside = true })"),
              "2: 'beside' is for records that open level 1, on a page with a 'gap'");
    EXPECT_EQ(OpenError("page { gap = 10 } record(1, { level = 2, beside = true })"),
              "2: 'beside' is for records that open level 1, on a page with a 'gap'");
    EXPECT_EQ(OpenError("page { gap = 10 } columns { { 'a', 'A', 86 } }"),
              "2: the columns take 86 mm of 85 mm");
    EXPECT_EQ(OpenError("page { gap = 10 } columns { { 'a', 'A', 20 } }\n"
                        "finish { rows = { 'total' } }"),
              "1: a page with a 'gap' has no 'carry', and 'finish' no rows");
}

TEST_F(Declarations, AnEmptyReportSaysSoUnderItsHead)
{
    const std::string body =
        "page { foot = 1 }\n"
        "columns { { 'a', 'A', 20 } }\n"
        "record(0, { text('mandant', 0, 41), emit = function(r)\n"
        "  head { left = { r.mandant, '', 'Liste' } } foot { left = 'Fuß' } end })\n"
        "record(1, { text('a', 0, 8), rows = { 'line' }, emit = function(r) row('line', r) end })\n"
        "finish { rows = { 'total' }, empty = 'Keine Buchungen im Zeitraum.',\n"
        "  emit = function(sum) row('total', { a = 'Summe' }) end }\n";
    Open(body);
    AddHeader();
    EXPECT_EQ(Export("a.txt"), "Muster GmbH · Liste\n\nA\n-\nKeine Buchungen im Zeitraum.\n");
    Export("a.pdf");
    const std::string page = PagesOf(directory.At("a.pdf"))[0];
    for (const char *text : {"Muster GmbH · Liste", "Keine Buchungen im Zeitraum.", "Fuß"}) {
        EXPECT_NE(page.find(text), std::string::npos) << page;
    }
    RSCloseReport(report);
    Open(body);
    AddHeader();
    AddAccount("1000");
    EXPECT_EQ(Export("a.txt"), "Muster GmbH · Liste\n\nA\n-\n1000\nSumme\n");
}
