#include "src/model/account_records.h"
#include "src/model/posting_records.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace vark;

namespace {

// A record whose bytes count up, so that a field tells where it lies.
template <class Record> Record Counted()
{
    unsigned char bytes[sizeof(Record)];
    for (size_t i = 0; i < sizeof bytes; ++i) {
        bytes[i] = static_cast<unsigned char>(i % 251);
    }
    Record record;
    std::memcpy(&record, bytes, sizeof record);
    return record;
}

int At(char byte) { return static_cast<unsigned char>(byte); }

} // namespace

TEST(AccountRecords, MonthMOfASachkontoLiesAt153And166Plus26M)
{
    const auto sako = Counted<SakoRecord>();
    for (int m = 1; m <= 12; ++m) {
        EXPECT_EQ((153 + 26 * m) % 251, At(sako.Umsaetze.Monat[m - 1].Soll[0]));
        EXPECT_EQ((166 + 26 * m) % 251, At(sako.Umsaetze.Monat[m - 1].Haben[0]));
    }
}

TEST(AccountRecords, MonthMOfAPersonalAccountLiesAt234And247Plus26M)
{
    const auto debi = Counted<PersonalRecord>();
    for (int m = 1; m <= 12; ++m) {
        EXPECT_EQ((234 + 26 * m) % 251, At(debi.Umsaetze.Monat[m - 1].Soll[0]));
        EXPECT_EQ((247 + 26 * m) % 251, At(debi.Umsaetze.Monat[m - 1].Haben[0]));
    }
}

TEST(AccountRecords, PostingCountOfMonthMIsLittleEndianAt489And570Plus2M)
{
    const auto sako = Counted<SakoRecord>();
    const auto debi = Counted<PersonalRecord>();
    for (int m = 1; m <= 12; ++m) {
        const int sakoAt = 489 + 2 * m;
        const int debiAt = 570 + 2 * m;
        EXPECT_EQ(sakoAt % 251 + 256 * ((sakoAt + 1) % 251),
                  static_cast<uint16_t>(sako.Umsaetze.Buchungszahl[m - 1]));
        EXPECT_EQ(debiAt % 251 + 256 * ((debiAt + 1) % 251),
                  static_cast<uint16_t>(debi.Umsaetze.Buchungszahl[m - 1]));
    }
}

TEST(PostingRecords, FirstTeilbuchungOfABatIsAWholeSplitImage)
{
    const auto bat = Counted<BatRecord>();
    SplitRecord split;
    std::memcpy(&split, reinterpret_cast<const char *>(&bat) + 35, sizeof split);
    EXPECT_EQ(0, std::memcmp(&split, &bat.Teil, sizeof split));
}
