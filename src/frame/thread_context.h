// Everything that belongs to the calling thread: engine handles, the Mandant in force, the message flag, the
// posting in progress. Nothing of it is shared, so nothing here is locked.
#pragma once

#include "include/vark40.h"
#include "src/model/account_records.h"
#include "src/model/tables.h"

#include <cstddef>
#include <cstdint>

namespace vark {

// What the engine keeps a place in a file with; opaque to us.
struct PositionBlock {
    char Bytes[128];
};

// The value of a key as it goes to the engine, unused bytes zero.
struct KeyBuffer {
    char Bytes[41];
};

// What the record manager answered while a transaction was open, to be shown when it is over.
struct HeldReport {
    int16_t Status;
    bool IsInUse;   // shown as message 1420
    char Path[256]; // of the table that did not open, else empty
};

// The head of a heap block that goes with its thread unless it is freed before.
struct ThreadBlock {
    ThreadBlock *Next;
    ThreadBlock *Previous; // the list's own head for the first one
};

struct ThreadContext {
    // Mandant selection
    int32_t CurrentMandant;   // -1 when none is bound
    int32_t FirstFiscalMonth; // calendar month 1..12 in which the fiscal year begins
    int32_t VatIdPresent;     // 1 when the Mandant has a USt-IdNr
    int32_t CostAccountingOn;
    int32_t CostsRequired;  // GuV postings must carry costs
    char WorkYear[5];       // year directory in use, "1998"
    char MandantYear[5];    // last postable year; tables 12 to 27 always follow it
    char FirstOpenYear[5];  // first postable year, empty when only MandantYear is
    char PreviousYear[5];   // WorkYear less one
    char MandantSuffix[12]; // Mandant number less one, empty for Mandant 1
    char YearDirectory[6];  // separator and WorkYear
    char DefaultLand[6];
    char MandantWaehrung[6];
    char TodayPacked[9]; // DDMMJJ, calendar month, year from 1980
    char TodayShort[9];  // TT.MM.JJ
    char TodayLong[11];  // TT.MM.JJJJ

    // Messages
    int32_t ShowMessages; // 0 silent, as the latest export's caller wished

    // Beliefs that were broken since the thread's last export began; nothing is written while there are any
    int32_t BrokenBeliefs;

    // Record store
    int32_t PathOverrideOn;
    char PathOverride[260]; // directory of every table while PathOverrideOn
    uint16_t LockBias;      // added to the next biased read, then cleared
    int16_t TransactionDepth;
    int32_t HoldOpen;          // no table is closed while a transaction runs
    HeldReport HeldReports[4]; // what comes behind the first ones follows from them
    int32_t HeldReportCount;
    PositionBlock PositionBlocks[slotCount];
    KeyBuffer KeyBuffers[slotCount]; // last key sent
    int32_t OpenCounts[slotCount];
    uint32_t FreeSlotLengths[2]; // record lengths of what lies under slots 29 and 30

    // Tax lookup
    StekeRecord TaxRow;

    // Reading: one cursor a thread, over postings, accounts or open items
    int32_t CursorKind;    // number of the table that is read, -1 for none
    int32_t CursorMandant; // Mandant and year that it is read in, whatever was selected since
    char CursorYear[5];
    uint32_t SplitPartCounter;   // number of the part of a split posting, 0 outside one
    KeyBuffer CursorKey;         // key 0 of the record that is delivered next
    AccountNumber CursorAccount; // open items of this account only, empty for all

    // Rate dialog: the rate that a posting lacks, which the dialog offers for entry
    PackedDate PendingRateDate; // empty when there is none
    char PendingWaehrung[5];

    // Reports
    uint32_t ReportViewExStyle;
    uint32_t ReportViewStyle;
    char *ReportViewTitle;  // owned
    char *ReportFrameClass; // owned, may be null
    VarkWindow ReportFrameWindow;
    uint32_t LastPrintResult;
    ThreadBlock Blocks; // head of the list, itself no block

    // Split posting
    SplitEingabe SplitHeader;
    TeilbuchungEingabe *SplitOverflow; // owned; Teilbuchungen from the eleventh on
    int16_t SplitCapacity;             // entries that SplitOverflow holds
    int32_t SplitOpen;
    int32_t SplitViaEnde;
};

// Makes room for a context a thread. False when the system has none left. Called once.
bool PrepareThreadContexts();

// The calling thread's context, made at its first use; null when there is no thread slot or no memory.
ThreadContext *GetThreadContext();

// A zeroed block of the thread that begins with its ThreadBlock; null without memory. FreeThreadBlock frees
// it, and so does the end of the thread.
void *AllocateThreadBlock(ThreadContext &context, size_t size);
void FreeThreadBlock(ThreadBlock *block);

} // namespace vark
