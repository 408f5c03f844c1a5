// header-manual: makes the manual page of a C header from its declarations and their German text, which has
// to tell of all of them. Used by the build.
#include "tools/common/roff.h"
#include "tools/common/texts.h"
#include "tools/manual/header.h"
#include "tools/manual/translation.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>

namespace {

namespace fs = std::filesystem;
using namespace manual;

// Words of one list stand in one column; what means a longer one begins on a line of its own.
constexpr size_t widestColumn = 16;

size_t ColumnOf(const std::vector<Piece> &pieces, size_t from)
{
    size_t column = 2;
    for (size_t i = from;
         i < pieces.size() && pieces[i].Form == Piece::Kind::Item && (i == from || !pieces[i].IsFirst); ++i) {
        if (pieces[i].Word.size() <= widestColumn) column = std::max(column, pieces[i].Word.size());
    }
    return column + 2;
}

// A paragraph's mark right behind a heading would be one too many.
std::string RoffOf(const std::vector<Piece> &pieces, bool isBehindHeading = true)
{
    std::string roff;
    size_t column = 0;
    for (size_t i = 0; i < pieces.size(); ++i) {
        const Piece &piece = pieces[i];
        switch (piece.Form) {
        case Piece::Kind::Heading: roff += ".SS " + tools::Roff(piece.Text) + "\n"; break;
        case Piece::Kind::Example:
            roff += (isBehindHeading ? "" : ".PP\n") + tools::RoffLines(piece.Text);
            break;
        case Piece::Kind::Paragraph:
            roff += (isBehindHeading ? "" : ".PP\n") + tools::Roff(piece.Text);
            break;
        case Piece::Kind::Item:
            if (piece.IsFirst) column = ColumnOf(pieces, i);
            // The items of a list follow each other without blank lines.
            if (!piece.IsFirst) roff += ".PD 0\n";
            roff += ".TP " + std::to_string(column) + "\n\\fB" + tools::Roff(piece.Word) + "\\fR\n" +
                    tools::Roff(piece.Text) + "\n";
            if (!piece.IsFirst) roff += ".PD\n";
            break;
        }
        isBehindHeading = piece.Form == Piece::Kind::Heading;
    }
    return roff;
}

std::string RoffOf(const Lines &code)
{
    std::string text;
    for (const std::string &line : code) {
        text += line + "\n";
    }
    text.pop_back();
    return ".nf\n\\fB" + tools::Roff(text) + "\\fR\n.fi\n";
}

std::string PageOf(const std::vector<Section> &header, const std::vector<ToldSection> &translation,
                   const std::string &date, const std::string &version)
{
    std::string page = tools::RoffTitle("vark40", 3, date, version);
    page += ".SH NAME\nvark40 \\- Zugang zu den Büchern von MERIDA für andere Programme\n"
            ".SH ÜBERSICHT\n.nf\n\\fB#include <vark40.h>\\fR\n.fi\n.PP\n"
            "cc \\fIPROGRAMM\\fR.c $(pkg\\-config \\-\\-cflags \\-\\-libs vark40)\n";
    for (size_t i = 0; i < header.size(); ++i) {
        const ToldSection &section = translation[i];
        page += ".SH " + tools::Roff(section.Heading) + "\n" + RoffOf(section.Pieces);
        bool isBehindHeading = section.Pieces.empty();
        size_t at = 0;
        for (const Told &told : section.Declarations) {
            for (size_t name = 0; name < told.Names.size(); ++name) {
                page += (isBehindHeading ? "" : ".PP\n") + RoffOf(header[i].Declarations[at++].Code);
                isBehindHeading = false;
            }
            page += ".RS 4\n" + RoffOf(told.Pieces) + ".RE\n";
        }
    }
    return page + ".SH SIEHE AUCH\n.BR vark (1),\n.BR books (1),\n.BR templates (5)\n";
}

void Write(const fs::path &path, const std::string &text)
{
    std::ofstream file(path, std::ios::binary);
    file << text << std::flush;
    if (!file) throw std::runtime_error(path.string() + ": cannot be written");
}

// The page, and under the name of each function one that leads there.
void WritePages(const fs::path &headerFile, const fs::path &textFile, const fs::path &directory,
                const std::string &date, const std::string &version)
{
    const std::vector<Section> header = SectionsOf(ReadLines(headerFile));
    const std::vector<ToldSection> translation = TranslationOf(ReadLines(textFile));
    CheckTranslation(header, translation);
    Write(directory / "vark40.3", PageOf(header, translation, date, version));
    for (const Section &section : header) {
        for (const Declaration &declared : section.Declarations) {
            if (declared.Name.starts_with("VARK_"))
                Write(directory / (declared.Name + ".3"), ".so man3/vark40.3\n");
        }
    }
}

} // namespace

int main(int argc, char **argv)
{
    try {
        if (argc != 6) throw std::runtime_error("header-manual HEADER GERMAN_TEXT DIRECTORY DATE VERSION");
        WritePages(argv[1], argv[2], argv[3], argv[4], argv[5]);
        return 0;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "header-manual: %s\n", error.what());
        return 1;
    }
}
