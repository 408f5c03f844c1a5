// rs-print TITLE [QUEUE]: prints the PDF that stands open as descriptor 3 through CUPS, on QUEUE or else the
// default printer. On descriptor 4 it says "ok", with a line more where the report has to wait for its
// printer, or why it is not printed; in German, for the person. librs.so runs it; nobody else needs to.
//
// A job that its queue has taken is printed, as on every desktop: the queue keeps it, also over a restart,
// and prints it when it can. So a printer that stands still is no failure, but is told.
#include <cups/cups.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace {

constexpr int fileDescriptor = 3;
constexpr int statusDescriptor = 4;

char reason[200];
char waits[250] = "ok"; // what is said of a job that was taken

// What the printing system says last, in the person's language where it has one.
const char *Because(const char *what)
{
    const char *said = cupsLastErrorString();
    std::snprintf(reason, sizeof reason, "%s%s%s%s", what, said != nullptr && *said != 0 ? " (" : "",
                  said != nullptr ? said : "", said != nullptr && *said != 0 ? ")" : "");
    return reason;
}

// A printing system that says nothing for this long has gone.
constexpr unsigned longestSilence_s = 60;

void GiveUp(int /*signal*/)
{
    constexpr char text[] = "Der Druckdienst antwortet nicht.";
    const ssize_t written = write(statusDescriptor, text, sizeof text - 1);
    _exit(written > 0 ? 1 : 2);
}

// Null when the whole file has gone out, else why not.
const char *SendFile(const char *queue)
{
    char bytes[65'536];
    off_t offset = 0;
    for (;;) {
        const ssize_t count = pread(fileDescriptor, bytes, sizeof bytes, offset);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return "Die Seiten können nicht gelesen werden.";
        if (count == 0) break;
        offset += count;
        alarm(longestSilence_s);
        const http_status_t status =
            cupsWriteRequestData(CUPS_HTTP_DEFAULT, bytes, static_cast<size_t>(count));
        if (status != HTTP_STATUS_CONTINUE) return Because("Der Drucker nimmt den Bericht nicht an.");
    }
    if (cupsFinishDocument(CUPS_HTTP_DEFAULT, queue) > IPP_STATUS_OK_EVENTS_COMPLETE) {
        return Because("Der Drucker nimmt den Bericht nicht an.");
    }
    return nullptr;
}

// Whether the printer stands still with what its queue has taken.
bool IsStopped(const cups_dest_t &printer)
{
    cups_dest_t *now = cupsGetNamedDest(CUPS_HTTP_DEFAULT, printer.name, printer.instance);
    if (now == nullptr) return false;
    int32_t state = 0;
    const char *told = cupsGetOption("printer-state", now->num_options, now->options);
    if (told != nullptr) std::from_chars(told, told + std::strlen(told), state);
    cupsFreeDests(1, now);
    return state == IPP_PSTATE_STOPPED;
}

const char *PrintOn(const cups_dest_t &printer, const char *title)
{
    const int job =
        cupsCreateJob(CUPS_HTTP_DEFAULT, printer.name, title, printer.num_options, printer.options);
    if (job == 0) return Because("Der Drucker nimmt keinen Auftrag an.");
    const char *problem = nullptr;
    if (cupsStartDocument(CUPS_HTTP_DEFAULT, printer.name, job, title, CUPS_FORMAT_PDF, 1) !=
        HTTP_STATUS_CONTINUE) {
        problem = Because("Der Drucker nimmt den Bericht nicht an.");
    } else {
        problem = SendFile(printer.name);
    }
    // Half a report is not to be printed.
    if (problem != nullptr) {
        cupsCancelJob2(CUPS_HTTP_DEFAULT, printer.name, job, 0);
    } else if (IsStopped(printer)) {
        std::snprintf(
            waits, sizeof waits,
            "ok\nDer Drucker %.100s ist angehalten. Der Bericht wird gedruckt, sobald er weiterläuft.",
            printer.name);
    }
    return problem;
}

const char *Print(const char *title, const char *wanted)
{
    cups_dest_t *printer = cupsGetNamedDest(CUPS_HTTP_DEFAULT, wanted, nullptr);
    if (printer == nullptr) {
        const ipp_status_t error = cupsLastError();
        if (error == IPP_STATUS_ERROR_SERVICE_UNAVAILABLE || error == IPP_STATUS_ERROR_INTERNAL) {
            return "Es ist kein Drucker erreichbar: der Druckdienst läuft nicht.";
        }
        if (wanted == nullptr) return "Es ist kein Drucker eingerichtet.";
        std::snprintf(reason, sizeof reason, "Den Drucker %.100s gibt es nicht.", wanted);
        return reason;
    }
    const char *problem = PrintOn(*printer, title);
    cupsFreeDests(1, printer);
    return problem;
}

} // namespace

int main(int argumentCount, char **arguments)
{
    std::signal(SIGALRM, GiveUp);
    alarm(longestSilence_s);
    const char *title = argumentCount > 1 && arguments[1][0] != 0 ? arguments[1] : "Bericht";
    const char *problem = Print(title, argumentCount > 2 ? arguments[2] : nullptr);
    const char *result = problem != nullptr ? problem : waits;
    const size_t length = std::strlen(result);
    const bool isTold = write(statusDescriptor, result, length) == static_cast<ssize_t>(length);
    return problem == nullptr && isTold ? 0 : 1;
}
