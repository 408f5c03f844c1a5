#include "src/reports/financial/group_lines.h"

#include "text/fixed_text.h"

namespace vark {

using text::CopyText;

namespace {

#pragma pack(push, 1)

struct GroupLine {
    uint32_t Summenzeile; // 0 or 1
    char Titel[28];
};

#pragma pack(pop)

static_assert(sizeof(GroupLine) == 32);

uint32_t FlagOf(const ReportRun &run, int control) { return IsChosen(run, control) ? 1 : 0; }

} // namespace

bool StartStructureOptions(ReportRun &run)
{
    OptionOf(run, controlFirstBelowSecond).Checked = run.Mandant.UStVAVariante != 0;
    return true;
}

StructureChoice StructureChoiceOf(const ReportRun &run)
{
    const int32_t ebene = IsChosen(run, controlFirstLevel) ? 1 : IsChosen(run, controlSecondLevel) ? 2 : 3;
    return {ebene, FlagOf(run, controlWithAccounts), FlagOf(run, controlOnlyMoved),
            FlagOf(run, controlFirstBelowSecond), FlagOf(run, controlStructure)};
}

bool HoldComparison(HeldTables &held, const ReportRun &run, Comparison &comparison)
{
    comparison = {};
    if (!run.Choice.Vergleich) return true;
    comparison.Period = &run.Choice.ComparePeriod;
    return HoldCompareYear(held, comparison.Period->JahrText, comparison.Tables);
}

void FillTitles(const ReportRun &run, const Comparison &comparison, char (&title)[50],
                char (&compareTitle)[50])
{
    PeriodTitle text;
    BuildPeriodTitle(*run.Context, run.Choice.Period, text, true, false);
    CopyText(title, text);
    CopyText(compareTitle, "");
    if (comparison.Period == nullptr) return;
    BuildPeriodTitle(*run.Context, *comparison.Period, text, false, false);
    CopyText(compareTitle, text);
}

bool SendGroup(const ReportRun &run, const TreeScan &scan)
{
    const int kind = KindOfGroup(scan.Depth);
    if (kind == 0) return true;
    GroupLine line{};
    line.Summenzeile = scan.Node.Summenzeile & 1u;
    CopyText(line.Titel, scan.Node.Text);
    return AddReportRecord(run.Report, kind, &line);
}

} // namespace vark
