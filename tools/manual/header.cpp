#include "tools/manual/header.h"

#include <fstream>
#include <regex>
#include <stdexcept>

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

std::string Joined(const Lines &lines)
{
    std::string text;
    for (const std::string &line : lines) {
        text += line + "\n";
    }
    return text;
}

const std::regex inlineComment(R"( */\*[^*]*\*/)");

Lines WithoutComments(const Lines &lines)
{
    Lines code;
    for (const std::string &line : lines) {
        code.push_back(std::regex_replace(line, inlineComment, ""));
    }
    return code;
}

std::string CommentsIn(const std::string &code)
{
    std::string text;
    for (std::sregex_iterator found(code.begin(), code.end(), inlineComment), end; found != end; ++found) {
        text += found->str() + "\n";
    }
    return text;
}

std::vector<std::string> NamesIn(const std::string &text, const std::regex &name)
{
    std::vector<std::string> names;
    for (std::sregex_iterator found(text.begin(), text.end(), name), end; found != end; ++found) {
        names.push_back((*found)[1]);
    }
    return names;
}

Declaration DeclarationOf(const Lines &lines, const std::string &comment)
{
    Declaration declared{.Name = {}, .Code = WithoutComments(lines), .Parts = {}, .Contract = {}};
    declared.Contract = comment + CommentsIn(Joined(lines));
    std::string code = Joined(declared.Code);
    code = std::regex_replace(code, std::regex(R"(\s+)"), " ");
    std::smatch found;
    if (std::regex_match(code, found, std::regex(R"(\w+ VARK_CALL (VARK_\w+) ?\((.*)\); )"))) {
        if (found[2] != "void") declared.Parts = NamesIn(found[2].str() + ",", std::regex(R"((\w+),)"));
    } else if (std::regex_match(code, found, std::regex(R"(enum (\w+) \{(.*)\}; )"))) {
        declared.Parts = NamesIn(found[2], std::regex(R"((\w+) = )"));
    } else if (std::regex_match(code, found, std::regex(R"(typedef struct (\w+) \{(.*)\} \w+; )"))) {
        declared.Parts = NamesIn(found[2], std::regex(R"((\w+)(?:\[\d+\])?;)"));
    } else if (!std::regex_match(code, found, std::regex(R"(typedef \w+ \*(\w+); )"))) {
        throw std::runtime_error("a declaration of unknown form: " + code);
    }
    declared.Name = found[1];
    // The lines of a long declaration go on under its first parameter.
    const std::regex ofLinux(R"(^(\w+ )VARK_CALL |^ {10}(?= +\S.*[,)]))");
    for (std::string &line : declared.Code) {
        line = std::regex_replace(line, ofLinux, "$1");
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
    const std::regex heading(R"(/\* ---- (.*) ---- \*/\n)");
    std::string comment;
    for (size_t i = 1; i < blocks.size(); ++i) {
        const std::string text = Joined(blocks[i].Text);
        std::smatch found;
        if (!blocks[i].IsComment) {
            Lines code;
            for (const std::string &line : blocks[i].Text) {
                if (IsForReader(line)) code.push_back(line);
            }
            if (!code.empty()) sections.back().Declarations.push_back(DeclarationOf(code, comment));
            comment.clear();
        } else if (std::regex_match(text, found, heading)) {
            sections.back().Contract += comment;
            comment.clear();
            sections.push_back({.Heading = found[1], .Contract = {}, .Declarations = {}});
        } else {
            // Of two comments in a row the first one belongs to the section.
            sections.back().Contract += comment;
            comment = text;
        }
    }
    return sections;
}

} // namespace manual
