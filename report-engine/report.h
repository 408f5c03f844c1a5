// A report: a template in its sandbox, the spool that it fills, the sums, and what it is in the middle of.
#pragma once

#include "report-engine/catalogue.h"
#include "report-engine/definition.h"
#include "report-engine/fields.h"
#include "report-engine/layout.h"
#include "report-engine/ordering.h"
#include "report-engine/sandbox.h"
#include "report-engine/spool.h"

#include <cstddef>
#include <cstdint>
#include <pthread.h>

namespace rs {

inline constexpr int maxFields = 96; // of one record
inline constexpr int maxOrderFields = 6;
inline constexpr int maxLoose = 2000; // what a record may write apart from rows
inline constexpr int64_t maxBookmarks = 100'000;
inline constexpr int maxWordLists = 8;
inline constexpr int maxAbout = 8;      // texts that every row of a file is about
inline constexpr int maxLateCells = 32; // sums printed in heads, still to be filled in
inline constexpr size_t maxTemplateSize = 1 << 20;

// A field by which records of a kind are put in order.
struct OrderField {
    uint16_t Number; // of the kind's fields
    bool IsFalling;
};

// What a template says about a kind beyond its rows. References are into Lua's registry, 0 for none.
struct KindCode {
    int FieldNames;
    int Emit;
    int CloseEmit;
    bool TakesGroup; // Emit asks for the record that opened the group around
    uint16_t FieldCount;
    uint16_t KeyWidth; // of an ordered kind
    uint8_t OrderCount;
    OrderField Order[maxOrderFields];
    Field Fields[maxFields];
    uint8_t ChangeCount; // fields of an opener without a change in which Emit is not called
    uint8_t Changes[maxOrderFields];
    // The field that goes to a column, or to a field of data, by itself: the one of its name, -1 for none.
    int8_t ColumnFields[maxColumns];
    int8_t DataFields[maxDataFields];
};

// A group, as its record has opened it. It stays as it is when it closes, until the next one of its level.
struct OpenGroup {
    bool IsKept; // there was one
    uint8_t Kind;
    bool HasLent; // the first row in it has taken what the record lends
    int Fields;   // of the record, as a table for functions that ask for it; 0 until the first does
    char Record[maxRecordSize];
};

// A file that the template shares with others, kept for copies of the report.
struct SharedSource {
    char Name[48];
    char *Source; // owned
    size_t Length;
};

inline constexpr int maxShared = 4;

// A sum that stands in the head of its own group: its place in the spool is filled in when the group closes.
struct LateCell {
    uint64_t Offset;
    uint8_t Level;
    uint8_t Sum;
};

enum class ReportState : uint8_t { declaring, open, finished, failed };

struct Report {
    pthread_mutex_t Lock; // held by whoever works with the report; a finished one is only read
    int References;       // guarded by the handle table
    ReportState State;

    char *Path; // of the template, for messages and copies
    char *Source;
    size_t SourceLength;
    SharedSource Shared[maxShared];
    int SharedCount;
    int SharesUsed; // calls of share so far
    const CatalogueRow *Catalogue;

    Definition Def;
    KindCode Kinds[kindCount];
    int FinishEmit;
    int StyleNames;  // style name to number
    int ColumnNames; // list of column names
    int DataNames;   // list of names of data fields
    WordList WordLists[maxWordLists];
    int WordListCount;
    bool HasPage;
    bool HasColumns;

    Sandbox Box;
    Spool Store;
    RowMarker Marker;
    Layout Counted;    // lays the rows out as they come, for the number of pages alone
    HalfLayout Half;   // the same where pages have halves, for the one that is being printed
    RowSpot LeftEnd;   // where the last row of the left halves stands by itself
    bool HasLeft;      // the group of the left halves has begun
    int64_t PageCount; // of a finished report
    Ordering Waiting;  // records that are not printed before the last of their run
    int WaitingKind;   // -1 for none

    // What the function that runs may print.
    bool IsPrinting;
    int PrintingKind;      // -1 while the report is finished
    uint8_t PrintingLevel; // of the head that is printed, 0 for none
    const uint8_t *Expected;
    uint8_t ExpectedCount;
    uint8_t ExpectedNext;
    bool PrintedRows;
    bool HasRows; // the report
    uint8_t HeadLinesPrinted;
    uint8_t FootLinesPrinted;
    int LooseCount; // what the record has written apart from rows
    int64_t Bookmarks;

    OpenGroup Groups[maxLevels + 1]; // by level; those that Marker says are open
    int64_t Sums[maxLevels + 1][maxSumColumns];
    int64_t Counts[maxLevels + 1];
    LateCell Late[maxLateCells];
    int LateCount;

    bool ItemHasControls; // in a text of one of its cells
    char ItemData[maxItemSize];
};

// Loads the template. Null on failure, which has been told. The caller owns the report.
Report *CreateReport(const char *path, const char *reportId);
// `sharing` is a report on the same template whose shared files are taken as they were, or null.
Report *CreateReportFromSource(const char *path, const char *source, size_t length, const char *reportId,
                               const Report *sharing = nullptr);

void DestroyReport(Report *report);

// The following are called with the report's lock held.

// One record; false on failure, which has been told.
bool AddRecord(Report &report, int kind, const void *record);

// Closes what is open and writes the rest of the spool; true also for a report that is finished already.
bool FinishReport(Report &report);

} // namespace rs
