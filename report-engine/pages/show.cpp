#include "report-engine/pages/show.h"

#include "host/passing.h"
#include "report-engine/page_requests.h"
#include "report-engine/pages/draw.h"
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

constexpr double pointsPerUnit = 72.0 / 2540.0;
constexpr size_t maxHits = 4096; // of one page

void Nothing(void * /*context*/, int64_t /*page*/) {}

void NoBookmark(void * /*context*/, int /*depth*/, const char * /*text*/, int64_t /*page*/, double /*x*/,
                double /*y*/)
{}

struct {
    LetterList Letters;
    Hit Hits[maxHits];
    int64_t PageCount;
    const Document *Of;
    const Definition *Def;
} shown;

// The letters of a page in reading order.
LetterList &LettersOf(int64_t page, cairo_t *cairo, Ink ink)
{
    const PageTarget target = {cairo, Nothing, Nothing, NoBookmark, nullptr, ink};
    ForgetLetters(shown.Letters);
    DrawPage(page, target, &shown.Letters);
    OrderLetters(shown.Letters);
    return shown.Letters;
}

// The same of a page that nobody sees.
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

// ---- Selections ----

bool LiesBefore(const PagePlace &one, const PagePlace &other)
{
    if (one.Page != other.Page) return one.Page < other.Page;
    return one.Y != other.Y ? one.Y < other.Y : one.X < other.X;
}

// Puts the ends into reading order: on one line the left one comes first, whichever is higher.
void OrderSelection(PageRequest &request)
{
    if (LiesBefore(request.To, request.From)) {
        const PagePlace to = request.To;
        request.To = request.From;
        request.From = to;
    }
}

PagePoint PointOf(const PagePlace &place) { return {place.X * pointsPerUnit, place.Y * pointsPerUnit}; }

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
        const size_t count =
            FindHits(letters, request.Sought, std::strlen(request.Sought), shown.Hits, maxHits);
        for (size_t i = 0; i < count; ++i) {
            const bool isFound = page == request.Found && static_cast<int64_t>(i) == request.FoundPlace;
            Colour(cairo, letters, shown.Hits[i], 1, isFound ? 0.65 : 0.93, isFound ? 0.25 : 0.45);
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
    return FindHits(LettersUnseen(page), sought.Text, sought.Length, shown.Hits, maxHits);
}

// The first (or last) page from `first` to `last` with a place; its places are in shown.Hits.
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
    const Hit &hit = shown.Hits[place];
    const Letter &first = shown.Letters.Letters[hit.First];
    const Letter &last = shown.Letters.Letters[hit.Last];
    answer.Page = page;
    answer.Place = static_cast<int32_t>(place);
    answer.From = {page, static_cast<int32_t>(first.Left / pointsPerUnit),
                   static_cast<int32_t>(first.Top / pointsPerUnit)};
    answer.To = {page, static_cast<int32_t>(last.Right / pointsPerUnit),
                 static_cast<int32_t>(last.Bottom / pointsPerUnit)};
}

// ---- Copying ----

bool WriteAll(int file, const char *bytes, size_t length)
{
    while (length > 0) {
        const ssize_t count = write(file, bytes, length);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes += count;
        length -= static_cast<size_t>(count);
    }
    return true;
}

// Text on its way into a file, gathered to larger writes.
struct Copying {
    int File;
    int64_t Length;
    bool HasFailed;
    size_t Used;
    char Bytes[16'384];
};

void FlushCopy(Copying &copy)
{
    if (!WriteAll(copy.File, copy.Bytes, copy.Used)) copy.HasFailed = true;
    copy.Used = 0;
}

void Put(Copying &copy, const char *text, size_t length)
{
    for (size_t i = 0; i < length; ++i) {
        if (copy.Used == sizeof copy.Bytes) FlushCopy(copy);
        copy.Bytes[copy.Used++] = text[i];
    }
    copy.Length += static_cast<int64_t>(length);
}

bool IsFull(const Copying &copy) { return copy.HasFailed || copy.Length >= maxCopied; }

// Those of the right half follow those of the left.
void PutTabs(Copying &copy, int from, int to)
{
    for (int cell = from; cell < to; ++cell) {
        if (IsShown(shown.Def->Columns[cell % shown.Def->ColumnCount])) Put(copy, "\t", 1);
    }
}

void PutLetter(Copying &copy, const LetterList &letters, const Letter &letter)
{
    const char *text = letters.Text + letter.TextAt;
    constexpr char minus[] = "\u2212"; // of typesetting
    const bool isMinus =
        letter.TextLength == sizeof minus - 1 && std::memcmp(text, minus, sizeof minus - 1) == 0;
    Put(copy, isMinus ? "-" : text, isMinus ? 1 : letter.TextLength);
}

// What is selected within one line, or has no rows in it: texts parted by tabs, lines by line ends.
void CopyTexts(Copying &copy, const LetterList &letters, const Hit &range)
{
    for (size_t i = range.First; i <= range.Last && !IsFull(copy); ++i) {
        const Letter &letter = letters.Letters[i];
        if (i > range.First && letter.Line != letters.Letters[i - 1].Line) {
            Put(copy, "\n", 1);
        } else if (i > range.First && letter.Begins) {
            Put(copy, "\t", 1);
        }
        PutLetter(copy, letters, letter);
    }
    Put(copy, "\n", 1);
}

// The rows in a range, a tab for each column, and nothing else: what a table takes.
void CopyRows(Copying &copy, const LetterList &letters, const Hit &range)
{
    const int last = shown.Def->ColumnCount * (shown.Def->RightAt != 0 ? 2 : 1) - 1;
    int column = 0;
    int line = -1;
    for (size_t i = range.First; i <= range.Last && !IsFull(copy); ++i) {
        const Letter &letter = letters.Letters[i];
        if (letter.Cell == noCell) continue;
        if (letter.Line != line) {
            if (line >= 0) {
                PutTabs(copy, column, last);
                Put(copy, "\n", 1);
            }
            line = letter.Line;
            column = 0;
        }
        if (letter.Cell > column) {
            PutTabs(copy, column, letter.Cell);
            column = letter.Cell;
        }
        PutLetter(copy, letters, letter);
    }
    if (line < 0) return;
    PutTabs(copy, column, last);
    Put(copy, "\n", 1);
}

bool HasRow(const LetterList &letters, const Hit &range)
{
    for (size_t i = range.First; i <= range.Last; ++i) {
        if (letters.Letters[i].Cell != noCell) return true;
    }
    return false;
}

void CopySelected(Copying &copy, const PageRequest &request, PageAnswer &answer)
{
    for (int64_t page = request.From.Page;
         page > 0 && page <= request.To.Page && page <= shown.PageCount && !IsFull(copy); ++page) {
        const LetterList &letters = LettersUnseen(page);
        Hit range;
        if (!SelectedOn(request, page, letters, range)) continue;
        const bool isWithinLine = request.From.Page == request.To.Page &&
                                  letters.Letters[range.First].Line == letters.Letters[range.Last].Line;
        const bool hasRows = HasRow(letters, range);
        if (hasRows && !isWithinLine) {
            answer.HasRows = 1;
            CopyRows(copy, letters, range);
        } else if (isWithinLine || request.From.Page == request.To.Page) {
            answer.HasRows = hasRows ? 1 : 0;
            CopyTexts(copy, letters, range);
        }
    }
}

void PutHeadings(Copying &copy)
{
    const Definition &def = *shown.Def;
    for (int i = 0; i < def.ColumnCount; ++i) {
        const Column &column = def.Columns[i];
        if (!IsShown(column)) continue;
        char title[columnTitleSize];
        ColumnTitle(column, title);
        Put(copy, title, std::strlen(title));
        if (i < def.ColumnCount - 1) PutTabs(copy, i, i + 1);
    }
    Put(copy, "\n", 1);
}

// All rows of the report under the headings of its columns, without a look at pages.
void CopyReport(Copying &copy, PageAnswer &answer)
{
    const Definition &def = *shown.Def;
    answer.HasRows = 1;
    PutHeadings(copy);
    uint64_t offset = shown.Of->First;
    while (const ItemHeader *item = ItemAt(*shown.Of, offset)) {
        if (item->Kind != Item::row) continue;
        if (IsFull(copy)) return;
        CellReader cells = CellsOf(*item, reinterpret_cast<const char *>(item + 1));
        Cell cell;
        int column = 0;
        while (NextCell(cells, cell)) {
            const int target = cell.Column == spanColumn ? 0 : cell.Column;
            PutTabs(copy, column, target);
            column = target;
            char figure[amountSize];
            if (cell.Kind == CellKind::text) {
                Put(copy, cell.Text, cell.Length);
            } else if (!IsBlank(def, item->Style, cell)) {
                Put(copy, figure,
                    cell.Kind == CellKind::number ? WriteNumber(cell.Number, Look::grouped, figure)
                                                  : WriteHundredths(cell.Number, Look::grouped, figure));
            }
        }
        PutTabs(copy, column, def.ColumnCount - 1);
        Put(copy, "\n", 1);
    }
}

int CopyText(const PageRequest &request, PageAnswer &answer)
{
    static Copying copy;
    copy.File = memfd_create("rs-pages", MFD_CLOEXEC);
    if (copy.File < 0) return -1;
    copy.Length = 0;
    copy.Used = 0;
    copy.HasFailed = false;
    if (request.IsAllSelected != 0) {
        CopyReport(copy, answer);
    } else {
        CopySelected(copy, request, answer);
    }
    FlushCopy(copy);
    answer.Length = copy.Length;
    answer.IsCutShort = copy.Length >= maxCopied ? 1 : 0;
    if (!copy.HasFailed) return copy.File;
    close(copy.File);
    return -1;
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
    if (!OpenDocument(document, spool)) return "rs-pages does not belong to this librs.so";
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
