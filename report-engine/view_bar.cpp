#include "report-engine/view_bar.h"

#include "text/windows1252.h"

#include <algorithm>
#include <array> // std::size

namespace rs {

using namespace text;

namespace {

constexpr LONG rowHeight = 38;
constexpr LONG margin = 6;
constexpr LONG groupGap = 14;
constexpr LONG controlHeight = 28;
constexpr LONG textHeight = 18;
constexpr LONG shownTextHeight = 22; // a line is shown a quarter higher, which levels it with a field
constexpr LONG widestSearch = 260;   // its field takes what the row leaves

constexpr DWORD iconStyle = BS_PUSHBUTTON | BS_ICON | WS_TABSTOP;

} // namespace

const BarControl barControls[] = {
    {previousButton, "Button", "Vorherige Seite (Bild auf)\tgo-previous-symbolic", 0, 32, iconStyle, true},
    {pageEdit, "Edit", "Seite", 2, 56, ES_NUMBER | ES_RIGHT | WS_BORDER | WS_TABSTOP, false},
    {pageCountText, "Static", "", 6, 66, SS_LEFT, false},
    {nextButton, "Button", "Nächste Seite (Bild ab)\tgo-next-symbolic"_w, 2, 32, iconStyle, false},
    {copyButton, "Button", "Kopieren (Strg+C)\tedit-copy-symbolic", 0, 32, iconStyle, true},
    {printButton, "Button", "Drucken (Strg+P)\tdocument-print-symbolic", 2, 32, iconStyle, false},
    {saveButton, "Button", "Speichern (Strg+S)\tdocument-save-symbolic", 2, 32, iconStyle, false},
    {smallerButton, "Button", "Kleiner (–)\tzoom-out-symbolic"_w, 0, 32, iconStyle, true},
    {zoomList, "ComboBox", "Vergrößerung"_w, 2, 126, CBS_DROPDOWNLIST | WS_TABSTOP, false},
    {largerButton, "Button", "Größer (+)\tzoom-in-symbolic"_w, 2, 32, iconStyle, false},
    {searchText, "Static", "Suchen:", 0, 60, SS_RIGHT, true},
    {searchEdit, "Edit", "", 6, 92, ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP, false},
    {searchBackButton, "Button", "Rückwärts suchen (Umschalt+F3)\tgo-up-symbolic"_w, 2, 32, iconStyle, false},
    {searchNextButton, "Button", "Weitersuchen (F3)\tgo-down-symbolic", 2, 32, iconStyle, false},
};

const int barControlCount = static_cast<int>(std::size(barControls));

namespace {

// The bar is drawn up for letters of this size, in pixels of 4 units across and 8 down; larger ones make it
// larger.
constexpr LONG designedX = 8;
constexpr LONG designedY = 20;

LONG Across(LONG designed)
{
    const auto base = static_cast<LONG>(GetDialogBaseUnits() & 0xFFFF);
    return designed * std::max(base, designedX) / designedX;
}

} // namespace

LONG BarHeight(LONG designed)
{
    const auto base = static_cast<LONG>(GetDialogBaseUnits() >> 16);
    return designed * std::max(base, designedY) / designedY;
}

namespace {

bool IsText(const BarControl &control) { return control.Id == pageCountText || control.Id == searchText; }

// The control behind the last of the group that begins at `first`.
int EndOfGroup(int first)
{
    int end = first + 1;
    while (end < barControlCount && !barControls[end].BeginsGroup) {
        ++end;
    }
    return end;
}

LONG WidthOf(int first, int end)
{
    LONG width = 0;
    for (int i = first; i < end; ++i) {
        width += (i > first ? barControls[i].Gap : 0) + Across(barControls[i].Width);
    }
    return width;
}

void Show(HWND control, bool isShown)
{
    const bool wasShown = (GetWindowLongPtrA(control, GWL_STYLE) & WS_VISIBLE) != 0;
    if (isShown != wasShown) ShowWindow(control, isShown ? SW_SHOWNA : SW_HIDE);
}

void ShowGroup(HWND window, int first, int end, bool isShown)
{
    for (int i = first; i < end; ++i) {
        Show(GetDlgItem(window, barControls[i].Id), isShown);
    }
}

// `spare` is how much wider than needed the search field may be.
void PlaceGroup(HWND window, int first, int end, LONG left, LONG top, LONG spare)
{
    for (int i = first; i < end; ++i) {
        const BarControl &each = barControls[i];
        if (i > first) left += each.Gap;
        const LONG needed = Across(each.Width);
        const LONG width = each.Id == searchEdit ? std::min(needed + spare, Across(widestSearch)) : needed;
        const LONG height = BarHeight(IsText(each) ? textHeight : controlHeight);
        const LONG above = BarHeight(rowHeight - (IsText(each) ? shownTextHeight : controlHeight)) / 2;
        MoveWindow(GetDlgItem(window, each.Id), left, top + above, width, height, TRUE);
        left += width;
    }
}

} // namespace

LONG ArrangeBar(HWND window, LONG width, LONG height)
{
    const LONG pitch = BarHeight(rowHeight);
    const LONG mostRows = std::max<LONG>(height / 2 / pitch, 1);
    LONG row = 0;
    LONG left = margin;
    for (int first = 0; first < barControlCount;) {
        const int end = EndOfGroup(first);
        // The field explains itself by the arrows behind it where its label has no room.
        const bool hasLabel = barControls[first].Id == searchText;
        LONG needed = WidthOf(first, end);
        const auto fits = [&](LONG wanted) { return left + wanted <= width - margin; };
        int shown = first;
        if (hasLabel && !fits(needed)) {
            shown = first + 1;
            needed = WidthOf(shown, end);
        }
        if (left > margin && !fits(needed)) {
            ++row;
            left = margin;
            shown = first;
            needed = WidthOf(first, end);
        }
        ShowGroup(window, first, shown, false);
        ShowGroup(window, shown, end, row < mostRows);
        PlaceGroup(window, shown, end, left, row * pitch, std::max<LONG>(width - margin - left - needed, 0));
        left += needed + groupGap;
        first = end;
    }
    return (std::min(row, mostRows - 1) + 1) * pitch;
}

} // namespace rs
