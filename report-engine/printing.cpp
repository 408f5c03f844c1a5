// The key "Drucker" in section "RS" of vark.ini says where reports are printed to:
//   Drucker=                    the default printer
//   Drucker=NAME                the printer of that name
//   Drucker=datei:MUSTER        PDF files named by the pattern, in which stand {bericht} for the title,
//                               {datum} for the day, JJJJ-MM-TT, and {nummer} for the lowest number from 1
//                               that makes a new name. Without {nummer} a file of that name is replaced.
#include "report-engine/printing.h"

#include "host/error_texts.h"
#include "host/ini_files.h"
#include "report-engine/complain.h"
#include "report-engine/helper.h"
#include "report-engine/output.h"
#include "report-engine/today.h"
#include "report-engine/view_window.h"
#include "text/fixed_text.h"
#include "text/windows1252.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace rs {

namespace {

constexpr char filePrefix[] = "datei:";
constexpr size_t prefixLength = sizeof filePrefix - 1;
constexpr int lastNumber = 99'999;

// False when there is no room.
bool Append(char (&path)[PATH_MAX], size_t &used, const char *text)
{
    const size_t length = std::strlen(text);
    if (used + length >= sizeof path) return false;
    std::memcpy(path + used, text, length + 1);
    used += length;
    return true;
}

// The pattern with its places filled in. False when the path does not fit.
bool ExpandPattern(const char *pattern, const View &view, int number, char (&path)[PATH_MAX], bool &hasNumber)
{
    char today[16];
    TodayText(today);
    char day[16];
    std::snprintf(day, sizeof day, "%.4s-%.2s-%.2s", today + 6, today + 3, today);
    char digits[16];
    std::snprintf(digits, sizeof digits, "%d", number);
    struct Place {
        const char *Name;
        const char *Value;
    };
    char name[maxViewTitle];
    NameForFile(view, name);
    const Place places[] = {{"{bericht}", name}, {"{datum}", day}, {"{nummer}", digits}};
    size_t used = 0;
    path[0] = 0;
    hasNumber = false;
    const char *home = secure_getenv("HOME");
    if (pattern[0] == '~' && pattern[1] == '/' && home != nullptr) {
        if (!Append(path, used, home)) return false;
        ++pattern;
    }
    while (*pattern != 0) {
        const Place *found = nullptr;
        for (const Place &place : places) {
            if (std::strncmp(pattern, place.Name, std::strlen(place.Name)) == 0) found = &place;
        }
        const char letter[2] = {*pattern, 0};
        if (!Append(path, used, found != nullptr ? found->Value : letter)) return false;
        if (found != nullptr && found->Value == digits) hasNumber = true;
        pattern += found != nullptr ? std::strlen(found->Name) : 1;
    }
    const bool isPdf = used >= 4 && std::strcmp(path + used - 4, ".pdf") == 0;
    return isPdf || Append(path, used, ".pdf");
}

// Prints into a file; `said` says which, or why not.
Printed PrintToFile(const View &view, const PrintWishes &wishes, const Progress *progress, char (&said)[500])
{
    char path[PATH_MAX];
    for (int number = 1; number <= lastNumber; ++number) {
        bool hasNumber = false;
        if (!ExpandPattern(wishes.Pattern, view, number, path, hasNumber)) {
            std::snprintf(said, sizeof said, "%s", host::TextOfError(ENAMETOOLONG).Text);
            return Printed::failed;
        }
        if (hasNumber && access(path, F_OK) == 0) continue;
        switch (WritePdfFile(view, path, !hasNumber, wishes.Range, progress)) {
        case Written::whole:
            std::snprintf(said, sizeof said, "Gedruckt in die Datei %.450s.", path);
            return Printed::done;
        case Written::nameTaken: continue; // somebody else was quicker
        case Written::stopped: return Printed::stopped;
        case Written::failed:
            std::snprintf(said, sizeof said, "%.250s: %.120s", path, LastReason());
            return Printed::failed;
        }
    }
    std::snprintf(said, sizeof said, "%.250s: Es ist keine Nummer mehr frei.", path);
    return Printed::failed;
}

// Hands the pages to the printing system; `said` says what it says.
Printed SendToPrinter(const View &view, const PrintWishes &wishes, int pages, const Progress *progress,
                      char (&said)[500])
{
    char name[] = "rs-print";
    char print[] = "print";
    char title[maxViewTitle];
    std::snprintf(title, sizeof title, "%s", TitleOf(view));
    char queue[maxQueue];
    std::snprintf(queue, sizeof queue, "%s", wishes.Queue);
    char copies[16];
    std::snprintf(copies, sizeof copies, "%d", wishes.Copies);
    char media[64];
    std::snprintf(media, sizeof media, "%s", wishes.Media);
    char *const arguments[] = {name, print, title, queue, copies, media, nullptr};
    char line[256];
    const Ended ended = RunHelper("rs-print", arguments, &pages, 1, line, sizeof line, progress, 0);
    if (ended == Ended::stopped) return Printed::stopped;
    const bool isTaken = ended == Ended::good;
    if (isTaken && line[0] == 0) {
        std::snprintf(said, sizeof said, "Der Bericht wurde gedruckt%s%s.", queue[0] != 0 ? " auf " : "",
                      queue);
        return Printed::done;
    }
    const char *reason = isTaken || line[0] != 0 ? line : LastReason();
    text::CopyText(said, sizeof said, reason, std::strlen(reason));
    return isTaken ? Printed::waiting : Printed::failed;
}

// Prints on paper; `said` also says what a report waits for that the printer has taken.
Printed PrintOnPaper(const View &view, const PrintWishes &wishes, const Progress *progress, char (&said)[500])
{
    const int pages = OpenNamelessFile();
    if (pages < 0) {
        std::snprintf(said, sizeof said, "%s", host::TextOfError(errno).Text);
        return Printed::failed;
    }
    Printed printed = Printed::failed;
    switch (WritePages(pages, view, view.Of->Path, wishes.Range, progress)) {
    case Ended::good: printed = SendToPrinter(view, wishes, pages, progress, said); break;
    case Ended::stopped: printed = Printed::stopped; break;
    case Ended::failed: std::snprintf(said, sizeof said, "%.390s", LastReason()); break;
    }
    close(pages);
    return printed;
}

// A person who has not seen the view yet is told over the window that it belongs to.
void Show(const View &view, const char *utf8, UINT icon)
{
    char shown[600];
    text::FromUtf8(utf8, shown, sizeof shown);
    HWND window = static_cast<HWND>(view.Window.load());
    HWND owner = window == nullptr || view.WasSeen ? window : GetParent(window);
    MessageBoxA(owner, shown, "MERIDA", MB_OK | icon);
}

void ShowReason(const View &view, const char *reason)
{
    char utf8[600];
    std::snprintf(utf8, sizeof utf8, "Der Bericht konnte nicht gedruckt werden:\n%s", reason);
    Show(view, utf8, MB_ICONEXCLAMATION);
}

} // namespace

PrintWishes UsualWishes()
{
    char where[PATH_MAX];
    host::ReadProfileText("RS", "Drucker", where, sizeof where, "vark.ini");
    PrintWishes wishes = {false, "", "", {}, 1, ""};
    wishes.IsFile = std::strncmp(where, filePrefix, prefixLength) == 0;
    if (wishes.IsFile) {
        std::snprintf(wishes.Pattern, sizeof wishes.Pattern, "%s", where + prefixLength);
    } else {
        std::snprintf(wishes.Queue, sizeof wishes.Queue, "%.*s", static_cast<int>(maxQueue) - 1, where);
    }
    return wishes;
}

Printed PrintView(const View &view, const PrintWishes &wishes, const Progress *progress, char (&where)[500])
{
    where[0] = 0;
    const Printed printed = wishes.IsFile ? PrintToFile(view, wishes, progress, where)
                                          : PrintOnPaper(view, wishes, progress, where);
    if (printed == Printed::waiting) Show(view, where, MB_ICONINFORMATION);
    if (printed != Printed::failed) return printed;
    Complain(view.Of->Path, ": Nicht gedruckt: %s", where);
    ShowReason(view, where);
    return printed;
}

} // namespace rs
