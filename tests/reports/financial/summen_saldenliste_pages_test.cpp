// The Summen- und Saldenliste through the real report engine: what the pages say beside the records that were
// sent, and reports on two threads at once.
#include "include/vark40.h"
#include "report-engine/include/rs.h"
#include "src/frame/lifecycle.h"
#include "src/frame/report_engine.h"
#include "src/platform/platform.h"
#include "src/reports/frame/report_params.h"
#include "tests/support/books.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace vark;
using namespace vark::test;

namespace {

// ---- What was sent ----

struct SentLine {
    std::string Konto;
    std::string Name;
    int64_t Amounts[8]; // Vortrag, Monat, Kumuliert, Summe, each Soll and Haben, in Pfennig
    bool IsMoved;
};

std::vector<SentLine> sentLines;
decltype(reportEngine.AddData) realAddData;

int64_t PfennigOf(const char *amount)
{
    int64_t value = 0;
    for (const char *at = amount; *at != 0; ++at) {
        if (*at != ',') value = value * 10 + (*at - '0');
    }
    return value;
}

int32_t AddAndKeep(int32_t report, int32_t kind, const void *record)
{
    const char *bytes = static_cast<const char *>(record);
    if (kind == 1) {
        SentLine &line = sentLines.emplace_back();
        line.Konto = TextOf(bytes, 8);
        line.Name = TextOf(bytes + 17, 41);
        for (size_t i = 0; i < 8; ++i) {
            line.Amounts[i] = PfennigOf(bytes + 58 + i * 13);
        }
        line.IsMoved = bytes[162] != 0;
    }
    return realAddData(report, kind, record);
}

// ---- What is to be read ----

std::string Shown(int64_t pfennig)
{
    std::string text = std::to_string(pfennig % 100);
    if (text.size() < 2) text.insert(0, "0");
    text.insert(0, ",");
    std::string whole = std::to_string(pfennig / 100);
    for (size_t at = whole.size(); at > 3;) {
        at -= 3;
        whole.insert(at, ".");
    }
    return whole + text;
}

// The amounts of a line as a person reads them from left to right: nothing for zero, and the balance at the
// end.
std::string Read(const int64_t (&amounts)[8], const int64_t (&balances)[2])
{
    std::string text;
    for (const int64_t amount : amounts) {
        if (amount != 0) text += " " + Shown(amount);
    }
    for (const int64_t amount : balances) {
        if (amount != 0) text += " " + Shown(amount);
    }
    return text;
}

std::string OutputOf(const std::string &command)
{
    std::string output;
    FILE *pipe = popen(command.c_str(), "r");
    char buffer[4096];
    size_t count = 0;
    while (pipe != nullptr && (count = fread(buffer, 1, sizeof buffer, pipe)) > 0) {
        output.append(buffer, count);
    }
    if (pipe != nullptr) pclose(pipe);
    return output;
}

// The lines of a text whose words are parted by one blank each.
std::vector<std::string> TidyLines(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream all(text);
    for (std::string line; std::getline(all, line);) {
        std::istringstream words(line);
        std::string tidy;
        for (std::string word; words >> word;) {
            tidy += (tidy.empty() ? "" : " ") + word;
        }
        lines.push_back(tidy);
    }
    return lines;
}

struct SummenSaldenlistePages : testing::Test {
    Books Installation;
    decltype(&RSExportView) ExportView = nullptr;

    void SetUp() override
    {
        Installation.AddMandant(1);
        Installation.ChangeMandant(1, [](FistaRecord &mandant) { SetText(mandant.Name, "Musterbetrieb"); });
        Installation.AddMandant(2);
        Installation.ChangeMandant(2, [](FistaRecord &mandant) { SetText(mandant.Name, "Zweitbetrieb"); });
        ASSERT_EQ(1, VARK_Status());
        std::filesystem::copy(TEMPLATES, ReportPath);
        ASSERT_NE(nullptr, reportEngine.ReportEngineLibrary);
        ExportView = reinterpret_cast<decltype(&RSExportView)>(
            FindEntry(reportEngine.ReportEngineLibrary, "RSExportView"));
        ASSERT_NE(nullptr, ExportView);
    }
    void TearDown() override { VARK_SchliesseDB(); }

    // Accounts from 1000 on, every fifth without movement, the others with amounts that differ in every
    // field.
    void AddAccounts(int mandant, int count)
    {
        for (int i = 0; i < count; ++i) {
            SakoRecord record = MakeSako(std::to_string(1000 + i));
            SetText(record.Name, "Konto Nummer " + std::to_string(i));
            if (i % 5 != 4) {
                Put(record.Umsaetze.Vortrag, i * 100000 + 1, i * 7 + mandant);
                Put(record.Umsaetze.Monat[0], i * 311, i % 3 == 0 ? 0 : i * 13);
                Put(record.Umsaetze.Monat[1], i % 4 == 0 ? 0 : i * 1017, i * 2);
                Put(record.Umsaetze.Monat[2], i * 99, i * 100 + 55);
            }
            Installation.Insert(mandant, TableSako, record);
        }
    }
    static void Put(SollHaben &amounts, int soll, int haben)
    {
        const auto field = [](int pfennig) {
            std::string digits = std::to_string(pfennig);
            digits.insert(0, 11 - digits.size(), '0');
            return digits.insert(9, ",");
        };
        SetText(amounts.Soll, field(soll));
        SetText(amounts.Haben, field(haben));
    }
    static VarkWindow MakeReport(int32_t mandant)
    {
        ReportParams params{};
        params.ParamFlags = ParamZeitraum | ParamDaten | ParamKontoArt;
        std::memcpy(params.VonDatum, "310398", 7);
        std::memcpy(params.BisDatum, "310398", 7);
        params.KontoArt = 1;
        return VARK_SummenSaldenListe(mandant, nullptr, &params);
    }
    std::string Path(const std::string &name) const { return Installation.Directory() + "/" + name; }
    static std::string Content(const std::string &path)
    {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

} // namespace

TEST_F(SummenSaldenlistePages, SayWhatWasSent)
{
    if (system("command -v pdftotext >/dev/null 2>&1") != 0) GTEST_SKIP() << "pdftotext is not installed";
    AddAccounts(1, 120);
    realAddData = reportEngine.AddData;
    reportEngine.AddData = AddAndKeep;
    VarkWindow view = MakeReport(1);
    ASSERT_NE(nullptr, view);
    ASSERT_EQ(120u, sentLines.size());
    ASSERT_EQ(1, ExportView(view, Path("susa.pdf").c_str()));
    const std::string text = OutputOf("pdftotext -layout '" + Path("susa.pdf") + "' -");
    const std::vector<std::string> lines = TidyLines(text);

    // Line by line: an account that moved stands there once, in order, with all its amounts; another does
    // not.
    std::vector<std::string> wanted;
    int64_t totals[8] = {};
    int64_t balances[2] = {};
    for (const SentLine &sent : sentLines) {
        if (!sent.IsMoved) continue;
        const int64_t balance = sent.Amounts[6] - sent.Amounts[7];
        const int64_t sides[2] = {balance > 0 ? balance : 0, balance < 0 ? -balance : 0};
        for (int i = 0; i < 8; ++i) {
            totals[i] += sent.Amounts[i];
        }
        balances[0] += sides[0];
        balances[1] += sides[1];
        wanted.push_back(sent.Konto + " " + sent.Name + Read(sent.Amounts, sides));
    }
    ASSERT_EQ(96u, wanted.size());
    std::vector<std::string> shown;
    std::vector<std::string> grand;
    for (const std::string &line : lines) {
        if (line.find("Konto Nummer") != std::string::npos) shown.push_back(line);
        if (line.rfind("Gesamtsumme", 0) == 0) grand.push_back(line);
    }
    EXPECT_EQ(wanted, shown);
    EXPECT_EQ(std::vector<std::string>{"Gesamtsumme" + Read(totals, balances)}, grand);
    EXPECT_NE(std::string::npos, text.find("Seite 3 von 3"));
    EXPECT_NE(std::string::npos, text.find("per 31.03.1998 (Monat: März)"));
}

TEST_F(SummenSaldenlistePages, TwoThreadsMakeTheirReportsAtOnce)
{
    AddAccounts(1, 60);
    AddAccounts(2, 75);
    const auto make = [this](int32_t mandant, const std::string &stem) {
        VarkWindow view = MakeReport(mandant);
        ASSERT_NE(nullptr, view);
        ASSERT_EQ(1, ExportView(view, Path(stem + ".csv").c_str()));
        ASSERT_EQ(1, ExportView(view, Path(stem + ".pdf").c_str()));
        VARK_SchliesseDB();
    };
    make(1, "first");
    make(2, "second");
    constexpr int rounds = 4;
    std::thread one([&] {
        for (int i = 0; i < rounds; ++i) {
            make(1, "one" + std::to_string(i));
        }
    });
    std::thread other([&] {
        for (int i = 0; i < rounds; ++i) {
            make(2, "other" + std::to_string(i));
        }
    });
    one.join();
    other.join();
    EXPECT_NE(Content(Path("first.csv")), Content(Path("second.csv")));
    EXPECT_NE(std::string::npos, Content(Path("first.csv")).find("Konto Nummer 58"));
    for (int i = 0; i < rounds; ++i) {
        const std::string number = std::to_string(i);
        EXPECT_EQ(Content(Path("first.csv")), Content(Path("one" + number + ".csv"))) << i;
        EXPECT_EQ(Content(Path("second.csv")), Content(Path("other" + number + ".csv"))) << i;
        EXPECT_EQ("%PDF", Content(Path("one" + number + ".pdf")).substr(0, 4));
        EXPECT_EQ("%PDF", Content(Path("other" + number + ".pdf")).substr(0, 4));
    }
}

TEST_F(SummenSaldenlistePages, ReadOnlyPlaceKeepsWhatWasThere)
{
    AddAccounts(1, 3);
    VarkWindow view = MakeReport(1);
    ASSERT_NE(nullptr, view);
    std::filesystem::create_directory(Path("readonly"));
    std::ofstream(Path("readonly/susa.pdf")) << "before";
    std::filesystem::permissions(Path("readonly"),
                                 std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    if (geteuid() != 0) {
        EXPECT_EQ(0, ExportView(view, Path("readonly/susa.pdf").c_str()));
        EXPECT_EQ(0, ExportView(view, Path("readonly/new.csv").c_str()));
    }
    EXPECT_EQ(0, ExportView(view, "/proc/susa.csv")) << "read-only for everybody";
    EXPECT_EQ(0, ExportView(view, Path("missing/susa.csv").c_str()));
    EXPECT_EQ("before", Content(Path("readonly/susa.pdf")));
    EXPECT_FALSE(std::filesystem::exists(Path("readonly/new.csv")));
    std::filesystem::permissions(Path("readonly"), std::filesystem::perms::owner_all);
    EXPECT_EQ(1, ExportView(view, Path("readonly/susa.pdf").c_str())) << "the view stays as it was";
}
