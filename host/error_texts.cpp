#include "host/error_texts.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace host {

namespace {

struct Meaning {
    int Error;
    const char *German;
};

constexpr Meaning meanings[] = {
    {ENOENT, "Das Verzeichnis oder die Datei gibt es nicht."},
    {ENOTDIR, "Ein Teil des Pfads ist kein Verzeichnis."},
    {EACCES, "Das ist nicht erlaubt."},
    {EPERM, "Das ist nicht erlaubt."},
    {EISDIR, "Das ist ein Verzeichnis."},
    {EROFS, "Der Datenträger ist schreibgeschützt."},
    {ENOSPC, "Der Datenträger ist voll."},
    {EDQUOT, "Der zugeteilte Platz ist verbraucht."},
    {EFBIG, "Die Datei ist zu groß."},
    {EMFILE, "Zu viele Dateien sind geöffnet."},
    {ENFILE, "Zu viele Dateien sind geöffnet."},
    {ENAMETOOLONG, "Der Name ist zu lang."},
    {ELOOP, "Zu viele Verweise führen im Kreis."},
    {ENOMEM, "Der Speicher reicht nicht."},
    {EIO, "Der Datenträger meldet einen Fehler."},
    {EPIPE, "Niemand liest mehr."},
    {ENXIO, "Niemand liest."},
};

} // namespace

ErrorText TextOfError(int error)
{
    ErrorText text;
    for (const Meaning &meaning : meanings) {
        if (meaning.Error != error) continue;
        std::snprintf(text.Text, sizeof text.Text, "%s", meaning.German);
        return text;
    }
    std::snprintf(text.Text, sizeof text.Text, "Fehler %d des Betriebssystems.", error);
    return text;
}

LoaderText TextOfLoader(const char *reason)
{
    LoaderText text;
    if (reason == nullptr) {
        std::snprintf(text.Text, sizeof text.Text, "fehlt, oder andere dürfen hineinschreiben");
        return text;
    }
    // "libpq.so.5: cannot open shared object file: No such file or directory"
    const char *missing = std::strstr(reason, ": cannot open shared object file");
    if (missing != nullptr) {
        std::snprintf(text.Text, sizeof text.Text, "läßt sich nicht laden, weil %.*s fehlt",
                      static_cast<int>(missing - reason), reason);
    } else {
        std::snprintf(text.Text, sizeof text.Text, "läßt sich nicht laden (%s)", reason);
    }
    return text;
}

} // namespace host
