#include "tools/vark/reasons.h"

#include "include/vark40.h"
#include "tools/common/exit_codes.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

namespace cli {

namespace {

constexpr std::string_view boxPrefix = "MERIDA: ";

void WriteAll(int file, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t written = write(file, text.data(), text.size());
        if (written <= 0) return;
        text.remove_prefix(static_cast<size_t>(written));
    }
}

} // namespace

void UseNoWindows() { setenv("VARK_UI", "headless", 1); }

ReasonCatcher::ReasonCatcher()
{
    std::fflush(stderr);
    caught = memfd_create("vark-meldungen", MFD_CLOEXEC);
    if (caught < 0) return; // the lines then simply show
    real = dup(STDERR_FILENO);
    dup2(caught, STDERR_FILENO);
}

ReasonCatcher::~ReasonCatcher()
{
    if (caught < 0) return;
    Take();
    std::fflush(stderr);
    dup2(real, STDERR_FILENO);
    close(real);
    close(caught);
}

void ReasonCatcher::Pass(const std::string &text) const { WriteAll(caught < 0 ? STDERR_FILENO : real, text); }

std::string ReasonCatcher::Take()
{
    std::string reasons;
    if (caught < 0) return reasons;
    std::fflush(stderr);
    std::string text;
    char buffer[4096];
    for (ssize_t got; (got = pread(caught, buffer, sizeof buffer, read)) > 0; read += got) {
        text.append(buffer, static_cast<size_t>(got));
    }
    std::string_view rest = text;
    while (!rest.empty()) {
        const size_t end = rest.find('\n');
        std::string_view line = rest.substr(0, end);
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
        if (line.starts_with(boxPrefix)) {
            line.remove_prefix(boxPrefix.size());
            if (!reasons.empty()) reasons += ' ';
            reasons += line;
        } else {
            WriteAll(real, std::string(line) + "\n");
        }
    }
    return reasons;
}

int Refuse(ReasonCatcher &catcher, int code)
{
    std::string reason = catcher.Take();
    if (reason.empty()) reason = TextOfCode(code);
    if (code == -3 || code == -36 || code == -42) throw std::runtime_error(reason);
    std::fflush(stdout);
    catcher.Pass("vark: " + reason + "\n");
    return tools::ExitRefused;
}

void NeedLibrary()
{
    ReasonCatcher catcher;
    const int state = VARK_Status();
    if (state == 1) return;
    catcher.Take();
    throw std::runtime_error(TextOfCode(state));
}

std::string TextOfCode(int code)
{
    switch (code) {
    case 0: return "Die Erfassung des Wechselkurses wurde abgebrochen.";
    case -2: return "Der Betrag kann nicht umgerechnet werden.";
    case -3: return "Die Datenbank läßt sich nicht benutzen.";
    case -5: return "Der Mandant existiert nicht.";
    case -7: return "Die Kontoart ist unzulässig.";
    case -37: return "Es ist keine Nummer mit 7 Zeichen mehr frei.";
    case -36: return "In keiner Ini-Datei steht, wo die Daten liegen (tolka.ini: [TOLKA] Pfad32=…).";
    case -42: return "Die Bibliothek hat keinen Speicher für diesen Aufruf.";
    default: return "Abgelehnt mit dem Code " + std::to_string(code) + ".";
    }
}

} // namespace cli
