#include "report-engine/pages/shown.h"

namespace rs {

Shown shown;

namespace {

void Nothing(void * /*context*/, int64_t /*page*/) {}

void NoBookmark(void * /*context*/, int /*depth*/, const char * /*text*/, int64_t /*page*/, double /*x*/,
                double /*y*/)
{}

} // namespace

LetterList &LettersOf(int64_t page, cairo_t *cairo, Ink ink)
{
    const PageTarget target = {cairo, Nothing, Nothing, NoBookmark, nullptr, ink};
    ForgetLetters(shown.Letters);
    DrawPage(page, target, &shown.Letters);
    OrderLetters(shown.Letters);
    return shown.Letters;
}

LetterList &LettersUnseen(int64_t page)
{
    cairo_surface_t *surface = cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1);
    cairo_t *cairo = cairo_create(surface);
    cairo_rectangle(cairo, 0, 0, 0, 0);
    cairo_clip(cairo);
    LetterList &letters = LettersOf(page, cairo, Ink::none);
    cairo_destroy(cairo);
    cairo_surface_destroy(surface);
    return letters;
}

namespace {

bool LiesBefore(const PagePlace &one, const PagePlace &other)
{
    if (one.Page != other.Page) return one.Page < other.Page;
    return one.Y != other.Y ? one.Y < other.Y : one.X < other.X;
}

} // namespace

void OrderSelection(PageRequest &request)
{
    if (LiesBefore(request.To, request.From)) {
        const PagePlace to = request.To;
        request.To = request.From;
        request.From = to;
    }
}

namespace {

PagePoint PointOf(const PagePlace &place) { return {place.X * pointsPerUnit, place.Y * pointsPerUnit}; }

} // namespace

bool SelectedOn(const PageRequest &request, int64_t page, const LetterList &letters, Hit &range)
{
    if (request.IsAllSelected != 0) return LettersBetween(letters, nullptr, nullptr, Grain::letter, range);
    if (request.From.Page == 0 || page < request.From.Page || page > request.To.Page) return false;
    PagePoint from = PointOf(request.From);
    PagePoint to = PointOf(request.To);
    // Within one line the two ends may stand at slightly different heights.
    Hit unused;
    const auto grain = static_cast<Grain>(request.SelectionGrain);
    if (request.From.Page == request.To.Page && grain == Grain::letter &&
        !LettersBetween(letters, &from, &to, grain, unused)) {
        const PagePoint swapped = from;
        from = to;
        to = swapped;
    }
    return LettersBetween(letters, page == request.From.Page ? &from : nullptr,
                          page == request.To.Page ? &to : nullptr, grain, range);
}

} // namespace rs
