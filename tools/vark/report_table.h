// The reports: what each of them asks for, by which `vark bericht` offers its options and fills in its
// dialog.
#pragma once

#include "include/vark40.h"
#include "src/model/tables.h"

#include <cstdint>
#include <span>

namespace cli {

// What a report's period can be named by. Quarters and years of the calendar stand for themselves, those of
// the fiscal year begin with it.
enum PeriodForm : unsigned {
    PeriodNone = 0,
    PeriodMonth = 0x01,    // --monat
    PeriodQuarter = 0x02,  // --quartal
    PeriodYear = 0x04,     // --jahr
    PeriodDays = 0x08,     // --von-datum, --bis-datum
    PeriodPer = 0x10,      // --per
    PeriodCalendar = 0x20, // quarters and years are those of the calendar
};

enum class ControlUse : uint8_t {
    Tick,   // the option ticks a check box
    Untick, // the option takes the tick away
    Choose, // its value names one of the buttons
    Type,   // its value is typed
};

struct ChoiceWord {
    const char *Word;
    int Control;
};

// An option that only this report has, and the control of its dialog that stands for it.
struct OwnOption {
    const char *Name;
    ControlUse Use;
    int Control; // 0 for choices, which have one each
    const char *Help;
    std::span<const ChoiceWord> Choices = {};
    size_t MostCharacters = 0; // of what is typed
};

// How many records a report reads, for its progress.
enum class Counted : uint8_t { AccountsOfKind, OpenItemsOfKind, Table };

struct ReportRow {
    const char *Name;  // of the command
    const char *Title; // German
    VarkWindow (*Make)(int32_t mandant, ReportParams *params);
    int Dialog;
    unsigned Periods = PeriodNone; // of PeriodForm
    bool IsCompared = false;       // a second page of its dialog has a period to compare with
    unsigned Kontoarten = 0;       // that a range can be of; 0: no range
    std::span<const OwnOption> Options = {};
    Counted Progress = Counted::Table;
    vark::TableId Table = vark::TableSako; // that is counted
    bool LocksPeriod = false;              // once it has been printed
    const char *Example;                   // options behind --mandant 1
};

// In the order in which they are listed.
std::span<const ReportRow> ReportTable();

} // namespace cli
