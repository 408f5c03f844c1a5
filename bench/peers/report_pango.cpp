// The same table by a bare program that lays out every cell with Pango and shows it with Cairo: report_pango
// FILE LINES. No template, no records, no sums: heads, cells and page breaks only.
#include "bench/report_lines.h"

#include <cairo-pdf.h>
#include <chrono>
#include <cstdio>
#include <pango/pangocairo.h>
#include <string>

namespace {

constexpr double point = 72.0 / 25.4; // of a millimetre
constexpr double widths[12] = {14, 50, 21, 21, 21, 21, 21, 21, 21, 21, 21, 21};
constexpr double rowHeight = 3.84 * point;
constexpr double left = 15 * point;
constexpr double top = 25 * point;
constexpr double bottom = 195 * point;

std::string Grouped(int64_t pfennig)
{
    std::string digits = std::to_string(pfennig / 100);
    for (int at = static_cast<int>(digits.size()) - 3; at > 0; at -= 3) {
        digits.insert(static_cast<size_t>(at), ".");
    }
    const std::string rest = std::to_string(pfennig % 100);
    return digits + (rest.size() == 1 ? ",0" : ",") + rest;
}

void Cell(cairo_t *cairo, PangoLayout *layout, int column, double y, const std::string &text)
{
    double x = left;
    for (int i = 0; i < column; ++i) {
        x += widths[i] * point;
    }
    pango_layout_set_text(layout, text.c_str(), static_cast<int>(text.size()));
    if (column >= 2) {
        int width = 0;
        pango_layout_get_size(layout, &width, nullptr);
        x += widths[column] * point - static_cast<double>(width) / PANGO_SCALE;
    }
    cairo_move_to(cairo, x, y);
    pango_cairo_show_layout(cairo, layout);
}

} // namespace

int main(int argumentCount, char **arguments)
{
    if (argumentCount != 3) return 2;
    const int lines = std::stoi(arguments[2]);
    const auto begin = std::chrono::steady_clock::now();
    cairo_surface_t *surface = cairo_pdf_surface_create(arguments[1], 297 * point, 210 * point);
    cairo_t *cairo = cairo_create(surface);
    PangoLayout *layout = pango_cairo_create_layout(cairo);
    PangoFontDescription *font = pango_font_description_new();
    pango_font_description_set_family(font, "Roboto Condensed");
    pango_font_description_set_absolute_size(font, 8 * PANGO_SCALE);
    pango_layout_set_font_description(layout, font);
    uint32_t state = 1;
    double y = bottom;
    for (int i = 0; i < lines; ++i) {
        if (y + rowHeight > bottom) {
            if (i > 0) cairo_show_page(cairo);
            y = top;
            for (int column = 0; column < 12; ++column) {
                Cell(cairo, layout, column, y - rowHeight, column % 2 == 0 ? "Soll" : "Haben");
            }
        }
        const BenchLine line = MakeBenchLine(10000 + i, state);
        Cell(cairo, layout, 0, y, line.Konto);
        Cell(cairo, layout, 1, y, line.Name);
        for (int amount = 0; amount < 8; ++amount) {
            if (line.Amounts[amount] != 0) Cell(cairo, layout, 2 + amount, y, Grouped(line.Amounts[amount]));
        }
        const int64_t saldo = line.Amounts[6] - line.Amounts[7];
        if (saldo != 0) Cell(cairo, layout, saldo > 0 ? 10 : 11, y, Grouped(saldo > 0 ? saldo : -saldo));
        y += rowHeight;
    }
    cairo_surface_finish(surface);
    const bool isGood = cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS;
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    std::printf("seconds %lld.%06lld\n", static_cast<long long>(taken.count()),
                static_cast<long long>(taken.count() * 1e6) % 1'000'000);
    return isGood ? 0 : 1;
}
