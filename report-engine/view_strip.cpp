#include "report-engine/view_strip.h"

#include "report-engine/page_source.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace rs {

namespace {

constexpr LONG paperGap = 12; // around pages

constexpr int percents[] = {25, 50, 75, 100, 125, 150, 200, 300, 400};
constexpr int percentCount = sizeof percents / sizeof percents[0];
constexpr int fitRows = 2; // of the zoom list, before the percents

LONG Clamp(LONG value, LONG content, LONG inView)
{
    return std::max<LONG>(0, std::min(value, content - inView));
}

// Where the left edge of the paper stands in view.
LONG PaperLeft(const Strip &strip, const VARKUIAREA &area, LONG x)
{
    const LONG spare = area.Width - strip.PageWidth;
    return spare > 2 * paperGap ? spare / 2 : paperGap - x;
}

} // namespace

Strip StripOf(const ViewWindow &view)
{
    const Definition &def = view.Of->Of->Def;
    Strip strip = {};
    strip.PageWidth = static_cast<LONG>(std::lround(def.PageWidth * view.PixelsPerUnit));
    strip.PageHeight = static_cast<LONG>(std::lround(def.PageHeight * view.PixelsPerUnit));
    strip.Pitch = strip.PageHeight + paperGap;
    strip.Width = strip.PageWidth + 2 * paperGap;
    constexpr int64_t highest = 2'000'000'000; // where the screen's numbers end
    const int64_t height = paperGap + view.Of->Of->PageCount * strip.Pitch;
    strip.Height = static_cast<LONG>(std::min(height, highest));
    return strip;
}

VARKUIAREA AreaOf(const ViewWindow &view)
{
    VARKUIAREA area = {0, 0, 1};
    SendMessageA(view.Picture, PCM_GETAREA, 0, reinterpret_cast<LPARAM>(&area));
    return area;
}

LONG TopOfPage(const Strip &strip, int64_t page)
{
    return static_cast<LONG>(paperGap + (page - 1) * strip.Pitch);
}

namespace {

int64_t PageAt(const ViewWindow &view, const Strip &strip, LONG y)
{
    const int64_t page = y < paperGap ? 1 : (y - paperGap) / strip.Pitch + 1;
    return std::clamp<int64_t>(page, 1, view.Of->Of->PageCount);
}

} // namespace

void FitZoom(ViewWindow &view)
{
    const Definition &def = view.Of->Of->Def;
    const VARKUIAREA area = AreaOf(view);
    double scale = naturalScale * view.Percent / 100;
    const double width = static_cast<double>(area.Width - 2 * paperGap) / def.PageWidth;
    const double height = static_cast<double>(area.Height - 2 * paperGap) / def.PageHeight;
    if (view.Fitted == Fit::width) scale = width;
    if (view.Fitted == Fit::page) scale = std::min(width, height);
    constexpr double smallest = naturalScale / 8;
    scale = std::max(scale, smallest);
    if (scale == view.PixelsPerUnit) return;

    const Strip before = StripOf(view);
    const LONG middle = view.Y + area.Height / 3;
    const int64_t page = PageAt(view, before, middle);
    const double part =
        static_cast<double>(middle - TopOfPage(before, page)) / std::max<LONG>(before.Pitch, 1);
    const double across = (view.X + area.Width * 0.5) / std::max<LONG>(before.Width, 1);
    const bool isFirst = view.Y <= paperGap;
    view.PixelsPerUnit = scale;
    const Strip after = StripOf(view);
    view.Y = isFirst ? 0 : TopOfPage(after, page) + static_cast<LONG>(part * after.Pitch) - area.Height / 3;
    // What stands at the left edge - the numbers of the accounts - stays there.
    view.X = view.X <= 0 ? 0 : static_cast<LONG>(across * after.Width) - area.Width / 2;
}

PagePlace PlaceAt(const ViewWindow &view, LONG x, LONG y)
{
    const Strip strip = StripOf(view);
    const VARKUIAREA area = AreaOf(view);
    const int64_t page = PageAt(view, strip, view.Y + y);
    const double left = x - PaperLeft(strip, area, view.X);
    const double top = static_cast<double>(view.Y) + y - TopOfPage(strip, page);
    const auto units = [&](double pixels) {
        return static_cast<int32_t>(std::clamp(pixels / view.PixelsPerUnit, -1e6, 1e6));
    };
    return {page, units(left), units(top)};
}

void SetNumber(const ViewWindow &view, int id, const char *before, int64_t number)
{
    char shown[48];
    std::snprintf(shown, sizeof shown, "%s%lld", before, static_cast<long long>(number));
    char now[48];
    GetWindowTextA(Control(view, id), now, sizeof now);
    if (std::strcmp(now, shown) != 0) SetWindowTextA(Control(view, id), shown);
}

void ShowNumbers(ViewWindow &view)
{
    view.IsFilling = true;
    if (GetFocus() != Control(view, pageEdit)) SetNumber(view, pageEdit, "", CurrentPage(view));
    int row = view.Fitted == Fit::width ? 0 : 1;
    for (int i = 0; view.Fitted == Fit::none && i < percentCount; ++i) {
        if (percents[i] == view.Percent) row = fitRows + i;
    }
    if (SendDlgItemMessageA(view.Window, zoomList, CB_GETCURSEL, 0, 0) != row) {
        SendDlgItemMessageA(view.Window, zoomList, CB_SETCURSEL, static_cast<WPARAM>(row), 0);
    }
    view.IsFilling = false;
    const int64_t page = CurrentPage(view);
    const int64_t count = view.Of->Of->PageCount;
    // A button that is pressed may be the one that is disabled: the focus goes on to the pages.
    const auto enable = [&](int id, bool isUseful) {
        HWND button = Control(view, id);
        if (!isUseful && GetFocus() == button) SetFocus(view.Picture);
        if ((IsWindowEnabled(button) != FALSE) != isUseful) EnableWindow(button, isUseful ? TRUE : FALSE);
    };
    enable(previousButton, page > 1 || view.Y > 0);
    enable(nextButton, page < count);
}

void ShowPart(ViewWindow &view)
{
    const Strip strip = StripOf(view);
    const VARKUIAREA area = AreaOf(view);
    view.X = Clamp(view.X, strip.Width, area.Width);
    view.Y = Clamp(view.Y, strip.Height, area.Height);
    if (!view.Of->WasSeen || VarkUiHasUser() == FALSE) {
        ShowNumbers(view);
        return;
    }
    VARKUIPICTURE picture = {};
    picture.Descriptor = -1;
    picture.Width = area.Width * area.Scale;
    picture.Height = area.Height * area.Scale;
    picture.X = view.X;
    picture.Y = view.Y;
    picture.ContentWidth = strip.Width;
    picture.ContentHeight = strip.Height;
    picture.Page = strip.Pitch;
    if (picture.Width > 0 && picture.Height > 0) {
        const int64_t first = PageAt(view, strip, view.Y);
        PageRequest request = {};
        request.Wish = PageWish::draw;
        request.Width = picture.Width;
        request.Height = picture.Height;
        request.Left = PaperLeft(strip, area, view.X) * area.Scale;
        request.FirstTop = (TopOfPage(strip, first) - view.Y) * area.Scale;
        request.Pitch = strip.Pitch * area.Scale;
        request.FirstPage = first;
        request.PixelsPerUnit = view.PixelsPerUnit * area.Scale;
        request.From = view.From;
        request.To = view.To;
        request.SelectionGrain = view.Grain;
        request.IsAllSelected = view.IsAllSelected ? 1 : 0;
        std::memcpy(request.Sought, view.Sought, sizeof request.Sought);
        request.Found = view.Found;
        request.FoundPlace = view.FoundPlace;
        PageAnswer answer;
        const bool isDrawn = AskForPages(view.Source, *view.Of, request, answer, picture.Descriptor);
        if (!isDrawn) SayState(view, "Die Seite kann nicht gezeichnet werden.");
    }
    SendMessageA(view.Picture, PCM_SETPICTURE, 0, reinterpret_cast<LPARAM>(&picture));
    if (picture.Descriptor >= 0) close(picture.Descriptor);
    ShowNumbers(view);
}

void ShowPlace(ViewWindow &view, const PagePlace &from, const PagePlace &to)
{
    const Strip strip = StripOf(view);
    const VARKUIAREA area = AreaOf(view);
    const auto pixels = [&](int32_t units) { return static_cast<LONG>(units * view.PixelsPerUnit); };
    const LONG top = TopOfPage(strip, from.Page) + pixels(from.Y);
    const LONG bottom = TopOfPage(strip, to.Page) + pixels(to.Y);
    if (top < view.Y || bottom > view.Y + area.Height) view.Y = top - area.Height / 3;
    const LONG left = paperGap + pixels(from.X);
    const LONG right = paperGap + pixels(to.X);
    if (left < view.X || right > view.X + area.Width) view.X = left - area.Width / 3;
    ShowPart(view);
}

int64_t CurrentPage(const ViewWindow &view)
{
    return PageAt(view, StripOf(view), view.Y + AreaOf(view).Height / 3);
}

void GoToPage(ViewWindow &view, int64_t page)
{
    page = std::clamp<int64_t>(page, 1, view.Of->Of->PageCount);
    view.Y = page == 1 ? 0 : TopOfPage(StripOf(view), page) - paperGap / 2;
    ShowPart(view);
}

void ScrollBy(ViewWindow &view, LONG dx, LONG dy)
{
    view.X += dx;
    view.Y += dy;
    ShowPart(view);
}

// ---- Zoom ----

void FillZoomList(const ViewWindow &view)
{
    HWND list = Control(view, zoomList);
    SendMessageA(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>("Seitenbreite"));
    SendMessageA(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>("Ganze Seite"));
    for (const int percent : percents) {
        char text[16];
        std::snprintf(text, sizeof text, "%d %%", percent);
        SendMessageA(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
    }
}

void SetZoom(ViewWindow &view, Fit fit, int percent)
{
    view.Fitted = fit;
    view.Percent = percent;
    FitZoom(view);
    ShowPart(view);
}

void StepZoom(ViewWindow &view, int direction)
{
    const double now = 100 * view.PixelsPerUnit / naturalScale;
    int next = direction > 0 ? percents[percentCount - 1] : percents[0];
    for (int i = 0; i < percentCount; ++i) {
        const int percent = percents[direction > 0 ? i : percentCount - 1 - i];
        if (direction > 0 ? percent > now + 0.5 : percent < now - 0.5) {
            next = percent;
            break;
        }
    }
    SetZoom(view, Fit::none, next);
}

void TakeZoomFromList(ViewWindow &view)
{
    const auto row = static_cast<int>(SendDlgItemMessageA(view.Window, zoomList, CB_GETCURSEL, 0, 0));
    if (row < 0 || row >= fitRows + percentCount) return;
    if (row < fitRows) {
        SetZoom(view, row == 0 ? Fit::width : Fit::page, 100);
    } else {
        SetZoom(view, Fit::none, percents[row - fitRows]);
    }
}

} // namespace rs
