#include "tools/common/roff.h"

#include "tools/common/texts.h"

namespace tools {

std::string Roff(std::string_view utf8)
{
    std::string roff;
    bool isLineStart = true;
    for (const char character : utf8) {
        if (isLineStart && (character == '.' || character == '\'')) roff += "\\&";
        switch (character) {
        case '\\': roff += "\\e"; break;
        case '-': roff += "\\-"; break;
        case '\'': roff += "\\(aq"; break;
        case '`': roff += "\\(ga"; break;
        case '^': roff += "\\(ha"; break;
        case '~': roff += "\\(ti"; break;
        default: roff += character;
        }
        isLineStart = character == '\n';
    }
    return roff;
}

std::string RoffParagraphs(std::string_view utf8)
{
    std::string roff;
    while (!utf8.empty()) {
        const size_t end = utf8.find("\n\n");
        const std::string_view paragraph = utf8.substr(0, end);
        if (!roff.empty()) roff += ".PP\n";
        roff += Roff(paragraph);
        if (!roff.ends_with('\n')) roff += "\n";
        if (end == std::string_view::npos) break;
        utf8.remove_prefix(end + 2);
    }
    return roff;
}

std::string RoffLines(std::string_view utf8)
{
    std::string roff = ".RS 4\n.nf\n" + Roff(utf8);
    if (!roff.ends_with('\n')) roff += "\n";
    return roff + ".fi\n.RE\n";
}

std::string RoffTitle(std::string_view name, int section, std::string_view date, std::string_view version)
{
    return ".\\\" -*- coding: utf-8 -*-\n.TH " + Roff(Upper(name)) + " " + std::to_string(section) + " \"" +
           std::string(date) + "\" \"VARK40 " + std::string(version) + "\" \"VARK40\"\n" +
           ".nh\n.ad l\n"; // words would be parted as English ones are
}

} // namespace tools
