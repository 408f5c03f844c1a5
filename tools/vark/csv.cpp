#include "tools/vark/csv.h"

#include "tools/common/texts.h"

namespace cli {

namespace {

constexpr char separator = ';';
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

void Split(CsvLine &line)
{
    const std::string &text = line.Text;
    line.Fields.clear();
    line.Fault.clear();
    size_t at = 0;
    while (true) {
        std::string field;
        size_t start = at;
        while (start < text.size() && text[start] == ' ') {
            ++start;
        }
        if (start < text.size() && text[start] == '"') {
            at = start + 1;
            bool closed = false;
            while (at < text.size() && !closed) {
                if (text[at] != '"') {
                    field += text[at++];
                } else if (at + 1 < text.size() && text[at + 1] == '"') {
                    field += '"';
                    at += 2;
                } else {
                    closed = true;
                    ++at;
                }
            }
            if (!closed) {
                line.Fault = "In dieser Zeile fehlt ein schließendes Anführungszeichen.";
                return;
            }
            while (at < text.size() && text[at] == ' ') {
                ++at;
            }
            if (at < text.size() && text[at] != separator) {
                line.Fault = "Hinter einem Anführungszeichen steht kein Semikolon.";
                return;
            }
        } else {
            const size_t end = text.find(separator, at);
            field =
                tools::Trimmed(std::string_view(text).substr(at, end == std::string::npos ? end : end - at));
            at = end == std::string::npos ? text.size() : end;
        }
        line.Fields.push_back(std::move(field));
        if (at >= text.size()) return;
        ++at;
    }
}

} // namespace

bool ReadCsvLine(std::istream &in, CsvLine &line)
{
    std::string bytes;
    while (std::getline(in, bytes)) {
        ++line.Number;
        if (line.Number == 1 && bytes.starts_with(byteOrderMark)) bytes.erase(0, byteOrderMark.size());
        if (!bytes.empty() && bytes.back() == '\r') bytes.pop_back();
        const std::string_view content = tools::Trimmed(bytes);
        if (content.empty() || content.front() == '#') continue;
        line.Text = tools::IsUtf8(bytes) ? bytes : tools::ToUtf8(bytes);
        Split(line);
        return true;
    }
    return false;
}

CsvLine SplitCsvText(const std::string &text)
{
    CsvLine line{0, text, {}, {}};
    Split(line);
    return line;
}

} // namespace cli
