// header-manual: makes the manual page of a C header from its comments and declarations. Used by the build.
//
// What it expects of the header: comments and declarations begin in the first column, a comment stands right
// above what it describes, a section begins with its heading between dashes, and the first comment tells of
// the whole.
#include "tools/common/roff.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

Lines ReadLines(const fs::path &path)
{
    std::ifstream file(path);
    if (!file) throw std::runtime_error(path.string() + ": cannot be read");
    Lines lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

// What Linux sees: of "#ifdef _WIN32" the part behind "#else".
Lines WithoutWindows(const Lines &lines)
{
    Lines kept;
    bool isWindows = false;
    for (const std::string &line : lines) {
        if (line == "#ifdef _WIN32") isWindows = true;
        if (!isWindows) kept.push_back(line);
        if (line == "#else" || line.starts_with("#endif")) isWindows = false;
    }
    return kept;
}

// A comment without its marks, or lines of code.
struct Block {
    bool IsComment;
    Lines Text;
};

// The line of a comment without its marks, and whether the comment ends with it.
std::string WithoutMarks(std::string line, bool &ends)
{
    const size_t end = line.find("*/");
    ends = end != std::string::npos;
    if (ends) line.erase(end);
    for (const char *mark : {"/*", " *"}) {
        if (!line.starts_with(mark)) continue;
        line.erase(0, 2);
        break;
    }
    if (line.starts_with(' ')) line.erase(0, 1);
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

std::vector<Block> BlocksOf(const Lines &lines)
{
    std::vector<Block> blocks;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].empty()) continue;
        Block block{lines[i].starts_with("/*"), {}};
        if (block.IsComment) {
            bool ends = false;
            for (; !ends && i < lines.size(); ++i) {
                const std::string text = WithoutMarks(lines[i], ends);
                if (!text.empty() || (!block.Text.empty() && !ends)) block.Text.push_back(text);
            }
            --i;
        } else {
            // A structure has blank lines in it as little as a declaration has.
            for (; i < lines.size() && !lines[i].empty() && !lines[i].starts_with("/*"); ++i) {
                block.Text.push_back(lines[i]);
            }
            --i;
        }
        blocks.push_back(std::move(block));
    }
    return blocks;
}

// Lines that are set as they stand: indented, or with columns.
bool IsTable(const std::string &line)
{
    return line.starts_with(' ') || line.find("   ") != std::string::npos;
}

// Paragraphs and tables; a paragraph mark right behind a heading would be one too many.
std::string TextOf(const Lines &lines, bool isBehindHeading = false)
{
    std::string roff;
    std::string table;
    bool isNewParagraph = true;
    const auto endTable = [&] {
        if (!table.empty()) roff += tools::RoffLines(table);
        table.clear();
    };
    for (const std::string &line : lines) {
        if (!line.empty() && IsTable(line)) {
            table += line + "\n";
            continue;
        }
        endTable();
        if (!line.empty()) {
            if (isNewParagraph && !(isBehindHeading && roff.empty())) roff += ".PP\n";
            roff += tools::Roff(line) + "\n";
        }
        isNewParagraph = line.empty();
    }
    endTable();
    return roff;
}

// The comment that tells of the whole: paragraphs under headings, which stand further left.
std::string OverviewOf(const Lines &lines)
{
    std::string roff;
    Lines part;
    for (size_t i = 0; i < lines.size(); ++i) {
        const bool isHeading = i + 1 < lines.size() && !lines[i].empty() && lines[i][0] != ' ' &&
                               lines[i].find(' ') == std::string::npos && lines[i + 1].starts_with("  ");
        if (isHeading) {
            roff += TextOf(part, true) + ".SS " + tools::Roff(lines[i]) + "\n";
            part.clear();
        } else {
            part.push_back(lines[i].starts_with("  ") ? lines[i].substr(2) : lines[i]);
        }
    }
    return roff + TextOf(part, true);
}

std::string CodeOf(const Lines &lines, bool isBehindHeading)
{
    std::string code;
    for (const std::string &line : lines) {
        const bool isForCompiler = line.starts_with('#') || line.starts_with("extern \"C\"") || line == "}" ||
                                   line.find("[sizeof(") != std::string::npos;
        if (!isForCompiler) code += std::regex_replace(line, std::regex("VARK_CALL "), "") + "\n";
    }
    if (code.empty()) return code;
    code.pop_back();
    return std::string(isBehindHeading ? "" : ".PP\n") + ".nf\n\\fB" + tools::Roff(code) + "\\fR\n.fi\n";
}

std::string PageOf(const std::vector<Block> &blocks, const std::string &date, const std::string &version)
{
    std::string page = tools::RoffTitle("vark40", 3, date, version);
    page += ".SH NAME\nvark40 \\- Zugang zu den Büchern von MERIDA für andere Programme\n"
            ".SH ÜBERSICHT\n.nf\n\\fB#include <vark40.h>\\fR\n.fi\n.PP\n"
            "cc \\fIPROGRAMM\\fR.c $(pkg\\-config \\-\\-cflags \\-\\-libs vark40)\n"
            ".SH BESCHREIBUNG\n" +
            OverviewOf(blocks.front().Text);
    // The header has a comment above what it describes, the page below.
    Lines told;
    bool isBehindHeading = false;
    for (size_t i = 1; i < blocks.size(); ++i) {
        const Block &block = blocks[i];
        const std::string first = block.Text.empty() ? "" : block.Text.front();
        std::string text;
        if (!block.IsComment) {
            text = CodeOf(block.Text, isBehindHeading);
            text += TextOf(told, isBehindHeading && text.empty());
            told.clear();
        } else {
            text = TextOf(told, isBehindHeading);
            told.clear();
            if (!first.starts_with("---- ")) told = block.Text;
        }
        page += text;
        if (!text.empty()) isBehindHeading = false;
        if (block.IsComment && first.starts_with("---- ")) {
            page += ".SH " + tools::Roff(first.substr(5, first.rfind(" ----") - 5)) + "\n";
            isBehindHeading = true;
        }
    }
    return page + TextOf(told) + ".SH SIEHE AUCH\n.BR vark (1),\n.BR books (1),\n.BR templates (5)\n";
}

void Write(const fs::path &path, const std::string &text)
{
    std::ofstream file(path, std::ios::binary);
    file << text << std::flush;
    if (!file) throw std::runtime_error(path.string() + ": cannot be written");
}

// The page, and under the name of each function one that leads there.
void WritePages(const fs::path &header, const fs::path &directory, const std::string &date,
                const std::string &version)
{
    const Lines lines = ReadLines(header);
    const std::vector<Block> blocks = BlocksOf(WithoutWindows(lines));
    if (blocks.empty() || !blocks.front().IsComment)
        throw std::runtime_error(header.string() + ": does not begin with a comment");
    Write(directory / "vark40.3", PageOf(blocks, date, version));
    const std::regex declaration(R"(VARK_CALL (VARK_\w+)\()");
    for (const std::string &line : lines) {
        std::smatch found;
        if (std::regex_search(line, found, declaration))
            Write(directory / (found[1].str() + ".3"), ".so man3/vark40.3\n");
    }
}

} // namespace

int main(int argc, char **argv)
{
    try {
        if (argc != 5) throw std::runtime_error("header-manual HEADER DIRECTORY DATE VERSION");
        WritePages(argv[1], argv[2], argv[3], argv[4]);
        return 0;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "header-manual: %s\n", error.what());
        return 1;
    }
}
