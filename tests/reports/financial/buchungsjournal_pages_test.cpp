// The Buchungsjournal as it is read, through the real report engine.
#include "include/vark40.h"
#include "report-engine/include/rs.h"
#include "src/frame/lifecycle.h"
#include "src/frame/report_engine.h"
#include "src/platform/platform.h"
#include "src/reports/frame/report_params.h"
#include "tests/support/books.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

using namespace vark;
using namespace vark::test;

namespace {

struct JournalPages : testing::Test {
    Books books;
    ReportParams params{};

    void SetUp() override
    {
        books.AddMandant(1);
        ASSERT_EQ(1, VARK_Status());
        for (const char *name : {"or_bjou.rs", "or_page.lua"}) {
            std::filesystem::copy_file(std::string(TEMPLATES) + "/" + name, std::string(ReportPath) + name);
        }
        params.ParamFlags = ParamZeitraum | ParamJahr;
        params.Zeitraum = 2;
        params.JahrIndex = 18;
    }
    void TearDown() override { VARK_SchliesseDB(); }

    // The lines of the journal in a form, words parted by one blank each.
    Lines Export(const std::string &form)
    {
        VarkWindow view = VARK_Buchungsjournal(1, nullptr, &params);
        EXPECT_NE(nullptr, view);
        const std::string path = books.Directory() + "/journal." + form;
        const auto exportView = reinterpret_cast<decltype(&RSExportView)>(
            FindEntry(reportEngine.ReportEngineLibrary, "RSExportView"));
        EXPECT_EQ(1, exportView(view, path.c_str()));
        std::ifstream file(path);
        Lines lines;
        for (std::string line; std::getline(file, line);) {
            std::istringstream words(line);
            std::string tidy;
            for (std::string word; words >> word;) {
                tidy += (tidy.empty() ? "" : " ") + word;
            }
            if (!tidy.empty()) lines.push_back(tidy);
        }
        return lines;
    }
};

BubeRecord Sale(int32_t nummer, const std::string &datum)
{
    BubeRecord record = MakeBube(nummer, datum, "1000", "8400", "000000116,00");
    SetText(record.Haben, "000000100,00");
    SetText(record.Steuerkonto, Justified("1775"));
    SetText(record.Steuer, "000000016,00");
    SetText(record.Steuersatz, "16,00");
    return record;
}

} // namespace

TEST_F(JournalPages, SaleShowsItsAmountsAndItsUmsatzsteuer)
{
    books.Insert(1, TableBube, Sale(1, "020218"));
    const Lines lines = Export("txt");
    EXPECT_EQ("1 02.02.1998 02.02.1998 B1 1000 8400 1775 16,00 Buchung 1 116,00 100,00 16,00", lines.at(5));
    EXPECT_EQ("Gesamtsumme 116,00 100,00 16,00 0,00", lines.back());
}

TEST_F(JournalPages, SplitNamesItsMainAccountOnceAndItsFoldedLinesComeAsOne)
{
    for (int32_t n = 1; n <= 4; ++n) {
        BubeRecord part = MakeBube(n, "020218", "1000", "840" + std::to_string(n), "000000010,00");
        part.Status = static_cast<uint16_t>(BubeSplitSoll | (n > 2 ? BubeGefaltet : 0));
        part.Anzahl = n == 1 ? 3 : 0;
        books.Insert(1, TableBube, part);
    }
    BubeRecord alone = MakeBube(5, "030218", "1200", "8500", "000000007,00");
    alone.Status = BubeGefaltet;
    books.Insert(1, TableBube, alone);
    const Lines text = Export("txt");
    EXPECT_EQ((Lines{"1 02.02.1998 02.02.1998 B1 1000 8401 1000 Buchung 1 10,00 10,00",
                     "2 1000 8402 Buchung 2 10,00 10,00", "3 1000 8403 Buchung 3 20,00 20,00",
                     "5 1200 8500 Buchung 5 7,00 7,00", "Gesamtsumme 47,00 47,00 0,00 0,00"}),
              Lines(text.begin() + 5, text.end()));
    const Lines csv = Export("csv");
    ASSERT_EQ(5u, csv.size());
    EXPECT_EQ(
        "2;02.02.1998;02.02.1998;B1;Split;1000;1000;8402;;0,00;Buchung 2;;10,00;10,00;10,00;10,00;0,00;0,00",
        csv[2]);
    EXPECT_EQ("3;02.02.1998;02.02.1998;B1;Summe;1000;1000;8403;;;Buchung 3;;20,00;20,00;;;;", csv[3]);
    EXPECT_EQ("5;;;;Summe;;1200;8500;;;Buchung 5;;7,00;7,00;;;;", csv[4])
        << "a folded posting by itself has no head";
}

TEST_F(JournalPages, UsersHaveAColumnOnlyWhereThereAreSome)
{
    books.Insert(1, TableBube, Sale(1, "020218"));
    EXPECT_EQ(std::string::npos, Export("txt").at(3).find("Benutzer"));
    VARK_SchliesseDB();
    UserRecord user{};
    std::memcpy(user.Schluessel, "ANN", 3);
    SetText(user.Name, "Anna Petersen");
    books.Insert(1, TableUser, user);
    const Lines lines = Export("txt");
    EXPECT_NE(std::string::npos, lines.at(3).find("Benutzer"));
}

TEST_F(JournalPages, PeriodWithoutPostingsSaysSo)
{
    EXPECT_EQ("Keine Buchungen im Zeitraum.", Export("txt").back());
}
