#include "tools/manual/header.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace manual {

namespace {

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

// A comment from the first column, or lines of code up to a blank line or the next such comment.
struct Block {
    bool IsComment;
    Lines Text;
};

std::vector<Block> BlocksOf(const Lines &lines)
{
    std::vector<Block> blocks;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].empty()) continue;
        Block block{lines[i].starts_with("/*"), {}};
        for (; i < lines.size(); ++i) {
            if (!block.IsComment && (lines[i].empty() || lines[i].starts_with("/*"))) break;
            block.Text.push_back(lines[i]);
            if (block.IsComment && lines[i].find("*/") != std::string::npos) break;
        }
        if (!block.IsComment) --i;
        blocks.push_back(std::move(block));
    }
    return blocks;
}

// What is for the compiler alone: directives, the bracket of C++, assertions on sizes.
bool IsForReader(const std::string &line)
{
    return !line.starts_with('#') && !line.starts_with("extern \"C\"") && line != "}" &&
           line.find("[sizeof(") == std::string::npos;
}

constexpr std::string_view headingBegin = "/* ---- ";
constexpr std::string_view headingEnd = " ---- */\n";

std::string Joined(const Lines &lines)
{
    std::string text;
    for (const std::string &line : lines) {
        text += line + "\n";
    }
    return text;
}

Lines LinesOf(const std::string &text)
{
    Lines lines;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

bool IsOfName(char character)
{
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_';
}

// Moves the comments out of the code, with the blanks before them: a line each.
std::string TakeComments(std::string &code)
{
    std::string comments;
    for (size_t begin = code.find("/*"); begin != std::string::npos; begin = code.find("/*")) {
        const size_t end = std::min(code.find("*/", begin), code.size() - 2) + 2;
        comments += code.substr(begin, end - begin) + "\n";
        const size_t blanks = code.find_last_not_of(' ', begin - 1) + 1;
        code.erase(blanks, end - blanks);
    }
    return comments;
}

// Each run of white space as one blank.
std::string OnOneLine(const std::string &text)
{
    std::string line;
    for (const char character : text) {
        const bool isBlank = character == ' ' || character == '\n';
        if (!isBlank || !line.ends_with(' ')) line += isBlank ? ' ' : character;
    }
    return line;
}

// The name that ends where `end` is; empty where none does.
std::string NameBefore(const std::string &text, size_t end)
{
    end = std::min(end, text.size());
    size_t begin = end;
    while (begin > 0 && IsOfName(text[begin - 1])) {
        --begin;
    }
    return text.substr(begin, end - begin);
}

// The names that stand right before a mark, or before brackets in front of it.
std::vector<std::string> NamesBefore(const std::string &text, const std::string &mark)
{
    std::vector<std::string> names;
    for (size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1)) {
        const size_t end = at > 0 && text[at - 1] == ']' ? text.rfind('[', at) : at;
        names.push_back(NameBefore(text, end));
    }
    return names;
}

// What a declaration has between its first bracket of a kind and its last.
std::string Inside(const std::string &code, char open, char close)
{
    const size_t begin = std::min(code.find(open), code.size() - 1) + 1;
    return code.substr(begin, std::max(code.rfind(close), begin) - begin);
}

// Without the mark of Windows' calls; the lines of a long declaration go on under its first parameter.
std::string LineOfLinux(std::string line)
{
    constexpr std::string_view mark = "VARK_CALL ";
    const size_t at = line.find(mark);
    if (at != std::string::npos) return line.erase(at, mark.size());
    const size_t text = std::min(line.find_first_not_of(' '), line.size());
    const bool goesOn = text > mark.size() && line.find_first_of(",)", text + 1) != std::string::npos;
    return goesOn ? line.substr(mark.size()) : line;
}

Declaration DeclarationOf(const Lines &lines, const std::string &comment)
{
    Declaration declared{.Name = {}, .Code = {}, .Parts = {}, .Contract = {}};
    std::string text = Joined(lines);
    declared.Contract = comment + TakeComments(text);
    const std::string code = OnOneLine(text);
    if (const size_t call = code.find(" VARK_CALL "); call != std::string::npos) {
        const std::string parameters = Inside(code, '(', ')');
        declared.Name = NameBefore(code, code.find_last_not_of(' ', code.find('(') - 1) + 1);
        if (parameters != "void") declared.Parts = NamesBefore(parameters + ",", ",");
    } else if (code.starts_with("enum ")) {
        declared.Name = NameBefore(code, code.find(" {"));
        declared.Parts = NamesBefore(Inside(code, '{', '}'), " = ");
    } else if (code.starts_with("typedef struct ") && code.find('{') != std::string::npos) {
        declared.Name = NameBefore(code, code.find(" {"));
        declared.Parts = NamesBefore(Inside(code, '{', '}'), ";");
    } else if (code.starts_with("typedef ")) {
        declared.Name = NameBefore(code, code.find(';'));
    }
    const std::vector<std::string> &parts = declared.Parts;
    if (declared.Name.empty() || !code.ends_with("; ") ||
        std::find(parts.begin(), parts.end(), std::string()) != parts.end())
        throw std::runtime_error("a declaration of unknown form: " + code);
    for (const std::string &line : LinesOf(text)) {
        declared.Code.push_back(LineOfLinux(line));
    }
    return declared;
}

} // namespace

Lines ReadLines(const std::filesystem::path &path)
{
    std::ifstream file(path);
    if (!file) throw std::runtime_error(path.string() + ": cannot be read");
    Lines lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::vector<Section> SectionsOf(const Lines &header)
{
    const std::vector<Block> blocks = BlocksOf(WithoutWindows(header));
    if (blocks.empty() || !blocks.front().IsComment)
        throw std::runtime_error("a header that does not begin with a comment");
    std::vector<Section> sections{
        {.Heading = {}, .Contract = Joined(blocks.front().Text), .Declarations = {}}};
    std::string comment;
    for (size_t i = 1; i < blocks.size(); ++i) {
        const std::string text = Joined(blocks[i].Text);
        if (!blocks[i].IsComment) {
            Lines code;
            for (const std::string &line : blocks[i].Text) {
                if (IsForReader(line)) code.push_back(line);
            }
            if (!code.empty()) sections.back().Declarations.push_back(DeclarationOf(code, comment));
            comment.clear();
        } else if (text.starts_with(headingBegin) && text.ends_with(headingEnd)) {
            const size_t length = text.size() - headingBegin.size() - headingEnd.size();
            sections.back().Contract += comment;
            comment.clear();
            sections.push_back(
                {.Heading = text.substr(headingBegin.size(), length), .Contract = {}, .Declarations = {}});
        } else {
            // Of two comments in a row the first one belongs to the section.
            sections.back().Contract += comment;
            comment = text;
        }
    }
    return sections;
}

} // namespace manual
