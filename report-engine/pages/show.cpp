#include "report-engine/pages/show.h"

#include "host/passing.h"
#include "report-engine/page_requests.h"
#include "report-engine/pages/copying.h"
#include "report-engine/pages/shown.h"
#include "report-engine/values.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

namespace rs {

namespace {

constexpr size_t maxHits = 4096; // of one page

Hit hits[maxHits];

// ---- Drawing ----

// Colours the letters of a range, line by line.
void Colour(cairo_t *cairo, const LetterList &letters, const Hit &range, double red, double green,
            double blue)
{
    cairo_save(cairo);
    cairo_set_operator(cairo, CAIRO_OPERATOR_MULTIPLY);
    cairo_set_source_rgb(cairo, red, green, blue);
    for (size_t i = range.First; i <= range.Last;) {
        const Letter &first = letters.Letters[i];
        size_t last = i;
        while (last < range.Last && letters.Letters[last + 1].Line == first.Line) {
            ++last;
        }
        cairo_rectangle(cairo, first.Left, first.Top, letters.Letters[last].Right - first.Left,
                        first.Bottom - first.Top);
        i = last + 1;
    }
    cairo_fill(cairo);
    cairo_restore(cairo);
}

void DrawOnePage(const PageRequest &request, cairo_t *cairo, int64_t page, double top)
{
    const double scale = request.PixelsPerUnit / pointsPerUnit;
    const double width = shown.Def->PageWidth * pointsPerUnit;
    const double height = shown.Def->PageHeight * pointsPerUnit;
    cairo_save(cairo);
    cairo_translate(cairo, request.Left, top);
    cairo_scale(cairo, scale, scale);
    // A sheet of paper on its ground.
    cairo_set_source_rgba(cairo, 0, 0, 0, 0.12);
    cairo_rectangle(cairo, -1.5, -0.75, width + 3, height + 3);
    cairo_fill(cairo);
    cairo_set_source_rgb(cairo, 1, 1, 1);
    cairo_rectangle(cairo, 0, 0, width, height);
    cairo_fill_preserve(cairo);
    cairo_clip(cairo);
    const LetterList &letters = LettersOf(page, cairo, Ink::outlines);
    if (request.Sought[0] != 0) {
        const size_t count = FindHits(letters, request.Sought, std::strlen(request.Sought), hits, maxHits);
        for (size_t i = 0; i < count; ++i) {
            const bool isFound = page == request.Found && static_cast<int64_t>(i) == request.FoundPlace;
            Colour(cairo, letters, hits[i], 1, isFound ? 0.65 : 0.93, isFound ? 0.25 : 0.45);
        }
    }
    Hit range;
    if (SelectedOn(request, page, letters, range)) Colour(cairo, letters, range, 0.62, 0.79, 1);
    cairo_restore(cairo);
}

// A file of pixels; -1 when there is none.
int DrawImage(const PageRequest &request)
{
    constexpr int32_t largest = 16'384;
    if (request.Width <= 0 || request.Height <= 0 || request.Width > largest || request.Height > largest)
        return -1;
    if (!(request.PixelsPerUnit > 0) || request.Pitch <= 0) return -1;
    const size_t size = size_t{4} * static_cast<size_t>(request.Width) * static_cast<size_t>(request.Height);
    const int file = memfd_create("rs-pages", MFD_CLOEXEC);
    if (file < 0) return -1;
    void *bytes = ftruncate(file, static_cast<off_t>(size)) == 0
                      ? mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0)
                      : MAP_FAILED;
    if (bytes == MAP_FAILED) {
        close(file);
        return -1;
    }
    cairo_surface_t *surface =
        cairo_image_surface_create_for_data(static_cast<unsigned char *>(bytes), CAIRO_FORMAT_ARGB32,
                                            request.Width, request.Height, 4 * request.Width);
    cairo_t *cairo = cairo_create(surface);
    cairo_set_antialias(cairo, CAIRO_ANTIALIAS_FAST); // half the time, and nobody sees the difference in text
    cairo_set_tolerance(cairo, 0.25);                 // of outlines, in pixels: nobody sees less
    int64_t page = request.FirstPage;
    for (int64_t top = request.FirstTop; top < request.Height && page <= shown.PageCount; ++page) {
        if (page > 0) DrawOnePage(request, cairo, page, static_cast<double>(top));
        top += request.Pitch;
    }
    const bool isGood = cairo_status(cairo) == CAIRO_STATUS_SUCCESS;
    cairo_destroy(cairo);
    cairo_surface_flush(surface);
    cairo_surface_destroy(surface);
    munmap(bytes, size);
    if (isGood) return file;
    close(file);
    return -1;
}

// ---- Searching ----

struct Sought {
    const char *Text;
    size_t Length;
};

// Whether a row has the text in one of its cells, or in several that follow each other.
bool RowHas(void *context, const Definition & /*definition*/, const ItemHeader &item)
{
    const auto &sought = *static_cast<const Sought *>(context);
    const char *data = reinterpret_cast<const char *>(&item + 1);
    char row[4096];
    size_t used = 0;
    const auto add = [&](const char *text, size_t length) {
        if (used + length + 1 > sizeof row) length = sizeof row - used - 1;
        std::memcpy(row + used, text, length);
        used += length;
        row[used++] = ' ';
    };
    if (item.Kind != Item::row) {
        LinePart parts[3];
        LinePartsOf(data, parts);
        for (const LinePart &part : parts) {
            if (used + 1 < sizeof row) add(part.Text, part.Length);
        }
    } else {
        CellReader cells = CellsOf(item, data);
        Cell cell;
        while (NextCell(cells, cell) && used + 1 < sizeof row) {
            char figure[amountSize];
            if (cell.Kind == CellKind::text) {
                add(cell.Text, cell.Length);
            } else {
                add(figure, cell.Kind == CellKind::number
                                ? WriteNumber(cell.Number, Look::grouped, figure)
                                : WriteHundredths(cell.Number, Look::grouped, figure));
            }
        }
    }
    char folded[sizeof row];
    const size_t count = FoldText(row, used, folded, sizeof folded);
    return memmem(folded, count, sought.Text, sought.Length) != nullptr;
}

// The places of the sought text on a page.
size_t HitsOn(int64_t page, const Sought &sought)
{
    return FindHits(LettersUnseen(page), sought.Text, sought.Length, hits, maxHits);
}

// The first (or last) page from `first` to `last` with a place; its places are in hits.
int64_t PageWith(int64_t first, int64_t last, bool isBackwards, Sought &sought, size_t &count)
{
    const ItemTest test = {RowHas, &sought};
    while (first <= last) {
        const int64_t page = FindPage(first, last, isBackwards, test);
        if (page == 0) return 0;
        count = HitsOn(page, sought);
        if (count > 0) return page;
        // What the row has is not in view: a text that was cut.
        if (isBackwards) {
            last = page - 1;
        } else {
            first = page + 1;
        }
    }
    return 0;
}

void AnswerFind(const PageRequest &request, PageAnswer &answer)
{
    Sought sought = {request.Sought, std::strlen(request.Sought)};
    if (sought.Length == 0) return;
    const bool isBackwards = request.IsBackwards != 0;
    int64_t begin = request.Found;
    if (begin < 1) begin = 1;
    if (begin > shown.PageCount) begin = shown.PageCount;
    size_t count = HitsOn(begin, sought);
    int64_t page = begin;
    int64_t place = isBackwards ? request.FoundPlace - 1 : request.FoundPlace + 1;
    if (place < 0 || place >= static_cast<int64_t>(count)) {
        page = isBackwards ? PageWith(1, begin - 1, true, sought, count)
                           : PageWith(begin + 1, shown.PageCount, false, sought, count);
        if (page == 0) {
            answer.HasWrapped = 1;
            page = isBackwards ? PageWith(begin, shown.PageCount, true, sought, count)
                               : PageWith(1, begin, false, sought, count);
        }
        place = isBackwards ? static_cast<int64_t>(count) - 1 : 0;
    }
    if (page == 0) return;
    const Hit &hit = hits[place];
    const Letter &first = shown.Letters.Letters[hit.First];
    const Letter &last = shown.Letters.Letters[hit.Last];
    answer.Page = page;
    answer.Place = static_cast<int32_t>(place);
    answer.From = {page, static_cast<int32_t>(first.Left / pointsPerUnit),
                   static_cast<int32_t>(first.Top / pointsPerUnit)};
    answer.To = {page, static_cast<int32_t>(last.Right / pointsPerUnit),
                 static_cast<int32_t>(last.Bottom / pointsPerUnit)};
}

// ---- Requests ----

bool Answer(int socket, const PageAnswer &answer, int file)
{
    const bool isSent =
        host::SendWith(socket, file, &answer, sizeof answer) == static_cast<ssize_t>(sizeof answer);
    if (file >= 0) close(file);
    return isSent;
}

} // namespace

namespace {

int requestSocket;

// Whatever is being drawn or sought: nobody waits for it any more.
void EndWithHost(int /*signal*/)
{
    pollfd state = {requestSocket, 0, 0};
    if (poll(&state, 1, 0) > 0 && (state.revents & (POLLHUP | POLLERR)) != 0) _exit(0);
}

// The host may end, or the view be closed, at any moment: the socket tells by a signal.
void WatchHost(int socket)
{
    requestSocket = socket;
    struct sigaction action = {};
    action.sa_handler = EndWithHost;
    action.sa_flags = SA_RESTART;
    sigaction(SIGIO, &action, nullptr);
    fcntl(socket, F_SETOWN, getpid());
    fcntl(socket, F_SETFL, fcntl(socket, F_GETFL) | O_ASYNC);
}

} // namespace

const char *ShowPages(int spool, int requests, int64_t pageCount)
{
    WatchHost(requests);
    static Document document;
    if (!OpenDocument(document, spool)) return "rs-pages gehört nicht zu dieser librs.so.";
    shown.Of = &document;
    shown.Def = document.Def;
    shown.PageCount = pageCount;
    OpenPages(document, pageCount);
    for (;;) {
        PageRequest request;
        const ssize_t got = recv(requests, &request, sizeof request, 0);
        if (got < 0 && errno == EINTR) continue;
        if (got != static_cast<ssize_t>(sizeof request)) return nullptr;
        request.Sought[maxSought - 1] = 0;
        char folded[maxSought];
        const size_t length =
            FoldText(request.Sought, std::strlen(request.Sought), folded, sizeof folded - 1);
        std::memcpy(request.Sought, folded, length);
        request.Sought[length] = 0;
        OrderSelection(request);
        PageAnswer answer = {};
        int file = -1;
        switch (request.Wish) {
        case PageWish::draw: file = DrawImage(request); break;
        case PageWish::find: AnswerFind(request, answer); break;
        case PageWish::copy: file = CopyText(request, answer); break;
        }
        answer.IsGood = request.Wish == PageWish::find || file >= 0 ? 1 : 0;
        if (!Answer(requests, answer, file)) return nullptr;
    }
}

} // namespace rs
