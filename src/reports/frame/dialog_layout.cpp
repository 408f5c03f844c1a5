#include "src/reports/frame/dialog_layout.h"

#include "src/model/account_records.h"
#include "src/reports/frame/account_range.h"
#include "src/reports/frame/output_choice.h"
#include "src/reports/frame/period_controls.h"
#include "src/reports/frame/tab_dialog.h"
#include "text/windows1252.h"

namespace vark {

using namespace text;
using varkui::DialogControl;
using varkui::DialogControlKind;
using varkui::DialogTable;

namespace {

constexpr int margin = 7;
constexpr int gap = 4;
constexpr int groupWidth = 220;
constexpr int buttonWidth = 54;
constexpr int rowHeight = 14;
constexpr int tabRowHeight = 16;
constexpr int tabBorder = 3;

constexpr const char *monthLabels[12] = {"Januar", "Februar", "März"_w,    "April",   "Mai",      "Juni",
                                         "Juli",   "August",  "September", "Oktober", "November", "Dezember"};
constexpr const char *quarterLabels[4] = {"&1. Quartal", "&2. Quartal", "&3. Quartal", "&4. Quartal"};

// Adds a control; what is returned may be changed until the next one is added.
DialogControl &Add(DialogBuilder &builder, DialogControlKind kind, int id, const char *label, int x, int y,
                   int width, int height, uint32_t style = 0)
{
    DialogControl &control = builder.Controls[builder.Count++];
    control = {kind,
               id,
               label,
               static_cast<int16_t>(x),
               static_cast<int16_t>(y),
               static_cast<int16_t>(width),
               static_cast<int16_t>(height),
               style,
               0};
    return control;
}

DialogControl &AddRadio(DialogBuilder &builder, int id, const char *label, int x, int y, int width,
                        bool beginsGroup)
{
    return Add(builder, DialogControlKind::PlainRadioButton, id, label, x, y, width, 10,
               beginsGroup ? uint32_t{WS_GROUP} : 0);
}

void AddLabel(DialogBuilder &builder, int id, const char *label, int x, int y, int width)
{
    Add(builder, DialogControlKind::Text, id, label, x, y + 2, width, 8);
}

void AddEdit(DialogBuilder &builder, int id, int x, int y, int width)
{
    Add(builder, DialogControlKind::Edit, id, "", x, y, width, 12);
}

void MoveOn(DialogBuilder &builder, int y) { builder.Y = static_cast<int16_t>(y); }

// The controls of a period from `y` on; returns where they end. Months stand in three columns, quarters
// beside them, the year and free dates below.
int AddPeriodControls(DialogBuilder &builder, uint32_t options, bool perOnly, const DialogWords &words, int y)
{
    const int left = builder.Left + 8;
    bool isFirst = true;
    const auto radio = [&builder, &isFirst](int id, const char *label, int x, int top, int width) {
        AddRadio(builder, id, label, x, top, width, isFirst);
        isFirst = false;
    };
    if ((options & PeriodMonths) != 0) {
        for (int month = 0; month < 12; ++month) {
            radio(controlFirstMonth + month, monthLabels[month], left + month / 4 * 52, y + month % 4 * 12,
                  50);
        }
    }
    if ((options & PeriodQuarters) != 0) {
        const int x = (options & PeriodMonths) != 0 ? left + 156 : left;
        for (int quarter = 0; quarter < 4; ++quarter) {
            radio(controlFirstQuarter + quarter, quarterLabels[quarter], x, y + quarter * 12, 52);
        }
    }
    if ((options & (PeriodMonths | PeriodQuarters)) != 0) y += 52;
    if ((options & ~PeriodCalendar) == PeriodYear) {
        AddLabel(builder, -1, words.Jahr, left, y, 64);
        AddEdit(builder, controlYear, left + 66, y, 30);
        y += rowHeight + 2;
    } else if ((options & PeriodYear) != 0) {
        radio(controlWholeYear, (options & PeriodCalendar) != 0 ? "&Kalenderjahr" : "&Gesamtjahr", left,
              y + 1, 64);
        AddLabel(builder, -1, words.Jahr, left + 104, y, 24);
        AddEdit(builder, controlYear, left + 130, y, 30);
        y += rowHeight + 2;
    }
    if ((options & PeriodDayExact) != 0 && perOnly) {
        AddLabel(builder, -1, "&per:", left, y, 24);
        AddEdit(builder, controlBis, left + 30, y, 52);
        y += rowHeight + 2;
    } else if ((options & PeriodDayExact) != 0) {
        radio(controlDayExact, "&Tagesgenau", left, y + 1, 56);
        AddLabel(builder, -1, words.Von, left + 62, y, 18);
        AddEdit(builder, controlVon, left + 80, y, 44);
        AddLabel(builder, -1, words.Bis, left + 128, y, 30);
        AddEdit(builder, controlBis, left + 158, y, 44);
        y += rowHeight + 2;
    }
    return y;
}

} // namespace

DialogBuilder BeginDialog()
{
    DialogBuilder builder{};
    builder.Left = margin;
    builder.Y = margin;
    return builder;
}

// A group box is the first control of its group, and as high as what came into it.
DialogControl &BeginGroup(DialogBuilder &builder, const char *title)
{
    DialogControl &frame =
        Add(builder, DialogControlKind::Group, -1, title, builder.Left, builder.Y, groupWidth, 0);
    MoveOn(builder, builder.Y + 12);
    return frame;
}

void EndGroup(DialogBuilder &builder, DialogControl &frame)
{
    frame.Height = static_cast<int16_t>(builder.Y + 4 - frame.Y);
    MoveOn(builder, builder.Y + 4 + gap);
}

void AddButtonRow(DialogBuilder &builder, const ButtonRow &row)
{
    const int width = (groupWidth - 12) / row.Count;
    for (int i = 0; i < row.Count; ++i) {
        const int x = builder.Left + 8 + i * width;
        if (row.IsRadio) {
            AddRadio(builder, row.Ids[i], row.Labels[i], x, builder.Y, width - 2, i == 0);
        } else {
            Add(builder, DialogControlKind::CheckBox, row.Ids[i], row.Labels[i], x, builder.Y, width - 2, 10,
                WS_GROUP);
        }
    }
    MoveOn(builder, builder.Y + rowHeight);
}

void AddFieldRow(DialogBuilder &builder, int id, const char *label, int characters)
{
    AddLabel(builder, -1, label, builder.Left + 8, builder.Y, 70);
    AddEdit(builder, id, builder.Left + 80, builder.Y, characters * 5 + 8);
    MoveOn(builder, builder.Y + rowHeight + 2);
}

void AddPeriodGroup(DialogBuilder &builder, uint32_t options, bool perOnly, const DialogWords &words)
{
    DialogControl &frame = BeginGroup(builder, words.Zeitraum);
    MoveOn(builder, AddPeriodControls(builder, options, perOnly, words, builder.Y));
    EndGroup(builder, frame);
}

void AddAccountGroup(DialogBuilder &builder, KontoartSet kontoarten, bool hasSingle, const DialogWords &words)
{
    const struct {
        int32_t Kontoart;
        int Id;
        const char *Text;
    } buttons[] = {
        {KontoartSachkonto, controlSachkonten, "Sachkonten"},
        {KontoartKreditor, controlKreditoren, "Kreditoren"},
        {KontoartDebitor, controlDebitoren, "Debitoren"},
        {KontoartKostenstelle, controlKostenstellen, "Kostenstellen"},
    };
    DialogControl &frame = BeginGroup(builder, words.Konten);
    const int left = builder.Left + 8;
    int y = builder.Y;
    const bool hasChoice = kontoarten != KontoartKostenstelle;
    int x = left;
    for (const auto &button : buttons) {
        if ((kontoarten & button.Kontoart) == 0) continue;
        DialogControl &radio = AddRadio(builder, button.Id, button.Text, x, y, 66, x == left);
        // With one kind only there is nothing to choose, but the routines still ask for its button.
        if (!hasChoice) radio.Without = WS_VISIBLE;
        x += 68;
    }
    if (hasChoice) y += rowHeight;
    if (hasSingle) {
        Add(builder, DialogControlKind::CheckBox, controlEinzeln, words.Einzeln, left, y, 100, 10, WS_GROUP);
        y += rowHeight;
    }
    AddLabel(builder, controlVonLabel, "vo&n:", left, y, 28);
    AddEdit(builder, controlKontoVon, left + 30, y, 52);
    AddLabel(builder, controlBisLabel, "b&is:", left + 98, y, 18);
    AddEdit(builder, controlKontoBis, left + 118, y, 52);
    MoveOn(builder, y + rowHeight + 2);
    EndGroup(builder, frame);
}

void AddOutputGroup(DialogBuilder &builder, const DialogWords &words)
{
    DialogControl &frame = BeginGroup(builder, words.Ausgabe);
    const int left = builder.Left + 8;
    AddRadio(builder, controlBildschirm, words.Bildschirm, left, builder.Y, 66, true);
    AddRadio(builder, controlDrucker, "D&rucker", left + 68, builder.Y, 66, false);
    MoveOn(builder, builder.Y + 12);
    EndGroup(builder, frame);
}

DialogTable PeriodPage(DialogBuilder &builder, int32_t id, uint32_t options)
{
    builder.Count = 0;
    builder.Left = 0;
    // The letter of "von" is that of the comparison's box, which stands outside the pages.
    const DialogWords words = {.Von = "v&on:"};
    const int height = AddPeriodControls(builder, options, false, words, gap);
    return {id,
            "",
            static_cast<int16_t>(groupWidth - 2 * tabBorder),
            static_cast<int16_t>(height),
            builder.Controls,
            builder.Count,
            varkui::childDialogStyle};
}

void AddPeriodTabs(DialogBuilder &builder, uint32_t options)
{
    DialogBuilder page;
    const int pageHeight = PeriodPage(page, 0, options).Height;
    const int height = tabRowHeight + pageHeight + tabBorder;
    Add(builder, DialogControlKind::TabControl, controlPeriodTabs, "", builder.Left, builder.Y, groupWidth,
        height, WS_GROUP);
    Add(builder, DialogControlKind::Text, controlPagePlace, "", builder.Left + tabBorder,
        builder.Y + tabRowHeight, groupWidth - 2 * tabBorder, pageHeight)
        .Without = WS_VISIBLE;
    MoveOn(builder, builder.Y + height + gap);
    Add(builder, DialogControlKind::CheckBox, controlCompare, "Beachte &Vergleichszeitraum", builder.Left + 8,
        builder.Y, 150, 10, WS_GROUP);
    MoveOn(builder, builder.Y + rowHeight);
}

DialogTable FinishDialog(DialogBuilder &builder, int32_t id, const char *title)
{
    const int x = builder.Left + groupWidth + margin;
    Add(builder, DialogControlKind::DefaultButton, IDOK, "OK", x, margin, buttonWidth, rowHeight, WS_GROUP);
    Add(builder, DialogControlKind::PushButton, IDCANCEL, "&Abbrechen", x, margin + rowHeight + gap,
        buttonWidth, rowHeight);
    return {id,
            title,
            static_cast<int16_t>(x + buttonWidth + margin),
            static_cast<int16_t>(builder.Y - gap + margin),
            builder.Controls,
            builder.Count,
            0};
}

} // namespace vark
