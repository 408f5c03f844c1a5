// What a template declares, as plain data: it stands at the head of the spool file, so that whoever lays out
// or draws pages needs nothing but that file. Lengths are hundredths of a millimetre, texts UTF-8.
#pragma once

#include "report-engine/catalogue.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace rs {

inline constexpr int maxColumns = 32;
inline constexpr int maxStyles = 32;
inline constexpr int maxRows = 96;       // that one record may print
inline constexpr int maxFootRows = 8;    // that close a group or the report
inline constexpr int maxSumColumns = 16; // enough for the widest list, and small enough to keep per group
inline constexpr int maxLevels = 6;      // of groups; level 0 is the report as a whole
inline constexpr int maxHeadLines = 6;
inline constexpr int maxDataFields = 64; // of a row of data

// An amount beyond this is an error of the report, not a figure: far below where 64 bits end, so that no
// difference of two amounts can wrap on its way here, and what fits a column.
inline constexpr int64_t maxAmount = 9'999'999'999'999'999; // 99.999.999.999.999,99

enum class Form : uint8_t { text, amount, rate, number, flag };
enum class Align : uint8_t { left, centre, right };
enum class Rule : uint8_t { none, hair, line, twofold };

struct Column {
    char Name[32];    // what rows and exports call it
    char Title[96];   // lines are separated by "\n"
    char Group[48];   // title above several columns, empty for none
    char Heading[96]; // of files; empty for group and title
    int32_t Width;    // 0: the column is in no output
    Form CellForm;
    Align CellAlign;
    bool IsSum;
    bool BlankZero; // a figure of zero is left empty
};

// A column of no width carries data for files alone.
constexpr bool IsShown(const Column &column) { return column.Width > 0; }

// What a row of data holds, for files that are read by programs.
struct DataField {
    char Name[32];
    char Heading[96];
    Form CellForm;
};

struct Style {
    char Name[24];
    int32_t Height;
    int32_t FontSize; // hundredths of a point
    int32_t Indent;   // of its texts
    Rule Above;
    Rule Below;
    uint8_t Role;  // the built-in style that it goes back to
    uint8_t Shade; // per cent of black behind the row
    bool Bold;
    bool Italic;
    bool Counts; // its amounts enter the sums
};

// The styles that the engine itself uses; a template may change their looks.
enum BuiltInStyle : uint8_t {
    lineStyle,
    textStyle,
    headStyle,
    sumStyle,
    totalStyle,
    carryStyle,
    titleStyle,
    subtitleStyle,
    columnStyle,
    footStyle,
    builtInStyles
};

struct KindRule {
    bool IsDeclared;
    bool NewPage; // an opener that starts a page
    bool Keep;    // an opener whose group stays on one page if it fits on one
    bool IsOrdered;
    bool Beside;    // an opener whose second group stands in the right half, beside the first
    bool HasAgain;  // an opener one of whose rows is repeated at the head of the group's further pages
    uint8_t Again;  // the style of that row
    uint8_t Level;  // of the group that a record of this kind opens, 0 for none
    uint8_t Closes; // the level that a record which opens none closes with all inside it, 0 for none
    uint8_t RowCount;
    uint8_t FootCount; // rows that close the group
    uint8_t Rows[maxRows];
    uint8_t FootRows[maxFootRows];
};

// What is printed where a page ends before the sums are made: an empty text means no such row.
struct CarryRule {
    bool IsUsed;
    uint8_t Level;  // of the group that is carried forward, 0 for the whole report
    uint8_t Column; // in which the label stands
    char PageSum[48];
    char Down[48];
    char Up[48];
};

struct Definition {
    char ReportId[32];
    char Title[96];
    char Font[64];
    int32_t FontSize; // hundredths of a point
    int32_t PageWidth;
    int32_t PageHeight;
    int32_t Top;
    int32_t Right;
    int32_t Bottom;
    int32_t Left;
    int32_t Gap; // between the halves of a page; 0 where a page is one
    uint8_t HeadLines;
    uint8_t FootLines;
    uint8_t ColumnTitleLines; // without the line of group titles; 0 when no column has a title
    bool HasColumnGroups;
    uint8_t ColumnCount;
    uint8_t StyleCount;
    uint8_t SumCount;
    uint8_t FinishCount;
    uint8_t DataFieldCount;
    uint8_t FinishRows[maxFootRows];
    char Empty[96];                    // stands in a report without rows; empty for nothing
    uint8_t SumColumns[maxSumColumns]; // sum number to column
    Column Columns[maxColumns];
    Style Styles[maxStyles];
    KindRule Kinds[kindCount];
    CarryRule Carry;
    DataField DataFields[maxDataFields];
    uint64_t RightAt; // where in the spool the items of the right halves begin; 0 for none
};

static_assert(std::is_trivially_copyable_v<Definition>);

// Lines of a column's title; 0 for none.
constexpr int TitleLines(const char *title)
{
    if (title[0] == 0) return 0;
    int lines = 1;
    for (; *title != 0; ++title) {
        if (*title == '\n') ++lines;
    }
    return lines;
}

inline constexpr int32_t gapUnderHead = 200; // between page head and column titles
inline constexpr int32_t gapUnderTitles = 50;
inline constexpr int32_t gapOverFoot = 150;

// Heights with their gaps; 0 of what there is none of.
constexpr int32_t HeadHeight(const Definition &definition)
{
    if (definition.HeadLines == 0) return 0;
    return definition.Styles[titleStyle].Height +
           (definition.HeadLines - 1) * definition.Styles[subtitleStyle].Height + gapUnderHead;
}

// With the line of groups where there is one.
constexpr int32_t ColumnTitlesHeight(const Definition &definition)
{
    const int32_t lines = definition.ColumnTitleLines + (definition.HasColumnGroups ? 1 : 0);
    return lines == 0 ? 0 : lines * definition.Styles[columnStyle].Height + gapUnderTitles;
}

// Of all lines of the foot.
constexpr int32_t FootHeight(const Definition &definition)
{
    if (definition.FootLines == 0) return 0;
    return definition.FootLines * definition.Styles[footStyle].Height + gapOverFoot;
}

// What is left for columns: of the page, or of each of its halves.
constexpr int32_t RowWidth(const Definition &definition)
{
    const int32_t width = definition.PageWidth - definition.Left - definition.Right;
    return definition.Gap > 0 ? (width - definition.Gap) / 2 : width;
}

// What is left for rows.
constexpr int32_t BodyHeight(const Definition &definition)
{
    return definition.PageHeight - definition.Top - definition.Bottom - HeadHeight(definition) -
           ColumnTitlesHeight(definition) - FootHeight(definition);
}

// What headings that are repeated at the head of a page take at the most: one of every level.
constexpr int32_t AgainHeight(const Definition &definition)
{
    int32_t highest[maxLevels + 1] = {};
    for (const KindRule &rule : definition.Kinds) {
        const int32_t height = rule.HasAgain ? definition.Styles[rule.Again].Height : 0;
        if (height > highest[rule.Level]) highest[rule.Level] = height;
    }
    int32_t sum = 0;
    for (const int32_t height : highest) {
        sum += height;
    }
    return sum;
}

} // namespace rs
