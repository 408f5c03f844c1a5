#include "tools/common/text_table.h"
#include "tools/common/texts.h"

#include <gtest/gtest.h>
#include <sstream>

using namespace tools;

TEST(ToolTexts, ColumnsCountCharactersAndNotBytes)
{
    EXPECT_EQ(4u, Columns("Öhre"));
    EXPECT_EQ(1u, Columns("€"));
    EXPECT_EQ(1u, Columns("u\u0308"));
}

TEST(ToolTexts, FittingKeepsTheWidthWithUmlauts)
{
    EXPECT_EQ("Öl  ", Left("Öl", 4));
    EXPECT_EQ("  Öl", Right("Öl", 4));
    EXPECT_EQ("Öls…", Left("Ölsardinen", 4));
}

TEST(ToolTexts, MalformedUtf8IsTold)
{
    EXPECT_TRUE(IsUtf8("Bücher € \U0001F4D6"));
    EXPECT_FALSE(IsUtf8("B\xFC"
                        "cher"));
    EXPECT_FALSE(IsUtf8("\xC3"));
    EXPECT_TRUE(IsUtf8("\uFFFD")); // the replacement character itself is well-formed
}

TEST(ToolTexts, RecordFieldsEndAtTheirWidth)
{
    const char full[3] = {'a', 'b', '\xFC'};
    EXPECT_EQ("abü", FieldText(full));
}

TEST(TextTable, ColumnsAreAlignedAndEmptyOnesLeftOut)
{
    TextTable table{{{"Nr", Align::Right}, {"leer"}, {"Name"}, {"Betrag", Align::Right}}, {}};
    table.Add({"7", "", "Möbel", "1,00"});
    table.Add({"123", "", "Öl", "1.000,00"});
    std::ostringstream out;
    table.Print(out);
    EXPECT_EQ(" Nr  Name     Betrag\n"
              "───  ─────  ────────\n"
              "  7  Möbel      1,00\n"
              "123  Öl     1.000,00\n",
              out.str());
}

TEST(TextTable, CsvQuotesWhatNeedsIt)
{
    TextTable table{{{"a"}, {"b"}}, {}};
    table.Add({"x;y", "sag \"ja\""});
    table.Add({"schlicht"});
    std::ostringstream out;
    table.PrintCsv(out);
    EXPECT_EQ("a;b\n\"x;y\";\"sag \"\"ja\"\"\"\nschlicht;\n", out.str());
}
