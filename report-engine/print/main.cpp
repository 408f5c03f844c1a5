// rs-print print TITLE QUEUE COPIES MEDIA: prints the PDF that stands open as descriptor 3 through CUPS, on
// QUEUE or, if that is empty, the default printer, on the paper MEDIA unless that is empty. On descriptor 4
// it says how many KiB have gone, lines of "+" and a number, then "ok", with a line more where the report has
// to wait for its printer, or why it is not printed; in German, for the person.
// rs-print list: says "ok" and the names of the printers on descriptor 3, the default one first.
// librs.so runs it; nobody else needs to.
//
// A job that its queue has taken is printed, as on every desktop: the queue keeps it, also over a restart,
// and prints it when it can. So a printer that stands still is no failure, but is told.
#include "host/descriptors.h"

#include <cups/cups.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <unistd.h>

namespace {

constexpr int fileDescriptor = 3;
int statusDescriptor = 4;

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
        char line[32];
        const int length = std::snprintf(line, sizeof line, "+%lld\n", static_cast<long long>(offset / 1024));
        if (write(statusDescriptor, line, static_cast<size_t>(length)) != length)
            return "Niemand wartet mehr.";
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

const char *PrintOn(cups_dest_t &printer, const char *title, const char *copies, const char *media)
{
    if (std::strcmp(copies, "1") != 0) {
        printer.num_options = cupsAddOption("copies", copies, printer.num_options, &printer.options);
    }
    if (media[0] != 0) {
        printer.num_options = cupsAddOption("media", media, printer.num_options, &printer.options);
        printer.num_options = cupsAddOption("print-scaling", "fit", printer.num_options, &printer.options);
    }
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

const char *Print(const char *title, const char *wanted, const char *copies, const char *media)
{
    if (wanted[0] == 0) wanted = nullptr;
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
    const char *problem = PrintOn(*printer, title, copies, media);
    cupsFreeDests(1, printer);
    return problem;
}

// Writes all names, for the person to choose among.
bool TellPrinters()
{
    constexpr unsigned longestSearch_s = 10;
    alarm(longestSearch_s);
    cups_dest_t *printers = nullptr;
    const int count = cupsGetDests(&printers);
    bool isTold = write(statusDescriptor, "ok", 2) == 2;
    for (const bool wantsDefault : {true, false}) {
        for (int i = 0; i < count && isTold; ++i) {
            if ((printers[i].is_default != 0) != wantsDefault || printers[i].instance != nullptr) continue;
            char line[300];
            const int length = std::snprintf(line, sizeof line, "\n%.250s", printers[i].name);
            isTold = write(statusDescriptor, line, static_cast<size_t>(length)) == length;
        }
    }
    cupsFreeDests(count, printers);
    return isTold;
}

} // namespace

int main(int argumentCount, char **arguments)
{
    host::GuardStandardDescriptors(); // a library's warning must not end up among what is told
    std::signal(SIGALRM, GiveUp);
    if (argumentCount == 2 && std::strcmp(arguments[1], "list") == 0) {
        statusDescriptor = fileDescriptor; // there is no file
        return TellPrinters() ? 0 : 1;
    }
    constexpr int argumentsOfPrint = 6;
    if (argumentCount != argumentsOfPrint) return 2;
    alarm(longestSilence_s);
    const char *problem =
        Print(arguments[2][0] != 0 ? arguments[2] : "Bericht", arguments[3], arguments[4], arguments[5]);
    const char *result = problem != nullptr ? problem : waits;
    const size_t length = std::strlen(result);
    const bool isTold = write(statusDescriptor, result, length) == static_cast<ssize_t>(length);
    return problem == nullptr && isTold ? 0 : 1;
}
