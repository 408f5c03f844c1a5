#include "src/model/tables.h"

#include <gtest/gtest.h>

using namespace vark;

// Kept by hand, apart from the catalogue: these numbers are the file format.
TEST(Tables, EveryTableHasItsStemAndRecordLength)
{
    const struct {
        TableId Table;
        const char *Stem;
        int RecordLength;
    } rows[] = {
        {TableSako, "sako", 746},
        {TableBube, "bube", 219},
        {TableKred, "kred", 956},
        {TableDebi, "debi", 956},
        {TableSteke, "steke", 34},
        {TableUnused, "", 0},
        {TableFista, "fista", 998},
        {TableGuvauf, "guvauf", 64},
        {TableBilaktau, "bilaktau", 64},
        {TableBilpasau, "bilpasau", 64},
        {TableKore, "kore", 495},
        {TableKobu, "kobu", 130},
        {TableBat, "bat", 500},
        {TableBank, "bank", 64},
        {TableUeberw, "ueberw", 256},
        {TableOpkred, "opkred", 525},
        {TableOpdebi, "opdebi", 525},
        {TableStapel, "stapel", 64},
        {TableKurse, "kurse", 58},
        {TableButext, "butext", 64},
        {TableBuscha, "buscha", 181},
        {TableUser, "user", 128},
        {TableSplit, "split", 143},
        {TableKoscha, "koscha", 110},
        {TableKoschaze, "koschaze", 133},
        {TableZahlziel, "zahlziel", 146},
        {TableBumak, "bumak", 270},
        {TableMahntext, "mahntext", 1398},
        {TablePreviousSako, "sako", 746},
        {SlotFree29, "", 0},
        {SlotFree30, "", 0},
    };
    ASSERT_EQ(std::size(rows), std::size(tableCatalogue));
    for (unsigned table = 0; table < std::size(rows); ++table) {
        EXPECT_EQ(table, rows[table].Table);
        EXPECT_STREQ(rows[table].Stem, tableCatalogue[table].Stem) << table;
        EXPECT_EQ(rows[table].RecordLength, tableCatalogue[table].RecordLength) << table;
    }
}

TEST(Tables, KeyCodeHoldsTableAndKeyInOneByte)
{
    EXPECT_EQ(66, KeyCode(TableSteke, 2));
    EXPECT_EQ(35, KeyCode(TableSteke, 1));
    EXPECT_EQ(33, KeyCode(TableKred, 1));
    EXPECT_EQ(34, KeyCode(TableDebi, 1));
    EXPECT_EQ(104, KeyCode(TableKobu, 3));
    EXPECT_EQ(122, KeyCode(SlotFree29, 3));
    EXPECT_EQ(156, KeyCode(TableBube, 5));
    EXPECT_EQ(218, KeyCode(TableBube, 7));
    EXPECT_EQ(TableSako, KeyCode(TableSako, 0));
}

TEST(Tables, EveryKeyCodeIsTakenApartAgain)
{
    for (unsigned key = 0; key < 8; ++key) {
        for (unsigned table = 0; table < unsigned{slotCount}; ++table) {
            const TableKeyCode code = KeyCode(table, key);
            EXPECT_EQ(table, TableOf(code)) << "key " << key;
            EXPECT_EQ(key, KeyOf(code)) << "table " << table;
        }
    }
}
