// The tax reports through the real engine and their templates: what stands in the files that it makes.
#include "include/vark40.h"
#include "report-engine/include/rs.h"
#include "src/frame/lifecycle.h"
#include "src/frame/report_engine.h"
#include "tests/support/books.h"
#include "tests/support/report_calls.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

using namespace vark;
using namespace vark::test;

namespace {

struct TaxTemplates : testing::Test {
    Books books;
    MandantOptions options;

    void SetUp() override
    {
        options.UstId = "DE123456789";
        books.AddMandant(1, options);
        books.ChangeMandant(1, [](FistaRecord &mandant) {
            SetText(mandant.Name, "Musterbetrieb");
            SetText(mandant.Steuernummer, "12/345");
        });
        Add("8400", 50, 0, 250050);
        Add("8900", 35, 0, 10000);
        Add("1777", 36, 0, 1500);
        Add("1576", 66, 16075, 0);
        Add("1588", 62, 0, 500); // more was given back than paid
        Add("8300", 86, 50, 0);  // less than a whole amount, on Soll
        for (const char *number : {"10001", "10002"}) {
            PersonalRecord debitor = MakePersonal(number);
            SetText(debitor.UstId, "ATU12345678");
            if (std::string(number) == "10001") SetText(debitor.Umsaetze.Monat[2].Soll, "000001234,56");
            books.Insert(1, TableDebi, debitor);
        }
        EXPECT_EQ(1, VARK_Status());
        for (const auto &entry : std::filesystem::directory_iterator(TEMPLATES)) {
            std::filesystem::copy(entry.path(), ReportPath);
        }
    }
    void TearDown() override { VARK_SchliesseDB(); }

    void Add(const std::string &number, int kennzahl, int64_t soll, int64_t haben)
    {
        SakoRecord account = MakeSako(number);
        account.Kennzahl = static_cast<int16_t>(kennzahl);
        SetText(account.Umsaetze.Monat[2].Soll, AmountOf(soll));
        SetText(account.Umsaetze.Monat[2].Haben, AmountOf(haben));
        books.Insert(1, TableSako, account);
    }
    template <typename Export> std::string FileOf(Export call, const std::string &extension)
    {
        ReportParams params = PeriodOf(3);
        VarkWindow view = call(1, nullptr, &params);
        EXPECT_NE(nullptr, view) << ::testing::PrintToString(books.TakeBoxes());
        const std::string path = books.Directory() + "/report." + extension;
        const auto save = reinterpret_cast<decltype(&RSExportView)>(
            FindEntry(reportEngine.ReportEngineLibrary, "RSExportView"));
        EXPECT_EQ(1, save(view, path.c_str()));
        DestroyWindow(static_cast<HWND>(view));
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    // The line that has a text, with its blanks drawn together.
    static std::string LineWith(const std::string &text, const std::string &part)
    {
        const size_t at = text.find(part);
        if (at == std::string::npos) return "none";
        const size_t begin = text.rfind('\n', at) + 1;
        std::string line;
        for (const char character : text.substr(begin, text.find('\n', at) - begin)) {
            if (character != ' ' || line.empty() || line.back() != ' ') line += character;
        }
        return line;
    }
};

} // namespace

TEST_F(TaxTemplates, FormHasEachBoxInItsRow)
{
    const std::string text = FileOf(VARK_UmsatzSteuerVoranmeldung, "txt");
    EXPECT_EQ("Umsätze zum allgemeinen Steuersatz 50 2.500", LineWith(text, "zum allgemeinen Steuersatz "))
        << text;
    EXPECT_EQ("Umsätze, die anderen Steuersätzen unterliegen 35 100 36 15,00",
              LineWith(text, "anderen Steuersätzen unterliegen"));
    EXPECT_EQ("Umsätze zum ermäßigten Steuersatz 86", LineWith(text, "Umsätze zum ermäßigten"))
        << "a negative zero is an empty box";
    EXPECT_EQ("Vorsteuer aus Rechnungen anderer Unternehmer 66 160,75",
              LineWith(text, "Vorsteuer aus Rechnungen"))
        << "as a deduction, without its sign";
    EXPECT_EQ("Entrichtete Einfuhrumsatzsteuer 62 -5,00", LineWith(text, "Einfuhrumsatzsteuer"));
    EXPECT_NE(std::string::npos, text.find("ersetzt nicht den amtlichen Vordruck"));
    EXPECT_EQ(std::string::npos, text.find("Kodierzeile"));
    EXPECT_EQ(std::string::npos, text.find("Berichtigte"));
}

TEST_F(TaxTemplates, EveryBoxOfTheRecordStandsOnTheForm)
{
    const std::string csv = FileOf(VARK_UmsatzSteuerVoranmeldung, "csv");
    for (const int box :
         {41, 42, 44, 49, 43, 48, 50, 86, 35, 36, 77, 76, 80, 91, 92, 93, 94, 65, 66, 61, 62, 63,
          64, 59, 58, 69, 39, 57, 71, 72, 78, 79, 75, 45, 46, 87, 88, 37, 38, 95, 70, 73, 74}) {
        EXPECT_NE(std::string::npos, csv.find("Kennzahl " + std::to_string(box))) << box;
    }
}

TEST_F(TaxTemplates, DataHasTheBoxesByTheirNumbers)
{
    const std::string whole = FileOf(VARK_UmsatzSteuerVoranmeldung, "json");
    EXPECT_NE(std::string::npos, whole.find("\"50\":2500.00,")) << whole;
    EXPECT_NE(std::string::npos, whole.find("\"66\":160.75,"));
    EXPECT_NE(std::string::npos, whole.find("\"62\":-5.00,"));
    EXPECT_NE(std::string::npos, whole.find("\"berichtigt\":false"));
    books.ChangeMandant(1, [](FistaRecord &mandant) { mandant.UStVAVariante = 1; });
    const std::string exact = FileOf(VARK_UmsatzSteuerVoranmeldung, "json");
    EXPECT_NE(std::string::npos, exact.find("\"50\":2500.50,"));
    EXPECT_NE(std::string::npos, exact.find("\"86\":-0.50,"));
}

TEST_F(TaxTemplates, VerprobungSumsGroupsThatHaveAccounts)
{
    const std::string text = FileOf(VARK_UmsatzSteuerVerprobung, "txt");
    EXPECT_EQ("Summe Kennzahl 50 -2.500,50", LineWith(text, "Summe Kennzahl 50").substr(1)) << text;
    EXPECT_NE(std::string::npos, text.find("Umsatzsteuerkonten"));
    EXPECT_EQ(std::string::npos, text.find("Summe Umsatzsteuerkonten")) << "nothing is under it";
    EXPECT_NE(std::string::npos, text.find("Haben minus Soll"));
}

TEST_F(TaxTemplates, MeldungCountsWhoBought)
{
    const std::string text = FileOf(VARK_ZusammenfassendeMeldung, "txt");
    EXPECT_NE(std::string::npos, text.find("Summe, 1 Meldung ")) << text;
    EXPECT_EQ("10001 K10001 Konto 10001 AT U12345678 1.234,56", LineWith(text, "10001"));
    const std::string json = FileOf(VARK_ZusammenfassendeMeldung, "json");
    EXPECT_NE(std::string::npos, json.find("\"konto\":\"10001\"")) << json;
}
