// How much memory a report takes in its host, whatever its length.
#include <gtest/gtest.h>

#include "report_support.h"

using namespace reports;

namespace {

long RssAnonKiB()
{
    for (const std::string &line : LinesOf(ReadFile("/proc/self/status"))) {
        if (line.starts_with("RssAnon:")) return std::stol(line.substr(8));
    }
    return -1;
}

} // namespace

TEST(Memory, IsAsFlatAtTwoHundredThousandLinesAsAtTwoThousand)
{
    const Directory directory;
    long after[2] = {};
    int number = 0;
    for (const int lines : {2'000, 200'000}) {
        const int32_t report = OpenShipped("or_slist.rs", susaId);
        AddSusaHeader(report);
        for (int i = 0; i < lines; ++i) {
            ASSERT_EQ(AddSusaLine(report, {std::to_string(i), "Konto Nummer " + std::to_string(i), 100, 0, 0,
                                           0, 0, 0}),
                      1);
        }
        RSWindow view = OpenView(report);
        ASSERT_EQ(RSExportView(view, directory.At("a.csv").c_str()), 1);
        after[number++] = RssAnonKiB();
        RSCloseReport(report);
    }
    EXPECT_GT(after[0], 0);
    EXPECT_LT(after[1] - after[0], 20 * 1024) << after[0] << " KiB, then " << after[1] << " KiB";
}
