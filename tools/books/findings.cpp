#include "tools/books/findings.h"

#include <unistd.h>

namespace books {

namespace {

// Between the parts of a finding; no text of a record gets here with it.
constexpr char separator = '\x1F';

void AppendClean(std::string &to, std::string_view text)
{
    for (const char character : text) {
        to += static_cast<unsigned char>(character) < 0x20 ? '?' : character;
    }
}

} // namespace

void Findings::Tell(std::string_view rule, std::string_view table, std::string_view key,
                    std::string_view field, std::string_view text)
{
    Put('F', rule, table, key, field, text);
}

void Findings::Remark(std::string_view rule, std::string_view table, std::string_view key,
                      std::string_view field, std::string_view text)
{
    Put('H', rule, table, key, field, text);
}

void Findings::Stop(std::string_view why)
{
    std::string line;
    AppendClean(line, why);
    Write('S', line);
}

void Findings::Put(char kind, std::string_view rule, std::string_view table, std::string_view key,
                   std::string_view field, std::string_view text)
{
    std::string line;
    for (const std::string_view part : {std::string_view(directory), table, key, field, rule, text}) {
        AppendClean(line, part);
        line += separator;
    }
    Write(kind, line);
}

void Findings::Reading(std::string_view table) { Write('R', table); }

void Findings::Count(int64_t records) { Write('C', std::to_string(records)); }

void Findings::Write(char kind, std::string_view text)
{
    std::string line(1, kind);
    line += text;
    line += '\n';
    const char *from = line.data();
    size_t left = line.size();
    while (left > 0) {
        const ssize_t written = write(file, from, left);
        if (written <= 0) _exit(1); // nobody listens any more
        from += written;
        left -= static_cast<size_t>(written);
    }
}

} // namespace books
