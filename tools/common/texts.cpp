#include "tools/common/texts.h"

#include "text/windows1252.h"

#include <cstring>

namespace tools {

namespace {

bool IsCombining(char32_t codePoint) { return codePoint >= 0x300 && codePoint < 0x370; }

std::string_view HeadOf(std::string_view utf8, size_t columns)
{
    const char *from = utf8.data();
    const char *const end = from + utf8.size();
    size_t taken = 0;
    while (from < end) {
        const char *next = from;
        const char32_t codePoint = text::NextCodePoint(next, end);
        if (!IsCombining(codePoint) && ++taken > columns) break;
        from = next;
    }
    return utf8.substr(0, static_cast<size_t>(from - utf8.data()));
}

std::string Fitted(std::string_view utf8, size_t columns)
{
    if (Columns(utf8) <= columns) return std::string(utf8);
    if (columns == 0) return {};
    return std::string(HeadOf(utf8, columns - 1)) + "…";
}

} // namespace

std::string FieldText(const char *field, size_t width) { return ToUtf8({field, strnlen(field, width)}); }

std::string ToUtf8(std::string_view windows1252)
{
    const std::string terminated(windows1252);
    std::string out(text::ToUtf8(terminated.c_str(), nullptr, 0), '\0');
    text::ToUtf8(terminated.c_str(), out.data(), out.size() + 1);
    return out;
}

std::string FromUtf8(std::string_view utf8)
{
    const std::string terminated(utf8);
    std::string out(text::FromUtf8(terminated.c_str(), nullptr, 0), '\0');
    text::FromUtf8(terminated.c_str(), out.data(), out.size() + 1);
    return out;
}

bool IsUtf8(std::string_view text)
{
    const char *from = text.data();
    const char *const end = from + text.size();
    while (from < end) {
        const char *const start = from;
        if (text::NextCodePoint(from, end) == 0xFFFD && from - start == 1) return false;
    }
    return true;
}

std::string Printable(std::string text)
{
    for (char &character : text) {
        if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F) character = '?';
    }
    return text;
}

std::string_view Trimmed(std::string_view text)
{
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) {
        text.remove_suffix(1);
    }
    return text;
}

std::string Lower(std::string_view text)
{
    std::string lower(text);
    for (char &character : lower) {
        if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
    }
    return lower;
}

std::string Upper(std::string_view text)
{
    std::string upper(text);
    for (char &character : upper) {
        if (character >= 'a' && character <= 'z') character = static_cast<char>(character - 'a' + 'A');
    }
    return upper;
}

size_t Columns(std::string_view utf8)
{
    const char *from = utf8.data();
    const char *const end = from + utf8.size();
    size_t columns = 0;
    while (from < end) {
        if (!IsCombining(text::NextCodePoint(from, end))) ++columns;
    }
    return columns;
}

std::string Head(std::string_view utf8, size_t columns) { return std::string(HeadOf(utf8, columns)); }

std::string Left(std::string_view utf8, size_t columns)
{
    std::string out = Fitted(utf8, columns);
    out.append(columns - Columns(out), ' ');
    return out;
}

std::string Right(std::string_view utf8, size_t columns)
{
    const std::string out = Fitted(utf8, columns);
    return std::string(columns - Columns(out), ' ') + out;
}

} // namespace tools
