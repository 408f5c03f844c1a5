// rs-pages pdf TITLE FROM TO: draws these pages (0: from the first, to the last) of the document that stands
// open as descriptor 3 into the PDF that stands open as descriptor 4. On descriptor 5 it says how far it is,
// a line of "+" and the page now and then, at the end "ok" or why not. It ends with the thread that started
// it.
// rs-pages show COUNT: draws pages of that document as they are asked for through the socket that is
// descriptor 4; COUNT is how many it has.
// librs.so runs it; nobody else needs to.
#include "host/descriptors.h"
#include "host/error_texts.h"
#include "report-engine/pages/draw.h"
#include "report-engine/pages/show.h"

#include <cairo-pdf.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <poll.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

constexpr int spoolDescriptor = 3;
constexpr int fileDescriptor = 4;
constexpr int statusDescriptor = 5;

struct Pdf {
    cairo_surface_t *Surface;
    int Outline[rs::maxLevels + 2]; // the bookmark last made at each depth
    int Error;                      // errno of a failed write
    size_t Used;
    char Buffer[65'536];
};

Pdf pdf;

bool Flush()
{
    size_t done = 0;
    while (done < pdf.Used && pdf.Error == 0) {
        const ssize_t count = write(fileDescriptor, pdf.Buffer + done, pdf.Used - done);
        if (count < 0 && errno == EINTR) continue;
        if (count > 0) {
            done += static_cast<size_t>(count);
        } else {
            pdf.Error = count < 0 ? errno : ENOSPC;
        }
    }
    pdf.Used = 0;
    return pdf.Error == 0;
}

cairo_status_t TakeBytes(void * /*context*/, const unsigned char *bytes, unsigned length)
{
    while (length > 0) {
        if (pdf.Used == sizeof pdf.Buffer && !Flush()) return CAIRO_STATUS_WRITE_ERROR;
        const size_t space = sizeof pdf.Buffer - pdf.Used;
        const size_t part = length < space ? length : space;
        std::memcpy(pdf.Buffer + pdf.Used, bytes, part);
        pdf.Used += part;
        bytes += part;
        length -= static_cast<unsigned>(part);
    }
    return CAIRO_STATUS_SUCCESS;
}

void BeginPage(void * /*context*/, int64_t /*page*/) {}

constexpr int64_t pagesBetweenReports = 32;

void EndPage(void * /*context*/, int64_t page)
{
    cairo_surface_show_page(pdf.Surface);
    if (page % pagesBetweenReports != 0) return;
    char line[32];
    const int length = std::snprintf(line, sizeof line, "+%lld\n", static_cast<long long>(page));
    // Nobody who listens any more is no reason to go on.
    if (write(statusDescriptor, line, static_cast<size_t>(length)) != length) _exit(1);
}

void Bookmark(void * /*context*/, int depth, const char *text, int64_t page, double x, double y)
{
    char place[96];
    // Whole points: the fraction's separator would follow the locale.
    std::snprintf(place, sizeof place, "page=%lld pos=[%d %d]", static_cast<long long>(page),
                  static_cast<int>(x), static_cast<int>(y));
    int parent = CAIRO_PDF_OUTLINE_ROOT;
    for (int above = depth - 1; above >= 0 && parent == CAIRO_PDF_OUTLINE_ROOT; --above) {
        parent = pdf.Outline[above];
    }
    pdf.Outline[depth] = cairo_pdf_surface_add_outline(
        pdf.Surface, parent, text, place,
        depth == 0 ? CAIRO_PDF_OUTLINE_FLAG_OPEN : static_cast<cairo_pdf_outline_flags_t>(0));
    for (int below = depth + 1; below < rs::maxLevels + 2; ++below) {
        pdf.Outline[below] = CAIRO_PDF_OUTLINE_ROOT;
    }
}

void DescribeFile(const rs::Document &document, const char *title)
{
    const char *name = title != nullptr && title[0] != 0 ? title : document.Def->Title;
    cairo_pdf_surface_set_metadata(pdf.Surface, CAIRO_PDF_METADATA_TITLE, name);
    cairo_pdf_surface_set_metadata(pdf.Surface, CAIRO_PDF_METADATA_SUBJECT, document.Def->Title);
    cairo_pdf_surface_set_metadata(pdf.Surface, CAIRO_PDF_METADATA_CREATOR, "MERIDA");
    const char *today = std::getenv("VARK_HEUTE");
    if (today == nullptr || std::strlen(today) != 10 || std::strspn(today, "0123456789.") != 10) return;
    char date[32]; // so that the same report gives the same file
    std::snprintf(date, sizeof date, "%.4s-%.2s-%.2sT00:00:00Z", today + 6, today + 3, today);
    cairo_pdf_surface_set_metadata(pdf.Surface, CAIRO_PDF_METADATA_CREATE_DATE, date);
}

// Null when all is well.
const char *WritePdf(const char *title, int64_t first, int64_t last)
{
    rs::Document document = {};
    if (!rs::OpenDocument(document, spoolDescriptor)) return "rs-pages gehört nicht zu dieser librs.so.";
    constexpr double pointsPerUnit = 72.0 / 2540.0;
    pdf.Surface =
        cairo_pdf_surface_create_for_stream(TakeBytes, nullptr, document.Def->PageWidth * pointsPerUnit,
                                            document.Def->PageHeight * pointsPerUnit);
    DescribeFile(document, title);
    cairo_t *cairo = cairo_create(pdf.Surface);
    const rs::PageTarget target = {cairo, BeginPage, EndPage, Bookmark, nullptr, rs::Ink::glyphs};
    rs::DrawDocument(document, target, first, last);
    const cairo_status_t drawn = cairo_status(cairo);
    cairo_destroy(cairo);
    cairo_surface_finish(pdf.Surface);
    const cairo_status_t finished = cairo_surface_status(pdf.Surface);
    static char reason[200];
    if (!Flush()) {
        std::snprintf(reason, sizeof reason, "%s", host::TextOfError(pdf.Error).Text);
        return reason;
    }
    const cairo_status_t status = drawn != CAIRO_STATUS_SUCCESS ? drawn : finished;
    if (status == CAIRO_STATUS_SUCCESS) return nullptr;
    std::snprintf(reason, sizeof reason, "Die Seiten lassen sich nicht zeichnen (%s).",
                  cairo_status_to_string(status));
    return reason;
}

int64_t NumberIn(const char *text)
{
    int64_t number = 0;
    std::from_chars(text, text + std::strlen(text), number);
    return number;
}

} // namespace

int main(int argumentCount, char **arguments)
{
    // Every page takes and frees the same few MiB: they need not go back to the system each time.
    mallopt(M_TRIM_THRESHOLD, 64 << 20);
    mallopt(M_MMAP_THRESHOLD, 64 << 20);
    mallopt(M_TOP_PAD, 1 << 20);

    host::GuardStandardDescriptors(); // a library's warning must not end up in a file of pixels
    const bool isShown = argumentCount > 2 && std::strcmp(arguments[1], "show") == 0;
    if (isShown) {
        // A child of its own, so that the host has none to wait for.
        const pid_t child = fork();
        if (child != 0) _exit(child < 0 ? 1 : 0);
        setsid();
        const int64_t pageCount = NumberIn(arguments[2]);
        _exit(rs::ShowPages(spoolDescriptor, fileDescriptor, pageCount) == nullptr ? 0 : 1);
    }
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // A host that ended before that is told by the pipe that nobody reads.
    pollfd reader = {statusDescriptor, 0, 0};
    if (poll(&reader, 1, 0) > 0 && (reader.revents & POLLERR) != 0) _exit(1);
    const char *problem =
        WritePdf(argumentCount > 2 ? arguments[2] : nullptr, argumentCount > 4 ? NumberIn(arguments[3]) : 0,
                 argumentCount > 4 ? NumberIn(arguments[4]) : 0);
    const char *result = problem != nullptr ? problem : "ok";
    const size_t length = std::strlen(result);
    const bool isTold = write(statusDescriptor, result, length) == static_cast<ssize_t>(length);
    // Without tidying up: the process ends here anyway.
    _exit(problem == nullptr && isTold ? 0 : 1);
}
