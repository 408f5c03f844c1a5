// What the tests of the report engine share: templates from a text, records as their hosts lay them out, what
// the engine says on standard error, and what is on the pages that it draws.
#pragma once

#include "report-engine/include/rs.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace reports {

inline constexpr const char *susaId = "tervoSUSALIST0.0";
inline constexpr const char *kontenblattId = "tervoKTOBLATT0.0";

// A directory that goes with the test.
struct Directory {
    std::filesystem::path Path;
    Directory();
    ~Directory();
    Directory(const Directory &) = delete;
    Directory &operator=(const Directory &) = delete;

    // Writes a file and returns its path.
    std::string Write(const std::string &name, const std::string &contents) const;
    std::string At(const std::string &name) const { return (Path / name).string(); }
    std::vector<std::string> Files() const;
};

std::string ReadFile(const std::string &path);
std::string ShippedTemplate(const std::string &name);

// Packed records: text fields take UTF-8 and lay it out as Windows-1252 with NULs to the width.
struct Record {
    std::string Bytes;
    Record &Text(const std::string &utf8, size_t width);
    Record &Amount(int64_t pfennig); // an AmountText of 13 bytes
    Record &Rate(const std::string &text) { return Text(text, 6); }
    Record &Date(const std::string &ddmmjj) { return Text(ddmmjj, 7); }
    Record &I16(int16_t value);
    Record &I32(int32_t value);
    Record &U32(uint32_t value);
    Record &U8(uint8_t value);
    // Fills up to the size of the kind; what goes out lies in a block of exactly that size, so that a
    // sanitizer sees a byte too many.
    int32_t AddTo(int32_t report, int32_t kind, size_t size) const;
};

// Header and lines of a Summen- und Saldenliste.
Record SusaHeader(const std::string &mandant = "Muster GmbH", const std::string &bis = "310318");
struct SusaLine {
    std::string Konto = {};
    std::string Name = {};
    int64_t VortragSoll = 0, VortragHaben = 0, MonatSoll = 0, MonatHaben = 0, KumSoll = 0, KumHaben = 0;
    uint32_t Bewegt = 1;
};
int32_t AddSusaHeader(int32_t report, const Record &header = SusaHeader());
int32_t AddSusaLine(int32_t report, const SusaLine &line);

int32_t OpenShipped(const std::string &name, const char *reportId);
RSWindow OpenView(int32_t report);

// What `body` writes to standard error.
std::string Errors(const std::function<void()> &body);

// A template of the Summen- und Saldenliste around the given lines.
std::string TemplateWith(const std::string &body);

// The text on the pages of a PDF, laid out as printed, a page an entry.
std::vector<std::string> PagesOf(const std::string &pdf);
int PageCountOf(const std::string &pdf);

// Whether a process called `name` has VARK_TEST_MARK=`mark` in its environment.
bool RunsMarked(const std::string &name, const std::string &mark);
// The one there is, -1 where there are none or several.
pid_t FindMarked(const std::string &name, const std::string &mark);
// Whether one of those that were started with `argument` has written anything.
bool HasWrittenMarked(const std::string &name, const std::string &mark, const std::string &argument);
// Has those stand still that were started with `argument`; false where there is none.
bool StopMarked(const std::string &name, const std::string &mark, const std::string &argument);

// Kills the processes called `name` that have that mark; returns how many.
int KillMarked(const std::string &name, const std::string &mark);

std::vector<std::string> LinesOf(const std::string &text);

} // namespace reports
