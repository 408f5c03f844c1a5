// The key "Drucker" in section "RS" of vark.ini says where reports are printed to:
//   Drucker=                    the default printer
//   Drucker=NAME                the printer of that name
//   Drucker=datei:MUSTER        PDF files named by the pattern, in which stand {bericht} for the report's
//   title,
//                               {datum} for the day, JJJJ-MM-TT, and {nummer} for the lowest number from 1
//                               that makes a new name. Without {nummer} a file of that name is replaced.
#include "report-engine/printing.h"

#include "report-engine/complain.h"
#include "report-engine/helper.h"
#include "report-engine/output.h"
#include "report-engine/today.h"
#include "report-engine/view_window.h"
#include "text/windows1252.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace vark {

// The library's own reading of its ini files, which is built into this one as well: one rule where they lie.
size_t ReadProfileText(const char *section, const char *key, char *out, size_t size, const char *fileName);

} // namespace vark

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

// Prints into a file; `reason` says why not.
Printed PrintToFile(const View &view, const char *pattern, char (&reason)[400])
{
    char path[PATH_MAX];
    for (int number = 1; number <= lastNumber; ++number) {
        bool hasNumber = false;
        if (!ExpandPattern(pattern, view, number, path, hasNumber)) {
            std::snprintf(reason, sizeof reason, "Der Dateiname ist zu lang.");
            return Printed::failed;
        }
        if (hasNumber && access(path, F_OK) == 0) continue;
        switch (WritePdfFile(view, path, !hasNumber, {}, nullptr)) {
        case Written::whole: return Printed::done;
        case Written::nameTaken: continue; // somebody else was quicker
        case Written::stopped: return Printed::failed;
        case Written::failed:
            std::snprintf(reason, sizeof reason, "%.250s: %.120s", path, LastComplaintInGerman());
            return Printed::failed;
        }
    }
    std::snprintf(reason, sizeof reason, "%.250s: Es ist keine Nummer mehr frei.", path);
    return Printed::failed;
}

// The same on a printer; `reason` also says what a report waits for that the printer has taken.
Printed PrintOnPaper(const View &view, const char *queue, char (&reason)[400])
{
    const int pages = OpenNamelessFile();
    if (pages < 0) {
        const char *german = InGerman(errno);
        std::snprintf(reason, sizeof reason, "%s",
                      german != nullptr ? german : "Die Seiten können nicht gemacht werden.");
        return Printed::failed;
    }
    Printed printed = Printed::failed;
    if (WritePages(pages, view, view.Of->Path, {}, nullptr) == Ended::good) {
        char name[] = "rs-print";
        char title[maxViewTitle];
        std::snprintf(title, sizeof title, "%s", TitleOf(view));
        char wanted[256];
        std::snprintf(wanted, sizeof wanted, "%.250s", queue);
        char *const arguments[] = {name, title, wanted[0] != 0 ? wanted : nullptr, nullptr};
        char said[256];
        const bool isTaken =
            RunHelper("rs-print", arguments, &pages, 1, said, sizeof said, nullptr, 0) == Ended::good;
        if (isTaken) printed = said[0] == 0 ? Printed::done : Printed::waiting;
        std::snprintf(reason, sizeof reason, "%s",
                      isTaken || said[0] != 0 ? said : "Das Druckprogramm rs-print läuft nicht.");
    } else {
        std::snprintf(reason, sizeof reason, "%.390s", LastComplaintInGerman());
    }
    close(pages);
    return printed;
}

// A person who has not seen the view yet is told over the window that it belongs to.
void Show(const View &view, const char *utf8, UINT icon)
{
    char shown[500];
    text::FromUtf8(utf8, shown, sizeof shown);
    HWND window = static_cast<HWND>(view.Window.load());
    HWND owner = window == nullptr || view.WasSeen ? window : GetParent(window);
    MessageBoxA(owner, shown, "MERIDA", MB_OK | icon);
}

void ShowReason(const View &view, const char *reason)
{
    char utf8[500];
    std::snprintf(utf8, sizeof utf8, "Der Bericht konnte nicht gedruckt werden:\n%s", reason);
    Show(view, utf8, MB_ICONEXCLAMATION);
}

} // namespace

Printed PrintView(const View &view)
{
    char where[PATH_MAX];
    vark::ReadProfileText("RS", "Drucker", where, sizeof where, "vark.ini");
    char reason[400] = "";
    const Printed printed = std::strncmp(where, filePrefix, prefixLength) == 0
                                ? PrintToFile(view, where + prefixLength, reason)
                                : PrintOnPaper(view, where, reason);
    if (printed == Printed::waiting) Show(view, reason, MB_ICONINFORMATION);
    if (printed != Printed::failed) return printed;
    Complain(view.Of->Path, ": not printed: %s", reason);
    ShowReason(view, reason);
    return printed;
}

} // namespace rs
