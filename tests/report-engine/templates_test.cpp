// Templates that are wrong, broken or hostile: each ends as 0 and one line that names the file and its line.
#include <chrono>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "report_support.h"

using namespace reports;

namespace {

// What opening the text as a template says, with the path cut off: "12: message".
std::string OpenError(const std::string &text)
{
    const Directory directory;
    const std::string path = directory.Write("or_test.rs", text);
    int32_t report = 0;
    std::string said = Errors([&] { report = RSOpenReport(path.c_str(), susaId, 0); });
    EXPECT_EQ(report, 0);
    RSCloseReport(report);
    const std::string prefix = "librs: " + path + ":";
    EXPECT_EQ(said.substr(0, prefix.size()), prefix);
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    return said.size() > prefix.size() ? said.substr(prefix.size(), said.size() - prefix.size() - 1) : said;
}

// What printing one line by the text as `emit` says; it begins in line 5 of the template.
std::string PrintError(const std::string &body)
{
    const Directory directory;
    const std::string path = directory.Write(
        "or_test.rs",
        TemplateWith(
            "columns { { 'konto', 'Konto', 20 },\n"
            "  { 'soll', 'Soll', 20, form = 'amount', sum = true } }\n"
            "record(1, { text('konto', 0, 8), amount('soll', 58), rows = { 'line' }, emit = function(r)\n" +
            body + "\nend })\n"));
    const int32_t report = RSOpenReport(path.c_str(), susaId, 0);
    EXPECT_GT(report, 0);
    std::string said = Errors([&] {
        EXPECT_EQ(AddSusaLine(report, {.Konto = "1000", .VortragSoll = 100}), 0);
        EXPECT_EQ(OpenView(report), nullptr) << "a report that failed has no view";
    });
    RSCloseReport(report);
    const std::string prefix = "librs: " + path + ":";
    const size_t end = said.find('\n');
    EXPECT_EQ(said.substr(0, prefix.size()), prefix);
    return said.size() > prefix.size() ? said.substr(prefix.size(), end - prefix.size()) : said;
}

} // namespace

TEST(Templates, AreFiles)
{
    const Directory directory;
    const auto said = [](const std::string &path) {
        return Errors([&] { EXPECT_EQ(RSOpenReport(path.c_str(), susaId, 0), 0); });
    };
    EXPECT_EQ(said(directory.At("or_none.rs")),
              "librs: " + directory.At("or_none.rs") + ": Das Verzeichnis oder die Datei gibt es nicht.\n");
    EXPECT_EQ(said(directory.Path.string()),
              "librs: " + directory.Path.string() + ": Das ist ein Verzeichnis.\n");
    ASSERT_EQ(mkfifo(directory.At("or_pipe.rs").c_str(), 0600), 0);
    EXPECT_EQ(said(directory.At("or_pipe.rs")),
              "librs: " + directory.At("or_pipe.rs") + ": Das ist keine gewöhnliche Datei.\n");
    const std::string large = directory.Write("or_large.rs", std::string((1 << 20) + 1, ' '));
    EXPECT_EQ(said(large), "librs: " + large + ": Die Datei ist zu groß.\n");
    const std::string endless = "/" + std::string(5000, 'x') + ".rs";
    EXPECT_NE(said(endless).find("Der Name ist zu lang."), std::string::npos) << said(endless);
    EXPECT_EQ(Errors([] { EXPECT_EQ(RSOpenReport(nullptr, susaId, 0), 0); }),
              "librs: : Das Verzeichnis oder die Datei gibt es nicht.\n");
}

TEST(Templates, MustBeWhole)
{
    EXPECT_EQ(OpenError(""), "1: report{...} is missing");
    EXPECT_EQ(OpenError(TemplateWith("page {\n    head = 2,\n    ")), "4: unexpected symbol near <eof>");
    EXPECT_EQ(OpenError("\x1BLua"), "1: attempt to load a binary chunk (mode is 't')");
    EXPECT_EQ(OpenError(std::string("report\0{}", 9)), "1: syntax error");
}

TEST(Templates, DeclareOnlyWhatTheRecordsHave)
{
    struct {
        const char *body;
        const char *said;
    } const cases[] = {
        {"record(1, {\n text('a', 0, 8),\n text('b', 160, 7) })",
         "4: field 'b' ends at byte 167, but records of kind 1 have 166"},
        {"record(0, { amount('a', 116) })", "2: field 'a' ends at byte 129, but records of kind 0 have 128"},
        {"record(1, { u32('a', 163) })", "2: field 'a' ends at byte 167, but records of kind 1 have 166"},
        {"record(1, { u8('a', -1) })", "2: field 'a' lies outside of any record"},
        {"record(1, { u8('a', 1 << 40) })", "2: field 'a' lies outside of any record"},
        {"record(1, { text('a', 0, 0) })", "2: field 'a' lies outside of any record"},
        {"record(1, { text('a', 0, 1 << 62) })", "2: field 'a' lies outside of any record"},
        {"record(1, { i16('a', 0, 4) })", "2: field 'a': this form is always 2 bytes wide"},
        {"record(1, { { 'a', 0, 8, 0, 2 }, { 'b', 0, 300, 0, 3 } })",
         "3: field 'b' ends at byte 300, but records of kind 1 have 166"},
        {"record(1, { { 'a', 0, 8, 99, 2 } })", "2: entry 1 of the record is no field"},
        {"record(1, { { 'a', -5, 8, 0, 2 } })", "2: entry 1 of the record is no field"},
        {"record(1, { 'konto' })", "2: entry 1 of the record is no field"},
        {"record(2, {})", "2: this report has no records of kind 2"},
        {"record(9, {})", "2: this report has no records of kind 9"},
        {"record(-1, {})", "2: this report has no records of kind -1"},
        {"record(1, {})\nrecord(1, {})", "3: kind 1 stands here a second time"},
        {"record(1, { rwos = {} })", "2: unknown entry 'rwos'"},
        {"record(1, { rows = { 'nothing' } })", "2: entry 1 of 'rows' is no style"},
        {"record(1, { rows = { { 'line', 1000 } } })", "2: 'rows' may hold 96 rows"},
        {"record(1, { level = 7 })", "2: 'level' must be a whole number from 0 to 6"},
        {"record(1, { keep = true })", "2: 'newpage' and 'keep' are for records that open a level"},
        {"record(1, { emit = 5 })", "2: 'emit' must be a function"},
    };
    for (const auto &row : cases) {
        EXPECT_EQ(OpenError(TemplateWith(row.body)), row.said) << row.body;
    }
}

TEST(Templates, DeclareAPageThatCanBe)
{
    struct {
        const char *body;
        const char *said;
    } const cases[] = {
        {"page { size = 'A5' }", "2: 'size' cannot be 'A5'"},
        {"page { margins = { top = 200 } }", "2: 'top' must be a number from 0 to 100"},
        {"page { margins = { top = 100, bottom = 100 }, head = 6, foot = 6, fontsize = 24 }",
         "2: the margins leave no room for rows"},
        {"page { margins = { top = 0 / 0 } }", "2: 'top' must be a number from 0 to 100"},
        {"page { fontsize = 3 }", "2: 'fontsize' must be a number from 4 to 24"},
        {"page { font = 7 }", "2: 'font' must be a text"},
        {"page { font = 'A\\255' }", "2: 'font' is no proper UTF-8 text"},
        {"page { head = 7 }", "2: 'head' must be a whole number from 0 to 6"},
        {"page {}\npage {}", "3: page{...} stands here a second time"},
        {"columns {}\npage {}", "3: page{...} comes before styles, columns and records"},
        {"columns { { 'a', 'A', 100 },\n { 'b', 'B', 100 } }", "2: the columns take 200 mm of 180 mm"},
        {"columns { { 'a', 'A', 10 }, { 'a', 'B', 10 } }", "2: there are two columns 'a'"},
        {"columns { { 'a', 'A' } }", "2: column 'a' has no width"},
        {"columns { { 'a', 'A', 10, sum = true } }", "2: column 'a' holds no amounts to sum"},
        {"columns { { 'a', 'A', 10, form = 'money' } }", "2: 'form' cannot be 'money'"},
        {"style('x', { height = 2 })", "2: 'height' must be a number from 2.5 to 100"},
        {"style('x', { height = 100, })\nstyle('y', { like = 'z' })", "3: there is no style 'z'"},
        {"style('line', { above = 'thick' })", "2: 'above' cannot be 'thick'"},
        {"carry {}", "2: carry{...} comes after columns{...}"},
        {"columns {}\ncarry { column = 'a' }", "3: there is no column 'a'"},
        {"row('line', {})", "2: row(...) belongs in the function of a record"},
        {"report { id = 'tervoSUSALIST0.0', title = '' }", "2: report{...} stands here a second time"},
        {"error('stop')", "2: stop"},
        {"error({})", "2: (an error that is a table)"},
        {"error('stop', 0)", "2: stop"},
        {"local t = nil\nlocal x = t.y", "3: attempt to index a nil value (local 't')"},
    };
    for (const auto &row : cases) {
        EXPECT_EQ(OpenError(TemplateWith(row.body)), row.said) << row.body;
    }
    EXPECT_EQ(OpenError("page { margins = { top = 60, bottom = 60 } }\nstyle('x', { height = 100 })\n"
                        "columns { { 'a', 'A', 10 } }\ncarry { down = 'x' }\n"
                        "style('carry', { height = 60 })\nreport { id = 'tervoSUSALIST0.0', title = '' }"),
              "1: the page is too low for its rows");
}

TEST(Templates, HaveNoWayOut)
{
    for (const char *name : {"io",     "os",      "load",         "loadstring",   "loadfile",
                             "dofile", "require", "package",      "debug",        "coroutine",
                             "pcall",  "xpcall",  "setmetatable", "getmetatable", "collectgarbage",
                             "print",  "rawset",  "rawget",       "_G",           "utf8"}) {
        EXPECT_EQ(OpenError(TemplateWith("if " + std::string(name) + " == nil then error('closed') end")),
                  "2: closed")
            << name;
    }
    EXPECT_EQ(OpenError(TemplateWith("local x = ('a'):dump()")),
              "2: attempt to call a nil value (method 'dump')");
    for (const char *name : {"match", "gmatch", "gsub", "char", "byte", "pack", "dump", "reverse"}) {
        EXPECT_EQ(
            OpenError(TemplateWith("if string." + std::string(name) + " == nil then error('closed') end")),
            "2: closed")
            << name;
    }
    EXPECT_EQ(OpenError(TemplateWith("if table.move == nil and table.sort == nil then error('closed') end")),
              "2: closed");
}

TEST(Templates, AreBoundedInWorkAndMemory)
{
    struct {
        const char *body;
        const char *said;
    } const cases[] = {
        {"while true do end", "2: the template does not come to an end"},
        {"local function f() return f() end\nf()", "3: the template does not come to an end"},
        {"local function f() return 1 + f() end\nf()", "2: a table or the stack grows too large"},
        {"local s = ('x'):rep(1 << 30)", "2: the repeated text grows too large"},
        {"local s = ('x'):rep(1 << 62)", "2: the repeated text grows too large"},
        {"local s = ('x'):rep((64 << 10) - 100)\nlocal t = s .. s", "3: a text grows too large"},
        {"local s = 'x'\nwhile true do\n s = s .. s\nend", "4: a text grows too large"},
        {"local t = {}\nwhile true do\n t[#t + 1] = #t\nend", "4: a table or the stack grows too large"},
        {"local t = {}\nfor i = 1, 2000 do\n t[i] = ('x'):rep(60000) .. i\nend",
         "4: the template takes too much memory"},
        {"local s = ('x'):rep(60000)\nwhile true do local t = s .. 'y' end",
         "3: the template does not come to an end"},
        {"local s = ('x'):rep(60000)\nlocal t = s .. 'y'\nwhile true do local u = s:find(t) or s:upper() "
         "end",
         "4: the template does not come to an end"},
        {"local s = ('x'):rep(60000)\nwhile true do local u = s < s .. 'y' end",
         "3: the template does not come to an end"},
        {"local t = {}\nfor i = 62, 0, -1 do t[1 << i] = 1 end\ntable.insert(t, 1, 2)",
         "4: the table is too long"},
        {"local t = {}\nfor i = 62, 0, -1 do t[1 << i] = 1 end\ntable.remove(t, 1)",
         "4: the table is too long"},
        {"for i = 1, 1 << 62 do end", "2: the template does not come to an end"},
        {"local t = {}\nt[1] = t\nlocal s = table.concat({ 'a' }, ',', 1, 1 << 62)",
         "4: invalid value (nil) at index 2 in table for 'concat'"},
        {"local a = { table.unpack({}, 1, 1 << 30) }", "2: too many results to unpack"},
    };
    for (const auto &row : cases) {
        const auto begin = std::chrono::steady_clock::now();
        const std::string said = OpenError(TemplateWith(row.body));
        EXPECT_EQ(said.substr(0, std::string(row.said).size()), row.said) << row.body;
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30)) << row.body;
    }
    EXPECT_NE(OpenError("x = " + std::string(100'000, '(') + "1").find("C stack overflow"),
              std::string::npos);
}

TEST(Templates, PrintOnlyWhatTheyDeclared)
{
    struct {
        const char *body;
        const char *said;
    } const cases[] = {
        {"row('total', r)", "5: no further row 'total' is declared in 'rows'"},
        {"row('line', r)\nrow('line', r)", "6: no further row 'line' is declared in 'rows'"},
        {"row('nothing', r)", "5: there is no style 'nothing'"},
        {"row('line', { konto = 7 })", "5: column 'konto' cannot take a number of this kind"},
        {"row('line', { soll = 1.5 })", "5: column 'soll' cannot take a number of this kind"},
        {"row('line', { soll = true })", "5: column 'soll' cannot take a boolean"},
        {"row('line', { soll = {} })", "5: column 'soll' cannot take a table"},
        {"row('line', { soll = groupsum })", "5: column 'soll' cannot take a userdata"},
        {"row('line')", "5: bad argument #2 to 'row' (table expected, got no value)"},
        {"head {}\nhead {}\nhead {}", "7: page{...} allows 2 lines here"},
        {"head { middle = 'x' }", "5: unknown entry 'middle'"},
        {"foot {}", "5: page{...} allows 0 lines here"},
        {"sheet(-1)", "5: a sheet number lies from 0 to 1000000"},
        {"record(0, {})", "5: record(...) belongs at the top of the template, not in a function"},
        {"text('a', 0, 1)", "5: a field belongs at the top of the template, not in a function"},
        {"local x = r.nothing.more", "5: attempt to index a nil value (field 'nothing')"},
        {"add { soll = 'viel' }", "5: 'soll' is no amount"},
        {"while true do end", "5: the template does not come to an end"},
        {"error()", "5: (an error that is a nil)"},
    };
    for (const auto &row : cases) {
        EXPECT_EQ(PrintError(row.body), row.said) << row.body;
    }
}

TEST(Templates, FailOnSumsThatGrowTooLarge)
{
    EXPECT_EQ(PrintError("row('line', { soll = 9999999999999999 + r.soll })"),
              "5: an amount in column 'soll' grows too large");
    EXPECT_EQ(PrintError("row('line', { soll = math.tointeger(-10000000000000000) })"),
              "5: an amount in column 'soll' grows too large");
    EXPECT_EQ(PrintError("add { soll = 9999999999999999 }\nadd { soll = 1 }"),
              "6: the sum of column 'soll' grows too large");
    EXPECT_EQ(PrintError("add { soll = -9999999999999999 }\nrow('line', { soll = -1 })"),
              "6: the sum of column 'soll' grows too large");
}

TEST(Templates, AreBoundedInWhatARecordWritesApartFromRows)
{
    const std::string most = "a record may write 2000 rows of data, bookmarks and lines of heads";
    EXPECT_EQ(PrintError("for i = 1, 100000 do bookmark('x') end"), "5: " + most);
    EXPECT_EQ(PrintError("for i = 1, 100000 do about {} end"), "5: " + most);
    EXPECT_EQ(PrintError("for i = 1, 100000 do sheet(1) end"), "5: " + most);
}

TEST(Templates, FormatTextsWithoutTheLocale)
{
    struct {
        const char *expression;
        const char *text;
    } const cases[] = {
        {"string.format('%s-%d-%%', 'Kürzel', 12)", "Kürzel-12-%"},
        {"string.format('%5d|%-5d|%05d|%05d', 42, 42, 42, -42)", "   42|42   |00042|-0042"},
        {"string.format('%4s|%-4s|', 'ü', 'ü')", "   ü|ü   |"},
        {"('Größe'):upper() .. ('ÄÖÜ×'):lower()", "GRÖßEäöü×"},
        {"('Übertrag'):sub(1, 1) .. ('Übertrag'):sub(-2) .. ('abc'):sub(2, 2)", "Üagb"},
        {"('abc'):sub(3, 1) .. ('abc'):sub(0) .. ('abc'):sub(-9, 1)", "abca"},
        {"'' .. ('Übertrag'):len() .. ('Übertrag'):find('trag') .. tostring(('x'):find('y'))", "85nil"},
        {"('ab'):rep(3) .. ('x'):rep(0) .. ('x'):rep(-1)", "ababab"},
        {"money(123456789) .. money(-5) .. money(0)", "1.234.567,89-0,050,00"},
        {"math.max(3, 7) .. math.min(3, 7) .. math.abs(-2) .. math.floor(7 // 2)", "7323"},
        {"table.concat({ 'a', 'b' }, ', ')", "a, b"},
    };
    for (const auto &row : cases) {
        EXPECT_EQ(PrintError("error(" + std::string(row.expression) + ", 0)"), "5: " + std::string(row.text));
    }
    EXPECT_EQ(PrintError("local x = string.format('%f', 1)"), "5: a format has only %s, %d and %%");
    EXPECT_EQ(PrintError("local x = string.format('%d', 1.5)"),
              "5: bad argument #2 to 'format' (number has no integer representation)");
}

TEST(Templates, TheExampleOfTheDocumentationWorks)
{
    const std::string page = ReadFile(DOCUMENTATION);
    const std::string opening = "```lua\n";
    const size_t begin = page.find(opening);
    ASSERT_NE(begin, std::string::npos);
    const size_t end = page.find("```", begin + opening.size());
    const Directory directory;
    const std::string path =
        directory.Write("or_ksald.rs", page.substr(begin + opening.size(), end - begin - opening.size()));
    const int32_t report = RSOpenReport(path.c_str(), "tervoKOSALIST0.0", 0);
    ASSERT_GT(report, 0);
    Record().Text("Muster GmbH", 41).Text("März 1998", 50).Text("", 30).AddTo(report, 0, 121);
    const auto add = [report](const char *number, const char *name, int64_t amount) {
        Record().Text(number, 8).Text("", 9).Text(name, 31).Text("", 41).Amount(amount).AddTo(report, 1, 102);
    };
    add("100", "Verwaltung", 12345);
    add("200", "Lager", 0);
    add("300", "Vertrieb", 655);
    ASSERT_EQ(RSExportView(OpenView(report), directory.At("a.csv").c_str()), 1);
    EXPECT_EQ(ReadFile(directory.At("a.csv")), "\xEF\xBB\xBF"
                                               "Art;Nummer;Kostenstelle;Betrag\r\n"
                                               "Zeile;100;Verwaltung;123,45\r\n"
                                               "Zeile;300;Vertrieb;6,55\r\n"
                                               "Gesamt;;2 Kostenstellen;130,00\r\n");
    RSCloseReport(report);
}

TEST(Templates, ShareAFileThatStandsBesideThem)
{
    const Directory directory;
    directory.Write("gemeinsam.lua", "return { titel = 'Geteilt' }\n");
    const std::string path = directory.Write(
        "or_slist.rs", "report { id = \"tervoSUSALIST0.0\", title = share(\"gemeinsam\").titel }\n");
    const int32_t report = RSOpenReport(path.c_str(), susaId, 0);
    ASSERT_GT(report, 0);
    // A copy is on the template as it was, shared files included.
    std::filesystem::remove(directory.At("gemeinsam.lua"));
    const int32_t copied = RSCopyReport(report, susaId, 0);
    ASSERT_GT(copied, 0);
    ASSERT_EQ(RSExportView(OpenView(copied), directory.At("a.json").c_str()), 1);
    EXPECT_NE(ReadFile(directory.At("a.json")).find("\"title\":\"Geteilt\""), std::string::npos);
    RSCloseReport(copied);
    RSCloseReport(report);
}

TEST(Templates, TellWhatIsWrongWithAFileThatTheyShare)
{
    const Directory directory;
    const auto said = [&](const std::string &call, const std::string &file = {}) {
        if (!file.empty()) directory.Write("geteilt.lua", file);
        const std::string path = directory.Write(
            "or_slist.rs", "report { id = \"tervoSUSALIST0.0\", title = \"x\" }\n" + call + "\n");
        std::string errors = Errors([&] { EXPECT_EQ(RSOpenReport(path.c_str(), susaId, 0), 0); });
        const std::string before = "librs: " + path + ":";
        EXPECT_TRUE(errors.starts_with(before)) << errors;
        return errors.substr(std::min(before.size(), errors.size()));
    };
    EXPECT_EQ(said("share('fehlt')"), "2: fehlt: No such file or directory\n");
    EXPECT_EQ(said("share('../geheim')"),
              "2: a shared file has a name of up to 40 small letters, digits and '_'\n");
    EXPECT_EQ(said("share('geteilt')", "\nerror('so nicht')\n"), " geteilt.lua:2: so nicht\n");
    EXPECT_EQ(said("share('geteilt')", "\n\nx = = 1\n"), "2: geteilt.lua:3: unexpected symbol near '='\n");
    EXPECT_EQ(said("share('geteilt')", "return share('geteilt')\n"),
              " geteilt.lua:1: share(name) is called too often\n");
    EXPECT_EQ(said("share('geteilt')", "while true do end\n").find("2:"), std::string::npos);
}
