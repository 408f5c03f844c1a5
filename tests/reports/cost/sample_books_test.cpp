// The cost reports on sample books: what falls on a Kostenstelle is the same in the list of its months, in
// the journal and in the split.
#include "include/vark40.h"
#include "tests/support/recording_engine.h"
#include "tests/support/report_calls.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>

using namespace vark;
using namespace vark::test;

namespace {

using Sums = std::map<std::string, int64_t>; // by Kostenstelle, in Pfennig, without zeros

struct SampleBooks : testing::Test {
    std::string directory;
    RecordingEngine sent;

    void SetUp() override
    {
        char place[] = "/tmp/vark-cost-XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(place));
        directory = place;
        const std::string books = directory + "/books";
        ASSERT_EQ(0,
                  std::system((BOOKS_PROGRAM " beispiel " + books + " --buchungen 600 >/dev/null").c_str()));
        setenv("VARK_CONFIG_DIR", books.c_str(), 1);
        setenv("VARK_UI", "headless", 1);
        setenv("VARK_HEUTE", "15.06.1998", 1);
        ASSERT_EQ(1, VARK_Status());
        sent.Install();
    }
    void TearDown() override
    {
        VARK_SchliesseDB();
        std::filesystem::remove_all(directory);
    }

    template <typename Export> void Call(Export call, int mandant, int code, int jahr)
    {
        ReportParams params = PeriodOf(code, jahr);
        sent.Calls.clear();
        ASSERT_NE(nullptr, call(mandant, nullptr, &params));
    }
    Sums OfMonths(int mandant, int code, int jahr)
    {
        Call(VARK_KostenSaldenListe, mandant, code, jahr);
        Sums sums;
        for (const std::string &record : sent.Records(1)) {
            auto fields = FieldsOf(record);
            if (const int64_t sum = PfennigOf(fields["Summe"]); sum != 0) sums[fields["Nummer"]] = sum;
        }
        return sums;
    }
    Sums OfJournal(int mandant, int code, int jahr)
    {
        Call(VARK_Kostenjournal, mandant, code, jahr);
        Sums sums;
        for (const std::string &record : sent.Records(1)) {
            auto fields = FieldsOf(record);
            EXPECT_EQ("1", fields["Final"]);
            for (const char *object : {"Kostenobjekt1", "Kostenobjekt2"}) {
                if (!fields[object].empty())
                    sums[fields[object]] += PfennigOf(fields["Soll"]) - PfennigOf(fields["Haben"]);
            }
        }
        std::erase_if(sums, [](const auto &sum) { return sum.second == 0; });
        return sums;
    }
    Sums OfSplit(int mandant, int code, int jahr)
    {
        Call(VARK_KostenAufteilung, mandant, code, jahr);
        Sums sums;
        std::string kostenstelle;
        for (const std::string &call : sent.Calls) {
            if (call[0] != '1' && call[0] != '2') continue;
            auto fields = FieldsOf(call.substr(4));
            if (call[0] == '1') kostenstelle = fields["Nummer"];
            for (const auto &[name, value] : fields) {
                if (name.ends_with("Soll")) sums[kostenstelle] += PfennigOf(value);
                if (name.ends_with("Haben")) sums[kostenstelle] -= PfennigOf(value);
            }
        }
        std::erase_if(sums, [](const auto &sum) { return sum.second == 0; });
        return sums;
    }
};

} // namespace

TEST_F(SampleBooks, CostsAreTheSameInAllThreeReports)
{
    size_t filled = 0;
    for (int mandant = 1; mandant <= 3; ++mandant) {
        for (const int jahr : {17, 18}) {
            for (const int code : {1, 3, 12, 13, 14, 17}) {
                const std::string what = "mandant " + std::to_string(mandant) + " jahr " +
                                         std::to_string(jahr) + " zeitraum " + std::to_string(code);
                const Sums ofMonths = OfMonths(mandant, code, jahr);
                EXPECT_EQ(ofMonths, OfJournal(mandant, code, jahr)) << what;
                EXPECT_EQ(ofMonths, OfSplit(mandant, code, jahr)) << what;
                filled += ofMonths.size();
            }
        }
    }
    EXPECT_GT(filled, 50u);
}
