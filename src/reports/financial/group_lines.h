// What Bilanz and Gewinn- und Verlustrechnung share: the controls of their dialogs, the period that they
// compare with, and the line of a group.
#pragma once

#include "src/frame/held_tables.h"
#include "src/reports/frame/report_run.h"
#include "src/walks/other_year.h"
#include "src/walks/tree_walk.h"

#include <array> // std::size
#include <cstdint>

namespace vark {

// The dialogs' own controls: levels, accounts, and the form of the groups.
inline constexpr int controlFirstLevel = 1002; // radio buttons
inline constexpr int controlSecondLevel = 1003;
inline constexpr int controlThirdLevel = 1004;
inline constexpr int controlStructure = 1041; // check boxes
inline constexpr int controlOnlyMoved = 1042;
inline constexpr int controlWithAccounts = 1047;
inline constexpr int controlFirstBelowSecond = 1048;

inline constexpr ReportOption structureRows[] = {
    {OptionKind::Radio, controlFirstLevel, "1", "bis &Ebene", false, 0, 0},
    {OptionKind::Radio, controlSecondLevel, "2", nullptr, false, 0, 0},
    {OptionKind::Radio, controlThirdLevel, "3", nullptr, true, 0, 0},
    {OptionKind::Check, controlWithAccounts, "mit &Konten", "Darstellung", true, 0, 0},
    {OptionKind::Check, controlOnlyMoved, "nur bebu&chte Konten", nullptr, false, controlWithAccounts, 0},
    {OptionKind::Check, controlFirstBelowSecond, "1. Ebene &unter 2. Ebene", nullptr, false, 0, 0},
    {OptionKind::Check, controlStructure, "Konten&struktur", nullptr, false, 0, 0},
};
inline constexpr OptionTable structureOptions = {structureRows, static_cast<int>(std::size(structureRows))};

// Of a report's Before: "1. Ebene unter 2. Ebene" starts as the Mandant has it.
bool StartStructureOptions(ReportRun &run);

// What was chosen with them, as the headers of the reports carry it.
struct StructureChoice {
    int32_t Ebene; // 1 to 3
    uint32_t MitKonten;
    uint32_t NurBebuchte;
    uint32_t ErsteEbeneUnter;
    uint32_t Kontenstruktur;
};

StructureChoice StructureChoiceOf(const ReportRun &run);

// The period that a report compares with, and the tables in which its accounts and postings are read.
struct Comparison {
    const PeriodSelection *Period; // null: nothing is compared
    CompareTables Tables;
};

// Finds the comparison of a run, once the year of the report was selected; another year's tables are held.
// False when they cannot be opened.
bool HoldComparison(HeldTables &held, const ReportRun &run, Comparison &comparison);

// The titles of the report's period ("per" its last day) and of the comparison's, empty without one.
void FillTitles(const ReportRun &run, const Comparison &comparison, char (&title)[50],
                char (&compareTitle)[50]);

// Sends the line of the group that a scan stands at; a group too deep for one has none. False when the engine
// refused it.
bool SendGroup(const ReportRun &run, const TreeScan &scan);

} // namespace vark
